// What holds for every clip, over random ones with fixed seeds.

#include <qexclip/kqexclipquantities.h>
#include <qexclip/kqexclipsteps.h>

#include <qexscene/kqexquaternion.h>
#include <tests/qexclip/clipfigure.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A clip of \p pJoints joints in a random tree, with random rotations, and random moves and scalings of some joints.
KQexClip RandomClip(std::mt19937& pRandom, int pJoints, int pFrames, long long pTicks)
{
    std::uniform_real_distribution<double> lAny(-1.0, 1.0);
    KQexClipData                           lData;
    const auto                             lRandomNumbers = [&](float* pNumbers, double pMiddle, double pWidth)
    {
        for (int i = 0; i < 3; ++i)
        {
            pNumbers[i] = static_cast<float>(pMiddle + pWidth * lAny(pRandom));
        }
    };
    const auto lRandomRotation = [&](float* pRotation)
    {
        KQexQuaternion lRotation{{lAny(pRandom), lAny(pRandom), lAny(pRandom), lAny(pRandom)}};
        lRotation.Normalize();
        std::transform(lRotation.mData, lRotation.mData + 4, pRotation, [](double pNumber) { return static_cast<float>(pNumber); });
    };
    lData.mSampling = KQexSampling{KTime(12345), KTime(pTicks), pFrames};
    for (int lJoint = 0; lJoint < pJoints; ++lJoint)
    {
        KQexJointTransform lRest;
        lRandomNumbers(lRest.mTranslation, 0.0, 20.0);
        lRandomRotation(lRest.mRotation);
        lData.mNames.push_back("joint" + std::to_string(lJoint));
        lData.mParents.push_back(lJoint == 0 ? -1 : std::uniform_int_distribution<int>(-1, lJoint - 1)(pRandom));
        lData.mRest.push_back(lRest);
        if (lJoint % 3 == 1)
        {
            lData.mMovingJoints.push_back(lJoint);
        }
    }
    for (int i = 0; i < pFrames * pJoints; ++i)
    {
        lData.mRotations.resize(lData.mRotations.size() + 4);
        lRandomRotation(&lData.mRotations[lData.mRotations.size() - 4]);
    }
    for (size_t i = 0; i < lData.mMovingJoints.size() * static_cast<size_t>(pFrames); ++i)
    {
        lData.mTranslations.resize(lData.mTranslations.size() + 3);
        lRandomNumbers(&lData.mTranslations[lData.mTranslations.size() - 3], 0.0, 20.0);
    }
    KQexClip lClip;
    EXPECT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    return lClip;
}

void ExpectSamePlaces(const KQexClip& pOne, const KQexClip& pOther)
{
    ASSERT_EQ(pOne.GetFrameCount(), pOther.GetFrameCount());
    for (long long lFrame = 0; lFrame < pOne.GetFrameCount(); ++lFrame)
    {
        EXPECT_LE(qextest::LargestDifference(Places(pOne, lFrame), Places(pOther, lFrame)), kNear) << "frame " << lFrame;
    }
}

constexpr long long kFilmStep = KTime::kTicksPerSecond / 24;
constexpr long long kVideoStep = KTime::kTicksPerSecond * 1001 / 30000;

} // namespace

TEST(KQexClipProperties, ResampledToAMultipleAndBackTheFramesAreThereAgain)
{
    for (unsigned int lSeed = 1; lSeed <= 20; ++lSeed)
    {
        std::mt19937    lRandom(lSeed);
        const long long lStep = lSeed % 2 == 0 ? kFilmStep : kVideoStep;
        const KQexClip  lClip = RandomClip(lRandom, 12, 15, lStep);
        for (const int lTimes : {2, 3, 5, 8})
        {
            KQexClip lFine;
            KQexClip lBack;
            ASSERT_TRUE(KQexClipResample(lClip, lClip.GetRate() * lTimes, lFine));
            EXPECT_EQ(lFine.GetFrameCount(), 14 * lTimes + 1);
            ASSERT_TRUE(KQexClipResample(lFine, lClip.GetRate(), lBack));
            EXPECT_EQ(lBack.GetData().mSampling.mStep.Get(), lStep);
            EXPECT_EQ(lBack.GetData().mSampling.mStart, lClip.GetData().mSampling.mStart);
            ExpectSamePlaces(lClip, lBack);
        }
    }
}

