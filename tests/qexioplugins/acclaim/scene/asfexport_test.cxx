#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// The bones as "name(child child(…))".
std::string BoneTree(KQexAsfNode* pBone)
{
    std::string lText = pBone->mName;
    for (int lIter = 0; pBone->GetChild(lIter); ++lIter)
    {
        lText += (lIter == 0 ? "(" : " ") + BoneTree(pBone->GetChild(lIter));
    }
    return lText + (pBone->GetChild(0) ? ")" : "");
}

class KExportTest : public testing::Test
{
protected:
    KQexNode* Node(KQexNode* pParent, const char* pName, double pX = 0.0, double pY = 0.0, double pZ = 0.0)
    {
        KQexNode* lNode = KQexNode::Create(mStage.mScene, pName);
        lNode->SetRotationActive(true);
        lNode->SetRotationOffset(kPivotSet0, KQexVector4(pX, pY, pZ));
        if (pParent != nullptr)
        {
            pParent->AddChild(lNode);
        }
        return lNode;
    }

    KQexAsfNode* Export(bool pTAnimated = false, bool pBasePose = false, double pScale = 1.0)
    {
        QexSdkDelete(mStage.mAsf->mRoot); // extraction does not release it
        EXPECT_TRUE(mStage.mAsf->QEXToASF(mTop, pTAnimated, KQexVector4(pScale, pScale, pScale), pBasePose));
        return mStage.mAsf->mRoot;
    }

    std::string Shape(bool pBasePose = false) { return BoneTree(Export(false, pBasePose)); }

    static std::vector<int> Dofs(const KQexAsfNode* pBone) { return {pBone->mOrderBuf, pBone->mOrderBuf + pBone->mOrderCount}; }

    KScenePair mStage;
    KQexNode*  mTop = Node(nullptr, "ns:Hips");
};

TEST_F(KExportTest, ALoneNodeBecomesALoneRoot)
{
    std::strcpy(mStage.mAsf->mName, "before");
    mStage.mAsf->mLengthUnit = 0.45;
    KQexAsfNode* lRoot = Export();
    EXPECT_EQ(BoneTree(lRoot), "root");
    EXPECT_EQ(Dofs(lRoot), (std::vector<int>{0, 1, 2, 5, 4, 3}));
    EXPECT_EQ(lRoot->mLength, 0.0);
    EXPECT_STREQ(mStage.mAsf->mName, "ASF");
    EXPECT_EQ(mStage.mAsf->mLengthUnit, 1.0);
}

/// Leaves of length zero are removed, so the nodes of these tests end in a child "End", whose offset is the last bone's length.
TEST_F(KExportTest, TheRootsOnlyChildHasADummyForItsOffset)
{
    KQexNode* lSpine = Node(mTop, "Spine");
    Node(lSpine, "End", 0.0, 1.0, 0.0);
    EXPECT_EQ(Shape(), "root(Spine)");
    lSpine->SetRotationOffset(kPivotSet0, KQexVector4(0.0, 1e-9, 0.0));
    EXPECT_EQ(Shape(), "root(SpineDummy(Spine))");
}

TEST_F(KExportTest, TheTranslationCountsOnlyInABasePose)
{
    KQexNode* lSpine = Node(mTop, "Spine");
    Node(lSpine, "End", 0.0, 1.0, 0.0);
    lSpine->mLocalTranslation.Set(qexVectorTemplate3<double>(0.0, 5.0, 0.0));
    EXPECT_EQ(Shape(false), "root(Spine)");
    EXPECT_EQ(Shape(true), "root(SpineDummy(Spine))");
    lSpine->SetRotationOffset(kPivotSet0, KQexVector4(0.0, -5.0, 0.0)); // offset and translation cancel
    EXPECT_EQ(Shape(false), "root(SpineDummy(Spine))");
    EXPECT_EQ(Shape(true), "root(Spine)");
}

