// Skeleton files: reading beside the bare numbers, writing, memory.

#include <bench/skeletonsupport.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

/// Reads a file again and again, in turns with its bound; before each reading pPrepare sees to the memory.
/// \param pSkeletons how often a turn reads it, as that many skeletons
template <typename TPrepare>
void ReadBeside(benchmark::State& pState, KBeside& pBeside, const std::string& pPath, TPrepare&& pPrepare, bool pRemoveDummyNodes = false,
                int pSkeletons = 1)
{
    const auto lAll = [pSkeletons](auto&& pOne)
    {
        for (int i = 0; i < pSkeletons; ++i)
        {
            pOne(static_cast<size_t>(i));
        }
    };
    std::vector<KSceneOwner> lScenes(static_cast<size_t>(pSkeletons));
    const auto               lRead = [&](size_t pAt)
    {
        lScenes[pAt] = ReadPath(pPath, pRemoveDummyNodes);
    };
    lAll(lRead);
    for (auto lStep : pState)
    {
        (void)lStep;
        pBeside.Bound([&] { lAll([&](size_t) { ScanFile(pPath); }); });
        lAll([&](size_t pAt) { lScenes[pAt].reset(); });
        pPrepare();
        pBeside.Work(pState, [&] { lAll(lRead); });
    }
    pBeside.ReportBytes(pState, static_cast<size_t>(std::filesystem::file_size(pPath)) * static_cast<size_t>(pSkeletons));
}

template <typename TPrepare>
void ReadCase(benchmark::State& pState, const KCase& pCase, TPrepare&& pPrepare, bool pRemoveDummyNodes = false)
{
    const KTextFile lFile(SkeletonText(pCase.mShape, pCase.mSize.mBones));
    KBeside         lBeside;
    ReadBeside(pState, lBeside, lFile.Path(), pPrepare, pRemoveDummyNodes, pCase.mSize.mSkeletons);
    pCase.Report(pState, lBeside);
}

/// What is measured is reading: the memory that the skeleton before had is there.
void ReadGenerated(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, SettleMemory);
}

/// All that one call can do: bones, hierarchy, frames and clean-up.
void ReadClean(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, SettleMemory, true);
}

/// As a program's first reading: the system hands out every page anew.
void ReadFresh(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, DropMemory);
}

void ReadFile(benchmark::State& pState, const std::string& pPath)
{
    KBeside lBeside;
    ReadBeside(pState, lBeside, pPath, SettleMemory);
}

void WriteGenerated(benchmark::State& pState, const KCase& pCase)
{
    const KSceneOwner lScene = ReadText(SkeletonText(pCase.mShape, pCase.mSize.mBones));
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
    pCase.Report(pState, lBeside);
}

void Heap(benchmark::State& pState, const KCase& pCase)
{
    const std::string lText = SkeletonText(pCase.mShape, pCase.mSize.mBones);
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
    pState.counters["heap_B/bone"] = static_cast<double>(lBytes) / pCase.mSize.AllBones();
    pState.counters["sizeof"] = static_cast<double>(sizeof(KQexAsfNode));
}

} // namespace

void RegisterBenches()
{
    const std::vector<KSize> lSizes = {{10}, {100}, {1000}, {10000}, {100000}};
    const std::vector<KSize> lSizesAndMany = {{10}, {100}, {1000}, {1000, 100}, {10000}, {100000}};
    KeepMemory();
    for (const std::string& lPath : CorpusFiles(".asf"))
    {
        const std::string lName = "ReadFile/" + std::filesystem::path(lPath).filename().string();
        benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { ReadFile(pState, lPath); })->UseManualTime();
    }
    RegisterSeries("Read", ReadGenerated, lSizesAndMany);
    RegisterSeries("ReadClean", ReadClean, {{1000}, {1000, 100}, {100000}});
    RegisterSeries("ReadFresh", ReadFresh, {{1000}, {100000}});
    RegisterSeries("Write", WriteGenerated, lSizes);
    RegisterSeries("Heap", Heap, lSizes);
}
