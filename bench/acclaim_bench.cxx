// Bones and scene nodes: sampling motion into curves, compared with the trigonometry it needs; bones to nodes, nodes to bones.

#include <bench/benchsupport.h>
#include <kbaselib/kmath/maths.h>
#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

/// A host scene and a skeleton. The skeleton is destroyed first, because it may own curves of the scene.
struct KScenePair
{
    KScenePair() : mScene(KQexScene::Create("bench")), mAsf(QexSdkNew<KQexAsfScene>()) { Require(mScene != nullptr && mAsf != nullptr); }
    ~KScenePair()
    {
        mAsf->Destroy();
        mScene->Destroy();
    }
    KScenePair(const KScenePair&) = delete;
    KScenePair& operator=(const KScenePair&) = delete;

    KQexScene*    mScene;
    KQexAsfScene* mAsf;
};

void ReadSkeleton(KScenePair& pScenes, EShape pShape, int pBones, bool pOffset, bool pPreRotation)
{
    const std::string  lText = SkeletonText(pShape, pBones);
    KQexFileAcclaimAsf lFile(false);
    Require(lFile.OpenReadBuffer(lText.data(), lText.size()) && lFile.Read(pScenes.mAsf, true, pOffset, pPreRotation));
}

/// Lower bound for one frame of a bone: a sine and cosine for each angle of the matrix, and the arc tangents and the square root
/// that convert the product back to angles. With pre-rotations the angles are used as they are: reading them is the bound.
double TrigonometryBound(const double* pAngles, int pAxes, bool pPreRotation)
{
    double lSum = 0.0;
    if (pPreRotation)
    {
        for (int lAxis = 0; lAxis < pAxes; ++lAxis)
        {
            lSum += pAngles[lAxis];
        }
        return lSum;
    }
    double lSine[3];
    double lCosine[3];
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        lSine[lAxis] = kSinCosd(pAngles[lAxis], lCosine[lAxis]);
    }
    const double lT = kHypot(lCosine[0], lSine[1]);
    return kAtand(lSine[0], lCosine[1]) + kAtand(lSine[1], lT) + kAtand(lSine[2], lCosine[0]);
}

constexpr int kSampledBones = 60;
constexpr int kSampledFrames = 200;

/// Every bone has three rotation DOFs, like most bones of real skeletons.
void AddSamples(benchmark::State& pState, bool pOffset, bool pPreRotation)
{
    KScenePair lScenes;
    ReadSkeleton(lScenes, eRANDOM, kSampledBones, pOffset, pPreRotation);
    std::vector<KQexAsfNode*> lBones = {lScenes.mAsf->mRoot};
    for (size_t lIter = 0; lIter < lBones.size(); ++lIter)
    {
        lBones[lIter]->mOrderCount = 0;
        for (const int lCode : {5, 4, 3})
        {
            lBones[lIter]->mOrderBuf[lBones[lIter]->mOrderCount++] = lCode;
        }
        for (int lChild = 0; lBones[lIter]->GetChild(lChild) != nullptr; ++lChild)
        {
            lBones.push_back(lBones[lIter]->GetChild(lChild));
        }
    }
    std::mt19937                           lRandom(1);
    std::uniform_real_distribution<double> lAngle(-170.0, 170.0);
    std::vector<double>                    lValues(lBones.size() * kSampledFrames * 3);
    for (double& lValue : lValues)
    {
        lValue = lAngle(lRandom);
    }

    KComparison lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Bound(
            [&]
            {
                double lSum = 0.0;
                for (size_t lAt = 0; lAt < lValues.size(); lAt += 3)
                {
                    lSum += TrigonometryBound(&lValues[lAt], 3, pPreRotation);
                }
                benchmark::DoNotOptimize(lSum);
            });
        Require(lScenes.mAsf->mRoot->CreateDataFromDOF(lScenes.mScene));
        lComparison.Work(pState,
                         [&]
                         {
                             const double* lAt = lValues.data();
                             for (int lFrame = 0; lFrame < kSampledFrames; ++lFrame)
                             {
                                 const KTime lTime = KTime::FromFrame(lFrame, KFrameRate{120, 1});
                                 for (KQexAsfNode* lBone : lBones)
                                 {
                                     lBone->AddSampleFromDOF(lAt, lTime, 1.0, 1.0, pOffset, pPreRotation);
                                     lAt += 3;
                                 }
                             }
                         });
    }
    lComparison.ReportItems(pState, "bone", static_cast<double>(lBones.size()) * kSampledFrames);
}

