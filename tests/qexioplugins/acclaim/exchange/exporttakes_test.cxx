#include <tests/qexioplugins/acclaim/exchange/exporttest.h>

#include <filesystem>

// Several takes in one export: one skeleton that suits all of them.

using namespace qexsdk;
using namespace qextest;

namespace
{

class KExportTakesTest : public KExportTest
{
protected:
    /// "top", turned at rest, and below it hips, leg and foot.
    KQexNode* AddTurnedFigure()
    {
        KQexNode* lTop = Add(nullptr, "top", 0, 3, 0);
        lTop->mLocalRotation.Set(qexVectorTemplate3<double>(90, 0, 30));
        KQexNode* lLeg = Add(Add(lTop, "hips", 0, 1, 90), "leg", 10, 0, -5);
        Add(Add(lLeg, "foot", 0, 0, -40), "foot_End", 0, -10, 0);
        return lTop;
    }

    int DofsOf(const std::string& pBone)
    {
        ReadBack(mAsf);
        const HKQexAsfNode lBone = mBack ? mBack->mRoot->Find(pBone.c_str()) : nullptr;
        return lBone != nullptr ? lBone->mOrderCount : -1;
    }
};

TEST_F(KExportTakesTest, EveryTakeKeepsTheRootsRestRotation)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lLeg = lTop->FindChild("leg");
    for (const char* lTake : {"a", "b"})
    {
        Animate(lLeg->mLocalRotation, 0, 0.0F, 25.0F, lTake);
    }
    ExpectTakesAreKept(lTop, {"a", "b"});
    EXPECT_EQ(ReadFile(mDir / "a.amc"), ReadFile(mDir / "b.amc"));
    EXPECT_NE(ReadFile(mDir / "b.amc").find("\nroot 0 1.181102 0 90 0 30\n"), std::string::npos) << ReadFile(mDir / "b.amc");
}

TEST_F(KExportTakesTest, TheSkeletonHasTheDofsOfAllTakes)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lLeg = lTop->FindChild("leg");
    KQexNode* lFoot = lTop->FindChild("foot");
    Animate(lLeg->mLocalTranslation, 0, 10.0F, 12.0F, "a");
    Animate(lFoot->mLocalTranslation, 2, -40.0F, -44.0F, "b");
    ExpectTakesAreKept(lTop, {"a", "b"});
    EXPECT_EQ(DofsOf("hips"), 3);
    EXPECT_EQ(DofsOf("leg"), 6);
    EXPECT_EQ(DofsOf("foot"), 6);
}

/// A take without a file still counts; a skeleton may be written alone.
TEST_F(KExportTakesTest, ATakeThatIsNotWrittenCounts)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lFoot = lTop->FindChild("foot");
    Animate(lFoot->mLocalRotation, 0, 0.0F, 5.0F, "a");
    Animate(lFoot->mLocalTranslation, 2, -40.0F, -44.0F, "b");
    const std::vector<KQexExportMotion> lMotions = {{"", mScene->FindAnimStack("a"), {}}, {"", mScene->FindAnimStack("b"), {}}};
    ASSERT_TRUE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), lMotions, mOptions, mResult)) << Warnings();
    mAsf = ReadFile(mDir / "out.asf");
    EXPECT_EQ(DofsOf("foot"), 6);
    EXPECT_EQ(mResult.mSamplings.size(), 2U);
    EXPECT_EQ(mResult.mSamplings[0].mCount, 0);
    // Without takes, the scene's current one counts.
    mScene->GetEvaluator()->SetContext(mScene->FindAnimStack("a"));
    ASSERT_TRUE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), std::vector<KQexExportMotion>(), mOptions, mResult));
    mAsf = ReadFile(mDir / "out.asf");
    EXPECT_EQ(DofsOf("foot"), 3);
}

/// A dummy of an earlier export is one only when no take moves it.
TEST_F(KExportTakesTest, ADummyThatAnotherTakeMovesHasDofs)
{
    KQexNode* lTop = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lDummy = Add(lTop, "armDummy", 0, 5, 0);
    KQexNode* lArm = Add(lDummy, "arm", 5, 0, 0);
    Add(lArm, "arm_End", 0, 5, 0);
    Animate(lArm->mLocalRotation, 0, 0.0F, 25.0F, "a");
    Animate(lDummy->mLocalRotation, 1, 0.0F, 15.0F, "b");
    ExpectTakesAreKept(lTop, {"a", "b"});
    EXPECT_EQ(DofsOf("armDummy"), 3);
    ExportTakes(lTop, {"a"});
    EXPECT_EQ(DofsOf("armDummy"), 0);
}

