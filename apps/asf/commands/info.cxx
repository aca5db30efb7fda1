#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/figuresurvey.h>
#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/motionsurvey.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/sizehint.h>
#include <apps/asf/report/skeletoninfo.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

struct KInfoOptions
{
    std::vector<std::string> mFiles;
    bool                     mJson = false;
    KMotionOptions           mMotion;
};

void ShowSkeleton(const qexsdk::KQexFigureFile& pFile, const KInfoOptions& pOptions, KConsole& pConsole)
{
    KSkeletonFile lSkeleton;
    lSkeleton.Read(pFile, false, pConsole);
    lSkeleton.GetMessages().Print(pFile.GetDisplayPath(), pConsole);
    PrintSizeHint(pFile, lSkeleton, pConsole);
    if (pOptions.mJson)
    {
        WriteSkeletonJson(pFile, lSkeleton, pConsole);
    }
    else if (lSkeleton.IsOk())
    {
        WriteSkeletonInfo(pFile, lSkeleton, pConsole);
    }
}

void ShowMotion(const qexsdk::KQexFigureFiles& pFiles, const KInfoOptions& pOptions, KConsole& pConsole)
{
    const std::string& lPath = pFiles.mMotions.front().GetDisplayPath();
    KMotionSurvey      lSurvey;
    const bool         lOk = lSurvey.Read(pFiles, pOptions.mMotion, false, pConsole);
    lSurvey.GetMessages().Print(lPath, pConsole);
    if (lOk && lSurvey.GetInfo().mRateSource == qexsdk::eAMC_RATE_DEFAULT)
    {
        pConsole.Message(eNOTE, lPath, 0, "has no frame rate, using " + Short(lSurvey.GetInfo().mSamplesPerSecond) + " frames per second");
    }
    if (pOptions.mJson)
    {
        WriteMotionJson(pFiles, lSurvey, pConsole);
    }
    else if (lOk)
    {
        WriteMotionInfo(pFiles, lSurvey, pConsole);
    }
}

void ShowFigure(const qexsdk::KQexFigureFile& pFile, const KInfoOptions& pOptions, KConsole& pConsole)
{
    KFigureSurvey lSurvey;
    const bool    lOk = lSurvey.Read(pFile, pConsole);
    lSurvey.GetMessages().Print(pFile.GetDisplayPath(), pConsole);
    PrintSizeHint(pFile, lSurvey, pConsole);
    if (pOptions.mJson)
    {
        WriteFigureJson(pFile, lSurvey, pConsole);
    }
    else if (lOk)
    {
        WriteFigureInfo(pFile, lSurvey, pConsole);
    }
}

/// An input of which nothing could be read, for the reason in \p pReport.
void ShowUnreadable(const char* pKind, const std::string& pPath, const qexsdk::KQexFigureReport& pReport, const KInfoOptions& pOptions,
                    KConsole& pConsole)
{
    if (pOptions.mJson)
    {
        KMessages lMessages;
        lMessages.Add(pReport, pPath);
        PrintJsonLine(JsonHead(pKind, pPath, false, lMessages), pConsole);
    }
}

void Show(const KInputSet& pInputs, size_t pIndex, const KInfoOptions& pOptions, KConsole& pConsole)
{
    const qexsdk::KQexFigureFile& lFile = pInputs.GetFile(pIndex);
    qexsdk::KQexFigureFiles       lPair;
    qexsdk::KQexFigureReport      lReport;
    if (lFile.HasOwnMotion())
    {
        ShowFigure(lFile, pOptions, pConsole);
    }
    else if (lFile.GetFormat() == qexsdk::eFIGURE_ASF)
    {
        ShowSkeleton(lFile, pOptions, pConsole);
    }
    else if (pInputs.Pair(pIndex, pOptions.mMotion, lPair, lReport, pConsole))
    {
        ShowMotion(lPair, pOptions, pConsole);
    }
    else
    {
        ShowUnreadable(JsonKind(lFile), lFile.GetPath(), lReport, pOptions, pConsole);
    }
}

void RunInfo(KInfoOptions& pOptions, KConsole& pConsole)
{
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    const KInputSet lInputs(pOptions.mFiles, pOptions.mMotion);
    bool            lFirst = true;
    for (size_t lIndex = 0; lIndex < pOptions.mFiles.size(); ++lIndex)
    {
        if (pConsole.HasOutFailed())
        {
            break;
        }
        if (!lInputs.IsOpen(lIndex, pConsole))
        {
            ShowUnreadable("unknown", pOptions.mFiles[lIndex], lInputs.GetReport(lIndex), pOptions, pConsole);
            continue;
        }
        if (!lFirst && !pOptions.mJson)
        {
            pConsole.Out("\n");
        }
        lFirst = false;
        Show(lInputs, lIndex, pOptions, pConsole);
        pConsole.FlushOut();
    }
}

} // namespace

void AddInfoCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KInfoOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("info", "Show what skeletons, motions and figures contain");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to read; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--json", lOptions->mJson, "Print JSON: one object per file, also for unreadable ones, each on its own line");
    AddFormatOption(*lCommand, lOptions->mMotion.mFrom);
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("For a skeleton, prints the bone tree: length in centimetres and in the file's unit, degrees of freedom in file\n"
                     "order with their limits. For a motion, prints for each degree of freedom its least and greatest value, its limits,\n"
                     "and the number of frames outside them. For BVH and glTF, prints the takes, and the joint tree with what moves each\n"
                     "joint. A motion is read with a skeleton given in the same call, else with one from its folder.\n"
                     "\n"
                     "Examples:\n"
                     "  asf info walker.asf\n"
                     "  asf info walk.amc\n"
                     "  asf info dance.bvh dance.glb\n"
                     "  asf info --json walker.asf | jq '.skeleton.bones[].name'");
    lCommand->callback([lOptions, &pConsole] { RunInfo(*lOptions, pConsole); });
}

} // namespace asfapp
