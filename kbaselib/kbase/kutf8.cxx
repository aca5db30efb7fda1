#include <kbaselib/kbase/kutf8.h>

namespace qexsdk
{

size_t KUtf8Length(std::string_view pText)
{
    if (pText.empty())
    {
        return 0;
    }
    const unsigned char lFirst = static_cast<unsigned char>(pText[0]);
    const size_t        lFollowing = lFirst < 0x80                     ? 0
                                     : lFirst >= 0xC2 && lFirst < 0xE0 ? 1
                                     : lFirst >= 0xE0 && lFirst < 0xF0 ? 2
                                     : lFirst >= 0xF0 && lFirst < 0xF5 ? 3
                                                                       : 4;
    if (lFollowing == 4 || lFollowing >= pText.size())
    {
        return 0;
    }
    unsigned long lCode = lFollowing == 0 ? lFirst : lFirst & (0x3Fu >> lFollowing);
    for (size_t i = 1; i <= lFollowing; ++i)
    {
        const unsigned char lNext = static_cast<unsigned char>(pText[i]);
        if ((lNext & 0xC0) != 0x80)
        {
            return 0;
        }
        lCode = lCode << 6 | (lNext & 0x3Fu);
    }
    const bool lIsBad = (lFollowing == 2 && (lCode < 0x800 || (lCode >= 0xD800 && lCode < 0xE000))) ||
                        (lFollowing == 3 && (lCode < 0x10000 || lCode > 0x10FFFF));
    return lIsBad ? 0 : lFollowing + 1;
}

bool KIsUtf8(std::string_view pText)
{
    while (!pText.empty())
    {
        const size_t lLength = KUtf8Length(pText);
        if (lLength == 0)
        {
            return false;
        }
        pText.remove_prefix(lLength);
    }
    return true;
}

} // namespace qexsdk
