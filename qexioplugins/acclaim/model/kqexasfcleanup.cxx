#include <qexioplugins/acclaim/model/kqexasflocals.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

namespace qexsdk
{

namespace
{

bool IsDummy(const KQexAsfNode& pNode)
{
    return pNode.mOrderCount == 0;
}

/// Removes null entries in one pass; removed one by one, each would move all entries after it.
void RemoveNulls(KArrayTemplate<KQexAsfNode*>& pChildBuf)
{
    pChildBuf.RemoveIf([](const KQexAsfNode* pChild) { return pChild == nullptr; });
}

/// Folds the dummies below a bone into it, down to the first bones that are not dummies.
///
/// Folding dummies one by one, bottom-up, would move a bone once per dummy above it: quadratic for chains of dummies. The result is
/// known in advance: every fold appends a dummy's children to those of its parent, last one first, and a moved bone ends in the frame
/// of the bone above the topmost dummy, with the offsets of all dummies in between added to its own. So each bone moves once.
class KDummyFold
{
public:
    KDummyFold(KQexAsfNode& pNode, KQexFrameFlags pFlags) : mNode(pNode), mFlags(pFlags), mWalk(&pNode, KQexAsfWalk::eALTERNATING) {}

    /// False, with nothing changed, when memory runs out.
    bool Fold()
    {
        if (!mNode.mChildBuf.Reserve(mNode.mChildBuf.GetCount() + CountMoved()))
        {
            return false;
        }
        while (HKQexAsfNode lNode = mWalk.Next())
        {
            if (lNode == &mNode)
            {
                continue;
            }
            if (!IsDummy(*lNode))
            {
                mWalk.SkipChildren();
            }
            else if (mWalk.IsEntering())
            {
                Enter(*lNode);
            }
            else
            {
                Leave(*lNode);
            }
        }
        RemoveNulls(mNode.mChildBuf);
        return true;
    }

private:
    int CountMoved() const
    {
        int         lCount = 0;
        KQexAsfWalk lWalk(&mNode);
        while (HKQexAsfNode lNode = lWalk.Next())
        {
            if (lNode == &mNode || IsDummy(*lNode))
            {
                continue;
            }
            lCount += lWalk.GetParent() == &mNode ? 0 : 1;
            lWalk.SkipChildren();
        }
        return lCount;
    }

    /// A child list is reversed once per dummy above it. In the resulting order, a list's own bones come before those below its dummies
    /// when it is walked backward, and after them when it is walked forward.
    void Enter(KQexAsfNode& pDummy)
    {
        if (const KQexAsfNode* lParent = mWalk.GetParent(); lParent != &mNode)
        {
            AddParentFrame(pDummy, *lParent);
        }
        if (!mWalk.IsForward())
        {
            for (int lIter = 0; lIter < pDummy.mChildBuf.GetCount(); ++lIter)
            {
                Move(pDummy, pDummy.mChildBuf[lIter]);
            }
        }
    }

    void Leave(KQexAsfNode& pDummy)
    {
        if (mWalk.IsForward())
        {
            for (int lIter = pDummy.mChildBuf.GetCount() - 1; lIter >= 0; --lIter)
            {
                Move(pDummy, pDummy.mChildBuf[lIter]);
            }
        }
        mWalk.ClearEntry();
        pDummy.mChildBuf.Clear();
        QexSdkDelete(&pDummy);
    }

    void Move(const KQexAsfNode& pDummy, HKQexAsfNode pBone)
    {
        if (!pBone || IsDummy(*pBone))
        {
            return;
        }
        AddParentFrame(*pBone, pDummy);
        mNode.AddChild(pBone);
        SetLocals(*pBone, mFlags);
    }

    /// The bone gets the axis of the dummy's parent, not the dummy's own, and the dummy's offset is added to its own.
    static void AddParentFrame(KQexAsfNode& pBone, const KQexAsfNode& pDummy)
    {
        KgeSet(pBone.mParentAxisRM, pDummy.mParentAxisRM);
        KgeSet(pBone.mParentAxisRMInv, pDummy.mParentAxisRMInv);
        KgeAdd(pBone.mParentPositionV, pDummy.mParentPositionV, pBone.mParentPositionV);
    }

    KQexAsfNode&   mNode;
    KQexFrameFlags mFlags;
    KQexAsfWalk    mWalk;
};

bool IsEndSite(const KQexAsfNode& pNode)
{
    // Compared exactly: a bone is kept however short it is.
    return pNode.mChildBuf.GetCount() == 0 && pNode.mLength == 0.0 && !(pNode.mLTNode != nullptr && pNode.mLTNode->IsAnimated(true)) &&
           !(pNode.mLRNode != nullptr && pNode.mLRNode->IsAnimated(true));
}

void RemoveEndSiteChildren(KQexAsfNode& pNode)
{
    for (int lIter = pNode.mChildBuf.GetCount() - 1; lIter >= 0; --lIter)
    {
        HKQexAsfNode lChild = pNode.mChildBuf[lIter];
        if (!lChild || !IsEndSite(*lChild))
        {
            continue;
        }
        pNode.mChildBuf.SetAt(lIter, nullptr);
        QexSdkDelete(lChild);
    }
    RemoveNulls(pNode.mChildBuf);
}

} // namespace

bool KQexAsfNode::RemoveDummy(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    bool        lOk = true;
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering())
        {
            lOk = KDummyFold(*lNode, {pSetRotatePivotOffet, pSetPreRotation}).Fold() && lOk;
        }
    }
    return lOk;
}

void KQexAsfNode::RemoveEndSite()
{
    // Deliberate: children are tested before the walk enters them, so a bone that becomes a leaf in this call is kept and one call
    // removes one level.
    KQexAsfWalk lWalk(this, KQexAsfWalk::eLAST_TO_FIRST);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering())
        {
            RemoveEndSiteChildren(*lNode);
        }
    }
}

} // namespace qexsdk
