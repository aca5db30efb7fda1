#include <kbaselib/kbase/kutf8.h>

#include <gtest/gtest.h>

#include <string>

using namespace qexsdk;

namespace
{

TEST(KUtf8, LengthOfTheFirstCharacter)
{
    EXPECT_EQ(KUtf8Length("a\xE4"), 1u);
    EXPECT_EQ(KUtf8Length("\xC3\xA4x"), 2u);
    EXPECT_EQ(KUtf8Length("\xE2\x82\xAC"), 3u);
    EXPECT_EQ(KUtf8Length("\xF0\x9F\x99\x82"), 4u);
    EXPECT_EQ(KUtf8Length(std::string_view("\0", 1)), 1u);
    EXPECT_EQ(KUtf8Length(""), 0u);
}

TEST(KUtf8, RefusesWhatIsNotWellFormed)
{
    for (const char* lText : {"\x80", "\xC3", "\xC3(", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xE2\x82", "\xF0\x80\x80\x80",
                              "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"})
    {
        EXPECT_EQ(KUtf8Length(lText), 0u) << lText;
        EXPECT_FALSE(KIsUtf8(std::string("a") + lText)) << lText;
    }
    EXPECT_TRUE(KIsUtf8("Gr\xC3\xB6\xC3\x9F"
                        "e"));
    EXPECT_TRUE(KIsUtf8(""));
}

} // namespace
