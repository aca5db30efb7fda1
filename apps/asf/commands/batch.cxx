#include <apps/asf/batch/batchrun.h>
#include <apps/asf/batch/gather.h>
#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/usage.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace asfapp
{

namespace
{

/// What is done, and to which files.
void AddFileOptions(CLI::App& pCommand, KBatchOptions& pOptions)
{
    pCommand.add_option("INPUT", pOptions.mInputs, "Folders with all below them, files, or patterns such as \"subjects/**/*.amc\"")
        ->option_text("...");
    pCommand.add_option("--list", pOptions.mList, "File with the names of inputs, one a line; \"-\" is standard input")
        ->option_text("FILE");
    pCommand.add_flag("--null", pOptions.mIsNull, "The names of the list end with a NUL, not with the line (find -print0)");
    pCommand.add_option("-o,--output", pOptions.mOutput, "Folder to write to; it gets the same tree of folders")->option_text("OUTDIR");
    pCommand
        .add_option("--to", pOptions.mTo,
                    "Formats to write, separated by commas: glb, gltf, bvh, npz, asf, amc, csv; none only reads and reports")
        ->delimiter(',')
        ->check(OneOf({"glb", "gltf", "bvh", "npz", "asf", "amc", "csv", "none"}))
        ->option_text("KIND");
    pCommand
        .add_option("--on-collision", pOptions.mCollision,
                    "Motions with the same output, such as a.amc and a.bvh: fail (default), or suffix: all but the first get a number")
        ->check(OneOf({"fail", "suffix"}))
        ->option_text("WHAT");
    pCommand.add_option("--rates", pOptions.mRates, "CSV table of rates with the columns file and source_fps; names may be patterns")
        ->option_text("FILE");
}

/// How it is done.
void AddRunOptions(CLI::App& pCommand, KBatchOptions& pOptions)
{
    pCommand.add_option("--jobs", pOptions.mJobs, "Motions to do at a time (default: one for each core)")
        ->check(NumberFrom(1, 4096, true))
        ->option_text("N");
    pCommand.add_option("--shard", pOptions.mShardText, "Do only part I of N, such as 3/8; auto: the part of a Slurm array's task")
        ->option_text("I/N");
    pCommand.add_option("--timeout", pOptions.mTimeout, "Most seconds for one motion (default: no limit)")
        ->check(NumberFrom(0.001, 1e9))
        ->option_text("SECONDS");
    pCommand.add_option("--memory", pOptions.mConvert.mMemory, "Most memory for one motion, such as 800M or 2G (default: no limit)")
        ->option_text("BYTES");
    pCommand.add_flag("--force", pOptions.mForce, "Make all outputs again, also those changed by hand");
    pCommand.add_flag("--verify", pOptions.mVerify, "Compare the contents of outputs made before instead of their times");
    pCommand.add_flag("--dry-run", pOptions.mIsDry, "List the motions that would be made");
    pCommand.add_option("--report", pOptions.mReport, "Write a JSON object for each motion (docs/json.md)")->option_text("FILE");
    pCommand.add_flag("--gather", pOptions.mGather,
                      "Add up what all runs have made in the folder INPUT, or of the INPUTs in OUTDIR; say what is missing");
    pCommand.add_flag("-q,--quiet", pOptions.mQuiet, "No progress, no summary");
}

/// The arguments that workers get: those of \p pOptions that were given, in the order of their definition.
std::vector<std::string> ArgumentsOf(const std::vector<const CLI::Option*>& pOptions)
{
    std::vector<std::string> lArguments;
    for (const CLI::Option* lOption : pOptions)
    {
        const std::string lName = "--" + lOption->get_lnames().front();
        for (const std::string& lResult : lOption->count() > 0 ? lOption->results() : std::vector<std::string>())
        {
            lArguments.push_back(lName + "=" + lResult);
        }
    }
    return lArguments;
}

} // namespace

void SetUpBatch(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KBatchOptions>();
    AddFileOptions(pCommand, *lOptions);
    AddRunOptions(pCommand, *lOptions);
    const std::vector<CLI::Option*> lBefore = pCommand.get_options({});
    AddEachFileOptions(pCommand, lOptions->mConvert);
    std::vector<const CLI::Option*> lPassedOn;
    for (const CLI::Option* lOption : pCommand.get_options({}))
    {
        if (std::find(lBefore.begin(), lBefore.end(), lOption) == lBefore.end())
        {
            lPassedOn.push_back(lOption);
        }
    }
    pCommand.footer(
        "Each motion finds its skeleton as in asf convert, also in the folder above. What was made before stays, so the same call\n"
        "goes on where a run was stopped. Files that fail cost only themselves.\n"
        "\n"
        "Examples:\n"
        "  asf batch subjects -o glb --to glb\n"
        "  asf batch subjects -o out --to glb,npz --fps 30 --jobs 8 --report report.jsonl\n"
        "  asf batch \"**/*.bvh\" -o out --to asf,amc\n"
        "  find . -name \"*.amc\" -print0 | asf batch --list - --null -o out --to bvh\n"
        "  asf batch subjects --to none --report health.jsonl\n"
        "  asf batch subjects -o out --to glb --shard 3/8\n"
        "  asf batch --gather out");
    pCommand.callback(
        [lOptions, lPassedOn, &pConsole]
        {
            lOptions->mConvertArguments = ArgumentsOf(lPassedOn);
            if (lOptions->mGather)
            {
                pConsole.SetQuiet(lOptions->mQuiet);
                GatherBatch(*lOptions, pConsole);
            }
            else if (ParseBatchOptions(*lOptions, pConsole))
            {
                KBatchRun(*lOptions, pConsole).Run();
            }
        });
}

} // namespace asfapp
