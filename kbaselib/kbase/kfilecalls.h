#ifndef KBASELIB_KBASE_KFILECALLS_H
#define KBASELIB_KBASE_KFILECALLS_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace qexsdk
{

/// The system calls that file reading and writing are made of, one entry each, with the signature and the errno rules
/// of POSIX. Everything under kbaselib/kbase/ that touches a file goes through this table, so that a test can put a
/// call in place that fails, is interrupted or is cut short the Nth time.
struct KFileCalls
{
    int (*mOpen)(const char* pPath, int pFlags, mode_t pMode);     ///< open; with O_CREAT the mode \p pMode.
    ssize_t (*mRead)(int pFile, void* pData, size_t pSize);        ///< read
    ssize_t (*mWrite)(int pFile, const void* pData, size_t pSize); ///< write
    int (*mClose)(int pFile);                                      ///< close; never called again for the same file, whatever it returns.
    off_t (*mSeek)(int pFile, off_t pOffset, int pWhence);         ///< lseek
    int (*mFileStat)(int pFile, struct stat* pStat);               ///< fstat
    int (*mStat)(const char* pPath, struct stat* pStat);           ///< stat: of what a link leads to.
    int (*mLinkStat)(const char* pPath, struct stat* pStat);       ///< lstat: of the link itself.
    ssize_t (*mReadLink)(const char* pPath, char* pText, size_t pSize); ///< readlink
    int (*mAccess)(const char* pPath, int pMode);                       ///< access
    int (*mChangeMode)(int pFile, mode_t pMode);                        ///< fchmod
    int (*mRename)(const char* pFrom, const char* pTo);                 ///< rename: replaces what is at \p pTo in one step.
    int (*mLink)(const char* pFrom, const char* pTo);                   ///< link: fails when there is something at \p pTo.
    int (*mUnlink)(const char* pPath);                                  ///< unlink
};

/// The table in use; starts with the system's own calls. Not for use while another thread reads or writes files.
QEX_API KFileCalls& KFileCallsInUse();

/// Puts the system's own calls back.
QEX_API void KFileCallsReset();

/// Whether a call that failed with errno is worth another try: it was interrupted, or the other end of a pipe that somebody made
/// non-blocking was not ready. Waits for it then. Leaves errno as it is if not.
/// \param pEvent POLLIN or POLLOUT: what the call was to do
bool KFileCanRetry(int pFile, short pEvent);

/// The system's text for \p pError, an errno; "" for 0, and when memory has run out. May be called on any thread.
QEX_API std::string KFileErrorText(int pError) noexcept;

} // namespace qexsdk

#endif
