#include <apps/asf/figure/convertoptions.h>

#include <apps/asf/figure/nametemplate.h>
#include <apps/asf/outputname.h>
#include <kbaselib/kbase/kletters.h>

#include <algorithm>
#include <set>

namespace asfapp
{

namespace
{

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
    return lOk || pConsole.Refuse(std::string(pOption) + ": expected seconds such as 2.5 or frames such as 60f, not " + pText);
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
    return pWord.empty() || pConsole.Refuse("--channels: expected X, Y and Z in any order, such as ZXY, not " + pWord);
}

bool FindOutputFormat(const std::string& pPath, const std::string& pTo, qexsdk::KQexOutputFormat& pFormat, KConsole& pConsole)
{
    const std::string lWriter = pTo.empty() ? "convert" : "convert --to " + pTo;
    const auto        lEndings = pTo.empty() ? std::vector<std::string>{".bvh", ".asf", ".amc", ".glb", ".gltf", ".npz", ".csv"}
                                             : std::vector<std::string>{"." + pTo};
    if (!CheckOutputName(pPath, lWriter, lEndings, pConsole))
    {
        return false;
    }
    const std::string lPath = pTo.empty() ? pPath : WithEnding(pPath, "." + pTo);
    return qexsdk::KQexOutputFormatOf(lPath, pFormat) ||
           pConsole.Refuse("--output: expected .asf, .amc, .bvh, .glb, .gltf, .npz or .csv, not " + pPath + "; or use --to");
}

bool ParseOutputs(KConvertOptions& pOptions, KConsole& pConsole)
{
    std::set<std::string> lPaths;
    for (const std::string& lPath : pOptions.mOnlyRead ? std::vector<std::string>() : pOptions.mOutputs)
    {
        KConvertOutput lOutput;
        lOutput.mPath = lPath;
        if (!CheckNameTemplate(lPath, pConsole) ||
            !FindOutputFormat(lPath, pOptions.mOutputs.size() == 1 || lPath == "-" ? pOptions.mTo : "", lOutput.mFormat, pConsole))
        {
            return false;
        }
        if (!lPaths.insert(lPath).second)
        {
            return pConsole.Refuse("--output: " + lPath + " is given twice");
        }
        if ((lOutput.mFormat == qexsdk::eOUTPUT_ASF || lOutput.mFormat == qexsdk::eOUTPUT_AMC) && pOptions.Writes(lOutput.mFormat))
        {
            return pConsole.Refuse("--output: expected at most one skeleton and one motion");
        }
        pOptions.mTargets.push_back(lOutput);
    }
    return true;
}

bool ParseMemory(KConvertOptions& pOptions, KConsole& pConsole)
{
    return pOptions.mMemory.empty() || ParseBytes(pOptions.mMemory, pOptions.mMaxMemory) ||
           pConsole.Refuse("--memory: expected bytes such as 800M or 2G, not " + pOptions.mMemory);
}

bool CheckJson(const KConvertOptions& pOptions, KConsole& pConsole)
{
    const bool lIsTaken = std::find(pOptions.mOutputs.begin(), pOptions.mOutputs.end(), "-") != pOptions.mOutputs.end();
    return !pOptions.mJson || !lIsTaken || pConsole.Refuse("--json writes to standard output: choose another output than -");
}

bool CheckFormatOption(const std::string& pWord, const char* pOption, bool pIsUsed, const char* pFormat, KConsole& pConsole)
{
    return pWord.empty() || pIsUsed || pConsole.Refuse(std::string(pOption) + " is for " + pFormat + " only");
}

/// What a format defines itself cannot be chosen.
bool CheckWorldOptions(const KConvertOptions& pOptions, KConsole& pConsole)
{
    const bool           lGltf = pOptions.Writes(qexsdk::eOUTPUT_GLB) || pOptions.Writes(qexsdk::eOUTPUT_GLTF);
    const KWorldOptions& lWorld = pOptions.mWorld;
    if (lGltf && !lWorld.mUp.empty())
    {
        return pConsole.Refuse("--up is not for glTF, where y is up by its standard");
    }
    if (lGltf && !lWorld.mUnits.empty())
    {
        return pConsole.Refuse("--units is not for glTF, which is in metres by its standard; --scale changes the size");
    }
    if (pOptions.Writes(qexsdk::eOUTPUT_AMC) && !pOptions.Writes(qexsdk::eOUTPUT_ASF) && !lWorld.mUnits.empty())
    {
        return pConsole.Refuse("--units is not for AMC without ASF, which is in the length unit of its skeleton");
    }
    if (!pOptions.mPreset.empty() && (lWorld.mUp == "y" || (!lWorld.mUnits.empty() && lWorld.mUnits != "m")))
    {
        return pConsole.Refuse("--preset " + pOptions.mPreset + " is in metres and has z up; --scale changes the size");
    }
    return CheckLengthUnit(lWorld, pOptions.mLengthUnit, false, pConsole);
}

/// Options for formats that are not written are errors.
bool CheckFormatOptions(const KConvertOptions& pOptions, KConsole& pConsole)
{
    const bool lGltf = pOptions.Writes(qexsdk::eOUTPUT_GLB) || pOptions.Writes(qexsdk::eOUTPUT_GLTF);
    const bool lAcclaim = pOptions.Writes(qexsdk::eOUTPUT_ASF);
    const bool lMotion = pOptions.Writes(qexsdk::eOUTPUT_AMC);
    return CheckFormatOption(pOptions.mMesh, "--mesh", lGltf, "glTF", pConsole) &&
           CheckFormatOption(pOptions.mChannels, "--channels", pOptions.Writes(qexsdk::eOUTPUT_BVH), "BVH", pConsole) &&
           CheckFormatOption(pOptions.mLengthUnit != 0 ? "set" : "", "--length-unit", lAcclaim, "ASF", pConsole) &&
           CheckFormatOption(pOptions.mPreset, "--preset", pOptions.Writes(qexsdk::eOUTPUT_NPZ), "NPZ", pConsole) &&
           CheckFormatOption(pOptions.mWriteRate ? "set" : "", "--write-rate", lMotion, "AMC", pConsole) &&
           CheckFormatOption(pOptions.mSkeleton, "--skeleton", lMotion && pOptions.mTargets.size() == 1, "a single AMC", pConsole);
}

} // namespace

