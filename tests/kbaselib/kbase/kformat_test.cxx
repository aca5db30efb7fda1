#include <kbaselib/kbase/kformat.h>

#include <tests/support/commalocale.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace qextest
{

using namespace qexsdk;

namespace
{

bool AppendTo(void* pContext, const char* pText, size_t pSize)
{
    static_cast<std::string*>(pContext)->append(pText, pSize);
    return true;
}

std::string Format(const char* pFormat, ...)
{
    std::string  lText;
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    EXPECT_TRUE(KFormat(AppendTo, &lText, pFormat, lArguments));
    va_end(lArguments);
    return lText;
}

std::string Printf(const char* pFormat, ...)
{
    char         lText[8192];
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    std::vsnprintf(lText, sizeof lText, pFormat, lArguments);
    va_end(lArguments);
    return lText;
}

#define EXPECT_AS_PRINTF(...) EXPECT_EQ(Format(__VA_ARGS__), Printf(__VA_ARGS__))

TEST(KFormat, RealsAreThoseOfPrintf)
{
    const double lValues[] = {
        0.0,      -0.0,      1.0,     -1.0,     0.1,     2.5,    3.5,        1e5,      123456, 1234567, 1e-4,
        1e-5,     1e100,     -1e-100, DBL_MAX,  DBL_MIN, 5e-324, 0.99999951, 999999.5, 160,    -160.0,  56.444444444444443,
        INFINITY, -INFINITY, NAN,     1.0 / 3.0};
    for (const double lValue : lValues)
        for (const char* lFormat :
             {"%g",  "%f",     "%e",      "%G",   "%F",  "%E",   "%.0f", "%.3g", "%.17g", "%.12f", "%12.3f|", "%-12.3f|", "%012.3f", "%+g",
              "% g", "%+012g", "%-+12g|", "%.0e", "%5g", "%.0g", "%lf",  "%a",   "%A",    "%.3a",  "%020a",   "%-20a|",   "%+020A"})
            EXPECT_AS_PRINTF(lFormat, lValue);
}

TEST(KFormat, RandomRealsAreThoseOfPrintf)
{
    std::mt19937_64 lRandom(7);
    for (int i = 0; i < 20000; ++i)
    {
        const double lValue = std::ldexp(static_cast<double>(static_cast<int64_t>(lRandom())), static_cast<int>(lRandom() % 200) - 160);
        EXPECT_AS_PRINTF("%g", lValue);
        EXPECT_AS_PRINTF("%f", lValue);
        EXPECT_AS_PRINTF("%.9g", lValue);
    }
}

TEST(KFormat, LongReals)
{
    EXPECT_AS_PRINTF("%Lg %.20Lf", 1.0L / 3.0L, -2.5L);
    EXPECT_AS_PRINTF("%.500f", 0.1);
    EXPECT_AS_PRINTF("%.40Lf", static_cast<long double>(1e300));
    // Base 16 leaves open where the first digit ends: only the number counts.
    for (const char* lFormat : {"%La", "%LA", "%.20La"})
        EXPECT_EQ(std::strtold(Format(lFormat, -1.0L / 3.0L).c_str(), nullptr), -1.0L / 3.0L) << lFormat;
}

TEST(KFormat, AnAbsurdPrecisionHasItsBound)
{
    EXPECT_EQ(Format("%.99999f", 1.0), "1." + std::string(5000, '0'));
    EXPECT_EQ(Format("%.9999999999f", 1.0), Format("%.99999f", 1.0)) << "no count overflows";
}

TEST(KFormat, IntegersAreThoseOfPrintf)
{
    for (const int lValue : {0, 1, -1, 42, INT_MAX, INT_MIN})
        for (const char* lFormat : {"%d", "%i",  "%5d|", "%-5d|", "%05d", "%+d", "% d",  "%.4d", "%8.4d", "%u",    "%x",     "%X",
                                    "%o", "%#x", "%#o",  "%hd",   "%hhd", "%hu", "%hhu", "%08x", "%#08x", "%#08X", "%#-8x|", "%#.6x"})
            EXPECT_AS_PRINTF(lFormat, lValue);
    EXPECT_AS_PRINTF("%ld %lld %lu %llu", LONG_MIN, LLONG_MIN, ULONG_MAX, ULLONG_MAX);
    EXPECT_AS_PRINTF("%zu %jd %td %lx", SIZE_MAX, INTMAX_MIN, PTRDIFF_MIN, ULONG_MAX);
    EXPECT_AS_PRINTF("%ju %jx %tu %zd", UINTMAX_MAX, UINTMAX_MAX, size_t{1}, ptrdiff_t{-1});
    EXPECT_AS_PRINTF("%*d %-*d| %.*f", 6, 12, 6, 12, 2, 3.14159);
    EXPECT_AS_PRINTF("%*d|", -6, 12);
}

TEST(KFormat, TextIsThatOfPrintf)
{
    EXPECT_AS_PRINTF("plain");
    EXPECT_AS_PRINTF("%s", "");
    EXPECT_AS_PRINTF("a%sb%sc", "one", "two");
    EXPECT_AS_PRINTF("%6s|%-6s|%.2s|%6.2s|", "abc", "abc", "abc", "abc");
    EXPECT_AS_PRINTF("%c%3c%-3c|", 'x', 'y', 'z');
    EXPECT_AS_PRINTF("100%% of %d", 3);
    EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
    const std::string lLong(5000, 'x');
    EXPECT_EQ(Format("<%s>", lLong.c_str()), "<" + lLong + ">");
    EXPECT_EQ(Format("%2000d", 1).size(), 2000u);
    int lHere = 0;
    EXPECT_AS_PRINTF("%p", static_cast<void*>(&lHere));
}

TEST(KFormat, WhatIsNoConversionStandsAsItIs)
{
    const char* const lFormats[] = {"%", "50%", "%y", "%ls", "%lc", "%5"};
    for (const char* lFormat : lFormats)
        EXPECT_EQ(Format(lFormat), lFormat);
}

TEST(KFormat, LocaleOfTheProcessDoesNotMatter)
{
    QEX_WITH_COMMA_LOCALE();
    EXPECT_EQ(Printf("%.1f", 0.5), "0,5");
    EXPECT_EQ(Format("%.1f %g %e %d", 0.5, 1234.5, 1.5, 1234567), "0.5 1234.5 1.500000e+00 1234567");
}

/// A sink that refuses its piece mRefused, and counts them.
struct KRefusingSink
{
    int         mRefused = 0;
    int         mCount = 0;
    static bool Take(void* pContext, const char*, size_t)
    {
        KRefusingSink* lSelf = static_cast<KRefusingSink*>(pContext);
        return ++lSelf->mCount != lSelf->mRefused;
    }
};

TEST(KFormat, NothingComesBehindAnyRefusedPiece)
{
    const auto lRun = [](KRefusingSink& pSink, const char* pFormat, ...)
    {
        std::va_list lArguments;
        va_start(lArguments, pFormat);
        const bool lOk = KFormat(KRefusingSink::Take, &pSink, pFormat, lArguments);
        va_end(lArguments);
        return lOk;
    };
    for (int lRefused = 1;; ++lRefused)
    {
        KRefusingSink lSink{lRefused};
        const bool    lOk = lRun(lSink, "a%-+9db%+09dc%#09xd%+9de%9sf%-9sg", 1, 2, 3, 4, "s", "t");
        EXPECT_EQ(lOk, lSink.mCount < lRefused);
        EXPECT_LE(lSink.mCount, lRefused);
        if (lOk)
        {
            EXPECT_GT(lSink.mCount, 20);
            break;
        }
    }
}

TEST(KFormat, ASinkThatRefusesEndsIt)
{
    struct KCount
    {
        static bool Refuse(void* pContext, const char*, size_t) { return ++*static_cast<int*>(pContext) < 3; }
    };
    const auto lRun = [](const char* pFormat, ...)
    {
        int          lCalls = 0;
        std::va_list lArguments;
        va_start(lArguments, pFormat);
        EXPECT_FALSE(KFormat(KCount::Refuse, &lCalls, pFormat, lArguments));
        va_end(lArguments);
        EXPECT_EQ(lCalls, 3);
    };
    const std::string lLong(100000, 'x');
    lRun("%s", lLong.c_str());
    lRun("a%db%d", 1, 2);
    lRun("a%fb%f", 1.0, 2.0);
    lRun("%1000d", 1);
}

} // namespace

} // namespace qextest
