// Motion: parsing alone beside the bare numbers, and whole imports of one, ten and a hundred times a real motion.

#include <bench/motionsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <memory>

using namespace qexsdk;
using namespace qexbench;

namespace
{

class KNothing : public KQexAmcVisitor
{
public:
    bool Frame(const KQexAmcFrame&) override { return true; }
};

void ParseAlone(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KLongMotion       lLong(pMotion, pTimes);
    KQexImportAcclaimResult lResult;
    const KQexAsfSceneOwner lScene = ReadSkeleton(pMotion, lResult);
    KBeside                 lBeside;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound([&lLong] { ScanFile(lLong.Path()); });
        lBeside.Work(pState,
                     [&]
                     {
                         KQexFileAcclaimAmc lFile(false);
                         KNothing           lNothing;
                         KQexAmcReadOptions lOptions;
                         lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
                         Demand(lFile.OpenRead(lLong.Path().c_str()) && lFile.ReadFrames(lScene.get(), lOptions, lNothing));
                     });
    }
    lBeside.ReportBytes(pState, lLong.Size());
    lBeside.ReportPieces(pState, "frame", lLong.Frames());
}

void WholeImport(benchmark::State& pState, const KMotion& pMotion, int pTimes)
{
    const KLongMotion       lLong(pMotion, pTimes);
    KQexImportAcclaimResult lResult;
    int                     lDofs = 0;
    int                     lBones = 0;
    CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, lDofs, lBones);
    KBeside lBeside;
    size_t  lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lBeside.Bound(
            [&]
            {
                ScanFile(lLong.Path());
                benchmark::DoNotOptimize(TurnBones(lLong.Frames(), lDofs, lBones));
            });
        KQexScene* lScene = KQexScene::Create("bench");
        ResetPeakMemory();
        lBeside.Work(pState,
                     [&]
                     {
                         KQexImportAcclaimOptions lOptions;
                         Demand(KQexImporterAcclaim::Import(lScene,
                                                            KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"),
                                                            {KQexAcclaimSource::File(lLong.Path())}, lOptions, lResult));
                     });
        lPeak = std::max(lPeak, PeakMemory());
        lScene->Destroy();
    }
    ReportMotion(pState, lBeside, lLong.Size(), lLong.Frames(), lPeak);
}

} // namespace

void RegisterBenches()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lTimes : {1, 10})
    {
        benchmark::RegisterBenchmark(("ParseMotion/" + lMotion->mName + "/x" + std::to_string(lTimes)).c_str(),
                                     [=](benchmark::State& pState) { ParseAlone(pState, *lMotion, lTimes); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    for (const int lTimes : {1, 10, 100})
    {
        benchmark::RegisterBenchmark(("Import/" + lMotion->mName + "/x" + std::to_string(lTimes)).c_str(),
                                     [=](benchmark::State& pState) { WholeImport(pState, *lMotion, lTimes); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}
