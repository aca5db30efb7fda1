#include <qexscene/kqexanimcurve.h>

#include <qexscene/kqexscene.h>
#include <tests/support/memorywatch.h>
#include <tests/support/nonfinite.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

using KKeyMap = std::map<long long, float>;

/// A curve without a scene, destroyed at the end of its test.
class KOwnCurve
{
public:
    KOwnCurve() : mCurve(KQexAnimCurve::Create(nullptr, "curve")) {}
    ~KOwnCurve() { mCurve->Destroy(false, false); }
    KOwnCurve(const KOwnCurve&) = delete;
    KOwnCurve& operator=(const KOwnCurve&) = delete;

    KQexAnimCurve* operator->() const { return mCurve; }
    KQexAnimCurve& operator*() const { return *mCurve; }

private:
    KQexAnimCurve* mCurve;
};

bool SameBits(float pA, float pB)
{
    return std::memcmp(&pA, &pB, sizeof(float)) == 0;
}

void ExpectKeys(const KQexAnimCurve& pCurve, const KKeyMap& pExpected)
{
    ASSERT_EQ(pCurve.GetKeyCount(), static_cast<int>(pExpected.size()));
    int lIndex = 0;
    for (const auto& [lTime, lValue] : pExpected)
    {
        ASSERT_EQ(pCurve.GetTime(lIndex).Get(), lTime) << "key " << lIndex;
        ASSERT_TRUE(SameBits(pCurve.GetValue(lIndex), lValue)) << "key " << lIndex;
        ++lIndex;
    }
}

/// Reference for Evaluate, from the definition, in long double.
double Reference(const KKeyMap& pKeys, long long pTime)
{
    if (pKeys.empty())
    {
        return 0.0;
    }
    const auto lNext = pKeys.upper_bound(pTime);
    if (lNext == pKeys.begin())
    {
        return static_cast<double>(lNext->second);
    }
    const auto lKey = std::prev(lNext);
    if (lNext == pKeys.end() || lKey->first == pTime)
    {
        return static_cast<double>(lKey->second);
    }
    const long double lStep = static_cast<long double>(lNext->first) - static_cast<long double>(lKey->first);
    const long double lWeight = (static_cast<long double>(pTime) - static_cast<long double>(lKey->first)) / lStep;
    const long double lFrom = static_cast<long double>(lKey->second);
    return static_cast<double>(lFrom + (static_cast<long double>(lNext->second) - lFrom) * lWeight);
}

TEST(KQexAnimCurve, IsOwnedByItsSceneAndKeepsItsName)
{
    KQexScene*     lScene = KQexScene::Create("scene");
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(lScene, "hip_tx");
    EXPECT_STREQ(lCurve->GetName(), "hip_tx");
    EXPECT_EQ(lCurve->GetScene(), lScene);
    EXPECT_TRUE(lCurve->Is(KQexAnimCurve::smClassId));
    EXPECT_EQ(lCurve->GetKeyCount(), 0);
    KQexAnimCurve* lOther = KQexAnimCurve::Create(lScene, "gone before the scene");
    lOther->Destroy(false, false);
    lScene->Destroy();
}

/// Counts calls of Destroy.
class KWatchedCurve : public KQexAnimCurve
{
public:
    KWatchedCurve(KQexScene* pScene, int& pDestroyed) : KQexAnimCurve(pScene, "watched"), mDestroyed(pDestroyed) {}

    void Destroy(bool pRecursive, bool pDependents) override
    {
        ++mDestroyed;
        KQexAnimCurve::Destroy(pRecursive, pDependents);
    }

private:
    int& mDestroyed;
};

TEST(KQexAnimCurve, ADerivedCurveSeesItsDestruction)
{
    int            lDestroyed = 0;
    KQexScene*     lScene = KQexScene::Create("scene");
    KQexAnimCurve* lCurve = new KWatchedCurve(lScene, lDestroyed);
    lCurve->Destroy(false, false);
    EXPECT_EQ(lDestroyed, 1);
    new KWatchedCurve(lScene, lDestroyed);
    lScene->Destroy();
    EXPECT_EQ(lDestroyed, 2);
}

