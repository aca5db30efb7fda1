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
    for (size_t i = 0; i < 9 * mItems.size(); ++i)
    {
        const KQexChannel& lChannel = mItems[i / 9].mPose.GetChannels()[i % 9];
        if (!lChannel.IsAnimated())
        {
            continue;
        }
        mKeyed.push_back(KKeyed{lChannel.mCurve, i});
        const bool lIsRotation = i % 9 / 3 == eNODE_ROTATION;
        if (lIsRotation && (mRotating.empty() || mRotating.back() != i / 9))
        {
            mRotating.push_back(i / 9);
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
    // What has no keys stays as it is set here.
    KQexKeyTimes::KCursor lCursor;
    for (size_t i = 0; i < pNodes.GetCount(); ++i)
    {
        const KQexNodePose& lPose = pNodes.GetPose(i);
        lPose.EvaluateChannels(KTime(0), lCursor, mChannels.data() + 9 * i);
        if (!mRotations.empty())
        {
            lPose.ComposeRotation(GetAngles(i), mRotations[i]);
        }
    }
}

void KQexFrame::Evaluate(long long pIndex, KTime pTime)
{
    KQexKeyTimes::KCursor lCursor;
    mIndex = pIndex;
    mTime = pTime;
    for (const KQexFrameNodes::KKeyed& lKeyed : mNodes->GetKeyed())
    {
        mChannels[lKeyed.mChannel] = lKeyed.mCurve->Evaluate(pTime, lCursor);
    }
    if (!mRotations.empty())
    {
        for (const size_t lNode : mNodes->GetRotating())
        {
            mNodes->GetPose(lNode).ComposeRotation(GetAngles(lNode), mRotations[lNode]);
        }
    }
    for (size_t i = 0; i < mWorlds.size(); ++i)
    {
        EvaluateWorld(i);
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
