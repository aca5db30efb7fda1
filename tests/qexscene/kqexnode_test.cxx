#include <tests/qexscene/scenefixture.h>

#include <random>
#include <string>
#include <vector>

using namespace qexsdk;

namespace
{

class KQexNodeTest : public qextest::KSceneTest
{
protected:
    /// "name(child child(…))": the tree at \p pNode.
    static std::string Tree(const KQexNode* pNode)
    {
        std::string lText = pNode->GetName();
        for (int lI = 0; lI < pNode->GetChildCount(false); ++lI)
        {
            lText += (lI == 0 ? "(" : " ") + Tree(pNode->GetChild(lI));
        }
        return lText + (pNode->GetChildCount(false) > 0 ? ")" : "");
    }
};

TEST_F(KQexNodeTest, StartsWithoutParentAndChildren)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(lNode->GetParent(), nullptr);
    EXPECT_EQ(lNode->GetChildCount(false), 0);
    EXPECT_EQ(lNode->GetChildCount(true), 0);
    EXPECT_EQ(lNode->GetChild(0), nullptr);
    EXPECT_EQ(lNode->GetNodeAttribute(), nullptr);
    EXPECT_EQ(lNode->GetNextInTree(lNode), nullptr);
    EXPECT_EQ(mScene->GetRootNode()->GetChildCount(false), 0);
}

TEST_F(KQexNodeTest, ChildrenKeepTheirOrder)
{
    KQexNode* lRoot = MakeNode("t");
    KQexNode* lA = MakeNode("a", lRoot);
    KQexNode* lB = MakeNode("b", lRoot);
    KQexNode* lC = MakeNode("c", lRoot);
    MakeNode("d", lB);
    EXPECT_EQ(Tree(lRoot), "t(a b(d) c)");
    EXPECT_EQ(lRoot->GetChildCount(true), 4);
    EXPECT_EQ(lRoot->GetChild(3), nullptr);
    EXPECT_EQ(lRoot->GetChild(-1), nullptr);
    EXPECT_EQ(lB->GetParent(), lRoot);

    EXPECT_TRUE(lC->AddChild(lB)) << "reparented with its descendants";
    EXPECT_EQ(Tree(lRoot), "t(a c(b(d)))");
    EXPECT_TRUE(lRoot->AddChild(lA)) << "adding a child again moves it to the end";
    EXPECT_EQ(Tree(lRoot), "t(c(b(d)) a)");
    EXPECT_TRUE(lRoot->RemoveChild(lC));
    EXPECT_FALSE(lRoot->RemoveChild(lC));
    EXPECT_FALSE(lRoot->RemoveChild(nullptr));
    EXPECT_EQ(Tree(lRoot), "t(a)");
    EXPECT_EQ(lC->GetParent(), nullptr);
    EXPECT_EQ(Tree(lC), "c(b(d))");
}

TEST_F(KQexNodeTest, NoNodeIsItsOwnDescendant)
{
    KQexNode* lA = MakeNode("a");
    KQexNode* lB = MakeNode("b", lA);
    KQexNode* lC = MakeNode("c", lB);
    EXPECT_FALSE(lA->AddChild(lA));
    EXPECT_FALSE(lC->AddChild(lA));
    EXPECT_FALSE(lB->AddChild(lA));
    EXPECT_FALSE(lA->AddChild(nullptr));
    EXPECT_EQ(Tree(lA), "a(b(c))");
    EXPECT_TRUE(lA->AddChild(lC));
    EXPECT_EQ(Tree(lA), "a(b c)");
}

TEST_F(KQexNodeTest, TheSceneRootCannotBeMovedOrDestroyed)
{
    EXPECT_FALSE(MakeNode("n")->AddChild(mScene->GetRootNode()));
    EXPECT_EQ(mScene->GetRootNode()->GetParent(), nullptr);
    MakeNode("n", mScene->GetRootNode());
    mScene->GetRootNode()->Destroy();
    ASSERT_NE(mScene->GetRootNode(), nullptr);
    EXPECT_EQ(Tree(mScene->GetRootNode()), "RootNode(n)");
    mScene->GetRootNode()->Destroy(true);
    ASSERT_NE(mScene->GetRootNode(), nullptr);
    EXPECT_EQ(Tree(mScene->GetRootNode()), "RootNode");
}

TEST_F(KQexNodeTest, NodesOfAnotherSceneAreRejected)
{
    KQexScene* lOther = KQexScene::Create("other");
    EXPECT_FALSE(mScene->GetRootNode()->AddChild(KQexNode::Create(lOther, "n")));
    EXPECT_FALSE(mScene->GetRootNode()->AddChild(lOther->GetRootNode()));
    lOther->Destroy();
}

struct KFindCase
{
    const char* mName;
    bool        mDeep;
    const char* mPath; ///< Child indices from the root, "" for none.
};

