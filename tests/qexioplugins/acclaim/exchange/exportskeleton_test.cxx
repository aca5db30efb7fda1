#include <tests/qexioplugins/acclaim/exchange/exporttest.h>

#include <utility>

// Motion for a skeleton that exists: whether it is the right one, and how its rest pose relates to that of the nodes.

using namespace qexsdk;
using namespace qextest;

namespace
{

class KExportSkeletonTest : public KExportTest
{
protected:
    /// A figure whose top is turned at rest, with two takes.
    KExportSkeletonTest()
    {
        mTop = Add(nullptr, "top", 0, 3, 0);
        mTop->mLocalRotation.Set(qexVectorTemplate3<double>(90, 0, 30));
        mHips = Add(mTop, "hips", 0, 1, 90);
        mHips->mLocalRotation.Set(qexVectorTemplate3<double>(5, 10, 15));
        KQexNode* lArm = Add(mHips, "arm", 10, 20, -5);
        lArm->mLocalRotation.Set(qexVectorTemplate3<double>(25, 10, -60));
        Add(Add(lArm, "hand", 0, 30, 0), "hand_End", 0, 8, 0);
        KQexNode* lLeg = Add(mHips, "leg", 3, 0, -5);
        Add(Add(lLeg, "foot", 0, 0, -40), "foot_End", 0, -10, 0);
        Animate(lArm->mLocalRotation, 0, 60.0F, 85.0F, "a");
        Animate(lLeg->mLocalRotation, 1, 30.0F, 5.0F, "a");
        Animate(mHips->mLocalRotation, 2, -40.0F, 15.0F, "a");
        Animate(lLeg->mLocalRotation, 0, 0.0F, 15.0F, "b");
        Animate(mHips->mLocalTranslation, 2, 90.0F, 70.0F, "b");
        Animate(mHips->mLocalRotation, 1, 10.0F, 70.0F, "b");
    }

    /// A copy of the figure at rest: the same joints, their frames aligned with the world, turned as a whole by \p pTurn about x.
    KQexNode* AddAlignedCopy(double pTurn)
    {
        KQexGlobalTransforms   lPose;
        std::vector<KQexNode*> lCopies;
        KgeRMatrix             lTurn;
        KgeSet(lTurn, KgeRVector(pTurn, 0, 0));
        mScene->GetEvaluator()->SetContext(nullptr);
        EXPECT_TRUE(mScene->GetEvaluator()->EvaluateGlobalTransforms(mTop, KTime(0), lPose));
        for (int i = 0; i < lPose.GetCount(); ++i)
        {
            const int   lParent = lPose.GetParentIndex(i);
            KQexVector4 lOffset = lPose.GetTransform(i).GetT();
            if (lParent >= 0)
            {
                for (int k = 0; k < 3; ++k)
                {
                    lOffset[k] -= lPose.GetTransform(lParent).GetT()[k];
                }
            }
            KmRV(lOffset.mData, lTurn.mData, lOffset.mData);
            lCopies.push_back(Add(lParent >= 0 ? lCopies[static_cast<size_t>(lParent)] : nullptr, lPose.GetNode(i)->GetName(), lOffset[0],
                                  lOffset[1], lOffset[2]));
        }
        return lCopies.front();
    }

    void ExportSkeletonOf(KQexNode* pRoot)
    {
        mOptions.mTranslations = eTRANSLATION_DOFS_ALL;
        ASSERT_TRUE(KQexExporterAcclaim::ExportSkeleton(pRoot, mAsf, mOptions, mResult)) << Warnings();
        WriteFile(mDir / "out.asf", mAsf);
        mOptions = KQexExportAcclaimOptions();
    }

    bool ExportMotion(KQexNode* pRoot, const std::string& pTake)
    {
        ReadBack(mAsf);
        mOptions.mStack = mScene->FindAnimStack(pTake.c_str());
        return KQexExporterAcclaim::ExportMotion(pRoot, mBack.get(), PathOf(pTake + ".amc").c_str(), mOptions, mResult);
    }

    /// Writes both takes for the skeleton in mAsf and expects that they move it as the nodes.
    void ExpectMotionsFit()
    {
        for (const char* lTake : {"a", "b"})
        {
            ASSERT_TRUE(ExportMotion(mTop, lTake)) << Warnings();
            ExpectSameMotion(mTop, lTake, PathOf("out.asf"));
            EXPECT_TRUE(mResult.mUnmatched.empty());
            EXPECT_EQ(Warnings(), "");
        }
    }

