#ifndef KBASELIB_KBASE_KFORMAT_H
#define KBASELIB_KBASE_KFORMAT_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstdarg>
#include <cstddef>

namespace qexsdk
{

/// Takes the pieces of a formatted text, in order. False stops the formatting.
using KFormatSink = bool (*)(void* pContext, const char* pText, size_t pSize);

/// printf into \p pSink, with numbers written as in the "C" locale whatever the locale of the process or the thread is. All
/// conversions of printf but %n and the wide ones (%ls, %lc), which are written as they stand in the format; the # flag
/// counts for %x and %o only. A null string is "(null)". False when the sink refused a piece. Allocates nothing for fields of up to 400 characters.
QEX_API bool KFormat(KFormatSink pSink, void* pContext, const char* pFormat, std::va_list pArguments);

} // namespace qexsdk

#endif
