#ifndef KBASELIB_KBASE_KFILECALLS_H
#define KBASELIB_KBASE_KFILECALLS_H

#include <kbaselib/kbase/kbaseexport.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

namespace qexsdk
{

/// The system calls that file reading and writing are made of, one entry each, with the signature and the errno rules
/// of POSIX. Everything under kbaselib/kbase/ that touches a file goes through this table, so that a test can put a
/// call in place that fails, is interrupted or is cut short the Nth time.
struct KFileCalls
{
    int (*mOpen)(const char* pPath, int pFlags, mode_t pMode);
    ssize_t (*mRead)(int pFile, void* pData, size_t pSize);
    ssize_t (*mWrite)(int pFile, const void* pData, size_t pSize);
    int (*mClose)(int pFile);
    off_t (*mSeek)(int pFile, off_t pOffset, int pWhence);
    int (*mFileStat)(int pFile, struct stat* pStat);
    int (*mStat)(const char* pPath, struct stat* pStat);
    int (*mLinkStat)(const char* pPath, struct stat* pStat);
    ssize_t (*mReadLink)(const char* pPath, char* pText, size_t pSize);
    int (*mAccess)(const char* pPath, int pMode);
    int (*mChangeMode)(int pFile, mode_t pMode);
    int (*mRename)(const char* pFrom, const char* pTo);
    int (*mUnlink)(const char* pPath);
};

/// The table in use; starts with the system's own calls. Not for use while another thread reads or writes files.
QEX_API KFileCalls& KFileCallsInUse();

/// Puts the system's own calls back.
QEX_API void KFileCallsReset();

/// The system's text for \p pError, an errno; "" for 0, and when memory has run out. May be called on any thread.
QEX_API std::string KFileErrorText(int pError) noexcept;

} // namespace qexsdk

#endif
