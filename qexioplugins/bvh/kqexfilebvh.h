#ifndef QEXIOPLUGINS_BVH_KQEXFILEBVH_H
#define QEXIOPLUGINS_BVH_KQEXFILEBVH_H

#include <qexioplugins/motion/kqexmotionio.h>
#include <qexioplugins/motion/kqextextfile.h>
#include <qexscene/kqexscene.h>

#include <string>
#include <vector>

/// \file
/// BVH: a tree of joints with offsets, then for every frame one line with the values of their channels.

namespace qexsdk
{

/// How a BVH file is read into a scene.
struct QEX_API KQexBvhReadOptions
{
    std::string  mTakeName = "Take 001";  ///< Take that gets the motion.
    KQexNode*    mParentNode = nullptr;   ///< Node that gets the roots as children; null: the scene's root node.
    double       mScale = 1.0;            ///< Factor of offsets and positions: centimetres per unit of the file.
    double       mFramesPerSecond = 0.0;  ///< 0: the file's own frame time.
    bool         mKeepGoodFrames = false; ///< After an error among the frames, keep the complete ones before it, when there are any.
    KQexProgress mProgress;               ///< Called now and then; false cancels. Empty: never.
};

/// What was read.
struct QEX_API KQexBvhReadResult
{
    std::vector<KQexNode*> mRoots;             ///< The roots, in the file's order; owned by the scene. Empty on failure.
    long long              mFrames = 0;        ///< Frames read.
    KTime                  mStep = KTime(0);   ///< Time between frames.
    bool                   mCancelled = false; ///< The progress call asked to stop.
};

/// How a take is written as BVH.
struct QEX_API KQexBvhWriteOptions
{
    KQexAnimStack* mStack = nullptr; ///< Take; null: the rest pose alone, whatever the frames.
    KQexSampling   mSampling;        ///< Frames to write.
    ERotationOrder mOrder =
        eEULER_XYZ;         ///< Order of the rotation channels, first applied first: eEULER_XYZ writes "Zrotation Yrotation Xrotation".
    double mScale = 1.0;    ///< Factor of offsets and positions: units of the file per centimetre.
    bool   mZUp = false;    ///< Turn the scene from y up to z up (y becomes z, z becomes -y).
    int    mThreads = 0;    ///< Threads that evaluate and format; 0: as many as the machine has, at most 4. The bytes do not depend on it.
    KQexProgress mProgress; ///< Called now and then; false cancels. Empty: never.
};

/// Reads and writes BVH files.
///
/// Reading: channels are listed with the last applied first ("Zrotation Xrotation Yrotation" is Rz Rx Ry); a position channel
/// replaces that component of the offset; each joint becomes a node with a skeleton attribute, an end site a node named after its
/// joint with "_End" and no curves. The rotation order of a node is that of its channels. Numbers of frames are one stream of
/// tokens, whatever the lines. A frame time within 1e-4 of the one of a common rate is taken as that rate's.
///
/// Writing: joint frames are aligned with the world at rest, so that all zeros is the rest pose: an offset is the vector between
/// the two joints at rest in world axes, and a rotation is taken relative to the rest pose. A root has offset 0 0 0 and six channels; other
/// joints have position channels only where their place relative to the parent moves. A leaf without curves and DOFs is an end site.
/// Scaling and everything else that the scene can do to a node's place goes into positions, so every joint is where the scene
/// has it; a scaling of the node's own shape is not carried.
class QEX_API KQexFileBvh : public KQexTextFile
{
public:
    /// \param pVerb print every message to standard error as well
    explicit KQexFileBvh(bool pVerb = false);
    ~KQexFileBvh() override;

    /// Reads the open file into \p pScene. False after an error or a cancel, which GetMessages() tells of: the scene is then as it was.
    bool Read(KQexScene* pScene, const KQexBvhReadOptions& pOptions, KQexBvhReadResult& pResult);

    /// Writes the trees at \p pRoots. False when something could not be written, a node is named twice among the roots, memory runs
    /// out or the progress call cancels: Discard() then gives the output up. Names that BVH cannot carry are made safe and unique
    /// with a warning each.
    bool Write(const std::vector<KQexNode*>& pRoots, const KQexBvhWriteOptions& pOptions);
};

} // namespace qexsdk

#endif
