#ifndef APPS_ASF_CONSOLE_H
#define APPS_ASF_CONSOLE_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string>
#include <string_view>

/// \file
/// A command's output: data to standard output, messages to standard error, the exit status to the shell.

namespace asfapp
{

/// Exit status of the process. With several inputs, the highest counts.
enum EExit
{
    eEXIT_SUCCESS = 0, ///< Success, perhaps with warnings.
    eEXIT_INPUT = 1,   ///< Bad input; also differences (diff), warnings (check --strict).
    eEXIT_USAGE = 2,   ///< Usage error.
    eEXIT_SYSTEM = 3   ///< A file could not be opened, read or written; out of memory.
};

/// Severity of a message.
enum ESeverity
{
    eNOTE,
    eWARNING,
    eERROR
};

/// The severity of a library's message.
ESeverity SeverityOf(const qexsdk::KQexTextMessage& pMessage);

/// \p pText with every control character, and every byte that is no UTF-8, as \\xNN: names from files stay distinguishable, and
/// cannot control a terminal.
std::string Printable(std::string_view pText);

class KMessageLog;

/// The output streams and the exit status of a command. Colour is used only on a terminal and not when NO_COLOR is set.
class KConsole
{
public:
    KConsole();
    ~KConsole();
    KConsole(const KConsole&) = delete;
    KConsole& operator=(const KConsole&) = delete;

    /// Appends data to standard output. False if writing has failed, also by a closed pipe: the command should stop.
    bool Out(std::string_view pText);

    /// Flushes standard output, so that later messages appear after it. False as for Out().
    bool FlushOut();

    /// Closes standard output. A closed pipe is not an error; any other failure is reported and raises the exit status.
    void CloseOut();

    /// True if writing to standard output has failed, also by a closed pipe.
    bool HasOutFailed() const { return mHasOutFailed; }

    /// Prints `path:line: warning: text` to standard error; without the line if it is 0. Notes are dropped when quiet.
    void Message(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText);

    /// From now on all messages go to \p pLog instead, which must outlive this or the next call; null: to standard error again. Notes and
    /// reports are dropped meanwhile.
    void Collect(KMessageLog* pLog) { mLog = pLog; }

    /// Drops all messages of files but those of \p pSeverity.
    void ShowOnly(ESeverity pSeverity);

    /// Prints `asf: text` to standard error, unless quiet.
    void Report(std::string_view pText);

    /// Prints `asf: error: text`, an error without a file, and raises the exit status to \p pExit.
    void Fail(EExit pExit, std::string_view pText);

    /// Fail() for a usage error. \return false, always
    bool Refuse(std::string_view pText)
    {
        Fail(eEXIT_USAGE, pText);
        return false;
    }

    /// Raises the exit status to \p pExit if that is higher.
    void Raise(EExit pExit);

    int GetExit() const { return mExit; }

    /// Quiet: no notes, no reports of what was written, no progress bar.
    void SetQuiet(bool pQuiet) { mQuiet = pQuiet; }
    bool IsQuiet() const { return mQuiet; }

    /// True if standard error is a terminal.
    bool IsErrorTerminal() const;

    /// \p pText in bold if standard output is a terminal that shows colour, else unchanged.
    std::string Bold(std::string_view pText) const;

private:
    bool WriteOut();
    void Print(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText);

    qexsdk::KOutputFile mOut;
    std::string         mPending; ///< Data not yet passed to mOut.
    bool                mIsOutOpen = false;
    bool                mHasOutFailed = false;
    KMessageLog*        mLog = nullptr;
    bool                mQuiet = false;
    bool                mHasOnly = false;
    ESeverity           mOnly = eNOTE; ///< Valid if mHasOnly.
    bool                mOutColour = false;
    bool                mErrColour = false;
    int                 mExit = eEXIT_SUCCESS;
};

} // namespace asfapp

#endif
