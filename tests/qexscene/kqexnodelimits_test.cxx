#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexNodeLimitsTest : public qextest::KSceneTest
{
};

TEST_F(KQexNodeLimitsTest, ReferToTheirNode)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(lNode->GetLimits().mLimitedNode, lNode);
}

TEST_F(KQexNodeLimitsTest, TheGroupsAreEnabledSeparately)
{
    KQexNodeLimits& lLimits = MakeNode("n")->GetLimits();
    EXPECT_FALSE(lLimits.GetTranslationLimitActive() || lLimits.GetRotationLimitActive() || lLimits.GetScalingLimitActive());
    lLimits.SetTranslationLimitActive(true);
    EXPECT_TRUE(lLimits.GetTranslationLimitActive() && lLimits.mTranslationLimits.GetActive());
    EXPECT_FALSE(lLimits.GetRotationLimitActive() || lLimits.GetScalingLimitActive());
    lLimits.SetRotationLimitActive(true);
    EXPECT_TRUE(lLimits.GetRotationLimitActive() && lLimits.mRotationLimits.GetActive());
    EXPECT_FALSE(lLimits.GetScalingLimitActive());
    lLimits.SetScalingLimitActive(true);
    lLimits.SetTranslationLimitActive(false);
    EXPECT_TRUE(lLimits.GetScalingLimitActive() && lLimits.mScalingLimits.GetActive());
    EXPECT_FALSE(lLimits.GetTranslationLimitActive());
}

TEST_F(KQexNodeLimitsTest, DoNotClampTheTransform)
{
    KQexNode* lNode = MakeNode("n");
    lNode->GetLimits().SetTranslationLimitActive(true);
    lNode->GetLimits().mTranslationLimits.SetLimitMaxActive(true, true, true);
    lNode->mLocalTranslation.Set(qexVectorTemplate3<double>(5.0, 0.0, 0.0));
    EXPECT_EQ(lNode->EvaluateLocalTranslation(KTime(0)), KQexVector4(5.0, 0.0, 0.0));
}

} // namespace
