#include <kbaselib/kmath/keulerorder.h>

#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

#include <array>

using namespace qexsdk;
using namespace qextest;

namespace
{

using KBounds = std::array<double, 3>;

KBounds Bounds(const KQexVector4& pValue)
{
    EXPECT_EQ(pValue[3], 0.0);
    return {pValue[0], pValue[1], pValue[2]};
}

std::string Flags(const KQexLimits& pLimits, bool pMin)
{
    bool lFlags[3];
    if (pMin)
    {
        pLimits.GetLimitMinActive(lFlags[0], lFlags[1], lFlags[2]);
    }
    else
    {
        pLimits.GetLimitMaxActive(lFlags[0], lFlags[1], lFlags[2]);
    }
    return std::string(lFlags[0] ? "x" : "-") + (lFlags[1] ? "y" : "-") + (lFlags[2] ? "z" : "-");
}

class KLimitsTest : public testing::Test
{
protected:
    /// Every row holds (-10 × (code + 1), 10 × (code + 1)); nothing is active yet.
    KLimitsTest()
    {
        for (int lRow = 0; lRow < 6; ++lRow)
        {
            mBone.mLimitsBuf[lRow][0] = -10.0 * (lRow + 1);
            mBone.mLimitsBuf[lRow][1] = 10.0 * (lRow + 1);
        }
    }

    void Activate(int pCode)
    {
        mBone.mLimitsActive[pCode][0] = true;
        mBone.mLimitsActive[pCode][1] = true;
    }

