#include <kbaselib/kbase/kfilelock.h>

#include <kbaselib/kbase/ksystem.h>

#include <cerrno>

namespace qexsdk
{

KFileLock::~KFileLock()
{
    Unlock();
}

bool KFileLock::Lock(const std::string& pPath)
{
    const KSystemCalls& lCalls = KSystemInUse();
    Unlock();
    do
    {
        mFile = lCalls.mOpen(pPath.c_str(), eOPEN_LOCK);
    } while (mFile < 0 && errno == EINTR);
    int lResult = mFile;
    while (mFile >= 0 && (lResult = lCalls.mLock(mFile)) < 0 && errno == EINTR)
    {
    }
    if (lResult < 0)
    {
        Unlock();
    }
    return IsLocked();
}

void KFileLock::Unlock()
{
    const int lError = errno;
    if (IsLocked())
    {
        KSystemInUse().mClose(mFile);
    }
    mFile = -1;
    errno = lError;
}

} // namespace qexsdk
