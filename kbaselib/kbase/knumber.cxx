#include <kbaselib/kbase/knumber.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/knumberscan.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <system_error>

namespace qexsdk
{

namespace
{

bool IsDigit(char pChar)
{
    return pChar >= '0' && pChar <= '9';
}

/// Removes the sign; \p pNegative receives whether it was a minus.
std::string_view WithoutSign(std::string_view pToken, bool& pNegative)
{
    pNegative = !pToken.empty() && pToken.front() == '-';
    if (!pToken.empty() && (pToken.front() == '-' || pToken.front() == '+'))
    {
        pToken.remove_prefix(1);
    }
    return pToken;
}

/// Whether a valid unsigned decimal number is at least 1. from_chars reports overflow and underflow alike; such numbers are so far from
/// 1 that the decimal exponent of the first nonzero digit decides.
bool IsLarge(std::string_view pNumber)
{
    constexpr long long kEnough = LLONG_MAX / 4;
    const size_t        lExponent = pNumber.find_first_of("eE");
    std::string_view    lMantissa = pNumber.substr(0, lExponent);
    const size_t        lPoint = std::min(lMantissa.find('.'), lMantissa.size());
    const size_t        lFirst = lMantissa.find_first_of("123456789");
    long long           lMagnitude = 0;
    if (lFirst == std::string_view::npos)
    {
        return false;
    }
    lMagnitude = static_cast<long long>(lPoint) - static_cast<long long>(lFirst) - (lFirst < lPoint ? 1 : 0);
    if (lExponent != std::string_view::npos)
    {
        bool             lNegative = false;
        std::string_view lDigits = WithoutSign(pNumber.substr(lExponent + 1), lNegative);
        long long        lValue = 0;
        for (char lDigit : lDigits)
        {
            lValue = std::min(kEnough, 10 * std::min(lValue, kEnough / 20) + (lDigit - '0'));
        }
        lMagnitude += lNegative ? -lValue : lValue;
    }
    return lMagnitude >= 0;
}

/// Parses inf, infinity or nan, case-insensitive.
bool ParseNonFinite(std::string_view pText, double& pValue)
{
    if (KEqualsIgnoreCase(pText, "inf") || KEqualsIgnoreCase(pText, "infinity"))
    {
        pValue = std::numeric_limits<double>::infinity();
        return true;
    }
    if (KEqualsIgnoreCase(pText, "nan"))
    {
        pValue = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    return false;
}

template <typename T>
KNumberStatus ParseInteger(std::string_view pToken, T& pValue)
{
    bool                   lNegative = false;
    const std::string_view lDigits = WithoutSign(pToken, lNegative);
    if (lDigits.empty() || !IsDigit(lDigits.front()))
    {
        return KNumberStatus::eINVALID;
    }
    const char* lBegin = lNegative ? lDigits.data() - 1 : lDigits.data();
    const char* lEnd = lDigits.data() + lDigits.size();
    T           lValue = 0;
    const auto  lResult = std::from_chars(lBegin, lEnd, lValue);
    if (lResult.ptr != lEnd)
    {
        return KNumberStatus::eINVALID;
    }
    if (lResult.ec == std::errc::result_out_of_range)
    {
        pValue = lNegative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
        return KNumberStatus::eOVERFLOW;
    }
    pValue = lValue;
    return KNumberStatus::eOK;
}

char* EndOf(const std::to_chars_result& pResult)
{
    return pResult.ec == std::errc() ? pResult.ptr : nullptr;
}

} // namespace

KNumberStatus KNumberParse(std::string_view pToken, double& pValue, KNonFiniteWords pWords)
{
    const char* lEnd = pToken.data() + pToken.size();
    double      lValue = 0;
    if (KNumberScan(pToken.data(), lEnd, lValue) == lEnd && !pToken.empty())
    {
        pValue = lValue;
        return KNumberStatus::eOK;
    }

    bool                   lNegative = false;
    const std::string_view lNumber = WithoutSign(pToken, lNegative);
    if (lNumber.empty())
    {
        return KNumberStatus::eINVALID;
    }
    KNumberStatus lStatus = KNumberStatus::eOK;
    if (IsDigit(lNumber.front()) || lNumber.front() == '.')
    {
        const auto lResult = std::from_chars(lNumber.data(), lEnd, lValue);
        if (lResult.ec == std::errc::invalid_argument || lResult.ptr != lEnd)
        {
            return KNumberStatus::eINVALID;
        }
        if (lResult.ec == std::errc::result_out_of_range || std::isinf(lValue))
        {
            const bool lLarge = IsLarge(lNumber);
            lValue = lLarge ? std::numeric_limits<double>::infinity() : 0.0;
            lStatus = lLarge ? KNumberStatus::eOVERFLOW : KNumberStatus::eOK;
        }
    }
    else if (pWords == KNonFiniteWords::eREJECT || !ParseNonFinite(lNumber, lValue))
    {
        return KNumberStatus::eINVALID;
    }
    pValue = lNegative ? -lValue : lValue;
    return lStatus;
}

KNumberStatus KNumberParse(std::string_view pToken, int& pValue)
{
    return ParseInteger(pToken, pValue);
}

KNumberStatus KNumberParse(std::string_view pToken, long long& pValue)
{
    return ParseInteger(pToken, pValue);
}

namespace
{

constexpr int kSmallDecimals = 9; ///< Maximum decimals of PrintSmall.
constexpr int kSmallText = 32;    ///< Buffer size it needs: sign, 12 digits, point and the fixed-size block of decimals.

/// Two digits for each number from 0 to 99.
constexpr char kPairs[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445464748"
                          "4950515253545556575859606162636465666768697071727374757677787980818283848586878889909192939495969798"
                          "99";

/// Writes the last \p pCount digits of \p pDigits so that they end at \p pEnd; returns \p pDigits without them.
unsigned long long PrintDigits(char* pEnd, unsigned long long pDigits, int pCount)
{
    for (; pCount >= 2; pCount -= 2)
    {
        const char* lPair = kPairs + 2 * (pDigits % 100);
        pDigits /= 100;
        pEnd -= 2;
        pEnd[0] = lPair[0];
        pEnd[1] = lPair[1];
    }
    if (pCount > 0)
    {
        pEnd[-1] = static_cast<char>('0' + pDigits % 10);
        pDigits /= 10;
    }
    return pDigits;
}

int CountDigits(unsigned long long pNumber)
{
    int lCount = 1;
    for (; pNumber >= 10; pNumber /= 10)
    {
        ++lCount;
    }
    return lCount;
}

/// Writes \p pDigits with the last \p pDecimals of them after the point, without trailing zeros.
char* PrintScaled(char* pAt, unsigned long long pDigits, int pDecimals)
{
    char                     lFraction[16] = {};
    const unsigned long long lWhole = PrintDigits(lFraction + pDecimals, pDigits, pDecimals);
    const int                lCount = CountDigits(lWhole);
    PrintDigits(pAt + lCount, lWhole, lCount);
    pAt += lCount;
    while (pDecimals > 0 && lFraction[pDecimals - 1] == '0')
    {
        --pDecimals;
    }
    if (pDecimals > 0)
    {
        *pAt++ = '.';
        std::memcpy(pAt, lFraction, sizeof lFraction); // A copy of constant size is faster than one of pDecimals bytes.
        pAt += pDecimals;
    }
    return pAt;
}

/// KNumberPrintFixed in integer arithmetic, for typical motion values. Null when the value is so large that its scaled fraction is
/// imprecise, or so close to halfway between two texts that only all of its digits decide; also for many decimals or a short buffer.
char* PrintSmall(char* pBegin, char* pEnd, double pValue, int pDecimals)
{
    constexpr double kLargest = 1e12;
    constexpr double kMargin = 1e-3; // The error of scaling is at most 1e-4.
    if (pDecimals > kSmallDecimals || pEnd - pBegin < kSmallText)
    {
        return nullptr;
    }
    const double lScaled = std::fabs(pValue) * knumberdetail::kExactPowers[pDecimals];
    if (!(lScaled < kLargest))
    {
        return nullptr;
    }
    const unsigned long long lFloor = static_cast<unsigned long long>(lScaled);
    const double             lFraction = lScaled - static_cast<double>(lFloor);
    if (std::fabs(lFraction - 0.5) < kMargin)
    {
        return nullptr;
    }
    const unsigned long long lDigits = lFloor + (lFraction > 0.5 ? 1 : 0);
    if (pValue < 0.0 && lDigits != 0)
    {
        *pBegin++ = '-';
    }
    return PrintScaled(pBegin, lDigits, pDecimals);
}

} // namespace

char* KNumberPrintFixed(char* pBegin, char* pEnd, double pValue, int pDecimals)
{
    const int lDecimals = std::clamp(pDecimals, 0, kNumberMaxDecimals);
    if (char* lSmall = PrintSmall(pBegin, pEnd, pValue, lDecimals))
    {
        return lSmall;
    }
    if (std::isnan(pValue))
    {
        pValue = std::numeric_limits<double>::quiet_NaN();
    }
    char* lEnd = EndOf(std::to_chars(pBegin, pEnd, pValue, std::chars_format::fixed, lDecimals));
    if (lEnd == nullptr || !std::isfinite(pValue))
    {
        return lEnd;
    }
    if (lDecimals > 0)
    {
        while (lEnd[-1] == '0')
        {
            --lEnd;
        }
        lEnd -= lEnd[-1] == '.' ? 1 : 0;
    }
    if (lEnd - pBegin == 2 && pBegin[0] == '-' && pBegin[1] == '0')
    {
        pBegin[0] = '0';
        --lEnd;
    }
    return lEnd;
}

char* KNumberPrintShortest(char* pBegin, char* pEnd, double pValue)
{
    return EndOf(std::to_chars(pBegin, pEnd, pValue));
}

char* KNumberPrint(char* pBegin, char* pEnd, double pValue, char pConversion, int pPrecision)
{
    const int lPrecision = pPrecision < 0 ? 6 : pPrecision;
    switch (pConversion)
    {
    case 'f':
        return EndOf(std::to_chars(pBegin, pEnd, pValue, std::chars_format::fixed, lPrecision));
    case 'g':
        return EndOf(std::to_chars(pBegin, pEnd, pValue, std::chars_format::general, lPrecision));
    case 'e':
        return EndOf(std::to_chars(pBegin, pEnd, pValue, std::chars_format::scientific, lPrecision));
    default:
        return nullptr;
    }
}

namespace
{

/// Appends the characters from \p pBegin to \p pEnd. False when memory runs out.
bool AppendText(std::string& pText, const char* pBegin, const char* pEnd) noexcept
{
    try
    {
        pText.append(pBegin, static_cast<size_t>(pEnd - pBegin));
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

} // namespace

bool KNumberAppendFixed(std::string& pText, double pValue, int pDecimals) noexcept
{
    char lBuffer[kNumberBufferSize];
    return AppendText(pText, lBuffer, KNumberPrintFixed(lBuffer, lBuffer + sizeof(lBuffer), pValue, pDecimals));
}

bool KNumberAppendShortest(std::string& pText, double pValue) noexcept
{
    char lBuffer[kNumberBufferSize];
    return AppendText(pText, lBuffer, KNumberPrintShortest(lBuffer, lBuffer + sizeof(lBuffer), pValue));
}

} // namespace qexsdk
