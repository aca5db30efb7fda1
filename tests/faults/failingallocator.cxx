#include <tests/faults/failingallocator.h>

#include <kbaselib/kbase/kmemory.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long> sLive{0};
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

void* Allocate(std::size_t pSize) noexcept
{
    void* lBlock = Admit() ? std::malloc(pSize > 0 ? pSize : 1) : nullptr;
    sLive += lBlock != nullptr ? 1 : 0;
    return lBlock;
}

void Free(void* pBlock) noexcept
{
    sLive -= pBlock != nullptr ? 1 : 0;
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
    void* lBlock = std::realloc(pBlock, pSize);
    sLive += lBlock != nullptr && pBlock == nullptr ? 1 : 0;
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

KUnfailingMemory::KUnfailingMemory()
{
    ++sUnfailing;
}

KUnfailingMemory::~KUnfailingMemory()
{
    --sUnfailing;
}

} // namespace qextest
