#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/usage.h>
#include <qexfigure/check/kqexfigurecheck.h>

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
    bool                     mJson = false;
    bool                     mNoLimits = false;
    std::string              mOnly; ///< "errors", "warnings" or "" for both.
    KMotionOptions           mMotion;
};

struct KCheckTotals
{
    long long mErrors = 0;
    long long mWarnings = 0;
};

/// What was found in one input.
struct KCheckResult
{
    const char*              mKind = "unknown";
    bool                     mIsPrinted = false; ///< The messages were printed already.
    qexsdk::KQexFileMessages mMessages;
};

void Report(const std::string& pPath, KCheckResult& pResult, const KCheckOptions& pOptions, KCheckTotals& pTotals, KConsole& pConsole)
{
    qexsdk::KQexFileMessages& lMessages = pResult.mMessages;
    if (!pResult.mIsPrinted)
    {
        PrintMessages(lMessages, pPath == "-" ? "<stdin>" : pPath, pConsole);
    }
    pTotals.mErrors += lMessages.mErrors;
    pTotals.mWarnings += lMessages.mWarnings;
    if (lMessages.mErrors > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
    if (pOptions.mJson)
    {
        KJson lObject = JsonHead(pResult.mKind, pPath, lMessages.mErrors == 0, lMessages);
        if (!pOptions.mOnly.empty())
        {
            lMessages.KeepOnly(pOptions.mOnly == "errors" ? qexsdk::KQexTextMessage::eERROR : qexsdk::KQexTextMessage::eWARNING);
            lObject["messages"] = JsonMessages(lMessages);
        }
        PrintJsonLine(lObject, pConsole);
    }
}

/// Prints notes, and messages about a motion's skeleton; returns those about the file itself.
qexsdk::KQexFileMessages CheckFiles(const qexsdk::KQexFigureFiles& pFiles, const KCheckOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFigureCheckOptions lOptions;
    qexsdk::KQexFileMessages       lMessages;
    qexsdk::KQexFigureReport       lReport;
    KProgress                      lProgress("reading", pConsole);
    lOptions.mMotionRate = pOptions.mMotion.mMotionRate;
    lOptions.mAllowUnmatched = pOptions.mMotion.mAllowUnmatched;
    lOptions.mLimits = !pOptions.mNoLimits;
    lOptions.mScaleOption = kScaleOption;
    lOptions.mProgress = lProgress.GetFunction();
    qexsdk::CheckFigure(pFiles, lOptions, lMessages, lReport);
    PrintReport(lReport, pConsole);
    return lMessages;
}

void Check(const KInputSet& pInputs, size_t pIndex, const KCheckOptions& pOptions, KCheckResult& pResult, KConsole& pConsole)
{
    const std::string& lPath = pOptions.mFiles[pIndex];
    if (!pInputs.IsOpen(pIndex, pConsole))
    {
        pResult.mMessages.Add(pInputs.GetReport(pIndex), lPath);
        pResult.mIsPrinted = true;
        return;
    }
    const qexsdk::KQexFigureFile& lFile = pInputs.GetFile(pIndex);
    qexsdk::KQexFigureFiles       lPair;
    qexsdk::KQexFigureReport      lReport;
    pResult.mKind = JsonKind(lFile);
    if (lFile.HasOwnMotion() || lFile.GetFormat() == qexsdk::eFIGURE_ASF)
    {
        lPair.mFigure = lFile;
        pResult.mMessages = CheckFiles(lPair, pOptions, pConsole);
    }
    else if (pInputs.Pair(pIndex, pOptions.mMotion, lPair, lReport, pConsole))
    {
        pResult.mMessages = CheckFiles(lPair, pOptions, pConsole);
    }
    else
    {
        pResult.mMessages.Add(lReport, lPath);
        pResult.mIsPrinted = true;
    }
}

void RunCheck(KCheckOptions& pOptions, KConsole& pConsole)
{
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole))
    {
        return;
    }
    if (!pOptions.mOnly.empty())
    {
        pConsole.ShowOnly(pOptions.mOnly == "errors" ? eERROR : eWARNING);
    }
    KCheckTotals    lTotals;
    const KInputSet lInputs(pOptions.mFiles, pOptions.mMotion);
    for (size_t lIndex = 0; lIndex < pOptions.mFiles.size() && !pConsole.HasOutFailed(); ++lIndex)
    {
        KCheckResult lResult;
        Check(lInputs, lIndex, pOptions, lResult, pConsole);
        Report(pOptions.mFiles[lIndex], lResult, pOptions, lTotals, pConsole);
    }
    if (pOptions.mStrict && lTotals.mWarnings > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
    if (!pOptions.mJson)
    {
        pConsole.Out(CountText(static_cast<long long>(pOptions.mFiles.size()), "file", "files") + ", " +
                     CountText(lTotals.mErrors, "error", "errors") + ", " + CountText(lTotals.mWarnings, "warning", "warnings") + "\n");
    }
}

} // namespace

void SetUpCheck(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KCheckOptions>();
    pCommand.add_option("FILE", lOptions->mFiles, "Files to check; \"-\" is standard input")->required()->option_text("...");
    pCommand.add_flag("--strict", lOptions->mStrict, "Treat warnings as errors in the exit status");
    pCommand.add_flag("--json", lOptions->mJson, "Print JSON instead of the summary: one object per file, each on its own line");
    pCommand.add_option("--only", lOptions->mOnly, "Show only errors or only warnings; what is counted does not change")
        ->check(OneOf({"errors", "warnings"}))
        ->option_text("KIND");
    pCommand.add_flag("--no-limits", lOptions->mNoLimits, "Leave out values outside the skeleton's limits");
    AddFormatOption(pCommand, lOptions->mMotion.mFrom);
    AddMotionOptions(pCommand, lOptions->mMotion);
    pCommand.footer("Messages go to standard error as FILE:LINE: warning: TEXT, or error: if the file cannot be read. Standard output\n"
                    "gets a summary line. The exit status is 0 if there are no errors.\n"
                    "After an error in a motion, reading goes on with the next frame, until 100 errors are found.\n"
                    "A motion is read with a skeleton given in the same call, else with one from its folder; values outside the\n"
                    "skeleton's limits give warnings.\n"
                    "\n"
                    "Examples:\n"
                    "  asf check walker.asf walk.amc\n"
                    "  asf check --strict *.asf && echo clean\n"
                    "  asf check --json *.amc | jq -r 'select(.ok | not) | .file'");
    pCommand.callback([lOptions, &pConsole] { RunCheck(*lOptions, pConsole); });
}

} // namespace asfapp
