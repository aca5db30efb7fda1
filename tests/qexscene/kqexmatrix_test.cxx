#include <qexscene/kqexmatrix.h>

#include <gtest/gtest.h>

using namespace qexsdk;

namespace
{

KQexMatrix Matrix(KQexVector4 pX, KQexVector4 pY, KQexVector4 pZ, KQexVector4 pT)
{
    KQexMatrix lMatrix;
    lMatrix.mData[0] = pX;
    lMatrix.mData[1] = pY;
    lMatrix.mData[2] = pZ;
    lMatrix.mData[3] = pT;
    lMatrix.mData[3][3] = 1.0;
    return lMatrix;
}

/// A quarter turn about z, and a translation along x.
const KQexMatrix kTurn = Matrix({0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0});
const KQexMatrix kTranslation = Matrix({1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {5.0, 0.0, 0.0});

TEST(KQexMatrix, IsTheIdentityByDefault)
{
    EXPECT_EQ(KQexMatrix().Map({1.0, 2.0, 3.0}), KQexVector4(1.0, 2.0, 3.0));
    EXPECT_EQ(KQexMatrix().mData[3][3], 1.0);
}

TEST(KQexMatrix, TheRightFactorIsAppliedFirst)
{
    EXPECT_EQ((kTurn * kTranslation).Map({0.0, 0.0, 0.0}), KQexVector4(0.0, 5.0, 0.0));
    EXPECT_EQ((kTranslation * kTurn).Map({0.0, 0.0, 0.0}), KQexVector4(5.0, 0.0, 0.0));
    EXPECT_EQ((kTranslation * kTurn).Map({1.0, 0.0, 0.0}), KQexVector4(5.0, 1.0, 0.0));
}

TEST(KQexMatrix, ItsTranslationIsTheImageOfTheOrigin)
{
    EXPECT_EQ((kTurn * kTranslation).GetT(), KQexVector4(0.0, 5.0, 0.0, 0.0));
    EXPECT_EQ((kTurn * kTranslation).mData[3][3], 1.0);
}

} // namespace
