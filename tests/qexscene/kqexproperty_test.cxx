#include <tests/qexscene/scenefixture.h>

#include <limits>

using namespace qexsdk;

namespace
{

using KVector3 = qexVectorTemplate3<double>;

class KQexPropertyTest : public qextest::KSceneTest
{
};

TEST_F(KQexPropertyTest, AnInvalidOneFailsWithoutEffect)
{
    KQexProperty lNone;
    double       lValue = 5.0;
    EXPECT_FALSE(lNone.IsValid());
    EXPECT_FALSE(lNone.Set(&lValue, eQexDouble));
    EXPECT_FALSE(lNone.Get(&lValue, eQexDouble));
    EXPECT_EQ(lValue, 5.0);
    EXPECT_EQ(lNone.GetType(), eQexUndefined);
    EXPECT_STREQ(lNone.GetName(), "");
    EXPECT_EQ(lNone.GetObject(), nullptr);
    EXPECT_EQ(lNone.GetCurveNode(true, "take"), nullptr);
    EXPECT_EQ(lNone.GetCurveNode(static_cast<KQexAnimLayer*>(nullptr), true), nullptr);
    EXPECT_EQ(lNone.GetSrcObject(kQexClassId(), 0), nullptr);
    EXPECT_FALSE(lNone.ConnectSrcObject(mScene->GetRootNode()));
    EXPECT_FALSE(lNone.DisconnectSrcObject(mScene->GetRootNode()));
    EXPECT_EQ(KQexGet<double>(lNone), 0.0);
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);
}

TEST_F(KQexPropertyTest, TypesAreKnown)
{
    EXPECT_EQ(QexTypeOf(true), eQexBool);
    EXPECT_EQ(QexTypeOf(1), eQexInt);
    EXPECT_EQ(QexTypeOf(1.0F), eQexFloat);
    EXPECT_EQ(QexTypeOf(1.0), eQexDouble);
    EXPECT_EQ(QexTypeOf(KVector3()), eQexDouble3);
    EXPECT_EQ(QexTypeOf(KQexVector4()), eQexDouble4);
    EXPECT_EQ(MakeNode("n")->mLocalScaling.GetType(), eQexDouble3);
}

TEST_F(KQexPropertyTest, NodesBeginWithTheirDefaults)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(lNode->mLocalTranslation.Get(), KVector3());
    EXPECT_EQ(lNode->mLocalRotation.Get(), KVector3());
    EXPECT_EQ(lNode->mLocalScaling.Get(), KVector3(1.0, 1.0, 1.0));
    EXPECT_EQ(lNode->mLocalScaling.GetObject(), lNode);
}

TEST_F(KQexPropertyTest, IsSetAndReadByEveryFunction)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_TRUE(lNode->mLocalTranslation.Set(KVector3(1.0, 2.0, 3.0)));
    EXPECT_EQ(KQexGet<KVector3>(lNode->mLocalTranslation), KVector3(1.0, 2.0, 3.0));
    EXPECT_EQ(KQexGet<KQexVector4>(lNode->mLocalTranslation), KQexVector4(1.0, 2.0, 3.0, 0.0));

    EXPECT_TRUE(lNode->mLocalTranslation.Set(KQexVector4(4.0, 5.0, 6.0, 7.0)));
    EXPECT_EQ(KQexGet<KQexVector4>(lNode->mLocalTranslation), KQexVector4(4.0, 5.0, 6.0, 0.0)) << "w is dropped";

    const double lNumbers[3] = {7.0, 8.0, 9.0};
    EXPECT_TRUE(lNode->mLocalTranslation.Set(lNumbers, eQexDouble3, false));
    KQexProperty lHandle = lNode->mLocalTranslation;
    EXPECT_TRUE(lHandle.IsValid());
    EXPECT_EQ(KQexGet<KVector3>(lHandle), KVector3(7.0, 8.0, 9.0));
    EXPECT_TRUE(KQexSet<KVector3>(lHandle, KVector3(1.0, 1.0, 1.0), true));
    EXPECT_EQ(lNode->mLocalTranslation.Get(), KVector3(1.0, 1.0, 1.0)) << "the handle refers to the property";
    double lRead[3] = {};
    EXPECT_TRUE(lNode->mLocalTranslation.Get(lRead, eQexDouble3));
    EXPECT_EQ(lRead[2], 1.0);
}

