#ifndef TESTS_SUPPORT_RANDOMSCENE_H
#define TESTS_SUPPORT_RANDOMSCENE_H

#include <qexscene/kqexscene.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

/// \file
/// Scenes for properties over random input.

namespace qextest
{

/// Ends a scene with its owner.
struct KSceneDestroyer
{
    void operator()(qexsdk::KQexScene* pScene) const { pScene->Destroy(); }
};
using KScenePtr = std::unique_ptr<qexsdk::KQexScene, KSceneDestroyer>;

inline KScenePtr MakeScene()
{
    return KScenePtr(qexsdk::KQexScene::Create("scene"));
}

/// What a random tree of nodes has.
struct KRandomTree
{
    int  mNodes = 10;
    int  mFrames = 20;
    bool mScaling = false;     ///< Constant and animated scaling.
    bool mTranslations = true; ///< Animated translations below the root.
    bool mPivots = true;       ///< Rotation offsets, pre- and post-rotations, every rotation order.
};

/// A random number of an interval.
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

/// Time of a frame at 120 frames a second.
inline qexsdk::KTime FrameTime(long long pFrame)
{
    return qexsdk::KTime(pFrame * 5880000);
}

/// Puts a smooth random motion around the property's value on its three channels.
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

/// A random tree under the scene's root node with motion in the take "take"; its top node.
inline qexsdk::KQexNode* MakeRandomTree(std::mt19937& pRandom, qexsdk::KQexScene* pScene, const KRandomTree& pWhat)
{
    using namespace qexsdk;
    std::vector<KQexNode*> lNodes;
    for (int i = 0; i < pWhat.mNodes; ++i)
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
        if (pWhat.mPivots)
        {
            lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(i % 6));
            lNode->SetRotationOffset(kPivotSet0, RandomVector(pRandom, 5.0));
            lNode->SetPreRotation(kPivotSet0, RandomVector(pRandom, 180.0));
            lNode->SetPostRotation(kPivotSet0, RandomVector(pRandom, 180.0));
        }
        if (pWhat.mScaling)
        {
            lNode->mLocalScaling.Set(
                qexVectorTemplate3<double>(Between(pRandom, 0.5, 2.0), Between(pRandom, 0.5, 2.0), Between(pRandom, 0.5, 2.0)));
        }
        if (i % 4 != 3)
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalRotation, "take", 60.0, pWhat.mFrames);
        }
        if (i == 0 || (pWhat.mTranslations && i % 3 == 1))
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalTranslation, "take", 10.0, pWhat.mFrames);
        }
        if (pWhat.mScaling && i % 5 == 2)
        {
            AnimateProperty(pRandom, lNode, lNode->mLocalScaling, "take", 0.3, pWhat.mFrames);
        }
    }
    return lNodes.front();
}

} // namespace qextest

#endif
