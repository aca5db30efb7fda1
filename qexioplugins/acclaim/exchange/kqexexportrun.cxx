#include <qexioplugins/acclaim/exchange/kqexexportrun.h>

#include <qexioplugins/acclaim/exchange/kqexasfends.h>
#include <qexioplugins/acclaim/exchange/kqexexportmotion.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexscene/kqexsceneundo.h>

#include <filesystem>
#include <unordered_map>
#include <utility>

namespace qexsdk
{

KQexExportRun::KQexExportRun(KQexNode* pRoot, const char* pAsfPath, std::vector<KQexExportMotion> pMotions,
                             const KQexExportAcclaimOptions& pOptions, KQexExportAcclaimResult& pResult)
    : mRoot(pRoot), mAsfPath(pAsfPath != nullptr ? pAsfPath : ""), mMotions(std::move(pMotions)), mOptions(pOptions), mResult(pResult)
{
    if (mMotions.empty())
    {
        mMotions.emplace_back();
    }
    for (KQexExportMotion& lMotion : mMotions)
    {
        lMotion.mStack = TakeOrCurrent(mRoot, lMotion.mStack);
    }
    mResult.mSamplings.resize(mMotions.size());
}

bool KQexExportRun::Run()
{
    bool lHasMotion = false;
    for (size_t i = 0; i < mMotions.size(); ++i)
    {
        lHasMotion = lHasMotion || !mMotions[i].mPath.empty();
        if (!mMotions[i].mPath.empty() && !SampleMotion(i))
        {
            return false;
        }
    }
    return MakeSkeleton(lHasMotion) && WriteSkeleton() && WriteMotions() && CommitExport(mOutputs, mOptions, mResult);
}

bool KQexExportRun::Run(std::string& pAsf, std::string* pAmc)
{
    const bool lOk = (pAmc == nullptr || SampleMotion(0)) && MakeSkeleton(pAmc != nullptr) && (pAmc == nullptr || WriteMotion(0, pAmc));
    pAsf.swap(mText);
    return lOk;
}

bool KQexExportRun::SampleMotion(size_t pMotion)
{
    const KQexExportMotion& lMotion = mMotions[pMotion];
    return MakeSampling({mRoot}, lMotion.mStack, lMotion.mSampling, mResult.mSamplings[pMotion]) ||
           FailExport(mResult, lMotion.mPath, "No frames in the requested part of the take");
}

bool KQexExportRun::HasTranslations(const KQexMovingJoints& pMoving) const
{
    return mOptions.mTranslations == eTRANSLATION_DOFS_ALL ||
           (mOptions.mTranslations == eTRANSLATION_DOFS_MOVING && pMoving.HasTranslations());
}

/// Extracts, prepares and formats the skeleton; with \p pReadBack also reads it back, for the motions.
bool KQexExportRun::MakeSkeleton(bool pReadBack)
{
    std::vector<KQexAnimStack*> lTakes;
    for (const KQexExportMotion& lMotion : mMotions)
    {
        lTakes.push_back(lMotion.mStack);
    }
    const KQexMovingJoints              lMoving(mRoot, lTakes);
    const bool                          lHasTranslations = HasTranslations(lMoving);
    const KQexAsfSceneOwner             lScene(QexSdkNew<KQexAsfScene>());
    const KQexSceneUndo                 lUndo(mRoot->GetScene()); // Destroys the added end nodes, and restores the current take.
    std::unordered_set<const KQexNode*> lLeaves;
    if (!lScene || (mOptions.mAdaptForFile && !AddEndNodes(mRoot, lMoving, mOptions.mBoneDofs, lLeaves)) ||
        !Extract(*lScene, lHasTranslations))
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    KQexAsfPreparation lPreparation(lScene.get(), mRoot, lMoving, mOptions, lHasTranslations, lLeaves);
    if (!lPreparation.Run())
    {
        return FailExport(mResult, mAsfPath, "Out of memory");
    }
    Report(lPreparation);
    return Format(*lScene, lPreparation) && (!pReadBack || ReadBack(lPreparation.GetOrigins()));
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
    return FailExport(mResult, mAsfPath, "Out of memory");
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
    mOutputs.push_back(std::make_unique<KOutputFile>());
    KOutputFile& lOutput = *mOutputs.back();
    return (lOutput.Open(mAsfPath.c_str()) && lOutput.Write(mText.data(), mText.size()) && lOutput.Prepare()) ||
           FailExport(mResult, lOutput);
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

bool KQexExportRun::WriteMotion(size_t pMotion, std::string* pBuffer)
{
    const KQexExportMotion& lMotion = mMotions[pMotion];
    KQexAmcWriteOptions     lOptions = MakeWriteOptions(mOptions, mResult);
    lOptions.mStack = lMotion.mStack;
    lOptions.mSampling = mResult.mSamplings[pMotion];
    lOptions.mRestStack = mOptions.mBasePoseFirstFrame ? mMotions.front().mStack : nullptr;
    lOptions.mRestAlignment = eAMC_REST_ROOT;
    lOptions.mAsfName = pBuffer == nullptr && mAsfPath != "-" ? std::filesystem::path(mAsfPath).filename().string() : "";
    if (lOptions.mProgress)
    {
        lOptions.mProgress = [lReport = lOptions.mProgress, pMotion, lCount = mMotions.size()](double pFraction)
        {
            return lReport((static_cast<double>(pMotion) + pFraction) / static_cast<double>(lCount));
        };
    }
    return WriteMotionFile(lMotion.mPath, pBuffer, mReadBack.get(), mPairs, lOptions, mOutputs, mResult);
}

} // namespace qexsdk