TEST_F(KExportTakesTest, EachTakeHasItsOwnFrames)
{
    KQexNode* lTop = AddTurnedFigure();
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "a");
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "b");
    std::vector<KQexExportMotion> lMotions = {{PathOf("a.amc"), mScene->FindAnimStack("a"), {}},
                                              {PathOf("b.amc"), mScene->FindAnimStack("b"), {}}};
    lMotions[1].mSampling.mFramesPerSecond = 480.0;
    ASSERT_TRUE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), lMotions, mOptions, mResult)) << Warnings();
    EXPECT_EQ(mResult.mSamplings[0].mCount, 2);
    EXPECT_EQ(mResult.mSamplings[1].mCount, 5);
    EXPECT_NE(ReadFile(mDir / "b.amc").find("\n5\n"), std::string::npos);
}

/// The rest pose is that of the first take, for all of them.
TEST_F(KExportTakesTest, TheFirstTakesFirstFrameAsRestPose)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lLeg = lTop->FindChild("leg");
    KQexNode* lHips = lTop->FindChild("hips");
    Animate(lTop->mLocalRotation, 1, 20.0F, 25.0F, "a");
    Animate(lLeg->mLocalRotation, 0, 40.0F, 25.0F, "a");
    Animate(lHips->mLocalTranslation, 2, 80.0F, 82.0F, "a");
    Animate(lLeg->mLocalRotation, 0, -35.0F, 5.0F, "b");
    mOptions.mBasePoseFirstFrame = true;
    ExpectTakesAreKept(lTop, {"a", "b"});
    EXPECT_NE(ReadFile(mDir / "a.amc").find("\nleg 0 0 0\n"), std::string::npos) << ReadFile(mDir / "a.amc");
}

/// A scale that changes moves everything below; where it differs from axis to axis, so do rotations.
TEST_F(KExportTakesTest, ScalingMovesTheJointsBelow)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lHips = lTop->FindChild("hips");
    KQexNode* lLeg = lTop->FindChild("leg");
    Animate(lHips->mLocalScaling, 1, 1.0F, 1.5F, "a");
    Animate(lLeg->mLocalRotation, 2, 0.0F, 20.0F, "b");
    ExpectTakesAreKept(lTop, {"a", "b"});
    EXPECT_EQ(DofsOf("hips"), 3);
    EXPECT_EQ(DofsOf("leg"), 6);
    EXPECT_EQ(DofsOf("foot"), 6);
}

TEST_F(KExportTakesTest, UnevenAndMirroredScalingsAtRest)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lHips = lTop->FindChild("hips");
    KQexNode* lLeg = lTop->FindChild("leg");
    lLeg->mLocalRotation.Set(qexVectorTemplate3<double>(20, 30, 40));
    Animate(lLeg->mLocalRotation, 2, 40.0F, 60.0F);
    for (const double lX : {2.0, -1.0})
    {
        lHips->mLocalScaling.Set(qexVectorTemplate3<double>(lX, 1, 1));
        ExpectTakesAreKept(lTop, {"take"});
        EXPECT_EQ(DofsOf("foot"), lX > 0.0 ? 6 : 3) << "a mirrored figure keeps its lengths";
    }
}

/// Scaled to nothing, as to hide a part, and back.
TEST_F(KExportTakesTest, AScaleOfZeroGivesFiniteValues)
{
    KQexNode* lTop = AddTurnedFigure();
    KQexNode* lHips = lTop->FindChild("hips");
    KQexNode* lLeg = lTop->FindChild("leg");
    for (const unsigned int lAxis : {0U, 1U, 2U})
    {
        Animate(lHips->mLocalScaling, lAxis, 0.0F, 1.0F);
    }
    Animate(lLeg->mLocalRotation, 2, 0.0F, 20.0F);
    ExpectTakesAreKept(lTop, {"take"});
    EXPECT_EQ(ReadFile(mDir / "take.amc").find("nan"), std::string::npos);
}

class KExportRandomTakesTest : public KExportTakesTest, public testing::WithParamInterface<int>
{
};

