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

std::vector<std::unique_ptr<KFrameOutput>> KConverter::MakeFrameOutputs()
{
    std::vector<std::unique_ptr<KFrameOutput>> lOutputs;
    for (const KConvertOutput& lOutput : mOptions.mTargets)
    {
        for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(lOutput))
        {
            const std::string lPath = PathOf(lOutput, *lTakes.front());
            if (lOutput.mKind == eOUT_BVH)
            {
                lOutputs.push_back(MakeBvhOutput(mOutputs, lPath, lTakes));
            }
            else if (lOutput.mKind == eOUT_GLB || lOutput.mKind == eOUT_GLTF)
            {
                lOutputs.push_back(MakeGltfOutput(mOutputs, lPath, lTakes));
            }
            else if (lOutput.mKind == eOUT_NPZ)
            {
                lOutputs.push_back(MakeArrayOutput(mOutputs, lPath, lTakes));
            }
        }
    }
    return lOutputs;
}

bool KConverter::WriteFrames()
{
    const std::vector<std::unique_ptr<KFrameOutput>> lOutputs = MakeFrameOutputs();
    for (const KSampledTake& lTake : mTakes)
    {
        std::vector<KFrameOutput*> lOfTake;
        for (const auto& lOutput : lOutputs)
        {
            if (HasTake(*lOutput, lTake))
            {
                lOfTake.push_back(lOutput.get());
            }
        }
        if (!WriteTake(lTake, lOfTake))
        {
            return false;
        }
    }
    return true;
}

bool KConverter::WriteTake(const KSampledTake& pTake, const std::vector<KFrameOutput*>& pOutputs)
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
    const qexsdk::KQexRunResult lResult = Evaluate(pTake, lSinks);
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

qexsdk::KQexRunResult KConverter::Evaluate(const KSampledTake& pTake, const std::vector<qexsdk::KQexFrameSink*>& pSinks) const
{
    KProgress lProgress("writing", mConsole);
    return qexsdk::KQexRunFrames(mFigure.GetRoots(), pTake.GetLayer(), pTake.mSampling, pSinks.data(), pSinks.size(), mOptions.mThreads,
                                 lProgress.GetFunction());
}

} // namespace asfapp
