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
/// Most digits after the point that KNumberPrintFixed writes.
inline constexpr int kNumberMaxDecimals = 60;

/// Writes \p pValue without exponent with at most \p pDecimals digits after the point (0 to kNumberMaxDecimals; what lies outside
/// is moved to the nearer end), nearest to the value, without zeros at the end and without a lone point. A value that rounds to
/// zero is "0", never "-0"; inf, -inf and nan are written so.
/// \return the end of the text, which is not NUL-terminated; null, with what is at \p pBegin undefined, when it does not fit.
QEX_API char* KNumberPrintFixed(char* pBegin, char* pEnd, double pValue, int pDecimals);

/// Writes the shortest text that reads back as exactly \p pValue, with an exponent where that is shorter.
/// \return as for KNumberPrintFixed.
QEX_API char* KNumberPrintShortest(char* pBegin, char* pEnd, double pValue);

/// Writes \p pValue as printf does in the "C" locale for %.*f, %.*g and %.*e; a negative precision means 6.
/// \param pBegin,pEnd where to write.
/// \param pValue       any number; inf and nan as printf writes them.
/// \param pConversion  one of f, g, e
/// \param pPrecision   digits, as printf counts them for the conversion.
/// \return as for KNumberPrintFixed; null for another conversion too.
QEX_API char* KNumberPrint(char* pBegin, char* pEnd, double pValue, char pConversion, int pPrecision);

/// KNumberPrintFixed appended to \p pText.
QEX_API void KNumberAppendFixed(std::string& pText, double pValue, int pDecimals);

/// KNumberPrintShortest appended to \p pText.
QEX_API void KNumberAppendShortest(std::string& pText, double pValue);

} // namespace qexsdk

#endif
