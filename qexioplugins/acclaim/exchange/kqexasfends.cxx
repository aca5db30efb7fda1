#include <qexioplugins/acclaim/exchange/kqexasfends.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kEndFraction = 0.01; ///< Of the skeleton's extent.

/// Two digits: rounding errors of a round trip do not change them.
double RoundToTwoDigits(double pValue)
{
    const double lStep = std::pow(10.0, std::floor(std::log10(pValue)) - 1.0);
    return std::round(pValue / lStep) * lStep;
}

/// The largest extent of all starts and ends of bones at rest.
double GetExtent(const std::vector<KQexAsfOrigin>& pOrigins)
{
    std::unordered_map<const KQexAsfNode*, KgeTVector> lEnds;
    double                                             lLeast[3] = {};
    double                                             lGreatest[3] = {};
    for (const KQexAsfOrigin& lOrigin : pOrigins)
    {
        const auto lParent = lEnds.find(lOrigin.mBone->mParent);
        KgeTVector lEnd;
        KgeMult(lEnd, lOrigin.mBone->mDirectionV, lOrigin.mBone->mLength);
        if (lParent != lEnds.end())
        {
            KgeAdd(lEnd, lEnd, lParent->second);
        }
        for (int i = 0; i < 3; ++i)
        {
            lLeast[i] = std::min(lLeast[i], lEnd[i]);
            lGreatest[i] = std::max(lGreatest[i], lEnd[i]);
        }
        lEnds[lOrigin.mBone] = lEnd;
    }
    return std::max({lGreatest[0] - lLeast[0], lGreatest[1] - lLeast[1], lGreatest[2] - lLeast[2]});
}

} // namespace

const std::vector<KQexBoneDof>* FindBoneDofs(const KQexBoneDofs& pDofs, const KQexNode* pNode)
{
    auto lFound = pDofs.find(pNode->GetName());
    if (lFound == pDofs.end())
    {
        lFound = pDofs.find(BareName(pNode));
    }
    return lFound != pDofs.end() ? &lFound->second : nullptr;
}

bool IsEndOfParent(const KQexNode& pNode, const KQexMovingJoints& pMoving, const KQexBoneDofs* pDofs)
{
    if (pNode.GetFirstChild() != nullptr || BareName(&pNode) != BareName(pNode.GetParent()) + kEndSuffix || pMoving.Moves(&pNode))
    {
        return false;
    }
    const std::vector<KQexBoneDof>* lDofs = pDofs != nullptr ? FindBoneDofs(*pDofs, &pNode) : nullptr;
    return lDofs == nullptr || lDofs->empty();
}

bool AddEndNodes(KQexNode* pRoot, const KQexMovingJoints& pMoving, const KQexBoneDofs* pDofs, std::unordered_set<const KQexNode*>& pLeaves)
{
    std::vector<KQexNode*> lLeaves;
    for (KQexNode* lNode = pRoot->GetNextInTree(pRoot); lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        const KQexNode* lChild = lNode->GetFirstChild();
        if (lChild == nullptr && !IsEndOfParent(*lNode, pMoving, pDofs))
        {
            lLeaves.push_back(lNode);
        }
        else if (lNode->GetChildCount() == 1 && IsEndOfParent(*lChild, pMoving, pDofs) && !HasOffset(*lChild))
        {
            pLeaves.insert(lNode);
        }
    }
    for (KQexNode* lLeaf : lLeaves)
    {
        KQexNode* lEnd = KQexNode::Create(lLeaf->GetScene(), (BareName(lLeaf) + kEndSuffix).c_str());
        if (lEnd == nullptr || !lLeaf->AddChild(lEnd))
        {
            return false;
        }
        pLeaves.insert(lLeaf);
    }
    return true;
}

double SetAddedEnds(const std::vector<KQexAsfOrigin>& pOrigins, const std::unordered_set<const KQexNode*>& pLeaves)
{
    if (pLeaves.empty())
    {
        return 0.0;
    }
    const double lExtent = GetExtent(pOrigins);
    const double lLength = lExtent > 0.0 ? RoundToTwoDigits(kEndFraction * lExtent) : 1.0;
    // By bone: the direction of the nearest one with a length, the bone itself or an ancestor.
    std::unordered_map<const KQexAsfNode*, KgeTVector> lDirections;
    for (const KQexAsfOrigin& lOrigin : pOrigins)
    {
        KQexAsfNode& lBone = *lOrigin.mBone;
        const auto   lFound = lDirections.find(lBone.mParent);
        KgeTVector   lDirection = lFound != lDirections.end() ? lFound->second : KgeTVector(0.0, 1.0, 0.0);
        if (pLeaves.count(lOrigin.mNode) > 0)
        {
            lBone.mDirectionV = lDirection;
            lBone.mLength = lLength;
        }
        else if (lBone.mLength > 0.0)
        {
            lDirection = lBone.mDirectionV;
        }
        lDirections.emplace(&lBone, lDirection);
    }
    return lLength;
}

} // namespace qexsdk
