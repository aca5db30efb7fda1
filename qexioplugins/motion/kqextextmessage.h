#ifndef QEXIOPLUGINS_MOTION_KQEXTEXTMESSAGE_H
#define QEXIOPLUGINS_MOTION_KQEXTEXTMESSAGE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

namespace qexsdk
{

/// A warning or an error that a text file reported.
struct KQexTextMessage
{
    /// Whether reading goes on.
    enum ESeverity
    {
        eWARNING, ///< Reading goes on.
        eERROR    ///< Reading ends.
    };

    ESeverity   mSeverity; ///< Which of the two it is.
    int         mLine;     ///< Line of the file from 1, or 0 before the first line.
    std::string mText;     ///< Without its last newline.
};

/// A message with the file that it is about.
struct QEX_API KQexImportMessage
{
    std::string     mPath;    ///< Path, or name of the buffer.
    KQexTextMessage mMessage; ///< Severity, line (0: the file as a whole) and text.
};

} // namespace qexsdk

#endif
