#ifndef KBASELIB_KBASE_KFILECALLS_H
#define KBASELIB_KBASE_KFILECALLS_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace qexsdk
{

/// The system calls that read and write files, one entry each, with the signature and errno rules of POSIX. All file access in
/// kbaselib/kbase/ goes through this table, so that a test can make the Nth call fail, be interrupted or be cut short.
struct KFileCalls
{
    int (*mOpen)(const char* pPath, int pFlags, mode_t pMode);                  ///< open; \p pMode is the mode with O_CREAT.
    ssize_t (*mRead)(int pFile, void* pData, size_t pSize);                     ///< read
    ssize_t (*mWrite)(int pFile, const void* pData, size_t pSize);              ///< write
    ssize_t (*mWriteAt)(int pFile, const void* pData, size_t pSize, off_t pAt); ///< pwrite
    int (*mClose)(int pFile);                                ///< close; never called again for the same file, whatever it returns.
    off_t (*mSeek)(int pFile, off_t pOffset, int pWhence);   ///< lseek
    int (*mFileStat)(int pFile, struct stat* pStat);         ///< fstat
    int (*mStat)(const char* pPath, struct stat* pStat);     ///< stat: follows links.
    int (*mLinkStat)(const char* pPath, struct stat* pStat); ///< lstat: of the link itself.
    ssize_t (*mReadLink)(const char* pPath, char* pText, size_t pSize); ///< readlink
    int (*mAccess)(const char* pPath, int pMode);                       ///< access, with the effective rights.
    int (*mChangeMode)(int pFile, mode_t pMode);                        ///< fchmod
    int (*mRename)(const char* pFrom, const char* pTo);                 ///< rename: replaces \p pTo atomically.
    int (*mLink)(const char* pFrom, const char* pTo);                   ///< link: fails when \p pTo exists.
    int (*mUnlink)(const char* pPath);                                  ///< unlink
};

/// The table in use, initially the system's calls. Do not change it while another thread reads or writes files.
QEX_API KFileCalls& KFileCallsInUse();

/// Restores the system's calls.
QEX_API void KFileCallsReset();

/// Whether to retry a call that failed with errno: it was interrupted, or a non-blocking pipe was not ready; waits until it is. When
/// false, errno is the reason.
/// \param pEvent POLLIN or POLLOUT: what the call was to do
bool KFileCanRetry(int pFile, short pEvent);

/// The system's text for the errno \p pError; "" for 0 and when memory runs out. Thread-safe.
QEX_API std::string KFileErrorText(int pError) noexcept;

} // namespace qexsdk

#endif
