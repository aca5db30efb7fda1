#ifndef KBASELIB_KBASE_KPARALLEL_H
#define KBASELIB_KBASE_KPARALLEL_H

#include <algorithm>
#include <exception>
#include <thread>
#include <vector>

namespace qexsdk
{

/// Default limit of the threads for a job: beyond a few, writing the result takes most of the time.
constexpr int kMaxDefaultThreads = 4;

/// \p pRequested threads; when it is 0 or below, as many as the machine has, at most kMaxDefaultThreads.
inline int KThreadCount(int pRequested)
{
    if (pRequested > 0)
    {
        return pRequested;
    }
    return std::min(std::max(1, static_cast<int>(std::thread::hardware_concurrency())), kMaxDefaultThreads);
}

/// Runs pJob(i) once for each i from 0 to \p pCount - 1, job i on thread i modulo \p pThreads, and returns when all are done. The
/// calling thread is one of them, and runs the jobs of any thread that cannot be created. \p pJob must not throw.
template <typename TJob>
void KParallelFor(int pCount, int pThreads, const TJob& pJob) noexcept
{
    const int  lCount = std::max(1, std::min(pThreads, pCount));
    const auto lRun = [pCount, lCount, &pJob](int pThread)
    {
        for (int i = pThread; i < pCount; i += lCount)
        {
            pJob(i);
        }
    };
    std::vector<std::thread> lThreads;
    int                      lNext = 1; // The first thread whose jobs the calling one runs.
    try
    {
        lThreads.reserve(static_cast<size_t>(lCount - 1));
        for (; lNext < lCount; ++lNext)
        {
            lThreads.emplace_back(lRun, lNext);
        }
    }
    catch (const std::exception&)
    {
        // No memory, or no more threads: the calling thread has the rest.
    }
    lRun(0);
    for (; lNext < lCount; ++lNext)
    {
        lRun(lNext);
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
}

} // namespace qexsdk

#endif
