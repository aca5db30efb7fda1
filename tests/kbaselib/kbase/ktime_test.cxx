#include <kbaselib/kbase/ktime.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <type_traits>

namespace qexsdk
{
namespace
{

// Ticks are written out as such: neither a bare number nor seconds become a time by themselves.
static_assert(std::is_constructible_v<KTime, int> && std::is_constructible_v<KTime, long> && std::is_constructible_v<KTime, long long>);
static_assert(!std::is_convertible_v<int, KTime> && !std::is_convertible_v<long long, KTime>);
static_assert(!std::is_constructible_v<KTime, double> && !std::is_constructible_v<KTime, float> &&
              !std::is_constructible_v<KTime, long double>);
static_assert(!std::is_convertible_v<double, KTime> && !std::is_assignable_v<KTime&, double> && !std::is_assignable_v<KTime&, int>);

TEST(KTimeTest, CountsFlicks)
{
    EXPECT_EQ(KTime().Get(), 0);
    EXPECT_EQ(KTime(0).Get(), 0);
    EXPECT_EQ(KTime(-5LL).Get(), -5);
    EXPECT_EQ(KTime::kTicksPerSecond, 705600000);
    KTime lTime;
    lTime = KTime(12);
    EXPECT_EQ(lTime.Get(), 12);
    lTime.Set(13);
    EXPECT_EQ(lTime.Get(), 13);
}

struct KRateCase
{
    KFrameRate mRate;
    long long  mTicks; ///< Flicks per frame.
};

class KTimeRateTest : public testing::TestWithParam<KRateCase>
{
};

TEST_P(KTimeRateTest, AFrameIsAWholeNumberOfFlicks)
{
    const KFrameRate lRate = GetParam().mRate;
    for (const long long lFrame : {0LL, 1LL, 2LL, 29LL, 30LL, 107891LL, 1000000007LL, -1LL, -31LL, -1000000007LL})
    {
        const KTime lTime = KTime::FromFrame(lFrame, lRate);
        EXPECT_EQ(lTime.Get(), lFrame * GetParam().mTicks);
        EXPECT_EQ(lTime.GetFrame(lRate), lFrame);
        EXPECT_EQ((lTime + KTime(1)).GetFrame(lRate), lFrame);
        EXPECT_EQ((lTime - KTime(1)).GetFrame(lRate), lFrame - 1);
    }
    EXPECT_DOUBLE_EQ(lRate.GetDouble(), 705600000.0 / static_cast<double>(GetParam().mTicks));
}

INSTANTIATE_TEST_SUITE_P(Rates, KTimeRateTest,
                         testing::Values(KRateCase{{24, 1}, 29400000}, KRateCase{{25, 1}, 28224000}, KRateCase{{30, 1}, 23520000},
                                         KRateCase{{48, 1}, 14700000}, KRateCase{{50, 1}, 14112000}, KRateCase{{60, 1}, 11760000},
                                         KRateCase{{90, 1}, 7840000}, KRateCase{{100, 1}, 7056000}, KRateCase{{120, 1}, 5880000},
                                         KRateCase{{240, 1}, 2940000}, KRateCase{{30000, 1001}, 23543520}));

/// At these rates a frame is not a whole number of flicks: frames must stay in order, within half a flick, and round-trip.
TEST(KTimeTest, ErrorsDoNotAccumulateAtOtherRates)
{
    std::mt19937_64 lRandom(70560);
    for (const KFrameRate lRate : {KFrameRate{7, 1}, KFrameRate{1000000, 9973}, KFrameRate{1000000, 1}, KFrameRate{11, 10000}})
    {
        for (int lStep = 0; lStep < 2000; ++lStep)
        {
            const long long   lFrame = static_cast<long long>(lRandom() % 2000000) - 1000000;
            const KTime       lTime = KTime::FromFrame(lFrame, lRate);
            const long double lExact = static_cast<long double>(lFrame) * 705600000.0L * lRate.mSeconds / lRate.mFrames;
            ASSERT_LE(std::fabs(static_cast<double>(static_cast<long double>(lTime.Get()) - lExact)), 0.5001);
            ASSERT_EQ(lTime.GetFrame(lRate), lFrame);
            ASSERT_EQ((lTime - KTime(1)).GetFrame(lRate), lFrame - 1);
        }
    }
}

TEST(KTimeTest, ConvertsSeconds)
{
    EXPECT_EQ(KTime::FromSeconds(1.0).Get(), 705600000);
    EXPECT_EQ(KTime::FromSeconds(-0.5).Get(), -352800000);
    EXPECT_EQ(KTime::FromSeconds(1.0 / 120.0).Get(), 5880000);
    EXPECT_EQ(KTime::FromSeconds(1001.0 / 30000.0).Get(), 23543520);
    EXPECT_DOUBLE_EQ(KTime(352800000).GetSeconds(), 0.5);
    EXPECT_EQ(KTime::FromSeconds(std::numeric_limits<double>::quiet_NaN()).Get(), 0);
    EXPECT_EQ(KTime::FromSeconds(1e300).Get(), KTime::kMax);
    EXPECT_EQ(KTime::FromSeconds(-std::numeric_limits<double>::infinity()).Get(), KTime::kMin);
}

TEST(KTimeTest, IsOrdered)
{
    const KTime lEarly(-1);
    const KTime lLate(1);
    EXPECT_TRUE(lEarly < lLate);
    EXPECT_TRUE(lEarly <= lLate);
    EXPECT_TRUE(lLate > lEarly);
    EXPECT_TRUE(lLate >= lLate);
    EXPECT_TRUE(lLate == KTime(1));
    EXPECT_TRUE(lLate != lEarly);
    EXPECT_FALSE(lLate < KTime(1));
    EXPECT_FALSE(lLate > KTime(1));
}

TEST(KTimeTest, SumsAreClamped)
{
    EXPECT_EQ((KTime(2) + KTime(3)).Get(), 5);
    EXPECT_EQ((KTime(2) - KTime(3)).Get(), -1);
    KTime lTime(KTime::kMax);
    lTime += KTime(1);
    EXPECT_EQ(lTime.Get(), KTime::kMax);
    lTime = KTime(KTime::kMin);
    lTime -= KTime(1);
    EXPECT_EQ(lTime.Get(), KTime::kMin);
    EXPECT_EQ((KTime(KTime::kMin) + KTime(-1)).Get(), KTime::kMin);
    EXPECT_EQ((KTime(1) + KTime(KTime::kMin)).Get(), KTime::kMin + 1);
    EXPECT_EQ((KTime(KTime::kMax) - KTime(KTime::kMin)).Get(), KTime::kMax);
    EXPECT_EQ((KTime(-2) - KTime(KTime::kMin)).Get(), KTime::kMax - 1);
}

TEST(KTimeTest, FramesAreClamped)
{
    EXPECT_EQ(KTime::FromFrame(std::numeric_limits<long long>::max(), {30, 1}).Get(), KTime::kMax);
    EXPECT_EQ(KTime::FromFrame(std::numeric_limits<long long>::min(), {30, 1}).Get(), KTime::kMin);
    for (const long long lBack : {1LL, 23520000LL, 705600000LL, 3 * 705600000LL})
    {
        EXPECT_EQ(KTime(KTime::kMax - lBack).GetFrame({30, 1}), (KTime::kMax - lBack) / 23520000) << lBack;
    }
    // At the limits themselves the frame is only accurate to two seconds.
    EXPECT_NEAR(static_cast<double>(KTime(KTime::kMax).GetFrame({30, 1})), 392150171634.0, 60.0);
    EXPECT_NEAR(static_cast<double>(KTime(KTime::kMin).GetFrame({30, 1})), -392150171635.0, 60.0);
}

} // namespace
} // namespace qexsdk
