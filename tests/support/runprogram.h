#ifndef TESTS_SUPPORT_RUNPROGRAM_H
#define TESTS_SUPPORT_RUNPROGRAM_H

#include <functional>
#include <map>
#include <string>
#include <vector>

/// \file
/// Running another program, mostly the command line, and capturing all of its output.

namespace qextest
{

/// What a program did.
struct KRunResult
{
    int         mExit = -1;  ///< Exit status; -1 when it never ran or a signal ended it.
    int         mSignal = 0; ///< The signal that ended it, 0 for none.
    std::string mOut;        ///< All of its standard output.
    std::string mErr;        ///< All of its standard error.
    long        mPeak = 0;   ///< Peak memory in KiB; at least that of this program when it started the other.
};

/// How to run a program.
struct KRunOptions
{
    std::string                        mInput;       ///< Its standard input.
    std::function<void(int)>           mWriteInput;  ///< When set: writes standard input into this pipe, instead of mInput.
    std::string                        mFolder;      ///< The folder to run it in; empty: the current one.
    std::map<std::string, std::string> mEnvironment; ///< Variables to set on top of this program's own.
};

/// Runs \p pArguments[0] with the other arguments, without a shell, and waits until it exits.
KRunResult RunProgram(const std::vector<std::string>& pArguments, const KRunOptions& pOptions = {});

} // namespace qextest

#endif
