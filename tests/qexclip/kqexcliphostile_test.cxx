// Clips of a size or kind that no maker intends: operations end soon, and correctly or with false.

#include <tests/qexclip/clipfigure.h>
#include <tests/support/clipwork.h>
#include <tests/support/nonfinite.h>

#include <qexscene/kqexscene.h>

#include <chrono>
#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int kMillion = 1000000;

enum KShape
{
    eCHAIN, ///< Each joint below the one before.
    eFAN,   ///< All joints below the first.
    eROOTS, ///< Every joint a root.
    eBROOM  ///< A chain of half the joints, the others below its end.
};

int ParentOf(KShape pShape, int pJoint, int pCount)
{
    switch (pShape)
    {
    case eCHAIN:
        return pJoint - 1;
    case eFAN:
        return pJoint == 0 ? -1 : 0;
    case eBROOM:
        return std::min(pJoint, pCount / 2) - 1;
    default:
        return -1;
    }
}

/// A clip of \p pJoints joints of \p pShape at rest, each a hundredth of a millimetre above its parent, all of the same name.
KQexClipData StillData(KShape pShape, int pJoints, int pFrames)
{
    KQexClipData lData;
    lData.mSampling = KQexSampling{KTime(0), kDefaultFrameStep, pFrames};
    lData.mNames.assign(static_cast<size_t>(pJoints), "l");
    lData.mRest.resize(static_cast<size_t>(pJoints));
    for (int lJoint = 0; lJoint < pJoints; ++lJoint)
    {
        lData.mParents.push_back(ParentOf(pShape, lJoint, pJoints));
        lData.mRest[static_cast<size_t>(lJoint)].mTranslation[1] = 0.001F;
    }
    for (int i = 0; i < pJoints * pFrames; ++i)
    {
        lData.mRotations.insert(lData.mRotations.end(), {1.0F, 0.0F, 0.0F, 0.0F});
    }
    return lData;
}

KQexClip StillClip(KShape pShape, int pJoints, int pFrames)
{
    KQexClip lClip;
    EXPECT_TRUE(KQexClip::FromArrays(StillData(pShape, pJoints, pFrames), lClip));
    return lClip;
}

class KQexClipOfAMillion : public testing::TestWithParam<KShape>
{
};

TEST_P(KQexClipOfAMillion, TakesSeconds)
{
    const KQexClip lClip = StillClip(GetParam(), kMillion, 1);
    KClipWork      lWork(lClip);
    for (const KClipOperation& lOperation : ClipOperations())
    {
        const auto lStart = std::chrono::steady_clock::now();
        EXPECT_TRUE(lOperation.mRun(lWork)) << lOperation.mName;
        // A few hundred milliseconds; the square of a million would be hours.
        EXPECT_LT(std::chrono::steady_clock::now() - lStart, std::chrono::seconds(60)) << lOperation.mName;
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, KQexClipOfAMillion, testing::Values(eCHAIN, eFAN, eROOTS, eBROOM));

} // namespace

TEST(KQexClipHostile, ADeepSelectionKeepsItsPlaces)
{
    const KQexClip lClip = StillClip(eBROOM, kMillion, 1);
    KQexClip       lSome;
    ASSERT_TRUE(KQexClipSelect(lClip, {7, kMillion / 2, kMillion - 1}, lSome));
    EXPECT_EQ(lSome.GetData().mParents, (std::vector<int>{-1, 0, 0}));
    std::vector<double> lAll(3 * static_cast<size_t>(kMillion));
    std::vector<double> lPlaces(9);
    ASSERT_TRUE(KQexGetPositions(lClip, 0, 1, lAll.data()));
    ASSERT_TRUE(KQexGetPositions(lSome, 0, 1, lPlaces.data()));
    EXPECT_NEAR(lPlaces[1], lAll[3 * 7 + 1], 1e-5);
    EXPECT_NEAR(lPlaces[4], lAll[3 * static_cast<size_t>(kMillion / 2) + 1], 1e-4);
    EXPECT_NEAR(lPlaces[7], lAll[3 * static_cast<size_t>(kMillion - 1) + 1], 1e-4);
}

