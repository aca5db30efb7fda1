#include <apps/asf/commands/arguments.h>
#include <apps/asf/usage.h>
#include <kbaselib/kbase/kpath.h>

#include <CLI/CLI.hpp>

namespace asfapp
{

namespace
{

/// Range of factors of lengths.
constexpr double kLeastFactor = 1e-9;
constexpr double kGreatestFactor = 1e9;

bool IsPair(const std::string& pOne, const std::string& pOther)
{
    const std::string lOne = qexsdk::KPathExtension(pOne);
    const std::string lOther = qexsdk::KPathExtension(pOther);
    return (lOne == ".asf" && lOther == ".amc") || (lOne == ".amc" && lOther == ".asf");
}

/// Number of arguments after the output at \p pIndex that are further outputs: for convert the other file of a pair, for edit all motions
/// after a skeleton.
size_t CountFurtherOutputs(const std::vector<std::string>& pArguments, size_t pIndex)
{
    const bool lIsEdit = pArguments[1] == "edit";
    size_t     lCount = 0;
    for (size_t lNext = pIndex + 1; lNext < pArguments.size() && (lIsEdit || lCount < 1); ++lNext, ++lCount)
    {
        if (!IsPair(pArguments[pIndex], pArguments[lNext]))
        {
            break;
        }
    }
    return lCount;
}

/// Inputs, outputs and takes.
void AddFileOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    const CLI::Validator lKinds = OneOf({"asf", "amc", "bvh", "glb", "gltf", "npz", "csv"});
    pCommand.add_option("FILE", pOptions.mFiles, "ASF and any number of AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->option_text("...");
    pCommand
        .add_option("-o,--output", pOptions.mOutputs,
                    "File to write; may be repeated. In its name, {name} or {take} stands for the take's name, {n} for its number from 1, "
                    "{skeleton} "
                    "for the name of the skeleton's file")
        ->required()
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("FILE");
    AddFormatOption(pCommand, pOptions.mMotion.mFrom);
    pCommand.add_option("--to", pOptions.mTo, "Format to write, instead of the output's extension")->check(lKinds)->option_text("KIND");
    AddSearchAbove(pCommand, pOptions.mMotion);
    pCommand.add_option("--skeleton", pOptions.mSkeleton, "Write the motion for the bones of this ASF file, matched by name")
        ->option_text("FILE");
    pCommand.add_option("--take", pOptions.mTake, "Take to convert if there are several; for one AMC or BVH file, the name of its take")
        ->option_text("NAME");
}

/// What of the motion is written, and how it is read.
void AddMotionPartOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    AddRate(pCommand, "Frames per second to write, such as 30, 23.976 or 30000/1001 (default: the motion's rate)", pOptions.mMotion);
    AddSourceRate(pCommand, pOptions.mMotion);
    pCommand
        .add_option("--start", pOptions.mStart, "Start: seconds from the first frame, or the number of a frame with the suffix f (60f)")
        ->option_text("TIME");
    pCommand.add_option("--end", pOptions.mEnd, "End, as for --start")->option_text("TIME");
    pCommand.add_option("--every", pOptions.mEvery, "Keep every N-th frame")->check(NumberFrom(1, 1000000, true))->option_text("N");
    AddWorldOptions(pCommand, pOptions.mWorld);
    pCommand.add_flag("--remove-dummies", pOptions.mRemoveDummies, "Leave out dummy bones, which only fill gaps");
    pCommand.add_flag("--limits,!--no-limits", pOptions.mLimits, "Keep joint limits (default) or leave them out");
    pCommand.add_option("--filter", pOptions.mFilter, "Filter that makes AMC and BVH rotations continuous: none, unroll (default), gimbal")
        ->check(OneOf({"none", "unroll", "gimbal"}))
        ->option_text("FILTER");
    pCommand.add_flag("--reduce", pOptions.mReduce, "Drop keys inside runs of equal values when reading AMC");
    pCommand.add_flag("--keep-good-frames", pOptions.mKeepGoodFrames, "If a motion has an error, convert the frames before it");
}

/// Options of single output formats.
void AddOutputFormatOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    pCommand.add_option("--channels", pOptions.mChannels, "Order of the rotation channels in a BVH file, such as ZXY (default: ZYX)")
        ->option_text("ORDER");
    pCommand.add_option("--mesh", pOptions.mMesh, "Preview mesh in glTF: bones (default), none")
        ->check(OneOf({"bones", "none"}))
        ->option_text("MESH");
    pCommand.add_option("--preset", pOptions.mPreset, "Arrays of an NPZ file for training simulated characters: motion-imitation")
        ->check(OneOf({"motion-imitation"}))
        ->option_text("PRESET");
    pCommand.add_option("--length-unit", pOptions.mLengthUnit, "Length unit of an ASF file: a length of 1 is 2.54 cm divided by it")
        ->check(NumberFrom(kLeastFactor, kGreatestFactor))
        ->option_text("UNIT");
    pCommand
        .add_option("--translations", pOptions.mTranslations, "Bones of an ASF file with translation DOFs: moving (default), none, all")
        ->check(OneOf({"moving", "none", "all"}))
        ->option_text("WHICH");
    pCommand.add_option("--base-pose", pOptions.mBasePose, "Rest pose of an ASF file: rest (default), first-frame")
        ->check(OneOf({"rest", "first-frame"}))
        ->option_text("POSE");
    pCommand.add_flag("--raw", pOptions.mRaw, "Write an ASF file as extracted, even if limits or offsets are lost");
    pCommand.add_flag("--write-rate,--tell-rate", pOptions.mWriteRate,
                      "Write the rate into an AMC file as :SAMPLES-PER-SECOND, too, not only as a comment; some programs cannot read it");
}

} // namespace

