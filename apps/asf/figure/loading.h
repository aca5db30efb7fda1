#ifndef APPS_ASF_FIGURE_LOADING_H
#define APPS_ASF_FIGURE_LOADING_H

#include <apps/asf/console.h>
#include <apps/asf/figure/motionoptions.h>
#include <apps/asf/figure/point.h>
#include <qexfigure/check/kqexfilemessages.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/table/kqextabletext.h>

#include <string>
#include <vector>

/// \file
/// Opening and loading figures: messages and exit status go to the console, progress to its bar.

namespace asfapp
{

/// Prints the messages and raises the exit status. Throws std::bad_alloc if memory ran out.
void PrintReport(const qexsdk::KQexFigureReport& pReport, KConsole& pConsole);

/// Prints how to go on after a motion was refused because it does not match the skeleton.
void NoteAllowUnmatched(KConsole& pConsole);

/// Opens a file. False after an error.
bool OpenFile(qexsdk::KQexFigureFile& pFile, const std::string& pPath, KConsole& pConsole);

/// The inputs of a command that reads each by itself: all opened first, so that motions find skeletons given in the same call.
class KInputSet
{
public:
    KInputSet(const std::vector<std::string>& pPaths, const KMotionOptions& pOptions);

    /// True if file \p pIndex could be opened; else prints why (see GetReport()) and raises the exit status.
    bool IsOpen(size_t pIndex, KConsole& pConsole) const;

    const qexsdk::KQexFigureFile& GetFile(size_t pIndex) const { return mFiles[pIndex].mFile; }

    /// The messages of opening file \p pIndex.
    const qexsdk::KQexFigureReport& GetReport(size_t pIndex) const { return mFiles[pIndex].mReport; }

    /// Puts motion \p pIndex and its skeleton together. False after an error. Prints the messages, which are also in \p pReport.
    bool Pair(size_t pIndex, const KMotionOptions& pOptions, qexsdk::KQexFigureFiles& pPair, qexsdk::KQexFigureReport& pReport,
              KConsole& pConsole) const;

private:
    struct KInput
    {
        qexsdk::KQexFigureFile   mFile;
        qexsdk::KQexFigureReport mReport;
        bool                     mIsOpen = false;
    };

    std::vector<KInput>                 mFiles;
    std::vector<qexsdk::KQexFigureFile> mSkeletons;
};

/// Opens the files of one figure. False after an error.
bool OpenFigure(qexsdk::KQexFigureFiles& pFiles, const std::vector<std::string>& pPaths, const KMotionOptions& pOptions,
                KConsole& pConsole);

/// True with at most one motion. Else false, after an error.
bool CheckOneMotion(const qexsdk::KQexFigureFiles& pFiles, KConsole& pConsole);

/// Loads a figure with a progress bar. False after an error.
bool LoadFigure(qexsdk::KQexFigure& pFigure, const qexsdk::KQexFigureFiles& pFiles, qexsdk::KQexFigureOptions pOptions, KConsole& pConsole);

/// The same with the messages in \p pReport, not printed; the exit status is raised.
bool LoadQuietly(qexsdk::KQexFigure& pFigure, const qexsdk::KQexFigureFiles& pFiles, qexsdk::KQexFigureOptions pOptions,
                 qexsdk::KQexFigureReport& pReport, KConsole& pConsole);

/// Paths of all files that a figure is read from.
std::vector<std::string> PathsOf(const qexsdk::KQexFigureFiles& pFiles);

/// Prints the messages of an import.
void PrintMessages(const qexsdk::KQexImportAcclaimResult& pResult, KConsole& pConsole);

/// Prints the messages about the file \p pPath, and how many warnings are not among them.
void PrintMessages(const qexsdk::KQexFileMessages& pMessages, const std::string& pPath, KConsole& pConsole);

/// What to type to scale a figure, for size hints.
constexpr const char* kScaleOption = "asf convert --scale";

/// Prints \p pHint, from SizeHint(), as a note about \p pFile unless it is empty.
void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const std::string& pHint, KConsole& pConsole);

/// A figure, one of its takes and the frames of that.
class KLoadedMotion
{
public:
    /// Loads \p pFiles, which must have a motion: the take \p pTake, or the first, with a note if there are several. False after an error.
    bool Load(const qexsdk::KQexFigureFiles& pFiles, const KMotionOptions& pOptions, const std::string& pTake, KConsole& pConsole);

    /// The same; a figure without motion is no error, then HasTake() is false.
    bool LoadFigureOrMotion(const qexsdk::KQexFigureFiles& pFiles, const KMotionOptions& pOptions, const std::string& pTake,
                            KConsole& pConsole);

    /// The figure; what changes it in the world may be done before Evaluate().
    qexsdk::KQexFigure& GetFigure() { return mFigure; }

    bool                                        HasTake() const { return mTake != nullptr; }
    const qexsdk::KQexFigureTake*               GetTake() const { return mTake; } ///< Null without a take.
    const std::vector<qexsdk::KQexFigureJoint>& GetJoints() const { return mFigure.GetJoints(); }

    /// Frame numbers, ascending.
    const std::vector<long long>& GetFrames() const { return mFrames.mNumbers; }

    /// Frames per second.
    double GetRate() const { return mTake->mRate; }

    /// Time in the scene of frame \p pIndex of GetFrames(); 0 without a take.
    qexsdk::KTime GetTime(size_t pIndex) const { return HasTake() ? mFrames.mTimes[pIndex] : qexsdk::KTime(0); }

    /// Seconds from the file's first frame to \p pTime.
    double GetSeconds(qexsdk::KTime pTime) const { return pTime.GetSeconds() - mTake->mOrigin.GetSeconds(); }

    /// The number of the frame at \p pTime.
    std::string GetNumberText(qexsdk::KTime pTime) const { return qexsdk::FrameNumberText(*mTake, pTime); }

    /// The times at --fps \p pRate from frame \p pFirst to frame \p pLast, indices of GetFrames(). False after an error.
    bool Sample(size_t pFirst, size_t pLast, double pRate, qexsdk::KQexSampling& pSampling, KConsole& pConsole) const;

    /// World positions of all joints at \p pTime; without a take, at rest.
    void Evaluate(qexsdk::KTime pTime, std::vector<KPoint>& pPositions);

private:
    qexsdk::KQexFigure            mFigure;
    const qexsdk::KQexFigureTake* mTake = nullptr;
    qexsdk::KQexFigureFrames      mFrames;
};

} // namespace asfapp

#endif
