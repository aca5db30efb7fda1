#include <kbaselib/kbase/kparallel.h>

#include <tests/faults/failingallocator.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Threads that cannot be started are no failure: the calling thread does their jobs, each exactly once.
TEST(KParallelFault, EveryJobRunsOnce)
{
    constexpr int     kJobs = 8;
    KFailingAllocator lAllocator;
    int               lShort = 0;
    bool              lFails = true;
    for (long lCall = 1; lFails; ++lCall)
    {
        int        lDone[kJobs] = {};
        const long lLive = KFailingAllocator::GetLive();
        lAllocator.Arm(lCall, false);
        KParallelFor(kJobs, 4, [&](int pJob) { ++lDone[pJob]; });
        lFails = lAllocator.Disarm() >= lCall;
        EXPECT_EQ(KFailingAllocator::GetLive(), lLive);
        EXPECT_TRUE(std::all_of(lDone, lDone + kJobs, [](int pTimes) { return pTimes == 1; })) << lCall;
        lShort += lFails ? 1 : 0;
    }
    EXPECT_EQ(lShort, 4) << "the list of threads, and three besides the calling one";
}

} // namespace
