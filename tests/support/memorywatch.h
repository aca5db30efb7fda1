#ifndef TESTS_SUPPORT_MEMORYWATCH_H
#define TESTS_SUPPORT_MEMORYWATCH_H

#include <kbaselib/kbase/kmemory.h>

#include <cstddef>
#include <mutex>
#include <unordered_map>

namespace qexsdk
{

/// Counts the library's allocations during its lifetime and makes them fail on demand. Blocks allocated earlier may be freed meanwhile;
/// blocks allocated meanwhile should be freed before it ends (see GetBlocks).
class KMemoryWatch
{
public:
    KMemoryWatch();
    ~KMemoryWatch();
    KMemoryWatch(const KMemoryWatch&) = delete;
    KMemoryWatch& operator=(const KMemoryWatch&) = delete;

    /// Lets \p pCount more allocations succeed and fails all later ones; negative: none fails.
    void FailAfter(long pCount);

    long        GetCalls() const { return mCalls; }          ///< Allocations requested so far, including failed ones.
    std::size_t GetBlocks() const { return mBlocks.size(); } ///< Blocks allocated and not freed.
    std::size_t GetBytes() const { return mBytes; }          ///< Their total size.
    std::size_t GetPeakBytes() const { return mPeakBytes; }  ///< Maximum of GetBytes().
    std::size_t GetLargest() const { return mLargest; }      ///< Size of the largest block requested.
    std::size_t GetLastSize() const { return mLastSize; }    ///< Size requested last; 0 before.
    const char* GetLastBlock() const { return mLastBlock; }  ///< Block allocated last; null before.

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
