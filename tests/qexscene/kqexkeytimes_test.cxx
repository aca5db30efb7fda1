#include <qexscene/kqexkeytimes.h>

#include <kbaselib/kbase/ktime.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace qexsdk
{
namespace
{

using KTimes = std::vector<std::int64_t>;

struct KTimesCase
{
    const char* mWhat;
    KTimes      mTimes; ///< Sorted.
};

KTimes Frames(int pCount, const KFrameRate& pRate)
{
    KTimes lTimes;
    for (int lFrame = 0; lFrame < pCount; ++lFrame)
    {
        lTimes.push_back(KTime::FromFrame(lFrame, pRate).Get());
    }
    return lTimes;
}

KTimes Joined(KTimes pFirst, const KTimes& pSecond, std::int64_t pOffset)
{
    for (const std::int64_t lTime : pSecond)
    {
        pFirst.push_back(lTime + pOffset);
    }
    return pFirst;
}

class KQexKeyTimesTable : public testing::TestWithParam<KTimesCase>
{
protected:
    /// Adds the times, shuffled by the seed; 0: in order.
    void Fill(KQexKeyTimes& pTimes, unsigned pSeed) const
    {
        KTimes lOrder = GetParam().mTimes;
        if (pSeed != 0)
        {
            std::shuffle(lOrder.begin(), lOrder.end(), std::mt19937(pSeed));
        }
        for (const std::int64_t lTime : lOrder)
        {
            ASSERT_TRUE(pTimes.Insert(pTimes.Find(lTime) + 1, lTime));
        }
    }
};

TEST_P(KQexKeyTimesTable, FindLocateAndGetAgreeWithTheList)
{
    const KTimes& lTimes = GetParam().mTimes;
    for (const unsigned lSeed : {0U, 1U, 2U})
    {
        KQexKeyTimes lKeyTimes;
        Fill(lKeyTimes, lSeed);
        ASSERT_EQ(lKeyTimes.GetCount(), static_cast<int>(lTimes.size()));
        for (int lKey = 0; lKey < lKeyTimes.GetCount(); ++lKey)
        {
            const std::int64_t lTime = lTimes[static_cast<std::size_t>(lKey)];
            ASSERT_EQ(lKeyTimes.Get(lKey), lTime) << lKey;
            ASSERT_EQ(lKeyTimes.Find(lTime), lKey);
            ASSERT_EQ(lKeyTimes.Find(lTime - 1), std::upper_bound(lTimes.begin(), lTimes.end(), lTime - 1) - lTimes.begin() - 1);
            if (lKey + 1 < lKeyTimes.GetCount())
            {
                const std::int64_t           lNext = lTimes[static_cast<std::size_t>(lKey) + 1];
                const KQexKeyTimes::KSegment lSegment = lKeyTimes.Locate(lNext - 1);
                ASSERT_EQ(lSegment.mKey, lKey);
                ASSERT_EQ(lSegment.mSince, static_cast<std::uint64_t>(lNext - 1 - lTime));
                ASSERT_EQ(lSegment.mStep, static_cast<std::uint64_t>(lNext - lTime));
            }
        }
    }
}

TEST_P(KQexKeyTimesTable, TheCommonStepDividesEveryDistance)
{
    std::uint64_t lExpected = 0;
    for (const std::int64_t lTime : GetParam().mTimes)
    {
        lExpected = std::gcd(lExpected, static_cast<std::uint64_t>(lTime - GetParam().mTimes.front()));
    }
    for (const unsigned lSeed : {0U, 1U})
    {
        KQexKeyTimes lKeyTimes;
        Fill(lKeyTimes, lSeed);
        EXPECT_EQ(lKeyTimes.GetCommonStep(), lExpected) << GetParam().mWhat;
    }
}

TEST_P(KQexKeyTimesTable, TimesAddedInAnyOrderAreTheSame)
{
    KQexKeyTimes lOne;
    KQexKeyTimes lOther;
    Fill(lOne, 0);
    Fill(lOther, 3);
    EXPECT_TRUE(lOne.IsSame(lOther));
    EXPECT_TRUE(lOther.IsSame(lOne));
    ASSERT_TRUE(lOther.Append((GetParam().mTimes.empty() ? 0 : GetParam().mTimes.back()) + 5));
    EXPECT_FALSE(lOne.IsSame(lOther));
    ASSERT_TRUE(lOne.Append((GetParam().mTimes.empty() ? 0 : GetParam().mTimes.back()) + 6));
    EXPECT_FALSE(lOne.IsSame(lOther));
}

INSTANTIATE_TEST_SUITE_P(Table, KQexKeyTimesTable,
                         testing::Values(KTimesCase{"none", {}}, KTimesCase{"one", {7}}, KTimesCase{"two", {-7, 7}},
                                         KTimesCase{"frames", Frames(100, {120, 1})}, //
                                         KTimesCase{"two rates", Joined(Frames(40, {30, 1}), Frames(40, {24, 1}), 705600000LL * 9)},
                                         KTimesCase{"a rate that does not divide a second's ticks", Frames(300, {2997, 25})},
                                         KTimesCase{"two such rates",
                                                    Joined(Frames(200, {2997, 50}), Frames(200, {11, 1}), 705600000LL * 9)},
                                         KTimesCase{"squares", {1, 4, 9, 16, 25, 36, 49, 64, 81, 100, 121, 144, 169}},
                                         KTimesCase{"multiples", {0, 6, 18, 24, 60, 66, 72, 90, 300, 306}},
                                         KTimesCase{"neighbouring ticks", {0, 1, 2, 3, 5, 6, 7, 9, 10, 11, 12, 14}}));

} // namespace
} // namespace qexsdk
