#include <kbaselib/kbase/kbits.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using namespace qexsdk;

namespace
{

TEST(KBits, AreThoseOfTheCharactersAtAnyAddress)
{
    const std::string lText = "0123456789abcdefghij";
    for (size_t lAt = 0; lAt + sizeof(uint64_t) <= lText.size(); ++lAt)
    {
        const std::string lCopy = lText.substr(lAt, sizeof(uint64_t));
        EXPECT_EQ(KBitsAt<uint64_t>(lText.data() + lAt), KBitsAt<uint64_t>(lCopy.data())) << lAt;
        EXPECT_EQ(KBitsAt<uint16_t>(lText.data() + lAt), KBitsAt<uint16_t>(lCopy.data())) << lAt;
    }
}

TEST(KBits, DifferWithEachCharacter)
{
    const std::string lText = "abcd";
    for (size_t lAt = 0; lAt < lText.size(); ++lAt)
    {
        std::string lOther = lText;
        lOther[lAt] ^= 1;
        EXPECT_NE(KBitsAt<uint32_t>(lText.data()), KBitsAt<uint32_t>(lOther.data())) << lAt;
    }
}

TEST(KBits, EqualCharactersAreEqualBytes)
{
    EXPECT_EQ(KBitsAt<uint32_t>("    "), 0x20202020u);
    EXPECT_EQ(KBitsAt<uint16_t>("AA"), 0x4141u);
}

} // namespace
