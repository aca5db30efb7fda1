#include <apps/asf/commands/framelist.h>

#include <tests/apps/asf/runasf.h>
#include <tests/support/corpus.h>

#include <cmath>
#include <cstring>
#include <map>
#include <sstream>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

/// Two frames for the small skeleton; the root moves by one unit along z.
std::string TwoFrames(const std::string& pHeader = ":FULLY-SPECIFIED\n:DEGREES\n")
{
    return pHeader + "1\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n2\nroot 0 0 1 0 0 0\nthigh -10 0 0\nshin 180\n";
}

class KMotionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "small_01.amc", TwoFrames());
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KMotionTest, LongCsv)
{
    const KRunResult lResult = Run({"positions", "small.asf", "small_01.amc", "--frames", "last", "--source-fps", "30"});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(lResult.mErr, "");
    // One unit is 2.54 / 0.45 cm. The hip is one unit to the left, the thigh seven long.
    EXPECT_EQ(lResult.mOut.substr(0, lResult.mOut.find("2,0.033333,shin")), "frame,time,bone,x,y,z\n"
                                                                            "2,0.033333,root,0.00000,0.00000,5.64444\n"
                                                                            "2,0.033333,hip,0.00000,0.00000,5.64444\n"
                                                                            "2,0.033333,thigh,5.64444,0.00000,5.64444\n");
}

TEST_F(KMotionTest, WideCsvAndEnds)
{
    const KRunResult lResult =
        Run({"positions", "small_01.amc", "--asf", "small.asf", "--frames", "1", "--source-fps", "120", "--wide", "--ends"});
    EXPECT_EQ(
        lResult.mOut,
        "frame,time,root.x,root.y,root.z,hip.x,hip.y,hip.z,thigh.x,thigh.y,thigh.z,shin.x,shin.y,shin.z,shin_End.x,shin_End.y,shin_End.z\n"
        "1,0.000000,0.00000,0.00000,0.00000,0.00000,0.00000,0.00000,5.64444,0.00000,0.00000,5.64444,-39.51111,0.00000,"
        "5.64444,-79.02222,0.00000\n");
}

TEST_F(KMotionTest, NoEndsByDefault)
{
    const std::string lCall[] = {"positions", "small_01.amc", "--asf", "small.asf", "--frames", "1", "-q"};
    const KRunResult  lResult = Run({std::begin(lCall), std::end(lCall)});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(lResult.mOut.find("_End"), std::string::npos) << lResult.mOut;
    EXPECT_EQ(std::count(lResult.mOut.begin(), lResult.mOut.end(), '\n'), 5) << "a header line, root, hip, thigh and shin";

    // A bone may have the name of an end.
    WriteFile(mFolder / "end.asf", Replaced(Replaced(SmallSkeleton(), "name shin", "name thigh_End"), "thigh shin", "thigh thigh_End"));
    WriteFile(mFolder / "end.amc", Replaced(TwoFrames(), "shin", "thigh_End"));
    const KRunResult lNamed = Run({"positions", "end.asf", "end.amc", "--frames", "1", "-q"});
    EXPECT_NE(lNamed.mOut.find(",thigh_End,"), std::string::npos) << lNamed.mOut << lNamed.mErr;
    EXPECT_EQ(lNamed.mOut.find("_End_End"), std::string::npos) << lNamed.mOut;
}

