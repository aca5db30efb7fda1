#include <tests/qexioplugins/acclaim/exchange/exporttest.h>
#include <tests/support/testfolders.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <utility>

// How the exporter adapts the extracted skeleton for the file, so that nothing is lost.

using namespace qexsdk;
using namespace qextest;

namespace
{

const std::string kSkeletonHead = ":version 1.10\n:name s\n:units\n length 1\n:root\n order TX TY TZ RX RY RZ\n axis XYZ\n:bonedata\n";

class KExportPrepareTest : public KExportTest
{
};

TEST_F(KExportPrepareTest, NamesBecomeValidUniqueAndShort)
{
    KQexNode*         lRoot = Add(nullptr, "hips", 0, 0, 0);
    KQexNode*         lParent = lRoot;
    const std::string lLong(60, 'x');
    for (const char* lName : {"a b", "a_b", "p(1,2)#", "root", "Begin", "end", "", lLong.c_str(), lLong.c_str()})
    {
        lParent = Add(lParent, lName, 0, lParent == lRoot ? 0 : 5, 0);
    }
    Add(lParent, "last", 0, 5, 0);
    Export(lRoot);
    const std::string lShort(50, 'x');
    EXPECT_EQ(Tree(), "root\n a_b\n  a_b_2\n   p_1_2__\n    root_2\n     Begin_\n      end_\n       bone\n        " + lShort +
                          "\n         " + lShort.substr(0, 48) + "_2\n          last\n");
    EXPECT_NE(Warnings().find("Bone renamed (a_b), from (a b)\n"), std::string::npos) << Warnings();
    EXPECT_NE(Warnings().find("Bone renamed (a_b_2), from (a_b)\n"), std::string::npos);
    EXPECT_NE(Warnings().find("Bone renamed (Begin_), from (Begin)\n"), std::string::npos);
    EXPECT_EQ(mResult.mMessages.size(), 9u) << Warnings();
}

TEST_F(KExportPrepareTest, NamesWithReservedCharactersAreChanged)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    Add(Add(lRoot, "#bone", 0, 0, 0), "#bone_End", 0, 5, 0);
    mOptions.mSkeletonName = ":my skeleton";
    Export(lRoot);
    EXPECT_EQ(Tree(), "root\n _bone\n");
    EXPECT_NE(mAsf.find(":name _my_skeleton\n"), std::string::npos) << mAsf;
    EXPECT_EQ(Warnings(), "Bone renamed (_bone), from (#bone)\nSkeleton renamed (_my_skeleton), from (:my skeleton)\n");
    mOptions.mSkeletonName = std::string(60, 'y');
    Export(lRoot);
    EXPECT_STREQ(mBack->GetName(), std::string(50, 'y').c_str());
}

/// A dummy that an earlier export inserted before a bone has no DOFs. A joint that only has such a name, or that moves, keeps them.
TEST_F(KExportPrepareTest, OnlyDummiesThatNeverMoveHaveNoDofs)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lDummy = Add(lRoot, "armDummy", 0, 0, 0);
    Add(Add(lDummy, "arm", 0, 5, 0), "arm_End", 0, 5, 0);
    KQexNode* lTest = Add(lRoot, "crashDummy", 0, 0, 0);
    Add(Add(lTest, "belt", 5, 0, 0), "belt_End", 0, 5, 0);
    KQexNode* lMoved = Add(lRoot, "legDummy", 0, 0, 0);
    Add(Add(lMoved, "leg", 0, 0, 5), "leg_End", 0, 5, 0);
    KQexNode* lLeaf = Add(lRoot, "toeDummy", 0, 0, 0);
    Add(lLeaf, "toeDummy_End", 0, 0, 5);
    Animate(lMoved->mLocalRotation, 1, 0.0F, 5.0F);
    Export(lRoot);
    const std::pair<const char*, int> lDofs[] = {{"armDummy", 0}, {"crashDummy", 3}, {"legDummy", 3}, {"toeDummy", 0}};
    for (const auto& [lName, lCount] : lDofs)
    {
        const HKQexAsfNode lBone = mBack->mRoot->Find(lName);
        ASSERT_NE(lBone, nullptr) << lName;
        EXPECT_EQ(lBone->mOrderCount, lCount) << lName;
    }
}

