#include <qexscene/kqexsampling.h>

#include <qexscene/kqexscene.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qexsdk
{

namespace
{

constexpr double    kTicksPerSecond = static_cast<double>(KTime::kTicksPerSecond);
constexpr long long kShortestStep = KTime::kTicksPerSecond / 10000; ///< No motion is sampled more often than 10,000 times a second.
constexpr double    kMaxTicks = 9.0e18;

/// A common rate, which files often write as a rounded frame time: mFrames frames in mSeconds seconds.
struct KCommonRate
{
    long long mFrames;
    long long mSeconds;
};
constexpr KCommonRate kCommonRates[] = {{24, 1},  {25, 1},  {30, 1},   {48, 1},       {50, 1},       {60, 1},       {90, 1},       {100, 1},
                                        {120, 1}, {240, 1}, {10, 1},   {12, 1},       {15, 1},       {20, 1},       {72, 1},       {75, 1},
                                        {80, 1},  {144, 1}, {150, 1},  {180, 1},      {200, 1},      {300, 1},      {360, 1},      {480, 1},
                                        {500, 1}, {600, 1}, {1000, 1}, {24000, 1001}, {30000, 1001}, {60000, 1001}, {120000, 1001}};

/// First and last key time, and the greatest common divisor of the intervals between keys, in ticks.
struct KKeySpan
{
    long long mFirst = 0;
    long long mLast = 0;
    long long mStep = 0;
    long long mMeanStep = 0; ///< Mean step of the curve with the most keys.
    int       mMostKeys = 1;
    bool      mHasKeys = false;

    void Add(long long pTime)
    {
        if (!mHasKeys)
        {
            mFirst = mLast = pTime;
            mHasKeys = true;
            return;
        }
        // The difference of keys further apart than this overflows; they are never frames of one sampling.
        if (std::fabs(static_cast<double>(pTime) - static_cast<double>(mFirst)) <= kMaxTicks)
        {
            mStep = std::gcd(mStep, pTime - mFirst);
        }
        mFirst = std::min(mFirst, pTime);
        mLast = std::max(mLast, pTime);
    }
};

void AddCurve(const KQexAnimCurve* pCurve, KKeySpan& pSpan)
{
    if (pCurve == nullptr || pCurve->GetKeyCount() == 0)
    {
        return;
    }
    const KQexKeyTimes& lTimes = pCurve->GetKeys().GetTimes();
    pSpan.Add(lTimes.Get(0));
    pSpan.Add(lTimes.GetLast());
    pSpan.mStep = std::gcd(pSpan.mStep, static_cast<long long>(lTimes.GetCommonStep()));
    if (lTimes.GetCount() > pSpan.mMostKeys)
    {
        pSpan.mMostKeys = lTimes.GetCount();
        const double lLength = static_cast<double>(lTimes.GetLast()) - static_cast<double>(lTimes.Get(0));
        pSpan.mMeanStep = static_cast<long long>(std::min(kMaxTicks, std::round(lLength / (pSpan.mMostKeys - 1))));
    }
}

void AddNode(const KQexNode* pNode, const KQexAnimLayer* pLayer, KKeySpan& pSpan)
{
    const KQexProperty* lProperties[3] = {&pNode->mLocalTranslation, &pNode->mLocalRotation, &pNode->mLocalScaling};
    for (const KQexProperty* lProperty : lProperties)
    {
        const KQexAnimCurveNode* lCurveNode = lProperty->GetCurveNode(pLayer);
        for (unsigned int lChannel = 0; lCurveNode != nullptr && lChannel < 3; ++lChannel)
        {
            AddCurve(lCurveNode->GetCurve(lChannel), pSpan);
        }
    }
}

} // namespace

KTime NearestFrameStep(double pSeconds)
{
    if (!(pSeconds > 0.0) || pSeconds * kTicksPerSecond > kMaxTicks)
    {
        return KTime(0);
    }
    for (const KCommonRate& lRate : kCommonRates)
    {
        const double lExact = static_cast<double>(lRate.mSeconds) / static_cast<double>(lRate.mFrames);
        if (std::fabs(pSeconds - lExact) <= 1e-4 * lExact)
        {
            return KTime(std::llround(lExact * kTicksPerSecond));
        }
    }
    return KTime(std::llround(pSeconds * kTicksPerSecond));
}

bool MakeSampling(const std::vector<KQexNode*>& pRoots, KQexAnimStack* pStack, const KQexSamplingRequest& pRequest, KQexSampling& pSampling)
{
    KKeySpan             lSpan;
    const KQexAnimLayer* lLayer = KQexLayerOf(pStack);
    for (const KQexNode* lRoot : pRoots)
    {
        for (const KQexNode* lNode = lRoot; lLayer != nullptr && lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            AddNode(lNode, lLayer, lSpan);
        }
    }
    // When a frame is not a whole number of ticks, keys are up to a tick off their frames, and the common divisor is too short to use.
    const bool lIsUneven = lSpan.mStep < kShortestStep && lSpan.mMeanStep > 0;
    long long  lStep = lIsUneven ? std::max(kShortestStep, lSpan.mMeanStep) : lSpan.mStep > 0 ? lSpan.mStep : kDefaultFrameStep.Get();
    if (pRequest.mFramesPerSecond != 0.0)
    {
        lStep = pRequest.mFramesPerSecond > 0.0 ? NearestFrameStep(1.0 / pRequest.mFramesPerSecond).Get() : 0;
    }
    const long long lStart = pRequest.mHasStart ? pRequest.mStart.Get() : lSpan.mFirst;
    const long long lLast = lSpan.mHasKeys ? std::max(lStart, lSpan.mLast) : lStart;
    const long long lEnd = pRequest.mHasEnd ? pRequest.mEnd.Get() : lLast;
    const double    lSpacing = static_cast<double>(lStep) * static_cast<double>(pRequest.mEvery);
    if (lStep <= 0 || pRequest.mEvery < 1 || lEnd < lStart || lSpacing > kMaxTicks ||
        static_cast<double>(lEnd) - static_cast<double>(lStart) > kMaxTicks)
    {
        return false;
    }
    pSampling.mStart = KTime(lStart);
    pSampling.mStep = KTime(lStep * pRequest.mEvery);
    // The mean step may be rounded up: the last frame is then after the last key.
    const long long lSlack = lIsUneven && !pRequest.mHasEnd ? pSampling.mStep.Get() / 4 : 0;
    pSampling.mCount = (lEnd - lStart + lSlack) / pSampling.mStep.Get() + 1;
    return true;
}

} // namespace qexsdk
