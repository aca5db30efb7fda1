#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <limits>

/// \file
/// Writing in any order.

namespace qexsdk
{

bool KOutputFile::WriteAt(uint64_t pAt, const char* pData, size_t pSize)
{
    if (mState == eCLOSED)
    {
        mResult = false;
    }
    if (mState != eOPEN || mError != 0)
    {
        return false;
    }
    if (!CanWriteAt())
    {
        return Fail(ESPIPE);
    }
    constexpr uint64_t kMax = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    if (pSize > kMax || pAt > kMax - pSize)
    {
        return Fail(EFBIG);
    }
    mIsAnyOrder = mOut == nullptr;
    mSize = std::max(mSize, pAt + pSize);
    return mOut != nullptr ? WriteAtInString(pAt, pData, pSize) : Flush() && WriteAllAt(pAt, pData, pSize);
}

bool KOutputFile::WriteAtInString(uint64_t pAt, const char* pData, size_t pSize)
{
    try
    {
        mOut->resize(static_cast<size_t>(mSize));
    }
    catch (const std::exception&)
    {
        return Fail(ENOMEM);
    }
    std::copy(pData, pData + pSize, mOut->begin() + static_cast<std::ptrdiff_t>(pAt));
    return true;
}

bool KOutputFile::WriteAllAt(uint64_t pAt, const char* pData, size_t pSize)
{
    while (pSize > 0)
    {
        const std::ptrdiff_t lWritten = KSystemInUse().mWriteAt(mFile, pData, pSize, pAt);
        if (lWritten < 0 && KFileCanRetry(mFile, eCAN_WRITE))
        {
            continue;
        }
        if (lWritten <= 0)
        {
            return Fail(lWritten < 0 ? errno : EIO);
        }
        pData += lWritten;
        pAt += static_cast<uint64_t>(lWritten);
        pSize -= static_cast<size_t>(lWritten);
    }
    return true;
}

} // namespace qexsdk
