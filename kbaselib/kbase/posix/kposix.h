#ifndef KBASELIB_KBASE_POSIX_KPOSIX_H
#define KBASELIB_KBASE_POSIX_KPOSIX_H

#include <kbaselib/kbase/ksystem.h>

/// \file
/// Each source of this folder sets the entries of its topic.

namespace qexsdk
{

void SetFileCalls(KSystemCalls& pCalls);
void SetProcessCalls(KSystemCalls& pCalls);
void SetSignalCalls(KSystemCalls& pCalls);
void SetConsoleCalls(KSystemCalls& pCalls);
void SetLocaleCalls(KSystemCalls& pCalls);
void SetLibraryCalls(KSystemCalls& pCalls);

} // namespace qexsdk

#endif
