// A motion as arrays: making it from files, sampling it at random times, world transforms, on one and on two threads. Counters limit_…
// are the times that a program with a hundred figures in each image counts on. The corpus's first motion, or else the sample's.

#include <bench/motionsupport.h>
#include <qexclip/kqexclipsteps.h>
#include <qexfigure/kqexfigure.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <random>
#include <thread>

using namespace qexsdk;
using namespace qexbench;

namespace
{

constexpr int    kSamples = 200000;
constexpr double kSampleLimit = 1000.0; ///< Nanoseconds for the pose of 31 joints.
constexpr double kWorldLimit = 500.0;   ///< Nanoseconds for their world transforms.
constexpr double kThreadLimit = 1.9;    ///< Poses of two threads for each of one, on an idle machine.
constexpr double kMakeLimit = 30.0;     ///< Milliseconds from the files of 01_01, 2,751 frames, to the clip.

KMotionPaths ChoosePaths()
{
    const KMotionPaths lPaths = FindMotion();
    const std::string  lSamples = std::string(QEX_SOURCE_DIR) + "/samples/";
    return lPaths.mAmc.empty() ? KMotionPaths{lSamples + "walker.asf", lSamples + "walk.amc"} : lPaths;
}

void LoadClip(const KMotionPaths& pPaths, KQexClip& pClip)
{
    KQexFigure       lFigure;
    KQexFigureReport lReport;
    KQexSampling     lSampling;
    Require(lFigure.Load({pPaths.mAsf, pPaths.mAmc}, KQexFigureOptions(), lReport));
    const KQexFigureTake& lTake = lFigure.GetTakes().front();
    Require(MakeSampling(lFigure.GetRoots(), lTake.mStack, KQexSamplingRequest(), lSampling) &&
            lFigure.MakeClip(&lTake, lSampling, KQexClipOptions(), pClip));
}

/// The clip at a quarter of its rate: its joints turn four times as far from frame to frame.
void LoadCoarseClip(const KMotionPaths& pPaths, KQexClip& pClip)
{
    LoadClip(pPaths, pClip);
    const double lRate = pClip.GetRate();
    Require(KQexClipResample(pClip, lRate / 4.0, pClip));
}

std::vector<double> RandomTimes(const KQexClip& pClip)
{
    std::mt19937                           lRandom(1);
    std::uniform_real_distribution<double> lTime(0.0, pClip.GetDuration());
    std::vector<double>                    lTimes(kSamples);
    for (double& lEach : lTimes)
    {
        lEach = lTime(lRandom);
    }
    return lTimes;
}

/// The least work for a pose: the rotations of two frames, weighed, to unit length. They turn at no constant speed.
void MixRotations(const KQexClip& pClip, double pTime, KQexPose& pPose)
{
    const double lPosition = pTime * pClip.GetRate();
    const size_t lFrame = static_cast<size_t>(lPosition);
    const float  lTo = static_cast<float>(lPosition - static_cast<double>(lFrame));
    const size_t lRow = pPose.size() * 4;
    const float* lA = pClip.GetData().mRotations.data() + lFrame * lRow;
    const float* lB = lA + (lFrame + 1 < static_cast<size_t>(pClip.GetFrameCount()) ? lRow : 0);
    for (KQexJointTransform& lJoint : pPose)
    {
        float lSquare = 0.0F;
        for (int i = 0; i < 4; ++i)
        {
            lJoint.mRotation[i] = lA[i] + lTo * (lB[i] - lA[i]);
            lSquare += lJoint.mRotation[i] * lJoint.mRotation[i];
        }
        const float lScale = 1.0F / std::sqrt(lSquare);
        for (float& lNumber : lJoint.mRotation)
        {
            lNumber *= lScale;
        }
        lA += 4;
        lB += 4;
    }
}

void SampleAll(const KQexClip& pClip, const std::vector<double>& pTimes)
{
    KQexPose lPose(static_cast<size_t>(pClip.GetJointCount()));
    for (const double lTime : pTimes)
    {
        Require(pClip.Sample(lTime, lPose));
        benchmark::DoNotOptimize(lPose.data());
    }
}

void Sampling(benchmark::State& pState, const KQexClip& pClip)
{
    const std::vector<double> lTimes = RandomTimes(pClip);
    KComparison               lComparison("mix");
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&]
            {
                KQexPose lPose(static_cast<size_t>(pClip.GetJointCount()));
                for (const double lTime : lTimes)
                {
                    MixRotations(pClip, lTime, lPose);
                    benchmark::DoNotOptimize(lPose.data());
                }
            });
        lComparison.Work(pState, [&] { SampleAll(pClip, lTimes); });
    }
    lComparison.ReportItems(pState, "pose", kSamples);
    pState.counters["joints"] = pClip.GetJointCount();
    pState.counters["limit_ns"] = kSampleLimit;
}

