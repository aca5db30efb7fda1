#include <qexclip/kqexclipsteps.h>

#include <tests/qexclip/clipfigure.h>
#include <tests/support/nonfinite.h>

#include <cmath>
#include <gtest/gtest.h>
#include <utility>

using namespace qexsdk;
using namespace qextest;

namespace
{

std::vector<double> Reflected(const KQexClip& pClip, const std::vector<int>& pPairs, long long pFrame)
{
    const std::vector<double> lPlaces = Places(pClip, pFrame);
    std::vector<double>       lResult;
    for (const int lPair : pPairs)
    {
        const double* lPlace = lPlaces.data() + lPair * 3;
        lResult.insert(lResult.end(), {-lPlace[0], lPlace[1], lPlace[2]});
    }
    return lResult;
}

} // namespace

TEST(KQexClipSteps, ResamplingKeepsTimeAndComesBack)
{
    const KQexClip lClip = MakeClipFigure(1, 49);
    for (const double lRate : {48.0, 72.0, 240.0})
    {
        KQexClip lFine;
        KQexClip lBack;
        ASSERT_TRUE(KQexClipResample(lClip, lRate, lFine));
        EXPECT_EQ(lFine.GetFrameCount(), static_cast<long long>(48 * lRate / 24) + 1);
        EXPECT_EQ(lFine.GetDuration(), lClip.GetDuration());
        ASSERT_TRUE(KQexClipResample(lFine, 24.0, lBack));
        ASSERT_EQ(lBack.GetFrameCount(), 49);
        EXPECT_EQ(lBack.GetData().mDofValues, lClip.GetData().mDofValues);
        for (long long lFrame = 0; lFrame < 49; ++lFrame)
        {
            EXPECT_LE(LargestDifference(Places(lClip, lFrame), Places(lBack, lFrame)), kNear);
        }
    }
    KQexClip lVideo;
    ASSERT_TRUE(KQexClipResample(lClip, 30000.0 / 1001.0, lVideo));
    EXPECT_EQ(lVideo.GetData().mSampling.mStep.Get(), KTime::kTicksPerSecond * 1001 / 30000);
    EXPECT_EQ(lVideo.GetFrameCount(), 60) << "2 s at 29.97";
    for (const double lRate : {0.0, -1.0, 1e7, kNan, kInf})
    {
        EXPECT_FALSE(KQexClipResample(lClip, lRate, lVideo)) << lRate;
    }
    EXPECT_EQ(lVideo.GetFrameCount(), 60) << "unchanged";
}

TEST(KQexClipSteps, CutAndJoinGiveWhatWasThere)
{
    const KQexClip lClip = MakeClipFigure(2, 30);
    for (const long long lAt : {0LL, 1LL, 13LL, 28LL})
    {
        KQexClip lHead;
        KQexClip lTail;
        ASSERT_TRUE(KQexClipCut(lClip, 0, lAt, 1, lHead));
        ASSERT_TRUE(KQexClipCut(lClip, lAt + 1, 29, 1, lTail));
        EXPECT_EQ(lTail.GetData().mSampling.mStart, lClip.GetData().mSampling.GetTime(lAt + 1));
        ASSERT_TRUE(KQexClipJoin(lHead, lTail, 0, lHead));
        EXPECT_EQ(lHead.GetData().mRotations, lClip.GetData().mRotations);
        EXPECT_EQ(lHead.GetData().mTranslations, lClip.GetData().mTranslations);
        EXPECT_EQ(lHead.GetData().mDofValues, lClip.GetData().mDofValues);
    }
}

