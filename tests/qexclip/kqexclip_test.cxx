#include <qexclip/kqexclip.h>

#include <qexscene/kqexscene.h>
#include <tests/support/nonfinite.h>
#include <tests/support/randomscene.h>

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <type_traits>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A random animated tree and its clip.
struct KSceneAndClip
{
    explicit KSceneAndClip(unsigned int pSeed, int pFrames = 20)
    {
        std::mt19937       lRandom(pSeed);
        KRandomTreeOptions lOptions;
        lOptions.mFrames = pFrames;
        lOptions.mScaling = pSeed % 2 == 0;
        mRoot = MakeRandomTree(lRandom, mScene.get(), lOptions);
        mStack = mScene->FindAnimStack("take");
        mSampling = KQexSampling{FrameTime(0), FrameTime(1), pFrames};
        EXPECT_TRUE(KQexClip::FromScene({mRoot}, mStack, mSampling, {}, mClip));
    }

    KScenePtr      mScene = MakeScene();
    KQexNode*      mRoot = nullptr;
    KQexAnimStack* mStack = nullptr;
    KQexSampling   mSampling;
    KQexClip       mClip;
};

/// The largest distance between the joints' places in \p pTransforms and the evaluator's, and between the images of the axes.
double LargestDifference(const KSceneAndClip& pPair, KTime pTime, const std::vector<KQexWorldTransform>& pTransforms)
{
    KQexGlobalTransforms lExpected;
    pPair.mScene->GetEvaluator()->SetContext(pPair.mStack);
    EXPECT_TRUE(pPair.mScene->GetEvaluator()->EvaluateGlobalTransforms(pPair.mRoot, pTime, lExpected));
    EXPECT_EQ(lExpected.GetCount(), static_cast<int>(pTransforms.size()));
    double lLargest = 0.0;
    for (int lJoint = 0; lJoint < lExpected.GetCount(); ++lJoint)
    {
        for (int j = 0; j < 4; ++j)
        {
            for (int i = 0; i < 3; ++i)
            {
                const double lActual = static_cast<double>(pTransforms[static_cast<size_t>(lJoint)].mData[j][i]);
                lLargest = std::max(lLargest, std::fabs(lActual - lExpected.GetTransform(lJoint).mData[j][i]));
            }
        }
    }
    return lLargest;
}

/// One joint that turns about z by \p pDegrees from frame 0 to frame 1 and moves from (0, 0, 0) to (2, 4, 6), a second apart.
KQexClipData TurningJoint(double pDegrees)
{
    const double lHalf = pDegrees * 3.14159265358979323846 / 360.0;
    KQexClipData lData;
    lData.mNames = {"joint"};
    lData.mParents = {-1};
    lData.mRest.resize(1);
    lData.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond), 2};
    lData.mRotations = {1.0F, 0.0F, 0.0F, 0.0F, static_cast<float>(std::cos(lHalf)), 0.0F, 0.0F, static_cast<float>(std::sin(lHalf))};
    lData.mMovingJoints = {0};
    lData.mTranslations = {0.0F, 0.0F, 0.0F, 2.0F, 4.0F, 6.0F};
    return lData;
}

double AngleOf(const KQexPose& pPose)
{
    return 2.0 * std::atan2(static_cast<double>(pPose[0].mRotation[3]), static_cast<double>(pPose[0].mRotation[0])) * 180.0 /
           3.14159265358979323846;
}

} // namespace

static_assert(!std::is_copy_constructible_v<KQexClip> && !std::is_copy_assignable_v<KQexClip>, "a clip is copied only by Copy()");
static_assert(std::is_nothrow_move_constructible_v<KQexClip> && std::is_nothrow_move_assignable_v<KQexClip>, "moving cannot fail");

TEST(KQexClip, FramesAreThoseOfTheScene)
{
    for (unsigned int lSeed = 1; lSeed <= 20; ++lSeed)
    {
        const KSceneAndClip             lPair(lSeed);
        KQexPose                        lPose(static_cast<size_t>(lPair.mClip.GetJointCount()));
        std::vector<KQexWorldTransform> lTransforms(lPose.size());
        for (long long lFrame = 0; lFrame < lPair.mClip.GetFrameCount(); ++lFrame)
        {
            ASSERT_TRUE(lPair.mClip.SampleFrame(lFrame, lPose));
            ASSERT_TRUE(lPair.mClip.WorldTransforms(lPose, lTransforms));
            // Up to ten levels of nodes about 20 cm apart, scaled by up to 2 on each.
            EXPECT_LE(LargestDifference(lPair, lPair.mSampling.GetTime(lFrame), lTransforms), lSeed % 2 == 0 ? 2e-2 : 2e-4) << lSeed;
        }
    }
}

