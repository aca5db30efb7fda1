#ifndef QEXSCENE_KQEXSCENE_H
#define QEXSCENE_KQEXSCENE_H

/// \file
/// The scene, and with it everything of the scene library.

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

/// A scene: owns every object made in it, a tree of nodes under a root node, and takes. Used by one thread at a time;
/// several scenes may be used by several threads.
class QEX_API KQexScene : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// Makes a scene with a root node ("RootNode") and an evaluator, and no take. Null when memory runs out. The caller
    /// owns it and ends it by Destroy.
    static KQexScene* Create(const char* pName);

    /// Ends the scene and every object in it, in time proportional to their number and without recursion.
    void               Destroy(bool pRecursive = false, bool pDependents = false) override;
    const kQexClassId& GetClassId() const noexcept override;

    ~KQexScene() override;

    /// The node that others are hung under to be part of the scene's tree. Its own transform counts in global transforms.
    KQexNode* GetRootNode() const { return mRootNode; }

    /// The scene's evaluator, never null.
    KQexAnimEvaluator* GetEvaluator() const { return mEvaluator; }

    /// \name Takes
    /// \{

    /// The first stack named exactly \p pName, or null; null for a null or empty name.
    KQexAnimStack* FindAnimStack(const char* pName) const;

    /// The stack of that name with its base layer, both made when missing. Null when \p pName is null or empty, or memory
    /// runs out.
    KQexAnimStack* CreateAnimStack(const char* pName);

    /// Number of stacks.
    int GetAnimStackCount() const { return mStacks.GetCount(); }

    /// Stack \p pIndex, in the order in which they were made; null when there is none.
    KQexAnimStack* GetAnimStack(int pIndex) const { return mStacks.GetAt(pIndex); }
    /// \}

    /// \name All objects, in the order in which they were made: the root node and the evaluator are the first two.
    /// \{

    /// How many there are.
    int GetObjectCount() const { return mObjects.GetCount(); }
    /// The first one.
    KQexObject* GetFirstObject() const { return mObjects.GetFirst(); }
    /// The one made last.
    KQexObject* GetLastObject() const { return mObjects.GetLast(); }
    /// The one made after \p pObject, or null.
    KQexObject* GetNextObject(const KQexObject* pObject) const { return KObjects::GetNext(pObject); }
    /// \}

    /// Changes whenever nodes, members or connections do. For those who keep what they found out about them.
    unsigned long long GetVersion() const { return mVersion; }

    /// A number that no other scene of the process has or had.
    unsigned long long GetSerial() const { return mSerial; }

protected:
    /// As KQexObject's; scenes are made by Create.
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

    /// Makes the scene the owner of \p pObject, which has none.
    void Adopt(KQexObject* pObject) noexcept;

    /// Ends that.
    void LetGo(KQexObject* pObject) noexcept;

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
