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

/// What is known of a bone before the first frame.
struct KQexAmcWriteBone
{
    explicit KQexAmcWriteBone(HKQexAsfNode pBone) : mBone(pBone), mNameLength(std::strlen(pBone->mName)), mFit(*pBone) {}

    HKQexAsfNode     mBone;
    size_t           mNameLength;
    KQexAmcFit       mFit;
    size_t           mValue = 0;            ///< Index of its first value in a frame.
    std::vector<int> mLengthPlaces;         ///< Places on its line, from 0 and rising, that the skeleton's file gives to lengths.
    bool             mTakesAngles = false;  ///< Its node's angles are those of the DOFs, as a rule.
    bool             mHasFixedMove = false; ///< It is displaced by mMove at all times,
    bool             mIsStill = false;      ///< which is not at all, and no DOF is for it.
    double           mMove[3] = {};         ///< Displacement from the place at rest, in its axis frame, centimetres.
};

/// The largest errors of a bone, one set for each thread.
struct KQexAmcLoss
{
    double mDegrees = 0.0;
    double mCentimetres = 0.0;
};

/// What evaluating a frame needs besides its result; one for each thread.
struct KQexAmcScratch
{
    KQexAmcMoment             mMoment;
    std::vector<KQexAmcStray> mStrays; ///< One a bone.
    std::vector<KQexAmcLoss>  mLosses; ///< One a bone.

    /// How bone \p pBone strayed; null when it did not, or for -1.
    const KQexAmcStray* GetStray(int pBone) const
    {
        const KQexAmcStray* lStray = pBone >= 0 ? &mStrays[static_cast<size_t>(pBone)] : nullptr;
        return lStray != nullptr && lStray->mIs ? lStray : nullptr;
    }
};

/// The values of a bone's rotation DOFs, in their order, into \p pAngles.
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

/// One write of a motion: Prepare() with the rest pose current, then LookAhead(), WriteHeader(), WriteFrames() and TellLosses() with the take
/// current. May throw std::bad_alloc.
class KQexAmcWriter : private KQexFrameFormat
{
public:
    /// All of them have to outlive this.
    KQexAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions);

    bool Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs);
    void LookAhead();
    void WriteHeader();
    bool WriteFrames();
    void TellLosses();

private:
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void Continue(double* pValues) override;
    void Format(long long pFrame, const double* pValues, std::string& pText) const override;

    void AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexGlobalTransforms& pPose);
    void AddLengths();
    void SetRest(const KQexGlobalTransforms& pPose);
    void EvaluateBone(size_t pBone, KQexAmcScratch& pScratch, double* pValues) const;
    void SetPlace(size_t pBone, const double* pMove, KQexAmcScratch& pScratch, double* pValues) const;
    void FormatBone(const KQexAmcWriteBone& pBone, const double* pValues, std::string& pText) const;

    KQexFileAcclaimAmc&                          mFile;
    const KQexAmcWriteOptions&                   mOptions;
    const double                                 mToFile; ///< Units of the file per centimetre.
    const int                                    mThreads;
    KQexNode*                                    mRootNode = nullptr;
    std::vector<KQexAmcWriteBone>                mBones;  ///< In pre-order.
    std::vector<KQexAmcJoint>                    mJoints; ///< One a bone.
    KQexAmcSteps                                 mSteps;  ///< Of mJoints.
    std::vector<std::unique_ptr<KQexAmcScratch>> mScratch;
    std::vector<double>                          mLast; ///< Values of the frame before.
    size_t                                       mValueCount = 0;
};

} // namespace qexsdk

#endif
