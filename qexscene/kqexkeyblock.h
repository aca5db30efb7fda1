#ifndef QEXSCENE_KQEXKEYBLOCK_H
#define QEXSCENE_KQEXKEYBLOCK_H

#include <kbaselib/kbase/kmemory.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace qexsdk
{

/// A growing array of plain data with little spare capacity: it grows by a quarter (by two items below 16), so three or more items
/// take at most 1.25 times their size in an array that only grows. Appending is amortised O(1). Indices are not checked.
template <typename T>
class KQexKeyBlock
{
    static_assert(std::is_trivially_copyable<T>::value, "items are moved as bytes");

public:
    KQexKeyBlock() = default;
    ~KQexKeyBlock() { Clear(); }
    KQexKeyBlock(const KQexKeyBlock&) = delete;
    KQexKeyBlock& operator=(const KQexKeyBlock&) = delete;

    /// Number of items.
    int GetCount() const { return mCount; }
    /// The items, contiguous; valid until the block grows. Null while the capacity is 0.
    T* GetItems() { return mItems; }
    /// The items, contiguous; null while the capacity is 0.
    const T* GetItems() const { return mItems; }
    /// Item \p pIndex.
    T& operator[](int pIndex) { return mItems[pIndex]; }
    /// Item \p pIndex.
    const T& operator[](int pIndex) const { return mItems[pIndex]; }
    /// Bytes allocated, spare capacity included.
    std::size_t GetMemoryUse() const { return static_cast<std::size_t>(mCapacity) * sizeof(T); }

    /// Removes all items and frees their memory.
    void Clear()
    {
        if (mItems != nullptr)
        {
            KBaseArrayFree(reinterpret_cast<char*>(mItems));
        }
        mItems = nullptr;
        mCount = 0;
        mCapacity = 0;
    }

    bool HasSpare() const { return mCount < mCapacity; } ///< Whether one more item fits.

    /// Reserves capacity for \p pMore more items. False, and nothing changed, when memory runs out.
    bool ReserveMore(int pMore)
    {
        if (pMore <= mCapacity - mCount)
        {
            return true;
        }
        if (pMore > INT_MAX - mCount)
        {
            return false;
        }
        const int lNeeded = mCount + pMore;
        const int lSpare = mCapacity < 16 ? 2 : mCapacity / 4;
        const int lGrown = mCapacity > INT_MAX - lSpare ? INT_MAX : mCapacity + lSpare;
        return SetCapacity(mCapacity == 0 || lNeeded > lGrown ? lNeeded : lGrown);
    }

    /// Sets the capacity to \p pCapacity items, or to the number of items if that is larger. False, and nothing changed, when memory
    /// runs out.
    bool SetCapacity(int pCapacity)
    {
        if (pCapacity <= mCount)
        {
            pCapacity = mCount;
        }
        if (pCapacity == mCapacity)
        {
            return true;
        }
        if (pCapacity == 0)
        {
            Clear();
            return true;
        }
        char* lItems = KBaseArrayRealloc(reinterpret_cast<char*>(mItems), static_cast<std::size_t>(pCapacity) * sizeof(T));
        if (lItems == nullptr)
        {
            return false;
        }
        mItems = reinterpret_cast<T*>(lItems);
        mCapacity = pCapacity;
        return true;
    }

    /// Appends \p pItem. There must be spare capacity.
    void AppendReserved(const T& pItem) { mItems[mCount++] = pItem; }
    /// Inserts \p pItem before item \p pIndex. There must be spare capacity.
    void InsertReserved(int pIndex, const T& pItem)
    {
        std::memmove(mItems + pIndex + 1, mItems + pIndex, static_cast<std::size_t>(mCount - pIndex) * sizeof(T));
        mItems[pIndex] = pItem;
        ++mCount;
    }

    /// Appends \p pItem. False, and nothing changed, when memory runs out.
    bool Append(const T& pItem)
    {
        if (!ReserveMore(1))
        {
            return false;
        }
        AppendReserved(pItem);
        return true;
    }

    /// Swaps items and capacity.
    void Swap(KQexKeyBlock& pOther) noexcept
    {
        std::swap(mItems, pOther.mItems);
        std::swap(mCount, pOther.mCount);
        std::swap(mCapacity, pOther.mCapacity);
    }

private:
    T*  mItems = nullptr;
    int mCount = 0;
    int mCapacity = 0;
};

} // namespace qexsdk

#endif
