#include <apps/asf/figure/converter.h>

#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <qexioplugins/motion/kqexsafenames.h>

#include <cmath>
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

bool IsOneTakeAFile(EOutputKind pKind)
{
    return pKind == eOUT_AMC || pKind == eOUT_BVH;
}

qexsdk::KTime TimeOf(const KMoment& pMoment, const qexsdk::KQexSampling& pFrames)
{
    if (pMoment.mIsFrame)
    {
        return qexsdk::KTime(pFrames.mStart.Get() + std::llround(pMoment.mValue * static_cast<double>(pFrames.mStep.Get())));
    }
    return qexsdk::KTime::FromSeconds(pMoment.mValue);
}

} // namespace

KConverter::KConverter(const KConvertOptions& pOptions, KFigureScene& pFigure, std::vector<std::string> pInputs, KConsole& pConsole)
    : mOptions(pOptions), mFigure(pFigure), mInputs(std::move(pInputs)), mConsole(pConsole)
{
}

KConverter::~KConverter()
{
    // A text file that goes out of scope would complete itself. To those that have their names this does nothing.
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
        if ((lOutput.mKind == eOUT_BVH && !WriteBvhs(lOutput)) || (lOutput.mKind == eOUT_GLB && !WriteGlb(lOutput)))
        {
            return false;
        }
    }
    // These take their names by themselves once they are complete; the others follow.
    const KConvertOutput* lGltf = FindTarget(eOUT_GLTF);
    const bool            lAcclaim = FindTarget(eOUT_ASF) != nullptr || FindTarget(eOUT_AMC) != nullptr;
    return (lGltf == nullptr || WriteGltf(*lGltf)) && (!lAcclaim || WriteAcclaim());
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

bool KConverter::SampleTakes()
{
    qexsdk::KQexUniqueNames lNames;
    for (const KFigureTake& lTake : mFigure.GetTakes())
    {
        KSampledTake lSampled;
        lSampled.mTake = &lTake;
        lSampled.mName = lNames.Make(qexsdk::MakeSafeName(lTake.mName, "take", [](char pC) { return pC != '/' && pC != '\0'; }));
        mTakes.push_back(lSampled);
    }
    if (mTakes.empty())
    {
        mTakes.emplace_back();
        mTakes.back().mName = "rest";
    }
    for (KSampledTake& lTake : mTakes)
    {
        if (!SampleTake(lTake))
        {
            mConsole.Fail(eEXIT_CALL, "there are no frames in the part of " + lTake.mName + " that --start and --end leave");
            return false;
        }
        if (lTake.mTake != nullptr && !CheckSpan(*lTake.mTake, lTake.mSampling, mConsole))
        {
            return false;
        }
    }
    return true;
}

bool KConverter::SampleTake(KSampledTake& pTake) const
{
    qexsdk::KQexAnimStack* lStack = pTake.mTake != nullptr ? pTake.mTake->mStack : nullptr;
    qexsdk::KQexSampling   lFrames;
    if (!qexsdk::MakeSampling(mFigure.GetRoots(), lStack, {}, lFrames))
    {
        return false;
    }
    const bool lIsSingle = pTake.mTake == nullptr || pTake.mTake->mIsSingle;
    pTake.mRequest.mFramesPerSecond = mOptions.mRate;
    pTake.mRequest.mEvery = mOptions.mEvery;
    pTake.mRequest.mHasStart = mOptions.mSince.mIsSet;
    pTake.mRequest.mStart = TimeOf(mOptions.mSince, lFrames);
    pTake.mRequest.mHasEnd = mOptions.mUntil.mIsSet || lIsSingle;
    pTake.mRequest.mEnd = mOptions.mUntil.mIsSet ? TimeOf(mOptions.mUntil, lFrames) : lFrames.mStart;
    // Behind the last frame, and in front of the first one, there is nothing to write.
    const long long lFirst = lFrames.mStart.Get();
    const long long lLast = lIsSingle ? lFirst : lFrames.GetTime(lFrames.mCount - 1).Get();
    if ((pTake.mRequest.mHasStart && pTake.mRequest.mStart.Get() > lLast) || (pTake.mRequest.mHasEnd && pTake.mRequest.mEnd.Get() < lFirst))
    {
        return false;
    }
    pTake.mRequest.mStart = qexsdk::KTime(std::max(pTake.mRequest.mStart.Get(), lFirst));
    pTake.mRequest.mEnd = qexsdk::KTime(std::min(pTake.mRequest.mEnd.Get(), lLast));
    return qexsdk::MakeSampling(mFigure.GetRoots(), lStack, pTake.mRequest, pTake.mSampling);
}

std::string KConverter::PathOf(const KConvertOutput& pOutput, const KSampledTake& pTake) const
{
    std::string  lPath = pOutput.mPath;
    const size_t lPlace = lPath.find(kNameField);
    return lPlace == std::string::npos ? lPath : lPath.replace(lPlace, kNameField.size(), pTake.mName);
}

bool KConverter::CheckTargets()
{
    std::set<std::string> lPaths;
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        if (IsOneTakeAFile(lOutput.mKind) && mTakes.size() > 1 && !HasNameField(lOutput))
        {
            mConsole.Fail(eEXIT_CALL, "--output: there are " + std::to_string(mTakes.size()) + " takes, and " + lOutput.mPath +
                                          " holds one: put {name} into it, or choose one with --take");
            return false;
        }
        if (lOutput.mKind == eOUT_AMC && mFigure.GetTakes().empty())
        {
            mConsole.Fail(eEXIT_CALL, "--output: there is no motion to write to " + lOutput.mPath);
            return false;
        }
        if (lOutput.mKind == eOUT_AMC && mOptions.mTargets.size() == 1 && mOptions.mSkeleton.empty() && mFigure.GetSkeleton() == nullptr)
        {
            mConsole.Fail(eEXIT_CALL, "--output: " + lOutput.mPath + " needs a skeleton: write one beside it (-o NAME.asf -o " +
                                          lOutput.mPath + "), or tell with --skeleton FILE which it is for");
            return false;
        }
        for (size_t lTake = 0; lTake < (IsOneTakeAFile(lOutput.mKind) ? mTakes.size() : 1); ++lTake)
        {
            const std::string lPath = PathOf(lOutput, mTakes[lTake]);
            if (!lPaths.insert(lPath).second)
            {
                mConsole.Fail(eEXIT_CALL, "--output: " + lPath + " would be written twice");
                return false;
            }
            const std::string lNumbers = lOutput.mKind == eOUT_GLTF ? lPath.substr(0, lPath.find_last_of('.')) + ".bin" : lPath;
            if (!CheckOutput(lPath, mInputs, mConsole) || !CheckOutput(lNumbers, mInputs, mConsole))
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
    for (const auto& lGlb : mGlbs)
    {
        lOutputs.push_back(lGlb.get());
    }
    const qexsdk::KOutputFile* lFailed = qexsdk::KOutputFile::CommitAll(lOutputs.data(), lOutputs.size());
    if (lFailed != nullptr)
    {
        ReportOutput(*lFailed, lFailed->GetPath(), mConsole);
    }
    return lFailed == nullptr;
}

} // namespace asfapp
