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
/// Motion is sampled at a steady rate with gaps, so the times are kept as runs of equal steps, 24 bytes each however many
/// keys they hold. When there are more runs than a third of the keys, each time is kept by itself (8 bytes a key), and as
/// runs again when few steps differ from the one before. Changing over costs O(n), and between one change and the next lie
/// insertions in proportion to n. A long jump in time is a gap like any other.
///
/// Indices are trusted. Operations that can fail for want of memory change nothing then.
class QEX_API KQexKeyTimes
{
public:
    int          GetCount() const { return mCount; }
    std::int64_t GetLast() const { return mLast; } ///< Time of the last key; meaningless without keys.
    std::int64_t Get(int pIndex) const;

    /// Index of the last key at or before \p pTime, -1 when there is none. O(1) when all steps are equal, else O(log n).
    int Find(std::int64_t pTime) const;

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
            KRun&               lRun = mRuns[mRuns.GetCount() - 1];
            const std::uint64_t lStep = Step(mLast, pTime);
            if (lStep == lRun.mStep)
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

    void        Clear();
    void        Compact();
    void        Swap(KQexKeyTimes& pOther) noexcept;
    std::size_t GetMemoryUse() const { return mRuns.GetMemoryUse() + mList.GetMemoryUse(); }

private:
    /// Keys at mStart, mStart + mStep and so on, up to where the next run begins.
    struct KRun
    {
        std::int64_t  mStart;
        std::uint64_t mStep;  ///< Never 0 but in a run of one key.
        int           mFirst; ///< Index of its first key.
    };

    /// Ticks from one time to a later one; differences of 64 bits with a sign do not fit into 64 bits with a sign.
    static std::uint64_t Step(std::int64_t pFrom, std::int64_t pTo)
    {
        return static_cast<std::uint64_t>(pTo) - static_cast<std::uint64_t>(pFrom);
    }
    static std::int64_t After(std::int64_t pFrom, std::uint64_t pSteps)
    {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(pFrom) + pSteps);
    }

    bool AppendElsewhere(std::int64_t pTime);
    bool InsertIntoList(int pIndex, std::int64_t pTime);
    bool InsertIntoRuns(int pIndex, std::int64_t pTime);

    /// \name Runs
    /// \{
    int          FindRun(int pIndex) const;
    int          RunCount(int pRun) const;
    std::int64_t RunLast(int pRun) const;
    void         SplitRun(int pRun, int pIndex);
    bool         MergeWithNext(int pRun);
    void         MergeRuns(int pFirst, int pLast);
    bool         AppendToRuns(std::int64_t pTime);
    /// \}

    int  CountBreaks(int pFrom, int pTo) const;
    void ChooseForm();
    void TurnIntoList();
    void TurnIntoRuns();

    KQexKeyBlock<KRun>         mRuns; ///< Empty when the times are listed.
    KQexKeyBlock<std::int64_t> mList; ///< The times one by one, empty when they are kept as runs.
    std::int64_t               mLast = 0;
    int                        mCount = 0;
    int                        mBreaks = 0; ///< When listed: keys whose step ahead differs from the step behind.
    bool                       mIsListed = false;
};

} // namespace qexsdk

#endif
