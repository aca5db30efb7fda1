#ifndef APPS_ASF_BATCH_BATCHPROGRESS_H
#define APPS_ASF_BATCH_BATCHPROGRESS_H

#include <apps/asf/batch/batchfile.h>

#include <array>
#include <chrono>
#include <string>

namespace asfapp
{

/// Counts of a run, shown from time to time: on a terminal as one line that is replaced, elsewhere as lines every half a minute.
class KBatchProgress
{
public:
    explicit KBatchProgress(const KConsole& pConsole);

    /// Starts the clock for \p pTotal motions.
    void Start(size_t pTotal);

    /// Counts a motion, and shows the counts if it is time to.
    void Count(const KBatchResult& pResult);

    /// Removes the line from the terminal, so that something else can be printed.
    void Clear();

    size_t Get(EBatchStatus pStatus) const { return mCounts[pStatus]; }
    size_t GetDone() const { return mDone; }
    size_t GetTotal() const { return mTotal; }

    /// "388 made, 12 failed", only what there is; "nothing to do" without anything.
    std::string GetCounts() const;

    /// "2 min 5 s"
    std::string GetTime() const;

private:
    using KClock = std::chrono::steady_clock;

    double      GetSeconds() const;
    std::string GetText() const;

    const bool            mIsQuiet;
    const bool            mIsTerminal;
    std::array<size_t, 7> mCounts{}; ///< By EBatchStatus.
    size_t                mDone = 0;
    size_t                mTotal = 0;
    KClock::time_point    mStart = KClock::now();
    KClock::time_point    mNext;
    bool                  mIsShown = false;
};

} // namespace asfapp

#endif
