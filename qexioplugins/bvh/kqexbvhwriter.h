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
    const KQexNode* mNode;
    int             mPose;   ///< Index in the pose of its tree.
    int             mTree;   ///< Index of its tree among the roots.
    int             mParent; ///< Index of the parent joint, -1 for a root.
    bool            mIsEndSite = false;
    bool            mHasPositions = false;
    bool            mIsStretched = false; ///< A scaling at it or above it is animated.
    bool            mIsSkewed = false;    ///< A scaling at it or above it differs from axis to axis.
    KgeRMatrix      mRestInv;             ///< Inverse of the rotation at rest, world space.
    double          mOffset[3];           ///< From the parent's place to this one's at rest, world axes, centimetres.
};

/// What evaluating one frame needs besides its result; one for each thread.
struct KQexBvhScratch
{
    std::vector<std::unique_ptr<KQexGlobalTransforms>> mPoses;  ///< One a tree.
    std::vector<KgeRMatrix>                            mFrames; ///< World rotations of the joints, relative to rest.
};

/// One write of a file: Prepare() with the rest pose current, then WriteHierarchy() and WriteMotion() with the take current. May throw
/// std::bad_alloc.
class KQexBvhWriter : private KQexFrameFormat
{
public:
    KQexBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions);

    bool Prepare(const std::vector<KQexNode*>& pRoots);
    void WriteHierarchy();
    bool WriteMotion();

private:
    bool AddTree(KQexNode* pRoot, KQexGlobalTransforms& pRest);
    bool IsEndSite(const KQexNode* pNode) const;
    void SetScaling(KQexBvhJoint& pJoint) const;
    void AddScaling(const KQexNode* pNode, KQexBvhJoint& pJoint) const;
    bool HasMovingPlace(const KQexBvhJoint& pJoint) const;
    void SetRest(KQexBvhJoint& pJoint, const KQexGlobalTransforms& pRest) const;
    void NameJoint(const KQexBvhJoint& pJoint, KQexUniqueNames& pNames);
    void OpenJoint(size_t pJoint, int pLevel);
    void PrintVector(int pLevel, const char* pWord, const double* pVector);
    void PrintChannels(int pLevel, const KQexBvhJoint& pJoint);
    void CloseJoint(size_t pJoint, int pLevel);
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void Continue(double* pValues) override;
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
    std::vector<std::string>    mNames;          ///< One a joint; empty for an end site.
    size_t                      mValueCount = 0; ///< Values of a frame.
    std::vector<KQexBvhScratch> mScratch;        ///< One a thread.
    std::vector<double>         mLast;           ///< Values of the frame before.
};

} // namespace qexsdk

#endif