TEST_F(KExportTest, AnInnerNodesOnlyChildNeverHasADummy)
{
    KQexNode* lSpine = Node(mTop, "Spine");
    Node(Node(lSpine, "Chest", 0.0, 4.0, 0.0), "End", 0.0, 1.0, 0.0);
    KQexAsfNode* lRoot = Export();
    EXPECT_EQ(BoneTree(lRoot), "root(Spine(Chest))");
    EXPECT_DOUBLE_EQ(lRoot->GetChild(0)->mLength, 4.0 / 2.54);
}

TEST_F(KExportTest, ChildrenWithOneOffsetNeedNoDummies)
{
    for (const char* lName : {"L", "R"})
    {
        Node(Node(mTop, lName, 3.0, 0.0, -0.0), "End", 0.0, 1.0, 0.0);
    }
    KQexAsfNode* lRoot = Export();
    EXPECT_EQ(BoneTree(lRoot), "root(L R)");
    EXPECT_DOUBLE_EQ(lRoot->mLength, 3.0 / 2.54);
    // At the root too: its bone ends at the common offset, but its position is copied unchanged.
    EXPECT_EQ(lRoot->mPositionV.mData[0], 0.0);
    EXPECT_EQ(lRoot->mDirectionV.mData[0], 1.0);
}

TEST_F(KExportTest, OffsetsThatDifferInTheLastBitDiffer)
{
    KQexNode* lHub = Node(mTop, "Hub");
    for (double lX : {3.0, 3.0, std::nextafter(3.0, 4.0)})
    {
        Node(Node(lHub, "C", lX), "End", 0.0, 1.0, 0.0);
    }
    KQexAsfNode* lRoot = Export();
    EXPECT_EQ(BoneTree(lRoot), "root(Hub(CDummy(C) CDummy(C) CDummy(C)))");
    const KQexAsfNode* lBone = lRoot->GetChild(0);
    EXPECT_EQ(lBone->mLength, 0.0);
    EXPECT_EQ(lBone->mDirectionV.mData[0], 0.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("CDummy")->mLength, 3.0 / 2.54);
}

TEST_F(KExportTest, ADummyHasNoDofsAndNoRotationOfItsOwn)
{
    mTop->SetPreRotation(kPivotSet0, KQexVector4(0.0, 0.0, 90.0));
    KQexNode* lArm = Node(mTop, "Arm", 2.54);
    lArm->SetPreRotation(kPivotSet0, KQexVector4(0.0, 0.0, 90.0));
    Node(lArm, "Hand", 2.54);
    Node(lArm->GetChild(0), "End", 1.0);
    KQexAsfNode* lRoot = Export();
    KQexAsfNode* lDummy = lRoot->Find("ArmDummy");
    KQexAsfNode* lBone = lRoot->Find("Arm");
    ASSERT_TRUE(lDummy && lBone);
    EXPECT_EQ(lDummy->mOrderCount, 0);
    EXPECT_DOUBLE_EQ(lDummy->mLength, 1.0);
    EXPECT_DOUBLE_EQ(lDummy->mDirectionV.mData[0], 1.0); // the root's own rotation is not in its frame
    EXPECT_EQ(lDummy->mOrientationV.mData[2], 0.0);
    EXPECT_DOUBLE_EQ(lBone->mParentPositionV.mData[0], 2.54);
    EXPECT_NEAR(lBone->mDirectionV.mData[1], 1.0, 1e-12);
    EXPECT_NEAR(lBone->mOrientationV.mData[2], 90.0, 1e-12);
    EXPECT_NEAR(lRoot->Find("Hand")->mParentAxisRM.mData[0][1], 1.0, 1e-12);
}

TEST_F(KExportTest, TheRootIsCopiedUnchanged)
{
    mTop->SetRotationOffset(kPivotSet0, KQexVector4(1.0, 2.0, 3.0));
    mTop->SetPreRotation(kPivotSet0, KQexVector4(10.0, 20.0, 30.0));
    mTop->mLocalRotation.Set(qexVectorTemplate3<double>(40.0, 50.0, 60.0));
    Node(Node(mTop, "Spine"), "End", 0.0, 1.0, 0.0);
    for (bool lBasePose : {false, true})
    {
        const KQexAsfNode* lRoot = Export(false, lBasePose, 2.0);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_EQ(lRoot->mPositionV.mData[lIter], 1.0 + lIter);
            EXPECT_EQ(lRoot->mOrientationV.mData[lIter], 10.0 * (lIter + 1));
            EXPECT_EQ(lRoot->mAxisRM.mData[lIter][lIter], 1.0);
        }
    }
}

