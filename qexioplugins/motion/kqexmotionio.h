#ifndef QEXIOPLUGINS_MOTION_KQEXMOTIONIO_H
#define QEXIOPLUGINS_MOTION_KQEXMOTIONIO_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

/// \file
/// What every reader and writer of motion is told in the same words.

namespace qexsdk
{

class KQexAnimStack;
class KQexNode;

/// Progress of long work, from 0 to 1. Returns false to cancel it. Called on the caller's thread.
using KQexProgress = std::function<bool(double pFraction)>;

/// A degree of freedom of a bone, as skeleton files list it, with its limits.
struct QEX_API KQexBoneDof
{
    std::string mWord;           ///< "tx", "ty", "tz", "rx", "ry" or "rz".
    bool        mHasMin = false; ///< Whether mMin limits it.
    bool        mHasMax = false; ///< Whether mMax limits it.
    double      mMin = 0.0;      ///< Degrees or centimetres.
    double      mMax = 0.0;      ///< Degrees or centimetres.
};

/// What is known of bones' degrees of freedom beyond the scene: by name, in the order in which the bone's rotations are applied.
using KQexBoneDofs = std::unordered_map<std::string, std::vector<KQexBoneDof>>;

/// Evenly spaced points of time: frame i (0 to mCount - 1) is at mStart + i * mStep.
struct QEX_API KQexSampling
{
    KTime     mStart = KTime(0); ///< Time of frame 0.
    KTime     mStep = KTime(0);  ///< Time between frames, above 0.
    long long mCount = 0;        ///< Number of frames, at least 1 wherever one is written.

    /// Time of frame \p pFrame.
    KTime GetTime(long long pFrame) const { return KTime(mStart.Get() + pFrame * mStep.Get()); }
};

/// What part of a take is sampled, and how densely.
struct QEX_API KQexSamplingRequest
{
    double mFramesPerSecond = 0.0; ///< 0: the rate of the take's own keys, else 120.
    bool   mHasStart = false;      ///< Whether mStart counts; else the take's first key.
    bool   mHasEnd = false;        ///< Whether mEnd counts; else the take's last key.
    KTime  mStart = KTime(0);      ///< First time sampled.
    KTime  mEnd = KTime(0);        ///< Last time sampled when a frame falls on it.
    int    mEvery = 1;             ///< Every how many frames one is taken, at least 1.
};

/// The time between frames for a frame time of \p pSeconds as files write it: within 1e-4 of the one of a common rate it is that
/// rate's, exactly (as exactly as ticks can be), else the nearest tick. 0 when it is not above 0 or too long to count.
QEX_API KTime NearestFrameStep(double pSeconds);

/// The frames that \p pRequest names for \p pStack on the nodes at and below \p pRoots. The rate of the keys is the largest step
/// on which all of them stand; where that is shorter than a 10,000th of a second, the mean step of the curve with the most keys. A take without keys, or no take (\p pStack null), gives one frame at the start and a step of 1/120
/// second unless told. False, and \p pSampling unchanged, when the end stands before the start, the rate is not above 0 or the
/// frames cannot be counted.
QEX_API bool MakeSampling(const std::vector<KQexNode*>& pRoots, KQexAnimStack* pStack, const KQexSamplingRequest& pRequest,
                          KQexSampling& pSampling);

} // namespace qexsdk

#endif
