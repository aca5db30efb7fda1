#include <apps/asf/figure/converter.h>
#include <apps/asf/progress.h>

#include <algorithm>
#include <new>

/// \file
/// The frames of each take, evaluated once for all outputs.

namespace asfapp
{

namespace
{

bool HasTake(const KFrameOutput& pOutput, const KSampledTake& pTake)
{
    return std::find(pOutput.GetTakes().begin(), pOutput.GetTakes().end(), &pTake) != pOutput.GetTakes().end();
}

} // namespace

void KConverter::MakeOtherOutputs(KOutputList& pOutputs)
{
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(lOutput))
        {
            const std::string lPath = PathOf(lOutput, *lTakes.front());
            if (lOutput.mKind == eOUT_BVH)
            {
                pOutputs.push_back(MakeBvhOutput(mOutputs, lPath, lTakes));
            }
            else if (lOutput.mKind == eOUT_GLB || lOutput.mKind == eOUT_GLTF)
            {
                pOutputs.push_back(MakeGltfOutput(mOutputs, lPath, lTakes));
            }
            else if (lOutput.mKind == eOUT_NPZ)
            {
                pOutputs.push_back(MakeArrayOutput(mOutputs, lPath, lTakes));
            }
            else if (lOutput.mKind == eOUT_CSV)
            {
                pOutputs.push_back(MakeTableOutput(mOutputs, lPath, lTakes));
            }
        }
    }
}

/// The skeletons with their motions, or motions alone. False after an error.
bool KConverter::MakeAcclaimOutputs(KOutputList& pOutputs)
{
    const KConvertOutput* lAmc = FindTarget(eOUT_AMC);
    const KConvertOutput* lMain = FindTarget(eOUT_ASF);
    KAcclaimTarget        lTarget;
    if (lMain == nullptr && lAmc != nullptr)
    {
        lMain = lAmc;
        lTarget.mSkeleton = mFigure.GetSkeleton();
        lTarget.mSkeletonNotes = mFigure.GetSkeletonNotes();
        if (!mOptions.mSkeleton.empty() && !ReadSkeleton(mOptions.mSkeleton, lTarget))
        {
            return false;
        }
    }
    if (lMain == nullptr)
    {
        return true;
    }
    for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(*lMain))
    {
        lTarget.mMotions.clear();
        for (size_t i = 0; i < lTakes.size() && lAmc != nullptr; ++i)
        {
            lTarget.mMotions.push_back(PathOf(*lAmc, *lTakes[i]));
        }
        pOutputs.push_back(MakeAcclaimOutput(mOutputs, PathOf(*lMain, *lTakes.front()), lTakes, lTarget));
    }
    return true;
}

bool KConverter::ReadSkeleton(const std::string& pPath, KAcclaimTarget& pTarget)
{
    qexsdk::KQexFigureFile lFile;
    if (!OpenFile(lFile, pPath, mConsole))
    {
        return false;
    }
    qexsdk::KQexImportAcclaimResult lResult;
    mSkeleton = qexsdk::KQexImporterAcclaim::ReadSkeleton(lFile.GetSource(), {}, lResult);
    pTarget.mSkeleton = mSkeleton.get();
    pTarget.mSkeletonNotes = lResult.mSkeletonNotes;
    PrintMessages(lResult, mConsole);
    if (!mSkeleton)
    {
        mConsole.Raise(lFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
    }
    return mSkeleton != nullptr;
}

/// Evaluates each take once for all of \p pOutputs that have it.
bool KConverter::WriteFrames(const KOutputList& pOutputs, const std::vector<qexsdk::KQexNode*>& pRoots)
{
    for (const KSampledTake& lTake : mTakes)
    {
        std::vector<KFrameOutput*> lOfTake;
        for (const auto& lOutput : pOutputs)
        {
            if (HasTake(*lOutput, lTake))
            {
                lOfTake.push_back(lOutput.get());
            }
        }
        if (!WriteTake(lTake, lOfTake, pRoots))
        {
            return false;
        }
    }
    return true;
}

bool KConverter::WriteTake(const KSampledTake& pTake, const std::vector<KFrameOutput*>& pOutputs,
                           const std::vector<qexsdk::KQexNode*>& pRoots)
{
    std::vector<qexsdk::KQexFrameSink*> lSinks;
    for (KFrameOutput* lOutput : pOutputs)
    {
        qexsdk::KQexFrameSink* lSink = nullptr;
        if (!lOutput->BeginTake(pTake, lSink))
        {
            return false;
        }
        if (lSink != nullptr)
        {
            lSinks.push_back(lSink);
        }
    }
    const qexsdk::KQexRunResult lResult = Evaluate(pTake, pRoots, lSinks);
    if (lResult == qexsdk::KQexRunResult::eOUT_OF_MEMORY)
    {
        throw std::bad_alloc();
    }
    bool lOk = true;
    for (KFrameOutput* lOutput : pOutputs)
    {
        // After a failure every output is asked: the one that failed reports it.
        const bool lIsEnded = lOutput->EndTake(lResult);
        lOk = lOk && lIsEnded && (&pTake != lOutput->GetTakes().back() || lOutput->End());
    }
    return lOk;
}

qexsdk::KQexRunResult KConverter::Evaluate(const KSampledTake& pTake, const std::vector<qexsdk::KQexNode*>& pRoots,
                                           const std::vector<qexsdk::KQexFrameSink*>& pSinks) const
{
    KProgress lProgress("writing", mConsole);
    return qexsdk::KQexRunFrames(pRoots, pTake.GetLayer(), pTake.mSampling, pSinks.data(), pSinks.size(), mOptions.mThreads,
                                 lProgress.GetFunction());
}

} // namespace asfapp
