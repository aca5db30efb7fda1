#include <kbaselib/kmath/keulerorder.h>

#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/assertwatch.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Sets the process-wide curve filters; the destructor restores their defaults.
struct KFilterSettings
{
    KFilterSettings(int pFilter, bool pReducer)
    {
        KFCURVE_SetRotationFilterToApply(pFilter);
        KFCURVE_SetUseConstantKeyReducer(pReducer);
    }
    ~KFilterSettings()
    {
        KFCURVE_SetRotationFilterToApply(0);
        KFCURVE_SetUseConstantKeyReducer(false);
    }
};

std::vector<float> Values(const KQexAnimCurve* pCurve)
{
    std::vector<float> lValues;
    for (int lIter = 0; pCurve != nullptr && lIter < pCurve->GetKeyCount(); ++lIter)
    {
        lValues.push_back(pCurve->GetValue(lIter));
    }
    return lValues;
}

class KSamplingTest : public testing::Test
{
protected:
    KQexAsfNode* Root(const std::vector<int>& pDofs)
    {
        mStage.mAsf->mRoot = Bone(nullptr, "root", pDofs);
        return mStage.mAsf->mRoot;
    }

    /// Adds one frame per tick, with both factors 1.
    static void Sample(KQexAsfNode* pBone, const std::vector<std::vector<double>>& pFrames, bool pOffset, bool pPreRotation)
    {
        for (size_t lIter = 0; lIter < pFrames.size(); ++lIter)
        {
            EXPECT_TRUE(
                pBone->AddSampleFromDOF(pFrames[lIter].data(), KTime(static_cast<long long>(lIter)), 1.0, 1.0, pOffset, pPreRotation));
        }
    }

    KScenePair mStage;
};

TEST_F(KSamplingTest, CurvesAreCreatedForTheDofs)
{
    KQexAsfNode* lRoot = Root({2});
    KQexAsfNode* lTurn = Bone(lRoot, "turn", {4});
    KQexAsfNode* lBoth = Bone(lTurn, "both", {5, 0});
    KQexAsfNode* lNone = Bone(lTurn, "none", {});
    KQexAsfNode* lOdd = Bone(lNone, "odd", {6, -1, 99});
    EXPECT_TRUE(lRoot->CreateDataFromDOF(mStage.mScene));
    for (KQexAsfNode* lBone : {lRoot, lTurn, lBoth, lNone, lOdd})
    {
        EXPECT_EQ(lBone->mScene, mStage.mScene);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_EQ(lBone->mLTData[lIter] != nullptr, lBone == lRoot || lBone == lBoth);
            EXPECT_EQ(lBone->mLRData[lIter] != nullptr, lBone == lTurn || lBone == lBoth);
        }
    }
    EXPECT_STREQ(lBoth->mLTData[0]->GetName(), "both_tx");
    EXPECT_STREQ(lBoth->mLTData[1]->GetName(), "both_ty");
    EXPECT_STREQ(lBoth->mLTData[2]->GetName(), "both_tz");
    EXPECT_STREQ(lBoth->mLRData[0]->GetName(), "both_rx");
    EXPECT_STREQ(lBoth->mLRData[1]->GetName(), "both_ry");
    EXPECT_STREQ(lBoth->mLRData[2]->GetName(), "both_rz");
    EXPECT_EQ(lBoth->mLRData[0]->GetKeyCount(), 0);
}

TEST_F(KSamplingTest, EachCurveOfAGroupGetsItsKeysWithoutTheOthers)
{
    KQexAsfNode* lRoot = Root({0, 1, 2, 5, 4, 3});
    for (int lKept = 0; lKept < 3; ++lKept)
    {
        lRoot->CreateDataFromDOF(mStage.mScene);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            for (KQexAnimCurve** lGroup : {lRoot->mLTData, lRoot->mLRData})
            {
                if (lIter != lKept)
                {
                    lGroup[lIter]->Destroy();
                    lGroup[lIter] = nullptr;
                }
            }
        }
        Sample(lRoot, {{10.0, 11.0, 12.0, 1.0, 0.0, 0.0}}, false, false);
        EXPECT_EQ(Values(lRoot->mLTData[lKept]), std::vector<float>{static_cast<float>(10 + lKept)});
        EXPECT_EQ(Values(lRoot->mLRData[lKept]), std::vector<float>{lKept == 0 ? 1.0F : 0.0F});
    }
}

