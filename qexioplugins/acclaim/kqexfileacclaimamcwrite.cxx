#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/kparallel.h>
#include <qexioplugins/acclaim/kqexamcbones.h>
#include <qexioplugins/acclaim/kqexamcfit.h>
#include <qexioplugins/acclaim/kqexamcsteps.h>
#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfwalk.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/motion/kqexframewriter.h>
#include <qexscene/kqexsceneundo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kAngleNoise = 1e-5;  ///< Degrees by which single-precision curves of half a turn are off.
constexpr double kLengthNoise = 2e-7; ///< Part of a length by which places are off: single precision, three times over by way of glTF.
constexpr int    kFewestDecimals = 2; ///< Even in gimbal lock angles keep these.
constexpr int    kMostDecimals = 6;
constexpr double kTellDegrees = 0.01; ///< Errors up to here are not worth a word.
constexpr double kTellCentimetres = 0.01;

/// What is known of a bone before the first frame.
struct KAmcBone
{
    explicit KAmcBone(HKQexAsfNode pBone) : mBone(pBone), mNameLength(std::strlen(pBone->mName)), mFit(*pBone) {}

    HKQexAsfNode     mBone;
    size_t           mNameLength;
    KAmcFit          mFit;
    size_t           mValue = 0;            ///< Index of its first value in a frame.
    std::vector<int> mLengthPlaces;         ///< Places on its line, from 0 and rising, that the skeleton's file gives to lengths.
    bool             mTakesAngles = false;  ///< Its node's angles are those of the DOFs, as a rule.
    bool             mHasFixedMove = false; ///< It is displaced by mMove at all times,
    bool             mIsStill = false;      ///< which is not at all, and no DOF is for it.
    double           mMove[3] = {};         ///< Displacement from the place at rest, in its axis frame, centimetres.
};

/// The largest errors of a bone, one set for each thread.
struct KAmcLoss
{
    double mDegrees = 0.0;
    double mCentimetres = 0.0;
};

/// What evaluating a frame needs besides its result; one for each thread.
struct KAmcScratch
{
    KAmcMoment             mMoment;
    std::vector<KAmcStray> mStrays; ///< One a bone.
    std::vector<KAmcLoss>  mLosses; ///< One a bone.

    /// How bone \p pBone strayed; null when it did not, or for -1.
    const KAmcStray* GetStray(int pBone) const
    {
        const KAmcStray* lStray = pBone >= 0 ? &mStrays[static_cast<size_t>(pBone)] : nullptr;
        return lStray != nullptr && lStray->mIs ? lStray : nullptr;
    }
};

/// Digits behind the point that are above twice the noise.
int DecimalsFor(double pNoise)
{
    int    lDecimals = kMostDecimals;
    double lStep = 1e-6;
    while (lDecimals > kFewestDecimals && lStep < 4.0 * pNoise)
    {
        lStep *= 10.0;
        --lDecimals;
    }
    return lDecimals;
}

/// The values of a bone's rotation DOFs, in their order.
void GatherAngles(const KQexAsfNode& pBone, const double* pValues, double* pAngles)
{
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        if (pBone.mOrderBuf[i] >= 3)
        {
            *pAngles++ = pValues[i];
        }
    }
}

/// Puts angles back where GatherAngles() takes them from.
void ScatterAngles(const KQexAsfNode& pBone, const double* pAngles, double* pValues)
{
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        if (pBone.mOrderBuf[i] >= 3)
        {
            pValues[i] = *pAngles++;
        }
    }
}

