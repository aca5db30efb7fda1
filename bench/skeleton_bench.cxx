// Skeleton files: reading beside the bare numbers, writing, frames, clean-up, memory.

#include <bench/benchsupport.h>

#include <kbaselib/kbase/kprefetch.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

struct KSceneDestroyer
{
    void operator()(KQexAsfScene* pScene) const { pScene->Destroy(); }
};

using KSceneOwner = std::unique_ptr<KQexAsfScene, KSceneDestroyer>;

// A figure for a file that was not read would be worth nothing.
void Demand(bool pDone)
{
    if (!pDone)
    {
        std::abort();
    }
}

KSceneOwner ReadText(const std::string& pText)
{
    KSceneOwner        lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf lFile(false);
    Demand(lFile.OpenReadBuffer(pText.data(), pText.size()) && lFile.Read(lScene.get(), false, false, false));
    return lScene;
}

KSceneOwner ReadPath(const std::string& pPath, bool pRemoveDummyNodes)
{
    KSceneOwner        lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf lFile(false);
    Demand(lFile.OpenRead(pPath.c_str()) && lFile.Read(lScene.get(), pRemoveDummyNodes, false, false));
    return lScene;
}

/// Reads a file again and again, in turns with its bound; before each reading pPrepare sees to the memory.
template <typename TPrepare>
void ReadBeside(benchmark::State& pState, KBeside& pBeside, const std::string& pPath, TPrepare&& pPrepare, bool pRemoveDummyNodes = false)
{
    KSceneOwner lScene = ReadPath(pPath, pRemoveDummyNodes);
    for (auto lStep : pState)
    {
        (void)lStep;
        pBeside.Bound([&pPath] { ScanFile(pPath); });
        lScene.reset();
        pPrepare();
        pBeside.Work(pState, [&] { lScene = ReadPath(pPath, pRemoveDummyNodes); });
    }
    pBeside.ReportBytes(pState, static_cast<size_t>(std::filesystem::file_size(pPath)));
}

// What is measured is reading: the memory that the skeleton before had is there.
void ReadGenerated(benchmark::State& pState, EShape pShape, int pBones)
{
    const KTextFile lFile(SkeletonText(pShape, pBones));
    KBeside         lBeside;
    ReadBeside(pState, lBeside, lFile.Path(), SettleMemory);
    lBeside.ReportPieces(pState, "bone", pBones);
}

// All that one call can do: bones, hierarchy, frames and clean-up.
void ReadClean(benchmark::State& pState, EShape pShape, int pBones)
{
    const KTextFile lFile(SkeletonText(pShape, pBones));
    KBeside         lBeside;
    ReadBeside(pState, lBeside, lFile.Path(), SettleMemory, true);
    lBeside.ReportPieces(pState, "bone", pBones);
}

// As a program's first reading: the system hands out every page anew.
void ReadFresh(benchmark::State& pState, EShape pShape, int pBones)
{
    const KTextFile lFile(SkeletonText(pShape, pBones));
    KBeside         lBeside;
    ReadBeside(pState, lBeside, lFile.Path(), DropMemory);
    lBeside.ReportPieces(pState, "bone", pBones);
}

void ReadFile(benchmark::State& pState, const std::string& pPath)
{
    KBeside lBeside;
    ReadBeside(pState, lBeside, pPath, SettleMemory);
}

void WriteGenerated(benchmark::State& pState, EShape pShape, int pBones)
{
    const KSceneOwner lScene = ReadText(SkeletonText(pShape, pBones));
    KBeside           lBeside;
    std::string       lOut;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Work(pState,
                     [&]
                     {
                         KQexFileAcclaimAsf lFile(false);
                         Demand(lFile.OpenWriteBuffer(&lOut));
                         lFile.Write(lScene.get());
                         Demand(lFile.Close());
                     });
    }
    lBeside.ReportBytes(pState, lOut.size());
    lBeside.ReportPieces(pState, "bone", pBones);
}

using KBones = std::vector<HKQexAsfNode>;

