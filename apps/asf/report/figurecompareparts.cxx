#include <apps/asf/progress.h>
#include <apps/asf/report/figurecompare.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kmath/maths.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace asfapp
{

namespace
{

using qexsdk::KQexBoneDof;

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

/// Frame times in files are rounded: rates and durations may differ by this fraction of themselves.
constexpr double kTimeTolerance = 1e-4;

double Seconds(const qexsdk::KQexSampling& pSampling)
{
    return static_cast<double>(pSampling.mCount - 1) * pSampling.mStep.GetSeconds();
}

} // namespace

void KFigureComparison::CompareDofs()
{
    const qexsdk::KQexBoneDofs* lDofs[2] = {mSides[0].mFigure->GetBoneDofs(), mSides[1].mFigure->GetBoneDofs()};
    if (lDofs[0] == nullptr || lDofs[1] == nullptr)
    {
        for (const int lAspect : {eASPECT_DOFS, eASPECT_LIMITS})
        {
            mResults[lAspect].mIsOneSided = lDofs[0] != lDofs[1];
            mResults[lAspect].mWhere = lDofs[0] == lDofs[1]  ? "the files have none"
                                       : lDofs[0] == nullptr ? "the first file has none"
                                                             : "the second file has none";
        }
        return;
    }
    mResults[eASPECT_LIMITS].mUnit = "deg";
    for (const auto& lPair : mPairing.GetPairs())
    {
        const std::string lName = NameOf(0, lPair.first);
        const auto        lFirst = lDofs[0]->find(lName);
        const auto        lSecond = lDofs[1]->find(NameOf(1, lPair.second));
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
    const bool   lDiffers = !(lLargest <= (lIsAngle ? mTolerance * qexsdk::kDegreesPerRadian : GetLengthTolerance()));
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
        for (const int lAspect : {eASPECT_FRAMES, eASPECT_RATE, eASPECT_DURATION, eASPECT_POSITIONS})
        {
            mResults[lAspect].mIsOneSided = lCounts[0] != lCounts[1];
            mResults[lAspect].mWhere = lCounts[0] == lCounts[1] ? "there is no motion"
                                       : lCounts[0] == 0        ? "the first has no motion"
                                                                : "the second has no motion";
        }
        return;
    }
    mResults[eASPECT_FRAMES].mIsCompared = true;
    UpdateLargest(eASPECT_FRAMES, static_cast<double>(std::llabs(lCounts[0] - lCounts[1])),
                  std::to_string(lCounts[0]) + ", " + std::to_string(lCounts[1]));
    mResults[eASPECT_FRAMES].mDiffers = lCounts[0] != lCounts[1];
    CompareRates();

    KProgress       lProgress("comparing", pConsole);
    const long long lCount = std::min(lCounts[0], lCounts[1]);
    for (long long lFrame = 0; lFrame < lCount; ++lFrame)
    {
        CompareFrame(lFrame);
        lProgress.Show(static_cast<double>(lFrame) / static_cast<double>(lCount));
    }
    mResults[eASPECT_POSITIONS].mIsCompared = true;
    mResults[eASPECT_POSITIONS].mUnit = "cm";
    mResults[eASPECT_POSITIONS].mDiffers = !(mResults[eASPECT_POSITIONS].mLargest <= GetLengthTolerance());
}

/// Durations of different frame counts may differ by less than a frame: a motion that is resampled ends up to a frame earlier.
void KFigureComparison::CompareRates()
{
    const qexsdk::KQexSampling& lFirst = mSides[0].mSampling;
    const qexsdk::KQexSampling& lSecond = mSides[1].mSampling;
    const double                lSteps[2] = {lFirst.mStep.GetSeconds(), lSecond.mStep.GetSeconds()};
    const double                lSeconds[2] = {Seconds(lFirst), Seconds(lSecond)};
    const double                lLongest = std::max(lSeconds[0], lSeconds[1]);
    const bool                  lIsResampled = lFirst.mCount != lSecond.mCount;
    const double                lFrame = lIsResampled ? std::max(lSteps[0], lSteps[1]) * (1.0 - kTimeTolerance) : 0.0;
    KAspectResult&              lDuration = mResults[eASPECT_DURATION];
    lDuration.mIsCompared = true;
    lDuration.mUnit = "s";
    UpdateLargest(eASPECT_DURATION, std::fabs(lSeconds[0] - lSeconds[1]), ShortText(lSeconds[0]) + ", " + ShortText(lSeconds[1]));
    lDuration.mDiffers = !(lDuration.mLargest <= std::max(lFrame, kTimeTolerance * lLongest));

    KAspectResult& lRate = mResults[eASPECT_RATE];
    if (lFirst.mCount == 1 || lSecond.mCount == 1)
    {
        lRate.mWhere = "there is a single frame";
        return;
    }
    lRate.mIsCompared = true;
    lRate.mUnit = "fps";
    UpdateLargest(eASPECT_RATE, std::fabs(1.0 / lSteps[0] - 1.0 / lSteps[1]),
                  ShortText(1.0 / lSteps[0]) + ", " + ShortText(1.0 / lSteps[1]));
    lRate.mDiffers = !(std::fabs(lSteps[0] - lSteps[1]) <= kTimeTolerance * std::max(lSteps[0], lSteps[1]));
}

void KFigureComparison::CompareFrame(long long pFrame)
{
    std::vector<KPosition> lPositions[2];
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        Evaluate(lSide, mSides[lSide].mSampling.GetTime(pFrame), lPositions[lSide]);
    }
    for (const auto& lPair : mPairing.GetPairs())
    {
        const double lDistance =
            Distance(lPositions[0][static_cast<size_t>(lPair.first)].mData, lPositions[1][static_cast<size_t>(lPair.second)].mData);
        if (!(lDistance <= mResults[eASPECT_POSITIONS].mLargest))
        {
            mResults[eASPECT_POSITIONS].mLargest = lDistance;
            mResults[eASPECT_POSITIONS].mWhere = NameOf(0, lPair.first) + ", frame " + std::to_string(pFrame + 1) + " of the motion";
        }
    }
}

} // namespace asfapp
