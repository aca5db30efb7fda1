#include <qexscene/kqexchannel.h>

#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexChannelTest : public qextest::KSceneTest
{
};

TEST_F(KQexChannelTest, IsConstantAtChecksTheKeysIfAny)
{
    KQexNode*          lNode = MakeNode("n");
    KQexAnimCurveNode* lCurveNode = lNode->mLocalScaling.GetCurveNode(true, "take");
    const auto         lIsConstantAt = [&](double pValue)
    {
        KQexChannel lChannels[3];
        KQexChannel::Find(lChannels, lNode->mLocalScaling, mScene->FindAnimStack("take")->GetMember<KQexAnimLayer>(0));
        return lChannels[1].IsConstantAt(pValue);
    };
    EXPECT_TRUE(lIsConstantAt(1.0)) << "the channel's value";
    EXPECT_FALSE(lIsConstantAt(2.0));

    KQexAnimCurve* lCurve = MakeCurve({});
    ASSERT_TRUE(lCurveNode->ConnectToChannel(lCurve, 1, true));
    EXPECT_TRUE(lIsConstantAt(1.0)) << "a curve without keys is ignored";

    EXPECT_TRUE(lCurve->AppendSample(Seconds(0), 2.0F));
    EXPECT_TRUE(lCurve->AppendSample(Seconds(1), 2.0F));
    EXPECT_TRUE(lIsConstantAt(2.0)) << "the keys override the value";
    EXPECT_FALSE(lIsConstantAt(1.0));
    EXPECT_TRUE(lCurve->AppendSample(Seconds(2), 2.5F));
    EXPECT_FALSE(lIsConstantAt(2.0)) << "all keys are checked";
}

TEST_F(KQexChannelTest, WithoutALayerThePropertyValueIsUsed)
{
    KQexNode* lNode = MakeNode("n");
    lNode->mLocalTranslation.Set(qexVectorTemplate3<double>(1.0, 2.0, 3.0));
    lNode->mLocalTranslation.GetCurveNode(true, "take")->SetChannelValue<double>(2, 7.0);
    KQexChannel lChannels[3];
    KQexChannel::Find(lChannels, lNode->mLocalTranslation, nullptr);
    EXPECT_TRUE(lChannels[2].IsConstantAt(3.0));
}

} // namespace
