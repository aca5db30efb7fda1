#include <qexioplugins/motion/kqexmotionio.h>

#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

TEST(NearestFrameStep, RoundsToCommonRates)
{
    EXPECT_EQ(NearestFrameStep(1.0 / 120.0).Get(), 5880000);
    EXPECT_EQ(NearestFrameStep(0.0083333).Get(), 5880000);
    EXPECT_EQ(NearestFrameStep(2.5).Get(), 1764000000);
    for (const double lNone : {0.0, -1.0, 1e300, std::nan("")})
    {
        EXPECT_EQ(NearestFrameStep(lNone).Get(), 0) << lNone;
    }
}

TEST(MakeSampling, TimesOutOfRangeAreRejected)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lNode = KQexNode::Create(lScene.get(), "n");
    lScene->GetRootNode()->AddChild(lNode);
    KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, "take");
    KQexAnimCurve*     lEmpty = KQexAnimCurve::Create(lScene.get(), "empty");
    KQexAnimCurve*     lLate = KQexAnimCurve::Create(lScene.get(), "late");
    KQexAnimCurve*     lEarly = KQexAnimCurve::Create(lScene.get(), "early");
    lCurveNode->ConnectToChannel(lEmpty, 0, true);
    lCurveNode->ConnectToChannel(lLate, 1, true);
    lCurveNode->ConnectToChannel(lEarly, 2, true);
    lLate->AppendSample(KTime(KTime::kMax), 1.0F);
    lEarly->AppendSample(KTime(KTime::kMin), 1.0F);
    KQexSampling        lSampling;
    KQexSamplingRequest lRequest;
    KQexAnimStack*      lStack = lScene->FindAnimStack("take");
    EXPECT_FALSE(MakeSampling({lNode}, lStack, lRequest, lSampling)) << "the span overflows";
    lRequest.mHasStart = lRequest.mHasEnd = true;
    lRequest.mEnd = KTime(705600000);
    EXPECT_TRUE(MakeSampling({lNode}, lStack, lRequest, lSampling)) << "a part of it fits";
    lRequest.mEvery = 0;
    EXPECT_FALSE(MakeSampling({lNode}, lStack, lRequest, lSampling));
    lRequest.mEvery = INT_MAX;
    lRequest.mFramesPerSecond = 1e-4;
    EXPECT_FALSE(MakeSampling({lNode}, lStack, lRequest, lSampling)) << "one step overflows";
}

TEST(MakeSampling, WithoutKeysGivesOneFrameAtTheStart)
{
    KQexSamplingRequest lRequest;
    lRequest.mHasStart = true;
    for (const long long lStart : {-705600000LL, 0LL, 705600000LL})
    {
        KQexSampling lSampling;
        lRequest.mStart = KTime(lStart);
        ASSERT_TRUE(MakeSampling({}, nullptr, lRequest, lSampling)) << lStart;
        EXPECT_EQ(lSampling.mStart.Get(), lStart);
        EXPECT_EQ(lSampling.mCount, 1) << lStart;
    }
}

TEST(MakeSampling, UsesTheRateOfTheKeysByDefault)
{
    std::mt19937        lRandom(3);
    const KScenePtr     lScene = MakeScene();
    KQexNode*           lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTreeOptions());
    KQexAnimStack*      lStack = lScene->FindAnimStack("take");
    KQexSampling        lSampling;
    KQexSamplingRequest lRequest;
    ASSERT_TRUE(MakeSampling({lRoot}, lStack, lRequest, lSampling));
    EXPECT_EQ(lSampling.mStep.Get(), 5880000);
    EXPECT_EQ(lSampling.mCount, 20);
    lRequest.mEvery = 3;
    ASSERT_TRUE(MakeSampling({lRoot}, lStack, lRequest, lSampling));
    EXPECT_EQ(lSampling.mCount, 7);
    lRequest.mEvery = 1;
    lRequest.mFramesPerSecond = 60;
    ASSERT_TRUE(MakeSampling({lRoot}, lStack, lRequest, lSampling));
    EXPECT_EQ(lSampling.mCount, 10);
    lRequest.mHasStart = lRequest.mHasEnd = true;
    lRequest.mStart = KTime(705600000);
    EXPECT_FALSE(MakeSampling({lRoot}, lStack, lRequest, lSampling)) << "the end is before the start";
    EXPECT_EQ(lSampling.mCount, 10);
    lRequest.mFramesPerSecond = -1;
    EXPECT_FALSE(MakeSampling({lRoot}, lStack, lRequest, lSampling));
}

TEST(MakeSampling, KeysRoundedToTicksStillGiveTheirRate)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lNode = KQexNode::Create(lScene.get(), "n");
    lScene->GetRootNode()->AddChild(lNode);
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(lScene.get(), "c");
    lNode->mLocalTranslation.GetCurveNode(true, "take")->ConnectToChannel(lCurve, 0, true);
    for (int i = 0; i < 500; ++i)
    {
        lCurve->AppendSample(KTime(std::llround(i * 705600000.0 / 11.3)), 1.0F);
    }
    KQexSampling lSampling;
    ASSERT_TRUE(MakeSampling({lNode}, lScene->FindAnimStack("take"), KQexSamplingRequest(), lSampling));
    EXPECT_EQ(lSampling.mCount, 500);
    EXPECT_NEAR(static_cast<double>(lSampling.mStep.Get()), 705600000.0 / 11.3, 1.0);
}

} // namespace
