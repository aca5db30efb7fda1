#include <qexioplugins/bvh/kqexfilebvh.h>

#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr const char* kSmall = "HIERARCHY\n"
                               "ROOT Hips\n"
                               "{\n"
                               "  OFFSET 1 2 3\n"
                               "  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"
                               "  JOINT Left Leg\n"
                               "  {\n"
                               "    OFFSET 0 -10 0\n"
                               "    CHANNELS 3 Zrotation Yrotation Xrotation\n"
                               "    End Site\n"
                               "    {\n"
                               "      OFFSET 0 -5 0\n"
                               "    }\n"
                               "  }\n"
                               "}\n"
                               "MOTION\n"
                               "Frames: 2\n"
                               "Frame Time: .0083333\n"
                               "0 0 0 10 20 30 1 2 3\n"
                               "4 5 6 11 21 31 -1 -2 -3\n";

bool ReadText(KQexScene* pScene, const std::string& pText, KQexFileBvh& pFile, KQexBvhReadResult& pResult,
              const KQexBvhReadOptions& pOptions = KQexBvhReadOptions())
{
    return pFile.OpenReadBuffer(pText.data(), pText.size()) && pFile.Read(pScene, pOptions, pResult);
}

KQexVector4 Position(KQexNode* pNode, long long pFrame)
{
    return pNode->GetScene()->GetEvaluator()->GetNodeGlobalTransform(pNode, FrameTime(pFrame)).GetT();
}

double Distance(const KQexVector4& pA, const KQexVector4& pB)
{
    return std::sqrt((pA[0] - pB[0]) * (pA[0] - pB[0]) + (pA[1] - pB[1]) * (pA[1] - pB[1]) + (pA[2] - pB[2]) * (pA[2] - pB[2]));
}

TEST(BvhRead, BuildsNodesAndCurves)
{
    const KScenePtr   lScene = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    ASSERT_TRUE(ReadText(lScene.get(), kSmall, lFile, lResult));
    EXPECT_TRUE(lFile.GetMessages().empty());
    EXPECT_EQ(lResult.mFrames, 2);
    EXPECT_EQ(lResult.mStep.Get(), 705600000 / 120);
    ASSERT_EQ(lResult.mRoots.size(), 1u);
    KQexNode* lHips = lResult.mRoots[0];
    EXPECT_STREQ(lHips->GetName(), "Hips");
    EXPECT_EQ(lHips->GetRotationOrder(), eEULER_YXZ);
    ASSERT_NE(lHips->GetSkeleton(), nullptr);
    KQexNode* lLeg = lHips->GetChild(0);
    EXPECT_STREQ(lLeg->GetName(), "Left Leg");
    EXPECT_EQ(lLeg->GetRotationOrder(), eEULER_XYZ);
    EXPECT_STREQ(lLeg->GetChild(0)->GetName(), "Left Leg_End");
    EXPECT_EQ(lHips->mLocalTranslation.Get().mData[1], 2.0);
    EXPECT_EQ(lHips->EvaluateLocalTranslation(KTime(0))[1], 0.0) << "position channels replace the offset";
    const KQexVector4 lR = lHips->EvaluateLocalRotation(FrameTime(1));
    EXPECT_EQ(lR[0], 21.0);
    EXPECT_EQ(lR[1], 31.0);
    EXPECT_EQ(lR[2], 11.0);
}

struct KVariant
{
    const char* mWhat;
    const char* mOld;
    const char* mNew;
};

class KBvhVariantTest : public testing::TestWithParam<KVariant>
{
};

