#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexAnimCurveNodeTest : public qextest::KSceneTest
{
protected:
    void SetUp() override
    {
        KSceneTest::SetUp();
        mNode = MakeNode("n");
        mCurveNode = mNode->mLocalTranslation.GetCurveNode(true, "take");
        ASSERT_NE(mCurveNode, nullptr);
    }

    KQexNode*          mNode = nullptr;
    KQexAnimCurveNode* mCurveNode = nullptr;
};

TEST_F(KQexAnimCurveNodeTest, HasThreeChannels)
{
    EXPECT_EQ(mCurveNode->GetChannelsCount(), 3U);
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        EXPECT_TRUE(mCurveNode->GetChannel(lChannel).IsValid());
        EXPECT_TRUE(mCurveNode->SetChannelValue<double>(lChannel, 10.0 + lChannel));
    }
    EXPECT_STREQ(mCurveNode->GetChannel(1).GetName(), "Y");
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        EXPECT_EQ(mCurveNode->GetChannelValue<double>(lChannel, -1.0), 10.0 + lChannel);
        EXPECT_EQ(KQexGet<double>(mCurveNode->GetChannel(lChannel)), 10.0 + lChannel);
    }
    EXPECT_EQ(mNode->mLocalTranslation.Get(), qexVectorTemplate3<double>()) << "the property keeps its own value";
}

TEST_F(KQexAnimCurveNodeTest, ThereIsNoFourthChannel)
{
    KQexAnimCurve* lCurve = MakeCurve({1.0F});
    for (const unsigned int lChannel : {3U, 4U, ~0U})
    {
        EXPECT_FALSE(mCurveNode->GetChannel(lChannel).IsValid());
        EXPECT_FALSE(mCurveNode->SetChannelValue<double>(lChannel, 1.0));
        EXPECT_EQ(mCurveNode->GetChannelValue<double>(lChannel, -1.0), -1.0);
        EXPECT_EQ(mCurveNode->GetCurve(lChannel, 0, nullptr), nullptr);
        EXPECT_EQ(mCurveNode->GetCurveCount(lChannel), 0);
        EXPECT_FALSE(mCurveNode->ConnectToChannel(lCurve, lChannel, true));
        EXPECT_FALSE(mCurveNode->DisconnectFromChannel(lCurve, lChannel));
        EXPECT_EQ(mCurveNode->Evaluate(lChannel, KTime(0)), 0.0);
        EXPECT_EQ(mCurveNode->GetChannelData(lChannel), nullptr);
    }
}

TEST_F(KQexAnimCurveNodeTest, CurvesAreConnectedAndDisconnected)
{
    KQexAnimCurve* lCurve = MakeCurve({1.0F});
    EXPECT_EQ(mCurveNode->GetCurve(1, 0, nullptr), nullptr);
    EXPECT_FALSE(mCurveNode->DisconnectFromChannel(lCurve, 1));
    EXPECT_TRUE(mCurveNode->ConnectToChannel(lCurve, 1, true));
    EXPECT_EQ(mCurveNode->GetCurve(1, 0, nullptr), lCurve);
    EXPECT_EQ(mCurveNode->GetCurve(0, 0, nullptr), nullptr);
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 1);
    EXPECT_FALSE(mCurveNode->DisconnectFromChannel(lCurve, 0));
    EXPECT_TRUE(mCurveNode->DisconnectFromChannel(lCurve, 1));
    EXPECT_EQ(mCurveNode->GetCurve(1, 0, nullptr), nullptr);
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 0);
    EXPECT_EQ(lCurve->GetScene(), mScene);
    EXPECT_FALSE(mCurveNode->ConnectToChannel(nullptr, 1, true));
    EXPECT_FALSE(mCurveNode->DisconnectFromChannel(nullptr, 1));
}

TEST_F(KQexAnimCurveNodeTest, TheFirstOfSeveralCurvesIsEvaluated)
{
    KQexAnimCurve* lFirst = MakeCurve({1.0F}, "one");
    KQexAnimCurve* lSecond = MakeCurve({2.0F}, "two");
    mCurveNode->ConnectToChannel(lFirst, 0, true);
    mCurveNode->ConnectToChannel(lSecond, 0, true);
    EXPECT_EQ(mCurveNode->GetCurveCount(0), 2);
    EXPECT_EQ(mCurveNode->GetCurve(0, 1, nullptr), lSecond);
    EXPECT_EQ(mCurveNode->GetCurve(0, 2, nullptr), nullptr);
    EXPECT_EQ(mCurveNode->GetCurve(0, 0, "two"), lSecond);
    EXPECT_EQ(mCurveNode->GetCurve(0, 1, "two"), nullptr);
    EXPECT_EQ(mCurveNode->GetSrcObject(KQexAnimCurve::smClassId, 1), lSecond);
    EXPECT_EQ(mCurveNode->Evaluate(0, KTime(0)), 1.0);
    lFirst->Destroy(false, false);
    EXPECT_EQ(mCurveNode->GetCurveCount(0), 1);
    EXPECT_EQ(mCurveNode->Evaluate(0, KTime(0)), 2.0);
}

