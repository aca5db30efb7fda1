#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/qexioplugins/acclaim/loggedcurve.h>
#include <tests/support/memorywatch.h>
#include <tests/support/smallstack.h>

#include <gtest/gtest.h>

#include <type_traits>

using namespace qexsdk;
using namespace qextest;

namespace
{

static_assert(!std::is_polymorphic_v<KQexAsfNode> && std::has_virtual_destructor_v<KQexAsfScene>);
static_assert(!std::is_copy_constructible_v<KQexAsfNode> && !std::is_copy_assignable_v<KQexAsfNode>);
static_assert(!std::is_copy_constructible_v<KQexAsfScene> && !std::is_copy_assignable_v<KQexAsfScene>);
static_assert(std::is_same_v<HKQexAsfNode, KQexAsfNode*>);

bool IsIdentity(const KgeRMatrix& pMatrix)
{
    for (int lRow = 0; lRow < 4; ++lRow)
    {
        for (int lColumn = 0; lColumn < 4; ++lColumn)
        {
            if (pMatrix.mData[lRow][lColumn] != (lRow == lColumn ? 1.0 : 0.0))
            {
                return false;
            }
        }
    }
    return true;
}

bool IsOrigin(const KgeTVector& pVector)
{
    return pVector.mData[0] == 0.0 && pVector.mData[1] == 0.0 && pVector.mData[2] == 0.0 && pVector.mData[3] == 1.0;
}

TEST(KQexAsfNodeTest, StartsWithItsDefaults)
{
    KQexAsfNode lBone;
    EXPECT_STREQ(lBone.mName, "");
    EXPECT_EQ(lBone.mOrderCount, 0);
    for (const auto& lRow : lBone.mLimitsActive)
    {
        EXPECT_FALSE(lRow[0] || lRow[1]);
    }
    EXPECT_EQ(lBone.mOrientationOrder, 0);
    EXPECT_EQ(lBone.mLength, 0.0);
    EXPECT_EQ(lBone.mParent, nullptr);
    EXPECT_EQ(lBone.mChildBuf.GetCount(), 0);
    EXPECT_EQ(lBone.mChildBuf.GetBlockCount(), 0);
    for (const KgeTVector* lVector : {&lBone.mPositionV, &lBone.mDirectionV, &lBone.mParentPositionV, &lBone.mLT})
    {
        EXPECT_TRUE(IsOrigin(*lVector));
    }
    for (const KgeRMatrix* lMatrix : {&lBone.mAxisRM, &lBone.mAxisRMInv, &lBone.mParentAxisRM, &lBone.mParentAxisRMInv})
    {
        EXPECT_TRUE(IsIdentity(*lMatrix));
    }
    for (const KgeRVector* lAngles : {&lBone.mOrientationV, &lBone.mLR})
    {
        for (double lAngle : lAngles->mData)
        {
            EXPECT_EQ(lAngle, 0.0);
        }
    }
    for (const KQexAnimCurveNode* lNode : {lBone.mLTNode, lBone.mLRNode, lBone.mLSNode})
    {
        EXPECT_EQ(lNode, nullptr);
    }
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_TRUE(!lBone.mLTData[lIter] && !lBone.mLRData[lIter]);
    }
    EXPECT_FALSE(lBone.GetInvalidLimits());
    EXPECT_EQ(lBone.mScene, nullptr);
}

TEST(KQexAsfNodeTest, AccessorsMatchTheFields)
{
    KScenePair  lStage;
    KQexAsfNode lBone;
    lBone.SetScene(lStage.mScene);
    EXPECT_EQ(lBone.mScene, lStage.mScene);
    lBone.SetInvalidLimits(true);
    EXPECT_TRUE(lBone.GetInvalidLimits() && lBone.mInvalidateRLimits);
    EXPECT_EQ(&lBone.GetTOffset(), &lBone.mTOffset);
    EXPECT_EQ(&lBone.GetPreRotation(), &lBone.mPreRotation);
    EXPECT_EQ(&lBone.GetPostRotation(), &lBone.mPostRotation);
}

