#include <apps/asf/figure/converter.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>
#include <kbaselib/kbase/kpath.h>

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

qexsdk::KQexGltfWriteOptions KConverter::GltfOptions(const std::vector<const KSampledTake*>& pTakes) const
{
    qexsdk::KQexGltfWriteOptions lOptions;
    for (const KSampledTake* lTake : pTakes)
    {
        if (lTake->mTake != nullptr)
        {
            qexsdk::KQexGltfTake lGltfTake;
            lGltfTake.mStack = lTake->mTake->mStack;
            lGltfTake.mSampling = lTake->mSampling;
            lOptions.mTakes.push_back(lGltfTake);
        }
    }
    lOptions.mScale *= mOptions.mWorld.mScale;
    lOptions.mBoneMesh = mOptions.mMesh != "none";
    lOptions.mThreads = mOptions.mThreads;
    lOptions.mBoneDofs = mFigure.GetBoneDofs();
    return lOptions;
}

bool KConverter::WriteGlb(const std::string& pPath, const std::vector<const KSampledTake*>& pTakes)
{
    qexsdk::KQexGltfWriteOptions lOptions = GltfOptions(pTakes);
    mOutputs.push_back(std::make_unique<qexsdk::KOutputFile>());
    qexsdk::KOutputFile& lOut = *mOutputs.back();
    if (!OpenOutput(lOut, pPath, mConsole))
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
    PrintGltfMessages(lFile, DisplayOutput(pPath), mConsole);
    if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    lOut.Write(lBytes.data(), lBytes.size());
    if (!lOut.Prepare())
    {
        ReportOutputError(lOut, pPath, mConsole);
        return false;
    }
    return true;
}

bool KConverter::WriteGltf(const std::string& pPath, const std::vector<const KSampledTake*>& pTakes)
{
    if (qexsdk::KPathExtension(pPath) != ".gltf")
    {
        // Without a name there is no place for the buffer: one binary file.
        return WriteGlb(pPath, pTakes);
    }
    qexsdk::KQexGltfWriteOptions lOptions = GltfOptions(pTakes);
    qexsdk::KQexFileGltf         lFile;
    bool                         lOk = false;
    lOptions.mPrepared = &mOutputs;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = lFile.Write(pPath, mFigure.GetRoots(), lOptions);
    }
    PrintGltfMessages(lFile, DisplayOutput(pPath), mConsole);
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

bool KConverter::WriteGlb(const std::string& pPath, const std::vector<const KSampledTake*>&)
{
    return ReportNoGltf(pPath, mConsole);
}

bool KConverter::WriteGltf(const std::string& pPath, const std::vector<const KSampledTake*>&)
{
    return ReportNoGltf(pPath, mConsole);
}

#endif

bool KConverter::WriteGltfs(const KConvertOutput& pOutput)
{
    for (const std::vector<const KSampledTake*>& lTakes : GroupsOf(pOutput))
    {
        const std::string lPath = PathOf(pOutput, *lTakes.front());
        if (!(pOutput.mKind == eOUT_GLB ? WriteGlb(lPath, lTakes) : WriteGltf(lPath, lTakes)))
        {
            return false;
        }
    }
    return true;
}

} // namespace asfapp
