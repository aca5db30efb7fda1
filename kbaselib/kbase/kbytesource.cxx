#include <kbaselib/kbase/kbytesource.h>

#include <kbaselib/kbase/kfilecalls.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace qexsdk
{

bool KByteSource::OpenPath(const char* pPath, bool pRegular)
{
    Close();
    if (std::strcmp(pPath, "-") == 0)
    {
        mFile = STDIN_FILENO;
        return true;
    }
    // Without O_NONBLOCK, opening a FIFO that is refused anyway would wait for a writer.
    const int lFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | (pRegular ? O_NONBLOCK : 0);
    do
    {
        mFile = KFileCallsInUse().mOpen(pPath, lFlags, 0);
    } while (mFile < 0 && errno == EINTR);
    if (mFile < 0)
    {
        return false;
    }
    mOwnsFile = true;
    if (CheckKind(pRegular))
    {
        return true;
    }
    const int lError = errno;
    Close();
    errno = lError;
    return false;
}

/// Whether the open file can be read; remembers its size. False with errno.
bool KByteSource::CheckKind(bool pRegular)
{
    struct stat lStat;
    if (KFileCallsInUse().mFileStat(mFile, &lStat) != 0)
    {
        return false;
    }
    const bool lIsRegular = S_ISREG(lStat.st_mode);
    mSize = lIsRegular ? static_cast<int64_t>(lStat.st_size) : 0;
    if (S_ISDIR(lStat.st_mode) || (pRegular && !lIsRegular))
    {
        errno = S_ISDIR(lStat.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    return true;
}

void KByteSource::OpenBuffer(const char* pData, size_t pSize)
{
    Close();
    mMemory = pSize == 0 ? "" : pData;
    mMemorySize = pSize;
    mSize = static_cast<int64_t>(pSize);
}

void KByteSource::Close()
{
    // Nothing was written, so an error from close() loses nothing.
    if (mOwnsFile)
    {
        KFileCallsInUse().mClose(mFile);
    }
    mFile = -1;
    mOwnsFile = false;
    mMemory = nullptr;
    mMemorySize = 0;
    mMemoryOffset = 0;
    mSize = 0;
}

bool KByteSource::Rewind()
{
    if (mMemory == nullptr && KFileCallsInUse().mSeek(mFile, 0, SEEK_SET) < 0)
    {
        return false;
    }
    mMemoryOffset = 0;
    return true;
}

ptrdiff_t KByteSource::Read(char* pTo, size_t pSize)
{
    if (mMemory != nullptr)
    {
        const size_t lSize = std::min(pSize, mMemorySize - mMemoryOffset);
        if (lSize > 0)
        {
            std::memcpy(pTo, mMemory + mMemoryOffset, lSize);
        }
        mMemoryOffset += lSize;
        return static_cast<ptrdiff_t>(lSize);
    }
    ptrdiff_t lRead = 0;
    do
    {
        lRead = KFileCallsInUse().mRead(mFile, pTo, pSize);
    } while (lRead < 0 && KFileCanRetry(mFile, POLLIN));
    return lRead;
}

} // namespace qexsdk
