#include <kbaselib/kbase/kfilecalls.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace qexsdk
{

namespace
{

/// Variadic and overloaded system calls need a wrapper of the table's type.
int CallOpen(const char* pPath, int pFlags, mode_t pMode)
{
    return ::open(pPath, pFlags, pMode);
}

int CallFileStat(int pFile, struct stat* pStat)
{
    return ::fstat(pFile, pStat);
}

int CallStat(const char* pPath, struct stat* pStat)
{
    return ::stat(pPath, pStat);
}

int CallLinkStat(const char* pPath, struct stat* pStat)
{
    return ::lstat(pPath, pStat);
}

/// Checks the effective rights, as open() does; access() checks the real ones.
int CallAccess(const char* pPath, int pMode)
{
    return ::faccessat(AT_FDCWD, pPath, pMode, AT_EACCESS);
}

constexpr KFileCalls kSystemCalls = {CallOpen,     ::read,     ::write,    ::pwrite, ::close,  ::lseek, CallFileStat, CallStat,
                                     CallLinkStat, ::readlink, CallAccess, ::fchmod, ::rename, ::link,  ::unlink};

KFileCalls sCalls = kSystemCalls;

} // namespace

KFileCalls& KFileCallsInUse()
{
    return sCalls;
}

void KFileCallsReset()
{
    sCalls = kSystemCalls;
}

bool KFileCanRetry(int pFile, short pEvent)
{
    if (errno == EINTR)
    {
        return true;
    }
    if (errno != EAGAIN)
    {
        return false;
    }
    struct pollfd lPoll = {pFile, pEvent, 0};
    return ::poll(&lPoll, 1, -1) > 0 || errno == EINTR;
}

std::string KFileErrorText(int pError) noexcept
{
    try
    {
        // Thread-safe, unlike strerror().
        return pError == 0 ? std::string() : std::generic_category().message(pError);
    }
    catch (const std::exception&)
    {
        return std::string();
    }
}

} // namespace qexsdk
