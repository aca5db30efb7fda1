#include <tests/faults/failingallocator.h>

#include <kbaselib/kbase/kmemory.h>

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace
{

std::atomic<long> sLive{0};
std::atomic<long> sBytes{0};      ///< In live blocks.
std::atomic<long> sBytesArmed{0}; ///< sBytes at the last Arm().
std::atomic<long> sPeakBytes{0};  ///< Peak of sBytes since then.
std::atomic<long> sCalls{0};
std::atomic<long> sFirst{0};        ///< Call that fails; 0: none.
std::atomic<bool> sAndLater{false}; ///< All later calls fail too.
std::atomic<int>  sUnfailing{0};    ///< Live KUnfailingMemory objects.

/// Counts an allocation. False when it has to fail.
bool MaySucceed()
{
    const long lFirst = sFirst.load();
    if (lFirst == 0 || sUnfailing.load() > 0)
    {
        return true;
    }
    const long lCall = ++sCalls;
    return lCall < lFirst || (lCall > lFirst && !sAndLater.load());
}

/// Counts a block as allocated (\p pBlocks 1) or freed (-1).
void CountBlock(void* pBlock, int pBlocks)
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
    void* lBlock = MaySucceed() ? std::malloc(pSize > 0 ? pSize : 1) : nullptr;
    CountBlock(lBlock, 1);
    return lBlock;
}

void Free(void* pBlock) noexcept
{
    CountBlock(pBlock, -1);
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
    if (!MaySucceed())
    {
        return nullptr;
    }
    CountBlock(pBlock, -1);
    void* lBlock = std::realloc(pBlock, pSize);
    CountBlock(lBlock != nullptr ? lBlock : pBlock, 1);
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

void KFailingAllocator::Arm(long pFirst, bool pAndLater)
{
    sCalls = 0;
    sAndLater = pAndLater;
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
