// Whole conversions of one, ten and a hundred times a real motion to BVH and GLB, and the two halves of the way back: writing AMC and
// parsing BVH.

#include <bench/motionsupport.h>

#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/motion/kqexfilebvh.h>
#ifdef QEX_BENCH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>

using namespace qexsdk;
using namespace qexbench;

namespace
{

namespace fs = std::filesystem;

/// A path that is free, and free again afterwards.
class KScratchFile
{
public:
    explicit KScratchFile(const char* pExtension)
        : mPath(fs::temp_directory_path() / ("qex_bench_out_" + std::to_string(std::rand()) + pExtension))
    {
    }
    ~KScratchFile()
    {
        std::error_code lIgnored;
        fs::remove(mPath, lIgnored);
    }
    KScratchFile(const KScratchFile&) = delete;
    KScratchFile& operator=(const KScratchFile&) = delete;

    std::string Path() const { return mPath.string(); }

private:
    fs::path mPath;
};

/// An imported motion: what every conversion from AMC begins with.
class KImported
{
public:
    KImported(const KMotion& pMotion, const std::string& pAmcPath) : mScene(KQexScene::Create("bench"))
    {
        KQexImportAcclaimOptions lOptions;
        lOptions.mSetLimits = false;
        lOptions.mKeepAsfScene = true;
        Demand(mScene != nullptr &&
               KQexImporterAcclaim::Import(mScene, KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"),
                                           {KQexAcclaimSource::File(pAmcPath)}, lOptions, mResult));
        mStack = mScene->FindAnimStack(mResult.mTakes.front().mName.c_str());
        mScene->GetEvaluator()->SetContext(mStack);
        Demand(MakeSampling({mResult.mRootNode}, mStack, {}, mSampling));
    }
    ~KImported()
    {
        mResult.mAsfScene.reset();
        mScene->Destroy();
    }
    KImported(const KImported&) = delete;
    KImported& operator=(const KImported&) = delete;

    KQexScene*              mScene;
    KQexImportAcclaimResult mResult;
    KQexAnimStack*          mStack = nullptr;
    KQexSampling            mSampling;
};

void WriteBvh(const KImported& pFigure, const std::string& pPath)
{
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = pFigure.mStack;
    lOptions.mSampling = pFigure.mSampling;
    Demand(lFile.OpenWrite(pPath.c_str()) && lFile.Write({pFigure.mResult.mRootNode}, lOptions) && lFile.Close());
}

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

/// All numbers of a text file, as they are at the end of a parse.
std::vector<double> NumbersOf(const std::string& pPath)
{
    const std::string   lText = ReadWholeFile(pPath);
    std::vector<double> lNumbers;
    const char*         lEnd = lText.data() + lText.size();
    for (const char* lPlace = lText.data(); lPlace < lEnd;)
    {
        double     lValue = 0;
        const auto lResult = std::from_chars(lPlace, lEnd, lValue);
        if (lResult.ec == std::errc() && lResult.ptr != lPlace)
        {
            lNumbers.push_back(lValue);
        }
        lPlace = lResult.ptr == lPlace ? lPlace + 1 : lResult.ptr;
    }
    return lNumbers;
}

/// std::to_chars of numbers, six decimals: what writing text could cost at the least.
void PrintNumbers(const std::vector<double>& pNumbers)
{
    char lText[400];
    for (const double lNumber : pNumbers)
    {
        const auto lResult = std::to_chars(lText, lText + sizeof lText, lNumber, std::chars_format::fixed, 6);
        benchmark::DoNotOptimize(*lResult.ptr = 0);
    }
}

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
    lBeside.ReportBytes(pState, lLong.Size());
    lBeside.ReportPieces(pState, "frame", lLong.Frames());
    pState.counters["peak_MB"] = static_cast<double>(lPeak) / 1e6;
}

/// Writing the motion alone, of a scene that is there, beside to_chars of the same numbers.
void WriteAmc(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KLongMotion        lLong(pMotion, pTimes);
    const KScratchFile       lOut(".amc");
    const KImported          lFigure(pMotion, lLong.Path());
    KQexExportAcclaimOptions lOptions;
    lOptions.mThreads = 1;
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
    lBeside.ReportBytes(pState, static_cast<size_t>(fs::file_size(lOut.Path())));
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
    lBeside.ReportBytes(pState, static_cast<size_t>(fs::file_size(lIn.Path())));
    lBeside.ReportPieces(pState, "frame", lFrames);
    pState.counters["peak_MB"] = static_cast<double>(lPeak) / 1e6;
}

template <typename TBench>
void Register(const std::string& pName, const std::shared_ptr<KMotion>& pMotion, int pTimes, TBench pBench)
{
    benchmark::RegisterBenchmark((pName + "/" + pMotion->mName + "/x" + std::to_string(pTimes)).c_str(),
                                 [=](benchmark::State& pState) { pBench(pState, *pMotion, pTimes); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterBenches()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lTimes : {1, 10, 100})
    {
        Register("ToBvh", lMotion, lTimes,
                 [](benchmark::State& pState, const KMotion& pMotion, int pTimes) { Convert(pState, pMotion, pTimes, ".bvh", WriteBvh); });
#ifdef QEX_BENCH_GLTF
        Register("ToGlb", lMotion, lTimes,
                 [](benchmark::State& pState, const KMotion& pMotion, int pTimes) { Convert(pState, pMotion, pTimes, ".glb", WriteGlb); });
#endif
    }
    for (const int lTimes : {1, 10})
    {
        Register("WriteAmc", lMotion, lTimes, WriteAmc);
        Register("ReadBvh", lMotion, lTimes, ReadBvh);
    }
}
