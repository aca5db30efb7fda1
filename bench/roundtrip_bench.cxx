// Round trips of a real motion, repeated 1, 10 and 100 times: from ASF and AMC to a scene and back, directly (then the result is
// imported again) or via BVH.

#include <bench/motionsupport.h>
#include <qexioplugins/acclaim/kqexexporteracclaim.h>
#include <qexioplugins/bvh/kqexfilebvh.h>

#include <algorithm>
#include <memory>
#include <string>

using namespace qexsdk;
using namespace qexbench;

namespace
{

/// The skeleton and motion files that a round trip writes.
struct KOutputFiles
{
    KScratchFile mAsf{".asf"};
    KScratchFile mAmc{".amc"};
};

void WriteAcclaim(KQexNode* pRoot, const KOutputFiles& pOutput)
{
    KQexExportAcclaimResult lResult;
    Require(
        KQexExporterAcclaim::Export(pRoot, pOutput.mAsf.Path().c_str(), pOutput.mAmc.Path().c_str(), KQexExportAcclaimOptions(), lResult));
}

/// ASF and AMC to a scene, to ASF and AMC, to a scene.
void ConvertDirectly(const KMotion& pMotion, const std::string& pAmcPath, const KScratchFile&, const KOutputFiles& pOutput)
{
    WriteAcclaim(KImported(pMotion, pAmcPath).mResult.mRootNode, pOutput);
    const KImported lAgain(KQexAcclaimSource::File(pOutput.mAsf.Path()), pOutput.mAmc.Path());
}

/// ASF and AMC to BVH, to ASF and AMC.
void ConvertViaBvh(const KMotion& pMotion, const std::string& pAmcPath, const KScratchFile& pBvh, const KOutputFiles& pOutput)
{
    WriteBvh(KImported(pMotion, pAmcPath), pBvh.Path());
    KQexScene*        lScene = KQexScene::Create("back");
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    Require(lScene != nullptr && lFile.OpenRead(pBvh.Path().c_str()) && lFile.Read(lScene, KQexBvhReadOptions(), lResult));
    WriteAcclaim(lResult.mRoots.front(), pOutput);
    lScene->Destroy();
}

using KConversion = void (*)(const KMotion&, const std::string&, const KScratchFile&, const KOutputFiles&);

/// Lower bound for a round trip: scans and prints the numbers of each text once, and converts the motion to node rotations and back.
class KRoundTripBound
{
public:
    KRoundTripBound(const KMotion& pMotion, int pRepeats, KConversion pConvert, bool pViaBvh) : mRepeats(pRepeats)
    {
        const KRepeatedMotion   lOnce(pMotion, 1);
        const KScratchFile      lBvh(".bvh");
        const KOutputFiles      lOutput;
        KQexImportAcclaimResult lResult;
        CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, mDofs, mBones);
        pConvert(pMotion, lOnce.Path(), lBvh, lOutput);
        // Numbers of one repeat, printed mRepeats times: keeping all of them would raise the peak memory, which is reported.
        mWritten = NumbersOf(lOutput.mAmc.Path());
        if (pViaBvh)
        {
            const std::vector<double> lBvhNumbers = NumbersOf(lBvh.Path());
            mWritten.insert(mWritten.end(), lBvhNumbers.begin(), lBvhNumbers.end());
        }
    }

    /// \param pIntermediate the text that the round trip reads second
    void Run(const KRepeatedMotion& pLong, const std::string& pIntermediate) const
    {
        ScanFile(pLong.Path());
        ScanFile(pIntermediate);
        benchmark::DoNotOptimize(RunTrigonometry(2 * pLong.Frames(), mDofs, mBones));
        for (int i = 0; i < mRepeats; ++i)
        {
            PrintNumbers(mWritten);
        }
    }

private:
    int                 mRepeats;
    int                 mDofs = 0;
    int                 mBones = 0;
    std::vector<double> mWritten;
};

void RoundTrip(benchmark::State& pState, const KMotion& pMotion, int pRepeats, KConversion pConvert, bool pViaBvh)
{
    const KRoundTripBound lBound(pMotion, pRepeats, pConvert, pViaBvh);
    const KRepeatedMotion lLong(pMotion, pRepeats);
    const KScratchFile    lBvh(".bvh");
    const KOutputFiles    lOutput;
    KComparison           lComparison;
    size_t                lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        ResetPeakMemory();
        lComparison.Work(pState, [&] { pConvert(pMotion, lLong.Path(), lBvh, lOutput); });
        lPeak = std::max(lPeak, PeakMemory());
        lComparison.Bound([&] { lBound.Run(lLong, pViaBvh ? lBvh.Path() : lOutput.mAmc.Path()); });
    }
    ReportMotion(pState, lComparison, lLong.Size(), lLong.Frames(), lPeak);
}

} // namespace

void RegisterBenchmarks()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lRepeats : {1, 10, 100})
    {
        RegisterRepeats("RoundTrip/acclaim", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats)
                        { RoundTrip(pState, pMotion, pRepeats, ConvertDirectly, false); });
        RegisterRepeats("RoundTrip/bvh", lMotion, lRepeats,
                        [](benchmark::State& pState, const KMotion& pMotion, int pRepeats)
                        { RoundTrip(pState, pMotion, pRepeats, ConvertViaBvh, true); });
    }
}
