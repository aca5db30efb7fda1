#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSAMPLER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSAMPLER_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

#include <vector>

namespace qexsdk
{

/// Turns the frames of a motion into curves of the skeleton's bones.
///
/// A bone gets keys only where the motion has lines for it, and one key at each end of a gap: a file's cost is in proportion to
/// its lines, however many bones the skeleton has. Frames that come late in the file are put aside and sorted in at the end, for
/// the same reason.
class KQexAmcSampler : public KQexAmcVisitor
{
public:
    /// \p pFlags are those that the bones' frames were computed with. The bones' curves have been made.
    explicit KQexAmcSampler(KQexFrameFlags pFlags) : mFlags(pFlags) {}

    bool Frame(const KQexAmcFrame& pFrame) override;

    /// Sorts late frames in, and lets every bone that has a key hold its last value up to \p pStop, the time of the last frame.
    /// \return false when memory ran out on the way; curves may then lack keys
    bool Finish(const KTime& pStart, const KTime& pStop);

private:
    struct KState
    {
        HKQexAsfNode mNode = nullptr;
        long long    mLast = -1; ///< Count of the frames in order when the bone was sampled last; -1 for never.
        long long    mKeys = 0;  ///< Keys that each curve of the bone has.
    };

    struct KLateSample
    {
        int    mBone;
        KTime  mTime;
        double mValues[6];
    };

    void Sample(KState& pState, const double* pValues, const KTime& pTime);
    void BridgeGap(KState& pState);
    void HoldLast(KState& pState, const KTime& pTime);
    void PutAside(const KQexAmcFrame& pFrame);
    void SortIn(KState& pState, const KLateSample* pBegin, const KLateSample* pEnd);
    bool HasAllKeys(const KState& pState) const;

    double                   mLengthFactor = 1.0;
    double                   mAngleFactor = 1.0;
    KQexFrameFlags           mFlags;
    std::vector<KState>      mStates;      ///< One for each bone of the motion, in its order.
    std::vector<KLateSample> mLate;        ///< In the order of the file.
    long long                mInOrder = 0; ///< Frames in order so far.
    KTime                    mFirst;       ///< Time of the first frame in order.
    KTime                    mBefore;      ///< Time of the last frame in order so far.
};

} // namespace qexsdk

#endif