/// The poses at \p pTimes, and the world transforms of one of them each time.
void Worlds(benchmark::State& pState, const KQexClip& pClip)
{
    const size_t                    lJoints = static_cast<size_t>(pClip.GetJointCount());
    std::vector<KQexPose>           lPoses(64, KQexPose(lJoints));
    std::vector<KQexWorldTransform> lTransforms(lJoints);
    const std::vector<double>       lTimes = RandomTimes(pClip);
    for (size_t i = 0; i < lPoses.size(); ++i)
    {
        Require(pClip.Sample(lTimes[i], lPoses[i]));
    }
    KComparison lComparison("copy");
    for (auto lStep : pState)
    {
        (void)lStep;
        const std::vector<KQexWorldTransform> lFrom(lJoints);
        lComparison.Bound(
            [&]
            {
                for (int i = 0; i < kSamples; ++i)
                {
                    std::copy(lFrom.begin(), lFrom.end(), lTransforms.begin());
                    benchmark::DoNotOptimize(lTransforms.data());
                    benchmark::ClobberMemory();
                }
            });
        lComparison.Work(pState,
                         [&]
                         {
                             for (size_t i = 0; i < kSamples; ++i)
                             {
                                 Require(pClip.WorldTransforms(lPoses[i % lPoses.size()], lTransforms));
                                 benchmark::DoNotOptimize(lTransforms.data());
                             }
                         });
    }
    lComparison.ReportItems(pState, "pose", kSamples);
    pState.counters["limit_ns"] = kWorldLimit;
}

/// Processor seconds of the calls of some work, all threads together, of the quickest call.
class KProcessorTime
{
public:
    template <typename TWork>
    void Run(TWork&& pWork)
    {
        const std::clock_t lStart = std::clock();
        pWork();
        mBest = std::min(mBest, static_cast<double>(std::clock() - lStart) / CLOCKS_PER_SEC);
    }

    double Best() const { return mBest; }

private:
    double mBest = 1e300;
};

/// Two threads, each of which does all that the bound does on one. With other work on the machine only the quotient of processor times
/// says something: whether the threads hinder each other.
void TwoThreads(benchmark::State& pState, const KQexClip& pClip)
{
    const std::vector<double> lTimes = RandomTimes(pClip);
    KComparison               lComparison("one_thread");
    KProcessorTime            lOne;
    KProcessorTime            lTwo;
    const auto                lRunOne = [&]
    {
        SampleAll(pClip, lTimes);
    };
    const auto lRunTwo = [&]
    {
        std::thread lOther(lRunOne);
        lRunOne();
        lOther.join();
    };
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&] { lOne.Run(lRunOne); });
        lComparison.Work(pState, [&] { lTwo.Run(lRunTwo); });
    }
    lComparison.ReportItems(pState, "pose", kSamples);
    pState.counters["times_one_thread"] = 2.0 * pState.counters["of_one_thread"];
    pState.counters["times_by_processor"] = 2.0 * 2.0 * lOne.Best() / lTwo.Best();
    pState.counters["limit_times"] = kThreadLimit;
}

void MakingAClip(benchmark::State& pState, const KMotionPaths& pPaths)
{
    KComparison lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&] { ScanFile(pPaths.mAmc); });
        KQexClip lClip;
        lComparison.Work(pState, [&] { LoadClip(pPaths, lClip); });
    }
    lComparison.ReportBytes(pState, FileSize(pPaths.mAmc));
    lComparison.ReportItems(pState, "clip", 1);
    pState.counters["limit_ms"] = kMakeLimit;
}

/// Registers \p pBench for the clip that \p pMake makes of the files, at the first run.
template <typename TMake, typename TBench>
void Register(const char* pName, TMake pMake, TBench pBench)
{
    benchmark::RegisterBenchmark(pName,
                                 [pMake, pBench](benchmark::State& pState)
                                 {
                                     KQexClip lClip;
                                     pMake(ChoosePaths(), lClip);
                                     pBench(pState, lClip);
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterBenchmarks()
{
    Register("ClipSample", LoadClip, Sampling);
    Register("ClipSample/QuarterRate", LoadCoarseClip, Sampling);
    Register("ClipWorldTransforms", LoadClip, Worlds);
    Register("ClipSample/TwoThreads", LoadClip, TwoThreads);
    benchmark::RegisterBenchmark("ClipFromFiles", [](benchmark::State& pState) { MakingAClip(pState, ChoosePaths()); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}
