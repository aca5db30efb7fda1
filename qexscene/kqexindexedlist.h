#ifndef QEXSCENE_KQEXINDEXEDLIST_H
#define QEXSCENE_KQEXINDEXEDLIST_H

#include <kbaselib/kbase/karray.h>
#include <qexscene/kqexlist.h>

namespace qexsdk
{

/// A KQexList that also answers which item is the n-th. Appending and removing stay O(1) and cannot fail. GetAt is O(1) as
/// long as items are only appended or taken from the end; after another removal the first GetAt makes the index anew, and
/// visiting the items one after the other, in either direction and removing the one visited, stays O(1) a step.
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

    /// Puts \p pItem, which is in no list by this hook, at the end.
    void Append(T* pItem)
    {
        KBase::Append(pItem);
        if (mIndexValid)
        {
            mIndexValid = AddToIndex(pItem);
        }
    }

    /// Takes \p pItem, which is in this list, out of it.
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
    /// Steps that the cursor goes rather than making the index anew.
    static constexpr int kReach = 4;

    bool AddToIndex(T* pItem) const
    {
        (pItem->*tHook).mIndex = mIndex.GetCount();
        return mIndex.Add(pItem) >= 0;
    }

    /// Before \p pItem goes: the cursor comes to stand on what takes its place, if that place is known.
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
        if (mCursor == nullptr || pIndex - mCursorIndex > kReach || mCursorIndex - pIndex > kReach)
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
    mutable T*                 mCursor = nullptr; ///< Used while the index is not valid: an item,
    mutable int                mCursorIndex = 0;  ///< and where it stands.
};

} // namespace qexsdk

#endif
