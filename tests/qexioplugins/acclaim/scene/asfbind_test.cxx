#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Binding a skeleton to host nodes by name.
class KBindTest : public testing::Test
{
protected:
    KQexNode* Node(KQexNode* pParent, const char* pName, double pOffset)
    {
        KQexNode* lNode = KQexNode::Create(mStage.mScene, pName);
        lNode->SetRotationOffset(kPivotSet0, KQexVector4(pOffset, 0.0, 0.0));
        if (pParent != nullptr)
        {
            pParent->AddChild(lNode);
        }
        return lNode;
    }

    bool Merge() { return mStage.mAsf->MergeQEXToASF(mHost); }

    KScenePair   mStage;
    KQexAsfNode* mRoot = mStage.mAsf->mRoot = Bone(nullptr, "root", {}, {}, {1.0, 2.0, 3.0});
    KQexNode*    mHost = Node(nullptr, "hips", 1.0);
};

TEST_F(KBindTest, AMissingBoneInBetweenIsSkipped)
{
    KQexAsfNode* lA = Bone(mRoot, "a", {5}, {0.0, 1.0, 0.0}, {10.0, 0.0, 0.0});
    KQexAsfNode* lB = Bone(lA, "b", {5}, {0.0, 1.0, 0.0}, {20.0, 0.0, 0.0});
    KQexAsfNode* lC = Bone(lB, "c", {5}, {0.0, 1.0, 0.0}, {30.0, 0.0, 0.0});
    KQexAsfNode* lD = Bone(mRoot, "d", {5}, {0.0, 1.0, 0.0}, {40.0, 0.0, 0.0});
    KQexNode*    lHostA = Node(mHost, "a", 2.0);
    Node(mHost, "c", 9.0); // not below a's node
    Node(Node(lHostA, "deeper", 3.0), "c", 4.0);
    Node(mHost, "d", 5.0);
    mRoot->SetupPosition(false, false);
    const KgeRMatrix lBefore = lB->mParentAxisRM;
    EXPECT_TRUE(Merge());
    EXPECT_EQ(mRoot->mTOffset[0], 1.0);
    EXPECT_EQ(lA->mTOffset[0], 2.0);
    EXPECT_EQ(lB->mTOffset[0], 0.0);
    EXPECT_EQ(lC->mTOffset[0], 4.0);
    EXPECT_EQ(lD->mTOffset[0], 5.0);
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        for (int lColumn = 0; lColumn < 3; ++lColumn)
        {
            EXPECT_EQ(lA->mParentAxisRM.mData[lRow][lColumn], mRoot->mAxisRM.mData[lRow][lColumn]);
            EXPECT_EQ(lB->mParentAxisRM.mData[lRow][lColumn], lBefore.mData[lRow][lColumn]);
            EXPECT_EQ(lC->mParentAxisRM.mData[lRow][lColumn], lA->mAxisRM.mData[lRow][lColumn]);
            EXPECT_EQ(lC->mParentAxisRMInv.mData[lRow][lColumn], lA->mAxisRMInv.mData[lRow][lColumn]);
            EXPECT_EQ(lD->mParentAxisRM.mData[lRow][lColumn], mRoot->mAxisRM.mData[lRow][lColumn]);
            EXPECT_EQ(mRoot->mParentAxisRM.mData[lRow][lColumn], lRow == lColumn ? 1.0 : 0.0);
        }
    }
}

TEST_F(KBindTest, NoMatchIsNoFailure)
{
    KQexAsfNode* lA = Bone(mRoot, "a");
    Node(mHost, "x", 2.0);
    EXPECT_TRUE(Merge());
    EXPECT_EQ(mRoot->mTOffset[0], 1.0); // the root matches whatever its name
    EXPECT_EQ(lA->mTOffset[0], 0.0);
    KQexAsfScene lEmpty;
    EXPECT_TRUE(lEmpty.MergeQEXToASF(mHost));
}

