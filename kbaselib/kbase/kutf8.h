#ifndef KBASELIB_KBASE_KUTF8_H
#define KBASELIB_KBASE_KUTF8_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string_view>

namespace qexsdk
{

/// Bytes of the well-formed UTF-8 character that \p pText starts with, 1 to 4; 0 if it does not start with one, or is empty.
QEX_API size_t KUtf8Length(std::string_view pText);

/// True if \p pText is well-formed UTF-8.
QEX_API bool KIsUtf8(std::string_view pText);

} // namespace qexsdk

#endif
