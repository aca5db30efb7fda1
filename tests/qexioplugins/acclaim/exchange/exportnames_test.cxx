#include <tests/qexioplugins/acclaim/exchange/exporttest.h>

// Name-space prefixes. Extraction drops them; the exporter puts them back where a file can hold them.

using namespace qexsdk;
using namespace qextest;

namespace
{

class KExportNamesTest : public KExportTest
{
protected:
    /// Two arms with the same names behind different prefixes, so that dummies are needed.
    KQexNode* AddArms()
    {
        KQexNode* lHips = Add(nullptr, "me:hips", 0, 0, 0);
        for (const double lSide : {-1.0, 1.0})
        {
            const std::string lPrefix = lSide < 0.0 ? "right:" : "left:";
            KQexNode*         lArm = Add(lHips, (lPrefix + "arm").c_str(), 10 * lSide, 50, 0);
            KQexNode*         lHand = Add(lArm, (lPrefix + "hand").c_str(), 30 * lSide, 0, 0);
            Add(lHand, (lPrefix + "tip").c_str(), 9 * lSide, 0, 0);
            Animate(lHand->mLocalRotation, 1, 0.0F, 20.0F);
        }
        return lHips;
    }
};

TEST_F(KExportNamesTest, PrefixesStay)
{
    ExpectTakesAreKept(AddArms(), {"take"});
    ReadBack(mAsf);
    EXPECT_EQ(Tree(),
              "root\n right:armDummy\n  right:arm\n   right:hand\n    right:tip\n left:armDummy\n  left:arm\n   left:hand\n    left:tip\n");
    EXPECT_EQ(Warnings(), "");
    EXPECT_NE(mAsf.find("  added-end left:tip\n"), std::string::npos) << mAsf;
    EXPECT_NE(ReadFile(mDir / "take.amc").find("\nleft:hand 0 20 0\n"), std::string::npos) << ReadFile(mDir / "take.amc");
}

TEST_F(KExportNamesTest, PrefixesThatAFileCannotHold)
{
    KQexNode*         lRoot = Add(nullptr, "hips", 0, 0, 0);
    const std::string lLong(47, 'x');
    KQexNode*         lFirst = Add(lRoot, (lLong + ":a").c_str(), 0, 0, 0);
    KQexNode*         lSecond = Add(lFirst, (lLong + ":bcd").c_str(), 0, 5, 0);
    KQexNode*         lThird = Add(lSecond, ":e", 0, 5, 0);
    KQexNode*         lFourth = Add(lThird, "my rig:f", 0, 5, 0);
    Add(Add(lFourth, ":::", 0, 5, 0), "_End", 0, 5, 0);
    Export(lRoot);
    EXPECT_EQ(Tree(), "root\n " + lLong + ":a\n  bcd\n   e\n    my_rig:f\n     bone\n");
    EXPECT_EQ(Warnings(), "Bone renamed (my_rig:f), from (my rig:f)\nBone renamed (bone), from ()\nPrefixes left out of names that are too "
                          "long with them, or begin with a colon (" +
                              lLong + ":bcd, :e, :::)\n");
}

/// The names of a skeleton written as extracted have no prefixes.
TEST_F(KExportNamesTest, AsExtractedPrefixesAreDropped)
{
    mOptions.mAdaptForFile = false;
    Export(AddArms());
    EXPECT_EQ(mAsf.find("left:"), std::string::npos) << mAsf;
}

/// DOFs are found by the whole name, as from a skeleton that was read, or by that without the prefix.
TEST_F(KExportNamesTest, DofsByWholeOrBareName)
{
    KQexNode*    lHips = AddArms();
    KQexBoneDofs lDofs;
    lDofs["left:arm"].emplace_back().mWord = "rx";
    lDofs["arm"].emplace_back().mWord = "rz";
    mOptions.mBoneDofs = &lDofs;
    Export(lHips);
    ASSERT_NE(mBack->mRoot->Find("left:arm"), nullptr);
    EXPECT_EQ(mBack->mRoot->Find("left:arm")->mOrderBuf[0], 5);
    EXPECT_EQ(mBack->mRoot->Find("right:arm")->mOrderBuf[0], 3);
}

/// Either side may have prefixes that the other lacks.
TEST_F(KExportNamesTest, MotionForASkeletonWithOtherPrefixes)
{
    KQexNode* lHips = Add(nullptr, "hips", 0, 0, 0);
    KQexNode* lArm = Add(lHips, "me:arm", 0, 5, 0);
    Add(lArm, "me:arm_End", 0, 5, 0);
    Animate(lArm->mLocalRotation, 1, 0.0F, 20.0F);
    for (const char* lName : {"me:arm", "you:arm", "arm"})
    {
        lArm->SetName(lName);
        ExportTakes(lHips, {"take"});
        for (const char* lOther : {"me:arm", "arm", "you:arm"})
        {
            lArm->SetName(lOther);
            ReadBack(mAsf);
            ASSERT_TRUE(KQexExporterAcclaim::ExportMotion(lHips, mBack.get(), PathOf("other.amc").c_str(), mOptions, mResult))
                << Warnings();
            EXPECT_TRUE(mResult.mUnmatched.empty());
            EXPECT_NE(ReadFile(mDir / "other.amc").find(std::string("\n") + lName + " 0 20 0\n"), std::string::npos) << lOther;
        }
    }
}

} // namespace
