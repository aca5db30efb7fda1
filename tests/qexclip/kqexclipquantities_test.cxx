#include <qexclip/kqexclipquantities.h>

#include <kbaselib/kmath/kmath.h>
#include <qexscene/kqexquaternion.h>
#include <tests/qexclip/clipfigure.h>

#include <cmath>
#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

std::vector<double> RotationsOf(const KQexClip& pClip, KQexSpace pSpace, KQexRotationForm pForm, int pOrder = 0)
{
    std::vector<double> lResult(static_cast<size_t>(pClip.GetFrameCount() * pClip.GetJointCount() * KQexRotationSize(pForm)));
    EXPECT_TRUE(KQexGetRotations(pClip, pSpace, pForm, pOrder, 0, pClip.GetFrameCount(), lResult.data()));
    return lResult;
}

/// The matrix of a quaternion w, x, y, z, row by row, by the textbook.
std::vector<double> MatrixOf(const double* pQ)
{
    const double lW = pQ[0];
    const double lX = pQ[1];
    const double lY = pQ[2];
    const double lZ = pQ[3];
    return {1 - 2 * (lY * lY + lZ * lZ), 2 * (lX * lY - lW * lZ),     2 * (lX * lZ + lW * lY),
            2 * (lX * lY + lW * lZ),     1 - 2 * (lX * lX + lZ * lZ), 2 * (lY * lZ - lW * lX),
            2 * (lX * lZ - lW * lY),     2 * (lY * lZ + lW * lX),     1 - 2 * (lX * lX + lY * lY)};
}

/// One joint that turns about (0, 0, 1) by \p pDegrees in each frame and moves by (1, 2, 3), ten frames a second.
KQexClip TurningClip(double pDegrees, int pFrames)
{
    KQexClipData lData;
    lData.mNames = {"joint"};
    lData.mParents = {-1};
    lData.mRest.resize(1);
    lData.mSampling = KQexSampling{KTime(0), KTime(KTime::kTicksPerSecond / 10), pFrames};
    lData.mMovingJoints = {0};
    for (int lFrame = 0; lFrame < pFrames; ++lFrame)
    {
        const KQexQuaternion lTurn = KQexQuaternion::About(2, pDegrees * lFrame);
        for (const int i : {3, 0, 1, 2})
        {
            lData.mRotations.push_back(static_cast<float>(lTurn.mData[i]));
        }
        lData.mTranslations.insert(lData.mTranslations.end(),
                                   {static_cast<float>(lFrame), 2.0F * static_cast<float>(lFrame), 3.0F * static_cast<float>(lFrame)});
    }
    KQexClip lClip;
    EXPECT_TRUE(KQexClip::FromArrays(std::move(lData), lClip));
    return lClip;
}

} // namespace

TEST(KQexClipQuantities, EveryFormIsTheSameRotation)
{
    const KQexClip lClip = MakeClipFigure(11, 30);
    for (const KQexSpace lSpace : {KQexSpace::eLOCAL, KQexSpace::eWORLD})
    {
        const std::vector<double> lQuaternions = RotationsOf(lClip, lSpace, KQexRotationForm::eQUATERNION);
        const std::vector<double> lMatrices = RotationsOf(lClip, lSpace, KQexRotationForm::eMATRIX);
        const std::vector<double> lSix = RotationsOf(lClip, lSpace, KQexRotationForm::eSIX);
        const std::vector<double> lVectors = RotationsOf(lClip, lSpace, KQexRotationForm::eAXIS_ANGLE);
        for (size_t i = 0; i < lQuaternions.size() / 4; ++i)
        {
            const std::vector<double> lMatrix = MatrixOf(&lQuaternions[i * 4]);
            for (size_t j = 0; j < 9; ++j)
            {
                EXPECT_NEAR(lMatrices[i * 9 + j], lMatrix[j], 1e-12);
            }
            for (size_t j = 0; j < 3; ++j)
            {
                EXPECT_EQ(lSix[i * 6 + j], lMatrices[i * 9 + 3 * j]) << "first column";
                EXPECT_EQ(lSix[i * 6 + 3 + j], lMatrices[i * 9 + 3 * j + 1]) << "second column";
            }
            // The trace of a rotation by a is 1 + 2 cos a; its axis stays.
            const double* lV = &lVectors[i * 3];
            const double  lAngle = std::sqrt(lV[0] * lV[0] + lV[1] * lV[1] + lV[2] * lV[2]);
            EXPECT_NEAR(lMatrix[0] + lMatrix[4] + lMatrix[8], 1.0 + 2.0 * std::cos(lAngle), 1e-12);
            for (size_t lRow = 0; lRow < 3; ++lRow)
            {
                EXPECT_NEAR(lMatrix[lRow * 3] * lV[0] + lMatrix[lRow * 3 + 1] * lV[1] + lMatrix[lRow * 3 + 2] * lV[2], lV[lRow], 1e-12);
            }
        }
    }
}

