#include <kbaselib/kmath/kmath.h>

#include <tests/kbaselib/kmath/rotations.h>

#include <gtest/gtest.h>

#include <cmath>

namespace qexsdk
{
namespace
{

using namespace qextest;

struct KLockCase
{
    const char* mWhat;
    double      mT; ///< Cosine of the middle angle; its sine for a repeated axis.
    bool        mLocked;
};

class KLockTest : public testing::TestWithParam<KLockCase>
{
};

INSTANTIATE_TEST_SUITE_P(Thresholds, KLockTest,
                         testing::Values(KLockCase{"zero", 0, true}, KLockCase{"the threshold", 1.6e-9, true},
                                         KLockCase{"just above", std::nextafter(1.6e-9, 1), false},
                                         KLockCase{"just below", std::nextafter(1.6e-9, 0), true}));

/// T is a single element of the matrices, so that no rounding moves it across the threshold. Each branch reads other elements: the angles
/// show which one ran.
TEST_P(KLockTest, TheThresholdItselfIsLocked)
{
    const double lT = GetParam().mT;
    double       lM[4][4];
    double       lAngles[3];

    KmId(lM);
    lM[0][0] = lT;
    lM[0][1] = 0;
    lM[0][2] = -1;
    lM[1][2] = 3;
    lM[2][2] = 3;
    lM[2][1] = -1;
    lM[1][1] = 0;
    KmRtoVord(lAngles, lM, 0);
    EXPECT_DOUBLE_EQ(lAngles[0], GetParam().mLocked ? 90 : 45) << GetParam().mWhat;
    EXPECT_NEAR(lAngles[1], 90, 1e-6);
    EXPECT_EQ(lAngles[2], 0);

    KmId(lM);
    lM[0][0] = 1;
    lM[1][0] = lT;
    lM[2][0] = 0;
    lM[0][1] = 2;
    lM[0][2] = -2;
    lM[2][1] = -1;
    lM[1][1] = 1;
    KmRtoVord(lAngles, lM, 1);
    EXPECT_DOUBLE_EQ(lAngles[0], GetParam().mLocked ? 45 : 90) << GetParam().mWhat;
    EXPECT_DOUBLE_EQ(lAngles[2], GetParam().mLocked ? 0 : 45) << GetParam().mWhat;
}

TEST(KmEulerTest, XYZAgreesWithTheGeneralForm)
{
    KRandomAngles lRandom(5000);
    for (int lStep = 0; lStep < kRandomCases; ++lStep)
    {
        double lAngles[3];
        lRandom.Next(lAngles);
        double lXYZ[4][4];
        double lIJK[4][4];
        FillSequence(lXYZ);
        ASSERT_EQ(KmVtoR(lXYZ, lAngles), lXYZ);
        ASSERT_EQ(lXYZ[3][3], 115);
        ASSERT_EQ(lXYZ[1][3], 107);
        KmVIJKtoR(lIJK, lAngles, 0);
        ASSERT_LT(LargestDifference(lXYZ, lIJK), 1e-15);
    }
}

TEST(KmEulerTest, XYZRotationsRoundTrip)
{
    KRandomAngles lRandom(6000);
    for (int lStep = 0; lStep < kRandomCases; ++lStep)
    {
        double lR[4][4];
        double lAngles[3];
        double lOrd[3];
        double lBack[4][4];
        lRandom.NextRotation(lR);
        ASSERT_EQ(KmRtoV(lAngles, lR), lAngles);
        KmVXYZtoR(lBack, lAngles);
        if (std::fabs(lR[0][2]) < 0.999999)
        {
            ASSERT_LT(LargestDifference(lR, lBack), kRotationTolerance);
            KmRtoVord(lOrd, lR, 0);
            for (int lIndex = 0; lIndex < 3; ++lIndex)
            {
                ASSERT_NEAR(lAngles[lIndex], lOrd[lIndex], 1e-9);
            }
        }
        else
        {
            // Near a pole y becomes ±90, at most 0.081 degrees off; sin(0.081 degrees) is 0.0014.
            ASSERT_LT(LargestDifference(lR, lBack), 0.0015);
            ASSERT_EQ(std::fabs(lAngles[1]), 90);
            ASSERT_EQ(lAngles[2], 0);
        }
    }
}

struct KPoleCase
{
    double mIn[3];
    double mOut[3];
};

class KPoleTest : public testing::TestWithParam<KPoleCase>
{
};

INSTANTIATE_TEST_SUITE_P(Poles, KPoleTest,
                         testing::Values(KPoleCase{{30, 90, 10}, {20, 90, 0}}, KPoleCase{{30, -90, 10}, {40, -90, 0}},
                                         KPoleCase{{-170, 90, 100}, {90, 90, 0}}, KPoleCase{{0, -90, 0}, {0, -90, 0}},
                                         KPoleCase{{100, -90, 60}, {160, -90, 0}}, KPoleCase{{25, 89.95, 5}, {20, 90, 0}}));

TEST_P(KPoleTest, AtAPoleZIsZero)
{
    double lR[4][4];
    double lAngles[3];
    KmVXYZtoR(lR, GetParam().mIn);
    KmRtoVXYZ(lAngles, lR);
    EXPECT_NEAR(lAngles[0], GetParam().mOut[0], 0.01);
    EXPECT_EQ(lAngles[1], GetParam().mOut[1]);
    EXPECT_EQ(lAngles[2], 0);
}

/// The threshold counts as a pole, smaller values do not.
TEST(KmEulerTest, ThePolesBeginAtTheirThreshold)
{
    struct KCase
    {
        double mElement;
        double mY;
    };
    for (const KCase lCase :
         {KCase{0.999999, -90}, KCase{std::nextafter(0.999999, 2), -90}, KCase{-0.999999, 90}, KCase{1, -90}, KCase{-1, 90}})
    {
        double lM[4][4];
        double lAngles[3];
        KmId(lM);
        lM[0][2] = lCase.mElement;
        KmRtoVXYZ(lAngles, lM);
        EXPECT_EQ(lAngles[1], lCase.mY) << lCase.mElement;
    }
    for (const double lElement : {std::nextafter(0.999999, 0), std::nextafter(-0.999999, 0)})
    {
        double lM[4][4];
        double lAngles[3];
        KmId(lM);
        lM[0][2] = lElement;
        lM[0][1] = 1;
        KmRtoVXYZ(lAngles, lM);
        EXPECT_NE(std::fabs(lAngles[1]), 90) << lElement;
        EXPECT_EQ(lAngles[2], 45) << lElement;
    }
}

} // namespace
} // namespace qexsdk
