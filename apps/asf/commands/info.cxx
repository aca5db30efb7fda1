#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/figureinfo.h>
#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/motioninfo.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/skeletoninfo.h>
#include <qexfigure/check/kqexsizehint.h>

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
    qexsdk::KQexSkeletonFile lSkeleton;
    qexsdk::KQexFigureReport lReport;
    lSkeleton.Read(pFile, false, lReport);
    PrintReport(lReport, pConsole);
    PrintMessages(lSkeleton.GetMessages(), pFile.GetDisplayPath(), pConsole);
    PrintSizeHint(pFile, qexsdk::SizeHint(lSkeleton, kScaleOption), pConsole);
    if (pOptions.mJson)
    {
        WriteSkeletonJson(pFile, lSkeleton, pConsole);
    }
    else if (lSkeleton.IsOk())
    {
        WriteSkeletonInfo(pFile, lSkeleton, pConsole);
    }
}

bool Survey(const qexsdk::KQexFigureFiles& pFiles, const KInfoOptions& pOptions, qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole)
{
    qexsdk::KQexMotionSurveyOptions lOptions;
    qexsdk::KQexFigureReport        lReport;
    KProgress                       lProgress("reading", pConsole);
    lOptions.mMotionRate = pOptions.mMotion.mMotionRate;
    lOptions.mAllowUnmatched = pOptions.mMotion.mAllowUnmatched;
    lOptions.mProgress = lProgress.GetFunction();
    const bool lOk = pSurvey.Read(pFiles, lOptions, lReport);
    PrintReport(lReport, pConsole);
    return lOk;
}

void ShowMotion(const qexsdk::KQexFigureFiles& pFiles, const KInfoOptions& pOptions, KConsole& pConsole)
{
    const std::string&       lPath = pFiles.mMotions.front().GetDisplayPath();
    qexsdk::KQexMotionSurvey lSurvey;
    const bool               lOk = Survey(pFiles, pOptions, lSurvey, pConsole);
    PrintMessages(lSurvey.GetMessages(), lPath, pConsole);
    if (lOk && lSurvey.GetInfo().mRateSource == qexsdk::eAMC_RATE_DEFAULT)
    {
        pConsole.Message(eNOTE, lPath, 0,
                         "has no frame rate, using " + ShortText(lSurvey.GetInfo().mSamplesPerSecond) + " frames per second");
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
    qexsdk::KQexFigureSurvey lSurvey;
    qexsdk::KQexFigureReport lReport;
    KProgress                lProgress("reading", pConsole);
    const bool               lOk = lSurvey.Read(pFile, lProgress.GetFunction(), lReport);
    PrintReport(lReport, pConsole);
    PrintMessages(lSurvey.GetMessages(), pFile.GetDisplayPath(), pConsole);
    PrintSizeHint(pFile, qexsdk::SizeHint(pFile, lSurvey, kScaleOption), pConsole);
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
        qexsdk::KQexFileMessages lMessages;
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

void SetUpInfo(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KInfoOptions>();
    pCommand.add_option("FILE", lOptions->mFiles, "Files to read; \"-\" is standard input")->required()->option_text("...");
    pCommand.add_flag("--json", lOptions->mJson, "Print JSON: one object per file, also for unreadable ones, each on its own line");
    AddFormatOption(pCommand, lOptions->mMotion.mFrom);
    AddMotionOptions(pCommand, lOptions->mMotion);
    pCommand.footer("For a skeleton, prints the bone tree: length in centimetres and in the file's unit, degrees of freedom in file\n"
                    "order with their limits. For a motion, prints for each degree of freedom its least and greatest value, its limits,\n"
                    "and the number of frames outside them. For BVH and glTF, prints the takes, and the joint tree with what moves each\n"
                    "joint. A motion is read with a skeleton given in the same call, else with one from its folder.\n"
                    "\n"
                    "Examples:\n"
                    "  asf info walker.asf\n"
                    "  asf info walk.amc\n"
                    "  asf info dance.bvh dance.glb\n"
                    "  asf info --json walker.asf | jq '.skeleton.bones[].name'");
    pCommand.callback([lOptions, &pConsole] { RunInfo(*lOptions, pConsole); });
}

} // namespace asfapp
