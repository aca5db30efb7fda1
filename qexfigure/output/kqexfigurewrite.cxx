#include <qexfigure/output/kqexfigurewrite.h>

#include <kbaselib/kbase/kpath.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexfigureworld.h>
#include <qexfigure/output/kqexoutputplan.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

using KNodeList = std::vector<KQexNode*>;

/// The outputs of \p pOutputs that have \p pTake.
std::vector<KQexFrameOutput*> OutputsOf(const KQexOutputList& pOutputs, const KQexSampledTake& pTake)
{
    std::vector<KQexFrameOutput*> lFound;
    for (const auto& lOutput : pOutputs)
    {
        const auto& lTakes = lOutput->GetTakes();
        if (std::binary_search(lTakes.begin(), lTakes.end(), &pTake, std::less<>()))
        {
            lFound.push_back(lOutput.get());
        }
    }
    return lFound;
}

/// The result of a run without sinks.
KQexRunResult SkipFrames(const KQexProgress& pProgress)
{
    return !pProgress || pProgress(1.0) ? KQexRunResult::eDONE : KQexRunResult::eCANCELLED;
}

/// Writes a figure. Every step is false after a failure, which is reported.
class KFigureWriter
{
public:
    KFigureWriter(KQexFigure& pFigure, const KQexFigureWriteOptions& pOptions, KQexFigureReport& pReport)
        : mRun{pOptions, pFigure, pReport, {}}
    {
    }

    bool Run(const std::vector<KQexFigureOutput>& pOutputs)
    {
        // Nothing is replaced if there was no memory for a warning about it.
        return KMakeOutputPlan(mRun, pOutputs, mPlan) && WriteAll() && !mRun.mReport.IsOutOfMemory() && Commit();
    }

private:
    bool          WriteAll();
    bool          WriteFrames(const KQexOutputList& pOutputs, const KNodeList& pRoots);
    bool          WriteTake(const KQexSampledTake& pTake, const std::vector<KQexFrameOutput*>& pOutputs, const KNodeList& pRoots);
    KQexRunResult Evaluate(const KQexSampledTake& pTake, const KNodeList& pRoots, const std::vector<KQexFrameSink*>& pSinks);
    bool          Commit();
    double        CountFrames(const KQexOutputList& pOutputs) const;

    KQexFrameOutputs mRun;
    KQexOutputPlan   mPlan;
    double           mTotal = 0; ///< Frames to evaluate.
    double           mDone = 0;  ///< Those that were.
};

bool KFigureWriter::WriteAll()
{
    const KQexFigureWriteOptions& lOptions = mRun.mOptions;
    KQexFigure&                   lFigure = mRun.mFigure;
    if (!mPlan.mAcclaim.empty() && !lOptions.mZUp && lFigure.GetRoots().size() == 1)
    {
        std::move(mPlan.mAcclaim.begin(), mPlan.mAcclaim.end(), std::back_inserter(mPlan.mOthers));
        mPlan.mAcclaim.clear();
    }
    mTotal = CountFrames(mPlan.mOthers) + CountFrames(mPlan.mAcclaim);
    if (!WriteFrames(mPlan.mOthers, lFigure.GetRoots()))
    {
        return false;
    }
    if (mPlan.mAcclaim.empty())
    {
        return true;
    }
    // The Acclaim exporter has no up axis, so the figure is turned after all others are written; the skeleton of a motion alone is not.
    if (lOptions.mZUp && !TurnFigureZUp(lFigure, mPlan.mHasSkeleton ? eFIGURE_TURN_ALL : eFIGURE_TURN_MOTION))
    {
        throw std::bad_alloc();
    }
    return WriteFrames(mPlan.mAcclaim, {lFigure.GetTop()});
}

double KFigureWriter::CountFrames(const KQexOutputList& pOutputs) const
{
    double lFrames = 0;
    for (const KQexSampledTake& lTake : mPlan.mTakes)
    {
        lFrames += OutputsOf(pOutputs, lTake).empty() ? 0.0 : static_cast<double>(lTake.mSampling.mCount);
    }
    return lFrames;
}

