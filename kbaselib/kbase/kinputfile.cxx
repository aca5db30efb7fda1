#include <kbaselib/kbase/kinputfile.h>

#include <kbaselib/kbase/kfilecalls.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace qexsdk
{

namespace
{

constexpr size_t kFirstChunk = 65536;
constexpr size_t kMaxChunk = 16777216;

/// 0, or the errno with which \p pFile is refused.
int CheckKind(int pFile, bool pRegular)
{
    struct stat lStat;
    if (KFileCallsInUse().mFileStat(pFile, &lStat) != 0)
    {
        return errno;
    }
    if (S_ISDIR(lStat.st_mode))
    {
        return EISDIR;
    }
    return pRegular && !S_ISREG(lStat.st_mode) ? EINVAL : 0;
}

/// 0, or the errno that ended reading.
int ReadAll(int pFile, size_t pMax, std::string& pBytes)
{
    size_t lChunk = kFirstChunk;
    size_t lSize = 0;
    while (lSize < pMax)
    {
        const size_t lRoom = std::min(lChunk, pMax - lSize);
        if (pBytes.size() < lSize + lRoom)
        {
            pBytes.resize(lSize + lRoom);
        }
        const ssize_t lRead = KFileCallsInUse().mRead(pFile, &pBytes[lSize], lRoom);
        if (lRead < 0 && !KFileCanRetry(pFile, POLLIN))
        {
            return errno;
        }
        if (lRead == 0)
        {
            break;
        }
        lSize += lRead > 0 ? static_cast<size_t>(lRead) : 0;
        lChunk = std::min(std::max(lSize, kFirstChunk), kMaxChunk);
    }
    pBytes.resize(lSize);
    return 0;
}

} // namespace

bool KReadWholeFile(const char* pPath, size_t pMax, bool pRegular, std::string& pBytes, std::string& pReason)
{
    const bool lOwns = std::strcmp(pPath, "-") != 0;
    int        lFile = STDIN_FILENO;
    int        lError = 0;
    pBytes.clear();
    if (lOwns)
    {
        // Without O_NONBLOCK, opening a FIFO that is refused anyway would wait for a writer.
        const int lFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | (pRegular ? O_NONBLOCK : 0);
        do
        {
            lFile = KFileCallsInUse().mOpen(pPath, lFlags, 0);
        } while (lFile < 0 && errno == EINTR);
        lError = lFile < 0 ? errno : CheckKind(lFile, pRegular);
    }
    try
    {
        lError = lError == 0 ? ReadAll(lFile, pMax, pBytes) : lError;
    }
    catch (const std::bad_alloc&)
    {
        lError = ENOMEM;
    }
    if (lOwns && lFile >= 0)
    {
        KFileCallsInUse().mClose(lFile);
    }
    if (lError != 0)
    {
        pReason = KFileErrorText(lError);
    }
    return lError == 0;
}

} // namespace qexsdk