TEST_F(KSamplingTest, CodesAfterTheDofCountAreIgnored)
{
    KQexAsfNode* lRoot = Root({1, 5});
    lRoot->mOrderBuf[2] = 0;
    lRoot->mOrderBuf[3] = 4;
    lRoot->CreateDataFromDOF(mStage.mScene);
    Sample(lRoot, {{3.0, 20.0, 7.0, 50.0, 9.0, 9.0}}, false, false);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_EQ(Values(lRoot->mLTData[lIter]), std::vector<float>{lIter == 1 ? 3.0F : 0.0F});
        ASSERT_EQ(Values(lRoot->mLRData[lIter]).size(), 1U);
        EXPECT_NEAR(Values(lRoot->mLRData[lIter])[0], lIter == 0 ? 20.0F : 0.0F, 1e-5F);
    }
}

TEST_F(KSamplingTest, TheLongestNameIsNotCut)
{
    KQexAsfNode* lRoot = Root({5});
    std::memset(lRoot->mName, 'n', 255);
    EXPECT_TRUE(lRoot->CreateDataFromDOF(mStage.mScene));
    EXPECT_EQ(std::string(lRoot->mLRData[2]->GetName()), std::string(255, 'n') + "_rz");
}

TEST_F(KSamplingTest, CreatingCurvesAgainDestroysTheOldOnes)
{
    KQexAsfNode* lRoot = Root({0, 5});
    lRoot->CreateDataFromDOF(mStage.mScene);
    const int lObjects = mStage.mScene->GetObjectCount();
    Sample(lRoot, {{1.0, 2.0}}, false, false);
    lRoot->CreateDataFromDOF(mStage.mScene);
    EXPECT_EQ(mStage.mScene->GetObjectCount(), lObjects);
    EXPECT_EQ(lRoot->mLRData[0]->GetKeyCount(), 0);
    lRoot->mOrderCount = 0;
    lRoot->CreateDataFromDOF(mStage.mScene);
    EXPECT_EQ(mStage.mScene->GetObjectCount(), lObjects - 6);
}

TEST_F(KSamplingTest, WithoutMemoryThereIsNoPartialGroup)
{
    KQexAsfNode* lRoot = Root({0, 5});
    for (long lFail = 0; lFail < 100; ++lFail)
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(lFail);
        const bool lDone = lRoot->CreateDataFromDOF(mStage.mScene);
        EXPECT_EQ(!lRoot->mLTData[0], !lRoot->mLTData[2]);
        EXPECT_EQ(!lRoot->mLRData[0], !lRoot->mLRData[2]);
        EXPECT_EQ(lDone, lRoot->mLTData[0] && lRoot->mLRData[0]);
        lRoot->mOrderCount = 0;
        lRoot->CreateDataFromDOF(mStage.mScene);
        lRoot->mOrderCount = 2;
        EXPECT_EQ(lWatch.GetBlocks(), 0U);
        if (lDone)
        {
            return;
        }
    }
    FAIL() << "never succeeded";
}

struct KSampleKeysCase
{
    const char*         mWhat;
    std::vector<int>    mDofs;
    std::vector<double> mValues;
    bool                mOffset;
    bool                mPreRotation;
    double              mT[3];
    double              mR[3];
};

class KSampleKeyTest : public testing::TestWithParam<KSampleKeysCase>
{
};