    KQexNode* mTop = nullptr;
    KQexNode* mHips = nullptr;
};

TEST_F(KExportSkeletonTest, OneThatWasMadeFromTheNodes)
{
    ExportSkeletonOf(mTop);
    ExpectMotionsFit();
}

/// Made from the first frame of another take: the same figure in another pose.
TEST_F(KExportSkeletonTest, OneThatWasMadeFromTheNodesInAnotherPose)
{
    ExportTakes(mTop, {"b", "a"});
    const std::string lOfTake = (mOptions.mBasePoseFirstFrame = true, ExportTakes(mTop, {"a", "b"}), mAsf);
    mOptions = KQexExportAcclaimOptions();
    EXPECT_EQ(mAsf, lOfTake);
    ExpectMotionsFit();
}

/// In world space, or with another axis up.
TEST_F(KExportSkeletonTest, OneOfTheSamePoseInAnotherSpace)
{
    for (const double lTurn : {0.0, -90.0, 30.0})
    {
        KQexNode* lCopy = AddAlignedCopy(lTurn);
        ExportSkeletonOf(lCopy);
        lCopy->Destroy(true, false);
        ExpectMotionsFit();
    }
}

/// Nodes above the figure that only place it are not the skeleton's root.
TEST_F(KExportSkeletonTest, TheRootIsFoundBelowStillNodes)
{
    KQexNode* lCopy = AddAlignedCopy(0.0);
    ExportSkeletonOf(lCopy->FindChild("hips"));
    lCopy->Destroy(true, false);
    for (const char* lTake : {"a", "b"})
    {
        ASSERT_TRUE(ExportMotion(mTop, lTake)) << Warnings();
        ExpectSameMotion(mHips, lTake, PathOf("out.asf"));
    }
}

/// A figure of other proportions in another pose: each bone moves relative to its own rest pose, in world space.
TEST_F(KExportSkeletonTest, OneOfAnotherFigure)
{
    KQexNode* lCopy = AddAlignedCopy(0.0);
    lCopy->FindChild("hand")->mLocalTranslation.Set(qexVectorTemplate3<double>(30, 1, 2));
    lCopy->FindChild("foot")->mLocalTranslation.Set(qexVectorTemplate3<double>(3, -20, 2));
    lCopy->FindChild("arm")->mLocalTranslation.Set(qexVectorTemplate3<double>(13, 20, 12));
    ExportSkeletonOf(lCopy);
    lCopy->Destroy(true, false);
    ASSERT_TRUE(ExportMotion(mTop, "b")) << Warnings();
    // The top does not move; its rest rotation is not part of that.
    EXPECT_NE(ReadFile(mDir / "b.amc").find("\nroot 0 1.181102 0 0 0 0\n"), std::string::npos) << ReadFile(mDir / "b.amc");
}

TEST_F(KExportSkeletonTest, TheWrongOneIsRefused)
{
    ExportSkeletonOf(mTop);
    Animate(mTop->mLocalTranslation, 0, 0.0F, 7.0F, "a"); // So that it is the root.
    for (const std::pair<const char*, const char*>& lRename :
         {std::pair<const char*, const char*>{"hips", "pelvis"}, {"arm", "limb1"}, {"leg", "limb2"}, {"hand", "paw"}})
    {
        mTop->FindChild(lRename.first)->SetName(lRename.second);
    }
    WriteFile(mDir / "a.amc", "old");
    EXPECT_FALSE(ExportMotion(mTop, "a"));
    EXPECT_TRUE(mResult.mIsMismatch);
    EXPECT_EQ(Warnings(), "Not a motion of this skeleton: 0 of 3 moving joints match; only the motion has pelvis, limb1, limb2; only the "
                          "skeleton has hips, arm, hand\n");
    EXPECT_EQ(mResult.mMessages.front().mPath, PathOf("a.amc"));
    EXPECT_EQ(ReadFile(mDir / "a.amc"), "old");
    mOptions.mAllowUnmatched = true;
    EXPECT_TRUE(ExportMotion(mTop, "a")) << Warnings();
    EXPECT_EQ(mResult.mUnmatched, (std::vector<std::string>{"hips", "arm", "hand", "leg"}));
    EXPECT_NE(ReadFile(mDir / "a.amc"), "old");
}

/// Half of the moving joints of the side that has fewer of them is enough; a joint that never moves does not count.
TEST_F(KExportSkeletonTest, HalfOfTheSmallerSideIsEnough)
{
    ExportSkeletonOf(mTop);
    for (const char* lTake : {"a", "b", "still"})
    {
        Animate(mTop->mLocalTranslation, 0, 0.0F, 7.0F, lTake);
    }
    mHips->SetName("pelvis");
    ASSERT_TRUE(ExportMotion(mTop, "a")) << Warnings();
    EXPECT_EQ(mResult.mMatch.mMatched, 2U);
    EXPECT_EQ(mResult.mMatch.mInMotion, 3U);
    EXPECT_EQ(mResult.mMatch.mInSkeleton, 5U);
    EXPECT_EQ(mResult.mUnmatched, std::vector<std::string>{"hips"});
    EXPECT_TRUE(ExportMotion(mTop, "b")) << "one of two";
    mTop->FindChild("leg")->SetName("limb");
    EXPECT_FALSE(ExportMotion(mTop, "b"));
    EXPECT_TRUE(ExportMotion(mTop, "still")) << "no joint moves, so nothing is lost";
}

/// Dummies have no DOFs and need no node.
TEST_F(KExportSkeletonTest, DummiesAreNotMissed)
{
    ExportSkeletonOf(mTop);
    EXPECT_NE(mAsf.find("name armDummy\n"), std::string::npos) << mAsf;
    ASSERT_TRUE(ExportMotion(mTop, "b")) << Warnings();
    EXPECT_TRUE(mResult.mUnmatched.empty());
}

} // namespace