TEST_F(KExportTest, ScalesMultiplyDownTheChain)
{
    KQexNode* lSpine = Node(mTop, "Spine");
    KQexNode* lChest = Node(lSpine, "Chest", 2.54);
    KQexNode* lHead = Node(lChest, "Head", 2.54);
    Node(lHead, "End", 2.54);
    KQexAsfNode* lRoot = Export(false, false, 2.0);
    EXPECT_EQ(lRoot->Find("Spine")->mLength, 2.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("Spine")->mDirectionV.mData[0], 1.0);
    lChest->mLocalScaling.Set(qexVectorTemplate3<double>(0.5, 0.5, 0.5));
    lRoot = Export(false, false, 2.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("Spine")->mLength, 2.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("Chest")->mLength, 1.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("Head")->mLength, 1.0);
    EXPECT_DOUBLE_EQ(lRoot->Find("Head")->mParentPositionV.mData[0], 2.54);
}

TEST_F(KExportTest, EachAxisHasItsOwnScale)
{
    KQexNode* lChest = Node(mTop, "Chest");
    KQexNode* lHead = Node(lChest, "Head", 2.54, 2.54, 2.54);
    Node(lHead, "End", 2.54);
    lChest->mLocalScaling.Set(qexVectorTemplate3<double>(2.0, 3.0, 4.0));
    const KQexAsfNode* lBone = Export()->Find("Chest");
    EXPECT_DOUBLE_EQ(lBone->mLength, std::sqrt(4.0 + 9.0 + 16.0));
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_DOUBLE_EQ(lBone->mDirectionV.mData[i], (2.0 + i) / std::sqrt(29.0));
    }
}

struct KExportOrderCase
{
    ERotationOrder   mOrder;
    std::vector<int> mDofs;
};

class KExportOrderTest : public testing::TestWithParam<KExportOrderCase>
{
};

