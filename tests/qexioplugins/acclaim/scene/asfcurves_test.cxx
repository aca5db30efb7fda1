#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/qexioplugins/acclaim/loggedcurve.h>

#include <gtest/gtest.h>

// Which curves a bone hands over, destroys or finds at its node. A group is the three curves of a bone's translation or of its rotation.

using namespace qexsdk;
using namespace qextest;

namespace
{

class KCurveGroupTest : public testing::Test
{
protected:
    /// Creates the bone's curves with \p pKeys keys each, of different values.
    void CreateCurves(int pKeys = 2)
    {
        EXPECT_TRUE(mBone->CreateDataFromDOF(mStage.mScene));
        for (int lKey = 0; lKey < pKeys; ++lKey)
        {
            const double lValues[6] = {1.0, 2.0, 3.0, 170.0 * (lKey % 2 == 0 ? 1.0 : -1.0), 5.0, 6.0};
            EXPECT_TRUE(mBone->AddSampleFromDOF(lValues, KTime(lKey), 1.0, 1.0, true, true));
        }
    }

    /// The same, with curves that log their destruction.
    void CreateLoggedCurves(int pKeys)
    {
        CreateCurves(0);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            Replace(mBone->mLTData[lIter]);
            Replace(mBone->mLRData[lIter]);
        }
        for (int lKey = 0; lKey < pKeys; ++lKey)
        {
            const double lValues[6] = {};
            EXPECT_TRUE(mBone->AddSampleFromDOF(lValues, KTime(lKey), 1.0, 1.0, true, true));
        }
    }

    void Replace(KQexAnimCurve*& pCurve)
    {
        KQexAnimCurve* lCurve = new KLoggedCurve(mStage.mScene, pCurve->GetName(), mLog);
        pCurve->Destroy();
        pCurve = lCurve;
    }

    /// Connects a logged curve named "old_" and the channel's letter to each channel of a property in the take.
    KQexAnimCurveNode* ConnectOldCurves(KQexProperty& pProperty, const std::string& pPrefix)
    {
        KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(true, "take");
        for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
        {
            EXPECT_TRUE(lCurveNode->ConnectToChannel(new KLoggedCurve(mStage.mScene, pPrefix + "xyz"[lChannel], mLog), lChannel));
        }
        return lCurveNode;
    }

    /// Without its first curve a group counts as absent, whatever the others.
    void DestroyFirstOfEachGroup()
    {
        for (KQexAnimCurve** lGroup : {mBone->mLTData, mBone->mLRData})
        {
            lGroup[0]->Destroy();
            lGroup[0] = nullptr;
        }
    }

    std::vector<std::string> mLog; ///< Outlives the curves.
    KScenePair               mStage;
    KQexAsfNode*             mBone = mStage.mAsf->mRoot = Bone(nullptr, "bone", {0, 1, 2, 5, 4, 3});
    KQexNode*                mNode = KQexNode::Create(mStage.mScene, "node");
};

using KNames = std::vector<std::string>;

TEST_F(KCurveGroupTest, ReplacedCurvesAreDestroyedWithoutFlags)
{
    ConnectOldCurves(mNode->mLocalTranslation, "old_t");
    ConnectOldCurves(mNode->mLocalRotation, "old_r");
    CreateCurves();
    EXPECT_TRUE(mBone->SetKFCurves(mNode, "take"));
    EXPECT_EQ(mLog, (KNames{"old_tx", "old_ty", "old_tz", "old_rx", "old_ry", "old_rz"}));
}

TEST_F(KCurveGroupTest, CurvesWithoutMotionAreDestroyedWithoutFlags)
{
    CreateLoggedCurves(1);
    mBone->StopSamplingData();
    EXPECT_EQ(mLog, (KNames{"bone_tx", "bone_ty", "bone_tz", "bone_rx", "bone_ry", "bone_rz"}));
}

TEST_F(KCurveGroupTest, WithoutItsFirstCurveAGroupIsNotHandedOver)
{
    CreateCurves();
    DestroyFirstOfEachGroup();
    mBone->mLT = KgeTVector(1.0, 2.0, 3.0);
    mBone->mLR = KgeRVector(4.0, 5.0, 6.0);
    EXPECT_TRUE(mBone->SetKFCurves(mNode, "take"));
    EXPECT_EQ(mNode->mLocalTranslation.Get()[2], 3.0);
    EXPECT_EQ(mNode->mLocalRotation.Get()[2], 6.0);
    EXPECT_EQ(mStage.mScene->FindAnimStack("take"), nullptr);
    for (int lIter = 1; lIter < 3; ++lIter)
    {
        EXPECT_TRUE(mBone->mLTData[lIter] && mBone->mLRData[lIter]);
    }
}