class KAmcWriter : private KQexFrameFormat
{
public:
    KAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions)
        : mFile(pFile),
          mOptions(pOptions),
          mToFile(pAsfScene->mLengthUnit > 0.0 ? pAsfScene->mLengthUnit / kCentimetresPerInch : 1.0),
          mThreads(KThreadCount(pOptions.mThreads))
    {
    }

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
    void EvaluateBone(size_t pBone, KAmcScratch& pScratch, double* pValues) const;
    void SetPlace(size_t pBone, const double* pMove, KAmcScratch& pScratch, double* pValues) const;
    void FormatBone(const KAmcBone& pBone, const double* pValues, std::string& pText) const;

    KQexFileAcclaimAmc&                       mFile;
    const KQexAmcWriteOptions&                mOptions;
    const double                              mToFile; ///< Units of the file per centimetre.
    const int                                 mThreads;
    KQexNode*                                 mRootNode = nullptr;
    std::vector<KAmcBone>                     mBones;  ///< In pre-order.
    std::vector<KAmcJoint>                    mJoints; ///< One a bone.
    KAmcSteps                                 mSteps;  ///< Of mJoints.
    std::vector<std::unique_ptr<KAmcScratch>> mScratch;
    std::vector<double>                       mLast; ///< Values of the frame before.
    size_t                                    mValueCount = 0;
};

void KAmcWriter::AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexGlobalTransforms& pPose)
{
    std::unordered_map<const KQexNode*, int> lPoseOf;
    for (int i = 0; i < pPose.GetCount(); ++i)
    {
        lPoseOf[pPose.GetNode(i)] = i;
    }
    std::unordered_map<const KQexAsfNode*, KAmcJoint> lJointOf;
    for (const KQexAmcPair& lPair : pPairs)
    {
        const auto lFound = lPoseOf.find(lPair.mNode);
        lJointOf[lPair.mBone] = lFound != lPoseOf.end() ? KAmcJoint{lPair.mNode, lFound->second, -1} : KAmcJoint{};
    }
    std::vector<int> lOpen; // For each bone that is open, the nearest one at or above it that has a node.
    KQexAsfWalk      lWalk(pRoot);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lOpen.pop_back();
            continue;
        }
        const auto lFound = lJointOf.find(lNode);
        KAmcJoint  lJoint = lFound != lJointOf.end() ? lFound->second : KAmcJoint{};
        lJoint.mFrom = lOpen.empty() ? -1 : lOpen.back();
        mBones.emplace_back(lNode);
        mBones.back().mValue = mValueCount;
        mValueCount += static_cast<size_t>(lNode->mOrderCount);
        mJoints.push_back(lJoint);
        lOpen.push_back(lJoint.mNode != nullptr ? static_cast<int>(mBones.size()) - 1 : lJoint.mFrom);
    }
}

/// A bone's length is no DOF of ours, but readers of the same skeleton expect a value for it.
void KAmcWriter::AddLengths()
{
    std::unordered_map<std::string, std::vector<int>> lPlacesOf;
    for (const KQexAsfLengthDof& lLength : mOptions.mSkeletonNotes.mLengthDofs)
    {
        AddLengthPlace(lPlacesOf[lLength.mBone], lLength.mPlace);
    }
    if (lPlacesOf.empty())
    {
        return;
    }
    for (KAmcBone& lBone : mBones)
    {
        const auto lFound = lPlacesOf.find(lBone.mBone->mName);
        if (lFound != lPlacesOf.end())
        {
            lBone.mLengthPlaces = lFound->second;
        }
    }
}

bool KAmcWriter::Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs)
{
    mRootNode = pPairs.front().mNode;
    KQexGlobalTransforms lPose;
    if (!mRootNode->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(mRootNode, KTime(0), lPose))
    {
        return false;
    }
    AddBones(pRoot, pPairs, lPose);
    AddLengths();
    SetRest(lPose);
    for (int i = 0; i < mThreads; ++i)
    {
        mScratch.push_back(std::make_unique<KAmcScratch>());
        mScratch.back()->mStrays.resize(mBones.size());
        mScratch.back()->mLosses.resize(mBones.size());
    }
    mLast.assign(mValueCount, 0.0);
    return true;
}

