#ifndef KBASELIB_KBASE_KASSERT_H
#define KBASELIB_KBASE_KASSERT_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// Receives a failed assertion; the arguments are those of KAssertFailed.
using KAssertHandler = void (*)(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever);

/// Reports a failed assertion to standard error and to the handler; nothing is aborted. May be called on any thread: the handler
/// then runs there, reports of different sites at the same time.
/// \param pFile        the source as the conventions name it (folder and stem), not the path of one machine
/// \param pFunction    the function it stands in
/// \param pLine        its line
/// \param pText        what should have held
/// \param pHideForever the site's own flag, or null: a report is made when it is null or false, and it is true from before the
///                     report on, so that a site reports once, on whatever thread and whatever the handler does
QEX_API void KAssertFailed(const char* pFile, const char* pFunction, unsigned long pLine, const char* pText, bool* pHideForever);

/// Installs a handler, null for none, and returns the one installed before.
QEX_API KAssertHandler KAssertSetHandler(KAssertHandler pHandler);

} // namespace qexsdk

/// Reports once, as KAssertFailed with text \p pText, when \p pCondition does not hold. \p pFile is the source's name as the
/// conventions state it; __FILE__ would carry the path of the machine it was built on.
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
