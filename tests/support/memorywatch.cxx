#include "tests/support/memorywatch.h"

#include <algorithm>
#include <cstdlib>

namespace qexsdk
{

KMemoryWatch::KMemoryWatch()
{
    mHooks.mContext = this;
    mHooks.mMalloc = [](std::size_t pSize, void* pContext) -> void*
    {
        KMemoryWatch&               lWatch = *static_cast<KMemoryWatch*>(pContext);
        std::lock_guard<std::mutex> lLock(lWatch.mMutex);
        void*                       lBlock = lWatch.Admit(pSize) ? std::malloc(pSize) : nullptr;
        lWatch.Add(lBlock, pSize);
        return lBlock;
    };
    mHooks.mFree = [](void* pBlock, void* pContext)
    {
        KMemoryWatch&               lWatch = *static_cast<KMemoryWatch*>(pContext);
        std::lock_guard<std::mutex> lLock(lWatch.mMutex);
        lWatch.Drop(pBlock);
        std::free(pBlock);
    };
    mHooks.mRealloc = [](char* pBlock, std::size_t pSize, void* pContext) -> char*
    {
        KMemoryWatch&               lWatch = *static_cast<KMemoryWatch*>(pContext);
        std::lock_guard<std::mutex> lLock(lWatch.mMutex);
        if (!lWatch.Admit(pSize))
        {
            return nullptr;
        }
        lWatch.Drop(pBlock);
        void* lBlock = std::realloc(pBlock, pSize);
        lWatch.Add(lBlock, pSize);
        return static_cast<char*>(lBlock);
    };
    mHooks.mArrayFree = [](char* pBlock, void* pContext)
    {
        KMemoryWatch&               lWatch = *static_cast<KMemoryWatch*>(pContext);
        std::lock_guard<std::mutex> lLock(lWatch.mMutex);
        lWatch.Drop(pBlock);
        std::free(pBlock);
    };
    mBefore = QexSdkSetMemoryHooks(&mHooks);
}

KMemoryWatch::~KMemoryWatch()
{
    QexSdkSetMemoryHooks(mBefore);
}

void KMemoryWatch::FailAfter(long pCount)
{
    std::lock_guard<std::mutex> lLock(mMutex);
    mLeft = pCount;
}

bool KMemoryWatch::Admit(std::size_t pSize)
{
    ++mCalls;
    mLargest = std::max(mLargest, pSize);
    mLastSize = pSize;
    if (mLeft == 0)
    {
        return false;
    }
    if (mLeft > 0)
    {
        --mLeft;
    }
    return true;
}

void KMemoryWatch::Add(void* pBlock, std::size_t pSize)
{
    if (pBlock != nullptr)
    {
        mLastBlock = static_cast<const char*>(pBlock);
        mBlocks[pBlock] = pSize;
        mBytes += pSize;
        mPeakBytes = std::max(mPeakBytes, mBytes);
    }
}

void KMemoryWatch::Drop(void* pBlock)
{
    const auto lFound = mBlocks.find(pBlock);
    if (lFound != mBlocks.end())
    {
        mBytes -= lFound->second;
        mBlocks.erase(lFound);
    }
}

} // namespace qexsdk