/// Figures with every kind of transform and scaling, in two takes that move different joints.
TEST_P(KExportRandomTakesTest, KeepTheirPositions)
{
    std::mt19937       lRandom(static_cast<unsigned>(7100 + GetParam()));
    KRandomTreeOptions lTree;
    lTree.mNodes = 3 + 3 * GetParam();
    lTree.mFrames = 8;
    lTree.mScaling = GetParam() % 2 == 1;
    KQexNode* lTop = MakeRandomTree(lRandom, mScene.get(), lTree);
    int       lNumber = 0;
    for (KQexNode* lNode = lTop; lNode != nullptr; lNode = lNode->GetNextInTree(lTop))
    {
        if (++lNumber % 3 == 0)
        {
            AnimateProperty(lRandom, lNode, lNode->mLocalTranslation, "other", 5.0, lTree.mFrames);
            AnimateProperty(lRandom, lNode, lNode->mLocalRotation, "other", 90.0, lTree.mFrames);
        }
    }
    mOptions.mBasePoseFirstFrame = GetParam() % 4 >= 2;
    ExpectTakesAreKept(lTop, {"take", "other"}, 0.05);
}

INSTANTIATE_TEST_SUITE_P(Trees, KExportRandomTakesTest, testing::Range(0, 12));

/// The caller commits the files, or discards them.
TEST_F(KExportTakesTest, OutputsMayBeCommittedLater)
{
    KQexNode* lTop = AddTurnedFigure();
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "a");
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "b");
    WriteFile(mDir / "a.amc", "old");
    const std::vector<KQexExportMotion> lMotions = {{PathOf("a.amc"), mScene->FindAnimStack("a"), {}},
                                                    {PathOf("b.amc"), mScene->FindAnimStack("b"), {}}};
    for (const bool lCommit : {false, true})
    {
        std::vector<std::unique_ptr<KOutputFile>> lPrepared;
        mOptions.mPrepared = &lPrepared;
        ASSERT_TRUE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), lMotions, mOptions, mResult)) << Warnings();
        ASSERT_EQ(lPrepared.size(), 3U);
        EXPECT_EQ(lPrepared[0]->GetPath(), PathOf("out.asf"));
        EXPECT_EQ(lPrepared[2]->GetPath(), PathOf("b.amc"));
        EXPECT_EQ(ReadFile(mDir / "a.amc"), "old");
        EXPECT_FALSE(std::filesystem::exists(mDir / "b.amc"));
        KOutputFile* lOutputs[] = {lPrepared[0].get(), lPrepared[1].get(), lPrepared[2].get()};
        EXPECT_TRUE(!lCommit || KOutputFile::CommitAll(lOutputs, 3) == nullptr);
    }
    EXPECT_NE(ReadFile(mDir / "a.amc"), "old");
    EXPECT_TRUE(std::filesystem::exists(mDir / "b.amc"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mDir.Path()), std::filesystem::directory_iterator()), 3);
}

/// When one of the files cannot be written, none is replaced.
TEST_F(KExportTakesTest, AllFilesOrNone)
{
    KQexNode* lTop = AddTurnedFigure();
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "a");
    WriteFile(mDir / "out.asf", "old");
    WriteFile(mDir / "a.amc", "old");
    KQexAnimStack* const          lTake = mScene->FindAnimStack("a");
    std::vector<KQexExportMotion> lMotions = {{PathOf("a.amc"), lTake, {}}, {PathOf("no/b.amc"), lTake, {}}};
    EXPECT_FALSE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), lMotions, mOptions, mResult));
    EXPECT_EQ(mResult.mMessages.back().mPath, PathOf("no/b.amc"));
    lMotions[1] = {PathOf("b.amc"), lTake, {}};
    lMotions[1].mSampling.mEvery = 0;
    EXPECT_FALSE(KQexExporterAcclaim::Export(lTop, PathOf("out.asf").c_str(), lMotions, mOptions, mResult));
    EXPECT_EQ(Warnings(), "No frames in the requested part of the take\n");
    EXPECT_EQ(ReadFile(mDir / "out.asf"), "old");
    EXPECT_EQ(ReadFile(mDir / "a.amc"), "old");
    EXPECT_FALSE(std::filesystem::exists(mDir / "b.amc"));
}

TEST_F(KExportTakesTest, ProgressGoesThroughAllTakes)
{
    KQexNode* lTop = AddTurnedFigure();
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "a");
    Animate(lTop->mLocalTranslation, 0, 0.0F, 1.0F, "b");
    std::vector<double> lFractions;
    mOptions.mProgress = [&](double pFraction)
    {
        lFractions.push_back(pFraction);
        return true;
    };
    ExportTakes(lTop, {"a", "b"});
    EXPECT_EQ(lFractions, (std::vector<double>{0.5, 1.0}));
}

} // namespace
