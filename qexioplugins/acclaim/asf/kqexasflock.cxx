#include <qexioplugins/acclaim/asf/kqexasflock.h>

#include <kbaselib/kbase/ksystem.h>

namespace qexsdk
{

namespace
{

void Lock()
{
    AsfReaderLock().lock();
}

void Unlock()
{
    AsfReaderLock().unlock();
}

/// Makes the lock, free in forked processes whatever thread holds it in this one.
std::mutex& MakeLock() noexcept
{
    static std::mutex sMutex;
    KSystemInUse().mAtFork(Lock, Unlock);
    return sMutex;
}

} // namespace

std::mutex& AsfReaderLock() noexcept
{
    static std::mutex& sLock = MakeLock();
    return sLock;
}

} // namespace qexsdk
