#ifndef QEXIOPLUGINS_BVH_KQEXBVHWRITER_H
#define QEXIOPLUGINS_BVH_KQEXBVHWRITER_H

#include <kbaselib/kmath/kgeom.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/motion/kqexframewriter.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexscene/kqexglobaltransforms.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qexsdk
{

/// A joint or an end site of the file.
struct KQexBvhJoint
{
    const KQexNode* mNode;                         ///< In the scene.
    int             mPose;                         ///< Index in its tree's pose.
    int             mTree;                         ///< Index of its root in KQexBvhWriter::mRoots.
    int             mParent;                       ///< Index of the parent joint, -1 for a root.
    bool            mIsEndSite = false;            ///< Written as End Site, without name and channels.
    bool            mHasPositions = false;         ///< Has position channels.
    bool            mHasAnimatedScaling = false;   ///< Its scaling or an ancestor's is animated.
    bool            mHasNonUniformScaling = false; ///< Its scaling or an ancestor's differs between axes.
    KgeRMatrix      mRestInv;                      ///< Inverse of the world rotation at rest.
    double          mOffset[3];                    ///< From the parent's position to this one's at rest, world axes, centimetres.
};

/// Buffers for evaluating a frame; one set per thread.
struct KQexBvhScratch
{
    std::vector<std::unique_ptr<KQexGlobalTransforms>> mPoses;     ///< One per tree.
    std::vector<KgeRMatrix>                            mRotations; ///< World rotations of the joints, relative to rest.
};

/// Writes one file: Prepare() with no take as the evaluator's context (rest pose), then WriteHierarchy() and WriteMotion() with the
/// take. May throw std::bad_alloc.
class KQexBvhWriter : private KQexFrameFormat
{
public:
    /// Both arguments must outlive the writer.
    KQexBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions);

    /// Collects the joints of the trees at \p pRoots. False when memory runs out.
    bool Prepare(const std::vector<KQexNode*>& pRoots);
    /// Writes the HIERARCHY section.
    void WriteHierarchy();
    /// Writes the MOTION section. False when memory runs out, writing fails or the progress callback cancels.
    bool WriteMotion();

private:
    bool AddTree(KQexNode* pRoot, KQexGlobalTransforms& pRest);
    bool IsEndSite(const KQexNode* pNode) const;
    void SetScaling(KQexBvhJoint& pJoint) const;
    void AddScaling(const KQexNode* pNode, KQexBvhJoint& pJoint) const;
    bool HasAnimatedPosition(const KQexBvhJoint& pJoint) const;
    void SetRest(KQexBvhJoint& pJoint, const KQexGlobalTransforms& pRest) const;
    void NameJoint(const KQexBvhJoint& pJoint, KQexUniqueNames& pNames);
    void OpenJoint(size_t pJoint, int pLevel);
    void PrintVector(int pLevel, const char* pWord, const double* pVector);
    void PrintChannels(int pLevel, const KQexBvhJoint& pJoint);
    void CloseJoint(size_t pJoint, int pLevel);
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void MakeContinuous(double* pValues) override;
    void Format(long long pFrame, const double* pValues, std::string& pText) const override;
    void ToFileAxes(double* pVector) const;
    void ToFileAxes(KgeRMatrix& pRotation) const;

    KQexFileBvh&                mFile;
    const KQexBvhWriteOptions&  mOptions;
    const KQexAnimLayer*        mLayer;
    const int                   mCode; ///< Order code of the rotation channels.
    const int                   mThreads;
    std::vector<KQexNode*>      mRoots;
    std::vector<KQexBvhJoint>   mJoints;         ///< Each tree in pre-order.
    std::vector<std::string>    mNames;          ///< One per joint; empty for an end site.
    size_t                      mValueCount = 0; ///< Values per frame.
    std::vector<KQexBvhScratch> mScratch;        ///< One per thread.
    std::vector<double>         mLast;           ///< Values of the previous frame.
};

} // namespace qexsdk

#endif
