#include <qexioplugins/acclaim/exchange/kqexmovingjoints.h>

#include <qexscene/kqexrestpose.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// Whether the factors differ; with \p pSigned also in their signs.
bool IsUneven(const KQexNode& pNode, bool pSigned)
{
    const auto   lScale = pNode.mLocalScaling.Get();
    const double lX = pSigned ? lScale.mData[0] : std::fabs(lScale.mData[0]);
    const double lBound = 1e-9 * std::fabs(lX);
    for (int i = 1; i < 3; ++i)
    {
        const double lOther = pSigned ? lScale.mData[i] : std::fabs(lScale.mData[i]);
        if (std::fabs(lOther - lX) > lBound)
        {
            return true;
        }
    }
    return false;
}

} // namespace

bool HasOffset(const KQexNode& pNode)
{
    KQexVector4 lOffset(pNode.mLocalTranslation.Get());
    lOffset += pNode.GetRotationOffset();
    return lOffset.Length() > 0.0;
}

KQexMovingJoints::KQexMovingJoints(const KQexNode* pRoot, const std::vector<KQexAnimStack*>& pTakes)
{
    for (const KQexAnimStack* lTake : pTakes)
    {
        mLayers.push_back(KQexLayerOf(lTake));
    }
    unsigned lAbove = 0;
    for (const KQexNode* lNode = pRoot->GetParent(); lNode != nullptr; lNode = lNode->GetParent())
    {
        lAbove |= OwnFlags(*lNode) & (eSCALES | eUNEVEN);
    }
    for (const KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        const unsigned lFlags = AllFlags(*lNode, lNode == pRoot ? lAbove : FlagsOf(lNode->GetParent()));
        mHasTranslations = mHasTranslations || (lNode != pRoot && (lFlags & eTRANSLATES) != 0);
        mHasUnevenScaling = mHasUnevenScaling || (lFlags & eSCALES) != 0 || IsUneven(*lNode, true);
        if (lFlags != 0)
        {
            mFlags[lNode] = lFlags;
        }
    }
}

unsigned KQexMovingJoints::FlagsOf(const KQexNode* pNode) const
{
    const auto lFound = mFlags.find(pNode);
    return lFound != mFlags.end() ? lFound->second : 0U;
}

bool KQexMovingJoints::Has(const KQexNode* pNode, unsigned pFlags) const
{
    return (FlagsOf(pNode) & pFlags) != 0;
}

unsigned KQexMovingJoints::OwnFlags(const KQexNode& pNode) const
{
    const auto lChanges = [&](const KQexProperty& pProperty)
    {
        return std::any_of(mLayers.begin(), mLayers.end(), [&](const KQexAnimLayer* pLayer) { return DiffersFromRest(pProperty, pLayer); });
    };
    return (lChanges(pNode.mLocalTranslation) ? eTRANSLATES : eNONE) | (lChanges(pNode.mLocalRotation) ? eROTATES : eNONE) |
           (lChanges(pNode.mLocalScaling) ? eSCALES : eNONE) | (IsUneven(pNode, false) ? eUNEVEN : eNONE);
}

unsigned KQexMovingJoints::AllFlags(const KQexNode& pNode, unsigned pParentFlags) const
{
    unsigned lFlags = OwnFlags(pNode) | (pParentFlags & (eSCALES | eUNEVEN | eSHEARS));
    if ((pParentFlags & eUNEVEN) != 0 && (lFlags & eROTATES) != 0)
    {
        lFlags |= eSHEARS;
    }
    if ((pParentFlags & (eSCALES | eSHEARS)) != 0 && HasOffset(pNode))
    {
        lFlags |= eTRANSLATES;
    }
    return lFlags;
}

} // namespace qexsdk
