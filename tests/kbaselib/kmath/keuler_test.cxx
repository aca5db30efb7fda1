#include <kbaselib/kmath/kmath.h>

#include <tests/kbaselib/kmath/rotations.h>

#include <Imath/ImathEuler.h>
#include <Imath/ImathMatrix.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

struct KOrderCase
{
    const char*          mName;
    int                  mCode;
    Imath::Eulerd::Order mImath;
    std::vector<int>     mAxes; ///< In order of application.
};

const std::vector<KOrderCase>& Orders()
{
    static const std::vector<KOrderCase> sOrders = {
        {"XYZ", 0, Imath::Eulerd::XYZ, {0, 1, 2}}, {"XYX", 1, Imath::Eulerd::XYX, {0, 1, 0}},  {"XZY", 2, Imath::Eulerd::XZY, {0, 2, 1}},
        {"XZX", 3, Imath::Eulerd::XZX, {0, 2, 0}}, {"YZX", 4, Imath::Eulerd::YZX, {1, 2, 0}},  {"YZY", 5, Imath::Eulerd::YZY, {1, 2, 1}},
        {"YXZ", 6, Imath::Eulerd::YXZ, {1, 0, 2}}, {"YXY", 7, Imath::Eulerd::YXY, {1, 0, 1}},  {"ZXY", 8, Imath::Eulerd::ZXY, {2, 0, 1}},
        {"ZXZ", 9, Imath::Eulerd::ZXZ, {2, 0, 2}}, {"ZYX", 10, Imath::Eulerd::ZYX, {2, 1, 0}}, {"ZYZ", 11, Imath::Eulerd::ZYZ, {2, 1, 2}},
    };
    return sOrders;
}

/// Imath's matrix of the same angles. It multiplies row vectors, so its rows are the images of the axes, as ours are.
void ImathRotation(double (*pM)[4], const double* pAngles, Imath::Eulerd::Order pOrder)
{
    const double        lRadians = std::acos(-1.0) / 180.0;
    const Imath::Eulerd lEuler(pAngles[0] * lRadians, pAngles[1] * lRadians, pAngles[2] * lRadians, pOrder, Imath::Eulerd::IJKLayout);
    const Imath::M44d   lMatrix = lEuler.toMatrix44();
    for (int lRow = 0; lRow < 4; ++lRow)
    {
        for (int lColumn = 0; lColumn < 4; ++lColumn)
        {
            pM[lRow][lColumn] = lMatrix[lRow][lColumn];
        }
    }
}

/// The rotation by \p pAngle degrees about one axis, written out.
void AxisRotation(double (*pM)[4], int pAxis, double pAngle)
{
    const double lCos = std::cos(pAngle * std::acos(-1.0) / 180.0);
    const double lSin = std::sin(pAngle * std::acos(-1.0) / 180.0);
    const int    lNext = (pAxis + 1) % 3;
    const int    lLast = (pAxis + 2) % 3;
    KmId(pM);
    pM[lNext][lNext] = lCos;
    pM[lNext][lLast] = lSin;
    pM[lLast][lNext] = -lSin;
    pM[lLast][lLast] = lCos;
}

class KOrderTest : public testing::TestWithParam<KOrderCase>
{
};

INSTANTIATE_TEST_SUITE_P(Codes, KOrderTest, testing::ValuesIn(Orders()),
                         [](const testing::TestParamInfo<KOrderCase>& pInfo) { return pInfo.param.mName; });

TEST_P(KOrderTest, TheTableFollowsFromTheCode)
{
    ASSERT_EQ(KmEulerAxisCount, 12);
    const int  lCode = GetParam().mCode;
    const int* lRow = KmEulerAxis[lCode];
    const int  lFirst = lCode >> 2;
    EXPECT_EQ(lRow[0], lFirst);
    EXPECT_EQ(lRow[1], (lCode & 2) == 0 ? (lFirst + 1) % 3 : (lFirst + 2) % 3);
    EXPECT_EQ(lRow[0] + lRow[1] + lRow[2], 3);
    EXPECT_EQ(lRow[1], GetParam().mAxes[1]);
    EXPECT_EQ((lCode & 1) == 0 ? lRow[2] : lRow[0], GetParam().mAxes[2]);
}

TEST_P(KOrderTest, AgreesWithImath)
{
    KRandomAngles lRandom(1000 + static_cast<unsigned>(GetParam().mCode));
    for (int lStep = 0; lStep < kRandomCases; ++lStep)
    {
        double lAngles[3];
        lRandom.Next(lAngles);
        double lOurs[4][4];
        double lTheirs[4][4];
        KmVIJKtoR(lOurs, lAngles, GetParam().mCode);
        ImathRotation(lTheirs, lAngles, GetParam().mImath);
        ASSERT_LT(LargestDifference(lOurs, lTheirs), kRotationTolerance) << lAngles[0] << " " << lAngles[1] << " " << lAngles[2];
    }
}