TEST_F(KQexAnimCurveNodeTest, SourcesAreTheCurvesOfAllChannelsInOrder)
{
    KQexAnimCurve* lX = MakeCurve({1.0F}, "x");
    KQexAnimCurve* lSecondX = MakeCurve({1.0F}, "second");
    KQexAnimCurve* lZ = MakeCurve({1.0F}, "z");
    ASSERT_TRUE(mCurveNode->ConnectToChannel(lZ, 2, true));
    ASSERT_TRUE(mCurveNode->ConnectToChannel(lX, 0, true));
    ASSERT_TRUE(mCurveNode->ConnectToChannel(lSecondX, 0));
    KQexObject* const lSources[] = {lX, lSecondX, lZ, nullptr};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(mCurveNode->GetSrcObject(KQexAnimCurve::smClassId, i), lSources[i]) << i;
    }
    EXPECT_EQ(mCurveNode->GetSrcObject(KQexNode::smClassId, 0), nullptr);
    EXPECT_EQ(mCurveNode->GetCurve(0, 0, "second"), lSecondX);
    EXPECT_EQ(mCurveNode->GetCurve(0, 1, "second"), nullptr);
    EXPECT_EQ(mCurveNode->GetCurve(0, 0, "z"), nullptr);
}

TEST_F(KQexAnimCurveNodeTest, DestroyingACurveDisconnectsItFromEveryChannel)
{
    KQexAnimCurve*     lCurve = MakeCurve({1.0F, 3.0F});
    KQexAnimCurveNode* lOther = mNode->mLocalRotation.GetCurveNode(true, "other");
    mCurveNode->ConnectToChannel(lCurve, 0);
    mCurveNode->ConnectToChannel(lCurve, 2);
    lOther->ConnectToChannel(lCurve, 1);
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 3);
    EXPECT_EQ(lOther->Evaluate(1, Seconds(0.5)), 2.0);
    lOther->Destroy();
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 2);
    lCurve->Destroy(false, false);
    EXPECT_EQ(mCurveNode->GetCurve(0), nullptr);
    EXPECT_EQ(mCurveNode->GetCurve(2), nullptr);
    EXPECT_FALSE(mCurveNode->IsAnimated());
}

TEST_F(KQexAnimCurveNodeTest, WithoutKeysTheChannelValueIsUsed)
{
    mCurveNode->SetChannelValue<double>(0, 7.0);
    EXPECT_EQ(mCurveNode->Evaluate(0, KTime(0)), 7.0);
    KQexAnimCurve* lCurve = MakeCurve({});
    mCurveNode->ConnectToChannel(lCurve, 0);
    EXPECT_EQ(mCurveNode->Evaluate(0, KTime(0)), 7.0);
    EXPECT_FALSE(mCurveNode->IsAnimated(false));
    lCurve->AddKey(KTime(0), KQexAnimCurveKey(KTime(0), 5.0F));
    EXPECT_EQ(mCurveNode->Evaluate(0, KTime(0)), 5.0);
    EXPECT_TRUE(mCurveNode->IsAnimated(false));
}

TEST_F(KQexAnimCurveNodeTest, DestroyDetachesItFromPropertyAndLayer)
{
    KQexAnimLayer* lLayer = mCurveNode->GetLayer();
    KQexAnimCurve* lCurve = MakeCurve({1.0F});
    mCurveNode->ConnectToChannel(lCurve, 0);
    mCurveNode->Destroy();
    EXPECT_EQ(mNode->mLocalTranslation.GetCurveNode(lLayer, false), nullptr);
    EXPECT_EQ(lLayer->GetMemberCount(), 0);
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 0);
}

TEST_F(KQexAnimCurveNodeTest, RecursiveDestroyDestroysItsCurves)
{
    const int      lBefore = mScene->GetObjectCount();
    KQexAnimCurve* lCurve = MakeCurve({1.0F});
    mCurveNode->ConnectToChannel(lCurve, 0);
    mCurveNode->ConnectToChannel(lCurve, 1);
    mCurveNode->ConnectToChannel(MakeCurve({1.0F}), 1);
    mCurveNode->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore - 1);
}

TEST_F(KQexAnimCurveNodeTest, SurvivesANonRecursiveDestroyOfItsNode)
{
    mNode->Destroy();
    EXPECT_EQ(mCurveNode->GetScene(), mScene);
    EXPECT_EQ(mCurveNode->GetDstPropertyCount(), 0);
}

TEST_F(KQexAnimCurveNodeTest, CurvesOfAnotherSceneAreRejected)
{
    KQexScene* lOther = KQexScene::Create("other");
    EXPECT_FALSE(mCurveNode->ConnectToChannel(KQexAnimCurve::Create(lOther, "c"), 0));
    lOther->Destroy();
}

TEST_F(KQexAnimCurveNodeTest, WithoutMemoryNothingIsConnected)
{
    KQexAnimCurve* lCurve = MakeCurve({1.0F});
    mMemory.FailAfter(0);
    EXPECT_FALSE(mCurveNode->ConnectToChannel(lCurve, 0));
    mMemory.FailAfter(-1);
    EXPECT_EQ(mCurveNode->GetCurve(0), nullptr);
    EXPECT_EQ(lCurve->GetDstPropertyCount(), 0);
}

} // namespace
