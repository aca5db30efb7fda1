#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <tests/qexioplugins/acclaim/amcsupport.h>
#include <tests/qexioplugins/acclaim/asfbuild.h>
#include <tests/support/memorywatch.h>
#include <tests/support/randomscene.h>
#include <tests/support/standardinput.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace qexsdk;
using namespace qextest;

namespace
{

KQexAcclaimSource Text(const std::string& pText, const char* pName, const char* pTake = "")
{
    KQexAcclaimSource lSource = KQexAcclaimSource::Buffer(pText.data(), pText.size(), pName);
    lSource.mTakeName = pTake;
    return lSource;
}

const std::string kAsf = kSmallAsf;
const std::string kThree = SmallFrame(1, 1) + SmallFrame(2, 2) + SmallFrame(3, 3);

const char kSmallTree[] = "root(a(b(c(c_End))) d(d_End))";

/// Keys of a property's channel in a take as "ticks of 1/120 s:value", "-" without a curve.
std::string Keys(KQexNode* pNode, bool pRotation, unsigned int pChannel, const char* pTake)
{
    KQexProperty&      lProperty = pRotation ? static_cast<KQexProperty&>(pNode->mLocalRotation) : pNode->mLocalTranslation;
    KQexAnimCurveNode* lCurveNode = lProperty.GetCurveNode(false, pTake);
    KQexAnimCurve*     lCurve = lCurveNode == nullptr ? nullptr : lCurveNode->GetCurve(pChannel, 0, nullptr);
    if (lCurve == nullptr)
    {
        return "-";
    }
    std::ostringstream lText;
    for (int i = 0; i < lCurve->GetKeyCount(); ++i)
    {
        lText << (i == 0 ? "" : " ") << static_cast<double>(lCurve->GetTime(i).Get()) / 5880000.0 << ':'
              << lCurve->GetValue(i) + 0.0F; // No minus zero.
    }
    return lText.str();
}

/// What an import could change: objects, takes, the current take and the node tree.
std::string Snapshot(const KQexScene& pScene)
{
    std::ostringstream lText;
    for (const KQexObject* lObject = pScene.GetFirstObject(); lObject != nullptr; lObject = pScene.GetNextObject(lObject))
    {
        lText << lObject << ' ' << lObject->GetName() << '\n';
    }
    lText << pScene.GetAnimStackCount() << ' ' << pScene.GetEvaluator()->GetContext() << ' ' << NodeTree(pScene.GetRootNode());
    return lText.str();
}

struct KSetup
{
    KScenePtr                mScene = MakeScene();
    KQexImportAcclaimOptions mOptions;
    KQexImportAcclaimResult  mResult;

    KSetup() { mOptions.mTakeName = "take"; }

    bool Import(const std::string& pAsf, const std::vector<KQexAcclaimSource>& pMotions)
    {
        return KQexImporterAcclaim::Import(mScene.get(), Text(pAsf, "small.asf"), pMotions, mOptions, mResult);
    }
    bool Import(const std::string& pAmc) { return Import(kAsf, {Text(pAmc, "small.amc")}); }

    KQexNode* Node(const char* pName) { return mScene->GetRootNode()->FindChild(pName, true); }
};

/// The skeleton reader warns about the bone with an l DOF.
const char kLengthWarning[] = "W36 Unknown degree of freedom (l ry)\n";

TEST(KQexImporterAcclaim, ASkeletonAlone)
{
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(kAsf, {})) << Texts(lSetup.mResult.mMessages);
    EXPECT_TRUE(lSetup.mResult.mOk);
    EXPECT_EQ(Texts(lSetup.mResult.mMessages), kLengthWarning);
    EXPECT_EQ(lSetup.mResult.mMessages[0].mPath, "small.asf");
    EXPECT_EQ(lSetup.mResult.CountMessages(false), 1U);
    EXPECT_EQ(lSetup.mResult.CountMessages(true), 0U);
    ASSERT_EQ(lSetup.mResult.mRootNode, lSetup.mScene->GetRootNode()->GetFirstChild());
    EXPECT_EQ(NodeTree(lSetup.mResult.mRootNode), kSmallTree);
    EXPECT_EQ(lSetup.mScene->GetAnimStackCount(), 0);
    EXPECT_TRUE(lSetup.mResult.mTakes.empty());
    EXPECT_EQ(lSetup.mResult.mAsfScene, nullptr);
}

TEST(KQexImporterAcclaim, ASkeletonAndAMotion)
{
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(kThree)) << Texts(lSetup.mResult.mMessages);
    ASSERT_EQ(lSetup.mResult.mTakes.size(), 1U);
    const KQexImportedTake& lTake = lSetup.mResult.mTakes[0];
    EXPECT_EQ(lTake.mName, "take");
    EXPECT_EQ(lTake.mPath, "small.amc");
    EXPECT_EQ(lTake.mInfo.mFrameCount, 3);
    EXPECT_EQ(lTake.mInfo.mSamplesPerSecond, 120.0);
    EXPECT_EQ(lTake.mInfo.mRateSource, eAMC_RATE_DEFAULT);
    EXPECT_EQ(Keys(lSetup.Node("root"), false, 0, "take"), "0:1 1:2 2:3");
    EXPECT_EQ(Keys(lSetup.Node("root"), true, 0, "take"), "-");
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), "0:4 1:5 2:6");
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 1, "take"), "0:0 1:0 2:0");
    EXPECT_EQ(Keys(lSetup.Node("b"), false, 0, "take"), "-");
    EXPECT_EQ(Keys(lSetup.Node("c"), true, 2, "take"), "0:5 1:6 2:7");
    EXPECT_EQ(Keys(lSetup.Node("c"), true, 1, "take"), "0:6 1:7 2:8");
    EXPECT_EQ(Keys(lSetup.Node("d"), true, 0, "take"), "-");
    EXPECT_EQ(lSetup.mScene->GetEvaluator()->GetContext(), lSetup.mScene->FindAnimStack("take"));
}

