#ifndef KBASELIB_KBASE_KNUMBER_H
#define KBASELIB_KBASE_KNUMBER_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <string_view>

/// \file
/// Numbers as text, for every reader and writer. The process's locale never matters: a decimal point is a point. Doubles are read
/// correctly rounded, so text written with enough digits comes back to the last bit.

namespace qexsdk
{

/// What a token turned out to be.
enum class KNumberStatus
{
    eOK,       ///< A number; the value is set.
    eINVALID,  ///< Not a number, or not as a whole; the value is unchanged.
    eOVERFLOW, ///< A number too large for the type; the value is the type's end on that side (an infinity for double).
};

/// Whether the words for what is not finite are numbers.
enum class KNumberWords
{
    eFINITE,    ///< No.
    eNONFINITE, ///< inf, infinity and nan are, with any sign and in any case.
};

/// Reads the whole of \p pToken as a decimal double: an optional sign (+ too), digits with at most one point, an optional
/// exponent. A value too small for a double gives a zero of its sign. No blanks, no hexadecimal.
QEX_API KNumberStatus KNumberParse(std::string_view pToken, double& pValue, KNumberWords pWords = KNumberWords::eFINITE);

/// Reads the whole of \p pToken as a decimal integer with an optional sign (+ too).
QEX_API KNumberStatus KNumberParse(std::string_view pToken, int& pValue);
/// As for int.
QEX_API KNumberStatus KNumberParse(std::string_view pToken, long long& pValue);

/// Room for any text of KNumberPrintFixed, KNumberPrint and KNumberPrintShortest whose digits after the point are at most
/// kNumberMaxDecimals.
inline constexpr size_t kNumberBufferSize = 384;
inline constexpr int    kNumberMaxDecimals = 60;

/// Writes \p pValue without exponent with at most \p pDecimals digits after the point (0 to kNumberMaxDecimals; what lies outside
/// is moved to the nearer end), nearest to the value, without zeros at the end and without a lone point. A value that rounds to
/// zero is "0", never "-0"; inf, -inf and nan are written so.
/// \return the end of the text, which is not NUL-terminated; null, with what is at \p pBegin undefined, when it does not fit.
QEX_API char* KNumberPrintFixed(char* pBegin, char* pEnd, double pValue, int pDecimals);

/// Writes the shortest text that reads back as exactly \p pValue, with an exponent where that is shorter.
/// \return as for KNumberPrintFixed.
QEX_API char* KNumberPrintShortest(char* pBegin, char* pEnd, double pValue);

/// Writes \p pValue as printf does in the "C" locale for %.*f, %.*g and %.*e; a negative precision means 6.
/// \param pConversion one of f, g, e
/// \return as for KNumberPrintFixed; null for another conversion too.
QEX_API char* KNumberPrint(char* pBegin, char* pEnd, double pValue, char pConversion, int pPrecision);

/// KNumberPrintFixed appended to \p pText.
QEX_API void KNumberAppendFixed(std::string& pText, double pValue, int pDecimals);

/// KNumberPrintShortest appended to \p pText.
QEX_API void KNumberAppendShortest(std::string& pText, double pValue);

namespace knumberdetail
{
/// Powers of ten that a double holds exactly.
inline constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                          1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
} // namespace knumberdetail

/// Reads the plain decimal number (sign, digits, point, digits) that text begins with, for loops over millions of them: no token
/// needs to be cut out first. Numbers of up to 15 digits, as motion files hold them, are done here in one pass and are correctly
/// rounded: the digits and the power of ten are both exact, so their one quotient is.
/// \return where the number ends; null, with the value unchanged, when there is no such number or it has more digits. The caller
/// then takes the token as a whole to KNumberParse. It does so as well when what follows the number is no delimiter (an
/// exponent, a letter).
inline const char* KNumberScan(const char* pBegin, const char* pEnd, double& pValue)
{
    const char* lAt = pBegin;
    const bool  lNegative = lAt != pEnd && *lAt == '-';
    if (lAt != pEnd && (*lAt == '-' || *lAt == '+'))
    {
        ++lAt;
    }
    unsigned long long lDigits = 0;
    const char*        lFirst = lAt;
    for (; lAt != pEnd && static_cast<unsigned char>(*lAt - '0') < 10; ++lAt)
    {
        lDigits = 10 * lDigits + static_cast<unsigned char>(*lAt - '0');
    }
    std::ptrdiff_t lCount = lAt - lFirst;
    std::ptrdiff_t lDecimals = 0;
    if (lAt != pEnd && *lAt == '.')
    {
        const char* lPoint = ++lAt;
        for (; lAt != pEnd && static_cast<unsigned char>(*lAt - '0') < 10; ++lAt)
        {
            lDigits = 10 * lDigits + static_cast<unsigned char>(*lAt - '0');
        }
        lDecimals = lAt - lPoint;
        lCount += lDecimals;
    }
    if (lCount == 0 || lCount > 15)
    {
        return nullptr;
    }
    const double lSize = static_cast<double>(lDigits) / knumberdetail::kExactPowers[lDecimals];
    pValue = lNegative ? -lSize : lSize;
    return lAt;
}

} // namespace qexsdk

#endif
