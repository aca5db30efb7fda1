#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexAnimStackTest : public qextest::KSceneTest
{
};

TEST_F(KQexAnimStackTest, IsFoundByName)
{
    EXPECT_EQ(mScene->FindAnimStack("walk"), nullptr);
    KQexAnimStack* lWalk = mScene->CreateAnimStack("walk");
    KQexAnimStack* lRun = mScene->CreateAnimStack("run");
    ASSERT_NE(lWalk, nullptr);
    ASSERT_NE(lRun, nullptr);
    EXPECT_EQ(mScene->FindAnimStack("walk"), lWalk);
    EXPECT_EQ(mScene->FindAnimStack("run"), lRun);
    EXPECT_EQ(mScene->FindAnimStack("Walk"), nullptr);
    EXPECT_EQ(mScene->GetAnimStackCount(), 2);
    EXPECT_EQ(mScene->GetAnimStack(0), lWalk);
    EXPECT_EQ(mScene->GetAnimStack(1), lRun);
    EXPECT_EQ(mScene->GetAnimStack(2), nullptr);
    EXPECT_EQ(mScene->GetAnimStack(-1), nullptr);
    EXPECT_EQ(mScene->CreateAnimStack("walk"), lWalk) << "an existing stack is returned";
    EXPECT_EQ(mScene->GetAnimStackCount(), 2);
}

TEST_F(KQexAnimStackTest, NeedsAName)
{
    EXPECT_EQ(mScene->CreateAnimStack(""), nullptr);
    EXPECT_EQ(mScene->CreateAnimStack(nullptr), nullptr);
    KQexAnimStack::Create(mScene, "");
    EXPECT_EQ(mScene->FindAnimStack(""), nullptr);
    EXPECT_EQ(mScene->FindAnimStack(nullptr), nullptr);
}

TEST_F(KQexAnimStackTest, GetsItsBaseLayer)
{
    KQexAnimStack* lStack = mScene->CreateAnimStack("walk");
    ASSERT_EQ(lStack->GetMemberCount(), 1);
    KQexAnimLayer* lLayer = lStack->GetMember<KQexAnimLayer>(0);
    ASSERT_NE(lLayer, nullptr);
    EXPECT_STREQ(lLayer->GetName(), "BaseLayer");
    EXPECT_EQ(lStack->GetOrCreateBaseLayer(), lLayer);

    KQexAnimStack* lBare = KQexAnimStack::Create(mScene, "bare");
    EXPECT_EQ(lBare->GetMember<KQexAnimLayer>(static_cast<KQexAnimLayer*>(nullptr), 0), nullptr);
    EXPECT_NE(MakeNode("n")->mLocalRotation.GetCurveNode(true, "bare"), nullptr);
    EXPECT_EQ(lBare->GetMemberCount(), 1);
}

TEST_F(KQexAnimStackTest, TheFirstBecomesCurrent)
{
    KQexAnimEvaluator* lEvaluator = mScene->GetEvaluator();
    EXPECT_EQ(lEvaluator->GetContext(), nullptr);
    EXPECT_EQ(lEvaluator->GetLayer(), nullptr);
    KQexAnimStack* lWalk = mScene->CreateAnimStack("walk");
    KQexAnimStack* lRun = mScene->CreateAnimStack("run");
    EXPECT_EQ(lEvaluator->GetContext(), lWalk);
    EXPECT_TRUE(lEvaluator->SetContext(lRun));
    EXPECT_EQ(lEvaluator->GetContext(), lRun);
    EXPECT_EQ(lEvaluator->GetLayer(), lRun->GetMember<KQexAnimLayer>(0));
    EXPECT_TRUE(lEvaluator->SetContext(nullptr));
    EXPECT_EQ(lEvaluator->GetContext(), nullptr);
}

TEST_F(KQexAnimStackTest, StacksOfAnotherSceneAreRejected)
{
    KQexScene*     lOther = KQexScene::Create("other");
    KQexAnimStack* lStack = mScene->CreateAnimStack("walk");
    EXPECT_FALSE(mScene->GetEvaluator()->SetContext(lOther->CreateAnimStack("walk")));
    EXPECT_EQ(mScene->GetEvaluator()->GetContext(), lStack);
    lOther->Destroy();
}

TEST_F(KQexAnimStackTest, AfterTheCurrentOneTheFirstRemainingBecomesCurrent)
{
    KQexAnimEvaluator* lEvaluator = mScene->GetEvaluator();
    KQexAnimStack*     lWalk = mScene->CreateAnimStack("walk");
    KQexAnimStack*     lRun = mScene->CreateAnimStack("run");
    mScene->CreateAnimStack("jump")->Destroy(true);
    EXPECT_EQ(lEvaluator->GetContext(), lWalk);
    lWalk->Destroy(true);
    EXPECT_EQ(lEvaluator->GetContext(), lRun);
    lRun->Destroy(true);
    EXPECT_EQ(lEvaluator->GetContext(), nullptr);
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);
    KQexAnimStack* lAgain = mScene->CreateAnimStack("again");
    EXPECT_EQ(lEvaluator->GetContext(), lAgain);
}

TEST_F(KQexAnimStackTest, RecursiveDestroyDestroysItsMotion)
{
    const int lBefore = mScene->GetObjectCount();
    KQexNode* lNode = MakeNode("n");
    lNode->mLocalRotation.GetCurveNode(true, "walk")->ConnectToChannel(MakeCurve({1.0F}), 0);
    mScene->FindAnimStack("walk")->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore + 1);
    EXPECT_EQ(lNode->mLocalRotation.GetSrcObject(kQexClassId(), 0), nullptr);
}

TEST_F(KQexAnimStackTest, WithoutMemoryItIsNotCreated)
{
    for (long lFail = 0;; ++lFail)
    {
        mMemory.FailAfter(lFail);
        KQexAnimStack* lStack = mScene->CreateAnimStack("walk");
        mMemory.FailAfter(-1);
        if (lStack != nullptr)
        {
            EXPECT_GE(lFail, 4);
            break;
        }
        ASSERT_EQ(mScene->GetObjectCount(), 2);
        ASSERT_EQ(mScene->GetAnimStackCount(), 0);
    }
}

} // namespace
