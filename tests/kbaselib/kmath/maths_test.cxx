#include <kbaselib/kmath/maths.h>

#include <tests/support/nonfinite.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace qexsdk
{
namespace
{

using namespace qextest;

constexpr double kTiny = std::numeric_limits<double>::denorm_min();

struct KNormCase
{
    const char* mWhat;
    double      mX, mY, mZ;
    double      mNorm;
};

class KNormTest : public testing::TestWithParam<KNormCase>
{
};

TEST_P(KNormTest, IsTheLength)
{
    const KNormCase& lCase = GetParam();
    EXPECT_DOUBLE_EQ(kNorm(lCase.mX, lCase.mY, lCase.mZ), lCase.mNorm) << lCase.mWhat;
    EXPECT_DOUBLE_EQ(kNorm(lCase.mZ, -lCase.mX, lCase.mY), lCase.mNorm) << lCase.mWhat;
    EXPECT_DOUBLE_EQ(kNorm(lCase.mY, lCase.mZ, -lCase.mX), lCase.mNorm) << lCase.mWhat;
}

INSTANTIATE_TEST_SUITE_P(Lengths, KNormTest,
                         testing::Values(KNormCase{"zero", 0, 0, 0, 0}, KNormCase{"plain", 2, 3, 6, 7},
                                         KNormCase{"sum of squares zero", 0, 0, 1e-300, 1e-300},
                                         KNormCase{"sum of squares zero, three components", 2e-200, 3e-200, 6e-200, 7e-200},
                                         KNormCase{"sum of squares subnormal", 2e-155, 3e-155, 6e-155, 7e-155},
                                         KNormCase{"subnormal", kTiny, 0, 0, kTiny},
                                         KNormCase{"sum of squares infinite", 2e200, 3e200, 6e200, 7e200},
                                         KNormCase{"largest", 0, 0, std::numeric_limits<double>::max(), std::numeric_limits<double>::max()},
                                         KNormCase{"infinite", kInf, 1, 2, kInf}, KNormCase{"overflow", 1.5e308, 1.5e308, 0, kInf}));

TEST(MathsTest, NormPropagatesNan)
{
    EXPECT_TRUE(std::isnan(kNorm(std::nan(""), 1.0, 2.0)));
    EXPECT_TRUE(std::isnan(kNorm(kInf, std::nan(""), 0.0)));
}

/// The order of the sum decides the last bit.
TEST(MathsTest, SumsInTheStatedOrder)
{
    std::mt19937_64                        lRandom(31);
    std::uniform_real_distribution<double> lNumber(-10, 10);
    for (int lStep = 0; lStep < 10000; ++lStep)
    {
        const double lX = lNumber(lRandom);
        const double lY = lNumber(lRandom);
        const double lZ = lNumber(lRandom);
        ASSERT_EQ(kNorm(lX, lY, lZ), std::sqrt(lZ * lZ + (lX * lX + lY * lY)));
        ASSERT_EQ(kHypot(lX, lY), std::sqrt(lY * lY + lX * lX));
    }
}

TEST(MathsTest, RootsMatchTheStandardFunctions)
{
    EXPECT_EQ(kSqrt(2.0), std::sqrt(2.0));
    EXPECT_EQ(kSqrtnz(2.25), 1.5);
    EXPECT_TRUE(std::isnan(kSqrt(-1.0)));
    EXPECT_TRUE(std::isnan(kSqrtnz(-1.0)));
    EXPECT_EQ(kHypot(3.0, -4.0), 5.0);
}

TEST(MathsTest, AnglesMatchTheStandardFunctions)
{
    EXPECT_EQ(kSin(0.7), std::sin(0.7));
    EXPECT_EQ(kCos(0.7), std::cos(0.7));
    EXPECT_EQ(kAsin(0.7), std::asin(0.7));
    EXPECT_EQ(kAtan(-1.0, -2.0), std::atan2(-1.0, -2.0));
    EXPECT_EQ(kAtand(1.0, -1.0), 57.29577951308232 * std::atan2(1.0, -1.0));
    EXPECT_EQ(kAsind(0.5), 57.29577951308232 * std::asin(0.5));
    EXPECT_TRUE(std::isnan(kAsind(1.5)));
    EXPECT_EQ(kAtand(0.0, -1.0), 180.0);
    EXPECT_EQ(kAtand(-0.0, -1.0), -180.0);
}

/// Together or separately, by pointer or by reference: the same bits. The volatile results keep the compiler from merging the standard
/// calls into one.
TEST(MathsTest, SineAndCosineTogetherMatchSeparateCalls)
{
    std::mt19937_64                        lRandom(32);
    std::uniform_real_distribution<double> lNumber(-720, 720);
    for (int lStep = 0; lStep < 100000; ++lStep)
    {
        const double    lAngle = lStep < 1000 ? lStep - 500 : lNumber(lRandom);
        volatile double lSin = std::sin(lAngle);
        volatile double lCos = std::cos(lAngle);
        const double    lRadians = 0.017453292519943295 * lAngle;
        volatile double lSind = std::sin(lRadians);
        volatile double lCosd = std::cos(lRadians);
        double          lCosine;
        ASSERT_EQ(kSinCos(lAngle, &lCosine), lSin);
        ASSERT_EQ(lCosine, lCos);
        ASSERT_EQ(kSinCosd(lAngle, &lCosine), lSind);
        ASSERT_EQ(lCosine, lCosd);
        ASSERT_EQ(kSinCosd(lAngle, lCosine), lSind);
        ASSERT_EQ(lCosine, lCosd);
        ASSERT_EQ(kSinCos(lAngle, lCosine), lSin);
        ASSERT_EQ(lCosine, lCos);
    }
}

TEST(MathsTest, WorksWithOtherTypesAndIntegers)
{
    EXPECT_EQ(kNorm(0, 0, 1e-300), 1e-300);
    EXPECT_EQ(kNorm<double>(2, 3, 6), 7.0);
    EXPECT_EQ(kSqrt<float>(4), 2.0F);
    float lCosine;
    EXPECT_FLOAT_EQ(kSinCosd<float>(60, &lCosine), 0.8660254F);
    EXPECT_FLOAT_EQ(lCosine, 0.5F);
}

} // namespace
} // namespace qexsdk
