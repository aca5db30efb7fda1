#include <qexscene/kqexvector4.h>

#include <gtest/gtest.h>

using namespace qexsdk;

namespace
{

TEST(KQexVector4, IsZeroByDefault)
{
    const KQexVector4 lV;
    EXPECT_FALSE(lV != KQexVector4(0.0, 0.0, 0.0, 0.0));
}

TEST(KQexVector4, WIsZeroUnlessGiven)
{
    EXPECT_EQ(KQexVector4(1.0, 2.0, 3.0)[3], 0.0);
    EXPECT_EQ(KQexVector4(1.0, 2.0, 3.0, 4.0)[3], 4.0);
}

TEST(KQexVector4, ComparesAllFourComponentsExactly)
{
    const KQexVector4 lV(1.0, 2.0, 3.0, 4.0);
    for (int lI = 0; lI < 4; ++lI)
    {
        KQexVector4 lOther(lV);
        EXPECT_FALSE(lOther != lV);
        lOther[lI] += 1e-15;
        EXPECT_TRUE(lOther != lV) << lI;
        EXPECT_FALSE(lOther == lV) << lI;
    }
}

TEST(KQexVector4, WorksComponentByComponent)
{
    KQexVector4 lV(1.0, 2.0, 3.0, 4.0);
    lV *= KQexVector4(2.0, 3.0, 4.0, 5.0);
    EXPECT_EQ(lV, KQexVector4(2.0, 6.0, 12.0, 20.0));
    lV += KQexVector4(1.0, 1.0, 1.0, 1.0);
    EXPECT_EQ(lV, KQexVector4(3.0, 7.0, 13.0, 21.0));
}

TEST(KQexVector4, LengthIgnoresW)
{
    EXPECT_EQ(KQexVector4(2.0, 3.0, 6.0, 100.0).Length(), 7.0);
}

TEST(KQexVector4, ConvertsFromThreeComponentsWithWZero)
{
    const KQexVector4 lExpected(1.0, 2.0, 3.0, 0.0);
    KQexVector4       lV(9.0, 9.0, 9.0, 9.0);
    lV = qexVectorTemplate3<double>(1.0, 2.0, 3.0);
    EXPECT_EQ(lV, lExpected);
    lV = KgeTVector(1.0, 2.0, 3.0);
    EXPECT_EQ(lV, lExpected);
    lV = KgeRVector(1.0, 2.0, 3.0);
    EXPECT_EQ(lV, lExpected);
    const KQexVector4 lConverted = KgeTVector(1.0, 2.0, 3.0);
    EXPECT_EQ(lConverted, lExpected);
}

TEST(KQexVector4, ConvertsToThreeComponents)
{
    const KQexVector4                lV(1.0, 2.0, 3.0, 4.0);
    const qexVectorTemplate3<double> lThree = lV;
    EXPECT_EQ(lThree, qexVectorTemplate3<double>(1.0, 2.0, 3.0));

    const KgeTVector lConverted = lV;
    EXPECT_EQ(lConverted.mData[2], 3.0);
    EXPECT_EQ(lConverted.mData[3], 1.0);
    const KgeTVector lConstructed(lV);
    EXPECT_EQ(lConstructed.mData[0], 1.0);
    KgeTVector lAssigned;
    lAssigned.mData[3] = 7.0;
    lAssigned = lV;
    EXPECT_EQ(lAssigned.mData[1], 2.0);
    EXPECT_EQ(lAssigned.mData[3], 7.0) << "assignment keeps the fourth component";

    KgeRVector lAngles = lV;
    EXPECT_EQ(lAngles.mData[2], 3.0);
    lAngles = KQexVector4(4.0, 5.0, 6.0);
    EXPECT_EQ(lAngles.mData[0], 4.0);

    const double* lNumbers = lV;
    EXPECT_EQ(lNumbers[3], 4.0);
}

} // namespace