TEST(KQexClip, ManyFramesGoIntoStridedArrays)
{
    const KSceneAndClip             lPair(3);
    const size_t                    lJoints = static_cast<size_t>(lPair.mClip.GetJointCount());
    std::vector<KQexWorldTransform> lByJoint(lJoints * 5);
    ASSERT_TRUE(lPair.mClip.WorldTransforms(7, 5, lByJoint.data(), 1, 5));
    KQexPose                        lPose(lJoints);
    std::vector<KQexWorldTransform> lTransforms(lJoints);
    for (size_t lFrame = 0; lFrame < 5; ++lFrame)
    {
        ASSERT_TRUE(lPair.mClip.SampleFrame(static_cast<long long>(7 + lFrame), lPose));
        ASSERT_TRUE(lPair.mClip.WorldTransforms(lPose, lTransforms));
        for (size_t lJoint = 0; lJoint < lJoints; ++lJoint)
        {
            EXPECT_EQ(lTransforms[lJoint].mData[3][1], lByJoint[lJoint * 5 + lFrame].mData[3][1]);
            EXPECT_EQ(lTransforms[lJoint].mData[0][2], lByJoint[lJoint * 5 + lFrame].mData[0][2]);
        }
    }
    EXPECT_FALSE(lPair.mClip.WorldTransforms(16, 5, lByJoint.data(), 1, 5)) << "only 20 frames";
    EXPECT_FALSE(lPair.mClip.WorldTransforms(-1, 1, lByJoint.data(), 1, 5));
    EXPECT_TRUE(lPair.mClip.WorldTransforms(20, 0, nullptr, 0));
}

TEST(KQexClip, TurnsAtConstantSpeedBetweenFrames)
{
    for (const double lTurn : {0.5, 1.5, 20.0, 90.0, 179.0})
    {
        KQexClip lClip;
        ASSERT_TRUE(KQexClip::FromArrays(TurningJoint(lTurn), lClip));
        KQexPose lPose(1);
        for (int i = 0; i <= 10; ++i)
        {
            ASSERT_TRUE(lClip.Sample(i / 10.0, lPose));
            EXPECT_NEAR(AngleOf(lPose), lTurn * i / 10.0, 2e-5) << lTurn << " degrees";
            EXPECT_NEAR(lPose[0].mTranslation[1], 0.4F * static_cast<float>(i), 1e-6F);
        }
    }
}

TEST(KQexClip, TurnsTheShorterWay)
{
    KQexClip     lClip;
    KQexClipData lData = TurningJoint(20.0);
    for (size_t i = 4; i < 8; ++i)
    {
        lData.mRotations[i] = -lData.mRotations[i]; // The same rotation.
    }
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    KQexPose lPose(1);
    ASSERT_TRUE(lClip.Sample(0.5, lPose));
    EXPECT_NEAR(AngleOf(lPose), 10.0, 1e-5);
}

TEST(KQexClip, HoldsOrLoopsBeyondItsEnds)
{
    KQexClip lClip;
    ASSERT_TRUE(KQexClip::FromArrays(TurningJoint(90.0), lClip));
    KQexPose lPose(1);
    for (const double lAfter : {1.0, 1.5, 1e300, kInf})
    {
        ASSERT_TRUE(lClip.Sample(lAfter, lPose));
        EXPECT_NEAR(AngleOf(lPose), 90.0, 1e-4);
        ASSERT_TRUE(lClip.Sample(-lAfter, lPose));
        EXPECT_EQ(lPose[0].mTranslation[0], 0.0F);
    }
    ASSERT_TRUE(lClip.Sample(3.25, lPose, KQexClipEnds::eLOOP));
    EXPECT_NEAR(AngleOf(lPose), 22.5, 1e-4);
    ASSERT_TRUE(lClip.Sample(-0.75, lPose, KQexClipEnds::eLOOP));
    EXPECT_NEAR(AngleOf(lPose), 22.5, 1e-4);
    EXPECT_EQ(lClip.GetDuration(), 1.0);
    EXPECT_EQ(lClip.GetRate(), 1.0);
}

