#include <kbaselib/kbase/posix/kposix.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qexsdk
{

namespace
{

constexpr mode_t kModeBits = 07777;

int FlagsOf(EOpenMode pMode)
{
    switch (pMode)
    {
    case eOPEN_READ:
        return O_RDONLY | O_NOCTTY;
    case eOPEN_READ_AT_ONCE:
        return O_RDONLY | O_NOCTTY | O_NONBLOCK;
    case eOPEN_WRITE:
        return O_WRONLY | O_NOCTTY;
    case eOPEN_NEW:
        return O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    case eOPEN_APPEND:
        return O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY;
    case eOPEN_LOCK:
        break;
    }
    return O_RDWR | O_CREAT | O_NOCTTY;
}

int Open(const char* pPath, EOpenMode pMode)
{
    return ::open(pPath, FlagsOf(pMode) | O_CLOEXEC, 0666);
}

std::ptrdiff_t WriteAt(int pFile, const void* pData, size_t pSize, uint64_t pAt)
{
    if (pAt > static_cast<uint64_t>(std::numeric_limits<off_t>::max()))
    {
        errno = EFBIG;
        return -1;
    }
    return ::pwrite(pFile, pData, pSize, static_cast<off_t>(pAt));
}

int Rewind(int pFile)
{
    return ::lseek(pFile, 0, SEEK_SET) < 0 ? -1 : 0;
}

int Wait(int pFile, EFileEvent pEvent)
{
    struct pollfd lPoll = {pFile, static_cast<short>(pEvent == eCAN_READ ? POLLIN : POLLOUT), 0};
    return ::poll(&lPoll, 1, -1) > 0 ? 0 : -1;
}

int Lock(int pFile)
{
    return ::flock(pFile, LOCK_EX | LOCK_NB);
}

KFileInfo::EKind KindOf(mode_t pMode)
{
    if (S_ISREG(pMode))
    {
        return KFileInfo::eREGULAR;
    }
    return S_ISDIR(pMode) ? KFileInfo::eFOLDER : S_ISLNK(pMode) ? KFileInfo::eLINK : KFileInfo::eOTHER;
}

/// Copies \p pStat if the call that filled it succeeded. \return \p pResult
int Keep(int pResult, const struct stat& pStat, KFileInfo* pInfo)
{
    if (pResult != 0)
    {
        return pResult;
    }
#ifdef __APPLE__
    const struct timespec& lModified = pStat.st_mtimespec;
#else
    const struct timespec& lModified = pStat.st_mtim;
#endif
    pInfo->mKind = KindOf(pStat.st_mode);
    pInfo->mSize = static_cast<uint64_t>(pStat.st_size);
    pInfo->mModified = static_cast<int64_t>(lModified.tv_sec) * 1000000000 + lModified.tv_nsec;
    pInfo->mDevice = static_cast<uint64_t>(pStat.st_dev);
    pInfo->mIndex = static_cast<uint64_t>(pStat.st_ino);
    pInfo->mMode = pStat.st_mode & kModeBits;
    return 0;
}

int FileInfo(int pFile, KFileInfo* pInfo)
{
    struct stat lStat;
    return Keep(::fstat(pFile, &lStat), lStat, pInfo);
}

int Info(const char* pPath, KFileInfo* pInfo)
{
    struct stat lStat;
    return Keep(::stat(pPath, &lStat), lStat, pInfo);
}

int LinkInfo(const char* pPath, KFileInfo* pInfo)
{
    struct stat lStat;
    return Keep(::lstat(pPath, &lStat), lStat, pInfo);
}

/// Checks the effective rights, as open() does; access() checks the real ones.
int CheckWrite(const char* pPath)
{
    return ::faccessat(AT_FDCWD, pPath, W_OK, AT_EACCESS);
}

int ChangeMode(int pFile, uint32_t pMode)
{
    return ::fchmod(pFile, static_cast<mode_t>(pMode));
}

} // namespace

void SetFileCalls(KSystemCalls& pCalls)
{
    pCalls.mOpen = Open;
    pCalls.mRead = ::read;
    pCalls.mWrite = ::write;
    pCalls.mWriteAt = WriteAt;
    pCalls.mClose = ::close;
    pCalls.mRewind = Rewind;
    pCalls.mWait = Wait;
    pCalls.mLock = Lock;
    pCalls.mFileInfo = FileInfo;
    pCalls.mInfo = Info;
    pCalls.mLinkInfo = LinkInfo;
    pCalls.mReadLink = ::readlink;
    pCalls.mCheckWrite = CheckWrite;
    pCalls.mChangeMode = ChangeMode;
    pCalls.mRename = ::rename;
    pCalls.mLink = ::link;
    pCalls.mUnlink = ::unlink;
}

} // namespace qexsdk
