#include <qexioplugins/acclaim/kqexasflevels.h>
#include <qexioplugins/acclaim/kqexasflocals.h>
#include <qexioplugins/acclaim/kqexasfwalk.h>

namespace qexsdk
{

namespace
{

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

} // namespace

void SetupFrame(KQexAsfNode& pNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    if (pSetRotatePivotOffet && pSetPreRotation)
        SetupCarriedByHost(pNode);
    else if (pNode.mParent)
        SetupChild(pNode, pSetRotatePivotOffet, pSetPreRotation);
    else
        SetupRoot(pNode, pSetRotatePivotOffet, pSetPreRotation);
}

namespace
{

/// Bones ahead of the one being computed for which memory is asked.
constexpr int kFramesAhead = 2;

/// Asks for what the frame of a bone is computed from, and for where it goes. Null does nothing.
void Approach(const KQexAsfNode* pNode)
{
    if (!pNode)
        return;
    KPrefetch(&pNode->mParent, &pNode->mLR + 1);
    if (pNode->mParent)
        KPrefetch(&pNode->mParent->mPositionV, &pNode->mParent->mAxisRMInv + 1);
}

} // namespace

void KQexAsfNode::SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexAsfLevels lLevels(this);
    while (HKQexAsfNode lNode = lLevels.Next())
    {
        Approach(lLevels.GetAhead(kFramesAhead));
        SetupFrame(*lNode, pSetRotatePivotOffet, pSetPreRotation);
    }
    if (!lLevels.HasFailed())
        return;
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
        if (lWalk.IsEntering())
            SetupFrame(*lNode, pSetRotatePivotOffet, pSetPreRotation);
}

} // namespace qexsdk
