#include <qexioplugins/acclaim/exchange/kqexasfpairing.h>

#include <qexioplugins/acclaim/exchange/kqexmovingjoints.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace qexsdk
{

namespace
{

/// One pairing, by whole names or by those without their prefixes.
class KPairing
{
public:
    KPairing(const KQexAsfScene& pSkeleton, const KQexMovingJoints& pMoving, KQexAsfTreeIndex::ENamePart pName)
        : mSkeleton(pSkeleton), mMoving(pMoving), mName(pName)
    {
        KQexAsfWalk lWalk(mSkeleton.mRoot);
        while (HKQexAsfNode lBone = lWalk.Next())
        {
            if (lWalk.IsEntering() && lBone != mSkeleton.mRoot)
            {
                mBoneNames.insert(NameOf(*lBone));
            }
        }
    }

    KQexAsfPairing Run(KQexNode* pRoot)
    {
        KQexNode* lTop = FindTop(pRoot);
        MakePairs(lTop);
        CountMoving(lTop);
        return mResult;
    }

private:
    const char* NameOf(const KQexAsfNode& pBone) const
    {
        const char* lColon = mName == KQexAsfTreeIndex::eBARE ? std::strrchr(pBone.mName, ':') : nullptr;
        return lColon != nullptr ? lColon + 1 : pBone.mName;
    }

    const char* NameOf(const KQexNode& pNode) const { return mName == KQexAsfTreeIndex::eBARE ? pNode.GetBareName() : pNode.GetName(); }

    bool IsNamedLikeABone(const KQexNode& pNode) const { return mBoneNames.count(NameOf(pNode)) > 0; }

    using KCounts = std::unordered_map<const KQexNode*, int>;

    KCounts   CountNamed(const KQexNode* pRoot) const;
    KQexNode* FindTop(KQexNode* pRoot) const;
    void      MakePairs(KQexNode* pTop);
    void      CountMoving(KQexNode* pTop);

    const KQexAsfScene&                  mSkeleton;
    const KQexMovingJoints&              mMoving;
    KQexAsfTreeIndex::ENamePart          mName;
    std::unordered_set<std::string_view> mBoneNames; ///< Of all bones but the root.
    KQexAsfPairing                       mResult;
    std::unordered_set<const KQexNode*>  mMovers;      ///< Nodes of bones with DOFs.
    size_t                               mMatched = 0; ///< Bones with DOFs that have a node.
};

/// The nodes named like bones, at and below each node under \p pRoot, and below that.
KPairing::KCounts KPairing::CountNamed(const KQexNode* pRoot) const
{
    KCounts                      lCounts;
    std::vector<const KQexNode*> lNodes;
    for (const KQexNode* lNode = pRoot->GetNextInTree(pRoot); lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        lNodes.push_back(lNode);
    }
    for (auto lNode = lNodes.rbegin(); lNode != lNodes.rend(); ++lNode)
    {
        const int lCount = lCounts[*lNode] += IsNamedLikeABone(**lNode) ? 1 : 0;
        lCounts[(*lNode)->GetParent()] += lCount;
    }
    return lCounts;
}

/// Scenes often have nodes above the figure, which only place it: the root's node is the first one that moves, or has a child that is
/// named like a bone, or has bones in several branches.
KQexNode* KPairing::FindTop(KQexNode* pRoot) const
{
    KCounts   lCounts = CountNamed(pRoot);
    const int lAll = lCounts[pRoot];
    KQexNode* lTop = pRoot;
    KQexNode* lNext = lAll > 0 ? pRoot : nullptr;
    while (lNext != nullptr)
    {
        lTop = lNext;
        lNext = mMoving.IsStill(lTop) ? lTop->GetFirstChild() : nullptr;
        while (lNext != nullptr && lCounts[lNext] < lAll)
        {
            lNext = lNext->GetNextSibling();
        }
        lNext = lNext != nullptr && !IsNamedLikeABone(*lNext) ? lNext : nullptr;
    }
    return lTop;
}

/// Pairs as KQexAsfScene::MergeQEXToASF does: children of a bone without a node are searched below the nearest paired ancestor's node.
void KPairing::MakePairs(KQexNode* pTop)
{
    const KQexAsfTreeIndex lNodes(pTop, mName);
    std::vector<int>       lPath; // For each bone on the current path: the number of its node, else of the nearest ancestor's.
    KQexAsfWalk            lWalk(mSkeleton.mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lPath.pop_back();
            continue;
        }
        const bool lIsRoot = lPath.empty();
        const bool lMoves = !lIsRoot && lBone->mOrderCount > 0;
        const int  lFound = lIsRoot ? 0 : lNodes.Find(NameOf(*lBone), lPath.back());
        mResult.mMatch.mInSkeleton += lMoves ? 1 : 0;
        if (lFound >= 0)
        {
            mResult.mPairs.push_back(KQexAmcPair{lBone, lNodes.GetNode(lFound)});
        }
        if (lFound >= 0 && lMoves)
        {
            mMovers.insert(lNodes.GetNode(lFound));
            ++mMatched;
        }
        else if (lMoves)
        {
            mResult.mUnmatched.emplace_back(lBone->mName);
            KQexSkeletonMatch::AddName(mResult.mMatch.mOnlyInSkeleton, lBone->mName);
        }
        lPath.push_back(lFound >= 0 ? lFound : lPath.back());
    }
}

void KPairing::CountMoving(KQexNode* pTop)
{
    KQexSkeletonMatch& lMatch = mResult.mMatch;
    size_t             lMatched = 0;
    for (const KQexNode* lNode = pTop->GetNextInTree(pTop); lNode != nullptr; lNode = lNode->GetNextInTree(pTop))
    {
        if (!mMoving.Moves(lNode))
        {
            continue;
        }
        ++lMatch.mInMotion;
        if (mMovers.count(lNode) > 0)
        {
            ++lMatched;
        }
        else
        {
            KQexSkeletonMatch::AddName(lMatch.mOnlyInMotion, lNode->GetName());
        }
    }
    lMatch.mMatched = lMatch.mInMotion < lMatch.mInSkeleton   ? lMatched
                      : lMatch.mInMotion > lMatch.mInSkeleton ? mMatched
                                                              : std::max(lMatched, mMatched);
}

} // namespace

KQexAsfPairing PairBones(KQexNode* pRoot, const KQexAsfScene& pSkeleton, KQexAnimStack* pTake)
{
    const KQexMovingJoints lMoving(pRoot, {pTake});
    KQexAsfPairing         lPairing = KPairing(pSkeleton, lMoving, KQexAsfTreeIndex::eWHOLE).Run(pRoot);
    if (lPairing.mPairs.size() == 1 && pSkeleton.mRoot->mChildBuf.GetCount() > 0)
    {
        lPairing = KPairing(pSkeleton, lMoving, KQexAsfTreeIndex::eBARE).Run(pRoot);
    }
    return lPairing;
}

} // namespace qexsdk
