#include <kbaselib/kbase/kformat.h>

#include <tests/support/commalocale.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace qextest
{

using namespace qexsdk;

namespace
{

std::string FormatUpTo(size_t pLimit, const char* pFormat, ...)
{
    std::string  lText = "<";
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    EXPECT_TRUE(KFormatAppend(lText, pLimit, pFormat, lArguments));
    va_end(lArguments);
    EXPECT_EQ(lText[0], '<') << "appended";
    return lText.substr(1);
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

#define EXPECT_AS_PRINTF(...) EXPECT_EQ(FormatUpTo(std::string::npos, __VA_ARGS__), Printf(__VA_ARGS__))

TEST(KFormat, TextOfAnyLengthMatchesPrintf)
{
    EXPECT_AS_PRINTF("plain");
    EXPECT_AS_PRINTF("%s", "");
    EXPECT_AS_PRINTF("%d%% of %6s|%g %f", 100, "abc", 1.0 / 3.0, -2.5);
    for (const size_t lSize : {254u, 255u, 256u, 257u, 5000u})
    {
        EXPECT_AS_PRINTF("%s.", std::string(lSize, 'x').c_str());
    }
}

TEST(KFormat, AppendsNoMoreThanAllowed)
{
    for (const size_t lSize : {0u, 1u, 255u, 256u, 257u, 300u, 5000u})
    {
        for (const size_t lLimit : {0u, 1u, 255u, 256u, 257u, 299u, 300u, 301u})
        {
            EXPECT_EQ(FormatUpTo(lLimit, "%s", std::string(lSize, 'x').c_str()), std::string(std::min(lSize, lLimit), 'x'));
        }
    }
}

TEST(KFormat, LocaleOfTheProcessDoesNotMatter)
{
    QEX_WITH_COMMA_LOCALE();
    EXPECT_EQ(Printf("%.1f", 0.5), "0,5");
    EXPECT_EQ(FormatUpTo(100, "%.1f %g %e %d", 0.5, 1234.5, 1.5, 1234567), "0.5 1234.5 1.500000e+00 1234567");
    EXPECT_EQ(Printf("%.1f", 0.5), "0,5") << "the thread's own locale is restored";
}

} // namespace

} // namespace qextest
