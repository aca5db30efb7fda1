#include <kbaselib/kbase/kformat.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <locale.h>

namespace qexsdk
{

int KFormat(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments)
{
    // Set for this thread only: other threads may be formatting in their own locale.
    static const locale_t sLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    if (sLocale == static_cast<locale_t>(nullptr))
    {
        errno = ENOMEM;
        return -1;
    }
    const locale_t lBefore = uselocale(sLocale);
    const int      lSize = std::vsnprintf(pText, pSize, pFormat, pArguments);
    uselocale(lBefore);
    return lSize;
}

bool KFormatAppend(std::string& pText, size_t pLimit, const char* pFormat, std::va_list pArguments)
{
    // Most texts fit; a longer one is formatted again.
    char         lShort[256];
    std::va_list lSecondPass;
    va_copy(lSecondPass, pArguments);
    const int lSize = KFormat(lShort, sizeof lShort, pFormat, pArguments);
    if (lSize >= 0)
    {
        const size_t lAdded = std::min(static_cast<size_t>(lSize), pLimit);
        const size_t lBefore = pText.size();
        if (lAdded < sizeof lShort)
        {
            pText.append(lShort, lAdded);
        }
        else
        {
            // One more byte for the NUL.
            pText.resize(lBefore + lAdded + 1);
            KFormat(&pText[lBefore], lAdded + 1, pFormat, lSecondPass);
            pText.pop_back();
        }
    }
    va_end(lSecondPass);
    return lSize >= 0;
}

} // namespace qexsdk