TEST(KQexAnimCurve, AddKeySortsReplacesAndReturnsTheIndex)
{
    KOwnCurve lCurve;
    int       lLast = 99;
    EXPECT_EQ(lCurve->AddKey(KTime(20), KQexAnimCurveKey(KTime(0), 2.0F)), 0);
    EXPECT_EQ(lCurve->AddKey(KTime(40), KQexAnimCurveKey(KTime(0), 4.0F), nullptr), 1);
    EXPECT_EQ(lCurve->AddKey(KTime(10), KQexAnimCurveKey(KTime(0), 1.0F), &lLast), 0);
    EXPECT_EQ(lLast, 0);
    EXPECT_EQ(lCurve->AddKey(KTime(30), KQexAnimCurveKey(KTime(0), 3.0F), &lLast), 2);
    EXPECT_EQ(lLast, 2);
    EXPECT_EQ(lCurve->AddKey(KTime(40), KQexAnimCurveKey(KTime(0), 5.0F), &lLast), 3);
    EXPECT_EQ(lLast, 3);
    ExpectKeys(*lCurve, {{10, 1.0F}, {20, 2.0F}, {30, 3.0F}, {40, 5.0F}});
    const KQexAnimCurveKey lKey = lCurve->GetKey(2);
    EXPECT_EQ(lKey.GetTime().Get(), 30);
    EXPECT_EQ(lKey.GetValue(), 3.0F);
}

TEST(KQexAnimCurve, AnIndexOutOfRangeReturnsZeroAndChangesNothing)
{
    KOwnCurve lCurve;
    lCurve->AppendSample(KTime(10), 1.0F);
    for (const int lIndex : {-1, 1, INT_MAX, INT_MIN})
    {
        EXPECT_EQ(lCurve->GetValue(lIndex), 0.0F);
        EXPECT_EQ(lCurve->GetTime(lIndex).Get(), 0);
        EXPECT_EQ(lCurve->GetKey(lIndex).GetValue(), 0.0F);
        EXPECT_FALSE(lCurve->SetValue(lIndex, 7.0F));
        EXPECT_FALSE(lCurve->RemoveKey(lIndex));
    }
    ExpectKeys(*lCurve, {{10, 1.0F}});
}

TEST(KQexAnimCurve, SetValueRemoveKeyAndClear)
{
    KOwnCurve lCurve;
    for (int lKey = 0; lKey < 4; ++lKey)
    {
        ASSERT_TRUE(lCurve->AppendSample(KTime(10 * lKey), 1.0F));
    }
    EXPECT_TRUE(lCurve->SetValue(2, -0.0F));
    EXPECT_TRUE(lCurve->RemoveKey(1));
    ExpectKeys(*lCurve, {{0, 1.0F}, {20, -0.0F}, {30, 1.0F}});
    lCurve->Clear();
    EXPECT_EQ(lCurve->GetKeyCount(), 0);
    EXPECT_EQ(lCurve->GetMemoryUse(), 0U);
    EXPECT_TRUE(lCurve->AppendSample(KTime(-5), 3.0F));
    ExpectKeys(*lCurve, {{-5, 3.0F}});
}

struct KEvaluateCase
{
    const char* mWhat;
    KKeyMap     mKeys;
    long long   mTime;
    double      mExpected;
};

class KQexAnimCurveEvaluate : public testing::TestWithParam<KEvaluateCase>
{
};