TEST_F(KQexPropertyTest, NumbersConvertToNumbers)
{
    KQexAnimCurveNode* lCurveNode = KQexAnimCurveNode::Create(mScene, "c");
    KQexProperty       lChannel = lCurveNode->GetChannel(0);
    EXPECT_TRUE(KQexSet<float>(lChannel, 2.5F));
    EXPECT_EQ(KQexGet<double>(lChannel), 2.5);
    EXPECT_EQ(KQexGet<int>(lChannel), 2);
    EXPECT_EQ(KQexGet<bool>(lChannel), true);
    EXPECT_TRUE(KQexSet<int>(lChannel, -7));
    EXPECT_EQ(KQexGet<float>(lChannel), -7.0F);
    EXPECT_TRUE(KQexSet<bool>(lChannel, true));
    EXPECT_EQ(KQexGet<double>(lChannel), 1.0);
    EXPECT_TRUE(KQexSet<bool>(lChannel, false));
    EXPECT_EQ(KQexGet<double>(lChannel), 0.0);
    EXPECT_EQ(KQexGet<bool>(lChannel), false);
    for (const double lHuge : {1e300, std::numeric_limits<double>::infinity()})
    {
        KQexSet<double>(lChannel, lHuge);
        EXPECT_EQ(KQexGet<int>(lChannel), std::numeric_limits<int>::max());
        KQexSet<double>(lChannel, -lHuge);
        EXPECT_EQ(KQexGet<int>(lChannel), std::numeric_limits<int>::min());
    }
    KQexSet<double>(lChannel, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(KQexGet<int>(lChannel), 0);
}

TEST_F(KQexPropertyTest, NumbersAndVectorsDoNotConvert)
{
    KQexNode*    lNode = MakeNode("n");
    KQexProperty lChannel = KQexAnimCurveNode::Create(mScene, "c")->GetChannel(0);
    EXPECT_FALSE(KQexSet<double>(lNode->mLocalTranslation, 1.0));
    EXPECT_FALSE(KQexSet<KVector3>(lChannel, KVector3(1.0, 2.0, 3.0)));
    EXPECT_FALSE(lNode->mLocalTranslation.Set(nullptr, eQexDouble3));
    EXPECT_FALSE(lNode->mLocalTranslation.Get(nullptr, eQexDouble3));
    EXPECT_EQ(lNode->mLocalTranslation.Get(), KVector3());
    EXPECT_EQ(KQexGet<double>(lChannel), 0.0);
    double lUntouched = 9.0;
    EXPECT_FALSE(lNode->mLocalTranslation.Get(&lUntouched, eQexDouble));
    EXPECT_FALSE(lNode->mLocalTranslation.Get(&lUntouched, eQexUndefined));
    EXPECT_EQ(lUntouched, 9.0);
}

TEST_F(KQexPropertyTest, ATakeIsCreatedOnDemand)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "walk"), nullptr);
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);

    lNode->mLocalRotation.Set(KVector3(1.0, 2.0, 3.0));
    KQexAnimCurveNode* lCurveNode = lNode->mLocalRotation.GetCurveNode(true, "walk");
    ASSERT_NE(lCurveNode, nullptr);
    KQexAnimStack* lStack = mScene->FindAnimStack("walk");
    ASSERT_NE(lStack, nullptr);
    ASSERT_EQ(lStack->GetMemberCount(), 1);
    KQexAnimLayer* lLayer = lStack->GetMember<KQexAnimLayer>(0);
    EXPECT_EQ(lCurveNode->GetLayer(), lLayer);
    EXPECT_EQ(lLayer->GetMember(0), lCurveNode);
    for (unsigned int lI = 0; lI < 3; ++lI)
    {
        EXPECT_EQ(lCurveNode->GetChannelValue<double>(lI, -1.0), 1.0 + lI) << "channels start with the property's value";
    }

    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(true, "walk"), lCurveNode);
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "walk"), lCurveNode);
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(lLayer), lCurveNode);
    EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(KQexAnimCurveNode::smClassId, 0), lCurveNode);
    EXPECT_EQ(lNode->mLocalTranslation.GetCurveNode(lLayer, false), nullptr);
    EXPECT_NE(lNode->mLocalTranslation.GetCurveNode(true, "walk"), lCurveNode);
    EXPECT_EQ(mScene->GetAnimStackCount(), 1);
}

