#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFKEYS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFKEYS_H

#include <qexioplugins/gltf/kqexgltfaccessor.h>

#include <memory>
#include <vector>

namespace qexsdk
{

/// How a value goes from one key to the next.
enum class KQexGltfInterpolation
{
    eSTEP,
    eLINEAR,
    eCUBIC
};

/// The keys of a track: times, and as many values of three or four numbers, or three times as many (tangent, value, tangent).
class KQexGltfKeys
{
public:
    /// \p pTimes rise, and are at least one; \p pValues are as many as the interpolation asks for.
    KQexGltfKeys(std::shared_ptr<const std::vector<double>> pTimes, const KQexGltfAccessor* pValues, KQexGltfInterpolation pInterpolation,
                 bool pIsRotation)
        : mTimes(std::move(pTimes)), mValues(pValues), mInterpolation(pInterpolation), mIsRotation(pIsRotation)
    {
    }

    /// The key times in seconds, shared by the tracks that use the same accessor.
    const std::shared_ptr<const std::vector<double>>& GetSharedTimes() const { return mTimes; }

    /// The value at \p pTime, in seconds; before the first key and behind the last it is theirs. Later calls ask for later times.
    /// A time that is nearer to a key than \p pSame is that key's. Rotations are not of unit length. False when a number is not finite.
    bool Evaluate(double pTime, double pSame, double* pResult);

private:
    void GetValue(size_t pKey, int pPart, double* pResult) const;
    void Mix(double pFraction, double* pResult) const;
    void MixRotations(double pFraction, const double* pTo, double* pResult) const;
    void MixCubic(double pFraction, double* pResult) const;

    std::shared_ptr<const std::vector<double>> mTimes;
    const KQexGltfAccessor*                    mValues;
    KQexGltfInterpolation                      mInterpolation;
    bool                                       mIsRotation;
    size_t                                     mKey = 0; ///< Last key at or before the time asked for.
};

/// How far a time of \p pSeconds may be from a frame and still count as that frame's, for frames \p pStep seconds apart: files have
/// times in single precision.
double GltfSameTime(double pSeconds, double pStep);

/// The times of several tracks, each rising.
using KQexGltfTimes = std::vector<std::shared_ptr<const std::vector<double>>>;

/// The step, in ticks, on which all of \p pTimes stand, counted from \p pOrigin seconds: that of evenly spaced keys, if they are at
/// least ten a second, else that of the lowest usual rate. 0 when there is none, or
/// no track has two keys.
long long GltfFindStep(const KQexGltfTimes& pTimes, double pOrigin);

} // namespace qexsdk

#endif
