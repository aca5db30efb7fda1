// Whole conversions of one, ten and a hundred times a real motion to BVH and GLB, and the two halves of the way back: writing AMC and
// parsing BVH.

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
    Demand(lFile.Write(pPath, {pFigure.mResult.mRootNode}, lOptions));
}
#endif

using KWriter = void (*)(const KImported&, const std::string&);

/// Beside reading the file, from_chars for each number in, one sine-cosine pair a DOF, three arc tangents a rotating bone and, for
/// text, to_chars for each number out.
void Convert(benchmark::State& pState, const KMotion& pMotion, int pTimes, const char* pExtension, KWriter pWriter)
{
    const KLongMotion       lLong(pMotion, pTimes);
    const KScratchFile      lOut(pExtension);
    KQexImportAcclaimResult lResult;
    int                     lDofs = 0;
    int                     lBones = 0;
    CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, lDofs, lBones);
    { // Once beforehand: which numbers come out is needed for the bound.
        const KLongMotion lOnce(pMotion, 1);
        pWriter(KImported(pMotion, lOnce.Path()), lOut.Path());
    }
    // The bound prints the numbers of one time so many times: they would not fit the memory that is watched.
    const std::vector<double> lNumbers = std::string(pExtension) == ".glb" ? std::vector<double>() : NumbersOf(lOut.Path());
    KBeside                   lBeside;
    size_t                    lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound(
            [&]
            {
                ScanFile(lLong.Path());
                benchmark::DoNotOptimize(TurnBones(lLong.Frames(), lDofs, lBones));
                for (int lTime = 0; lTime < pTimes; ++lTime)
                {
                    PrintNumbers(lNumbers);
                }
            });
        ResetPeakMemory();
        lBeside.Work(pState, [&] { pWriter(KImported(pMotion, lLong.Path()), lOut.Path()); });
        lPeak = std::max(lPeak, PeakMemory());
    }
    ReportMotion(pState, lBeside, lLong.Size(), lLong.Frames(), lPeak);
}

/// Writing the motion alone, of a scene that is there, beside to_chars of the same numbers on one thread.
void WriteAmc(benchmark::State& pState, const KMotion& pMotion, int pTimes, int pThreads)
{
    const KLongMotion        lLong(pMotion, pTimes);
    const KScratchFile       lOut(".amc");
    const KImported          lFigure(pMotion, lLong.Path());
    KQexExportAcclaimOptions lOptions;
    lOptions.mThreads = pThreads;
    const std::vector<double> lNumbers = NumbersOf(lLong.Path());
    KBeside                   lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&] { PrintNumbers(lNumbers); });
        lBeside.Work(pState,
                     [&]
                     {
                         KQexExportAcclaimResult lResult;
                         Demand(KQexExporterAcclaim::ExportMotion(lFigure.mResult.mRootNode, lFigure.mResult.mAsfScene.get(),
                                                                  lOut.Path().c_str(), lOptions, lResult));
                     });
    }
    lBeside.ReportBytes(pState, FileSize(lOut.Path()));
    lBeside.ReportPieces(pState, "frame", lLong.Frames());
}

/// Reading BVH into a scene beside from_chars of its numbers.
void ReadBvh(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KScratchFile lIn(".bvh");
    int                lFrames = 0;
    {
        const KLongMotion lLong(pMotion, pTimes);
        lFrames = lLong.Frames();
        WriteBvh(KImported(pMotion, lLong.Path()), lIn.Path());
    }
    KBeside lBeside;
    size_t  lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&] { ScanFile(lIn.Path()); });
        KQexScene* lScene = KQexScene::Create("bench");
        ResetPeakMemory();
        lBeside.Work(pState,
                     [&]
                     {
                         KQexFileBvh       lFile;
                         KQexBvhReadResult lResult;
                         Demand(lFile.OpenRead(lIn.Path().c_str()) && lFile.Read(lScene, KQexBvhReadOptions(), lResult));
                     });
        lPeak = std::max(lPeak, PeakMemory());
        lScene->Destroy();
    }
    ReportMotion(pState, lBeside, FileSize(lIn.Path()), lFrames, lPeak);
}

} // namespace

void RegisterBenches()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lTimes : {1, 10, 100})
    {
        RegisterTimes("ToBvh", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes)
                      { Convert(pState, pMotion, pTimes, ".bvh", WriteBvh); });
#ifdef QEX_BENCH_GLTF
        RegisterTimes("ToGlb", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes)
                      { Convert(pState, pMotion, pTimes, ".glb", WriteGlb); });
#endif
    }
    for (const int lTimes : {1, 10})
    {
        RegisterTimes("WriteAmc/one_thread", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes) { WriteAmc(pState, pMotion, pTimes, 1); });
        RegisterTimes("WriteAmc/all_threads", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes) { WriteAmc(pState, pMotion, pTimes, 0); });
        RegisterTimes("ReadBvh", lMotion, lTimes, ReadBvh);
    }
}