/// Each variant reads like the small file.
TEST_P(KBvhVariantTest, ReadsTheSame)
{
    const KScenePtr   lScene = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    std::string       lText = kSmall;
    if (*GetParam().mOld == '\n')
    {
        size_t lAt = 0;
        while ((lAt = lText.find('\n', lAt)) != std::string::npos)
        {
            lText.replace(lAt, 1, GetParam().mNew);
            lAt += std::string(GetParam().mNew).size();
        }
    }
    else
    {
        lText = Replaced(lText, GetParam().mOld, GetParam().mNew);
    }
    ASSERT_TRUE(ReadText(lScene.get(), lText, lFile, lResult)) << lFile.GetMessages().front().mText;
    EXPECT_TRUE(lFile.GetMessages().empty()) << lFile.GetMessages().front().mText;
    ASSERT_EQ(lResult.mFrames, 2);
    EXPECT_EQ(lResult.mStep.Get(), 705600000 / 120);
    KQexNode* lLeg = lResult.mRoots[0]->GetChild(0);
    EXPECT_STREQ(lLeg->GetName(), "Left Leg");
    EXPECT_EQ(lLeg->EvaluateLocalRotation(FrameTime(1))[2], -1.0);
    EXPECT_EQ(lLeg->EvaluateLocalRotation(FrameTime(1))[0], -3.0);
}

INSTANTIATE_TEST_SUITE_P(Spelling, KBvhVariantTest,
                         testing::Values(KVariant{"CR LF", "\n", "\r\n"}, KVariant{"CR", "\n", "\r"},
                                         KVariant{"tabs and blanks", "  OFFSET 1 2 3", "\t OFFSET\t1  2 3 "},
                                         KVariant{"no blank", "Frames: 2", "Frames:2"},
                                         KVariant{"blank before the colon", "Frames: 2", "Frames : 2"},
                                         KVariant{"frame time", "Frame Time: .0083333", "Frame  Time:0.00833333333"},
                                         KVariant{"lower case", "HIERARCHY", "hierarchy"},
                                         KVariant{"brace on the line", "ROOT Hips\n{", "ROOT Hips {"},
                                         KVariant{"glued brace", "ROOT Hips\n{", "ROOT Hips{"},
                                         KVariant{"values over lines", "0 0 0 10 20 30", "0 0 0\n10 20\n\n30"},
                                         KVariant{"frames on one line", "1 2 3\n4 5", "1 2 3 4 5"},
                                         KVariant{"plus sign", "4 5 6", "+4 5 6"}, KVariant{"exponent", "4 5 6", "4e0 5 6"}),
                         [](const testing::TestParamInfo<KVariant>& pInfo) { return std::to_string(pInfo.index); });

/// The order of the rotations, and which value belongs to which channel, are those of both statements together.
TEST(BvhRead, AJointMayHaveSeveralChannelStatements)
{
    for (const char* lStatements : {"CHANNELS 3 Xposition Yposition Zposition\n CHANNELS 3 Zrotation Xrotation Yrotation",
                                    "CHANNELS 5 Xposition Yposition Zposition Zrotation Xrotation\n CHANNELS 1 Yrotation"})
    {
        const KScenePtr   lScene = MakeScene();
        KQexFileBvh       lFile;
        KQexBvhReadResult lResult;
        ASSERT_TRUE(ReadText(lScene.get(),
                             Replaced(kSmall, "CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation", lStatements), lFile,
                             lResult));
        EXPECT_TRUE(lFile.GetMessages().empty());
        KQexNode* lHips = lResult.mRoots[0];
        EXPECT_EQ(lHips->GetRotationOrder(), eEULER_YXZ);
        EXPECT_EQ(lHips->EvaluateLocalRotation(FrameTime(1))[1], 31.0);
        EXPECT_EQ(lHips->GetChild(0)->EvaluateLocalRotation(FrameTime(1))[2], -1.0);
    }
}

