#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFKEYS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFKEYS_H

#include <qexioplugins/gltf/kqexgltfaccessor.h>

#include <memory>
#include <utility>
#include <vector>

namespace qexsdk
{

/// Interpolation between two keys.
enum class KQexGltfInterpolation
{
    eSTEP,
    eLINEAR,
    eCUBIC
};

/// The keys of a track: times, and one value of three or four numbers per key; for cubics, in-tangent, value and out-tangent.
class KQexGltfKeys
{
public:
    /// \p pTimes is not empty and never decreases; \p pValues has as many elements as the interpolation needs.
    KQexGltfKeys(std::shared_ptr<const std::vector<double>> pTimes, const KQexGltfAccessor* pValues, KQexGltfInterpolation pInterpolation,
                 bool pIsRotation)
        : mTimes(std::move(pTimes)), mValues(pValues), mInterpolation(pInterpolation), mIsRotation(pIsRotation)
    {
    }

    /// The key times in seconds. Tracks with the same input accessor share them.
    const std::shared_ptr<const std::vector<double>>& GetSharedTimes() const { return mTimes; }

    /// The value at \p pTime seconds, which must not decrease from call to call. Constant before the first and after the last key; a
    /// time within \p pTolerance of a key gives that key's value. Rotations are not normalized. False when a number is not finite.
    bool Evaluate(double pTime, double pTolerance, double* pResult);

private:
    void GetValue(size_t pKey, int pPart, double* pResult) const;
    void Interpolate(double pFraction, double* pResult) const;
    void Slerp(double pFraction, const double* pTo, double* pResult) const;
    void InterpolateCubic(double pFraction, double* pResult) const;

    std::shared_ptr<const std::vector<double>> mTimes;
    const KQexGltfAccessor*                    mValues;
    KQexGltfInterpolation                      mInterpolation;
    bool                                       mIsRotation;
    size_t                                     mKey = 0; ///< Last key at or before the last time evaluated.
};

/// Tolerance in seconds for matching the time \p pSeconds to a frame, with frames \p pStep seconds apart: times in files have single
/// precision.
double GltfTimeTolerance(double pSeconds, double pStep);

/// The key times of several tracks.
using KQexGltfTimes = std::vector<std::shared_ptr<const std::vector<double>>>;

/// The frame step, in ticks, of which all \p pTimes are multiples, counted from \p pOrigin seconds: the mean key spacing of the track
/// with the most keys, if that fits and is at most 0.1 seconds; otherwise the step of the lowest of the usual frame rates that fits.
/// 0 when none fits or no track has two keys.
long long GltfFindStep(const KQexGltfTimes& pTimes, double pOrigin);

} // namespace qexsdk

#endif
