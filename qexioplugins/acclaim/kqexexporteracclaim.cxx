#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/kqexasfgrammar.h>
#include <qexioplugins/acclaim/kqexasfhostindex.h>
#include <qexioplugins/acclaim/kqexasfprepare.h>
#include <qexioplugins/acclaim/kqexasfwalk.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/motion/kqexrestpose.h>
#include <qexscene/kqexsceneundo.h>

#include <filesystem>
#include <new>

namespace qexsdk
{

namespace
{

void AddMessage(KQexExportAcclaimResult& pResult, const std::string& pPath, KQexTextMessage::ESeverity pSeverity, const std::string& pText)
{
    pResult.mMessages.push_back(KQexImportMessage{pPath, KQexTextMessage{pSeverity, 0, pText}});
}

/// Adds an error. Without memory for it the export fails all the same.
bool Fail(KQexExportAcclaimResult& pResult, const std::string& pPath, const char* pText) noexcept
{
    try
    {
        AddMessage(pResult, pPath, KQexTextMessage::eERROR, pText);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    return false;
}

/// The same for what an output says of itself.
bool FailOutput(KQexExportAcclaimResult& pResult, const KOutputFile& pOutput)
{
    return Fail(pResult, pOutput.GetPath(), ("Can't write: " + pOutput.GetReason()).c_str());
}

void TakeMessages(KQexExportAcclaimResult& pResult, const KQexTextFile& pFile, const std::string& pPath)
{
    for (const KQexTextMessage& lMessage : pFile.GetMessages())
    {
        pResult.mMessages.push_back(KQexImportMessage{pPath, lMessage});
    }
}

/// Gives a motion's output up unless told otherwise: its file would complete an output that nobody closed, also while an exception
/// is on its way.
class KDiscardGuard
{
public:
    explicit KDiscardGuard(KQexFileAcclaimAmc& pAmc) : mAmc(pAmc) {}
    ~KDiscardGuard()
    {
        if (!mKeep)
        {
            mAmc.Discard();
        }
    }
    KDiscardGuard(const KDiscardGuard&) = delete;
    KDiscardGuard& operator=(const KDiscardGuard&) = delete;

    /// The output stays when \p pKeep is true. Gives that back.
    bool Keep(bool pKeep) { return mKeep = pKeep; }

private:
    KQexFileAcclaimAmc& mAmc;
    bool                mKeep = false;
};

/// One export of a tree: what its steps hand to each other.
class KExport
{
public:
    KExport(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
            KQexExportAcclaimResult& pResult)
        : mRoot(pRoot),
          mAsfPath(pAsfPath),
          mAmcPath(pAmcPath != nullptr ? pAmcPath : ""),
          mOptions(pOptions),
          mResult(pResult),
          mStack(pOptions.mStack != nullptr ? pOptions.mStack : pRoot->GetScene()->GetEvaluator()->GetContext()),
          mAmc(false)
    {
    }

    /// Into the two files.
    bool Run()
    {
        KDiscardGuard lGuard(mAmc);
        return lGuard.Keep(MakeSkeleton(!mAmcPath.empty()) && WriteSkeleton() && WriteMotion(mAmcPath, nullptr) && Finish());
    }

    /// Into memory; \p pAmc null: the skeleton alone.
    bool Run(std::string& pAsf, std::string* pAmc)
    {
        KDiscardGuard lGuard(mAmc);
        const bool    lOk = lGuard.Keep(MakeSkeleton(pAmc != nullptr) && (pAmc == nullptr || (WriteMotion("", pAmc) && mAmc.Close())));
        pAsf.swap(mText);
        return lOk;
    }

private:
    bool                 MakeSkeleton(bool pIsRead);
    bool                 ReadBack(const std::vector<KAsfOrigin>& pOrigins);
    bool                 WriteSkeleton();
    bool                 WriteMotion(const std::string& pPath, std::string* pBuffer);
    bool                 Finish();
    const KQexAnimLayer* GetLayer() const { return mStack != nullptr ? mStack->GetMember<KQexAnimLayer>(0) : nullptr; }
    bool                 NeedsTranslations() const;

    KQexNode*                       mRoot;
    std::string                     mAsfPath;
    std::string                     mAmcPath;
    const KQexExportAcclaimOptions& mOptions;
    KQexExportAcclaimResult&        mResult;
    KQexAnimStack*                  mStack;
    std::string                     mText;     ///< The skeleton file.
    KQexAsfSceneOwner               mReadBack; ///< The skeleton as every reader of that text will see it.
    std::vector<KQexAmcPair>        mPairs;
    KOutputFile                     mAsf;
    KQexFileAcclaimAmc              mAmc;
};

bool KExport::NeedsTranslations() const
{
    if (mOptions.mTranslations != eTRANSLATION_DOFS_MOVING)
    {
        return mOptions.mTranslations == eTRANSLATION_DOFS_ALL;
    }
    for (const KQexNode* lNode = mRoot->GetNextInTree(mRoot); lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        if (LeavesRest(lNode->mLocalTranslation, GetLayer()))
        {
            return true;
        }
    }
    return false;
}

/// Extracts, prepares and formats the skeleton; \p pIsRead: and reads it back for a motion.
bool KExport::MakeSkeleton(bool pIsRead)
{
    const KQexAsfSceneOwner lScene(QexSdkNew<KQexAsfScene>());
    if (!lScene)
    {
        return Fail(mResult, mAsfPath, "Out of memory");
    }
    KQexAnimEvaluator*     lEvaluator = mRoot->GetScene()->GetEvaluator();
    const KQexContextGuard lContext(lEvaluator);
    const bool             lHasTranslations = NeedsTranslations();
    const double           lScale = mOptions.mBaseScale;
    // Without a take the values at time zero are the nodes' defaults.
    lEvaluator->SetContext(mOptions.mBasePoseFirstFrame ? mStack : nullptr);
    lScene->QEXToASF(mRoot, lHasTranslations, KQexVector4(lScale, lScale, lScale, 1.0), true);
    if (lScene->mRoot == nullptr)
    {
        return Fail(mResult, mAsfPath, "Out of memory");
    }
    KAsfPreparation lPreparation(lScene.get(), mRoot, GetLayer(), mOptions, lHasTranslations);
    if (!lPreparation.Run())
    {
        return Fail(mResult, mAsfPath, "Out of memory");
    }
    for (const std::string& lWarning : lPreparation.GetWarnings())
    {
        AddMessage(mResult, mAsfPath, KQexTextMessage::eWARNING, lWarning);
    }
    // What samples into the nodes later needs their curves, not their defaults.
    lEvaluator->SetContext(mStack);
    for (const KAsfOrigin& lOrigin : lPreparation.GetOrigins())
    {
        lOrigin.mBone->GetCurveNodePointers(lOrigin.mNode);
    }
    mResult.mBones = static_cast<int>(lPreparation.GetOrigins().size());
    KQexFileAcclaimAsf lFile(false);
    if (!lFile.OpenWriteBuffer(&mText))
    {
        return Fail(mResult, mAsfPath, "Out of memory");
    }
    lFile.Write(lScene.get());
    if (!lFile.Close())
    {
        return Fail(mResult, mAsfPath, "Out of memory");
    }
    return !pIsRead || ReadBack(lPreparation.GetOrigins());
}

/// Reads the text as other programs will: motion is made for the bones that they see, with the digits that the text has.
bool KExport::ReadBack(const std::vector<KAsfOrigin>& pOrigins)
{
    KQexImportAcclaimResult lResult;
    mReadBack = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::Buffer(mText.data(), mText.size(), mAsfPath),
                                                  KQexImportAcclaimOptions(), lResult);
    if (!mReadBack)
    {
        mResult.mMessages.insert(mResult.mMessages.end(), lResult.mMessages.begin(), lResult.mMessages.end());
        return Fail(mResult, mAsfPath, "The skeleton cannot be read back");
    }
    std::unordered_map<std::string, KQexNode*> lNodes;
    for (size_t i = 1; i < pOrigins.size(); ++i)
    {
        lNodes[pOrigins[i].mBone->mName] = pOrigins[i].mNode;
    }
    mPairs.push_back(KQexAmcPair{mReadBack->mRoot, mRoot});
    KQexAsfWalk lWalk(mReadBack->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        const auto lFound = lWalk.IsEntering() ? lNodes.find(lBone->mName) : lNodes.end();
        if (lFound != lNodes.end() && lFound->second != nullptr)
        {
            mPairs.push_back(KQexAmcPair{lBone, lFound->second});
        }
    }
    return true;
}

bool KExport::WriteSkeleton()
{
    if (mAsf.Open(mAsfPath.c_str()) && mAsf.Write(mText.data(), mText.size()) && mAsf.Prepare())
    {
        return true;
    }
    return FailOutput(mResult, mAsf);
}

/// Opens and writes a motion, to \p pPath or into \p pBuffer when there is one; a file then only waits for its name.
bool WriteMotionFile(KQexFileAcclaimAmc& pAmc, const std::string& pPath, std::string* pBuffer, KQexAsfScene* pSkeleton,
                     const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    const bool lIsOpen = pBuffer != nullptr ? pAmc.OpenWriteBuffer(pBuffer) : pAmc.OpenWrite(pPath.c_str());
    const bool lIsWritten = lIsOpen && pAmc.Write(pSkeleton, pPairs, pOptions) && pAmc.GetOutput().Prepare();
    TakeMessages(pResult, pAmc, pPath);
    if (!lIsWritten && pAmc.GetOutput().HasFailed() && pAmc.GetErrorCount() == 0)
    {
        FailOutput(pResult, pAmc.GetOutput());
    }
    return lIsWritten;
}

/// Turns a caller's options into the writer's; wraps the progress call so that a cancel is remembered.
KQexAmcWriteOptions MakeWriteOptions(const KQexExportAcclaimOptions& pOptions, KQexAnimStack* pStack, KQexExportAcclaimResult& pResult)
{
    KQexAmcWriteOptions lOptions;
    lOptions.mStack = pStack;
    lOptions.mSampling = pResult.mSampling;
    lOptions.mRestStack = pOptions.mBasePoseFirstFrame ? pStack : nullptr;
    lOptions.mScale = pOptions.mBaseScale;
    lOptions.mTellRate = pOptions.mTellRate;
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

bool KExport::WriteMotion(const std::string& pPath, std::string* pBuffer)
{
    if (pPath.empty() && pBuffer == nullptr)
    {
        return true;
    }
    if (!MakeSampling({mRoot}, mStack, mOptions.mSampling, mResult.mSampling))
    {
        return Fail(mResult, pPath, "No frames in the part of the take that was asked for");
    }
    KQexAmcWriteOptions lOptions = MakeWriteOptions(mOptions, mStack, mResult);
    lOptions.mIsRootAligned = true;
    lOptions.mAsfName = pBuffer == nullptr && mAsfPath != "-" ? std::filesystem::path(mAsfPath).filename().string() : "";
    return WriteMotionFile(mAmc, pPath, pBuffer, mReadBack.get(), mPairs, lOptions, mResult);
}

bool KExport::Finish()
{
    KOutputFile* const lOutputs[] = {&mAsf, &mAmc.GetOutput()};
    const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs, mAmcPath.empty() ? 1 : 2);
    return lFailed == nullptr || FailOutput(mResult, *lFailed);
}

/// Pairs bones and nodes as KQexAsfScene::MergeQEXToASF does: a bone without a node hands its children to the node above.
void MakePairs(const KQexAsfTreeIndex& pNodes, KQexAsfScene* pSkeleton, std::vector<KQexAmcPair>& pPairs,
               std::vector<std::string>& pUnmatched)
{
    std::vector<int> lOpen; ///< For each bone on the way down: the number of its node, or of the next one above that has one.
    KQexAsfWalk      lWalk(pSkeleton->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lOpen.pop_back();
            continue;
        }
        const int lFound = lOpen.empty() ? 0 : pNodes.Find(lBone->mName, lOpen.back());
        if (lFound >= 0)
        {
            pPairs.push_back(KQexAmcPair{lBone, pNodes.GetNode(lFound)});
        }
        else
        {
            pUnmatched.emplace_back(lBone->mName);
        }
        lOpen.push_back(lFound >= 0 ? lFound : lOpen.back());
    }
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
        return Fail(pResult, pAmcPath, "No frames in the part of the take that was asked for");
    }
    KQexFileAcclaimAmc  lAmc(false);
    KDiscardGuard       lGuard(lAmc);
    KQexAmcWriteOptions lOptions = MakeWriteOptions(pOptions, lStack, pResult);
    lOptions.mSkeletonNotes = pOptions.mSkeletonNotes;
    return lGuard.Keep(WriteMotionFile(lAmc, pAmcPath, nullptr, pSkeleton, lPairs, lOptions, pResult) &&
                       (lAmc.Close() || FailOutput(pResult, lAmc.GetOutput())));
}

} // namespace

