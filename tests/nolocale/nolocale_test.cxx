// Without a "C" locale, formatting fails; it never falls back to another locale.

#include <kbaselib/kbase/kformat.h>

#include <qexioplugins/motion/kqextextfile.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <locale.h>
#include <string>

/// Overrides the C library's.
extern "C" locale_t newlocale(int, const char*, locale_t)
{
    return static_cast<locale_t>(nullptr);
}

namespace qextest
{

using namespace qexsdk;

namespace
{

bool Format(std::string& pText, const char* pFormat, ...)
{
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    const bool lOk = KFormatAppend(pText, std::string::npos, pFormat, lArguments);
    va_end(lArguments);
    return lOk;
}

class KText : public KQexTextFile
{
public:
    KText() : KQexTextFile("TEXT", " ", "#", true, false) {}
};

TEST(NoLocale, NothingIsFormatted)
{
    std::string lText = "before";
    errno = 0;
    EXPECT_FALSE(Format(lText, "%g", 0.5));
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(lText, "before");
}

TEST(NoLocale, ClosingAnOutputFails)
{
    KText       lFile;
    std::string lOut;
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lOut));
    lFile.Print(1, "%g\n", 0.5);
    EXPECT_FALSE(lFile.Close());
    EXPECT_EQ(lFile.GetErrorCount(), 1) << "reported once, although its message could not be formatted";
    ASSERT_EQ(lFile.GetMessages().size(), 1u);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Out of memory");
    EXPECT_TRUE(lFile.HasFailed());
}

} // namespace

} // namespace qextest
