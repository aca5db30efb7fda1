// Whole circles of one, ten and a hundred times a real motion: from ASF and AMC into a scene and out again, straight or by way of BVH,
// and the figure that came out once more.

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

/// The skeleton and the motion that a circle ends in.
struct KEnd
{
    KScratchFile mAsf{".asf"};
    KScratchFile mAmc{".amc"};
};

void WriteAcclaim(KQexNode* pRoot, const KEnd& pEnd)
{
    KQexExportAcclaimResult lResult;
    Demand(KQexExporterAcclaim::Export(pRoot, pEnd.mAsf.Path().c_str(), pEnd.mAmc.Path().c_str(), KQexExportAcclaimOptions(), lResult));
}

/// ASF and AMC to a scene, to ASF and AMC, to a scene.
void GoStraight(const KMotion& pMotion, const std::string& pAmcPath, const KScratchFile&, const KEnd& pEnd)
{
    WriteAcclaim(KImported(pMotion, pAmcPath).mResult.mRootNode, pEnd);
    const KImported lAgain(KQexAcclaimSource::File(pEnd.mAsf.Path()), pEnd.mAmc.Path());
}

/// ASF and AMC to BVH, to ASF and AMC.
void GoByBvh(const KMotion& pMotion, const std::string& pAmcPath, const KScratchFile& pBvh, const KEnd& pEnd)
{
    WriteBvh(KImported(pMotion, pAmcPath), pBvh.Path());
    KQexScene*        lScene = KQexScene::Create("back");
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    Demand(lScene != nullptr && lFile.OpenRead(pBvh.Path().c_str()) && lFile.Read(lScene, KQexBvhReadOptions(), lResult));
    WriteAcclaim(lResult.mRoots.front(), pEnd);
    lScene->Destroy();
}

using KCircle = void (*)(const KMotion&, const std::string&, const KScratchFile&, const KEnd&);

/// What a circle cannot do without: every text is scanned once and its numbers printed once, and the motion is turned into nodes'
/// rotations and back.
class KLeast
{
public:
    KLeast(const KMotion& pMotion, int pTimes, KCircle pCircle, bool pByBvh) : mTimes(pTimes)
    {
        const KLongMotion       lOnce(pMotion, 1);
        const KScratchFile      lBvh(".bvh");
        const KEnd              lEnd;
        KQexImportAcclaimResult lResult;
        CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, mDofs, mBones);
        pCircle(pMotion, lOnce.Path(), lBvh, lEnd);
        // The numbers of one time are printed so many times: all of them would not fit the memory that is watched.
        mWritten = NumbersOf(lEnd.mAmc.Path());
        if (pByBvh)
        {
            const std::vector<double> lBetween = NumbersOf(lBvh.Path());
            mWritten.insert(mWritten.end(), lBetween.begin(), lBetween.end());
        }
    }

    /// \p pBetween: the text that is read second.
    void Run(const KLongMotion& pLong, const std::string& pBetween) const
    {
        ScanFile(pLong.Path());
        ScanFile(pBetween);
        benchmark::DoNotOptimize(TurnBones(2 * pLong.Frames(), mDofs, mBones));
        for (int i = 0; i < mTimes; ++i)
        {
            PrintNumbers(mWritten);
        }
    }

private:
    int                 mTimes;
    int                 mDofs = 0;
    int                 mBones = 0;
    std::vector<double> mWritten;
};

void Circle(benchmark::State& pState, const KMotion& pMotion, int pTimes, KCircle pCircle, bool pByBvh)
{
    const KLeast       lLeast(pMotion, pTimes, pCircle, pByBvh);
    const KLongMotion  lLong(pMotion, pTimes);
    const KScratchFile lBvh(".bvh");
    const KEnd         lEnd;
    KBeside            lBeside;
    size_t             lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        ResetPeakMemory();
        lBeside.Work(pState, [&] { pCircle(pMotion, lLong.Path(), lBvh, lEnd); });
        lPeak = std::max(lPeak, PeakMemory());
        lBeside.Bound([&] { lLeast.Run(lLong, pByBvh ? lBvh.Path() : lEnd.mAmc.Path()); });
    }
    ReportMotion(pState, lBeside, lLong.Size(), lLong.Frames(), lPeak);
}

} // namespace

void RegisterBenches()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lTimes : {1, 10, 100})
    {
        RegisterTimes("Circle/acclaim", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes)
                      { Circle(pState, pMotion, pTimes, GoStraight, false); });
        RegisterTimes("Circle/bvh", lMotion, lTimes,
                      [](benchmark::State& pState, const KMotion& pMotion, int pTimes) { Circle(pState, pMotion, pTimes, GoByBvh, true); });
    }
}
