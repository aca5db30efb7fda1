#ifndef KBASELIB_KBASE_KPENDINGFILES_H
#define KBASELIB_KBASE_KPENDINGFILES_H

#include <string>

namespace qexsdk
{

/// Notes \p pPath as a file that has to go when a signal ends the process. \return its place in the list; -1 when the list is full
/// or the path is too long for the system anyway.
int KPendingFileAdd(const std::string& pPath);

/// Takes the file at \p pSlot, -1 for none, out of the list; \p pSlot becomes -1.
void KPendingFileRemove(int& pSlot);

/// Removes all files of the list. Async-signal-safe.
void KPendingFilesUnlink();

} // namespace qexsdk

#endif