TEST_F(KExportPrepareTest, LimitsWithoutTranslationsAreWritten)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    lBone->GetLimits().SetRotationLimitActive(true);
    lBone->GetLimits().mRotationLimits.SetLimitMinActive(true, false, true);
    lBone->GetLimits().mRotationLimits.SetLimitMaxActive(true, true, false);
    lBone->GetLimits().mRotationLimits.SetLimitMin(KQexVector4(-1, -2, -3));
    lBone->GetLimits().mRotationLimits.SetLimitMax(KQexVector4(1, 2, 3));
    Export(lRoot);
    const KQexAsfNode& lBack = *mBack->mRoot->mChildBuf[0];
    const double       lMin[3] = {-1, 0, -3};
    const double       lMax[3] = {1, 2, 0};
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        EXPECT_EQ(lBack.mLimitsActive[5 - lAxis][0], lMin[lAxis] != 0) << lAxis;
        EXPECT_EQ(lBack.mLimitsActive[5 - lAxis][1], lMax[lAxis] != 0) << lAxis;
        EXPECT_EQ(lBack.mLimitsBuf[5 - lAxis][0], lMin[lAxis]);
        EXPECT_EQ(lBack.mLimitsBuf[5 - lAxis][1], lMax[lAxis]);
    }
    mOptions.mAdaptForFile = false;
    Export(lRoot);
    EXPECT_FALSE(mBack->mRoot->mChildBuf[0]->mLimitsActive[5][0]) << "extraction alone loses them";
}

TEST_F(KExportPrepareTest, AnOffsetThatAllChildrenShareBecomesABone)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 100, 0);
    for (const char* lName : {"left", "right"})
    {
        KQexNode* lBone = Add(lRoot, lName, 0, 7, 0);
        Add(lBone, (std::string(lName) + "_End").c_str(), 5, 0, 0);
    }
    Export(lRoot);
    EXPECT_EQ(Tree(), "root\n leftDummy\n  left\n  right\n");
    EXPECT_NEAR(mBack->mRoot->mChildBuf[0]->mLength, 7.0, 2e-5);
    EXPECT_EQ(mBack->mRoot->mChildBuf[0]->mOrderCount, 0);
    // The root's own position is in the motion.
    EXPECT_NE(mAmc.find("root 0 39.3701 0 0 0 0\n"), std::string::npos) << mAmc;
    mOptions.mAdaptForFile = false;
    Export(lRoot);
    EXPECT_EQ(Tree(), "root\n left\n right\n");
}

TEST_F(KExportPrepareTest, BonesThatTranslateGetTranslationDofs)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lStill = Add(lRoot, "still", 0, 0, 0);
    KQexNode* lMoving = Add(lStill, "moving", 0, 5, 0);
    Add(lMoving, "moving_End", 0, 5, 0);
    Animate(lMoving->mLocalTranslation, 1, 5.0F, 5.254F);
    const struct
    {
        KQexTranslationDofs mWanted;
        int                 mStill;
        int                 mMoving;
    } lCases[] = {{eTRANSLATION_DOFS_MOVING, 3, 6}, {eTRANSLATION_DOFS_NONE, 3, 3}, {eTRANSLATION_DOFS_ALL, 6, 6}};
    for (const auto& lCase : lCases)
    {
        mOptions.mTranslations = lCase.mWanted;
        Export(lRoot);
        EXPECT_EQ(mBack->mRoot->mChildBuf[0]->mOrderCount, lCase.mStill);
        EXPECT_EQ(mBack->mRoot->mChildBuf[0]->mChildBuf[0]->mOrderCount, lCase.mMoving);
        const bool lIsLost = lCase.mWanted == eTRANSLATION_DOFS_NONE;
        EXPECT_EQ(Warnings(), lIsLost ? "Motion that the DOFs can't express (moving): up to 0.254 cm\n" : "");
        EXPECT_EQ(mAmc.find("moving 0 0.1 0 0 0 0\n") != std::string::npos, !lIsLost) << mAmc;
    }
}

