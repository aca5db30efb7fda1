// `asf diff`: which joints are compared with each other, what it says of those that are not, rates, and figures without height.

#include <tests/apps/asf/runasf.h>

using namespace qextest;
using nlohmann::json;

namespace
{

/// A figure of three joints in a chain, named `pPrefix`hip, `pPrefix`chest and `pPrefix`head, in two frames. \p pInHead: what the head has
/// besides its offset, with its channels; \p pRows: the values of both frames after those of hip and chest.
std::string Chain(const std::string& pPrefix, const std::string& pInHead = "CHANNELS 3 Zrotation Xrotation Yrotation",
                  const std::string& pLast = " 7 8 9", const std::string& pFrameTime = "0.0333333")
{
    return "HIERARCHY\nROOT " + pPrefix + "hip\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n" +
           "JOINT " + pPrefix + "chest\n{\nOFFSET 0 40 0\nCHANNELS 3 Zrotation Xrotation Yrotation\nJOINT " + pPrefix +
           "head\n{\nOFFSET 0 30 0\n" + pInHead + "\n}\n}\n}\nMOTION\nFrames: 2\nFrame Time: " + pFrameTime + "\n0 90 0 1 2 3 4 5 6" +
           pLast + "\n0 91 5 1 2 3 40 50 60" + pLast + "\n";
}

const std::string kHeadChannels = "CHANNELS 3 Zrotation Xrotation Yrotation\n";

class KDiffPairsTest : public testing::Test
{
protected:
    void SetUp() override { mOptions.mFolder = mFolder.Path().string(); }

    KRunResult Diff(const std::string& pFirst, const std::string& pSecond, const std::vector<std::string>& pMore = {})
    {
        WriteFile(mFolder / "first.bvh", pFirst);
        WriteFile(mFolder / "second.bvh", pSecond);
        std::vector<std::string> lCall{"diff", "-q", "first.bvh", "second.bvh"};
        lCall.insert(lCall.end(), pMore.begin(), pMore.end());
        return RunAsf(lCall, mOptions);
    }

    json JsonDiff(const std::string& pFirst, const std::string& pSecond) { return JsonOf(Diff(pFirst, pSecond, {"--json"})); }

    static std::string Row(const KRunResult& pResult, const std::string& pTitle)
    {
        const size_t lStart = pResult.mOut.find("\n" + pTitle);
        return lStart == std::string::npos ? std::string()
                                           : pResult.mOut.substr(lStart + 1, pResult.mOut.find('\n', lStart + 1) - lStart - 1);
    }

