#include <kbaselib/kbase/kassert.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <utility>

namespace qexsdk
{

namespace
{

std::atomic<KAssertHandler> sHandler{nullptr};
std::mutex                  sFlagMutex; // Guards the flags of all sites.

/// Sets the flag; true when it was false. So a site that fails on several threads, or again in the handler, reports once.
bool MayReport(bool* pHideForever)
{
    if (pHideForever == nullptr)
    {
        return true;
    }
    const std::lock_guard<std::mutex> lLock(sFlagMutex);
    return !std::exchange(*pHideForever, true);
}

const char* OrEmpty(const char* pText)
{
    return pText == nullptr ? "" : pText;
}

} // namespace

void KAssertFailed(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever)
{
    if (!MayReport(pHideForever))
    {
        return;
    }
    std::fprintf(stderr, "%s:%lu: %s: assertion failed: %s\n", OrEmpty(pFile), pLine, OrEmpty(pFunction), OrEmpty(pText));
    if (KAssertHandler lHandler = sHandler.load(std::memory_order_acquire))
    {
        lHandler(pFile, pFunction, pLine, pText, pHideForever);
    }
}

KAssertHandler KAssertSetHandler(KAssertHandler pHandler)
{
    return sHandler.exchange(pHandler, std::memory_order_acq_rel);
}

} // namespace qexsdk
