#include <kbaselib/kbase/kassert.h>

#include <atomic>
#include <cstdio>

namespace qexsdk
{

namespace
{

std::atomic<KAssertHandler> sHandler{nullptr};

const char* Shown(const char* pText)
{
    return pText == nullptr ? "" : pText;
}

} // namespace

void KAssertFailed(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever)
{
    if (pHideForever != nullptr && *pHideForever)
    {
        return;
    }
    std::fprintf(stderr, "%s:%lu: %s: assertion failed: %s\n", Shown(pFile), pLine, Shown(pFunction), Shown(pText));
    if (KAssertHandler lHandler = sHandler.load(std::memory_order_acquire))
    {
        lHandler(pFile, pFunction, pLine, pText, pHideForever);
    }
    if (pHideForever != nullptr)
    {
        *pHideForever = true;
    }
}

KAssertHandler KAssertSetHandler(KAssertHandler pHandler)
{
    return sHandler.exchange(pHandler, std::memory_order_acq_rel);
}

} // namespace qexsdk
