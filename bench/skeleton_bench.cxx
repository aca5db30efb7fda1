// Skeleton files: reading beside the bare numbers, writing, frames, clean-up, memory.

#include <bench/benchsupport.h>

#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

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

void ReadGenerated(benchmark::State& pState, EShape pShape, int pBones)
{
    const std::string lText = SkeletonText(pShape, pBones);
    KBeside           lBeside;
    KSceneOwner       lScene;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&lText] { benchmark::DoNotOptimize(ScanNumbers(lText.data(), lText.size())); });
        lScene.reset();
        lBeside.Work(pState, [&] { lScene = ReadText(lText); });
    }
    lBeside.ReportBytes(pState, lText.size());
    lBeside.ReportPieces(pState, "bone", pBones);
}

void ReadFile(benchmark::State& pState, const std::string& pPath)
{
    const size_t lSize = static_cast<size_t>(std::filesystem::file_size(pPath));
    KBeside      lBeside;
    KSceneOwner  lScene;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound(
            [&pPath]
            {
                const std::string lText = ReadWholeFile(pPath);
                benchmark::DoNotOptimize(ScanNumbers(lText.data(), lText.size()));
            });
        lScene.reset(QexSdkNew<KQexAsfScene>());
        lBeside.Work(pState,
                     [&]
                     {
                         KQexFileAcclaimAsf lFile(false);
                         Demand(lFile.OpenRead(pPath.c_str()) && lFile.Read(lScene.get(), false, false, false));
                     });
    }
    lBeside.ReportBytes(pState, lSize);
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

void RegisterSeries(const char* pName, KBench pBench)
{
    for (const EShape lShape : {eCHAIN, eFAN, eRANDOM})
    {
        for (const int lBones : {10, 100, 1000, 10000, 100000})
        {
            const std::string lName = std::string(pName) + "/" + ShapeName(lShape) + "/" + std::to_string(lBones);
            benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { pBench(pState, lShape, lBones); })->UseManualTime();
        }
    }
}

} // namespace

void RegisterBenches()
{
    for (const std::string& lPath : CorpusFiles(".asf"))
    {
        const std::string lName = "ReadFile/" + std::filesystem::path(lPath).filename().string();
        benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { ReadFile(pState, lPath); })->UseManualTime();
    }
    RegisterSeries("Read", ReadGenerated);
    RegisterSeries("Write", WriteGenerated);
    RegisterSeries("Frames", Frames);
    RegisterSeries("CleanUp", CleanUp);
    RegisterSeries("Heap", Heap);
}
