#include <tests/apps/asf/converttest.h>
#include <tests/support/corpus.h>

#include <algorithm>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

size_t FileCount(const fs::path& pFolder)
{
    return static_cast<size_t>(std::distance(fs::directory_iterator(pFolder), fs::directory_iterator()));
}

// Round trips: through a format and back. A second round trip, with files of the same names, changes no byte of the text files.

TEST_F(KConvertTest, RoundTripThroughAcclaimFiles)
{
    fs::create_directory(mFolder / "one");
    fs::create_directory(mFolder / "two");
    ExpectConverts("walk.amc -o one/w.asf one/w.amc");
    ExpectSame({"walker.asf", "walk.amc", "one/w.asf", "one/w.amc"}, "frames");
    ExpectConverts("one/w.asf one/w.amc -o two/w.asf two/w.amc");
    EXPECT_EQ(Text("one/w.asf"), Text("two/w.asf"));
    EXPECT_EQ(Text("one/w.amc"), Text("two/w.amc"));
}

TEST_F(KConvertTest, RoundTripThroughBvh)
{
    fs::create_directory(mFolder / "one");
    fs::create_directory(mFolder / "two");
    ExpectConverts("walk.amc -o one/w.bvh");
    ExpectSame({"walk.amc", "one/w.bvh"}, "dofs");
    ExpectConverts("one/w.bvh -o one/w.asf one/w.amc");
    // BVH cannot hold degrees of freedom.
    ExpectSame({"walker.asf", "walk.amc", "one/w.asf", "one/w.amc"}, "dofs,limits");
    ExpectConverts("one/w.asf one/w.amc -o two/w.bvh");
    ExpectConverts("two/w.bvh -o two/w.asf two/w.amc");
    EXPECT_EQ(Text("one/w.asf"), Text("two/w.asf"));
    EXPECT_EQ(Text("one/w.amc"), Text("two/w.amc"));
}

TEST_F(KConvertTest, RoundTripThroughGltfKeepsLimits)
{
    for (const std::string lKind : {"glb", "gltf"})
    {
        fs::create_directory(mFolder / lKind);
        ExpectConverts("walk.amc -o " + lKind + "/w." + lKind);
        ExpectSame({"walk.amc", lKind + "/w." + lKind}, "frames");
        ExpectConverts(lKind + "/w." + lKind + " -o " + lKind + "/w.asf " + lKind + "/w.amc");
        ExpectSame({"walker.asf", "walk.amc", lKind + "/w.asf", lKind + "/w.amc"}, "frames");
    }
    EXPECT_TRUE(fs::exists(mFolder / "gltf" / "w.bin"));
}

/// The same for other motions: joints stay within a ten-thousandth of the figure's height.
TEST_F(KConvertTest, RoundTripsOfWholeMotions)
{
    for (const fs::path& lPath : CorpusFiles(".amc"))
    {
        SCOPED_TRACE(lPath.filename().string());
        const std::string lMotion = lPath.string();
        ExpectConverts(lMotion + " -o real.glb -o real.bvh -o real.asf real.amc");
        ExpectSame({"real.glb", "real.bvh"}, "frames");
        ExpectSame({"real.glb", "real.asf", "real.amc"}, "frames");
        ExpectConverts("real.glb -o glb.asf glb.amc");
        ExpectSame({"real.asf", "real.amc", "glb.asf", "glb.amc"}, "frames");
        ExpectConverts("real.bvh -o bvh.asf bvh.amc");
        ExpectSame({"real.asf", "real.amc", "bvh.asf", "bvh.amc"}, "dofs,limits");
    }
}

TEST_F(KConvertTest, ASkeletonAlone)
{
    ExpectConverts("walker.asf -o new.asf --length-unit 1");
    ExpectSame({"walker.asf", "new.asf"}, "frames");
    EXPECT_EQ(LineWith(Text("new.asf"), "length"), "  length 1");
    ExpectConverts("walker.asf -o rest.bvh");
    EXPECT_EQ(LineWith(Text("rest.bvh"), "Frames:"), "Frames: 1");
    ExpectConverts("walker.asf -o rest.glb");
    ExpectSame({"walker.asf", "rest.glb"}, "frames");
}