TEST_F(KMotionTest, JsonAndNpyMatchCsv)
{
    ASSERT_EQ(Run({"positions", "small_01.amc", "-q", "-o", "a.csv", "--wide", "--ends"}).mExit, 0);
    ASSERT_EQ(Run({"positions", "small_01.amc", "-q", "-o", "a.json", "--ends"}).mExit, 0);
    ASSERT_EQ(Run({"positions", "small_01.amc", "-q", "-o", "a.npy", "--ends"}).mExit, 0);

    const json lJson = json::parse(ReadFile(mFolder / "a.json"));
    EXPECT_EQ(lJson["kind"], "positions");
    EXPECT_EQ(lJson["unit"], "cm");
    EXPECT_EQ(lJson["framesPerSecond"], 120);
    EXPECT_EQ(lJson["joints"], json({"root", "hip", "thigh", "shin", "shin_End"}));
    ASSERT_EQ(lJson["frames"].size(), 2u);
    EXPECT_EQ(lJson["frames"][1]["frame"], 2);

    const std::string lNpy = ReadFile(mFolder / "a.npy");
    ASSERT_EQ(lNpy.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8));
    const size_t lHeader = 10 + static_cast<unsigned char>(lNpy[8]) + 256u * static_cast<unsigned char>(lNpy[9]);
    EXPECT_EQ(lHeader % 64, 0u);
    EXPECT_NE(lNpy.find("{'descr': '<f4', 'fortran_order': False, 'shape': (2, 5, 3), }"), std::string::npos);
    ASSERT_EQ(lNpy.size(), lHeader + 2 * 5 * 3 * 4);
    EXPECT_EQ(ReadFile(mFolder / "a.names.txt"), "root\nhip\nthigh\nshin\nshin_End\n");

    std::istringstream lCsv(ReadFile(mFolder / "a.csv"));
    std::string        lField;
    std::getline(lCsv, lField);
    size_t lOffset = lHeader;
    for (size_t lFrame = 0; lFrame < 2; ++lFrame)
    {
        std::getline(lCsv, lField, ',');
        std::getline(lCsv, lField, ',');
        for (size_t lValue = 0; lValue < 15; ++lValue, lOffset += 4)
        {
            std::getline(lCsv, lField, lValue < 14 ? ',' : '\n');
            float lFloat = 0;
            std::memcpy(&lFloat, lNpy.data() + lOffset, 4);
            EXPECT_NEAR(std::stod(lField), lJson["frames"][lFrame]["positions"][lValue / 3][lValue % 3], 1e-9);
            EXPECT_NEAR(std::stod(lField), static_cast<double>(lFloat), 1e-4);
        }
    }
}

TEST_F(KMotionTest, BothFilesOrNone)
{
    fs::create_directory(mFolder / "a.names.txt");
    WriteFile(mFolder / "a.npy", "old");
    const KRunResult lResult = Run({"positions", "small_01.amc", "-q", "-o", "a.npy"});
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_EQ(lResult.mErr, "a.names.txt: error: cannot be written: Is a directory\n");
    EXPECT_EQ(ReadFile(mFolder / "a.npy"), "old");
}

TEST_F(KMotionTest, OutputsThatAreInputsAreRefused)
{
    EXPECT_EQ(Run({"positions", "small_01.amc", "-q", "-o", "small_01.amc"}).mExit, 2);
    EXPECT_EQ(Run({"positions", "small.asf", "small_01.amc", "-q", "-o", "./small.asf"}).mExit, 2);
    WriteFile(mFolder / "small.csv", TwoFrames());
    EXPECT_EQ(Run({"positions", "small.csv", "--asf", "small.asf", "-q", "-o", "small.csv"}).mExit, 2);
    EXPECT_EQ(ReadFile(mFolder / "small.asf"), SmallSkeleton());
    EXPECT_EQ(ReadFile(mFolder / "small_01.amc"), TwoFrames());
    EXPECT_EQ(ReadFile(mFolder / "small.csv"), TwoFrames());
}

TEST_F(KMotionTest, FindsTheSkeleton)
{
    const auto lNote = [&](const char* pMotion)
    {
        return Run({"info", pMotion}).mErr;
    };
    EXPECT_EQ(lNote("small_01.amc").find("small_01.amc: note: using skeleton small.asf (its name is a prefix of the motion's)\n"), 0u);

    WriteFile(mFolder / "Other.ASF", SmallSkeleton());
    WriteFile(mFolder / "named.amc", TwoFrames("#!OML:ASF H:\\somewhere\\OTHER.asf\n:DEGREES\n"));
    EXPECT_NE(lNote("named.amc").find("using skeleton Other.ASF (named in the header)"), std::string::npos);

    WriteFile(mFolder / "small_0.asf", SmallSkeleton());
    EXPECT_NE(lNote("small_01.amc").find("using skeleton small_0.asf (its name is a prefix of the motion's)"), std::string::npos);

    WriteFile(mFolder / "x.amc", TwoFrames());
    const KRunResult lMany = Run({"info", "x.amc"});
    EXPECT_EQ(lMany.mExit, 2);
    EXPECT_EQ(lMany.mErr, "x.amc: error: needs a skeleton: candidates are Other.ASF, small.asf, small_0.asf; give one with --asf FILE\n");
    EXPECT_EQ(Run({"info", "x.amc", "--asf", "small.asf", "-q"}).mErr, "");

    fs::create_directory(mFolder / "alone");
    WriteFile(mFolder / "alone/walk.amc", TwoFrames());
    EXPECT_EQ(Run({"info", "alone/walk.amc"}).mErr,
              "alone/walk.amc: error: needs a skeleton: there is no ASF file in its folder; give one with --asf FILE\n");
    WriteFile(mFolder / "alone/only.asf", SmallSkeleton());
    EXPECT_NE(lNote("alone/walk.amc").find("using skeleton alone/only.asf (the only one in the folder)"), std::string::npos);
}

