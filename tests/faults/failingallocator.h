#ifndef TESTS_FAULTS_FAILINGALLOCATOR_H
#define TESTS_FAULTS_FAILINGALLOCATOR_H

namespace qextest
{

/// Counts every allocation of the program (operator new, and the library's own through its hooks) and can make them fail. One object at a
/// time; all threads of a test share it.
class KFailingAllocator
{
public:
    KFailingAllocator();
    ~KFailingAllocator();
    KFailingAllocator(const KFailingAllocator&) = delete;
    KFailingAllocator& operator=(const KFailingAllocator&) = delete;

    /// Lets the next \p pFirst - 1 allocations succeed and fails number \p pFirst; with \p pAndLater all later ones too.
    void Arm(long pFirst, bool pAndLater);

    /// Stops failing allocations. \return the allocations requested since Arm()
    long Disarm();

    /// Blocks allocated and not yet freed, in the whole program.
    static long GetLive();

    /// Peak of the allocated bytes since Arm(), minus those allocated at Arm().
    static long GetPeakBytes();
};

/// While it exists, allocations neither fail nor count: for what a test itself allocates while armed.
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
