#include <qexioplugins/acclaim/amc/kqexamcwriter.h>

#include <kbaselib/kbase/kparallel.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/amc/kqexamcbones.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kTellDegrees = 0.01; ///< Errors up to here are not worth a word.
constexpr double kTellCentimetres = 0.01;

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

} // namespace

KQexAmcWriter::KQexAmcWriter(KQexFileAcclaimAmc& pFile, KQexAsfScene* pAsfScene, const KQexAmcWriteOptions& pOptions)
    : mFile(pFile),
      mOptions(pOptions),
      mToFile(pAsfScene->mLengthUnit > 0.0 ? pAsfScene->mLengthUnit / kCentimetresPerInch : 1.0),
      mThreads(KThreadCount(pOptions.mThreads))
{
}

void KQexAmcWriter::AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexGlobalTransforms& pPose)
{
    std::unordered_map<const KQexNode*, int> lPoseOf;
    for (int i = 0; i < pPose.GetCount(); ++i)
    {
        lPoseOf[pPose.GetNode(i)] = i;
    }
    std::unordered_map<const KQexAsfNode*, KQexAmcJoint> lJointOf;
    for (const KQexAmcPair& lPair : pPairs)
    {
        const auto lFound = lPoseOf.find(lPair.mNode);
        lJointOf[lPair.mBone] = lFound != lPoseOf.end() ? KQexAmcJoint{lPair.mNode, lFound->second, -1} : KQexAmcJoint{};
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
        const auto   lFound = lJointOf.find(lNode);
        KQexAmcJoint lJoint = lFound != lJointOf.end() ? lFound->second : KQexAmcJoint{};
        lJoint.mFrom = lOpen.empty() ? -1 : lOpen.back();
        mBones.emplace_back(lNode);
        mBones.back().mValue = mValueCount;
        mValueCount += static_cast<size_t>(lNode->mOrderCount);
        mJoints.push_back(lJoint);
        lOpen.push_back(lJoint.mNode != nullptr ? static_cast<int>(mBones.size()) - 1 : lJoint.mFrom);
    }
}

/// A bone's length is no DOF of ours, but readers of the same skeleton expect a value for it.
void KQexAmcWriter::AddLengths()
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
    for (KQexAmcWriteBone& lBone : mBones)
    {
        const auto lFound = lPlacesOf.find(lBone.mBone->mName);
        if (lFound != lPlacesOf.end())
        {
            lBone.mLengthPlaces = lFound->second;
        }
    }
}

bool KQexAmcWriter::Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs)
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
        mScratch.push_back(std::make_unique<KQexAmcScratch>());
        mScratch.back()->mStrays.resize(mBones.size());
        mScratch.back()->mLosses.resize(mBones.size());
    }
    mLast.assign(mValueCount, 0.0);
    return true;
}

void KQexAmcWriter::SetRest(const KQexGlobalTransforms& pPose)
{
    KgeRMatrix lAlign; // From the skeleton's rest pose to the nodes'.
    if (mOptions.mIsRootAligned)
    {
        pPose.GetTransform(0).GetRotation(lAlign);
    }
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        const KQexAmcJoint& lJoint = mJoints[i];
        if (lJoint.mNode != nullptr)
        {
            const KQexMatrix* lFrom = lJoint.mFrom >= 0 ? &pPose.GetTransform(mJoints[static_cast<size_t>(lJoint.mFrom)].mPose) : nullptr;
            mBones[i].mFit.SetRest(pPose.GetTransform(lJoint.mPose), lFrom, lAlign, mOptions.mScale);
        }
    }
}

/// What the take tells before its first frame; the evaluator's context is the take now.
void KQexAmcWriter::LookAhead()
{
    mSteps.Prepare(mRootNode, mJoints);
    KQexAmcMoment lMoment;
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KQexAmcWriteBone& lBone = mBones[i];
        if (mJoints[i].mNode == nullptr)
        {
            continue;
        }
        lBone.mTakesAngles = mSteps.IsOneNode(i) && lBone.mFit.TakesAngles(*mJoints[i].mNode);
        lBone.mHasFixedMove = mSteps.IsReachFixed(i);
        if (lBone.mHasFixedMove)
        {
            KQexAmcStep lStep;
            mSteps.Get(i, lMoment, lStep);
            lBone.mFit.GetMove(lStep, nullptr, lBone.mMove);
            lBone.mIsStill = lBone.mFit.GetSolver().GetCount() == lBone.mBone->mOrderCount && KmVlength(lBone.mMove) <= kTellCentimetres;
        }
    }
}

/// The displacement by the translation DOFs.
void KQexAmcWriter::SetPlace(size_t pBone, const double* pMove, KQexAmcScratch& pScratch, double* pValues) const
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

void KQexAmcWriter::EvaluateBone(size_t pBone, KQexAmcScratch& pScratch, double* pValues) const
{
    const KQexAmcWriteBone& lBone = mBones[pBone];
    const KQexAmcStray*     lAbove = pScratch.GetStray(mJoints[pBone].mFrom);
    const bool              lHasMove = lBone.mHasFixedMove && lAbove == nullptr;
    double                  lAngles[6];
    bool                    lIsTaken = false;
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
        KQexAmcStep lStep;
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

bool KQexAmcWriter::Evaluate(int pThread, KTime pTime, double* pValues)
{
    KQexAmcScratch& lScratch = *mScratch[static_cast<size_t>(pThread)];
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

void KQexAmcWriter::Continue(double* pValues)
{
    for (const KQexAmcWriteBone& lBone : mBones)
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

} // namespace qexsdk