TEST(KQexClipProperties, VideoRatesEitherWay)
{
    for (unsigned int lSeed = 1; lSeed <= 10; ++lSeed)
    {
        std::mt19937   lRandom(lSeed);
        const KQexClip lVideo = RandomClip(lRandom, 8, 31, kVideoStep);
        EXPECT_NEAR(lVideo.GetRate(), 30000.0 / 1001.0, 1e-12);
        KQexClip lWhole;
        ASSERT_TRUE(KQexClipResample(lVideo, 30.0, lWhole));
        EXPECT_EQ(lWhole.GetFrameCount(), 31) << "30 frames of 1001/30000 s hold 30.03 of 1/30 s";
        KQexPose lOne(8);
        KQexPose lOther(8);
        for (long long lFrame = 0; lFrame < lWhole.GetFrameCount(); ++lFrame)
        {
            ASSERT_TRUE(lWhole.SampleFrame(lFrame, lOne));
            ASSERT_TRUE(lVideo.Sample(static_cast<double>(lFrame) / 30.0, lOther));
            for (size_t lJoint = 0; lJoint < lOne.size(); ++lJoint)
            {
                EXPECT_NEAR(lOne[lJoint].mRotation[0], lOther[lJoint].mRotation[0], 1e-5F);
                EXPECT_NEAR(lOne[lJoint].mTranslation[1], lOther[lJoint].mTranslation[1], 1e-4F);
            }
        }
        KQexClip lBack;
        ASSERT_TRUE(KQexClipResample(lWhole, 30000.0 / 1001.0, lBack));
        EXPECT_EQ(lBack.GetData().mSampling.mStep.Get(), kVideoStep);
        EXPECT_EQ(lBack.GetFrameCount(), 30) << "the last one would be after the end";
    }
}

TEST(KQexClipProperties, CutAnywhereAndJoinedAgain)
{
    for (unsigned int lSeed = 1; lSeed <= 20; ++lSeed)
    {
        std::mt19937   lRandom(lSeed);
        const KQexClip lClip = RandomClip(lRandom, 9, 20, kFilmStep);
        const int      lAt = std::uniform_int_distribution<int>(0, 18)(lRandom);
        KQexClip       lHead;
        KQexClip       lTail;
        KQexClip       lWhole;
        ASSERT_TRUE(KQexClipCut(lClip, 0, lAt, 1, lHead));
        ASSERT_TRUE(KQexClipCut(lClip, lAt + 1, 19, 1, lTail));
        ASSERT_TRUE(KQexClipJoin(lHead, lTail, 0, lWhole));
        EXPECT_EQ(lWhole.GetData().mRotations, lClip.GetData().mRotations);
        EXPECT_EQ(lWhole.GetData().mTranslations, lClip.GetData().mTranslations);
        EXPECT_EQ(lWhole.GetData().mMovingJoints, lClip.GetData().mMovingJoints);
        // Faded over the frames that both have, it is the same again.
        ASSERT_TRUE(KQexClipCut(lClip, lAt, 19, 1, lTail));
        ASSERT_TRUE(KQexClipJoin(lHead, lTail, 1, lWhole));
        ExpectSamePlaces(lClip, lWhole);
    }
}

TEST(KQexClipProperties, AnySelectionKeepsPlacesAndTurns)
{
    for (unsigned int lSeed = 1; lSeed <= 40; ++lSeed)
    {
        std::mt19937     lRandom(lSeed);
        const KQexClip   lClip = RandomClip(lRandom, 14, 5, kFilmStep);
        std::vector<int> lJoints;
        for (int lJoint = 0; lJoint < 14; ++lJoint)
        {
            if (lRandom() % 3 == 0 || (lJoint == 13 && lJoints.empty()))
            {
                lJoints.push_back(lJoint);
            }
        }
        KQexClip lSome;
        ASSERT_TRUE(KQexClipSelect(lClip, lJoints, lSome));
        EXPECT_TRUE(lSome.GetData().mScaledJoints.empty());
        const size_t        lCount = lJoints.size();
        std::vector<double> lAll(5 * 14 * 9);
        std::vector<double> lFew(5 * lCount * 9);
        ASSERT_TRUE(KQexGetRotations(lClip, KQexSpace::eWORLD, KQexRotationForm::eMATRIX, 0, 0, 5, lAll.data()));
        ASSERT_TRUE(KQexGetRotations(lSome, KQexSpace::eWORLD, KQexRotationForm::eMATRIX, 0, 0, 5, lFew.data()));
        for (size_t lFrame = 0; lFrame < 5; ++lFrame)
        {
            const std::vector<double> lOld = Places(lClip, static_cast<long long>(lFrame));
            const std::vector<double> lNew = Places(lSome, static_cast<long long>(lFrame));
            for (size_t i = 0; i < lCount; ++i)
            {
                const size_t lJoint = static_cast<size_t>(lJoints[i]);
                for (size_t j = 0; j < 9; ++j)
                {
                    EXPECT_NEAR(lFew[(lFrame * lCount + i) * 9 + j], lAll[(lFrame * 14 + lJoint) * 9 + j], 2e-6);
                }
                for (size_t j = 0; j < 3; ++j)
                {
                    EXPECT_NEAR(lNew[i * 3 + j], lOld[lJoint * 3 + j], kNear);
                }
            }
        }
    }
}

