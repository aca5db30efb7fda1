#ifndef QEXSCENE_KQEXLIST_H
#define QEXSCENE_KQEXLIST_H

namespace qexsdk
{

/// Links of one object in a KQexList: a member of the object, so that adding and removing never allocate.
template <typename T>
struct KQexListHook
{
    T*  mPrev = nullptr; ///< Previous item; null: the first one, or in no list.
    T*  mNext = nullptr; ///< Next item; null: the last one, or in no list.
    int mIndex = 0;      ///< Index in a KQexIndexedList while that list's index is valid; unused by a plain KQexList.
};

/// An intrusive doubly linked list, in the order of appending. Does not own its items. Appending and removing are O(1) and cannot
/// fail. An item is in at most one list by the same hook; the caller has to ensure that.
template <typename T, KQexListHook<T> T::*tHook>
class KQexList
{
public:
    KQexList() = default;
    KQexList(const KQexList&) = delete;
    KQexList& operator=(const KQexList&) = delete;

    T*        GetFirst() const noexcept { return mFirst; }                       ///< Null when the list is empty.
    T*        GetLast() const noexcept { return mLast; }                         ///< Null when the list is empty.
    int       GetCount() const noexcept { return mCount; }                       ///< Number of items.
    static T* GetNext(const T* pItem) noexcept { return (pItem->*tHook).mNext; } ///< The item after \p pItem, or null.
    static T* GetPrev(const T* pItem) noexcept { return (pItem->*tHook).mPrev; } ///< The item before \p pItem, or null.

    /// Appends \p pItem, which must not be in a list by this hook.
    void Append(T* pItem) noexcept
    {
        (pItem->*tHook).mPrev = mLast;
        (pItem->*tHook).mNext = nullptr;
        (mLast != nullptr ? (mLast->*tHook).mNext : mFirst) = pItem;
        mLast = pItem;
        ++mCount;
    }

    /// Removes \p pItem, which must be in this list.
    void Remove(T* pItem) noexcept
    {
        KQexListHook<T>& lHook = pItem->*tHook;
        (lHook.mPrev != nullptr ? (lHook.mPrev->*tHook).mNext : mFirst) = lHook.mNext;
        (lHook.mNext != nullptr ? (lHook.mNext->*tHook).mPrev : mLast) = lHook.mPrev;
        lHook.mPrev = nullptr;
        lHook.mNext = nullptr;
        --mCount;
    }

private:
    T*  mFirst = nullptr;
    T*  mLast = nullptr;
    int mCount = 0;
};

} // namespace qexsdk

#endif