TEST(KQexClipHostile, LongChainsAndFansBecomeScenes)
{
    for (const KShape lShape : {eCHAIN, eFAN, eROOTS})
    {
        const KQexClip         lClip = StillClip(lShape, 30000, 2);
        KQexScene*             lScene = KQexScene::Create("scene");
        std::vector<KQexNode*> lRoots;
        KQexClip               lBack;
        ASSERT_TRUE(lClip.ToScene(lScene, "take", lRoots));
        ASSERT_TRUE(KQexClip::FromScene(lRoots, lScene->FindAnimStack("take"), lClip.GetData().mSampling, {}, lBack));
        EXPECT_EQ(lBack.GetData().mParents, lClip.GetData().mParents);
        lScene->Destroy();
    }
}

TEST(KQexClipHostile, NamesOfNothingButSides)
{
    KQexClipData lData;
    std::string  lName;
    for (int i = 0; i < 500000; ++i)
    {
        lName += i % 2 == 0 ? "l." : "r_";
    }
    lData.mNames = {lName, "", "Spine", "", lName, "left", "right"};
    // The nameless joint is no pair of those without a side.
    EXPECT_EQ(KQexMirrorPairs(lData), (std::vector<int>{0, 1, 2, 3, 4, 6, 5}));
    EXPECT_EQ(KQexMirrorPairs(KQexClipData()), std::vector<int>());
}

TEST(KQexClipHostile, TheSameNamesAreTheFirstJoint)
{
    KQexClipData lData = StillData(eCHAIN, 4, 1);
    lData.mNames = {"a", "", "a", ""};
    KQexClip lClip;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    EXPECT_EQ(lClip.FindJoint("a"), 0);
    EXPECT_EQ(lClip.FindJoint(""), 1);
    EXPECT_EQ(lClip.FindJoint("b"), -1);
}

TEST(KQexClipHostile, OneFrameHasEveryTime)
{
    const KQexClip lClip = StillClip(eCHAIN, 3, 1);
    KClipWork      lWork(lClip);
    EXPECT_EQ(lClip.GetDuration(), 0.0);
    for (const KQexClipEnds lEnds : {KQexClipEnds::eHOLD, KQexClipEnds::eLOOP})
    {
        for (const double lTime : {0.0, -1.0, 1e-300, 3.0, 1e300, -1e300, kInf, -kInf})
        {
            KQexPose lPose(3);
            lPose[2].mTranslation[1] = 7.0F;
            ASSERT_TRUE(lClip.Sample(lTime, lPose, lEnds)) << lTime;
            EXPECT_EQ(lPose[2].mTranslation[1], 0.001F) << lTime;
        }
        EXPECT_FALSE(lClip.Sample(kNan, lWork.mPose, lEnds));
    }
    for (const KClipOperation& lOperation : ClipOperations())
    {
        EXPECT_TRUE(lOperation.mRun(lWork)) << lOperation.mName;
    }
}

TEST(KQexClipHostile, AnEmptyClipMakesNone)
{
    const KQexClip lEmpty;
    KClipWork      lWork(lEmpty);
    for (const KClipOperation& lOperation : ClipOperations())
    {
        lOperation.mRun(lWork);
        EXPECT_EQ(lWork.mResult.GetJointCount(), 0) << lOperation.mName;
        EXPECT_EQ(lWork.mResult.GetFrameCount(), 0) << lOperation.mName;
    }
}

TEST(KQexClipHostile, SizesThatOverflowAreRefused)
{
    struct KCase
    {
        const char* mWhat;
        long long   mFrames;
        long long   mStep;
        long long   mStart;
    };
    for (const KCase& lCase : {KCase{"frames × joints × 4 is 2^64 and more", 1LL << 61, 1, 0},
                               {"most frames", KTime::kMax, 1, 0},
                               {"no frames", 0, 1, 0},
                               {"fewer", -1, 1, 0},
                               {"least frames", KTime::kMin, 1, 0},
                               {"times beyond 64 bits", 2, KTime::kMax / 2 + 1, 0},
                               {"a start at the last time", 2, 1, KTime::kMax},
                               {"a start at the first time", 2, 1, KTime::kMin},
                               {"time stands", 2, 0, 0},
                               {"time runs back", 2, -1, 0}})
    {
        KQexClipData lData = StillData(eCHAIN, 2, 2);
        lData.mSampling = KQexSampling{KTime(lCase.mStart), KTime(lCase.mStep), lCase.mFrames};
        KQexClip                 lClip;
        std::vector<std::string> lErrors;
        EXPECT_FALSE(KQexClip::FromArrays(std::move(lData), lClip, &lErrors)) << lCase.mWhat;
        EXPECT_EQ(lErrors.size(), 1U) << lCase.mWhat;
    }
}

