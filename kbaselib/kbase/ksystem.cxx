#include <kbaselib/kbase/ksystem.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace qexsdk
{

KSystemCalls& KSystemInUse()
{
    static KSystemCalls sCalls = KSystemOwn();
    return sCalls;
}

void KSystemReset()
{
    KSystemInUse() = KSystemOwn();
}

bool KGetFileInfo(const std::string& pPath, KFileInfo& pInfo)
{
    return KSystemInUse().mInfo(pPath.c_str(), &pInfo) == 0;
}

bool KFileCanRetry(int pFile, EFileEvent pEvent)
{
    if (errno == EINTR)
    {
        return true;
    }
    return errno == EAGAIN && (KSystemInUse().mWait(pFile, pEvent) == 0 || errno == EINTR);
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