TEST(KQexClipSteps, EveryNthFrame)
{
    const KQexClip lClip = MakeClipFigure(2, 30);
    KQexClip       lThird;
    ASSERT_TRUE(KQexClipCut(lClip, 4, 28, 3, lThird));
    EXPECT_EQ(lThird.GetFrameCount(), 9);
    EXPECT_EQ(lThird.GetRate(), 8.0);
    for (long long lFrame = 0; lFrame < 9; ++lFrame)
    {
        EXPECT_EQ(Places(lThird, lFrame), Places(lClip, 4 + 3 * lFrame));
    }
    EXPECT_FALSE(KQexClipCut(lClip, 4, 30, 1, lThird));
    EXPECT_FALSE(KQexClipCut(lClip, 5, 4, 1, lThird));
    EXPECT_FALSE(KQexClipCut(lClip, 0, 4, 0, lThird));
    EXPECT_FALSE(KQexClipCut(lClip, -1, 4, 1, lThird));
}

TEST(KQexClipSteps, JoinFadesOverTheBlend)
{
    const KQexClip lClip = MakeClipFigure(2, 30);
    const KQexClip lNext = MakeClipFigure(3, 20);
    KQexClip       lJoined;
    ASSERT_TRUE(KQexClipJoin(lClip, lNext, 9, lJoined));
    ASSERT_EQ(lJoined.GetFrameCount(), 41);
    EXPECT_EQ(Places(lJoined, 20), Places(lClip, 20));
    EXPECT_EQ(Places(lJoined, 30), Places(lNext, 9));
    EXPECT_NEAR(Places(lJoined, 25)[0], 0.5 * (Places(lClip, 25)[0] + Places(lNext, 4)[0]), kNear) << "half way";
    EXPECT_FALSE(KQexClipJoin(lClip, lNext, 21, lJoined));
    EXPECT_FALSE(KQexClipJoin(lClip, lNext, -1, lJoined));
    KQexClip lOtherRate;
    ASSERT_TRUE(KQexClipResample(lNext, 30.0, lOtherRate));
    EXPECT_FALSE(KQexClipJoin(lClip, lOtherRate, 0, lJoined));
}

TEST(KQexClipSteps, SubsetsKeepTheirPlaces)
{
    const KQexClip         lClip = MakeClipFigure(4, 10);
    const std::vector<int> lJoints = {2, 4, 6, 8, 10}; // Without the hips and everything between.
    KQexClip               lSome;
    ASSERT_TRUE(KQexClipSelect(lClip, lJoints, lSome));
    EXPECT_EQ(lSome.GetData().mNames, (std::vector<std::string>{"Head", "LeftElbow", "RightElbow", "LeftKnee", "RightKnee"}));
    EXPECT_EQ(lSome.GetData().mParents, (std::vector<int>{-1, -1, -1, -1, -1}));
    EXPECT_TRUE(lSome.GetData().mDofs.empty()) << "the knee's parent is gone";
    KQexClip lLegs;
    ASSERT_TRUE(KQexClipSelect(lClip, {0, 7, 8}, lLegs));
    EXPECT_EQ(lLegs.GetData().mParents, (std::vector<int>{-1, 0, 1}));
    EXPECT_EQ(lLegs.GetData().mMovingJoints, std::vector<int>{0});
    EXPECT_EQ(lLegs.GetData().mDofValues, lClip.GetData().mDofValues);
    EXPECT_EQ(lLegs.GetData().mDofs[1].mJoint, 2);
    for (long long lFrame = 0; lFrame < 10; ++lFrame)
    {
        const std::vector<double> lAll = Places(lClip, lFrame);
        const std::vector<double> lPlaces = Places(lSome, lFrame);
        for (size_t i = 0; i < lJoints.size(); ++i)
        {
            for (size_t j = 0; j < 3; ++j)
            {
                EXPECT_NEAR(lPlaces[i * 3 + j], lAll[static_cast<size_t>(lJoints[i]) * 3 + j], kNear);
            }
        }
    }
    for (const std::vector<int>& lBad : {std::vector<int>{}, {1, 1}, {2, 1}, {-1}, {11}})
    {
        EXPECT_FALSE(KQexClipSelect(lClip, lBad, lSome));
    }
}

