#ifndef QEXSCENE_KQEXSAMPLING_H
#define QEXSCENE_KQEXSAMPLING_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>

#include <functional>
#include <vector>

/// \file
/// Evenly spaced frames, and which of them a take has.

namespace qexsdk
{

class KQexAnimStack;
class KQexNode;

/// Progress callback for long work: receives the fraction done, 0 to 1, and returns false to cancel. Called on the caller's thread. It
/// must not throw: no exception passes through the library.
using KQexProgress = std::function<bool(double pFraction)>;

/// Evenly spaced times: frame i (0 to mCount - 1) is at mStart + i * mStep.
struct QEX_API KQexSampling
{
    KTime     mStart = KTime(0); ///< Time of frame 0.
    KTime     mStep = KTime(0);  ///< Time between frames, above 0.
    long long mCount = 0;        ///< Number of frames; writers need at least 1.

    /// Time of frame \p pFrame.
    KTime GetTime(long long pFrame) const { return KTime(mStart.Get() + pFrame * mStep.Get()); }
};

/// Which part of a take to sample, and at what rate.
struct QEX_API KQexSamplingRequest
{
    double mFramesPerSecond = 0.0; ///< 0: the rate of the take's keys, or 120 without keys.
    bool   mHasStart = false;      ///< Start at mStart instead of the take's first key.
    bool   mHasEnd = false;        ///< End at mEnd instead of the take's last key.
    KTime  mStart = KTime(0);      ///< First time sampled.
    KTime  mEnd = KTime(0);        ///< No frame is after it.
    int    mEvery = 1;             ///< Sample every n-th frame only; at least 1.
};

/// Default time between frames: 120 frames a second.
inline constexpr KTime kDefaultFrameStep(KTime::kTicksPerSecond / 120);

/// Time between frames for a frame time of \p pSeconds as files write it: that of a common rate if within 0.01 % of it, else
/// \p pSeconds, both to the nearest tick. 0 when \p pSeconds is not above 0 or too long for ticks.
QEX_API KTime NearestFrameStep(double pSeconds);

/// The frames that \p pRequest asks for, from the keys of \p pStack on the nodes at and below \p pRoots. The step of the keys is the
/// greatest common divisor of the intervals between them; if that is below 1/10,000 second, the mean step of the curve with the most
/// keys. A take without keys, or no take (\p pStack null), gives one frame at the start and a step of 1/120 second unless requested
/// otherwise.
/// False, and \p pSampling unchanged, when the end is before the start, the rate is not above 0 or the times overflow.
QEX_API bool MakeSampling(const std::vector<KQexNode*>& pRoots, KQexAnimStack* pStack, const KQexSamplingRequest& pRequest,
                          KQexSampling& pSampling);

} // namespace qexsdk

#endif
