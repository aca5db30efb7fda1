#include <apps/asf/figure/frameoutput.h>
#include <apps/asf/outputs.h>
#include <kbaselib/kbase/kpath.h>

#ifdef QEX_WITH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

namespace asfapp
{

namespace
{

#ifdef QEX_WITH_GLTF

class KGltfOutput : public KFrameOutput
{
public:
    using KFrameOutput::KFrameOutput;

    bool BeginTake(const KSampledTake& pTake, qexsdk::KQexFrameSink*& pSink) override
    {
        if (&pTake == mTakes.front() && !Begin())
        {
            return false;
        }
        if (pTake.mTake == nullptr)
        {
            return true;
        }
        mHasSink = true;
        pSink = mFile.BeginTake(mTake);
        return pSink != nullptr || ReportFailure();
    }

    bool EndTake(qexsdk::KQexRunResult pResult) override { return !mHasSink || mFile.EndTake(mTake++, pResult) || ReportFailure(); }

    bool End() override
    {
        if (!HasOwnBuffer())
        {
            return mFile.EndWrite(mPath) ? PrintMessages() : ReportFailure();
        }
        if (!mFile.EndWrite(*mOut))
        {
            return ReportFailure();
        }
        PrintMessages();
        if (!mOut->Prepare())
        {
            ReportOutputError(*mOut, mPath, mOutputs.mConsole);
            return false;
        }
        mOutputs.mFiles.push_back(std::move(mOut));
        return true;
    }

private:
    /// One binary file: .glb, and where there is no name for the buffer of a .gltf.
    bool HasOwnBuffer() const { return qexsdk::KPathExtension(mPath) != ".gltf"; }

    bool Begin()
    {
        qexsdk::KQexGltfWriteOptions lOptions;
        for (const KSampledTake* lTake : mTakes)
        {
            if (lTake->mTake != nullptr)
            {
                qexsdk::KQexGltfTake lGltfTake;
                lGltfTake.mStack = lTake->mTake->mStack;
                lGltfTake.mSampling = lTake->mSampling;
                lOptions.mTakes.push_back(lGltfTake);
            }
        }
        lOptions.mScale *= mOutputs.mOptions.mWorld.mScale;
        lOptions.mBoneMesh = mOutputs.mOptions.mMesh != "none";
        lOptions.mBoneDofs = mOutputs.mFigure.GetBoneDofs();
        lOptions.mPrepared = &mOutputs.mFiles;
        return (!HasOwnBuffer() || OpenOutput(*mOut, mPath, mOutputs.mConsole)) &&
               (mFile.BeginWrite(mOutputs.mFigure.GetRoots(), lOptions) || ReportFailure());
    }

    bool PrintMessages()
    {
        for (const qexsdk::KQexTextMessage& lMessage : mFile.GetMessages())
        {
            mOutputs.mConsole.Message(SeverityOf(lMessage), DisplayOutput(mPath), 0, lMessage.mText);
        }
        return true;
    }

    bool ReportFailure()
    {
        PrintMessages();
        mOutputs.mConsole.Raise(eEXIT_SYSTEM);
        return false;
    }

    qexsdk::KQexFileGltf                 mFile;
    std::unique_ptr<qexsdk::KOutputFile> mOut = std::make_unique<qexsdk::KOutputFile>();
    size_t                               mTake = 0; ///< Index of the next take among those of the file.
    bool                                 mHasSink = false;
};

#else

class KGltfOutput : public KFrameOutput
{
public:
    using KFrameOutput::KFrameOutput;

    bool BeginTake(const KSampledTake&, qexsdk::KQexFrameSink*&) override
    {
        mOutputs.mConsole.Message(eERROR, mPath, 0, "is glTF, but this asf was built without it");
        mOutputs.mConsole.Raise(eEXIT_USAGE);
        return false;
    }

    bool EndTake(qexsdk::KQexRunResult) override { return false; }
    bool End() override { return false; }
};

#endif

} // namespace

std::unique_ptr<KFrameOutput> MakeGltfOutput(KFrameOutputs& pOutputs, const std::string& pPath,
                                             const std::vector<const KSampledTake*>& pTakes)
{
    return std::make_unique<KGltfOutput>(pOutputs, pPath, pTakes);
}

} // namespace asfapp
