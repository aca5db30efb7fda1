#ifndef QEXSCENE_KQEXSCENE_H
#define QEXSCENE_KQEXSCENE_H

/// \file
/// The scene. Includes the whole scene library.

#include <kbaselib/kbase/kassert.h>
#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kbase/kstring.h>
#include <kbaselib/kbase/ktime.h>
#include <qexscene/kfcurveglobals.h>
#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexanimcurvefilter.h>
#include <qexscene/kqexanimcurvefilterconstantkeyreducer.h>
#include <qexscene/kqexanimcurvefiltergimblekiller.h>
#include <qexscene/kqexanimcurvefilterunroll.h>
#include <qexscene/kqexanimcurvekey.h>
#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexanimevaluator.h>
#include <qexscene/kqexanimlayer.h>
#include <qexscene/kqexanimstack.h>
#include <qexscene/kqexchannel.h>
#include <qexscene/kqexcollection.h>
#include <qexscene/kqexglobaltransforms.h>
#include <qexscene/kqexlimits.h>
#include <qexscene/kqexmatrix.h>
#include <qexscene/kqexnode.h>
#include <qexscene/kqexnodeattribute.h>
#include <qexscene/kqexnodelimits.h>
#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>
#include <qexscene/kqexskeleton.h>
#include <qexscene/kqextype.h>
#include <qexscene/kqexvector4.h>
#include <qexscene/kqexvectortemplate3.h>

namespace qexsdk
{

/// A scene: a tree of nodes below a root node, and takes. Owns every object created in it. Used by one thread at a time; different
/// scenes may be used by different threads.
class QEX_API KQexScene : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// A scene with a root node ("RootNode") and an evaluator, but no take. Null when memory runs out. The caller owns it and calls
    /// Destroy.
    static KQexScene* Create(const char* pName);

    /// Destroys the scene and every object in it, in linear time and without recursion.
    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;

    ~KQexScene() override;

    /// The root of the scene's tree. Its own transform is part of global transforms.
    KQexNode* GetRootNode() const { return mRootNode; }

    /// The scene's evaluator, never null.
    KQexAnimEvaluator* GetEvaluator() const { return mEvaluator; }

    /// \name Takes
    /// \{

    /// The first stack named exactly \p pName, or null; null for a null or empty name.
    KQexAnimStack* FindAnimStack(const char* pName) const;

    /// The stack of that name with its base layer, both created if missing. Null when \p pName is null or empty, or memory
    /// runs out.
    KQexAnimStack* CreateAnimStack(const char* pName);

    /// Number of stacks.
    int GetAnimStackCount() const { return mStacks.GetCount(); }

    /// Stack \p pIndex, in order of creation; null when there is none.
    KQexAnimStack* GetAnimStack(int pIndex) const { return mStacks.GetAt(pIndex); }
    /// \}

    /// \name All objects, in order of creation: the root node and the evaluator are the first two.
    /// \{

    /// Number of objects.
    int GetObjectCount() const { return mObjects.GetCount(); }
    /// The oldest object.
    KQexObject* GetFirstObject() const { return mObjects.GetFirst(); }
    /// The newest object.
    KQexObject* GetLastObject() const { return mObjects.GetLast(); }
    /// The object created after \p pObject, or null.
    KQexObject* GetNextObject(const KQexObject* pObject) const { return KObjects::GetNext(pObject); }
    /// \}

    /// Changes whenever the tree, members or connections change. For invalidating caches.
    unsigned long long GetVersion() const { return mVersion; }

    /// A number that no other scene of the process has or had.
    unsigned long long GetSerial() const { return mSerial; }

protected:
    /// See KQexObject; use Create.
    explicit KQexScene(const char* pName);

private:
    friend class KQexAnimStack;
    friend class KQexCollection;
    friend class KQexConnection;
    friend class KQexNode;
    friend class KQexObject;
    friend class KQexProperty;

    using KObjects = KQexList<KQexObject, &KQexObject::mSceneHook>;
    using KStacks = KQexIndexedList<KQexAnimStack, &KQexAnimStack::mStackHook>;

    void DestroyObjects();
    void AddStack(KQexAnimStack* pStack);
    void RemoveStack(KQexAnimStack* pStack);

    /// Makes the scene the owner of \p pObject, which has no scene.
    void Adopt(KQexObject* pObject) noexcept;

    /// Gives up ownership of \p pObject.
    void Release(KQexObject* pObject) noexcept;

    void Touch() noexcept { ++mVersion; }

    KObjects           mObjects;
    KStacks            mStacks;
    KQexNode*          mRootNode = nullptr;
    KQexAnimEvaluator* mEvaluator = nullptr;
    unsigned long long mVersion = 1;
    unsigned long long mSerial;
};

} // namespace qexsdk

#endif
