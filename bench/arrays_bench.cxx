// A motion from its files to GLB and NPZ in one evaluation. The bound: the same to GLB alone, and 1.3 times the writing of the archive's
// bytes.

#include <bench/motionsupport.h>
#include <qexfigure/kqexmotionarrays.h>
#ifdef QEX_BENCH_GLTF
#include <qexioplugins/gltf/kqexfilegltf.h>
#endif

#include <algorithm>
#include <memory>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

constexpr double kWritesOfBound = 1.3;

/// Keeps the skeleton as a file, which a figure is loaded from.
class KSkeletonFile
{
public:
    explicit KSkeletonFile(const KMotion& pMotion)
    {
        KOutputFile lOut;
        Require(lOut.Open(Path().c_str()) && lOut.Write(pMotion.mAsf.data(), pMotion.mAsf.size()) && lOut.Close());
    }
    std::string Path() const { return mFile.Path(); }

private:
    KScratchFile mFile{".asf"};
};

void WriteBytes(const std::string& pPath, size_t pBytes)
{
    const std::vector<char> lBlock(1 << 20, 'x');
    KOutputFile             lOut;
    Require(lOut.Open(pPath.c_str()));
    for (size_t lDone = 0; lDone < pBytes; lDone += lBlock.size())
    {
        Require(lOut.Write(lBlock.data(), std::min(lBlock.size(), pBytes - lDone)));
    }
    Require(lOut.Close());
}

#ifdef QEX_BENCH_GLTF
/// Writes the motion to GLB and, unless \p pNpz is empty, to NPZ.
void WriteAll(const std::vector<std::string>& pInputs, const std::string& pGlb, const std::string& pNpz)
{
    KQexFigure             lFigure;
    KQexFigureReport       lReport;
    KQexFigureOptions      lLoad;
    KQexFileGltf           lGlb;
    KQexGltfWriteOptions   lOptions;
    KQexMotionArrayOptions lArrays;
    KOutputFile            lOut;
    KQexNpzFile            lNpz(lOut);
    lLoad.mKeepDofValues = !pNpz.empty();
    lLoad.mAllowUnmatched = true;
    Require(lFigure.Load(pInputs, lLoad, lReport));
    const KQexFigureTake& lTake = lFigure.GetTakes().front();
    lArrays.mTake = &lTake;
    Require(MakeSampling(lFigure.GetRoots(), lTake.mStack, {}, lArrays.mSampling));
    lOptions.mTakes.resize(1);
    lOptions.mTakes[0].mStack = lTake.mStack;
    lOptions.mTakes[0].mSampling = lArrays.mSampling;
    Require(lGlb.BeginWrite(lFigure.GetRoots(), lOptions));
    std::vector<KQexFrameSink*>    lSinks = {lGlb.BeginTake(0)};
    std::unique_ptr<KQexFrameSink> lSink;
    if (!pNpz.empty())
    {
        Require(lOut.Open(pNpz.c_str()));
        lSink = KQexMakeMotionArrays(lFigure, lArrays, lNpz);
        lSinks.push_back(lSink.get());
    }
    Require(lGlb.EndTake(0, KQexRunFrames(lFigure.GetRoots(), lTake.mStack->GetMember<KQexAnimLayer>(0), lArrays.mSampling, lSinks.data(),
                                          lSinks.size(), 0, nullptr)));
    Require(lGlb.EndWrite(pGlb));
    if (!pNpz.empty())
    {
        Require(lNpz.Finish() && lOut.Close());
    }
}

void ToGlbAndNpz(benchmark::State& pState, const KMotion& pMotion, int pRepeats)
{
    const KRepeatedMotion          lLong(pMotion, pRepeats);
    const KSkeletonFile            lSkeleton(pMotion);
    const KScratchFile             lGlb(".glb");
    const KScratchFile             lNpz(".npz");
    const std::vector<std::string> lInputs = {lSkeleton.Path(), lLong.Path()};
    WriteAll(lInputs, lGlb.Path(), lNpz.Path());
    const size_t lBytes = static_cast<size_t>(kWritesOfBound * static_cast<double>(FileSize(lNpz.Path())));
    KComparison  lComparison;
    size_t       lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&]
            {
                WriteAll(lInputs, lGlb.Path(), "");
                WriteBytes(lNpz.Path(), lBytes);
            });
        ResetPeakMemory();
        lComparison.Work(pState, [&] { WriteAll(lInputs, lGlb.Path(), lNpz.Path()); });
        lPeak = std::max(lPeak, PeakMemory());
    }
    ReportMotion(pState, lComparison, lLong.Size(), lLong.Frames(), lPeak);
}
#endif

} // namespace

void RegisterBenchmarks()
{
#ifdef QEX_BENCH_GLTF
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lRepeats : {1, 10, 100})
    {
        RegisterRepeats("ToGlbAndNpz", lMotion, lRepeats, ToGlbAndNpz);
    }
#endif
}
