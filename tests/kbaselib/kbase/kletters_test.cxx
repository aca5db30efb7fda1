#include <kbaselib/kbase/kletters.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace qexsdk;

namespace
{

TEST(KLetters, OnlyAsciiCapitalsChange)
{
    const std::string lCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string lSmall = "abcdefghijklmnopqrstuvwxyz";
    for (int lCode = CHAR_MIN; lCode <= CHAR_MAX; ++lCode)
    {
        const char   lCharacter = static_cast<char>(lCode);
        const size_t lIndex = lCharacter == '\0' ? std::string::npos : lCapitals.find(lCharacter);
        EXPECT_EQ(KToLower(lCharacter), lIndex == std::string::npos ? lCharacter : lSmall[lIndex]) << lCode;
    }
}

} // namespace