TEST_F(KMotionTest, TheRateIsReadOrAssumed)
{
    const std::string lAssumed = "small_01.amc: note: has no frame rate, using 120 frames per second\n";
    EXPECT_NE(Run({"info", "small_01.amc"}).mErr.find(lAssumed), std::string::npos);
    EXPECT_EQ(Run({"info", "small_01.amc", "--source-fps", "30"}).mErr.find(lAssumed), std::string::npos);
    WriteFile(mFolder / "small_02.amc", TwoFrames(":DEGREES\n:SAMPLES-PER-SECOND 60\n"));
    EXPECT_EQ(Run({"info", "small_02.amc"}).mErr.find("note: has no frame rate"), std::string::npos);

    for (const auto& [lFps, lRate] : {std::pair<const char*, double>{"25", 25}, {"23.976", 23.976}, {"30000/1001", 30000.0 / 1001}})
    {
        const json lMotion = JsonOf(Run({"info", "--json", "-q", "small_01.amc", "--source-fps", lFps}))["motion"];
        EXPECT_NEAR(lMotion["framesPerSecond"], lRate, 1e-12);
        EXPECT_NEAR(lMotion["seconds"], 1 / lRate, 1e-9);
    }
    for (const char* lFps : {"0", "-1", "fast", "30/0", "1/", "nan", "30 "})
    {
        EXPECT_EQ(Run({"info", "small_01.amc", std::string("--source-fps=") + lFps}).mExit, 2) << lFps;
    }
}

TEST_F(KMotionTest, InfoAndCheckReportExceededLimits)
{
    const json lMotion = JsonOf(Run({"info", "--json", "-q", "small_01.amc"}))["motion"];
    EXPECT_EQ(lMotion["frameCount"], 2);
    EXPECT_EQ(lMotion["bonesMoved"], 3);
    EXPECT_NEAR(lMotion["rootTravel"], 2.54 / 0.45, 1e-9);
    EXPECT_NEAR(lMotion["rootPathLength"], 2.54 / 0.45, 1e-9);
    const json lShin = lMotion["bones"][2];
    EXPECT_EQ(lShin["name"], "shin");
    EXPECT_EQ(lShin["dofs"],
              json::parse(R"([{"dof":"rx","least":0.0,"greatest":180.0,"min":-10.0,"max":170.0,"framesOutside":1,"firstOutside":2}])"));

    const KRunResult lCheck = Run({"check", "-q", "small_01.amc"});
    EXPECT_EQ(lCheck.mExit, 0);
    EXPECT_EQ(lCheck.mErr,
              "small_01.amc: warning: Bone shin: rx is outside its limits (-10 170) in 1 frame, first in frame 2; its range is 0 to 180\n");
    EXPECT_EQ(lCheck.mOut, "1 file, 0 errors, 1 warning\n");
    EXPECT_EQ(Run({"check", "-q", "--strict", "small_01.amc"}).mExit, 1);
}

