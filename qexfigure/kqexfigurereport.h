#ifndef QEXFIGURE_KQEXFIGUREREPORT_H
#define QEXFIGURE_KQEXFIGUREREPORT_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <string>
#include <string_view>
#include <vector>

/// \file
/// Messages and status of opening and loading figures.

namespace qexsdk
{

/// How an operation ended; the values increase with severity.
enum KQexFigureStatus
{
    eFIGURE_OK = 0,    ///< Success, perhaps with warnings.
    eFIGURE_INPUT = 1, ///< A file's contents are bad.
    eFIGURE_USAGE = 2, ///< The files or options do not fit together.
    eFIGURE_SYSTEM = 3 ///< A file could not be opened or read, or memory ran out.
};

/// A message about a file, or about the files and options together.
struct QEX_API KQexFigureMessage
{
    /// Kinds of messages.
    enum ESeverity
    {
        eNOTE,    ///< What was chosen, for information.
        eWARNING, ///< Something was ignored or may be wrong.
        eERROR    ///< The operation failed.
    };

    ESeverity   mSeverity = eNOTE; ///< Note, warning or error.
    std::string mPath;             ///< The file's path or name; "" if the message is not about one file.
    int         mLine = 0;         ///< Line of the file from 1; 0: the file as a whole.
    std::string mText;             ///< One line, without a newline. Names from files are in it as they are, control characters included.
};

/// The kind of a message: its text without what is in parentheses, and with # for numbers. May throw std::bad_alloc.
QEX_API std::string KQexKindOfMessage(std::string_view pText);

/// Collects the messages of one or more operations, in order, and the highest status. Nothing throws: if memory for a message runs out,
/// the message is dropped, IsOutOfMemory() is true and the status is eFIGURE_SYSTEM.
class QEX_API KQexFigureReport
{
public:
    /// All messages so far, in order.
    const std::vector<KQexFigureMessage>& GetMessages() const { return mMessages; }

    /// The highest status so far.
    KQexFigureStatus GetStatus() const { return mStatus; }

    /// True if memory ran out; there may be no message about it.
    bool IsOutOfMemory() const { return mIsOutOfMemory; }

    /// True if the progress function cancelled a load. No message, and no change of the status.
    bool IsCancelled() const { return mIsCancelled; }

    /// True if an AMC motion was refused because it hardly matches the skeleton; an error reports it. See mAllowUnmatched of the options.
    bool IsMismatch() const { return mIsMismatch; }

    /// \name For operations that report
    ///@{

    /// Adds a message. An error does not raise the status: see Fail() and Raise().
    void Add(KQexFigureMessage::ESeverity pSeverity, std::string_view pPath, int pLine, std::string_view pText) noexcept;

    /// Adds a message of a text file or an importer.
    void Add(std::string_view pPath, const KQexTextMessage& pMessage) noexcept;

    /// Adds an error about \p pPath ("": about no single file), and raises the status. \return false
    bool Fail(KQexFigureStatus pStatus, std::string_view pPath, std::string_view pText) noexcept;

    /// Raises the status to \p pStatus if that is higher.
    void Raise(KQexFigureStatus pStatus) noexcept;

    /// Records that memory ran out.
    void SetOutOfMemory() noexcept;

    /// Records that a motion hardly matches the skeleton.
    void SetMismatch() noexcept { mIsMismatch = true; }

    /// Records that the progress function cancelled.
    void SetCancelled() noexcept { mIsCancelled = true; }
    ///@}

private:
    std::vector<KQexFigureMessage> mMessages;
    KQexFigureStatus               mStatus = eFIGURE_OK;
    bool                           mIsOutOfMemory = false;
    bool                           mIsCancelled = false;
    bool                           mIsMismatch = false;
};

} // namespace qexsdk

#endif
