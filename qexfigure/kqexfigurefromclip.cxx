#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigureguard.h>

#include <memory>
#include <new>
#include <unordered_map>

/// \file
/// Figures from clips.

namespace qexsdk
{

namespace
{

/// The node of each joint: siblings are in the order of the joints.
std::vector<const KQexNode*> NodesOf(const KQexClipData& pData, const std::vector<KQexNode*>& pRoots)
{
    std::vector<const KQexNode*> lNodes;
    std::vector<const KQexNode*> lNext; // Of each joint's children, the first that is not yet in lNodes.
    size_t                       lRoot = 0;
    for (const int lParent : pData.mParents)
    {
        const KQexNode* lNode = lParent < 0 ? pRoots[lRoot++] : lNext[static_cast<size_t>(lParent)];
        if (lParent >= 0)
        {
            lNext[static_cast<size_t>(lParent)] = lNode->GetNextSibling();
        }
        lNodes.push_back(lNode);
        lNext.push_back(lNode->GetFirstChild());
    }
    return lNodes;
}

/// The values of a clip's degrees of freedom. May throw std::bad_alloc.
std::shared_ptr<const KQexDofValues> KeepValues(const KQexClipData& pData, const std::vector<const KQexNode*>& pNodes)
{
    const size_t lCount = pData.mDofs.size();
    const auto   lValues = std::make_shared<KQexDofValues>();
    lValues->mKeys = std::vector<KQexKeyStore>(lCount);
    for (size_t i = 0; i < lCount; ++i)
    {
        KQexDofTrack lTrack;
        lTrack.mNode = pNodes[static_cast<size_t>(pData.mDofs[i].mJoint)];
        lTrack.mJoint = lTrack.mNode->GetName();
        lTrack.mDof = pData.mDofs[i].mDof;
        lTrack.mKeys = &lValues->mKeys[i];
        for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
        {
            if (lValues->mKeys[i].Set(pData.mSampling.GetTime(lFrame).Get(), pData.mDofValues[static_cast<size_t>(lFrame) * lCount + i]) <
                0)
            {
                throw std::bad_alloc();
            }
        }
        lValues->mTracks.push_back(lTrack);
    }
    return lValues;
}

KQexFigureTake TakeOf(const KQexClip& pClip, const std::string& pName, KQexAnimStack* pStack)
{
    const KQexSampling& lSampling = pClip.GetData().mSampling;
    KQexFigureTake      lTake;
    lTake.mName = lTake.mGivenName = pName;
    lTake.mStack = pStack;
    lTake.mRate = pClip.GetRate();
    lTake.mIsSingle = lSampling.mCount == 1;
    lTake.mFrames = lSampling.mCount;
    lTake.mStart = lTake.mOrigin = lSampling.mStart;
    lTake.mEnd = lSampling.GetTime(lSampling.mCount - 1);
    lTake.mStep = lSampling.mStep;
    return lTake;
}

} // namespace

bool KQexFigure::Assign(const KQexClip& pClip, const std::string& pTakeName, KQexFigureReport& pReport) noexcept
{
    Clear();
    const bool lOk = RunGuarded(pReport, [&] { return AssignClip(pClip, pTakeName, pReport); });
    if (!lOk)
    {
        Clear();
    }
    return lOk;
}

bool KQexFigure::AssignClip(const KQexClip& pClip, const std::string& pTakeName, KQexFigureReport& pReport)
{
    const KQexClipData& lData = pClip.GetData();
    if (lData.mNames.empty() || pTakeName.c_str()[0] == '\0')
    {
        return pReport.Fail(eFIGURE_USAGE, "", lData.mNames.empty() ? "the clip is empty" : "a take needs a name");
    }
    MakeScene();
    if (!pClip.ToScene(mScene, pTakeName.c_str(), mRoots))
    {
        throw std::bad_alloc();
    }
    mTakes.push_back(TakeOf(pClip, pTakeName, mScene->FindAnimStack(pTakeName.c_str())));
    const std::vector<const KQexNode*> lNodes = NodesOf(lData, mRoots);
    SetDofs(lData, lNodes);
    if (!lData.mDofValues.empty())
    {
        mTakes.back().mDofValues = KeepValues(lData, lNodes);
    }
    FinishScene();
    return true;
}

void KQexFigure::SetDofs(const KQexClipData& pData, const std::vector<const KQexNode*>& pNodes)
{
    mHasDofs = !pData.mDofs.empty();
    std::unordered_map<std::string, size_t> lFirst; // Of each name.
    for (size_t i = 0; i < pNodes.size() && mHasDofs; ++i)
    {
        if (pData.mIsEnd.empty() || pData.mIsEnd[i] == 0)
        {
            lFirst.emplace(pNodes[i]->GetName(), i);
            mDofs[pNodes[i]->GetName()];
        }
    }
    for (const KQexClipDof& lDof : pData.mDofs)
    {
        const auto lJoint = static_cast<size_t>(lDof.mJoint);
        const auto lFound = lFirst.find(pNodes[lJoint]->GetName());
        if (lFound != lFirst.end() && lFound->second == lJoint)
        {
            mDofs[lFound->first].push_back(lDof.mDof);
        }
    }
}

} // namespace qexsdk