TEST(KQexClipProperties, ASelectionBelowScaledJointsKeepsPlacesAndScale)
{
    // Two joints scaled twofold along one axis, the second a quarter turn from the first, and a third below them.
    KQexClipData lData;
    lData.mNames = {"a", "b", "c"};
    lData.mParents = {-1, 0, 1};
    lData.mRest.resize(3);
    lData.mSampling = KQexSampling{KTime(0), KTime(kFilmStep), 1};
    lData.mRest[0].mScaling[0] = 2.0F;
    lData.mRest[1].mTranslation[0] = 5.0F;
    lData.mRest[2].mTranslation[0] = 1.0F;
    const float lQuarter = std::sqrt(0.5F);
    lData.mRotations = {1.0F, 0.0F, 0.0F, 0.0F, lQuarter, 0.0F, 0.0F, lQuarter, 1.0F, 0.0F, 0.0F, 0.0F};
    KQexClip lClip;
    KQexClip lLast;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    ASSERT_TRUE(KQexClipSelect(lClip, {2}, lLast));
    EXPECT_LE(LargestDifference(Places(lLast, 0), {10.0, 1.0, 0.0}), 1e-5);
    KQexPose lPose(1);
    ASSERT_TRUE(lLast.SampleFrame(0, lPose));
    // What the first stretches along x is the second's y.
    EXPECT_NEAR(lPose[0].mScaling[0], 1.0F, 1e-6F);
    EXPECT_NEAR(lPose[0].mScaling[1], 2.0F, 1e-6F);
    EXPECT_NEAR(lPose[0].mScaling[2], 1.0F, 1e-6F);
}

TEST(KQexClipProperties, MirroredTwiceIsTheSame)
{
    for (unsigned int lSeed = 1; lSeed <= 20; ++lSeed)
    {
        const KQexClip         lClip = MakeClipFigure(lSeed, 6);
        const std::vector<int> lPairs = KQexMirrorPairs(lClip.GetData());
        KQexClip               lBack;
        ASSERT_TRUE(KQexClipMirror(lClip, lPairs, lBack));
        ASSERT_TRUE(KQexClipMirror(lBack, lPairs, lBack));
        ExpectSamePlaces(lClip, lBack);
        // Each frame's rotations too, but for the sign of quaternions.
        for (size_t i = 0; i < lClip.GetData().mRotations.size(); i += 4)
        {
            const float* lOne = &lClip.GetData().mRotations[i];
            const float* lOther = &lBack.GetData().mRotations[i];
            EXPECT_NEAR(std::fabs(lOne[0] * lOther[0] + lOne[1] * lOther[1] + lOne[2] * lOther[2] + lOne[3] * lOther[3]), 1.0F, 1e-6F);
        }
    }
}