TEST_F(KConvertTest, SeveralOutputsAtOnce)
{
    ExpectConverts("walk.amc -o a.bvh -o a.glb -o a.asf a.amc");
    for (const char* lName : {"a.bvh", "a.glb", "a.asf", "a.amc"})
    {
        EXPECT_TRUE(fs::exists(mFolder / lName)) << lName;
    }
    ExpectConverts("walk.amc -o d.gltf -o d.bvh -o d.asf d.amc -o d.glb");
    EXPECT_EQ(Text("d.glb"), Text("a.glb"));
    // Outputs that share the frames do not depend on each other.
    ExpectConverts("walk.amc -o a.npz");
    ExpectConverts("walk.amc -o e.npz -o e.asf e.amc -o e.bvh");
    ExpectConverts("walk.amc -o alone.asf alone.amc");
    EXPECT_EQ(Text("e.npz"), Text("a.npz"));
    EXPECT_EQ(Text("e.bvh"), Text("a.bvh"));
    ExpectConverts("walk.amc -o a.csv -o x.bvh --up z --units m --fps 50");
    ASSERT_EQ(Run({"positions", "walk.amc", "-q", "-o", "alone.csv", "--up", "z", "--units", "m", "--fps", "50"}).mExit, 0);
    EXPECT_EQ(Text("a.csv"), Text("alone.csv"));
    EXPECT_EQ(Text("alone.asf"), Text("a.asf"));
    EXPECT_EQ(Text("e.amc").substr(Text("e.amc").find('\n')),
              Text("alone.amc").substr(Text("alone.amc").find('\n'))); // Names the ASF file.
    ExpectSame({"d.gltf", "d.bvh"}, "frames");
    // The two names after one -o may be in either order; a further name is an input.
    ExpectConverts("-o b.amc b.asf walk.amc");
    EXPECT_EQ(Text("a.asf"), Text("b.asf"));
    ExpectConverts("-o c.bvh walk.amc");
    EXPECT_EQ(Text("a.bvh"), Text("c.bvh"));
}

TEST_F(KConvertTest, SeveralMotions)
{
    WriteFile(mFolder / "small_02.amc", ThreeFrames());
    ExpectConverts("small.asf small_01.amc small_02.amc -o both.glb --motion-fps 30");
    const KRunResult lOne = Convert("small.asf small_01.amc small_02.amc -o one.bvh --motion-fps 30");
    EXPECT_EQ(lOne.mExit, 2);
    EXPECT_EQ(lOne.mErr,
              "asf: error: --output: one.bvh holds one take, but there are 2: put {name} into its name, or choose one with --take\n");
    EXPECT_FALSE(fs::exists(mFolder / "one.bvh"));
    ExpectConverts("small_01.amc small_02.amc --asf small.asf -o to_{name}.bvh --motion-fps 30");
    EXPECT_EQ(Text("to_small_01.bvh"), Text("to_small_02.bvh"));
    ExpectConverts("both.glb -o s.asf {name}.amc");
    EXPECT_TRUE(fs::exists(mFolder / "small_01.amc") && fs::exists(mFolder / "small_02.amc"));
    ExpectConverts("both.glb --take small_02 -o picked.bvh");
    const KRunResult lNone = Convert("both.glb --take run -o none.bvh");
    EXPECT_EQ(lNone.mExit, 2);
    EXPECT_EQ(lNone.mErr, "asf: error: --take: there is no take run; there are small_01, small_02\n");
}

struct KPartCase
{
    const char* mCall;
    const char* mFrames;
    const char* mFrameTime;
};

class KPartTest : public KConvertTest, public testing::WithParamInterface<KPartCase>
{
};

/// walk.amc: 241 frames at 120 frames per second.
TEST_P(KPartTest, FramesAndRate)
{
    ExpectConverts(std::string("walk.amc -o part.bvh ") + GetParam().mCall);
    EXPECT_EQ(LineWith(Text("part.bvh"), "Frames:"), std::string("Frames: ") + GetParam().mFrames);
    EXPECT_EQ(LineWith(Text("part.bvh"), "Frame Time:").substr(0, 21), std::string("Frame Time: ") + GetParam().mFrameTime);
}

