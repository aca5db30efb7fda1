#ifndef QEXSCENE_KQEXKEYTIMES_H
#define QEXSCENE_KQEXKEYTIMES_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// Times of keys in ticks, strictly rising, over the whole range of 64 bits.
///
/// Motion is sampled at a steady rate, so evenly spaced times are kept as a start and a step, whatever their number; any others are
/// kept one by one, 8 bytes each. Changing from one form to the other costs O(n).
///
/// Indices are trusted. Operations that can fail for want of memory change nothing then.
class QEX_API KQexKeyTimes
{
public:
    /// Number of times.
    int GetCount() const { return mCount; }
    /// Time of the last key; there is one.
    std::int64_t GetLast() const { return Get(mCount - 1); }
    /// Time \p pIndex. O(1).
    std::int64_t Get(int pIndex) const { return IsEven() ? After(mStart, mStep * static_cast<std::uint64_t>(pIndex)) : mList[pIndex]; }

    /// Index of the last key at or before \p pTime, -1 when there is none. O(1) when the times are evenly spaced, else O(log n).
    int Find(std::int64_t pTime) const;

    /// Between which keys a time is.
    struct KPlace
    {
        int           mKey;   ///< Find of the time, -1 before the first key; the rest then has no meaning.
        std::uint64_t mSince; ///< Ticks since that key.
        std::uint64_t mStep;  ///< Ticks from that key to the next.
    };

    /// A place that was found, for others to use that have the same times.
    struct KSpot
    {
        KPlace        mPlace = {-1, 0, 0}; ///< mKey -1: none yet.
        std::int64_t  mTime = 0;           ///< The time that is there,
        std::int64_t  mStart = 0;          ///< among evenly spaced keys from this time on
        std::uint64_t mStep = 0;           ///< with this step.
    };

    /// The place of a time before the last key. As fast as Find.
    KPlace Locate(std::int64_t pTime) const;

    /// The same for many curves that have mostly the same times: what was found for the one before is kept in \p pSpot.
    KPlace Locate(std::int64_t pTime, KSpot& pSpot) const
    {
        if (!IsEven())
        {
            return Locate(pTime);
        }
        if (pTime != pSpot.mTime || mStart != pSpot.mStart || mStep != pSpot.mStep || pSpot.mPlace.mKey < 0)
        {
            pSpot = {Locate(pTime), pTime, mStart, mStep};
        }
        return pSpot.mPlace;
    }

    /// The largest step such that every time is the first one plus a multiple of it; 0 for fewer than two keys. O(1) when the times are
    /// evenly spaced, else O(n).
    std::uint64_t GetCommonStep() const;

    /// Whether both hold the same times. O(n), O(1) when both are evenly spaced.
    bool IsSame(const KQexKeyTimes& pOther) const;

    /// Adds a time later than all others. Amortised O(1).
    bool Append(std::int64_t pTime)
    {
        if (mCount > 1 && IsEven() && Step(GetLast(), pTime) == mStep)
        {
            ++mCount;
            return true;
        }
        return AppendElsewhere(pTime);
    }

    /// Adds a time between the keys \p pIndex - 1 and \p pIndex, as Find tells for a time that is not there yet. O(n).
    bool Insert(int pIndex, std::int64_t pTime);

    /// Removes every time and gives their memory back.
    void Clear();
    /// Gives spare room back.
    void Compact() { mList.SetCapacity(mList.GetCount()); }
    /// Exchanges all times.
    void Swap(KQexKeyTimes& pOther) noexcept;
    /// Bytes allocated, spare room included.
    std::size_t GetMemoryUse() const { return mList.GetMemoryUse(); }

private:
    /// Ticks from one time to a later one; their difference may not fit a number with a sign.
    static std::uint64_t Step(std::int64_t pFrom, std::int64_t pTo)
    {
        return static_cast<std::uint64_t>(pTo) - static_cast<std::uint64_t>(pFrom);
    }
    static std::int64_t After(std::int64_t pFrom, std::uint64_t pTicks)
    {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(pFrom) + pTicks);
    }

    bool IsEven() const { return mList.GetCount() == 0; }
    bool AppendElsewhere(std::int64_t pTime);
    bool TurnIntoList();
    void TurnIntoRun();

    KQexKeyBlock<std::int64_t> mList;      ///< The times one by one; empty when they are evenly spaced.
    std::int64_t               mStart = 0; ///< The first time, and the step from each to the next; for evenly spaced times only.
    std::uint64_t              mStep = 0;  ///< 0 for fewer than two keys.
    int                        mCount = 0;
};

} // namespace qexsdk

#endif