/// Evaluates each take once for all of \p pOutputs that have it.
bool KFigureWriter::WriteFrames(const KQexOutputList& pOutputs, const KNodeList& pRoots)
{
    return std::all_of(mPlan.mTakes.begin(), mPlan.mTakes.end(),
                       [&](const KQexSampledTake& pTake)
                       {
                           const std::vector<KQexFrameOutput*> lOutputs = OutputsOf(pOutputs, pTake);
                           return lOutputs.empty() || WriteTake(pTake, lOutputs, pRoots);
                       });
}

bool KFigureWriter::WriteTake(const KQexSampledTake& pTake, const std::vector<KQexFrameOutput*>& pOutputs, const KNodeList& pRoots)
{
    std::vector<KQexFrameSink*> lSinks;
    for (KQexFrameOutput* lOutput : pOutputs)
    {
        KQexFrameSink* lSink = nullptr;
        if (!lOutput->BeginTake(pTake, lSink))
        {
            return false;
        }
        if (lSink != nullptr)
        {
            lSinks.push_back(lSink);
        }
    }
    const KQexRunResult lResult = Evaluate(pTake, pRoots, lSinks);
    bool                lOk = true;
    for (KQexFrameOutput* lOutput : pOutputs)
    {
        // After a failure every output is asked: the one that failed reports it.
        const bool lIsEnded = lOutput->EndTake(lResult);
        lOk = lOk && lIsEnded && (&pTake != lOutput->GetTakes().back() || lOutput->End());
    }
    return lOk;
}

KQexRunResult KFigureWriter::Evaluate(const KQexSampledTake& pTake, const KNodeList& pRoots, const std::vector<KQexFrameSink*>& pSinks)
{
    const KQexFigureWriteOptions& lOptions = mRun.mOptions;
    const double                  lCount = static_cast<double>(pTake.mSampling.mCount);
    KQexProgress                  lProgress;
    if (lOptions.mProgress)
    {
        lProgress = [&](double pFraction)
        {
            return lOptions.mProgress((mDone + pFraction * lCount) / mTotal);
        };
    }
    const KQexRunResult lResult = pSinks.empty() ? SkipFrames(lProgress)
                                                 : KQexRunFrames(pRoots, pTake.GetLayer(), pTake.mSampling, pSinks.data(), pSinks.size(),
                                                                 lOptions.mThreads, lProgress);
    mDone += lCount;
    if (lResult == KQexRunResult::eOUT_OF_MEMORY)
    {
        throw std::bad_alloc();
    }
    if (lResult == KQexRunResult::eCANCELLED)
    {
        mRun.mReport.SetCancelled();
    }
    return lResult;
}

bool KFigureWriter::Commit()
{
    std::vector<KOutputFile*> lOutputs;
    for (const auto& lOutput : mRun.mFiles)
    {
        lOutputs.push_back(lOutput.get());
    }
    const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs.data(), lOutputs.size());
    return lFailed == nullptr || KQexReportOutputError(*lFailed, lFailed->GetPath(), mRun.mReport);
}

} // namespace

bool KQexOutputFormatOf(const std::string& pPath, KQexOutputFormat& pFormat)
{
    static const char* const sExtensions[] = {".asf", ".amc", ".bvh", ".glb", ".gltf", ".npz", ".csv"};
    const std::string        lExtension = KPathExtension(pPath);
    const auto* const        lFound = std::find(std::begin(sExtensions), std::end(sExtensions), lExtension);
    if (lFound == std::end(sExtensions))
    {
        return false;
    }
    pFormat = static_cast<KQexOutputFormat>(lFound - std::begin(sExtensions));
    return true;
}

bool KQexHoldsOneTake(KQexOutputFormat pFormat)
{
    return pFormat != eOUTPUT_ASF && pFormat != eOUTPUT_GLB && pFormat != eOUTPUT_GLTF;
}

bool KQexWriteFigure(KQexFigure& pFigure, const std::vector<KQexFigureOutput>& pOutputs, const KQexFigureWriteOptions& pOptions,
                     KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return KFigureWriter(pFigure, pOptions, pReport).Run(pOutputs); });
}

} // namespace qexsdk
