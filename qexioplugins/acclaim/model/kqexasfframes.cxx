#include <qexioplugins/acclaim/model/kqexasflocals.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

namespace qexsdk
{

namespace
{

/// The host node's rotation offset and pre-rotation replace mLT and mLR. Deliberate: mParentAxisRM and
/// mParentAxisRMInv are unchanged; with both flags set nothing reads them.
void SetupWithBothFlags(KQexAsfNode& pNode)
{
    pNode.mLR.Init();
    pNode.mLT.Init();
    KgeMult(pNode.mPositionV, pNode.mDirectionV, pNode.mLength);
    if (pNode.mParent)
    {
        KgeSet(pNode.mParentPositionV, pNode.mParent->mPositionV);
    }
    else
    {
        pNode.mParentPositionV.Init();
    }
}

void SetupChild(KQexAsfNode& pNode, const KQexAsfNode& pParent, KQexFrameFlags pFlags)
{
    KgeMult(pNode.mPositionV, pNode.mDirectionV, pNode.mLength);
    KgeSet(pNode.mParentPositionV, pParent.mPositionV);
    KgeSet(pNode.mParentAxisRM, pParent.mAxisRM);
    KgeSet(pNode.mParentAxisRMInv, pParent.mAxisRMInv);
    SetLocals(pNode, pFlags);
}

/// Deliberate: the root's position is the one read from the file, not its direction times its length.
void SetupRoot(KQexAsfNode& pNode, KQexFrameFlags pFlags)
{
    if (!pFlags.mSetRotatePivotOffet)
    {
        KgeSet(pNode.mLT, pNode.mPositionV);
    }
    if (!pFlags.mSetPreRotation)
    {
        KgeSet(pNode.mLR, pNode.mAxisRM);
    }
}

void SetupFrame(KQexAsfNode& pNode, KQexFrameFlags pFlags)
{
    if (pFlags.mSetRotatePivotOffet && pFlags.mSetPreRotation)
    {
        SetupWithBothFlags(pNode);
    }
    else if (pNode.mParent)
    {
        SetupChild(pNode, *pNode.mParent, pFlags);
    }
    else
    {
        SetupRoot(pNode, pFlags);
    }
}

} // namespace

void KQexAsfNode::SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    // Pre-order: a bone reads its parent's mPositionV.
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering())
        {
            SetupFrame(*lNode, {pSetRotatePivotOffet, pSetPreRotation});
        }
    }
}

} // namespace qexsdk