TEST(KQexClipQuantities, EulerAnglesOfEveryOrderGiveTheRotationBack)
{
    const KQexClip            lClip = MakeClipFigure(12, 30);
    const std::vector<double> lMatrices = RotationsOf(lClip, KQexSpace::eWORLD, KQexRotationForm::eMATRIX);
    for (int lOrder = 0; lOrder < 12; ++lOrder)
    {
        const std::vector<double> lAngles = RotationsOf(lClip, KQexSpace::eWORLD, KQexRotationForm::eEULER, lOrder);
        for (size_t i = 0; i < lAngles.size() / 3; ++i)
        {
            // By axis for three distinct axes, in order of application for a repeated one.
            const double* lA = &lAngles[i * 3];
            const int*    lAxes = KmEulerAxisRow(lOrder);
            const bool    lRepeats = (lOrder & 1) != 0;
            double        lImages[4][4];
            KmIJKtoR(lImages, lRepeats ? lA[0] : lA[lAxes[0]], lRepeats ? lA[1] : lA[lAxes[1]], lRepeats ? lA[2] : lA[lAxes[2]], lOrder);
            for (size_t lRow = 0; lRow < 3; ++lRow)
            {
                for (size_t lColumn = 0; lColumn < 3; ++lColumn)
                {
                    EXPECT_NEAR(lImages[lColumn][lRow], lMatrices[i * 9 + lRow * 3 + lColumn], 1e-6) << lOrder;
                }
            }
        }
    }
}

TEST(KQexClipQuantities, WordsOfEulerOrders)
{
    EXPECT_EQ(KQexEulerOrderWord(2 * eEULER_YXZ), "YXZ");
    EXPECT_EQ(KQexEulerOrderWord(2 * eEULER_YXZ + 1), "YXY");
    EXPECT_EQ(KQexEulerOrderWord(-1), "XYZ");
    for (int lOrder = 0; lOrder < KmEulerAxisCount; ++lOrder)
    {
        EXPECT_EQ(KQexEulerOrderOf(KQexEulerOrderWord(lOrder)), lOrder);
    }
    for (const char* lWord : {"", "XY", "XXY", "XYZX", "xyz", "ABC"})
    {
        EXPECT_EQ(KQexEulerOrderOf(lWord), -1) << lWord;
    }
}

TEST(KQexClipQuantities, EulerAnglesAndQuaternionsAreContinuous)
{
    const KQexClip            lClip = TurningClip(25.0, 60); // Four turns.
    const std::vector<double> lAngles = RotationsOf(lClip, KQexSpace::eLOCAL, KQexRotationForm::eEULER);
    const std::vector<double> lQuaternions = RotationsOf(lClip, KQexSpace::eLOCAL, KQexRotationForm::eQUATERNION);
    for (size_t lFrame = 0; lFrame < 60; ++lFrame)
    {
        EXPECT_NEAR(lAngles[lFrame * 3 + 2], 25.0 * static_cast<double>(lFrame), 1e-4);
        EXPECT_NEAR(lQuaternions[lFrame * 4], std::cos(12.5 * static_cast<double>(lFrame) * 3.14159265358979323846 / 180.0), 1e-6);
    }
}

