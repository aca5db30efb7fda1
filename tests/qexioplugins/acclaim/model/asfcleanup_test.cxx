#include <kbaselib/kmath/keulerorder.h>

#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

using namespace qexsdk;
using namespace qextest;

namespace
{

class KCleanUpTest : public testing::Test
{
protected:
    void TearDown() override
    {
        QexSdkDelete(mRoot);
        EXPECT_EQ(mWatch.GetBlocks(), 0U);
    }

    KMemoryWatch mWatch;
    KQexAsfNode* mRoot = Bone(nullptr, "root", {0, 1, 2, 5, 4, 3});
};

TEST_F(KCleanUpTest, ABoneWithoutDofsIsFoldedIntoItsChild)
{
    SetAxis(mRoot, {0.0, 0.0, 90.0});
    mRoot->mPositionV = KgeTVector(1.0, 0.0, 0.0);
    KQexAsfNode* lDummy = Bone(mRoot, "dummy", {}, {0.0, 2.0, 0.0}, {5.0, 6.0, 7.0});
    KQexAsfNode* lChild = Bone(lDummy, "g", {5}, {0.0, 0.0, 3.0});
    mRoot->SetupPosition(false, false);
    const size_t lBefore = mWatch.GetBlocks();
    mRoot->RemoveDummy(false, false);
    EXPECT_EQ(ChildNames(mRoot), "g");
    EXPECT_EQ(lChild->mParent, mRoot);
    EXPECT_EQ(mWatch.GetBlocks(), lBefore - 2); // the bone and its children's block
    EXPECT_DOUBLE_EQ(lChild->mParentPositionV.mData[0], 1.0);
    EXPECT_DOUBLE_EQ(lChild->mParentPositionV.mData[1], 2.0);
    // The axis is the root's, not the dummy's own.
    EXPECT_EQ(lChild->mParentAxisRM.mData[0][1], mRoot->mAxisRM.mData[0][1]);
    EXPECT_NEAR(lChild->mLT.mData[0], 2.0, 1e-12);
    EXPECT_NEAR(lChild->mLT.mData[1], -1.0, 1e-12);
    EXPECT_NEAR(lChild->mLR.mData[2], -90.0, 1e-12);
}

TEST_F(KCleanUpTest, ADummysChildrenAreAppendedInReverse)
{
    KQexAsfNode* lDummy = Bone(mRoot, "dummy", {});
    Bone(mRoot, "e");
    Bone(lDummy, "a");
    Bone(lDummy, "b");
    mRoot->RemoveDummy(false, false);
    EXPECT_EQ(ChildNames(mRoot), "e b a");
}

TEST_F(KCleanUpTest, AChainOfDummiesIsRemovedAsAWhole)
{
    KQexAsfNode* lUpper = Bone(mRoot, "upper", {}, {1.0, 0.0, 0.0});
    KQexAsfNode* lLower = Bone(lUpper, "lower", {}, {0.0, 1.0, 0.0});
    KQexAsfNode* lG = Bone(lLower, "g", {5}, {0.0, 0.0, 1.0});
    Bone(lLower, "h");
    Bone(lUpper, "u");
    mRoot->SetupPosition(false, false);
    mRoot->RemoveDummy(false, false);
    EXPECT_EQ(ChildNames(mRoot), "g h u");
    EXPECT_EQ(lG->mParentPositionV.mData[0], 1.0);
    EXPECT_EQ(lG->mParentPositionV.mData[1], 1.0);
}

TEST_F(KCleanUpTest, OnlyBonesWithoutAnyDofAreDummies)
{
    Bone(mRoot, "t", {0});
    Bone(mRoot, "leaf", {});
    KQexAsfNode* lKept = Bone(mRoot, "kept");
    Bone(lKept, "under", {});
    mRoot->mOrderCount = 0; // the bone it is called on stays
    mRoot->RemoveDummy(true, true);
    EXPECT_EQ(ChildNames(mRoot), "t kept");
    EXPECT_EQ(ChildNames(lKept), "");
}

TEST_F(KCleanUpTest, ATrueFlagLeavesItsValueUnchanged)
{
    for (bool lOffset : {false, true})
    {
        for (bool lPreRotation : {false, true})
        {
            KQexAsfNode* lDummy = Bone(mRoot, "dummy", {}, {0.0, 2.0, 0.0}, {5.0, 6.0, 7.0});
            KQexAsfNode* lChild = Bone(lDummy, "g", {5}, {0.0, 0.0, 3.0});
            lChild->mLT = KgeTVector(77.0, 77.0, 77.0);
            lChild->mLR = KgeRVector(88.0, 88.0, 88.0);
            mRoot->RemoveDummy(lOffset, lPreRotation);
            EXPECT_EQ(lChild->mLT.mData[0] == 77.0, lOffset);
            EXPECT_EQ(lChild->mLR.mData[0] == 88.0, lPreRotation);
        }
    }
}

/// Running out of memory loses nothing: the dummies stay, and the next call removes them.
TEST_F(KCleanUpTest, FailsWithoutMemoryForTheMovedBones)
{
    for (int lIter = 0; lIter < 4; ++lIter)
    {
        Bone(Bone(mRoot, "dummy", {}), "kept");
    }
    mWatch.FailAfter(0);
    EXPECT_FALSE(mRoot->RemoveDummy(false, false));
    EXPECT_EQ(ChildNames(mRoot), "dummy dummy dummy dummy");
    mWatch.FailAfter(-1);
    EXPECT_TRUE(mRoot->RemoveDummy(false, false));
    EXPECT_EQ(ChildNames(mRoot), "kept kept kept kept");
}

std::string Outline(KQexAsfNode* pRoot)
{
    std::string               lText;
    std::vector<KQexAsfNode*> lStack = {pRoot};
    while (!lStack.empty())
    {
        KQexAsfNode* lBone = lStack.back();
        lStack.pop_back();
        lText += lBone->mName + (": " + ChildNames(lBone)) + "\n";
        for (int lIter = 0; lBone->GetChild(lIter); ++lIter)
        {
            lStack.push_back(lBone->GetChild(lIter));
        }
    }
    return lText;
}

/// A line for each bone with its children. Lines and children are sorted: the same for trees that differ in the order of bones alone.
std::vector<std::string> SortedOutline(KQexAsfNode* pRoot)
{
    std::vector<std::string>  lLines;
    std::vector<KQexAsfNode*> lStack = {pRoot};
    while (!lStack.empty())
    {
        const KQexAsfNode*       lBone = lStack.back();
        std::vector<std::string> lChildren;
        lStack.pop_back();
        for (int lIter = 0; lIter < lBone->mChildBuf.GetCount(); ++lIter)
        {
            lStack.push_back(lBone->mChildBuf[lIter]);
            lChildren.push_back(lStack.back()->mName);
        }
        std::sort(lChildren.begin(), lChildren.end());
        lLines.push_back(lBone->mName + std::string(":"));
        for (const std::string& lChild : lChildren)
        {
            lLines.back() += " " + lChild;
        }
    }
    std::sort(lLines.begin(), lLines.end());
    return lLines;
}

/// A dummy whose children cannot be moved for lack of memory stays, and the tree is otherwise unchanged; a later call removes it.
TEST(KCleanUpMemoryTest, ALaterCallRemovesTheRest)
{
    for (const EShape lShape : {eCHAIN, eFAN, eCOMB, eRANDOM})
    {
        KQexAsfNode* lRoot = RandomBones(lShape, 200, 11, true)[0];
        lRoot->RemoveDummy(false, false);
        const std::string              lExpected = Outline(lRoot);
        const std::vector<std::string> lExpectedLines = SortedOutline(lRoot);
        QexSdkDelete(lRoot);
        for (long lNumber = 0; lNumber < 4; ++lNumber)
        {
            lRoot = RandomBones(lShape, 200, 11, true)[0];
            {
                KMemoryWatch lWatch;
                lWatch.FailAfter(lNumber);
                lRoot->RemoveDummy(false, false);
            }
            if (lShape == eCHAIN)
            {
                EXPECT_EQ(Outline(lRoot), lExpected) << "a chain needs no memory: " << lNumber << " allocations";
            }
            lRoot->RemoveDummy(false, false);
            EXPECT_EQ(SortedOutline(lRoot), lExpectedLines) << kShapeNames[lShape] << ", " << lNumber << " allocations";
            QexSdkDelete(lRoot);
        }
    }
}

/// A global transform: rotation and translation, composed from the local values of the bones down to this one.
struct KGlobalTransform
{
    KgeRMatrix mR;
    KgeTVector mT;
};

std::map<std::string, KGlobalTransform> GlobalTransforms(KQexAsfNode* pRoot)
{
    std::map<std::string, KGlobalTransform>                lResult;
    std::vector<std::pair<KQexAsfNode*, KGlobalTransform>> lStack = {{pRoot, {}}};
    while (!lStack.empty())
    {
        const auto [lBone, lParent] = lStack.back();
        lStack.pop_back();
        const int*       lAxis = KmEulerAxis[lBone == pRoot ? 0 : EulerOrderFromOrderBuf(lBone->mOrderBuf, lBone->mOrderCount)];
        const int        lCode = static_cast<int>((lAxis - KmEulerAxis[0]) / 3);
        const KgeRVector lApplied(lBone->mLR.mData[lAxis[0]], lBone->mLR.mData[lAxis[1]], lBone->mLR.mData[lAxis[2]]);
        KgeRMatrix       lLocal;
        KgeSet(lLocal, lApplied, lCode);
        KGlobalTransform lGlobal;
        KgeMult(lGlobal.mR, lParent.mR, lLocal);
        KgeTVector lOffset;
        KgeMult(lOffset, lParent.mR, lBone->mLT);
        KgeAdd(lGlobal.mT, lParent.mT, lOffset);
        lResult[lBone->mName] = lGlobal;
        for (int lIter = 0; lBone->GetChild(lIter); ++lIter)
        {
            lStack.push_back({lBone->GetChild(lIter), lGlobal});
        }
    }
    return lResult;
}

class KDummyPropertyTest : public testing::TestWithParam<unsigned int>
{
};

TEST_P(KDummyPropertyTest, KeptBonesStayWhereTheyAre)
{
    KQexAsfNode* lRoot = RandomBones(eRANDOM, 60, GetParam(), true)[0];
    lRoot->SetupPosition(false, false);
    const std::map<std::string, KGlobalTransform> lBefore = GlobalTransforms(lRoot);
    lRoot->RemoveDummy(false, false);
    const std::map<std::string, KGlobalTransform> lAfter = GlobalTransforms(lRoot);
    EXPECT_LT(lAfter.size(), lBefore.size());
    for (const auto& [lName, lNew] : lAfter)
    {
        EXPECT_GT(lRoot->Find(lName.c_str())->mOrderCount, 0) << lName;
        const KGlobalTransform& lOld = lBefore.at(lName);
        for (int lRow = 0; lRow < 3; ++lRow)
        {
            EXPECT_NEAR(lNew.mT.mData[lRow], lOld.mT.mData[lRow], 1e-10) << lName;
            for (int lColumn = 0; lColumn < 3; ++lColumn)
            {
                EXPECT_NEAR(lNew.mR.mData[lRow][lColumn], lOld.mR.mData[lRow][lColumn], 1e-10) << lName;
            }
        }
    }
    QexSdkDelete(lRoot);
}

INSTANTIATE_TEST_SUITE_P(Trees, KDummyPropertyTest, testing::Range(1U, 41U));

/// Dummy removal as it is defined: one dummy after another, the deepest first.
void FoldOneByOne(KQexAsfNode* pNode, bool pOffset, bool pPreRotation)
{
    for (int lIter = pNode->mChildBuf.GetCount() - 1; lIter >= 0; --lIter)
    {
        KQexAsfNode* lDummy = pNode->GetChild(lIter);
        FoldOneByOne(lDummy, pOffset, pPreRotation);
        if (lDummy->mOrderCount != 0)
        {
            continue;
        }
        for (int lChild = lDummy->mChildBuf.GetCount() - 1; lChild >= 0; --lChild)
        {
            KQexAsfNode* lMoved = lDummy->GetChild(lChild);
            KgeSet(lMoved->mParentAxisRM, lDummy->mParentAxisRM);
            KgeSet(lMoved->mParentAxisRMInv, lDummy->mParentAxisRMInv);
            KgeAdd(lMoved->mParentPositionV, lDummy->mParentPositionV, lMoved->mParentPositionV);
            pNode->AddChild(lMoved);
            if (!pOffset)
            {
                KgeMult(lMoved->mLT, lMoved->mParentAxisRMInv, lMoved->mParentPositionV);
            }
            if (pPreRotation)
            {
                continue;
            }
            KgeRMatrix lRM;
            KgeMult(lRM, lMoved->mParentAxisRMInv, lMoved->mAxisRM);
            const int  lOrder = EulerOrderFromOrderBuf(lMoved->mOrderBuf, lMoved->mOrderCount);
            KgeRVector lTmp;
            KgeSet(lTmp, lRM, lOrder);
            for (int lAxis = 0; lAxis < 3; ++lAxis)
            {
                lMoved->mLR.mData[KmEulerAxis[lOrder][lAxis]] = lTmp.mData[lAxis];
            }
        }
        lDummy->mChildBuf.Clear();
        QexSdkDelete(lDummy);
        pNode->mChildBuf.RemoveAt(lIter);
    }
}

double LargestOffset(KQexAsfNode* pBone)
{
    double lLargest = KgeLength(pBone->mParentPositionV);
    for (int lIter = 0; pBone->GetChild(lIter); ++lIter)
    {
        lLargest = std::max(lLargest, LargestOffset(pBone->GetChild(lIter)));
    }
    return lLargest;
}

/// The same bones in the same order with the same frames. RemoveDummy() sums offsets in another order than FoldOneByOne(): they agree
/// within 1e-12 of pSize.
void ExpectSameBones(KQexAsfNode* pLeft, KQexAsfNode* pRight, double pSize)
{
    ASSERT_STREQ(pLeft->mName, pRight->mName);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_NEAR(pLeft->mParentPositionV.mData[lIter], pRight->mParentPositionV.mData[lIter], 1e-12 * pSize);
        EXPECT_NEAR(pLeft->mLT.mData[lIter], pRight->mLT.mData[lIter], 1e-12 * pSize);
        EXPECT_EQ(pLeft->mLR.mData[lIter], pRight->mLR.mData[lIter]);
        for (int lRow = 0; lRow < 3; ++lRow)
        {
            EXPECT_EQ(pLeft->mParentAxisRM.mData[lRow][lIter], pRight->mParentAxisRM.mData[lRow][lIter]);
            EXPECT_EQ(pLeft->mParentAxisRMInv.mData[lRow][lIter], pRight->mParentAxisRMInv.mData[lRow][lIter]);
        }
    }
    ASSERT_EQ(ChildNames(pLeft), ChildNames(pRight));
    for (int lIter = 0; pLeft->GetChild(lIter); ++lIter)
    {
        ExpectSameBones(pLeft->GetChild(lIter), pRight->GetChild(lIter), pSize);
    }
}

