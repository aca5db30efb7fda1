#include <tests/faults/foreachallocation.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace qextest
{

namespace
{

constexpr long kMostCalls = 100000;

} // namespace

void ForEachAllocation(const KTryAllocation& pTry, long pLeast)
{
    KFailingAllocator lAllocator;
    pTry(lAllocator, 10 * kMostCalls, false);
    for (const bool lAndLater : {false, true})
    {
        long lCall = 1;
        for (bool lFails = true; lFails && lCall < kMostCalls && !testing::Test::HasFailure(); lCall += lFails ? 1 : 0)
        {
            SCOPED_TRACE("allocation " + std::to_string(lCall) + (lAndLater ? " and all after it" : ""));
            const long lLive = KFailingAllocator::GetLive();
            lFails = pTry(lAllocator, lCall, lAndLater);
            EXPECT_EQ(KFailingAllocator::GetLive(), lLive) << "leaks";
        }
        EXPECT_GE(lCall - 1, pLeast);
        std::printf("each of %ld allocations %s\n", lCall - 1, lAndLater ? "and all after it" : "alone");
    }
}

} // namespace qextest
