#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexSkeletonTest : public qextest::KSceneTest
{
};

TEST_F(KQexSkeletonTest, KeepsItsType)
{
    KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
    EXPECT_STREQ(lSkeleton->GetName(), "");
    EXPECT_EQ(lSkeleton->GetSkeletonType(), 0);
    lSkeleton->SetSkeletonType(static_cast<KQexSkeleton::ESkeletonType>(2));
    EXPECT_EQ(lSkeleton->GetSkeletonType(), KQexSkeleton::eSKELETON_JOINT);
    EXPECT_EQ(lSkeleton->GetSkeletonType(), 2);
}

TEST_F(KQexSkeletonTest, MarksItsNodeAsABone)
{
    KQexNode*     lNode = MakeNode("n");
    KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
    EXPECT_EQ(lNode->GetSkeleton(), nullptr);
    EXPECT_TRUE(lNode->SetNodeAttribute(lSkeleton));
    EXPECT_EQ(lNode->GetSkeleton(), lSkeleton);
    EXPECT_EQ(lNode->GetNodeAttribute(), lSkeleton);
    EXPECT_EQ(lSkeleton->GetNode(), lNode);
    EXPECT_EQ(lNode->GetSrcObject(KQexSkeleton::smClassId, 0), lSkeleton);
}

TEST_F(KQexSkeletonTest, IsAttachedToOneNodeAtATime)
{
    KQexNode*     lFirst = MakeNode("1");
    KQexNode*     lSecond = MakeNode("2");
    KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
    KQexSkeleton* lOther = KQexSkeleton::Create(mScene, "");
    lFirst->SetNodeAttribute(lSkeleton);
    lSecond->SetNodeAttribute(lOther);
    lSecond->SetNodeAttribute(lSkeleton);
    EXPECT_EQ(lFirst->GetSkeleton(), nullptr);
    EXPECT_EQ(lSecond->GetSkeleton(), lSkeleton);
    EXPECT_EQ(lOther->GetNode(), nullptr);
    EXPECT_TRUE(lSecond->SetNodeAttribute(lSkeleton)) << "attaching again changes nothing";
    EXPECT_EQ(lSkeleton->GetNode(), lSecond);
    EXPECT_TRUE(lSecond->SetNodeAttribute(nullptr));
    EXPECT_EQ(lSkeleton->GetNode(), nullptr);
}

TEST_F(KQexSkeletonTest, NodeOrAttributeMayBeDestroyedFirst)
{
    KQexNode* lNode = MakeNode("n");
    lNode->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
    lNode->GetSkeleton()->Destroy();
    EXPECT_EQ(lNode->GetSkeleton(), nullptr);

    KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
    lNode->SetNodeAttribute(lSkeleton);
    lNode->Destroy();
    EXPECT_EQ(lSkeleton->GetNode(), nullptr);
}

TEST_F(KQexSkeletonTest, AnAttributeOfAnotherSceneIsRejected)
{
    KQexScene* lOther = KQexScene::Create("other");
    KQexNode*  lNode = MakeNode("n");
    EXPECT_FALSE(lNode->SetNodeAttribute(KQexSkeleton::Create(lOther, "")));
    EXPECT_EQ(lNode->GetSkeleton(), nullptr);
    lOther->Destroy();
}

} // namespace
