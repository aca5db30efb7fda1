#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexscene/kqexrestpose.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

/// \file
/// Joints, frames and positions of a loaded figure.

namespace qexsdk
{

namespace
{

constexpr std::string_view kEndSuffix = "_End";

bool IsAnimated(const KQexNode& pNode, const KQexAnimLayer* pLayer)
{
    return DiffersFromRest(pNode.mLocalTranslation, pLayer) || DiffersFromRest(pNode.mLocalRotation, pLayer) ||
           DiffersFromRest(pNode.mLocalScaling, pLayer);
}

/// The curve of the tree's translations and rotations with the most keys: every sampled curve has a key at every frame, unless keys in
/// runs of equal values were dropped. Null if there is none.
const KQexAnimCurve* FindFullestCurve(KQexNode* pRoot, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurve* lFullest = nullptr;
    for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        for (const auto* lProperty : {&lNode->mLocalTranslation, &lNode->mLocalRotation})
        {
            const KQexAnimCurveNode* lCurveNode = lProperty->GetCurveNode(pLayer);
            for (unsigned int lChannel = 0; lCurveNode != nullptr && lChannel < 3; ++lChannel)
            {
                const KQexAnimCurve* lCurve = lCurveNode->GetCurve(lChannel);
                const int            lMost = lFullest != nullptr ? lFullest->GetKeyCount() : 0;
                lFullest = lCurve != nullptr && lCurve->GetKeyCount() > lMost ? lCurve : lFullest;
            }
        }
    }
    return lFullest;
}

} // namespace

double KQexFigureTake::GetFraction(KTime pTime) const
{
    const double lSeconds = pTime.GetSeconds() - mOrigin.GetSeconds();
    return mHasNumbers || mStep.Get() <= 0 ? lSeconds * mRate : lSeconds / mStep.GetSeconds();
}

long long KQexFigureTake::GetNumber(KTime pTime) const
{
    return mOriginNumber + std::llround(GetFraction(pTime));
}

bool KQexFigure::IsEnd(const KQexNode& pNode) const
{
    if (mSkeleton)
    {
        // The importer activates rotation for joints only. The name is no criterion: a bone may be named NAME_End.
        return !pNode.GetRotationActive();
    }
    const KQexNode* lParent = pNode.GetParent();
    if (lParent == nullptr || pNode.GetFirstChild() != nullptr)
    {
        return false;
    }
    const std::string_view lName = pNode.GetName();
    const std::string_view lParentName = lParent->GetName();
    return lName.size() == lParentName.size() + kEndSuffix.size() && lName.substr(0, lParentName.size()) == lParentName &&
           lName.substr(lParentName.size()) == kEndSuffix &&
           std::none_of(mTakes.begin(), mTakes.end(),
                        [&pNode](const KQexFigureTake& pTake) { return IsAnimated(pNode, KQexLayerOf(pTake.mStack)); });
}

void KQexFigure::CollectJoints()
{
    KQexNode*                                lTop = GetTop();
    const bool                               lIsTopJoint = mRoots.size() == 1;
    std::unordered_map<const KQexNode*, int> lIndices;
    for (KQexNode* lNode = lIsTopJoint ? lTop : lTop->GetNextInTree(lTop); lNode != nullptr; lNode = lNode->GetNextInTree(lTop))
    {
        KQexFigureJoint lJoint;
        lJoint.mName = lNode->GetName();
        lJoint.mNode = lNode;
        const auto lParent = lIndices.find(lNode->GetParent());
        lJoint.mParent = lParent == lIndices.end() ? -1 : lParent->second;
        lJoint.mIsEnd = lJoint.mParent >= 0 && IsEnd(*lNode);
        lIndices.emplace(lNode, static_cast<int>(mJoints.size()));
        mJoints.push_back(lJoint);
    }
}

bool KQexFigure::CollectFrames(const KQexFigureTake& pTake, KQexFigureFrames& pFrames) const noexcept
{
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          pFrames = KQexFigureFrames();
                          const KQexAnimCurve* lCurve = pTake.mHasNumbers ? FindFullestCurve(GetTop(), KQexLayerOf(pTake.mStack)) : nullptr;
                          // One frame if nothing moves; the importer repeats a single frame one frame later.
                          const long long lCount = pTake.mIsSingle      ? 1
                                                   : !pTake.mHasNumbers ? std::max(pTake.mFrames, 1LL)
                                                   : lCurve != nullptr  ? lCurve->GetKeyCount()
                                                                        : 1;
                          for (long long lFrame = 0; lFrame < lCount; ++lFrame)
                          {
                              const KTime lTime = lCurve != nullptr && !pTake.mIsSingle
                                                      ? lCurve->GetTime(static_cast<int>(lFrame))
                                                      : KTime(pTake.mStart.Get() + lFrame * pTake.mStep.Get());
                              pFrames.mTimes.push_back(lTime);
                              pFrames.mNumbers.push_back(pTake.GetNumber(lTime));
                          }
                          return true;
                      });
}

bool KQexFigure::Evaluate(const KQexFigureTake* pTake, KTime pTime, std::vector<KQexFigurePoint>& pPositions) noexcept
{
    if (mScene == nullptr)
    {
        return false;
    }
    KQexAnimEvaluator*     lEvaluator = mScene->GetEvaluator();
    const KQexContextGuard lContext(lEvaluator);
    lEvaluator->SetContext(pTake != nullptr ? pTake->mStack : nullptr);
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          pPositions.resize(mJoints.size());
                          if (!lEvaluator->EvaluateGlobalTransforms(GetTop(), pTime, mTransforms))
                          {
                              return false;
                          }
                          // With several roots the first transform is that of the scene's root node, which is no joint.
                          const int lOffset = mRoots.size() == 1 ? 0 : 1;
                          for (size_t lIndex = 0; lIndex < mJoints.size(); ++lIndex)
                          {
                              const KQexVector4 lPosition = mTransforms.GetTransform(static_cast<int>(lIndex) + lOffset).GetT();
                              pPositions[lIndex] = {lPosition.mData[0], lPosition.mData[1], lPosition.mData[2]};
                          }
                          return true;
                      });
}

} // namespace qexsdk
