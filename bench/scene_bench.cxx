// The scene: global transforms of a tree, compared with the sines, cosines and matrix products they need; creating and destroying
// nodes.

#include <bench/benchsupport.h>
#include <qexscene/kqexscene.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

using namespace qexsdk;
using namespace qexbench;

namespace
{

constexpr int kFrames = 240; ///< Frames of motion, at 120 fps.

struct KSceneDeleter
{
    void operator()(KQexScene* pScene) const { pScene->Destroy(); }
};

using KSceneOwner = std::unique_ptr<KQexScene, KSceneDeleter>;

KTime FrameTime(int pFrame)
{
    return KTime(pFrame * (KTime::kTicksPerSecond / 120));
}

/// Animates a node as an import does: rotation curves, a rotation offset and optionally a pre-rotation.
void Animate(KQexScene& pScene, KQexNode& pNode, bool pPreRotation, std::mt19937& pRandom)
{
    std::uniform_real_distribution<double> lAngle(-90.0, 90.0);
    pNode.SetRotationActive(true);
    pNode.SetRotationOffset(kPivotSet0, KQexVector4(lAngle(pRandom), lAngle(pRandom), lAngle(pRandom)));
    if (pPreRotation)
    {
        pNode.SetPreRotation(kPivotSet0, KQexVector4(lAngle(pRandom), lAngle(pRandom), lAngle(pRandom)));
    }
    KQexAnimCurveNode* lCurveNode = pNode.mLocalRotation.GetCurveNode(true, "take");
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        KQexAnimCurve* lCurve = KQexAnimCurve::Create(&pScene, "curve");
        const double   lPhase = lAngle(pRandom);
        for (int lFrame = 0; lFrame < kFrames; ++lFrame)
        {
            lCurve->AppendSample(FrameTime(lFrame), static_cast<float>(60.0 * std::sin(lPhase + 0.05 * lFrame)));
        }
        lCurveNode->ConnectToChannel(lCurve, lChannel, true);
    }
}

KSceneOwner MakeScene(int pNodes, bool pPreRotation)
{
    KSceneOwner            lScene(KQexScene::Create("bench"));
    std::mt19937           lRandom(1);
    std::vector<KQexNode*> lNodes = {lScene->GetRootNode()};
    for (int lI = 1; lI < pNodes; ++lI)
    {
        KQexNode* lNode = KQexNode::Create(lScene.get(), "node");
        lNodes[lRandom() % lNodes.size()]->AddChild(lNode);
        lNodes.push_back(lNode);
        Animate(*lScene, *lNode, pPreRotation, lRandom);
    }
    return lScene;
}

/// Lower bound for a node: three sine-cosine pairs, their rotation matrix, its products with the pre-rotation and with the parent's
/// transform. Nothing is looked up.
double TransformsBound(const std::vector<double>& pAngles, std::vector<KQexMatrix>& pMatrices, bool pPreRotation, double pOffset)
{
    KQexMatrix lPre = pMatrices[0];
    for (size_t lI = 1; lI < pMatrices.size(); ++lI)
    {
        double lC[3];
        double lS[3];
        for (size_t lK = 0; lK < 3; ++lK)
        {
            const double lAngle = (pAngles[3 * lI + lK] + pOffset) * 0.017453292519943295;
            lS[lK] = std::sin(lAngle);
            lC[lK] = std::cos(lAngle);
        }
        KQexMatrix lLocal;
        lLocal.mData[0] = {lC[1] * lC[2], lC[1] * lS[2], -lS[1]};
        lLocal.mData[1] = {lC[2] * (lS[1] * lS[0]) - lS[2] * lC[0], lS[2] * (lS[1] * lS[0]) + lC[2] * lC[0], lC[1] * lS[0]};
        lLocal.mData[2] = {lC[2] * (lS[1] * lC[0]) + lS[2] * lS[0], lS[2] * (lS[1] * lC[0]) - lC[2] * lS[0], lC[0] * lC[1]};
        lLocal.mData[3] = {1.0, 2.0, 3.0, 1.0};
        pMatrices[lI] = pMatrices[lI / 2] * (pPreRotation ? lPre * lLocal : lLocal);
    }
    return pMatrices.back().mData[3][0];
}

void GlobalTransforms(benchmark::State& pState, int pNodes, bool pPreRotation)
{
    const KSceneOwner       lScene = MakeScene(pNodes, pPreRotation);
    KQexGlobalTransforms    lBuffer;
    std::vector<double>     lAngles(3 * static_cast<size_t>(pNodes), 20.0);
    std::vector<KQexMatrix> lMatrices(static_cast<size_t>(pNodes));
    KComparison             lComparison;
    double                  lSum = 0.0;
    const int               lFrames = pNodes < 10000 ? kFrames : 10;
    for (auto lUnused : pState)
    {
        (void)lUnused;
        lComparison.Work(pState,
                         [&]
                         {
                             for (int lFrame = 0; lFrame < lFrames; ++lFrame)
                             {
                                 if (!lScene->GetEvaluator()->EvaluateGlobalTransforms(lScene->GetRootNode(), FrameTime(lFrame), lBuffer))
                                 {
                                     std::abort();
                                 }
                                 lSum += lBuffer.GetTransform(pNodes - 1).mData[3][0];
                             }
                         });
        lComparison.Bound(
            [&]
            {
                for (int lFrame = 0; lFrame < lFrames; ++lFrame)
                {
                    lSum += TransformsBound(lAngles, lMatrices, pPreRotation, lFrame);
                }
            });
    }
    benchmark::DoNotOptimize(lSum);
    lComparison.ReportItems(pState, "node_frame", static_cast<double>(pNodes) * lFrames);
}

/// Creates and destroys a chain, the deepest tree of that many nodes.
void CreateAndDestroy(benchmark::State& pState, int pNodes)
{
    KComparison lComparison;
    for (auto lUnused : pState)
    {
        (void)lUnused;
        lComparison.Work(pState,
                         [&]
                         {
                             const KSceneOwner lScene(KQexScene::Create("bench"));
                             KQexNode*         lNode = lScene->GetRootNode();
                             for (int lI = 1; lI < pNodes; ++lI)
                             {
                                 KQexNode* lChild = KQexNode::Create(lScene.get(), "node");
                                 lNode->AddChild(lChild);
                                 lNode = lChild;
                             }
                         });
    }
    lComparison.ReportItems(pState, "node", pNodes);
}

} // namespace

void RegisterBenchmarks()
{
    for (const bool lPreRotation : {false, true})
    {
        for (const int lNodes : {10, 30, 100, 1000, 10000, 100000})
        {
            const std::string lName =
                std::string("GlobalTransforms/") + (lPreRotation ? "prerotation/" : "plain/") + std::to_string(lNodes);
            benchmark::RegisterBenchmark(lName.c_str(), [=](benchmark::State& pState) { GlobalTransforms(pState, lNodes, lPreRotation); })
                ->UseManualTime()
                ->MinTime(0.2);
        }
    }
    for (const int lNodes : {1000, 10000, 100000})
    {
        benchmark::RegisterBenchmark(("CreateAndDestroy/chain/" + std::to_string(lNodes)).c_str(),
                                     [=](benchmark::State& pState) { CreateAndDestroy(pState, lNodes); })
            ->UseManualTime()
            ->MinTime(0.2);
    }
}