TEST(BvhRead, ChannelsOfAnEndSiteAreReadWithAWarning)
{
    const KScenePtr   lScene = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    std::string       lText = Replaced(kSmall, "OFFSET 0 -5 0\n", "OFFSET 0 -5 0\n CHANNELS 1 Xrotation\n");
    lText = Replaced(Replaced(lText, " 1 2 3\n4", " 1 2 3 50\n4"), "-1 -2 -3", "-1 -2 -3 60");
    ASSERT_TRUE(ReadText(lScene.get(), lText, lFile, lResult));
    ASSERT_EQ(lFile.GetMessages().size(), 1u);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "End Site has channels (Left Leg_End), they are read");
    EXPECT_EQ(lFile.GetMessages()[0].mLine, 13);
    EXPECT_EQ(lResult.mFrames, 2);
    KQexNode* lLeg = lResult.mRoots[0]->GetChild(0);
    EXPECT_EQ(lLeg->EvaluateLocalRotation(FrameTime(1))[0], -3.0);
    EXPECT_EQ(lLeg->GetChild(0)->EvaluateLocalRotation(FrameTime(1))[0], 60.0);

    const KScenePtr lOther = MakeScene();
    ASSERT_TRUE(ReadText(lOther.get(), Replaced(kSmall, "OFFSET 0 -5 0\n", "OFFSET 0 -5 0\n CHANNELS 0\n"), lFile, lResult));
    EXPECT_TRUE(lFile.GetMessages().empty()) << "no channels";
}

struct KBadFile
{
    const char* mOld;
    const char* mNew;
    int         mLine;
    const char* mText;
};

class KBvhErrorTest : public testing::TestWithParam<KBadFile>
{
};

