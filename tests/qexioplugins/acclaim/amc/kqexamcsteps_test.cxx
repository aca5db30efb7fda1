#include <qexioplugins/acclaim/amc/kqexamcsteps.h>

#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int kNodes = 40;
constexpr int kFrames = 12;

/// A random tree that uses every part of a node's transform, with or without scaling; two of three nodes have a bone.
class KAmcStepsTest : public testing::TestWithParam<bool>
{
protected:
    KAmcStepsTest()
    {
        KRandomTreeOptions lTree;
        lTree.mNodes = kNodes;
        lTree.mFrames = kFrames;
        lTree.mScaling = GetParam();
        mTop = MakeRandomTree(mRandom, mScene.get(), lTree);
        KQexAnimStack* const lStack = mScene->FindAnimStack("take");
        mScene->GetEvaluator()->SetContext(lStack);
        KQexGlobalTransforms lPose;
        EXPECT_TRUE(mScene->GetEvaluator()->EvaluateGlobalTransforms(mTop, KTime(0), lPose));
        std::vector<int> lJointOf; // For each node, the nearest joint at or above it.
        for (int i = 0; i < lPose.GetCount(); ++i)
        {
            lJointOf.push_back(i == 0 ? -1 : lJointOf[static_cast<size_t>(lPose.GetParentIndex(i))]);
            if (i % 3 != 1)
            {
                mJoints.push_back(KQexAmcJoint{lPose.GetNode(i), i, lJointOf.back()});
                lJointOf.back() = static_cast<int>(mJoints.size()) - 1;
            }
        }
        mNodes = std::make_unique<KQexFrameNodes>(std::vector<KQexNode*>{mTop}, lStack->GetMember<KQexAnimLayer>(0));
        mSteps.Prepare(*mNodes, mJoints);
    }

    /// The expected step, from the nodes' global transforms.
    KQexAmcStep Expected(const KQexAmcJoint& pJoint, KTime pTime) const
    {
        KQexAmcStep      lStep;
        const KQexMatrix lGlobal = mScene->GetEvaluator()->GetNodeGlobalTransform(pJoint.mNode, pTime);
        lGlobal.GetRotation(lStep.mRotation);
        KmVset(lStep.mTranslation, lGlobal.mData[3].mData);
        if (pJoint.mParent >= 0)
        {
            const KQexMatrix lFromGlobal =
                mScene->GetEvaluator()->GetNodeGlobalTransform(mJoints[static_cast<size_t>(pJoint.mParent)].mNode, pTime);
            KgeRMatrix lInverse;
            lFromGlobal.GetRotation(lInverse);
            KgeInverse(lInverse, lInverse);
            KgeMult(lStep.mRotation, lInverse, lStep.mRotation);
            for (int i = 0; i < 3; ++i)
            {
                lStep.mTranslation[i] -= lFromGlobal.mData[3].mData[i];
            }
            KmRV(lStep.mTranslation, lInverse.mData, lStep.mTranslation);
        }
        return lStep;
    }

    static void ExpectSame(const KQexAmcStep& pStep, const KQexAmcStep& pExpected)
    {
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(pStep.mTranslation[i], pExpected.mTranslation[i], 1e-8);
            for (int j = 0; j < 3; ++j)
            {
                EXPECT_NEAR(pStep.mRotation.mData[i][j], pExpected.mRotation.mData[i][j], 1e-11);
            }
        }
    }

    std::mt19937              mRandom{5};
    KScenePtr                 mScene = MakeScene();
    KQexNode*                 mTop = nullptr;
    std::vector<KQexAmcJoint> mJoints;
    KQexAmcSteps              mSteps;

    std::unique_ptr<KQexFrameNodes> mNodes;
};

TEST_P(KAmcStepsTest, MatchGlobalTransforms)
{
    KQexAmcStepState lState;
    KQexFrame        lNodes(*mNodes, mSteps.GetParts());
    for (int lFrame = -1; lFrame <= kFrames; ++lFrame)
    {
        lNodes.Evaluate(lFrame, FrameTime(lFrame));
        mSteps.Begin(lNodes, lState);
        for (size_t i = 0; i < mJoints.size(); ++i)
        {
            SCOPED_TRACE(std::string(mJoints[i].mNode->GetName()) + " at " + std::to_string(lFrame));
            KQexAmcStep lStep;
            mSteps.Get(i, lState, lStep);
            ExpectSame(lStep, Expected(mJoints[i], FrameTime(lFrame)));
        }
    }
}

TEST_P(KAmcStepsTest, FixedTranslationsNeverChange)
{
    int lFixed = 0;
    for (size_t i = 0; i < mJoints.size(); ++i)
    {
        if (mSteps.IsTranslationFixed(i))
        {
            const KQexAmcStep lFirst = Expected(mJoints[i], FrameTime(0));
            const KQexAmcStep lLast = Expected(mJoints[i], FrameTime(kFrames - 1));
            for (int k = 0; k < 3; ++k)
            {
                EXPECT_NEAR(lFirst.mTranslation[k], lLast.mTranslation[k], 1e-8) << mJoints[i].mNode->GetName();
            }
            ++lFixed;
        }
    }
    EXPECT_EQ(lFixed > 0, !GetParam());
}

INSTANTIATE_TEST_SUITE_P(Trees, KAmcStepsTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& pInfo) { return std::string(pInfo.param ? "Scaled" : "Unscaled"); });

} // namespace
