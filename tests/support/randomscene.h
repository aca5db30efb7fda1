#ifndef TESTS_SUPPORT_RANDOMSCENE_H
#define TESTS_SUPPORT_RANDOMSCENE_H

#include <qexscene/kqexscene.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// \file
/// Random scenes for property tests.

namespace qextest
{

/// Deleter for scenes.
struct KSceneDeleter
{
    void operator()(qexsdk::KQexScene* pScene) const { pScene->Destroy(); }
};
using KScenePtr = std::unique_ptr<qexsdk::KQexScene, KSceneDeleter>;

inline KScenePtr MakeScene()
{
    return KScenePtr(qexsdk::KQexScene::Create("scene"));
}

/// Options of a random tree of nodes.
struct KRandomTreeOptions
{
    int  mNodes = 10;
    int  mFrames = 20;
    bool mScaling = false;     ///< Constant and animated scaling.
    bool mTranslations = true; ///< Animated translations below the root.
    bool mPivots = true;       ///< Rotation offsets, pre- and post-rotations, every rotation order.
};

/// A uniformly distributed number in an interval.
inline double Between(std::mt19937& pRandom, double pFrom, double pTo)
{
    return std::uniform_real_distribution<double>(pFrom, pTo)(pRandom);
}

inline qexsdk::KQexVector4 RandomVector(std::mt19937& pRandom, double pSize)
{
    const double lX = Between(pRandom, -pSize, pSize);
    const double lY = Between(pRandom, -pSize, pSize);
    return {lX, lY, Between(pRandom, -pSize, pSize)};
}

/// Time of a frame at 120 frames per second.
inline qexsdk::KTime FrameTime(long long pFrame)
{
    return qexsdk::KTime(pFrame * 5880000);
}

/// Animates the property's three channels with a smooth random motion around its value.
inline void AnimateProperty(std::mt19937& pRandom, qexsdk::KQexNode* pNode, qexsdk::KQexProperty pProperty, const char* pTake, double pSize,
                            int pFrames)
{
    const auto                 lRest = qexsdk::KQexGet<qexsdk::qexVectorTemplate3<double>>(pProperty);
    qexsdk::KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(true, pTake);
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        qexsdk::KQexAnimCurve* lCurve = qexsdk::KQexAnimCurve::Create(pNode->GetScene(), "curve");
        lCurveNode->ConnectToChannel(lCurve, lChannel, true);
        const double lPhase = Between(pRandom, 0.0, 6.0);
        const double lSpeed = Between(pRandom, 0.05, 0.3);
        for (int i = 0; i < pFrames; ++i)
        {
            lCurve->AppendSample(FrameTime(i), static_cast<float>(lRest.mData[lChannel] + pSize * std::sin(lPhase + lSpeed * i)));
        }
    }
}

/// A random tree under the scene's root node, animated in the take "take". \return its root
inline qexsdk::KQexNode* MakeRandomTree(std::mt19937& pRandom, qexsdk::KQexScene* pScene, const KRandomTreeOptions& pOptions)
{
    using namespace qexsdk;
    std::vector<KQexNode*> lNodes;
    for (int i = 0; i < pOptions.mNodes; ++i)
    {
        KQexNode* lNode = KQexNode::Create(pScene, ("node" + std::to_string(i)).c_str());
        lNode->SetNodeAttribute(KQexSkeleton::Create(pScene, ""));
        KQexNode* lParent =
            lNodes.empty() ? pScene->GetRootNode() : lNodes[std::uniform_int_distribution<size_t>(0, lNodes.size() - 1)(pRandom)];
        lParent->AddChild(lNode);
        lNodes.push_back(lNode);
        lNode->SetRotationActive(true);
        const KQexVector4 lT = RandomVector(pRandom, 20.0);
        const KQexVector4 lR = RandomVector(pRandom, 180.0);
        lNode->mLocalTranslation.Set(qexVectorTemplate3<double>(lT[0], lT[1], lT[2]));
        lNode->mLocalRotation.Set(qexVectorTemplate3<double>(lR[0], lR[1], lR[2]));
        if (pOptions.mPivots)
        {
            lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(i % 6));
            lNode->SetRotationOffset(kPivotSet0, RandomVector(pRandom, 5.0));
            lNode->SetPreRotation(kPivotSet0, RandomVector(pRandom, 180.0));
            lNode->SetPostRotation(kPivotSet0, RandomVector(pRandom, 180.0));
        }
        if (pOptions.mScaling)
        {
            lNode->mLocalScaling.Set(
                qexVectorTemplate3<double>(Between(pRandom, 0.5, 2.0), Between(pRandom, 0.5, 2.0), Between(pRandom, 0.5, 2.0)));
        }
        if (i % 4 != 3)
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalRotation, "take", 60.0, pOptions.mFrames);
        }
        if (i == 0 || (pOptions.mTranslations && i % 3 == 1))
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalTranslation, "take", 10.0, pOptions.mFrames);
        }
        if (pOptions.mScaling && i % 5 == 2)
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalScaling, "take", 0.3, pOptions.mFrames);
        }
    }
    return lNodes.front();
}

} // namespace qextest

#endif
