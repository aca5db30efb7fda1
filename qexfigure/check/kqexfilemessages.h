#ifndef QEXFIGURE_CHECK_KQEXFILEMESSAGES_H
#define QEXFIGURE_CHECK_KQEXFILEMESSAGES_H

#include <qexfigure/kqexfigurereport.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// The errors and warnings about one file, and their total numbers. Add() and Take() may throw std::bad_alloc.
struct QEX_API KQexFileMessages
{
    std::vector<KQexTextMessage> mList;         ///< Every error, and the first warnings.
    int                          mErrors = 0;   ///< Number of errors.
    int                          mWarnings = 0; ///< Number of warnings, including those that are not in the list.

    /// Appends a message; \p pLine is 0 if it is about the file as a whole.
    void Add(KQexTextMessage::ESeverity pSeverity, int pLine, const std::string& pText);

    /// Adds errors and warnings of opening or loading \p pPath, those about other files with their names. Notes are left out.
    void Add(const KQexFigureReport& pReport, const std::string& pPath);

    /// Sorts by line; messages of one line keep their order.
    void SortByLine();

    /// Replaces the messages by those of \p pReader.
    void Take(const KQexTextFile& pReader);

    /// Removes those of the other severity; the counts stay.
    void KeepOnly(KQexTextMessage::ESeverity pSeverity);
};

} // namespace qexsdk

#endif
