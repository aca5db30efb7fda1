#ifndef KBASELIB_KBASE_KPENDINGFILES_H
#define KBASELIB_KBASE_KPENDINGFILES_H

#include <string>

namespace qexsdk
{

/// Registers \p pPath as a file to remove when a signal ends the process. \return its slot in the list; -1 when the list is full or the
/// path is too long for the system anyway.
int KPendingFileAdd(const std::string& pPath);

/// Removes the entry in \p pSlot (-1: none) from the list; \p pSlot becomes -1.
void KPendingFileRemove(int& pSlot);

/// Removes all files in the list. Async-signal-safe.
void KPendingFilesUnlink();

} // namespace qexsdk

#endif