TEST_F(KExportPrepareTest, GivenDofsAndTheirLimitsAreKept)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 0, 0.0F, 30.0F);
    Animate(lBone->mLocalRotation, 2, 0.0F, 20.0F);
    KQexBoneDofs lDofs;
    KQexBoneDof  lDof;
    lDof.mWord = "rx";
    lDof.mHasMin = true;
    lDof.mMin = -45.0;
    lDofs["bone"] = {lDof};
    mOptions.mBoneDofs = &lDofs;
    Export(lRoot);
    const KQexAsfNode& lBack = *mBack->mRoot->mChildBuf[0];
    ASSERT_EQ(lBack.mOrderCount, 1);
    EXPECT_EQ(lBack.mOrderBuf[0], 5);
    EXPECT_TRUE(lBack.mLimitsActive[5][0]);
    EXPECT_FALSE(lBack.mLimitsActive[5][1]);
    EXPECT_EQ(lBack.mLimitsBuf[5][0], -45.0);
    // The rotation about z has no DOF: the residual is reported.
    EXPECT_NE(Warnings().find("Motion that the DOFs can't express (bone): up to "), std::string::npos);
    EXPECT_NE(Warnings().find(" degrees\n"), std::string::npos);
}

TEST_F(KExportPrepareTest, OnlyTheFirstSixValidDofsCount)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    Add(Add(lRoot, "bone", 0, 0, 0), "bone_End", 0, 5, 0);
    KQexBoneDofs lDofs;
    for (const char* lWord : {"l", "rx", "RX", "", "tx", "ty", "tz", "ry", "rz", "rx"})
    {
        lDofs["bone"].emplace_back().mWord = lWord;
    }
    mOptions.mBoneDofs = &lDofs;
    Export(lRoot);
    EXPECT_NE(mAsf.find(" dof rx tx ty tz ry rz\n"), std::string::npos) << mAsf;
}

TEST_F(KExportPrepareTest, RotationAndTranslationLossesShareAWarning)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 2, 0.0F, 0.5F);
    Animate(lBone->mLocalTranslation, 0, 0.0F, 0.5F);
    KQexBoneDofs lDofs;
    lDofs["bone"].emplace_back().mWord = "ry";
    mOptions.mBoneDofs = &lDofs;
    Export(lRoot);
    EXPECT_EQ(Warnings(), "Motion that the DOFs can't express (bone): up to 0.5 degrees and 0.5 cm\n");
}

/// In gimbal lock only the sum of two angles is determined: one is rounded, the other compensates.
TEST_F(KExportPrepareTest, AnglesInGimbalLockAreRounded)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lBone = Add(lRoot, "bone", 0, 0, 0);
    Add(lBone, "bone_End", 3, 5, 1);
    for (const float lLock : {90.0F, -90.0F})
    {
        Animate(lBone->mLocalRotation, 0, 33.337F, 12.345F);
        Animate(lBone->mLocalRotation, 1, lLock, lLock);
        Animate(lBone->mLocalRotation, 2, 0.123F, -7.89F);
        Export(lRoot);
        const size_t lLine = mAmc.find("\nbone ");
        ASSERT_NE(lLine, std::string::npos) << mAmc;
        const double lFirst = std::strtod(mAmc.c_str() + lLine + 6, nullptr);
        EXPECT_EQ(lFirst, std::round(lFirst)) << mAmc;

        const KScenePtr         lAgain = MakeScene();
        KQexImportAcclaimResult lRead;
        ASSERT_TRUE(KQexImporterAcclaim::Import(lAgain.get(), SkeletonSource(mAsf),
                                                {KQexAcclaimSource::Buffer(mAmc.data(), mAmc.size(), "back.amc")}, {}, lRead));
        for (const int lFrame : {0, 1})
        {
            const KQexVector4 lOld = mScene->GetEvaluator()->GetNodeGlobalTransform(lBone->GetChild(0), FrameTime(lFrame)).GetT();
            KQexNode*         lEnd = lRead.mRootNode->FindChild("bone_End");
            ASSERT_NE(lEnd, nullptr);
            const KQexVector4 lNew = lAgain->GetEvaluator()->GetNodeGlobalTransform(lEnd, FrameTime(lFrame)).GetT();
            for (int i = 0; i < 3; ++i)
            {
                EXPECT_NEAR(lNew[i], lOld[i], 1e-4) << lLock << ' ' << lFrame;
            }
        }
        for (unsigned int i = 0; i < 3; ++i)
        {
            lBone->mLocalRotation.GetCurveNode(false, "take")->GetCurve(i)->Destroy(false, false);
        }
    }
}

