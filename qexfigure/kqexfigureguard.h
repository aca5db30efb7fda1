#ifndef QEXFIGURE_KQEXFIGUREGUARD_H
#define QEXFIGURE_KQEXFIGUREGUARD_H

#include <qexfigure/kqexfigurereport.h>

#include <exception>
#include <new>

namespace qexsdk
{

/// Runs \p pRun, which returns bool, and turns exceptions into a false result and an entry in \p pReport.
template <typename TRun>
bool RunGuarded(KQexFigureReport& pReport, const TRun& pRun) noexcept
{
    try
    {
        return pRun();
    }
    catch (const std::bad_alloc&)
    {
        pReport.SetOutOfMemory();
    }
    catch (const std::exception& lError)
    {
        pReport.Fail(eFIGURE_SYSTEM, "", lError.what());
    }
    return false;
}

} // namespace qexsdk

#endif