void Import(benchmark::State& pState, EShape pShape, int pBones)
{
    KComparison lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        KScenePair lScenes;
        ReadSkeleton(lScenes, pShape, pBones, false, true);
        lComparison.Work(pState, [&] { Require(lScenes.mAsf->ASFToQEX(lScenes.mScene, "take", true, false, true) != nullptr); });
    }
    lComparison.ReportItems(pState, "bone", pBones);
}

void Extract(benchmark::State& pState, EShape pShape, int pBones)
{
    KScenePair lScenes;
    ReadSkeleton(lScenes, pShape, pBones, false, true);
    KQexNode*    lTop = lScenes.mAsf->ASFToQEX(lScenes.mScene, "take", true, false, true);
    const double lNodes = lTop->GetChildCount(true) + 1;
    KComparison  lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        KScenePair lOther;
        lComparison.Work(pState, [&] { Require(lOther.mAsf->QEXToASF(lTop, true, KQexVector4(1.0, 1.0, 1.0), true)); });
    }
    lComparison.ReportItems(pState, "node", lNodes);
}

void Bind(benchmark::State& pState, EShape pShape, int pBones)
{
    KScenePair lScenes;
    ReadSkeleton(lScenes, pShape, pBones, false, true);
    KQexNode*   lTop = lScenes.mAsf->ASFToQEX(lScenes.mScene, "take", true, false, true);
    KComparison lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Work(pState, [&] { Require(lScenes.mAsf->MergeQEXToASF(lTop)); });
    }
    lComparison.ReportItems(pState, "bone", pBones);
}

void Merge(benchmark::State& pState, EShape pShape, int pBones)
{
    KScenePair lScenes;
    ReadSkeleton(lScenes, pShape, pBones, false, true);
    KQexNode* lTop = lScenes.mScene->GetRootNode();
    Require(lScenes.mAsf->MergeASFToQEX(lScenes.mScene, lTop, "take", false, false, true));
    KComparison lComparison;
    for (auto lStep : pState)
    {
        (void)lStep;
        lComparison.Work(pState, [&] { Require(lScenes.mAsf->MergeASFToQEX(lScenes.mScene, lTop, "take", false, false, true)); });
    }
    lComparison.ReportItems(pState, "bone", pBones);
}

using KBench = void (*)(benchmark::State&, EShape, int);

void RegisterSeries(const char* pName, KBench pBench)
{
    for (const EShape lShape : {eCHAIN, eFAN, eRANDOM})
    {
        for (const int lBones : {10, 100, 1000, 10000, 100000})
        {
            const std::string lName = std::string(pName) + "/" + ShapeName(lShape) + "/" + std::to_string(lBones);
            benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { pBench(pState, lShape, lBones); })->UseManualTime();
        }
    }
}

} // namespace

void RegisterBenchmarks()
{
    for (const bool lOffset : {false, true})
    {
        for (const bool lPreRotation : {false, true})
        {
            const std::string lName =
                std::string("AddSample/") + (lOffset ? "offset" : "translation") + "/" + (lPreRotation ? "prerotation" : "folded");
            benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { AddSamples(pState, lOffset, lPreRotation); })
                ->UseManualTime();
        }
    }
    RegisterSeries("Import", Import);
    RegisterSeries("Extract", Extract);
    RegisterSeries("Merge", Merge);
    RegisterSeries("Bind", Bind);
}
