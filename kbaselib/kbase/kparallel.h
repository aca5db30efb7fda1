#ifndef KBASELIB_KBASE_KPARALLEL_H
#define KBASELIB_KBASE_KPARALLEL_H

#include <algorithm>
#include <exception>
#include <system_error>
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
/// calling thread is one of them, and runs the jobs of any thread that the system cannot create. \p pJob must not throw.
template <typename TJob>
void KParallelFor(int pCount, int pThreads, const TJob& pJob)
{
    const auto lRun = [pCount, pThreads, &pJob](int pThread)
    {
        for (int i = pThread; i < pCount; i += pThreads)
        {
            pJob(i);
        }
    };
    std::vector<std::thread> lThreads;
    std::vector<int>         lOwn = {0};
    lThreads.reserve(static_cast<size_t>(std::max(pThreads, 1)));
    lOwn.reserve(static_cast<size_t>(std::max(pThreads, 1)));
    for (int i = 1; i < std::min(pThreads, pCount); ++i)
    {
        try
        {
            lThreads.emplace_back(lRun, i);
        }
        catch (const std::exception&)
        {
            lOwn.push_back(i);
        }
    }
    for (const int lThread : lOwn)
    {
        lRun(lThread);
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
}

} // namespace qexsdk

#endif