TEST(KQexClipHostile, AtMostTwentyErrors)
{
    KQexClipData             lData = StillData(eCHAIN, 1000, 1);
    KQexClip                 lClip;
    std::vector<std::string> lErrors;
    lData.mParents.assign(1000, 5000);
    EXPECT_FALSE(KQexClip::FromArrays(std::move(lData), lClip, &lErrors));
    EXPECT_EQ(lErrors.size(), 20U);
}

TEST(KQexClipHostile, TheLongestStepStillCutsAndResamples)
{
    KQexClipData lData = StillData(eCHAIN, 1000, 2);
    lData.mSampling.mStep = KTime(KTime::kMax / 3);
    KQexClip lClip;
    KQexClip lResult;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    EXPECT_TRUE(KQexClipCut(lClip, 1, 1, 2147483647, lResult));
    EXPECT_EQ(lResult.GetData().mSampling.mStep.Get(), KTime::kMax / 3);
    EXPECT_TRUE(KQexClipCut(lClip, 0, 1, 2147483647, lResult));
    EXPECT_EQ(lResult.GetFrameCount(), 1);
    EXPECT_EQ(lResult.GetData().mSampling.mStep.Get(), KTime::kMax / 3 * 2) << "no frame is nearer";
    EXPECT_FALSE(KQexClipResample(lClip, 1e6, lResult)) << "10^15 frames of 1,000 joints are more than any memory";
    EXPECT_FALSE(KQexClipJoin(lClip, lClip, 0, lResult)) << "times beyond 64 bits";
}

TEST(KQexClipHostile, ArgumentsThatAreNoNumbers)
{
    const KQexClip lClip = MakeClipFigure(3, 4);
    KQexClip       lResult;
    for (const double lBad : {kInf, -kInf, kNan, 1e300})
    {
        const double lOffset[3] = {0.0, lBad, 0.0};
        EXPECT_FALSE(KQexClipScale(lClip, lBad, lResult)) << lBad;
        EXPECT_FALSE(KQexClipTransform(lClip, KQexQuaternion(), lOffset, lResult)) << lBad;
        EXPECT_FALSE(KQexClipResample(lClip, lBad, lResult)) << lBad;
    }
    const double lNowhere[3] = {0.0, 0.0, 0.0};
    EXPECT_FALSE(KQexClipTransform(lClip, KQexQuaternion{{kNan, 0.0, 0.0, 1.0}}, lNowhere, lResult));
    EXPECT_FALSE(KQexClipTransform(lClip, KQexQuaternion{{0.0, 0.0, 0.0, 0.0}}, lNowhere, lResult));
    EXPECT_EQ(lResult.GetJointCount(), 0);
    std::vector<double> lAngles(static_cast<size_t>(4 * lClip.GetJointCount() * 3), 7.0);
    for (const int lOrder : {-1, 12, 2147483647})
    {
        EXPECT_FALSE(KQexGetRotations(lClip, KQexSpace::eWORLD, KQexRotationForm::eEULER, lOrder, 0, 4, lAngles.data()));
        EXPECT_EQ(lAngles[0], 7.0);
    }
}

TEST(KQexClipHostile, JoinedClipsKeepTheirOwnRestAndOnlyCommonValues)
{
    const KQexClip lClip = MakeClipFigure(4, 5);
    KQexClipData   lData = lClip.GetData();
    KQexClip       lOther;
    KQexClip       lJoined;
    lData.mRest[4].mTranslation[0] = 50.0F; // A longer arm, and fewer degrees of freedom.
    lData.mDofs.pop_back();
    lData.mDofValues.resize(5);
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lOther));
    for (const int lBlend : {0, 3})
    {
        ASSERT_TRUE(KQexClipJoin(lClip, lOther, lBlend, lJoined));
        EXPECT_EQ(Places(lJoined, lJoined.GetFrameCount() - 1), Places(lOther, 4));
        EXPECT_EQ(Places(lJoined, 0), Places(lClip, 0));
        EXPECT_TRUE(lJoined.GetData().mDofValues.empty());
    }
}