TEST_P(KBvhErrorTest, IsReportedAndLeavesTheSceneUnchanged)
{
    const KScenePtr   lScene = MakeScene();
    const int         lObjects = lScene->GetObjectCount();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    EXPECT_FALSE(ReadText(lScene.get(), Replaced(kSmall, GetParam().mOld, GetParam().mNew), lFile, lResult));
    ASSERT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(lFile.GetMessages().back().mText, GetParam().mText);
    EXPECT_EQ(lFile.GetMessages().back().mLine, GetParam().mLine);
    EXPECT_EQ(lScene->GetObjectCount(), lObjects);
    EXPECT_EQ(lScene->GetAnimStackCount(), 0);
    EXPECT_TRUE(lResult.mRoots.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Messages, KBvhErrorTest,
    testing::Values(KBadFile{"HIERARCHY", "HIERARCHIE", 1, "HIERARCHY expected, found (HIERARCHIE)"},
                    KBadFile{"ROOT", "RUT", 2, "ROOT expected, found (RUT)"}, KBadFile{"Hips\n{", "{", 2, "Joint name expected, found ({)"},
                    KBadFile{"Hips\n{", "Hips\n", 4, "{ expected, found (OFFSET)"},
                    KBadFile{"1 2 3", "1 zwei 3", 4, "Offset value expected, found (zwei)"},
                    KBadFile{"1 2 3", "1 0x10 3", 4, "Offset value expected, found (0x10)"},
                    KBadFile{"1 2 3", "1 nan 3", 4, "Offset value expected, found (nan)"},
                    KBadFile{"1 2 3", "1 1e999 3", 4, "Offset value expected, found (1e999)"},
                    KBadFile{"CHANNELS 6", "CHANNELS six", 5, "Number of channels expected, found (six)"},
                    KBadFile{"CHANNELS 6", "CHANNELS 7", 5, "More than six channels (7)"},
                    KBadFile{"Yposition", "Wposition", 5, "Channel name expected, found (Wposition)"},
                    KBadFile{"Yposition", "Xposition", 5, "Channel repeated (Xposition)"},
                    KBadFile{"  JOINT", "  CHANNELS 1 Zrotation\n  JOINT", 6, "Channel repeated (Zrotation)"},
                    KBadFile{"0 -5 0\n", "0 -5 0\n JOINT", 13, "OFFSET or } expected, found (JOINT)"},
                    KBadFile{"JOINT", "JOIN", 6, "OFFSET, CHANNELS, JOINT, End Site or } expected, found (JOIN)"},
                    KBadFile{"MOTION", "MOTIONS", 16, "ROOT or MOTION expected, found (MOTIONS)"},
                    KBadFile{"Frames: 2", "Frames: -2", 17, "Number of frames expected, found (-2)"},
                    KBadFile{"Frame Time: .0083333", "Frame Time: fast", 18, "Frame time expected, found (fast)"},
                    KBadFile{"Frame Time: .0083333", "Frame Time: 1e99", 18, "Frame time out of range (1e+99)"},
                    KBadFile{"Frame Time: .0083333", "Frame Time: 1e10", 20, "Too many frames for this frame time (1)"},
                    KBadFile{"4 5 6", "4 five 6", 20, "Frame 2, value 2 of 9: number expected, found (five)"},
                    KBadFile{"-1 -2 -3\n", "-1 -2\n", 20, "Frame 2, value 9 of 9: number expected, found (end of file)"}),
    [](const testing::TestParamInfo<KBadFile>& pInfo) { return std::to_string(pInfo.index); });

TEST(BvhRead, AHierarchyNeedsARoot)
{
    const KScenePtr   lScene = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    EXPECT_FALSE(ReadText(lScene.get(), "HIERARCHY\nMOTION\nFrames: 0\nFrame Time: 1\n", lFile, lResult));
    EXPECT_EQ(lFile.GetMessages().back().mText, "ROOT expected, found (MOTION)");
}

TEST(BvhRead, UsesTheGivenParentAndRate)
{
    const KScenePtr    lScene = MakeScene();
    KQexNode*          lParent = KQexNode::Create(lScene.get(), "parent");
    KQexFileBvh        lFile;
    KQexBvhReadResult  lResult;
    KQexBvhReadOptions lOptions;
    lOptions.mParentNode = lParent;
    lOptions.mFramesPerSecond = 30.0;
    ASSERT_TRUE(ReadText(lScene.get(), Replaced(kSmall, "Frame Time: .0083333", "Frame Time: 0"), lFile, lResult, lOptions));
    EXPECT_TRUE(lFile.GetMessages().empty()) << "the file's own frame time is ignored";
    EXPECT_EQ(lResult.mStep, KTime::FromFrame(1, {30, 1}));
    EXPECT_EQ(lResult.mRoots.front()->GetParent(), lParent);
    EXPECT_EQ(lParent->FindChild("Left Leg")->mLocalRotation.GetCurveNode(false, "Take 001")->GetCurve(0)->GetTime(1), lResult.mStep);
}

TEST(BvhRead, WarnsWhenTheFrameCountDiffers)
{
    for (const char* lDeclared : {"Frames: 1", "Frames: 3", "Frames: 2147483648"})
    {
        const KScenePtr   lScene = MakeScene();
        KQexFileBvh       lFile;
        KQexBvhReadResult lResult;
        EXPECT_TRUE(ReadText(lScene.get(), Replaced(kSmall, "Frames: 2", lDeclared), lFile, lResult));
        EXPECT_EQ(lResult.mFrames, 2);
        ASSERT_EQ(lFile.GetWarningCount(), 1);
        EXPECT_NE(lFile.GetMessages()[0].mText.find("frames declared, 2 found"), std::string::npos);
    }
}

TEST(BvhRead, KeepsGoodFramesOnRequest)
{
    const KScenePtr    lScene = MakeScene();
    KQexFileBvh        lFile;
    KQexBvhReadResult  lResult;
    KQexBvhReadOptions lOptions;
    lOptions.mKeepGoodFrames = true;
    EXPECT_TRUE(ReadText(lScene.get(), Replaced(kSmall, "4 5 6", "4 five 6"), lFile, lResult, lOptions));
    EXPECT_EQ(lResult.mFrames, 1);
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_FALSE(ReadText(lScene.get(), Replaced(kSmall, "0 0 0 10", "0 zero 0 10"), lFile, lResult, lOptions)) << "no good frame";
}

TEST(BvhRead, CancelLeavesTheSceneUnchanged)
{
    const KScenePtr    lScene = MakeScene();
    KQexFileBvh        lFile;
    KQexBvhReadResult  lResult;
    KQexBvhReadOptions lOptions;
    lOptions.mProgress = [](double)
    {
        return false;
    };
    std::string lText = Replaced(kSmall, "Frames: 2", "Frames: 302");
    for (int i = 0; i < 300; ++i)
    {
        lText += "0 0 0 0 0 0 0 0 0\n";
    }
    EXPECT_FALSE(ReadText(lScene.get(), lText, lFile, lResult, lOptions));
    EXPECT_TRUE(lResult.mCancelled);
    EXPECT_EQ(lScene->GetAnimStackCount(), 0);
    EXPECT_EQ(lScene->GetRootNode()->GetChildCount(true), 0);
}

TEST(BvhRead, EveryTruncationIsReadOrReported)
{
    const std::string lText = kSmall;
    for (size_t lSize = 0; lSize <= lText.size(); ++lSize)
    {
        const KScenePtr   lScene = MakeScene();
        const int         lObjects = lScene->GetObjectCount();
        KQexFileBvh       lFile;
        KQexBvhReadResult lResult;
        const bool        lOk = ReadText(lScene.get(), lText.substr(0, lSize), lFile, lResult);
        EXPECT_EQ(lOk, !lResult.mRoots.empty()) << lSize;
        EXPECT_EQ(lOk, lFile.GetErrorCount() == 0) << lSize;
        EXPECT_TRUE(lOk || lScene->GetObjectCount() == lObjects) << lSize;
    }
}

TEST(BvhRead, DeepNestingDoesNotRecurse)
{
    const KScenePtr lScene = MakeScene();
    std::string     lText = "HIERARCHY\nROOT j\n{\nOFFSET 0 0 0\nCHANNELS 0\n";
    constexpr int   kDepth = 100000;
    for (int i = 0; i < kDepth; ++i)
    {
        lText += "JOINT j { OFFSET 0 1 0 CHANNELS 0\n";
    }
    lText += std::string(kDepth + 1, '}');
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    EXPECT_TRUE(ReadText(lScene.get(), lText, lFile, lResult));
    EXPECT_EQ(lScene->GetRootNode()->GetChildCount(true), kDepth + 1);
}

/// Frames, ticks per frame, joints and end sites, from a plain look at the file's lines.
std::vector<long long> CountsOf(const std::string& pText)
{
    const size_t lMotion = pText.find("Frame Time:");
    const double lStep = std::stod(pText.substr(lMotion + 11));
    const double lRate = std::fabs(std::round(1.0 / lStep) * lStep - 1.0) < 1e-3 ? std::round(1.0 / lStep) : 1.0 / lStep;
    const auto   lCount = [&pText](const std::string& pWord)
    {
        long long lFound = 0;
        for (size_t lAt = pText.find(pWord); lAt != std::string::npos; lAt = pText.find(pWord, lAt + 1))
        {
            ++lFound;
        }
        return lFound;
    };
    return {std::stoll(pText.substr(pText.find("Frames:") + 7)), std::llround(705600000.0 / lRate), lCount("ROOT ") + lCount("JOINT "),
            lCount("End Site")};
}

TEST(BvhRead, WholeFiles)
{
    for (const std::filesystem::path& lPath : CorpusFiles(".bvh"))
    {
        SCOPED_TRACE(lPath);
        const KScenePtr   lScene = MakeScene();
        KQexFileBvh       lFile;
        KQexBvhReadResult lResult;
        ASSERT_TRUE(lFile.OpenRead(lPath.c_str()));
        ASSERT_TRUE(lFile.Read(lScene.get(), KQexBvhReadOptions(), lResult));
        EXPECT_TRUE(lFile.GetMessages().empty());
        long long lJoints = 0;
        long long lEnds = 0;
        for (KQexNode* lNode = lResult.mRoots[0]; lNode != nullptr; lNode = lNode->GetNextInTree(lResult.mRoots[0]))
        {
            const std::string lName = lNode->GetName();
            ++(lName.size() > 4 && lName.compare(lName.size() - 4, 4, "_End") == 0 ? lEnds : lJoints);
        }
        EXPECT_EQ((std::vector<long long>{lResult.mFrames, lResult.mStep.Get(), lJoints, lEnds}), CountsOf(ReadFile(lPath)));
    }
}

/// walk.bvh has every fourth frame of walk.amc, whose world positions another program computed. Both are rounded to four decimals.
TEST(BvhRead, TheSampleIsWhereTheMotionIs)
{
    const KScenePtr   lScene = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    ASSERT_TRUE(lFile.OpenRead((SamplesDir() / "walk.bvh").c_str()));
    ASSERT_TRUE(lFile.Read(lScene.get(), KQexBvhReadOptions(), lResult));
    KQexGlobalTransforms lPose;
    int                  lCompared = 0;
    for (const KWorldFrame& lFrame : ReadWorld(CorpusPairs()[0]))
    {
        const KTime lTime((lFrame.mNumber - 1) / 4 * lResult.mStep.Get());
        ASSERT_TRUE(lScene->GetEvaluator()->EvaluateGlobalTransforms(lResult.mRoots[0], lTime, lPose));
        for (int i = 0; i < lPose.GetCount(); ++i)
        {
            const std::string lName = lPose.GetNode(i)->GetName();
            const bool        lIsEnd = lName.size() > 4 && lName.compare(lName.size() - 4, 4, "_End") == 0;
            const KPoint&     lExpected = lIsEnd ? lFrame.mEnds.at(lName.substr(0, lName.size() - 4)) : lFrame.mStarts.at(lName);
            const KQexVector4 lPosition = lPose.GetTransform(i).GetT();
            EXPECT_LT(Distance({lPosition[0], lPosition[1], lPosition[2]}, lExpected) / lFrame.mHeight, 2e-5)
                << lName << " in frame " << lFrame.mNumber;
            ++lCompared;
        }
    }
    EXPECT_EQ(lCompared, 13 * 35);
}

/// The take "take" of the scene, written as BVH text.
std::string WriteText(KQexScene* pScene, KQexNode* pRoot, KQexBvhWriteOptions pOptions = KQexBvhWriteOptions())
{
    pOptions.mStack = pScene->FindAnimStack("take");
    EXPECT_TRUE(MakeSampling({pRoot}, pOptions.mStack, KQexSamplingRequest(), pOptions.mSampling));
    std::string lText;
    KQexFileBvh lFile;
    EXPECT_TRUE(lFile.OpenWriteBuffer(&lText));
    EXPECT_TRUE(lFile.Write({pRoot}, pOptions));
    EXPECT_TRUE(lFile.Close());
    return lText;
}

class KBvhRoundTripTest : public testing::TestWithParam<int>
{
};

TEST_P(KBvhRoundTripTest, EveryJointIsWhereTheSceneHasIt)
{
    std::mt19937       lRandom(static_cast<unsigned>(1000 + GetParam()));
    KRandomTreeOptions lTree;
    lTree.mNodes = 1 + 3 * GetParam();
    lTree.mScaling = GetParam() % 4 == 3;
    lTree.mTranslations = GetParam() % 2 == 0;
    const KScenePtr     lScene = MakeScene();
    KQexNode*           lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    KQexBvhWriteOptions lOptions;
    lOptions.mOrder = static_cast<ERotationOrder>(GetParam() % 6);
    const std::string lText = WriteText(lScene.get(), lRoot, lOptions);

    const KScenePtr    lBack = MakeScene();
    KQexFileBvh        lFile;
    KQexBvhReadResult  lResult;
    KQexBvhReadOptions lReadOptions;
    lReadOptions.mTakeName = "take";
    ASSERT_TRUE(ReadText(lBack.get(), lText, lFile, lResult, lReadOptions));
    EXPECT_TRUE(lFile.GetMessages().empty());
    EXPECT_EQ(lResult.mFrames, lTree.mFrames);
    for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
    {
        KQexNode* lOther = lBack->GetRootNode()->FindChild(lNode->GetName());
        ASSERT_NE(lOther, nullptr);
        for (int lFrame = 0; lFrame < lTree.mFrames; ++lFrame)
        {
            EXPECT_LT(Distance(Position(lNode, lFrame), Position(lOther, lFrame)), 1e-3 * lTree.mNodes) << lNode->GetName() << lFrame;
        }
    }
    const std::string lSecond = WriteText(lBack.get(), lResult.mRoots[0], lOptions);
    const KScenePtr   lAgain = MakeScene();
    ASSERT_TRUE(ReadText(lAgain.get(), lSecond, lFile, lResult, lReadOptions));
    EXPECT_EQ(WriteText(lAgain.get(), lResult.mRoots[0], lOptions), lSecond) << "second round trip";
}

INSTANTIATE_TEST_SUITE_P(Trees, KBvhRoundTripTest, testing::Range(0, 16));

TEST(BvhWrite, SmallSceneByteForByte)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = KQexNode::Create(lScene.get(), "my hips");
    KQexNode*       lEnd = KQexNode::Create(lScene.get(), "my hips_End");
    lScene->GetRootNode()->AddChild(lRoot);
    lRoot->AddChild(lEnd);
    lRoot->mLocalTranslation.Set(qexVectorTemplate3<double>(1, 2, 3));
    lRoot->mLocalRotation.Set(qexVectorTemplate3<double>(0, 0, 90));
    lEnd->mLocalTranslation.Set(qexVectorTemplate3<double>(10, 0, 0));
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(lScene.get(), "rz");
    lRoot->mLocalRotation.GetCurveNode(true, "take")->ConnectToChannel(lCurve, 2, true);
    lCurve->AppendSample(FrameTime(0), 90.0F);
    lCurve->AppendSample(FrameTime(1), 135.5F);
    lCurve->AppendSample(FrameTime(2), 280.0F);
    EXPECT_EQ(WriteText(lScene.get(), lRoot), "HIERARCHY\n"
                                              "ROOT my_hips\n"
                                              "{\n"
                                              "  OFFSET 0 0 0\n"
                                              "  CHANNELS 6 Xposition Yposition Zposition Zrotation Yrotation Xrotation\n"
                                              "  End Site\n"
                                              "  {\n"
                                              "    OFFSET 0 10 0\n"
                                              "  }\n"
                                              "}\n"
                                              "MOTION\n"
                                              "Frames: 3\n"
                                              "Frame Time: 0.008333333333\n"
                                              "1 2 3 0 0 0\n"
                                              "1 2 3 45.5 0 0\n"
                                              "1 2 3 190 0 0\n");
}