/// All bones in the order in which they lie, the root first.
KBones BonesOf(HKQexAsfNode pRoot)
{
    KBones lBones = {pRoot};
    for (size_t i = 0; i < lBones.size(); ++i)
        for (int lChild = 0; lChild < lBones[i]->mChildBuf.GetCount(); ++lChild)
            lBones.push_back(lBones[i]->mChildBuf[lChild]);
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

/// Bones ahead of the one taken over whose memory is asked for.
constexpr size_t kBonesAhead = 8;

void ApproachBone(const KBones& pBones, size_t pBone)
{
    if (pBone < pBones.size())
        KPrefetch(&pBones[pBone]->mDirectionV, &pBones[pBone]->mLR + 1);
}

/// The bound of frames: TakeOver() for every bone below the root, in the order in which they lie.
void TakeOverFrames(const KBones& pBones)
{
    for (size_t i = 1; i < pBones.size(); ++i)
    {
        ApproachBone(pBones, i + kBonesAhead);
        KgeSet(pBones[i]->mPositionV, pBones[i]->mDirectionV);
        TakeOver(*pBones[i], *pBones[i]->mParent);
    }
}

void Frames(benchmark::State& pState, EShape pShape, int pBones)
{
    SettleMemory();
    const KSceneOwner lScene = ReadText(SkeletonText(pShape, pBones));
    const KBones      lBones = BonesOf(lScene->mRoot);
    KBeside           lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&lBones] { TakeOverFrames(lBones); });
        lBeside.Work(pState, [&lScene] { lScene->mRoot->SetupPosition(false, false); });
    }
    lBeside.ReportPieces(pState, "bone", pBones);
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
                mMoved.push_back(lBone);
        }
    }
    ~KTakenApart() { Release(mKept); }
    KTakenApart(const KTakenApart&) = delete;
    KTakenApart& operator=(const KTakenApart&) = delete;

    /// The bound of clean-up: a look at every bone, TakeOver() for those that hang on dummies, and the dummies' memory given back, all in
    /// the order in which they lie. To be called once.
    void TakeOverDummies()
    {
        int lSum = 0;
        for (const HKQexAsfNode lBone : mBones)
            lSum += lBone->mOrderCount;
        benchmark::DoNotOptimize(lSum);
        for (size_t i = 0; i < mMoved.size(); ++i)
        {
            ApproachBone(mMoved, i + kBonesAhead);
            TakeOver(*mMoved[i], *mMoved[i]->mParent);
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

KSceneOwner ReadSettled(const std::string& pText)
{
    // The bones of the turn before lay scattered when they were given back.
    SettleMemory();
    return ReadText(pText);
}

void CleanUp(benchmark::State& pState, EShape pShape, int pBones)
{
    const std::string lText = SkeletonText(pShape, pBones);
    KBeside           lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        {
            KTakenApart lApart(ReadSettled(lText));
            lBeside.Bound([&lApart] { lApart.TakeOverDummies(); });
        }
        const KSceneOwner lScene = ReadSettled(lText);
        lBeside.Work(pState, [&lScene] { lScene->mRoot->RemoveDummy(false, false); });
    }
    lBeside.ReportPieces(pState, "bone", pBones);
}

void Heap(benchmark::State& pState, EShape pShape, int pBones)
{
    const std::string lText = SkeletonText(pShape, pBones);
    KBeside           lBeside;
    size_t            lBytes = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        const size_t lBefore = HeapInUse();
        KSceneOwner  lScene;
        lBeside.Work(pState, [&] { lScene = ReadText(lText); });
        lBytes = HeapInUse() - lBefore;
    }
    pState.counters["heap_B/bone"] = static_cast<double>(lBytes) / pBones;
    pState.counters["sizeof"] = static_cast<double>(sizeof(KQexAsfNode));
}

using KBench = void (*)(benchmark::State&, EShape, int);

/// Large skeletons get as many turns as read this many bones: the best of them is still worth something, however short a time is asked for.
constexpr int kManyBones = 10000;
constexpr int kBonesToRead = 2000000;

void Register(const char* pName, KBench pBench, EShape pShape, int pBones)
{
    const std::string lName = std::string(pName) + "/" + ShapeName(pShape) + "/" + std::to_string(pBones);
    auto* lBench = benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { pBench(pState, pShape, pBones); });
    lBench->UseManualTime();
    if (pBones >= kManyBones)
    {
        lBench->Iterations(kBonesToRead / pBones);
    }
}

void RegisterSeries(const char* pName, KBench pBench, const std::vector<int>& pBones)
{
    for (const EShape lShape : {eCHAIN, eFAN, eRANDOM})
    {
        for (const int lBones : pBones)
        {
            Register(pName, pBench, lShape, lBones);
        }
    }
}

} // namespace

void RegisterBenches()
{
    const std::vector<int> lSizes = {10, 100, 1000, 10000, 100000};
    KeepMemory();
    for (const std::string& lPath : CorpusFiles(".asf"))
    {
        const std::string lName = "ReadFile/" + std::filesystem::path(lPath).filename().string();
        benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { ReadFile(pState, lPath); })->UseManualTime();
    }
    RegisterSeries("Read", ReadGenerated, lSizes);
    RegisterSeries("ReadClean", ReadClean, {1000, 100000});
    RegisterSeries("ReadFresh", ReadFresh, {1000, 100000});
    RegisterSeries("Write", WriteGenerated, lSizes);
    RegisterSeries("Frames", Frames, lSizes);
    RegisterSeries("CleanUp", CleanUp, lSizes);
    RegisterSeries("Heap", Heap, lSizes);
}
