#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <new>

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

KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexAnimStack* pStack, KQexExportAcclaimResult& pResult)
{
    KQexAmcWriteOptions lOptions;
    lOptions.mStack = pStack;
    lOptions.mSampling = pResult.mSampling;
    lOptions.mRestStack = pOptions.mBasePoseFirstFrame ? pStack : nullptr;
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

/// Pairs bones and nodes as KQexAsfScene::MergeQEXToASF does: children of a bone without a node are searched below the nearest paired
/// ancestor's node.
void MakePairs(const KQexAsfTreeIndex& pNodes, KQexAsfScene* pSkeleton, std::vector<KQexAmcPair>& pPairs,
               std::vector<std::string>& pUnmatched)
{
    std::vector<int> lPath; // For each bone on the current path: the number of its node, else of the nearest ancestor's.
    KQexAsfWalk      lWalk(pSkeleton->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lPath.pop_back();
            continue;
        }
        const int lFound = lPath.empty() ? 0 : pNodes.Find(lBone->mName, lPath.back());
        if (lFound >= 0)
        {
            pPairs.push_back(KQexAmcPair{lBone, pNodes.GetNode(lFound)});
        }
        else
        {
            pUnmatched.emplace_back(lBone->mName);
        }
        lPath.push_back(lFound >= 0 ? lFound : lPath.back());
    }
}

} // namespace

bool WriteMotionFile(KQexFileAcclaimAmc& pAmc, const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton,
                     const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    const bool lIsOpen = pBuffer != nullptr ? pAmc.OpenWriteBuffer(pBuffer) : pAmc.OpenWrite(pPath.c_str());
    const bool lIsWritten = lIsOpen && pAmc.Write(pSkeleton, pPairs, pOptions) && pAmc.GetOutput().Prepare();
    AddMessages(pResult, pAmc, pPath);
    if (!lIsWritten && pAmc.GetOutput().HasFailed() && pAmc.GetErrorCount() == 0)
    {
        FailExport(pResult, pAmc.GetOutput());
    }
    return lIsWritten;
}

bool RunMotionExport(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                     KQexExportAcclaimResult& pResult)
{
    KQexAnimStack*           lStack = pOptions.mStack != nullptr ? pOptions.mStack : pRoot->GetScene()->GetEvaluator()->GetContext();
    std::vector<KQexAmcPair> lPairs;
    MakePairs(KQexAsfTreeIndex(pRoot), pSkeleton, lPairs, pResult.mUnmatched);
    if (lPairs.size() == 1 && !pResult.mUnmatched.empty())
    {
        lPairs.clear();
        pResult.mUnmatched.clear();
        MakePairs(KQexAsfTreeIndex(pRoot, KQexAsfTreeIndex::eBARE), pSkeleton, lPairs, pResult.mUnmatched);
    }
    for (const KQexAmcPair& lPair : lPairs)
    {
        lPair.mBone->GetCurveNodePointers(lPair.mNode);
    }
    if (!MakeSampling({pRoot}, lStack, pOptions.mSampling, pResult.mSampling))
    {
        return FailExport(pResult, pAmcPath, "No frames in the requested part of the take");
    }
    KQexFileAcclaimAmc  lAmc(false);
    KQexDiscardGuard    lGuard(lAmc);
    KQexAmcWriteOptions lOptions = MakeWriteOptions(pOptions, lStack, pResult);
    lOptions.mSkeletonNotes = pOptions.mSkeletonNotes;
    return lGuard.Keep(WriteMotionFile(lAmc, pAmcPath, nullptr, pSkeleton, lPairs, lOptions, pResult) &&
                       (lAmc.Close() || FailExport(pResult, lAmc.GetOutput())));
}

} // namespace qexsdk
