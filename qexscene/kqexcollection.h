#ifndef QEXSCENE_KQEXCOLLECTION_H
#define QEXSCENE_KQEXCOLLECTION_H

#include <qexscene/kqexindexedlist.h>
#include <qexscene/kqexobject.h>

namespace qexsdk
{

/// An ordered group of objects of one scene. Does not own its members; an object is a member of at most one collection.
/// Destroy(true, …) also destroys the members, recursively, and the curves of curve nodes.
class QEX_API KQexCollection : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// An empty collection, owned by the scene of \p pContainer. Null when \p pContainer is null or memory runs out.
    static KQexCollection* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override { return GetMember(pClass, pIndex); }

    /// Removes the members without destroying them.
    ~KQexCollection() override;

    /// Appends \p pMember, removing it from its previous collection. False, and nothing changed, when it is null, of another scene,
    /// this collection, or a collection that contains this one at any depth.
    bool AddMember(KQexObject* pMember);

    /// Removes \p pMember without destroying it. False when it is not a member. O(1).
    bool RemoveMember(KQexObject* pMember);

    /// Number of members.
    int GetMemberCount() const { return mMembers.GetCount(); }

    /// Member \p pIndex, in the order of adding; null when there is none.
    KQexObject* GetMember(int pIndex) const { return mMembers.GetAt(pIndex); }

    /// Member \p pIndex among those of class \p pClass; null when there is none.
    KQexObject* GetMember(const kQexClassId& pClass, int pIndex) const;

    /// Member \p pIndex among those of class T: `GetMember<KQexAnimLayer>(0)`.
    template <typename T>
    T* GetMember(int pIndex) const
    {
        return static_cast<T*>(GetMember(T::smClassId, pIndex));
    }

    /// The same, with the class given by the pointer's type; its value is ignored.
    template <typename T>
    T* GetMember(const T*, int pIndex) const
    {
        return GetMember<T>(pIndex);
    }

protected:
    /// See KQexObject; use Create.
    KQexCollection(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexObject;

    using KMembers = KQexIndexedList<KQexObject, &KQexObject::mMemberHook>;

    KMembers mMembers;
};

} // namespace qexsdk

#endif
