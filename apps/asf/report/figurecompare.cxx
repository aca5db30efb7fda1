#include <apps/asf/report/figurecompare.h>

#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kmath/maths.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace asfapp
{

namespace
{

using qexsdk::KQexBoneDof;
using qexsdk::KQexNode;

const char* const kAspectWords[eASPECT_COUNT] = {"names", "parents", "rest", "lengths", "dofs", "limits", "frames", "positions"};

double Distance(const double* pOne, const double* pOther)
{
    return std::sqrt((pOne[0] - pOther[0]) * (pOne[0] - pOther[0]) + (pOne[1] - pOther[1]) * (pOne[1] - pOther[1]) +
                     (pOne[2] - pOther[2]) * (pOne[2] - pOther[2]));
}

std::string DofsText(const std::vector<KQexBoneDof>& pDofs)
{
    std::string lText;
    for (const KQexBoneDof& lDof : pDofs)
    {
        lText += (lText.empty() ? "" : " ") + lDof.mWord;
    }
    return lText.empty() ? "none" : lText;
}

std::string LimitsOf(const KQexBoneDof& pDof)
{
    return LimitsText(pDof.mHasMin, pDof.mMin, pDof.mHasMax, pDof.mMax);
}

/// Infinite if only one has the limit.
double LimitDifference(bool pHasFirst, double pFirst, bool pHasSecond, double pSecond)
{
    if (pHasFirst != pHasSecond)
    {
        return std::numeric_limits<double>::infinity();
    }
    return pHasFirst ? std::fabs(pFirst - pSecond) : 0.0;
}

} // namespace

const char* AspectWord(int pAspect)
{
    return kAspectWords[pAspect];
}

KFigureComparison::KFigureComparison(qexsdk::KQexFigure& pFirst, qexsdk::KQexFigure& pSecond, double pTolerance) : mTolerance(pTolerance)
{
    mSides[0].mFigure = &pFirst;
    mSides[1].mFigure = &pSecond;
}

void KFigureComparison::Run(const KConsole& pConsole)
{
    Collect(0);
    Collect(1);
    MakePairs();
    FindParents(0);
    FindParents(1);
    CompareTrees();
    CompareRest();
    CompareDofs();
    CompareMotion(pConsole);
}

void KFigureComparison::Evaluate(int pSide, qexsdk::KTime pTime, std::vector<KPosition>& pPositions)
{
    KSide&    lSide = mSides[pSide];
    KQexNode* lTop = lSide.mFigure->GetTop();
    if (!lSide.mFigure->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(lTop, pTime, lSide.mTransforms))
    {
        throw std::bad_alloc();
    }
    pPositions.resize(static_cast<size_t>(lSide.mTransforms.GetCount()));
    for (size_t lIndex = 0; lIndex < pPositions.size(); ++lIndex)
    {
        const qexsdk::KQexVector4 lPosition = lSide.mTransforms.GetTransform(static_cast<int>(lIndex)).GetT();
        std::copy(lPosition.mData, lPosition.mData + 3, pPositions[lIndex].mData);
    }
}

void KFigureComparison::Collect(int pSide)
{
    KSide&    lSide = mSides[pSide];
    KQexNode* lTop = lSide.mFigure->GetTop();
    for (KQexNode* lNode = lTop; lNode != nullptr; lNode = lNode->GetNextInTree(lTop))
    {
        const int lIndex = static_cast<int>(lSide.mNodes.size());
        lSide.mIndices.emplace(lNode, lIndex);
        lSide.mByName.emplace(lNode->GetName(), lIndex);
        lSide.mNodes.push_back(lNode);
    }
    qexsdk::KQexAnimEvaluator* lEvaluator = lSide.mFigure->GetScene()->GetEvaluator();
    qexsdk::KQexAnimStack*     lStack = lEvaluator->GetContext();
    lEvaluator->SetContext(nullptr);
    Evaluate(pSide, qexsdk::KTime(0), lSide.mRest);
    lEvaluator->SetContext(lStack);
    if (!lSide.mFigure->GetTakes().empty())
    {
        qexsdk::MakeSampling(lSide.mFigure->GetRoots(), lStack, {}, lSide.mSampling);
        lSide.mSampling.mCount = lSide.mFigure->GetTakes().front().mIsSingle ? 1 : lSide.mSampling.mCount;
    }
}

/// The roots are paired whatever their names: an ASF file cannot name its root.
void KFigureComparison::MakePairs()
{
    std::vector<bool> lIsPaired(mSides[1].mNodes.size(), false);
    for (size_t lFirst = 0; lFirst < mSides[0].mNodes.size(); ++lFirst)
    {
        const auto lFound = mSides[1].mByName.find(mSides[0].mNodes[lFirst]->GetName());
        const int  lSecond = lFirst == 0 ? 0 : lFound == mSides[1].mByName.end() ? -1 : lFound->second;
        if (lSecond >= 0 && !lIsPaired[static_cast<size_t>(lSecond)])
        {
            lIsPaired[static_cast<size_t>(lSecond)] = true;
            mPairs.emplace_back(static_cast<int>(lFirst), lSecond);
        }
        else
        {
            mOnly[0].emplace_back(mSides[0].mNodes[lFirst]->GetName());
            UpdateLargest(eASPECT_NAMES, qexsdk::IsFigureDummy(*mSides[0].mNodes[lFirst]) ? 0 : mResults[eASPECT_NAMES].mLargest + 1,
                          mOnly[0].back());
        }
    }
    for (size_t lSecond = 0; lSecond < lIsPaired.size(); ++lSecond)
    {
        if (!lIsPaired[lSecond])
        {
            mOnly[1].emplace_back(mSides[1].mNodes[lSecond]->GetName());
            UpdateLargest(eASPECT_NAMES, qexsdk::IsFigureDummy(*mSides[1].mNodes[lSecond]) ? 0 : mResults[eASPECT_NAMES].mLargest + 1,
                          mOnly[1].back());
        }
    }
    mResults[eASPECT_NAMES].mDiffers = mResults[eASPECT_NAMES].mLargest > 0;
    mResults[eASPECT_NAMES].mIsCompared = true;
}

void KFigureComparison::FindParents(int pSide)
{
    KSide&            lSide = mSides[pSide];
    std::vector<bool> lIsPaired(lSide.mNodes.size(), false);
    for (const auto& lPair : mPairs)
    {
        lIsPaired[static_cast<size_t>(pSide == 0 ? lPair.first : lPair.second)] = true;
    }
    lSide.mParents.assign(lSide.mNodes.size(), -1);
    for (size_t lIndex = 1; lIndex < lSide.mNodes.size(); ++lIndex)
    {
        const int lParent = lSide.mIndices[lSide.mNodes[lIndex]->GetParent()];
        // Pre-order: the parent's entry is already set.
        lSide.mParents[lIndex] = lIsPaired[static_cast<size_t>(lParent)] ? lParent : lSide.mParents[static_cast<size_t>(lParent)];
    }
}

void KFigureComparison::CompareTrees()
{
    std::vector<int> lSecondOf(mSides[0].mNodes.size(), -1);
    for (const auto& lPair : mPairs)
    {
        lSecondOf[static_cast<size_t>(lPair.first)] = lPair.second;
    }
    KAspectResult& lResult = mResults[eASPECT_PARENTS];
    for (const auto& lPair : mPairs)
    {
        const int lFirst = mSides[0].mParents[static_cast<size_t>(lPair.first)];
        const int lSecond = mSides[1].mParents[static_cast<size_t>(lPair.second)];
        if ((lFirst < 0 ? -1 : lSecondOf[static_cast<size_t>(lFirst)]) != lSecond)
        {
            UpdateLargest(eASPECT_PARENTS, lResult.mLargest + 1, mSides[0].mNodes[static_cast<size_t>(lPair.first)]->GetName());
        }
    }
    lResult.mIsCompared = true;
    lResult.mDiffers = lResult.mLargest > 0;
}

void KFigureComparison::UpdateLargest(int pAspect, double pValue, const std::string& pWhere)
{
    if (pValue > mResults[pAspect].mLargest)
    {
        mResults[pAspect].mLargest = pValue;
        mResults[pAspect].mWhere = pWhere;
    }
}

void KFigureComparison::CompareRest()
{
    double lMin[3];
    double lMax[3];
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        lMin[lAxis] = lMax[lAxis] = mSides[0].mRest[0].mData[lAxis];
        for (const KPosition& lPosition : mSides[0].mRest)
        {
            lMin[lAxis] = std::min(lMin[lAxis], lPosition.mData[lAxis]);
            lMax[lAxis] = std::max(lMax[lAxis], lPosition.mData[lAxis]);
        }
    }
    const double lLargest = std::max({lMax[0] - lMin[0], lMax[1] - lMin[1], lMax[2] - lMin[2]});
    mHeight = lMax[1] - lMin[1] > lLargest / 10 ? lMax[1] - lMin[1] : lLargest;

    for (const auto& lPair : mPairs)
    {
        const size_t lFirst = static_cast<size_t>(lPair.first);
        const size_t lSecond = static_cast<size_t>(lPair.second);
        double       lRelative[2][3];
        for (int lAxis = 0; lAxis < 3; ++lAxis)
        {
            lRelative[0][lAxis] = mSides[0].mRest[lFirst].mData[lAxis] - mSides[0].mRest[0].mData[lAxis];
            lRelative[1][lAxis] = mSides[1].mRest[lSecond].mData[lAxis] - mSides[1].mRest[0].mData[lAxis];
        }
        const std::string lName = mSides[0].mNodes[lFirst]->GetName();
        UpdateLargest(eASPECT_REST, Distance(lRelative[0], lRelative[1]), lName);
        const int lParents[2] = {mSides[0].mParents[lFirst], mSides[1].mParents[lSecond]};
        if (lParents[0] >= 0 && lParents[1] >= 0)
        {
            const double lLengths[2] = {Distance(mSides[0].mRest[lFirst].mData, mSides[0].mRest[static_cast<size_t>(lParents[0])].mData),
                                        Distance(mSides[1].mRest[lSecond].mData, mSides[1].mRest[static_cast<size_t>(lParents[1])].mData)};
            UpdateLargest(eASPECT_LENGTHS, std::fabs(lLengths[0] - lLengths[1]), lName);
        }
    }
    for (const int lAspect : {eASPECT_REST, eASPECT_LENGTHS})
    {
        mResults[lAspect].mIsCompared = true;
        mResults[lAspect].mUnit = "cm";
        mResults[lAspect].mDiffers = !(mResults[lAspect].mLargest <= mTolerance * mHeight);
    }
}