namespace
{

/// Checks what every export of a tree needs, runs it and turns a lack of memory into a message.
template <typename TRun>
bool Guarded(KQexNode* pRoot, const char* pPath, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult,
             const TRun& pRun) noexcept
{
    std::string lPath;
    try
    {
        pResult = KQexExportAcclaimResult();
        lPath = pPath;
        if (pRoot == nullptr || !(pOptions.mLengthUnit > 0.0))
        {
            return Fail(pResult, lPath, pRoot == nullptr ? "Nothing to export" : "The length unit is not above zero");
        }
        pResult.mOk = pRun();
    }
    catch (const std::bad_alloc&)
    {
        pResult.mOk = Fail(pResult, lPath, "Out of memory");
    }
    return pResult.mOk;
}

} // namespace

bool KQexExporterAcclaim::Export(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                                 KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, pAsfPath, pOptions, pResult, [&] { return KExport(pRoot, pAsfPath, pAmcPath, pOptions, pResult).Run(); });
}

bool KQexExporterAcclaim::ExportBuffers(KQexNode* pRoot, std::string& pAsf, std::string& pAmc, const KQexExportAcclaimOptions& pOptions,
                                        KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult, [&] { return KExport(pRoot, "", nullptr, pOptions, pResult).Run(pAsf, &pAmc); });
}

