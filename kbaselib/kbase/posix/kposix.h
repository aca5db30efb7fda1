#ifndef KBASELIB_KBASE_POSIX_KPOSIX_H
#define KBASELIB_KBASE_POSIX_KPOSIX_H

#include <kbaselib/kbase/ksystem.h>

/// \file
/// Each source of this folder sets the entries of its topic.

namespace qexsdk
{

void SetFileCalls(KSystemCalls& pCalls);    ///< Files.
void SetProcessCalls(KSystemCalls& pCalls); ///< Processes.
void SetSignalCalls(KSystemCalls& pCalls);  ///< Signals.
void SetConsoleCalls(KSystemCalls& pCalls); ///< Console.
void SetLocaleCalls(KSystemCalls& pCalls);  ///< Locale.
void SetLibraryCalls(KSystemCalls& pCalls); ///< Libraries.

} // namespace qexsdk

#endif
