#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>

#include <qexioplugins/acclaim/exchange/kqexasfpairing.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace qexsdk
{

bool FailExport(KQexExportAcclaimResult& pResult, const std::string& pPath, const char* pText) noexcept
{
    try
    {
        pResult.mMessages.push_back(KQexImportMessage{pPath, KQexTextMessage{KQexTextMessage::eERROR, 0, pText}});
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    return false;
}

bool FailExport(KQexExportAcclaimResult& pResult, const KOutputFile& pOutput)
{
    pResult.mBrokenPipe = pResult.mBrokenPipe || pOutput.IsBrokenPipe();
    return FailExport(pResult, pOutput.GetPath(), ("cannot be written: " + pOutput.GetReason()).c_str());
}

KQexAnimStack* TakeOrCurrent(const KQexNode* pRoot, KQexAnimStack* pStack)
{
    return pStack != nullptr ? pStack : pRoot->GetScene()->GetEvaluator()->GetContext();
}

KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    KQexAmcWriteOptions lOptions;
    lOptions.mScale = pOptions.mBaseScale;
    lOptions.mWriteRate = pOptions.mWriteRate;
    lOptions.mThreads = pOptions.mThreads;
    if (pOptions.mProgress)
    {
        lOptions.mProgress = [&pOptions, &pResult](double pFraction)
        {
            pResult.mCancelled = pResult.mCancelled || !pOptions.mProgress(pFraction);
            return !pResult.mCancelled;
        };
    }
    return lOptions;
}

namespace
{

void AddMessages(KQexExportAcclaimResult& pResult, const KQexTextFile& pFile, const std::string& pPath)
{
    for (const KQexTextMessage& lMessage : pFile.GetMessages())
    {
        pResult.mMessages.push_back(KQexImportMessage{pPath, lMessage});
    }
}

} // namespace

bool WriteMotionFile(const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton, const std::vector<KQexAmcPair>& pPairs,
                     const KQexAmcWriteOptions& pOptions, std::vector<std::unique_ptr<KOutputFile>>& pOutputs,
                     KQexExportAcclaimResult& pResult)
{
    KQexFileAcclaimAmc lAmc(false);
    const bool         lIsOpen = pBuffer != nullptr ? lAmc.OpenWriteBuffer(pBuffer) : lAmc.OpenWrite(pPath.c_str());
    const bool         lIsWritten = lIsOpen && lAmc.Write(pSkeleton, pPairs, pOptions) && lAmc.GetOutput().Prepare();
    // From here on the output is discarded unless it is kept: the file's destructor would complete it.
    KOutputFile lOutput = lAmc.ReleaseOutput();
    AddMessages(pResult, lAmc, pPath);
    if (!lIsWritten)
    {
        return lOutput.HasFailed() && lAmc.GetErrorCount() == 0 ? FailExport(pResult, lOutput) : false;
    }
    if (pBuffer != nullptr)
    {
        return lOutput.Close();
    }
    pOutputs.push_back(std::make_unique<KOutputFile>(std::move(lOutput)));
    return true;
}

bool CommitExport(std::vector<std::unique_ptr<KOutputFile>>& pOutputs, const KQexExportAcclaimOptions& pOptions,
                  KQexExportAcclaimResult& pResult)
{
    if (pOptions.mPrepared != nullptr)
    {
        pOptions.mPrepared->reserve(pOptions.mPrepared->size() + pOutputs.size());
        std::move(pOutputs.begin(), pOutputs.end(), std::back_inserter(*pOptions.mPrepared));
        return true;
    }
    std::vector<KOutputFile*> lOutputs;
    for (const std::unique_ptr<KOutputFile>& lOutput : pOutputs)
    {
        lOutputs.push_back(lOutput.get());
    }
    const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs.data(), lOutputs.size());
    return lFailed == nullptr || FailExport(pResult, *lFailed);
}

bool RunMotionExport(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                     KQexExportAcclaimResult& pResult)
{
    KQexAnimStack* lStack = TakeOrCurrent(pRoot, pOptions.mStack);
    KQexAsfPairing lPairing = PairBones(pRoot, *pSkeleton, lStack);
    pResult.mUnmatched = std::move(lPairing.mUnmatched);
    pResult.mMatch = std::move(lPairing.mMatch);
    if (!pOptions.mAllowUnmatched && !pResult.mMatch.IsPlausible())
    {
        pResult.mIsMismatch = true;
        return FailExport(pResult, pAmcPath, pResult.mMatch.Describe().c_str());
    }
    for (const KQexAmcPair& lPair : lPairing.mPairs)
    {
        lPair.mBone->GetCurveNodePointers(lPair.mNode);
    }
    KQexAmcWriteOptions lOptions = MakeWriteOptions(pOptions, pResult);
    if (!MakeSampling({pRoot}, lStack, pOptions.mSampling, lOptions.mSampling))
    {
        return FailExport(pResult, pAmcPath, "No frames in the requested part of the take");
    }
    pResult.mSamplings.assign(1, lOptions.mSampling);
    lOptions.mStack = lStack;
    lOptions.mRestStack = pOptions.mBasePoseFirstFrame ? lStack : nullptr;
    lOptions.mSkeletonNotes = pOptions.mSkeletonNotes;
    std::vector<std::unique_ptr<KOutputFile>> lOutputs;
    return WriteMotionFile(pAmcPath, nullptr, pSkeleton, lPairing.mPairs, lOptions, lOutputs, pResult) &&
           CommitExport(lOutputs, pOptions, pResult);
}

} // namespace qexsdk
