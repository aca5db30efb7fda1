#ifndef TESTS_SUPPORT_MEMORYWATCH_H
#define TESTS_SUPPORT_MEMORYWATCH_H

#include <kbaselib/kbase/kmemory.h>

#include <cstddef>
#include <mutex>
#include <unordered_map>

namespace qexsdk
{

/// Counts what the library's allocator hands out while it lives, and makes allocations fail on demand. Blocks from before may
/// be given back meanwhile; blocks of its time should be gone before it ends (GetBlocks tells).
class KMemoryWatch
{
public:
    KMemoryWatch();
    ~KMemoryWatch();
    KMemoryWatch(const KMemoryWatch&) = delete;
    KMemoryWatch& operator=(const KMemoryWatch&) = delete;

    /// Lets \p pCount more allocations succeed and fails all after them; negative: none fails.
    void FailAfter(long pCount);

    long        GetCalls() const { return mCalls; }          ///< Allocations asked for so far, failed ones included.
    std::size_t GetBlocks() const { return mBlocks.size(); } ///< Blocks handed out and not given back.
    std::size_t GetBytes() const { return mBytes; }          ///< Their sizes' sum.
    std::size_t GetPeakBytes() const { return mPeakBytes; }  ///< The largest it has been.
    std::size_t GetLargest() const { return mLargest; }      ///< The largest block ever asked for.
    std::size_t GetLastSize() const { return mLastSize; }    ///< What was asked for last, 0 before.
    const char* GetLastBlock() const { return mLastBlock; }  ///< The block handed out last, null before.

private:
    bool Admit(std::size_t pSize);
    void Add(void* pBlock, std::size_t pSize);
    void Drop(void* pBlock);

    mutable std::mutex                     mMutex;
    KMemoryHooks                           mHooks;
    const KMemoryHooks*                    mBefore;
    std::unordered_map<void*, std::size_t> mBlocks;
    long                                   mLeft = -1;
    long                                   mCalls = 0;
    std::size_t                            mBytes = 0;
    std::size_t                            mPeakBytes = 0;
    std::size_t                            mLargest = 0;
    std::size_t                            mLastSize = 0;
    const char*                            mLastBlock = nullptr;
};

} // namespace qexsdk

#endif