TEST(BvhWrite, OutputDoesNotDependOnThreads)
{
    std::mt19937       lRandom(7);
    KRandomTreeOptions lTree;
    lTree.mFrames = 700;
    const KScenePtr     lScene = MakeScene();
    KQexNode*           lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    KQexBvhWriteOptions lOptions;
    lOptions.mThreads = 1;
    const std::string lOne = WriteText(lScene.get(), lRoot, lOptions);
    for (const int lThreads : {2, 3, 8})
    {
        lOptions.mThreads = lThreads;
        EXPECT_EQ(WriteText(lScene.get(), lRoot, lOptions), lOne) << lThreads;
    }
}

TEST(BvhWrite, ZUpRotatesTheScene)
{
    std::mt19937        lRandom(9);
    const KScenePtr     lScene = MakeScene();
    KQexNode*           lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTreeOptions());
    KQexBvhWriteOptions lOptions;
    lOptions.mZUp = true;
    const std::string lText = WriteText(lScene.get(), lRoot, lOptions);
    const KScenePtr   lBack = MakeScene();
    KQexFileBvh       lFile;
    KQexBvhReadResult lResult;
    ASSERT_TRUE(ReadText(lBack.get(), lText, lFile, lResult));
    for (KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
    {
        const KQexVector4 lWas = Position(lNode, 5);
        EXPECT_LT(Distance(KQexVector4(lWas[0], -lWas[2], lWas[1]), Position(lBack->GetRootNode()->FindChild(lNode->GetName()), 5)), 1e-2);
    }
}

