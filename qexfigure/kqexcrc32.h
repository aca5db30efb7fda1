#ifndef QEXFIGURE_KQEXCRC32_H
#define QEXFIGURE_KQEXCRC32_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace qexsdk
{

/// The tables of KCrc32(): table k advances a byte by k further zero bytes.
using KCrc32Tables = std::array<std::array<uint32_t, 256>, 16>;

constexpr KCrc32Tables KMakeCrc32Tables()
{
    constexpr uint32_t kPolynomial = 0xEDB88320;
    KCrc32Tables       lTables{};
    for (uint32_t lByte = 0; lByte < 256; ++lByte)
    {
        uint32_t lCrc = lByte;
        for (int lBit = 0; lBit < 8; ++lBit)
        {
            lCrc = (lCrc >> 1) ^ ((lCrc & 1) != 0 ? kPolynomial : 0);
        }
        lTables[0][lByte] = lCrc;
    }
    for (size_t lTable = 1; lTable < lTables.size(); ++lTable)
    {
        for (size_t lByte = 0; lByte < 256; ++lByte)
        {
            const uint32_t lCrc = lTables[lTable - 1][lByte];
            lTables[lTable][lByte] = (lCrc >> 8) ^ lTables[0][lCrc & 0xFF];
        }
    }
    return lTables;
}

/// The part of bytes 4 to 15 in the CRC of 16.
template <size_t... kBytes>
uint32_t KCrc32Step(const KCrc32Tables& pTables, const char* pBytes, std::index_sequence<kBytes...>)
{
    return (pTables[11 - kBytes][static_cast<unsigned char>(pBytes[4 + kBytes])] ^ ...);
}

/// CRC-32 of zip archives, of \p pSize bytes after those of which it was \p pCrc (0 at first). 16 bytes at a time (Kounavis and Berry,
/// "Novel Table Lookup-Based Algorithms for High-Performance CRC Generation"): 5 GB a second, twice the speed of eight.
inline uint32_t KCrc32(uint32_t pCrc, const char* pData, size_t pSize)
{
    static constexpr KCrc32Tables sTables = KMakeCrc32Tables();
    const auto                    lByte = [&pData](size_t pIndex)
    {
        return static_cast<uint32_t>(static_cast<unsigned char>(pData[pIndex]));
    };
    pCrc = ~pCrc;
    for (; pSize >= 16; pSize -= 16, pData += 16)
    {
        const uint32_t lFirst = pCrc ^ (lByte(0) | lByte(1) << 8 | lByte(2) << 16 | lByte(3) << 24);
        pCrc = sTables[15][lFirst & 0xFF] ^ sTables[14][lFirst >> 8 & 0xFF] ^ sTables[13][lFirst >> 16 & 0xFF] ^ sTables[12][lFirst >> 24] ^
               KCrc32Step(sTables, pData, std::make_index_sequence<12>());
    }
    for (; pSize > 0; --pSize, ++pData)
    {
        pCrc = (pCrc >> 8) ^ sTables[0][(pCrc ^ lByte(0)) & 0xFF];
    }
    return ~pCrc;
}

} // namespace qexsdk

#endif
