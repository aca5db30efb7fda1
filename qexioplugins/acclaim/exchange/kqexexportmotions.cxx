#include <qexioplugins/acclaim/exchange/kqexasfpairing.h>
#include <qexioplugins/acclaim/exchange/kqexexportrun.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <filesystem>
#include <iterator>
#include <utility>

/// \file
/// The motions of an export, and committing.

namespace qexsdk
{

KQexAnimStack* KQexExportRun::TakeOrCurrent(KQexAnimStack* pStack) const
{
    return pStack != nullptr ? pStack : mRoot->GetScene()->GetEvaluator()->GetContext();
}

bool KQexExportRun::UseSkeleton(KQexAsfScene* pSkeleton, const char* pAmcPath)
{
    mMotions = {KQexExportMotion{pAmcPath != nullptr ? pAmcPath : "", TakeOrCurrent(mOptions.mStack), mOptions.mSampling}};
    mResult.mSamplings.resize(1);
    KQexAsfPairing lPairing = PairBones(mRoot, *pSkeleton, mMotions.front().mStack);
    mResult.mUnmatched = std::move(lPairing.mUnmatched);
    mResult.mMatch = std::move(lPairing.mMatch);
    if (!mOptions.mAllowUnmatched && !mResult.mMatch.IsPlausible())
    {
        mResult.mIsMismatch = true;
        return FailExport(mResult, pAmcPath, mResult.mMatch.Describe().c_str());
    }
    mPairs = std::move(lPairing.mPairs);
    for (const KQexAmcPair& lPair : mPairs)
    {
        lPair.mBone->GetCurveNodePointers(lPair.mNode);
    }
    mSkeleton = pSkeleton;
    return true;
}

/// Reads the written text back: the motion is computed for the skeleton that other programs will read, with the digits of the text.
bool KQexExportRun::ReadBack()
{
    KQexImportAcclaimResult lResult;
    mReadBack = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::Buffer(mText.data(), mText.size(), mAsfPath),
                                                  KQexImportAcclaimOptions(), lResult);
    if (!mReadBack)
    {
        mResult.mMessages.insert(mResult.mMessages.end(), lResult.mMessages.begin(), lResult.mMessages.end());
        return FailExport(mResult, mAsfPath.c_str(), "The skeleton cannot be read back");
    }
    mPairs.push_back(KQexAmcPair{mReadBack->mRoot, mRoot});
    KQexAsfWalk lWalk(mReadBack->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        const auto lFound = lWalk.IsEntering() && lBone != mReadBack->mRoot ? mNodeOf.find(lBone->mName) : mNodeOf.end();
        if (lFound != mNodeOf.end() && lFound->second != nullptr)
        {
            mPairs.push_back(KQexAmcPair{lBone, lFound->second});
        }
    }
    mSkeleton = mReadBack.get();
    return true;
}

KQexAmcWriteOptions KQexExportRun::WriteOptions(size_t pMotion) const
{
    const bool          lIsMade = mReadBack != nullptr;
    KQexAmcWriteOptions lOptions;
    lOptions.mStack = mMotions[pMotion].mStack;
    lOptions.mSampling = mResult.mSamplings[pMotion];
    lOptions.mRestStack = mOptions.mBasePoseFirstFrame ? mMotions.front().mStack : nullptr;
    lOptions.mRestAlignment = lIsMade ? eAMC_REST_ROOT : eAMC_REST_FIND;
    lOptions.mScale = mOptions.mBaseScale;
    lOptions.mWriteRate = mOptions.mWriteRate;
    if (!lIsMade)
    {
        lOptions.mSkeletonNotes = mOptions.mSkeletonNotes;
    }
    else if (mBuffer == nullptr && mAsfPath != "-")
    {
        lOptions.mAsfName = std::filesystem::path(mAsfPath).filename().string();
    }
    return lOptions;
}