/// Takes give their stacks: also a motion that moves nothing, and one that is bound to existing nodes.
TEST(KQexImporterAcclaim, TakesGiveTheirStacks)
{
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(kAsf, {Text(kThree, "a.amc"), Text(kThree, "b.amc")})) << Texts(lSetup.mResult.mMessages);
    ASSERT_EQ(lSetup.mResult.mTakes.size(), 2U);
    EXPECT_EQ(lSetup.mResult.mTakes[0].mStack, lSetup.mScene->GetAnimStack(0));
    EXPECT_EQ(lSetup.mResult.mTakes[1].mStack, lSetup.mScene->GetAnimStack(1));
    EXPECT_STREQ(lSetup.mResult.mTakes[1].mStack->GetName(), "b");

    lSetup.mOptions.mTakeName = "bound";
    lSetup.mOptions.mMergeRoot = lSetup.mResult.mRootNode;
    ASSERT_TRUE(lSetup.Import(kThree)) << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(lSetup.mResult.mTakes[0].mStack, lSetup.mScene->FindAnimStack("bound"));

    KSetup            lStiff;
    const std::string lNoDofs = ":version 1.10\n:name s\n:root\naxis XYZ\n:bonedata\n:hierarchy\n";
    ASSERT_TRUE(lStiff.Import(lNoDofs, {Text("1\n2\n", "still.amc")})) << Texts(lStiff.mResult.mMessages);
    ASSERT_NE(lStiff.mResult.mTakes[0].mStack, nullptr);
    EXPECT_EQ(lStiff.mResult.mTakes[0].mStack, lStiff.mScene->FindAnimStack("take"));
}

TEST(KQexImporterAcclaim, FromPaths)
{
    const KTempDir lFolder;
    WriteFile(lFolder / "a.asf", kAsf);
    WriteFile(lFolder / "walk.one.amc", kThree);
    KSetup lSetup;
    lSetup.mOptions.mTakeName.clear();
    ASSERT_TRUE(KQexImporterAcclaim::Import(lSetup.mScene.get(), (lFolder / "a.asf").c_str(), (lFolder / "walk.one.amc").c_str(),
                                            lSetup.mOptions, lSetup.mResult));
    EXPECT_EQ(lSetup.mResult.mTakes[0].mName, "walk.one");
    ASSERT_TRUE(KQexImporterAcclaim::Import(lSetup.mScene.get(), (lFolder / "a.asf").c_str(), nullptr, lSetup.mOptions, lSetup.mResult));
    EXPECT_EQ(lSetup.mScene->GetRootNode()->GetChildCount(), 2);
}

TEST(KQexImporterAcclaim, SeveralMotionsAreSeveralTakes)
{
    const std::string lOther = SmallFrame(1, 11) + SmallFrame(2, 12);
    KSetup            lSetup;
    lSetup.mOptions.mTakeName.clear();
    ASSERT_TRUE(
        lSetup.Import(kAsf, {Text(kThree, "x/walk.amc"), Text(lOther, "y\\walk.amc"), Text(lOther, "-"), Text(lOther, "z.amc", "mine")}));
    const char* const lNames[] = {"walk", "walk 2", "Take 001", "mine"};
    ASSERT_EQ(lSetup.mResult.mTakes.size(), 4U);
    for (size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(lSetup.mResult.mTakes[i].mName, lNames[i]);
        EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, lNames[i]), i == 0 ? "0:4 1:5 2:6" : "0:14 1:15");
        EXPECT_EQ(Keys(lSetup.Node("c"), true, 2, lNames[i]), i == 0 ? "0:5 1:6 2:7" : "0:15 1:16");
        EXPECT_EQ(Keys(lSetup.Node("root"), false, 0, lNames[i]), i == 0 ? "0:1 1:2 2:3" : "0:11 1:12");
    }
    EXPECT_EQ(NodeTree(lSetup.mResult.mRootNode), kSmallTree);
}

TEST(KQexImporterAcclaim, TwoMotionsForOneTakeAreRefused)
{
    KSetup            lSetup;
    const std::string lBefore = Snapshot(*lSetup.mScene);
    EXPECT_FALSE(lSetup.Import(kAsf, {Text(kThree, "1.amc", "one"), Text(kThree, "2.amc", "one")}));
    EXPECT_EQ(Texts({lSetup.mResult.mMessages.back().mMessage}), "E0 Two motions for the take one\n");
    EXPECT_EQ(Snapshot(*lSetup.mScene), lBefore);
}

TEST(KQexImporterAcclaim, BonesOfOneNameKeepTheirOwnMotionInEveryTake)
{
    // Two bones named a under the root: the motion drives the first, the other one stays still in all takes.
    const std::string lAsf = Replaced(Replaced(kAsf, "name d", "name a"), "root a d", "root a");
    KSetup            lSetup;
    ASSERT_TRUE(lSetup.Import(lAsf, {Text(kThree, "1.amc", "one"), Text(kThree, "2.amc", "two")})) << Texts(lSetup.mResult.mMessages);
    KQexNode* lFirst = lSetup.mResult.mRootNode->GetChild(0);
    KQexNode* lSecond = lSetup.mResult.mRootNode->GetChild(1);
    ASSERT_STREQ(lFirst->GetName(), "a");
    ASSERT_STREQ(lSecond->GetName(), "a");
    KQexNode* lMoving = lFirst->FindChild("b", false) != nullptr ? lFirst : lSecond;
    for (const char* lTake : {"one", "two"})
    {
        EXPECT_EQ(Keys(lMoving, true, 0, lTake), "0:2 1:3 2:4");
        EXPECT_EQ(Keys(lMoving == lFirst ? lSecond : lFirst, true, 0, lTake), "-");
    }
}

