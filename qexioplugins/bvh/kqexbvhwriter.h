#ifndef QEXIOPLUGINS_BVH_KQEXBVHWRITER_H
#define QEXIOPLUGINS_BVH_KQEXBVHWRITER_H

#include <kbaselib/kmath/kgeom.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/motion/kqexsafenames.h>
#include <qexscene/kqexframesink.h>

#include <cstddef>
#include <string>
#include <vector>

namespace qexsdk
{

/// A joint or an end site of the file.
struct KQexBvhJoint
{
    const KQexNode* mNode;                         ///< In the scene.
    size_t          mIndex = 0;                    ///< Index among the nodes of a frame.
    int             mParent;                       ///< Index of the parent joint, -1 for a root.
    bool            mIsEndSite = false;            ///< Written as End Site, without name and channels.
    bool            mHasPositions = false;         ///< Has position channels.
    bool            mHasAnimatedScaling = false;   ///< Its scaling or an ancestor's is animated.
    bool            mHasNonUniformScaling = false; ///< Its scaling or an ancestor's differs between axes.
    KgeRMatrix      mRestInv;                      ///< Inverse of the world rotation at rest.
    double          mOffset[3];                    ///< From the parent's position to this one's at rest, world axes, centimetres.
};

/// Writes one file: Prepare(), WriteHierarchy() and WriteMotionStart(), then its frames as they come. May throw std::bad_alloc.
class KQexBvhWriter : public KQexFrameSink
{
public:
    /// \p pFile must outlive the writer.
    KQexBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions);

    /// Collects the joints of the trees at \p pRoots.
    void Prepare(const std::vector<KQexNode*>& pRoots);
    /// Writes the HIERARCHY section.
    void WriteHierarchy();
    /// Writes the lines of the MOTION section that precede its frames.
    void WriteMotionStart();

    void         Begin(const KQexFrameNodes& pNodes, int pThreads) override;
    unsigned int GetParts() const override { return eFRAME_WORLD; }
    size_t       GetValueCount() const override { return mValueCount; }
    void         Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override;
    void         MakeContinuous(double* pValues) override;
    void         Format(long long pFrame, const double* pValues, std::string& pText) const override;
    bool         Write(const KQexFrameBlock& pBlock) override;

private:
    using KRotations = std::vector<KgeRMatrix>; ///< World rotations of the joints in a frame, relative to rest.

    void AddJoint(const KQexFrame& pRest, size_t pNode, std::vector<int>& pJoints);
    bool IsEndSite(const KQexNode* pNode) const;
    void SetScaling(KQexBvhJoint& pJoint) const;
    void AddScaling(const KQexNode* pNode, KQexBvhJoint& pJoint) const;
    bool HasAnimatedPosition(const KQexBvhJoint& pJoint) const;
    void SetRest(KQexBvhJoint& pJoint, const KQexFrame& pRest) const;
    void NameJoint(const KQexBvhJoint& pJoint, KQexUniqueNames& pNames);
    void OpenJoint(size_t pJoint, int pLevel);
    void PrintVector(int pLevel, const char* pWord, const double* pVector);
    void PrintChannels(int pLevel, const KQexBvhJoint& pJoint);
    void CloseJoint(size_t pJoint, int pLevel);
    void ToFileAxes(double* pVector) const;
    void ToFileAxes(KgeRMatrix& pRotation) const;

    KQexFileBvh&              mFile;
    const KQexBvhWriteOptions mOptions;
    const KQexAnimLayer*      mLayer;
    const int                 mCode;           ///< Order code of the rotation channels.
    std::vector<KQexBvhJoint> mJoints;         ///< Each tree in pre-order.
    std::vector<std::string>  mNames;          ///< One per joint; empty for an end site.
    size_t                    mValueCount = 0; ///< Values per frame.
    std::vector<KRotations>   mRotations;      ///< One per thread.
    std::vector<double>       mLast;           ///< Values of the previous frame.
};

} // namespace qexsdk

#endif
