#ifndef QEXSCENE_KQEXLIST_H
#define QEXSCENE_KQEXLIST_H

namespace qexsdk
{

/// The place of one object in a KQexList: a member of the object, so that joining and leaving a list never allocates.
template <typename T>
struct KQexListHook
{
    T*  mPrev = nullptr; ///< The item before it; null: the first one, or in no list.
    T*  mNext = nullptr; ///< The item behind it; null: the last one, or in no list.
    int mIndex = 0;      ///< Place in a KQexIndexedList while its index is valid; a plain KQexList leaves it alone.
};

/// A doubly linked list through a hook inside its items, in the order in which they were appended. Owns nothing.
/// Appending and removing are O(1) and cannot fail. An item is in at most one list by the same hook; that is the caller's
/// care.
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
    static T* GetNext(const T* pItem) noexcept { return (pItem->*tHook).mNext; } ///< The item behind \p pItem, or null.
    static T* GetPrev(const T* pItem) noexcept { return (pItem->*tHook).mPrev; } ///< The item before \p pItem, or null.

    /// Puts \p pItem, which is in no list by this hook, at the end.
    void Append(T* pItem) noexcept
    {
        (pItem->*tHook).mPrev = mLast;
        (pItem->*tHook).mNext = nullptr;
        (mLast != nullptr ? (mLast->*tHook).mNext : mFirst) = pItem;
        mLast = pItem;
        ++mCount;
    }

    /// Takes \p pItem, which is in this list, out of it.
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
