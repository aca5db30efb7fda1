#include <apps/asf/report/numbertext.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace asfapp
{

namespace
{

size_t CodePoints(const std::string& pText)
{
    return static_cast<size_t>(
        std::count_if(pText.begin(), pText.end(), [](char pChar) { return (static_cast<unsigned char>(pChar) & 0xc0) != 0x80; }));
}

} // namespace

std::string Fixed(double pValue, int pDigits)
{
    char        lBuffer[400]; // The longest double has 309 digits before the point.
    const auto  lEnd = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue, std::chars_format::fixed, pDigits);
    std::string lText(lBuffer, lEnd.ptr);
    if (lText[0] == '-' && lText.find_first_not_of("-0.") == std::string::npos)
    {
        lText.erase(0, 1);
    }
    return lText;
}

std::string Short(double pValue)
{
    char       lBuffer[64];
    const auto lEnd = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue == 0 ? 0.0 : pValue, std::chars_format::general, 6);
    return std::string(lBuffer, lEnd.ptr);
}

std::string LimitsText(bool pHasMin, double pMin, bool pHasMax, double pMax)
{
    return "(" + (pHasMin ? Short(pMin) : std::string("-inf")) + " " + (pHasMax ? Short(pMax) : std::string("inf")) + ")";
}

std::string PadRight(const std::string& pText, size_t pWidth)
{
    const size_t lSize = CodePoints(pText);
    return lSize < pWidth ? pText + std::string(pWidth - lSize, ' ') : pText;
}

std::string PadLeft(const std::string& pText, size_t pWidth)
{
    const size_t lSize = CodePoints(pText);
    return lSize < pWidth ? std::string(pWidth - lSize, ' ') + pText : pText;
}

std::string Count(long long pCount, const char* pSingular, const char* pPlural)
{
    return std::to_string(pCount) + " " + (pCount == 1 ? pSingular : pPlural);
}

} // namespace asfapp