TEST_F(KMotionTest, AMotionErrorHasItsLine)
{
    WriteFile(mFolder / "small_03.amc", ":DEGREES\n1\nroot 0 0 0 0 0 0\nthigh 0 x 0\nshin 0\n");
    for (const std::vector<std::string>& lArguments : {std::vector<std::string>{"info", "small_03.amc"},
                                                       {"check", "small_03.amc"},
                                                       {"positions", "small_03.amc"},
                                                       {"draw", "small_03.amc", "-o", "a.svg"}})
    {
        const KRunResult lResult = Run(lArguments);
        EXPECT_EQ(lResult.mExit, 1) << lArguments[0];
        EXPECT_NE(lResult.mErr.find("small_03.amc:4: error: Bone thigh"), std::string::npos) << lResult.mErr;
        EXPECT_EQ(lResult.mOut, lArguments[0] == "check" ? "1 file, 1 error, 0 warnings\n" : "");
    }
    EXPECT_FALSE(fs::exists(mFolder / "a.svg"));
}

TEST_F(KMotionTest, UsageErrors)
{
    for (const std::vector<std::string>& lArguments : {std::vector<std::string>{"positions", "small.asf"},
                                                       {"positions", "small.asf", "small.asf"},
                                                       {"positions", "small_01.amc", "small_01.amc"},
                                                       {"positions", "small.asf", "small_01.amc", "--asf", "small.asf"},
                                                       {"positions", "small_01.amc", "--asf", "small_01.amc"},
                                                       {"positions", "small_01.amc", "--frames", "7"},
                                                       {"positions", "small_01.amc", "-o", "a.txt"},
                                                       {"positions", "small_01.amc", "-o", "a.npy", "--wide"},
                                                       {"draw", "small.asf", "-o", "a.svg", "--frames", "1"},
                                                       {"draw", "small_01.amc", "-o", "a.svg", "--trail", "tail"}})
    {
        const KRunResult lResult = Run(lArguments);
        EXPECT_EQ(lResult.mExit, 2) << lArguments.back();
        EXPECT_NE(lResult.mErr.find("error: "), std::string::npos);
        EXPECT_EQ(lResult.mOut, "");
    }
}

TEST_F(KMotionTest, PosesAndTrails)
{
    const std::string lPoses = Run({"draw", "small_01.amc", "-q", "-o", "-", "--frames", "1,2"}).mOut;
    EXPECT_NE(lPoses.find(">frame 1, 0.00 s</text>"), std::string::npos);
    EXPECT_NE(lPoses.find(">frame 2, 0.01 s</text>"), std::string::npos);
    const std::string lTrail = Run({"draw", "small_01.amc", "-q", "-o", "-", "--view", "side", "--trail", "shin"}).mOut;
    EXPECT_NE(lTrail.find("<title>shin</title></path>"), std::string::npos);
}

TEST_F(KMotionTest, AMotionOfOneFrameGivesOneRow)
{
    WriteFile(mFolder / "small_04.amc", ":DEGREES\n5\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n");
    const std::string lCsv = Run({"positions", "small_04.amc", "-q", "--wide"}).mOut;
    EXPECT_EQ(std::count(lCsv.begin(), lCsv.end(), '\n'), 2);
    EXPECT_NE(lCsv.find("\n5,0.000000,"), std::string::npos);
}

TEST_F(KMotionTest, FramesKeepTheirNumbersAndTimes)
{
    WriteFile(mFolder / "small_05.amc", ":DEGREES\n10\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n13\nroot 0 0 1 0 0 0\nthigh 0 0 0\nshin 0\n");
    const std::string lCsv = Run({"positions", "small_05.amc", "-q", "--wide", "--source-fps", "30"}).mOut;
    EXPECT_EQ(std::count(lCsv.begin(), lCsv.end(), '\n'), 3);
    EXPECT_NE(lCsv.find("\n10,0.000000,"), std::string::npos);
    EXPECT_NE(lCsv.find("\n13,0.100000,"), std::string::npos);
}

TEST_F(KMotionTest, AnInterruptLeavesNothingBehind)
{
    std::string lLong = ":DEGREES\n";
    for (int lFrame = 1; lFrame <= 60000; ++lFrame)
    {
        lLong += std::to_string(lFrame) + "\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n";
    }
    WriteFile(mFolder / "small_06.amc", lLong);
    WriteFile(mFolder / "old.csv", "old");
    // Interrupted as soon as a temporary file appears, or after the program has ended and the new file is complete.
    const KRunResult  lResult = RunShell("\"$ASF\" positions small_06.amc -q -o old.csv & pid=$!; "
                                          "while kill -0 $pid 2> /dev/null && [ $(ls -A | wc -l) -lt 5 ]; do :; done; "
                                          "kill -TERM $pid 2> /dev/null; wait $pid; echo $?; ls -A | wc -l",
                                         mOptions);
    const std::string lOld = ReadFile(mFolder / "old.csv");
    EXPECT_TRUE(lResult.mOut == "143\n4\n" || lResult.mOut == "0\n4\n") << lResult.mOut;
    EXPECT_TRUE(lOld == "old" || std::count(lOld.begin(), lOld.end(), '\n') == 1 + 60000 * 4) << lOld.size();
}