TEST_F(KQexPropertyTest, EachTakeHasItsOwnCurveNode)
{
    KQexNode*          lNode = MakeNode("n");
    constexpr int      kTakes = 20;
    KQexAnimCurveNode* lCurveNodes[kTakes];
    for (int lTake = 0; lTake < kTakes; ++lTake)
    {
        lCurveNodes[lTake] = lNode->mLocalRotation.GetCurveNode(true, std::to_string(lTake).c_str());
    }
    for (int lTake = 0; lTake < kTakes; ++lTake)
    {
        EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, std::to_string(lTake).c_str()), lCurveNodes[lTake]);
        EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(KQexAnimCurveNode::smClassId, lTake), lCurveNodes[lTake]);
    }
    EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(kQexClassId(), kTakes), nullptr);
    EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(kQexClassId(), -1), nullptr);
    EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(KQexAnimCurve::smClassId, 0), nullptr);
}

TEST_F(KQexPropertyTest, ATakeWithoutANameHasNoCurveNode)
{
    KQexNode* lNode = MakeNode("n");
    for (const bool lCreate : {true, false})
    {
        EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(lCreate, ""), nullptr);
        EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(lCreate, static_cast<const char*>(nullptr)), nullptr);
    }
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);
    EXPECT_EQ(mScene->GetEvaluator()->GetContext(), nullptr);
}

TEST_F(KQexPropertyTest, OnlyVectorsHaveCurveNodes)
{
    KQexProperty lChannel = KQexAnimCurveNode::Create(mScene, "c")->GetChannel(0);
    EXPECT_EQ(lChannel.GetCurveNode(true, "take"), nullptr);
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);
}

TEST_F(KQexPropertyTest, LayersOfAnotherSceneAreRejected)
{
    KQexScene*     lOther = KQexScene::Create("other");
    KQexAnimLayer* lLayer = KQexAnimLayer::Create(lOther, "l");
    EXPECT_EQ(MakeNode("n")->mLocalRotation.GetCurveNode(lLayer, true), nullptr);
    EXPECT_FALSE(MakeNode("n")->mLocalRotation.ConnectSrcObject(KQexAnimCurveNode::Create(lOther, "c")));
    lOther->Destroy();
}

TEST_F(KQexPropertyTest, WithoutMemoryNoPartOfTheTakeRemains)
{
    KQexNode* lNode = MakeNode("n");
    for (long lFail = 0;; ++lFail)
    {
        mMemory.FailAfter(lFail);
        KQexAnimCurveNode* lCurveNode = lNode->mLocalRotation.GetCurveNode(true, "take");
        mMemory.FailAfter(-1);
        if (lCurveNode != nullptr)
        {
            EXPECT_GE(lFail, 7) << "stack, layer, curve node, their names and the connection";
            EXPECT_EQ(lCurveNode->GetLayer(), mScene->FindAnimStack("take")->GetMember<KQexAnimLayer>(0));
            break;
        }
        ASSERT_EQ(mScene->GetAnimStackCount(), 0) << lFail;
        ASSERT_EQ(mScene->GetObjectCount(), 3) << lFail;
        ASSERT_EQ(mScene->GetEvaluator()->GetContext(), nullptr);
    }
}

} // namespace
