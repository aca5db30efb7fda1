#include <apps/asf/commands/commands.h>
#include <apps/asf/inputfile.h>
#include <apps/asf/report/motionsurvey.h>
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

void ShowSkeleton(const KInputFile& pFile, const KInfoOptions& pOptions, KConsole& pConsole)
{
    KSkeletonFile lSkeleton;
    lSkeleton.Read(pFile, false, pConsole);
    lSkeleton.GetMessages().Print(pFile.GetShown(), pConsole);
    if (pOptions.mJson)
    {
        WriteSkeletonJson(pFile, lSkeleton, pConsole);
    }
    else if (lSkeleton.IsOk())
    {
        WriteSkeletonInfo(pFile, lSkeleton, pConsole);
    }
}

void ShowMotion(const KInputFile& pFile, const KInfoOptions& pOptions, KConsole& pConsole)
{
    KMotionInput  lInput;
    KMotionSurvey lSurvey;
    if (!lInput.OpenSkeletonOf(pFile, pOptions.mMotion, pConsole))
    {
        return;
    }
    const bool lOk = lSurvey.Read(lInput, pOptions.mMotion, pConsole);
    lSurvey.GetMessages().Print(pFile.GetShown(), pConsole);
    if (lOk)
    {
        NoteRate(pFile, lSurvey.GetInfo(), pConsole);
    }
    if (pOptions.mJson)
    {
        WriteMotionJson(lInput, lSurvey, pConsole);
    }
    else if (lOk)
    {
        WriteMotionInfo(lInput, lSurvey, pConsole);
    }
}

void RunInfo(KInfoOptions& pOptions, KConsole& pConsole)
{
    if (!TakeMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    bool lFirst = true;
    for (const std::string& lPath : pOptions.mFiles)
    {
        KInputFile lFile;
        if (pConsole.IsOutGone() || !lFile.OpenAcclaim(lPath, pConsole))
        {
            continue;
        }
        if (!lFirst && !pOptions.mJson)
        {
            pConsole.Out("\n");
        }
        lFirst = false;
        (lFile.GetKind() == eKIND_AMC ? ShowMotion : ShowSkeleton)(lFile, pOptions, pConsole);
        pConsole.FlushOut();
    }
}

} // namespace

void AddInfoCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KInfoOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("info", "Say what is in skeletons and motions");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to look at; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--json", lOptions->mJson, "Print everything as JSON, one object a file on a line of its own");
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("A skeleton's tree has a line for each bone: its length in centimetres and in the file's own unit, its degrees of\n"
                     "freedom in the order of the file, each with its limits. A motion's table has a line for each degree of freedom: the\n"
                     "least and the greatest value, its limits, and how often it leaves them.\n"
                     "\n"
                     "Examples:\n"
                     "  asf info walker.asf\n"
                     "  asf info walk.amc\n"
                     "  asf info --json walker.asf | jq '.skeleton.bones[].name'");
    lCommand->callback([lOptions, &pConsole] { RunInfo(*lOptions, pConsole); });
}

} // namespace asfapp
