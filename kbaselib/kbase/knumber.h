#ifndef KBASELIB_KBASE_KNUMBER_H
#define KBASELIB_KBASE_KNUMBER_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <string_view>

/// \file
/// Numbers as text, for every reader and writer. Independent of the locale: the decimal point is always '.'. Parsed doubles are correctly
/// rounded, so text with enough digits round-trips to the last bit.

namespace qexsdk
{

/// Result of parsing a token.
enum class KNumberStatus
{
    eOK,       ///< A number; the value is set.
    eINVALID,  ///< Not a number, or not as a whole; the value is unchanged.
    eOVERFLOW, ///< A number too large for the type; the value is the type's limit on that side (an infinity for double).
};

/// Whether the words for non-finite values count as numbers.
enum class KNonFiniteWords
{
    eREJECT, ///< They do not.
    eACCEPT, ///< inf, infinity and nan do, with any sign, case-insensitive.
};

/// Parses the whole of \p pToken as a decimal double: an optional sign (+ too), digits with at most one point, an optional exponent. A
/// value too small for a double gives a zero of its sign. No blanks, no hexadecimal.
QEX_API KNumberStatus KNumberParse(std::string_view pToken, double& pValue, KNonFiniteWords pWords = KNonFiniteWords::eREJECT);

/// Parses the whole of \p pToken as a decimal integer with an optional sign (+ too).
QEX_API KNumberStatus KNumberParse(std::string_view pToken, int& pValue);
/// As for int.
QEX_API KNumberStatus KNumberParse(std::string_view pToken, long long& pValue);

/// Buffer size for any text of KNumberPrintFixed, KNumberPrint and KNumberPrintShortest with at most kNumberMaxDecimals digits after
/// the point.
inline constexpr size_t kNumberBufferSize = 384;
/// Maximum digits after the point that KNumberPrintFixed writes.
inline constexpr int kNumberMaxDecimals = 60;

/// Writes \p pValue without exponent, rounded to \p pDecimals digits after the point (clamped to 0 and kNumberMaxDecimals), without
/// trailing zeros or a trailing point. A value that rounds to zero is "0", never "-0"; non-finite values are inf, -inf and nan.
/// \return the end of the text, which is not NUL-terminated; null, with undefined bytes at \p pBegin, when it does not fit.
QEX_API char* KNumberPrintFixed(char* pBegin, char* pEnd, double pValue, int pDecimals);

/// Writes the shortest text that parses back to exactly \p pValue, with an exponent where that is shorter.
/// \return as for KNumberPrintFixed.
QEX_API char* KNumberPrintShortest(char* pBegin, char* pEnd, double pValue);

/// Writes \p pValue as printf does in the "C" locale for %.*f, %.*g and %.*e; a negative precision means 6.
/// \param pBegin,pEnd the buffer.
/// \param pValue       any number; inf and nan as printf writes them.
/// \param pConversion  one of f, g, e
/// \param pPrecision   digits, as printf counts them for the conversion.
/// \return as for KNumberPrintFixed; null for another conversion too.
QEX_API char* KNumberPrint(char* pBegin, char* pEnd, double pValue, char pConversion, int pPrecision);

/// Appends the text of KNumberPrintFixed to \p pText. False, and the text unchanged, when memory runs out.
QEX_API bool KNumberAppendFixed(std::string& pText, double pValue, int pDecimals) noexcept;

/// Appends the text of KNumberPrintShortest to \p pText. False, and the text unchanged, when memory runs out.
QEX_API bool KNumberAppendShortest(std::string& pText, double pValue) noexcept;

} // namespace qexsdk

#endif
