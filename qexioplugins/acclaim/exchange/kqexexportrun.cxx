#include <qexioplugins/acclaim/exchange/kqexexportrun.h>

#include <qexioplugins/acclaim/exchange/kqexasfends.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexscene/kqexsceneundo.h>

#include <new>
#include <utility>

/// \file
/// The skeleton of an export that makes one.

namespace qexsdk
{

bool FailExport(KQexExportAcclaimResult& pResult, const char* pPath, const char* pText) noexcept
{
    try
    {
        pResult.mMessages.push_back(KQexImportMessage{pPath != nullptr ? pPath : "", KQexTextMessage{KQexTextMessage::eERROR, 0, pText}});
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    return false;
}

KQexExportRun::KQexExportRun(KQexNode* pRoot, const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
    : mRoot(pRoot), mOptions(pOptions), mResult(pResult)
{
}

KQexExportRun::~KQexExportRun()
{
    if (mAmc)
    {
        mAmc->Discard(); // Its destructor would complete the file.
    }
}

bool KQexExportRun::MakeSkeleton(const char* pAsfPath, std::vector<KQexExportMotion> pMotions)
{
    mAsfPath = pAsfPath != nullptr ? pAsfPath : "";
    mMotions = std::move(pMotions);
    if (mMotions.empty())
    {
        mMotions.emplace_back();
    }
    std::vector<KQexAnimStack*> lTakes;
    for (KQexExportMotion& lMotion : mMotions)
    {
        lMotion.mStack = TakeOrCurrent(lMotion.mStack);
        lTakes.push_back(lMotion.mStack);
    }
    mResult.mSamplings.resize(mMotions.size());
    return MakeSkeletonOf(lTakes);
}

/// Extracts, prepares and formats it, with the DOFs that \p pTakes need.
bool KQexExportRun::MakeSkeletonOf(const std::vector<KQexAnimStack*>& pTakes)
{
    const KQexMovingJoints              lMoving(mRoot, pTakes);
    const bool                          lHasTranslations = HasTranslations(lMoving);
    const KQexAsfSceneOwner             lScene(QexSdkNew<KQexAsfScene>());
    const KQexSceneUndo                 lUndo(mRoot->GetScene()); // Destroys the added end nodes, and restores the current take.
    std::unordered_set<const KQexNode*> lLeaves;
    if (!lScene || (mOptions.mAdaptForFile && !AddEndNodes(mRoot, lMoving, mOptions.mBoneDofs, lLeaves)) ||
        !Extract(*lScene, lHasTranslations))
    {
        return FailExport(mResult, mAsfPath.c_str(), "Out of memory");
    }
    KQexAsfPreparation lPreparation(lScene.get(), mRoot, lMoving, mOptions, lHasTranslations, lLeaves);
    if (!lPreparation.Run())
    {
        return FailExport(mResult, mAsfPath.c_str(), "Out of memory");
    }
    Report(lPreparation);
    return Format(*lScene, lPreparation);
}

bool KQexExportRun::HasTranslations(const KQexMovingJoints& pMoving) const
{
    return mOptions.mTranslations == eTRANSLATION_DOFS_ALL ||
           (mOptions.mTranslations == eTRANSLATION_DOFS_MOVING && pMoving.HasTranslations());
}

bool KQexExportRun::Extract(KQexAsfScene& pScene, bool pHasTranslations)
{
    const double lScale = mOptions.mBaseScale;
    // Without a take the values at time zero are the nodes' defaults.
    mRoot->GetScene()->GetEvaluator()->SetContext(mOptions.mBasePoseFirstFrame ? mMotions.front().mStack : nullptr);
    return pScene.QEXToASF(mRoot, pHasTranslations, KQexVector4(lScale, lScale, lScale, 1.0), true);
}

void KQexExportRun::Report(const KQexAsfPreparation& pPreparation)
{
    for (const std::string& lWarning : pPreparation.GetWarnings())
    {
        mResult.mMessages.push_back(KQexImportMessage{mAsfPath, KQexTextMessage{KQexTextMessage::eWARNING, 0, lWarning}});
    }
    mResult.mNotes = pPreparation.GetNotes();
    mResult.mBones = static_cast<int>(pPreparation.GetOrigins().size());
    for (const KQexAsfOrigin& lOrigin : pPreparation.GetOrigins())
    {
        mNodeOf[lOrigin.mBone->mName] = lOrigin.mNode;
    }
}

bool KQexExportRun::Format(KQexAsfScene& pScene, const KQexAsfPreparation& pPreparation)
{
    KQexFileAcclaimAsf lFile(false);
    lFile.SetAddedEnds(pPreparation.GetAddedEnds());
    if (lFile.OpenWriteBuffer(&mText))
    {
        lFile.Write(&pScene);
        if (lFile.Close())
        {
            return true;
        }
    }
    return FailExport(mResult, mAsfPath.c_str(), "Out of memory");
}

bool KQexExportRun::WriteSkeleton()
{
    mOutputs.push_back(std::make_unique<KOutputFile>());
    KOutputFile& lOutput = *mOutputs.back();
    return (lOutput.Open(mAsfPath.c_str()) && lOutput.Write(mText.data(), mText.size()) && lOutput.Prepare()) || Fail(lOutput);
}

} // namespace qexsdk