TEST(KQexImporterAcclaim, MotionOntoAnExistingSkeleton)
{
    KSetup lSetup;
    lSetup.mOptions.mKeepAsfScene = true;
    ASSERT_TRUE(lSetup.Import(kAsf, {}));
    KQexAsfSceneOwner lAsfScene = std::move(lSetup.mResult.mAsfScene);
    KQexNode* const   lRoot = lSetup.mResult.mRootNode;
    ASSERT_NE(lAsfScene, nullptr);
    ASSERT_TRUE(KQexImporterAcclaim::ImportMotion(lSetup.mScene.get(), lAsfScene.get(), lSetup.mResult.mSkeletonNotes,
                                                  {Text(kThree, "walk.amc")}, lSetup.mOptions, lSetup.mResult))
        << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(Texts(lSetup.mResult.mMessages), "");
    EXPECT_EQ(lSetup.mResult.mRootNode, lRoot);
    EXPECT_EQ(Keys(lSetup.Node("c"), true, 2, "take"), "0:5 1:6 2:7");

    // A generated take name avoids existing takes.
    lSetup.mOptions.mTakeName.clear();
    for (const char* lName : {"take.amc", "take.amc"})
    {
        ASSERT_TRUE(KQexImporterAcclaim::ImportMotion(lSetup.mScene.get(), lAsfScene.get(), lSetup.mResult.mSkeletonNotes,
                                                      {Text(SmallFrame(1, 5) + SmallFrame(2, 6), lName)}, lSetup.mOptions, lSetup.mResult));
    }
    EXPECT_EQ(lSetup.mResult.mTakes[0].mName, "take 3");
    EXPECT_EQ(Keys(lSetup.Node("c"), true, 2, "take"), "0:5 1:6 2:7");
    EXPECT_EQ(Keys(lSetup.Node("c"), true, 2, "take 3"), "0:9 1:10");
    EXPECT_EQ(NodeTree(lSetup.mScene->GetRootNode()), std::string("RootNode(") + kSmallTree + ")");
}

TEST(KQexImporterAcclaim, MotionOntoOneOfTwoTrees)
{
    KSetup lSetup;
    lSetup.mOptions.mKeepAsfScene = true;
    for (const char* lName : {"first", "second"})
    {
        lSetup.mOptions.mParentNode = KQexNode::Create(lSetup.mScene.get(), lName);
        lSetup.mScene->GetRootNode()->AddChild(lSetup.mOptions.mParentNode);
        ASSERT_TRUE(lSetup.Import(kAsf, {}));
    }
    KQexAsfSceneOwner lAsfScene = std::move(lSetup.mResult.mAsfScene);
    KQexNode* const   lRoot = lSetup.mResult.mRootNode;
    // Below the group, and at the skeleton's root itself.
    for (KQexNode* lMergeRoot : {lSetup.Node("second"), lRoot})
    {
        const std::string lTake = lMergeRoot->GetName();
        lSetup.mOptions.mMergeRoot = lMergeRoot;
        lSetup.mOptions.mTakeName = lTake;
        ASSERT_TRUE(KQexImporterAcclaim::ImportMotion(lSetup.mScene.get(), lAsfScene.get(), lSetup.mResult.mSkeletonNotes,
                                                      {Text(kThree, "walk.amc")}, lSetup.mOptions, lSetup.mResult));
        EXPECT_EQ(lSetup.mResult.mRootNode, lRoot);
        EXPECT_EQ(Keys(lRoot->FindChild("b"), true, 0, lTake.c_str()), "0:4 1:5 2:6");
        EXPECT_EQ(Keys(lSetup.Node("first")->FindChild("b"), true, 0, lTake.c_str()), "-");
    }
}

TEST(KQexImporterAcclaim, NeedsASceneAndASkeleton)
{
    KSetup                  lSetup;
    KQexImportAcclaimResult lResult;
    EXPECT_FALSE(KQexImporterAcclaim::Import(nullptr, Text(kAsf, "small.asf"), {}, {}, lResult));
    EXPECT_EQ(lResult.mMessages.back().mMessage.mText, "There is no scene to import into");

    const KQexAsfSceneOwner lEmpty(QexSdkNew<KQexAsfScene>());
    KQexAsfScene* const     lSkeletons[] = {nullptr, lEmpty.get()};
    for (KQexAsfScene* lSkeleton : lSkeletons)
    {
        for (const std::vector<KQexAcclaimSource>& lMotions : {std::vector<KQexAcclaimSource>(), {Text(kThree, "walk.amc")}})
        {
            EXPECT_FALSE(KQexImporterAcclaim::ImportMotion(lSetup.mScene.get(), lSkeleton, {}, lMotions, {}, lResult));
            EXPECT_EQ(Texts(lResult.mMessages), "E0 The motion has no skeleton\n");
        }
    }
    EXPECT_EQ(lSetup.mScene->GetObjectCount(), 2);
}

TEST(KQexImporterAcclaim, TakesAreNamedAfterTheirFiles)
{
    const char* const lCases[][2] = {{"walk.amc", "walk"}, {"a.b/walk", "walk"},       {"c:\\d\\walk.x.amc", "walk.x"},
                                     {"dir/.amc", ".amc"}, {".hidden.amc", ".hidden"}, {"-", "Take 001"},
                                     {"", "Take 001"},     {"dir/", "Take 001"}};
    for (const auto& lCase : lCases)
    {
        KSetup lSetup;
        lSetup.mOptions.mTakeName.clear();
        ASSERT_TRUE(lSetup.Import(kAsf, {Text(kThree, lCase[0])}));
        EXPECT_EQ(lSetup.mResult.mTakes[0].mName, lCase[1]) << lCase[0];
    }
}

TEST(KQexImporterAcclaim, ATruncatedSkeletonIsExplained)
{
    const KTempDir lFolder;
    WriteFile(lFolder / "cut.asf", kAsf.substr(0, kAsf.find("id 2")));
    KSetup lSetup;
    EXPECT_FALSE(KQexImporterAcclaim::Import(lSetup.mScene.get(), (lFolder / "cut.asf").c_str(), nullptr, {}, lSetup.mResult));
    EXPECT_EQ(Texts(lSetup.mResult.mMessages),
              "E13 The skeleton is incomplete: reading ended in the section :bonedata that begins at line 13\n");

    // Standard input can't be read again to find the section.
    KStandardInput lInput(kAsf.substr(0, kAsf.find("id 2")));
    EXPECT_FALSE(KQexImporterAcclaim::Import(lSetup.mScene.get(), "-", "", {}, lSetup.mResult));
    EXPECT_EQ(Texts(lSetup.mResult.mMessages), "E0 The skeleton is incomplete\n");
}

