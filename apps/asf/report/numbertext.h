#ifndef APPS_ASF_REPORT_NUMBERTEXT_H
#define APPS_ASF_REPORT_NUMBERTEXT_H

#include <qexfigure/kqexnumbertext.h>

#include <string>

namespace asfapp
{

/// \name As in the library's messages and pictures
///@{
using qexsdk::LimitsText;

inline std::string Fixed(double pValue, int pDigits)
{
    return qexsdk::FixedText(pValue, pDigits);
}

inline std::string Short(double pValue)
{
    return qexsdk::ShortText(pValue);
}

inline std::string Count(long long pCount, const char* pSingular, const char* pPlural)
{
    return qexsdk::CountText(pCount, pSingular, pPlural);
}
///@}

/// \p pText padded with blanks after it, or before it, to \p pWidth characters (UTF-8 code points).
std::string PadRight(const std::string& pText, size_t pWidth);
std::string PadLeft(const std::string& pText, size_t pWidth);

} // namespace asfapp

#endif
