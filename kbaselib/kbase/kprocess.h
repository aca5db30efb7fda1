#ifndef KBASELIB_KBASE_KPROCESS_H
#define KBASELIB_KBASE_KPROCESS_H

#include <kbaselib/kbase/kbaseexport.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qexsdk
{

/// A program to run.
struct KProcessOptions
{
    std::vector<std::string> mArguments;                 ///< The program's path first; no shell sees them.
    double                   mSeconds = 0;               ///< Ended by force after this time; 0: never.
    const std::atomic<bool>* mIsCancelled = nullptr;     ///< Ended by force soon after this becomes true; null: never. Not owned.
    size_t                   mMaxText = size_t(1) << 24; ///< Bytes kept of each output stream; the rest is read and dropped.
};

/// How a program ended.
struct KProcessResult
{
    int         mError = 0;        ///< errno of starting it; 0: it ran.
    int         mExit = -1;        ///< Exit status; -1 if it did not end by itself.
    int         mSignal = 0;       ///< Signal that ended it, 0 for none.
    bool        mTimedOut = false; ///< Ended by force after mSeconds.
    std::string mOut;              ///< Its standard output.
    std::string mErr;              ///< Its standard error.
    double      mCpuSeconds = 0;   ///< Processor time that it used.
    uint64_t    mPeakMemory = 0;   ///< Most bytes of memory that it had; 0: unknown.
};

/// Runs a program with empty standard input and waits until it ends. Any number of threads may do so at once. Throws std::bad_alloc only
/// before the program is started; text for which there is no memory is dropped.
QEX_API KProcessResult KRunProcess(const KProcessOptions& pOptions);

/// Path of the running program's file; "" if it cannot be found.
QEX_API std::string KProgramPath();

/// Limits the memory of this process, from now on: allocations beyond \p pBytes fail. False if it cannot be limited, or has more already.
QEX_API bool KLimitMemory(uint64_t pBytes);

} // namespace qexsdk

#endif
