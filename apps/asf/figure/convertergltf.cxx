#include <apps/asf/figure/converter.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>

/// \file
/// Writing figures as glTF; a build without it reports that.

namespace asfapp
{

#ifdef QEX_WITH_GLTF

namespace
{

void PrintGltfMessages(const qexsdk::KQexFileGltf& pFile, const std::string& pDisplayPath, KConsole& pConsole)
{
    for (const qexsdk::KQexTextMessage& lMessage : pFile.GetMessages())
    {
        pConsole.Message(SeverityOf(lMessage), pDisplayPath, 0, lMessage.mText);
    }
}

} // namespace

qexsdk::KQexGltfWriteOptions KConverter::GltfOptions() const
{
    qexsdk::KQexGltfWriteOptions lOptions;
    for (const KSampledTake& lTake : mTakes)
    {
        if (lTake.mTake != nullptr)
        {
            qexsdk::KQexGltfTake lGltfTake;
            lGltfTake.mStack = lTake.mTake->mStack;
            lGltfTake.mSampling = lTake.mSampling;
            lOptions.mTakes.push_back(lGltfTake);
        }
    }
    lOptions.mScale *= mOptions.mScale;
    lOptions.mBoneMesh = mOptions.mMesh != "none";
    lOptions.mThreads = mOptions.mThreads;
    lOptions.mBoneDofs = mFigure.GetBoneDofs();
    return lOptions;
}

bool KConverter::WriteGlb(const KConvertOutput& pOutput)
{
    const std::string            lPath = PathOf(pOutput, mTakes.front());
    qexsdk::KQexGltfWriteOptions lOptions = GltfOptions();
    mOutputs.push_back(std::make_unique<qexsdk::KOutputFile>());
    qexsdk::KOutputFile& lOut = *mOutputs.back();
    if (!OpenOutput(lOut, lPath, mConsole))
    {
        return false;
    }
    qexsdk::KQexFileGltf lFile;
    std::string          lBytes;
    bool                 lOk = false;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = lFile.WriteBuffer(lBytes, mFigure.GetRoots(), lOptions);
    }
    PrintGltfMessages(lFile, DisplayOutput(lPath), mConsole);
    if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    lOut.Write(lBytes.data(), lBytes.size());
    if (!lOut.Prepare())
    {
        ReportOutputError(lOut, lPath, mConsole);
        return false;
    }
    return true;
}

bool KConverter::WriteGltf(const KConvertOutput& pOutput)
{
    const std::string            lPath = PathOf(pOutput, mTakes.front());
    qexsdk::KQexGltfWriteOptions lOptions = GltfOptions();
    qexsdk::KQexFileGltf         lFile;
    bool                         lOk = false;
    lOptions.mPrepared = &mOutputs;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = lFile.Write(lPath, mFigure.GetRoots(), lOptions);
    }
    PrintGltfMessages(lFile, DisplayOutput(lPath), mConsole);
    if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
    }
    return lOk;
}

#else

namespace
{

bool ReportNoGltf(const std::string& pPath, KConsole& pConsole)
{
    pConsole.Message(eERROR, pPath, 0, "is glTF, but this asf was built without it");
    pConsole.Raise(eEXIT_USAGE);
    return false;
}

} // namespace

bool KConverter::WriteGlb(const KConvertOutput& pOutput)
{
    return ReportNoGltf(pOutput.mPath, mConsole);
}

bool KConverter::WriteGltf(const KConvertOutput& pOutput)
{
    return ReportNoGltf(pOutput.mPath, mConsole);
}

#endif

} // namespace asfapp
