#include <qexioplugins/gltf/kqexgltfbinary.h>

#include <gtest/gtest.h>

#include <string>

using namespace qexsdk;

namespace
{

TEST(MakeGltfBinaryStart, HoldsTheSizesAndPadsTheJson)
{
    EXPECT_EQ(MakeGltfBinaryStart("{ }", 0x01020304), std::string("glTF\x02\0\0\0\x24\x03\x02\x01\x04\0\0\0JSON{ } \x04\x03\x02\x01"
                                                                  "BIN\0",
                                                                  32));
}

/// The limit is that of the whole file, not of its buffer.
TEST(MakeGltfBinaryStart, CountsHeadersAndJsonInTheLimit)
{
    const std::size_t lLargest = 0xFFFFFFFFu - 32;
    EXPECT_EQ(MakeGltfBinaryStart("{}", lLargest).substr(8, 4), "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(MakeGltfBinaryStart("{}", lLargest + 1), "");
    EXPECT_EQ(MakeGltfBinaryStart("{    }", lLargest - 3), "") << "more JSON leaves less room";
    EXPECT_EQ(MakeGltfBinaryStart("{}", static_cast<std::size_t>(-1)), "");
}

} // namespace
