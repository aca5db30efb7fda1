#include <qexioplugins/acclaim/kqexasfwalk.h>
#include <qexioplugins/acclaim/kqexdofsolver.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>
#include <qexioplugins/motion/kqexframewriter.h>
#include <qexioplugins/motion/kqextakeguard.h>

#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/kparallel.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kCentimetres = 2.54; ///< Centimetres of an inch: a file's unit is that over its length unit.
constexpr double kAngleNoise = 1e-5;  ///< Degrees by which single-precision curves of half a turn are off.
constexpr double kLengthNoise = 6e-8; ///< Part of a length by which a single-precision curve is off.
constexpr int    kFewestDecimals = 2; ///< Even in gimbal lock angles keep these.
constexpr int    kMostDecimals = 6;
constexpr double kTellDegrees = 0.01; ///< Errors up to here are not worth a word.
constexpr double kTellCentimetres = 0.01;

/// What is known of a bone before the first frame.
struct KAmcBone
{
    HKQexAsfNode mBone = nullptr;
    int          mParent = -1; ///< Index of the parent bone.
    int          mPose = -1;   ///< Index of its node in the pose; -1 without a node.
    int          mFrom = -1;   ///< Index of the nearest bone above that has a node.
    size_t       mValue = 0;   ///< Index of its first value in a frame.
    KDofSolver   mSolver;
    KgeRMatrix   mAxis; ///< Its axis, world.
    KgeRMatrix   mAxisInv;
    KgeRMatrix   mRestInv;      ///< Takes its node's rotation to the one that the skeleton's rest pose is turned by.
    double       mRest[3] = {}; ///< From that bone's place to its own at rest, centimetres, as the skeleton's rest pose has it.
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
    KQexGlobalTransforms    mPose;
    std::vector<KgeRMatrix> mTurns; ///< By how much each bone is turned from its rest pose, world.
    std::vector<KAmcLoss>   mLosses;
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

class KAmcWriter : private KQexFrameFormat
{
public:
    KAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions)
        : mFile(pFile),
          mOptions(pOptions),
          mToFile(pAsfScene->mLengthUnit > 0.0 ? pAsfScene->mLengthUnit / kCentimetres : 1.0),
          mThreads(KThreadCount(pOptions.mThreads))
    {
    }

    bool Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs);
    void WriteHeader();
    bool WriteFrames();
    void TellLosses();

private:
    bool Evaluate(int pThread, KTime pTime, double* pValues) override;
    void Continue(double* pValues) override;
    void Format(long long pFrame, const double* pValues, std::string& pText) const override;

    void AddBone(HKQexAsfNode pNode, int pParent);
    void SetRest(const KQexGlobalTransforms& pPose);
    void GetReach(const KAmcBone& pBone, const KQexGlobalTransforms& pPose, double* pReach) const;
    void EvaluateRotation(size_t pBone, KAmcScratch& pScratch, double* pValues) const;
    void EvaluatePlace(const KAmcBone& pBone, size_t pIndex, KAmcScratch& pScratch, double* pValues) const;
    void FormatBone(const KAmcBone& pBone, const double* pValues, std::string& pText) const;

    KQexFileAcclaimAmc&                       mFile;
    const KQexAmcWriteOptions&                mOptions;
    const double                              mToFile; ///< Units of the file per centimetre.
    const int                                 mThreads;
    KQexNode*                                 mRootNode = nullptr;
    std::vector<KAmcBone>                     mBones; ///< In pre-order.
    std::vector<std::unique_ptr<KAmcScratch>> mScratch;
    std::vector<double>                       mLast; ///< Values of the frame before.
    size_t                                    mValueCount = 0;
};

void KAmcWriter::AddBone(HKQexAsfNode pNode, int pParent)
{
    KAmcBone lBone;
    lBone.mBone = pNode;
    lBone.mParent = pParent;
    lBone.mValue = mValueCount;
    lBone.mSolver = KDofSolver(pNode->mOrderBuf, pNode->mOrderCount);
    KgeSet(lBone.mAxis, pNode->mAxisRM);
    KgeSet(lBone.mAxisInv, pNode->mAxisRMInv);
    mValueCount += static_cast<size_t>(pNode->mOrderCount);
    mBones.push_back(lBone);
}