bool KConvertOptions::Writes(qexsdk::KQexOutputFormat pFormat) const
{
    return std::any_of(mTargets.begin(), mTargets.end(), [pFormat](const KConvertOutput& pOutput) { return pOutput.mFormat == pFormat; });
}

bool ParseConvertOptions(KConvertOptions& pOptions, KConsole& pConsole)
{
    return ApplyMotionOptions(pOptions.mMotion, pConsole) && ParseTakeTime("--start", pOptions.mStart, pOptions.mStartTime, pConsole) &&
           ParseTakeTime("--end", pOptions.mEnd, pOptions.mEndTime, pConsole) &&
           ParseChannels(pOptions.mChannels, pOptions.mOrder, pConsole) && ParseOutputs(pOptions, pConsole) &&
           (pOptions.mOnlyRead || CheckFormatOptions(pOptions, pConsole)) && CheckWorldOptions(pOptions, pConsole) &&
           ParseMemory(pOptions, pConsole) && CheckJson(pOptions, pConsole);
}

qexsdk::KQexFigureOptions FigureOptions(const KConvertOptions& pOptions)
{
    qexsdk::KQexFigureOptions lOptions;
    lOptions.mMotionRate = pOptions.mMotion.mMotionRate;
    // The samples begin at the first frame: those of a part would lie between them.
    lOptions.mSampleRate = pOptions.mStartTime.mIsSet ? 0 : pOptions.mMotion.mRate;
    lOptions.mTake = pOptions.mTake;
    lOptions.mRemoveDummies = pOptions.mRemoveDummies;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    lOptions.mAllowUnmatched = pOptions.mMotion.mAllowUnmatched;
    lOptions.mKeepDofValues = pOptions.Writes(qexsdk::eOUTPUT_NPZ);
    lOptions.mReduce = pOptions.mReduce;
    lOptions.mFilter = pOptions.mFilter == "none"     ? qexsdk::eROTATION_FILTER_NONE
                       : pOptions.mFilter == "gimbal" ? qexsdk::eROTATION_FILTER_GIMBAL
                                                      : qexsdk::eROTATION_FILTER_UNROLL;
    return lOptions;
}

} // namespace asfapp
