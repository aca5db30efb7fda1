#ifndef QEXSCENE_KQEXCOLLECTION_H
#define QEXSCENE_KQEXCOLLECTION_H

#include <qexscene/kqexindexedlist.h>
#include <qexscene/kqexobject.h>

namespace qexsdk
{

/// An ordered group of objects of one scene. It refers to its members and owns none; an object is a member of one
/// collection at most. Destroy(true, …) also ends the members, their own members and, of curve nodes, their curves.
class QEX_API KQexCollection : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Makes an empty collection, owned by the scene of \p pContainer. Null when \p pContainer is null or memory runs out.
    static KQexCollection* Create(KQexObject* pContainer, const char* pName);

    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;
    KQexObject*        GetSrcObject(kQexClassId pClass, int pIndex) const override { return GetMember(pClass, pIndex); }

    /// Lets go of the members.
    ~KQexCollection() override;

    /// Appends \p pMember, which leaves the collection it was in. False, and nothing changed, when it is null, of another
    /// scene, or a collection that this one is in, however far up.
    bool AddMember(KQexObject* pMember);

    /// Takes \p pMember out. False when it is not a member. O(1).
    bool RemoveMember(KQexObject* pMember);

    /// Number of members.
    int GetMemberCount() const { return mMembers.GetCount(); }

    /// Member \p pIndex, in the order in which they were added; null when there is none.
    KQexObject* GetMember(int pIndex) const { return mMembers.GetAt(pIndex); }

    /// Member \p pIndex among those of class \p pClass; null when there is none.
    KQexObject* GetMember(const kQexClassId& pClass, int pIndex) const;

    /// Member \p pIndex among those of class T: `GetMember<KQexAnimLayer>(0)`.
    template <typename T>
    T* GetMember(int pIndex) const
    {
        return static_cast<T*>(GetMember(T::smClassId, pIndex));
    }

    /// The same, with the class named by the type of a pointer, whose value is not looked at.
    template <typename T>
    T* GetMember(const T*, int pIndex) const
    {
        return GetMember<T>(pIndex);
    }

protected:
    /// As KQexObject's; objects are made by Create.
    KQexCollection(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

private:
    friend class KQexObject;

    using KMembers = KQexIndexedList<KQexObject, &KQexObject::mMemberHook>;

    KMembers mMembers;
};

} // namespace qexsdk

#endif