TEST(KDummyFoldTest, GivesWhatFoldingOneByOneGives)
{
    for (unsigned int lSeed = 1; lSeed <= 400; ++lSeed)
    {
        const EShape kShapes[] = {eRANDOM, eCHAIN, eCOMB, eFAN};
        const bool   lOffset = lSeed % 2 == 0;
        const bool   lPreRotation = lSeed % 3 == 0;
        KQexAsfNode* lTrees[2];
        for (int lWhich = 0; lWhich < 2; ++lWhich)
        {
            const std::vector<KQexAsfNode*> lBones = RandomBones(kShapes[lSeed / 2 % 4], 10 + static_cast<int>(lSeed % 50), lSeed, true);
            std::mt19937                    lRandom(lSeed); // chains of dummies
            for (size_t lIter = 1; lIter < lBones.size(); ++lIter)
            {
                if (lRandom() % 2 == 0)
                {
                    lBones[lIter]->mOrderCount = 0;
                }
            }
            lTrees[lWhich] = lBones[0];
            lTrees[lWhich]->SetupPosition(lOffset, lPreRotation);
        }
        EXPECT_TRUE(lTrees[0]->RemoveDummy(lOffset, lPreRotation));
        FoldOneByOne(lTrees[1], lOffset, lPreRotation);
        SCOPED_TRACE("seed " + std::to_string(lSeed));
        ExpectSameBones(lTrees[0], lTrees[1], LargestOffset(lTrees[1]));
        for (KQexAsfNode* lTree : lTrees)
        {
            QexSdkDelete(lTree);
        }
    }
}

