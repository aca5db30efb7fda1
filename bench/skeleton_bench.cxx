// Skeleton files: reading, compared with scanning the numbers; writing; heap size.

#include <bench/skeletonsupport.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

/// Times reading a file, alternating with its bound. Before each timed read, pPrepare() prepares the heap.
/// \param pSkeletons number of skeletons to read from the file in each iteration
template <typename TPrepare>
void ReadAndCompare(benchmark::State& pState, KComparison& pComparison, const std::string& pPath, TPrepare&& pPrepare,
                    bool pRemoveDummyNodes = false, int pSkeletons = 1)
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
        pComparison.Bound([&] { lAll([&](size_t) { ScanFile(pPath); }); });
        lAll([&](size_t pAt) { lScenes[pAt].reset(); });
        pPrepare();
        pComparison.Work(pState, [&] { lAll(lRead); });
    }
    pComparison.ReportBytes(pState, static_cast<size_t>(std::filesystem::file_size(pPath)) * static_cast<size_t>(pSkeletons));
}

template <typename TPrepare>
void ReadCase(benchmark::State& pState, const KCase& pCase, TPrepare&& pPrepare, bool pRemoveDummyNodes = false)
{
    const KTextFile lFile(SkeletonText(pCase.mShape, pCase.mSize.mBones));
    KComparison     lComparison;
    ReadAndCompare(pState, lComparison, lFile.Path(), pPrepare, pRemoveDummyNodes, pCase.mSize.mSkeletons);
    pCase.Report(pState, lComparison);
}

/// Reading alone: the memory of the previous skeleton is reused.
void ReadGenerated(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, ConsolidateHeap);
}

/// Reading with dummy removal: bones, hierarchy, frames and clean-up.
void ReadClean(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, ConsolidateHeap, true);
}

/// Like a program's first read: all memory is fresh pages from the system.
void ReadFresh(benchmark::State& pState, const KCase& pCase)
{
    ReadCase(pState, pCase, TrimHeap);
}

void ReadFile(benchmark::State& pState, const std::string& pPath)
{
    KComparison lComparison;
    ReadAndCompare(pState, lComparison, pPath, ConsolidateHeap);
}

void WriteGenerated(benchmark::State& pState, const KCase& pCase)
{
    const KSceneOwner lScene = ReadText(SkeletonText(pCase.mShape, pCase.mSize.mBones));
    KComparison       lComparison;
    std::string       lOut;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Work(pState,
                         [&]
                         {
                             KQexFileAcclaimAsf lFile(false);
                             Require(lFile.OpenWriteBuffer(&lOut));
                             lFile.Write(lScene.get());
                             Require(lFile.Close());
                         });
    }
    lComparison.ReportBytes(pState, lOut.size());
    pCase.Report(pState, lComparison);
}

void Heap(benchmark::State& pState, const KCase& pCase)
{
    const std::string lText = SkeletonText(pCase.mShape, pCase.mSize.mBones);
    KComparison       lComparison;
    size_t            lBytes = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        const size_t lBefore = HeapInUse();
        KSceneOwner  lScene;
        lComparison.Work(pState, [&] { lScene = ReadText(lText); });
        lBytes = HeapInUse() - lBefore;
    }
    pState.counters["heap_B/bone"] = static_cast<double>(lBytes) / pCase.mSize.AllBones();
    pState.counters["sizeof"] = static_cast<double>(sizeof(KQexAsfNode));
}

} // namespace

void RegisterBenchmarks()
{
    const std::vector<KSize> lSizes = {{10}, {100}, {1000}, {10000}, {100000}};
    const std::vector<KSize> lSizesAndSplit = {{10}, {100}, {1000}, {1000, 100}, {10000}, {100000}};
    KeepFreedMemory();
    for (const std::string& lPath : CorpusFiles(".asf"))
    {
        const std::string lName = "ReadFile/" + std::filesystem::path(lPath).filename().string();
        benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { ReadFile(pState, lPath); })->UseManualTime();
    }
    RegisterSeries("Read", ReadGenerated, lSizesAndSplit);
    RegisterSeries("ReadClean", ReadClean, {{1000}, {1000, 100}, {100000}});
    RegisterSeries("ReadFresh", ReadFresh, {{1000}, {100000}});
    RegisterSeries("Write", WriteGenerated, lSizes);
    RegisterSeries("Heap", Heap, lSizes);
}