TEST(AsfPositions, MatchAnotherProgram)
{
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        SCOPED_TRACE(lPair.mName);
        std::map<std::string, KWorldFrame> lFrames;
        for (const KWorldFrame& lFrame : ReadWorld(lPair))
        {
            lFrames[std::to_string(lFrame.mNumber)] = lFrame;
        }
        const KRunResult   lResult = RunAsf({"positions", lPair.mAmc.string(), "-q", "--ends"});
        std::istringstream lRows(lResult.mOut);
        std::string        lRow;
        size_t             lCompared = 0;
        ASSERT_EQ(lResult.mExit, 0) << lResult.mErr;
        std::getline(lRows, lRow);
        while (std::getline(lRows, lRow))
        {
            std::istringstream       lFields(lRow);
            std::vector<std::string> lField(6);
            for (std::string& lText : lField)
            {
                std::getline(lFields, lText, ',');
            }
            const auto lFrame = lFrames.find(lField[0]);
            if (lFrame == lFrames.end())
            {
                continue;
            }
            const bool             lIsEnd = lField[2].size() > 4 && lField[2].substr(lField[2].size() - 4) == "_End";
            const std::string      lBone = lIsEnd ? lField[2].substr(0, lField[2].size() - 4) : lField[2];
            const KJointPositions& lExpected = lIsEnd ? lFrame->second.mEnds : lFrame->second.mStarts;
            ASSERT_EQ(lExpected.count(lBone), 1U) << lRow;
            // Positions are written with six decimals.
            const KPoint lPosition{std::stod(lField[3]), std::stod(lField[4]), std::stod(lField[5])};
            ASSERT_LT(Distance(lPosition, lExpected.at(lBone)), lPair.mTolerance * lFrame->second.mHeight + 1e-6) << lRow;
            ++lCompared;
        }
        EXPECT_GT(lCompared, 12 * lFrames.size());
    }
}

TEST(AsfSamples, TheScriptsReproduceThem)
{
    KTempDir lFolder;
    for (const char* lScript : {"make_walk.py", "robot/make_robot.py"})
    {
        ASSERT_EQ(RunProgram({"python3", Sample(lScript), lFolder.Path().string()}).mExit, 0);
    }
    for (const char* lName : {"walker.asf", "walk.amc", "walk.bvh", "robot/robot.asf", "robot/robot_pick.amc"})
    {
        EXPECT_TRUE(ReadFile(lFolder / std::filesystem::path(lName).filename().string()) == ReadFile(Sample(lName))) << lName;
    }
}

/// Equal but for the last decimal, where mathematics libraries may differ.
TEST(AsfSamples, TheProgramReproducesTheirWorldPositions)
{
    const KTempDir lFolder;
    for (KCorpusPair lPair : {CorpusPairs()[0], CorpusPairs()[1]})
    {
        const std::vector<KWorldFrame> lOld = ReadWorld(lPair);
        const char* const              lEvery = lPair.mName == "walk" ? "20" : "5";
        const KRunResult lRun = RunProgram({"python3", std::string(QEX_SOURCE_DIR) + "/tools/worldpositions.py", lPair.mAsf.string(),
                                            lPair.mAmc.string(), "--every", lEvery});
        ASSERT_EQ(lRun.mExit, 0) << lRun.mErr;
        lPair.mWorld = lFolder / "world.json";
        WriteFile(lPair.mWorld, lRun.mOut);
        const std::vector<KWorldFrame> lNew = ReadWorld(lPair);
        ASSERT_EQ(lNew.size(), lOld.size());
        for (size_t i = 0; i < lNew.size(); ++i)
        {
            ASSERT_EQ(lNew[i].mNumber, lOld[i].mNumber);
            ASSERT_EQ(lNew[i].mStarts.size(), lOld[i].mStarts.size());
            for (const auto& [lName, lStart] : lOld[i].mStarts)
            {
                EXPECT_LT(Distance(lNew[i].mStarts.at(lName), lStart), 2e-8) << lName;
                EXPECT_LT(Distance(lNew[i].mEnds.at(lName), lOld[i].mEnds.at(lName)), 2e-8) << lName;
            }
        }
    }
}