TEST(KQexClip, RefusesWhatHasNoPose)
{
    const KQexClip lEmpty;
    KQexPose       lNone;
    EXPECT_FALSE(lEmpty.Sample(0.0, lNone));
    EXPECT_FALSE(lEmpty.SampleFrame(0, lNone));
    EXPECT_EQ(lEmpty.GetRate(), 0.0);

    KQexClip lClip;
    ASSERT_TRUE(KQexClip::FromArrays(TurningJoint(90.0), lClip));
    KQexPose lPose(1);
    lPose[0].mTranslation[0] = 42.0F;
    KQexPose lTwo(2);
    EXPECT_FALSE(lClip.Sample(kNan, lPose));
    EXPECT_FALSE(lClip.Sample(0.0, lTwo));
    EXPECT_FALSE(lClip.SampleFrame(2, lPose));
    EXPECT_FALSE(lClip.SampleFrame(-1, lPose));
    EXPECT_EQ(lPose[0].mTranslation[0], 42.0F) << "unchanged";
    std::vector<KQexWorldTransform> lTransforms(2);
    EXPECT_FALSE(lClip.WorldTransforms(lPose, lTransforms));
}

TEST(KQexClip, SaysWhatIsWrongWithArrays)
{
    const auto lErrorOf = [](auto pChange)
    {
        KQexClipData lData = TurningJoint(90.0);
        pChange(lData);
        KQexClip                 lClip;
        std::vector<std::string> lErrors;
        EXPECT_FALSE(KQexClip::FromArrays(std::move(lData), lClip, &lErrors));
        EXPECT_EQ(lClip.GetJointCount(), 0);
        return lErrors.empty() ? "" : lErrors.front();
    };
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData = KQexClipData(); }), "there are 0 joints");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mParents = {0}; }),
              "joint 0 (joint) has the parent 0, which does not come before it");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mParents = {-2}; }),
              "joint 0 (joint) has the parent -2, which does not come before it");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mRest.clear(); }),
              "there are 1 names, 1 parents, 0 rest transforms and 0 end marks");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mSampling.mCount = 0; }), "there are 0 frames, 705600000 ticks apart");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mSampling.mStep = KTime(0); }), "there are 2 frames, 0 ticks apart");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mRotations.pop_back(); }), "there are 7 numbers of rotations, not 2 × 1 × 4");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mRotations[4] = 2.0F; }),
              "joint 0 (joint) has a rotation in frame 1 that is no unit quaternion");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mRotations[0] = kNanF; }),
              "joint 0 (joint) has a rotation in frame 0 that is no unit quaternion");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mTranslations[5] = kInfF; }), "translations: a number in frame 1 is not finite");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mMovingJoints = {1}; }), "moving joint 1 is out of order or out of range");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mScaledJoints = {0}; }), "there are 0 numbers of scalings, not 2 × 1 × 3");
    EXPECT_EQ(lErrorOf(
                  [](KQexClipData& pData)
                  {
                      pData.mDofs.resize(1);
                      pData.mDofs[0].mJoint = 1;
                      pData.mDofs[0].mDof.mWord = "rx";
                  }),
              "degree of freedom rx of joint 1 is out of order or out of range");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mDofValues = {1.0F}; }),
              "there are 1 numbers of values of degrees of freedom, not 2 × 0 × 1");
    EXPECT_EQ(lErrorOf([](KQexClipData& pData) { pData.mRest[0].mScaling[2] = kInfF; }),
              "joint 0 (joint) has a number at rest that is not finite");
}

TEST(KQexClip, NormalizesQuaternionsThatAreAlmostOfUnitLength)
{
    KQexClipData lData = TurningJoint(90.0);
    lData.mRotations[0] = 1.0009F;
    KQexClip lClip;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    EXPECT_EQ(lClip.GetData().mRotations[0], 1.0F);
}

