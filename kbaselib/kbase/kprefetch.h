#ifndef KBASELIB_KBASE_KPREFETCH_H
#define KBASELIB_KBASE_KPREFETCH_H

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

} // namespace qexsdk

#endif