TEST(BvhWrite, NamesAreMadeSafeAndUniqueWithAWarning)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = KQexNode::Create(lScene.get(), "a b{");
    lScene->GetRootNode()->AddChild(lRoot);
    for (const char* lName : {"a_b_", "", "x", "x", "x_2"})
    {
        lRoot->AddChild(KQexNode::Create(lScene.get(), lName));
    }
    std::string         lText;
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    ASSERT_TRUE(MakeSampling({lRoot}, nullptr, KQexSamplingRequest(), lOptions.mSampling));
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lText));
    ASSERT_TRUE(lFile.Write({lRoot}, lOptions));
    EXPECT_EQ(lFile.GetWarningCount(), 5);
    for (const char* lName : {"ROOT a_b_\n", "JOINT a_b__2\n", "JOINT joint\n", "JOINT x\n", "JOINT x_2\n", "JOINT x_2_2\n"})
    {
        EXPECT_NE(lText.find(lName), std::string::npos) << lName;
    }
}

TEST(BvhWrite, WithoutFramesOrNodesThereIsNothingToWrite)
{
    const KScenePtr     lScene = MakeScene();
    std::string         lText;
    KQexFileBvh         lFile;
    KQexBvhWriteOptions lOptions;
    lOptions.mSampling.mCount = 1;
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lText));
    EXPECT_FALSE(lFile.Write({}, lOptions));
    lOptions.mSampling.mCount = 0;
    EXPECT_FALSE(lFile.Write({lScene->GetRootNode()}, lOptions));
    EXPECT_EQ(lText, "");
    ASSERT_EQ(lFile.GetErrorCount(), 2);
    EXPECT_EQ(lFile.GetMessages().back().mText, "Nothing to write");
}

