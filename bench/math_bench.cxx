// The math layer: the time of a rotation, compared with its sines and cosines. Number parsing, compared with std::from_chars.

#include <bench/benchsupport.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/knumberscan.h>
#include <kbaselib/kmath/kgeom.h>

#include <charconv>
#include <cmath>
#include <functional>
#include <random>

using namespace qexsdk;
using namespace qexbench;

namespace
{

constexpr int kRotations = 10000;
constexpr int kNumbers = 1000000;

std::vector<KgeRVector> RandomAngles()
{
    std::mt19937                           lRandom(1);
    std::uniform_real_distribution<double> lAngle(-180.0, 180.0);
    std::vector<KgeRVector>                lAngles(kRotations);
    for (KgeRVector& lV : lAngles)
    {
        lV = KgeRVector(lAngle(lRandom), lAngle(lRandom), lAngle(lRandom));
    }
    return lAngles;
}

/// The six sines and cosines of a triple: every conversion to a matrix needs them.
double SinesAndCosines(const KgeRVector& pV)
{
    double lSum = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        double lCos = 0.0;
        lSum += kSinCosd(pV[i], &lCos);
        lSum += lCos;
    }
    return lSum;
}

/// Times \p pWork on random triples; the bound is SinesAndCosines() of the same triples.
void Rotations(benchmark::State& pState, const std::function<void(const KgeRVector&, KgeRMatrix&)>& pWork)
{
    const std::vector<KgeRVector> lAngles = RandomAngles();
    KComparison                   lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&lAngles]
            {
                for (const KgeRVector& lV : lAngles)
                {
                    benchmark::DoNotOptimize(SinesAndCosines(lV));
                }
            });
        lComparison.Work(pState,
                         [&]
                         {
                             KgeRMatrix lR;
                             for (const KgeRVector& lV : lAngles)
                             {
                                 pWork(lV, lR);
                                 benchmark::DoNotOptimize(lR);
                             }
                         });
    }
    lComparison.ReportItems(pState, "call", kRotations);
}

/// Numbers as motion files write them, one blank after each.
std::string NumberText()
{
    std::mt19937                           lRandom(2);
    std::uniform_real_distribution<double> lValue(-180.0, 180.0);
    std::string                            lText;
    for (int i = 0; i < kNumbers; ++i)
    {
        KNumberAppendFixed(lText, lValue(lRandom), 6);
        lText += ' ';
    }
    return lText;
}

double SumFromChars(const std::string& pText)
{
    double      lSum = 0.0;
    const char* lEnd = pText.data() + pText.size();
    for (const char* lAt = pText.data(); lAt != lEnd; ++lAt)
    {
        double lValue = 0.0;
        lAt = std::from_chars(lAt, lEnd, lValue).ptr;
        lSum += lValue;
    }
    return lSum;
}

double SumScanned(const std::string& pText)
{
    double      lSum = 0.0;
    const char* lEnd = pText.data() + pText.size();
    for (const char* lAt = pText.data(); lAt != lEnd; ++lAt)
    {
        double lValue = 0.0;
        lAt = KNumberScan(lAt, lEnd, lValue);
        lSum += lValue;
    }
    return lSum;
}

void ScanText(benchmark::State& pState)
{
    const std::string lText = NumberText();
    KComparison       lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound([&lText] { benchmark::DoNotOptimize(SumFromChars(lText)); });
        lComparison.Work(pState, [&lText] { benchmark::DoNotOptimize(SumScanned(lText)); });
    }
    lComparison.ReportBytes(pState, lText.size());
    lComparison.ReportItems(pState, "number", kNumbers);
}

} // namespace

void RegisterBenchmarks()
{
    const struct
    {
        const char*                                         mName;
        std::function<void(const KgeRVector&, KgeRMatrix&)> mWork;
    } lWorks[] = {
        {"math/angles_to_rotation",
         [](const KgeRVector& pV, KgeRMatrix& pR)
         {
             KgeSet(pR, pV, 10);
         }},
        {"math/angles_to_rotation_xyz",
         [](const KgeRVector& pV, KgeRMatrix& pR)
         {
             KgeSet(pR, pV);
         }},
        {"math/angles_to_rotation_and_back",
         [](const KgeRVector& pV, KgeRMatrix& pR)
         {
             KgeRVector lBack;
             KgeSet(pR, pV, 10);
             KgeSet(lBack, pR, 10);
             benchmark::DoNotOptimize(lBack);
         }},
        {"math/concatenate_rotation",
         [](const KgeRVector& pV, KgeRMatrix& pR)
         {
             KgeRMatrix lStep;
             KgeSet(lStep, pV, 4);
             KgeMult(pR, pR, lStep);
         }},
    };
    for (const auto& lWork : lWorks)
    {
        benchmark::RegisterBenchmark(lWork.mName, Rotations, lWork.mWork)->UseManualTime()->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("number/scan", ScanText)->UseManualTime()->Unit(benchmark::kMillisecond);
}
