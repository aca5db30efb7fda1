#include <kbaselib/kbase/kpath.h>
#include <qexfigure/output/kqexframeoutput.h>

#ifdef QEX_WITH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

namespace qexsdk
{

namespace
{

#ifdef QEX_WITH_GLTF

class KGltfOutput : public KQexFileOutput
{
public:
    using KQexFileOutput::KQexFileOutput;

    bool BeginTake(const KQexSampledTake& pTake, KQexFrameSink*& pSink) override
    {
        if (&pTake == mTakes.front() && !Begin())
        {
            return false;
        }
        mHasSink = pTake.mTake != nullptr;
        if (mHasSink)
        {
            pSink = mFile.BeginTake(mTake);
        }
        return !mHasSink || pSink != nullptr || ReportFailure(mFile.GetMessages());
    }

    bool EndTake(KQexRunResult pResult) override
    {
        // Frames are kept in memory: a run that was stopped has failed elsewhere.
        return pResult == KQexRunResult::eDONE && (!mHasSink || mFile.EndTake(mTake++, pResult) || ReportFailure(mFile.GetMessages()));
    }

    bool End() override
    {
        const bool lIsWritten = HasOwnBuffer() ? mFile.EndWrite(*mOut) : mFile.EndWrite(mPath);
        if (!lIsWritten)
        {
            return ReportFailure(mFile.GetMessages());
        }
        AddMessages(mFile.GetMessages());
        return !HasOwnBuffer() || (mOut->Prepare() ? KQexFileOutput::End() : ReportFailure(*mOut));
    }

private:
    /// One binary file: .glb, and where there is no name for the buffer of a .gltf.
    bool HasOwnBuffer() const { return KPathExtension(mPath) != ".gltf"; }

    bool Begin()
    {
        KQexGltfWriteOptions lOptions;
        for (const KQexSampledTake* lTake : mTakes)
        {
            if (lTake->mTake != nullptr)
            {
                KQexGltfTake lGltfTake;
                lGltfTake.mStack = lTake->mTake->mStack;
                lGltfTake.mSampling = lTake->mSampling;
                lOptions.mTakes.push_back(lGltfTake);
            }
        }
        lOptions.mScale *= mOutputs.mOptions.mScale;
        lOptions.mBoneMesh = mOutputs.mOptions.mBoneMesh;
        lOptions.mBoneDofs = mOutputs.mFigure.GetBoneDofs();
        lOptions.mPrepared = &mOutputs.mFiles;
        return (!HasOwnBuffer() || Open(*mOut)) &&
               (mFile.BeginWrite(mOutputs.mFigure.GetRoots(), lOptions) || ReportFailure(mFile.GetMessages()));
    }

    KQexFileGltf mFile;
    size_t       mTake = 0;        ///< Index of the next take among those of the file.
    bool         mHasSink = false; ///< The current take has frames.
};

#else

class KGltfOutput : public KQexFrameOutput
{
public:
    using KQexFrameOutput::KQexFrameOutput;

    bool BeginTake(const KQexSampledTake&, KQexFrameSink*&) override { return Refuse("is glTF, but this program was built without it"); }

    bool EndTake(KQexRunResult) override { return false; }
    bool End() override { return false; }
};

#endif

} // namespace

std::unique_ptr<KQexFrameOutput> KMakeGltfOutput(KQexFrameOutputs& pOutputs, const std::string& pPath,
                                                 const std::vector<const KQexSampledTake*>& pTakes)
{
    return std::make_unique<KGltfOutput>(pOutputs, pPath, pTakes);
}

} // namespace qexsdk
