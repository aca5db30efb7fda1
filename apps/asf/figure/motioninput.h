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

/// Options shared by the commands that read motion.
struct KMotionOptions
{
    std::string mAsf;            ///< --asf; empty: search for it.
    std::string mFps;            ///< --fps as given; empty: the file's rate.
    double      mMotionRate = 0; ///< --fps as a number, 0 without one.
    bool        mQuiet = false;
};

/// Adds --asf, --fps and --quiet. The command's callback must call ApplyMotionOptions().
void AddMotionOptions(CLI::App& pCommand, KMotionOptions& pOptions);

/// Parses a rate: "120", "23.976" or "30000/1001". False, and \p pRate unchanged, if \p pText is not a rate in [1e-3, 1e6].
bool ParseRate(const std::string& pText, double& pRate);

/// Parses all of \p pText as a finite number. False if it is not one.
bool ParseNumber(const std::string& pText, double& pValue);

/// Checks and applies the options. False after an error.
bool ApplyMotionOptions(KMotionOptions& pOptions, KConsole& pConsole);

/// A motion and its skeleton, opened and ready to be read.
class KMotionInput
{
public:
    /// Opens one or two \p pPaths and detects which is the motion and which the skeleton. For a motion alone, the skeleton is --asf
    /// or searched for. With \p pMotionNeeded a skeleton alone is an error. False after an error.
    bool Open(const std::vector<std::string>& pPaths, const KMotionOptions& pOptions, bool pMotionNeeded, KConsole& pConsole);

    /// The same for a motion that is already open.
    bool OpenSkeletonOf(const KInputFile& pMotion, const KMotionOptions& pOptions, KConsole& pConsole);

    bool              HasMotion() const { return mHasMotion; }
    const KInputFile& GetMotion() const { return mMotion; }
    const KInputFile& GetSkeleton() const { return mSkeleton; }

    /// Paths of all inputs.
    std::vector<std::string> GetPaths() const;

    /// Raises the exit status for a failed read: eEXIT_SYSTEM if one of the files has an I/O error, else eEXIT_INPUT.
    void RaiseFailure(KConsole& pConsole) const;

private:
    bool OpenSkeleton(const std::string& pPath, KConsole& pConsole);

    KInputFile mMotion;
    KInputFile mSkeleton;
    bool       mHasMotion = false;
};

/// Prints the messages of an import.
void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole);

/// Prints the messages of a text file reader or writer.
void PrintTextMessages(const qexsdk::KQexTextFile& pFile, const std::string& pDisplayPath, KConsole& pConsole);

/// Prints a note if the motion has no frame rate and the default is used.
void NoteRate(const KInputFile& pMotion, const qexsdk::KQexAmcInfo& pInfo, KConsole& pConsole);

} // namespace asfapp

#endif
