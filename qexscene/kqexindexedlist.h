#ifndef QEXSCENE_KQEXINDEXEDLIST_H
#define QEXSCENE_KQEXINDEXEDLIST_H

#include <kbaselib/kbase/karray.h>
#include <qexscene/kqexlist.h>

namespace qexsdk
{

/// A KQexList with access by index. Appending and removing stay O(1) and cannot fail. GetAt is O(1) while items are only added and
/// removed at the end; after any other removal the next GetAt may rebuild the index, O(n). Visiting the items in order, in either
/// direction, stays O(1) per step, even when removing each one visited.
template <typename T, KQexListHook<T> T::*tHook>
class KQexIndexedList : private KQexList<T, tHook>
{
    using KBase = KQexList<T, tHook>;

public:
    using KBase::GetCount;
    using KBase::GetFirst;
    using KBase::GetLast;
    using KBase::GetNext;
    using KBase::GetPrev;

    /// Appends \p pItem, which must not be in a list by this hook.
    void Append(T* pItem)
    {
        KBase::Append(pItem);
        if (mIndexValid)
        {
            mIndexValid = AddToIndex(pItem);
        }
    }

    /// Removes \p pItem, which must be in this list.
    void Remove(T* pItem)
    {
        if (mIndexValid && pItem == GetLast())
        {
            mIndex.RemoveAt(GetCount() - 1);
        }
        else
        {
            MoveCursorOff(pItem);
        }
        KBase::Remove(pItem);
    }

    /// The item at \p pIndex, null when there is none.
    T* GetAt(int pIndex) const
    {
        if (pIndex < 0 || pIndex >= GetCount())
        {
            return nullptr;
        }
        if (pIndex == 0)
        {
            return GetFirst();
        }
        if (pIndex == GetCount() - 1)
        {
            return GetLast();
        }
        if (mIndexValid)
        {
            return mIndex[pIndex];
        }
        return Seek(pIndex);
    }

private:
    /// Up to this many items away, the cursor walks instead of rebuilding the index.
    static constexpr int kMaxCursorSteps = 4;

    bool AddToIndex(T* pItem) const
    {
        (pItem->*tHook).mIndex = mIndex.GetCount();
        return mIndex.Add(pItem) >= 0;
    }

    /// Before \p pItem is removed: moves the cursor from it to a neighbour; invalidates the cursor if it is elsewhere.
    void MoveCursorOff(T* pItem)
    {
        if (mIndexValid)
        {
            mCursor = pItem;
            mCursorIndex = (pItem->*tHook).mIndex;
            mIndexValid = false;
        }
        if (mCursor != pItem)
        {
            mCursor = nullptr;
        }
        else if (GetNext(pItem) != nullptr)
        {
            mCursor = GetNext(pItem);
        }
        else
        {
            mCursor = GetPrev(pItem);
            --mCursorIndex;
        }
    }

    T* Seek(int pIndex) const
    {
        if (mCursor == nullptr || pIndex - mCursorIndex > kMaxCursorSteps || mCursorIndex - pIndex > kMaxCursorSteps)
        {
            if (Rebuild())
            {
                return mIndex[pIndex];
            }
            mCursor = GetFirst();
            mCursorIndex = 0;
        }
        for (; mCursorIndex < pIndex; ++mCursorIndex)
        {
            mCursor = GetNext(mCursor);
        }
        for (; mCursorIndex > pIndex; --mCursorIndex)
        {
            mCursor = GetPrev(mCursor);
        }
        return mCursor;
    }

    bool Rebuild() const
    {
        mIndex.Clear();
        for (T* lItem = GetFirst(); lItem != nullptr; lItem = GetNext(lItem))
        {
            if (!AddToIndex(lItem))
            {
                return false;
            }
        }
        mIndexValid = true;
        return true;
    }

    mutable KArrayTemplate<T*> mIndex;
    mutable bool               mIndexValid = true;
    mutable T*                 mCursor = nullptr; ///< Used while the index is invalid: an item or null,
    mutable int                mCursorIndex = 0;  ///< and its index.
};

} // namespace qexsdk

#endif
