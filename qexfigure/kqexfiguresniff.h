#ifndef QEXFIGURE_KQEXFIGURESNIFF_H
#define QEXFIGURE_KQEXFIGURESNIFF_H

#include <qexfigure/kqexfigurefile.h>

#include <string>
#include <string_view>

namespace qexsdk
{

/// What the start of a file shows.
struct KQexFigureSniff
{
    KQexFigureFormat mFormat = eFIGURE_ASF; ///< From the contents, else from the extension.
    bool             mIsEmpty = false;      ///< There is no text but comments.
    bool             mIsBinary = false;     ///< Binary data of no known format.
};

/// Detects the format of \p pPath from its first bytes. \p pIsWhole: they are all of it.
KQexFigureSniff SniffFigureFile(const std::string& pPath, std::string_view pHead, bool pIsWhole);

/// True for glTF, the only format whose lines may be of any length: JSON or binary.
bool MayHaveLongLines(std::string_view pBytes);

} // namespace qexsdk

#endif
