// The scene: all global transforms of a tree, beside the bare sines, cosines and matrix products that they need; making and
// ending nodes.

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

constexpr int kFrames = 240; ///< of motion, at 120 a second.

struct KSceneDestroyer
{
    void operator()(KQexScene* pScene) const { pScene->Destroy(); }
};

using KSceneOwner = std::unique_ptr<KQexScene, KSceneDestroyer>;

KTime FrameTime(int pFrame)
{
    return KTime(pFrame * (KTime::kTicksPerSecond / 120));
}

/// What an import leaves: rotation curves on every node, a rotation offset and, if asked, a pre-rotation.
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

/// The least a node costs: three sine-cosine pairs, the rotation they make, its product with the pre-rotation, the one with the
/// parent's transform. Everything is at hand; nothing is looked up.
double BareTransforms(const std::vector<double>& pAngles, std::vector<KQexMatrix>& pMatrices, bool pPreRotation, double pTurn)
{
    KQexMatrix lPre = pMatrices[0];
    for (size_t lI = 1; lI < pMatrices.size(); ++lI)
    {
        double lC[3];
        double lS[3];
        for (size_t lK = 0; lK < 3; ++lK)
        {
            const double lAngle = (pAngles[3 * lI + lK] + pTurn) * 0.017453292519943295;
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
    KBeside                 lBeside;
    double                  lSum = 0.0;
    const int               lFrames = pNodes < 10000 ? kFrames : 10;
    for (auto lUnused : pState)
    {
        (void)lUnused;
        lBeside.Work(pState,
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
        lBeside.Bound(
            [&]
            {
                for (int lFrame = 0; lFrame < lFrames; ++lFrame)
                {
                    lSum += BareTransforms(lAngles, lMatrices, pPreRotation, lFrame);
                }
            });
    }
    benchmark::DoNotOptimize(lSum);
    lBeside.ReportPieces(pState, "node_frame", static_cast<double>(pNodes) * lFrames);
}

/// A chain: the deepest tree there is.
void MakeAndEnd(benchmark::State& pState, int pNodes)
{
    KBeside lBeside;
    for (auto lUnused : pState)
    {
        (void)lUnused;
        lBeside.Work(pState,
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
    lBeside.ReportPieces(pState, "node", pNodes);
}

} // namespace

void RegisterBenches()
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
        benchmark::RegisterBenchmark(("MakeAndEnd/chain/" + std::to_string(lNodes)).c_str(),
                                     [=](benchmark::State& pState) { MakeAndEnd(pState, lNodes); })
            ->UseManualTime()
            ->MinTime(0.2);
    }
}