/// A chain of 50,000 dummies, each with one bone as child: moving every bone at each fold would take minutes.
TEST(KDummyFoldTest, ALongChainOfDummiesMovesEachBoneOnce)
{
    const std::vector<KQexAsfNode*> lBones = RandomBones(eCOMB, 100001, 5, false);
    for (size_t lIter = 2; lIter < lBones.size(); lIter += 2)
    {
        lBones[lIter]->mOrderCount = 0;
    }
    for (KQexAsfNode* lBone : lBones)
    {
        lBone->mOrderCount = lBone->mOrderCount > 0 ? 1 : 0;
        SetAxis(lBone, KgeRVector());
        lBone->mDirectionV = KgeTVector(1.0, 0.0, 0.0);
        lBone->mLength = 1.0;
    }
    KQexAsfNode* lRoot = lBones[0];
    lRoot->mPositionV = KgeTVector();
    lRoot->SetupPosition(false, false);
    lRoot->RemoveDummy(false, false);
    EXPECT_EQ(lRoot->mChildBuf.GetCount(), 50000);
    EXPECT_EQ(lRoot->Find("b99999")->mLT.mData[0], 49999.0);
    EXPECT_EQ(lRoot->Find("b1")->mLT.mData[0], 0.0);
    QexSdkDelete(lRoot);
}

