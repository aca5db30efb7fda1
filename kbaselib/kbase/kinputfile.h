#ifndef KBASELIB_KBASE_KINPUTFILE_H
#define KBASELIB_KBASE_KINPUTFILE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>

namespace qexsdk
{

/// Reads a whole file, FIFO or device, or standard input for "-", into \p pBytes, which grows with the data read.
/// \param pMax     stop after this many bytes, even if there is more
/// \param pRegular refuse anything but a regular file, before reading it; standard input is never refused
/// \param pReason  receives the system's reason after a failure
/// \return false, and \p pBytes unspecified, when opening or reading fails or memory runs out
QEX_API bool KReadWholeFile(const char* pPath, size_t pMax, bool pRegular, std::string& pBytes, std::string& pReason);

} // namespace qexsdk

#endif
