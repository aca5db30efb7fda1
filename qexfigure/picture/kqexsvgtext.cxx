#include <qexfigure/picture/kqexsvgtext.h>

#include <qexfigure/kqexnumbertext.h>

#include <cstdio>

namespace qexsdk
{

namespace
{

/// Length in bytes of the UTF-8 sequence at \p pPosition, 0 if it is invalid.
size_t SequenceLength(const std::string& pText, size_t pPosition)
{
    const auto lByte = [&](size_t pIndex)
    {
        return pIndex < pText.size() ? static_cast<unsigned char>(pText[pIndex]) : 0u;
    };
    const unsigned lFirst = lByte(pPosition);
    const size_t   lSize = lFirst < 0x80                     ? 1
                           : lFirst >= 0xc2 && lFirst < 0xe0 ? 2
                           : lFirst >= 0xe0 && lFirst < 0xf0 ? 3
                           : lFirst >= 0xf0 && lFirst < 0xf5 ? 4
                                                             : 0;
    for (size_t lIndex = 1; lIndex < lSize; ++lIndex)
    {
        if ((lByte(pPosition + lIndex) & 0xc0) != 0x80)
        {
            return 0;
        }
    }
    // Overlong forms, surrogates, and values beyond the last code point.
    const unsigned lSecond = lByte(pPosition + 1);
    const bool     lBad = (lFirst == 0xe0 && lSecond < 0xa0) || (lFirst == 0xed && lSecond >= 0xa0) || (lFirst == 0xf0 && lSecond < 0x90) ||
                      (lFirst == 0xf4 && lSecond >= 0x90);
    return lBad ? 0 : lSize;
}

} // namespace

std::string Px(double pValue)
{
    std::string lText = FixedText(pValue, 2);
    lText.erase(lText.find_last_not_of('0') + 1);
    if (lText.back() == '.')
    {
        lText.pop_back();
    }
    return lText == "-0" ? "0" : lText;
}

std::string HexColor(unsigned pColor)
{
    char lText[8];
    std::snprintf(lText, sizeof lText, "#%06x", pColor & 0xffffff);
    return lText;
}

std::string EscapeXml(const std::string& pText)
{
    std::string lResult;
    for (size_t lPosition = 0; lPosition < pText.size();)
    {
        const size_t lSize = SequenceLength(pText, lPosition);
        const char   lChar = pText[lPosition];
        if (lSize == 0 || (lSize == 1 && static_cast<unsigned char>(lChar) < 0x20) || lChar == 0x7f)
        {
            lResult += "\xef\xbf\xbd";
            ++lPosition;
            continue;
        }
        lResult += lChar == '&' ? "&amp;" : lChar == '<' ? "&lt;" : lChar == '>' ? "&gt;" : pText.substr(lPosition, lSize);
        lPosition += lSize;
    }
    return lResult;
}

std::string TextAt(double pX, double pY, const char* pClass, const char* pAnchor, const std::string& pText)
{
    return "<text x=\"" + Px(pX) + "\" y=\"" + Px(pY) + "\" class=\"" + pClass + "\" text-anchor=\"" + pAnchor + "\">" + EscapeXml(pText) +
           "</text>\n";
}

std::string LineAt(const char* pClass, double pX1, double pY1, double pX2, double pY2)
{
    return std::string("<path class=\"") + pClass + "\" d=\"M" + Px(pX1) + " " + Px(pY1) + "L" + Px(pX2) + " " + Px(pY2) + "\"/>\n";
}

} // namespace qexsdk
