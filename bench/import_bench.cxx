// Parsing a motion, compared with scanning its numbers; complete imports. A real motion if there is one, repeated up to 100 times.

#include <bench/ignoreframes.h>
#include <bench/motionsupport.h>
#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <algorithm>
#include <memory>

using namespace qexsdk;
using namespace qexbench;

namespace
{

void ParseAlone(benchmark::State& pState, const KMotion& pMotion, int pRepeats)
{
    const KRepeatedMotion   lLong(pMotion, pRepeats);
    KQexImportAcclaimResult lResult;
    const KQexAsfSceneOwner lScene = ReadSkeleton(pMotion, lResult);
    KComparison             lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&lLong] { ScanFile(lLong.Path()); });
        lComparison.Work(pState,
                         [&]
                         {
                             KQexFileAcclaimAmc lFile(false);
                             KIgnoreFrames      lVisitor;
                             KQexAmcReadOptions lOptions;
                             lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
                             Require(lFile.OpenRead(lLong.Path().c_str()) && lFile.ReadFrames(lScene.get(), lOptions, lVisitor));
                         });
    }
    lComparison.ReportBytes(pState, lLong.Size());
    lComparison.ReportItems(pState, "frame", lLong.Frames());
}

void WholeImport(benchmark::State& pState, const KMotion& pMotion, int pRepeats)
{
    const KRepeatedMotion   lLong(pMotion, pRepeats);
    KQexImportAcclaimResult lResult;
    int                     lDofs = 0;
    int                     lBones = 0;
    CountRotations(ReadSkeleton(pMotion, lResult)->mRoot, lDofs, lBones);
    KComparison lComparison;
    size_t      lPeak = 0;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&]
            {
                ScanFile(lLong.Path());
                benchmark::DoNotOptimize(RunTrigonometry(lLong.Frames(), lDofs, lBones));
            });
        KQexScene* lScene = KQexScene::Create("bench");
        ResetPeakMemory();
        lComparison.Work(
            pState,
            [&]
            {
                KQexImportAcclaimOptions lOptions;
                Require(KQexImporterAcclaim::Import(lScene, KQexAcclaimSource::Buffer(pMotion.mAsf.data(), pMotion.mAsf.size(), "skeleton"),
                                                    {KQexAcclaimSource::File(lLong.Path())}, lOptions, lResult));
            });
        lPeak = std::max(lPeak, PeakMemory());
        lScene->Destroy();
    }
    ReportMotion(pState, lComparison, lLong.Size(), lLong.Frames(), lPeak);
}

} // namespace

void RegisterBenchmarks()
{
    const auto lMotion = std::make_shared<KMotion>(ChooseMotion());
    for (const int lRepeats : {1, 10})
    {
        RegisterRepeats("ParseMotion", lMotion, lRepeats, ParseAlone);
    }
    for (const int lRepeats : {1, 10, 100})
    {
        RegisterRepeats("Import", lMotion, lRepeats, WholeImport);
    }
}
