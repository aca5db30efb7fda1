#include <apps/asf/figure/converter.h>

#include <apps/asf/figure/nametemplate.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <kbaselib/kbase/kpath.h>

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace asfapp
{

namespace
{

/// A path that is the same for all ways to a file.
std::string WithoutLinks(const std::string& pPath)
{
    std::error_code             lError;
    const std::filesystem::path lPath = std::filesystem::weakly_canonical(std::filesystem::absolute(pPath, lError), lError);
    return pPath == "-" || lError ? pPath : lPath.string();
}

/// The take's name in the figure, where every take has another one.
std::string TitleOf(const KSampledTake& pTake)
{
    return pTake.mTake != nullptr ? pTake.mTake->mName : pTake.mName;
}

} // namespace

KConverter::KConverter(const KConvertOptions& pOptions, qexsdk::KQexFigure& pFigure, std::vector<std::string> pInputs, KConsole& pConsole)
    : mOptions(pOptions), mFigure(pFigure), mInputs(std::move(pInputs)), mConsole(pConsole)
{
}

bool KConverter::Run()
{
    if (!mOptions.mLimits)
    {
        mFigure.DropLimits();
    }
    return SampleTakes() && CheckTargets() && WriteAll();
}

bool KConverter::WriteAll()
{
    qexsdk::KQexFigureWriteOptions lOptions = WriteOptions();
    qexsdk::KQexFigureReport       lReport;
    if (!mOptions.mSkeleton.empty() && !ReadSkeleton(lOptions))
    {
        return false;
    }
    if (!Write(lOptions, lReport))
    {
        PrintReport(lReport, mConsole);
        return false;
    }
    ReportAfterCommit(
        [&]
        {
            PrintReport(lReport, mConsole);
            Report();
        });
    return true;
}

/// Writes with a progress bar.
bool KConverter::Write(qexsdk::KQexFigureWriteOptions& pOptions, qexsdk::KQexFigureReport& pReport)
{
    KProgress lProgress("writing", mConsole);
    pOptions.mProgress = lProgress.GetFunction();
    return qexsdk::KQexWriteFigure(mFigure, ListOutputs(), pOptions, pReport);
}

qexsdk::KQexFigureWriteOptions KConverter::WriteOptions() const
{
    const KWorldOptions&           lWorld = mOptions.mWorld;
    qexsdk::KQexFigureWriteOptions lOptions;
    for (const KSampledTake& lTake : mTakes)
    {
        lOptions.mTakes.emplace_back();
        lOptions.mTakes.back().mTake = lTake.mTake;
        lOptions.mTakes.back().mRequest = lTake.mRequest;
    }
    lOptions.mScale = lWorld.mScale;
    lOptions.mUnit = lWorld.mUnits.empty() ? 0 : lWorld.GetUnit();
    lOptions.mZUp = lWorld.IsZUp();
    lOptions.mOrder = mOptions.mOrder;
    lOptions.mBoneMesh = mOptions.mMesh != "none";
    lOptions.mArrays = mOptions.mPreset.empty() ? qexsdk::KQexArraySet::eMOTION : qexsdk::KQexArraySet::eIMITATION;
    lOptions.mLengthUnit = mOptions.mLengthUnit;
    lOptions.mTranslations = mOptions.mTranslations == "all"    ? qexsdk::eTRANSLATION_DOFS_ALL
                             : mOptions.mTranslations == "none" ? qexsdk::eTRANSLATION_DOFS_NONE
                                                                : qexsdk::eTRANSLATION_DOFS_MOVING;
    lOptions.mBasePoseFirstFrame = mOptions.mBasePose == "first-frame";
    lOptions.mAdaptForFile = !mOptions.mRaw;
    lOptions.mWriteRate = mOptions.mWriteRate;
    lOptions.mAllowUnmatched = mOptions.mMotion.mAllowUnmatched;
    lOptions.mThreads = mOptions.mThreads;
    lOptions.mOutputOption = kOutputOption;
    return lOptions;
}

std::vector<qexsdk::KQexFigureOutput> KConverter::ListOutputs() const
{
    std::vector<qexsdk::KQexFigureOutput> lOutputs;
    for (const KConvertOutput& lTarget : mOptions.mTargets)
    {
        for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(lTarget))
        {
            lOutputs.emplace_back();
            lOutputs.back().mPath = PathOf(lTarget, *lTakes.front());
            lOutputs.back().mFormat = lTarget.mFormat;
            for (const KSampledTake* lTake : lTakes)
            {
                lOutputs.back().mTakes.push_back(static_cast<size_t>(lTake - mTakes.data()));
            }
        }
    }
    return lOutputs;
}

