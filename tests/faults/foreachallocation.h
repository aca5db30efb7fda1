#ifndef TESTS_FAULTS_FOREACHALLOCATION_H
#define TESTS_FAULTS_FOREACHALLOCATION_H

#include <tests/faults/failingallocator.h>

#include <functional>

namespace qextest
{

/// Runs an operation with allocation \p pCall failing, with \p pAndLater all later ones too. \return false when it makes fewer.
using KTryAllocation = std::function<bool(KFailingAllocator& pAllocator, long pCall, bool pAndLater)>;

/// Calls \p pTry for the 1st allocation, the 2nd, and so on until none is left to fail, at least \p pLeast of them; first each alone, then
/// with all later ones. No call may leave memory allocated, but for one before these in which nothing fails: the libraries keep some.
void ForEachAllocation(const KTryAllocation& pTry, long pLeast = 0);

} // namespace qextest

#endif
