#ifndef QEXFIGURE_OUTPUT_KQEXOUTPUTERROR_H
#define QEXFIGURE_OUTPUT_KQEXOUTPUTERROR_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/kqexfigurereport.h>

#include <string>

/// \file
/// Reporting what goes wrong with outputs. These functions may throw std::bad_alloc.

namespace qexsdk
{

/// An output's path for messages: as given, and "standard output" for "-".
QEX_API std::string KQexDisplayOutput(const std::string& pPath);

/// Reports why \p pOut, which was opened for \p pPath, failed, unless a pipe was closed. \return false
QEX_API bool KQexReportOutputError(const KOutputFile& pOut, const std::string& pPath, KQexFigureReport& pReport);

/// False, after an error, if \p pOut, which was opened for \p pPath, takes bytes in order only: an archive of arrays is not written so.
/// \p pOption: how a user of the program names an output ("--output"); may be empty.
QEX_API bool KQexCheckArchive(KOutputFile& pOut, const std::string& pPath, const std::string& pOption, KQexFigureReport& pReport);

} // namespace qexsdk

#endif
