#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;

namespace
{

class KQexCollectionTest : public qextest::KSceneTest
{
protected:
    void SetUp() override
    {
        KSceneTest::SetUp();
        mCollection = KQexCollection::Create(mScene, "c");
    }

    KQexCollection* mCollection = nullptr;
};

TEST_F(KQexCollectionTest, KeepsItsMembersInOrder)
{
    KQexNode*      lNode = MakeNode("n");
    KQexAnimLayer* lFirst = KQexAnimLayer::Create(mScene, "1");
    KQexAnimLayer* lSecond = KQexAnimLayer::Create(mScene, "2");
    EXPECT_TRUE(mCollection->AddMember(lFirst));
    EXPECT_TRUE(mCollection->AddMember(lNode));
    EXPECT_TRUE(mCollection->AddMember(lSecond));
    ASSERT_EQ(mCollection->GetMemberCount(), 3);
    EXPECT_EQ(mCollection->GetMember(0), lFirst);
    EXPECT_EQ(mCollection->GetMember(1), lNode);
    EXPECT_EQ(mCollection->GetMember(2), lSecond);
    EXPECT_EQ(mCollection->GetMember(3), nullptr);
    EXPECT_EQ(mCollection->GetMember(-1), nullptr);
    EXPECT_EQ(lNode->GetCollection(), mCollection);

    EXPECT_EQ(mCollection->GetMember<KQexAnimLayer>(1), lSecond) << "counted among layers only";
    EXPECT_EQ(mCollection->GetMember(static_cast<const KQexAnimLayer*>(nullptr), 1), lSecond);
    EXPECT_EQ(mCollection->GetMember<KQexNode>(0), lNode);
    EXPECT_EQ(mCollection->GetMember<KQexNode>(1), nullptr);
    EXPECT_EQ(mCollection->GetMember<KQexNode>(-1), nullptr);
    EXPECT_EQ(mCollection->GetSrcObject(KQexAnimLayer::smClassId, 1), lSecond);
}

TEST_F(KQexCollectionTest, AMemberIsInOneCollection)
{
    KQexCollection* lOther = KQexCollection::Create(mScene, "o");
    KQexNode*       lNode = MakeNode("n");
    EXPECT_TRUE(mCollection->AddMember(lNode));
    EXPECT_TRUE(lOther->AddMember(lNode));
    EXPECT_EQ(mCollection->GetMemberCount(), 0);
    EXPECT_FALSE(mCollection->RemoveMember(lNode));
    EXPECT_TRUE(lOther->RemoveMember(lNode));
    EXPECT_EQ(lNode->GetCollection(), nullptr);
    EXPECT_FALSE(lOther->RemoveMember(nullptr));
}

TEST_F(KQexCollectionTest, CannotContainItself)
{
    KQexCollection* lInner = KQexCollection::Create(mScene, "i");
    EXPECT_FALSE(mCollection->AddMember(mCollection));
    EXPECT_TRUE(mCollection->AddMember(lInner));
    EXPECT_FALSE(lInner->AddMember(mCollection));
    EXPECT_FALSE(mCollection->AddMember(nullptr));
    EXPECT_EQ(lInner->GetMemberCount(), 0);
}

TEST_F(KQexCollectionTest, MembersOfAnotherSceneAreRejected)
{
    KQexScene* lOther = KQexScene::Create("other");
    EXPECT_FALSE(mCollection->AddMember(KQexNode::Create(lOther, "n")));
    EXPECT_FALSE(mCollection->AddMember(lOther));
    EXPECT_FALSE(mCollection->AddMember(lOther->GetRootNode()));
    lOther->Destroy();
}

TEST_F(KQexCollectionTest, MemberOrCollectionMayBeDestroyedFirst)
{
    KQexNode* lNode = MakeNode("n");
    mCollection->AddMember(lNode);
    lNode->Destroy();
    EXPECT_EQ(mCollection->GetMemberCount(), 0);

    lNode = MakeNode("n");
    mCollection->AddMember(lNode);
    mCollection->Destroy();
    EXPECT_EQ(lNode->GetCollection(), nullptr);
}

TEST_F(KQexCollectionTest, RecursiveDestroyDestroysItsMembers)
{
    const int       lBefore = mScene->GetObjectCount();
    KQexCollection* lOuter = KQexCollection::Create(mScene, "innermost");
    for (int lI = 0; lI < 100000; ++lI) // Built from the inside out, nested deeper than any stack.
    {
        KQexCollection* lInner = lOuter;
        lOuter = KQexCollection::Create(mScene, "outer");
        ASSERT_TRUE(lOuter->AddMember(MakeNode("before")));
        ASSERT_TRUE(lOuter->AddMember(lInner));
        ASSERT_TRUE(lOuter->AddMember(MakeNode("after")));
    }
    lOuter->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore);
}

} // namespace