TEST(KQexImporterAcclaim, ParentAndMergeRoot)
{
    KSetup    lSetup;
    KQexNode* lGroup = KQexNode::Create(lSetup.mScene.get(), "group");
    lSetup.mScene->GetRootNode()->AddChild(lGroup);
    lSetup.mOptions.mParentNode = lGroup;
    ASSERT_TRUE(lSetup.Import(kThree));
    KQexNode* const lRoot = lSetup.mResult.mRootNode;
    EXPECT_EQ(lRoot->GetParent(), lGroup);

    // Merging into an ancestor and into the root itself adds nothing but the take.
    for (KQexNode* lMergeRoot : {lGroup, lRoot})
    {
        const std::string lTake = lMergeRoot == lGroup ? "above" : "at";
        lSetup.mOptions.mMergeRoot = lMergeRoot;
        lSetup.mOptions.mTakeName = lTake;
        ASSERT_TRUE(lSetup.Import(kThree));
        EXPECT_EQ(lSetup.mResult.mRootNode, lRoot);
        EXPECT_EQ(NodeTree(lGroup), std::string("group(") + kSmallTree + ")");
        EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, lTake.c_str()), "0:4 1:5 2:6");
    }

    // A missing bone is created.
    lSetup.Node("b")->Destroy(true, false);
    ASSERT_TRUE(lSetup.Import(kThree));
    EXPECT_EQ(NodeTree(lGroup), std::string("group(") + kSmallTree + ")");
}

TEST(KQexImporterAcclaim, LimitsFollowTheFlags)
{
    const std::string lAsf = Replaced(kAsf, "dof rx\n", "dof rx\n    limits (-10 20)\n");
    for (const bool lSetLimits : {false, true})
    {
        KSetup lSetup;
        lSetup.mOptions.mSetPreRotation = true;
        lSetup.mOptions.mSetLimits = lSetLimits;
        ASSERT_TRUE(lSetup.Import(lAsf, {}));
        EXPECT_EQ(lSetup.Node("b")->GetLimits().mRotationLimits.GetLimitMax()[0], lSetLimits ? 20.0 : 0.0);
    }
}

TEST(KQexImporterAcclaim, LinesOfRemovedDummiesCauseNoWarning)
{
    KSetup lSetup;
    lSetup.mOptions.mRemoveDummies = true;
    ASSERT_TRUE(lSetup.Import(Replaced(kThree, "\nb", "\nd\nb")));
    EXPECT_EQ(NodeTree(lSetup.mResult.mRootNode), "root(a(b(c(c_End))))");
    EXPECT_EQ(Texts(lSetup.mResult.mMessages),
              std::string(kLengthWarning) + "W0 A leaf without a degree of freedom is removed and its length lost (d)\n");
}

TEST(KQexImporterAcclaim, ASingleFrameKeepsItsPose)
{
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(SmallFrame(7, 1)));
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), "0:4 1:4");
    EXPECT_EQ(Keys(lSetup.Node("root"), false, 0, "take"), "0:1 1:1");
    EXPECT_EQ(lSetup.mResult.mTakes[0].mInfo.mFrameCount, 1);
    EXPECT_EQ(lSetup.mResult.mTakes[0].mInfo.mStop.Get(), 5880000);
}

struct KFrameKeysCase
{
    const char* mWhat;
    std::string mAmc;
    const char* mKeys; ///< Of bone b, rotation about x.
};

class KImportKeyTest : public testing::TestWithParam<KFrameKeysCase>
{
};

TEST_P(KImportKeyTest, KeysOfOneBone)
{
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(GetParam().mAmc)) << GetParam().mWhat << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), GetParam().mKeys) << GetParam().mWhat;
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 2, "take").size() > 1, std::string(GetParam().mKeys) != "-") << GetParam().mWhat;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KImportKeyTest,
    testing::Values(KFrameKeysCase{"a gap in the numbers is a gap in time", "5\nb 1\n9\nb 2\n", "0:1 4:2"},
                    KFrameKeysCase{"a jump of 1e9 costs one key", "1\nb 1\n1000000001\nb 2\n", "0:1 1e+09:2"},
                    KFrameKeysCase{"a repeated number replaces", "1\nb 1\n2\nb 2\n2\nb 3\n3\nb 4\n", "0:1 1:3 2:4"},
                    KFrameKeysCase{"the first number again", "1\nb 1\n1\nb 5\n2\nb 2\n", "0:5 1:2"},
                    KFrameKeysCase{"going back replaces and adds", "1\nb 1\n3\nb 3\n5\nb 5\n3\nb 7\n2\nb 8\n3\nb 9\n6\nb 6\n",
                                   "0:1 1:8 2:9 4:5 5:6"},
                    KFrameKeysCase{"going back below the first", "4\nb 4\n3\nb 3\n1\nb 1\n2\nb 2\n", "-3:1 -2:2 -1:3 0:4"},
                    KFrameKeysCase{"absent in the middle holds", "1\nb 1\n2\nb 2\n3\nroot 0\n4\nroot 0\n5\nb 5\n", "0:1 1:2 3:2 4:5"},
                    KFrameKeysCase{"absent at the end holds", "1\nb 1\nroot 0\n2\nb 2\nroot 0\n3\nroot 0\n4\nroot 0\n", "0:1 1:2 3:2"},
                    KFrameKeysCase{"absent at the beginning is at rest", "1\nroot 0\n2\nroot 0\n3\nb 3\n", "0:0 1:0 2:3"},
                    KFrameKeysCase{"absent in the first frame alone", "1\nroot 0\n2\nb 3\n", "0:0 1:3"},
                    KFrameKeysCase{"only in the first frame", "1\nb 3\n2\nroot 0\n3\nroot 0\n", "0:3 2:3"},
                    KFrameKeysCase{"only in a frame that comes late", "1\nroot 0\n2\nroot 0\n1\nb 3\n", "0:3 1:3"},
                    KFrameKeysCase{"only in the last frame, late", "1\nroot 0\n2\nroot 0\n2\nb 3\n", "0:3 1:3"},
                    KFrameKeysCase{"never", "1\nroot 0\n2\nroot 0\n", "-"}));