bool KAmcWriter::Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs)
{
    mRootNode = pPairs.front().mNode;
    KQexGlobalTransforms lPose;
    if (!mRootNode->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(mRootNode, KTime(0), lPose))
    {
        return false;
    }
    std::unordered_map<const KQexNode*, int> lPoseOf;
    for (int i = 0; i < lPose.GetCount(); ++i)
    {
        lPoseOf[lPose.GetNode(i)] = i;
    }
    std::unordered_map<const KQexAsfNode*, int> lNodeOf;
    for (const KQexAmcPair& lPair : pPairs)
    {
        const auto lFound = lPoseOf.find(lPair.mNode);
        lNodeOf[lPair.mBone] = lFound != lPoseOf.end() ? lFound->second : -1;
    }
    std::vector<int> lOpen;
    KQexAsfWalk      lWalk(pRoot);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lOpen.pop_back();
            continue;
        }
        AddBone(lNode, lOpen.empty() ? -1 : lOpen.back());
        KAmcBone&  lBone = mBones.back();
        const auto lFound = lNodeOf.find(lNode);
        lBone.mPose = lFound != lNodeOf.end() ? lFound->second : -1;
        if (lBone.mParent >= 0)
        {
            const KAmcBone& lParent = mBones[static_cast<size_t>(lBone.mParent)];
            lBone.mFrom = lParent.mPose >= 0 ? lBone.mParent : lParent.mFrom;
        }
        lOpen.push_back(static_cast<int>(mBones.size()) - 1);
    }
    SetRest(lPose);
    for (int i = 0; i < mThreads; ++i)
    {
        mScratch.push_back(std::make_unique<KAmcScratch>());
        mScratch.back()->mTurns.resize(mBones.size());
        mScratch.back()->mLosses.resize(mBones.size());
    }
    mLast.assign(mValueCount, 0.0);
    return true;
}

/// From the place of the nearest bone above with a node to the bone's own, centimetres, world. The root's place itself.
void KAmcWriter::GetReach(const KAmcBone& pBone, const KQexGlobalTransforms& pPose, double* pReach) const
{
    KmVset(pReach, pPose.GetTransform(pBone.mPose).mData[3].mData);
    if (pBone.mFrom >= 0)
    {
        const double* lFrom = pPose.GetTransform(mBones[static_cast<size_t>(pBone.mFrom)].mPose).mData[3].mData;
        KmV(pReach, pReach[0] - lFrom[0], pReach[1] - lFrom[1], pReach[2] - lFrom[2]);
    }
    KmVN(pReach, pReach, mOptions.mScale);
}

void KAmcWriter::SetRest(const KQexGlobalTransforms& pPose)
{
    KgeRMatrix lAlign; // From the skeleton's rest pose to the nodes'.
    if (mOptions.mIsRootAligned)
    {
        pPose.GetTransform(0).GetRotation(lAlign);
    }
    KgeRMatrix lAlignInv;
    KgeInverse(lAlignInv, lAlign);
    for (KAmcBone& lBone : mBones)
    {
        if (lBone.mPose < 0)
        {
            continue;
        }
        pPose.GetTransform(lBone.mPose).GetRotation(lBone.mRestInv);
        KgeInverse(lBone.mRestInv, lBone.mRestInv);
        KgeMult(lBone.mRestInv, lBone.mRestInv, lAlign);
        if (lBone.mFrom >= 0)
        {
            double lReach[3];
            GetReach(lBone, pPose, lReach);
            KmRV(lBone.mRest, lAlignInv.mData, lReach);
        }
    }
}

/// With the turns D of a bone and of its parent from their rest poses, and the bone's axis A, sampling turns the bone by
/// D = D(parent) A M A^-1 for the rotation M that its DOFs make: so M = A^-1 D(parent)^-1 D A.
void KAmcWriter::EvaluateRotation(size_t pBone, KAmcScratch& pScratch, double* pValues) const
{
    const KAmcBone& lBone = mBones[pBone];
    KgeRMatrix&     lTurn = pScratch.mTurns[pBone];
    KgeRMatrix      lParentInv;
    if (lBone.mParent >= 0)
    {
        KgeInverse(lParentInv, pScratch.mTurns[static_cast<size_t>(lBone.mParent)]);
    }
    if (lBone.mPose < 0)
    {
        KgeInverse(lTurn, lParentInv);
        return;
    }
    KgeRMatrix lWanted;
    KgeRMatrix lReached;
    pScratch.mPose.GetTransform(lBone.mPose).GetRotation(lTurn);
    KgeMult(lTurn, lTurn, lBone.mRestInv);
    KgeMult(lWanted, lParentInv, lTurn);
    KgeMult(lWanted, lBone.mAxisInv, lWanted);
    KgeMult(lWanted, lWanted, lBone.mAxis);
    double lAngles[6];
    lBone.mSolver.Solve(lWanted, lAngles, lReached);
    int lNext = 0;
    for (int i = 0; i < lBone.mBone->mOrderCount; ++i)
    {
        if (lBone.mBone->mOrderBuf[i] >= 3)
        {
            pValues[i] = lAngles[lNext++];
        }
    }
    const double lOff = AngleBetween(lWanted, lReached);
    if (lOff > kTellDegrees)
    {
        pScratch.mLosses[pBone].mDegrees = std::max(pScratch.mLosses[pBone].mDegrees, lOff);
    }
    if (lOff > 0.0)
    {
        // The bones below start from where this one really is.
        KgeMult(lReached, lBone.mAxis, lReached);
        KgeMult(lReached, lReached, lBone.mAxisInv);
        KgeInverse(lParentInv, lParentInv);
        KgeMult(lTurn, lParentInv, lReached);
    }
}

