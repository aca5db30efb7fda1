#ifndef APPS_ASF_REPORT_NUMBERTEXT_H
#define APPS_ASF_REPORT_NUMBERTEXT_H

#include <string>

namespace asfapp
{

/// \p pValue with \p pDigits decimals; never "-0". Independent of the locale.
std::string Fixed(double pValue, int pDigits);

/// \p pValue with at most six significant digits, without trailing zeros.
std::string Short(double pValue);

/// "(-10 170)"; a limit that is not set is "-inf" or "inf".
std::string LimitsText(bool pHasMin, double pMin, bool pHasMax, double pMax);

/// \p pText padded with blanks after it, or before it, to \p pWidth characters (UTF-8 code points).
std::string PadRight(const std::string& pText, size_t pWidth);
std::string PadLeft(const std::string& pText, size_t pWidth);

/// "1 bone", "2 bones": \p pPlural is used for every count except 1.
std::string Count(long long pCount, const char* pSingular, const char* pPlural);

} // namespace asfapp

#endif