TEST(KQexClipSteps, ScalesEveryLength)
{
    const KQexClip lClip = MakeClipFigure(5, 5);
    KQexClip       lHalf;
    ASSERT_TRUE(KQexClipScale(lClip, 0.5, lHalf));
    std::vector<double> lExpected = Places(lClip, 4);
    for (double& lNumber : lExpected)
    {
        lNumber *= 0.5;
    }
    EXPECT_LE(LargestDifference(Places(lHalf, 4), lExpected), kNear);
    EXPECT_EQ(lHalf.GetData().mDofs[0].mDof.mMax, 50.0);
    EXPECT_EQ(lHalf.GetData().mDofs[1].mDof.mMax, 150.0) << "an angle";
    EXPECT_EQ(lHalf.GetData().mDofValues[8], 0.5F * lClip.GetData().mDofValues[8]);
    EXPECT_EQ(lHalf.GetData().mDofValues[9], lClip.GetData().mDofValues[9]);
    for (const double lFactor : {0.0, -1.0, kNan, kInf})
    {
        EXPECT_FALSE(KQexClipScale(lClip, lFactor, lHalf));
    }
}

TEST(KQexClipSteps, ZUpIsATurnOfTheWorld)
{
    const KQexClip lClip = MakeClipFigure(6, 5);
    KQexClip       lZUp;
    ASSERT_TRUE(KQexClipMakeZUp(lClip, lZUp));
    const std::vector<double> lOld = Places(lClip, 3);
    const std::vector<double> lNew = Places(lZUp, 3);
    for (size_t i = 0; i < lOld.size(); i += 3)
    {
        EXPECT_NEAR(lNew[i], lOld[i], kNear);
        EXPECT_NEAR(lNew[i + 1], -lOld[i + 2], kNear);
        EXPECT_NEAR(lNew[i + 2], lOld[i + 1], kNear);
    }
    EXPECT_NEAR(lZUp.GetData().mRest[0].mTranslation[2], 95.0F, 1e-4F);
    EXPECT_EQ(lZUp.GetData().mDofValues, lClip.GetData().mDofValues);
}

TEST(KQexClipSteps, ZUpTurnsTheAxesOfJointsAndBackExactly)
{
    const KQexClip lClip = MakeClipFigure(6, 5);
    KQexClip       lZUp;
    KQexClip       lBack;
    ASSERT_TRUE(KQexClipMakeZUp(lClip, lZUp));
    ASSERT_TRUE(KQexClipMakeYUp(lZUp, lBack));
    EXPECT_EQ(lBack.GetData().mRotations, lClip.GetData().mRotations);
    EXPECT_EQ(lBack.GetData().mTranslations, lClip.GetData().mTranslations);
    EXPECT_EQ(lBack.GetData().mScalings, lClip.GetData().mScalings);
    const float* lOld = lClip.GetData().mRotations.data();
    const float* lNew = lZUp.GetData().mRotations.data();
    for (size_t i = 0; i < lClip.GetData().mRotations.size(); i += 4)
    {
        EXPECT_EQ(lNew[i], lOld[i]) << "the angle stays";
        EXPECT_EQ(lNew[i + 2], -lOld[i + 3]);
    }
}

TEST(KQexClipSteps, ReversedFramesAreThoseFromTheLast)
{
    const KQexClip lClip = MakeClipFigure(6, 5);
    KQexClip       lReversed;
    KQexClip       lBack;
    ASSERT_TRUE(KQexClipReverse(lClip, lReversed));
    EXPECT_EQ(Places(lReversed, 0), Places(lClip, 4));
    EXPECT_EQ(lReversed.GetData().mDofValues.back(), lClip.GetData().mDofValues[1]);
    ASSERT_TRUE(KQexClipReverse(lReversed, lBack));
    EXPECT_EQ(lBack.GetData().mRotations, lClip.GetData().mRotations);
    EXPECT_FALSE(KQexClipReverse(KQexClip(), lBack));
}