/// The bone's axis is rotated 90 degrees about z, its parent's 90 degrees about x; its parent's end is at (1, 2, 3).
TEST_P(KSampleKeyTest, KeysOfOneFrame)
{
    const KSampleKeysCase& lCase = GetParam();
    KScenePair             lStage;
    KQexAsfNode*           lRoot = lStage.mAsf->mRoot = Bone(nullptr, "root", {}, {1.0, 2.0, 3.0}, {90.0, 0.0, 0.0});
    KQexAsfNode*           lBone = Bone(lRoot, "bone", lCase.mDofs, {0.0, 1.0, 0.0}, {0.0, 0.0, 90.0});
    KgeMult(lRoot->mPositionV, lRoot->mDirectionV, lRoot->mLength);
    lRoot->SetupPosition(false, false);
    lRoot->CreateDataFromDOF(lStage.mScene);
    lBone->AddSampleFromDOF(lCase.mValues.data(), KTime(5), 2.0, 10.0, lCase.mOffset, lCase.mPreRotation);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        if (lBone->mLTData[lIter] != nullptr)
        {
            EXPECT_NEAR(lBone->mLTData[lIter]->GetValue(0), lCase.mT[lIter], 1e-5) << "t" << lIter;
        }
        if (lBone->mLRData[lIter] != nullptr)
        {
            EXPECT_NEAR(lBone->mLRData[lIter]->GetValue(0), lCase.mR[lIter], 1e-5) << "r" << lIter;
            EXPECT_EQ(lBone->mLRData[lIter]->GetKey(0).GetTime().Get(), 5);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KSampleKeyTest,
    testing::Values(
        // Translation (2, 0, 0) in the bone's axis frame is (0, 2, 0); with the parent's end (1, 4, 3); in the parent's frame (1, 3, -4).
        KSampleKeysCase{"whole position", {0, 4}, {1.0, 0.0}, false, true, {1.0, 3.0, -4.0}, {0.0, 0.0, 0.0}},
        KSampleKeysCase{"displacement alone", {0, 4}, {1.0, 0.0}, true, true, {0.0, 0.0, -2.0}, {0.0, 0.0, 0.0}},
        KSampleKeysCase{"translations add up", {0, 2, 0}, {1.0, 1.0, 1.0}, true, true, {0.0, 2.0, -4.0}, {0.0, 0.0, 0.0}},
        KSampleKeysCase{"y alone", {1, 5}, {1.0, 0.0}, true, true, {-2.0, 0.0, 0.0}, {0.0, 0.0, 0.0}},
        KSampleKeysCase{"angles by axis", {3, 5, 4}, {1.0, 2.0, 3.0}, true, true, {}, {20.0, 30.0, 10.0}},
        KSampleKeysCase{"angles add up", {5, 5}, {1.0, 2.0}, true, true, {}, {30.0, 0.0, 0.0}},
        // The axis is Rz(90), the parent's inverse Rx(-90): the rest rotation is Rx(-90) Rz(90), decomposed in the order ZYX (z first).
        KSampleKeysCase{"axis folded in", {5}, {0.0}, true, false, {}, {-90.0, 0.0, 90.0}},
        KSampleKeysCase{"an unknown code uses up its value", {6, 5, -1, 4}, {7.0, 1.0, 7.0, 2.0}, true, true, {}, {10.0, 20.0, 0.0}}),
    [](const testing::TestParamInfo<KSampleKeysCase>& pInfo)
    {
        std::string lName;
        for (const char* lAt = pInfo.param.mWhat; *lAt; ++lAt)
        {
            lName += *lAt == ' ' ? '_' : *lAt;
        }
        return lName;
    });

TEST_F(KSamplingTest, TheRootsDisplacementHasNoParentFrame)
{
    KQexAsfNode* lRoot = Root({0, 1, 2});
    SetAxis(lRoot, {0.0, 0.0, 90.0});
    lRoot->mParentPositionV = KgeTVector(5.0, 6.0, 7.0);
    lRoot->CreateDataFromDOF(mStage.mScene);
    Sample(lRoot, {{1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}}, true, true);
    EXPECT_NEAR(lRoot->mLTData[1]->GetValue(0), 1.0, 1e-6);
    lRoot->CreateDataFromDOF(mStage.mScene);
    Sample(lRoot, {{1.0, 0.0, 0.0}}, false, true);
    EXPECT_NEAR(lRoot->mLTData[0]->GetValue(0), 5.0, 1e-6);
    EXPECT_NEAR(lRoot->mLTData[1]->GetValue(0), 7.0, 1e-6);
}

TEST_F(KSamplingTest, RxAloneFillsThreeCurves)
{
    KQexAsfNode* lRoot = Root({5});
    SetAxis(lRoot, {10.0, 20.0, 30.0});
    for (bool lPreRotation : {false, true})
    {
        lRoot->CreateDataFromDOF(mStage.mScene);
        Sample(lRoot, {{40.0}, {50.0}}, true, lPreRotation);
        EXPECT_FALSE(lRoot->mLTData[0]);
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_EQ(lRoot->mLRData[lIter]->GetKeyCount(), 2);
        }
        EXPECT_EQ(lRoot->mLRData[1]->GetValue(1) == 0.0F, lPreRotation);
        EXPECT_EQ(lRoot->mLRData[2]->GetValue(1) == 0.0F, lPreRotation);
    }
}

