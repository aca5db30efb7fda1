#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/figurecompare.h>
#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
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

const char* const kTitles[eASPECT_COUNT] = {"joints missing",     "other parents", "rest pose", "bone lengths",
                                            "degrees of freedom", "limits",        "frames",    "world positions"};

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

bool IsIgnored(const KDiffOptions& pOptions, int pAspect)
{
    return std::find(pOptions.mIgnored.begin(), pOptions.mIgnored.end(), AspectWord(pAspect)) != pOptions.mIgnored.end();
}

bool IsSame(const KDiffOptions& pOptions, const KFigureComparison& pComparison)
{
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        if (pComparison.Get(lAspect).mDiffers && !IsIgnored(pOptions, lAspect))
        {
            return false;
        }
    }
    return true;
}

std::string ValueText(const KAspectResult& pResult)
{
    if (!pResult.mIsCompared)
    {
        return "-";
    }
    if (*pResult.mUnit == '\0')
    {
        return Short(pResult.mLargest);
    }
    return std::isfinite(pResult.mLargest) ? Fixed(pResult.mLargest, 5) + " " + pResult.mUnit : "one-sided";
}

void WriteDiffTable(const KDiffOptions& pOptions, const KFigureComparison& pComparison, const std::string (&pTitles)[2], KConsole& pConsole)
{
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        std::string lLine = std::string(lSide == 0 ? "first   " : "second  ") + Printable(pTitles[lSide]) + ": " +
                            Count(static_cast<long long>(pComparison.GetJointCount(lSide)), "joint", "joints");
        for (const std::string& lOnly : pComparison.GetOnly(lSide))
        {
            lLine += (&lOnly == &pComparison.GetOnly(lSide).front() ? ", only here: " : " ") + Printable(lOnly);
        }
        pConsole.Out(lLine + "\n");
    }
    pConsole.Out("height  " + Fixed(pComparison.GetHeight(), 2) + " cm, tolerance " + Short(pOptions.mTolerance * pComparison.GetHeight()) +
                 " cm\n\n");
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        const KAspectResult& lResult = pComparison.Get(lAspect);
        const std::string    lVerdict = !lResult.mIsCompared           ? "not compared"
                                        : !lResult.mDiffers            ? "same"
                                        : IsIgnored(pOptions, lAspect) ? "ignored"
                                                                       : "DIFFERS";
        std::string          lLine = PadRight(kTitles[lAspect], 20) + PadLeft(ValueText(lResult), 16) + "  " +
                            (lResult.mWhere.empty() ? lVerdict : PadRight(lVerdict, 14) + Printable(lResult.mWhere));
        pConsole.Out(lLine + "\n");
    }
    pConsole.Out(IsSame(pOptions, pComparison) ? "\nsame within tolerance\n" : "\ndifferent\n");
}

KJson JsonOfAspect(const KDiffOptions& pOptions, const KAspectResult& pResult, int pAspect)
{
    KJson lObject;
    lObject["compared"] = pResult.mIsCompared;
    lObject["same"] = !pResult.mDiffers;
    lObject["ignored"] = IsIgnored(pOptions, pAspect);
    // Infinite if only one side has the limit; JSON has no infinity.
    lObject["largest"] = pResult.mIsCompared && std::isfinite(pResult.mLargest) ? KJson(pResult.mLargest) : KJson();
    lObject["unit"] = pResult.mUnit;
    lObject["where"] = pResult.mWhere;
    return lObject;
}

void WriteDiffJson(const KDiffOptions& pOptions, const KFigureComparison& pComparison, const std::string (&pTitles)[2], KConsole& pConsole)
{
    KJson lObject = JsonHead("diff", pTitles[0], IsSame(pOptions, pComparison), {});
    lObject["other"] = pTitles[1];
    lObject["height"] = pComparison.GetHeight();
    lObject["tolerance"] = pOptions.mTolerance;
    lObject["joints"] = KJson::array({pComparison.GetJointCount(0), pComparison.GetJointCount(1)});
    lObject["frames"] = KJson::array({pComparison.GetSampling(0).mCount, pComparison.GetSampling(1).mCount});
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        // Braces around two lists of two strings would make an object.
        lObject["only"].push_back(pComparison.GetOnly(lSide));
    }
    KJson lAspects = KJson::object();
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        lAspects[AspectWord(lAspect)] = JsonOfAspect(pOptions, pComparison.Get(lAspect), lAspect);
    }
    lObject["differences"] = lAspects;
    PrintJsonLine(lObject, pConsole);
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
    (pOptions.mJson ? WriteDiffJson : WriteDiffTable)(pOptions, lComparison, lTitles, pConsole);
    if (!IsSame(pOptions, lComparison))
    {
        pConsole.Raise(eEXIT_INPUT);
    }
}

} // namespace

void AddDiffCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KDiffOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("diff", "Compare two figures and their motions");
    lCommand->add_option("FILE", lOptions->mFiles, "Two of ASF, BVH, GLB or glTF, with AMC files for ASF; or two AMC files")
        ->required()
        ->expected(2, 4)
        ->option_text("...");
    lCommand
        ->add_option("--tolerance", lOptions->mTolerance,
                     "Tolerance: a fraction of the first figure's height, for angles radians (default: 0.001)")
        ->check(CLI::Range(0.0, 1e9))
        ->option_text("T");
    lCommand
        ->add_option("--ignore", lOptions->mIgnored, "Aspects to ignore: names, parents, rest, lengths, dofs, limits, frames, positions")
        ->delimiter(',')
        ->check(CLI::IsMember({"names", "parents", "rest", "lengths", "dofs", "limits", "frames", "positions"}))
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("WHAT,...");
    lCommand->add_option("--take", lOptions->mTake, "Take to compare if there are several (default: the first)")->option_text("NAME");
    lCommand->add_flag("--json", lOptions->mJson, "Print the differences as one JSON object");
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("Joints are matched by name, the roots with each other. Frames are compared one by one from the first, whatever\n"
                     "their rates. The exit status is 0 if nothing differs by more than the tolerance, else 1.\n"
                     "\n"
                     "Examples:\n"
                     "  asf diff old.asf new.asf\n"
                     "  asf diff old.asf new.asf old.amc new.amc\n"
                     "  asf diff walk.amc walk.bvh --tolerance 1e-5\n"
                     "  asf diff walk.amc back.amc --ignore dofs,limits --json");
    lCommand->callback([lOptions, &pConsole] { RunDiff(*lOptions, pConsole); });
}

} // namespace asfapp
