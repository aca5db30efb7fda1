#include <apps/asf/figure/convertoptions.h>

#include <kbaselib/kbase/kletters.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <set>

namespace asfapp
{

namespace
{

const char* const kKinds[] = {"asf", "amc", "bvh", "glb", "gltf"};

bool UsageError(KConsole& pConsole, const std::string& pText)
{
    pConsole.Fail(eEXIT_USAGE, pText);
    return false;
}

/// "2.5" is seconds, "60f" frames.
bool ParseTakeTime(const char* pOption, const std::string& pText, KTakeTime& pTime, KConsole& pConsole)
{
    if (pText.empty())
    {
        return true;
    }
    pTime.mIsSet = true;
    pTime.mIsFrame = pText.back() == 'f';
    const bool lOk = ParseNumber(pTime.mIsFrame ? pText.substr(0, pText.size() - 1) : pText, pTime.mValue) && pTime.mValue >= -1e6 &&
                     pTime.mValue <= 1e9;
    return lOk || UsageError(pConsole, std::string(pOption) + ": expected seconds such as 2.5 or frames such as 60f, not " + pText);
}

/// Channels are listed with the last rotation first: ZXY rotates about y first.
bool ParseChannels(const std::string& pWord, qexsdk::ERotationOrder& pOrder, KConsole& pConsole)
{
    static const char* const sOrders[6] = {"xyz", "xzy", "yzx", "yxz", "zxy", "zyx"};
    std::string              lWord;
    for (const char lChar : pWord)
    {
        lWord.insert(lWord.begin(), qexsdk::KToLower(lChar));
    }
    for (int lOrder = 0; lOrder < 6 && !pWord.empty(); ++lOrder)
    {
        if (lWord == sOrders[lOrder])
        {
            pOrder = static_cast<qexsdk::ERotationOrder>(lOrder);
            return true;
        }
    }
    return pWord.empty() || UsageError(pConsole, "--channels: expected X, Y and Z in any order, such as ZXY, not " + pWord);
}

bool FindOutputKind(const std::string& pPath, const std::string& pTo, EOutputKind& pKind, KConsole& pConsole)
{
    const std::string lExtension = LowerExtension(pPath);
    const std::string lWord = !pTo.empty() ? pTo : lExtension.empty() ? std::string() : lExtension.substr(1);
    for (int lKind = eOUT_ASF; lKind <= eOUT_GLTF; ++lKind)
    {
        if (lWord == kKinds[lKind])
        {
            pKind = static_cast<EOutputKind>(lKind);
            return true;
        }
    }
    return UsageError(pConsole, "--output: expected .asf, .amc, .bvh, .glb or .gltf, not " + pPath + "; or use --to");
}

bool ParseOutputs(KConvertOptions& pOptions, KConsole& pConsole)
{
    std::set<std::string> lPaths;
    for (const std::string& lPath : pOptions.mOutputs)
    {
        KConvertOutput lOutput;
        lOutput.mPath = lPath;
        if (!FindOutputKind(lPath, pOptions.mOutputs.size() == 1 || lPath == "-" ? pOptions.mTo : "", lOutput.mKind, pConsole))
        {
            return false;
        }
        if (!lPaths.insert(lPath).second)
        {
            return UsageError(pConsole, "--output: " + lPath + " is given twice");
        }
        if ((lOutput.mKind == eOUT_ASF || lOutput.mKind == eOUT_AMC) && pOptions.Writes(lOutput.mKind))
        {
            return UsageError(pConsole, "--output: expected at most one skeleton and one motion");
        }
        pOptions.mTargets.push_back(lOutput);
    }
    if (pOptions.Writes(eOUT_GLTF) && (pOptions.Writes(eOUT_ASF) || pOptions.Writes(eOUT_AMC)))
    {
        return UsageError(pConsole, "--output: .gltf and Acclaim files cannot be written together");
    }
    return true;
}

bool CheckFormatOption(const std::string& pWord, const char* pOption, bool pIsUsed, const char* pFormat, KConsole& pConsole)
{
    return pWord.empty() || pIsUsed || UsageError(pConsole, std::string(pOption) + " is for " + pFormat + " only");
}

/// Options for formats that are not written are errors.
bool CheckFormatOptions(const KConvertOptions& pOptions, KConsole& pConsole)
{
    const bool lGltf = pOptions.Writes(eOUT_GLB) || pOptions.Writes(eOUT_GLTF);
    const bool lAcclaim = pOptions.Writes(eOUT_ASF);
    const bool lMotion = pOptions.Writes(eOUT_AMC);
    return CheckFormatOption(pOptions.mMesh, "--mesh", lGltf, "glTF", pConsole) &&
           CheckFormatOption(pOptions.mChannels, "--channels", pOptions.Writes(eOUT_BVH), "BVH", pConsole) &&
           CheckFormatOption(pOptions.mUp == "z" ? "z" : "", "--up z", pOptions.Writes(eOUT_BVH), "BVH", pConsole) &&
           CheckFormatOption(pOptions.mLengthUnit != 0 ? "set" : "", "--length-unit", lAcclaim, "ASF", pConsole) &&
           CheckFormatOption(pOptions.mWriteRate ? "set" : "", "--tell-rate", lMotion, "AMC", pConsole) &&
           CheckFormatOption(pOptions.mSkeleton, "--skeleton", lMotion && pOptions.mTargets.size() == 1, "a single AMC", pConsole);
}

bool IsPair(const std::string& pOne, const std::string& pOther)
{
    const std::string lOne = LowerExtension(pOne);
    const std::string lOther = LowerExtension(pOther);
    return (lOne == ".asf" && lOther == ".amc") || (lOne == ".amc" && lOther == ".asf");
}

} // namespace

bool KConvertOptions::Writes(EOutputKind pKind) const
{
    return std::any_of(mTargets.begin(), mTargets.end(), [pKind](const KConvertOutput& pOutput) { return pOutput.mKind == pKind; });
}

std::vector<std::string> SplitOutputPairs(int pArgumentCount, char** pArguments)
{
    std::vector<std::string> lArguments(pArguments, pArguments + pArgumentCount);
    if (pArgumentCount < 2 || lArguments[1] != "convert")
    {
        return lArguments;
    }
    for (size_t lIndex = 2; lIndex + 2 < lArguments.size() && lArguments[lIndex] != "--"; ++lIndex)
    {
        const bool lIsOutput = lArguments[lIndex] == "-o" || lArguments[lIndex] == "--output";
        if (lIsOutput && IsPair(lArguments[lIndex + 1], lArguments[lIndex + 2]))
        {
            lArguments.insert(lArguments.begin() + static_cast<std::ptrdiff_t>(lIndex) + 2, lArguments[lIndex]);
            lIndex += 3; // Skip the pair.
        }
    }
    return lArguments;
}

bool ParseConvertOptions(KConvertOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mMotion.mQuiet);
    const struct
    {
        const char*        mOption;
        const std::string& mText;
        double&            mRate;
    } lRates[] = {{"--fps", pOptions.mFps, pOptions.mRate}, {"--motion-fps", pOptions.mMotion.mFps, pOptions.mMotion.mMotionRate}};
    for (const auto& lRate : lRates)
    {
        if (!lRate.mText.empty() && !ParseRate(lRate.mText, lRate.mRate))
        {
            return UsageError(pConsole, std::string(lRate.mOption) +
                                            ": expected a positive number or fraction, such as 120 or 30000/1001, not " + lRate.mText);
        }
    }
    return ParseTakeTime("--start", pOptions.mStart, pOptions.mStartTime, pConsole) &&
           ParseTakeTime("--end", pOptions.mEnd, pOptions.mEndTime, pConsole) &&
           ParseChannels(pOptions.mChannels, pOptions.mOrder, pConsole) && ParseOutputs(pOptions, pConsole) &&
           CheckFormatOptions(pOptions, pConsole);
}