TEST(KQexAsfSceneTest, StartsWithItsDefaultsAndOwnsItsTree)
{
    KMemoryWatch  lWatch;
    KQexAsfScene* lScene = QexSdkNew<KQexAsfScene>();
    EXPECT_STREQ(lScene->GetName(), "");
    EXPECT_EQ(lScene->GetName(), lScene->mName);
    EXPECT_EQ(lScene->mMassUnit, 1.0);
    EXPECT_EQ(lScene->mLengthUnit, 1.0);
    EXPECT_EQ(lScene->mAngleUnit, 1.0);
    EXPECT_EQ(lScene->GetRootNode(), nullptr);
    lScene->mRoot = RandomBones(eRANDOM, 50, 1, true)[0];
    EXPECT_EQ(lScene->GetRootNode(), lScene->mRoot);
    lScene->Destroy();
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

TEST(KQexAsfNodeTest, FailedAllocationGivesNull)
{
    KMemoryWatch lWatch;
    lWatch.FailAfter(0);
    EXPECT_EQ(QexSdkNew<KQexAsfNode>(), nullptr);
    EXPECT_EQ(QexSdkNew<KQexAsfScene>(), nullptr);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
    QexSdkDelete<KQexAsfNode>(nullptr);
    QexSdkDelete<KQexAsfScene>(nullptr);
}

class KQexAsfTreeTest : public testing::Test
{
protected:
    void TearDown() override { QexSdkDelete(mRoot); }

    KQexAsfNode* mRoot = Bone(nullptr, "root");
    KQexAsfNode* mA = Bone(mRoot, "a");
    KQexAsfNode* mB = Bone(mRoot, "b");
};

TEST_F(KQexAsfTreeTest, FindsTheFirstInPreOrder)
{
    KQexAsfNode* lDeep = Bone(Bone(mA, "mid"), "x");
    Bone(mB, "x");
    EXPECT_EQ(mRoot->Find("x"), lDeep);
    EXPECT_EQ(mRoot->Find("root"), mRoot);
    EXPECT_EQ(mRoot->Find("X"), nullptr);
    EXPECT_EQ(mRoot->Find(""), nullptr);
    EXPECT_EQ(mB->Find("mid"), nullptr);
    Bone(lDeep, "x");
    EXPECT_EQ(lDeep->Find("x"), lDeep);
}

TEST_F(KQexAsfTreeTest, NoChildBeyondTheCount)
{
    EXPECT_EQ(mRoot->GetChild(0), mA);
    EXPECT_EQ(mRoot->GetChild(1), mB);
    EXPECT_EQ(mRoot->GetChild(2), nullptr);
    EXPECT_EQ(mA->GetChild(0), nullptr);
}

TEST_F(KQexAsfTreeTest, ABoneCanBeAChildOfTwoParents)
{
    // AddChild() checks neither for a duplicate nor for an earlier parent.
    EXPECT_TRUE(mB->AddChild(mA));
    EXPECT_EQ(mA->mParent, mB);
    EXPECT_EQ(ChildNames(mRoot), "a b");
    EXPECT_EQ(mRoot->Find("b"), mB);
    mRoot->RemoveChild(mA);
    EXPECT_EQ(mA->mParent, nullptr);
    EXPECT_EQ(ChildNames(mRoot), "b");
    EXPECT_EQ(ChildNames(mB), "a");
}

TEST_F(KQexAsfTreeTest, RemoveChildClearsTheParentOfAnyBone)
{
    KQexAsfNode* lOther = Bone(mB, "other");
    mA->RemoveChild(lOther);
    EXPECT_EQ(lOther->mParent, nullptr);
    EXPECT_EQ(ChildNames(mB), "other");
    EXPECT_EQ(ChildNames(mA), "");
}

TEST_F(KQexAsfTreeTest, RemovesTheFirstOfTwoEqualEntries)
{
    mRoot->AddChild(mA);
    EXPECT_EQ(ChildNames(mRoot), "a b a");
    mRoot->RemoveChild(mA);
    EXPECT_EQ(ChildNames(mRoot), "b a");
    EXPECT_EQ(mA->mParent, nullptr);
    EXPECT_EQ(mRoot->Find("a"), mA); // a walk does not rely on mParent
}

TEST_F(KQexAsfTreeTest, TheFifthChildDoublesTheBlocks)
{
    Bone(mRoot, "c");
    KQexAsfNode* lD = Bone(mRoot, "d");
    EXPECT_EQ(mRoot->mChildBuf.GetBlockCount(), 1);
    KQexAsfNode* lE = Bone(mRoot, "e");
    EXPECT_EQ(mRoot->mChildBuf.GetBlockCount(), 2);
    for (KQexAsfNode* lBone : {lE, lD})
    {
        mRoot->RemoveChild(lBone);
        QexSdkDelete(lBone);
    }
    EXPECT_EQ(mRoot->mChildBuf.GetBlockCount(), 2);
    EXPECT_EQ(ChildNames(mRoot), "a b c");
}

TEST_F(KQexAsfTreeTest, AddingWithoutMemoryChangesNothing)
{
    Bone(mRoot, "c");
    Bone(mRoot, "d");
    KQexAsfNode* lE = Bone(nullptr, "e");
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(0);
        EXPECT_FALSE(mRoot->AddChild(lE));
    }
    EXPECT_EQ(lE->mParent, nullptr);
    EXPECT_EQ(ChildNames(mRoot), "a b c d");
    EXPECT_EQ(mRoot->mChildBuf.GetBlockCount(), 1);
    EXPECT_TRUE(mRoot->AddChild(lE));
    EXPECT_EQ(ChildNames(mRoot), "a b c d e");
}

