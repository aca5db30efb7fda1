#ifndef KBASELIB_KBASE_KNUMBERSCAN_H
#define KBASELIB_KBASE_KNUMBERSCAN_H

#include <kbaselib/kbase/kbits.h>

#include <cstddef>
#include <cstdint>

/// \file
/// The fast way through text that is made of short plain numbers. Where digits end is what a processor cannot foresee, so eight
/// characters are looked at together, without a branch for each.

namespace qexsdk
{

namespace knumberdetail
{

/// Powers of ten that a double holds exactly.
inline constexpr double kExactPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Powers of ten for up to eight digits.
inline constexpr std::uint64_t kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

/// Appends the digits at \p pAt to \p pDigits, one after the other.
/// \return the first character that is no digit
inline const char* AppendDigitsSlowly(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    for (; pAt != pEnd && static_cast<unsigned char>(*pAt - '0') < 10; ++pAt)
    {
        pDigits = 10 * pDigits + static_cast<unsigned char>(*pAt - '0');
    }
    return pAt;
}

#if defined(__GNUC__) && defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

/// Eight characters, the first one the lowest byte. A digit is its value; whatever else is 10 or more.
inline std::uint64_t LoadEight(const char* pAt)
{
    return KBitsAt<std::uint64_t>(pAt) ^ (std::uint64_t{0x0101010101010101} * '0');
}

/// The highest bit of each byte of LoadEight() that is no digit.
inline std::uint64_t OthersThanDigits(std::uint64_t pWord)
{
    constexpr std::uint64_t kEach = 0x0101010101010101;
    return (((pWord & (kEach * 0x7F)) + kEach * (0x80 - 10)) | pWord) & (kEach * 0x80);
}

/// The number that the first \p pBits of LoadEight() are, up to 56.
inline std::uint64_t JoinDigits(std::uint64_t pWord, unsigned pBits)
{
    // The digits go to the top of the word, behind leading zeros; then pairs, fours and all eight are added up.
    pWord = (pWord << 8) << (56 - pBits);
    pWord = 10 * pWord + (pWord >> 8);
    return ((pWord & 0x000000FF000000FF) * (100 + (std::uint64_t{1000000} << 32)) +
            ((pWord >> 16) & 0x000000FF000000FF) * (1 + (std::uint64_t{10000} << 32))) >>
           32;
}

/// As AppendDigitsSlowly, for up to seven digits without a loop.
inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    if (pEnd - pAt < 8)
    {
        return AppendDigitsSlowly(pAt, pEnd, pDigits);
    }
    const std::uint64_t lWord = LoadEight(pAt);
    const std::uint64_t lOthers = OthersThanDigits(lWord);
    if (lOthers == 0)
    {
        return AppendDigitsSlowly(pAt, pEnd, pDigits);
    }
    const unsigned lBits = static_cast<unsigned>(__builtin_ctzll(lOthers)) & 0x38u;
    pDigits = pDigits * kPowers[lBits / 8] + JoinDigits(lWord, lBits);
    return pAt + lBits / 8;
}

/// The digits of a number with a point that takes up to eight characters, looked at together; \p pDecimals tells how many stand
/// behind the point.
/// \return what follows the number; null when it is of another kind
inline const char* ScanShort(const char* pAt, const char* pEnd, std::uint64_t& pDigits, std::ptrdiff_t& pDecimals)
{
    if (pEnd - pAt <= 8)
    {
        return nullptr;
    }
    const std::uint64_t lWord = LoadEight(pAt);
    const std::uint64_t lOthers = OthersThanDigits(lWord);
    const std::uint64_t lBehind = lOthers & (lOthers - 1); // Without the point.
    // Places in bits.
    const unsigned lPoint = lOthers == 0 ? 0 : static_cast<unsigned>(__builtin_ctzll(lOthers)) & 0x38u;
    const unsigned lEnd = lBehind == 0 ? 64 : static_cast<unsigned>(__builtin_ctzll(lBehind)) & 0x38u;
    if (((lWord >> lPoint) & 0xFF) != ('.' ^ '0') || lEnd < 16 || (lBehind == 0 && static_cast<unsigned char>(pAt[8] - '0') < 10))
    {
        return nullptr;
    }
    // The decimals move up to the digits in front of the point.
    const std::uint64_t lBelow = (std::uint64_t{1} << lPoint) - 1;
    pDigits = JoinDigits((lWord & lBelow) | ((lWord >> 8) & ~lBelow), lEnd - 8);
    pDecimals = static_cast<std::ptrdiff_t>((lEnd - 8 - lPoint) / 8);
    return pAt + lEnd / 8;
}

#else

inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    return AppendDigitsSlowly(pAt, pEnd, pDigits);
}

inline const char* ScanShort(const char*, const char*, std::uint64_t&, std::ptrdiff_t&)
{
    return nullptr;
}

#endif

/// As ScanShort, for digits with or without a point, as many as a double surely holds; null also when there are more.
inline const char* ScanLong(const char* pAt, const char* pEnd, std::uint64_t& pDigits, std::ptrdiff_t& pDecimals)
{
    const char*    lAt = AppendDigits(pAt, pEnd, pDigits);
    std::ptrdiff_t lCount = lAt - pAt;
    if (lAt != pEnd && *lAt == '.')
    {
        const char* lPoint = ++lAt;
        lAt = AppendDigits(lPoint, pEnd, pDigits);
        pDecimals = lAt - lPoint;
        lCount += pDecimals;
    }
    return lCount == 0 || lCount > 15 ? nullptr : lAt;
}

} // namespace knumberdetail

/// Reads the plain decimal number (sign, digits, point, digits) that text begins with, for loops over millions of them: no token
/// needs to be cut out first. Numbers of up to 15 digits, as motion files hold them, are done here in one pass and are correctly
/// rounded: the digits and the power of ten are both exact, so their one quotient is.
/// \return where the number ends; null, with the value unchanged, when there is no such number or it has more digits. The caller
/// then takes the token as a whole to KNumberParse. It does so as well when what follows the number is no delimiter (an
/// exponent, a letter).
inline const char* KNumberScan(const char* pBegin, const char* pEnd, double& pValue)
{
    if (pBegin == pEnd)
    {
        return nullptr;
    }
    constexpr double kSigns[] = {1.0, -1.0};
    const bool       lNegative = *pBegin == '-';
    const char*      lFirst = pBegin + (lNegative || *pBegin == '+' ? 1 : 0);
    std::uint64_t    lDigits = 0;
    std::ptrdiff_t   lDecimals = 0;
    const char*      lAt = knumberdetail::ScanShort(lFirst, pEnd, lDigits, lDecimals);
    if (lAt == nullptr)
    {
        lAt = knumberdetail::ScanLong(lFirst, pEnd, lDigits, lDecimals);
        if (lAt == nullptr)
        {
            return nullptr;
        }
    }
    pValue = kSigns[lNegative ? 1 : 0] * (static_cast<double>(static_cast<std::int64_t>(lDigits)) / knumberdetail::kExactPowers[lDecimals]);
    return lAt;
}

} // namespace qexsdk

#endif