TEST_F(KSamplingTest, ASingleFrameIsNoMotion)
{
    KQexAsfNode* lRoot = Root({0, 5});
    KQexAsfNode* lChild = Bone(lRoot, "child", {5});
    lRoot->CreateDataFromDOF(mStage.mScene);
    const int lObjects = mStage.mScene->GetObjectCount();
    Sample(lRoot, {{1.0, 2.0}}, false, false);
    Sample(lChild, {{1.0}, {2.0}}, false, false);
    lRoot->StopSamplingData();
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_FALSE(lRoot->mLTData[lIter] || lRoot->mLRData[lIter]);
        EXPECT_TRUE(lChild->mLRData[lIter]);
    }
    EXPECT_EQ(mStage.mScene->GetObjectCount(), lObjects - 6);
}

TEST_F(KSamplingTest, OnlyTheFirstCurveIsCounted)
{
    KQexAsfNode* lRoot = Root({0});
    lRoot->CreateDataFromDOF(mStage.mScene);
    Sample(lRoot, {{1.0}, {2.0}}, false, false);
    lRoot->mLTData[1]->Clear();
    lRoot->StopSamplingData();
    ASSERT_TRUE(lRoot->mLTData[0]);
    lRoot->mLTData[0]->RemoveKey(0);
    lRoot->StopSamplingData();
    EXPECT_FALSE(lRoot->mLTData[0] || lRoot->mLTData[1] || lRoot->mLTData[2]);
}

TEST_F(KSamplingTest, TheRotationFilterIsApplied)
{
    for (int lFilter : {0, 1, 2, 3, -1})
    {
        const KFilterSettings lSettings(lFilter, false);
        KQexAsfNode*          lRoot = mStage.mAsf->mRoot ? mStage.mAsf->mRoot : Root({5, 4, 3});
        lRoot->CreateDataFromDOF(mStage.mScene);
        Sample(lRoot, {{170.0, 0.0, 0.0}, {-170.0, 0.0, 0.0}, {-150.0, 0.0, 0.0}}, true, true);
        lRoot->StopSamplingData();
        const bool               lIsUnrolled = lFilter == 1 || lFilter == 2;
        const std::vector<float> lGot = Values(lRoot->mLRData[0]);
        const std::vector<float> lPlain = {170.0F, -170.0F, -150.0F};
        ASSERT_EQ(lGot.size(), 3U);
        for (size_t lIter = 0; lIter < 3; ++lIter)
        {
            EXPECT_NEAR(lGot[lIter], lPlain[lIter] + (lIsUnrolled && lIter > 0 ? 360.0F : 0.0F), 1e-3) << "filter " << lFilter;
        }
    }
}

TEST_F(KSamplingTest, TheUnrollFilterGetsTheOrderCode)
{
    // XZY is code 2, whose flipped triple mirrors z; code 1, the ERotationOrder, would be another order.
    const KFilterSettings            lSettings(2, false);
    KQexAsfNode*                     lRoot = Root({5, 3, 4});
    std::vector<std::vector<double>> lFrames = {{10.0, 85.0, 20.0}, {-165.0, 88.0, -155.0}, {-160.0, 80.0, -150.0}};
    lRoot->CreateDataFromDOF(mStage.mScene);
    Sample(lRoot, lFrames, true, true);
    lRoot->StopSamplingData();
    KQexAsfNode lOther;
    std::memcpy(lOther.mOrderBuf, lRoot->mOrderBuf, sizeof(lOther.mOrderBuf));
    lOther.mOrderCount = 3;
    lOther.CreateDataFromDOF(mStage.mScene);
    Sample(&lOther, lFrames, true, true);
    KQexAnimCurveFilterUnroll lFilter;
    lFilter.SetRotationOrder(2);
    lFilter.Apply(lOther.mLRData, 3);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        EXPECT_EQ(Values(lRoot->mLRData[lIter]), Values(lOther.mLRData[lIter]));
    }
    EXPECT_NEAR(lRoot->mLRData[2]->GetValue(1), 92.0F, 1e-3);
}

