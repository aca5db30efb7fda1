#include <kbaselib/kmath/kmath.h>

#include <tests/kbaselib/kmath/rotations.h>
#include <tests/support/nonfinite.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

TEST(KmVectorTest, EachFunctionReturnsItsOutputAndKeepsTheFourthComponent)
{
    const double lA[3] = {1, 2, 3};
    const double lB[3] = {10, 20, 30};
    double       lOut[4] = {0, 0, 0, 99};
    EXPECT_EQ(KmV(lOut, 4, 5, 6), lOut);
    EXPECT_EQ(Triple(lOut), (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(KmVset(lOut, lA), lOut);
    EXPECT_EQ(Triple(lOut), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(KmVneg(lOut, lA), lOut);
    EXPECT_EQ(Triple(lOut), (std::vector<double>{-1, -2, -3}));
    EXPECT_EQ(KmVadd(lOut, lA, lB), lOut);
    EXPECT_EQ(Triple(lOut), (std::vector<double>{11, 22, 33}));
    EXPECT_EQ(KmVN(lOut, lA, -2), lOut);
    EXPECT_EQ(Triple(lOut), (std::vector<double>{-2, -4, -6}));
    EXPECT_EQ(KmVnorm(lOut, lB), lOut);
    EXPECT_EQ(lOut[3], 99);
}

TEST(KmVectorTest, WorksInPlace)
{
    double lV[3] = {1, -2, 0};
    KmVneg(lV, lV);
    EXPECT_EQ(Triple(lV), (std::vector<double>{-1, 2, 0}));
    EXPECT_TRUE(std::signbit(lV[2]));
    KmVadd(lV, lV, lV);
    EXPECT_EQ(Triple(lV), (std::vector<double>{-2, 4, 0}));
    KmVN(lV, lV, 0.5);
    EXPECT_EQ(Triple(lV), (std::vector<double>{-1, 2, 0}));
}

struct KLengthCase
{
    const char* mWhat;
    double      mV[3];
    double      mLength;
    double      mUnit[3];
};

class KLengthTest : public testing::TestWithParam<KLengthCase>
{
};

TEST_P(KLengthTest, OnlyAnExactZeroHasNoDirection)
{
    const KLengthCase& lCase = GetParam();
    EXPECT_DOUBLE_EQ(KmVlength(lCase.mV), lCase.mLength) << lCase.mWhat;
    double lUnit[3];
    KmVnorm(lUnit, lCase.mV);
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        EXPECT_DOUBLE_EQ(lUnit[lIndex], lCase.mUnit[lIndex]) << lCase.mWhat;
    }
    double lInPlace[3] = {lCase.mV[0], lCase.mV[1], lCase.mV[2]};
    KmVnorm(lInPlace, lInPlace);
    EXPECT_EQ(Triple(lInPlace), Triple(lUnit)) << lCase.mWhat;
}

INSTANTIATE_TEST_SUITE_P(
    Vectors, KLengthTest,
    testing::Values(KLengthCase{"zero", {0, 0, 0}, 0, {0, 0, 0}}, KLengthCase{"negative zero", {-0.0, 0, -0.0}, 0, {0, 0, 0}},
                    KLengthCase{"plain", {2, -3, 6}, 7, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
                    KLengthCase{"tiny", {0, 0, 1e-300}, 1e-300, {0, 0, 1}}, KLengthCase{"subnormal", {0, -5e-324, 0}, 5e-324, {0, -1, 0}},
                    KLengthCase{"subnormal along x", {5e-324, 0, 0}, 5e-324, {1, 0, 0}},
                    KLengthCase{"subnormal along z", {0, 0, 5e-324}, 5e-324, {0, 0, 1}},
                    KLengthCase{"small", {2e-155, -3e-155, 6e-155}, 7e-155, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
                    KLengthCase{"large", {2e200, -3e200, 6e200}, 7e200, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
                    KLengthCase{"length overflows", {-1.5e308, 0, 1.5e308}, kInf, {-std::sqrt(0.5), 0, std::sqrt(0.5)}}));

TEST(KmVectorTest, TheUnitVectorIsTheVectorTimesTheInverseLength)
{
    KRandomAngles lAngles(41);
    for (int lStep = 0; lStep < 10000; ++lStep)
    {
        double lV[3];
        lAngles.Next(lV);
        lV[0] += 1000; // never zero
        const double lInverse = 1.0 / std::sqrt(lV[2] * lV[2] + (lV[0] * lV[0] + lV[1] * lV[1]));
        double       lUnit[3];
        KmVnorm(lUnit, lV);
        ASSERT_EQ(Triple(lUnit), (std::vector<double>{lV[0] * lInverse, lV[1] * lInverse, lV[2] * lInverse}));
    }
}

TEST(KmMatrixTest, IdIsTheIdentity)
{
    double lM[4][4];
    FillSequence(lM);
    EXPECT_EQ(KmId(lM), lM);
    EXPECT_EQ(Sixteen(lM), (std::vector<double>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(KmMatrixTest, RinitSetsTheFourthRowAndColumnOnly)
{
    double lM[4][4];
    FillSequence(lM);
    EXPECT_EQ(KmRinit(lM), lM);
    EXPECT_EQ(Sixteen(lM), (std::vector<double>{100, 101, 102, 0, 104, 105, 106, 0, 108, 109, 110, 0, 0, 0, 0, 1}));
}

TEST(KmMatrixTest, RsetCopiesTheRotationOnly)
{
    double lFrom[4][4];
    double lTo[4][4] = {};
    FillSequence(lFrom);
    EXPECT_EQ(KmRset(lTo, lFrom), lTo);
    EXPECT_EQ(Sixteen(lTo), (std::vector<double>{100, 101, 102, 0, 104, 105, 106, 0, 108, 109, 110, 0, 0, 0, 0, 0}));
}

TEST(KmMatrixTest, RiTransposesAlsoInPlaceAndLeavesTheFourthRowAndColumn)
{
    double lFrom[4][4];
    double lTo[4][4] = {};
    FillSequence(lFrom);
    EXPECT_EQ(KmRi(lTo, lFrom), lTo);
    EXPECT_EQ(Sixteen(lTo), (std::vector<double>{100, 104, 108, 0, 101, 105, 109, 0, 102, 106, 110, 0, 0, 0, 0, 0}));
    EXPECT_EQ(KmRi(lFrom, lFrom), lFrom);
    EXPECT_EQ(Sixteen(lFrom), (std::vector<double>{100, 104, 108, 103, 101, 105, 109, 107, 102, 106, 110, 111, 112, 113, 114, 115}));
}

TEST(KmMatrixTest, RowsAreTheImagesOfTheAxes)
{
    double lM[4][4];
    FillSequence(lM);
    double lV[4] = {1, 10, 100, 99};
    EXPECT_EQ(KmRV(lV, lM, lV), lV);
    EXPECT_EQ(Triple(lV), (std::vector<double>{100 + 1040 + 10800, 101 + 1050 + 10900, 102 + 1060 + 11000}));
    EXPECT_EQ(lV[3], 99);
}

TEST(KmMatrixTest, AProductAppliesItsSecondFactorFirst)
{
    double lA[4][4];
    double lB[4][4];
    double lAB[4][4];
    KmXYZtoR(lA, 0, 0, 90);
    KmXYZtoR(lB, 90, 0, 0);
    EXPECT_EQ(KmRR(lAB, lA, lB), lAB);
    const double lY[3] = {0, 1, 0};
    double       lImage[3];
    KmRV(lImage, lAB, lY);
    EXPECT_NEAR(lImage[0], 0, 1e-15);
    EXPECT_NEAR(lImage[1], 0, 1e-15);
    EXPECT_NEAR(lImage[2], 1, 1e-15);
}

TEST(KmMatrixTest, AProductMayOverwriteItsFactors)
{
    KRandomAngles lAngles(42);
    for (int lStep = 0; lStep < 1000; ++lStep)
    {
        double lA[4][4];
        double lB[4][4];
        FillSequence(lA);
        FillSequence(lB);
        lAngles.NextRotation(lA);
        lAngles.NextRotation(lB);
        double lProduct[4][4];
        FillSequence(lProduct);
        KmRR(lProduct, lA, lB);
        for (int lRow = 0; lRow < 3; ++lRow)
        {
            for (int lColumn = 0; lColumn < 3; ++lColumn)
            {
                ASSERT_EQ(lProduct[lRow][lColumn],
                          lB[lRow][0] * lA[0][lColumn] + lB[lRow][1] * lA[1][lColumn] + lB[lRow][2] * lA[2][lColumn]);
            }
        }
        double lIntoA[4][4];
        double lIntoB[4][4];
        Copy(lIntoA, lA);
        Copy(lIntoB, lB);
        KmRR(lIntoA, lIntoA, lB);
        KmRR(lIntoB, lA, lIntoB);
        ASSERT_EQ(Sixteen(lIntoA), Sixteen(lProduct));
        ASSERT_EQ(Sixteen(lIntoB), Sixteen(lProduct));
        KmRR(lProduct, lA, lA);
        KmRR(lA, lA, lA);
        ASSERT_EQ(Sixteen(lA), Sixteen(lProduct));
    }
}

TEST(KmMatrixTest, ARotationTimesItsInverseIsTheIdentity)
{
    KRandomAngles lAngles(43);
    for (int lStep = 0; lStep < 1000; ++lStep)
    {
        double lR[4][4];
        double lInverse[4][4];
        double lProduct[4][4];
        lAngles.NextRotation(lR);
        KmRi(lInverse, lR);
        KmRR(lProduct, lR, lInverse);
        double lIdentity[4][4];
        KmId(lIdentity);
        ASSERT_LT(LargestDifference(lProduct, lIdentity), 1e-14);
    }
}

} // namespace
} // namespace qexsdk
