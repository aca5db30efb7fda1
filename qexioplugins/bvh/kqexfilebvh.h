#ifndef QEXIOPLUGINS_BVH_KQEXFILEBVH_H
#define QEXIOPLUGINS_BVH_KQEXFILEBVH_H

#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexframesink.h>
#include <qexscene/kqexscene.h>

#include <memory>
#include <string>
#include <vector>

/// \file
/// BVH: a hierarchy of joints with offsets, then one line of channel values per frame.

namespace qexsdk
{

/// Options for reading a BVH file.
struct QEX_API KQexBvhReadOptions
{
    std::string  mTakeName = "Take 001";  ///< Take for the motion.
    KQexNode*    mParentNode = nullptr;   ///< Parent of the file's roots; null: the scene's root node.
    double       mScale = 1.0;            ///< Scale of offsets and positions: centimetres per file unit.
    double       mFramesPerSecond = 0.0;  ///< 0: the file's own frame time.
    bool         mKeepGoodFrames = false; ///< After an error in a frame, keep the complete frames before it, if any.
    KQexProgress mProgress;               ///< Called from time to time; false cancels. May be empty.
};

/// Result of reading.
struct QEX_API KQexBvhReadResult
{
    std::vector<KQexNode*> mRoots;             ///< The roots, in the file's order; owned by the scene. Empty on failure.
    long long              mFrames = 0;        ///< Frames read.
    KTime                  mStep = KTime(0);   ///< Time between frames.
    bool                   mCancelled = false; ///< Cancelled by the progress callback.
};

/// Options for writing a take as BVH.
struct QEX_API KQexBvhWriteOptions
{
    KQexAnimStack* mStack = nullptr; ///< Take; null: the rest pose in every frame.
    KQexSampling   mSampling;        ///< Frames to write.
    /// Rotation order of the joints. Channels are in reverse: eEULER_XYZ writes "Zrotation Yrotation Xrotation".
    ERotationOrder mOrder = eEULER_XYZ;
    double         mScale = 1.0; ///< Scale of offsets and positions: file units per centimetre.
    bool           mZUp = false; ///< Rotate the scene from y up to z up (y becomes z, z becomes -y).
    int            mThreads = 0; ///< Threads that evaluate and format; 0: one per core, at most 4. Does not affect the output.
    KQexProgress   mProgress;    ///< Called from time to time; false cancels. May be empty.
};

/// Reads and writes BVH files.
///
/// Reading: channels are listed with the last applied first ("Zrotation Xrotation Yrotation" is Rz Rx Ry); a position channel
/// replaces that component of the offset; each joint becomes a node with a skeleton attribute, an end site a node named after its
/// joint with "_End". Channels of an end site are read too, with a warning. A node's rotation order is that of its channels, which
/// may be in several statements but not repeat. Frame values are one stream of tokens; line breaks do not matter. A frame time
/// within 0.01 % of a common rate's counts as exactly that rate.
///
/// Writing: joint axes are the world axes at rest, so all-zero rotations give the rest pose: an offset is the vector from the parent
/// to the joint at rest in world axes, and rotations are relative to the rest pose. A root has offset 0 0 0 and six channels; other
/// joints have position channels only where their position relative to the parent is animated. A motionless leaf named after its
/// parent with "_End", the parent's only child, is an end site. Scaling is baked into the positions, so every joint is where the
/// scene has it; a scaling of the node's own shape is lost.
class QEX_API KQexFileBvh : public KQexTextFile
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileBvh(bool pVerb = false);
    ~KQexFileBvh() override;

    /// Reads the open file into \p pScene. False after an error (see GetMessages()) or a cancel; the scene is then unchanged.
    bool Read(KQexScene* pScene, const KQexBvhReadOptions& pOptions, KQexBvhReadResult& pResult);

    /// Writes the trees at \p pRoots. False when there is nothing to write, writing fails, memory runs out or the progress callback
    /// cancels; then call Discard(). Names that are not unique or not valid in BVH are changed, with a warning each.
    bool Write(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions);

    /// The first part of Write(): everything before the frames. They come from KQexRunFrames(), called with the sink that is returned, the
    /// same roots, and the options' take and sampling; other outputs may share that run. Null when Write() would be false. Owned by the
    /// file, until EndWrite().
    KQexFrameSink* BeginWrite(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions);

    /// The last part: \p pResult is that of the run. False as Write().
    bool EndWrite(KQexRunResult pResult);

private:
    std::unique_ptr<KQexFrameSink> mWriter; ///< Between BeginWrite() and EndWrite().
};

} // namespace qexsdk

#endif