INSTANTIATE_TEST_SUITE_P(Parts, KPartTest,
                         testing::Values(KPartCase{"", "241", "0.0083333"}, KPartCase{"--every 4", "61", "0.0333333"},
                                         KPartCase{"--fps 30", "61", "0.0333333"}, KPartCase{"--fps 60000/1001", "120", "0.0166833"},
                                         KPartCase{"--start 1", "121", "0.0083333"}, KPartCase{"--start 121f", "121", "0.0083333"},
                                         KPartCase{"--end 1", "121", "0.0083333"}, KPartCase{"--start 10f --end 19f", "10", "0.0083333"},
                                         KPartCase{"--start 10f --end 10f", "1", "0.0083333"},
                                         KPartCase{"--motion-fps 60", "241", "0.0166666"}, KPartCase{"--source-fps 60", "241", "0.0166666"},
                                         KPartCase{"--start 1f --end 241f", "241", "0.0083333"},
                                         KPartCase{"--start 0 --end 2", "241", "0.0083333"}));

TEST_F(KConvertTest, OptionsOfBvh)
{
    ExpectConverts("walk.amc -o a.bvh --channels ZXY --scale 0.01");
    EXPECT_NE(Text("a.bvh").find("CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation"), std::string::npos);
    ExpectConverts("walk.amc -o b.bvh --up z");
    EXPECT_NE(Text("a.bvh"), Text("b.bvh"));
    ExpectConverts("walk.amc -o one.bvh --threads 1");
    ExpectConverts("walk.amc -o four.bvh --threads 4");
    EXPECT_EQ(Text("one.bvh"), Text("four.bvh"));
}

TEST_F(KConvertTest, OptionsOfGltf)
{
    ExpectConverts("walk.amc -o a.gltf --mesh none --no-limits --take stroll");
    const json lModel = json::parse(Text("a.gltf"));
    EXPECT_EQ(lModel.count("meshes"), 0u);
    EXPECT_EQ(lModel["animations"][0]["name"], "stroll");
    EXPECT_EQ(Text("a.gltf").find("\"min\":-"), std::string::npos) << "limits are left out";
}

TEST_F(KConvertTest, MotionForAnotherSkeleton)
{
    ExpectConverts("walk.amc -o a.bvh");
    ExpectConverts("a.bvh --skeleton walker.asf -o back.amc");
    ExpectSame({"walker.asf", "walk.amc", "walker.asf", "back.amc"}, "frames");
    const KRunResult lOther = Convert("a.bvh --skeleton small.asf -o other.amc");
    EXPECT_EQ(lOther.mExit, 1);
    EXPECT_EQ(lOther.mErr, "other.amc: error: Not a motion of this skeleton: 0 of 2 moving joints match; only the motion has left_thigh, "
                           "left_shin, left_foot; only the skeleton has thigh, shin\n");
    EXPECT_FALSE(fs::exists(mFolder / "other.amc"));
    const KRunResult lAllowed = Convert("a.bvh --skeleton small.asf -o other.amc --allow-unmatched");
    EXPECT_EQ(lAllowed.mExit, 0);
    EXPECT_NE(lAllowed.mErr.find("other.amc: warning: 2 bones kept at rest, without a joint of the same name: thigh, shin\n"),
              std::string::npos)
        << lAllowed.mErr;
}

TEST_F(KConvertTest, MotionForItsOwnSkeleton)
{
    ExpectConverts("walk.amc -o half.amc --every 2 --write-rate");
    EXPECT_EQ(Text("half.amc").substr(0, 87),
              "# samples-per-second 60\n:FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 60\n1\nroot -0.1464");
    ExpectConverts("walk.amc -o same.amc --every 2 --tell-rate");
    EXPECT_EQ(Text("same.amc"), Text("half.amc")) << "the option's first name";
}