TEST(KQexClipSteps, MirroredFiguresAreReflectedAndMirrorBack)
{
    const KQexClip         lClip = MakeClipFigure(7, 12);
    const std::vector<int> lPairs = KQexMirrorPairs(lClip.GetData());
    EXPECT_EQ(lPairs, (std::vector<int>{0, 1, 2, 5, 6, 3, 4, 9, 10, 7, 8}));
    KQexClip lMirrored;
    KQexClip lBack;
    ASSERT_TRUE(KQexClipMirror(lClip, lPairs, lMirrored));
    ASSERT_TRUE(KQexClipMirror(lMirrored, lPairs, lBack));
    for (long long lFrame = 0; lFrame < 12; ++lFrame)
    {
        EXPECT_LE(LargestDifference(Places(lMirrored, lFrame), Reflected(lClip, lPairs, lFrame)), kNear);
        EXPECT_LE(LargestDifference(Places(lBack, lFrame), Places(lClip, lFrame)), kNear);
    }
    EXPECT_TRUE(lMirrored.GetData().mDofValues.empty());
    EXPECT_FALSE(KQexClipMirror(lClip, {}, lMirrored));
    EXPECT_FALSE(KQexClipMirror(lClip, {1, 2, 0, 3, 4, 5, 6, 7, 8, 9, 10}, lMirrored)) << "not pairs";
}

TEST(KQexClipSteps, MirrorsSkeletonsWhoseAxesDifferFromSideToSide)
{
    // Each joint's axes turned at rest by an angle of its own; the world stays the same.
    const KQexClip              lPlain = MakeClipFigure(8, 6);
    KQexClipData                lData = lPlain.GetData();
    std::vector<KQexQuaternion> lAxes;
    const auto                  lQuaternion = [](const float* pNumbers)
    {
        return KQexQuaternion{{static_cast<double>(pNumbers[1]), static_cast<double>(pNumbers[2]), static_cast<double>(pNumbers[3]),
                               static_cast<double>(pNumbers[0])}};
    };
    for (size_t i = 0; i < lData.mNames.size(); ++i)
    {
        const double lAngles[3] = {17.0 * static_cast<double>(i), -31.0 * static_cast<double>(i), 53.0};
        lAxes.push_back(KQexQuaternion::FromEuler(lAngles, 0));
    }
    const auto lTurn = [&](size_t pJoint, float* pRotation, float* pTranslation)
    {
        const int            lParent = lData.mParents[pJoint];
        const KQexQuaternion lUp = lParent < 0 ? KQexQuaternion() : lAxes[static_cast<size_t>(lParent)].Inverse();
        const KQexQuaternion lResult = lUp * lQuaternion(pRotation) * lAxes[pJoint];
        double               lPlace[3] = {static_cast<double>(pTranslation[0]), static_cast<double>(pTranslation[1]),
                                          static_cast<double>(pTranslation[2])};
        lUp.Rotate(lPlace, lPlace);
        for (int i = 0; i < 4; ++i)
        {
            pRotation[(i + 1) % 4] = static_cast<float>(lResult.mData[i]);
        }
        for (int i = 0; i < 3; ++i)
        {
            pTranslation[i] = static_cast<float>(lPlace[i]);
        }
    };
    for (size_t i = 0; i < lData.mRotations.size() / 4; ++i)
    {
        float lUnused[3] = {0.0F, 0.0F, 0.0F};
        lTurn(i % lData.mNames.size(), &lData.mRotations[i * 4], lUnused);
    }
    for (size_t i = 0; i < lData.mRest.size(); ++i)
    {
        lTurn(i, lData.mRest[i].mRotation, lData.mRest[i].mTranslation);
    }
    KQexClip lTurned;
    KQexClip lMirrored;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lTurned));
    ASSERT_LE(LargestDifference(Places(lTurned, 3), Places(lPlain, 3)), kNear);
    const std::vector<int> lPairs = KQexMirrorPairs(lPlain.GetData());
    ASSERT_TRUE(KQexClipMirror(lTurned, lPairs, lMirrored));
    for (long long lFrame = 0; lFrame < 6; ++lFrame)
    {
        EXPECT_LE(LargestDifference(Places(lMirrored, lFrame), Reflected(lPlain, lPairs, lFrame)), kNear);
    }
}

