#include <qexscene/kqexframe.h>

#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int kTreeFrames = 12;

/// A random tree that uses every part of a node's transform, below a node that moves too.
class KFrameTest : public testing::Test
{
protected:
    KFrameTest()
    {
        KRandomTreeOptions lTree;
        lTree.mNodes = 40;
        lTree.mFrames = kTreeFrames;
        lTree.mScaling = true;
        mTop = MakeRandomTree(mRandom, mScene.get(), lTree);
        mStack = mScene->FindAnimStack("take");
        mLayer = mStack->GetMember<KQexAnimLayer>(0);
        mScene->GetEvaluator()->SetContext(mStack);
    }

    void ExpectAsEvaluated(const KQexFrame& pFrame, KTime pTime) const
    {
        for (size_t i = 0; i < pFrame.GetNodes().GetCount(); ++i)
        {
            const KQexMatrix lExpected = mScene->GetEvaluator()->GetNodeGlobalTransform(pFrame.GetNodes().GetNode(i), pTime);
            for (int k = 0; k < 16; ++k)
            {
                const double lNumber = lExpected.mData[k / 4].mData[k % 4];
                ASSERT_NEAR(pFrame.GetWorld(i).mData[k / 4].mData[k % 4], lNumber, 1e-9 * (1.0 + std::fabs(lNumber)))
                    << pFrame.GetNodes().GetNode(i)->GetName();
            }
        }
    }

    std::mt19937   mRandom{11};
    KScenePtr      mScene = MakeScene();
    KQexNode*      mTop = nullptr;
    KQexAnimStack* mStack = nullptr;
    KQexAnimLayer* mLayer = nullptr;
};

TEST_F(KFrameTest, WorldsAreTheEvaluators)
{
    const KQexFrameNodes lNodes({mTop}, mLayer);
    KQexFrame            lFrame(lNodes, eFRAME_WORLD);
    for (int i = -1; i <= kTreeFrames; ++i)
    {
        lFrame.Evaluate(i, FrameTime(i));
        EXPECT_EQ(lFrame.GetIndex(), i);
        EXPECT_EQ(lFrame.GetTime().Get(), FrameTime(i).Get());
        ExpectAsEvaluated(lFrame, FrameTime(i));
    }
}

TEST_F(KFrameTest, RotationsAndChannelsAreTheNodes)
{
    const KQexFrameNodes lNodes({mTop}, mLayer);
    KQexFrame            lFrame(lNodes, eFRAME_ROTATIONS);
    for (const int i : {5, 0, kTreeFrames - 1, 3})
    {
        lFrame.Evaluate(i, FrameTime(i));
        for (size_t k = 0; k < lNodes.GetCount(); ++k)
        {
            const KQexNodePose lPose(lNodes.GetNode(k), mLayer);
            KQexQuaternion     lRotation;
            double             lNumbers[3];
            double             lTranslation[3];
            lPose.GetRotation(FrameTime(i), lRotation);
            EXPECT_TRUE(std::equal(lRotation.mData, lRotation.mData + 4, lFrame.GetRotation(k).mData));
            lPose.GetScaling(FrameTime(i), lNumbers);
            EXPECT_TRUE(std::equal(lNumbers, lNumbers + 3, lFrame.GetScaling(k)));
            lPose.GetTranslation(FrameTime(i), lNumbers);
            lFrame.GetTranslation(k, lTranslation);
            EXPECT_TRUE(std::equal(lNumbers, lNumbers + 3, lTranslation));
        }
    }
}

TEST_F(KFrameTest, NodesAboveTheRootsCount)
{
    // Two subtrees, one of them inside the other: every node once, with what is above.
    KQexNode* const      lChild = mTop->GetChild(0);
    KQexNode* const      lGrandchild = lChild->GetChildCount() > 0 ? lChild->GetChild(0) : mTop->GetChild(1);
    const KQexFrameNodes lNodes({lGrandchild, lChild}, mLayer);
    KQexFrame            lFrame(lNodes, eFRAME_ALL);
    EXPECT_GE(lNodes.Find(mTop), 0);
    EXPECT_GE(lNodes.Find(mScene->GetRootNode()), 0);
    EXPECT_EQ(lNodes.Find(nullptr), -1);
    for (size_t i = 0; i < lNodes.GetCount(); ++i)
    {
        EXPECT_EQ(lNodes.Find(lNodes.GetNode(i)), static_cast<int>(i));
        EXPECT_LT(lNodes.GetParent(i), static_cast<int>(i));
        EXPECT_EQ(lNodes.GetParent(i) < 0 ? nullptr : lNodes.GetNode(static_cast<size_t>(lNodes.GetParent(i))),
                  lNodes.GetNode(i)->GetParent());
    }
    lFrame.Evaluate(4, FrameTime(4));
    ExpectAsEvaluated(lFrame, FrameTime(4));
}

TEST_F(KFrameTest, WithoutATakeTheRestPose)
{
    const KQexFrameNodes lNodes({mTop}, nullptr);
    KQexFrame            lFrame(lNodes, eFRAME_WORLD);
    EXPECT_TRUE(lNodes.GetKeyed().empty());
    lFrame.Evaluate(0, FrameTime(3));
    mScene->GetEvaluator()->SetContext(nullptr);
    ExpectAsEvaluated(lFrame, FrameTime(3));
}

} // namespace
