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

bool WrongCall(KConsole& pConsole, const std::string& pText)
{
    pConsole.Fail(eEXIT_CALL, pText);
    return false;
}

/// "2.5" is seconds, "60f" frames.
bool TakeMoment(const char* pOption, const std::string& pText, KMoment& pMoment, KConsole& pConsole)
{
    if (pText.empty())
    {
        return true;
    }
    pMoment.mIsSet = true;
    pMoment.mIsFrame = pText.back() == 'f';
    const bool lOk = ParseNumber(pMoment.mIsFrame ? pText.substr(0, pText.size() - 1) : pText, pMoment.mValue) && pMoment.mValue >= -1e6 &&
                     pMoment.mValue <= 1e9;
    return lOk || WrongCall(pConsole, std::string(pOption) + ": seconds such as 2.5, or frames such as 60f, are expected, not " + pText);
}

/// Channels are listed with the last turn first: ZXY turns about y first.
bool TakeChannels(const std::string& pWord, qexsdk::ERotationOrder& pOrder, KConsole& pConsole)
{
    static const char* const sTurns[6] = {"xyz", "xzy", "yzx", "yxz", "zxy", "zyx"};
    std::string              lWord;
    for (const char lChar : pWord)
    {
        lWord.insert(lWord.begin(), qexsdk::KToLower(lChar));
    }
    for (int lOrder = 0; lOrder < 6 && !pWord.empty(); ++lOrder)
    {
        if (lWord == sTurns[lOrder])
        {
            pOrder = static_cast<qexsdk::ERotationOrder>(lOrder);
            return true;
        }
    }
    return pWord.empty() || WrongCall(pConsole, "--channels: X, Y and Z in any order are expected, such as ZXY, not " + pWord);
}

bool KindOfOutput(const std::string& pPath, const std::string& pTo, EOutputKind& pKind, KConsole& pConsole)
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
    return WrongCall(pConsole, "--output: .asf, .amc, .bvh, .glb or .gltf is expected, not " + pPath + "; or tell with --to");
}

bool TakeOutputs(KConvertOptions& pOptions, KConsole& pConsole)
{
    std::set<std::string> lPaths;
    for (const std::string& lPath : pOptions.mOutputs)
    {
        KConvertOutput lOutput;
        lOutput.mPath = lPath;
        if (!KindOfOutput(lPath, pOptions.mOutputs.size() == 1 || lPath == "-" ? pOptions.mTo : "", lOutput.mKind, pConsole))
        {
            return false;
        }
        if (!lPaths.insert(lPath).second)
        {
            return WrongCall(pConsole, "--output: " + lPath + " is given twice");
        }
        if ((lOutput.mKind == eOUT_ASF || lOutput.mKind == eOUT_AMC) && pOptions.Writes(lOutput.mKind))
        {
            return WrongCall(pConsole, "--output: one skeleton and one motion at most are expected");
        }
        pOptions.mTargets.push_back(lOutput);
    }
    if (pOptions.Writes(eOUT_GLTF) && (pOptions.Writes(eOUT_ASF) || pOptions.Writes(eOUT_AMC)))
    {
        return WrongCall(pConsole, "--output: .gltf and Acclaim files are two files each, and written by calls of their own");
    }
    return true;
}

bool CheckUse(const std::string& pWord, const char* pOption, bool pHasUse, const char* pFormat, KConsole& pConsole)
{
    return pWord.empty() || pHasUse || WrongCall(pConsole, std::string(pOption) + " is for " + pFormat + " only");
}

/// Options that would change nothing are mistakes.
bool CheckUses(const KConvertOptions& pOptions, KConsole& pConsole)
{
    const bool lGltf = pOptions.Writes(eOUT_GLB) || pOptions.Writes(eOUT_GLTF);
    const bool lAcclaim = pOptions.Writes(eOUT_ASF);
    const bool lMotion = pOptions.Writes(eOUT_AMC);
    return CheckUse(pOptions.mMesh, "--mesh", lGltf, "glTF", pConsole) &&
           CheckUse(pOptions.mChannels, "--channels", pOptions.Writes(eOUT_BVH), "BVH", pConsole) &&
           CheckUse(pOptions.mUp == "z" ? "z" : "", "--up z", pOptions.Writes(eOUT_BVH), "BVH", pConsole) &&
           CheckUse(pOptions.mLengthUnit != 0 ? "set" : "", "--length-unit", lAcclaim, "ASF", pConsole) &&
           CheckUse(pOptions.mTellRate ? "set" : "", "--tell-rate", lMotion, "AMC", pConsole) &&
           CheckUse(pOptions.mSkeleton, "--skeleton", lMotion && pOptions.mTargets.size() == 1, "a lone AMC", pConsole);
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
            lIndex += 3; // What follows the pair is none of it.
        }
    }
    return lArguments;
}

