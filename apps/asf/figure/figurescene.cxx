#include <apps/asf/figure/figurescene.h>

#include <apps/asf/progress.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <new>

namespace asfapp
{

using qexsdk::KQexNode;

KFigureScene::KFigureScene() : mScene(qexsdk::KQexScene::Create("figure"))
{
    if (mScene == nullptr)
    {
        throw std::bad_alloc();
    }
}

KFigureScene::~KFigureScene()
{
    mSkeleton.reset();
    mScene->Destroy();
}

bool KFigureScene::Load(const KFigureInput& pInput, const KFigureOptions& pOptions, KConsole& pConsole)
{
    const EFileKind lKind = pInput.mFigure.GetKind();
    const bool      lOk = lKind == eKIND_BVH    ? LoadBvh(pInput.mFigure, pOptions, pConsole)
                          : lKind == eKIND_GLTF ? LoadGltf(pInput.mFigure, pOptions, pConsole)
                                                : LoadAcclaim(pInput, pOptions, pConsole);
    if (!lOk || !PickTake(pOptions.mTake, pConsole))
    {
        return false;
    }
    if (pOptions.mRemoveDummies && lKind != eKIND_ASF)
    {
        for (KQexNode* lRoot : mRoots)
        {
            RemoveDummyNodes(lRoot, mTakes);
        }
    }
    mScene->GetEvaluator()->SetContext(mTakes.empty() ? nullptr : mTakes.front().mStack);
    return true;
}

bool KFigureScene::LoadAcclaim(const KFigureInput& pInput, const KFigureOptions& pOptions, KConsole& pConsole)
{
    // Pre-rotations stay off: positions are then exact to single precision. Limits are kept in mDofs, not in the scene.
    qexsdk::KQexImportAcclaimOptions lOptions;
    lOptions.mRemoveDummies = pOptions.mRemoveDummies;
    lOptions.mSetLimits = false;
    lOptions.mKeepAsfScene = true;
    lOptions.mSamplesPerSecond = pOptions.mMotionRate;
    lOptions.mRotationFilter = pOptions.mFilter;
    lOptions.mUseConstantKeyReducer = pOptions.mReduce;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    std::vector<qexsdk::KQexAcclaimSource> lMotions;
    for (const KInputFile& lMotion : pInput.mMotions)
    {
        lMotions.push_back(lMotion.GetSource());
        lMotions.back().mTakeName = lMotions.size() == 1 && pInput.mMotions.size() == 1 ? pOptions.mTake : "";
    }
    qexsdk::KQexImportAcclaimResult lResult;
    {
        KProgress lProgress("reading", pConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        qexsdk::KQexImporterAcclaim::Import(mScene, pInput.mFigure.GetSource(), lMotions, lOptions, lResult);
    }
    PrintMessages(lResult, pConsole);
    if (!lResult.mOk)
    {
        bool lSystem = pInput.mFigure.FailsToRead();
        for (const KInputFile& lMotion : pInput.mMotions)
        {
            lSystem = lSystem || lMotion.FailsToRead();
        }
        pConsole.Raise(lSystem ? eEXIT_SYSTEM : eEXIT_INPUT);
        return false;
    }
    for (size_t lIndex = 0; lIndex < lResult.mTakes.size(); ++lIndex)
    {
        const qexsdk::KQexImportedTake& lTake = lResult.mTakes[lIndex];
        KFigureTake                     lFigureTake;
        lFigureTake.mName = lTake.mName;
        lFigureTake.mStack = mScene->FindAnimStack(lTake.mName.c_str());
        lFigureTake.mIsSingle = lTake.mInfo.mLowestFrame == lTake.mInfo.mHighestFrame;
        lFigureTake.mFrames = lTake.mInfo.mFrameCount;
        NoteRate(pInput.mMotions[lIndex], lTake.mInfo, pConsole);
        mTakes.push_back(lFigureTake);
    }
    mRoots.assign(1, lResult.mRootNode);
    mSkeleton = std::move(lResult.mAsfScene);
    mSkeletonNotes = lResult.mSkeletonNotes;
    mDofs = qexsdk::KQexExporterAcclaim::GetBoneDofs(mSkeleton.get());
    mHasDofs = true;
    return true;
}

bool KFigureScene::LoadBvh(const KInputFile& pFile, const KFigureOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFileBvh        lReader(false);
    qexsdk::KQexBvhReadOptions lOptions;
    qexsdk::KQexBvhReadResult  lResult;
    lOptions.mTakeName = pOptions.mTake.empty() ? FileStem(pFile.GetPath()) : pOptions.mTake;
    lOptions.mKeepGoodFrames = pOptions.mKeepGoodFrames;
    bool lOk = false;
    {
        KProgress lProgress("reading", pConsole);
        lOptions.mProgress = [&lProgress](double pFraction)
        {
            return lProgress.Show(pFraction);
        };
        lOk = pFile.OpenFor(lReader) && lReader.Read(mScene, lOptions, lResult);
    }
    PrintTextMessages(lReader, pFile.GetDisplayPath(), pConsole);
    if (!lOk)
    {
        pConsole.Raise(pFile.FailsToRead() ? eEXIT_SYSTEM : eEXIT_INPUT);
        return false;
    }
    mRoots = lResult.mRoots;
    if (qexsdk::KQexAnimStack* lStack = mScene->FindAnimStack(lOptions.mTakeName.c_str()))
    {
        KFigureTake lTake;
        lTake.mName = lOptions.mTakeName;
        lTake.mStack = lStack;
        mTakes.push_back(lTake);
    }
    return true;
}

bool KFigureScene::PickTake(const std::string& pName, KConsole& pConsole)
{
    if (pName.empty())
    {
        return true;
    }
    std::string lList;
    for (const KFigureTake& lTake : mTakes)
    {
        if (lTake.mName == pName)
        {
            mTakes = std::vector<KFigureTake>{lTake};
            return true;
        }
        lList += (lList.empty() ? "" : ", ") + lTake.mName;
    }
    pConsole.Fail(eEXIT_USAGE, "--take: there is no take " + pName + (lList.empty() ? "" : "; there are " + lList));
    return false;
}

bool CheckSpan(const KFigureTake& pTake, const qexsdk::KQexSampling& pSampling, KConsole& pConsole)
{
    // The factor leaves room for sparse files, such as one with a frame per second numbered at film rate.
    constexpr long long kAlwaysAllowed = 1000000;
    constexpr long long kAllowedPerFrame = 16;
    if (pTake.mFrames == 0 || pSampling.mCount <= kAlwaysAllowed || pSampling.mCount / kAllowedPerFrame <= pTake.mFrames)
    {
        return true;
    }
    pConsole.Fail(eEXIT_INPUT, "take " + pTake.mName + " spans " + std::to_string(pSampling.mCount) + " frames, but its file has only " +
                                   std::to_string(pTake.mFrames));
    return false;
}

void KFigureScene::DropLimits()
{
    for (auto& lBone : mDofs)
    {
        for (qexsdk::KQexBoneDof& lDof : lBone.second)
        {
            lDof.mHasMin = lDof.mHasMax = false;
        }
    }
}

} // namespace asfapp