/// Through AMC, which has no rate of its own, and back to BVH.
TEST_F(KConvertTest, MotionsKeepTheirRate)
{
    for (const char* lRate : {"30", "120", "30000/1001", "24000/1001", "33.3", "0.7"})
    {
        ExpectConverts(std::string("walk.amc -o there.bvh --fps ") + lRate);
        ExpectConverts("there.bvh -o t.asf t.amc");
        ExpectConverts("t.amc -o back.bvh");
        const std::string lFrameTime = LineWith(Text("there.bvh"), "Frame Time:");
        EXPECT_EQ(LineWith(Text("back.bvh"), "Frame Time:"), lFrameTime) << lRate;
        EXPECT_EQ(LineWith(Text("back.bvh"), "Frames:"), LineWith(Text("there.bvh"), "Frames:")) << lRate;
    }
}

TEST_F(KConvertTest, DummiesDoNotAccumulate)
{
    WriteFile(mFolder / "spread.bvh", "HIERARCHY\nROOT hip\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition Zposition Zrotation Yrotation "
                                      "Xrotation\nJOINT left\n{\nOFFSET 10 0 0\nCHANNELS 3 Zrotation Yrotation Xrotation\nEnd Site\n{\n"
                                      "OFFSET 0 -40 0\n}\n}\nJOINT right\n{\nOFFSET -10 0 0\nCHANNELS 3 Zrotation Yrotation Xrotation\n"
                                      "End Site\n{\nOFFSET 0 -40 0\n}\n}\n}\nMOTION\nFrames: 2\nFrame Time: 0.0333333\n"
                                      "0 90 0 0 0 0 0 0 10 0 0 -10\n0 90 1 0 0 0 0 0 20 0 0 -20\n");
    ExpectConverts("spread.bvh -o a.asf a.amc --every 1");
    EXPECT_NE(Text("a.asf").find("leftDummy"), std::string::npos);
    ExpectConverts("a.asf a.amc -o b.bvh --motion-fps 30");
    ExpectConverts("b.bvh -o c.asf c.amc");
    EXPECT_EQ(Text("a.asf"), Text("c.asf"));
    ExpectConverts("b.bvh -o d.bvh --remove-dummies");
    EXPECT_EQ(Text("d.bvh").find("Dummy"), std::string::npos);
    ExpectSame({"spread.bvh", "d.bvh"}, "frames");
}

TEST_F(KConvertTest, StandardInputAndOutput)
{
    ExpectConverts("walk.amc -o a.bvh");
    const KRunResult lOut = Convert("walk.amc -o - --to bvh");
    EXPECT_EQ(lOut.mExit, 0) << lOut.mErr;
    EXPECT_EQ(lOut.mOut, Text("a.bvh"));
    KRunOptions lOptions = mOptions;
    lOptions.mInput = lOut.mOut;
    const KRunResult lIn = RunAsf({"convert", "-q", "-", "-o", "b.bvh"}, lOptions);
    EXPECT_EQ(lIn.mExit, 0) << lIn.mErr;
    ExpectSame({"a.bvh", "b.bvh"}, "frames");
    ExpectConverts("walk.amc -o a.glb");
    EXPECT_EQ(Convert("walk.amc -o - --to glb").mOut, Text("a.glb"));
    lOptions.mInput = Text("a.glb");
    EXPECT_EQ(RunAsf({"convert", "-q", "-", "-o", "c.bvh"}, lOptions).mExit, 0);
    const KRunResult lSkeleton = Convert("walker.asf -o - --to asf");
    EXPECT_EQ(lSkeleton.mOut.substr(0, 13), ":version 1.10");
}

struct KBadCase
{
    const char* mCall;
    int         mExit;
    const char* mMessage;
};

class KBadTest : public KConvertTest, public testing::WithParamInterface<KBadCase>
{
};

