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

/// All but mParentAxisRMInv, which has to be there.
inline void SetupChild(KQexAsfNode& pNode, const KQexAsfNode& pParent, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KgeMult(pNode.mPositionV, pNode.mDirectionV, pNode.mLength);
    KgeSet(pNode.mParentPositionV, pParent.mPositionV);
    KgeSet(pNode.mParentAxisRM, pParent.mAxisRM);
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
    {
        KgeSet(pNode.mParentAxisRMInv, pNode.mParent->mAxisRMInv);
        SetupChild(pNode, *pNode.mParent, pSetRotatePivotOffet, pSetPreRotation);
    }
    else
        SetupRoot(pNode, pSetRotatePivotOffet, pSetPreRotation);
}

void SetupReadFrame(KQexAsfNode& pNode, const KQexAsfNode& pParent, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    if (pSetRotatePivotOffet && pSetPreRotation)
    {
        SetupCarriedByHost(pNode);
        return;
    }
    KgeInverse(pNode.mParentAxisRMInv, pParent.mAxisRM);
    SetupChild(pNode, pParent, pSetRotatePivotOffet, pSetPreRotation);
}

namespace
{

/// Bones ahead of the one being computed for which memory is asked.
constexpr int kFramesAhead = 4;

/// Asks for what the frame of a bone that comes soon is computed from, and for where it goes.
void Approach(const KQexAsfNode& pNode, const KQexAsfLevels& pLevels)
{
    if (const KQexAsfNode* lNode = pLevels.GetAhead(kFramesAhead))
    {
        KPrefetch(&lNode->mParent, &lNode->mLR + 1);
        if (lNode->mParent)
        {
            KPrefetch(&lNode->mParent->mPositionV, &lNode->mParent->mAxisRM + 1);
            KPrefetch(&lNode->mParent->mAxisRMInv, &lNode->mParent->mAxisRMInv + 1);
        }
        return;
    }
    const std::ptrdiff_t lGuess = pLevels.GuessAhead(kFramesAhead);
    KPrefetch(reinterpret_cast<const char*>(&pNode.mParent) + lGuess, reinterpret_cast<const char*>(&pNode.mLR + 1) + lGuess);
}

} // namespace

void KQexAsfNode::SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexAsfLevels lLevels(this);
    while (HKQexAsfNode lNode = lLevels.Next())
    {
        Approach(*lNode, lLevels);
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
