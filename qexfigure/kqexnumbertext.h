#ifndef QEXFIGURE_KQEXNUMBERTEXT_H
#define QEXFIGURE_KQEXNUMBERTEXT_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

/// \file
/// Numbers in messages and pictures. Independent of the locale. These functions may throw std::bad_alloc.

namespace qexsdk
{

/// \p pValue with \p pDigits decimals; never "-0".
QEX_API std::string FixedText(double pValue, int pDigits);

/// \p pValue with at most six significant digits, without trailing zeros.
QEX_API std::string ShortText(double pValue);

/// "(-10 170)"; a limit that is not set is "-inf" or "inf".
QEX_API std::string LimitsText(bool pHasMin, double pMin, bool pHasMax, double pMax);

/// "1 bone", "2 bones": \p pPlural is used for every count except 1.
QEX_API std::string CountText(long long pCount, const char* pSingular, const char* pPlural);

} // namespace qexsdk

#endif
