#ifndef QEXCLIP_KQEXCLIP_H
#define QEXCLIP_KQEXCLIP_H

#include <qexclip/kqexclipdata.h>
#include <qexscene/kqexdoftrack.h>

#include <string>
#include <utility>
#include <vector>

namespace qexsdk
{

class KQexAnimStack;
class KQexNode;
class KQexScene;

/// What KQexClip::FromScene() takes over beside the motion, and how.
struct QEX_API KQexClipOptions
{
    const KQexBoneDofs* mBoneDofs = nullptr; ///< Degrees of freedom by joint name; null: none.
    int                 mThreads = 0;        ///< Threads that evaluate frames; 0: as many as the machine has, at most four.
    KQexProgress        mProgress;           ///< Called now and then; false cancels.

    /// Degrees of freedom with values to keep, instead of mBoneDofs; null: no values. Tracks without a node of the clip are ignored.
    const std::vector<KQexDofTrack>* mDofTracks = nullptr;
};

/// A joint's transform relative to the world, laid out as graphics libraries take it: mData[j] is the image of axis j (j = 0, 1, 2; the
/// fourth number is 0), mData[3] the position in centimetres (the fourth number is 1).
struct QEX_API KQexWorldTransform
{
    float mData[4][4]; ///< Images of the axes, then the position.
};

/// What happens before the first frame and after the last one.
enum class KQexClipEnds
{
    eHOLD, ///< The first or the last frame stays.
    eLOOP  ///< The motion starts again, its last frame at the time of its first one.
};

/// A motion as arrays: joints, and the transform of each in every frame. It does not change once it is made, so any number of threads
/// may read it at once; it owns its memory and knows nothing of the scene it came from. It moves; Copy() copies.
///
/// Single precision, 16 bytes for each joint and frame, 12 more where a joint moves relative to its parent and 12 where it is scaled.
/// Centimetres, y up, as the scene.
class QEX_API KQexClip
{
public:
    /// An empty clip: no joints, no frames.
    KQexClip() = default;
    /// Takes over the arrays; the other is empty afterwards.
    KQexClip(KQexClip&& pOther) noexcept : mData(pOther.TakeData()) {}
    /// As the constructor.
    KQexClip& operator=(KQexClip&& pOther) noexcept
    {
        KQexClipData lData = pOther.TakeData();
        mData = std::move(lData);
        return *this;
    }
    KQexClip(const KQexClip&) = delete;
    KQexClip& operator=(const KQexClip&) = delete;

    /// A clip of \p pData, whose quaternions are normalised. False, with \p pClip unchanged and one message for each thing that is wrong
    /// (at most 20) in \p pErrors, which may be null: sizes that do not fit, a parent that does not come before its child, a number that
    /// is not finite, a quaternion whose length is not within 1e-3 of 1, a step that is not above 0, memory that runs out.
    static bool FromArrays(KQexClipData pData, KQexClip& pClip, std::vector<std::string>* pErrors = nullptr);

    /// The motion of \p pRoots and the nodes below them in \p pStack (null: at rest) at the times of \p pSampling. Transforms above the
    /// roots do not count. Joints are in pre-order. An end is an only child without children that stays at rest and is named after
    /// its parent with "_End". Quaternions change sign where that makes them continuous.
    /// False, with \p pClip unchanged, when there is no frame, the progress callback cancels, or memory runs out.
    static bool FromScene(const std::vector<KQexNode*>& pRoots, KQexAnimStack* pStack, const KQexSampling& pSampling,
                          const KQexClipOptions& pOptions, KQexClip& pClip);

    /// Makes skeleton nodes and a take named \p pTakeName, with a key in every frame, for each joint in \p pScene, siblings in the joints'
    /// order. The rotation order is that of the joint's degrees of freedom (EulerOrderFromOrderBuf()), XYZ without rotations among them.
    /// False, with the scene as before, for an empty clip, a take that exists, or when memory runs out.
    bool ToScene(KQexScene* pScene, const char* pTakeName, std::vector<KQexNode*>& pRoots) const;

    /// An independent copy. False, with \p pClip unchanged, when memory runs out.
    bool Copy(KQexClip& pClip) const;

    /// All arrays.
    const KQexClipData& GetData() const { return mData; }

    /// All arrays, to make another clip of; this one is empty afterwards.
    KQexClipData TakeData() noexcept;

    /// Number of joints; indices are 0 to this minus 1, parents before children.
    int GetJointCount() const { return static_cast<int>(mData.mNames.size()); }
    /// Number of frames.
    long long GetFrameCount() const { return mData.mSampling.mCount; }
    /// Frames per second; 0 for an empty clip.
    double GetRate() const;
    /// Seconds from the first frame to the last.
    double GetDuration() const;
    /// Index of the first joint of this name, -1 when there is none.
    int FindJoint(const std::string& pName) const;

    /// The pose in frame \p pFrame. Neither allocates nor locks. False, with \p pPose unchanged, when there is no such frame or \p pPose
    /// has not GetJointCount() items.
    bool SampleFrame(long long pFrame, KQexPose& pPose) const;

    /// The pose \p pSeconds after the first frame; between frames, rotations along the shorter arc, the rest linear. Neither allocates
    /// nor locks. An infinite time is the first or the last frame, in loops too. False, with \p pPose unchanged, for an empty clip, a time
    /// that is no number, or a pose of another size.
    bool Sample(double pSeconds, KQexPose& pPose, KQexClipEnds pEnds = KQexClipEnds::eHOLD) const;

    /// The world transforms of \p pPose. Neither allocates nor locks. False, with \p pTransforms unchanged, when one of both has not
    /// GetJointCount() items.
    bool WorldTransforms(const KQexPose& pPose, std::vector<KQexWorldTransform>& pTransforms) const;

    /// The world transforms of \p pCount frames from \p pFirst on, into \p pTransforms: joint j of the i-th of them is item
    /// i * pFrameStride + j * pJointStride. False, with nothing written, when the frames do not exist; false when memory runs out.
    bool WorldTransforms(long long pFirst, long long pCount, KQexWorldTransform* pTransforms, size_t pFrameStride,
                         size_t pJointStride = 1) const;

private:
    KQexClipData mData;
};

} // namespace qexsdk

#endif