TEST_P(KBadTest, ReportsTheErrorAndChangesNothing)
{
    WriteFile(mFolder / "old.bvh", "old");
    WriteFile(mFolder / "old.glb", "old");
    WriteFile(mFolder / "old.asf", "old");
    WriteFile(mFolder / "old.amc", "old");
    WriteFile(mFolder / "cut.amc", ThreeFrames() + "4\nroot 0 0\n");
    WriteFile(mFolder / "cut.bvh", "HIERARCHY\nROOT hip\n{\nOFFSET 0 0\n");
    WriteFile(mFolder / "bad.asf", Replaced(SmallSkeleton(), "direction 1 0 0", "direction 1 0"));
    WriteFile(mFolder / "cut.glb", std::string("glTF\2\0\0\0\xff\0\0\0", 12));
    WriteFile(mFolder / "bad.gltf", "{\"asset\":{\"version\":\"2.0\"},\"nodes\":7}");
    WriteFile(mFolder / "empty.bvh", "");
    fs::create_directory(mFolder / "folder.bvh");
    const size_t     lFiles = FileCount(mFolder.Path());
    const KRunResult lResult = Convert(GetParam().mCall);
    EXPECT_EQ(lResult.mExit, GetParam().mExit) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find(GetParam().mMessage), std::string::npos) << lResult.mErr;
    EXPECT_EQ(lResult.mOut, "");
    EXPECT_EQ(FileCount(mFolder.Path()), lFiles);
    for (const char* lName : {"old.bvh", "old.glb", "old.asf", "old.amc"})
    {
        EXPECT_EQ(Text(lName), "old");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Calls, KBadTest,
    testing::Values(KBadCase{"walk.amc", 2, "--output is required"}, KBadCase{"-o old.bvh", 2, "FILE is required"},
                    KBadCase{"walk.amc -o old.txt", 2, "--output: expected .asf, .amc, .bvh, .glb, .gltf, .npz or .csv, not old.txt"},
                    KBadCase{"walk.amc -o -", 2, "or use --to"}, KBadCase{"walk.amc -o old.bvh -o old.bvh", 2, "old.bvh is given twice"},
                    KBadCase{"walk.amc -o old.bvh --fps 0", 2, "--fps: expected a positive number or fraction"},
                    KBadCase{"walk.amc -o old.bvh --fps x", 2, "not x"},
                    KBadCase{"walk.amc -o old.bvh --start soon", 2, "--start: expected seconds such as 2.5"},
                    KBadCase{"walk.amc -o old.bvh --start 3 --end 1", 2, "--start 3 is outside walk"},
                    KBadCase{"walk.amc -o old.bvh --start 20f --end 10f", 2,
                             "--start and --end leave no frames of walk, which has frames 1 to 241 (0 to 2 seconds)"},
                    KBadCase{"walk.amc -o old.bvh --start 99", 2, "--start 99 is outside walk, which has frames 1 to 241 (0 to 2 seconds)"},
                    KBadCase{"walk.amc -o old.bvh --start 0f", 2, "--start 0f is outside walk, which has frames 1 to 241 (0 to 2 seconds)"},
                    KBadCase{"walk.amc -o old.bvh --end 242f", 2, "--end 242f is outside walk"},
                    KBadCase{"walker.asf -o old.bvh --end 1", 2, "--start and --end need a motion"},
                    KBadCase{"walk.amc -o old.bvh --every 0", 2, "--every"}, KBadCase{"walk.amc -o old.bvh --scale 0", 2, "--scale"},
                    KBadCase{"walk.amc -o old.bvh --channels XYY", 2, "--channels: expected X, Y and Z in any order"},
                    KBadCase{"walk.amc -o old.glb --channels ZXY", 2, "--channels is for BVH only"},
                    KBadCase{"walk.amc -o old.bvh --mesh none", 2, "--mesh is for glTF only"},
                    KBadCase{"walk.amc -o old.glb --up z", 2, "--up is not for glTF"},
                    KBadCase{"walk.amc -o old.bvh --length-unit 1", 2, "--length-unit is for ASF only"},
                    KBadCase{"walk.amc -o old.bvh --skeleton walker.asf", 2, "--skeleton is for a single AMC only"},
                    KBadCase{"walk.amc small.asf walker.asf -o old.bvh", 2, "expected one figure, not small.asf and walker.asf"},
                    KBadCase{"walker.asf -o old.amc", 2, "there is no motion to write to old.amc"},
                    KBadCase{"walker.asf walk.amc --asf small.asf -o old.bvh", 2, "--asf is for AMC files given alone"},
                    KBadCase{"walker.asf walk.amc -o walk.amc", 2, "walk.amc: error: is also an input (walk.amc)"},
                    KBadCase{"walk.amc -o walker.asf", 2, "walker.asf: error: is also an input (walker.asf)"}));

