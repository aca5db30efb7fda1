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
std::mutex                  sFlags; // Over the flags of all sites.

/// Sets the flag; whether it was false. A site that fails on several threads, or again in the handler, is reported by one only.
bool MayReport(bool* pHideForever)
{
    if (pHideForever == nullptr)
    {
        return true;
    }
    const std::lock_guard<std::mutex> lLock(sFlags);
    return !std::exchange(*pHideForever, true);
}

const char* Shown(const char* pText)
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
    std::fprintf(stderr, "%s:%lu: %s: assertion failed: %s\n", Shown(pFile), pLine, Shown(pFunction), Shown(pText));
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