    static std::string LastLine(const KRunResult& pResult)
    {
        return pResult.mOut.substr(pResult.mOut.rfind('\n', pResult.mOut.size() - 2) + 1);
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KDiffPairsTest, NamesWithoutTheirPrefix)
{
    const KRunResult lResult = Diff(Chain("mixamorig:"), Chain(""));
    EXPECT_EQ(lResult.mExit, 0) << lResult.mOut;
    EXPECT_NE(lResult.mOut.find("\npaired  3 joints by the name after the last colon, such as mixamorig:head and head\n"),
              std::string::npos)
        << lResult.mOut;
    EXPECT_EQ(LastLine(lResult), "same within tolerance\n");
    EXPECT_EQ(JsonDiff(Chain("a:b:"), Chain("c:"))["pairedAfterColon"], 3);
    // They are compared.
    const std::string lBent = Replaced(Chain(""), "40 50 60", "40 55 60");
    const json        lJson = JsonDiff(Chain("mixamorig:"), lBent);
    EXPECT_GT(lJson["differences"]["positions"]["largest"], 1.0) << lJson;
    EXPECT_EQ(lJson["differences"]["positions"]["where"], "mixamorig:head, frame 2 of the motion");
    // Whole names come first.
    const std::string lMixed = Replaced(Replaced(Chain(""), "JOINT chest", "JOINT x:head"), "ROOT hip", "ROOT chest");
    EXPECT_EQ(JsonDiff(lMixed, Chain(""))["only"], json::parse(R"([["x:head"],["hip"]])"));
    EXPECT_EQ(Diff(Chain(""), Chain("")).mOut.find("paired"), std::string::npos);
}

TEST_F(KDiffPairsTest, NothingIsSameThatWasNotCompared)
{
    const std::string lOther = Replaced(Replaced(Chain(""), "chest", "brust"), "head", "kopf");
    const KRunResult  lResult = Diff(Chain(""), lOther);
    EXPECT_EQ(lResult.mExit, 1);
    EXPECT_NE(lResult.mOut.find("first   first.bvh: 3 joints, only here: chest head\n"), std::string::npos) << lResult.mOut;
    EXPECT_NE(lResult.mOut.find("second  second.bvh: 3 joints, only here: brust kopf\n"), std::string::npos) << lResult.mOut;
    EXPECT_EQ(Row(lResult, "world positions"), "world positions           0.00000 cm  same for 1 joint");
    EXPECT_EQ(Row(lResult, "frames "), "frames                             0  same");
    EXPECT_EQ(LastLine(lResult), "different\n");
    const KRunResult lIgnored = Diff(Chain(""), lOther, {"--ignore", "names"});
    EXPECT_EQ(lIgnored.mExit, 0);
    EXPECT_EQ(LastLine(lIgnored), "same within tolerance for the 1 joint compared\n");
    EXPECT_EQ(JsonDiff(Chain(""), lOther)["jointsCompared"], 1);
}

TEST_F(KDiffPairsTest, MotionsThatAreLongerOrMissing)
{
    const std::string lLonger = Replaced(Chain(""), "Frames: 2", "Frames: 3") + "1 2 3 4 5 6 7 8 9 1 2 3\n";
    const KRunResult  lResult = Diff(Chain(""), lLonger, {"--ignore", "frames,duration"});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mOut;
    EXPECT_EQ(Row(lResult, "world positions"), "world positions           0.00000 cm  same for 2 frames");
    EXPECT_EQ(LastLine(lResult), "same within tolerance, in the first 2 frames\n");

    // The skeleton has a dummy, which is no difference, but is not compared either.
    ASSERT_EQ(RunAsf({"convert", "-q", "first.bvh", "-o", "still.asf"}, mOptions).mExit, 0);
    const std::vector<std::string> lCall{"diff", "-q", "still.asf", "first.bvh"};
    EXPECT_EQ(LastLine(RunAsf(lCall, mOptions)),
              "same within tolerance for the 3 joints compared; not compared: degrees of freedom, limits, "
              "frames, frames per second, duration, world positions\n");
    std::vector<std::string> lIgnoring = lCall;
    lIgnoring.insert(lIgnoring.end(), {"--ignore", "dofs,limits,frames,rate,duration,positions"});
    EXPECT_EQ(LastLine(RunAsf(lIgnoring, mOptions)), "same within tolerance for the 3 joints compared\n");
    EXPECT_EQ(LastLine(RunAsf({"diff", "-q", "still.asf", "still.asf"}, mOptions)), "same within tolerance\n") << "neither has a motion";
    std::vector<std::string> lAsJson = lCall;
    lAsJson.emplace_back("--json");
    EXPECT_TRUE(JsonOf(RunAsf(lAsJson, mOptions))["differences"]["positions"]["same"].is_null());
}

/// Ends that a writer added: nothing is said of them.
TEST_F(KDiffPairsTest, EndsOfLeaves)
{
    const std::string lWithEnd = Chain("", kHeadChannels + "End Site\n{\nOFFSET 0 12 0\n}");
    for (const KRunResult& lResult : {Diff(Chain(""), lWithEnd), Diff(lWithEnd, Chain("")), Diff(Chain("p:"), lWithEnd)})
    {
        EXPECT_EQ(lResult.mExit, 0) << lResult.mOut;
        EXPECT_EQ(lResult.mOut.find("only here"), std::string::npos) << lResult.mOut;
        EXPECT_EQ(lResult.mOut.find("_End"), std::string::npos) << lResult.mOut;
        EXPECT_EQ(LastLine(lResult), "same within tolerance\n");
    }
    // A leaf that stays at rest, against the end that it became.
    const std::string lTip = "JOINT tip\n{\nOFFSET 0 12 0\nCHANNELS 3 Zrotation Xrotation Yrotation\n}";
    const std::string lWithTip = Chain("", kHeadChannels + lTip, " 7 8 9 0 0 0");
    EXPECT_EQ(LastLine(Diff(lWithTip, lWithEnd)), "same within tolerance\n");
    const json lLower = JsonDiff(lWithTip, Replaced(lWithEnd, "0 12 0", "0 11 0"));
    EXPECT_EQ(lLower["differences"]["positions"]["same"], false);
    EXPECT_EQ(lLower["differences"]["lengths"]["where"], "tip");
    EXPECT_EQ(JsonDiff(Replaced(lWithTip, "JOINT tip", "JOINT head_end"), Chain(""))["only"], json::parse("[[],[]]"))
        << "as Blender writes it";
    // Joints, not ends: a leaf of another name, one that moves, the end of a joint that is missing, and what is not named after its parent.
    EXPECT_EQ(JsonDiff(lWithTip, Chain(""))["only"], json::parse(R"([["tip"],[]])"));
    EXPECT_EQ(JsonDiff(Replaced(Replaced(lWithTip, "JOINT tip", "JOINT head_End"), "9 0 0 0\n0 91", "9 0 5 0\n0 91"), Chain(""))["only"],
              json::parse(R"([["head_End"],[]])"));
    EXPECT_EQ(JsonDiff(Replaced(lWithEnd, "JOINT head", "JOINT kopf"), Chain(""))["only"],
              json::parse(R"([["kopf","kopf_End"],["head"]])"));
    EXPECT_EQ(JsonDiff(Replaced(lWithTip, "JOINT tip", "JOINT hip_End"), Chain(""))["only"], json::parse(R"([["hip_End"],[]])"));
}

/// An ASF file cannot name its root, and some writers put a joint above it.
TEST_F(KDiffPairsTest, Roots)
{
    EXPECT_EQ(Diff(Chain(""), Replaced(Chain(""), "ROOT hip", "ROOT root")).mExit, 0);
    const std::string lBelow = Replaced(
        Replaced(Replaced(Chain(""), "ROOT hip", "ROOT armature\n{\nOFFSET 0 0 0\nCHANNELS 0\nJOINT hip"), "}\n}\n}\n", "}\n}\n}\n}\n"),
        "CHANNELS 6", "CHANNELS 6");
    const json lJson = JsonDiff(lBelow, Chain(""));
    EXPECT_EQ(lJson["only"], json::parse(R"([["armature"],[]])"));
    EXPECT_EQ(lJson["jointsCompared"], 3) << "the hips with each other, not the hip with the armature";
    EXPECT_EQ(lJson["differences"]["positions"]["same"], true);
    EXPECT_EQ(lJson["differences"]["rest"]["same"], true);

    // In an ASF file, "root" is no name: that of the other figure's joint means nothing.
    EXPECT_EQ(JsonDiff(Replaced(Chain(""), "JOINT chest", "JOINT root"), Replaced(Chain(""), "ROOT hip", "ROOT root"))["only"],
              json::parse(R"([["root"],["chest"]])"));
    // Several roots; the second one is written elsewhere at rest, as formats without an offset of the root do.
    const std::string lProp = "ROOT prop\n{\nOFFSET 0 5 0\nCHANNELS 3 Xposition Yposition Zposition\n}\n";
    const std::string lTwo = Replaced(Replaced(Chain(""), "MOTION", lProp + "MOTION"), "7 8 9\n", "7 8 9 1 5 1\n");
    const std::string lBoth = Replaced(lTwo, "7 8 9\n", "7 8 9 2 5 1\n");
    EXPECT_EQ(Diff(lBoth, Replaced(lBoth, "OFFSET 0 5 0", "OFFSET 0 0 0")).mExit, 0) << Diff(lBoth, lBoth).mOut;
    EXPECT_EQ(JsonDiff(lBoth, Chain(""))["only"], json::parse(R"([["prop"],[]])"));
}

TEST_F(KDiffPairsTest, RepeatedNamesPairInOrder)
{
    const std::string lTwins = Replaced(Chain(""), "JOINT head", "JOINT chest");
    EXPECT_EQ(Diff(lTwins, lTwins).mExit, 0) << Diff(lTwins, lTwins).mOut;
    EXPECT_EQ(JsonDiff(lTwins, lTwins)["jointsCompared"], 3);
}

TEST_F(KDiffPairsTest, RatesAndDurations)
{
    const KRunResult lResult = Diff(Chain(""), Chain("", kHeadChannels, " 7 8 9", "0.00833333"));
    EXPECT_EQ(lResult.mExit, 1) << lResult.mOut;
    EXPECT_EQ(Row(lResult, "frames per second"), "frames per second       90.00000 fps  DIFFERS       30, 120");
    EXPECT_EQ(Row(lResult, "duration"), "duration                   0.02500 s  DIFFERS       0.0333333, 0.00833333");
    EXPECT_NE(Row(lResult, "world positions").find("same"), std::string::npos) << "frames are compared one by one";
    const std::string lFast = Chain("", kHeadChannels, " 7 8 9", "0.00833333");
    EXPECT_EQ(Diff(Chain(""), lFast, {"--ignore", "rate,duration"}).mExit, 0);
    EXPECT_EQ(Diff(Chain(""), lFast, {"--ignore", "rate"}).mExit, 1);
    // Rounded frame times are the same, and so is a single frame.
    EXPECT_EQ(Diff(Chain("", kHeadChannels, " 7 8 9", "0.0417"), Chain("", kHeadChannels, " 7 8 9", "0.041703")).mExit, 0);
    const std::string lSingle = Replaced(Replaced(Chain(""), "Frames: 2", "Frames: 1"), "\n0 91 5 1 2 3 40 50 60 7 8 9", "");
    const std::string lSingleFast = Replaced(lSingle, "0.0333333", "0.00833333");
    EXPECT_EQ(LastLine(Diff(lSingle, lSingleFast)), "same within tolerance\n");
    EXPECT_EQ(Diff(lSingle, Chain("")).mExit, 1);
}

/// A motion sampled at another rate takes as long, to within a frame.
TEST_F(KDiffPairsTest, AResampledMotionHasTheSameDuration)
{
    for (const char* lRate : {"30", "50", "24"})
    {
        const KRunResult lWritten = RunAsf({"convert", Sample("walk.amc"), "-o", "slow.bvh", "-q", "--fps", lRate}, mOptions);
        EXPECT_EQ(lWritten.mExit, 0) << lWritten.mErr;
        const json lJson = JsonOf(RunAsf({"diff", "-q", "--json", Sample("walk.amc"), "slow.bvh"}, mOptions));
        EXPECT_EQ(lJson["differences"]["rate"]["same"], false);
        EXPECT_EQ(lJson["differences"]["duration"]["same"], true) << lJson["differences"]["duration"];
    }
}

/// A motion at 30 frames a second is not the same as one at 120.
TEST_F(KDiffPairsTest, AmcKeepsItsRate)
{
    WriteFile(mFolder / "first.bvh", Chain(""));
    ASSERT_EQ(RunAsf({"convert", "first.bvh", "-o", "a.asf", "a.amc"}, mOptions).mExit, 0);
    const std::vector<std::string> lCall{"diff", "-q", "first.bvh", "a.asf", "a.amc", "--ignore", "dofs,limits"};
    EXPECT_EQ(RunAsf(lCall, mOptions).mExit, 0) << RunAsf(lCall, mOptions).mOut;
    WriteFile(mFolder / "a.amc", Replaced(ReadFile(mFolder / "a.amc"), "# samples-per-second 30\n", ""));
    EXPECT_EQ(RunAsf(lCall, mOptions).mExit, 1) << RunAsf(lCall, mOptions).mOut;
}

/// A single joint, or joints that are all at one point, have a tolerance, too.
TEST_F(KDiffPairsTest, FiguresWithoutHeight)
{
    const auto lPoint = [](const std::string& pWay)
    {
        return "HIERARCHY\nROOT a\n{\nOFFSET 0 0 0\nCHANNELS 3 Xposition Yposition Zposition\nJOINT b\n{\nOFFSET 0 0 0\n"
               "CHANNELS 3 Zrotation Xrotation Yrotation\n}\n}\nMOTION\nFrames: 2\nFrame Time: 0.1\n1 2 3 0 0 0\n" +
               pWay + " 2 3 0 0 0\n";
    };
    const KRunResult lMoving = Diff(lPoint("51"), lPoint("51.04"));
    EXPECT_EQ(lMoving.mExit, 0) << lMoving.mOut;
    EXPECT_NE(lMoving.mOut.find("\nheight  0.00 cm, tolerance 0.05 cm, 0.001 of 50 cm\n"), std::string::npos) << lMoving.mOut;
    EXPECT_EQ(Diff(lPoint("51"), lPoint("51.06")).mExit, 1);
    EXPECT_EQ(JsonDiff(lPoint("51"), lPoint("51"))["lengthTolerance"], 0.05);

    const KRunResult lStill = Diff(lPoint("1"), lPoint("1.0009"));
    EXPECT_EQ(lStill.mExit, 0) << lStill.mOut;
    EXPECT_NE(lStill.mOut.find("\nheight  0.00 cm, tolerance 0.001 cm, 0.001 of 1 cm\n"), std::string::npos) << lStill.mOut;
    EXPECT_EQ(Diff(lPoint("1"), lPoint("1.01")).mExit, 1);
    EXPECT_EQ(Diff(Chain(""), Chain("")).mOut.find("0.001 of"), std::string::npos) << "a figure with height does not name another length";
}

} // namespace
