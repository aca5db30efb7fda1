#ifndef APPS_ASF_REPORT_NUMBERTEXT_H
#define APPS_ASF_REPORT_NUMBERTEXT_H

#include <string>

namespace asfapp
{

/// \p pValue with \p pDigits digits behind the point; never "-0". Written with a point whatever the locale is.
std::string Fixed(double pValue, int pDigits);

/// \p pValue with at most six significant digits and no needless ones.
std::string Short(double pValue);

/// \p pText filled up with blanks behind it, or in front of it, to \p pWidth characters (code points of UTF-8).
std::string PadRight(const std::string& pText, size_t pWidth);
std::string PadLeft(const std::string& pText, size_t pWidth);

/// "1 bone", "2 bones": \p pPlural is used for every count but one.
std::string Count(long long pCount, const char* pSingular, const char* pPlural);

} // namespace asfapp

#endif
