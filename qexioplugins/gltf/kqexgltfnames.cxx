#include <qexioplugins/gltf/kqexgltfnames.h>

namespace qexsdk
{

bool IsUtf8(std::string_view pText)
{
    for (size_t i = 0; i < pText.size();)
    {
        const unsigned char lFirst = static_cast<unsigned char>(pText[i]);
        const size_t        lFollowing = lFirst < 0x80                     ? 0
                                         : lFirst >= 0xC2 && lFirst < 0xE0 ? 1
                                         : lFirst >= 0xE0 && lFirst < 0xF0 ? 2
                                         : lFirst >= 0xF0 && lFirst < 0xF5 ? 3
                                                                           : 4;
        if (lFollowing == 4 || i + lFollowing >= pText.size())
        {
            return false;
        }
        unsigned long lCode = lFollowing == 0 ? lFirst : lFirst & (0x3Fu >> lFollowing);
        for (size_t j = 1; j <= lFollowing; ++j)
        {
            const unsigned char lNext = static_cast<unsigned char>(pText[i + j]);
            if ((lNext & 0xC0) != 0x80)
            {
                return false;
            }
            lCode = lCode << 6 | (lNext & 0x3Fu);
        }
        if ((lFollowing == 2 && (lCode < 0x800 || (lCode >= 0xD800 && lCode < 0xE000))) ||
            (lFollowing == 3 && (lCode < 0x10000 || lCode > 0x10FFFF)))
        {
            return false;
        }
        i += lFollowing + 1;
    }
    return true;
}

} // namespace qexsdk
