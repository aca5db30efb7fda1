#ifndef APPS_ASF_CONSOLE_H
#define APPS_ASF_CONSOLE_H

#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string>
#include <string_view>

/// \file
/// What a command says, and to whom: data to standard output, messages to standard error, the outcome to the shell.

namespace asfapp
{

/// What the process tells the shell. With several inputs the highest counts.
enum EExit
{
    eEXIT_DONE = 0,  ///< Done, perhaps with warnings.
    eEXIT_INPUT = 1, ///< An input is at fault.
    eEXIT_CALL = 2,  ///< The call was wrong.
    eEXIT_SYSTEM = 3 ///< The system could not open, read or write.
};

/// How a message begins.
enum ESeverity
{
    eNOTE,
    eWARNING,
    eERROR
};

/// The severity of a library's message.
ESeverity SeverityOf(const qexsdk::KQexTextMessage& pMessage);

/// \p pText with every control character as \\xNN, so that a name out of a file cannot drive a terminal.
std::string Printable(std::string_view pText);

/// How a path is shown: as given, and "<stdin>" for "-".
std::string ShownPath(const std::string& pPath);

/// The two streams and the exit status of a command. Colour is used only on a terminal and not when NO_COLOR is set.
class KConsole
{
public:
    KConsole();
    ~KConsole();
    KConsole(const KConsole&) = delete;
    KConsole& operator=(const KConsole&) = delete;

    /// Appends data to standard output. False when it can take no more: nothing is left to do for the command then.
    bool Out(std::string_view pText);

    /// Hands what was written over to the system, in front of messages that belong behind it. False as for Out().
    bool FlushOut();

    /// Completes standard output. A reader that went away is no failure; anything else is reported and raises the exit status.
    void CloseOut();

    /// True when standard output can take no more, for whatever reason.
    bool IsOutGone() const { return mOutGone; }

    /// Prints `path:line: warning: text` to standard error; without the line when it is 0. Notes are left out when quiet.
    void Message(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText);

    /// Prints `asf: error: text`, a message about the call as a whole, and raises the exit status to \p pExit.
    void Fail(EExit pExit, std::string_view pText);

    /// Raises the exit status; a higher one stays.
    void Raise(EExit pExit);

    int GetExit() const { return mExit; }

    /// Neither notes nor a progress bar.
    void SetQuiet(bool pQuiet) { mQuiet = pQuiet; }
    bool IsQuiet() const { return mQuiet; }

    /// \p pText in bold on a terminal's standard output, else as it is.
    std::string Bold(std::string_view pText) const;

private:
    bool WriteOut();

    qexsdk::KOutputFile mOut;
    std::string         mPending; ///< Data not yet handed over.
    bool                mOutOpen = false;
    bool                mOutGone = false;
    bool                mQuiet = false;
    bool                mOutColour = false;
    bool                mErrColour = false;
    int                 mExit = eEXIT_DONE;
};

} // namespace asfapp

#endif
