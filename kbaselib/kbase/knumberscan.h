#ifndef KBASELIB_KBASE_KNUMBERSCAN_H
#define KBASELIB_KBASE_KNUMBERSCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

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

/// As AppendDigitsSlowly, for up to seven digits without a loop. The first character is the lowest byte of the word.
inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    constexpr std::uint64_t kEach = 0x0101010101010101;
    std::uint64_t           lWord;
    if (pEnd - pAt < 8)
    {
        return AppendDigitsSlowly(pAt, pEnd, pDigits);
    }
    std::memcpy(&lWord, pAt, sizeof(lWord));
    // A digit becomes its value; whatever else is 10 or more in its byte, which lifts the byte's highest bit.
    lWord ^= kEach * '0';
    const std::uint64_t lOthers = (((lWord & (kEach * 0x7F)) + kEach * (0x80 - 10)) | lWord) & (kEach * 0x80);
    if (lOthers == 0)
    {
        return AppendDigitsSlowly(pAt, pEnd, pDigits);
    }
    const int lCount = __builtin_ctzll(lOthers) / 8;
    // The digits go to the top of the word, behind leading zeros; then pairs, fours and all eight are added up.
    lWord = (lWord << 8) << (8 * (7 - lCount));
    lWord = 10 * lWord + (lWord >> 8);
    lWord = ((lWord & 0x000000FF000000FF) * (100 + (std::uint64_t{1000000} << 32)) +
             ((lWord >> 16) & 0x000000FF000000FF) * (1 + (std::uint64_t{10000} << 32))) >>
            32;
    pDigits = pDigits * kPowers[lCount] + lWord;
    return pAt + lCount;
}

#else

inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    return AppendDigitsSlowly(pAt, pEnd, pDigits);
}

#endif

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
    const char*      lAt = knumberdetail::AppendDigits(lFirst, pEnd, lDigits);
    std::ptrdiff_t   lCount = lAt - lFirst;
    std::ptrdiff_t   lDecimals = 0;
    if (lAt != pEnd && *lAt == '.')
    {
        const char* lPoint = ++lAt;
        lAt = knumberdetail::AppendDigits(lPoint, pEnd, lDigits);
        lDecimals = lAt - lPoint;
        lCount += lDecimals;
    }
    if (lCount == 0 || lCount > 15)
    {
        return nullptr;
    }
    pValue = kSigns[lNegative ? 1 : 0] * (static_cast<double>(lDigits) / knumberdetail::kExactPowers[lDecimals]);
    return lAt;
}

} // namespace qexsdk

#endif
