#include <qexclip/kqexclipquantities.h>

#include <tests/faults/foreachallocation.h>
#include <tests/support/clipwork.h>
#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <ostream>

// Runs every operation on a clip with each allocation failing, alone and with all later ones: it fails with its result unchanged, or
// succeeds with the same result, never throws and never leaks. And on many joints, at one size and at twice that size: memory grows no
// faster than the clip.

using namespace qexsdk;
using namespace qextest;

namespace qextest
{

static std::ostream& operator<<(std::ostream& pOut, const KClipOperation& pOperation)
{
    return pOut << pOperation.mName;
}

} // namespace qextest

namespace
{

constexpr int kClipFrames = 3;

/// A chain or a fan with a left and a right joint, moves, scalings, and a limit that is passed.
KQexClipData MakeData(int pJoints, bool pIsChain)
{
    KQexClipData lData;
    lData.mSampling = KQexSampling{FrameTime(0), FrameTime(1), kClipFrames};
    lData.mRest.resize(static_cast<size_t>(pJoints));
    for (int lJoint = 0; lJoint < pJoints; ++lJoint)
    {
        lData.mNames.push_back(lJoint == 1 ? "a long name of the left arm" : lJoint == 2 ? "a long name of the right arm" : "a");
        lData.mParents.push_back(pIsChain ? lJoint - 1 : std::min(0, lJoint - 1));
    }
    for (int i = 0; i < kClipFrames * pJoints; ++i)
    {
        lData.mRotations.insert(lData.mRotations.end(), {0.6F, 0.0F, 0.8F, 0.0F});
    }
    lData.mMovingJoints = {0, 2};
    lData.mScaledJoints = {1};
    lData.mTranslations.assign(kClipFrames * 6, 5.0F);
    lData.mScalings.assign(kClipFrames * 3, 1.5F);
    lData.mDofs = {KQexClipDof{1, {"rx", true, true, -10.0, 10.0}}};
    lData.mDofValues.assign(kClipFrames, 20.0F);
    return lData;
}

KQexClip MakeClip(int pJoints, bool pIsChain)
{
    KQexClip lClip;
    EXPECT_TRUE(KQexClip::FromArrays(MakeData(pJoints, pIsChain), lClip));
    return lClip;
}

bool IsSame(const KQexClip& pOne, const KQexClip& pOther)
{
    const KQexClipData& lOne = pOne.GetData();
    const KQexClipData& lOther = pOther.GetData();
    return lOne.mNames == lOther.mNames && lOne.mParents == lOther.mParents && lOne.mIsEnd == lOther.mIsEnd &&
           lOne.mSampling.mCount == lOther.mSampling.mCount && lOne.mRotations == lOther.mRotations &&
           lOne.mMovingJoints == lOther.mMovingJoints && lOne.mTranslations == lOther.mTranslations &&
           lOne.mScaledJoints == lOther.mScaledJoints && lOne.mScalings == lOther.mScalings && lOne.mDofs.size() == lOther.mDofs.size() &&
           lOne.mDofValues == lOther.mDofValues;
}

class KClipFault : public testing::TestWithParam<KClipOperation>
{
};

TEST_P(KClipFault, LeavesTheResultOrIsComplete)
{
    const KQexClip lClip = MakeClip(5, false);
    const KQexClip lOld = MakeClip(3, true);
    KClipWork      lExpected(lClip);
    ASSERT_TRUE(GetParam().mRun(lExpected));
    const auto lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
    {
        KClipWork lWork(lClip);
        EXPECT_TRUE(lOld.Copy(lWork.mResult));
        lWork.mList = {7};
        bool lOk = false;
        pAllocator.Arm(pCall, pAndLater);
        EXPECT_NO_THROW(lOk = GetParam().mRun(lWork));
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone) << "nothing failed";
        const bool lIsStep = lExpected.mResult.GetJointCount() > 0;
        if (lOk)
        {
            EXPECT_TRUE(IsSame(lWork.mResult, lIsStep ? lExpected.mResult : lOld)) << "succeeded with another result";
            EXPECT_EQ(lWork.mNumbers, lExpected.mNumbers);
            EXPECT_TRUE(lWork.mList == lExpected.mList || lExpected.mList.empty());
        }
        else
        {
            EXPECT_TRUE(IsSame(lWork.mResult, lOld)) << "result changed";
            EXPECT_EQ(lWork.mNumbers, std::vector<double>(lWork.mNumbers.size(), KClipWork::kUnset));
        }
        return !lIsDone;
    };
    ForEachAllocation(lTry);
}

