#include <tests/qexscene/localmatrix.h>
#include <tests/qexscene/scenefixture.h>

#include <type_traits>
#include <vector>

using namespace qexsdk;
using qextest::ExpectNear;
using qextest::LocalMatrix;

namespace
{

// A time is never a bare number: seconds would be taken for ticks.
using KGetTransform = decltype(&KQexAnimEvaluator::GetNodeGlobalTransform);
static_assert(std::is_invocable_v<KGetTransform, const KQexAnimEvaluator&, const KQexNode*, KTime>);
static_assert(!std::is_invocable_v<KGetTransform, const KQexAnimEvaluator&, const KQexNode*, double>);
static_assert(!std::is_invocable_v<KGetTransform, const KQexAnimEvaluator&, const KQexNode*, int>);

class KQexAnimEvaluatorTest : public qextest::KSceneTest
{
protected:
    void SetUp() override
    {
        KSceneTest::SetUp();
        mEvaluator = mScene->GetEvaluator();
    }

    /// A node without animation: translation (1, 2, 3), rotation (10, 20, 30), scaling (2, 3, 4).
    KQexNode* MakeStatic()
    {
        KQexNode* lNode = MakeNode("static");
        lNode->mLocalTranslation.Set(KQexVector4(1.0, 2.0, 3.0));
        lNode->mLocalRotation.Set(KQexVector4(10.0, 20.0, 30.0));
        lNode->mLocalScaling.Set(KQexVector4(2.0, 3.0, 4.0));
        return lNode;
    }

    KQexAnimEvaluator* mEvaluator = nullptr;
};

TEST_F(KQexAnimEvaluatorTest, CannotBeDestroyed)
{
    mEvaluator->Destroy();
    mEvaluator->Destroy(true);
    EXPECT_EQ(mScene->GetEvaluator(), mEvaluator);
    EXPECT_EQ(mEvaluator->GetScene(), mScene);
}

TEST_F(KQexAnimEvaluatorTest, WithoutAStackPropertyValuesAreUsed)
{
    KQexNode* lNode = MakeStatic();
    EXPECT_EQ(lNode->EvaluateLocalTranslation(KTime(0)), KQexVector4(1.0, 2.0, 3.0));
    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0)), KQexVector4(10.0, 20.0, 30.0));
    EXPECT_EQ(lNode->EvaluateLocalScaling(KTime(0)), KQexVector4(2.0, 3.0, 4.0));
    EXPECT_EQ(lNode->EvaluateLocalTranslation(Seconds(5.0), kPivotSet0, false, false), KQexVector4(1.0, 2.0, 3.0));
    EXPECT_EQ(mEvaluator->GetNodeLocalScaling(lNode, KTime(0)), KQexVector4(2.0, 3.0, 4.0));
}

TEST_F(KQexAnimEvaluatorTest, ACurveNodeOverridesTheProperty)
{
    KQexNode*          lNode = MakeStatic();
    KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, "take");
    lCurveNode->ConnectToChannel(MakeCurve({0.0F, 10.0F}), 1);
    lCurveNode->ConnectToChannel(MakeCurve({}), 2);
    lNode->mLocalTranslation.Set(KQexVector4(100.0, 200.0, 300.0));
    EXPECT_EQ(lNode->EvaluateLocalTranslation(Seconds(0.5)), KQexVector4(1.0, 5.0, 3.0))
        << "x: no curve, z: no keys; both have the channel's value, not the property's new one";
    EXPECT_EQ(lNode->EvaluateLocalTranslation(Seconds(-1.0)), KQexVector4(1.0, 0.0, 3.0));
    EXPECT_EQ(lNode->EvaluateLocalTranslation(Seconds(9.0)), KQexVector4(1.0, 10.0, 3.0));
    lCurveNode->SetChannelValue<double>(0, 7.0);
    EXPECT_EQ(lNode->EvaluateLocalTranslation(Seconds(0.5)), KQexVector4(7.0, 5.0, 3.0));
}

