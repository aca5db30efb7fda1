#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/diffreport.h>
#include <apps/asf/usage.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

using qexsdk::KQexFigureFile;

struct KDiffOptions
{
    std::vector<std::string> mFiles;
    double                   mTolerance = 1e-3;
    std::vector<std::string> mIgnored;
    std::string              mTake;
    bool                     mJson = false;
    KMotionOptions           mMotion;
};

/// Sorts the files into two sides, motions in the order given. A single motion is applied to each skeleton without its own; a single
/// skeleton is used by both motions. A single figure with its own motion and a single AMC motion are compared with each other.
bool SplitSides(const std::vector<KQexFigureFile>& pFiles, std::vector<KQexFigureFile> (&pSides)[2], KConsole& pConsole)
{
    std::vector<KQexFigureFile> lFigures;
    std::vector<KQexFigureFile> lMotions;
    for (const KQexFigureFile& lFile : pFiles)
    {
        (lFile.GetFormat() == qexsdk::eFIGURE_AMC ? lMotions : lFigures).push_back(lFile);
    }
    if (lFigures.size() == 1 && lMotions.size() == 1 && lFigures.front().HasOwnMotion())
    {
        pSides[0].push_back(pFiles[0]);
        pSides[1].push_back(pFiles[1]);
        return true;
    }
    const bool lIsShared = lFigures.size() == 1 && !lFigures.front().HasOwnMotion();
    if (lMotions.size() > 2 || !(lFigures.size() == 2 || (lMotions.size() == 2 && (lFigures.empty() || lIsShared))))
    {
        pConsole.Fail(eEXIT_USAGE, "expected two figures, with at most one motion each");
        return false;
    }
    for (size_t lSide = 0; lSide < 2; ++lSide)
    {
        if (!lFigures.empty())
        {
            pSides[lSide].push_back(lFigures[std::min(lSide, lFigures.size() - 1)]);
        }
        if (!lMotions.empty() && (pSides[lSide].empty() || !pSides[lSide].front().HasOwnMotion() || lMotions.size() == 2))
        {
            pSides[lSide].push_back(lMotions[std::min(lSide, lMotions.size() - 1)]);
        }
    }
    return true;
}

bool LoadSide(const std::vector<KQexFigureFile>& pFiles, const KDiffOptions& pOptions, qexsdk::KQexFigure& pFigure, std::string& pTitle,
              KConsole& pConsole)
{
    qexsdk::KQexFigureFiles   lFiles;
    qexsdk::KQexFigureOptions lOptions;
    qexsdk::KQexFigureReport  lReport;
    lOptions.mMotionRate = pOptions.mMotion.mMotionRate;
    lOptions.mAllowUnmatched = pOptions.mMotion.mAllowUnmatched;
    lOptions.mTake = pOptions.mTake;
    const bool lIsFigure = lFiles.Assign(pFiles, FilesOptions(pOptions.mMotion), lReport);
    PrintReport(lReport, pConsole);
    if (!lIsFigure || !LoadFigure(pFigure, lFiles, lOptions, pConsole))
    {
        return false;
    }
    qexsdk::KQexSampling lSampling;
    if (!pFigure.GetTakes().empty())
    {
        const qexsdk::KQexFigureTake& lTake = pFigure.GetTakes().front();
        qexsdk::KQexFigureReport      lSpan;
        qexsdk::MakeSampling(pFigure.GetRoots(), lTake.mStack, {}, lSampling);
        if (!lTake.mIsSingle && !qexsdk::KQexFigure::CheckSpan(lTake, lSampling, lSpan))
        {
            PrintReport(lSpan, pConsole);
            return false;
        }
    }
    pTitle = lFiles.mFigure.GetDisplayPath() + (lFiles.mMotions.empty() ? "" : " with " + lFiles.mMotions.front().GetDisplayPath());
    return true;
}

bool OpenAll(const KDiffOptions& pOptions, std::vector<KQexFigureFile>& pFiles, KConsole& pConsole)
{
    qexsdk::KQexFigureReport lReport;
    const bool               lOk = qexsdk::OpenFigureFiles(pOptions.mFiles, FilesOptions(pOptions.mMotion), pFiles, lReport);
    PrintReport(lReport, pConsole);
    return lOk;
}

void RunDiff(KDiffOptions& pOptions, KConsole& pConsole)
{
    std::vector<KQexFigureFile> lFiles;
    std::vector<KQexFigureFile> lSides[2];
    qexsdk::KQexFigure          lFigures[2];
    std::string                 lTitles[2];
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole) || !OpenAll(pOptions, lFiles, pConsole) || !SplitSides(lFiles, lSides, pConsole) ||
        !LoadSide(lSides[0], pOptions, lFigures[0], lTitles[0], pConsole) ||
        !LoadSide(lSides[1], pOptions, lFigures[1], lTitles[1], pConsole))
    {
        return;
    }
    KFigureComparison lComparison(lFigures[0], lFigures[1], pOptions.mTolerance);
    lComparison.Run(pConsole);
    const KDiffReport lReport{lComparison, pOptions.mTolerance, pOptions.mIgnored, lTitles};
    (pOptions.mJson ? WriteDiffJson : WriteDiffTable)(lReport, pConsole);
    if (!lReport.IsSame())
    {
        pConsole.Raise(eEXIT_INPUT);
    }
}

} // namespace

void SetUpDiff(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KDiffOptions>();
    pCommand.add_option("FILE", lOptions->mFiles, "Two of ASF, BVH, GLB or glTF, with AMC files for ASF; or two AMC files")
        ->required()
        ->expected(2, 4)
        ->option_text("...");
    pCommand
        .add_option("--tolerance", lOptions->mTolerance,
                    "Tolerance: a fraction of the first figure's height, for angles radians (default: 0.001)")
        ->check(NumberFrom(0, 1e9))
        ->option_text("T");
    pCommand
        .add_option("--ignore", lOptions->mIgnored,
                    "Aspects to ignore: names, parents, rest, lengths, dofs, limits, frames, rate, duration, positions")
        ->delimiter(',')
        ->check(OneOf({"names", "parents", "rest", "lengths", "dofs", "limits", "frames", "rate", "duration", "positions"}))
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("WHAT,...");
    pCommand.add_option("--take", lOptions->mTake, "Take to compare if there are several (default: the first)")->option_text("NAME");
    pCommand.add_flag("--json", lOptions->mJson, "Print the differences as one JSON object");
    AddMotionOptions(pCommand, lOptions->mMotion);
    pCommand.footer("Joints are matched by name, else by the name after the last colon; roots with each other. Frames are compared one by\n"
                    "one from the first, whatever their rates. The exit status is 0 if nothing that was compared differs by more than\n"
                    "the tolerance, else 1; a joint that only one figure has is a difference.\n"
                    "\n"
                    "Examples:\n"
                    "  asf diff old.asf new.asf\n"
                    "  asf diff old.asf new.asf old.amc new.amc\n"
                    "  asf diff walk.amc walk.bvh --tolerance 1e-5\n"
                    "  asf diff walk.amc back.amc --ignore dofs,limits --json");
    pCommand.callback([lOptions, &pConsole] { RunDiff(*lOptions, pConsole); });
}

} // namespace asfapp