/// The tree of these cases: t(a(x y(t)) x(y) b:x Y)
TEST_F(KQexNodeTest, FindChildReturnsTheFirstInPreOrder)
{
    KQexNode* lRoot = MakeNode("t");
    KQexNode* lA = MakeNode("a", lRoot);
    MakeNode("x", lA);
    MakeNode("t", MakeNode("y", lA));
    MakeNode("y", MakeNode("x", lRoot));
    MakeNode("b:x", lRoot);
    MakeNode("Y", lRoot);
    MakeNode("y", MakeNode("unrelated"));
    for (const KFindCase& lCase :
         {KFindCase{"x", true, "00"}, KFindCase{"x", false, "1"}, KFindCase{"y", true, "01"}, KFindCase{"y", false, ""},
          KFindCase{"t", true, "010"}, KFindCase{"t", false, ""}, KFindCase{"b:x", true, "2"}, KFindCase{"Y", true, "3"},
          KFindCase{"Y", false, "3"}, KFindCase{"", true, ""}, KFindCase{"unrelated", true, ""}, KFindCase{"xy", true, ""}})
    {
        const KQexNode* lExpected = lRoot;
        for (const char* lIndex = lCase.mPath; *lIndex != '\0'; ++lIndex)
        {
            lExpected = lExpected->GetChild(*lIndex - '0');
        }
        EXPECT_EQ(lRoot->FindChild(lCase.mName, lCase.mDeep, false), *lCase.mPath == '\0' ? nullptr : lExpected)
            << lCase.mName << lCase.mDeep;
    }
    EXPECT_EQ(lRoot->FindChild(nullptr, true, false), nullptr);
    EXPECT_EQ(lA->FindChild("x", true, false), lA->GetChild(0)) << "descendants only";
    EXPECT_EQ(lA->FindChild("b:x", true, false), nullptr);
}

TEST_F(KQexNodeTest, TheWalkIsPreOrder)
{
    std::mt19937           lRandom(7);
    std::vector<KQexNode*> lNodes = {MakeNode("0")};
    for (int lI = 1; lI < 300; ++lI)
    {
        lNodes.push_back(MakeNode(std::to_string(lI).c_str(), lNodes[lRandom() % lNodes.size()]));
    }
    for (KQexNode* lRoot : {lNodes[0], lNodes[1], lNodes[299]})
    {
        std::vector<const KQexNode*> lExpected;
        std::vector<const KQexNode*> lStack = {lRoot};
        while (!lStack.empty())
        {
            const KQexNode* lNode = lStack.back();
            lStack.pop_back();
            lExpected.push_back(lNode);
            for (int lI = lNode->GetChildCount() - 1; lI >= 0; --lI)
            {
                lStack.push_back(lNode->GetChild(lI));
            }
        }
        std::vector<const KQexNode*> lWalked;
        for (const KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            lWalked.push_back(lNode);
        }
        EXPECT_EQ(lWalked, lExpected);
        EXPECT_EQ(lRoot->GetChildCount(true), static_cast<int>(lExpected.size()) - 1);
    }
}

TEST_F(KQexNodeTest, DestroyDetachesItFromParentAndChildren)
{
    KQexNode* lRoot = MakeNode("t");
    MakeNode("a", lRoot);
    KQexNode* lB = MakeNode("b", lRoot);
    MakeNode("c", lRoot);
    KQexNode* lChild = MakeNode("child", lB);
    lB->Destroy();
    EXPECT_EQ(Tree(lRoot), "t(a c)");
    EXPECT_EQ(lChild->GetParent(), nullptr);
    EXPECT_EQ(lChild->GetScene(), mScene);
}

TEST_F(KQexNodeTest, RecursiveDestroyDestroysItsTree)
{
    const int lBefore = mScene->GetObjectCount();
    KQexNode* lRoot = MakeNode("t", mScene->GetRootNode());
    KQexNode* lNode = lRoot;
    for (int lI = 0; lI < 100000; ++lI) // A chain deeper than any stack, with a leaf at each step.
    {
        MakeNode("leaf", lNode);
        lNode = MakeNode("n", lNode);
    }
    lRoot->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore);
    EXPECT_EQ(mScene->GetRootNode()->GetChildCount(false), 0);
}

TEST_F(KQexNodeTest, RecursiveDestroyDestroysItsMotion)
{
    const int lBefore = mScene->GetObjectCount();
    KQexNode* lRoot = MakeNode("t");
    KQexNode* lNode = MakeNode("n", lRoot);
    for (const char* lTake : {"walk", "run"})
    {
        KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, lTake);
        lCurveNode->ConnectToChannel(MakeCurve({1.0F, 2.0F}), 0, true);
        lCurveNode->ConnectToChannel(MakeCurve({1.0F}), 2, true);
        lRoot->mLocalScaling.GetCurveNode(true, lTake)->ConnectToChannel(MakeCurve({1.0F}), 1, true);
    }
    lRoot->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
    lNode->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
    lRoot->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore + 4) << "two stacks and their layers stay";
    EXPECT_EQ(mScene->GetAnimStack(0)->GetMember<KQexAnimLayer>(0)->GetMemberCount(), 0);
}

TEST_F(KQexNodeTest, SourcesAreTheAttributeAndTheChildren)
{
    KQexNode*     lNode = MakeNode("n");
    KQexSkeleton* lSkeleton = KQexSkeleton::Create(mScene, "");
    KQexNode*     lFirst = MakeNode("1", lNode);
    KQexNode*     lSecond = MakeNode("2", lNode);
    lNode->SetNodeAttribute(lSkeleton);
    EXPECT_EQ(lNode->GetSrcObject(kQexClassId(), 0), lSkeleton);
    EXPECT_EQ(lNode->GetSrcObject(kQexClassId(), 1), lFirst);
    EXPECT_EQ(lNode->GetSrcObject(KQexNode::smClassId, 1), lSecond);
    EXPECT_EQ(lNode->GetSrcObject(KQexNode::smClassId, 2), nullptr);
    EXPECT_EQ(lNode->GetSrcObject(KQexNodeAttribute::smClassId, 0), lSkeleton);
    EXPECT_EQ(lNode->GetSrcObject(KQexNodeAttribute::smClassId, 1), nullptr);
    EXPECT_EQ(lNode->GetSrcObject(KQexAnimCurve::smClassId, 0), nullptr);
}

} // namespace
