#include <apps/asf/commands/commands.h>

#include <apps/asf/inputfile.h>
#include <apps/asf/skeletonfile.h>

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
};

struct KCheckTotals
{
    long long mErrors = 0;
    long long mWarnings = 0;
};

void CheckSkeleton(const KInputFile& pFile, KCheckTotals& pTotals, KConsole& pConsole)
{
    KSkeletonFile lSkeleton;
    lSkeleton.Read(pFile, true, pConsole);
    lSkeleton.GetMessages().Print(pFile.GetShown(), pConsole);
    pTotals.mErrors += lSkeleton.GetMessages().mErrors;
    pTotals.mWarnings += lSkeleton.GetMessages().mWarnings;
    if (lSkeleton.GetMessages().mErrors > 0)
    {
        pConsole.Raise(eEXIT_INPUT);
    }
}

void RunCheck(const KCheckOptions& pOptions, KConsole& pConsole)
{
    KCheckTotals lTotals;
    for (const std::string& lPath : pOptions.mFiles)
    {
        KInputFile lFile;
        if (!lFile.Open(lPath, pConsole))
        {
            ++lTotals.mErrors;
            continue;
        }
        CheckSkeleton(lFile, lTotals, pConsole);
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
    CLI::App* lCommand = pProgram.add_subcommand("check", "Say what is wrong with skeletons and motions");
    lCommand->add_option("FILE", lOptions->mFiles, "Files to look at; \"-\" is standard input")->required()->option_text("...");
    lCommand->add_flag("--strict", lOptions->mStrict, "Let warnings count as errors in the exit status");
    lCommand->footer("Every message is printed to standard error as FILE:LINE: warning: TEXT, or error: for what keeps a file from\n"
                     "being read. Standard output gets the closing line. The exit status is 0 when there are no errors.\n"
                     "\n"
                     "Examples:\n"
                     "  asf check walker.asf\n"
                     "  asf check --strict *.asf && echo clean");
    lCommand->callback([lOptions, &pConsole] { RunCheck(*lOptions, pConsole); });
}

} // namespace asfapp