TEST_P(KExportOrderTest, DofsFollowTheOrder)
{
    KScenePair lStage;
    KQexNode*  lTop = KQexNode::Create(lStage.mScene, "top");
    KQexNode*  lChild = KQexNode::Create(lStage.mScene, "child");
    lTop->AddChild(lChild);
    lChild->AddChild(KQexNode::Create(lStage.mScene, "end"));
    for (KQexNode* lNode : {lTop, lChild})
    {
        lNode->SetRotationOrder(kPivotSet0, GetParam().mOrder);
    }
    for (KQexNode* lNode : {lChild, lChild->GetChild(0)})
    {
        lNode->SetRotationOffset(kPivotSet0, KQexVector4(0.0, 1.0, 0.0));
    }
    for (bool lTAnimated : {false, true})
    {
        QexSdkDelete(lStage.mAsf->mRoot);
        lStage.mAsf->QEXToASF(lTop, lTAnimated, KQexVector4(1.0, 1.0, 1.0), false);
        std::vector<int> lSix = {0, 1, 2};
        lSix.insert(lSix.end(), GetParam().mDofs.begin(), GetParam().mDofs.end());
        const KQexAsfNode* lRoot = lStage.mAsf->mRoot;
        const KQexAsfNode* lBone = lStage.mAsf->mRoot->Find("child");
        EXPECT_EQ(std::vector<int>(lRoot->mOrderBuf, lRoot->mOrderBuf + lRoot->mOrderCount), lSix);
        EXPECT_EQ(std::vector<int>(lBone->mOrderBuf, lBone->mOrderBuf + lBone->mOrderCount), lTAnimated ? lSix : GetParam().mDofs);
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, KExportOrderTest,
                         testing::Values(KExportOrderCase{eEULER_XYZ, {5, 4, 3}}, KExportOrderCase{eEULER_XZY, {5, 3, 4}},
                                         KExportOrderCase{eEULER_YZX, {4, 3, 5}}, KExportOrderCase{eEULER_YXZ, {4, 5, 3}},
                                         KExportOrderCase{eEULER_ZXY, {3, 5, 4}}, KExportOrderCase{eEULER_ZYX, {3, 4, 5}},
                                         KExportOrderCase{eSPHERIC_XYZ, {5, 4, 3}}));

TEST_F(KExportTest, LimitRowsDoNotFollowTheDofs)
{
    KQexNode* lSpine = Node(mTop, "Spine");
    Node(lSpine, "End", 0.0, 1.0, 0.0);
    lSpine->SetRotationOrder(kPivotSet0, eEULER_YZX);
    KQexNodeLimits& lLimits = lSpine->GetLimits();
    lLimits.mRotationLimits.SetLimitMin(KQexVector4(-1.0, -2.0, -3.0));
    lLimits.mRotationLimits.SetLimitMax(KQexVector4(1.0, 2.0, 3.0));
    lLimits.mRotationLimits.SetLimitMinActive(true, false, false);
    lLimits.mRotationLimits.SetLimitMaxActive(false, true, true);
    lLimits.mTranslationLimits.SetLimitMin(KQexVector4(-4.0, -5.0, -6.0));
    lLimits.mTranslationLimits.SetLimitMax(KQexVector4(4.0, 5.0, 6.0));
    lLimits.mTranslationLimits.SetLimitMinActive(false, true, false);
    lLimits.mTranslationLimits.SetLimitMaxActive(true, false, false);
    for (bool lTAnimated : {false, true})
    {
        const KQexAsfNode* lBone = Export(lTAnimated, false, 3.0)->Find("Spine");
        const int          lFirst = lTAnimated ? 3 : 0;
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_EQ(lBone->mLimitsBuf[lFirst + lIter][0], lIter - 3.0);
            EXPECT_EQ(lBone->mLimitsBuf[lFirst + lIter][1], 3.0 - lIter);
            EXPECT_EQ(lBone->mLimitsActive[lFirst + lIter][0], lIter == 2);
            EXPECT_EQ(lBone->mLimitsActive[lFirst + lIter][1], lIter != 2);
            if (lTAnimated)
            {
                EXPECT_EQ(lBone->mLimitsBuf[lIter][0], -4.0 - lIter);
                EXPECT_EQ(lBone->mLimitsBuf[lIter][1], 4.0 + lIter);
                EXPECT_EQ(lBone->mLimitsActive[lIter][0], lIter == 1);
                EXPECT_EQ(lBone->mLimitsActive[lIter][1], lIter == 0);
            }
            else
            {
                EXPECT_FALSE(lBone->mLimitsActive[3 + lIter][0] || lBone->mLimitsActive[3 + lIter][1]);
            }
        }
    }
    const KQexAsfNode* lRoot = mStage.mAsf->mRoot; // the root gets no limits, whatever the node has
    for (const auto& lRow : lRoot->mLimitsActive)
    {
        EXPECT_FALSE(lRow[0] || lRow[1]);
    }
}

TEST_F(KExportTest, NamesLoseTheirPrefixAndAreCut)
{
    const std::string lLong(400, 'n');
    Node(Node(mTop, "a:b:Spine", 1.0), "End", 0.0, 1.0, 0.0);
    Node(Node(mTop, lLong.c_str(), 2.0), "End", 0.0, 1.0, 0.0);
    KQexAsfNode* lRoot = Export();
    EXPECT_TRUE(lRoot->Find("Spine"));
    EXPECT_TRUE(lRoot->Find("SpineDummy"));
    EXPECT_TRUE(lRoot->Find(lLong.substr(0, 255).c_str()));
    EXPECT_TRUE(lRoot->Find((lLong.substr(0, 250) + "Dummy").c_str()));
}