void KAmcWriter::SetRest(const KQexGlobalTransforms& pPose)
{
    KgeRMatrix lAlign; // From the skeleton's rest pose to the nodes'.
    if (mOptions.mIsRootAligned)
    {
        pPose.GetTransform(0).GetRotation(lAlign);
    }
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        const KAmcJoint& lJoint = mJoints[i];
        if (lJoint.mNode != nullptr)
        {
            const KQexMatrix* lFrom = lJoint.mFrom >= 0 ? &pPose.GetTransform(mJoints[static_cast<size_t>(lJoint.mFrom)].mPose) : nullptr;
            mBones[i].mFit.SetRest(pPose.GetTransform(lJoint.mPose), lFrom, lAlign, mOptions.mScale);
        }
    }
}

/// What the take tells before its first frame; the evaluator's context is the take now.
void KAmcWriter::LookAhead()
{
    mSteps.Prepare(mRootNode, mJoints);
    KAmcMoment lMoment;
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KAmcBone& lBone = mBones[i];
        if (mJoints[i].mNode == nullptr)
        {
            continue;
        }
        lBone.mTakesAngles = mSteps.IsOneNode(i) && lBone.mFit.TakesAngles(*mJoints[i].mNode);
        lBone.mHasFixedMove = mSteps.IsReachFixed(i);
        if (lBone.mHasFixedMove)
        {
            KAmcStep lStep;
            mSteps.Get(i, lMoment, lStep);
            lBone.mFit.GetMove(lStep, nullptr, lBone.mMove);
            lBone.mIsStill = lBone.mFit.GetSolver().GetCount() == lBone.mBone->mOrderCount && KmVlength(lBone.mMove) <= kTellCentimetres;
        }
    }
}

/// The displacement by the translation DOFs.
void KAmcWriter::SetPlace(size_t pBone, const double* pMove, KAmcScratch& pScratch, double* pValues) const
{
    const KQexAsfNode& lNode = *mBones[pBone].mBone;
    double             lLeft[3] = {pMove[0], pMove[1], pMove[2]};
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        const int lCode = lNode.mOrderBuf[i];
        if (lCode <= 2)
        {
            pValues[i] = lLeft[lCode] * mToFile;
            lLeft[lCode] = 0.0;
        }
    }
    const double lOff = KmVlength(lLeft);
    if (lOff > kTellCentimetres)
    {
        pScratch.mLosses[pBone].mCentimetres = std::max(pScratch.mLosses[pBone].mCentimetres, lOff);
    }
}

void KAmcWriter::EvaluateBone(size_t pBone, KAmcScratch& pScratch, double* pValues) const
{
    const KAmcBone&  lBone = mBones[pBone];
    const KAmcStray* lAbove = pScratch.GetStray(mJoints[pBone].mFrom);
    const bool       lHasMove = lBone.mHasFixedMove && lAbove == nullptr;
    double           lAngles[6];
    bool             lIsTaken = false;
    pScratch.mStrays[pBone].mIs = false;
    if (lBone.mTakesAngles && lAbove == nullptr)
    {
        double lByAxis[3];
        mSteps.GetAngles(pBone, pScratch.mMoment, lByAxis);
        lIsTaken = lBone.mFit.GetSolver().TakeAngles(lByAxis, lAngles);
    }
    double lMove[3];
    if (!lIsTaken || !lHasMove)
    {
        KAmcStep lStep;
        mSteps.Get(pBone, pScratch.mMoment, lStep);
        if (!lIsTaken)
        {
            const double lOff = lBone.mFit.Solve(lStep, lAbove, lAngles, pScratch.mStrays[pBone]);
            double&      lMost = pScratch.mLosses[pBone].mDegrees;
            lMost = lOff > kTellDegrees ? std::max(lMost, lOff) : lMost;
        }
        if (!lHasMove)
        {
            lBone.mFit.GetMove(lStep, lAbove, lMove);
        }
    }
    if (!lHasMove || !lBone.mIsStill)
    {
        SetPlace(pBone, lHasMove ? lBone.mMove : lMove, pScratch, pValues);
    }
    ScatterAngles(*lBone.mBone, lAngles, pValues);
}

