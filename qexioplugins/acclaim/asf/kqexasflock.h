#ifndef QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFLOCK_H
#define QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFLOCK_H

#include <kbaselib/kbase/kbaseexport.h>

#include <mutex>

namespace qexsdk
{

/// Held while a skeleton is read: the reader's keyword tables are shared by the process.
QEX_API std::mutex& AsfReaderLock() noexcept;

} // namespace qexsdk

#endif