    KScenePair        mStage;
    KQexAsfNode       mBone;
    KQexNode*         mNode = KQexNode::Create(mStage.mScene, "node");
    KQexNodeLimits&   mLimits = mNode->GetLimits();
    const KQexLimits& mT = mLimits.mTranslationLimits;
    const KQexLimits& mR = mLimits.mRotationLimits;
};

TEST_F(KLimitsTest, RotationLimitsNeedPreRotations)
{
    for (int lCode : {3, 4, 5})
    {
        Activate(lCode);
    }
    for (bool lOffset : {false, true})
    {
        mBone.SetLimits(mNode, lOffset, false);
    }
    EXPECT_FALSE(mR.GetActive());
    EXPECT_EQ(Flags(mR, true), "---");
    mBone.SetLimits(mNode, true, true);
    EXPECT_TRUE(mR.GetActive());
    EXPECT_FALSE(mT.GetActive());
    EXPECT_EQ(Bounds(mR.GetLimitMin()), (KBounds{-60.0, -50.0, -40.0}));
    EXPECT_EQ(Bounds(mR.GetLimitMax()), (KBounds{60.0, 50.0, 40.0}));
    EXPECT_EQ(Flags(mR, true) + Flags(mR, false), "xyzxyz");
}

TEST_F(KLimitsTest, TranslationLimitsNeedOffsets)
{
    for (int lCode : {0, 1, 2})
    {
        Activate(lCode);
    }
    for (bool lPreRotation : {false, true})
    {
        mBone.SetLimits(mNode, false, lPreRotation);
    }
    EXPECT_FALSE(mT.GetActive());
    mBone.SetLimits(mNode, true, false);
    EXPECT_TRUE(mT.GetActive());
    EXPECT_FALSE(mR.GetActive());
    EXPECT_EQ(Bounds(mT.GetLimitMin()), (KBounds{-10.0, -20.0, -30.0}));
    EXPECT_EQ(Bounds(mT.GetLimitMax()), (KBounds{10.0, 20.0, 30.0}));
    EXPECT_FALSE(mLimits.GetScalingLimitActive());
}

TEST_F(KLimitsTest, AMinimumOnRzAloneIsTheZComponent)
{
    mBone.mLimitsActive[3][0] = true;
    mBone.SetLimits(mNode, true, true);
    EXPECT_TRUE(mR.GetActive());
    EXPECT_EQ(Bounds(mR.GetLimitMin()), (KBounds{0.0, 0.0, -40.0}));
    EXPECT_EQ(Bounds(mR.GetLimitMax()), (KBounds{0.0, 0.0, 0.0}));
    EXPECT_EQ(Flags(mR, true) + Flags(mR, false), "--z---");
}

TEST_F(KLimitsTest, AMaximumOnTyAloneIsTheYComponent)
{
    mBone.mLimitsActive[1][1] = true;
    mBone.SetLimits(mNode, true, true);
    EXPECT_TRUE(mT.GetActive());
    EXPECT_EQ(Bounds(mT.GetLimitMin()), (KBounds{0.0, 0.0, 0.0}));
    EXPECT_EQ(Bounds(mT.GetLimitMax()), (KBounds{0.0, 20.0, 0.0}));
    EXPECT_EQ(Flags(mT, true) + Flags(mT, false), "----y-");
}

TEST_F(KLimitsTest, WithoutActiveBoundsNothingChanges)
{
    mLimits.mRotationLimits.SetLimitMin(KQexVector4(7.0, 7.0, 7.0));
    mBone.SetLimits(mNode, true, true);
    EXPECT_FALSE(mT.GetActive() || mR.GetActive());
    EXPECT_EQ(Bounds(mR.GetLimitMin()), (KBounds{7.0, 7.0, 7.0}));
}

TEST_F(KLimitsTest, TheInvalidFlagIsIgnored)
{
    Activate(5);
    mBone.SetInvalidLimits(true);
    mBone.SetLimits(mNode, true, true);
    EXPECT_TRUE(mR.GetActive());
}

struct KDofsCase
{
    std::vector<int> mDofs;
    ERotationOrder   mOrder;
};

class KDofsTest : public testing::TestWithParam<KDofsCase>
{
};

TEST_P(KDofsTest, TheListSetsTheOrderAndRotationIsActive)
{
    KScenePair   lStage;
    KQexNode*    lNode = KQexNode::Create(lStage.mScene, "node");
    KQexAsfNode* lBone = lStage.mAsf->mRoot = Bone(nullptr, "bone", GetParam().mDofs);
    lBone->SetDoFs(lNode, false, false);
    EXPECT_TRUE(lNode->GetRotationActive());
    EXPECT_EQ(lNode->GetRotationOrder(), GetParam().mOrder);
}

INSTANTIATE_TEST_SUITE_P(DofLists, KDofsTest,
                         testing::Values(KDofsCase{{5, 4, 3}, eEULER_XYZ}, KDofsCase{{5, 3, 4}, eEULER_XZY},
                                         KDofsCase{{4, 3, 5}, eEULER_YZX}, KDofsCase{{4, 5, 3}, eEULER_YXZ},
                                         KDofsCase{{3, 5, 4}, eEULER_ZXY}, KDofsCase{{3, 4, 5}, eEULER_ZYX}, KDofsCase{{}, eEULER_XYZ},
                                         KDofsCase{{0, 1, 2}, eEULER_XYZ}, KDofsCase{{5}, eEULER_ZYX}));

class KDofFramesTest : public testing::Test
{
protected:
    KScenePair   mStage;
    KQexNode*    mNode = KQexNode::Create(mStage.mScene, "node");
    KQexAsfNode* mRoot = mStage.mAsf->mRoot = Bone(nullptr, "root");
};

TEST_F(KDofFramesTest, TheRootsOffsetIsItsOwnPosition)
{
    mRoot->mPositionV = KgeTVector(1.0, 2.0, 3.0);
    mRoot->mParentPositionV = KgeTVector(7.0, 7.0, 7.0);
    mRoot->SetDoFs(mNode, false, false);
    EXPECT_EQ(mRoot->mParentPositionV.mData[0], 7.0);
    EXPECT_EQ(Bounds(mNode->GetRotationOffset()), (KBounds{0.0, 0.0, 0.0}));
    mRoot->SetDoFs(mNode, true, false);
    EXPECT_EQ(mRoot->mParentPositionV.mData[0], 1.0);
    EXPECT_EQ(Bounds(mNode->GetRotationOffset()), (KBounds{1.0, 2.0, 3.0}));
}

TEST_F(KDofFramesTest, EachFlagSetsItsOwnValue)
{
    SetAxis(mRoot, {0.0, 0.0, 90.0});
    KQexAsfNode* lBone = Bone(mRoot, "bone", {5}, {1.0, 0.0, 0.0}, {0.0, 0.0, 120.0});
    lBone->mParentPositionV = KgeTVector(0.0, 4.0, 0.0);
    for (bool lOffset : {false, true})
    {
        for (bool lPreRotation : {false, true})
        {
            KQexNode* lNode = KQexNode::Create(mStage.mScene, "bone");
            lBone->SetDoFs(lNode, lOffset, lPreRotation);
            EXPECT_NEAR(lNode->GetRotationOffset()[0], lOffset ? 4.0 : 0.0, 1e-12);
            EXPECT_NEAR(lNode->GetPreRotation()[2], lPreRotation ? 30.0 : 0.0, 1e-12);
            EXPECT_EQ(lNode->GetRotationOffset()[3], 0.0);
            EXPECT_EQ(lNode->GetPreRotation()[3], 0.0);
        }
    }
    EXPECT_EQ(lBone->mParentPositionV.mData[1], 4.0);
}

} // namespace
