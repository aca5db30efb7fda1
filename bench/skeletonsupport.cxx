#include <bench/skeletonsupport.h>

#include <map>

using namespace qexsdk;

namespace qexbench
{

namespace
{

/// Cases of at least kManyBones bones run for kBonesToWorkOn bones in all, whatever --benchmark_min_time says: few iterations would
/// make their best time unreliable.
constexpr int kManyBones = 10000;
constexpr int kBonesToWorkOn = 2000000;

/// Seconds per bone, by series, shape and size.
double& SecondsOf(const KCase& pCase, const KSize& pSize)
{
    static std::map<std::string, double> sSeconds;
    return sSeconds[pCase.mSeries + "/" + ShapeName(pCase.mShape) + "/" + pSize.Name()];
}

} // namespace

KSceneOwner ReadText(const std::string& pText)
{
    KSceneOwner        lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf lFile(false);
    Require(lFile.OpenReadBuffer(pText.data(), pText.size()) && lFile.Read(lScene.get(), false, false, false));
    return lScene;
}

KSceneOwner ReadPath(const std::string& pPath, bool pRemoveDummyNodes)
{
    KSceneOwner        lScene(QexSdkNew<KQexAsfScene>());
    KQexFileAcclaimAsf lFile(false);
    Require(lFile.OpenRead(pPath.c_str()) && lFile.Read(lScene.get(), pRemoveDummyNodes, false, false));
    return lScene;
}

std::string KSize::Name() const
{
    return (mSkeletons == 1 ? std::string() : std::to_string(mSkeletons) + "x") + std::to_string(mBones);
}

void KCase::Report(benchmark::State& pState, const KComparison& pComparison) const
{
    const int lBones = mSize.AllBones();
    pComparison.ReportItems(pState, "bone", lBones);
    const double lSeconds = pComparison.BestWork() / lBones;
    SecondsOf(*this, mSize) = lSeconds;
    if (mSize.mBones == 100000)
    {
        for (const KSize& lSmall : {KSize{1000}, KSize{1000, 100}})
        {
            if (const double lSmallSeconds = SecondsOf(*this, lSmall); lSmallSeconds > 0.0)
            {
                pState.counters["of_" + lSmall.Name()] = lSeconds / lSmallSeconds;
            }
        }
    }
}

void RegisterSeries(const char* pSeries, KBench pBench, const std::vector<KSize>& pSizes)
{
    for (const EShape lShape : {eCHAIN, eFAN, eRANDOM})
    {
        for (const KSize& lSize : pSizes)
        {
            const KCase       lCase = {pSeries, lShape, lSize};
            const std::string lName = lCase.mSeries + "/" + ShapeName(lShape) + "/" + lSize.Name();
            auto* lBench = benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { pBench(pState, lCase); });
            lBench->UseManualTime();
            if (lSize.AllBones() >= kManyBones)
            {
                lBench->Iterations(kBonesToWorkOn / lSize.AllBones());
            }
        }
    }
}

} // namespace qexbench
