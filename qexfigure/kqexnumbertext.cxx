#include <qexfigure/kqexnumbertext.h>

#include <charconv>

namespace qexsdk
{

std::string FixedText(double pValue, int pDigits)
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

std::string ShortText(double pValue)
{
    char       lBuffer[64];
    const auto lEnd = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue == 0 ? 0.0 : pValue, std::chars_format::general, 6);
    return std::string(lBuffer, lEnd.ptr);
}

std::string LimitsText(bool pHasMin, double pMin, bool pHasMax, double pMax)
{
    return "(" + (pHasMin ? ShortText(pMin) : std::string("-inf")) + " " + (pHasMax ? ShortText(pMax) : std::string("inf")) + ")";
}

std::string CountText(long long pCount, const char* pSingular, const char* pPlural)
{
    return std::to_string(pCount) + " " + (pCount == 1 ? pSingular : pPlural);
}

} // namespace qexsdk