/// The displacement from the place at rest, in the bone's axis frame, by the translation DOFs.
void KAmcWriter::EvaluatePlace(const KAmcBone& pBone, size_t pIndex, KAmcScratch& pScratch, double* pValues) const
{
    double lMove[3];
    GetReach(pBone, pScratch.mPose, lMove);
    if (pBone.mParent >= 0)
    {
        KgeRMatrix lParentInv;
        KgeInverse(lParentInv, pScratch.mTurns[static_cast<size_t>(pBone.mParent)]);
        const double lReach[3] = {lMove[0], lMove[1], lMove[2]};
        KmRV(lMove, lParentInv.mData, lReach);
        KmV(lMove, lMove[0] - pBone.mRest[0], lMove[1] - pBone.mRest[1], lMove[2] - pBone.mRest[2]);
    }
    double lLeft[3];
    KmRV(lLeft, pBone.mAxisInv.mData, lMove);
    for (int i = 0; i < pBone.mBone->mOrderCount; ++i)
    {
        const int lCode = pBone.mBone->mOrderBuf[i];
        if (lCode <= 2)
        {
            pValues[i] = lLeft[lCode] * mToFile;
            lLeft[lCode] = 0.0;
        }
    }
    const double lOff = KmVlength(lLeft);
    if (lOff > kTellCentimetres)
    {
        pScratch.mLosses[pIndex].mCentimetres = std::max(pScratch.mLosses[pIndex].mCentimetres, lOff);
    }
}

bool KAmcWriter::Evaluate(int pThread, KTime pTime, double* pValues)
{
    KAmcScratch& lScratch = *mScratch[static_cast<size_t>(pThread)];
    if (!mRootNode->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(mRootNode, pTime, lScratch.mPose))
    {
        return false;
    }
    std::fill(pValues, pValues + mValueCount, 0.0);
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        double* lValues = pValues + mBones[i].mValue;
        EvaluateRotation(i, lScratch, lValues);
        if (mBones[i].mPose >= 0)
        {
            EvaluatePlace(mBones[i], i, lScratch, lValues);
        }
    }
    return true;
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

void KAmcWriter::Continue(double* pValues)
{
    for (const KAmcBone& lBone : mBones)
    {
        double  lAngles[6];
        double  lLast[6];
        double* lValues = pValues + lBone.mValue;
        GatherAngles(*lBone.mBone, lValues, lAngles);
        GatherAngles(*lBone.mBone, mLast.data() + lBone.mValue, lLast);
        lBone.mSolver.Continue(lAngles, lLast);
        int lNext = 0;
        for (int i = 0; i < lBone.mBone->mOrderCount; ++i)
        {
            if (lBone.mBone->mOrderBuf[i] >= 3)
            {
                lValues[i] = lAngles[lNext++];
            }
        }
    }
    std::copy(pValues, pValues + mValueCount, mLast.begin());
}

void KAmcWriter::FormatBone(const KAmcBone& pBone, const double* pValues, std::string& pText) const
{
    const KQexAsfNode& lNode = *pBone.mBone;
    double             lAngles[6];
    double             lPlace = KmVlength(pBone.mRest) * mToFile;
    double             lTurned = 180.0;
    GatherAngles(lNode, pValues, lAngles);
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        (lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned) = std::max(std::fabs(pValues[i]), lNode.mOrderBuf[i] <= 2 ? lPlace : lTurned);
    }
    const int lLengthDecimals = DecimalsFor(2.0 * kLengthNoise * lPlace);
    const int lAngleDecimals = DecimalsFor(kAngleNoise * lTurned / 180.0 * pBone.mSolver.GetGain(lAngles));
    pText += lNode.mName;
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        pText += ' ';
        KNumberAppendFixed(pText, pValues[i], lNode.mOrderBuf[i] <= 2 ? lLengthDecimals : lAngleDecimals);
    }
    pText += '\n';
}

void KAmcWriter::Format(long long pFrame, const double* pValues, std::string& pText) const
{
    pText += std::to_string(pFrame + 1);
    pText += '\n';
    for (const KAmcBone& lBone : mBones)
    {
        if (lBone.mBone->mOrderCount > 0)
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