bool KAmcWriter::Evaluate(int pThread, KTime pTime, double* pValues)
{
    KAmcScratch& lScratch = *mScratch[static_cast<size_t>(pThread)];
    if (!mSteps.Begin(pTime, lScratch.mMoment))
    {
        return false;
    }
    std::fill(pValues, pValues + mValueCount, 0.0);
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        if (mJoints[i].mNode != nullptr)
        {
            EvaluateBone(i, lScratch, pValues + mBones[i].mValue);
        }
    }
    return true;
}

void KAmcWriter::Continue(double* pValues)
{
    for (const KAmcBone& lBone : mBones)
    {
        double  lAngles[6];
        double  lLast[6];
        double* lValues = pValues + lBone.mValue;
        GatherAngles(*lBone.mBone, lValues, lAngles);
        GatherAngles(*lBone.mBone, mLast.data() + lBone.mValue, lLast);
        lBone.mFit.GetSolver().Continue(lAngles, lLast);
        ScatterAngles(*lBone.mBone, lAngles, lValues);
    }
    std::copy(pValues, pValues + mValueCount, mLast.begin());
}

/// Decimals of a bone's angles, of which the largest is \p pTurned. Close to gimbal lock, where a pair of angles is known worse than the
/// fewest decimals tell, the angles are changed to others for the same rotation of which only one is.
int AngleDecimals(const KDofSolver& pSolver, double* pAngles, double pTurned)
{
    constexpr double kWidestStep = 1.0; // Wider ones would show as jumps between frames.
    const double     lNoise = kAngleNoise * pTurned / 180.0;
    const int        lMost = DecimalsFor(lNoise);
    if (lMost == DecimalsFor(lNoise * pSolver.GetGainBound(pAngles)))
    {
        return lMost;
    }
    const double lOutside = lNoise * pSolver.GetGain(pAngles);
    double       lStep = 0.01;
    if (lStep >= 4.0 * lOutside)
    {
        return DecimalsFor(lOutside);
    }
    while (lStep < 4.0 * lOutside && lStep < kWidestStep)
    {
        lStep *= 10.0;
    }
    pSolver.RoundInLock(pAngles, lStep);
    return lMost;
}

void KAmcWriter::FormatBone(const KAmcBone& pBone, const double* pValues, std::string& pText) const
{
    const KQexAsfNode& lNode = *pBone.mBone;
    char               lLine[sizeof(lNode.mName) + 6 * (1 + kNumberBufferSize) + 1];
    double             lAngles[6];
    double             lPlace = pBone.mFit.GetRestLength() * mToFile;
    double             lTurned = 180.0;
    GatherAngles(lNode, pValues, lAngles);
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        (lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned) = std::max(std::fabs(pValues[i]), lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned);
    }
    const int     lLengthDecimals = DecimalsFor(kLengthNoise * lPlace);
    const int     lAngleDecimals = AngleDecimals(pBone.mFit.GetSolver(), lAngles, lTurned);
    const double* lAngle = lAngles;
    char*         lEnd = std::copy(lNode.mName, lNode.mName + pBone.mNameLength, lLine);
    auto          lLength = pBone.mLengthPlaces.begin();
    int           lOnLine = 0;
    for (int i = 0; i < lNode.mOrderCount; ++i, ++lOnLine)
    {
        for (; lLength != pBone.mLengthPlaces.end() && *lLength == lOnLine; ++lLength, ++lOnLine)
        {
            pText.append(lLine, static_cast<size_t>(lEnd - lLine)).append(" 0");
            lEnd = lLine;
        }
        *lEnd++ = ' ';
        lEnd = lNode.mOrderBuf[i] <= 2 ? KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, pValues[i], lLengthDecimals)
                                       : KNumberPrintFixed(lEnd, lEnd + kNumberBufferSize, *lAngle++, lAngleDecimals);
    }
    pText.append(lLine, static_cast<size_t>(lEnd - lLine));
    for (; lLength != pBone.mLengthPlaces.end(); ++lLength)
    {
        pText.append(" 0");
    }
    pText += '\n';
}

