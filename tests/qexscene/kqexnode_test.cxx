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
    /// "name(child child(…))": the tree below and with \p pNode.
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

TEST_F(KQexNodeTest, BeginsAlone)
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
    KQexNode* lTop = MakeNode("t");
    KQexNode* lA = MakeNode("a", lTop);
    KQexNode* lB = MakeNode("b", lTop);
    KQexNode* lC = MakeNode("c", lTop);
    MakeNode("d", lB);
    EXPECT_EQ(Tree(lTop), "t(a b(d) c)");
    EXPECT_EQ(lTop->GetChildCount(true), 4);
    EXPECT_EQ(lTop->GetChild(3), nullptr);
    EXPECT_EQ(lTop->GetChild(-1), nullptr);
    EXPECT_EQ(lB->GetParent(), lTop);

    EXPECT_TRUE(lC->AddChild(lB)) << "moved with what is below it";
    EXPECT_EQ(Tree(lTop), "t(a c(b(d)))");
    EXPECT_TRUE(lTop->AddChild(lA)) << "again: to the end";
    EXPECT_EQ(Tree(lTop), "t(c(b(d)) a)");
    EXPECT_TRUE(lTop->RemoveChild(lC));
    EXPECT_FALSE(lTop->RemoveChild(lC));
    EXPECT_FALSE(lTop->RemoveChild(nullptr));
    EXPECT_EQ(Tree(lTop), "t(a)");
    EXPECT_EQ(lC->GetParent(), nullptr);
    EXPECT_EQ(Tree(lC), "c(b(d))");
}

TEST_F(KQexNodeTest, NoNodeIsBelowItself)
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

TEST_F(KQexNodeTest, TheSceneRootStaysTheTop)
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

TEST_F(KQexNodeTest, NodesOfAnotherSceneAreRefused)
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
    const char* mPath; ///< Child indices from the top, "" for none.
};

/// The tree of these cases: t(a(x y(t)) x(y) b:x Y)
TEST_F(KQexNodeTest, FindChildTakesTheFirstInPreOrder)
{
    KQexNode* lTop = MakeNode("t");
    KQexNode* lA = MakeNode("a", lTop);
    MakeNode("x", lA);
    MakeNode("t", MakeNode("y", lA));
    MakeNode("y", MakeNode("x", lTop));
    MakeNode("b:x", lTop);
    MakeNode("Y", lTop);
    MakeNode("y", MakeNode("beside"));
    for (const KFindCase& lCase :
         {KFindCase{"x", true, "00"}, KFindCase{"x", false, "1"}, KFindCase{"y", true, "01"}, KFindCase{"y", false, ""},
          KFindCase{"t", true, "010"}, KFindCase{"t", false, ""}, KFindCase{"b:x", true, "2"}, KFindCase{"Y", true, "3"},
          KFindCase{"Y", false, "3"}, KFindCase{"", true, ""}, KFindCase{"beside", true, ""}, KFindCase{"xy", true, ""}})
    {
        const KQexNode* lExpected = lTop;
        for (const char* lAt = lCase.mPath; *lAt != '\0'; ++lAt)
        {
            lExpected = lExpected->GetChild(*lAt - '0');
        }
        EXPECT_EQ(lTop->FindChild(lCase.mName, lCase.mDeep, false), *lCase.mPath == '\0' ? nullptr : lExpected)
            << lCase.mName << lCase.mDeep;
    }
    EXPECT_EQ(lTop->FindChild(nullptr, true, false), nullptr);
    EXPECT_EQ(lA->FindChild("x", true, false), lA->GetChild(0)) << "not beyond the node";
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
    for (KQexNode* lTop : {lNodes[0], lNodes[1], lNodes[299]})
    {
        std::vector<const KQexNode*> lExpected;
        std::vector<const KQexNode*> lStack = {lTop};
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
        for (const KQexNode* lNode = lTop; lNode != nullptr; lNode = lNode->GetNextInTree(lTop))
        {
            lWalked.push_back(lNode);
        }
        EXPECT_EQ(lWalked, lExpected);
        EXPECT_EQ(lTop->GetChildCount(true), static_cast<int>(lExpected.size()) - 1);
    }
}

TEST_F(KQexNodeTest, LeavesParentAndChildrenWhenItEnds)
{
    KQexNode* lTop = MakeNode("t");
    MakeNode("a", lTop);
    KQexNode* lB = MakeNode("b", lTop);
    MakeNode("c", lTop);
    KQexNode* lBelow = MakeNode("below", lB);
    lB->Destroy();
    EXPECT_EQ(Tree(lTop), "t(a c)");
    EXPECT_EQ(lBelow->GetParent(), nullptr);
    EXPECT_EQ(lBelow->GetScene(), mScene);
}

TEST_F(KQexNodeTest, TakesItsTreeAlongWhenAsked)
{
    const int lBefore = mScene->GetObjectCount();
    KQexNode* lTop = MakeNode("t", mScene->GetRootNode());
    KQexNode* lNode = lTop;
    for (int lI = 0; lI < 100000; ++lI) // A chain deeper than any stack, with a leaf at each step.
    {
        MakeNode("leaf", lNode);
        lNode = MakeNode("n", lNode);
    }
    lTop->Destroy(true);
    EXPECT_EQ(mScene->GetObjectCount(), lBefore);
    EXPECT_EQ(mScene->GetRootNode()->GetChildCount(false), 0);
}

TEST_F(KQexNodeTest, TakesWhatAnimatesItAlongWhenAsked)
{
    const int lBefore = mScene->GetObjectCount();
    KQexNode* lTop = MakeNode("t");
    KQexNode* lNode = MakeNode("n", lTop);
    for (const char* lTake : {"walk", "run"})
    {
        KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, lTake);
        lCurveNode->ConnectToChannel(MakeCurve({1.0F, 2.0F}), 0, true);
        lCurveNode->ConnectToChannel(MakeCurve({1.0F}), 2, true);
        lTop->mLocalScaling.GetCurveNode(true, lTake)->ConnectToChannel(MakeCurve({1.0F}), 1, true);
    }
    lTop->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
    lNode->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
    lTop->Destroy(true);
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
