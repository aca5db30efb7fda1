#include <kbaselib/kbase/kformat.h>

#include <kbaselib/kbase/ksystem.h>

#include <algorithm>

namespace qexsdk
{

int KFormat(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments)
{
    return KSystemInUse().mFormat(pText, pSize, pFormat, pArguments);
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
