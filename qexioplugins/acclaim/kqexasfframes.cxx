#include <qexioplugins/acclaim/kqexasfnode.h>
#include <qexioplugins/acclaim/kqexasfrotation.h>
#include <qexioplugins/acclaim/kqexasfwalk.h>

namespace qexsdk
{

namespace
{

// The parent bone's end, in the parent's axis frame: where the child's host node sits.
void SetLocalTranslation(KQexAsfNode& pNode)
{
    KgeMult(pNode.mLT, pNode.mParentAxisRMInv, pNode.mParentPositionV);
}

// The bone's axis relative to its parent's axis.
void SetLocalRotation(KQexAsfNode& pNode)
{
    KgeRMatrix lRM;
    KgeMult(lRM, pNode.mParentAxisRMInv, pNode.mAxisRM);
    SetAxisAngles(pNode.mLR, lRM, pNode);
}

void SetLocals(KQexAsfNode& pNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    if (!pSetRotatePivotOffet)
        SetLocalTranslation(pNode);
    if (!pSetPreRotation)
        SetLocalRotation(pNode);
}

// Both quantities are carried by the host node's offsets. The parent's axis fields stay as they were, deliberately: with both
// flags set nothing reads them.
void SetupCarriedByHost(KQexAsfNode& pNode)
{
    pNode.mLR.Init();
    pNode.mLT.Init();
    KgeMult(pNode.mPositionV, pNode.mDirectionV, pNode.mLength);
    if (pNode.mParent)
        KgeSet(pNode.mParentPositionV, pNode.mParent->mPositionV);
    else
        pNode.mParentPositionV.Init();
}

void SetupChild(KQexAsfNode& pNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KgeMult(pNode.mPositionV, pNode.mDirectionV, pNode.mLength);
    KgeSet(pNode.mParentPositionV, pNode.mParent->mPositionV);
    KgeSet(pNode.mParentAxisRM, pNode.mParent->mAxisRM);
    KgeSet(pNode.mParentAxisRMInv, pNode.mParent->mAxisRMInv);
    SetLocals(pNode, pSetRotatePivotOffet, pSetPreRotation);
}

// The root's position is the one read from the file; it is not its direction times its length, deliberately.
void SetupRoot(KQexAsfNode& pNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    if (!pSetRotatePivotOffet)
        KgeSet(pNode.mLT, pNode.mPositionV);
    if (!pSetPreRotation)
        KgeSet(pNode.mLR, pNode.mAxisRM);
}

// Bones taken out of their parent's children, in the order in which they were taken: last index first.
// The chain runs through mParent, which means nothing any more in a bone that is about to be released.
class KTakenBones
{
public:
    KTakenBones() : mFirst(nullptr), mLast(nullptr) {}

    void Append(HKQexAsfNode pNode)
    {
        pNode->mParent = nullptr;
        (mLast ? mLast->mParent : mFirst) = pNode;
        mLast = pNode;
    }

