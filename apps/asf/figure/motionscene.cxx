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
    // Pre-rotations stay off: positions are then exact to single precision. Dummies are kept: their positions are wanted, too.
    qexsdk::KQexImportAcclaimOptions lOptions;
    lOptions.mSetLimits = false;
    lOptions.mRotationFilter = qexsdk::eROTATION_FILTER_UNROLL;
    lOptions.mTakeName = "motion";
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
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
    std::unordered_map<const qexsdk::KQexNode*, int> lIndices;
    for (qexsdk::KQexNode* lNode = mRoot; lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        KJoint lJoint;
        lJoint.mName = lNode->GetName();
        const auto lParent = lIndices.find(lNode->GetParent());
        lJoint.mParent = lParent == lIndices.end() ? -1 : lParent->second;
        // The importer activates rotation for bones only. The name is no criterion: a bone may be named NAME_End.
        lJoint.mIsEnd = !lNode->GetRotationActive();
        lIndices.emplace(lNode, static_cast<int>(mJoints.size()));
        mJoints.push_back(lJoint);
    }
}

/// Every sampled curve has a key at every frame, so the first curve found is enough.
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
        // Nothing moves, or a single frame, which the importer repeats one frame later.
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
        const qexsdk::KQexVector4 lPosition = mTransforms.GetTransform(static_cast<int>(lIndex)).GetT();
        pPositions[lIndex] = {lPosition.mData[0], lPosition.mData[1], lPosition.mData[2]};
    }
}

} // namespace asfapp