TEST_F(KExportPrepareTest, FirstFrameAsRestPose)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 2, 90.0F, 135.0F);
    Export(lRoot);
    EXPECT_NEAR(mBack->mRoot->mChildBuf[0]->mDirectionV.mData[1], 1.0, 1e-6);
    EXPECT_NE(mAmc.find("bone 0 0 90\n"), std::string::npos) << mAmc;
    mOptions.mBasePoseFirstFrame = true;
    Export(lRoot);
    EXPECT_NEAR(mBack->mRoot->mChildBuf[0]->mDirectionV.mData[0], -1.0, 1e-6);
    EXPECT_NE(mAmc.find("bone 0 0 0\n"), std::string::npos) << mAmc;
    EXPECT_NE(mAmc.find("bone 0 0 45\n"), std::string::npos) << mAmc;
}

/// Rx then Ry, with the first frame as rest pose: relative to that pose the bone rotates about z as well.
TEST_F(KExportPrepareTest, AnotherRestPoseAddsTheThirdRotation)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 0, 40.0F, 10.0F);
    Animate(lBone->mLocalRotation, 1, 30.0F, 70.0F);
    KQexBoneDofs lDofs;
    lDofs["bone"].resize(2);
    lDofs["bone"][0].mWord = "rx";
    lDofs["bone"][1].mWord = "ry";
    mOptions.mBoneDofs = &lDofs;
    Export(lRoot);
    EXPECT_EQ(mBack->mRoot->mChildBuf[0]->mOrderCount, 2);
    EXPECT_EQ(Warnings().find("can't express"), std::string::npos) << Warnings();
    mOptions.mBasePoseFirstFrame = true;
    Export(lRoot);
    ASSERT_EQ(mBack->mRoot->mChildBuf[0]->mOrderCount, 3);
    EXPECT_EQ(mBack->mRoot->mChildBuf[0]->mOrderBuf[2], 3);
    EXPECT_EQ(Warnings().find("can't express"), std::string::npos) << Warnings();
}

TEST_F(KExportPrepareTest, TheAddedRotationIsTheMissingOne)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    Add(Add(lRoot, "bone", 0, 0, 0), "bone_End", 0, 5, 0);
    mOptions.mBasePoseFirstFrame = true;
    const struct
    {
        std::vector<const char*> mWords;
        const char*              mWritten;
    } lCases[] = {{{"ry", "rz"}, "ry rz rx"},
                  {{"rz", "tx", "rx"}, "rz tx rx ry"},
                  {{"ry"}, "ry"},
                  {{"rx", "ry", "rx", "ry", "tx", "ty"}, "rx ry rx ry tx ty"},
                  {{"rz", "ry", "rx"}, "rz ry rx"}};
    for (const auto& lCase : lCases)
    {
        KQexBoneDofs lDofs;
        for (const char* lWord : lCase.mWords)
        {
            lDofs["bone"].emplace_back().mWord = lWord;
        }
        mOptions.mBoneDofs = &lDofs;
        Export(lRoot);
        EXPECT_NE(mAsf.find(std::string(" dof ") + lCase.mWritten + "\n"), std::string::npos) << mAsf;
    }
}

TEST_F(KExportPrepareTest, AnglesContinueFromFrameToFrame)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 2, 170.0F, 190.0F);
    Export(lRoot);
    EXPECT_NE(mAmc.find("bone 0 0 170\n"), std::string::npos) << mAmc;
    EXPECT_NE(mAmc.find("bone 0 0 190\n"), std::string::npos) << mAmc;
}

