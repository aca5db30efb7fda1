#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

void ExpectNear(const double* pActual, const std::vector<double>& pExpected, double pTolerance = 1e-12)
{
    for (size_t lIter = 0; lIter < pExpected.size(); ++lIter)
    {
        EXPECT_NEAR(pActual[lIter], pExpected[lIter], pTolerance) << "component " << lIter;
    }
}

class KFramesTest : public testing::Test
{
protected:
    void TearDown() override { QexSdkDelete(mRoot); }

    KQexAsfNode* mRoot = Bone(nullptr, "root", {0, 1, 2, 5, 4, 3});
};

TEST_F(KFramesTest, TheRootsLocalsAreItsPositionAndAxis)
{
    mRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    mRoot->mDirectionV = KgeTVector(0.0, 1.0, 0.0);
    mRoot->mLength = 7.0;
    SetAxis(mRoot, {10.0, 20.0, 30.0});
    mRoot->SetupPosition(false, false);
    ExpectNear(mRoot->mLT.mData, {1.0, 2.0, 3.0}, 0.0);
    ExpectNear(mRoot->mLR.mData, {10.0, 20.0, 30.0});
    ExpectNear(mRoot->mPositionV.mData, {1.0, 2.0, 3.0}, 0.0);
}

TEST_F(KFramesTest, TheRootsAnglesAreNotReordered)
{
    // Its DOFs list another order; the host node's default pose still uses XYZ angles.
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        mRoot->mOrderBuf[3 + lIter] = 3 + lIter;
    }
    SetAxis(mRoot, {10.0, 20.0, 30.0});
    mRoot->SetupPosition(false, false);
    ExpectNear(mRoot->mLR.mData, {10.0, 20.0, 30.0});
}

TEST_F(KFramesTest, AChildStartsAtTheEndOfItsParent)
{
    mRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    KQexAsfNode* lA = Bone(mRoot, "a", {5}, {0.0, 4.0, 0.0});
    KQexAsfNode* lB = Bone(lA, "b", {5}, {0.0, 0.0, 5.0});
    mRoot->SetupPosition(false, false);
    ExpectNear(lA->mLT.mData, {1.0, 2.0, 3.0}, 0.0);
    ExpectNear(lB->mLT.mData, {0.0, 4.0, 0.0}, 0.0);
    ExpectNear(lB->mParentPositionV.mData, {0.0, 4.0, 0.0}, 0.0);
    ExpectNear(lB->mPositionV.mData, {0.0, 0.0, 5.0}, 0.0);
    for (const KQexAsfNode* lBone : {lA, lB})
    {
        for (double lAngle : lBone->mLR.mData)
        {
            EXPECT_EQ(lAngle, 0.0);
        }
    }
}