void KFigureComparison::CompareDofs()
{
    const qexsdk::KQexBoneDofs* lDofs[2] = {mSides[0].mFigure->GetBoneDofs(), mSides[1].mFigure->GetBoneDofs()};
    if (lDofs[0] == nullptr || lDofs[1] == nullptr)
    {
        mResults[eASPECT_DOFS].mWhere = mResults[eASPECT_LIMITS].mWhere =
            std::string("the ") + (lDofs[0] == nullptr ? "first" : "second") + " file has none";
        return;
    }
    mResults[eASPECT_LIMITS].mUnit = "deg";
    for (const auto& lPair : mPairs)
    {
        const std::string lName = mSides[0].mNodes[static_cast<size_t>(lPair.first)]->GetName();
        const auto        lFirst = lDofs[0]->find(lName);
        const auto        lSecond = lDofs[1]->find(mSides[1].mNodes[static_cast<size_t>(lPair.second)]->GetName());
        if (lFirst == lDofs[0]->end() || lSecond == lDofs[1]->end())
        {
            continue;
        }
        const std::string lTexts[2] = {DofsText(lFirst->second), DofsText(lSecond->second)};
        if (lTexts[0] != lTexts[1])
        {
            UpdateLargest(eASPECT_DOFS, mResults[eASPECT_DOFS].mLargest + 1, lName + ": " + lTexts[0] + ", " + lTexts[1]);
            continue;
        }
        for (size_t lDof = 0; lDof < lFirst->second.size(); ++lDof)
        {
            CompareLimits(lName, lFirst->second[lDof], lSecond->second[lDof]);
        }
    }
    mResults[eASPECT_DOFS].mIsCompared = mResults[eASPECT_LIMITS].mIsCompared = true;
    mResults[eASPECT_DOFS].mDiffers = mResults[eASPECT_DOFS].mLargest > 0;
}

