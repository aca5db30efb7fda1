#include <apps/asf/report/figurepairing.h>

#include <kbaselib/kbase/kletters.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexscene/kqexrestpose.h>

#include <algorithm>
#include <string>
#include <unordered_map>

namespace asfapp
{

namespace
{

using qexsdk::KQexNode;

const char* WholeName(const KQexNode& pNode)
{
    return pNode.GetName();
}

const char* BareName(const KQexNode& pNode)
{
    return pNode.GetBareName();
}

bool IsNamedAsEnd(const std::string& pName, const std::string& pParent)
{
    return pName.compare(0, pParent.size(), pParent) == 0 && qexsdk::KEqualsIgnoreCase(pName.substr(pParent.size()), "_end");
}

std::vector<int> ParentsOf(const std::vector<KQexNode*>& pNodes)
{
    std::unordered_map<const KQexNode*, int> lIndices;
    std::vector<int>                         lParents;
    for (const KQexNode* lNode : pNodes)
    {
        const auto lFound = lIndices.find(lNode->GetParent());
        lParents.push_back(lFound == lIndices.end() ? -1 : lFound->second);
        lIndices.emplace(lNode, static_cast<int>(lIndices.size()));
    }
    return lParents;
}

} // namespace

void KFigurePairing::Run(const KPairingSide& pFirst, const KPairingSide& pSecond)
{
    mSides[0] = &pFirst;
    mSides[1] = &pSecond;
    for (int lFigure = 0; lFigure < 2; ++lFigure)
    {
        mParents[lFigure] = ParentsOf(mSides[lFigure]->mNodes);
        mPartners[lFigure].assign(mSides[lFigure]->mNodes.size(), -1);
    }
    if (!HasNamesakeOfRoot(0) && !HasNamesakeOfRoot(1))
    {
        PairRoots();
    }
    PairByName(WholeName);
    mBareCount = PairByName(BareName);
    mBarePair = mBareCount > 0 ? mPairs.back() : mBarePair;
    PairRoots(); // Roots whose namesakes found another partner.
    PairEnds();
    CollectOnly(0);
    CollectOnly(1);
}

void KFigurePairing::PairRoots()
{
    const bool lHasRoots = mSides[0]->mHasOneRoot && mSides[1]->mHasOneRoot && !mPartners[0].empty() && !mPartners[1].empty();
    if (lHasRoots && !IsPaired(0, 0) && !IsPaired(1, 0))
    {
        Pair(0, 0);
    }
}

/// Whether a joint of the figure has the name of the other figure's root: if it is below the root, one figure has a root above that of the
/// other. The name "root" means nothing, as every root of an ASF file has it.
bool KFigurePairing::HasNamesakeOfRoot(int pFigure) const
{
    const std::vector<KQexNode*>& lNodes = mSides[pFigure]->mNodes;
    const std::vector<KQexNode*>& lOther = mSides[1 - pFigure]->mNodes;
    const std::string             lName = lOther.empty() ? "" : lOther.front()->GetBareName();
    return lName != qexsdk::kRootName &&
           std::any_of(lNodes.begin(), lNodes.end(), [&lName](const KQexNode* pNode) { return lName == pNode->GetBareName(); });
}

void KFigurePairing::Pair(int pFirst, int pSecond)
{
    mPartners[0][static_cast<size_t>(pFirst)] = pSecond;
    mPartners[1][static_cast<size_t>(pSecond)] = pFirst;
    mPairs.emplace_back(pFirst, pSecond);
}

/// Pairs joints of the same name that have no partner yet. \return the number of new pairs
int KFigurePairing::PairByName(const char* (*pNameOf)(const KQexNode&))
{
    std::unordered_map<std::string, std::vector<int>> lFree; // Of the second figure, the last one first.
    for (size_t lSecond = mPartners[1].size(); lSecond-- > 0;)
    {
        if (!IsPaired(1, lSecond))
        {
            lFree[pNameOf(*mSides[1]->mNodes[lSecond])].push_back(static_cast<int>(lSecond));
        }
    }
    const size_t lBefore = mPairs.size();
    for (size_t lFirst = 0; lFirst < mPartners[0].size(); ++lFirst)
    {
        const char* lName = pNameOf(*mSides[0]->mNodes[lFirst]);
        const auto  lFound = IsPaired(0, lFirst) || *lName == '\0' ? lFree.end() : lFree.find(lName);
        if (lFound != lFree.end() && !lFound->second.empty())
        {
            Pair(static_cast<int>(lFirst), lFound->second.back());
            lFound->second.pop_back();
        }
    }
    return static_cast<int>(mPairs.size() - lBefore);
}

/// A leaf at rest that is named after its parent. Other programs write the suffix in small letters.
bool KFigurePairing::IsEnd(int pFigure, int pNode) const
{
    const KQexNode& lNode = *mSides[pFigure]->mNodes[static_cast<size_t>(pNode)];
    const KQexNode* lParent = lNode.GetParent();
    if (lParent == nullptr || lNode.GetFirstChild() != nullptr || !IsNamedAsEnd(lNode.GetBareName(), lParent->GetBareName()))
    {
        return false;
    }
    const qexsdk::KQexAnimLayer* lLayer = mSides[pFigure]->mLayer;
    return lLayer == nullptr ||
           !(qexsdk::DiffersFromRest(lNode.mLocalTranslation, lLayer) || qexsdk::DiffersFromRest(lNode.mLocalRotation, lLayer));
}

/// For each node the only leaf without a partner among its children; -1 if there is none, or more than one.
std::vector<int> KFigurePairing::FindOnlyLeaves(int pFigure) const
{
    const std::vector<KQexNode*>& lNodes = mSides[pFigure]->mNodes;
    std::vector<int>              lLeaves(lNodes.size(), -1);
    std::vector<int>              lCounts(lNodes.size(), 0);
    for (size_t lNode = 0; lNode < lNodes.size(); ++lNode)
    {
        const int lParent = mParents[pFigure][lNode];
        if (lParent >= 0 && !IsPaired(pFigure, lNode) && lNodes[lNode]->GetFirstChild() == nullptr)
        {
            const bool lIsFirst = ++lCounts[static_cast<size_t>(lParent)] == 1;
            lLeaves[static_cast<size_t>(lParent)] = lIsFirst ? static_cast<int>(lNode) : -1;
        }
    }
    return lLeaves;
}

/// Compared, and not reported: a joint without children may have become the end of its parent.
void KFigurePairing::PairEnds()
{
    const std::vector<int> lLeaves[2] = {FindOnlyLeaves(0), FindOnlyLeaves(1)};
    const size_t           lCount = mPairs.size();
    for (size_t lPair = 0; lPair < lCount; ++lPair)
    {
        const int lFirst = lLeaves[0][static_cast<size_t>(mPairs[lPair].first)];
        const int lSecond = lLeaves[1][static_cast<size_t>(mPairs[lPair].second)];
        if (lFirst >= 0 && lSecond >= 0 && (IsEnd(0, lFirst) || IsEnd(1, lSecond)))
        {
            Pair(lFirst, lSecond);
        }
    }
}

void KFigurePairing::CollectOnly(int pFigure)
{
    for (size_t lNode = 0; lNode < mPartners[pFigure].size(); ++lNode)
    {
        const int  lParent = mParents[pFigure][lNode];
        const bool lIsAddedEnd = lParent >= 0 && IsPaired(pFigure, static_cast<size_t>(lParent)) && IsEnd(pFigure, static_cast<int>(lNode));
        const bool lIsAddedRoot = lNode == 0 && mSides[pFigure]->mHasOneRoot && !mSides[1 - pFigure]->mHasOneRoot;
        if (!IsPaired(pFigure, lNode) && !lIsAddedEnd && !lIsAddedRoot)
        {
            mOnly[pFigure].push_back(static_cast<int>(lNode));
        }
    }
}

} // namespace asfapp