TEST_F(KFramesTest, TheOffsetIsInTheParentsAxisFrame)
{
    KQexAsfNode* lA = Bone(mRoot, "a", {5}, {1.0, 0.0, 0.0}, {0.0, 0.0, 90.0});
    KQexAsfNode* lB = Bone(lA, "b", {5}, {1.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
    mRoot->SetupPosition(false, false);
    ExpectNear(lB->mLT.mData, {0.0, -1.0, 0.0});
    ExpectNear(lB->mLR.mData, {0.0, 0.0, -90.0});
    EXPECT_EQ(lB->mParentAxisRM.mData[0][1], lA->mAxisRM.mData[0][1]);
    EXPECT_EQ(lB->mParentAxisRMInv.mData[0][1], lA->mAxisRMInv.mData[0][1]);
}

struct KOrderCase
{
    std::vector<int> mDofs;
    int              mCode;
};

class KFrameOrderTest : public testing::TestWithParam<KOrderCase>
{
};

/// Each angle is in the slot of its axis; composed in DOF order, the angles give the axis frame relative to the parent's.
TEST_P(KFrameOrderTest, AnglesAreInTheirSlots)
{
    KQexAsfNode* lRoot = Bone(nullptr, "root");
    KQexAsfNode* lBone = Bone(lRoot, "bone", GetParam().mDofs, {1.0, 0.0, 0.0}, {33.0, -47.0, 71.0});
    SetAxis(lRoot, {-20.0, 5.0, 60.0});
    lRoot->SetupPosition(false, false);

    KgeRMatrix lWanted;
    KgeMult(lWanted, lRoot->mAxisRMInv, lBone->mAxisRM);
    const int* lAxis = KmEulerAxis[GetParam().mCode];
    KgeRMatrix lGot;
    KgeSet(lGot, KgeRVector(lBone->mLR.mData[lAxis[0]], lBone->mLR.mData[lAxis[1]], lBone->mLR.mData[lAxis[2]]), GetParam().mCode);
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        for (int lColumn = 0; lColumn < 3; ++lColumn)
        {
            EXPECT_NEAR(lGot.mData[lRow][lColumn], lWanted.mData[lRow][lColumn], 1e-12);
        }
    }
    QexSdkDelete(lRoot);
}

INSTANTIATE_TEST_SUITE_P(DofLists, KFrameOrderTest,
                         testing::Values(KOrderCase{{5, 4, 3}, 0}, KOrderCase{{5, 3, 4}, 2}, KOrderCase{{4, 3, 5}, 4},
                                         KOrderCase{{4, 5, 3}, 6}, KOrderCase{{3, 5, 4}, 8}, KOrderCase{{3, 4, 5}, 10},
                                         KOrderCase{{0, 3, 1, 4, 2, 5}, 10}, KOrderCase{{}, 0}, KOrderCase{{0, 1}, 0}, KOrderCase{{5}, 10},
                                         KOrderCase{{4}, 8}, KOrderCase{{3}, 0}));

TEST_F(KFramesTest, WithBothFlagsBothLocalsAreZero)
{
    mRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    mRoot->mDirectionV = KgeTVector(0.0, 1.0, 0.0);
    mRoot->mLength = 7.0;
    mRoot->mParentPositionV = KgeTVector(9.0, 9.0, 9.0);
    KQexAsfNode* lA = Bone(mRoot, "a", {5}, {0.0, 4.0, 0.0}, {10.0, 0.0, 0.0});
    for (KQexAsfNode* lBone : {mRoot, lA})
    {
        lBone->mLT = KgeTVector(1.0, 1.0, 1.0);
        lBone->mLR = KgeRVector(1.0, 1.0, 1.0);
        SetAxis(lBone, {10.0, 20.0, 30.0});
    }
    mRoot->SetupPosition(true, true);
    for (const KQexAsfNode* lBone : {mRoot, lA})
    {
        ExpectNear(lBone->mLT.mData, {0.0, 0.0, 0.0}, 0.0);
        ExpectNear(lBone->mLR.mData, {0.0, 0.0, 0.0}, 0.0);
        EXPECT_EQ(lBone->mParentAxisRM.mData[0][0], 1.0); // unchanged
    }
    ExpectNear(mRoot->mPositionV.mData, {0.0, 7.0, 0.0}, 0.0); // only in this case from direction and length
    ExpectNear(mRoot->mParentPositionV.mData, {0.0, 0.0, 0.0}, 0.0);
    ExpectNear(lA->mParentPositionV.mData, {0.0, 7.0, 0.0}, 0.0);
    ExpectNear(lA->mPositionV.mData, {0.0, 4.0, 0.0}, 0.0);
}

struct KFlagCase
{
    bool mOffset;
    bool mPreRotation;
};

class KFrameFlagsTest : public testing::TestWithParam<KFlagCase>
{
};

TEST_P(KFrameFlagsTest, ATrueFlagLeavesItsValueUnchanged)
{
    const auto [lOffset, lPreRotation] = GetParam();
    KQexAsfNode* lRoot = Bone(nullptr, "root");
    KQexAsfNode* lA = Bone(lRoot, "a", {5}, {0.0, 4.0, 0.0}, {10.0, 0.0, 0.0});
    lRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    SetAxis(lRoot, {10.0, 20.0, 30.0});
    for (KQexAsfNode* lBone : {lRoot, lA})
    {
        lBone->mLT = KgeTVector(77.0, 77.0, 77.0);
        lBone->mLR = KgeRVector(88.0, 88.0, 88.0);
    }
    lRoot->SetupPosition(lOffset, lPreRotation);
    for (const KQexAsfNode* lBone : {lRoot, lA})
    {
        EXPECT_EQ(lBone->mLT.mData[0] == 77.0, lOffset);
        EXPECT_EQ(lBone->mLR.mData[0] == 88.0, lPreRotation);
    }
    EXPECT_EQ(lA->mParentAxisRM.mData[0][1], lRoot->mAxisRM.mData[0][1]);
    QexSdkDelete(lRoot);
}

INSTANTIATE_TEST_SUITE_P(Flags, KFrameFlagsTest, testing::Values(KFlagCase{false, false}, KFlagCase{true, false}, KFlagCase{false, true}));

std::vector<double> Frames(const std::vector<KQexAsfNode*>& pBones)
{
    std::vector<double> lFrames;
    for (const KQexAsfNode* lBone : pBones)
    {
        for (const KgeTVector* lVector : {&lBone->mPositionV, &lBone->mParentPositionV, &lBone->mLT})
        {
            lFrames.insert(lFrames.end(), lVector->mData, lVector->mData + 3);
        }
        lFrames.insert(lFrames.end(), lBone->mLR.mData, lBone->mLR.mData + 3);
        for (const KgeRMatrix* lMatrix : {&lBone->mParentAxisRM, &lBone->mParentAxisRMInv})
        {
            for (const double(&lRow)[4] : lMatrix->mData)
            {
                lFrames.insert(lFrames.end(), lRow, lRow + 4);
            }
        }
    }
    return lFrames;
}

TEST(KFramesMemoryTest, FramesAreTheSameWithoutMemory)
{
    for (const EShape lShape : {eCHAIN, eFAN, eCOMB, eRANDOM})
    {
        const std::vector<KQexAsfNode*> lBones = RandomBones(lShape, 200, 7, true);
        lBones[0]->SetupPosition(false, false);
        const std::vector<double> lExpected = Frames(lBones);
        for (long lNumber = 0; lNumber < 4; ++lNumber)
        {
            for (size_t i = 1; i < lBones.size(); ++i)
            {
                lBones[i]->mPositionV.Init();
                lBones[i]->mParentAxisRM.Init();
                lBones[i]->mLR.Init();
            }
            KMemoryWatch lWatch;
            lWatch.FailAfter(lNumber);
            lBones[0]->SetupPosition(false, false);
            EXPECT_EQ(Frames(lBones), lExpected) << kShapeNames[lShape] << ", " << lNumber << " allocations";
            EXPECT_EQ(lWatch.GetBlocks(), 0U);
        }
        QexSdkDelete(lBones[0]);
    }
}

} // namespace