bool KQexExporterAcclaim::ExportSkeleton(KQexNode* pRoot, std::string& pAsf, const KQexExportAcclaimOptions& pOptions,
                                         KQexExportAcclaimResult& pResult)
{
    return Guarded(pRoot, "", pOptions, pResult, [&] { return KExport(pRoot, "", nullptr, pOptions, pResult).Run(pAsf, nullptr); });
}

bool KQexExporterAcclaim::ExportMotion(KQexNode* pRoot, KQexAsfScene* pSkeleton, const char* pAmcPath,
                                       const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
{
    KQexNode* lRoot = pSkeleton != nullptr && pSkeleton->mRoot != nullptr ? pRoot : nullptr;
    return Guarded(lRoot, pAmcPath, pOptions, pResult, [&] { return RunMotionExport(lRoot, pSkeleton, pAmcPath, pOptions, pResult); });
}

KQexBoneDofs KQexExporterAcclaim::GetBoneDofs(const KQexAsfScene* pSkeleton)
{
    KQexBoneDofs lAll;
    const double lToCentimetres = pSkeleton->mLengthUnit > 0.0 ? kCentimetresPerInch / pSkeleton->mLengthUnit : 1.0;
    KQexAsfWalk  lWalk(pSkeleton->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            continue;
        }
        std::vector<KQexBoneDof>& lDofs = lAll[lBone->mName];
        for (int i = 0; i < lBone->mOrderCount; ++i)
        {
            const int    lCode = lBone->mOrderBuf[i];
            const double lFactor = KIsTranslationDof(lCode) ? lToCentimetres : 1.0;
            KQexBoneDof  lDof;
            lDof.mWord = kDofWords[lCode];
            lDof.mHasMin = lBone->mLimitsActive[lCode][0];
            lDof.mHasMax = lBone->mLimitsActive[lCode][1];
            lDof.mMin = lDof.mHasMin ? lBone->mLimitsBuf[lCode][0] * lFactor : 0.0;
            lDof.mMax = lDof.mHasMax ? lBone->mLimitsBuf[lCode][1] * lFactor : 0.0;
            lDofs.push_back(lDof);
        }
    }
    return lAll;
}

} // namespace qexsdk
