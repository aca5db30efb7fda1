#ifndef QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCWRITER_H
#define QEXIOPLUGINS_ACCLAIM_AMC_KQEXAMCWRITER_H

#include <qexioplugins/acclaim/amc/kqexamcfit.h>
#include <qexioplugins/acclaim/amc/kqexamcsteps.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexscene/kqexframesink.h>

#include <cstddef>
#include <cstring>
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

/// One write of a motion: Prepare(), WriteHeader(), then its frames as they come, and ReportLosses(). May throw std::bad_alloc.
class KQexAmcWriter : public KQexFrameSink
{
public:
    /// The file and the scene must outlive this.
    KQexAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions);

    /// Collects the bones at and below \p pRoot, and their rest pose from the nodes of \p pPairs in the options' mRestStack.
    void Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs);

    /// Writes the lines before the first frame.
    void WriteHeader();

    void         Begin(const KQexFrameNodes& pNodes, int pThreads) override;
    unsigned int GetParts() const override { return mSteps.GetParts(); }
    size_t       GetValueCount() const override { return mValueCount; }
    void         Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override;
    void         MakeContinuous(double* pValues) override;
    void         Format(long long pFrame, const double* pValues, std::string& pText) const override;
    bool         Write(const KQexFrameBlock& pBlock) override;

    /// Warns of motion that the DOFs could not express, bone by bone.
    void ReportLosses();

private:
    void AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexFrameNodes& pNodes);
    void AddLengths();
    void SetRest(const KQexJointFrames& pFrames);
    void EvaluateBone(size_t pBone, KQexAmcScratch& pScratch, double* pValues) const;
    void SetTranslations(size_t pBone, const double* pDisplacement, KQexAmcScratch& pScratch, double* pValues) const;
    void FormatBone(const KQexAmcWriteBone& pBone, const double* pValues, std::string& pText) const;

    KQexFileAcclaimAmc&           mFile;
    const KQexAmcWriteOptions     mOptions;
    const double                  mToFile;  ///< Units of the file per centimetre.
    std::vector<KQexAmcWriteBone> mBones;   ///< In pre-order.
    std::vector<KQexAmcJoint>     mJoints;  ///< One per bone.
    KQexAmcSteps                  mSteps;   ///< Steps of mJoints.
    std::vector<KQexAmcScratch>   mScratch; ///< One per thread.
    std::vector<double>           mLast;    ///< Values of the previous frame.
    size_t                        mValueCount = 0;
};

} // namespace qexsdk

#endif