/// A take can move a node without keys, by its channel value.
TEST(BvhWrite, AChannelValueOtherThanRestIsMotion)
{
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = KQexNode::Create(lScene.get(), "hips");
    KQexNode*       lEnd = KQexNode::Create(lScene.get(), "hips_End");
    lScene->GetRootNode()->AddChild(lRoot);
    lRoot->AddChild(lEnd);
    lEnd->mLocalTranslation.Set(qexVectorTemplate3<double>(10, 0, 0));
    KQexAnimCurveNode* lCurveNode = lEnd->mLocalTranslation.GetCurveNode(true, "take");
    EXPECT_NE(WriteText(lScene.get(), lRoot).find("End Site\n"), std::string::npos) << "at rest";
    lCurveNode->SetChannelValue<double>(1, 5.0);
    const std::string lText = WriteText(lScene.get(), lRoot);
    EXPECT_NE(lText.find("  JOINT hips_End\n"), std::string::npos) << lText;
    EXPECT_NE(lText.find("\n0 0 0 0 0 0 10 5 0 0 0 0\n"), std::string::npos) << lText;
}

TEST(BvhWrite, CancelsInTheMiddle)
{
    std::mt19937       lRandom(7);
    KRandomTreeOptions lTree;
    lTree.mFrames = 700;
    const KScenePtr     lScene = MakeScene();
    KQexNode*           lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    KQexBvhWriteOptions lOptions;
    lOptions.mStack = lScene->FindAnimStack("take");
    ASSERT_TRUE(MakeSampling({lRoot}, lOptions.mStack, KQexSamplingRequest(), lOptions.mSampling));
    lOptions.mThreads = 1;
    int    lCalls = 0;
    double lFraction = -1.0;
    lOptions.mProgress = [&](double pFraction)
    {
        EXPECT_GT(pFraction, lFraction);
        lFraction = pFraction;
        return ++lCalls < 2;
    };
    std::string lText;
    KQexFileBvh lFile;
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lText));
    EXPECT_FALSE(lFile.Write({lRoot}, lOptions));
    EXPECT_EQ(lCalls, 2) << "not called again after it cancelled";
    EXPECT_GT(lFraction, 0.0);
    EXPECT_LT(lFraction, 1.0) << "cancelled before the end";
    EXPECT_EQ(lFile.GetErrorCount(), 0) << "cancelling is not an error";
}

} // namespace
