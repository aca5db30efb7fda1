#include <tests/faults/failingallocator.h>

#include <kbaselib/kbase/kmemory.h>

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace
{

std::atomic<long> sLive{0};
std::atomic<long> sBytes{0};      ///< Of the blocks that are allocated.
std::atomic<long> sBytesArmed{0}; ///< The same when Arm() was called.
std::atomic<long> sPeakBytes{0};  ///< The most there have been since.
std::atomic<long> sCalls{0};
std::atomic<long> sFirst{0}; ///< Number of the call that fails; 0: none does.
std::atomic<bool> sOn{false};
std::atomic<int>  sUnfailing{0}; ///< KUnfailingMemory objects there are.

bool Admit()
{
    const long lFirst = sFirst.load();
    if (lFirst == 0 || sUnfailing.load() > 0)
    {
        return true;
    }
    const long lCall = ++sCalls;
    return lCall < lFirst || (lCall > lFirst && !sOn.load());
}

/// Counts a block that comes or, with \p pBlocks -1, goes.
void Note(void* pBlock, int pBlocks)
{
    if (pBlock == nullptr)
    {
        return;
    }
    sLive += pBlocks;
    const long lBytes = sBytes += pBlocks * static_cast<long>(::malloc_usable_size(pBlock));
    for (long lPeak = sPeakBytes.load(); lPeak < lBytes && !sPeakBytes.compare_exchange_weak(lPeak, lBytes);)
    {
    }
}

void* Allocate(std::size_t pSize) noexcept
{
    void* lBlock = Admit() ? std::malloc(pSize > 0 ? pSize : 1) : nullptr;
    Note(lBlock, 1);
    return lBlock;
}

void Free(void* pBlock) noexcept
{
    Note(pBlock, -1);
    std::free(pBlock);
}

void* AllocateOrThrow(std::size_t pSize)
{
    if (void* lBlock = Allocate(pSize))
    {
        return lBlock;
    }
    throw std::bad_alloc();
}

char* Reallocate(char* pBlock, std::size_t pSize)
{
    if (!Admit())
    {
        return nullptr;
    }
    Note(pBlock, -1);
    void* lBlock = std::realloc(pBlock, pSize);
    Note(lBlock != nullptr ? lBlock : pBlock, 1);
    return static_cast<char*>(lBlock);
}

qexsdk::KMemoryHooks MakeHooks()
{
    qexsdk::KMemoryHooks lHooks;
    lHooks.mMalloc = [](std::size_t pSize, void*)
    {
        return Allocate(pSize);
    };
    lHooks.mFree = [](void* pBlock, void*)
    {
        Free(pBlock);
    };
    lHooks.mRealloc = [](char* pBlock, std::size_t pSize, void*)
    {
        return Reallocate(pBlock, pSize);
    };
    lHooks.mArrayFree = [](char* pBlock, void*)
    {
        Free(pBlock);
    };
    return lHooks;
}

} // namespace

void* operator new(std::size_t pSize)
{
    return AllocateOrThrow(pSize);
}
void* operator new[](std::size_t pSize)
{
    return AllocateOrThrow(pSize);
}
void* operator new(std::size_t pSize, const std::nothrow_t&) noexcept
{
    return Allocate(pSize);
}
void* operator new[](std::size_t pSize, const std::nothrow_t&) noexcept
{
    return Allocate(pSize);
}
void operator delete(void* pBlock) noexcept
{
    Free(pBlock);
}
void operator delete[](void* pBlock) noexcept
{
    Free(pBlock);
}
void operator delete(void* pBlock, std::size_t) noexcept
{
    Free(pBlock);
}
void operator delete[](void* pBlock, std::size_t) noexcept
{
    Free(pBlock);
}
void operator delete(void* pBlock, const std::nothrow_t&) noexcept
{
    Free(pBlock);
}
void operator delete[](void* pBlock, const std::nothrow_t&) noexcept
{
    Free(pBlock);
}

namespace qextest
{

KFailingAllocator::KFailingAllocator()
{
    static qexsdk::KMemoryHooks sHooks = MakeHooks();
    qexsdk::QexSdkSetMemoryHooks(&sHooks);
}

KFailingAllocator::~KFailingAllocator()
{
    sFirst = 0;
    qexsdk::QexSdkSetMemoryHooks(nullptr);
}

void KFailingAllocator::Arm(long pFirst, bool pOn)
{
    sCalls = 0;
    sOn = pOn;
    sBytesArmed = sBytes.load();
    sPeakBytes = sBytes.load();
    sFirst = pFirst;
}

long KFailingAllocator::Disarm()
{
    sFirst = 0;
    return sCalls.load();
}

long KFailingAllocator::GetLive()
{
    return sLive.load();
}

long KFailingAllocator::GetPeakBytes()
{
    return sPeakBytes.load() - sBytesArmed.load();
}

KUnfailingMemory::KUnfailingMemory()
{
    ++sUnfailing;
}

KUnfailingMemory::~KUnfailingMemory()
{
    --sUnfailing;
}

} // namespace qextest
