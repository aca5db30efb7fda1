#ifndef QEXSCENE_KQEXKEYTIMES_H
#define QEXSCENE_KQEXKEYTIMES_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// Times of keys in ticks, strictly increasing, over the whole 64-bit range.
///
/// Motion is mostly sampled at a fixed rate, so evenly spaced times are stored as a start and a step; all others as a list, 8 bytes
/// each. Converting between the two forms is O(n).
///
/// Indices are not checked. An operation that runs out of memory changes nothing.
class QEX_API KQexKeyTimes
{
public:
    /// Number of times.
    int GetCount() const { return mCount; }
    /// Time of the last key. There must be one.
    std::int64_t GetLast() const { return Get(mCount - 1); }
    /// Time \p pIndex. O(1).
    std::int64_t Get(int pIndex) const { return IsEven() ? After(mStart, mStep * static_cast<std::uint64_t>(pIndex)) : mList[pIndex]; }

    /// Index of the last key at or before \p pTime, -1 when there is none. O(1) when the times are evenly spaced, else O(log n).
    int Find(std::int64_t pTime) const;

    /// The segment between two keys that contains a time.
    struct KSegment
    {
        int           mKey;   ///< Last key at or before the time; -1: before the first key, the rest is undefined.
        std::uint64_t mSince; ///< Ticks since that key.
        std::uint64_t mStep;  ///< Ticks from that key to the next.
    };

    /// Cache of the last segment found, for other curves with the same times.
    struct KCursor
    {
        KSegment      mSegment = {-1, 0, 0}; ///< mKey -1: nothing cached.
        std::int64_t  mTime = 0;             ///< Time that was looked up.
        std::int64_t  mStart = 0;            ///< First time of the keys searched.
        std::uint64_t mStep = 0;             ///< Their step.
    };

    /// The segment of a time before the last key. Costs the same as Find.
    KSegment Locate(std::int64_t pTime) const;

    /// The same for many curves that mostly share their times: \p pCursor caches the last segment.
    KSegment Locate(std::int64_t pTime, KCursor& pCursor) const
    {
        if (!IsEven())
        {
            return Locate(pTime);
        }
        if (pTime != pCursor.mTime || mStart != pCursor.mStart || mStep != pCursor.mStep || pCursor.mSegment.mKey < 0)
        {
            pCursor = {Locate(pTime), pTime, mStart, mStep};
        }
        return pCursor.mSegment;
    }

    /// Greatest common divisor of the distances of all times from the first; 0 for fewer than two keys. O(1) for evenly spaced
    /// times, else O(n).
    std::uint64_t GetCommonStep() const;

    /// Whether both have the same times. O(1) if both are evenly spaced, else O(n).
    bool IsSame(const KQexKeyTimes& pOther) const;

    /// Adds a time later than all others. Amortised O(1).
    bool Append(std::int64_t pTime)
    {
        if (mCount > 1 && IsEven() && TicksBetween(GetLast(), pTime) == mStep)
        {
            ++mCount;
            return true;
        }
        return AppendUneven(pTime);
    }

    /// Inserts a time between keys \p pIndex - 1 and \p pIndex; \p pIndex is Find(\p pTime) + 1. O(n).
    bool Insert(int pIndex, std::int64_t pTime);

    /// Removes every time and frees their memory.
    void Clear();
    /// Frees spare capacity.
    void Compact() { mList.SetCapacity(mList.GetCount()); }
    /// Swaps all times.
    void Swap(KQexKeyTimes& pOther) noexcept;
    /// Bytes allocated, spare capacity included.
    std::size_t GetMemoryUse() const { return mList.GetMemoryUse(); }

private:
    /// Ticks from one time to a later one. Unsigned, because the difference may not fit a signed number.
    static std::uint64_t TicksBetween(std::int64_t pFrom, std::int64_t pTo)
    {
        return static_cast<std::uint64_t>(pTo) - static_cast<std::uint64_t>(pFrom);
    }
    static std::int64_t After(std::int64_t pFrom, std::uint64_t pTicks)
    {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(pFrom) + pTicks);
    }

    bool IsEven() const { return mList.GetCount() == 0; }
    bool AppendUneven(std::int64_t pTime);
    bool ConvertToList();
    void ConvertToEven();

    KQexKeyBlock<std::int64_t> mList;      ///< All times; empty when they are evenly spaced.
    std::int64_t               mStart = 0; ///< First time; for evenly spaced times only.
    std::uint64_t              mStep = 0;  ///< Step between times; 0 for fewer than two, or a list.
    int                        mCount = 0;
};

} // namespace qexsdk

#endif