TEST_P(KOrderTest, RotatesAboutItsAxesInOrder)
{
    KRandomAngles lRandom(2000);
    for (int lStep = 0; lStep < 1000; ++lStep)
    {
        double lAngles[3];
        lRandom.Next(lAngles);
        double lExpected[4][4];
        KmId(lExpected);
        for (size_t lRotation = 0; lRotation < 3; ++lRotation)
        {
            double lStepM[4][4];
            AxisRotation(lStepM, GetParam().mAxes[lRotation], lAngles[lRotation]);
            KmRR(lExpected, lStepM, lExpected);
        }
        double lOurs[4][4];
        KmIJKtoR(lOurs, lAngles[0], lAngles[1], lAngles[2], GetParam().mCode);
        ASSERT_LT(LargestDifference(lOurs, lExpected), 1e-14);
    }
}

TEST_P(KOrderTest, RotationsRoundTrip)
{
    KRandomAngles lRandom(3000 + static_cast<unsigned>(GetParam().mCode));
    for (int lStep = 0; lStep < kRandomCases; ++lStep)
    {
        double lR[4][4];
        double lAngles[3];
        double lBack[4][4];
        lRandom.NextRotation(lR);
        ASSERT_EQ(KmRtoVord(lAngles, lR, GetParam().mCode), lAngles);
        KmVIJKtoR(lBack, lAngles, GetParam().mCode);
        ASSERT_LT(LargestDifference(lR, lBack), 1e-8) << "in gimbal lock, an error up to its threshold";
        if (std::fabs(lAngles[2]) > 0)
        {
            ASSERT_LT(LargestDifference(lR, lBack), kRotationTolerance);
        }
    }
}

/// The middle angle is at a pole (90 degrees; 0 and 180 for a repeated axis) and just next to it.
TEST_P(KOrderTest, InGimbalLockTheThirdAngleIsZero)
{
    const bool    lRepeated = (GetParam().mCode & 1) != 0;
    KRandomAngles lRandom(4000);
    for (const double lMiddle : lRepeated ? std::vector<double>{0, 180, 5e-8} : std::vector<double>{90, -90, 90 - 5e-8, -90 + 5e-8})
    {
        for (int lStep = 0; lStep < 1000; ++lStep)
        {
            double lR[4][4];
            double lAngles[3];
            double lBack[4][4];
            KmIJKtoR(lR, lRandom.Next(), lMiddle, lRandom.Next(), GetParam().mCode);
            KmRtoVord(lAngles, lR, GetParam().mCode);
            ASSERT_EQ(lAngles[2], 0.0);
            KmVIJKtoR(lBack, lAngles, GetParam().mCode);
            ASSERT_LT(LargestDifference(lR, lBack), 2e-9);
        }
    }
}

TEST_P(KOrderTest, OnlyTheRotationIsWritten)
{
    double lM[4][4];
    FillSequence(lM);
    EXPECT_EQ(KmIJKtoR(lM, 10, 20, 30, GetParam().mCode), lM);
    EXPECT_EQ((std::vector<double>{lM[0][3], lM[1][3], lM[2][3]}), (std::vector<double>{103, 107, 111}));
    EXPECT_EQ(std::vector<double>(lM[3], lM[3] + 4), (std::vector<double>{112, 113, 114, 115}));
}

class KInvalidCodeTest : public testing::TestWithParam<int>
{
};

INSTANTIATE_TEST_SUITE_P(Numbers, KInvalidCodeTest,
                         testing::Values(12, 13, 14, 15, 100, 101, 102, 103, -1, -2, -3, -4, 2147483647, -2147483647 - 1));

TEST_P(KInvalidCodeTest, UsesTheAxesOfXYZAndItsOwnBits)
{
    const int     lOrd = GetParam();
    const int     lCode = lOrd & 1; // The code with the axes of XYZ and the repeated-axis bit of lOrd.
    KRandomAngles lRandom(7000);
    for (int lStep = 0; lStep < 200; ++lStep)
    {
        double lAngles[3];
        lRandom.Next(lAngles);
        double lSigned[3] = {lAngles[0], lAngles[1], lAngles[2]};
        if ((lOrd & 2) != 0)
        {
            KmVneg(lSigned, lSigned);
        }
        double lActual[4][4];
        double lExpected[4][4];
        KmVIJKtoR(lActual, lAngles, lOrd);
        KmVIJKtoR(lExpected, lSigned, lCode);
        ASSERT_EQ(Nine(lActual), Nine(lExpected));

        double lOut[3];
        double lOutExpected[3];
        KmRtoVord(lOut, lActual, lOrd);
        KmRtoVord(lOutExpected, lActual, lCode);
        if ((lOrd & 2) != 0)
        {
            KmVneg(lOutExpected, lOutExpected);
        }
        ASSERT_EQ(Triple(lOut), Triple(lOutExpected));
    }
}

} // namespace
} // namespace qexsdk
