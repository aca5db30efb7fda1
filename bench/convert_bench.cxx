// Conversions of a real motion, repeated 1, 10 and 100 times, to BVH and GLB. For the reverse direction: writing AMC, reading BVH.

#include <bench/motionsupport.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>
#ifdef QEX_BENCH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

#include <algorithm>
#include <memory>

using namespace qexsdk;
using namespace qexbench;

namespace
{

#ifdef QEX_BENCH_GLTF
void WriteGlb(const KImported& pFigure, const std::string& pPath)
{
    KQexFileGltf         lFile;
    KQexGltfWriteOptions lOptions;
    KQexGltfTake         lTake;
    lTake.mStack = pFigure.mStack;
    lTake.mSampling = pFigure.mSampling;
    lOptions.mTakes.push_back(lTake);
    Require(lFile.Write(pPath, {pFigure.mResult.mRootNode}, lOptions));
}
#endif

using KWriter = void (*)(const KImported&, const std::string&);

/// The bound: reading the file with from_chars for each number, a sine-cosine pair per DOF, three arc tangents per rotating bone and,
/// for text output, to_chars for each number written.
void Convert(benchmark::State& pState, const KMotion& pMotion, int pRepeats, const char* pExtension, KWriter pWriter)
{
    const KRepeatedMotion   lLong(pMotion, pRepeats);
    const KScratchFile      lOut(pExtension);
    KQexImportAcclaimResult lResult;
    int                     lDofs = 0;
    int                     lBones = 0;
    CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, lDofs, lBones);
    { // The bound prints the numbers that the conversion writes.
        const KRepeatedMotion lOnce(pMotion, 1);
        pWriter(KImported(pMotion, lOnce.Path()), lOut.Path());
    }
    // Numbers of one repeat, printed pRepeats times: keeping all of them would raise the peak memory, which is reported.
    const std::vector<double> lNumbers = std::string(pExtension) == ".glb" ? std::vector<double>() : NumbersOf(lOut.Path());
    KComparison               lComparison;
    size_t                    lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&]
            {
                ScanFile(lLong.Path());
                benchmark::DoNotOptimize(RunTrigonometry(lLong.Frames(), lDofs, lBones));
                for (int lRepeat = 0; lRepeat < pRepeats; ++lRepeat)
                {
                    PrintNumbers(lNumbers);
                }
            });
        ResetPeakMemory();
        lComparison.Work(pState, [&] { pWriter(KImported(pMotion, lLong.Path()), lOut.Path()); });
        lPeak = std::max(lPeak, PeakMemory());
    }
    ReportMotion(pState, lComparison, lLong.Size(), lLong.Frames(), lPeak);
}

/// Writes the motion of an imported scene. The bound: to_chars of the same numbers on one thread.
void WriteAmc(benchmark::State& pState, const KMotion& pMotion, int pRepeats, int pThreads)
{
    const KRepeatedMotion    lLong(pMotion, pRepeats);
    const KScratchFile       lOut(".amc");
    const KImported          lFigure(pMotion, lLong.Path());
    KQexExportAcclaimOptions lOptions;
    lOptions.mThreads = pThreads;
    const std::vector<double> lNumbers = NumbersOf(lLong.Path());
    KComparison               lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&] { PrintNumbers(lNumbers); });
        lComparison.Work(pState,
                         [&]
                         {
                             KQexExportAcclaimResult lResult;
                             Require(KQexExporterAcclaim::ExportMotion(lFigure.mResult.mRootNode, lFigure.mResult.mAsfScene.get(),
                                                                       lOut.Path().c_str(), lOptions, lResult));
                         });
    }
    lComparison.ReportBytes(pState, FileSize(lOut.Path()));
    lComparison.ReportItems(pState, "frame", lLong.Frames());
}

/// Reads BVH into a scene. The bound: from_chars of its numbers.
void ReadBvh(benchmark::State& pState, const KMotion& pMotion, int pRepeats)
{
    const KScratchFile lIn(".bvh");
    int                lFrames = 0;
    {
        const KRepeatedMotion lLong(pMotion, pRepeats);
        lFrames = lLong.Frames();
        WriteBvh(KImported(pMotion, lLong.Path()), lIn.Path());
    }
    KComparison lComparison;
    size_t      lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&] { ScanFile(lIn.Path()); });
        KQexScene* lScene = KQexScene::Create("bench");
        ResetPeakMemory();
        lComparison.Work(pState,
                         [&]
                         {
                             KQexFileBvh       lFile;
                             KQexBvhReadResult lResult;
                             Require(lFile.OpenRead(lIn.Path().c_str()) && lFile.Read(lScene, KQexBvhReadOptions(), lResult));
                         });
        lPeak = std::max(lPeak, PeakMemory());
        lScene->Destroy();
    }
    ReportMotion(pState, lComparison, FileSize(lIn.Path()), lFrames, lPeak);
}

} // namespace

void RegisterBenchmarks()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lRepeats : {1, 10, 100})
    {
        RegisterRepeats("ToBvh", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats)
                        { Convert(pState, pMotion, pRepeats, ".bvh", WriteBvh); });
#ifdef QEX_BENCH_GLTF
        RegisterRepeats("ToGlb", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats)
                        { Convert(pState, pMotion, pRepeats, ".glb", WriteGlb); });
#endif
    }
    for (const int lRepeats : {1, 10})
    {
        RegisterRepeats("WriteAmc/one_thread", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats) { WriteAmc(pState, pMotion, pRepeats, 1); });
        RegisterRepeats("WriteAmc/all_threads", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats) { WriteAmc(pState, pMotion, pRepeats, 0); });
        RegisterRepeats("ReadBvh", lMotion, lRepeats, ReadBvh);
    }
}
