#include <qexioplugins/gltf/kqexgltfbinary.h>

namespace qexsdk
{

namespace
{

constexpr std::size_t kMaxFileSize = 0xFFFFFFFFu; ///< The header holds the size in 32 bits.
constexpr std::size_t kHeaderSizes = 12 + 8 + 8;  ///< Of the file and of its two chunks.

std::string LittleEndianBytes(std::size_t pValue)
{
    std::string lBytes;
    for (int i = 0; i < 4; ++i)
    {
        lBytes += static_cast<char>(pValue >> (8 * i) & 0xFF);
    }
    return lBytes;
}

} // namespace

std::string MakeGltfBinaryStart(std::string pJson, std::size_t pBytes)
{
    pJson.resize((pJson.size() + 3) / 4 * 4, ' ');
    const std::size_t lRest = kHeaderSizes + pJson.size();
    if (lRest > kMaxFileSize || pBytes > kMaxFileSize - lRest)
    {
        return std::string();
    }
    return "glTF" + LittleEndianBytes(2) + LittleEndianBytes(lRest + pBytes) + LittleEndianBytes(pJson.size()) + "JSON" + pJson +
           LittleEndianBytes(pBytes) + std::string("BIN\0", 4);
}

} // namespace qexsdk