TEST_F(KExportPrepareTest, ScaleUnitAndRate)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 10, 0);
    KQexNode* lBone = Add(lRoot, "bone", 0, 0, 0);
    Add(lBone, "bone_End", 0, 5, 0);
    Animate(lBone->mLocalRotation, 2, 0.0F, 1.0F);
    mOptions.mBaseScale = 2.0;
    mOptions.mLengthUnit = 2.54;
    mOptions.mWriteRate = true;
    Export(lRoot);
    EXPECT_NE(mAsf.find("length 2.54\n"), std::string::npos);
    EXPECT_NE(mAsf.find("length 10\n"), std::string::npos);
    EXPECT_NE(mAmc.find(":SAMPLES-PER-SECOND 120\n"), std::string::npos) << mAmc;
    EXPECT_NE(mAmc.find("root 0 20 0 0 0 0\n"), std::string::npos) << mAmc;
}

TEST_F(KExportPrepareTest, MotionForAnExistingSkeleton)
{
    KQexNode* lRoot = Add(nullptr, "actor:hips", 0, 10, 0);
    Add(lRoot, "actor:extra", 0, 3, 0); // The skeleton has it elsewhere.
    KQexNode* lBone = Add(lRoot, "actor:bone", 0, 0, 0);
    KQexNode* lTip = Add(lBone, "actor:tip", 0, 5, 0);
    Add(lTip, "actor:tip_End", 0, 5, 0);
    Animate(lTip->mLocalRotation, 0, 0.0F, 25.0F);
    const std::string lSkeleton = kSkeletonHead + "begin\nname bone\ndirection 0 1 0\nlength 2\naxis 0 0 40 XYZ\ndof rx ry rz\nend\n"
                                                  "begin\nname tip\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof rx\nend\n"
                                                  "begin\nname extra\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof rx\nend\n"
                                                  ":hierarchy\nbegin\nroot bone\nbone tip\ntip extra\nend\n";
    ReadBack(lSkeleton);
    ASSERT_TRUE(mBack);
    const KTempDir    lDir;
    const std::string lPath = (lDir / "out.amc").string();
    ASSERT_TRUE(KQexExporterAcclaim::ExportMotion(lRoot, mBack.get(), lPath.c_str(), mOptions, mResult)) << Warnings();
    EXPECT_EQ(mResult.mUnmatched, std::vector<std::string>{"extra"});
    EXPECT_EQ(ReadFile(lPath),
              "# samples-per-second 120\n:FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 3.93701 0 0 0 0\nbone 0 0 0\ntip 0\nextra 0\n"
              "2\nroot 0 3.93701 0 0 0 0\nbone 0 0 0\ntip 25\nextra 0\n");
}

/// A bone whose DOFs cannot express its rotation displaces its child; the child's translation DOFs compensate.
TEST_F(KExportPrepareTest, TranslationsCompensateForLostParentRotations)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lBone = Add(lRoot, "bone", 0, 0, 0);
    KQexNode* lTip = Add(lBone, "tip", 0, 5, 0);
    Add(lTip, "tip_End", 0, 5, 0);
    Animate(lBone->mLocalRotation, 2, 0.0F, 30.0F);
    KQexBoneDofs lDofs;
    lDofs["bone"].emplace_back().mWord = "ry";
    for (const char* lWord : {"rx", "ry", "rz", "tx", "ty", "tz"})
    {
        lDofs["tip"].emplace_back().mWord = lWord;
    }
    mOptions.mBoneDofs = &lDofs;
    mOptions.mLengthUnit = 2.54;
    Export(lRoot);
    // The tip's position (-5 sin 30, 5 cos 30) minus its parent's end (0, 5).
    EXPECT_NE(mAmc.find("bone 0\ntip 0 0 30 -2.5 -0.66987"), std::string::npos) << mAmc;
}