TEST(KQexClipQuantities, PositionsAreThoseOfTheWorldTransforms)
{
    const KQexClip      lClip = MakeClipFigure(13, 8);
    std::vector<double> lAll(static_cast<size_t>(8 * lClip.GetJointCount() * 3));
    ASSERT_TRUE(KQexGetPositions(lClip, 0, 8, lAll.data()));
    for (long long lFrame = 0; lFrame < 8; ++lFrame)
    {
        const std::vector<double> lExpected = Places(lClip, lFrame);
        const auto                lFrom = lAll.begin() + static_cast<std::ptrdiff_t>(lExpected.size()) * lFrame;
        EXPECT_LE(LargestDifference(std::vector<double>(lFrom, lFrom + static_cast<std::ptrdiff_t>(lExpected.size())), lExpected), 1e-4);
    }
    double lUntouched = 42.0;
    EXPECT_FALSE(KQexGetPositions(lClip, 0, 9, &lUntouched));
    EXPECT_FALSE(KQexGetRotations(lClip, KQexSpace::eLOCAL, KQexRotationForm::eMATRIX, 0, -1, 1, &lUntouched));
    EXPECT_FALSE(KQexGetVelocities(lClip, 8, 1, &lUntouched));
    EXPECT_EQ(lUntouched, 42.0);
}

TEST(KQexClipQuantities, VelocitiesOfSteadyMotion)
{
    const KQexClip lClip = TurningClip(9.0, 6);
    double         lVelocities[6][3];
    double         lTurns[6][3];
    ASSERT_TRUE(KQexGetVelocities(lClip, 0, 6, lVelocities[0]));
    ASSERT_TRUE(KQexGetAngularVelocities(lClip, 0, 6, lTurns[0]));
    for (int lFrame = 0; lFrame < 6; ++lFrame)
    {
        EXPECT_NEAR(lVelocities[lFrame][0], 10.0, 1e-5);
        EXPECT_NEAR(lVelocities[lFrame][1], 20.0, 1e-5);
        EXPECT_NEAR(lVelocities[lFrame][2], 30.0, 1e-5);
        EXPECT_NEAR(lTurns[lFrame][0], 0.0, 1e-5);
        EXPECT_NEAR(lTurns[lFrame][1], 0.0, 1e-5);
        EXPECT_NEAR(lTurns[lFrame][2], 90.0 * 3.14159265358979323846 / 180.0, 1e-5);
    }
    const KQexClip lStill = TurningClip(9.0, 1);
    ASSERT_TRUE(KQexGetVelocities(lStill, 0, 1, lVelocities[0]));
    EXPECT_EQ(lVelocities[0][1], 0.0);
}

TEST(KQexClipQuantities, LimitsThatArePassed)
{
    const KQexClip   lClip = MakeClipFigure(14, 40); // tz: 3 a frame up to 100; rx: 7 a frame up to 150.
    std::vector<int> lPassed = {7};
    EXPECT_TRUE(KQexPassedLimits(lClip.GetData(), 21, lPassed));
    EXPECT_EQ(lPassed, std::vector<int>());
    EXPECT_TRUE(KQexPassedLimits(lClip.GetData(), 22, lPassed));
    EXPECT_EQ(lPassed, std::vector<int>{1});
    EXPECT_TRUE(KQexPassedLimits(lClip.GetData(), 34, lPassed));
    EXPECT_EQ(lPassed, (std::vector<int>{0, 1}));
    EXPECT_FALSE(KQexPassedLimits(lClip.GetData(), 40, lPassed));
    EXPECT_FALSE(KQexPassedLimits(lClip.GetData(), -1, lPassed));
    EXPECT_EQ(lPassed, (std::vector<int>{0, 1})) << "unchanged";
}
