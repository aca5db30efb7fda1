#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSAMPLER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCSAMPLER_H

#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

#include <vector>

namespace qexsdk
{

/// Samples the frames of a motion into curves of the skeleton's bones.
///
/// A bone gets keys only where the motion has lines for it, and one key at each end of a gap: the cost is linear in the file's lines,
/// however many bones the skeleton has. For the same reason late frames are buffered and merged at the end.
class KQexAmcSampler : public KQexAmcVisitor
{
public:
    /// \p pFlags are those that the bones' frames were computed with. The bones' curves must exist.
    explicit KQexAmcSampler(KQexFrameFlags pFlags) : mFlags(pFlags) {}

    bool Frame(const KQexAmcFrame& pFrame) override;

    /// Merges late frames. Every bone that has a key holds its last value up to \p pStop, the time of the last frame; a single key there
    /// is repeated at \p pStart.
    /// \return false when memory ran out; curves may then lack keys
    bool Finish(const KTime& pStart, const KTime& pStop);

private:
    struct KState
    {
        HKQexAsfNode mNode = nullptr;
        long long    mLast = -1; ///< Index, among the frames in order, of the bone's last sample; -1 for none.
        long long    mKeys = 0;  ///< Number of keys of each of the bone's curves.
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
    void DeferFrame(const KQexAmcFrame& pFrame);
    void MergeLate(KState& pState, const KLateSample* pBegin, const KLateSample* pEnd);
    bool HasAllKeys(const KState& pState) const;

    double                   mLengthFactor = 1.0;
    double                   mAngleFactor = 1.0;
    KQexFrameFlags           mFlags;
    std::vector<KState>      mStates;           ///< One per bone, in the order of KQexAmcFrame::mBones.
    std::vector<KLateSample> mLate;             ///< In file order.
    long long                mInOrderCount = 0; ///< Number of frames in order so far.
    KTime                    mFirst;            ///< Time of the first frame in order.
    KTime                    mPrevious;         ///< Time of the last frame in order so far.
};

} // namespace qexsdk

#endif
