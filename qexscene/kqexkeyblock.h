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

/// A growing array of plain data that keeps little spare room: growing adds a quarter (two items where there are few), so
/// that an array that only grows takes at most 1.25 times its items. Appending is amortised O(1). Indices are trusted.
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
    /// The items side by side; valid until the block grows. Null while there is no room.
    T* GetItems() { return mItems; }
    /// The items to read.
    const T* GetItems() const { return mItems; }
    /// Item \p pIndex.
    T& operator[](int pIndex) { return mItems[pIndex]; }
    /// Item \p pIndex to read.
    const T& operator[](int pIndex) const { return mItems[pIndex]; }
    /// Bytes allocated, spare room included.
    std::size_t GetMemoryUse() const { return static_cast<std::size_t>(mCapacity) * sizeof(T); }

    /// Drops all items and gives their memory back.
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

    bool HasRoom() const { return mCount < mCapacity; } ///< For one item more.

    /// Room for \p pMore items beyond those that are there. False, and nothing changed, when memory runs out.
    bool MakeRoom(int pMore)
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

    /// Exactly \p pCapacity items' room, unless there are more items. False, and nothing changed, when memory runs out.
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

    /// Puts \p pItem at the end or before the item \p pIndex. There must be room.
    void AppendInRoom(const T& pItem) { mItems[mCount++] = pItem; }
    /// Puts \p pItem before item \p pIndex; those behind move up. There must be room.
    void InsertInRoom(int pIndex, const T& pItem)
    {
        std::memmove(mItems + pIndex + 1, mItems + pIndex, static_cast<std::size_t>(mCount - pIndex) * sizeof(T));
        mItems[pIndex] = pItem;
        ++mCount;
    }

    /// Puts \p pItem at the end. False, and nothing changed, when memory runs out.
    bool Append(const T& pItem)
    {
        if (!MakeRoom(1))
        {
            return false;
        }
        AppendInRoom(pItem);
        return true;
    }

    /// Exchanges items and room.
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
