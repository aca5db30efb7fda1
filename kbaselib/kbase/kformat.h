#ifndef KBASELIB_KBASE_KFORMAT_H
#define KBASELIB_KBASE_KFORMAT_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstdarg>
#include <cstddef>
#include <string>

namespace qexsdk
{

/// vsnprintf as in the "C" locale, whatever the locale of the process or of the thread is.
/// \return as vsnprintf; -1, with an errno, also where the system has no "C" locale to give: nothing is ever written in another one's way
QEX_API int KFormat(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments);

/// The same, appended to \p pText, of which at most \p pLimit bytes are added. May throw std::bad_alloc, and adds nothing then.
/// \return false, with an errno and nothing added, when KFormat gives -1
QEX_API bool KFormatAppend(std::string& pText, size_t pLimit, const char* pFormat, std::va_list pArguments);

} // namespace qexsdk

#endif