class KEndSiteTest : public testing::Test
{
protected:
    /// The translation curve node of a new host node, with pKeys keys on its x channel.
    KQexAnimCurveNode* CurveNode(int pKeys)
    {
        KQexNode*          lNode = KQexNode::Create(mStage.mScene, "node");
        KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, "take");
        KQexAnimCurve*     lCurve = KQexAnimCurve::Create(mStage.mScene, "x");
        for (int lIter = 0; lIter < pKeys; ++lIter)
        {
            lCurve->AddKey(KTime(lIter), KQexAnimCurveKey());
        }
        lCurveNode->ConnectToChannel(lCurve, 0, true);
        return lCurveNode;
    }

    KScenePair   mStage;
    KQexAsfNode* mRoot = mStage.mAsf->mRoot = Bone(nullptr, "root");
};

TEST_F(KEndSiteTest, RemovesLeavesWithoutLengthAndMotion)
{
    Bone(mRoot, "plain");
    Bone(mRoot, "short")->mLength = 1e-12;
    Bone(mRoot, "negative")->mLength = -1.0;
    Bone(mRoot, "movedT")->mLTNode = CurveNode(1);
    Bone(mRoot, "movedR")->mLRNode = CurveNode(2);
    Bone(mRoot, "scaled")->mLSNode = CurveNode(2);
    KQexAsfNode* lStill = Bone(mRoot, "still");
    lStill->mLTNode = CurveNode(0);
    lStill->mLRNode = CurveNode(0);
    Bone(Bone(mRoot, "parent"), "child")->mLength = 1.0;
    mRoot->RemoveEndSite();
    EXPECT_EQ(ChildNames(mRoot), "short negative movedT movedR parent");
}

TEST_F(KEndSiteTest, RemovesOneLevelPerCall)
{
    KQexAsfNode* lMiddle = Bone(Bone(mRoot, "upper"), "middle");
    Bone(lMiddle, "end");
    mRoot->RemoveEndSite();
    EXPECT_EQ(ChildNames(mRoot), "upper");
    EXPECT_EQ(ChildNames(mRoot->GetChild(0)), "middle");
    EXPECT_EQ(ChildNames(lMiddle), "");
    mRoot->RemoveEndSite();
    EXPECT_EQ(ChildNames(mRoot->GetChild(0)), "");
    mRoot->RemoveEndSite();
    EXPECT_EQ(ChildNames(mRoot), "");
    mRoot->RemoveEndSite(); // and never the bone it is called on
    EXPECT_EQ(mStage.mAsf->mRoot, mRoot);
}

} // namespace
