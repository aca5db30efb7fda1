#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/memorywatch.h>
#include <tests/support/smallstack.h>

#include <gtest/gtest.h>

#include <cstring>
#include <map>

using namespace qexsdk;
using namespace qextest;

namespace
{

class KImportTest : public testing::Test
{
protected:
    KQexNode* Import(bool pSetLimits = false, bool pOffset = false, bool pPreRotation = false)
    {
        mStage.mAsf->mRoot->SetupPosition(pOffset, pPreRotation);
        return mStage.mAsf->ASFToQEX(mStage.mScene, "take", pSetLimits, pOffset, pPreRotation);
    }

    KScenePair   mStage;
    KQexAsfNode* mRoot = mStage.mAsf->mRoot = Bone(nullptr, "root", {0, 1, 2, 5, 4, 3});
};

TEST_F(KImportTest, AChildlessRootWithALengthBecomesTwoNodes)
{
    mRoot->mDirectionV = KgeTVector(0.0, 1.0, 0.0);
    mRoot->mLength = 5.0;
    EXPECT_EQ(NodeTree(Import()), "root(root_End)");
}

TEST_F(KImportTest, OnlyLeavesWithALengthGetAnEnd)
{
    mRoot->mLength = 5.0;
    Bone(mRoot, "long", {5}, {0.0, 3.0, 0.0});
    Bone(mRoot, "none");
    Bone(mRoot, "negative")->mLength = -1.0;
    Bone(Bone(mRoot, "inner", {5}, {0.0, 3.0, 0.0}), "leaf", {5}, {0.0, 1e-12, 0.0});
    KQexNode* lNode = Import();
    EXPECT_EQ(NodeTree(lNode), "root(long(long_End) none negative inner(leaf(leaf_End)))");
    EXPECT_EQ(lNode->GetParent(), nullptr);
    EXPECT_EQ(mStage.mScene->GetRootNode()->GetChildCount(false), 0);
}

TEST_F(KImportTest, EveryNodeIsAJointOfASkeleton)
{
    Bone(mRoot, "leaf", {5}, {0.0, 3.0, 0.0});
    KQexNode* lTop = Import();
    for (KQexNode* lNode = lTop; lNode != nullptr; lNode = lNode->GetNextInTree(lTop))
    {
        ASSERT_TRUE(lNode->GetSkeleton());
        EXPECT_EQ(static_cast<int>(lNode->GetSkeleton()->GetSkeletonType()), 2);
        EXPECT_STREQ(lNode->GetSkeleton()->GetName(), "");
    }
}

TEST_F(KImportTest, TheEndIsInTheBonesOwnFrame)
{
    Bone(mRoot, "leaf", {5}, {0.0, 3.0, 0.0}, {0.0, 0.0, 90.0});
    for (bool lOffset : {false, true})
    {
        KQexNode*         lEnd = Import(false, lOffset)->FindChild("leaf_End", true, false);
        const KQexVector4 lEndOffset = lOffset ? lEnd->GetRotationOffset() : KQexVector4(lEnd->mLocalTranslation.Get());
        const KQexVector4 lOther = lOffset ? KQexVector4(lEnd->mLocalTranslation.Get()) : lEnd->GetRotationOffset();
        EXPECT_NEAR(lEndOffset[0], 3.0, 1e-12);
        EXPECT_NEAR(lEndOffset[1], 0.0, 1e-12);
        EXPECT_EQ(lOther.Length(), 0.0);
        EXPECT_FALSE(lEnd->GetRotationActive());
        EXPECT_EQ(lEnd->mLocalTranslation.GetCurveNode(false, "take"), nullptr);
    }
}

TEST_F(KImportTest, TheLongestNameGetsItsSuffix)
{
    std::memset(mRoot->mName, 'n', 255);
    mRoot->mLength = 1.0;
    EXPECT_EQ(std::string(Import()->GetChild(0)->GetName()), std::string(255, 'n') + "_End");
}

TEST_F(KImportTest, LimitsAreSetOnRequestOnly)
{
    KQexAsfNode* lBone = Bone(mRoot, "bone");
    lBone->mLimitsActive[5][0] = true;
    lBone->mLimitsBuf[5][0] = -20.0;
    EXPECT_FALSE(Import(false, true, true)->GetChild(0)->GetLimits().GetRotationLimitActive());
    EXPECT_TRUE(Import(true, true, true)->GetChild(0)->GetLimits().GetRotationLimitActive());
}

TEST_F(KImportTest, NoRootGivesNoNode)
{
    KQexAsfScene lEmpty;
    EXPECT_EQ(lEmpty.ASFToQEX(mStage.mScene, "take", true, true, true), nullptr);
    EXPECT_TRUE(lEmpty.MergeASFToQEX(mStage.mScene, mStage.mScene->GetRootNode(), "take", true, true, true));
    EXPECT_EQ(mStage.mScene->GetRootNode()->GetChildCount(false), 0);
}

/// Memory runs out after N allocations, for every N: the import returns null and leaves nothing in the scene, or succeeds.
TEST_F(KImportTest, WithoutMemoryNothingStays)
{
    Bone(Bone(mRoot, "a", {5}, {1.0, 0.0, 0.0}), "b", {5}, {0.0, 3.0, 0.0});
    mRoot->SetupPosition(false, false);
    mStage.mScene->CreateAnimStack("take");
    const int lBefore = mStage.mScene->GetObjectCount();
    for (long lFail = 0; lFail < 1000; ++lFail)
    {
        // A failed import destroyed the curves with its nodes.
        mRoot->CreateDataFromDOF(mStage.mScene);
        KMemoryWatch lWatch;
        lWatch.FailAfter(lFail);
        KQexNode* lNode = mStage.mAsf->ASFToQEX(mStage.mScene, "take", true, true, true);
        lWatch.FailAfter(-1);
        if (lNode != nullptr)
        {
            EXPECT_EQ(NodeTree(lNode), "root(a(b(b_End)))");
            EXPECT_GT(lFail, 20);
            lNode->Destroy(true);
            return;
        }
        mRoot->mOrderCount = 0;
        for (KQexAsfNode* lBone : {mRoot, mRoot->GetChild(0), mRoot->GetChild(0)->GetChild(0)})
        {
            const int lCount = lBone == mRoot ? 6 : 1;
            lBone->mOrderCount = 0;
            lBone->CreateDataFromDOF(mStage.mScene);
            lBone->mOrderCount = lCount;
        }
        EXPECT_EQ(mStage.mScene->GetObjectCount(), lBefore) << "after " << lFail;
    }
    FAIL() << "never succeeded";
}

struct KImportFlags
{
    bool mOffset;
    bool mPreRotation;
};

class KImportPropertyTest : public testing::TestWithParam<KImportFlags>
{
protected:
    static std::map<std::string, KQexVector4> Positions(const KScenePair& pStage, KQexNode* pTop, KTime pTime)
    {
        std::map<std::string, KQexVector4> lPositions;
        for (KQexNode* lNode = pTop; lNode != nullptr; lNode = lNode->GetNextInTree(pTop))
        {
            lPositions[lNode->GetName()] = pStage.mScene->GetEvaluator()->GetNodeGlobalTransform(lNode, pTime).GetT();
        }
        return lPositions;
    }