KFigureOptions FigureOptions(const KConvertOptions& pOptions)
{
    KFigureOptions lOptions;
    lOptions.mMotionRate = pOptions.mMotion.mMotionRate;
    lOptions.mSampleRate = pOptions.mRate;
    lOptions.mTake = pOptions.mTake;
    lOptions.mRemoveDummies = pOptions.mRemoveDummies;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    lOptions.mReduce = pOptions.mReduce;
    lOptions.mFilter = pOptions.mFilter == "none"     ? qexsdk::eROTATION_FILTER_NONE
                       : pOptions.mFilter == "gimbal" ? qexsdk::eROTATION_FILTER_GIMBAL
                                                      : qexsdk::eROTATION_FILTER_UNROLL;
    return lOptions;
}

void AddConvertOptions(CLI::App& pCommand, KConvertOptions& pOptions)
{
    const CLI::IsMember lKinds({"asf", "amc", "bvh", "glb", "gltf"});
    const CLI::Range    lFactor(1e-9, 1e9);
    pCommand.add_option("FILE", pOptions.mFiles, "ASF and any number of AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->option_text("...");
    pCommand.add_option("-o,--output", pOptions.mOutputs, "File to write; may be repeated. {name} in it is replaced by the take's name")
        ->required()
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("FILE");
    pCommand.add_option("--from", pOptions.mFrom, "Format of the input, instead of detecting it")->check(lKinds)->option_text("KIND");
    pCommand.add_option("--to", pOptions.mTo, "Format to write, instead of the output's extension")->check(lKinds)->option_text("KIND");
    pCommand.add_option("--asf", pOptions.mMotion.mAsf, "Skeleton of AMC files given alone (default: searched for in their folder)")
        ->option_text("FILE");
    pCommand.add_option("--skeleton", pOptions.mSkeleton, "Write the motion for the bones of this ASF file, matched by name")
        ->option_text("FILE");
    pCommand.add_option("--take", pOptions.mTake, "Take to convert if there are several; for one AMC or BVH file, the name of its take")
        ->option_text("NAME");
    pCommand
        .add_option("--fps", pOptions.mFps, "Frames per second to write, such as 30, 23.976 or 30000/1001 (default: the motion's rate)")
        ->option_text("RATE");
    pCommand.add_option("--motion-fps", pOptions.mMotion.mFps, "Frames per second of AMC files (default: the file's rate, else 120)")
        ->option_text("RATE");
    pCommand.add_option("--start", pOptions.mStart, "Start: seconds, or frames from the first with the suffix f (60f)")
        ->option_text("TIME");
    pCommand.add_option("--end", pOptions.mEnd, "End, as for --start")->option_text("TIME");
    pCommand.add_option("--every", pOptions.mEvery, "Keep every N-th frame")->check(CLI::Range(1, 1000000))->option_text("N");
    pCommand.add_option("--scale", pOptions.mScale, "Factor for all lengths and positions")->check(lFactor)->option_text("FACTOR");
    pCommand.add_flag("--remove-dummies", pOptions.mRemoveDummies, "Leave out dummy bones, which only fill gaps");
    pCommand.add_flag("--limits,!--no-limits", pOptions.mLimits, "Keep joint limits (default) or leave them out");
    pCommand.add_option("--filter", pOptions.mFilter, "Filter that makes AMC rotations continuous: none, unroll (default), gimbal")
        ->check(CLI::IsMember({"none", "unroll", "gimbal"}))
        ->option_text("FILTER");
    pCommand.add_flag("--reduce", pOptions.mReduce, "Drop keys inside runs of equal values when reading AMC");
    pCommand.add_flag("--keep-good-frames", pOptions.mKeepGoodFrames, "If a motion has an error, convert the frames before it");
    pCommand.add_option("--up", pOptions.mUp, "Up axis of a BVH file: y (default), z")
        ->check(CLI::IsMember({"y", "z"}))
        ->option_text("AXIS");
    pCommand.add_option("--channels", pOptions.mChannels, "Order of the rotation channels in a BVH file, such as ZXY (default: ZYX)")
        ->option_text("ORDER");
    pCommand.add_option("--mesh", pOptions.mMesh, "Preview mesh in glTF: bones (default), none")
        ->check(CLI::IsMember({"bones", "none"}))
        ->option_text("MESH");
    pCommand.add_option("--length-unit", pOptions.mLengthUnit, "Length unit of an ASF file: a length of 1 is 2.54 cm divided by it")
        ->check(lFactor)
        ->option_text("UNIT");
    pCommand
        .add_option("--translations", pOptions.mTranslations, "Bones of an ASF file with translation DOFs: moving (default), none, all")
        ->check(CLI::IsMember({"moving", "none", "all"}))
        ->option_text("WHICH");
    pCommand.add_option("--base-pose", pOptions.mBasePose, "Rest pose of an ASF file: rest (default), first-frame")
        ->check(CLI::IsMember({"rest", "first-frame"}))
        ->option_text("POSE");
    pCommand.add_flag("--raw", pOptions.mRaw, "Write an ASF file as extracted, even if limits or offsets are lost");
    pCommand.add_flag("--tell-rate", pOptions.mWriteRate,
                      "Write the rate into an AMC file (:SAMPLES-PER-SECOND); some programs cannot read such a file");
    pCommand
        .add_option("--threads", pOptions.mThreads, "Number of threads (default: as many as are useful); it does not change the output")
        ->check(CLI::Range(1, 64))
        ->option_text("N");
    pCommand.add_flag("-q,--quiet", pOptions.mMotion.mQuiet, "No notes, no progress bar");
}

} // namespace asfapp
