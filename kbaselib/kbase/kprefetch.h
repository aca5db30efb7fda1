#ifndef KBASELIB_KBASE_KPREFETCH_H
#define KBASELIB_KBASE_KPREFETCH_H

#include <algorithm>
#include <cstddef>

/// \file
/// For walks over more memory than the processor's caches hold, where it is known early what comes next: the wait for the memory
/// then runs beside the work, not between.

namespace qexsdk
{

/// Bytes that come from memory together, on every processor of interest.
inline constexpr size_t kPrefetchLine = 64;

/// Asks for the line that \p pAt lies in; it may be any address. Changes nothing but time.
inline void KPrefetch(const void* pAt)
{
#if defined(__GNUC__)
    __builtin_prefetch(pAt);
    // For g++ a function that does nothing else is one without effect, and calls of it are left out.
    __asm__ volatile("");
#else
    (void)pAt;
#endif
}

/// KPrefetch for all lines from \p pBegin up to the byte before \p pEnd.
inline void KPrefetch(const void* pBegin, const void* pEnd)
{
    const char* const lEnd = static_cast<const char*>(pEnd);
    for (const char* lAt = static_cast<const char*>(pBegin); lAt < lEnd; lAt += kPrefetchLine)
    {
        KPrefetch(lAt);
    }
    KPrefetch(lEnd - 1);
}

/// KPrefetch for a range that is needed later, a few lines at a time: all at once, the processor would have to wait for the first
/// of them before it could ask for the last.
class KPrefetchSteps
{
public:
    /// The range of \p pSize bytes at \p pBegin; it may be any.
    KPrefetchSteps(const void* pBegin, size_t pSize) : mAt(static_cast<const char*>(pBegin)), mLeft(pSize) {}

    /// Asks for the next four lines, as far as there are any left.
    void Step()
    {
        const size_t lSize = std::min(mLeft, 4 * kPrefetchLine);
        if (lSize > 0)
        {
            KPrefetch(mAt, mAt + lSize);
        }
        mAt += lSize;
        mLeft -= lSize;
    }

private:
    const char* mAt;
    size_t      mLeft;
};

} // namespace qexsdk

#endif