/// In gimbal lock the two filters differ: 1 redistributes the outer angles so that they do not swing, 2 leaves a key that is nearest.
TEST_F(KSamplingTest, FilterOneIsTheGimbleKillerAndTwoUnrolls)
{
    const std::vector<float> lKeys[2] = {{30.0F, 30.0F, 30.0F}, {20.0F, 20.0F, 20.0F}}; // rx and rz without the swing
    for (int lFilter : {1, 2})
    {
        const KFilterSettings lSettings(lFilter, false);
        KQexAsfNode*          lRoot = mStage.mAsf->mRoot ? mStage.mAsf->mRoot : Root({3, 4, 5});
        lRoot->CreateDataFromDOF(mStage.mScene);
        Sample(lRoot, {{20.0, 80.0, 30.0}, {0.0, 90.0, 50.0}, {20.0, 80.0, 30.0}}, true, true);
        lRoot->StopSamplingData();
        EXPECT_EQ(Values(lRoot->mLRData[0]), lFilter == 1 ? lKeys[0] : (std::vector<float>{30.0F, 50.0F, 30.0F})) << lFilter;
        EXPECT_EQ(Values(lRoot->mLRData[1]), (std::vector<float>{80.0F, 90.0F, 80.0F})) << lFilter;
        EXPECT_EQ(Values(lRoot->mLRData[2]), lFilter == 1 ? lKeys[1] : (std::vector<float>{20.0F, 0.0F, 20.0F})) << lFilter;
    }
}

/// The rotation filters need keys at equal times, so the reducer, which removes some, comes after them.
TEST_F(KSamplingTest, TheReducerRunsAfterTheRotationFilter)
{
    for (int lFilter : {1, 2})
    {
        const KFilterSettings lSettings(lFilter, true);
        KQexAsfNode*          lRoot = mStage.mAsf->mRoot ? mStage.mAsf->mRoot : Root({5, 4, 3});
        lRoot->CreateDataFromDOF(mStage.mScene);
        Sample(lRoot, {{170.0, 0.0, 0.0}, {-180.0, 0.0, 0.0}, {-170.0, 0.0, 0.0}}, true, true);
        lRoot->StopSamplingData();
        EXPECT_EQ(Values(lRoot->mLRData[0]), (std::vector<float>{170.0F, 180.0F, 190.0F})) << lFilter;
        EXPECT_EQ(lRoot->mLRData[1]->GetKeyCount(), 2) << lFilter;
    }
}

TEST_F(KSamplingTest, TheReducerWorksOnBothGroups)
{
    for (bool lReducer : {false, true})
    {
        const KFilterSettings lSettings(0, lReducer);
        KQexAsfNode*          lRoot = mStage.mAsf->mRoot ? mStage.mAsf->mRoot : Root({0, 5});
        lRoot->CreateDataFromDOF(mStage.mScene);
        Sample(lRoot, {{1.0, 9.0}, {1.0, 9.0}, {1.0, 9.0}, {2.0, 8.0}}, true, true);
        lRoot->StopSamplingData();
        EXPECT_EQ(lRoot->mLTData[0]->GetKeyCount(), lReducer ? 3 : 4);
        EXPECT_EQ(lRoot->mLRData[0]->GetKeyCount(), lReducer ? 3 : 4);
    }
}