TEST_F(KExportTest, TheBasePoseIncludesTheRotationAtTimeZero)
{
    // Pre-rotation 90 about z, rotation 90 about x, inverse of post-rotation 90 about z: Rz(90) Rx(90) Rz(-90) is 90 degrees about y.
    KQexNode* lSpine = Node(mTop, "Spine");
    lSpine->SetPreRotation(kPivotSet0, KQexVector4(0.0, 0.0, 90.0));
    lSpine->SetPostRotation(kPivotSet0, KQexVector4(0.0, 0.0, 90.0));
    lSpine->SetRotationOrder(kPivotSet0, eEULER_ZYX);
    Node(lSpine, "Chest", 0.0, 0.0, 2.54);
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(mStage.mScene, "rx");
    for (long long lTime : {0, 1})
    {
        lCurve->AddKey(KTime(lTime), KQexAnimCurveKey(KTime(lTime), lTime == 0 ? 90.0F : 0.0F));
    }
    lSpine->mLocalRotation.GetCurveNode(true, "take")->ConnectToChannel(lCurve, 0, true);

    const KQexAsfNode* lBone = Export(false, false)->Find("Spine");
    EXPECT_NEAR(lBone->mOrientationV.mData[2], 90.0, 1e-12);
    EXPECT_NEAR(lBone->mDirectionV.mData[2], 1.0, 1e-12);
    lBone = Export(false, true)->Find("Spine");
    EXPECT_NEAR(lBone->mDirectionV.mData[0], 1.0, 1e-12); // Rx(90) maps z to -y, Rz(90) maps that to x
    EXPECT_TRUE(lBone->mLRNode);
    EXPECT_EQ(lBone->mPreRotation[2], 90.0);
    EXPECT_EQ(lBone->mPostRotation[2], 90.0);
}

TEST_F(KExportTest, LeavesAreEndSitesUnlessTheyMove)
{
    KQexNode* lHub = Node(mTop, "Hub");
    Node(lHub, "Still", 0.0, 1.0, 0.0);
    KQexNode*      lMoved = Node(lHub, "Moved", 0.0, 1.0, 0.0);
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(mStage.mScene, "ty");
    lCurve->AddKey(KTime(0), KQexAnimCurveKey());
    lMoved->mLocalTranslation.GetCurveNode(true, "take")->ConnectToChannel(lCurve, 1, true);
    EXPECT_EQ(Shape(), "root(Hub(Moved))");
    mStage.mScene->GetEvaluator()->SetContext(nullptr);
    EXPECT_EQ(Shape(), "root(Hub)");
}

TEST_F(KExportTest, AnEarlierRootIsOverwritten)
{
    KQexAsfNode* lEarlier = mStage.mAsf->mRoot = Bone(nullptr, "earlier");
    EXPECT_TRUE(mStage.mAsf->QEXToASF(mTop, true, KQexVector4(1.0, 1.0, 1.0), true));
    EXPECT_NE(mStage.mAsf->mRoot, lEarlier);
    EXPECT_STREQ(lEarlier->mName, "earlier");
    QexSdkDelete(lEarlier);
}

TEST_F(KExportTest, WithoutMemoryThereIsNoRoot)
{
    for (int lIter = 0; lIter < 6; ++lIter)
    {
        Node(Node(mTop, "Arm", lIter), "Hand", 1.0);
    }
    for (long lFail = 0; lFail < 100; ++lFail)
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(lFail);
        const bool lDone = mStage.mAsf->QEXToASF(mTop, true, KQexVector4(1.0, 1.0, 1.0), false);
        EXPECT_EQ(lDone, mStage.mAsf->mRoot != nullptr);
        QexSdkDelete(mStage.mAsf->mRoot);
        mStage.mAsf->mRoot = nullptr;
        EXPECT_EQ(lWatch.GetBlocks(), 0U);
        if (lDone)
        {
            EXPECT_GT(lFail, 10);
            return;
        }
    }
    FAIL() << "never succeeded";
}

} // namespace
