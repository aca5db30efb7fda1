#include <kbaselib/kbase/kparallel.h>

#include <tests/faults/failingallocator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A thread that cannot be started is no failure: the calling thread does its jobs, each exactly once.
TEST(KParallelFault, EveryJobRunsOnceOrNoneDoes)
{
    constexpr int     kJobs = 8;
    KFailingAllocator lAllocator;
    int               lWithoutThread = 0;
    bool              lFails = true;
    for (long lCall = 1; lFails; ++lCall)
    {
        int        lDone[kJobs] = {};
        bool       lThrows = false;
        const long lLive = KFailingAllocator::GetLive();
        lAllocator.Arm(lCall, false);
        try
        {
            KParallelFor(kJobs, 4, [&](int pJob) { ++lDone[pJob]; });
        }
        catch (const std::bad_alloc&)
        {
            lThrows = true;
        }
        lFails = lAllocator.Disarm() >= lCall;
        EXPECT_EQ(KFailingAllocator::GetLive(), lLive);
        EXPECT_TRUE(std::all_of(lDone, lDone + kJobs, [&](int pTimes) { return pTimes == (lThrows ? 0 : 1); })) << lCall;
        lWithoutThread += lFails && !lThrows ? 1 : 0;
    }
    EXPECT_EQ(lWithoutThread, 3) << "three threads besides the calling one";
}

} // namespace
