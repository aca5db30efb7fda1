#ifndef APPS_ASF_FIGURE_MOTIONINPUT_H
#define APPS_ASF_FIGURE_MOTIONINPUT_H

#include <apps/asf/console.h>
#include <apps/asf/inputfile.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace asfapp
{

/// What commands that read motion have in common on the command line.
struct KMotionOptions
{
    std::string mAsf;         ///< --asf; empty: to be found.
    std::string mFps;         ///< --fps as written; empty: the file's.
    double      mSamples = 0; ///< --fps as a number, 0 without one.
    bool        mQuiet = false;
};

/// Adds --asf, --fps and --quiet. Together with the callback of the command, call TakeMotionOptions().
void AddMotionOptions(CLI::App& pCommand, KMotionOptions& pOptions);

/// Reads a rate: "120", "23.976" or "30000/1001". False, and nothing changed, when \p pText is none.
bool ParseRate(const std::string& pText, double& pRate);

/// Reads a finite number, the whole text of it. False when \p pText is none.
bool ParseNumber(const std::string& pText, double& pValue);

/// Checks and applies them. False after an error.
bool TakeMotionOptions(KMotionOptions& pOptions, KConsole& pConsole);

/// A motion and its skeleton, both looked at and ready to be read.
class KMotionInput
{
public:
    /// Sorts out which of the one or two \p pPaths is the motion and which the skeleton; of a motion alone the skeleton is
    /// --asf's or found. With \p pMotionNeeded a skeleton alone is an error. False after an error.
    bool Open(const std::vector<std::string>& pPaths, const KMotionOptions& pOptions, bool pMotionNeeded, KConsole& pConsole);

    /// The same for a motion that was opened before.
    bool OpenSkeletonOf(const KInputFile& pMotion, const KMotionOptions& pOptions, KConsole& pConsole);

    bool              HasMotion() const { return mHasMotion; }
    const KInputFile& GetMotion() const { return mMotion; }
    const KInputFile& GetSkeleton() const { return mSkeleton; }

    /// The paths of all inputs.
    std::vector<std::string> GetPaths() const;

    /// Raises the exit status for a read that failed: the system's fault when one of the files cannot be read through.
    void RaiseFailure(KConsole& pConsole) const;

private:
    bool OpenSkeleton(const std::string& pPath, KConsole& pConsole);

    KInputFile mMotion;
    KInputFile mSkeleton;
    bool       mHasMotion = false;
};

/// Prints the messages of an import.
void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole);

/// Prints the messages of a text file's reader or writer.
void PrintTextMessages(const qexsdk::KQexTextFile& pFile, const std::string& pShown, KConsole& pConsole);

/// Says that nobody told the samples a second, when that is so.
void NoteRate(const KInputFile& pMotion, const qexsdk::KQexAmcInfo& pInfo, KConsole& pConsole);

} // namespace asfapp

#endif