/// A planted foot stays in place.
TEST(AsfSamples, FeetDoNotSlide)
{
    EXPECT_EQ(RunAsf({"check", "-q", "--strict", Sample("walk.amc")}).mExit, 0);
    KTempDir          lFolder;
    const std::string lOut = (lFolder / "walk.json").string();
    ASSERT_EQ(RunAsf({"positions", Sample("walk.amc"), "-q", "-o", lOut}).mExit, 0);
    const json lPositions = json::parse(ReadFile(lOut));
    size_t     lPlanted = 0;
    for (const char* lBone : {"left_toes", "right_toes"})
    {
        const auto&  lJoints = lPositions["joints"];
        const size_t lJoint = static_cast<size_t>(std::find(lJoints.begin(), lJoints.end(), lBone) - lJoints.begin());
        for (size_t lFrame = 1; lFrame < lPositions["frames"].size(); ++lFrame)
        {
            const auto& lBefore = lPositions["frames"][lFrame - 1]["positions"][lJoint];
            const auto& lNow = lPositions["frames"][lFrame]["positions"][lJoint];
            EXPECT_GT(lNow[1].get<double>(), -0.1);
            if (lBefore[1].get<double>() < 0.05 && lNow[1].get<double>() < 0.05)
            {
                ++lPlanted;
                EXPECT_NEAR(lNow[2].get<double>(), lBefore[2].get<double>(), 0.1) << lBone << " in frame " << lFrame + 1;
            }
        }
    }
    EXPECT_GT(lPlanted, 150u);
}

struct KFrameCase
{
    const char*         mList;
    std::vector<size_t> mIndices; ///< Into 10, 11, 12, 15, 20; empty: the list is refused.
};

std::ostream& operator<<(std::ostream& pOut, const KFrameCase& pCase)
{
    return pOut << '"' << pCase.mList << '"';
}

class KFrameTest : public testing::TestWithParam<KFrameCase>
{
};

TEST_P(KFrameTest, Picks)
{
    std::vector<size_t> lIndices;
    const std::string   lError = asfapp::PickFrames(GetParam().mList, {10, 11, 12, 15, 20}, lIndices);
    EXPECT_EQ(lIndices, GetParam().mIndices);
    EXPECT_EQ(lError.empty(), !GetParam().mIndices.empty()) << lError;
}

INSTANTIATE_TEST_SUITE_P(Lists, KFrameTest,
                         testing::Values(KFrameCase{"10", {0}}, KFrameCase{"last", {4}}, KFrameCase{"first,last", {0, 4}},
                                         KFrameCase{"11-15", {1, 2, 3}}, KFrameCase{"first-last", {0, 1, 2, 3, 4}},
                                         KFrameCase{"10-last:5", {0, 3, 4}}, KFrameCase{"20,10-11,10", {4, 0, 1, 0}}, KFrameCase{"13", {}},
                                         KFrameCase{"16-19", {}}, KFrameCase{"9", {}}, KFrameCase{"15-21", {}}, KFrameCase{"15-11", {}},
                                         KFrameCase{"", {}}, KFrameCase{"10,", {}}, KFrameCase{"10-", {}}, KFrameCase{"10-11:0", {}},
                                         KFrameCase{"10:2", {}}, KFrameCase{"x", {}}, KFrameCase{"lastly", {}},
                                         KFrameCase{"99999999999999999999", {}}, KFrameCase{"-5", {}}));

TEST(AsfFrames, NegativeNumbers)
{
    std::vector<size_t> lIndices;
    EXPECT_EQ(asfapp::PickFrames("-5--4,0", {-5, -4, 0}, lIndices), "");
    EXPECT_EQ(lIndices, (std::vector<size_t>{0, 1, 2}));
}

} // namespace