    /// Node positions at the second of two random frames of a random skeleton. The motion depends on the seed alone, not on the flags.
    static std::map<std::string, KQexVector4> MovedPositions(unsigned int pSeed, bool pRemoveDummy, const KImportFlags& pFlags)
    {
        KScenePair                      lStage;
        const std::vector<KQexAsfNode*> lBones = RandomBones(eRANDOM, 40, pSeed, true);
        std::vector<KQexAsfNode*>       lSampled;
        for (KQexAsfNode* lBone : lBones)
        {
            // With pre-rotations, the angles of a repeated rotation axis are summed, which changes the pose.
            if (lBone->mOrderCount > 0)
            {
                const int kDofs[] = {5, 3, 4};
                std::memcpy(lBone->mOrderBuf, kDofs, sizeof(kDofs));
                lBone->mOrderCount = 3;
                lSampled.push_back(lBone);
            }
        }
        KQexAsfNode* lRoot = lStage.mAsf->mRoot = lBones[0];
        lRoot->mPositionV.Init(); // with both flags it would be lost
        lRoot->SetupPosition(pFlags.mOffset, pFlags.mPreRotation);
        if (pRemoveDummy)
        {
            lRoot->RemoveDummy(pFlags.mOffset, pFlags.mPreRotation);
        }
        lRoot->CreateDataFromDOF(lStage.mScene);
        std::mt19937                           lRandom(pSeed);
        std::uniform_real_distribution<double> lAngle(-60.0, 60.0);
        for (long long lFrame = 0; lFrame < 2; ++lFrame)
        {
            for (KQexAsfNode* lBone : lSampled)
            {
                const double lValues[3] = {lAngle(lRandom), lAngle(lRandom), lAngle(lRandom)};
                lBone->AddSampleFromDOF(lValues, KTime(lFrame), 1.0, 1.0, pFlags.mOffset, pFlags.mPreRotation);
            }
        }
        lRoot->StopSamplingData();
        KQexNode* lTop = lStage.mAsf->ASFToQEX(lStage.mScene, "take", true, pFlags.mOffset, pFlags.mPreRotation);
        return Positions(lStage, lTop, KTime(1));
    }
};

/// Flags and clean-up decide in which values the frames and offsets are stored; positions stay the same.
TEST_P(KImportPropertyTest, PositionsDoNotDependOnTheFlags)
{
    for (unsigned int lSeed = 1; lSeed <= 10; ++lSeed)
    {
        const std::map<std::string, KQexVector4> lPlain = MovedPositions(lSeed, false, {false, false});
        for (bool lRemoveDummy : {false, true})
        {
            const std::map<std::string, KQexVector4> lPositions = MovedPositions(lSeed, lRemoveDummy, GetParam());
            EXPECT_EQ(lPositions.size() < lPlain.size(), lRemoveDummy);
            for (const auto& [lName, lPosition] : lPositions)
            {
                for (int lIter = 0; lIter < 3; ++lIter)
                {
                    if (lPlain.count(lName)) // clean-up may turn a bone into a leaf, which gets an end node
                    {
                        EXPECT_NEAR(lPosition[lIter], lPlain.at(lName)[lIter], 1e-5) << lName << " seed " << lSeed;
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Flags, KImportPropertyTest,
                         testing::Values(KImportFlags{false, false}, KImportFlags{true, false}, KImportFlags{false, true},
                                         KImportFlags{true, true}));

class KLargeImportTest : public testing::TestWithParam<EShape>
{
};

TEST_P(KLargeImportTest, FitsInASmallStack)
{
    RunWithStackSize(kStackSizes[1],
                     [&]
                     {
                         KScenePair lStage;
                         lStage.mAsf->mRoot = RandomBones(GetParam(), 100000, 3, false)[0];
                         lStage.mAsf->mRoot->SetupPosition(false, true);
                         lStage.mAsf->mRoot->CreateDataFromDOF(lStage.mScene);
                         lStage.mAsf->mRoot->StopSamplingData();
                         KQexNode* lTop = lStage.mAsf->ASFToQEX(lStage.mScene, "take", true, false, true);
                         ASSERT_TRUE(lTop);
                         EXPECT_GT(lTop->GetChildCount(true), 99999);
                         KQexAsfScene lBack;
                         EXPECT_TRUE(lBack.QEXToASF(lTop, true, KQexVector4(1.0, 1.0, 1.0), false));
                         EXPECT_TRUE(lBack.mRoot->Find("b99999"));
                     });
}

INSTANTIATE_TEST_SUITE_P(Shapes, KLargeImportTest, testing::Values(eCHAIN, eFAN, eCOMB, eRANDOM),
                         [](const testing::TestParamInfo<EShape>& pInfo) { return std::string(kShapeNames[pInfo.param]); });

} // namespace