/// The progress callback may cancel at any time: no file appears, and an existing one stays.
TEST_F(KExportPrepareTest, CancellingLeavesTheFilesUnchanged)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalRotation, 2, 0.0F, 20.0F);
    const KTempDir    lDir;
    const std::string lAsf = (lDir / "out.asf").string();
    const std::string lAmc = (lDir / "out.amc").string();
    WriteFile(lDir / "out.amc", "before");
    int lCalls = 0;
    int lStopAt = 1;
    mOptions.mProgress = [&](double)
    {
        return ++lCalls != lStopAt;
    };
    for (;; ++lStopAt)
    {
        lCalls = 0;
        if (KQexExporterAcclaim::Export(lRoot, lAsf.c_str(), lAmc.c_str(), mOptions, mResult))
        {
            break;
        }
        ASSERT_LT(lStopAt, 100);
        EXPECT_TRUE(mResult.mCancelled) << lStopAt;
        EXPECT_FALSE(std::filesystem::exists(lAsf)) << lStopAt;
        EXPECT_EQ(ReadFile(lAmc), "before") << lStopAt;
    }
    EXPECT_GT(lStopAt, 1);
    EXPECT_FALSE(mResult.mCancelled);
    EXPECT_NE(ReadFile(lAmc), "before");
}

/// Showing messages is up to the caller.
TEST_F(KExportPrepareTest, PrintsNothing)
{
    KQexNode* lBone = AddBone();
    KQexNode* lRoot = lBone->GetParent();
    Animate(lBone->mLocalTranslation, 1, 0.0F, 2.0F);
    mOptions.mTranslations = eTRANSLATION_DOFS_NONE;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Export(lRoot);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_NE(Warnings(), "");
}

TEST_F(KExportPrepareTest, ASkeletonWithoutMotion)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 0, 0);
    Add(Add(lRoot, "bone", 0, 0, 0), "bone_End", 0, 5, 0);
    const KTempDir    lDir;
    const std::string lPath = (lDir / "out.asf").string();
    for (const char* lNoMotion : {static_cast<const char*>(nullptr), ""})
    {
        ASSERT_TRUE(KQexExporterAcclaim::Export(lRoot, lPath.c_str(), lNoMotion, mOptions, mResult)) << Warnings();
        EXPECT_EQ(mResult.mBones, 2);
        ASSERT_TRUE(KQexExporterAcclaim::ExportSkeleton(lRoot, mAsf, mOptions, mResult));
        EXPECT_EQ(ReadFile(lPath), mAsf);
        WriteFile(lPath, "old");
    }
}

/// A bone's node is searched below its parent's node, as other branches may have nodes of the same name.
TEST_F(KExportPrepareTest, MotionForASkeletonWithBranches)
{
    KQexNode*   lRoot = Add(nullptr, "hips", 0, 0, 0);
    std::string lSkeleton = kSkeletonHead;
    float       lAngle = 10.0F;
    for (const char* lName : {"left", "right", "tail"})
    {
        KQexNode* lLeg = Add(lRoot, lName, 0, 0, 0);
        KQexNode* lToe = Add(Add(lLeg, "between", 0, 5, 0), "toe", 0, 5, 0);
        Add(lToe, "toe_End", 0, 5, 0);
        Animate(lToe->mLocalRotation, 0, 0.0F, lAngle);
        lAngle += 10.0F;
        lSkeleton += std::string("begin\nname ") + lName + "\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof rx\nend\n";
    }
    lSkeleton += "begin\nname toe\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof rx\nend\n"
                 ":hierarchy\nbegin\nroot left right tail\nright toe\nend\n";
    ReadBack(lSkeleton);
    ASSERT_TRUE(mBack);
    const KTempDir    lDir;
    const std::string lPath = (lDir / "out.amc").string();
    mOptions.mAllowUnmatched = true; // Only one of the three toes that move has a bone.
    ASSERT_TRUE(KQexExporterAcclaim::ExportMotion(lRoot, mBack.get(), lPath.c_str(), mOptions, mResult)) << Warnings();
    EXPECT_TRUE(mResult.mUnmatched.empty());
    EXPECT_NE(ReadFile(lPath).find("\n2\nroot 0 0 0 0 0 0\nleft 0\nright 0\ntoe 20\ntail 0\n"), std::string::npos) << ReadFile(lPath);

    mOptions.mSampling.mEvery = 0;
    EXPECT_FALSE(KQexExporterAcclaim::ExportMotion(lRoot, mBack.get(), lPath.c_str(), mOptions, mResult));
    EXPECT_EQ(Warnings(), "No frames in the requested part of the take\n");
    const KQexAsfSceneOwner lEmpty(QexSdkNew<KQexAsfScene>());
    KQexAsfScene* const     lNone[] = {nullptr, lEmpty.get()};
    for (KQexAsfScene* lScene : lNone)
    {
        EXPECT_FALSE(KQexExporterAcclaim::ExportMotion(lRoot, lScene, lPath.c_str(), mOptions, mResult));
        EXPECT_EQ(Warnings(), "Nothing to export\n");
    }
    EXPECT_TRUE(KQexExporterAcclaim::GetBoneDofs(lEmpty.get()).empty());
}

