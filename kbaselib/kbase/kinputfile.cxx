#include <kbaselib/kbase/kinputfile.h>

#include <kbaselib/kbase/kbytesource.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cerrno>
#include <new>

namespace qexsdk
{

namespace
{

constexpr size_t kFirstChunk = 65536;
constexpr size_t kMaxChunk = 16777216;

/// 0, or the errno that ended reading.
int ReadAll(KByteSource& pSource, size_t pMax, std::string& pBytes)
{
    size_t lChunk = kFirstChunk;
    size_t lSize = 0;
    while (lSize < pMax)
    {
        const size_t lRoom = std::min(lChunk, pMax - lSize);
        pBytes.resize(lSize + lRoom);
        const ptrdiff_t lRead = pSource.Read(&pBytes[lSize], lRoom);
        if (lRead < 0)
        {
            return errno;
        }
        if (lRead == 0)
        {
            break;
        }
        lSize += static_cast<size_t>(lRead);
        lChunk = std::min(std::max(lSize, kFirstChunk), kMaxChunk);
    }
    pBytes.resize(lSize);
    return 0;
}

} // namespace

bool KReadWholeFile(const char* pPath, size_t pMax, bool pRegular, std::string& pBytes, std::string& pReason)
{
    KByteSource lSource;
    int         lError = 0;
    pBytes.clear();
    try
    {
        lError = lSource.OpenPath(pPath, pRegular) ? ReadAll(lSource, pMax, pBytes) : errno;
    }
    catch (const std::bad_alloc&)
    {
        lError = ENOMEM;
    }
    if (lError != 0)
    {
        pReason = KFileErrorText(lError);
    }
    return lError == 0;
}

} // namespace qexsdk
