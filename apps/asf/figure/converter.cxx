#include <apps/asf/figure/converter.h>

#include <apps/asf/outputs.h>

#include <set>
#include <utility>

namespace asfapp
{

namespace
{

const std::string kNameField = "{name}";

bool HasNameField(const KConvertOutput& pOutput)
{
    return pOutput.mPath.find(kNameField) != std::string::npos;
}

bool HoldsOneTake(EOutputKind pKind)
{
    return pKind == eOUT_AMC || pKind == eOUT_BVH;
}

} // namespace

KConverter::KConverter(const KConvertOptions& pOptions, qexsdk::KQexFigure& pFigure, std::vector<std::string> pInputs, KConsole& pConsole)
    : mOptions(pOptions), mFigure(pFigure), mInputs(std::move(pInputs)), mConsole(pConsole)
{
}

KConverter::~KConverter()
{
    // The destructor of an open text file would complete it. Committed files are not affected.
    for (const auto& lBvh : mBvhs)
    {
        lBvh->Discard();
    }
}

void KConverter::Run()
{
    if (!mOptions.mLimits)
    {
        mFigure.DropLimits();
    }
    if (SampleTakes() && CheckTargets() && WriteAll())
    {
        Commit();
    }
}

bool KConverter::WriteAll()
{
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        if ((lOutput.mKind == eOUT_BVH && !WriteBvhs(lOutput)) || (lOutput.mKind == eOUT_GLB && !WriteGlb(lOutput)) ||
            (lOutput.mKind == eOUT_GLTF && !WriteGltf(lOutput)))
        {
            return false;
        }
    }
    const bool lAcclaim = FindTarget(eOUT_ASF) != nullptr || FindTarget(eOUT_AMC) != nullptr;
    return !lAcclaim || WriteAcclaim();
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
    std::string  lPath = pOutput.mPath;
    const size_t lField = lPath.find(kNameField);
    return lField == std::string::npos ? lPath : lPath.replace(lField, kNameField.size(), pTake.mName);
}

bool KConverter::CheckTargets()
{
    std::set<std::string> lPaths;
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        if (HoldsOneTake(lOutput.mKind) && mTakes.size() > 1 && !HasNameField(lOutput))
        {
            mConsole.Fail(eEXIT_USAGE, "--output: " + lOutput.mPath + " holds one take, but there are " + std::to_string(mTakes.size()) +
                                           ": put {name} into its name, or choose one with --take");
            return false;
        }
        if (lOutput.mKind == eOUT_AMC && mFigure.GetTakes().empty())
        {
            mConsole.Fail(eEXIT_USAGE, "--output: there is no motion to write to " + lOutput.mPath);
            return false;
        }
        if (lOutput.mKind == eOUT_AMC && mOptions.mTargets.size() == 1 && mOptions.mSkeleton.empty() && mFigure.GetSkeleton() == nullptr)
        {
            mConsole.Fail(eEXIT_USAGE, "--output: " + lOutput.mPath + " needs a skeleton: write one, too (-o NAME.asf -o " + lOutput.mPath +
                                           "), or name an existing one with --skeleton FILE");
            return false;
        }
        for (size_t lTake = 0; lTake < (HoldsOneTake(lOutput.mKind) ? mTakes.size() : 1); ++lTake)
        {
            const std::string lPath = PathOf(lOutput, mTakes[lTake]);
            if (!lPaths.insert(lPath).second)
            {
                mConsole.Fail(eEXIT_USAGE, "--output: " + lPath + " would be written twice");
                return false;
            }
            const std::string lBuffer = lOutput.mKind == eOUT_GLTF ? lPath.substr(0, lPath.find_last_of('.')) + ".bin" : lPath;
            if (!CheckOutput(lPath, mInputs, mConsole) || !CheckOutput(lBuffer, mInputs, mConsole))
            {
                return false;
            }
        }
    }
    return true;
}

bool KConverter::Commit()
{
    std::vector<qexsdk::KOutputFile*> lOutputs;
    for (const auto& lBvh : mBvhs)
    {
        lOutputs.push_back(&lBvh->GetOutput());
    }
    for (const auto& lOutput : mOutputs)
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
