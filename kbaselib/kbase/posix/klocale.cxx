#include <kbaselib/kbase/posix/kposix.h>

#include <cerrno>
#include <cstdio>
#include <locale.h>

namespace qexsdk
{

namespace
{

int Format(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments)
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

} // namespace

void SetLocaleCalls(KSystemCalls& pCalls)
{
    pCalls.mFormat = Format;
}

} // namespace qexsdk