/// Frames in any order: of each number the last one wins.
TEST(KQexImporterAcclaim, FramesInAnyOrderAreSorted)
{
    std::mt19937 lRandom(7);
    for (int lCase = 0; lCase < 200; ++lCase)
    {
        std::map<int, int> lExpected;
        std::string        lAmc;
        const int          lCount = 2 + static_cast<int>(lRandom() % 30);
        int                lFirst = 0;
        for (int i = 0; i < lCount; ++i)
        {
            const int lNumber = static_cast<int>(lRandom() % 20) - 5;
            const int lValue = static_cast<int>(lRandom() % 170);
            lFirst = i == 0 ? lNumber : lFirst;
            lExpected[lNumber] = lValue;
            lAmc += std::to_string(lNumber) + "\nb " + std::to_string(lValue) + '\n';
        }
        if (lExpected.size() < 2)
        {
            continue;
        }
        std::ostringstream lKeys;
        for (const auto& [lNumber, lValue] : lExpected)
        {
            lKeys << (lKeys.tellp() > 0 ? " " : "") << lNumber - lFirst << ':' << lValue;
        }
        KSetup lSetup;
        lSetup.mOptions.mRotationFilter = eROTATION_FILTER_NONE;
        ASSERT_TRUE(lSetup.Import(lAmc));
        EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), lKeys.str()) << lAmc;
    }
}

/// Sparse motion costs little: this counts keys, not time.
TEST(KQexImporterAcclaim, KeysGrowWithTheLinesNotTheBones)
{
    const int   kBones = 4000;
    std::string lAsf = kAsf.substr(0, kAsf.find("  begin"));
    for (int i = 0; i < kBones; ++i)
    {
        lAsf += "  begin\n name n" + std::to_string(i) + "\n direction 0 1 0\n length 1\n dof rx\n  end\n";
    }
    lAsf += ":hierarchy\n";
    std::string lAmc;
    for (int i = 0; i < kBones; ++i)
    {
        lAmc += std::to_string(i) + "\nn" + std::to_string(i) + " 5\n";
    }
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(lAsf, {Text(lAmc, "sparse.amc")}));
    size_t lKeys = 0;
    for (const KQexObject* lObject = lSetup.mScene->GetFirstObject(); lObject != nullptr; lObject = lSetup.mScene->GetNextObject(lObject))
    {
        if (const auto* lCurve = QexCast<KQexAnimCurve>(lObject))
        {
            lKeys += static_cast<size_t>(lCurve->GetKeyCount());
        }
    }
    EXPECT_LE(lKeys, 3U * 4U * kBones);
    EXPECT_EQ(Keys(lSetup.Node("n2000"), true, 0, "take"), "0:0 1999:0 2000:5 3999:5");
}

TEST(KQexImporterAcclaim, ALongMotionBackwards)
{
    std::string lAmc;
    for (int i = 200000; i > 0; --i)
    {
        lAmc += std::to_string(i) + "\nb " + std::to_string(i % 100) + '\n';
    }
    KSetup lSetup;
    ASSERT_TRUE(lSetup.Import(lAmc));
    const KQexAnimCurve* lCurve = lSetup.Node("b")->mLocalRotation.GetCurveNode(false, "take")->GetCurve(0, 0, nullptr);
    ASSERT_EQ(lCurve->GetKeyCount(), 200000);
    EXPECT_EQ(lCurve->GetTime(0).Get(), -199999LL * 5880000);
    EXPECT_EQ(lCurve->GetValue(0), 1.0F);
    EXPECT_LE(lSetup.mResult.mMessages.size(), 1100U);
}

TEST(KQexImporterAcclaim, GarbageIsNoMotion)
{
    const std::string lTexts[] = {
        std::string(100000, '\0'),
        std::string(100000, '\xFF'),
        "\xC3\x28 1 2\n\xE2\x82",
        "1\nb " + std::string(1000000, '\0') + "x\n",
        std::string(3000000, ':'),
        "1\nb 1e99999999999\n",
        "1\nb " + std::string(1000000, '9') + "\n",
        "1\nb ----1\n",
        ":\n::\n:::\n",
    };
    for (const std::string& lText : lTexts)
    {
        KSetup            lSetup;
        const std::string lBefore = Snapshot(*lSetup.mScene);
        EXPECT_FALSE(lSetup.Import(lText));
        EXPECT_GE(lSetup.mResult.CountMessages(true), 1U);
        EXPECT_EQ(Snapshot(*lSetup.mScene), lBefore);
        for (const KQexImportMessage& lMessage : lSetup.mResult.mMessages)
        {
            EXPECT_LE(lMessage.mMessage.mText.size(), 1000U);
        }
    }

    // A million unknown bone names: the warnings are limited, the frames are read.
    std::string lNames = "1\nb 1\n";
    for (int i = 0; i < 1000000; ++i)
    {
        lNames += "x" + std::to_string(i) + '\n';
    }
    KSetup lSetup;
    lSetup.mOptions.mAllowUnmatched = true;
    EXPECT_TRUE(lSetup.Import(lNames + "2\nb 2\n"));
    EXPECT_LE(lSetup.mResult.mMessages.size(), 1100U);
}

/// A motion that hardly matches the skeleton is refused, with one error instead of a warning for each bone.
TEST(KQexImporterAcclaim, AMotionOfAnotherSkeletonIsRefused)
{
    const std::string lWrong = "1\nroot 1\nx 1\ny 1 2\nz 3\nw 4\n2\nroot 1\nx 1\ny 1 2\nz 3\nw 4\n";
    KSetup            lSetup;
    const std::string lBefore = Snapshot(*lSetup.mScene);
    EXPECT_FALSE(lSetup.Import(lWrong));
    EXPECT_TRUE(lSetup.mResult.mIsMismatch);
    EXPECT_EQ(Texts(lSetup.mResult.mMessages),
              kLengthWarning + std::string("E0 Not a motion of this skeleton: 0 of 3 moving joints match; only the "
                                           "motion has x, y, z; only the skeleton has a, b, c\n"));
    EXPECT_EQ(lSetup.mResult.mMessages.back().mPath, "small.amc");
    EXPECT_EQ(Snapshot(*lSetup.mScene), lBefore);
    lSetup.mOptions.mAllowUnmatched = true;
    EXPECT_TRUE(lSetup.Import(lWrong));
    EXPECT_FALSE(lSetup.mResult.mIsMismatch);
    EXPECT_NE(Texts(lSetup.mResult.mMessages).find("The skeleton has no bone x, its values are ignored\n"), std::string::npos);
}

