// Coordinate frames of bones, and dummy removal, compared with the least work that they need.

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

/// The root, then all other bones in order of their addresses.
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

/// The least work for a bone's frame: copying its parent's axis and position, and three angles from a matrix.
void CopyParentFrame(KQexAsfNode& pBone, const KQexAsfNode& pParent)
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

/// The bound of SetupPosition(): CopyParentFrame() for every bone but the root, in order of their addresses.
void CopyParentFrames(const KBones& pBones)
{
    for (size_t i = 1; i < pBones.size(); ++i)
    {
        KgeSet(pBones[i]->mPositionV, pBones[i]->mDirectionV);
        CopyParentFrame(*pBones[i], *pBones[i]->mParent);
    }
}

using KScenes = std::vector<KSceneOwner>;

KScenes ReadCompact(const std::string& pText, int pSkeletons)
{
    // The bones freed by the previous iteration left a fragmented heap.
    ConsolidateHeap();
    KScenes lScenes;
    for (int i = 0; i < pSkeletons; ++i)
    {
        lScenes.push_back(ReadText(pText));
    }
    return lScenes;
}

void Frames(benchmark::State& pState, const KCase& pCase)
{
    const KScenes       lScenes = ReadCompact(SkeletonText(pCase.mShape, pCase.mSize.mBones), pCase.mSize.mSkeletons);
    std::vector<KBones> lBones;
    for (const KSceneOwner& lScene : lScenes)
    {
        lBones.push_back(BonesOf(lScene->mRoot));
    }

    KComparison lComparison("moves");
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&lBones]
            {
                for (const KBones& lSkeleton : lBones)
                {
                    CopyParentFrames(lSkeleton);
                }
            });
        lComparison.Work(pState,
                         [&lScenes]
                         {
                             for (const KSceneOwner& lScene : lScenes)
                             {
                                 lScene->mRoot->SetupPosition(false, false);
                             }
                         });
    }
    pCase.Report(pState, lComparison);
}

/// The bound of RemoveDummy(): which bones move and which are deleted is known in advance.
class KCleanUpBound
{
public:
    /// Takes the bones out of the scene and owns them.
    explicit KCleanUpBound(const KSceneOwner& pScene) : mBones(BonesOf(pScene->mRoot))
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
    ~KCleanUpBound() { Release(mKept); }
    KCleanUpBound(const KCleanUpBound&) = delete;
    KCleanUpBound& operator=(const KCleanUpBound&) = delete;

    /// Visits every bone, runs CopyParentFrame() on the children of dummies and frees the dummies, all in order of their addresses.
    /// Call it once only.
    void Run()
    {
        int lSum = 0;
        for (const HKQexAsfNode lBone : mBones)
        {
            lSum += lBone->mOrderCount;
        }
        benchmark::DoNotOptimize(lSum);
        for (const HKQexAsfNode lBone : mMoved)
        {
            CopyParentFrame(*lBone, *lBone->mParent);
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
    KBones mMoved; ///< Bones of mKept whose parent is a dummy.
};

void CleanUp(benchmark::State& pState, const KCase& pCase)
{
    const std::string lText = SkeletonText(pCase.mShape, pCase.mSize.mBones);
    KComparison       lComparison("moves");
    for (auto lStep : pState)
    {
        (void)lStep;
        {
            std::deque<KCleanUpBound> lBounds;
            for (const KSceneOwner& lScene : ReadCompact(lText, pCase.mSize.mSkeletons))
            {
                lBounds.emplace_back(lScene);
            }
            lComparison.Bound(
                [&lBounds]
                {
                    for (KCleanUpBound& lBound : lBounds)
                    {
                        lBound.Run();
                    }
                });
        }
        const KScenes lScenes = ReadCompact(lText, pCase.mSize.mSkeletons);
        lComparison.Work(pState,
                         [&lScenes]
                         {
                             for (const KSceneOwner& lScene : lScenes)
                             {
                                 lScene->mRoot->RemoveDummy(false, false);
                             }
                         });
    }
    pCase.Report(pState, lComparison);
}

} // namespace

void RegisterBenchmarks()
{
    const std::vector<KSize> lSizes = {{10}, {100}, {1000}, {1000, 100}, {10000}, {100000}};
    KeepFreedMemory();
    RegisterSeries("Frames", Frames, lSizes);
    RegisterSeries("CleanUp", CleanUp, lSizes);
}