INSTANTIATE_TEST_SUITE_P(Inputs, KBadTest,
                         testing::Values(KBadCase{"none.amc -o old.bvh", 3, "none.amc: error: cannot be read: No such file or directory"},
                                         KBadCase{"folder.bvh -o old.bvh", 3, "folder.bvh: error: cannot be read: Is a directory"},
                                         KBadCase{"empty.bvh -o old.glb", 1, "empty.bvh: error: is empty"},
                                         KBadCase{"small.asf cut.amc -o old.bvh -o old.glb", 1, "cut.amc:"},
                                         KBadCase{"cut.bvh -o old.asf old.amc", 1, "cut.bvh:4: error:"},
                                         KBadCase{"bad.asf small_01.amc -o old.glb", 1, "bad.asf:"},
                                         KBadCase{"cut.glb -o old.bvh", 1, "cut.glb: error:"},
                                         KBadCase{"bad.gltf -o old.bvh", 1, "bad.gltf: error:"}));

INSTANTIATE_TEST_SUITE_P(
    Outputs, KBadTest,
    testing::Values(KBadCase{"walk.amc -o folder.bvh", 3, "folder.bvh: error: cannot be written: Is a directory"},
                    KBadCase{"walk.amc -o none/a.bvh", 3, "none/a.bvh: error: cannot be written: No such file or directory"},
                    KBadCase{"walk.amc -o none/a.glb", 3, "none/a.glb: error: cannot be written: No such file or directory"},
                    KBadCase{"walk.amc -o old.asf none/a.amc", 3, "none/a.amc: error: "},
                    KBadCase{"walk.amc -o old.bvh -o none/a.glb", 3, "none/a.glb: error: "},
                    KBadCase{"walk.amc -o old.bvh -o old.asf none/a.amc", 3, "none/a.amc: error: "}));

TEST_F(KConvertTest, AFullDeviceIsASystemError)
{
    for (const char* lKind : {"bvh", "glb", "asf"})
    {
        const KRunResult lResult = Convert(std::string("walk.amc -o /dev/full --to ") + lKind);
        EXPECT_EQ(lResult.mExit, 3) << lKind;
        EXPECT_EQ(lResult.mErr, "/dev/full: error: cannot be written: No space left on device\n") << lKind;
    }
}

TEST_F(KConvertTest, KeepsGoodFramesOnRequest)
{
    WriteFile(mFolder / "cut.amc", ThreeFrames() + "4\nroot 0 0\n");
    EXPECT_EQ(Convert("small.asf cut.amc -o a.bvh").mExit, 1);
    const KRunResult lKept = Convert("small.asf cut.amc -o a.bvh --keep-good-frames");
    EXPECT_EQ(lKept.mExit, 0) << lKept.mErr;
    EXPECT_EQ(LineWith(Text("a.bvh"), "Frames:"), "Frames: 3");
}

/// An interrupt during a long conversion leaves neither a partial nor a temporary file.
TEST_F(KConvertTest, AnInterruptLeavesNothingBehind)
{
    WriteFile(mFolder / "old.bvh", "old");
    const KRunResult lResult =
        RunShell("\"$ASF\" convert -q walk.amc -o old.bvh -o {name}.glb --fps 100000 & p=$!; sleep 0.3; kill -INT $p "
                 "2> /dev/null; kill -TERM $p 2> /dev/null; wait $p; ls -A | grep -v -e '^old.bvh$' -e '^walk' -e '^small' || true",
                 mOptions);
    EXPECT_EQ(lResult.mOut, "") << lResult.mErr;
}

} // namespace
