#include <apps/asf/report/numbertext.h>

#include <algorithm>

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

} // namespace asfapp