TEST_F(KBindTest, TheFirstOfOneNameInPreOrderWins)
{
    KQexAsfNode* lA = Bone(mRoot, "a");
    Node(Node(mHost, "x", 2.0), "a", 3.0);
    Node(mHost, "a", 4.0);
    EXPECT_TRUE(Merge());
    EXPECT_EQ(lA->mTOffset[0], 3.0);
}

TEST_F(KBindTest, EverythingElseIsUnchanged)
{
    KQexAsfNode* lA = Bone(mRoot, "a", {5}, {0.0, 1.0, 0.0}, {10.0, 0.0, 0.0});
    Node(mHost, "a", 2.0);
    mRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    mRoot->SetupPosition(false, false);
    const KgeTVector lLT = lA->mLT;
    const KgeTVector lParentPosition = lA->mParentPositionV;
    EXPECT_TRUE(Merge());
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_EQ(lA->mLT.mData[lIter], lLT.mData[lIter]);
        EXPECT_EQ(lA->mParentPositionV.mData[lIter], lParentPosition.mData[lIter]);
    }
    EXPECT_EQ(lA->mOrderCount, 1);
    EXPECT_EQ(lA->mLength, 1.0);
}

/// A skeleton is bound to one figure and then to another that has fewer of its bones.
TEST_F(KBindTest, AnUnpairedBoneKeepsItsCurveNodesAndOffsets)
{
    KQexAsfNode* lA = Bone(mRoot, "a");
    KQexAsfNode* lB = Bone(lA, "b");
    Node(Node(mHost, "a", 2.0), "b", 3.0);
    for (KQexNode* lNode = mHost; lNode != nullptr; lNode = lNode->GetNextInTree(mHost))
    {
        lNode->SetPreRotation(kPivotSet0, KQexVector4(10.0, 0.0, 0.0));
        lNode->SetPostRotation(kPivotSet0, KQexVector4(0.0, 10.0, 0.0));
        for (KQexProperty* lProperty :
             {static_cast<KQexProperty*>(&lNode->mLocalTranslation), static_cast<KQexProperty*>(&lNode->mLocalRotation),
              static_cast<KQexProperty*>(&lNode->mLocalScaling)})
        {
            ASSERT_NE(lProperty->GetCurveNode(true, "take"), nullptr);
        }
    }
    EXPECT_TRUE(Merge());
    const KQexNode* lHostA = mHost->FindChild("a", true, false);
    ASSERT_NE(lA->mLTNode, nullptr);
    EXPECT_EQ(lA->mLTNode, lHostA->mLocalTranslation.GetCurveNode(mStage.mScene->GetEvaluator()->GetLayer()));

    KQexAnimCurveNode* const lKept[3] = {lA->mLTNode, lA->mLRNode, lA->mLSNode};
    KQexNode*                lOther = Node(nullptr, "other hips", 7.0);
    Node(lOther, "b", 8.0);
    EXPECT_TRUE(mStage.mAsf->MergeQEXToASF(lOther));
    EXPECT_EQ(lA->mLTNode, lKept[0]);
    EXPECT_EQ(lA->mLRNode, lKept[1]);
    EXPECT_EQ(lA->mLSNode, lKept[2]);
    EXPECT_EQ(lA->mTOffset[0], 2.0);
    EXPECT_EQ(lA->mPreRotation[0], 10.0);
    EXPECT_EQ(lA->mPostRotation[1], 10.0);
    // The paired ones have those of the other figure, which has no curve nodes.
    for (const KQexAsfNode* lBone : {mRoot, lB})
    {
        EXPECT_FALSE(lBone->mLTNode || lBone->mLRNode || lBone->mLSNode);
        EXPECT_EQ(lBone->mTOffset[0], lBone == lB ? 8.0 : 7.0);
        EXPECT_EQ(lBone->mPreRotation[0], 0.0);
    }
}

/// What the two frame flags give for a bone whose parent was skipped by a bind.
struct KBoundSampleCase
{
    bool   mOffset;
    bool   mPreRotation;
    double mT[3];
    double mR[3];
};

