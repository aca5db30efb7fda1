#ifndef KBASELIB_KBASE_KNUMBERSCAN_H
#define KBASELIB_KBASE_KNUMBERSCAN_H

#include <cstddef>
#include <cstdint>

/// \file
/// Fast path for text made of short plain numbers.

namespace qexsdk
{

namespace knumberdetail
{

/// Decimal digits that a double always holds exactly.
inline constexpr std::ptrdiff_t kExactDigits = 15;

/// Powers of ten up to that exponent, each exact in a double.
inline constexpr double kExactPowers[kExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                          1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Appends the digits at \p pAt to \p pDigits.
/// \return the first character that is not a digit
inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    for (; pAt != pEnd && static_cast<unsigned char>(*pAt - '0') < 10; ++pAt)
    {
        pDigits = 10 * pDigits + static_cast<unsigned char>(*pAt - '0');
    }
    return pAt;
}

} // namespace knumberdetail

/// Parses the plain decimal number (sign, digits, point, digits) at the start of a text, for loops over millions of them: no token has
/// to be cut out first. Numbers of up to 15 digits, as in motion files, take one pass and are correctly rounded: the digits and the
/// power of ten are both exact, so their quotient is rounded once.
/// \return the end of the number; null, with the value unchanged, when there is no such number or it has more digits. The caller then
/// parses the whole token with KNumberParse, and likewise when the number is not followed by a delimiter (but by an exponent or a
/// letter).
inline const char* KNumberScan(const char* pBegin, const char* pEnd, double& pValue)
{
    if (pBegin == pEnd)
    {
        return nullptr;
    }
    const bool     lNegative = *pBegin == '-';
    const char*    lFirst = pBegin + (lNegative || *pBegin == '+' ? 1 : 0);
    std::uint64_t  lDigits = 0;
    std::ptrdiff_t lDecimals = 0;
    const char*    lAt = knumberdetail::AppendDigits(lFirst, pEnd, lDigits);
    std::ptrdiff_t lCount = lAt - lFirst;
    if (lAt != pEnd && *lAt == '.')
    {
        const char* lPoint = ++lAt;
        lAt = knumberdetail::AppendDigits(lPoint, pEnd, lDigits);
        lDecimals = lAt - lPoint;
        lCount += lDecimals;
    }
    if (lCount == 0 || lCount > knumberdetail::kExactDigits)
    {
        return nullptr;
    }
    const double lValue = static_cast<double>(static_cast<std::int64_t>(lDigits)) / knumberdetail::kExactPowers[lDecimals];
    pValue = lNegative ? -lValue : lValue;
    return lAt;
}

} // namespace qexsdk

#endif
