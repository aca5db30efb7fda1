#ifndef QEXSCENE_KQEXOBJECT_H
#define QEXSCENE_KQEXOBJECT_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kbase/kstring.h>
#include <qexscene/kqexclassid.h>
#include <qexscene/kqexlist.h>

#include <cstddef>
#include <new>

namespace qexsdk
{

class KQexCollection;
class KQexConnection;
class KQexProperty;
class KQexScene;

/// Base of every object in a scene: a name, the owning scene, and its connections.
///
/// Ownership: an object is created by its class's `Create` and owned by its scene, which destroys it with itself at the latest;
/// `Destroy` destroys it earlier. Either way it is first removed from its parent, its collection and every property it is connected
/// to, so nothing refers to it afterwards. Objects are allocated with QexSdkMalloc, also when a derived class is created with
/// `new`. Not thread-safe: use a scene from one thread at a time; different scenes are independent.
class QEX_API KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Detaches the object everywhere and frees it. Linear in the number of its own connections.
    /// \param pRecursive  true: also destroys what depends on the object; see each class.
    /// \param pDependents ignored; for compatibility.
    /// A scene destroys its objects this way too (both flags false), after releasing them.
    virtual void Destroy(bool pRecursive = false, bool pDependents = false);

    /// Detaches the object from everything that refers to it.
    virtual ~KQexObject();

    KQexObject(const KQexObject&) = delete;
    KQexObject& operator=(const KQexObject&) = delete;

    /// The name, never null. Valid until the name is set or the object is destroyed.
    const char* GetName() const noexcept { return mName != nullptr ? mName : ""; }

    /// Copies \p pName (null counts as ""). False, and the name unchanged, when memory runs out.
    bool SetName(const char* pName);

    /// The name after its last colon; the part before is a name-space prefix. When memory runs out, empty and marked as such; see
    /// KString.
    KString GetNameWithoutNameSpacePrefix() const noexcept;

    /// The same, pointing into GetName(): needs no memory.
    const char* GetBareName() const noexcept;

    /// The owning scene; a scene returns itself. Null for an object without a scene.
    KQexScene* GetScene() const noexcept { return mScene; }

    /// The object's class.
    virtual const kQexClassId& GetClassId() const noexcept;

    /// Whether the object is of class \p pClass or a class derived from it.
    bool Is(const kQexClassId& pClass) const noexcept { return GetClassId().Is(pClass); }

    /// The \p pIndex-th (0-based) object of class \p pClass among the sources of this one: a node's attribute and then its children,
    /// a collection's members, a curve node's curves. Null when there is none.
    virtual KQexObject* GetSrcObject(kQexClassId pClass, int pIndex) const;

    /// Number of connections from the object to properties.
    int GetDstPropertyCount() const noexcept;

    /// The collection the object is a member of, or null.
    KQexCollection* GetCollection() const noexcept { return mCollection; }

    /// \name Memory
    /// From QexSdkMalloc; a `new` expression returns null when memory runs out.
    /// \{

    /// QexSdkMalloc.
    static void* operator new(std::size_t pSize) noexcept { return QexSdkMalloc(pSize); }
    /// QexSdkMalloc.
    static void* operator new(std::size_t pSize, const std::nothrow_t&) noexcept { return QexSdkMalloc(pSize); }
    /// Placement new.
    static void* operator new(std::size_t, void* pAddress) noexcept { return pAddress; }
    /// QexSdkFree.
    static void operator delete(void* pMemory) noexcept { QexSdkFree(pMemory); }
    /// QexSdkFree.
    static void operator delete(void* pMemory, const std::nothrow_t&) noexcept { QexSdkFree(pMemory); }
    /// Matches placement new; does nothing.
    static void operator delete(void*, void*) noexcept {}
    /// \}

protected:
    /// Adds the object to \p pScene (null: no scene; Destroy or the destructor frees it). When memory runs out the object has no
    /// name, and NullIfIncomplete destroys it.
    KQexObject(KQexScene* pScene, const char* pName);

    /// Result of a `Create`: the new object, or null (and the object freed) when it or its name could not be allocated.
    template <typename T>
    static T* NullIfIncomplete(T* pObject)
    {
        if (pObject != nullptr && pObject->KQexObject::mName == nullptr)
        {
            delete static_cast<KQexObject*>(pObject); // T's destructor may be protected.
            return nullptr;
        }
        return pObject;
    }

    /// For the scene's own constructor: a scene is its own scene.
    void SetScene(KQexScene* pScene) noexcept { mScene = pScene; }

private:
    friend class KQexCollection;
    friend class KQexConnection;
    friend class KQexProperty;
    friend class KQexScene;

    char*                    mName = nullptr;
    KQexScene*               mScene = nullptr;
    KQexListHook<KQexObject> mSceneHook;            ///< In the scene's list of objects.
    KQexConnection*          mFirstDst = nullptr;   ///< Connections whose source is this object.
    KQexCollection*          mCollection = nullptr; ///< The collection that this object is a member of.
    KQexListHook<KQexObject> mMemberHook;           ///< In that collection's list of members.
};

/// \p pObject as a T, or null when it is null or not a T.
template <typename T>
T* QexCast(KQexObject* pObject) noexcept
{
    return pObject != nullptr && pObject->Is(T::smClassId) ? static_cast<T*>(pObject) : nullptr;
}

template <typename T>
const T* QexCast(const KQexObject* pObject) noexcept
{
    return pObject != nullptr && pObject->Is(T::smClassId) ? static_cast<const T*>(pObject) : nullptr;
}

} // namespace qexsdk

#endif
