#ifndef TESTS_FAULTS_FAILINGALLOCATOR_H
#define TESTS_FAULTS_FAILINGALLOCATOR_H

namespace qextest
{

/// Every allocation of the program that holds it (the C++ operators, and the library's own through its hooks) is counted, and can be
/// made to fail. One object at a time; the threads of one test share it.
class KFailingAllocator
{
public:
    KFailingAllocator();
    ~KFailingAllocator();
    KFailingAllocator(const KFailingAllocator&) = delete;
    KFailingAllocator& operator=(const KFailingAllocator&) = delete;

    /// Lets \p pFirst - 1 further allocations succeed and fails number \p pFirst; \p pOn: and all after it.
    void Arm(long pFirst, bool pOn);

    /// No allocation fails any more. Gives how many were asked for since Arm().
    long Disarm();

    /// Blocks that are allocated and not freed, in the whole program.
    static long GetLive();

    /// The most bytes that were allocated at once since Arm(), on top of what was then.
    static long GetPeakBytes();
};

/// While it lives, what the program allocates is neither failed nor counted as a call: for what a test itself needs half-way.
class KUnfailingMemory
{
public:
    KUnfailingMemory();
    ~KUnfailingMemory();
    KUnfailingMemory(const KUnfailingMemory&) = delete;
    KUnfailingMemory& operator=(const KUnfailingMemory&) = delete;
};

} // namespace qextest

#endif
