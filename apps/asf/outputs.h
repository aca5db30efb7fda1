#ifndef APPS_ASF_OUTPUTS_H
#define APPS_ASF_OUTPUTS_H

#include <apps/asf/console.h>

#include <string>
#include <vector>

namespace asfapp
{

/// Makes Ctrl-C, SIGTERM and SIGHUP end the process without leaving a temporary file behind, and a reader that closes its end of
/// a pipe show as a failed write instead of a signal.
void InstallSignals();

/// True when \p pOutput may be written: it is none of \p pInputs, through links either. Else false, after saying so.
bool CheckOutput(const std::string& pOutput, const std::vector<std::string>& pInputs, KConsole& pConsole);

/// How the path of an output is shown: as given, and "standard output" for "-".
std::string ShownOutput(const std::string& pPath);

/// Opens \p pOut for \p pPath ("-" is standard output). False after saying why not.
bool OpenOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Completes \p pOut. False, and the file as it was before, after saying why; in silence when nobody reads the pipe any more.
bool CloseOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Says why \p pOut failed and raises the exit status, unless a pipe's reader went away.
void ReportOutput(const qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Writes a whole file: the old one stays when anything fails. False after saying why.
bool WriteOutput(const std::string& pPath, const std::string& pBytes, KConsole& pConsole);

} // namespace asfapp

#endif