TEST_P(KQexAnimCurveEvaluate, HasTheExpectedValue)
{
    KOwnCurve lCurve;
    for (const auto& [lTime, lValue] : GetParam().mKeys)
    {
        ASSERT_TRUE(lCurve->AppendSample(KTime(lTime), lValue));
    }
    const double lValue = lCurve->Evaluate(KTime(GetParam().mTime));
    if (std::isnan(GetParam().mExpected))
    {
        EXPECT_TRUE(std::isnan(lValue)) << GetParam().mWhat;
    }
    else
    {
        EXPECT_DOUBLE_EQ(lValue, GetParam().mExpected) << GetParam().mWhat;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, KQexAnimCurveEvaluate,
    testing::Values(KEvaluateCase{"no keys", {}, 5, 0.0},                                          //
                    KEvaluateCase{"one key, before", {{5, 2.0F}}, 4, 2.0},                         //
                    KEvaluateCase{"one key, at the earliest time", {{5, 2.0F}}, KTime::kMin, 2.0}, //
                    KEvaluateCase{"one key, after", {{5, 2.0F}}, 6, 2.0},                          //
                    KEvaluateCase{"at a key", {{0, 1.0F}, {4, 3.0F}}, 4, 3.0},                     //
                    KEvaluateCase{"between", {{0, 1.0F}, {4, 3.0F}}, 1, 1.5},                      //
                    KEvaluateCase{"before", {{0, 1.0F}, {4, 3.0F}}, -1, 1.0},                      //
                    KEvaluateCase{"after", {{0, 1.0F}, {4, 3.0F}}, 5, 3.0},                        //
                    KEvaluateCase{"equal values", {{0, 0.1F}, {7, 0.1F}}, 3, static_cast<double>(0.1F)},
                    KEvaluateCase{"largest values", {{0, -FLT_MAX}, {4, FLT_MAX}}, 2, 0.0},
                    KEvaluateCase{"whole time range", {{KTime::kMin, -1.0F}, {KTime::kMax, 1.0F}}, 0, 0.0},
                    KEvaluateCase{"start of the time range", {{KTime::kMin, -1.0F}, {KTime::kMax, 1.0F}}, KTime::kMin, -1.0},
                    KEvaluateCase{"end of the time range", {{KTime::kMin, -1.0F}, {KTime::kMax, 1.0F}}, KTime::kMax, 1.0},
                    KEvaluateCase{"at a number before NaN", {{0, 1.0F}, {4, kNanF}}, 0, 1.0},
                    KEvaluateCase{"at NaN", {{0, 1.0F}, {4, kNanF}}, 4, kNan},
                    KEvaluateCase{"between a number and NaN", {{0, 1.0F}, {4, kNanF}}, 1, kNan},
                    KEvaluateCase{"towards infinity", {{0, 1.0F}, {4, kInfF}}, 1, kInf},
                    KEvaluateCase{"from minus infinity", {{0, -kInfF}, {4, 1.0F}}, 3, -kInf},
                    KEvaluateCase{"between equal infinities", {{0, kInfF}, {4, kInfF}}, 1, kInf},
                    KEvaluateCase{"between opposite infinities", {{0, -kInfF}, {4, kInfF}}, 1, kNan}));

/// How the random tests choose key times.
enum KTimesKind
{
    eTIMES_FRAMES,      ///< Frames in order, each at most once.
    eTIMES_SHUFFLED,    ///< Frames in any order.
    eTIMES_BACKWARDS,   ///< Frames from the last to the first.
    eTIMES_SMALL_RANGE, ///< Few distinct times, so many repeat.
    eTIMES_ANY,         ///< The whole range of ticks.
    eTIMES_GAPS,        ///< Frames with gaps, in any order.
    eTIMES_ODD_RATE,    ///< Frames in order at a rate whose frame is not a whole number of ticks.
    eTIMES_ODD_GAPS,    ///< Such frames with gaps, the last quarter shuffled.
    eTIMES_NEARLY_EVEN, ///< Steps of 3 or 4 ticks at random.
    eTIMES_KIND_COUNT
};

std::vector<long long> MakeTimes(KTimesKind pKind, int pCount, std::mt19937& pRandom)
{
    const KFrameRate       lRates[] = {{2997, 25}, {2997, 50}, {2997, 100}, {23976, 1000}, {11, 1}, {1000000, 9999}, {12001, 100}};
    const KFrameRate&      lRate = lRates[pRandom() % 7U];
    std::vector<long long> lTimes;
    for (int lKey = 0; lKey < pCount; ++lKey)
    {
        switch (pKind)
        {
        case eTIMES_ODD_RATE:
            lTimes.push_back(KTime::FromFrame(lKey - 7, lRate).Get());
            break;
        case eTIMES_ODD_GAPS:
            if (pRandom() % 30U != 0U)
            {
                lTimes.push_back(KTime::FromFrame(lKey, lRate).Get());
            }
            break;
        case eTIMES_NEARLY_EVEN:
            lTimes.push_back((lTimes.empty() ? 0 : lTimes.back()) + 3 + static_cast<long long>(pRandom() % 2U));
            break;
        case eTIMES_SMALL_RANGE:
            lTimes.push_back(static_cast<long long>(pRandom() % static_cast<unsigned>(pCount)) - pCount / 2);
            break;
        case eTIMES_ANY:
            lTimes.push_back(static_cast<long long>((static_cast<unsigned long long>(pRandom()) << 32U) | pRandom()));
            break;
        case eTIMES_GAPS:
            if (pRandom() % 10U == 0U)
            {
                continue;
            }
            lTimes.push_back(5880000LL * lKey);
            break;
        default:
            lTimes.push_back(5880000LL * lKey);
            break;
        }
    }
    if (pKind == eTIMES_SHUFFLED || pKind == eTIMES_GAPS)
    {
        std::shuffle(lTimes.begin(), lTimes.end(), pRandom);
    }
    if (pKind == eTIMES_ODD_GAPS && pCount > 4)
    {
        std::shuffle(lTimes.begin() + static_cast<std::ptrdiff_t>(lTimes.size() - lTimes.size() / 4), lTimes.end(), pRandom);
    }
    if (pKind == eTIMES_BACKWARDS)
    {
        std::reverse(lTimes.begin(), lTimes.end());
    }
    return lTimes;
}

TEST(KQexAnimCurve, AgreesWithAMapInAnyOrderOfAdding)
{
    std::mt19937 lRandom(4711);
    for (int lRound = 0; lRound < 1800; ++lRound)
    {
        const KTimesKind             lKind = static_cast<KTimesKind>(lRound % eTIMES_KIND_COUNT);
        const std::vector<long long> lTimes = MakeTimes(lKind, static_cast<int>(lRandom() % 200U), lRandom);
        KOwnCurve                    lCurve;
        KKeyMap                      lExpected;
        for (const long long lTime : lTimes)
        {
            const float lValue = lRandom() % 4U == 0U ? 1.0F : static_cast<float>(lRandom() % 1000U) / 8.0F;
            lExpected[lTime] = lValue;
            const int lIndex = lCurve->AddKey(KTime(lTime), KQexAnimCurveKey(KTime(0), lValue));
            ASSERT_EQ(lIndex, static_cast<int>(std::distance(lExpected.begin(), lExpected.find(lTime))));
        }
        ExpectKeys(*lCurve, lExpected);
        std::vector<long long> lQueries = {KTime::kMin, KTime::kMax, 0};
        for (const auto& [lTime, lValue] : lExpected)
        {
            lQueries.insert(lQueries.end(), {lTime - 1, lTime, lTime + 1, lTime + 2940000});
        }
        for (const long long lTime : lQueries)
        {
            ASSERT_NEAR(lCurve->Evaluate(KTime(lTime)), Reference(lExpected, lTime), 1e-12) << "round " << lRound << " time " << lTime;
        }
    }
}

struct KMemoryCase
{
    const char* mWhat;
    KTimesKind  mKind;
    double      mBytesPerKey;
};

class KQexAnimCurveMemory : public testing::TestWithParam<KMemoryCase>
{
};

TEST_P(KQexAnimCurveMemory, StaysWithinItsBytesPerKey)
{
    std::mt19937 lRandom(99);
    for (const int lCount : {100, 1000, 20000})
    {
        KOwnCurve          lCurve;
        const KMemoryWatch lWatch;
        // Frames out of order may be stored as a list until no gap is left, so they are checked only once all are added.
        const bool lCheckAlways = GetParam().mKind == eTIMES_FRAMES || GetParam().mKind == eTIMES_ODD_RATE ||
                                  GetParam().mKind == eTIMES_NEARLY_EVEN || GetParam().mKind == eTIMES_ANY;
        for (const long long lTime : MakeTimes(GetParam().mKind, lCount, lRandom))
        {
            ASSERT_TRUE(lCurve->AppendSample(KTime(lTime), static_cast<float>(lRandom())));
            if (lCheckAlways && lCurve->GetKeyCount() > 50)
            {
                ASSERT_LE(static_cast<double>(lWatch.GetBytes()), GetParam().mBytesPerKey * lCurve->GetKeyCount()) << GetParam().mWhat;
            }
        }
        EXPECT_LE(static_cast<double>(lWatch.GetBytes()), GetParam().mBytesPerKey * lCurve->GetKeyCount()) << GetParam().mWhat;
        EXPECT_EQ(lWatch.GetBytes(), lCurve->GetMemoryUse()) << GetParam().mWhat;
        lCurve->Compact();
        EXPECT_EQ(lWatch.GetBytes(), lCurve->GetMemoryUse()) << GetParam().mWhat;
        lCurve->Clear();
        EXPECT_EQ(lWatch.GetBlocks(), 0U) << GetParam().mWhat;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, KQexAnimCurveMemory,
                         testing::Values(KMemoryCase{"frames in order", eTIMES_FRAMES, 6.0},     //
                                         KMemoryCase{"frames shuffled", eTIMES_SHUFFLED, 6.0},   //
                                         KMemoryCase{"frames backwards", eTIMES_BACKWARDS, 6.0}, //
                                         KMemoryCase{"frames with gaps", eTIMES_GAPS, 16.0},     //
                                         KMemoryCase{"a rate that does not divide a second's ticks", eTIMES_ODD_RATE, 16.0},
                                         KMemoryCase{"the same with gaps", eTIMES_ODD_GAPS, 16.0},
                                         KMemoryCase{"steps that alternate at random", eTIMES_NEARLY_EVEN, 16.0},
                                         KMemoryCase{"any times", eTIMES_ANY, 16.0}));

TEST(KQexAnimCurve, TimesRoundedToTicksAreStoredAsAList)
{
    for (const double lStep : {0.0333333, 0.008333, 1.0 / 59.94, 0.01, 1e-6 / 3.0})
    {
        KOwnCurve lCurve;
        KKeyMap   lExpected;
        for (int lFrame = 0; lFrame < 20000; ++lFrame)
        {
            const KTime lTime = KTime::FromSeconds(lStep * lFrame);
            ASSERT_TRUE(lCurve->AppendSample(lTime, static_cast<float>(lFrame)));
            lExpected[lTime.Get()] = static_cast<float>(lFrame);
        }
        lCurve->Compact();
        EXPECT_LE(static_cast<double>(lCurve->GetMemoryUse()), 12.0 * lCurve->GetKeyCount()) << lStep;
        ExpectKeys(*lCurve, lExpected);
        for (int lFrame = 0; lFrame < 20000; lFrame += 7)
        {
            ASSERT_EQ(lCurve->Evaluate(KTime::FromSeconds(lStep * lFrame)), lFrame);
        }
    }
}

TEST(KQexAnimCurve, AConstantValueIsStoredOnce)
{
    KOwnCurve lCurve;
    KKeyMap   lExpected;
    for (int lFrame = 0; lFrame < 1000; ++lFrame)
    {
        ASSERT_TRUE(lCurve->AppendSample(KTime(lFrame), 0.25F));
        lExpected[lFrame] = 0.25F;
    }
    EXPECT_LE(lCurve->GetMemoryUse(), 100U);
    EXPECT_EQ(lCurve->Evaluate(KTime(500)), 0.25);
    ASSERT_EQ(lCurve->AddKey(KTime(500), KQexAnimCurveKey(KTime(0), 1.0F)), 500);
    lExpected[500] = 1.0F;
    ExpectKeys(*lCurve, lExpected);
}

TEST(KQexAnimCurve, ValuesKeepTheirBits)
{
    KOwnCurve lCurve;
    KKeyMap   lExpected;
    for (const float lValue : {0.0F, -0.0F, kNanF, -kNanF, kInfF, -kInfF, FLT_MIN / 4.0F})
    {
        const long long lTime = lCurve->GetKeyCount();
        ASSERT_TRUE(lCurve->AppendSample(KTime(lTime), lValue));
        lExpected[lTime] = lValue;
    }
    ExpectKeys(*lCurve, lExpected);
}

TEST(KQexAnimCurve, LongGapsAllocateNoMoreThanShortOnes)
{
    KOwnCurve    lCurve;
    KMemoryWatch lWatch;
    for (const long long lTime : {KTime::kMin, KTime::kMin + 1, -1LL, 0LL, 1LL, KTime::kMax - 1, KTime::kMax})
    {
        ASSERT_TRUE(lCurve->AppendSample(KTime(lTime), static_cast<float>(lTime)));
    }
    EXPECT_EQ(lCurve->GetKeyCount(), 7);
    EXPECT_LT(lWatch.GetLargest(), 1000U);
    lCurve->Clear();
}

TEST(KQexAnimCurve, AppendingAllocatesSeldom)
{
    KOwnCurve          lCurve;
    const KMemoryWatch lWatch;
    for (int lFrame = 0; lFrame < 100000; ++lFrame)
    {
        ASSERT_TRUE(lCurve->AppendSample(KTime(lFrame), static_cast<float>(lFrame)));
    }
    EXPECT_LT(lWatch.GetCalls(), 100);
    lCurve->Clear();
}

TEST(KQexAnimCurve, AFailedAllocationLeavesTheCurveUnchanged)
{
    std::mt19937 lRandom(5);
    for (int lRound = 0; lRound < 60; ++lRound)
    {
        const KTimesKind lKind = static_cast<KTimesKind>(lRound % eTIMES_KIND_COUNT);
        KOwnCurve        lCurve;
        KKeyMap          lExpected;
        KMemoryWatch     lWatch;
        bool             lFailed = false;
        for (const long long lTime : MakeTimes(lKind, 60, lRandom))
        {
            const float lValue = lRandom() % 2U == 0U ? 1.0F : static_cast<float>(lRandom());
            lWatch.FailAfter(0);
            int lIndex = lCurve->AddKey(KTime(lTime), KQexAnimCurveKey(KTime(0), lValue));
            if (lIndex < 0)
            {
                lFailed = true;
                ExpectKeys(*lCurve, lExpected);
                lWatch.FailAfter(1);
                lIndex = lCurve->AddKey(KTime(lTime), KQexAnimCurveKey(KTime(0), lValue));
            }
            if (lIndex < 0)
            {
                ExpectKeys(*lCurve, lExpected);
                lWatch.FailAfter(-1);
                lIndex = lCurve->AddKey(KTime(lTime), KQexAnimCurveKey(KTime(0), lValue));
            }
            ASSERT_GE(lIndex, 0);
            lExpected[lTime] = lValue;
            ExpectKeys(*lCurve, lExpected);
        }
        EXPECT_TRUE(lFailed);
        lWatch.FailAfter(0);
        const int lLast = lCurve->GetKeyCount() - 1;
        EXPECT_FALSE(lCurve->RemoveKey(lLast));
        ExpectKeys(*lCurve, lExpected);
        lCurve->Clear();
        EXPECT_EQ(lWatch.GetBlocks(), 0U);
    }
}

TEST(KQexAnimCurve, CreateReturnsNullWithoutMemory)
{
    KMemoryWatch lWatch;
    for (long lCount = 0;; ++lCount)
    {
        lWatch.FailAfter(lCount);
        KQexAnimCurve* lCurve = KQexAnimCurve::Create(nullptr, "curve");
        if (lCurve != nullptr)
        {
            EXPECT_GT(lCount, 0);
            lCurve->Destroy(false, false);
            break;
        }
        ASSERT_EQ(lWatch.GetBlocks(), 0U);
    }
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

} // namespace
} // namespace qexsdk