class KBoundSampleTest : public testing::TestWithParam<KBoundSampleCase>
{
protected:
    /// Samples ty = 1 and rx = 10 and compares with \p pT and \p pR.
    void ExpectKeys(KQexAsfNode* pBone, const double (&pT)[3], const double (&pR)[3])
    {
        const double lValues[4] = {1.0, 10.0, 0.0, 0.0};
        pBone->CreateDataFromDOF(mStage.mScene);
        EXPECT_TRUE(pBone->AddSampleFromDOF(lValues, KTime(0), 1.0, 1.0, GetParam().mOffset, GetParam().mPreRotation));
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_NEAR(pBone->mLTData[lIter]->GetValue(0), pT[lIter], 1e-5) << pBone->mName << " t" << lIter;
            EXPECT_NEAR(pBone->mLRData[lIter]->GetValue(0), pR[lIter], 1e-5) << pBone->mName << " r" << lIter;
        }
    }

    KScenePair mStage;
};

/// The chain root, a, b, c, with axes rotated by 90 degrees about x, z, y and x. Only a and c have host nodes. b ends at (1, 2, 3) from its
/// start, in world axes, and c is displaced by (0, 1, 0) in its own axis frame, which is (0, 0, 1) in world axes.
TEST_P(KBoundSampleTest, TheAxisOfTheLastPairedBoneIsTheParents)
{
    KQexAsfNode* lRoot = mStage.mAsf->mRoot = Bone(nullptr, "root", {}, {}, {90.0, 0.0, 0.0});
    KQexAsfNode* lA = Bone(lRoot, "a", {}, {0.0, 1.0, 0.0}, {0.0, 0.0, 90.0});
    KQexAsfNode* lB = Bone(lA, "b", {1, 5, 4, 3}, {1.0, 2.0, 3.0}, {0.0, 90.0, 0.0});
    KQexAsfNode* lC = Bone(lB, "c", {1, 5, 4, 3}, {0.0, 1.0, 0.0}, {90.0, 0.0, 0.0});
    lRoot->SetupPosition(GetParam().mOffset, GetParam().mPreRotation);
    const KgeRMatrix lAxisOfA = lA->mAxisRM;
    KQexNode*        lHost = KQexNode::Create(mStage.mScene, "hips");
    KQexNode*        lHostA = KQexNode::Create(mStage.mScene, "a");
    lHost->AddChild(lHostA);
    lHostA->AddChild(KQexNode::Create(mStage.mScene, "c"));
    EXPECT_TRUE(mStage.mAsf->MergeQEXToASF(lHost));
    EXPECT_EQ(lC->mParent, lB);
    EXPECT_EQ(lC->mParentAxisRMInv.mData[0][1], lAxisOfA.mData[1][0]);
    ExpectKeys(lC, GetParam().mT, GetParam().mR);
}

// With the inverse axis of a, (x, y, z) becomes (y, -x, z); with that of b, the parent in the tree, (-z, y, x).
INSTANTIATE_TEST_SUITE_P(Flags, KBoundSampleTest,
                         testing::Values(
                             // The whole position (1, 2, 4) in the frame of a, and the rotation Rz(-90) Rx(90) Rx(10).
                             KBoundSampleCase{false, false, {2.0, -1.0, 4.0}, {100.0, 0.0, -90.0}},
                             KBoundSampleCase{false, true, {2.0, -1.0, 4.0}, {10.0, 0.0, 0.0}},
                             // A displacement alone is in the frame of the parent in the tree, which a bind does not change.
                             KBoundSampleCase{true, false, {-1.0, 0.0, 0.0}, {100.0, 0.0, -90.0}},
                             KBoundSampleCase{true, true, {-1.0, 0.0, 0.0}, {10.0, 0.0, 0.0}}),
                         [](const testing::TestParamInfo<KBoundSampleCase>& pInfo) {
                             return std::string(pInfo.param.mOffset ? "Offset" : "Translation") +
                                    (pInfo.param.mPreRotation ? "PreRotation" : "Folded");
                         });

} // namespace
