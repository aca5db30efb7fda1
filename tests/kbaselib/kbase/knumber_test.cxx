#include <kbaselib/kbase/knumber.h>

#include <kbaselib/kbase/knumberscan.h>
#include <tests/support/nonfinite.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace qexsdk
{
namespace
{

using namespace qextest;

struct KDoubleCase
{
    std::string   mText;
    KNumberStatus mStatus;
    double        mValue;
};

class KNumberDoubleTest : public testing::TestWithParam<KDoubleCase>
{
};

TEST_P(KNumberDoubleTest, ReadsTheWholeToken)
{
    double lValue = -77;
    EXPECT_EQ(KNumberParse(GetParam().mText, lValue), GetParam().mStatus) << GetParam().mText;
    if (GetParam().mStatus == KNumberStatus::eINVALID)
    {
        EXPECT_EQ(lValue, -77) << "changed by " << GetParam().mText;
        return;
    }
    EXPECT_EQ(lValue, GetParam().mValue) << GetParam().mText;
    EXPECT_EQ(std::signbit(lValue), std::signbit(GetParam().mValue)) << GetParam().mText;
}

INSTANTIATE_TEST_SUITE_P(Numbers, KNumberDoubleTest,
                         testing::Values(KDoubleCase{"0", KNumberStatus::eOK, 0}, KDoubleCase{"-0", KNumberStatus::eOK, -0.0},
                                         KDoubleCase{"+0.0", KNumberStatus::eOK, 0}, KDoubleCase{"12", KNumberStatus::eOK, 12},
                                         KDoubleCase{"+12.5", KNumberStatus::eOK, 12.5}, KDoubleCase{"-.5", KNumberStatus::eOK, -0.5},
                                         KDoubleCase{"5.", KNumberStatus::eOK, 5}, KDoubleCase{"0.1", KNumberStatus::eOK, 0.1},
                                         KDoubleCase{"1e3", KNumberStatus::eOK, 1000}, KDoubleCase{"1E-3", KNumberStatus::eOK, 0.001},
                                         KDoubleCase{"+1.5e+2", KNumberStatus::eOK, 150}, KDoubleCase{"007", KNumberStatus::eOK, 7},
                                         KDoubleCase{"9007199254740993", KNumberStatus::eOK, 9007199254740992.0},
                                         KDoubleCase{"0.12345678901234567890", KNumberStatus::eOK, 0.12345678901234567890},
                                         KDoubleCase{"4.9e-324", KNumberStatus::eOK, 4.9e-324},
                                         KDoubleCase{"1.7976931348623157e308", KNumberStatus::eOK, 1.7976931348623157e308}));

INSTANTIATE_TEST_SUITE_P(RangeLimits, KNumberDoubleTest,
                         testing::Values(KDoubleCase{"1e-400", KNumberStatus::eOK, 0}, KDoubleCase{"-1e-400", KNumberStatus::eOK, -0.0},
                                         KDoubleCase{"2e-324", KNumberStatus::eOK, 0}, KDoubleCase{"-2e-324", KNumberStatus::eOK, -0.0},
                                         KDoubleCase{"1e400", KNumberStatus::eOVERFLOW, kInf},
                                         KDoubleCase{"-1e400", KNumberStatus::eOVERFLOW, -kInf},
                                         KDoubleCase{"1.8e308", KNumberStatus::eOVERFLOW, kInf},
                                         KDoubleCase{"1e99999999999999999999", KNumberStatus::eOVERFLOW, kInf},
                                         KDoubleCase{"1e-99999999999999999999", KNumberStatus::eOK, 0},
                                         KDoubleCase{"0e99999999999999999999", KNumberStatus::eOK, 0},
                                         KDoubleCase{std::string(400, '9'), KNumberStatus::eOVERFLOW, kInf},
                                         KDoubleCase{"0." + std::string(400, '0') + "1", KNumberStatus::eOK, 0},
                                         KDoubleCase{"0." + std::string(400, '0') + "1e401", KNumberStatus::eOK, 1},
                                         KDoubleCase{"0." + std::string(400, '0') + "1e900", KNumberStatus::eOVERFLOW, kInf},
                                         KDoubleCase{std::string(400, '9') + "e-900", KNumberStatus::eOK, 0}));

INSTANTIATE_TEST_SUITE_P(NotNumbers, KNumberDoubleTest,
                         testing::Values(KDoubleCase{"", KNumberStatus::eINVALID, 0}, KDoubleCase{"+", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"-", KNumberStatus::eINVALID, 0}, KDoubleCase{".", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"+-5", KNumberStatus::eINVALID, 0}, KDoubleCase{"--5", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"-+5", KNumberStatus::eINVALID, 0}, KDoubleCase{"1e", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"1e+", KNumberStatus::eINVALID, 0}, KDoubleCase{"e5", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"0x10", KNumberStatus::eINVALID, 0}, KDoubleCase{"1,5", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"1.2.3", KNumberStatus::eINVALID, 0}, KDoubleCase{" 1", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"1 ", KNumberStatus::eINVALID, 0}, KDoubleCase{"1f", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{"inf", KNumberStatus::eINVALID, 0}, KDoubleCase{"nan", KNumberStatus::eINVALID, 0},
                                         KDoubleCase{std::string("1\0", 2), KNumberStatus::eINVALID, 0}));

class KNumberWordTest : public testing::TestWithParam<KDoubleCase>
{
};

TEST_P(KNumberWordTest, ReadsNonFiniteWordsWhenAllowed)
{
    double lValue = -77;
    EXPECT_EQ(KNumberParse(GetParam().mText, lValue, KNonFiniteWords::eACCEPT), GetParam().mStatus) << GetParam().mText;
    if (std::isnan(GetParam().mValue))
    {
        EXPECT_TRUE(std::isnan(lValue)) << GetParam().mText;
    }
    else
    {
        EXPECT_EQ(lValue, GetParam().mStatus == KNumberStatus::eINVALID ? -77 : GetParam().mValue) << GetParam().mText;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Words, KNumberWordTest,
    testing::Values(KDoubleCase{"inf", KNumberStatus::eOK, kInf}, KDoubleCase{"-inf", KNumberStatus::eOK, -kInf},
                    KDoubleCase{"+INF", KNumberStatus::eOK, kInf}, KDoubleCase{"Infinity", KNumberStatus::eOK, kInf},
                    KDoubleCase{"-iNFINITY", KNumberStatus::eOK, -kInf}, KDoubleCase{"nan", KNumberStatus::eOK, std::nan("")},
                    KDoubleCase{"-NaN", KNumberStatus::eOK, std::nan("")}, KDoubleCase{"+nan", KNumberStatus::eOK, std::nan("")},
                    KDoubleCase{"1.5", KNumberStatus::eOK, 1.5}, KDoubleCase{"1e999", KNumberStatus::eOVERFLOW, kInf},
                    KDoubleCase{"infi", KNumberStatus::eINVALID, 0}, KDoubleCase{"in", KNumberStatus::eINVALID, 0},
                    KDoubleCase{"infinityx", KNumberStatus::eINVALID, 0}, KDoubleCase{"nan(1)", KNumberStatus::eINVALID, 0},
                    KDoubleCase{"--inf", KNumberStatus::eINVALID, 0}, KDoubleCase{"-", KNumberStatus::eINVALID, 0}));

struct KIntegerCase
{
    const char*   mText;
    KNumberStatus mStatus;
    int           mValue;
};

class KNumberIntegerTest : public testing::TestWithParam<KIntegerCase>
{
};

TEST_P(KNumberIntegerTest, ReadsTheWholeToken)
{
    int lValue = -77;
    EXPECT_EQ(KNumberParse(GetParam().mText, lValue), GetParam().mStatus) << GetParam().mText;
    EXPECT_EQ(lValue, GetParam().mStatus == KNumberStatus::eINVALID ? -77 : GetParam().mValue) << GetParam().mText;
}

INSTANTIATE_TEST_SUITE_P(Numbers, KNumberIntegerTest,
                         testing::Values(KIntegerCase{"0", KNumberStatus::eOK, 0}, KIntegerCase{"+12", KNumberStatus::eOK, 12},
                                         KIntegerCase{"-12", KNumberStatus::eOK, -12}, KIntegerCase{"0012", KNumberStatus::eOK, 12},
                                         KIntegerCase{"2147483647", KNumberStatus::eOK, 2147483647},
                                         KIntegerCase{"-2147483648", KNumberStatus::eOK, -2147483647 - 1},
                                         KIntegerCase{"2147483648", KNumberStatus::eOVERFLOW, 2147483647},
                                         KIntegerCase{"-99999999999999999999", KNumberStatus::eOVERFLOW, -2147483647 - 1},
                                         KIntegerCase{"", KNumberStatus::eINVALID, 0}, KIntegerCase{"+", KNumberStatus::eINVALID, 0},
                                         KIntegerCase{"1.0", KNumberStatus::eINVALID, 0}, KIntegerCase{"+-1", KNumberStatus::eINVALID, 0},
                                         KIntegerCase{"1e3", KNumberStatus::eINVALID, 0}, KIntegerCase{"12a", KNumberStatus::eINVALID, 0}));

TEST(KNumberTest, LongLongHasItsOwnLimits)
{
    long long lValue = 0;
    EXPECT_EQ(KNumberParse("-9223372036854775808", lValue), KNumberStatus::eOK);
    EXPECT_EQ(lValue, std::numeric_limits<long long>::min());
    EXPECT_EQ(KNumberParse("9223372036854775808", lValue), KNumberStatus::eOVERFLOW);
    EXPECT_EQ(lValue, std::numeric_limits<long long>::max());
}

struct KScanCase
{
    const char* mText;
    int         mLength; ///< Characters read; -1: left to KNumberParse.
    double      mValue;
};

class KNumberScanTest : public testing::TestWithParam<KScanCase>
{
};

TEST_P(KNumberScanTest, ReadsTheLeadingPlainNumber)
{
    const char* lText = GetParam().mText;
    double      lValue = -77;
    const char* lEnd = KNumberScan(lText, lText + std::strlen(lText), lValue);
    EXPECT_EQ(lEnd == nullptr ? -1 : static_cast<int>(lEnd - lText), GetParam().mLength) << lText;
    EXPECT_EQ(lValue, lEnd == nullptr ? -77 : GetParam().mValue) << lText;
}

INSTANTIATE_TEST_SUITE_P(Texts, KNumberScanTest,
                         testing::Values(KScanCase{"12.5 7", 4, 12.5}, KScanCase{"-0.25\n", 5, -0.25}, KScanCase{"+3", 2, 3},
                                         KScanCase{"1e5", 1, 1}, KScanCase{"5.x", 2, 5}, KScanCase{".5", 2, 0.5},
                                         KScanCase{"0.765432 ", 8, 0.765432}, KScanCase{"0.7654321 ", 9, 0.7654321},
                                         KScanCase{"765432.1 9", 8, 765432.1}, KScanCase{".7654321.5", 8, 0.7654321},
                                         KScanCase{"1.5.25 and more", 3, 1.5}, KScanCase{"12345678.5 ", 10, 12345678.5},
                                         KScanCase{"123456789012345", 15, 123456789012345.0}, KScanCase{"1234567890123456", -1, 0},
                                         KScanCase{"0.0000000000000001", -1, 0}, KScanCase{"", -1, 0}, KScanCase{"-", -1, 0},
                                         KScanCase{".", -1, 0}, KScanCase{"x", -1, 0}, KScanCase{"-.", -1, 0}));

/// Every number of digits before and after the point, every byte after the number, with and without more text after that.
TEST(KNumberTest, ScansTheSameBitsAsTheCLibrary)
{
    std::mt19937 lRandom(77);
    for (int lStep = 0; lStep < 40000; ++lStep)
    {
        std::string lNumber(lRandom() % 3 == 0 ? "-" : "");
        const int   lWhole = static_cast<int>(lRandom() % 10);
        const int   lDecimals = static_cast<int>(lRandom() % 10);
        for (int lDigit = 0; lDigit < lWhole + lDecimals; ++lDigit)
        {
            lNumber += lDigit == lWhole ? "." : "";
            lNumber += static_cast<char>('0' + lRandom() % 10);
        }
        const char lAfter = static_cast<char>(lStep % 256);
        if ((lAfter >= '0' && lAfter <= '9') || lAfter == '.')
        {
            continue;
        }
        const std::string lText = lNumber + lAfter + std::string(lRandom() % 12, static_cast<char>(lRandom()));
        double            lValue = -77;
        const char*       lEnd = KNumberScan(lText.data(), lText.data() + lText.size(), lValue);
        if (lWhole + lDecimals == 0 || lWhole + lDecimals > 15)
        {
            ASSERT_EQ(lEnd, nullptr) << lText;
            ASSERT_EQ(lValue, -77) << lText;
            continue;
        }
        ASSERT_EQ(lEnd, lText.data() + lNumber.size()) << lText;
        ASSERT_EQ(lValue, std::strtod(lNumber.c_str(), nullptr)) << lText;
        double lAlone = -77;
        ASSERT_EQ(KNumberScan(lNumber.data(), lNumber.data() + lNumber.size(), lAlone), lNumber.data() + lNumber.size()) << lText;
        ASSERT_EQ(lAlone, lValue) << lText;
    }
}

/// The reference is strtod of the C library in the "C" locale: every text must give the same bits.
TEST(KNumberTest, ReadsTheSameBitsAsTheCLibrary)
{
    std::mt19937_64 lRandom(1991);
    const char*     lFormats[] = {"%.3f", "%.6f", "%.15g", "%.17g", "%.25e", "%.0f"};
    for (int lStep = 0; lStep < 60000; ++lStep)
    {
        double lNumber = 0;
        if (lStep % 3 == 0)
        {
            const std::uint64_t lBits = lRandom();
            std::memcpy(&lNumber, &lBits, sizeof(lNumber));
        }
        else
        {
            lNumber = std::ldexp(static_cast<double>(static_cast<std::int64_t>(lRandom())), -50 - static_cast<int>(lRandom() % 20));
        }
        if (!std::isfinite(lNumber))
        {
            continue;
        }
        char lText[512];
        std::snprintf(lText, sizeof(lText), lFormats[lRandom() % 6], lNumber);
        double lRead = -77;
        ASSERT_EQ(KNumberParse(lText, lRead), KNumberStatus::eOK) << lText;
        ASSERT_EQ(lRead, std::strtod(lText, nullptr)) << lText;
    }
}

struct KFixedCase
{
    double      mValue;
    int         mDecimals;
    const char* mText;
};

std::string Fixed(double pValue, int pDecimals)
{
    std::string lText;
    KNumberAppendFixed(lText, pValue, pDecimals);
    return lText;
}

class KNumberFixedTest : public testing::TestWithParam<KFixedCase>
{
};

TEST_P(KNumberFixedTest, WritesNoTrailingZeros)
{
    EXPECT_EQ(Fixed(GetParam().mValue, GetParam().mDecimals), GetParam().mText);
}

INSTANTIATE_TEST_SUITE_P(Numbers, KNumberFixedTest,
                         testing::Values(KFixedCase{0, 4, "0"}, KFixedCase{-0.0, 4, "0"}, KFixedCase{-0.00001, 4, "0"},
                                         KFixedCase{0.00001, 4, "0"}, KFixedCase{1.5, 4, "1.5"}, KFixedCase{-1.5, 0, "-2"},
                                         KFixedCase{100, 4, "100"}, KFixedCase{100, 0, "100"}, KFixedCase{-10.25, 1, "-10.2"},
                                         KFixedCase{-0.5, 4, "-0.5"}, KFixedCase{0.1, 20, "0.10000000000000000555"},
                                         KFixedCase{1e22, 2, "10000000000000000000000"}, KFixedCase{3.14159, 3, "3.142"},
                                         KFixedCase{2.0004, 3, "2"}, KFixedCase{7, -3, "7"}, KFixedCase{kInf, 3, "inf"},
                                         KFixedCase{-kInf, 3, "-inf"}, KFixedCase{std::nan(""), 3, "nan"},
                                         KFixedCase{-std::nan(""), 3, "nan"}));

TEST(KNumberTest, TheBufferHoldsTheLongestFixedText)
{
    char        lBuffer[kNumberBufferSize];
    const char* lEnd = KNumberPrintFixed(lBuffer, lBuffer + sizeof(lBuffer), -std::numeric_limits<double>::max(), 1000);
    ASSERT_NE(lEnd, nullptr);
    EXPECT_EQ(lEnd - lBuffer, 310);
    lEnd = KNumberPrint(lBuffer, lBuffer + sizeof(lBuffer), -std::numeric_limits<double>::max(), 'f', kNumberMaxDecimals);
    ASSERT_NE(lEnd, nullptr);
    EXPECT_EQ(lEnd - lBuffer, 311 + kNumberMaxDecimals);
}

TEST(KNumberTest, ReturnsNullWhenTheTextDoesNotFit)
{
    char lBuffer[4];
    EXPECT_EQ(KNumberPrintFixed(lBuffer, lBuffer + 4, 123456.0, 2), nullptr);
    EXPECT_EQ(KNumberPrintShortest(lBuffer, lBuffer + 4, 0.12345), nullptr);
    EXPECT_EQ(KNumberPrint(lBuffer, lBuffer + 4, 1.0, 'f', 6), nullptr);
    EXPECT_EQ(KNumberPrint(lBuffer, lBuffer + 4, 1.0, 'd', 6), nullptr);
}

TEST(KNumberTest, PrintsLikeTheCLibrary)
{
    std::mt19937_64 lRandom(17);
    for (int lStep = 0; lStep < 20000; ++lStep)
    {
        const double lNumber =
            std::ldexp(static_cast<double>(static_cast<std::int64_t>(lRandom())), -90 + static_cast<int>(lRandom() % 60));
        const char lConversion = "fge"[lRandom() % 3];
        const int  lPrecision = static_cast<int>(lRandom() % 18) - 1;
        const char lFormat[] = {'%', '.', '*', lConversion, '\0'};
        char       lExpected[512];
        char       lBuffer[kNumberBufferSize];
        std::snprintf(lExpected, sizeof(lExpected), lFormat, lPrecision, lNumber);
        const char* lEnd = KNumberPrint(lBuffer, lBuffer + sizeof(lBuffer), lNumber, lConversion, lPrecision);
        ASSERT_NE(lEnd, nullptr);
        ASSERT_EQ(std::string(lBuffer, static_cast<size_t>(lEnd - lBuffer)), lExpected);
    }
}

TEST(KNumberTest, TheShortestTextRoundTrips)
{
    std::mt19937_64 lRandom(4);
    for (int lStep = 0; lStep < 20000; ++lStep)
    {
        const std::uint64_t lBits = lRandom();
        double              lNumber;
        std::memcpy(&lNumber, &lBits, sizeof(lNumber));
        std::string lText;
        KNumberAppendShortest(lText, lNumber);
        double lRead = -77;
        ASSERT_EQ(KNumberParse(lText, lRead, KNonFiniteWords::eACCEPT), KNumberStatus::eOK) << lText;
        ASSERT_TRUE(lRead == lNumber || (std::isnan(lRead) && std::isnan(lNumber))) << lText;
    }
}

TEST(KNumberTest, TheLocaleDoesNotMatter)
{
    const std::string lBefore = std::setlocale(LC_ALL, nullptr);
    for (const char* lName : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "C"})
    {
        if (std::setlocale(LC_ALL, lName) != nullptr)
        {
            double lValue = 0;
            EXPECT_EQ(KNumberParse("1.5", lValue), KNumberStatus::eOK) << lName;
            EXPECT_EQ(lValue, 1.5) << lName;
            EXPECT_EQ(KNumberParse("1,5", lValue), KNumberStatus::eINVALID) << lName;
            EXPECT_EQ(Fixed(1.5, 3), "1.5") << lName;
        }
    }
    std::setlocale(LC_ALL, lBefore.c_str());
}

/// printf's text without trailing zeros.
std::string FixedByPrintf(double pValue, int pDecimals)
{
    char lBuffer[400];
    std::snprintf(lBuffer, sizeof(lBuffer), "%.*f", pDecimals, pValue);
    std::string lText(lBuffer);
    if (pDecimals > 0)
    {
        lText.erase(lText.find_last_not_of('0') + 1);
        lText.erase(lText.find_last_not_of('.') + 1);
    }
    return lText == "-0" ? "0" : lText;
}

/// Typical motion values are printed in integer arithmetic; values close to halfway between two texts, exact ties included, must take
/// the slow path.
TEST(KNumberPrintTest, FixedIsNearestOnBothPaths)
{
    std::mt19937_64                        lRandom(17);
    std::uniform_real_distribution<double> lSpread(-1.0, 1.0);
    for (int i = 0; i < 400000; ++i)
    {
        double lValue = lSpread(lRandom) * 400.0;
        switch (i % 5)
        {
        case 1:
            lValue = std::round(lValue * 1e4) / 1e4;
            break;
        case 2:
            lValue = static_cast<double>(static_cast<float>(lValue));
            break;
        case 3:
            lValue = std::round(lSpread(lRandom) * 1e6) / 128.0 / static_cast<double>(1 << lRandom() % 10);
            break;
        case 4:
            lValue = lSpread(lRandom) * std::pow(10.0, static_cast<double>(lRandom() % 40) - 20.0);
            break;
        default:
            break;
        }
        const int   lDecimals = static_cast<int>(lRandom() % 10);
        char        lBuffer[kNumberBufferSize];
        char* const lEnd = KNumberPrintFixed(lBuffer, lBuffer + sizeof(lBuffer), lValue, lDecimals);
        ASSERT_EQ(std::string(lBuffer, static_cast<size_t>(lEnd - lBuffer)), FixedByPrintf(lValue, lDecimals)) << lDecimals;
    }
}

} // namespace
} // namespace qexsdk
