#ifndef QEXIOPLUGINS_MOTION_KQEXTEXTMESSAGE_H
#define QEXIOPLUGINS_MOTION_KQEXTEXTMESSAGE_H

#include <kbaselib/kbase/kbaseexport.h>

#include <string>

namespace qexsdk
{

/// A warning or an error that a text file reported.
struct KQexTextMessage
{
    /// Kinds of messages.
    enum ESeverity
    {
        eWARNING, ///< Reading continues.
        eERROR    ///< Reading ends.
    };

    ESeverity   mSeverity; ///< Warning or error.
    int         mLine;     ///< Line of the file from 1; 0 before the first line.
    std::string mText;     ///< Without its last newline.
};

/// A message and the file that it is about.
struct QEX_API KQexImportMessage
{
    std::string     mPath;    ///< Path, or name of the buffer.
    KQexTextMessage mMessage; ///< Line 0: about the file as a whole.
};

} // namespace qexsdk

#endif