KQexFrameSink* KQexExportRun::BeginMotion(size_t pMotion, std::string* pBuffer)
{
    const KQexExportMotion& lMotion = mMotions[pMotion];
    if (mSkeleton == nullptr && !ReadBack())
    {
        return nullptr;
    }
    if (!MakeSampling({mRoot}, lMotion.mStack, lMotion.mSampling, mResult.mSamplings[pMotion]))
    {
        FailExport(mResult, lMotion.mPath.c_str(), "No frames in the requested part of the take");
        return nullptr;
    }
    mMotion = pMotion;
    mBuffer = pBuffer;
    mAmc = std::make_unique<KQexFileAcclaimAmc>(false);
    const bool           lIsOpen = pBuffer != nullptr ? mAmc->OpenWriteBuffer(pBuffer) : mAmc->OpenWrite(lMotion.mPath.c_str());
    KQexFrameSink* const lSink = lIsOpen ? mAmc->BeginWrite(mSkeleton, mPairs, WriteOptions(pMotion)) : nullptr;
    if (lSink == nullptr)
    {
        KeepMotion(false);
    }
    return lSink;
}

bool KQexExportRun::EndMotion(KQexRunResult pResult)
{
    mResult.mCancelled = mResult.mCancelled || pResult == KQexRunResult::eCANCELLED;
    return KeepMotion(mAmc->EndWrite(pResult) && mAmc->GetOutput().Prepare());
}

/// Keeps the file if it is complete, else discards it.
bool KQexExportRun::KeepMotion(bool pIsComplete)
{
    // From here on the output is discarded unless it is kept: the file's destructor would complete it.
    KOutputFile                               lOutput = mAmc->ReleaseOutput();
    const std::unique_ptr<KQexFileAcclaimAmc> lAmc = std::move(mAmc);
    for (const KQexTextMessage& lMessage : lAmc->GetMessages())
    {
        mResult.mMessages.push_back(KQexImportMessage{mMotions[mMotion].mPath, lMessage});
    }
    if (!pIsComplete)
    {
        return lOutput.HasFailed() && lAmc->GetErrorCount() == 0 ? Fail(lOutput) : false;
    }
    if (mBuffer != nullptr)
    {
        return lOutput.Close();
    }
    mOutputs.push_back(std::make_unique<KOutputFile>(std::move(lOutput)));
    return true;
}

KQexProgress KQexExportRun::ProgressOf(size_t pMotion) const
{
    if (!mOptions.mProgress)
    {
        return KQexProgress();
    }
    return [this, pMotion](double pFraction)
    {
        return mOptions.mProgress((static_cast<double>(pMotion) + pFraction) / static_cast<double>(mMotions.size()));
    };
}

bool KQexExportRun::WriteMotion(size_t pMotion, std::string* pBuffer)
{
    KQexFrameSink* const lSink = BeginMotion(pMotion, pBuffer);
    return lSink != nullptr && EndMotion(KQexRunFrames({mRoot}, KQexLayerOf(mMotions[pMotion].mStack), mResult.mSamplings[pMotion], &lSink,
                                                       1, mOptions.mThreads, ProgressOf(pMotion)));
}

bool KQexExportRun::WriteMotions()
{
    for (size_t i = 0; i < mMotions.size(); ++i)
    {
        if (!mMotions[i].mPath.empty() && !WriteMotion(i, nullptr))
        {
            return false;
        }
    }
    return true;
}

bool KQexExportRun::Fail(const KOutputFile& pOutput)
{
    mResult.mBrokenPipe = mResult.mBrokenPipe || pOutput.IsBrokenPipe();
    return FailExport(mResult, pOutput.GetPath().c_str(), ("cannot be written: " + pOutput.GetReason()).c_str());
}

bool KQexExportRun::Commit()
{
    if (mOptions.mPrepared != nullptr)
    {
        mOptions.mPrepared->reserve(mOptions.mPrepared->size() + mOutputs.size());
        std::move(mOutputs.begin(), mOutputs.end(), std::back_inserter(*mOptions.mPrepared));
        return true;
    }
    std::vector<KOutputFile*> lOutputs;
    for (const std::unique_ptr<KOutputFile>& lOutput : mOutputs)
    {
        lOutputs.push_back(lOutput.get());
    }
    const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs.data(), lOutputs.size());
    return lFailed == nullptr || Fail(*lFailed);
}

} // namespace qexsdk
