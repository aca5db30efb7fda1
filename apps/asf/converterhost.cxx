#include <apps/asf/converter.h>

#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>

namespace asfapp
{

namespace
{

ESeverity SeverityOf(const qexsdk::KQexTextMessage& pMessage)
{
    return pMessage.mSeverity == qexsdk::KQexTextMessage::eERROR ? eERROR : eWARNING;
}

std::string ShownOutput(const std::string& pPath)
{
    return pPath == "-" ? "standard output" : pPath;
}

} // namespace

bool KConverter::WriteBvhs(const KConvertOutput& pOutput)
{
    for (const KSampledTake& lTake : mTakes)
    {
        if (!WriteBvh(PathOf(pOutput, lTake), lTake))
        {
            return false;
        }
    }
    return true;
}

bool KConverter::WriteBvh(const std::string& pPath, const KSampledTake& pTake)
{
    qexsdk::KQexBvhWriteOptions lOptions;
    lOptions.mStack = pTake.mTake != nullptr ? pTake.mTake->mStack : nullptr;
    lOptions.mSampling = pTake.mSampling;
    lOptions.mOrder = mOptions.mOrder;
    lOptions.mScale = mOptions.mScale;
    lOptions.mZUp = mOptions.mUp == "z";
    lOptions.mThreads = mOptions.mThreads;

    mBvhs.push_back(std::make_unique<qexsdk::KQexFileBvh>(false));
    qexsdk::KQexFileBvh& lFile = *mBvhs.back();
    bool                 lOk = false;
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = lFile.OpenWrite(pPath.c_str()) && lFile.Write(mFigure.GetRoots(), lOptions) && lFile.GetOutput().Prepare();
    }
    for (const qexsdk::KQexTextMessage& lMessage : lFile.GetMessages())
    {
        if (SeverityOf(lMessage) == eWARNING || !lFile.GetOutput().HasFailed())
        {
            mConsole.Message(SeverityOf(lMessage), ShownOutput(pPath), 0, lMessage.mText);
        }
    }
    if (!lOk && lFile.GetOutput().HasFailed())
    {
        ReportOutput(lFile.GetOutput(), pPath, mConsole);
    }
    else if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
    }
    return lOk;
}

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
    mGlbs.push_back(std::make_unique<qexsdk::KOutputFile>());
    qexsdk::KOutputFile& lOut = *mGlbs.back();
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
    for (const qexsdk::KQexTextMessage& lMessage : lFile.GetMessages())
    {
        mConsole.Message(SeverityOf(lMessage), ShownOutput(lPath), 0, lMessage.mText);
    }
    if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    lOut.Write(lBytes.data(), lBytes.size());
    if (!lOut.Prepare())
    {
        ReportOutput(lOut, lPath, mConsole);
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
    {
        KProgress lProgress("writing", mConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = lFile.Write(lPath, mFigure.GetRoots(), lOptions);
    }
    for (const qexsdk::KQexTextMessage& lMessage : lFile.GetMessages())
    {
        mConsole.Message(SeverityOf(lMessage), ShownOutput(lPath), 0, lMessage.mText);
    }
    if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
    }
    return lOk;
}

} // namespace asfapp
