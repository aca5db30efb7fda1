#include <tests/qexscene/scenefixture.h>
#include <tests/support/memorywatch.h>

using namespace qexsdk;

namespace
{

class KQexObjectTest : public qextest::KSceneTest
{
};

TEST_F(KQexObjectTest, KeepsItsNameExactly)
{
    for (const char* lName : {"", "a", "ns:bone", "bone with blanks ", "\xC3\xA9t\xC3\xA9",
                              "a name that is far too long to fit into any small buffer there may be"})
    {
        KQexNode* lNode = MakeNode(lName);
        EXPECT_STREQ(lNode->GetName(), lName);
        EXPECT_NE(lNode->GetName(), lName) << "copied";
    }
    EXPECT_STREQ(MakeNode(nullptr)->GetName(), "");
}

/// Every form of new uses the library's allocator, and returns null without memory.
TEST_F(KQexObjectTest, UsesTheLibrarysAllocator)
{
    KMemoryWatch lWatch;
    for (const long lAllowed : {-1L, 0L})
    {
        lWatch.FailAfter(lAllowed);
        void* lPlain = KQexObject::operator new(100);
        void* lNoThrow = KQexObject::operator new(100, std::nothrow);
        EXPECT_EQ(lPlain != nullptr && lNoThrow != nullptr, lAllowed < 0);
        EXPECT_EQ(lWatch.GetBlocks(), lAllowed < 0 ? 2u : 0u);
        KQexObject::operator delete(lPlain);
        KQexObject::operator delete(lNoThrow, std::nothrow);
        EXPECT_EQ(lWatch.GetBlocks(), 0u);
    }
}

struct KPrefixCase
{
    const char* mName;
    const char* mExpected;
};

TEST_F(KQexObjectTest, PrefixEndsAtTheLastColon)
{
    for (const KPrefixCase& lCase : {KPrefixCase{"Hips", "Hips"}, KPrefixCase{"ns:Hips", "Hips"}, KPrefixCase{"a:b:Hips", "Hips"},
                                     KPrefixCase{"ns:", ""}, KPrefixCase{":Hips", "Hips"}, KPrefixCase{"", ""}})
    {
        EXPECT_STREQ(MakeNode(lCase.mName)->GetNameWithoutNameSpacePrefix().Buffer(), lCase.mExpected) << lCase.mName;
    }
}

TEST_F(KQexObjectTest, CanBeRenamed)
{
    KQexNode* lNode = MakeNode("old");
    EXPECT_TRUE(lNode->SetName("new"));
    EXPECT_STREQ(lNode->GetName(), "new");
    EXPECT_TRUE(lNode->SetName(lNode->GetName() + 1)) << "even to a part of its own name";
    EXPECT_STREQ(lNode->GetName(), "ew");
    mMemory.FailAfter(0);
    EXPECT_FALSE(lNode->SetName("other"));
    mMemory.FailAfter(-1);
    EXPECT_STREQ(lNode->GetName(), "ew");
}

TEST_F(KQexObjectTest, KnowsItsSceneAndClass)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(lNode->GetScene(), mScene);
    EXPECT_EQ(mScene->GetScene(), mScene);
    EXPECT_TRUE(lNode->Is(KQexNode::smClassId));
    EXPECT_TRUE(lNode->Is(KQexObject::smClassId));
    EXPECT_FALSE(lNode->Is(KQexAnimCurve::smClassId));
    KQexObject* lObject = lNode;
    EXPECT_EQ(QexCast<KQexNode>(lObject), lNode);
    EXPECT_EQ(QexCast<KQexAnimCurve>(lObject), nullptr);
    EXPECT_EQ(QexCast<KQexNode>(static_cast<KQexObject*>(nullptr)), nullptr);
    const KQexObject* lConst = lNode;
    EXPECT_EQ(QexCast<KQexNode>(lConst), lNode);
    EXPECT_EQ(QexCast<KQexAnimCurve>(lConst), nullptr);
    EXPECT_EQ(QexCast<KQexNode>(static_cast<const KQexObject*>(nullptr)), nullptr);
    EXPECT_TRUE(mScene->Is(KQexScene::smClassId));
    EXPECT_FALSE(mScene->Is(KQexNode::smClassId));
}

/// An object without a class id of its own.
class KPlainObject : public KQexObject
{
public:
    explicit KPlainObject(KQexScene* pScene) : KQexObject(pScene, nullptr) {}
};

TEST_F(KQexObjectTest, WithoutItsOwnClassIdItIsAKQexObject)
{
    KPlainObject lObject(mScene);
    EXPECT_EQ(lObject.GetClassId(), KQexObject::smClassId);
    EXPECT_STREQ(lObject.GetName(), "");
    EXPECT_EQ(lObject.GetSrcObject(kQexClassId(), 0), nullptr);
}

