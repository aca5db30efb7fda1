#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/outputs.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

namespace asfapp
{

namespace
{

class KBvhOutput : public KFrameOutput
{
public:
    using KFrameOutput::KFrameOutput;

    /// A text file completes its output when it is destroyed.
    ~KBvhOutput() override { mFile.Discard(); }

    bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) override
    {
        const KConvertOptions&      lAll = mOutputs.mOptions;
        qexsdk::KQexBvhWriteOptions lOptions;
        lOptions.mStack = pTake.mTake != nullptr ? pTake.mTake->mStack : nullptr;
        lOptions.mSampling = pTake.mSampling;
        lOptions.mOrder = lAll.mOrder;
        lOptions.mScale = lAll.mWorld.GetFactor();
        lOptions.mZUp = lAll.mWorld.IsZUp();
        pSink = mFile.OpenWrite(mPath.c_str()) ? mFile.BeginWrite(mOutputs.mFigure.GetRoots(), lOptions) : nullptr;
        return pSink != nullptr || ReportFailure();
    }

    bool EndTake(qexsdk::KQexRunResult pResult) override
    {
        if (!mFile.EndWrite(pResult) || !mFile.GetOutput().Prepare())
        {
            return ReportFailure();
        }
        PrintMessages();
        return true;
    }

    bool End() override
    {
        mOutputs.mFiles.push_back(std::make_unique<qexsdk::KOutputFile>(mFile.ReleaseOutput()));
        return true;
    }

private:
    void PrintMessages()
    {
        for (const qexsdk::KQexTextMessage& lMessage : mFile.GetMessages())
        {
            if (SeverityOf(lMessage) == eWARNING || !mFile.GetOutput().HasFailed())
            {
                mOutputs.mConsole.Message(SeverityOf(lMessage), DisplayOutput(mPath), 0, lMessage.mText);
            }
        }
    }

    bool ReportFailure()
    {
        PrintMessages();
        if (mFile.GetOutput().HasFailed())
        {
            ReportOutputError(mFile.GetOutput(), mPath, mOutputs.mConsole);
        }
        else
        {
            mOutputs.mConsole.Raise(eEXIT_SYSTEM);
        }
        return false;
    }

    qexsdk::KQexFileBvh mFile{false};
};

} // namespace

std::unique_ptr<KFrameOutput> MakeBvhOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                            const std::vector<const KSampledTake*>& pTakes)
{
    return std::make_unique<KBvhOutput>(pOutputs, pPath, pTakes);
}

} // namespace asfapp