TEST_F(KExportPrepareTest, LengthDofsKeepTheirColumnsInMotion)
{
    KQexNode* lRoot = Add(nullptr, "hips", 0, 10, 0);
    KQexNode* lBone = Add(lRoot, "bone", 0, 0, 0);
    KQexNode* lTip = Add(lBone, "tip", 0, 5, 0);
    Add(lTip, "tip_End", 0, 5, 0);
    Animate(lBone->mLocalRotation, 2, 0.0F, 25.0F);
    const std::string lSkeleton = kSkeletonHead + "begin\nname bone\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof l rx l ry rz l l\nend\n"
                                                  "begin\nname tip\ndirection 0 1 0\nlength 2\naxis 0 0 0 XYZ\ndof l\nend\n"
                                                  ":hierarchy\nbegin\nroot bone\nbone tip\nend\n";
    ReadBack(lSkeleton);
    ASSERT_TRUE(mBack);
    const KTempDir    lDir;
    const std::string lPath = (lDir / "out.amc").string();
    ASSERT_TRUE(KQexExporterAcclaim::ExportMotion(lRoot, mBack.get(), lPath.c_str(), mOptions, mResult)) << Warnings();
    EXPECT_EQ(ReadFile(lPath),
              "# samples-per-second 120\n:FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 3.93701 0 0 0 0\nbone 0 0 0 0 0 0 0\ntip 0\n"
              "2\nroot 0 3.93701 0 0 0 0\nbone 0 0 0 0 25 0 0\ntip 0\n");

    KQexScene*              lAgain = KQexScene::Create("again");
    KQexImportAcclaimResult lRead;
    ASSERT_TRUE(KQexImporterAcclaim::Import(lAgain, SkeletonSource(lSkeleton), {KQexAcclaimSource::File(lPath)}, {}, lRead));
    for (const KQexImportMessage& lMessage : lRead.mMessages)
    {
        EXPECT_NE(lMessage.mPath, lPath) << lMessage.mMessage.mText;
    }
    lAgain->Destroy();
}

TEST_F(KExportPrepareTest, AFailedExportKeepsExistingFiles)
{
    KQexNode*      lRoot = Add(nullptr, "hips", 0, 10, 0);
    const KTempDir lDir;
    WriteFile(lDir / "old.asf", "old");
    const std::string lAsf = (lDir / "old.asf").string();
    for (const std::string& lAmc : {(lDir / "no" / "out.amc").string(), lDir.Path().string()})
    {
        EXPECT_FALSE(KQexExporterAcclaim::Export(lRoot, lAsf.c_str(), lAmc.c_str(), mOptions, mResult));
        EXPECT_FALSE(mResult.mMessages.empty());
        EXPECT_EQ(ReadFile(lAsf), "old");
    }
    mOptions.mSampling.mHasStart = mOptions.mSampling.mHasEnd = true;
    mOptions.mSampling.mStart = FrameTime(5);
    EXPECT_FALSE(KQexExporterAcclaim::Export(lRoot, lAsf.c_str(), (lDir / "out.amc").c_str(), mOptions, mResult));
    EXPECT_EQ(Warnings(), "No frames in the requested part of the take\n");
    EXPECT_EQ(ReadFile(lAsf), "old");
    mOptions.mLengthUnit = 0.0;
    EXPECT_FALSE(KQexExporterAcclaim::ExportSkeleton(lRoot, mAsf, mOptions, mResult));
    EXPECT_FALSE(KQexExporterAcclaim::ExportSkeleton(nullptr, mAsf, KQexExportAcclaimOptions(), mResult));
}

} // namespace