TEST(KQexClipProperties, ARootThatStaysIsReflectedToo)
{
    KQexClipData lData = MakeClipFigure(3, 6).GetData();
    lData.mMovingJoints.clear();
    lData.mTranslations.clear();
    lData.mRest[0].mTranslation[0] = 10.0F;
    KQexClip lClip;
    KQexClip lMirrored;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    const std::vector<int> lPairs = KQexMirrorPairs(lClip.GetData());
    ASSERT_TRUE(KQexClipMirror(lClip, lPairs, lMirrored));
    for (long long lFrame = 0; lFrame < 6; ++lFrame)
    {
        const std::vector<double> lOld = Places(lClip, lFrame);
        const std::vector<double> lNew = Places(lMirrored, lFrame);
        for (size_t lJoint = 0; lJoint < lPairs.size(); ++lJoint)
        {
            const size_t lPair = static_cast<size_t>(lPairs[lJoint]);
            EXPECT_NEAR(lNew[lJoint * 3], -lOld[lPair * 3], kNear);
            EXPECT_NEAR(lNew[lJoint * 3 + 1], lOld[lPair * 3 + 1], kNear);
        }
    }
}

TEST(KQexClipProperties, InPlaceWithoutTurnTheHeadingStays)
{
    for (unsigned int lSeed = 1; lSeed <= 10; ++lSeed)
    {
        const KQexClip lClip = MakeClipFigure(lSeed, 30);
        KQexClip       lKept;
        KQexClip       lStill;
        double         lFirst[4];
        double         lNow[4];
        ASSERT_TRUE(KQexClipInPlace(lClip, true, lKept));
        ASSERT_TRUE(KQexClipInPlace(lClip, false, lStill));
        double lLargestKept = 0.0;
        for (const KQexClip* lEach : {&lKept, &lStill})
        {
            const float* lRotations = lEach->GetData().mRotations.data();
            std::copy(lRotations, lRotations + 4, lFirst);
            const KQexQuaternion lBack = KQexQuaternion{{lFirst[1], lFirst[2], lFirst[3], lFirst[0]}}.Inverse();
            for (long long lFrame = 0; lFrame < 30; ++lFrame, lRotations += 4 * lEach->GetJointCount())
            {
                std::copy(lRotations, lRotations + 4, lNow);
                // The turn about the vertical since the first frame: y and w of a quaternion.
                const double lTurn = std::fabs((KQexQuaternion{{lNow[1], lNow[2], lNow[3], lNow[0]}} * lBack).mData[1]);
                lLargestKept = lEach == &lKept ? std::max(lLargestKept, lTurn) : lLargestKept;
                EXPECT_LE(lEach == &lStill ? lTurn : 0.0, 1e-6) << "frame " << lFrame;
            }
        }
        EXPECT_GT(lLargestKept, 0.01) << "else there was no turn to take out";
    }
}

TEST(KQexClipProperties, LoopsRepeatAndHoldsStay)
{
    std::mt19937   lRandom(5);
    const KQexClip lClip = RandomClip(lRandom, 6, 13, kFilmStep);
    const double   lDuration = lClip.GetDuration();
    KQexPose       lOne(6);
    KQexPose       lOther(6);
    const auto     lDifference = [&]
    {
        float lLargest = 0.0F;
        for (size_t lJoint = 0; lJoint < lOne.size(); ++lJoint)
        {
            const float* lA = lOne[lJoint].mRotation;
            const float* lB = lOther[lJoint].mRotation;
            lLargest = std::max(lLargest, 1.0F - std::fabs(lA[0] * lB[0] + lA[1] * lB[1] + lA[2] * lB[2] + lA[3] * lB[3]));
            lLargest = std::max(lLargest, std::fabs(lOne[lJoint].mTranslation[0] - lOther[lJoint].mTranslation[0]));
        }
        return lLargest;
    };
    std::uniform_real_distribution<double> lInside(0.0, lDuration);
    for (int i = 0; i < 200; ++i)
    {
        const double lTime = lInside(lRandom);
        const int    lTurns = std::uniform_int_distribution<int>(-50, 50)(lRandom);
        ASSERT_TRUE(lClip.Sample(lTime, lOne));
        ASSERT_TRUE(lClip.Sample(lTime + lTurns * lDuration, lOther, KQexClipEnds::eLOOP));
        EXPECT_LE(lDifference(), 1e-4F) << lTime << " and " << lTurns << " turns";
        ASSERT_TRUE(lClip.SampleFrame(12, lOne));
        ASSERT_TRUE(lClip.Sample(lDuration + lTime, lOther));
        EXPECT_LE(lDifference(), 1e-6F) << "after the end";
        ASSERT_TRUE(lClip.SampleFrame(0, lOne));
        ASSERT_TRUE(lClip.Sample(-lTime, lOther));
        EXPECT_LE(lDifference(), 1e-6F) << "before the start";
    }
}