TEST_F(KCurveGroupTest, WithoutItsFirstCurveAGroupIsNeitherFilteredNorDestroyed)
{
    KFCURVE_SetRotationFilterToApply(2);
    KFCURVE_SetUseConstantKeyReducer(true);
    for (int lKeys : {1, 3})
    {
        CreateCurves(lKeys);
        DestroyFirstOfEachGroup();
        mBone->StopSamplingData();
        for (int lIter = 1; lIter < 3; ++lIter)
        {
            ASSERT_TRUE(mBone->mLTData[lIter] && mBone->mLRData[lIter]) << lKeys << " keys";
            EXPECT_EQ(mBone->mLTData[lIter]->GetKeyCount(), lKeys);
            EXPECT_EQ(mBone->mLRData[lIter]->GetKeyCount(), lKeys);
        }
    }
    KFCURVE_SetRotationFilterToApply(0);
    KFCURVE_SetUseConstantKeyReducer(false);
}

TEST_F(KCurveGroupTest, TheFirstCurveAloneReplacesTheGroup)
{
    KQexAnimCurveNode* lRotation = ConnectOldCurves(mNode->mLocalRotation, "old_r");
    CreateCurves();
    KQexAnimCurve* const lFirst = mBone->mLRData[0];
    for (int lIter = 1; lIter < 3; ++lIter)
    {
        mBone->mLRData[lIter]->Destroy();
        mBone->mLRData[lIter] = nullptr;
    }
    mBone->mLR = KgeRVector(4.0, 5.0, 6.0);
    EXPECT_TRUE(mBone->SetKFCurves(mNode, "take"));
    EXPECT_EQ(mLog, (KNames{"old_rx", "old_ry", "old_rz"}));
    EXPECT_EQ(lRotation->GetCurve(0), lFirst);
    EXPECT_EQ(lRotation->GetCurveCount(1) + lRotation->GetCurveCount(2), 0);
    EXPECT_EQ(lRotation->GetChannelValue<double>(2, -1.0), 6.0);
}

TEST_F(KCurveGroupTest, CurveNodesComeFromTheFirstOfTwoLayers)
{
    KQexAnimStack* lStack = mStage.mScene->CreateAnimStack("take");
    KQexAnimLayer* lFirst = lStack->GetMember<KQexAnimLayer>(0);
    KQexAnimLayer* lSecond = KQexAnimLayer::Create(mStage.mScene, "second");
    ASSERT_TRUE(lStack->AddMember(lSecond));
    KQexAnimCurveNode* lT = mNode->mLocalTranslation.GetCurveNode(lFirst, true);
    KQexAnimCurveNode* lS = mNode->mLocalScaling.GetCurveNode(lFirst, true);
    for (KQexProperty* lProperty : {static_cast<KQexProperty*>(&mNode->mLocalTranslation),
                                    static_cast<KQexProperty*>(&mNode->mLocalRotation), static_cast<KQexProperty*>(&mNode->mLocalScaling)})
    {
        ASSERT_NE(lProperty->GetCurveNode(lSecond, true), nullptr);
    }
    mBone->GetCurveNodePointers(mNode);
    EXPECT_EQ(mBone->mLTNode, lT);
    EXPECT_EQ(mBone->mLRNode, nullptr); // the second layer's is not a substitute, and none is created on the first
    EXPECT_EQ(mBone->mLSNode, lS);
    EXPECT_EQ(mNode->mLocalRotation.GetCurveNode(lFirst, false), nullptr);
    // Without the first layer, the second becomes member 0.
    ASSERT_TRUE(lStack->RemoveMember(lFirst));
    mBone->GetCurveNodePointers(mNode);
    EXPECT_EQ(mBone->mLTNode, mNode->mLocalTranslation.GetCurveNode(lSecond, false));
    EXPECT_EQ(mBone->mLRNode, mNode->mLocalRotation.GetCurveNode(lSecond, false));
}

} // namespace
