#ifndef KBASELIB_KBASE_KASSERT_H
#define KBASELIB_KBASE_KASSERT_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// Receives a failed assertion; the arguments are those of KAssertFailed.
using KAssertHandler = void (*)(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever);

/// Reports a failed assertion to standard error and to the handler; never aborts. May be called on any thread: the handler runs on that
/// thread, and handlers of different sites may run concurrently.
/// \param pFile        the source's name by convention (folder and stem), not its path on the build machine
/// \param pFunction    the function that contains the assertion
/// \param pLine        its line
/// \param pText        the condition that failed
/// \param pHideForever the site's flag, or null. The failure is reported when it is null or false. Set before the handler is called, so
///                     that a site reports once, even on several threads
QEX_API void KAssertFailed(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever);

/// Installs a handler, null for none; returns the previous one.
QEX_API KAssertHandler KAssertSetHandler(KAssertHandler pHandler);

} // namespace qexsdk

/// Reports once, as KAssertFailed with text \p pText, when \p pCondition is false. \p pFile is the source's name by convention;
/// __FILE__ would be its path on the build machine.
#define QEX_ASSERT(pFile, pCondition, pText)                                                                                               \
    do                                                                                                                                     \
    {                                                                                                                                      \
        if (!(pCondition))                                                                                                                 \
        {                                                                                                                                  \
            static bool sHideForever = false;                                                                                              \
            ::qexsdk::KAssertFailed(pFile, __func__, static_cast<unsigned long>(__LINE__), pText, &sHideForever);                          \
        }                                                                                                                                  \
    } while (false)

#endif