struct KMatchCase
{
    const char* mBones;
    bool        mIsAccepted;
};

class KMatchTest : public testing::TestWithParam<KMatchCase>
{
};

/// The skeleton has three bones with DOFs, a, b and c, and one without, d.
TEST_P(KMatchTest, HalfOfTheSmallerSideIsEnough)
{
    const std::map<char, std::string> lLines = {{'a', "a 1 2\n"}, {'b', "b 1\n"}, {'c', "c 1 2 3\n"}};
    std::string                       lFrame = "root 1\n";
    for (const char lBone : std::string(GetParam().mBones))
    {
        lFrame += lLines.count(lBone) > 0 ? lLines.at(lBone) : std::string(1, lBone) + " 1\n";
    }
    KSetup lSetup;
    EXPECT_EQ(lSetup.Import("1\n" + lFrame + "2\n" + lFrame), GetParam().mIsAccepted) << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(lSetup.mResult.mIsMismatch, !GetParam().mIsAccepted);
    KFrameLog               lLog;
    KQexFileAcclaimAmc      lFile(false);
    KQexImportAcclaimResult lRead;
    const KQexAsfSceneOwner lSkeleton = ReadSmallAsf(kAsf, lRead);
    KQexAmcReadOptions      lOptions;
    const std::string       lText = "1\n" + lFrame;
    lOptions.mSkeletonNotes = lRead.mSkeletonNotes;
    EXPECT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()) && lFile.ReadFrames(lSkeleton.get(), lOptions, lLog))
        << "the reader itself only counts them";
    EXPECT_EQ(lFile.GetInfo().mMatch.IsPlausible(), GetParam().mIsAccepted);
}

INSTANTIATE_TEST_SUITE_P(Bones, KMatchTest,
                         testing::Values(KMatchCase{"", true}, KMatchCase{"abc", true}, KMatchCase{"a", true}, KMatchCase{"x", false},
                                         KMatchCase{"ax", true}, KMatchCase{"axy", false}, KMatchCase{"axyz", false},
                                         KMatchCase{"abxyz", true}, KMatchCase{"abcxyzuvw", true}, KMatchCase{"xyzuvw", false}));

/// The end that a writer added to a leaf bone gets no node.
TEST(KQexImporterAcclaim, AddedEnds)
{
    const std::string lNoted = ":documentation\n added-end c\n added-end a\n added-end nobody\n" + kAsf;
    KSetup            lSetup;
    lSetup.mOptions.mKeepAsfScene = true;
    ASSERT_TRUE(lSetup.Import(lNoted, {Text(kThree, "small.amc")})) << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(NodeTree(lSetup.mResult.mRootNode), "root(a(b(c)) d(d_End))");
    EXPECT_EQ(lSetup.mResult.mSkeletonNotes.mAddedEnds.size(), 3U);
    EXPECT_GT(lSetup.mResult.mAsfScene->mRoot->Find("c")->mLength, 0.0) << "the skeleton itself keeps its length";
    // Bound to an existing hierarchy, bones that it lacks are built without such an end, too.
    lSetup.Node("c")->Destroy(true, false);
    lSetup.mOptions.mMergeRoot = lSetup.mScene->GetRootNode();
    lSetup.mOptions.mTakeName = "second";
    ASSERT_TRUE(lSetup.Import(lNoted, {Text(kThree, "small.amc")})) << Texts(lSetup.mResult.mMessages);
    EXPECT_EQ(NodeTree(lSetup.mResult.mRootNode), "root(a(b(c)) d(d_End))");
}

TEST(KQexImporterAcclaim, FiltersAreSetForTheImportAlone)
{
    // A rotation by more than 180 degrees from one frame to the next.
    const std::string lAmc = "1\nb 170\n2\nb -170\n3\nb -170\n4\nb -170\n";
    KFCURVE_SetRotationFilterToApply(1);
    KFCURVE_SetUseConstantKeyReducer(true);
    for (const KQexRotationFilter lFilter : {eROTATION_FILTER_NONE, eROTATION_FILTER_UNROLL})
    {
        for (const bool lReduce : {false, true})
        {
            KSetup lSetup;
            lSetup.mOptions.mRotationFilter = lFilter;
            lSetup.mOptions.mUseConstantKeyReducer = lReduce;
            ASSERT_TRUE(lSetup.Import(lAmc));
            const std::string lAngle = lFilter == eROTATION_FILTER_NONE ? "-170" : "190";
            EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), "0:170 1:" + lAngle + (lReduce ? "" : " 2:" + lAngle) + " 3:" + lAngle);
            EXPECT_FALSE(lSetup.Import("1\nb x\n"));
            EXPECT_EQ(KFCURVE_GetRotationFilterToApply(), 1);
            EXPECT_TRUE(KFCURVE_GetUseConstantKeyReducer());
        }
    }
    KFCURVE_SetRotationFilterToApply(0);
    KFCURVE_SetUseConstantKeyReducer(false);
}

struct KFailCase
{
    const char*              mWhat;
    std::string              mAsf;
    std::vector<std::string> mMotions;
    const char*              mMessage; ///< The last one.
};

class KImportFailTest : public testing::TestWithParam<KFailCase>
{
};