TEST_P(KClipFault, TakesMemoryInProportion)
{
    for (const bool lIsChain : {true, false})
    {
        long lPeaks[2];
        for (int i = 0; i < 2; ++i)
        {
            const KQexClip    lClip = MakeClip(20000 << i, lIsChain);
            KClipWork         lWork(lClip);
            KFailingAllocator lAllocator;
            lAllocator.Arm(1000000000, false);
            EXPECT_TRUE(GetParam().mRun(lWork));
            lAllocator.Disarm();
            lPeaks[i] = KFailingAllocator::GetPeakBytes();
        }
        EXPECT_LE(lPeaks[1], 2.3 * static_cast<double>(lPeaks[0]) + 1000.0) << (lIsChain ? "chain" : "fan");
        EXPECT_LE(lPeaks[1], 40000L * kClipFrames * 1000L) << (lIsChain ? "chain" : "fan");
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, KClipFault, testing::ValuesIn(ClipOperations()),
                         [](const testing::TestParamInfo<KClipOperation>& pInfo) { return std::string(pInfo.param.mName); });

TEST(KClipFaults, ArraysAreTakenOverOrTheClipStays)
{
    const KQexClip lOld = MakeClip(3, true);
    for (const bool lIsGood : {true, false})
    {
        const auto lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
        {
            KQexClipData             lData = MakeData(30, true);
            KQexClip                 lClip;
            std::vector<std::string> lErrors;
            lData.mRotations[0] = lIsGood ? 0.6F : 2.0F;
            lData.mParents[7] = lIsGood ? 6 : 20;
            EXPECT_TRUE(lOld.Copy(lClip));
            bool lOk = false;
            pAllocator.Arm(pCall, pAndLater);
            EXPECT_NO_THROW(lOk = KQexClip::FromArrays(std::move(lData), lClip, &lErrors));
            const bool lIsDone = pAllocator.Disarm() < pCall;
            EXPECT_FALSE(lOk && !lIsGood);
            EXPECT_TRUE(lOk || !lIsDone || !lIsGood);
            EXPECT_EQ(lClip.GetJointCount(), lOk ? 30 : 3);
            return !lIsDone;
        };
        ForEachAllocation(lTry);
    }
}

TEST(KClipFaults, ScenesStayAsTheyWere)
{
    const KQexClip lClip = MakeClip(4, false);
    const auto     lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
    {
        const KScenePtr        lScene = MakeScene();
        const int              lObjects = lScene->GetObjectCount();
        std::vector<KQexNode*> lRoots;
        bool                   lOk = false;
        pAllocator.Arm(pCall, pAndLater);
        EXPECT_NO_THROW(lOk = lClip.ToScene(lScene.get(), "take", lRoots));
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone);
        if (!lOk)
        {
            EXPECT_EQ(lScene->GetObjectCount(), lObjects);
            EXPECT_EQ(lScene->GetRootNode()->GetChildCount(true), 0);
            EXPECT_TRUE(lRoots.empty());
            EXPECT_EQ(lScene->FindAnimStack("take"), nullptr);
            EXPECT_TRUE(lClip.ToScene(lScene.get(), "take", lRoots)) << "retry";
        }
        KQexClip lBack;
        EXPECT_TRUE(KQexClip::FromScene(lRoots, lScene->FindAnimStack("take"), lClip.GetData().mSampling, {}, lBack));
        EXPECT_EQ(lBack.GetData().mTranslations, lClip.GetData().mTranslations) << "a curve is missing";
        EXPECT_EQ(lBack.GetData().mScalings, lClip.GetData().mScalings) << "a curve is missing";
        return !lIsDone;
    };
    ForEachAllocation(lTry);
}

TEST(KClipFaults, AClipOfASceneIsCompleteOrTheOldOne)
{
    const KQexClip         lClip = MakeClip(4, false);
    const KQexClip         lOld = MakeClip(3, true);
    const KScenePtr        lScene = MakeScene();
    std::vector<KQexNode*> lRoots;
    KQexClip               lExpected;
    ASSERT_TRUE(lClip.ToScene(lScene.get(), "take", lRoots));
    KQexAnimStack* const lStack = lScene->FindAnimStack("take");
    ASSERT_TRUE(KQexClip::FromScene(lRoots, lStack, lClip.GetData().mSampling, {}, lExpected));
    const auto lTry = [&](KFailingAllocator& pAllocator, long pCall, bool pAndLater)
    {
        KQexClip        lResult;
        KQexClipOptions lOptions;
        lOptions.mThreads = 1;
        EXPECT_TRUE(lOld.Copy(lResult));
        bool lOk = false;
        pAllocator.Arm(pCall, pAndLater);
        EXPECT_NO_THROW(lOk = KQexClip::FromScene(lRoots, lStack, lClip.GetData().mSampling, lOptions, lResult));
        const bool lIsDone = pAllocator.Disarm() < pCall;
        EXPECT_TRUE(lOk || !lIsDone);
        EXPECT_TRUE(IsSame(lResult, lOk ? lExpected : lOld));
        return !lIsDone;
    };
    ForEachAllocation(lTry);
}

} // namespace
