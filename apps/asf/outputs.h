#ifndef APPS_ASF_OUTPUTS_H
#define APPS_ASF_OUTPUTS_H

#include <apps/asf/console.h>

#include <new>
#include <string>
#include <vector>

namespace asfapp
{

/// The option that names an output, for messages.
constexpr const char* kOutputOption = "--output";

/// Removes temporary files before a signal (SIGINT, SIGTERM, SIGHUP) ends the process, and makes a closed pipe a failed write.
void InstallSignals();

/// True if \p pOutput is none of \p pInputs, also through links. Else false, after an error.
bool CheckOutput(const std::string& pOutput, const std::vector<std::string>& pInputs, KConsole& pConsole);

/// Opens \p pOut for \p pPath ("-" is standard output). False after an error.
bool OpenOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// False, after an error, if \p pOut, which was opened for \p pPath, takes bytes in order only: an archive of arrays is not written so.
bool CheckArchive(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Closes \p pOut and replaces the file. On failure false, the file unchanged, and an error unless a pipe was closed.
bool CloseOutput(qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Reports why \p pOut failed and raises the exit status, except for a closed pipe.
void ReportOutputError(const qexsdk::KOutputFile& pOut, const std::string& pPath, KConsole& pConsole);

/// Runs \p pReport, which reports what was written. When memory runs out, the report is lost; the files stay, so the run has succeeded.
template <typename TReport>
void ReportAfterCommit(const TReport& pReport)
{
    try
    {
        pReport();
    }
    catch (const std::bad_alloc&)
    {
        return;
    }
}

/// Says that \p pPath was written, and what it holds: `asf: wrote walk.bvh: 31 joints, 343 frames, 120 a second`.
void ReportWritten(const std::string& pPath, const std::string& pContents, KConsole& pConsole);

/// "343 frames, 120 a second", without the rate if it is 0.
std::string FramesText(long long pFrames, double pRate);

/// Writes a whole file. On failure false, the old file unchanged, and an error.
bool WriteOutput(const std::string& pPath, const std::string& pBytes, KConsole& pConsole);

} // namespace asfapp

#endif
