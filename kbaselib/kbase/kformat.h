#ifndef KBASELIB_KBASE_KFORMAT_H
#define KBASELIB_KBASE_KFORMAT_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstdarg>
#include <cstddef>
#include <string>

namespace qexsdk
{

/// vsnprintf in the "C" locale, whatever the locale of the process or the thread is.
/// \return as vsnprintf; also -1, with an errno, when the system provides no "C" locale: no other locale is used instead
QEX_API int KFormat(char* pText, size_t pSize, const char* pFormat, std::va_list pArguments);

/// The same, appended to \p pText; adds at most \p pLimit bytes. May throw std::bad_alloc, and then adds nothing.
/// \return false, with an errno and nothing added, when KFormat returns -1
QEX_API bool KFormatAppend(std::string& pText, size_t pLimit, const char* pFormat, std::va_list pArguments);

} // namespace qexsdk

#endif
