#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/skeletonfile.h>
#include <apps/asf/inputfile.h>
#include <apps/asf/report/motionsurvey.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kmath/kdofcodes.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

struct KCheckOptions
{
    std::vector<std::string> mFiles;
    bool                     mStrict = false;
    KMotionOptions           mMotion;
};

struct KCheckTotals
{
    long long mErrors = 0;
    long long mWarnings = 0;
};

void Report(const KInputFile& pFile, const KMessages& pMessages, KCheckTotals& pTotals, KConsole& pConsole)
{
    pMessages.Print(pFile.GetDisplayPath(), pConsole);
    pTotals.mErrors += pMessages.mErrors;
    pTotals.mWarnings += pMessages.mWarnings;
    if (pMessages.mErrors > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
}

void CheckSkeleton(const KInputFile& pFile, KCheckTotals& pTotals, KConsole& pConsole)
{
    KSkeletonFile lSkeleton;
    lSkeleton.Read(pFile, true, pConsole);
    Report(pFile, lSkeleton.GetMessages(), pTotals, pConsole);
}

/// A warning for each degree of freedom that exceeds its limits.
void AddLimitWarnings(const KMotionSurvey& pSurvey, KMessages& pMessages)
{
    for (const KBoneSurvey& lBone : pSurvey.GetBones())
    {
        for (const KDofSurvey& lDof : lBone.mDofs)
        {
            if (lDof.mOutside > 0)
            {
                pMessages.Add(qexsdk::KQexTextMessage::eWARNING, 0,
                              "Bone " + lBone.mName + ": " + qexsdk::kDofWords[lDof.mCode] + " is outside its limits " +
                                  LimitsText(lDof.mHasMin, lDof.mMin, lDof.mHasMax, lDof.mMax) + " in " +
                                  Count(lDof.mOutside, "frame", "frames") + ", first in frame " + std::to_string(lDof.mFirstOutside) +
                                  "; its range is " + Short(lDof.mLowest) + " to " + Short(lDof.mHighest));
            }
        }
    }
}

void CheckMotion(const KInputFile& pFile, const KMotionOptions& pOptions, KCheckTotals& pTotals, KConsole& pConsole)
{
    KMotionInput  lInput;
    KMotionSurvey lSurvey;
    if (!lInput.OpenSkeletonOf(pFile, pOptions, pConsole))
    {
        ++pTotals.mErrors;
        return;
    }
    lSurvey.Read(lInput, pOptions, pConsole);
    KMessages lMessages = lSurvey.GetMessages();
    AddLimitWarnings(lSurvey, lMessages);
    Report(pFile, lMessages, pTotals, pConsole);
}

void RunCheck(KCheckOptions& pOptions, KConsole& pConsole)
{
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    KCheckTotals lTotals;
    for (const std::string& lPath : pOptions.mFiles)
    {
        KInputFile lFile;
        if (!lFile.OpenAcclaim(lPath, pConsole))
        {
            ++lTotals.mErrors;
        }
        else if (lFile.GetKind() == eKIND_AMC)
        {
            CheckMotion(lFile, pOptions.mMotion, lTotals, pConsole);
        }
        else
        {
            CheckSkeleton(lFile, lTotals, pConsole);
        }
    }
    if (pOptions.mStrict && lTotals.mWarnings > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
    pConsole.Out(std::to_string(pOptions.mFiles.size()) + " files, " + std::to_string(lTotals.mErrors) + " errors, " +
                 std::to_string(lTotals.mWarnings) + " warnings\n");
}

} // namespace

void AddCheckCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KCheckOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("check", "Report problems in skeletons and motions");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to check; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--strict", lOptions->mStrict, "Treat warnings as errors in the exit status");
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("Messages go to standard error as FILE:LINE: warning: TEXT, or error: if the file cannot be read. Standard output\n"
                     "gets a summary line. The exit status is 0 if there are no errors.\n"
                     "A motion is read with its skeleton; values outside the skeleton's limits give warnings.\n"
                     "\n"
                     "Examples:\n"
                     "  asf check walker.asf walk.amc\n"
                     "  asf check --strict *.asf && echo clean");
    lCommand->callback([lOptions, &pConsole] { RunCheck(*lOptions, pConsole); });
}

} // namespace asfapp
