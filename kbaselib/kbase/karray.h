#ifndef KBASELIB_KBASE_KARRAY_H
#define KBASELIB_KBASE_KARRAY_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kmemory.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace qexsdk
{

/// Base of all arrays of small items: the item count, and one allocation (by KBaseArrayRealloc) that holds a header followed by the
/// items. Capacity is counted in blocks of kBlockItems items; a full array doubles its block count (0 becomes 1), and only Clear()
/// reduces it. An empty new array owns no memory.
class QEX_API KBaseArrayFast
{
public:
    /// Items per block.
    static constexpr int kBlockItems = 4;

    KBaseArrayFast(const KBaseArrayFast&) = delete;
    KBaseArrayFast& operator=(const KBaseArrayFast&) = delete;

    /// The number of items.
    int GetCount() const { return mCount; }

    /// The number of blocks: the capacity in items divided by kBlockItems. 0 while no memory is allocated.
    int GetBlockCount() const { return mBlock == nullptr ? 0 : static_cast<int>(Header()->mBlockCount); }

    /// Makes room for \p pCount items, growing as adding them would. False when memory runs out; the capacity may have grown, the items
    /// are unchanged.
    bool Reserve(int pCount)
    {
        while (pCount > GetBlockCount() * kBlockItems)
        {
            if (!Grow())
            {
                return false;
            }
        }
        return true;
    }

    /// Frees the memory; the array is then empty.
    void Clear()
    {
        KBaseArrayFree(mBlock);
        mBlock = nullptr;
        mCount = 0;
    }

protected:
    /// \param pItemSize bytes per item; items are copied as bytes.
    explicit KBaseArrayFast(size_t pItemSize) : mItemSize(static_cast<unsigned int>(pItemSize)) {}
    ~KBaseArrayFast() { KBaseArrayFree(mBlock); }

    /// Opens a slot at \p pIndex, clamped to 0 and the count, by moving the tail up by one, and increments the count. The caller sets
    /// the slot's bytes.
    /// \return the slot's index; -1, with the array unchanged, when memory runs out.
    int OpenSlot(int pIndex)
    {
        const int lIndex = pIndex > mCount ? mCount : pIndex < 0 ? 0 : pIndex;
        if (mCount == GetBlockCount() * kBlockItems && !Grow())
        {
            return -1;
        }
        std::memmove(Slot(lIndex + 1), Slot(lIndex), static_cast<size_t>(mCount - lIndex) * mItemSize);
        ++mCount;
        return lIndex;
    }

    /// Closes the slot at \p pIndex, which must be valid: moves the tail down by one and zeroes the vacated slot.
    void CloseSlot(int pIndex)
    {
        std::memmove(Slot(pIndex), Slot(pIndex + 1), static_cast<size_t>(mCount - pIndex - 1) * mItemSize);
        Truncate(mCount - 1);
    }

    /// Drops the items from \p pCount (0 to the count) on and zeroes their slots.
    void Truncate(int pCount)
    {
        if (pCount < mCount)
        {
            std::memset(Slot(pCount), 0, static_cast<size_t>(mCount - pCount) * mItemSize);
            mCount = pCount;
        }
    }

    /// Whether there is an item at \p pIndex.
    bool IsIndex(int pIndex) const { return pIndex >= 0 && pIndex < mCount; }

    /// The bytes of slot \p pIndex; memory must be allocated.
    char* Slot(int pIndex) const { return mBlock + sizeof(KHeader) + static_cast<size_t>(pIndex) * mItemSize; }

private:
    /// Precedes the items. Its size is the strictest alignment that an item may have.
    struct KHeader
    {
        unsigned long long mBlockCount;
    };

    KHeader* Header() const { return reinterpret_cast<KHeader*>(mBlock); }

    bool Grow()
    {
        const int lOld = GetBlockCount();
        if (lOld > INT_MAX / (2 * kBlockItems))
        {
            return false;
        }
        const int lNew = lOld == 0 ? 1 : 2 * lOld;
        char*     lBlock = KBaseArrayRealloc(mBlock, sizeof(KHeader) + static_cast<size_t>(lNew) * kBlockItems * mItemSize);
        if (lBlock == nullptr)
        {
            return false;
        }
        mBlock = lBlock;
        Header()->mBlockCount = static_cast<unsigned long long>(lNew);
        return true;
    }

    char*        mBlock = nullptr; ///< Header and items; null while there is no memory.
    int          mCount = 0;
    unsigned int mItemSize;
};

/// An array of pointers, or of other trivially copyable items of at most 8 bytes. Owns the items, not what they point at. Not copyable;
/// items are moved as bytes. Not thread-safe.
template <typename T>
class KArrayTemplate : public KBaseArrayFast
{
    static_assert(std::is_trivially_copyable_v<T>, "items are moved as bytes");
    static_assert(sizeof(T) <= 8 && alignof(T) <= 8, "items follow an 8-byte header");

public:
    KArrayTemplate() : KBaseArrayFast(sizeof(T)) {}

    /// Inserts \p pItem at \p pIndex, clamped to 0 and the count, moving the tail up by one.
    /// \return the item's index; -1, with the array unchanged, when memory runs out.
    int InsertAt(int pIndex, T pItem)
    {
        const int lIndex = OpenSlot(pIndex);
        if (lIndex >= 0)
        {
            SetAt(lIndex, pItem);
        }
        return lIndex;
    }

    /// Appends \p pItem; returns as InsertAt(). Amortised O(1).
    int Add(T pItem) { return InsertAt(GetCount(), pItem); }

    /// Removes the item at \p pIndex and moves those after it down by one; the capacity stays.
    /// \return the removed item; T() when there is none at \p pIndex.
    T RemoveAt(int pIndex)
    {
        if (!IsIndex(pIndex))
        {
            return T();
        }
        const T lItem = GetAt(pIndex);
        CloseSlot(pIndex);
        return lItem;
    }

    /// Removes, in one pass, every item for which \p pMatches(item) is true; the others keep their order, the capacity stays.
    /// \return the number of items removed.
    template <typename TPredicate>
    int RemoveIf(TPredicate pMatches)
    {
        int lKept = 0;
        for (int lIndex = 0; lIndex < GetCount(); ++lIndex)
        {
            const T lItem = GetAt(lIndex);
            if (!pMatches(lItem))
            {
                SetAt(lKept++, lItem);
            }
        }
        const int lRemoved = GetCount() - lKept;
        Truncate(lKept);
        return lRemoved;
    }

    /// The item at \p pIndex; T(), so null for pointers, when there is none.
    T GetAt(int pIndex) const
    {
        T lItem = T();
        if (IsIndex(pIndex))
        {
            std::memcpy(&lItem, Slot(pIndex), sizeof(T));
        }
        return lItem;
    }

    /// As GetAt.
    T operator[](int pIndex) const { return GetAt(pIndex); }

    /// Replaces the item at \p pIndex; does nothing when there is none.
    void SetAt(int pIndex, T pItem)
    {
        if (IsIndex(pIndex))
        {
            std::memcpy(Slot(pIndex), &pItem, sizeof(T));
        }
    }

    /// The index of the first item equal to \p pItem; -1 when there is none.
    int Find(T pItem) const
    {
        for (int lIndex = 0; lIndex < GetCount(); ++lIndex)
        {
            if (GetAt(lIndex) == pItem)
            {
                return lIndex;
            }
        }
        return -1;
    }
};

} // namespace qexsdk

#endif
