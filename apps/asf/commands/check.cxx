#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/report/figuresurvey.h>
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

void Report(const qexsdk::KQexFigureFile& pFile, const KMessages& pMessages, KCheckTotals& pTotals, KConsole& pConsole)
{
    pMessages.Print(pFile.GetDisplayPath(), pConsole);
    pTotals.mErrors += pMessages.mErrors;
    pTotals.mWarnings += pMessages.mWarnings;
    if (pMessages.mErrors > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
}

void CheckSkeleton(const qexsdk::KQexFigureFile& pFile, KCheckTotals& pTotals, KConsole& pConsole)
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

void CheckMotion(const qexsdk::KQexFigureFiles& pFiles, const KMotionOptions& pOptions, KCheckTotals& pTotals, KConsole& pConsole)
{
    KMotionSurvey lSurvey;
    lSurvey.Read(pFiles, pOptions, pConsole);
    KMessages lMessages = lSurvey.GetMessages();
    AddLimitWarnings(lSurvey, lMessages);
    Report(pFiles.mMotions.front(), lMessages, pTotals, pConsole);
}

void CheckFigure(const qexsdk::KQexFigureFile& pFile, KCheckTotals& pTotals, KConsole& pConsole)
{
    KFigureSurvey lSurvey;
    if (lSurvey.Read(pFile, pConsole))
    {
        lSurvey.AddFindings();
    }
    Report(pFile, lSurvey.GetMessages(), pTotals, pConsole);
}

void Check(const KInputSet& pInputs, size_t pIndex, const KMotionOptions& pOptions, KCheckTotals& pTotals, KConsole& pConsole)
{
    const qexsdk::KQexFigureFile& lFile = pInputs.GetFile(pIndex);
    qexsdk::KQexFigureFiles       lPair;
    if (lFile.HasOwnMotion())
    {
        CheckFigure(lFile, pTotals, pConsole);
    }
    else if (lFile.GetFormat() == qexsdk::eFIGURE_ASF)
    {
        CheckSkeleton(lFile, pTotals, pConsole);
    }
    else if (pInputs.Pair(pIndex, pOptions, lPair, pConsole))
    {
        CheckMotion(lPair, pOptions, pTotals, pConsole);
    }
    else
    {
        ++pTotals.mErrors;
    }
}

void RunCheck(KCheckOptions& pOptions, KConsole& pConsole)
{
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    KCheckTotals    lTotals;
    const KInputSet lInputs(pOptions.mFiles, pOptions.mMotion);
    for (size_t lIndex = 0; lIndex < pOptions.mFiles.size(); ++lIndex)
    {
        if (lInputs.IsOpen(lIndex, pConsole))
        {
            Check(lInputs, lIndex, pOptions.mMotion, lTotals, pConsole);
        }
        else
        {
            ++lTotals.mErrors;
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
    CLI::App* lCommand = pProgram.add_subcommand("check", "Report problems in skeletons, motions and figures");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to check; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--strict", lOptions->mStrict, "Treat warnings as errors in the exit status");
    AddFormatOption(*lCommand, lOptions->mMotion.mFrom);
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("Messages go to standard error as FILE:LINE: warning: TEXT, or error: if the file cannot be read. Standard output\n"
                     "gets a summary line. The exit status is 0 if there are no errors.\n"
                     "A motion is read with a skeleton given in the same call, else with one from its folder; values outside the\n"
                     "skeleton's limits give warnings.\n"
                     "\n"
                     "Examples:\n"
                     "  asf check walker.asf walk.amc\n"
                     "  asf check --strict *.asf && echo clean");
    lCommand->callback([lOptions, &pConsole] { RunCheck(*lOptions, pConsole); });
}

} // namespace asfapp
