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

/// Base of everything that lives in a scene: a name, the scene that owns it, and its connections.
///
/// Ownership: an object is made by its class's `Create` and belongs to its scene, which destroys it at the latest when it
/// is destroyed itself. `Destroy` ends one object earlier. Either way the object leaves its parent, its collection and
/// every property it is connected to first, so nothing refers to it afterwards. Objects live in the library's memory
/// (QexSdkMalloc, QexSdkFree), also when `new` makes an object of a derived class. Not thread-safe: one scene is used by
/// one thread at a time; different scenes are independent.
class QEX_API KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Ends the object: detaches it everywhere and frees it. O(1) and the number of its own connections.
    /// \param pRecursive  true: what hangs on the object goes as well; each class says what that is.
    /// \param pDependents kept for the callers that pass it; has no effect.
    /// A scene ends its objects through this operation too (both flags false), after having let go of them.
    virtual void Destroy(bool pRecursive = false, bool pDependents = false);

    /// Detaches the object from everything that knows it.
    virtual ~KQexObject();

    KQexObject(const KQexObject&) = delete;
    KQexObject& operator=(const KQexObject&) = delete;

    /// The name, never null. Valid until the name is set or the object ends.
    const char* GetName() const noexcept { return mName != nullptr ? mName : ""; }

    /// Copies \p pName (null counts as ""). False, and the old name kept, when memory runs out.
    bool SetName(const char* pName);

    /// The name after its last colon: what stands before is a name-space prefix.
    KString GetNameWithoutNameSpacePrefix() const;

    /// The same as part of GetName(), valid as long as that.
    const char* GetBareName() const noexcept;

    /// The owning scene; a scene gives itself. Null for an object that its scene has let go of.
    KQexScene* GetScene() const noexcept { return mScene; }

    /// Which class the object is of.
    virtual const kQexClassId& GetClassId() const noexcept;

    /// Whether the object is of class \p pClass or of one derived from it.
    bool Is(const kQexClassId& pClass) const noexcept { return GetClassId().Is(pClass); }

    /// The \p pIndex-th (0-based) object of class \p pClass among those that are sources of this one: a node's attribute and
    /// then its children, a collection's members, a curve node's curves. Null when there is none.
    virtual KQexObject* GetSrcObject(kQexClassId pClass, int pIndex) const;

    /// Number of properties that the object is connected to, counting each connection.
    int GetDstPropertyCount() const noexcept;

    /// The collection the object is a member of, or null.
    KQexCollection* GetCollection() const noexcept { return mCollection; }

    /// \name Memory
    /// From QexSdkMalloc; a failed allocation makes the `new` expression give null.
    /// \{

    /// Memory for an object; null when it runs out.
    static void* operator new(std::size_t pSize) noexcept { return QexSdkMalloc(pSize); }
    /// The same, for callers who say that they look at the result.
    static void* operator new(std::size_t pSize, const std::nothrow_t&) noexcept { return QexSdkMalloc(pSize); }
    /// \p pPlace itself, which the caller owns.
    static void* operator new(std::size_t, void* pPlace) noexcept { return pPlace; }
    /// Gives the memory back; null does nothing.
    static void operator delete(void* pMemory) noexcept { QexSdkFree(pMemory); }
    /// Belongs to the form that is given std::nothrow.
    static void operator delete(void* pMemory, const std::nothrow_t&) noexcept { QexSdkFree(pMemory); }
    /// Belongs to the placement form; nothing to give back.
    static void operator delete(void*, void*) noexcept {}
    /// \}

protected:
    /// Registers the object with \p pScene (null: it belongs to no scene and ends by Destroy or by its destructor).
    /// When there is no memory for the name, the object has none and Completed refuses it.
    KQexObject(KQexScene* pScene, const char* pName);

    /// What a `Create` gives back for a freshly made object: the object, or null (and the object freed) when it or its name
    /// could not be allocated.
    template <typename T>
    static T* Completed(T* pObject)
    {
        if (pObject != nullptr && pObject->KQexObject::mName == nullptr)
        {
            delete static_cast<KQexObject*>(pObject); // The destructor of T may be protected.
            return nullptr;
        }
        return pObject;
    }

    /// For the scene's own constructor: the scene of a scene is itself.
    void SetScene(KQexScene* pScene) noexcept { mScene = pScene; }

private:
    friend class KQexCollection;
    friend class KQexConnection;
    friend class KQexProperty;
    friend class KQexScene;

    char*                    mName = nullptr;
    KQexScene*               mScene = nullptr;
    KQexListHook<KQexObject> mSceneHook;            ///< Place among the scene's objects.
    KQexConnection*          mFirstDst = nullptr;   ///< Connections whose source is this object.
    KQexCollection*          mCollection = nullptr; ///< Whose member this object is.
    KQexListHook<KQexObject> mMemberHook;           ///< Place among that collection's members.
};

/// \p pObject as a T, or null when it is null or of another class.
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
