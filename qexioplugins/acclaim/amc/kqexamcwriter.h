#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCWRITER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCWRITER_H

#include <qexioplugins/acclaim/amc/kqexamcfit.h>
#include <qexioplugins/acclaim/amc/kqexamcsteps.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/motion/kqexframewriter.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace qexsdk
{

/// A bone, with what is constant over the frames.
struct KQexAmcWriteBone
{
    /// For \p pBone, which must outlive this.
    explicit KQexAmcWriteBone(HKQexAsfNode pBone) : mBone(pBone), mNameLength(std::strlen(pBone->mName)), mFit(*pBone) {}

    HKQexAsfNode     mBone;                         ///< The bone.
    size_t           mNameLength;                   ///< Bytes of its name.
    KQexAmcFit       mFit;                          ///< Finds the values of its DOFs.
    size_t           mFirstValue = 0;               ///< Index of its first value in a frame.
    std::vector<int> mLengthIndices;                ///< Indices of the `l` values on its line, ascending, as in the skeleton's file.
    bool             mUsesNodeAngles = false;       ///< KQexAmcFit::CanUseNodeAngles() holds.
    bool             mHasFixedDisplacement = false; ///< mDisplacement is constant and set.
    bool             mSkipsTranslation = false;     ///< mDisplacement is constant and negligible, and there is no translation DOF.
    double           mDisplacement[3] = {};         ///< From the rest position, in the bone's axis frame, centimetres.
};

/// The largest errors of a bone on one thread.
struct KQexAmcLoss
{
    double mDegrees = 0.0;     ///< Of its rotation.
    double mCentimetres = 0.0; ///< Of its position.
};

/// Scratch memory of one thread for evaluating frames.
struct KQexAmcScratch
{
    KQexAmcStepState             mState;     ///< For KQexAmcSteps.
    std::vector<KQexAmcResidual> mResiduals; ///< One per bone.
    std::vector<KQexAmcLoss>     mLosses;    ///< One per bone.

    /// Residual of bone \p pBone; null when it has none, or for -1.
    const KQexAmcResidual* GetResidual(int pBone) const
    {
        const KQexAmcResidual* lResidual = pBone >= 0 ? &mResiduals[static_cast<size_t>(pBone)] : nullptr;
        return lResidual != nullptr && lResidual->mIsSet ? lResidual : nullptr;
    }
};

/// Copies the values of a bone's rotation DOFs, in their order, to \p pAngles.
inline void GatherAngles(const KQexAsfNode& pBone, const double* pValues, double* pAngles)
{
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        if (pBone.mOrderBuf[i] >= 3)
        {
            *pAngles++ = pValues[i];
        }
    }
}

/// One write of a motion: Prepare() with the rest pose current, then PrepareTake(), WriteHeader(), WriteFrames() and ReportLosses() with
/// the take current. May throw std::bad_alloc.
class KQexAmcWriter : private KQexFrameFormat
{
public:
    /// The arguments must outlive this.
    KQexAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions);

    /// Collects the bones at and below \p pRoot, and their rest pose from the nodes of \p pPairs. False when memory runs out.
    bool Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs);

    /// Computes what is constant over the take, which is now the evaluator's context.
    void PrepareTake();

    /// Writes the lines before the first frame.
    void WriteHeader();

    /// Writes the frames. False when writing failed or was cancelled.
    bool WriteFrames();

    /// Warns of motion that the DOFs could not express, bone by bone.
    void ReportLosses();

private:
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void MakeContinuous(double* pValues) override;
    void Format(long long pFrame, const double* pValues, std::string& pText) const override;

    void AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexJointFrames& pFrames);
    void AddLengths();
    void SetRest(const KQexJointFrames& pFrames);
    void EvaluateBone(size_t pBone, KQexAmcScratch& pScratch, double* pValues) const;
    void SetTranslations(size_t pBone, const double* pDisplacement, KQexAmcScratch& pScratch, double* pValues) const;
    void FormatBone(const KQexAmcWriteBone& pBone, const double* pValues, std::string& pText) const;

    KQexFileAcclaimAmc&                          mFile;
    const KQexAmcWriteOptions&                   mOptions;
    const double                                 mToFile; ///< Units of the file per centimetre.
    const int                                    mThreads;
    KQexNode*                                    mRootNode = nullptr;
    std::vector<KQexAmcWriteBone>                mBones;  ///< In pre-order.
    std::vector<KQexAmcJoint>                    mJoints; ///< One per bone.
    KQexAmcSteps                                 mSteps;  ///< Steps of mJoints.
    std::vector<std::unique_ptr<KQexAmcScratch>> mScratch;
    std::vector<double>                          mLast; ///< Values of the previous frame.
    size_t                                       mValueCount = 0;
};

} // namespace qexsdk

#endif
