// Skeleton files: reading beside the bare numbers, writing, frames, clean-up, memory.

#include <bench/benchsupport.h>

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

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

KSceneOwner ReadPath(const std::string& pPath)
{
    KSceneOwner        lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf lFile(false);
    Demand(lFile.OpenRead(pPath.c_str()) && lFile.Read(lScene.get(), false, false, false));
    return lScene;
}

/// Reads a file again and again, in turns with its bound; before each reading pPrepare sees to the memory.
template <typename TPrepare>
void ReadBeside(benchmark::State& pState, KBeside& pBeside, const std::string& pPath, TPrepare&& pPrepare)
{
    KSceneOwner lScene = ReadPath(pPath);
    for (auto lStep : pState)
    {
        (void)lStep;
        pBeside.Bound([&pPath] { ScanFile(pPath); });
        lScene.reset();
        pPrepare();
        pBeside.Work(pState, [&] { lScene = ReadPath(pPath); });
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

void Frames(benchmark::State& pState, EShape pShape, int pBones)
{
    SettleMemory();
    const KSceneOwner lScene = ReadText(SkeletonText(pShape, pBones));
    KBeside           lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Work(pState, [&lScene] { lScene->mRoot->SetupPosition(false, false); });
    }
    lBeside.ReportPieces(pState, "bone", pBones);
}

void CleanUp(benchmark::State& pState, EShape pShape, int pBones)
{
    const std::string lText = SkeletonText(pShape, pBones);
    KBeside           lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        // The bones of the turn before lay scattered when they were given back.
        SettleMemory();
        const KSceneOwner lScene = ReadText(lText);
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

/// The best of so few is still worth something, however short a time is asked for.
constexpr int kManyBones = 10000;
constexpr int kManyTurns = 20;

void Register(const char* pName, KBench pBench, EShape pShape, int pBones)
{
    const std::string lName = std::string(pName) + "/" + ShapeName(pShape) + "/" + std::to_string(pBones);
    auto* lBench = benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { pBench(pState, pShape, pBones); });
    lBench->UseManualTime();
    if (pBones >= kManyBones)
    {
        lBench->Iterations(kManyTurns);
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
    RegisterSeries("ReadFresh", ReadFresh, {1000, 100000});
    RegisterSeries("Write", WriteGenerated, lSizes);
    RegisterSeries("Frames", Frames, lSizes);
    RegisterSeries("CleanUp", CleanUp, lSizes);
    RegisterSeries("Heap", Heap, lSizes);
}