TEST(KQexClip, BecomesASceneAndComesBack)
{
    for (unsigned int lSeed = 1; lSeed <= 10; ++lSeed)
    {
        const KSceneAndClip    lPair(lSeed);
        const KScenePtr        lScene = MakeScene();
        std::vector<KQexNode*> lRoots;
        ASSERT_TRUE(lPair.mClip.ToScene(lScene.get(), "copy", lRoots));
        EXPECT_FALSE(lPair.mClip.ToScene(lScene.get(), "copy", lRoots)) << "the take exists";
        ASSERT_EQ(lRoots.size(), 1U);
        KQexClip lBack;
        ASSERT_TRUE(KQexClip::FromScene(lRoots, lScene->FindAnimStack("copy"), lPair.mSampling, {}, lBack));
        const KQexClipData& lOne = lPair.mClip.GetData();
        const KQexClipData& lTwo = lBack.GetData();
        EXPECT_EQ(lOne.mNames, lTwo.mNames);
        EXPECT_EQ(lOne.mParents, lTwo.mParents);
        EXPECT_EQ(lOne.mTranslations, lTwo.mTranslations);
        EXPECT_EQ(lOne.mScalings, lTwo.mScalings);
        ASSERT_EQ(lOne.mRotations.size(), lTwo.mRotations.size());
        for (size_t i = 0; i < lOne.mRotations.size(); i += 4)
        {
            double lDot = 0.0;
            for (size_t j = i; j < i + 4; ++j)
            {
                lDot += static_cast<double>(lOne.mRotations[j]) * static_cast<double>(lTwo.mRotations[j]);
            }
            EXPECT_NEAR(std::fabs(lDot), 1.0, 1e-6);
        }
    }
}

TEST(KQexClip, CopiesOnlyWhenAsked)
{
    KSceneAndClip lPair(5);
    KQexClip      lCopy;
    ASSERT_TRUE(lPair.mClip.Copy(lCopy));
    EXPECT_EQ(lCopy.GetData().mRotations, lPair.mClip.GetData().mRotations);
    const KQexClipData lData = lPair.mClip.TakeData();
    EXPECT_EQ(lPair.mClip.GetJointCount(), 0);
    EXPECT_EQ(lPair.mClip.GetFrameCount(), 0);
    EXPECT_EQ(lData.mRotations, lCopy.GetData().mRotations);
    EXPECT_EQ(lCopy.FindJoint("node3"), 3 < lCopy.GetJointCount() ? lCopy.FindJoint("node3") : -1);
    EXPECT_EQ(lCopy.GetData().mNames[static_cast<size_t>(lCopy.FindJoint("node3"))], "node3");
    EXPECT_EQ(lCopy.FindJoint("nobody"), -1);
}

TEST(KQexClip, TakesAtMostSeventeenBytesAJointAndFrameWhenOnlyTheRootMoves)
{
    std::mt19937       lRandom(8);
    const KScenePtr    lScene = MakeScene();
    KRandomTreeOptions lOptions;
    lOptions.mNodes = 31;
    lOptions.mFrames = 100;
    lOptions.mTranslations = false;
    KQexNode* lRoot = MakeRandomTree(lRandom, lScene.get(), lOptions);
    KQexClip  lClip;
    ASSERT_TRUE(KQexClip::FromScene({lRoot}, lScene->FindAnimStack("take"), KQexSampling{FrameTime(0), FrameTime(1), 100}, {}, lClip));
    const KQexClipData& lData = lClip.GetData();
    EXPECT_EQ(lData.mMovingJoints, std::vector<int>{0});
    EXPECT_LE(4 * (lData.mRotations.size() + lData.mTranslations.size() + lData.mScalings.size()), 17U * 31 * 100);
}

TEST(KQexClip, CancelledClipsLeaveTheOldOne)
{
    KSceneAndClip   lPair(2, 5000);
    KQexClipOptions lOptions;
    lOptions.mProgress = [](double pFraction)
    {
        return pFraction < 0.05;
    };
    lOptions.mThreads = 1;
    EXPECT_FALSE(KQexClip::FromScene({lPair.mRoot}, lPair.mStack, KQexSampling{FrameTime(0), FrameTime(1), 4000}, lOptions, lPair.mClip));
    EXPECT_EQ(lPair.mClip.GetFrameCount(), 5000);
    EXPECT_FALSE(KQexClip::FromScene({}, lPair.mStack, lPair.mSampling, {}, lPair.mClip));
    EXPECT_FALSE(KQexClip::FromScene({lPair.mRoot}, lPair.mStack, KQexSampling{}, {}, lPair.mClip));
}