    HKQexAsfNode TakeFirst()
    {
        HKQexAsfNode lNode = mFirst;
        if (!lNode)
            return nullptr;
        mFirst = lNode->mParent;
        if (!mFirst)
            mLast = nullptr;
        return lNode;
    }

private:
    HKQexAsfNode mFirst;
    HKQexAsfNode mLast;
};

// Closes the gaps that were left as null entries, in one pass: taking each entry out by itself would move the tail every time.
void CloseGaps(KArrayTemplate<KQexAsfNode*>& pChildBuf)
{
    pChildBuf.RemoveIf([](const KQexAsfNode* pChild) { return pChild == nullptr; });
}

// Hands the children of pDummy to pNode. Only the offset is accumulated: a moved bone takes the axis of the dummy's parent, not
// the dummy's own, because the bone's own axis and offset are global already.
void MoveChildren(KQexAsfNode& pNode, KQexAsfNode& pDummy, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    for (int lIter = pDummy.mChildBuf.GetCount() - 1; lIter >= 0; lIter--)
    {
        HKQexAsfNode lChild = pDummy.mChildBuf[lIter];
        if (!lChild)
            continue;
        KgeSet(lChild->mParentAxisRM, pDummy.mParentAxisRM);
        KgeSet(lChild->mParentAxisRMInv, pDummy.mParentAxisRMInv);
        KgeAdd(lChild->mParentPositionV, pDummy.mParentPositionV, lChild->mParentPositionV);
        pNode.AddChild(lChild);
        SetLocals(*lChild, pSetRotatePivotOffet, pSetPreRotation);
    }
    pDummy.mChildBuf.Clear();
}

// Takes the children without any DOF out, as far as there is room for their own children at this bone.
void TakeDummies(KQexAsfNode& pNode, KTakenBones& pTaken)
{
    // The count as it would be if each dummy went by itself: its children come before it goes.
    int lCount = pNode.mChildBuf.GetCount();
    for (int lIter = lCount - 1; lIter >= 0; lIter--)
    {
        HKQexAsfNode lChild = pNode.mChildBuf[lIter];
        if (!lChild || lChild->mOrderCount != 0 || !pNode.mChildBuf.Reserve(lCount + lChild->mChildBuf.GetCount()))
            continue;
        lCount += lChild->mChildBuf.GetCount() - 1;
        pNode.mChildBuf.SetAt(lIter, nullptr);
        pTaken.Append(lChild);
    }
    CloseGaps(pNode.mChildBuf);
}

void FoldDummies(KQexAsfNode& pNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KTakenBones lTaken;
    TakeDummies(pNode, lTaken);
    while (HKQexAsfNode lDummy = lTaken.TakeFirst())
    {
        MoveChildren(pNode, *lDummy, pSetRotatePivotOffet, pSetPreRotation);
        QexSdkDelete(lDummy);
    }
}

bool IsEndSite(const KQexAsfNode& pNode)
{
    // The length is compared exactly: a bone that has any length is kept.
    return pNode.mChildBuf.GetCount() == 0 && pNode.mLength == 0.0 && !(pNode.mLTNode && pNode.mLTNode->IsAnimated(true)) &&
           !(pNode.mLRNode && pNode.mLRNode->IsAnimated(true));
}

void RemoveEndSiteChildren(KQexAsfNode& pNode)
{
    KTakenBones lTaken;
    for (int lIter = pNode.mChildBuf.GetCount() - 1; lIter >= 0; lIter--)
    {
        HKQexAsfNode lChild = pNode.mChildBuf[lIter];
        if (!lChild || !IsEndSite(*lChild))
            continue;
        pNode.mChildBuf.SetAt(lIter, nullptr);
        lTaken.Append(lChild);
    }
    CloseGaps(pNode.mChildBuf);
    while (HKQexAsfNode lEndSite = lTaken.TakeFirst())
        QexSdkDelete(lEndSite);
}

} // namespace

void KQexAsfNode::SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
            continue;
        if (pSetRotatePivotOffet && pSetPreRotation)
            SetupCarriedByHost(*lNode);
        else if (lNode->mParent)
            SetupChild(*lNode, pSetRotatePivotOffet, pSetPreRotation);
        else
            SetupRoot(*lNode, pSetRotatePivotOffet, pSetPreRotation);
    }
}

void KQexAsfNode::RemoveDummy(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    // All children of a bone are clean before the first of them is judged, and a moved child is not visited again: it was
    // cleaned where it was.
    KQexAsfWalk lWalk(this, KQexAsfWalk::eLAST_TO_FIRST);
    while (HKQexAsfNode lNode = lWalk.Next())
        if (!lWalk.IsEntering())
            FoldDummies(*lNode, pSetRotatePivotOffet, pSetPreRotation);
}

void KQexAsfNode::RemoveEndSite()
{
    // The children are judged before the walk goes into them, deliberately: a bone that becomes a leaf in this call is kept, so
    // that one call takes off one level.
    KQexAsfWalk lWalk(this, KQexAsfWalk::eLAST_TO_FIRST);
    while (HKQexAsfNode lNode = lWalk.Next())
        if (lWalk.IsEntering())
            RemoveEndSiteChildren(*lNode);
}

} // namespace qexsdk
