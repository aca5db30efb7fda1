#include <qexfigure/kqexfigure.h>

#include <qexfigure/kqexfiguredummies.h>
#include <qexfigure/kqexfigureguard.h>

namespace qexsdk
{

KQexFigure::~KQexFigure()
{
    Clear();
}

void KQexFigure::Clear()
{
    if (KQexScene* lScene = ReleaseScene())
    {
        lScene->Destroy();
    }
}

KQexScene* KQexFigure::ReleaseScene()
{
    KQexScene* lScene = mScene;
    mScene = nullptr;
    mRoots.clear();
    mTakes.clear();
    mJoints.clear();
    mDofs.clear();
    mHasDofs = false;
    mSkeleton.reset(); // Before the scene: it may own curves.
    mSkeletonNotes = KQexAmcSkeletonNotes();
    return lScene;
}

bool KQexFigure::Load(const std::vector<std::string>& pPaths, const KQexFigureOptions& pOptions, KQexFigureReport& pReport) noexcept
{
    KQexFigureFiles lFiles;
    Clear();
    return lFiles.Open(pPaths, KQexFigureFilesOptions(), pReport) && Load(lFiles, pOptions, pReport);
}

bool KQexFigure::Load(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport) noexcept
{
    Clear();
    const bool lOk = RunGuarded(pReport, [&] { return LoadFiles(pFiles, pOptions, pReport); });
    if (!lOk)
    {
        Clear();
    }
    return lOk;
}

bool KQexFigure::LoadFiles(const KQexFigureFiles& pFiles, const KQexFigureOptions& pOptions, KQexFigureReport& pReport)
{
    MakeScene();
    const KQexFigureFormat lFormat = pFiles.mFigure.GetFormat();
    const bool             lOk = lFormat == eFIGURE_BVH    ? LoadBvh(pFiles.mFigure, pOptions, pReport)
                                 : lFormat == eFIGURE_GLTF ? LoadGltf(pFiles.mFigure, pOptions, pReport)
                                                           : LoadAcclaim(pFiles, pOptions, pReport);
    if (!lOk || !PickTake(pOptions, pReport))
    {
        return false;
    }
    if (pOptions.mRemoveDummies && lFormat != eFIGURE_ASF)
    {
        for (KQexNode* lRoot : mRoots)
        {
            RemoveDummyNodes(lRoot, mTakes);
        }
    }
    FinishScene();
    return true;
}

void KQexFigure::MakeScene()
{
    mScene = KQexScene::Create("figure");
    if (mScene == nullptr)
    {
        throw std::bad_alloc();
    }
}

/// After the nodes and takes were made.
void KQexFigure::FinishScene()
{
    CollectJoints();
    mScene->GetEvaluator()->SetContext(mTakes.empty() ? nullptr : mTakes.front().mStack);
}

bool KQexFigure::PickTake(const KQexFigureOptions& pOptions, KQexFigureReport& pReport)
{
    if (pOptions.mTake.empty())
    {
        return true;
    }
    std::string lList;
    for (const KQexFigureTake& lTake : mTakes)
    {
        if (lTake.mName == pOptions.mTake)
        {
            mTakes = std::vector<KQexFigureTake>{lTake};
            return true;
        }
        lList += (lList.empty() ? "" : ", ") + lTake.mName;
    }
    return pReport.Fail(eFIGURE_USAGE, "",
                        (pOptions.mTakeOption.empty() ? "" : pOptions.mTakeOption + ": ") + "there is no take " + pOptions.mTake +
                            (lList.empty() ? "" : "; there are " + lList));
}

bool KQexFigure::CheckSpan(const KQexFigureTake& pTake, const KQexSampling& pSampling, KQexFigureReport& pReport) noexcept
{
    // The factor leaves room for sparse files, such as one with a frame per second numbered at film rate.
    constexpr long long kAlwaysAllowed = 1000000;
    constexpr long long kAllowedPerFrame = 16;
    if (!pTake.mHasNumbers || pSampling.mCount <= kAlwaysAllowed || pSampling.mCount / kAllowedPerFrame <= pTake.mFrames)
    {
        return true;
    }
    return RunGuarded(pReport,
                      [&]
                      {
                          return pReport.Fail(eFIGURE_INPUT, "",
                                              "take " + pTake.mName + " spans " + std::to_string(pSampling.mCount) +
                                                  " frames, but its file has only " + std::to_string(pTake.mFrames));
                      });
}

void KQexFigure::DropLimits()
{
    for (auto& lBone : mDofs)
    {
        for (KQexBoneDof& lDof : lBone.second)
        {
            lDof.mHasMin = lDof.mHasMax = false;
        }
    }
}

} // namespace qexsdk
