#include <qexioplugins/acclaim/amc/kqexamcwriter.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/amc/kqexamcbones.h>
#include <qexioplugins/acclaim/amc/kqexamcrest.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kReportedDegrees = 0.01; ///< Errors up to this are not reported.
constexpr double kReportedCentimetres = 0.01;

/// The inverse of GatherAngles().
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
    : mFile(pFile), mOptions(pOptions), mToFile(pAsfScene->mLengthUnit > 0.0 ? pAsfScene->mLengthUnit / kCentimetresPerInch : 1.0)
{
}

void KQexAmcWriter::AddBones(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs, const KQexFrameNodes& pNodes)
{
    std::unordered_map<const KQexAsfNode*, KQexAmcJoint> lJointOf;
    for (const KQexAmcPair& lPair : pPairs)
    {
        const int lIndex = pNodes.Find(lPair.mNode);
        lJointOf[lPair.mBone] = lIndex >= 0 ? KQexAmcJoint{lPair.mNode, lIndex, -1} : KQexAmcJoint{};
    }
    std::vector<int> lPath; // For each bone on the current path: the nearest one, itself included, that has a node; else -1.
    KQexAsfWalk      lWalk(pRoot);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lPath.pop_back();
            continue;
        }
        const auto   lFound = lJointOf.find(lNode);
        KQexAmcJoint lJoint = lFound != lJointOf.end() ? lFound->second : KQexAmcJoint{};
        lJoint.mParent = lPath.empty() ? -1 : lPath.back();
        mBones.emplace_back(lNode);
        mBones.back().mFirstValue = mValueCount;
        mValueCount += static_cast<size_t>(lNode->mOrderCount);
        mJoints.push_back(lJoint);
        lPath.push_back(lJoint.mNode != nullptr ? static_cast<int>(mBones.size()) - 1 : lJoint.mParent);
    }
}

/// The model has no DOF for a bone's length, but readers of the same skeleton file expect a value for it.
void KQexAmcWriter::AddLengths()
{
    std::unordered_map<std::string, std::vector<int>> lIndicesOf;
    for (const KQexAsfLengthDof& lLength : mOptions.mSkeletonNotes.mLengthDofs)
    {
        AddLengthIndex(lIndicesOf[lLength.mBone], lLength.mIndex);
    }
    if (lIndicesOf.empty())
    {
        return;
    }
    for (KQexAmcWriteBone& lBone : mBones)
    {
        const auto lFound = lIndicesOf.find(lBone.mBone->mName);
        if (lFound != lIndicesOf.end())
        {
            lBone.mLengthIndices = lFound->second;
        }
    }
}

void KQexAmcWriter::Prepare(HKQexAsfNode pRoot, const std::vector<KQexAmcPair>& pPairs)
{
    const KQexAnimStack* lStack = mOptions.mRestStack;
    const KQexFrameNodes lNodes({pPairs.front().mNode}, KQexLayerOf(lStack));
    KQexFrame            lFrame(lNodes, eFRAME_WORLD);
    KQexJointFrames      lFrames;
    lFrame.Evaluate(0, KTime(0));
    lFrames.Set(lFrame);
    AddBones(pRoot, pPairs, lNodes);
    AddLengths();
    SetRest(lFrames);
    mLast.assign(mValueCount, 0.0);
}

void KQexAmcWriter::SetRest(const KQexJointFrames& pFrames)
{
    std::vector<HKQexAsfNode> lBones;
    for (const KQexAmcWriteBone& lBone : mBones)
    {
        lBones.push_back(lBone.mBone);
    }
    KQexAmcRest lRest(lBones, mJoints, pFrames, mOptions.mScale);
    lRest.Align(mOptions.mRestAlignment);
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        const KQexAmcJoint& lJoint = mJoints[i];
        if (lJoint.mNode != nullptr)
        {
            const KQexJointFrame* lFrom = lJoint.mParent >= 0 ? &lRest.GetFrame(static_cast<size_t>(lJoint.mParent)) : nullptr;
            mBones[i].mFit.SetRest(lRest.GetFrame(i), lFrom, lRest.GetAlign(), mOptions.mScale);
        }
    }
}

