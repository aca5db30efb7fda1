#include <qexioplugins/gltf/kqexgltfkeys.h>

#include <qexioplugins/motion/kqexmotionio.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kLongestStep = 0.1;  ///< Seconds; keys farther apart are no frames.
constexpr double kNearlyOne = 0.9995; ///< Cosine above which an arc is as good as its chord.

/// Rates to try for keys that are not evenly spaced, rising.
constexpr double kRates[] = {24000.0 / 1001,
                             24,
                             25,
                             30000.0 / 1001,
                             30,
                             48,
                             50,
                             60000.0 / 1001,
                             60,
                             72,
                             75,
                             80,
                             90,
                             100,
                             120,
                             144,
                             150,
                             180,
                             200,
                             240,
                             250,
                             300,
                             360,
                             480,
                             500,
                             600,
                             1000};

bool StandsOn(const std::vector<double>& pTimes, double pOrigin, double pStep)
{
    return std::all_of(pTimes.begin(), pTimes.end(),
                       [pOrigin, pStep](double pTime)
                       {
                           const double lFrames = (pTime - pOrigin) / pStep;
                           return std::fabs(lFrames - std::round(lFrames)) * pStep <= GltfSameTime(pTime, pStep);
                       });
}

bool AllStandOn(const KQexGltfTimes& pTimes, double pOrigin, double pStep)
{
    return std::all_of(pTimes.begin(), pTimes.end(), [pOrigin, pStep](const auto& pEach) { return StandsOn(*pEach, pOrigin, pStep); });
}

} // namespace

double GltfSameTime(double pSeconds, double pStep)
{
    return std::min(1e-3 * pStep + 1.2e-7 * std::fabs(pSeconds), 0.05 * pStep);
}

long long GltfFindStep(const KQexGltfTimes& pTimes, double pOrigin)
{
    const std::vector<double>* lMost = nullptr;
    for (const auto& lTimes : pTimes)
    {
        lMost = lMost == nullptr || lTimes->size() > lMost->size() ? lTimes.get() : lMost;
    }
    if (lMost == nullptr || lMost->size() < 2)
    {
        return 0;
    }
    const double    lMean = (lMost->back() - lMost->front()) / static_cast<double>(lMost->size() - 1);
    const long long lStep = lMean <= kLongestStep ? NearestFrameStep(lMean).Get() : 0;
    if (lStep > 0 && AllStandOn(pTimes, pOrigin, KTime(lStep).GetSeconds()))
    {
        return lStep;
    }
    for (const double lRate : kRates)
    {
        if (AllStandOn(pTimes, pOrigin, 1.0 / lRate))
        {
            return NearestFrameStep(1.0 / lRate).Get();
        }
    }
    return 0;
}

/// \p pPart: with tangents, 0 the incoming one, 1 the value, 2 the outgoing one.
void KQexGltfKeys::GetValue(size_t pKey, int pPart, double* pResult) const
{
    mValues->Get(mInterpolation == KQexGltfInterpolation::eCUBIC ? 3 * pKey + static_cast<size_t>(pPart) : pKey, pResult);
}

bool KQexGltfKeys::Evaluate(double pTime, double pSame, double* pResult)
{
    const std::vector<double>& lTimes = *mTimes;
    while (mKey + 1 < lTimes.size() && lTimes[mKey + 1] <= pTime + pSame)
    {
        ++mKey;
    }
    const bool lIsAtKey = pTime - lTimes[mKey] <= pSame || mKey + 1 == lTimes.size() || mInterpolation == KQexGltfInterpolation::eSTEP;
    GetValue(mKey, 1, pResult);
    if (!lIsAtKey)
    {
        Mix((pTime - lTimes[mKey]) / (lTimes[mKey + 1] - lTimes[mKey]), pResult);
    }
    return std::all_of(pResult, pResult + mValues->GetComponents(), [](double pNumber) { return std::isfinite(pNumber); });
}

void KQexGltfKeys::Mix(double pFraction, double* pResult) const
{
    if (mInterpolation == KQexGltfInterpolation::eCUBIC)
    {
        MixCubic(pFraction, pResult);
        return;
    }
    double lTo[16];
    GetValue(mKey + 1, 1, lTo);
    if (mIsRotation)
    {
        MixRotations(pFraction, lTo, pResult);
        return;
    }
    for (int i = 0; i < mValues->GetComponents(); ++i)
    {
        pResult[i] += pFraction * (lTo[i] - pResult[i]);
    }
}

/// The shorter arc between two rotations, at constant speed.
void KQexGltfKeys::MixRotations(double pFraction, const double* pTo, double* pResult) const
{
    double lDot = 0.0;
    double lFromSquare = 0.0;
    double lToSquare = 0.0;
    for (int i = 0; i < 4; ++i)
    {
        lDot += pResult[i] * pTo[i];
        lFromSquare += pResult[i] * pResult[i];
        lToSquare += pTo[i] * pTo[i];
    }
    // A key without length is no rotation; what comes out then is the other one, or none either.
    const double lFromLength = lFromSquare > 0.0 ? std::sqrt(lFromSquare) : 1.0;
    const double lToLength = lToSquare > 0.0 ? std::sqrt(lToSquare) : 1.0;
    const double lCosine = std::fabs(lDot) / (lFromLength * lToLength);
    double       lFrom = 1.0 - pFraction;
    double       lTo = pFraction;
    if (lCosine < kNearlyOne)
    {
        const double lAngle = std::acos(lCosine);
        lFrom = std::sin(lFrom * lAngle);
        lTo = std::sin(lTo * lAngle);
    }
    lFrom /= lFromLength;
    lTo /= lDot < 0.0 ? -lToLength : lToLength;
    for (int i = 0; i < 4; ++i)
    {
        pResult[i] = lFrom * pResult[i] + lTo * pTo[i];
    }
}

/// A cubic with the keys' values and tangents at its ends (Hermite's).
void KQexGltfKeys::MixCubic(double pFraction, double* pResult) const
{
    const double lSpan = (*mTimes)[mKey + 1] - (*mTimes)[mKey];
    const double lS = pFraction;
    const double lS2 = lS * lS;
    const double lS3 = lS2 * lS;
    double       lOut[16];
    double       lIn[16];
    double       lTo[16];
    GetValue(mKey, 2, lOut);
    GetValue(mKey + 1, 0, lIn);
    GetValue(mKey + 1, 1, lTo);
    for (int i = 0; i < mValues->GetComponents(); ++i)
    {
        pResult[i] = (2.0 * lS3 - 3.0 * lS2 + 1.0) * pResult[i] + lSpan * (lS3 - 2.0 * lS2 + lS) * lOut[i] +
                     (3.0 * lS2 - 2.0 * lS3) * lTo[i] + lSpan * (lS3 - lS2) * lIn[i];
    }
}

} // namespace qexsdk