TEST(KQexClipSteps, PairsOfManyMakers)
{
    const std::pair<const char*, const char*> kNames[] = {{"lfemur", "rfemur"},
                                                          {"arm.L", "arm.R"},
                                                          {"L_Hand", "R_Hand"},
                                                          {"mixamorig:LeftArm", "mixamorig:RightArm"},
                                                          {"Bip01 L Calf", "Bip01 R Calf"},
                                                          {"hand_l", "hand_r"},
                                                          {"HandL", "HandR"},
                                                          {"lShldr", "rShldr"},
                                                          {"upperleg_left", "upperleg_right"}};
    KQexClipData                              lData;
    for (const auto& lPair : kNames)
    {
        lData.mNames.insert(lData.mNames.end(), {lPair.first, lPair.second});
    }
    for (const char* lSingle : {"lowerback", "root", "Neck", "reye", "roll"})
    {
        lData.mNames.emplace_back(lSingle);
    }
    const std::vector<int> lPairs = KQexMirrorPairs(lData);
    for (size_t i = 0; i < lPairs.size(); ++i)
    {
        const int lExpected = i < 18 ? static_cast<int>(i ^ 1U) : static_cast<int>(i);
        EXPECT_EQ(lPairs[i], lExpected) << lData.mNames[i];
    }
}

TEST(KQexClipSteps, InPlaceTakesTheWayOut)
{
    const KQexClip lClip = MakeClipFigure(9, 20);
    KQexClip       lKept;
    KQexClip       lStill;
    ASSERT_TRUE(KQexClipInPlace(lClip, true, lKept));
    ASSERT_TRUE(KQexClipInPlace(lClip, false, lStill));
    for (long long lFrame = 0; lFrame < 20; ++lFrame)
    {
        const std::vector<double> lOld = Places(lClip, lFrame);
        const std::vector<double> lNew = Places(lKept, lFrame);
        for (size_t i = 0; i < lOld.size(); i += 3)
        {
            EXPECT_NEAR(lNew[i], lOld[i] - static_cast<double>(lFrame), kNear);
            EXPECT_NEAR(lNew[i + 1], lOld[i + 1], kNear);
            EXPECT_NEAR(lNew[i + 2], lOld[i + 2] - 3.0 * static_cast<double>(lFrame), kNear);
        }
        const std::vector<double> lTurned = Places(lStill, lFrame);
        EXPECT_NEAR(lTurned[0], 10.0, kNear);
        EXPECT_NEAR(lTurned[1], 95.0, kNear);
        EXPECT_NEAR(lTurned[2], 0.0, kNear);
        EXPECT_NEAR(lTurned[7], lOld[7], kNear) << "the head's height";
    }
}

TEST(KQexClipSteps, StartsAtTheOriginFacingForward)
{
    KQexClip lClip = MakeClipFigure(10, 4);
    double   lOffset[3] = {30.0, 0.0, -200.0};
    KQexClip lElsewhere;
    KQexClip lHome;
    KQexClip lAgain;
    ASSERT_TRUE(KQexClipToOrigin(lClip, lHome));
    EXPECT_NEAR(Places(lHome, 0)[0], 0.0, kNear);
    EXPECT_NEAR(Places(lHome, 0)[1], 95.0, kNear);
    EXPECT_NEAR(Places(lHome, 0)[2], 0.0, kNear);
    // Wherever and however the same motion stood before.
    KQexClipData lData = lClip.GetData();
    KQexClip     lMoved;
    ASSERT_TRUE(KQexClipTransform(lClip, KQexQuaternion::About(1, 77.0), lOffset, lMoved));
    lData = lMoved.GetData();
    lData.mRest = lClip.GetData().mRest;
    ASSERT_TRUE(KQexClip::FromArrays(std::move(lData), lElsewhere));
    ASSERT_TRUE(KQexClipToOrigin(lElsewhere, lAgain));
    for (long long lFrame = 0; lFrame < 4; ++lFrame)
    {
        EXPECT_LE(LargestDifference(Places(lAgain, lFrame), Places(lHome, lFrame)), kNear);
    }
}
