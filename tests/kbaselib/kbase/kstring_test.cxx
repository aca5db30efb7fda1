#include <kbaselib/kbase/kstring.h>

#include <gtest/gtest.h>

namespace qexsdk
{
namespace
{

size_t LengthOf(const char* pText)
{
    return std::strlen(pText);
}

TEST(KStringTest, HoldsACopyOfTheText)
{
    char    lText[] = "hips";
    KString lString(lText);
    lText[0] = 'l';
    EXPECT_STREQ(lString, "hips");
    EXPECT_STREQ(lString.Buffer(), "hips");
    EXPECT_EQ(lString.GetLength(), 4U);
    EXPECT_EQ(LengthOf(lString), 4U);
    EXPECT_STREQ(KString("hips", 2), "hi");
}

TEST(KStringTest, TheEmptyStringIsNeverNull)
{
    EXPECT_STREQ(KString(), "");
    EXPECT_STREQ(KString(nullptr), "");
    EXPECT_STREQ(KString("").Buffer(), "");
    EXPECT_TRUE(KString().IsEmpty());
    EXPECT_FALSE(KString("a").IsEmpty());
}

TEST(KStringTest, AppendsWithoutChangingItsParts)
{
    const KString lName("hips");
    const KString lEnd = lName + "_End";
    EXPECT_STREQ(lEnd, "hips_End");
    EXPECT_STREQ(lName, "hips");
    EXPECT_STREQ(lName + lEnd, "hipships_End");
    EXPECT_STREQ("left" + lName, "lefthips");
    EXPECT_STREQ(lName + static_cast<const char*>(nullptr), "hips");
    EXPECT_STREQ(KString(lName + "_").Buffer(), "hips_");
}

TEST(KStringTest, ComparesCharacters)
{
    const KString lName("hips");
    const KString lSame("hips");
    EXPECT_TRUE(lName == lSame);
    EXPECT_TRUE(lName == "hips");
    EXPECT_TRUE("hips" == lName);
    EXPECT_FALSE(lName != "hips");
    EXPECT_TRUE(lName != "Hips");
    EXPECT_TRUE("hip" != lName);
    EXPECT_FALSE(lName != lSame);
}

TEST(KStringTest, CopiesAreIndependent)
{
    KString lFirst("a name that is long enough to need memory of its own");
    KString lSecond = lFirst;
    lFirst = KString("b");
    EXPECT_STREQ(lSecond, "a name that is long enough to need memory of its own");
    lSecond += "!";
    EXPECT_STREQ(lFirst, "b");
}

} // namespace
} // namespace qexsdk
