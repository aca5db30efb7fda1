#ifndef APPS_ASF_REPORT_NUMBERTEXT_H
#define APPS_ASF_REPORT_NUMBERTEXT_H

#include <qexfigure/kqexnumbertext.h>

#include <string>

namespace asfapp
{

using qexsdk::CountText;
using qexsdk::FixedText;
using qexsdk::LimitsText;
using qexsdk::ShortText;

/// \p pText padded with blanks after it, or before it, to \p pWidth characters (UTF-8 code points).
std::string PadRight(const std::string& pText, size_t pWidth);
std::string PadLeft(const std::string& pText, size_t pWidth);

} // namespace asfapp

#endif
