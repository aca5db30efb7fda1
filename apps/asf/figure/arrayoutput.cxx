#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/outputs.h>
#include <qexfigure/kqexmotionarrays.h>

#include <new>

namespace asfapp
{

namespace
{

qexsdk::KQexMotionArrayOptions OptionsOf(const KConvertOptions& pOptions, const KSampledTake& pTake)
{
    qexsdk::KQexMotionArrayOptions lOptions;
    KWorldOptions                  lWorld = pOptions.mWorld;
    lOptions.mTake = pTake.mTake;
    lOptions.mSampling = pTake.mSampling;
    if (!pOptions.mPreset.empty())
    {
        lWorld.mUnits = "m";
        lWorld.mUp = "z";
        lOptions.mSet = qexsdk::KQexArraySet::eIMITATION;
    }
    lOptions.mSpace = lWorld.GetSpace();
    return lOptions;
}

class KArrayOutput : public KFrameOutput
{
public:
    using KFrameOutput::KFrameOutput;

    bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) override
    {
        if (!OpenOutput(*mOut, mPath, mOutputs.mConsole) || !CheckArchive(*mOut, mPath, mOutputs.mConsole))
        {
            return false;
        }
        mSink = qexsdk::KQexMakeMotionArrays(mOutputs.mFigure, OptionsOf(mOutputs.mOptions, pTake), mFile);
        if (mSink == nullptr)
        {
            throw std::bad_alloc();
        }
        pSink = mSink.get();
        return true;
    }

    bool EndTake(qexsdk::KQexRunResult pResult) override
    {
        if (pResult != qexsdk::KQexRunResult::eDONE)
        {
            return mOut->HasFailed() && ReportFailure();
        }
        return (mFile.Finish() && mOut->Prepare()) || ReportFailure();
    }

    bool End() override
    {
        mOutputs.mFiles.push_back(std::move(mOut));
        return true;
    }

private:
    bool ReportFailure()
    {
        ReportOutputError(*mOut, mPath, mOutputs.mConsole);
        return false;
    }

    std::unique_ptr<qexsdk::KOutputFile>   mOut = std::make_unique<qexsdk::KOutputFile>();
    qexsdk::KQexNpzFile                    mFile{*mOut};
    std::unique_ptr<qexsdk::KQexFrameSink> mSink;
};

} // namespace

std::unique_ptr<KFrameOutput> MakeArrayOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                              const std::vector<const KSampledTake*>& pTakes)
{
    return std::make_unique<KArrayOutput>(pOutputs, pPath, pTakes);
}

} // namespace asfapp
