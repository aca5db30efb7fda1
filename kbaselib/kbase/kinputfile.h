#ifndef KBASELIB_KBASE_KINPUTFILE_H
#define KBASELIB_KBASE_KINPUTFILE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>

namespace qexsdk
{

/// Reads a whole file, FIFO or device, or standard input for "-", into \p pBytes, which grow with what is really there.
/// \param pMax     bytes after which reading stops, however much more there is
/// \param pRegular refuse anything but a regular file, before it is read
/// \param pReason  receives the system's reason after a failure
/// False, and \p pBytes unspecified, when the system refuses or memory runs out.
QEX_API bool KReadWholeFile(const char* pPath, size_t pMax, bool pRegular, std::string& pBytes, std::string& pReason);

} // namespace qexsdk

#endif