/// Computes what is constant over the take.
void KQexAmcWriter::Begin(const KQexFrameNodes& pNodes, int pThreads)
{
    mSteps.Prepare(pNodes, mJoints);
    KQexFrame      lFirst(pNodes, mSteps.GetParts());
    KQexAmcScratch lScratch;
    lFirst.Evaluate(0, KTime(0));
    mSteps.Begin(lFirst, lScratch.mState);
    lScratch.mResiduals.resize(mBones.size());
    lScratch.mLosses.resize(mBones.size());
    mScratch.assign(static_cast<size_t>(pThreads), lScratch); // All of it is allocated now: Compute() must not throw.
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        KQexAmcWriteBone& lBone = mBones[i];
        if (mJoints[i].mNode == nullptr)
        {
            continue;
        }
        lBone.mUsesNodeAngles = mSteps.IsOneNode(i) && lBone.mFit.CanUseNodeAngles(*mJoints[i].mNode);
        lBone.mHasFixedDisplacement = mSteps.IsTranslationFixed(i);
        if (lBone.mHasFixedDisplacement)
        {
            KQexAmcStep lStep;
            mSteps.Get(i, lScratch.mState, lStep);
            lBone.mFit.GetDisplacement(lStep, nullptr, lBone.mDisplacement);
            lBone.mSkipsTranslation =
                lBone.mFit.GetSolver().GetCount() == lBone.mBone->mOrderCount && KmVlength(lBone.mDisplacement) <= kReportedCentimetres;
        }
    }
}

/// Sets the values of the translation DOFs; what they cannot express is a loss.
void KQexAmcWriter::SetTranslations(size_t pBone, const double* pDisplacement, KQexAmcScratch& pScratch, double* pValues) const
{
    const KQexAsfNode& lNode = *mBones[pBone].mBone;
    double             lResidual[3] = {pDisplacement[0], pDisplacement[1], pDisplacement[2]};
    for (int i = 0; i < lNode.mOrderCount; ++i)
    {
        const int lCode = lNode.mOrderBuf[i];
        if (lCode <= 2)
        {
            pValues[i] = lResidual[lCode] * mToFile;
            lResidual[lCode] = 0.0;
        }
    }
    const double lError = KmVlength(lResidual);
    if (lError > kReportedCentimetres)
    {
        pScratch.mLosses[pBone].mCentimetres = std::max(pScratch.mLosses[pBone].mCentimetres, lError);
    }
}

void KQexAmcWriter::EvaluateBone(size_t pBone, KQexAmcScratch& pScratch, double* pValues) const
{
    const KQexAmcWriteBone& lBone = mBones[pBone];
    const KQexAmcResidual*  lParent = pScratch.GetResidual(mJoints[pBone].mParent);
    const bool              lIsFixed = lBone.mHasFixedDisplacement && lParent == nullptr;
    double                  lAngles[6];
    bool                    lHasAngles = false;
    pScratch.mResiduals[pBone].mIsSet = false;
    if (lBone.mUsesNodeAngles && lParent == nullptr)
    {
        double lByAxis[3];
        mSteps.GetAngles(pBone, pScratch.mState, lByAxis);
        lHasAngles = lBone.mFit.GetSolver().TryAngles(lByAxis, lAngles);
    }
    double lDisplacement[3];
    if (!lHasAngles || !lIsFixed)
    {
        KQexAmcStep lStep;
        mSteps.Get(pBone, pScratch.mState, lStep);
        if (!lHasAngles)
        {
            const double lError = lBone.mFit.Solve(lStep, lParent, lAngles, pScratch.mResiduals[pBone]);
            double&      lLargest = pScratch.mLosses[pBone].mDegrees;
            lLargest = lError > kReportedDegrees ? std::max(lLargest, lError) : lLargest;
        }
        if (!lIsFixed)
        {
            lBone.mFit.GetDisplacement(lStep, lParent, lDisplacement);
        }
    }
    if (!lIsFixed || !lBone.mSkipsTranslation)
    {
        SetTranslations(pBone, lIsFixed ? lBone.mDisplacement : lDisplacement, pScratch, pValues);
    }
    ScatterAngles(*lBone.mBone, lAngles, pValues);
}

void KQexAmcWriter::Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept
{
    KQexAmcScratch& lScratch = mScratch[static_cast<size_t>(pThread)];
    mSteps.Begin(pFrame, lScratch.mState);
    std::fill(pValues, pValues + mValueCount, 0.0);
    for (size_t i = 0; i < mBones.size(); ++i)
    {
        if (mJoints[i].mNode != nullptr)
        {
            EvaluateBone(i, lScratch, pValues + mBones[i].mFirstValue);
        }
    }
}

void KQexAmcWriter::MakeContinuous(double* pValues)
{
    for (const KQexAmcWriteBone& lBone : mBones)
    {
        double  lAngles[6];
        double  lLast[6];
        double* lValues = pValues + lBone.mFirstValue;
        GatherAngles(*lBone.mBone, lValues, lAngles);
        GatherAngles(*lBone.mBone, mLast.data() + lBone.mFirstValue, lLast);
        lBone.mFit.GetSolver().MakeContinuous(lAngles, lLast);
        ScatterAngles(*lBone.mBone, lAngles, lValues);
    }
    std::copy(pValues, pValues + mValueCount, mLast.begin());
}

} // namespace qexsdk