void KAmcWriter::Format(long long pFrame, const double* pValues, std::string& pText) const
{
    pText += std::to_string(pFrame + 1);
    pText += '\n';
    for (const KAmcBone& lBone : mBones)
    {
        if (lBone.mBone->mOrderCount > 0 || !lBone.mLengthPlaces.empty())
        {
            FormatBone(lBone, pValues + lBone.mValue, pText);
        }
    }
}

void KAmcWriter::WriteHeader()
{
    if (!mOptions.mAsfName.empty())
    {
        mFile.Print(0, "#!OML:ASF %s\n", mOptions.mAsfName.c_str());
    }
    mFile.Print(0, ":FULLY-SPECIFIED\n:DEGREES\n");
    if (mOptions.mTellRate)
    {
        mFile.Print(0, ":SAMPLES-PER-SECOND %.10g\n", 705600000.0 / static_cast<double>(mOptions.mSampling.mStep.Get()));
    }
}

bool KAmcWriter::WriteFrames()
{
    const KFrameRun lRun = qexsdk::WriteFrames(*this, mOptions.mSampling, mValueCount, mThreads, mFile.GetOutput(), mOptions.mProgress);
    if (lRun == KFrameRun::eOUT_OF_MEMORY)
    {
        mFile.Error("Out of memory\n");
    }
    return lRun == KFrameRun::eDONE;
}

void KAmcWriter::TellLosses()
{
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KAmcLoss lLoss;
        for (const std::unique_ptr<KAmcScratch>& lScratch : mScratch)
        {
            lLoss.mDegrees = std::max(lLoss.mDegrees, lScratch->mLosses[i].mDegrees);
            lLoss.mCentimetres = std::max(lLoss.mCentimetres, lScratch->mLosses[i].mCentimetres);
        }
        if (lLoss.mDegrees > 0.0 && lLoss.mCentimetres > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g degrees and %.3g cm\n", mBones[i].mBone->mName,
                          lLoss.mDegrees, lLoss.mCentimetres);
        }
        else if (lLoss.mDegrees > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g degrees\n", mBones[i].mBone->mName, lLoss.mDegrees);
        }
        else if (lLoss.mCentimetres > 0.0)
        {
            mFile.Warning("Motion that the DOFs can't express (%s): up to %.3g cm\n", mBones[i].mBone->mName, lLoss.mCentimetres);
        }
    }
}

} // namespace

bool KQexFileAcclaimAmc::Write(KQexAsfScene* pAsfScene, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions)
{
    if (pAsfScene == nullptr || pAsfScene->mRoot == nullptr || pPairs.empty() || pOptions.mSampling.mCount < 1)
    {
        Error("Nothing to write\n");
        return false;
    }
    KQexAnimEvaluator*     lEvaluator = pPairs.front().mNode->GetScene()->GetEvaluator();
    const KQexContextGuard lContext(lEvaluator);
    try
    {
        KAmcWriter lWriter(*this, pAsfScene, pOptions);
        lEvaluator->SetContext(pOptions.mRestStack);
        if (!lWriter.Prepare(pAsfScene->mRoot, pPairs))
        {
            Error("Out of memory\n");
            return false;
        }
        lEvaluator->SetContext(pOptions.mStack);
        lWriter.LookAhead();
        lWriter.WriteHeader();
        if (!lWriter.WriteFrames())
        {
            return false;
        }
        lWriter.TellLosses();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        Error("Out of memory\n");
        return false;
    }
}

} // namespace qexsdk
