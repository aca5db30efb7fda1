#include <kbaselib/kbase/kbytesource.h>

#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qexsdk
{

bool KByteSource::OpenPath(const char* pPath, bool pRegular)
{
    Close();
    if (std::strcmp(pPath, "-") == 0)
    {
        mFile = kStandardInput;
        return true;
    }
    // Opening a FIFO that is refused anyway must not wait for a writer.
    const EOpenMode lMode = pRegular ? eOPEN_READ_AT_ONCE : eOPEN_READ;
    do
    {
        mFile = KSystemInUse().mOpen(pPath, lMode);
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
    KFileInfo lInfo;
    if (KSystemInUse().mFileInfo(mFile, &lInfo) != 0)
    {
        return false;
    }
    const bool lIsRegular = lInfo.mKind == KFileInfo::eREGULAR;
    const bool lIsFolder = lInfo.mKind == KFileInfo::eFOLDER;
    mSize = lIsRegular ? static_cast<int64_t>(lInfo.mSize) : 0;
    if (lIsFolder || (pRegular && !lIsRegular))
    {
        errno = lIsFolder ? EISDIR : EINVAL;
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
        KSystemInUse().mClose(mFile);
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
    if (mMemory == nullptr && KSystemInUse().mRewind(mFile) != 0)
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
        lRead = KSystemInUse().mRead(mFile, pTo, pSize);
    } while (lRead < 0 && KFileCanRetry(mFile, eCAN_READ));
    return lRead;
}

} // namespace qexsdk
