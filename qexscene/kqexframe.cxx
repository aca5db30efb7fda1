#include <qexscene/kqexframe.h>

#include <qexscene/kqexnode.h>

#include <algorithm>

namespace qexsdk
{

KQexFrameNodes::KQexFrameNodes(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer)
{
    for (KQexNode* lRoot : pRoots)
    {
        AddAncestors(lRoot, pLayer);
        for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            Add(lNode, pLayer);
        }
    }
}

void KQexFrameNodes::Add(KQexNode* pNode, const KQexAnimLayer* pLayer)
{
    if (mIndices.emplace(pNode, mItems.size()).second)
    {
        mItems.push_back(KItem{pNode, Find(pNode->GetParent()), KQexNodePose(pNode, pLayer)});
    }
}

void KQexFrameNodes::AddAncestors(KQexNode* pRoot, const KQexAnimLayer* pLayer)
{
    std::vector<KQexNode*> lAncestors;
    for (KQexNode* lNode = pRoot->GetParent(); lNode != nullptr && Find(lNode) < 0; lNode = lNode->GetParent())
    {
        lAncestors.push_back(lNode);
    }
    std::for_each(lAncestors.rbegin(), lAncestors.rend(), [&](KQexNode* pNode) { Add(pNode, pLayer); });
}

int KQexFrameNodes::Find(const KQexNode* pNode) const
{
    const auto lFound = mIndices.find(pNode);
    return lFound != mIndices.end() ? static_cast<int>(lFound->second) : -1;
}

KQexFrame::KQexFrame(const KQexFrameNodes& pNodes, unsigned int pParts)
    : mNodes(&pNodes),
      mChannels(9 * pNodes.GetCount()),
      mRotations((pParts & eFRAME_ROTATIONS) != 0 ? pNodes.GetCount() : 0),
      mWorlds((pParts & eFRAME_WORLD) != 0 ? pNodes.GetCount() : 0)
{
}

void KQexFrame::Evaluate(long long pIndex, KTime pTime)
{
    KQexKeyTimes::KCursor lCursor;
    mIndex = pIndex;
    mTime = pTime;
    for (size_t i = 0; i < mNodes->GetCount(); ++i)
    {
        const KQexNodePose& lPose = mNodes->GetPose(i);
        double* const       lChannels = mChannels.data() + 9 * i;
        lPose.EvaluateChannels(pTime, lCursor, lChannels);
        if (!mRotations.empty())
        {
            lPose.ComposeRotation(lChannels + 3, mRotations[i]);
        }
        if (!mWorlds.empty())
        {
            EvaluateWorld(i);
        }
    }
}

void KQexFrame::GetTranslation(size_t pNode, double pResult[3]) const
{
    const double* lOffset = mNodes->GetPose(pNode).GetOffset();
    std::transform(lOffset, lOffset + 3, GetChannels(pNode), pResult, [](double pFirst, double pSecond) { return pFirst + pSecond; });
}

void KQexFrame::EvaluateWorld(size_t pNode)
{
    const double* lChannels = GetChannels(pNode);
    const int     lParent = mNodes->GetParent(pNode);
    KQexMatrix    lLocal;
    mNodes->GetNode(pNode)->ComposeLocalTransform(lLocal, lChannels, lChannels + 3, lChannels + 6);
    mWorlds[pNode] = lParent >= 0 ? mWorlds[static_cast<size_t>(lParent)] * lLocal : lLocal;
}

} // namespace qexsdk
