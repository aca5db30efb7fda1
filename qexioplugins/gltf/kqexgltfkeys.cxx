#include <qexioplugins/gltf/kqexgltfkeys.h>

#include <kbaselib/kmath/kquaternion.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kMaxStep = 0.1;           ///< Seconds; keys that are farther apart on average are not frames.
constexpr double kSlerpThreshold = 0.9995; ///< Cosine above which linear interpolation is accurate enough.

/// Frame rates to try for keys that are not evenly spaced, increasing.
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

bool IsOnGrid(const std::vector<double>& pTimes, double pOrigin, double pStep)
{
    return std::all_of(pTimes.begin(), pTimes.end(),
                       [pOrigin, pStep](double pTime)
                       {
                           const double lFrames = (pTime - pOrigin) / pStep;
                           return std::fabs(lFrames - std::round(lFrames)) * pStep <= GltfTimeTolerance(pTime, pStep);
                       });
}

bool AreOnGrid(const KQexGltfTimes& pTimes, double pOrigin, double pStep)
{
    return std::all_of(pTimes.begin(), pTimes.end(), [pOrigin, pStep](const auto& pEach) { return IsOnGrid(*pEach, pOrigin, pStep); });
}

} // namespace

double GltfTimeTolerance(double pSeconds, double pStep)
{
    return std::min(1e-3 * pStep + 1.2e-7 * std::fabs(pSeconds), 0.05 * pStep);
}

long long GltfFindStep(const KQexGltfTimes& pTimes, double pOrigin)
{
    const std::vector<double>* lLongest = nullptr;
    for (const auto& lTimes : pTimes)
    {
        lLongest = lLongest == nullptr || lTimes->size() > lLongest->size() ? lTimes.get() : lLongest;
    }
    if (lLongest == nullptr || lLongest->size() < 2)
    {
        return 0;
    }
    const double    lMean = (lLongest->back() - lLongest->front()) / static_cast<double>(lLongest->size() - 1);
    const long long lStep = lMean <= kMaxStep ? NearestFrameStep(lMean).Get() : 0;
    if (lStep > 0 && AreOnGrid(pTimes, pOrigin, KTime(lStep).GetSeconds()))
    {
        return lStep;
    }
    for (const double lRate : kRates)
    {
        if (AreOnGrid(pTimes, pOrigin, 1.0 / lRate))
        {
            return NearestFrameStep(1.0 / lRate).Get();
        }
    }
    return 0;
}

/// \p pPart of a cubic key: 0 the incoming tangent, 1 the value, 2 the outgoing tangent.
void KQexGltfKeys::GetValue(size_t pKey, int pPart, double* pResult) const
{
    mValues->Get(mInterpolation == KQexGltfInterpolation::eCUBIC ? 3 * pKey + static_cast<size_t>(pPart) : pKey, pResult);
}

bool KQexGltfKeys::Evaluate(double pTime, double pTolerance, double* pResult)
{
    const std::vector<double>& lTimes = *mTimes;
    while (mKey + 1 < lTimes.size() && lTimes[mKey + 1] <= pTime + pTolerance)
    {
        ++mKey;
    }
    const bool lIsAtKey = pTime - lTimes[mKey] <= pTolerance || mKey + 1 == lTimes.size() || mInterpolation == KQexGltfInterpolation::eSTEP;
    GetValue(mKey, 1, pResult);
    if (!lIsAtKey)
    {
        Interpolate((pTime - lTimes[mKey]) / (lTimes[mKey + 1] - lTimes[mKey]), pResult);
    }
    return std::all_of(pResult, pResult + mValues->GetComponents(), [](double pNumber) { return std::isfinite(pNumber); });
}

void KQexGltfKeys::Interpolate(double pFraction, double* pResult) const
{
    if (mInterpolation == KQexGltfInterpolation::eCUBIC)
    {
        InterpolateCubic(pFraction, pResult);
        return;
    }
    double lTo[16];
    GetValue(mKey + 1, 1, lTo);
    if (mIsRotation)
    {
        Slerp(pFraction, lTo, pResult);
        return;
    }
    for (int i = 0; i < mValues->GetComponents(); ++i)
    {
        pResult[i] += pFraction * (lTo[i] - pResult[i]);
    }
}

/// Spherical linear interpolation along the shorter arc.
void KQexGltfKeys::Slerp(double pFraction, const double* pTo, double* pResult) const
{
    const double lDot = kQuaternionDot(pResult, pTo);
    const double lFromSquare = kQuaternionDot(pResult, pResult);
    const double lToSquare = kQuaternionDot(pTo, pTo);
    // A quaternion of zero length is no rotation: the result is then the other key's rotation, or zero as well.
    const double lFromLength = lFromSquare > 0.0 ? std::sqrt(lFromSquare) : 1.0;
    const double lToLength = lToSquare > 0.0 ? std::sqrt(lToSquare) : 1.0;
    const double lCosine = std::fabs(lDot) / (lFromLength * lToLength);
    double       lFrom = 0.0;
    double       lTo = 0.0;
    kSlerpWeights(lCosine, kSlerpThreshold, pFraction, lFrom, lTo);
    lFrom /= lFromLength;
    lTo /= lDot < 0.0 ? -lToLength : lToLength;
    for (int i = 0; i < 4; ++i)
    {
        pResult[i] = lFrom * pResult[i] + lTo * pTo[i];
    }
}

/// Cubic Hermite interpolation.
void KQexGltfKeys::InterpolateCubic(double pFraction, double* pResult) const
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