TEST_F(KQexAnimEvaluatorTest, OnlyLayer0OfTheCurrentStackCounts)
{
    KQexNode* lNode = MakeStatic();
    lNode->mLocalRotation.GetCurveNode(true, "walk")->ConnectToChannel(MakeCurve({1.0F}), 0);
    lNode->mLocalRotation.GetCurveNode(true, "run")->ConnectToChannel(MakeCurve({2.0F}), 0);
    KQexAnimStack* lJump = mScene->CreateAnimStack("jump");
    KQexAnimLayer* lSecond = KQexAnimLayer::Create(mScene, "second");
    lJump->AddMember(lSecond);
    lNode->mLocalRotation.GetCurveNode(lSecond, true)->ConnectToChannel(MakeCurve({3.0F}), 0);

    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0))[0], 1.0) << "the first stack";
    mEvaluator->SetContext(mScene->FindAnimStack("run"));
    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0))[0], 2.0);
    mEvaluator->SetContext(lJump);
    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0))[0], 10.0) << "a second layer is ignored";
    mEvaluator->SetContext(nullptr);
    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0))[0], 10.0);
    mEvaluator->SetContext(KQexAnimStack::Create(mScene, "bare"));
    EXPECT_EQ(lNode->EvaluateLocalRotation(KTime(0))[0], 10.0) << "no layer at all";
}

TEST_F(KQexAnimEvaluatorTest, TheLocalTransformUsesTheAnimatedValues)
{
    qextest::KRandomNode lRandom(31);
    for (int lRound = 0; lRound < 300; ++lRound)
    {
        KQexNode* lNode = MakeNode("n");
        lRandom.Set(*lNode);
        KQexVector4  lValues[3];
        KQexProperty lProperties[3] = {lNode->mLocalTranslation, lNode->mLocalRotation, lNode->mLocalScaling};
        for (int lP = 0; lP < 3; ++lP)
        {
            lValues[lP] = KQexGet<KQexVector4>(lProperties[lP]);
            for (unsigned int lI = 0; lI < 3; ++lI)
            {
                if (lRandom.Below(2) == 0)
                {
                    const float lFrom = static_cast<float>(lRandom.Between(0.5, 90.0));
                    const float lTo = static_cast<float>(lRandom.Between(0.5, 90.0));
                    lProperties[lP].GetCurveNode(true, "take")->ConnectToChannel(MakeCurve({lFrom, lTo}), lI);
                    lValues[lP][static_cast<int>(lI)] = 0.75 * static_cast<double>(lFrom) + 0.25 * static_cast<double>(lTo);
                }
            }
        }
        ExpectNear(mEvaluator->GetNodeLocalTransform(lNode, Seconds(0.25)), LocalMatrix(*lNode, lValues[0], lValues[1], lValues[2]), 1e-13);
        lNode->Destroy(true);
    }
}

TEST_F(KQexAnimEvaluatorTest, TheGlobalTransformIncludesAllAncestors)
{
    KQexNode* lA = MakeNode("a", mScene->GetRootNode());
    KQexNode* lB = MakeNode("b", lA);
    KQexNode* lC = MakeNode("c", lB);
    mScene->GetRootNode()->mLocalScaling.Set(KQexVector4(2.0, 2.0, 2.0));
    lA->mLocalTranslation.Set(KQexVector4(10.0, 0.0, 0.0));
    lA->mLocalRotation.Set(KQexVector4(0.0, 0.0, 90.0));
    lB->SetRotationOffset(kPivotSet0, KQexVector4(0.0, 5.0, 0.0));
    lC->mLocalTranslation.Set(KQexVector4(0.0, 0.0, 1.0));
    const KQexMatrix lGlobal = mEvaluator->GetNodeGlobalTransform(lC, KTime(0));
    EXPECT_NEAR(lGlobal.mData[3][0], 10.0, 1e-14) << "2 (10 - 5)";
    EXPECT_NEAR(lGlobal.mData[3][1], 0.0, 1e-14);
    EXPECT_NEAR(lGlobal.mData[3][2], 2.0, 1e-14);
    EXPECT_NEAR(lGlobal.mData[0][1], 2.0, 1e-14);
    EXPECT_EQ(lGlobal.mData[0][3], 0.0);
}

TEST_F(KQexAnimEvaluatorTest, ANullNodeHasDefaultValues)
{
    ExpectNear(mEvaluator->GetNodeLocalTransform(nullptr, KTime(0)), KQexMatrix(), 0.0);
    ExpectNear(mEvaluator->GetNodeGlobalTransform(nullptr, KTime(0)), KQexMatrix(), 0.0);
    EXPECT_EQ(mEvaluator->GetNodeLocalTranslation(nullptr, KTime(0)), KQexVector4());
    EXPECT_EQ(mEvaluator->GetNodeLocalRotation(nullptr, KTime(0)), KQexVector4());
    EXPECT_EQ(mEvaluator->GetNodeLocalScaling(nullptr, KTime(0)), KQexVector4(1.0, 1.0, 1.0));
}

} // namespace