void KFigureComparison::CompareLimits(const std::string& pBone, const KQexBoneDof& pFirst, const KQexBoneDof& pSecond)
{
    const double lLargest = std::max(LimitDifference(pFirst.mHasMin, pFirst.mMin, pSecond.mHasMin, pSecond.mMin),
                                     LimitDifference(pFirst.mHasMax, pFirst.mMax, pSecond.mHasMax, pSecond.mMax));
    const bool   lIsAngle = pFirst.mWord[0] == 'r';
    const bool   lDiffers = !(lLargest <= (lIsAngle ? mTolerance * qexsdk::kDegreesPerRadian : mTolerance * mHeight));
    if (lLargest > mResults[eASPECT_LIMITS].mLargest)
    {
        mResults[eASPECT_LIMITS].mUnit = lIsAngle ? "deg" : "cm";
    }
    UpdateLargest(eASPECT_LIMITS, lLargest, pBone + " " + pFirst.mWord + ": " + LimitsOf(pFirst) + ", " + LimitsOf(pSecond));
    mResults[eASPECT_LIMITS].mDiffers = mResults[eASPECT_LIMITS].mDiffers || lDiffers;
}

void KFigureComparison::CompareMotion(const KConsole& pConsole)
{
    const long long lCounts[2] = {mSides[0].mSampling.mCount, mSides[1].mSampling.mCount};
    if (lCounts[0] == 0 || lCounts[1] == 0)
    {
        mResults[eASPECT_FRAMES].mWhere = mResults[eASPECT_POSITIONS].mWhere = lCounts[0] == lCounts[1] ? "there is no motion"
                                                                               : lCounts[0] == 0        ? "the first has no motion"
                                                                                                        : "the second has no motion";
        return;
    }
    mResults[eASPECT_FRAMES].mIsCompared = true;
    UpdateLargest(eASPECT_FRAMES, static_cast<double>(std::llabs(lCounts[0] - lCounts[1])),
                  std::to_string(lCounts[0]) + ", " + std::to_string(lCounts[1]));
    mResults[eASPECT_FRAMES].mDiffers = lCounts[0] != lCounts[1];

    KProgress       lProgress("comparing", pConsole);
    const long long lCount = std::min(lCounts[0], lCounts[1]);
    for (long long lFrame = 0; lFrame < lCount; ++lFrame)
    {
        CompareFrame(lFrame);
        lProgress.Show(static_cast<double>(lFrame) / static_cast<double>(lCount));
    }
    mResults[eASPECT_POSITIONS].mIsCompared = true;
    mResults[eASPECT_POSITIONS].mUnit = "cm";
    mResults[eASPECT_POSITIONS].mDiffers = !(mResults[eASPECT_POSITIONS].mLargest <= mTolerance * mHeight);
}

void KFigureComparison::CompareFrame(long long pFrame)
{
    std::vector<KPosition> lPositions[2];
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        Evaluate(lSide, mSides[lSide].mSampling.GetTime(pFrame), lPositions[lSide]);
    }
    for (const auto& lPair : mPairs)
    {
        const double lDistance =
            Distance(lPositions[0][static_cast<size_t>(lPair.first)].mData, lPositions[1][static_cast<size_t>(lPair.second)].mData);
        if (!(lDistance <= mResults[eASPECT_POSITIONS].mLargest))
        {
            mResults[eASPECT_POSITIONS].mLargest = lDistance;
            mResults[eASPECT_POSITIONS].mWhere = std::string(mSides[0].mNodes[static_cast<size_t>(lPair.first)]->GetName()) + ", frame " +
                                                 std::to_string(pFrame + 1) + " of the motion";
        }
    }
}

} // namespace asfapp