bool TakeConvertOptions(KConvertOptions& pOptions, KConsole& pConsole)
{
    pConsole.SetQuiet(pOptions.mMotion.mQuiet);
    const struct
    {
        const char*        mOption;
        const std::string& mText;
        double&            mRate;
    } lRates[] = {{"--fps", pOptions.mFps, pOptions.mRate}, {"--motion-fps", pOptions.mMotion.mFps, pOptions.mMotion.mSamples}};
    for (const auto& lRate : lRates)
    {
        if (!lRate.mText.empty() && !ParseRate(lRate.mText, lRate.mRate))
        {
            return WrongCall(pConsole, std::string(lRate.mOption) +
                                           ": a number or a fraction above zero is expected, such as 120 or 30000/1001, not " +
                                           lRate.mText);
        }
    }
    return TakeMoment("--start", pOptions.mStart, pOptions.mSince, pConsole) &&
           TakeMoment("--end", pOptions.mEnd, pOptions.mUntil, pConsole) && TakeChannels(pOptions.mChannels, pOptions.mOrder, pConsole) &&
           TakeOutputs(pOptions, pConsole) && CheckUses(pOptions, pConsole);
}

KFigureOptions FigureOptions(const KConvertOptions& pOptions)
{
    KFigureOptions lOptions;
    lOptions.mSamples = pOptions.mMotion.mSamples;
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
    pCommand.add_option("-o,--output", pOptions.mOutputs, "File to write; may be given again. {name} in it becomes the take's name")
        ->required()
        ->type_size(1)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text("FILE");
    pCommand.add_option("--from", pOptions.mFrom, "What the input is, instead of what it looks like")->check(lKinds)->option_text("KIND");
    pCommand.add_option("--to", pOptions.mTo, "What to write, instead of what the output's name says")->check(lKinds)->option_text("KIND");
    pCommand.add_option("--asf", pOptions.mMotion.mAsf, "Skeleton of AMC files given alone; without it, it is looked for beside them")
        ->option_text("FILE");
    pCommand.add_option("--skeleton", pOptions.mSkeleton, "Write the motion for the bones of this ASF file, by their names")
        ->option_text("FILE");
    pCommand.add_option("--take", pOptions.mTake, "Which of several takes; of a lone motion, what to call it")->option_text("NAME");
    pCommand.add_option("--fps", pOptions.mFps, "Frames a second to write, as 30, 23.976 or 30000/1001; without it the motion's own")
        ->option_text("RATE");
    pCommand.add_option("--motion-fps", pOptions.mMotion.mFps, "Frames a second of AMC files; without it their own, else 120")
        ->option_text("RATE");
    pCommand.add_option("--start", pOptions.mStart, "Where to begin: seconds, or frames with an f behind (60f)")->option_text("TIME");
    pCommand.add_option("--end", pOptions.mEnd, "Where to end")->option_text("TIME");
    pCommand.add_option("--every", pOptions.mEvery, "Take one frame of so many")->check(CLI::Range(1, 1000000))->option_text("N");
    pCommand.add_option("--scale", pOptions.mScale, "Factor of all lengths and places")->check(lFactor)->option_text("FACTOR");
    pCommand.add_flag("--remove-dummies", pOptions.mRemoveDummies, "Leave out bones that only fill gaps");
    pCommand.add_flag("--limits,!--no-limits", pOptions.mLimits, "Keep joint limits, which is the default, or leave them out");
    pCommand.add_option("--filter", pOptions.mFilter, "How AMC rotations are made continuous: none, unroll (default), gimbal")
        ->check(CLI::IsMember({"none", "unroll", "gimbal"}))
        ->option_text("FILTER");
    pCommand.add_flag("--reduce", pOptions.mReduce, "Drop keys inside runs of equal values while reading AMC");
    pCommand.add_flag("--keep-good-frames", pOptions.mKeepGoodFrames, "Of a motion with an error, convert the frames before it");
    pCommand.add_option("--up", pOptions.mUp, "Axis that points up in a BVH file: y (default), z")
        ->check(CLI::IsMember({"y", "z"}))
        ->option_text("AXIS");
    pCommand.add_option("--channels", pOptions.mChannels, "Rotation channels of a BVH file in their order, such as ZXY; without it ZYX")
        ->option_text("ORDER");
    pCommand.add_option("--mesh", pOptions.mMesh, "What to show in glTF: bones (default), none")
        ->check(CLI::IsMember({"bones", "none"}))
        ->option_text("MESH");
    pCommand.add_option("--length-unit", pOptions.mLengthUnit, "Length unit of an ASF file: a length of 1 is 2.54 cm over this")
        ->check(lFactor)
        ->option_text("UNIT");
    pCommand.add_option("--translations", pOptions.mTranslations, "Bones of an ASF file that can shift: moving (default), none, all")
        ->check(CLI::IsMember({"moving", "none", "all"}))
        ->option_text("WHICH");
    pCommand.add_option("--base-pose", pOptions.mBasePose, "Rest pose of an ASF file: rest (default), first-frame")
        ->check(CLI::IsMember({"rest", "first-frame"}))
        ->option_text("POSE");
    pCommand.add_flag("--raw", pOptions.mRaw, "Write an ASF file as extracted: no limit or offset is moved where it survives");
    pCommand.add_flag("--tell-rate", pOptions.mTellRate, "Write :SAMPLES-PER-SECOND into an AMC file, at which some programs stop");
    pCommand.add_option("--threads", pOptions.mThreads, "Threads to use; without it as many as help. The bytes stay the same")
        ->check(CLI::Range(1, 64))
        ->option_text("N");
    pCommand.add_flag("-q,--quiet", pOptions.mMotion.mQuiet, "Neither notes nor a progress bar");
}

} // namespace asfapp