/// The second scene already has nodes, a take and motion, which must stay.
TEST_P(KImportFailTest, TheSceneIsUnchanged)
{
    for (const bool lUsed : {false, true})
    {
        KSetup lSetup;
        if (lUsed)
        {
            ASSERT_TRUE(lSetup.Import(kThree));
        }
        const std::string              lBefore = Snapshot(*lSetup.mScene);
        std::vector<KQexAcclaimSource> lMotions;
        for (const std::string& lText : GetParam().mMotions)
        {
            lMotions.push_back(Text(lText, "bad.amc"));
        }
        EXPECT_FALSE(lSetup.Import(GetParam().mAsf, lMotions));
        EXPECT_FALSE(lSetup.mResult.mOk);
        EXPECT_FALSE(lSetup.mResult.mCancelled);
        EXPECT_EQ(lSetup.mResult.mRootNode, nullptr);
        EXPECT_TRUE(lSetup.mResult.mTakes.empty());
        ASSERT_FALSE(lSetup.mResult.mMessages.empty());
        EXPECT_EQ(Texts({lSetup.mResult.mMessages.back().mMessage}), GetParam().mMessage);
        EXPECT_EQ(Snapshot(*lSetup.mScene), lBefore);
        EXPECT_EQ(lUsed ? Keys(lSetup.Node("b"), true, 0, "take") : "0:4 1:5 2:6", "0:4 1:5 2:6");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KImportFailTest,
    testing::Values(
        KFailCase{"an error in the skeleton", Replaced(kAsf, "length 3", "length x"), {kThree}, "E26 Can't read bone length\n"},
        KFailCase{"an empty skeleton", "", {}, "E0 The skeleton is incomplete: there is no section\n"},
        KFailCase{"no root", ":version 1.10\n:skin\n", {}, "E0 The skeleton is incomplete: there is no :root\n"},
        KFailCase{"no name",
                  Replaced(kAsf, ":name small", ":name"),
                  {},
                  "E2 The skeleton is incomplete: reading ended in the section :name that begins at line 2\n"},
        KFailCase{"cut in the bones",
                  kAsf.substr(0, kAsf.find("id 2")),
                  {},
                  "E13 The skeleton is incomplete: reading ended in the section :bonedata that begins at line 13\n"},
        KFailCase{"an error in the motion", kAsf, {SmallFrame(1, 1) + "2\nb x\n"}, "E7 Bone b: number expected for rx of (rx), not (x)\n"},
        KFailCase{
            "an error in the second motion", kAsf, {kThree, kThree + "4\nroot\n"}, "E17 Bone root: 1 value expected (tx), only 0 found\n"},
        KFailCase{"no frame", kAsf, {":DEGREES\n"}, "E1 The motion has no complete frame\n"}));

TEST(KQexImporterAcclaim, KeepsGoodFrames)
{
    KSetup lSetup;
    lSetup.mOptions.mKeepGoodFrames = true;
    ASSERT_TRUE(lSetup.Import(kThree + "4\nb x\n"));
    EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "take"), "0:4 1:5 2:6");
    EXPECT_EQ(lSetup.mResult.CountMessages(true), 1U);
}

TEST(KQexImporterAcclaim, CancelLeavesTheSceneUnchanged)
{
    std::string lLong;
    for (int i = 1; i <= 1000; ++i)
    {
        lLong += SmallFrame(i, i);
    }
    // Progress rises from call to call; whichever call cancels, nothing stays.
    KSetup              lWhole;
    std::vector<double> lFractions;
    lWhole.mOptions.mProgress = [&](double pFraction)
    {
        lFractions.push_back(pFraction);
        return true;
    };
    ASSERT_TRUE(lWhole.Import(kAsf, {Text(lLong, "1.amc", "1"), Text(lLong, "2.amc", "2")}));
    ASSERT_GT(lFractions.size(), 10U);
    EXPECT_TRUE(std::is_sorted(lFractions.begin(), lFractions.end()));
    EXPECT_EQ(lFractions.front(), 0.0);
    EXPECT_EQ(lFractions.back(), 1.0);

    for (size_t i = 0; i < lFractions.size(); ++i)
    {
        KSetup            lSetup;
        const std::string lBefore = Snapshot(*lSetup.mScene);
        size_t            lCalls = 0;
        lSetup.mOptions.mKeepGoodFrames = true;
        lSetup.mOptions.mProgress = [&](double)
        {
            return lCalls++ < i;
        };
        EXPECT_FALSE(lSetup.Import(kAsf, {Text(lLong, "1.amc", "1"), Text(lLong, "2.amc", "2")}));
        EXPECT_TRUE(lSetup.mResult.mCancelled);
        EXPECT_EQ(lSetup.mResult.CountMessages(true), 0U);
        EXPECT_EQ(lCalls, i + 1);
        EXPECT_EQ(Snapshot(*lSetup.mScene), lBefore);
    }
}

TEST(KQexImporterAcclaim, WithoutMemoryTheSceneIsUnchanged)
{
    const KQexAcclaimSource lAsf = Text(kAsf, "small.asf");
    const KQexAcclaimSource lOne = Text(kThree, "1.amc", "1");
    const KQexAcclaimSource lTwo = Text(kThree, "2.amc", "2");
    bool                    lOk = false;
    for (long lCount = 0; !lOk && lCount < 5000; ++lCount)
    {
        KMemoryWatch lWatch;
        {
            KSetup            lSetup;
            const std::string lBefore = Snapshot(*lSetup.mScene);
            lWatch.FailAfter(lCount);
            lOk = KQexImporterAcclaim::Import(lSetup.mScene.get(), lAsf, {lOne, lTwo}, lSetup.mOptions, lSetup.mResult);
            lWatch.FailAfter(-1);
            EXPECT_EQ(Snapshot(*lSetup.mScene) == lBefore, !lOk) << lCount;
            EXPECT_EQ(lSetup.mResult.CountMessages(true) == 0, lOk) << lCount;
            // A retry with memory succeeds.
            EXPECT_TRUE(KQexImporterAcclaim::Import(lSetup.mScene.get(), lAsf, {lOne, lTwo}, lSetup.mOptions, lSetup.mResult)) << lCount;
            EXPECT_EQ(Keys(lSetup.Node("b"), true, 0, "2"), "0:4 1:5 2:6") << lCount;
        }
        EXPECT_EQ(lWatch.GetBlocks(), 0U) << lCount;
    }
    EXPECT_TRUE(lOk);
}

