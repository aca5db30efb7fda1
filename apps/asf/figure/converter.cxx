#include <apps/asf/figure/converter.h>

#include <apps/asf/figure/nametemplate.h>
#include <apps/asf/outputs.h>
#include <kbaselib/kbase/kpath.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

namespace asfapp
{

namespace
{

bool HoldsOneTake(EOutputKind pKind)
{
    return pKind != eOUT_ASF && pKind != eOUT_GLB && pKind != eOUT_GLTF;
}

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
    : mOptions(pOptions), mFigure(pFigure), mInputs(std::move(pInputs)), mConsole(pConsole), mOutputs{pOptions, pFigure, pConsole, {}}
{
}

bool KConverter::Run()
{
    if (!mOptions.mLimits)
    {
        mFigure.DropLimits();
    }
    const bool lOk = SampleTakes() && CheckTargets() && WriteAll() && Commit();
    if (lOk)
    {
        ReportAfterCommit([this] { Report(); });
    }
    return lOk;
}

bool KConverter::WriteAll()
{
    KOutputList lAcclaim;
    KOutputList lOthers;
    MakeOtherOutputs(lOthers);
    if (!MakeAcclaimOutputs(lAcclaim))
    {
        return false;
    }
    if (!lAcclaim.empty() && !mOptions.mWorld.IsZUp() && mFigure.GetRoots().size() == 1)
    {
        std::move(lAcclaim.begin(), lAcclaim.end(), std::back_inserter(lOthers));
        lAcclaim.clear();
    }
    if (!WriteFrames(lOthers, mFigure.GetRoots()))
    {
        return false;
    }
    if (lAcclaim.empty())
    {
        return true;
    }
    // The Acclaim exporter has no up axis, so the figure is turned after all others are written; the skeleton of a motion alone is not.
    TurnUp(mOptions.mWorld, FindTarget(eOUT_ASF) != nullptr, mFigure);
    return WriteFrames(lAcclaim, {mFigure.GetTop()});
}

const KConvertOutput* KConverter::FindTarget(EOutputKind pKind) const
{
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        if (lOutput.mKind == pKind)
        {
            return &lOutput;
        }
    }
    return nullptr;
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
std::vector<std::string> KConverter::FilesOf(EOutputKind pKind, const std::string& pPath)
{
    std::vector<std::string> lFiles{pPath};
    if (pKind == eOUT_GLTF)
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
        if (lGroups.empty() || HoldsOneTake(pOutput.mKind) || NamesTake(pOutput.mPath))
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
    if (HoldsOneTake(pOutput.mKind) && mTakes.size() > 1 && !NamesTake(pOutput.mPath))
    {
        mConsole.Fail(eEXIT_USAGE, "--output: " + pOutput.mPath + " holds one take, but there are " + std::to_string(mTakes.size()) +
                                       ": put {name} into its name, or choose one with --take");
        return false;
    }
    if ((pOutput.mKind == eOUT_AMC || pOutput.mKind == eOUT_CSV) && mFigure.GetTakes().empty())
    {
        mConsole.Fail(eEXIT_USAGE, "--output: there is no motion to write to " + pOutput.mPath);
        return false;
    }
    if (pOutput.mKind == eOUT_AMC && FindTarget(eOUT_ASF) == nullptr && mOptions.mSkeleton.empty() && mFigure.GetSkeleton() == nullptr)
    {
        mConsole.Fail(eEXIT_USAGE, "--output: " + pOutput.mPath + " needs a skeleton: write one, too (-o NAME.asf -o " + pOutput.mPath +
                                       "), or name an existing one with --skeleton FILE");
        return false;
    }
    if (pOutput.mKind == eOUT_NPZ && !mOptions.mPreset.empty() && mFigure.GetRoots().size() != 1)
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
            for (const std::string& lFile : FilesOf(lOutput.mKind, lPath))
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

bool KConverter::Commit()
{
    std::vector<qexsdk::KOutputFile*> lOutputs;
    for (const auto& lOutput : mOutputs.mFiles)
    {
        lOutputs.push_back(lOutput.get());
    }
    const qexsdk::KOutputFile* lFailed = qexsdk::KOutputFile::CommitAll(lOutputs.data(), lOutputs.size());
    if (lFailed != nullptr)
    {
        ReportOutputError(*lFailed, lFailed->GetPath(), mConsole);
    }
    return lFailed == nullptr;
}

} // namespace asfapp
