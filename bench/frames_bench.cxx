// Frames and clean-up of skeletons, beside the bare moves of their memory.

#include <bench/skeletonsupport.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

using KBones = std::vector<HKQexAsfNode>;

/// All bones in the order in which they lie, the root first.
KBones BonesOf(HKQexAsfNode pRoot)
{
    KBones lBones = {pRoot};
    for (size_t i = 0; i < lBones.size(); ++i)
    {
        for (int lChild = 0; lChild < lBones[i]->mChildBuf.GetCount(); ++lChild)
        {
            lBones.push_back(lBones[i]->mChildBuf[lChild]);
        }
    }
    std::sort(lBones.begin() + 1, lBones.end());
    return lBones;
}

/// What every way to a bone's frame has to do: take over its parent's axis and place, and turn a matrix into three angles.
void TakeOver(KQexAsfNode& pBone, const KQexAsfNode& pParent)
{
    KgeSet(pBone.mParentAxisRM, pParent.mAxisRM);
    KgeSet(pBone.mParentAxisRMInv, pParent.mAxisRMInv);
    KgeSet(pBone.mParentPositionV, pParent.mPositionV);
    KgeSet(pBone.mLT, pParent.mPositionV);
    const auto& lRM = pBone.mAxisRM.mData;
    pBone.mLR.mData[0] = std::atan2(lRM[1][2], lRM[2][2]);
    pBone.mLR.mData[1] = std::atan2(lRM[0][2], lRM[0][0]);
    pBone.mLR.mData[2] = std::atan2(lRM[0][1], lRM[0][0]);
}

/// What frames stand beside: TakeOver() for every bone below the root, in the order in which they lie.
void TakeOverFrames(const KBones& pBones)
{
    for (size_t i = 1; i < pBones.size(); ++i)
    {
        KgeSet(pBones[i]->mPositionV, pBones[i]->mDirectionV);
        TakeOver(*pBones[i], *pBones[i]->mParent);
    }
}

using KScenes = std::vector<KSceneOwner>;

KScenes ReadSettled(const std::string& pText, int pSkeletons)
{
    // The bones of the turn before lay scattered when they were given back.
    SettleMemory();
    KScenes lScenes;
    for (int i = 0; i < pSkeletons; ++i)
    {
        lScenes.push_back(ReadText(pText));
    }
    return lScenes;
}

void Frames(benchmark::State& pState, const KCase& pCase)
{
    const KScenes       lScenes = ReadSettled(SkeletonText(pCase.mShape, pCase.mSize.mBones), pCase.mSize.mSkeletons);
    std::vector<KBones> lBones;
    for (const KSceneOwner& lScene : lScenes)
    {
        lBones.push_back(BonesOf(lScene->mRoot));
    }

    KBeside lBeside("moves");
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound(
            [&lBones]
            {
                for (const KBones& lOf : lBones)
                {
                    TakeOverFrames(lOf);
                }
            });
        lBeside.Work(pState,
                     [&lScenes]
                     {
                         for (const KSceneOwner& lScene : lScenes)
                         {
                             lScene->mRoot->SetupPosition(false, false);
                         }
                     });
    }
    pCase.Report(pState, lBeside);
}

/// What clean-up has to do, told beforehand.
class KTakenApart
{
public:
    /// The bones of a scene, which has none afterwards.
    explicit KTakenApart(const KSceneOwner& pScene) : mBones(BonesOf(pScene->mRoot))
    {
        pScene->mRoot = nullptr;
        for (const HKQexAsfNode lBone : mBones)
        {
            const bool lIsDummy = lBone->mParent != nullptr && lBone->mOrderCount == 0;
            (lIsDummy ? mDummies : mKept).push_back(lBone);
            if (!lIsDummy && lBone->mParent != nullptr && lBone->mParent->mOrderCount == 0)
            {
                mMoved.push_back(lBone);
            }
        }
    }
    ~KTakenApart() { Release(mKept); }
    KTakenApart(const KTakenApart&) = delete;
    KTakenApart& operator=(const KTakenApart&) = delete;

    /// What clean-up stands beside: a look at every bone, TakeOver() for those that hang on dummies, and the dummies' memory given back, all in
    /// the order in which they lie. To be called once.
    void TakeOverDummies()
    {
        int lSum = 0;
        for (const HKQexAsfNode lBone : mBones)
        {
            lSum += lBone->mOrderCount;
        }
        benchmark::DoNotOptimize(lSum);
        for (const HKQexAsfNode lBone : mMoved)
        {
            TakeOver(*lBone, *lBone->mParent);
        }
        Release(mDummies);
    }

private:
    static void Release(const KBones& pBones)
    {
        for (const HKQexAsfNode lBone : pBones)
        {
            lBone->mChildBuf.Clear();
            QexSdkDelete(lBone);
        }
    }

    KBones mBones;
    KBones mDummies;
    KBones mKept;
    KBones mMoved; ///< Kept ones that hang on a dummy.
};

void CleanUp(benchmark::State& pState, const KCase& pCase)
{
    const std::string lText = SkeletonText(pCase.mShape, pCase.mSize.mBones);
    KBeside           lBeside("moves");
    for (auto lStep : pState)
    {
        (void)lStep;
        {
            std::deque<KTakenApart> lAparts;
            for (const KSceneOwner& lScene : ReadSettled(lText, pCase.mSize.mSkeletons))
            {
                lAparts.emplace_back(lScene);
            }
            lBeside.Bound(
                [&lAparts]
                {
                    for (KTakenApart& lApart : lAparts)
                    {
                        lApart.TakeOverDummies();
                    }
                });
        }
        const KScenes lScenes = ReadSettled(lText, pCase.mSize.mSkeletons);
        lBeside.Work(pState,
                     [&lScenes]
                     {
                         for (const KSceneOwner& lScene : lScenes)
                         {
                             lScene->mRoot->RemoveDummy(false, false);
                         }
                     });
    }
    pCase.Report(pState, lBeside);
}

} // namespace

void RegisterBenches()
{
    const std::vector<KSize> lSizes = {{10}, {100}, {1000}, {1000, 100}, {10000}, {100000}};
    KeepMemory();
    RegisterSeries("Frames", Frames, lSizes);
    RegisterSeries("CleanUp", CleanUp, lSizes);
}
