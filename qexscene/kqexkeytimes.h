#ifndef QEXSCENE_KQEXKEYTIMES_H
#define QEXSCENE_KQEXKEYTIMES_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>
#include <qexscene/kqexkeyrun.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// Times of keys in ticks, strictly rising, over the whole range of 64 bits.
///
/// Motion is sampled at a steady rate with gaps, so the times are kept as runs of even steps, 32 bytes each however many
/// keys they hold; steps that differ by the rounding to whole ticks count as even. When there are more runs than a quarter of
/// the keys, each time is kept by itself (8 bytes a key), and as runs again when they would be few. Changing over costs O(n),
/// and between one change and the next lie insertions in proportion to n. A long jump in time is a gap like any other.
///
/// Indices are trusted. Operations that can fail for want of memory change nothing then.
class QEX_API KQexKeyTimes
{
public:
    /// Number of times.
    int          GetCount() const { return mCount; }
    std::int64_t GetLast() const { return mLast; } ///< Time of the last key; meaningless without keys.
    /// Time \p pIndex. O(1) when listed or when all steps are equal, else O(log n).
    std::int64_t Get(int pIndex) const;

    /// Index of the last key at or before \p pTime, -1 when there is none. O(1) when all steps are equal, else O(log n).
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
        std::int64_t  mStart = 0;          ///< in an even run of keys from this time on
        std::uint64_t mStep = 0;           ///< with this step.
    };

    /// The place of a time before the last key. As fast as Find.
    KPlace Locate(std::int64_t pTime) const;

    /// The same for many curves that have mostly the same times: what was found for the one before is kept in \p pSpot.
    KPlace Locate(std::int64_t pTime, KSpot& pSpot) const
    {
        if (mIsListed || mRuns.GetCount() != 1 || !mRuns[0].IsEven())
        {
            return Locate(pTime);
        }
        const KQexKeyRun& lRun = mRuns[0];
        if (pTime != pSpot.mTime || lRun.mStart != pSpot.mStart || lRun.mStep != pSpot.mStep || pSpot.mPlace.mKey < 0)
        {
            pSpot = {Locate(pTime), pTime, lRun.mStart, lRun.mStep};
        }
        return pSpot.mPlace;
    }

    /// The largest step such that every time is the first one plus a multiple of it; 0 for fewer than two keys. O(runs), or O(n)
    /// where times are listed.
    std::uint64_t GetCommonStep() const;

    /// Whether both hold the same times. O(n), less for equal runs.
    bool IsSame(const KQexKeyTimes& pOther) const;

    /// Adds a time later than all others. Amortised O(1).
    bool Append(std::int64_t pTime)
    {
        if (mCount > 0 && !mIsListed)
        {
            const KQexKeyRun& lRun = mRuns[mRuns.GetCount() - 1];
            if (lRun.IsEven() && lRun.mStep == KeyTimeStep(mLast, pTime))
            {
                mLast = pTime;
                ++mCount;
                return true;
            }
        }
        return AppendElsewhere(pTime);
    }

    /// Adds a time between the keys \p pIndex - 1 and \p pIndex, as Find tells for a time that is not there yet.
    bool Insert(int pIndex, std::int64_t pTime);

    /// Removes every time and gives their memory back.
    void Clear();
    /// Gives spare room back.
    void Compact();
    /// Exchanges all times.
    void Swap(KQexKeyTimes& pOther) noexcept;
    /// Bytes allocated, spare room included.
    std::size_t GetMemoryUse() const { return mRuns.GetMemoryUse() + mList.GetMemoryUse(); }

private:
    bool AppendElsewhere(std::int64_t pTime);
    bool InsertIntoList(int pIndex, std::int64_t pTime);
    bool InsertIntoRuns(int pIndex, std::int64_t pTime);

    /// \name Runs
    /// \{
    int          CountEntriesUpTo(std::int64_t pTime) const;
    int          FindRun(int pIndex) const;
    int          RunCount(int pRun) const;
    std::int64_t RunLast(int pRun) const;
    bool         MergeWithNext(int pRun);
    void         MergeRuns(int pFirst, int pLast);
    bool         AppendToRuns(std::int64_t pTime);
    /// \}

    int  CountBreaks(int pFrom, int pTo) const;
    void ChooseForm();
    void TurnIntoList();
    bool TurnIntoRuns(int pMost);

    KQexKeyBlock<KQexKeyRun>   mRuns;   ///< Empty when the times are listed.
    KQexKeyRunEnd              mRunEnd; ///< Of the last run.
    KQexKeyBlock<std::int64_t> mList;   ///< The times one by one, empty when they are kept as runs.
    std::int64_t               mLast = 0;
    int                        mCount = 0;
    int                        mBreaks = 0;  ///< When listed: keys whose step ahead differs from the step behind.
    int                        mNextTry = 0; ///< When listed: from how many keys on to try again whether runs are fewer.
    bool                       mIsListed = false;
};

} // namespace qexsdk

#endif