TEST(KQexImporterAcclaim, FromSeveralThreadsAtOnce)
{
    std::atomic<int>         lGood{0};
    std::vector<std::thread> lThreads;
    for (int i = 0; i < 4; ++i)
    {
        lThreads.emplace_back(
            [&]
            {
                for (int k = 0; k < 20; ++k)
                {
                    KSetup lSetup;
                    if (lSetup.Import(kThree) && Keys(lSetup.Node("c"), true, 2, "take") == "0:5 1:6 2:7")
                    {
                        ++lGood;
                    }
                }
            });
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
    EXPECT_EQ(lGood, 80);
}

struct KWarningCase
{
    const char* mOld;
    const char* mNew;
    bool        mPreRotation;
    const char* mWarning;
};

class KImportWarningTest : public testing::TestWithParam<KWarningCase>
{
};

TEST_P(KImportWarningTest, WarnsOnceAboutWhatTheImportLosesOrChanges)
{
    KSetup lSetup;
    lSetup.mOptions.mSetPreRotation = GetParam().mPreRotation;
    ASSERT_TRUE(lSetup.Import(Replaced(Replaced(kAsf, "dof rz l ry", "dof rz"), GetParam().mOld, GetParam().mNew), {}));
    EXPECT_EQ(Texts(lSetup.mResult.mMessages), GetParam().mWarning);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KImportWarningTest,
    testing::Values(
        KWarningCase{"", "", true, ""},
        KWarningCase{"position 0 0 0", "position 0 1 0", false,
                     "W0 The root's position or orientation is not zero; it is imported as it is, which may misplace the figure (root)\n"},
        KWarningCase{"position 0 0 0", "position 0 0 1", false,
                     "W0 The root's position or orientation is not zero; it is imported as it is, which may misplace the figure (root)\n"},
        KWarningCase{"orientation 0 0 0", "orientation 0 0 9", false,
                     "W0 The root's position or orientation is not zero; it is imported as it is, which may misplace the figure (root)\n"},
        KWarningCase{"axis 0 0 0 XYZ\n    dof rx\n", "axis 0 5 0 XZY\n    dof rx\n", false,
                     "W0 An axis word means another order than its letters (b)\n"},
        KWarningCase{"axis 0 0 0 XYZ\n    dof rx\n", "axis 0 0 0 XZY\n    dof rx\n", false, ""},
        KWarningCase{"axis 0 0 0 XYZ\n    dof rx\n", "axis 0 5 0 ZYX\n    dof rx\n", false, ""},
        KWarningCase{"dof rx ry", "dof rx ry rx", true,
                     "W0 A rotation axis is listed twice; with pre-rotation its angles are summed (a)\n"},
        KWarningCase{"dof rx ry", "dof rx ry rx", false, ""},
        // The second line replaces the first, whose other words no longer count.
        KWarningCase{"dof rx ry", "dof ry rx rx rx\n    dof ry rx", true, ""}));

TEST(KQexImporterAcclaim, WarningsCountTheBonesAfterTheFirst)
{
    KSetup lSetup;
    lSetup.mOptions.mRemoveDummies = true;
    std::string lText = ":version 1.10\n:name s\n:root\norder TX\naxis XYZ\nposition 0 0 0\norientation 0 0 0\n:bonedata\n";
    for (const char* lName : {"a", "b", "c"})
    {
        lText += std::string("begin\nname ") + lName + "\ndirection 1 0 0\nlength 1\naxis 0 5 0 XZY\nend\n";
    }
    ASSERT_TRUE(lSetup.Import(lText + ":hierarchy\nbegin\nroot a b c\nend\n", {}));
    EXPECT_EQ(Texts(lSetup.mResult.mMessages), "W0 A leaf without a degree of freedom is removed and its length lost (a and 2 more)\n"
                                               "W0 An axis word means another order than its letters (a and 2 more)\n");
}

/// Fails the only allocation that dummy removal needs: a skeleton that keeps its dummies is an error.
TEST(KQexImporterAcclaim, FailedDummyRemovalIsAnError)
{
    std::string lText = ":root\n:bonedata\n";
    std::string lFamilies = "top d\nd";
    for (const char* lName : {"d", "top", "b1", "b2", "b3", "b4", "b5"})
    {
        lText += std::string("begin\nname ") + lName + "\ndirection 1 0 0\nlength 1\n" + (*lName == 'd' ? "" : "dof rx\n") + "end\n";
        lFamilies += *lName == 'b' ? std::string(" ") + lName : "";
    }
    lText += ":hierarchy\nbegin\n" + lFamilies + "\nend\n";
    KQexImportAcclaimOptions lOptions;
    KQexImportAcclaimResult  lResult;
    KMemoryWatch             lWatch;
    ASSERT_NE(KQexImporterAcclaim::ReadSkeleton(Text(lText, "small.asf"), lOptions, lResult), nullptr);
    const long lCalls = lWatch.GetCalls();
    lOptions.mRemoveDummies = true;
    lWatch.FailAfter(lCalls);
    EXPECT_EQ(KQexImporterAcclaim::ReadSkeleton(Text(lText, "small.asf"), lOptions, lResult), nullptr);
    EXPECT_FALSE(lResult.mOk);
    EXPECT_EQ(Texts(lResult.mMessages), "E0 Out of memory\n");
    lWatch.FailAfter(-1);
    EXPECT_NE(KQexImporterAcclaim::ReadSkeleton(Text(lText, "small.asf"), lOptions, lResult), nullptr);
}

TEST(KQexImporterAcclaim, ReadSkeletonReturnsTheScene)
{
    KQexImportAcclaimResult  lResult;
    KQexImportAcclaimOptions lOptions;
    lOptions.mRemoveDummies = true;
    const KQexAsfSceneOwner lScene = KQexImporterAcclaim::ReadSkeleton(Text(kAsf, "small.asf"), lOptions, lResult);
    ASSERT_NE(lScene, nullptr);
    EXPECT_TRUE(lResult.mOk);
    EXPECT_STREQ(lScene->GetName(), "small");
    EXPECT_EQ(lScene->mRoot->Find("d"), nullptr);
    EXPECT_EQ(lResult.mSkeletonNotes.mRemovedBones, std::vector<std::string>{"d"});
    ASSERT_EQ(lResult.mSkeletonNotes.mLengthDofs.size(), 1U);
    EXPECT_EQ(lResult.mSkeletonNotes.mLengthDofs[0].mBone, "c");
    EXPECT_EQ(lResult.mSkeletonNotes.mLengthDofs[0].mIndex, 1);
}

} // namespace
