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
    lSkeleton.GetMessages().Print(pFile.GetDisplayPath(), pConsole);
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
    lSurvey.GetMessages().Print(pFile.GetDisplayPath(), pConsole);
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
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    bool lFirst = true;
    for (const std::string& lPath : pOptions.mFiles)
    {
        KInputFile lFile;
        if (pConsole.HasOutFailed() || !lFile.OpenAcclaim(lPath, pConsole))
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
    CLI::App* lCommand = pProgram.add_subcommand("info", "Show what skeletons and motions contain");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to read; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--json", lOptions->mJson, "Print JSON: one object per file, each on its own line");
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("For a skeleton, prints the bone tree: length in centimetres and in the file's unit, degrees of freedom in file\n"
                     "order with their limits. For a motion, prints for each degree of freedom its least and greatest value, its limits,\n"
                     "and the number of frames outside them.\n"
                     "\n"
                     "Examples:\n"
                     "  asf info walker.asf\n"
                     "  asf info walk.amc\n"
                     "  asf info --json walker.asf | jq '.skeleton.bones[].name'");
    lCommand->callback([lOptions, &pConsole] { RunInfo(*lOptions, pConsole); });
}

} // namespace asfapp
