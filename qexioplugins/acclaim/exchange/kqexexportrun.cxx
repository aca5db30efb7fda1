#include <qexioplugins/acclaim/exchange/kqexexportrun.h>

#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/motion/kqexrestpose.h>
#include <qexscene/kqexsceneundo.h>

#include <filesystem>
#include <unordered_map>

namespace qexsdk
{

KQexExportRun::KQexExportRun(KQexNode* pRoot, const char* pAsfPath, const char* pAmcPath, const KQexExportAcclaimOptions& pOptions,
                             KQexExportAcclaimResult& pResult)
    : mRoot(pRoot),
      mAsfPath(pAsfPath != nullptr ? pAsfPath : ""),
      mAmcPath(pAmcPath != nullptr ? pAmcPath : ""),
      mOptions(pOptions),
      mResult(pResult),
      mStack(pOptions.mStack != nullptr ? pOptions.mStack : pRoot->GetScene()->GetEvaluator()->GetContext()),
      mAmc(false)
{
}

bool KQexExportRun::Run()
{
    KQexDiscardGuard lGuard(mAmc);
    return lGuard.Keep(MakeSkeleton(!mAmcPath.empty()) && WriteSkeleton() && WriteMotion(mAmcPath, nullptr) && Finish());
}

bool KQexExportRun::Run(std::string& pAsf, std::string* pAmc)
{
    KQexDiscardGuard lGuard(mAmc);
    const bool       lOk = lGuard.Keep(MakeSkeleton(pAmc != nullptr) && (pAmc == nullptr || (WriteMotion("", pAmc) && mAmc.Close())));
    pAsf.swap(mText);
    return lOk;
}

bool KQexExportRun::NeedsTranslations() const
{
    if (mOptions.mTranslations != eTRANSLATION_DOFS_MOVING)
    {
        return mOptions.mTranslations == eTRANSLATION_DOFS_ALL;
    }
    for (const KQexNode* lNode = mRoot->GetNextInTree(mRoot); lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        if (DiffersFromRest(lNode->mLocalTranslation, GetLayer()))
        {
            return true;
        }
    }
    return false;
}

/// Extracts, prepares and formats the skeleton; with \p pReadBack also reads it back, for a motion.
bool KQexExportRun::MakeSkeleton(bool pReadBack)
{
    const KQexAsfSceneOwner lScene(QexSdkNew<KQexAsfScene>());
    if (!lScene)
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
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
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    KQexAsfPreparation lPreparation(lScene.get(), mRoot, GetLayer(), mOptions, lHasTranslations);
    if (!lPreparation.Run())
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    for (const std::string& lWarning : lPreparation.GetWarnings())
    {
        mResult.mMessages.push_back(KQexImportMessage{mAsfPath, KQexTextMessage{KQexTextMessage::eWARNING, 0, lWarning}});
    }
    // From here on the bones need the curves of the motion's take, not the rest pose.
    lEvaluator->SetContext(mStack);
    for (const KQexAsfOrigin& lOrigin : lPreparation.GetOrigins())
    {
        lOrigin.mBone->GetCurveNodePointers(lOrigin.mNode);
    }
    mResult.mBones = static_cast<int>(lPreparation.GetOrigins().size());
    KQexFileAcclaimAsf lFile(false);
    if (!lFile.OpenWriteBuffer(&mText))
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    lFile.Write(lScene.get());
    if (!lFile.Close())
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    return !pReadBack || ReadBack(lPreparation.GetOrigins());
}

/// Reads the written text back: the motion is computed for the skeleton that other programs will read, with the digits of the text.
bool KQexExportRun::ReadBack(const std::vector<KQexAsfOrigin>& pOrigins)
{
    KQexImportAcclaimResult lResult;
    mReadBack = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::Buffer(mText.data(), mText.size(), mAsfPath),
                                                  KQexImportAcclaimOptions(), lResult);
    if (!mReadBack)
    {
        mResult.mMessages.insert(mResult.mMessages.end(), lResult.mMessages.begin(), lResult.mMessages.end());
        return FailExport(mResult, mAsfPath, "The skeleton cannot be read back");
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

bool KQexExportRun::WriteSkeleton()
{
    if (mAsf.Open(mAsfPath.c_str()) && mAsf.Write(mText.data(), mText.size()) && mAsf.Prepare())
    {
        return true;
    }
    return FailExport(mResult, mAsf);
}

bool KQexExportRun::WriteMotion(const std::string& pPath, std::string* pBuffer)
{
    if (pPath.empty() && pBuffer == nullptr)
    {
        return true;
    }
    if (!MakeSampling({mRoot}, mStack, mOptions.mSampling, mResult.mSampling))
    {
        return FailExport(mResult, pPath, "No frames in the requested part of the take");
    }
    KQexAmcWriteOptions lOptions = MakeWriteOptions(mOptions, mStack, mResult);
    lOptions.mIsRootAligned = true;
    lOptions.mAsfName = pBuffer == nullptr && mAsfPath != "-" ? std::filesystem::path(mAsfPath).filename().string() : "";
    return WriteMotionFile(mAmc, pPath, pBuffer, mReadBack.get(), mPairs, lOptions, mResult);
}

bool KQexExportRun::Finish()
{
    KOutputFile* const lOutputs[] = {&mAsf, &mAmc.GetOutput()};
    const KOutputFile* lFailed = KOutputFile::CommitAll(lOutputs, mAmcPath.empty() ? 1 : 2);
    return lFailed == nullptr || FailExport(mResult, *lFailed);
}

} // namespace qexsdk
