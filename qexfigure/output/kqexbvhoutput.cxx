#include <qexfigure/output/kqexframeoutput.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

namespace qexsdk
{

namespace
{

class KBvhOutput : public KQexFrameOutput
{
public:
    using KQexFrameOutput::KQexFrameOutput;

    /// A text file completes its output when it is destroyed.
    ~KBvhOutput() override { mFile.Discard(); }

    bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) override
    {
        const KQexOutputSpace lSpace = GetSpace();
        KQexBvhWriteOptions   lOptions;
        lOptions.mStack = pTake.GetStack();
        lOptions.mSampling = pTake.mSampling;
        lOptions.mOrder = mOutputs.mOptions.mOrder;
        lOptions.mScale = lSpace.mPerCentimetre;
        lOptions.mZUp = lSpace.mZUp;
        pSink = mFile.OpenWrite(mPath.c_str()) ? mFile.BeginWrite(mOutputs.mFigure.GetRoots(), lOptions) : nullptr;
        return pSink != nullptr || ReportWriteFailure();
    }

    bool EndTake(KQexRunResult pResult) override
    {
        const bool lIsWritten = mFile.EndWrite(pResult) && mFile.GetOutput().Prepare();
        if (!lIsWritten && pResult != KQexRunResult::eDONE && !mFile.GetOutput().HasFailed())
        {
            return false; // Another output failed.
        }
        if (!lIsWritten)
        {
            return ReportWriteFailure();
        }
        AddMessages(mFile.GetMessages());
        return true;
    }

    bool End() override
    {
        mOutputs.mFiles.push_back(std::make_unique<KOutputFile>(mFile.ReleaseOutput()));
        return true;
    }

private:
    bool ReportWriteFailure()
    {
        if (!mFile.GetOutput().HasFailed())
        {
            return ReportFailure(mFile.GetMessages());
        }
        for (const KQexTextMessage& lMessage : mFile.GetMessages())
        {
            if (lMessage.mSeverity == KQexTextMessage::eWARNING)
            {
                mOutputs.mReport.Add(KQexDisplayOutput(mPath), lMessage);
            }
        }
        return ReportFailure(mFile.GetOutput());
    }

    KQexFileBvh mFile{false};
};

} // namespace

std::unique_ptr<KQexFrameOutput> KMakeBvhOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                const std::vector<const KQexSampledTake*>& pTakes)
{
    return std::make_unique<KBvhOutput>(pOutputs, pPath, pTakes);
}

} // namespace qexsdk