std::vector<std::string> SplitOutputPairs(int pArgumentCount, char** pArguments)
{
    std::vector<std::string> lArguments(pArguments, pArguments + pArgumentCount);
    if (pArgumentCount < 2 || (lArguments[1] != "convert" && lArguments[1] != "edit"))
    {
        return lArguments;
    }
    std::vector<std::string> lSplit;
    bool                     lIsAfterOptions = false;
    for (size_t lIndex = 0; lIndex < lArguments.size(); ++lIndex)
    {
        lSplit.push_back(lArguments[lIndex]);
        lIsAfterOptions = lIsAfterOptions || (lIndex >= 2 && lArguments[lIndex] == "--");
        const bool lIsOutput = lIndex >= 2 && (lArguments[lIndex] == "-o" || lArguments[lIndex] == "--output");
        if (lIsAfterOptions || !lIsOutput || lIndex + 1 == lArguments.size())
        {
            continue;
        }
        const size_t lFurther = CountFurtherOutputs(lArguments, lIndex + 1);
        lSplit.push_back(lArguments[lIndex + 1]);
        for (size_t lOutput = 0; lOutput < lFurther; ++lOutput)
        {
            lSplit.push_back(lArguments[lIndex]);
            lSplit.push_back(lArguments[lIndex + 2 + lOutput]);
        }
        lIndex += 1 + lFurther;
    }
    return lSplit;
}

void AddEachFileOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    pCommand.add_option("--asf", pOptions.mMotion.mAsf, "Skeleton of AMC files given alone (default: searched for in their folder)")
        ->option_text("FILE");
    AddMotionPartOptions(pCommand, pOptions);
    AddOutputFormatOptions(pCommand, pOptions);
    AddAllowUnmatched(pCommand, pOptions.mMotion);
}

void AddConvertOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    AddFileOptions(pCommand, pOptions);
    AddEachFileOptions(pCommand, pOptions);
    pCommand
        .add_option("--threads", pOptions.mThreads, "Number of threads (default: as many as are useful); it does not change the output")
        ->check(NumberFrom(1, 64, true))
        ->option_text("N");
    pCommand.add_option("--memory", pOptions.mMemory, "Most memory to use, such as 800M or 2G (default: no limit)")->option_text("BYTES");
    pCommand.add_flag("--json", pOptions.mJson, "Print what was read and written, and all messages, as JSON (docs/json.md)");
    pCommand.add_flag("--only-read", pOptions.mOnlyRead)->group("");
    pCommand.add_flag("-q,--quiet", pOptions.mMotion.mQuiet, "No notes, no progress bar");
}

} // namespace asfapp