TEST_F(KSamplingTest, CurvesAreHandedOverOnce)
{
    KQexAsfNode* lRoot = Root({0, 5});
    KQexNode*    lNode = KQexNode::Create(mStage.mScene, "node");
    lRoot->mLT = KgeTVector(1.0, 2.0, 3.0);
    lRoot->mLR = KgeRVector(4.0, 5.0, 6.0);
    lRoot->CreateDataFromDOF(mStage.mScene);
    KQexAnimCurve* lCurve = lRoot->mLTData[1];
    EXPECT_TRUE(lRoot->SetKFCurves(lNode, "take"));
    KQexAnimCurveNode* lT = lNode->mLocalTranslation.GetCurveNode(false, "take");
    KQexAnimCurveNode* lR = lNode->mLocalRotation.GetCurveNode(false, "take");
    ASSERT_TRUE(lT && lR);
    EXPECT_EQ(lT->GetCurve(1), lCurve);
    EXPECT_STREQ(lR->GetCurve(2)->GetName(), "root_rz");
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        EXPECT_FALSE(lRoot->mLTData[lChannel] || lRoot->mLRData[lChannel]);
        EXPECT_EQ(lT->GetChannelValue<double>(lChannel, -1.0), 1.0 + lChannel);
        EXPECT_EQ(lR->GetChannelValue<double>(lChannel, -1.0), 4.0 + lChannel);
    }
    // A second time only the node's own values are written.
    lRoot->mLT = KgeTVector(7.0, 8.0, 9.0);
    EXPECT_TRUE(lRoot->SetKFCurves(lNode, "take"));
    EXPECT_EQ(lNode->mLocalTranslation.Get()[2], 9.0);
    EXPECT_EQ(lT->GetCurve(1), lCurve);
    EXPECT_EQ(lT->GetChannelValue<double>(2, -1.0), 3.0);
}

/// Curves that cannot be connected are not an out-of-memory failure: the node is created with its values and without the curves.
TEST_F(KSamplingTest, CurvesOfAnotherSceneStayWithTheBone)
{
    KQexAsfNode* lRoot = Root({5});
    KQexScene*   lOther = KQexScene::Create("other");
    lRoot->mLR = KgeRVector(4.0, 5.0, 6.0);
    lRoot->CreateDataFromDOF(mStage.mScene);
    KQexNode* lNode = lRoot->ASFToQEX(lOther, "take", false, false, false);
    ASSERT_NE(lNode, nullptr);
    EXPECT_EQ(lNode->mLocalRotation.Get()[1], 5.0);
    EXPECT_TRUE(lRoot->mLRData[0] && lRoot->mLRData[1] && lRoot->mLRData[2]);
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "take")->GetCurve(0), nullptr);
    // An existing curve is not destroyed for one that cannot replace it.
    KQexAnimCurve* lOld = KQexAnimCurve::Create(lOther, "old");
    ASSERT_TRUE(lNode->mLocalRotation.GetCurveNode(false, "take")->ConnectToChannel(lOld, 0));
    EXPECT_TRUE(lRoot->SetKFCurves(lNode, "take"));
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "take")->GetCurve(0), lOld);
    lOther->Destroy();
}

TEST_F(KSamplingTest, ExistingCurvesAreReplaced)
{
    KQexAsfNode* lRoot = Root({5});
    KQexNode*    lNode = KQexNode::Create(mStage.mScene, "node");
    lRoot->CreateDataFromDOF(mStage.mScene);
    lRoot->SetKFCurves(lNode, "take");
    const int lObjects = mStage.mScene->GetObjectCount();
    lRoot->CreateDataFromDOF(mStage.mScene);
    KQexAnimCurve* lNew = lRoot->mLRData[0];
    lRoot->SetKFCurves(lNode, "take");
    KQexAnimCurveNode* lR = lNode->mLocalRotation.GetCurveNode(false, "take");
    EXPECT_EQ(lR->GetCurve(0), lNew);
    EXPECT_EQ(lR->GetCurveCount(0), 1);
    EXPECT_EQ(mStage.mScene->GetObjectCount(), lObjects);
}