TEST_F(KQexObjectTest, AnyObjectOfTheSceneCanBeTheContainer)
{
    KQexNode* lNode = KQexNode::Create(MakeNode("container"), "n");
    EXPECT_EQ(lNode->GetScene(), mScene);
    EXPECT_EQ(lNode->GetParent(), nullptr);
}

TEST_F(KQexObjectTest, WithoutAContainerInASceneThereIsNoObject)
{
    KPlainObject      lOutside(nullptr);
    KQexObject* const lContainers[] = {nullptr, &lOutside};
    for (KQexObject* lContainer : lContainers)
    {
        EXPECT_EQ(KQexNode::Create(lContainer, "n"), nullptr);
        EXPECT_EQ(KQexSkeleton::Create(lContainer, ""), nullptr);
        EXPECT_EQ(KQexCollection::Create(lContainer, "c"), nullptr);
        EXPECT_EQ(KQexAnimStack::Create(lContainer, "s"), nullptr);
        EXPECT_EQ(KQexAnimLayer::Create(lContainer, "l"), nullptr);
        EXPECT_EQ(KQexAnimCurveNode::Create(lContainer, "c"), nullptr);
    }
    EXPECT_EQ(mScene->GetObjectCount(), 2);
}

/// A curve that counts calls of Destroy and of its destructor.
class KSpyCurve : public KQexAnimCurve
{
public:
    KSpyCurve(KQexScene* pScene, int& pDestroyed, int& pDestructed)
        : KQexAnimCurve(pScene, "spy"), mDestroyed(pDestroyed), mDestructed(pDestructed)
    {
    }
    ~KSpyCurve() override { ++mDestructed; }
    void Destroy(bool pRecursive, bool pDependents) override
    {
        ++mDestroyed;
        KQexAnimCurve::Destroy(pRecursive, pDependents);
    }

private:
    int& mDestroyed;
    int& mDestructed;
};

TEST_F(KQexObjectTest, DerivedObjectsAreDestroyedByTheirOwnDestroy)
{
    int        lDestroyed = 0;
    int        lDestructed = 0;
    KSpyCurve* lCurve = new KSpyCurve(mScene, lDestroyed, lDestructed);
    EXPECT_EQ(lCurve->GetScene(), mScene);
    lCurve->Destroy(false, false);
    EXPECT_EQ(lDestroyed, 1);
    EXPECT_EQ(lDestructed, 1);

    new KSpyCurve(mScene, lDestroyed, lDestructed);
    mScene->Destroy();
    mScene = nullptr;
    EXPECT_EQ(lDestroyed, 2);
    EXPECT_EQ(lDestructed, 2);
}

TEST_F(KQexObjectTest, AnObjectOnTheStackLeavesItsSceneOnDestruction)
{
    int       lDestroyed = 0;
    int       lDestructed = 0;
    const int lBefore = mScene->GetObjectCount();
    {
        KSpyCurve          lCurve(mScene, lDestroyed, lDestructed);
        KQexAnimCurveNode* lCurveNode = MakeNode("n")->mLocalRotation.GetCurveNode(true, "take");
        EXPECT_TRUE(lCurveNode->ConnectToChannel(&lCurve, 1, true));
        EXPECT_EQ(lCurveNode->GetCurve(1), &lCurve);
    }
    KQexNode* lNode = QexCast<KQexNode>(mScene->GetNextObject(mScene->GetEvaluator()));
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "take")->GetCurve(1), nullptr);
    EXPECT_EQ(lDestroyed, 0);
    EXPECT_EQ(lDestructed, 1);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore + 4) << "the node, the stack, its layer and the curve node";
}

TEST_F(KQexObjectTest, ConnectingAnObjectWithoutASceneAddsItToTheScene)
{
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(nullptr, "free");
    ASSERT_NE(lCurve, nullptr);
    EXPECT_EQ(lCurve->GetScene(), nullptr);
    EXPECT_TRUE(MakeNode("n")->mLocalRotation.GetCurveNode(true, "take")->ConnectToChannel(lCurve, 0));
    EXPECT_EQ(lCurve->GetScene(), mScene);
}

TEST_F(KQexObjectTest, WithoutMemoryThereIsNoObject)
{
    for (int lFail = 0; lFail < 2; ++lFail) // The object, then its name.
    {
        const size_t lBlocks = mMemory.GetBlocks();
        const int    lObjects = mScene->GetObjectCount();
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexNode::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexSkeleton::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexAnimStack::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexAnimLayer::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexCollection::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexAnimCurveNode::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(lFail);
        EXPECT_EQ(KQexAnimCurve::Create(mScene, "n"), nullptr);
        mMemory.FailAfter(-1);
        EXPECT_LE(mMemory.GetBlocks(), lBlocks + 1) << "the list of stacks may keep its capacity";
        EXPECT_EQ(mScene->GetObjectCount(), lObjects);
        EXPECT_EQ(mScene->GetAnimStackCount(), 0);
        EXPECT_EQ(mScene->GetEvaluator()->GetContext(), nullptr);
    }
}

} // namespace
