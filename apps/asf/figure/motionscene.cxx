#include <apps/asf/figure/motionscene.h>

#include <apps/asf/progress.h>

#include <cmath>
#include <new>
#include <unordered_map>

namespace asfapp
{

KMotionScene::KMotionScene() : mScene(qexsdk::KQexScene::Create("motion"))
{
    if (mScene == nullptr)
    {
        throw std::bad_alloc();
    }
}

KMotionScene::~KMotionScene()
{
    mScene->Destroy();
}

bool KMotionScene::Import(const KMotionInput& pInput, const KMotionOptions& pOptions, KConsole& pConsole)
{
    // Positions are exact to single precision without pre-rotations; dummies are joints that users ask for.
    qexsdk::KQexImportAcclaimOptions lOptions;
    lOptions.mSetLimits = false;
    lOptions.mRotationFilter = qexsdk::eROTATION_FILTER_UNROLL;
    lOptions.mTakeName = "motion";
    lOptions.mSamplesPerSecond = pOptions.mSamples;
    qexsdk::KQexImportAcclaimResult lResult;
    {
        KProgress lProgress("reading", pConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        qexsdk::KQexImporterAcclaim::Import(mScene, pInput.GetSkeleton().GetSource(), {pInput.GetMotion().GetSource()}, lOptions, lResult);
    }
    PrintMessages(lResult, pConsole);
    if (!lResult.mOk || lResult.mTakes.empty())
    {
        pInput.RaiseFailure(pConsole);
        return false;
    }
    mRoot = lResult.mRootNode;
    mInfo = lResult.mTakes.front().mInfo;
    NoteRate(pInput.GetMotion(), mInfo, pConsole);
    mScene->GetEvaluator()->SetContext(mScene->FindAnimStack(lResult.mTakes.front().mName.c_str()));
    CollectJoints();
    CollectFrames();
    return true;
}

void KMotionScene::CollectJoints()
{
    std::unordered_map<const qexsdk::KQexNode*, int> lPlaces;
    for (qexsdk::KQexNode* lNode = mRoot; lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        KJoint lJoint;
        lJoint.mName = lNode->GetName();
        const auto lParent = lPlaces.find(lNode->GetParent());
        lJoint.mParent = lParent == lPlaces.end() ? -1 : lParent->second;
        // The import switches rotation on for every bone, and for nothing else: names do not tell, a bone may be called NAME_End.
        lJoint.mIsEnd = !lNode->GetRotationActive();
        lPlaces.emplace(lNode, static_cast<int>(mJoints.size()));
        mJoints.push_back(lJoint);
    }
}

/// Every sampled curve has a key at every frame; the first one found tells them all.
void KMotionScene::CollectFrames()
{
    qexsdk::KQexAnimLayer* lLayer = mScene->GetEvaluator()->GetLayer();
    for (qexsdk::KQexNode* lNode = mRoot; lNode != nullptr && mTimes.empty(); lNode = lNode->GetNextInTree(mRoot))
    {
        for (auto* lProperty : {&lNode->mLocalTranslation, &lNode->mLocalRotation})
        {
            const qexsdk::KQexAnimCurveNode* lCurveNode = lProperty->GetCurveNode(lLayer, false);
            const qexsdk::KQexAnimCurve*     lCurve = lCurveNode != nullptr ? lCurveNode->GetCurve(0) : nullptr;
            for (int lKey = 0; lCurve != nullptr && lCurve->GetKeyCount() != static_cast<int>(mTimes.size()); ++lKey)
            {
                mTimes.push_back(lCurve->GetTime(lKey));
            }
            if (!mTimes.empty())
            {
                break;
            }
        }
    }
    if (mTimes.empty() || mInfo.mLowestFrame == mInfo.mHighestFrame)
    {
        // Nothing moves, or a single frame, which was sampled a second time behind itself.
        mTimes.assign(1, mInfo.mStart);
    }
    for (const qexsdk::KTime& lTime : mTimes)
    {
        mFrames.push_back(mInfo.mFirstFrame + std::llround(lTime.GetSeconds() * mInfo.mSamplesPerSecond));
    }
}

void KMotionScene::Evaluate(size_t pIndex, std::vector<KPoint>& pPositions)
{
    pPositions.resize(mJoints.size());
    if (!mScene->GetEvaluator()->EvaluateGlobalTransforms(mRoot, TimeOf(pIndex), mTransforms))
    {
        throw std::bad_alloc();
    }
    for (size_t lIndex = 0; lIndex < mJoints.size(); ++lIndex)
    {
        const qexsdk::KQexVector4 lPlace = mTransforms.GetTransform(static_cast<int>(lIndex)).GetT();
        pPositions[lIndex] = {lPlace.mData[0], lPlace.mData[1], lPlace.mData[2]};
    }
}

} // namespace asfapp