void AddLoggedCurves(KQexAsfNode* pBone, std::vector<std::string>& pLog)
{
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        pBone->mLTData[lIter] = new KLoggedCurve(nullptr, std::string(pBone->mName) + "_t" + "xyz"[lIter], pLog);
        pBone->mLRData[lIter] = new KLoggedCurve(nullptr, std::string(pBone->mName) + "_r" + "xyz"[lIter], pLog);
    }
}

TEST(KQexAsfNodeDestructionTest, CurvesBeforeChildrenAndChildrenInOrder)
{
    std::vector<std::string> lLog;
    KMemoryWatch             lWatch;
    KQexAsfNode*             lRoot = Bone(nullptr, "root");
    KQexAsfNode*             lA = Bone(lRoot, "a");
    for (KQexAsfNode* lBone : {lRoot, lA, Bone(lA, "aa"), Bone(lRoot, "b")})
    {
        AddLoggedCurves(lBone, lLog);
    }
    QexSdkDelete(lA->mLTData[1]); // a bone may lack some of them
    lA->mLTData[1] = nullptr;
    QexSdkDelete(lRoot);
    const std::vector<std::string> lExpected = {"root_tx", "root_rx", "root_ty", "root_ry", "root_tz", "root_rz", "a_tx",  "a_rx",
                                                "a_ry",    "a_tz",    "a_rz",    "aa_tx",   "aa_rx",   "aa_ty",   "aa_ry", "aa_tz",
                                                "aa_rz",   "b_tx",    "b_rx",    "b_ty",    "b_ry",    "b_tz",    "b_rz"};
    EXPECT_EQ(lLog, lExpected);
    EXPECT_EQ(lWatch.GetBlocks(), 0U);
}

class KLargeTreeTest : public testing::TestWithParam<EShape>
{
};

TEST_P(KLargeTreeTest, FitsInASmallStack)
{
    const int lCount = 100000;
    for (size_t lStack : kStackSizes)
    {
        RunWithStackSize(lStack,
                         [&]
                         {
                             const std::vector<KQexAsfNode*> lBones = RandomBones(GetParam(), lCount, 7, true);
                             KQexAsfNode*                    lRoot = lBones[0];
                             EXPECT_EQ(lRoot->Find("b99999"), lBones[99999]);
                             EXPECT_EQ(lRoot->Find("nobody"), nullptr);
                             lRoot->SetupPosition(false, false);
                             lRoot->SetupPosition(true, true);
                             lRoot->SetupPosition(false, false);
                             lRoot->RemoveDummy(false, false);
                             lRoot->RemoveEndSite();
                             lRoot->StartSamplingData();
                             lRoot->StopSamplingData();
                             QexSdkDelete(lRoot);
                         });
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, KLargeTreeTest, testing::Values(eCHAIN, eFAN, eCOMB, eRANDOM),
                         [](const testing::TestParamInfo<EShape>& pInfo) { return std::string(kShapeNames[pInfo.param]); });

} // namespace
