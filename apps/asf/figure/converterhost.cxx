#include <apps/asf/figure/converter.h>
#include <apps/asf/outputs.h>
#include <apps/asf/progress.h>

namespace asfapp
{

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
    lOptions.mScale = mOptions.mWorld.GetFactor();
    lOptions.mZUp = mOptions.mWorld.IsZUp();
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
            mConsole.Message(SeverityOf(lMessage), DisplayOutput(pPath), 0, lMessage.mText);
        }
    }
    if (!lOk && lFile.GetOutput().HasFailed())
    {
        ReportOutputError(lFile.GetOutput(), pPath, mConsole);
    }
    else if (!lOk)
    {
        mConsole.Raise(eEXIT_SYSTEM);
    }
    return lOk;
}

} // namespace asfapp
