#ifndef KBASELIB_KBASE_KNUMBERSCAN_H
#define KBASELIB_KBASE_KNUMBERSCAN_H

#include <cstddef>
#include <cstdint>

/// \file
/// The fast path through text that is made of short plain numbers.

namespace qexsdk
{

namespace knumberdetail
{

/// Digits that a double surely holds.
inline constexpr std::ptrdiff_t kExactDigits = 15;

/// Powers of ten for that many digits after the point, each exact in a double.
inline constexpr double kExactPowers[kExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                          1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Appends the digits at \p pAt to \p pDigits.
/// \return the first character that is no digit
inline const char* AppendDigits(const char* pAt, const char* pEnd, std::uint64_t& pDigits)
{
    for (; pAt != pEnd && static_cast<unsigned char>(*pAt - '0') < 10; ++pAt)
    {
        pDigits = 10 * pDigits + static_cast<unsigned char>(*pAt - '0');
    }
    return pAt;
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
