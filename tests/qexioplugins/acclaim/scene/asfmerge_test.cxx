#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// The tree as "name(child child(…))".
std::string Tree(KQexNode* pNode)
{
    std::string lText = pNode->GetName();
    for (int lIter = 0; lIter < pNode->GetChildCount(false); ++lIter)
    {
        lText += (lIter == 0 ? "(" : " ") + Tree(pNode->GetChild(lIter));
    }
    return lText + (pNode->GetChildCount(false) > 0 ? ")" : "");
}

/// A skeleton root(a(b) c), sampled with two frames, and a host tree to merge it into.
class KMergeTest : public testing::Test
{
protected:
    KMergeTest()
    {
        Bone(Bone(mRoot, "a", {5}, {0.0, 1.0, 0.0}), "b", {5}, {0.0, 1.0, 0.0});
        Bone(mRoot, "c");
        mRoot->SetupPosition(false, false);
        mRoot->CreateDataFromDOF(mStage.mScene);
        for (KQexAsfNode* lBone : {mRoot, mRoot->Find("a"), mRoot->Find("b"), mRoot->Find("c")})
        {
            for (long long lFrame = 0; lFrame < 2; ++lFrame)
            {
                const double lValues[6] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0 + static_cast<double>(lFrame)};
                lBone->AddSampleFromDOF(lValues, KTime(lFrame), 1.0, 1.0, false, false);
            }
        }
        mRoot->StopSamplingData();
    }

    KQexNode* Node(KQexNode* pParent, const char* pName, bool pSkeleton = true)
    {
        KQexNode* lNode = KQexNode::Create(mStage.mScene, pName);
        if (pSkeleton)
        {
            lNode->SetNodeAttribute(KQexSkeleton::Create(mStage.mScene, ""));
        }
        if (pParent != nullptr)
        {
            pParent->AddChild(lNode);
        }
        return lNode;
    }

    bool MergeScene(KQexNode* pTop) { return mStage.mAsf->MergeASFToQEX(mStage.mScene, pTop, "take", true, false, true); }

    static bool HasCurves(KQexNode* pNode) { return pNode != nullptr && pNode->mLocalRotation.GetCurveNode(false, "take") != nullptr; }

    KScenePair   mStage;
    KQexAsfNode* mRoot = mStage.mAsf->mRoot = Bone(nullptr, "root", {0, 1, 2, 5, 4, 3});
    KQexNode*    mTop = Node(nullptr, "top", false);
};

TEST_F(KMergeTest, ExistingNodesAreReused)
{
    KQexNode* lRoot = Node(mTop, "root");
    KQexNode* lA = Node(lRoot, "a");
    Node(lA, "b");
    Node(lRoot, "c");
    lA->SetRotationOrder(kPivotSet0, eEULER_YZX);
    lA->SetRotationOffset(kPivotSet0, KQexVector4(1.0, 2.0, 3.0));
    const int lNodes = mTop->GetChildCount(true);
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(mTop->GetChildCount(true), lNodes);
    EXPECT_EQ(Tree(mTop), "top(root(a(b) c))");
    for (const char* lName : {"root", "a", "b", "c"})
    {
        EXPECT_TRUE(HasCurves(mTop->FindChild(lName, true, false))) << lName;
    }
    // Existing nodes keep their order, offsets and limits.
    EXPECT_EQ(lA->GetRotationOrder(), eEULER_YZX);
    EXPECT_EQ(lA->GetRotationOffset()[1], 2.0);
    EXPECT_FALSE(lA->GetRotationActive());
    EXPECT_EQ(lA->mLocalTranslation.Get()[0], mRoot->Find("a")->mLT.mData[0]);
    for (KQexAsfNode* lBone : {mRoot, mRoot->Find("b")})
    {
        EXPECT_FALSE(lBone->mLRData[0]);
    }
}

TEST_F(KMergeTest, AMissingBoneIsCreatedWithItsDescendants)
{
    Node(Node(mTop, "root"), "c");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(root(c a(b(b_End))))");
    EXPECT_TRUE(mTop->FindChild("a", true, false)->GetRotationActive());
    for (const char* lName : {"root", "a", "b", "c"})
    {
        EXPECT_TRUE(HasCurves(mTop->FindChild(lName, true, false))) << lName;
    }
}

TEST_F(KMergeTest, SiblingsOfAMissingBoneAreMerged)
{
    KQexNode* lRoot = Node(mTop, "root");
    Node(lRoot, "a");
    Node(lRoot, "c");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(root(a(b(b_End)) c))");
}

TEST_F(KMergeTest, ANodeWithoutASkeletonGetsASibling)
{
    KQexNode* lRoot = Node(mTop, "root");
    KQexNode* lOther = Node(lRoot, "a", false);
    Node(lOther, "b");
    Node(lRoot, "c");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(root(a(b) c a(b(b_End))))");
    EXPECT_FALSE(HasCurves(lOther));
}

TEST_F(KMergeTest, TheRootIsSearchedAtAnyDepth)
{
    KQexNode* lHolder = Node(Node(mTop, "x", false), "y", false);
    KQexNode* lRoot = Node(lHolder, "root");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(x(y(root(a(b(b_End)) c))))");
    EXPECT_TRUE(HasCurves(lRoot));
}

TEST_F(KMergeTest, ARootWithoutASkeletonGetsASibling)
{
    Node(Node(mTop, "x", false), "root", false);
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(x(root root(a(b(b_End)) c)))");
}

TEST_F(KMergeTest, AMissingRootIsCreated)
{
    Node(mTop, "other");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(other root(a(b(b_End)) c))");
}

TEST_F(KMergeTest, TheMergeRootItselfDoesNotMatch)
{
    KQexNode* lRoot = Node(nullptr, "root");
    EXPECT_TRUE(MergeScene(lRoot));
    EXPECT_EQ(Tree(lRoot), "root(root(a(b(b_End)) c))");
}

TEST_F(KMergeTest, ABoneIsSearchedAmongDirectChildrenOnly)
{
    Node(Node(mTop, "x", false), "root");
    EXPECT_TRUE(mRoot->MergeASFToQEX(mStage.mScene, mTop, "take", false, true, false));
    EXPECT_EQ(Tree(mTop), "top(x(root) root(a(b(b_End)) c))");
}

TEST_F(KMergeTest, BonesOfOneNameShareTheirNode)
{
    // The second one finds the node that was just created for the first.
    mRoot->Find("c")->mName[0] = 'a';
    Node(mTop, "root");
    EXPECT_TRUE(MergeScene(mTop));
    EXPECT_EQ(Tree(mTop), "top(root(a(b(b_End))))");
}

TEST_F(KMergeTest, MergingABoneLeavesItsSiblings)
{
    KQexNode* lA = Node(mTop, "a");
    EXPECT_TRUE(mRoot->Find("a")->MergeASFToQEX(mStage.mScene, mTop, "take", false, true, false));
    EXPECT_EQ(Tree(mTop), "top(a(b(b_End)))");
    EXPECT_TRUE(HasCurves(lA));
    EXPECT_TRUE(mRoot->Find("c")->mLRData[0]);
}

} // namespace