TEST_F(KSamplingTest, WithoutCurvesOnlyValuesAreWritten)
{
    KQexAsfNode* lRoot = Root({5});
    KQexNode*    lNode = KQexNode::Create(mStage.mScene, "node");
    lRoot->mLT = KgeTVector(1.0, 2.0, 3.0);
    lRoot->mLR = KgeRVector(4.0, 5.0, 6.0);
    lRoot->SetKFCurves(lNode, "take");
    EXPECT_EQ(lNode->mLocalTranslation.Get()[1], 2.0);
    EXPECT_EQ(lNode->mLocalRotation.Get()[1], 5.0);
    EXPECT_EQ(mStage.mScene->FindAnimStack("take"), nullptr);
}

/// Runs in a process of its own, because each assertion is reported once per process.
[[noreturn]] void SetCurvesWithoutTake()
{
    KAssertWatch lWatch;
    bool         lKept = true;
    {
        KScenePair   lStage;
        KQexAsfNode* lRoot = lStage.mAsf->mRoot = Bone(nullptr, "root", {0, 5});
        KQexNode*    lNode = KQexNode::Create(lStage.mScene, "node");
        lRoot->mLR = KgeRVector(4.0, 5.0, 6.0);
        lRoot->CreateDataFromDOF(lStage.mScene);
        for (const char* lTake : {"", static_cast<const char*>(nullptr), ""})
        {
            lKept = lKept && lRoot->SetKFCurves(lNode, lTake) && lRoot->mLTData[0] != nullptr && lRoot->mLRData[2] != nullptr &&
                    lNode->mLocalRotation.Get()[2] == 6.0;
        }
    }
    const auto& lReports = lWatch.GetReports();
    const bool  lReported = lReports.size() == 2 && lReports[0].mFile == "qexioplugins/acclaim/kqexfileacclaimasf" &&
                           lReports[1].mFile == lReports[0].mFile && lReports[0].mText == "lTranslation!=NULL" &&
                           lReports[1].mText == "lRotation!=NULL" && lReports[0].mHasFlag && lReports[1].mHasFlag;
    std::_Exit(lKept && lReported ? 0 : 1);
}

TEST(KSamplingAssertTest, ATakeWithoutACurveNodeIsReportedOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(SetCurvesWithoutTake(), testing::ExitedWithCode(0), "lTranslation!=NULL");
}

TEST_F(KSamplingTest, CurveNodesComeFromTheFirstLayerOfTheCurrentTake)
{
    KQexAsfNode* lRoot = Root({5});
    KQexNode*    lNode = KQexNode::Create(mStage.mScene, "node");
    lNode->SetRotationOffset(kPivotSet0, KQexVector4(1.0, 2.0, 3.0));
    lNode->SetPreRotation(kPivotSet0, KQexVector4(4.0, 5.0, 6.0));
    lNode->SetPostRotation(kPivotSet0, KQexVector4(7.0, 8.0, 9.0));

    lRoot->GetCurveNodePointers(nullptr);
    EXPECT_EQ(lRoot->mTOffset[0], 0.0);
    lRoot->GetCurveNodePointers(lNode); // no take at all
    EXPECT_EQ(lRoot->mTOffset[0], 1.0);
    EXPECT_EQ(lRoot->mPreRotation[1], 5.0);
    EXPECT_EQ(lRoot->mPostRotation[2], 9.0);
    EXPECT_FALSE(lRoot->mLTNode || lRoot->mLRNode || lRoot->mLSNode);

    KQexAnimCurveNode* lT = lNode->mLocalTranslation.GetCurveNode(true, "take");
    KQexAnimCurveNode* lS = lNode->mLocalScaling.GetCurveNode(true, "take");
    lNode->mLocalRotation.GetCurveNode(true, "other");
    mStage.mScene->GetEvaluator()->SetContext(mStage.mScene->FindAnimStack("take"));
    lRoot->GetCurveNodePointers(lNode);
    EXPECT_EQ(lRoot->mLTNode, lT);
    EXPECT_EQ(lRoot->mLRNode, nullptr);
    EXPECT_EQ(lRoot->mLSNode, lS);
    EXPECT_EQ(lNode->mLocalRotation.GetCurveNode(false, "take"), nullptr); // and none was created
    mStage.mScene->GetEvaluator()->SetContext(nullptr);
    lRoot->GetCurveNodePointers(lNode);
    EXPECT_FALSE(lRoot->mLTNode || lRoot->mLSNode);
}

} // namespace