/// Reads the skeleton of --skeleton. False after an error.
bool KConverter::ReadSkeleton(qexsdk::KQexFigureWriteOptions& pOptions)
{
    qexsdk::KQexFigureFile lFile;
    if (!OpenFile(lFile, mOptions.mSkeleton, mConsole))
    {
        return false;
    }
    qexsdk::KQexImportAcclaimResult lResult;
    mSkeleton = qexsdk::KQexImporterAcclaim::ReadSkeleton(lFile.GetSource(), {}, lResult);
    pOptions.mSkeleton = mSkeleton.get();
    pOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    PrintMessages(lResult, mConsole);
    if (!mSkeleton)
    {
        mConsole.Raise(lFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return mSkeleton != nullptr;
}

std::string KConverter::PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const
{
    KNameWords lWords;
    lWords.mTake = pTake.mName;
    lWords.mSkeleton = FileNamePart(qexsdk::KPathStem(mOptions.mSkeleton.empty() ? mInputs.front() : mOptions.mSkeleton), "skeleton");
    lWords.mNumber = static_cast<size_t>(&pTake - mTakes.data()) + 1;
    lWords.mSuffix = mTakes.size() > 1 ? "-" + pTake.mName : "";
    return FillName(pOutput.mPath, lWords);
}

/// The files that an output writes: .gltf has its buffer beside it.
std::vector<std::string> KConverter::FilesOf(qexsdk::KQexOutputFormat pFormat, const std::string& pPath)
{
    std::vector<std::string> lFiles{pPath};
    if (pFormat == qexsdk::eOUTPUT_GLTF)
    {
        lFiles.push_back(pPath.substr(0, pPath.find_last_of('.')) + ".bin");
    }
    return lFiles;
}

KConverter::KTakeGroups KConverter::GroupsOf(const KConvertOutput& pOutput) const
{
    KTakeGroups lGroups;
    for (const KSampledTake& lTake : mTakes)
    {
        if (lGroups.empty() || qexsdk::KQexHoldsOneTake(pOutput.mFormat) || NamesTake(pOutput.mPath))
        {
            lGroups.emplace_back();
        }
        lGroups.back().push_back(&lTake);
    }
    return lGroups;
}

/// False, after an error, if the figure and its takes do not fit an output.
bool KConverter::CheckTarget(const KConvertOutput& pOutput)
{
    if (qexsdk::KQexHoldsOneTake(pOutput.mFormat) && mTakes.size() > 1 && !NamesTake(pOutput.mPath))
    {
        mConsole.Fail(eEXIT_USAGE, "--output: " + pOutput.mPath + " holds one take, but there are " + std::to_string(mTakes.size()) +
                                       ": put {name} into its name, or choose one with --take");
        return false;
    }
    if ((pOutput.mFormat == qexsdk::eOUTPUT_AMC || pOutput.mFormat == qexsdk::eOUTPUT_CSV) && mFigure.GetTakes().empty())
    {
        mConsole.Fail(eEXIT_USAGE, "--output: there is no motion to write to " + pOutput.mPath);
        return false;
    }
    if (pOutput.mFormat == qexsdk::eOUTPUT_AMC && !mOptions.Writes(qexsdk::eOUTPUT_ASF) && mOptions.mSkeleton.empty() &&
        mFigure.GetSkeleton() == nullptr)
    {
        mConsole.Fail(eEXIT_USAGE, "--output: " + pOutput.mPath + " needs a skeleton: write one, too (-o NAME.asf -o " + pOutput.mPath +
                                       "), or name an existing one with --skeleton FILE");
        return false;
    }
    if (pOutput.mFormat == qexsdk::eOUTPUT_NPZ && !mOptions.mPreset.empty() && mFigure.GetRoots().size() != 1)
    {
        mConsole.Fail(eEXIT_INPUT, "--preset " + mOptions.mPreset + " is for a figure with one root, but there are " +
                                       std::to_string(mFigure.GetRoots().size()));
        return false;
    }
    return true;
}

bool KConverter::CheckTargets()
{
    std::map<std::string, std::string> lTakes; // The first take of every file, by its path without links.
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        if (!CheckTarget(lOutput))
        {
            return false;
        }
        for (const std::vector<const KSampledTake*>& lGroup : GroupsOf(lOutput))
        {
            const std::string lPath = PathOf(lOutput, *lGroup.front());
            const std::string lTake = TitleOf(*lGroup.front());
            for (const std::string& lFile : FilesOf(lOutput.mFormat, lPath))
            {
                const auto lAdded = lTakes.emplace(WithoutLinks(lFile), lTake);
                if (!lAdded.second)
                {
                    const bool lIsOther = lAdded.first->second != lTake;
                    mConsole.Fail(
                        eEXIT_USAGE,
                        "--output: " + lFile + " would be written twice" +
                            (lIsOther ? ", for the takes " + lAdded.first->second + " and " + lTake + ": put {n} into its name" : ""));
                    return false;
                }
                if (!CheckOutput(lFile, mInputs, mConsole))
                {
                    return false;
                }
            }
        }
    }
    return true;
}

} // namespace asfapp
