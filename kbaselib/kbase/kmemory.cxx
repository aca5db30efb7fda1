#include <kbaselib/kbase/kmemory.h>

#include <atomic>
#include <cstdlib>

namespace qexsdk
{

namespace
{

std::atomic<const KMemoryHooks*> sHooks{nullptr};

const KMemoryHooks* Hooks()
{
    return sHooks.load(std::memory_order_acquire);
}

} // namespace

const KMemoryHooks* QexSdkSetMemoryHooks(const KMemoryHooks* pHooks)
{
    return sHooks.exchange(pHooks, std::memory_order_acq_rel);
}

void* QexSdkMalloc(size_t pSize)
{
    const KMemoryHooks* lHooks = Hooks();
    return lHooks != nullptr && lHooks->mMalloc != nullptr ? lHooks->mMalloc(pSize, lHooks->mContext) : std::malloc(pSize);
}

void QexSdkFree(void* pMemory)
{
    const KMemoryHooks* lHooks = Hooks();
    if (lHooks != nullptr && lHooks->mFree != nullptr)
    {
        lHooks->mFree(pMemory, lHooks->mContext);
        return;
    }
    std::free(pMemory);
}

char* KBaseArrayRealloc(char* pBlock, size_t pSize)
{
    const KMemoryHooks* lHooks = Hooks();
    return lHooks != nullptr && lHooks->mRealloc != nullptr ? lHooks->mRealloc(pBlock, pSize, lHooks->mContext)
                                                            : static_cast<char*>(std::realloc(pBlock, pSize));
}

void KBaseArrayFree(char* pBlock)
{
    const KMemoryHooks* lHooks = Hooks();
    if (lHooks != nullptr && lHooks->mArrayFree != nullptr)
    {
        lHooks->mArrayFree(pBlock, lHooks->mContext);
        return;
    }
    std::free(pBlock);
}

} // namespace qexsdk
