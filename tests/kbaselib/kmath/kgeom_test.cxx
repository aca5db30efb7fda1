#include <kbaselib/kmath/kgeom.h>

#include <tests/kbaselib/kmath/rotations.h>

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

std::vector<double> Four(const KgeTVector& pV)
{
    return std::vector<double>(pV.mData, pV.mData + 4);
}

/// A vector class of another layer.
struct KOtherVector
{
           operator const double*() const { return mData; }
    double mData[4] = {4, 5, 6, 8};
};

TEST(KgeTVectorTest, OnlyConstructionSetsTheFourthComponent)
{
    EXPECT_EQ(Four(KgeTVector()), (std::vector<double>{0, 0, 0, 1}));

    KgeTVector lSeven(1, 2, 3);
    lSeven.mData[3] = 7;
    const KgeTVector lCopy(lSeven);
    EXPECT_EQ(Four(lCopy), (std::vector<double>{1, 2, 3, 1}));

    const KgeTVector lOther(4, 5, 6);
    lSeven = lOther;
    EXPECT_EQ(Four(lSeven), (std::vector<double>{4, 5, 6, 7}));

    const double lArray[3] = {8, 9, 10};
    lSeven = lArray;
    EXPECT_EQ(Four(lSeven), (std::vector<double>{8, 9, 10, 7}));

    lSeven = KOtherVector();
    EXPECT_EQ(Four(lSeven), (std::vector<double>{4, 5, 6, 7}));

    lSeven.Init();
    EXPECT_EQ(Four(lSeven), (std::vector<double>{0, 0, 0, 7}));
}

TEST(KgeTVectorTest, AccessesItsElements)
{
    KgeTVector lV(1, 2, 3);
    lV[1] = 5;
    const KgeTVector& lConst = lV;
    EXPECT_EQ(lConst[0], 1);
    EXPECT_EQ(lConst[1], 5);
    EXPECT_EQ(lConst[3], 1);
}

TEST(KgeTVectorTest, OperationsKeepTheFourthComponent)
{
    KgeTVector       lOut;
    const KgeTVector lA(2, 3, 6);
    lOut.mData[3] = 7;
    EXPECT_EQ(Four(KgeSet(lOut, 1, 2, 3)), (std::vector<double>{1, 2, 3, 7}));
    EXPECT_EQ(Triple(KgeSet(lOut, lA).mData), (std::vector<double>{2, 3, 6}));
    EXPECT_EQ(Triple(KgeAdd(lOut, lA, lA).mData), (std::vector<double>{4, 6, 12}));
    EXPECT_EQ(Triple(KgeMult(lOut, lA, 0.5).mData), (std::vector<double>{1, 1.5, 3}));
    EXPECT_EQ(Triple(KgeNorm(lOut, lA).mData), (std::vector<double>{2 * (1.0 / 7), 3 * (1.0 / 7), 6 * (1.0 / 7)}));
    EXPECT_EQ(KgeLength(lA), 7);
    EXPECT_EQ(lOut.mData[3], 7);
}

TEST(KgeTVectorTest, OnlyAnExactZeroHasNoDirection)
{
    KgeTVector lOut(1, 1, 1);
    KgeNorm(lOut, KgeTVector(0, 0, 0));
    EXPECT_EQ(Triple(lOut.mData), (std::vector<double>{0, 0, 0}));
    KgeNorm(lOut, KgeTVector(0, 0, 1e-300));
    EXPECT_EQ(Triple(lOut.mData), (std::vector<double>{0, 0, 1}));
}

TEST(KgeRVectorTest, HoldsThreeAngles)
{
    KgeRVector lV;
    EXPECT_EQ(Triple(lV), (std::vector<double>{0, 0, 0}));
    const double lArray[3] = {1, 2, 3};
    lV = lArray;
    EXPECT_EQ(Triple(lV), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(lV[2], 3);
    KgeRVector lOther;
    lOther = lV;
    EXPECT_EQ(Triple(lOther), (std::vector<double>{1, 2, 3}));
    lOther = KOtherVector();
    EXPECT_EQ(Triple(lOther), (std::vector<double>{4, 5, 6}));
    lV.Init();
    EXPECT_EQ(Triple(lV), (std::vector<double>{0, 0, 0}));
}

TEST(KgeRMatrixTest, IsTheIdentityOrARotation)
{
    static_assert(!std::is_convertible_v<KgeRVector, KgeRMatrix>, "the conversion from angles must be explicit");
    const std::vector<double> lIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(Sixteen(KgeRMatrix().mData), lIdentity);

    const KgeRVector lAngles(10, 20, 30);
    KgeRMatrix       lM(lAngles);
    double           lExpected[4][4];
    KmId(lExpected);
    KmXYZtoR(lExpected, 10, 20, 30);
    EXPECT_EQ(Sixteen(lM.mData), Sixteen(lExpected));
    lM.Init();
    EXPECT_EQ(Sixteen(lM.mData), lIdentity);
}

TEST(KgeRMatrixTest, OperationsMatchTheKmFunctions)
{
    KRandomAngles lRandom(8000);
    for (int lStep = 0; lStep < 100; ++lStep)
    {
        KgeRMatrix lA;
        KgeRMatrix lB;
        lRandom.NextRotation(lA.mData);
        lRandom.NextRotation(lB.mData);
        double     lExpected[4][4];
        KgeRMatrix lOut;
        KmId(lExpected);

        ASSERT_EQ(&KgeSet(lOut, lA), &lOut);
        ASSERT_EQ(Sixteen(lOut.mData), Sixteen(lA.mData));
        KgeInverse(lOut, lA);
        ASSERT_EQ(Sixteen(lOut.mData), Sixteen(KmRi(lExpected, lA.mData)));
        KgeMult(lOut, lA, lB);
        ASSERT_EQ(Sixteen(lOut.mData), Sixteen(KmRR(lExpected, lA.mData, lB.mData)));

        const KgeTVector lV(1, 2, 3);
        KgeTVector       lImage;
        double           lExpectedV[3];
        KgeMult(lImage, lA, lV);
        ASSERT_EQ(Triple(lImage.mData), Triple(KmRV(lExpectedV, lA.mData, lV.mData)));
    }
}

TEST(KgeRMatrixTest, AnglesMatchTheKmFunctions)
{
    KRandomAngles lRandom(9000);
    for (int lCode = 0; lCode < KmEulerAxisCount; ++lCode)
    {
        KgeRVector lAngles;
        lRandom.Next(lAngles.mData);
        double     lExpected[4][4];
        KgeRMatrix lM;
        KmId(lExpected);
        KgeSet(lM, lAngles, lCode);
        EXPECT_EQ(Sixteen(lM.mData), Sixteen(KmVIJKtoR(lExpected, lAngles, lCode)));
        KgeSet(lM, lAngles);
        EXPECT_EQ(Sixteen(lM.mData), Sixteen(KmVXYZtoR(lExpected, lAngles)));

        KgeRVector lOut;
        double     lExpectedV[3];
        KgeSet(lOut, lM, lCode);
        EXPECT_EQ(Triple(lOut), Triple(KmRtoVord(lExpectedV, lM.mData, lCode)));
        KgeSet(lOut, lM);
        EXPECT_EQ(Triple(lOut), Triple(KmRtoVXYZ(lExpectedV, lM.mData)));
        KgeSetXYZ(lOut, lM);
        EXPECT_EQ(Triple(lOut), Triple(lExpectedV));
    }
}

} // namespace
} // namespace qexsdk
