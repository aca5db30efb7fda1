#include <tests/apps/asf/converttest.h>

#include <sys/stat.h>

// Tables of rotations, the choice of joints, and archives of arrays; their numbers are checked with SciPy in tests/arrays.

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

class KArraysTest : public KConvertTest
{
protected:
    KRunResult Call(const std::string& pCall) { return Run(WordsOf(pCall)); }
};

struct KTableCase
{
    const char* mCall;
    const char* mOut;
};

std::ostream& operator<<(std::ostream& pOut, const KTableCase& pCase)
{
    return pOut << pCase.mCall;
}

class KTableTest : public KArraysTest, public testing::WithParamInterface<KTableCase>
{
};

TEST_P(KTableTest, HasTheseRows)
{
    const KRunResult lResult = Call(GetParam().mCall);
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(lResult.mOut, GetParam().mOut);
}

// In the last frame the root is turned by 5 degrees about y, the thigh by -20 about x and the shin by 40.
INSTANTIATE_TEST_SUITE_P(
    Tables, KTableTest,
    testing::Values(
        KTableCase{"rotations -q small_01.amc --frames last --joints root,shin",
                   "frame,time,bone,w,x,y,z\n"
                   "3,0.016667,root,0.99904822,0.00000000,0.04361939,0.00000000\n"
                   "3,0.016667,shin,0.93969262,0.34202014,0.00000000,0.00000000\n"},
        KTableCase{"rotations -q small_01.amc --frames last --joints shin --as euler --order ZXY --wide",
                   "frame,time,shin.z,shin.x,shin.y\n3,0.016667,0.000000,40.000000,0.000000\n"},
        KTableCase{"rotations -q small_01.amc --frames last --joints shin --as euler --order xyx --wide",
                   "frame,time,shin.x,shin.y,shin.x2\n3,0.016667,40.000000,0.000000,0.000000\n"},
        KTableCase{"rotations -q small_01.amc --frames last --joints thigh --as axis-angle",
                   "frame,time,bone,x,y,z\n3,0.016667,thigh,-0.34906585,0.00000000,0.00000000\n"},
        KTableCase{"rotations -q small_01.amc --frames last --joints thigh --as 6d",
                   "frame,time,bone,m00,m10,m20,m01,m11,m21\n"
                   "3,0.016667,thigh,1.00000000,0.00000000,0.00000000,0.00000000,0.93969262,-0.34202014\n"},
        KTableCase{
            "rotations -q small_01.amc --frames last --joints thigh --as matrix",
            "frame,time,bone,m00,m01,m02,m10,m11,m12,m20,m21,m22\n"
            "3,0.016667,thigh,1.00000000,0.00000000,0.00000000,0.00000000,0.93969262,0.34202014,0.00000000,-0.34202014,0.93969262\n"},
        KTableCase{"rotations -q small_01.amc --frames last --joints root --as euler --up z",
                   "frame,time,bone,x,y,z\n3,0.016667,root,0.000000,0.000000,5.000000\n"},
        // Turned with the root, and back by the thigh's half of the shin's angle.
        KTableCase{"rotations -q small_01.amc --frames last --joints shin --as euler --space world",
                   "frame,time,bone,x,y,z\n3,0.016667,shin,20.000000,5.000000,0.000000\n"},
        KTableCase{"positions -q small_01.amc --frames last --joints thigh,root --wide",
                   "frame,time,thigh.x,thigh.y,thigh.z,root.x,root.y,root.z\n"
                   "3,0.016667,5.62297,0.00000,10.79694,0.00000,0.00000,11.28889\n"},
        KTableCase{"positions -q small_01.amc --frames last --joints shin_End",
                   "frame,time,bone,x,y,z\n3,0.016667,shin_End,5.62297,-74.25660,10.79694\n"}));

struct KArraysError
{
    const char* mCall;
    int         mExit;
    const char* mErr; ///< The error's line, or its start.
};

TEST_F(KArraysTest, Errors)
{
    ASSERT_EQ(::mkfifo((mFolder / "fifo.npz").c_str(), 0600), 0);
    fs::create_directory(mFolder / "folder.npz");
    WriteFile(mFolder / "in.npz", ThreeFrames());
    for (const KArraysError& lCase : {
             KArraysError{"rotations small_01.amc --as matirx", 2, "--as: expected quat, matrix, 6d, axis-angle or euler, not matirx"},
             KArraysError{"rotations small_01.amc --space bone", 2, "--space: expected local or world, not bone"},
             KArraysError{"rotations small_01.amc --as euler --order XXY", 2,
                          "--order: expected XYZ, XYX, XZY, XZX, YZX, YZY, YXZ, YXY, ZXY, ZXZ, ZYX or ZYZ, not XXY"},
             KArraysError{"rotations small_01.amc --order ZXY", 2, "--order is for --as euler only"},
             KArraysError{"rotations small_01.amc --as quat --order XYZ", 2, "--order is for --as euler only"},
             KArraysError{"rotations small_01.amc --joints root,shni", 2, "--joints: the figure has no joint shni, did you mean shin?"},
             KArraysError{"positions small_01.amc --joints tail", 2, "--joints: the figure has no joint tail"},
             KArraysError{"positions small_01.amc --joints root,shin,root", 2, "--joints: root is given twice"},
             KArraysError{"rotations small_01.amc --wide -o x.npz", 2, "--wide is for CSV only"},
             KArraysError{"rotations small_01.amc -o x.bvh", 2,
                          "--output: rotations writes CSV, JSON, NPY and NPZ, not BVH: type -o x.csv; asf convert writes BVH"},
             KArraysError{"rotations small_01.amc -o x.txt", 2, "--output: expected .csv, .json, .npy or .npz, not x.txt"},
             KArraysError{"rotations small.asf", 2, "small.asf: error: is a skeleton, but a motion is expected"},
             KArraysError{"rotations --asf small.asf --from amc in.npz -o in.npz", 2, "in.npz: error: is also an input (in.npz)"},
             KArraysError{"convert small_01.amc -o folder.npz", 3, "folder.npz: error: cannot be written: Is a directory"},
             KArraysError{"rotations small_01.amc -o no/x.npz", 3, "no/x.npz: error: cannot be written: No such file or directory"},
             KArraysError{"convert small_01.amc --to npz -o -", 2,
                          "--output: NPZ is written to a file, not to standard output: its arrays grow side by side"},
             KArraysError{"convert small_01.amc -o x.bvh --preset motion-imitation", 2, "--preset is for NPZ only"},
             KArraysError{"convert small_01.amc -o x.npz --preset imitation", 2, "--preset: expected motion-imitation, not imitation"},
             KArraysError{"convert small_01.amc -o x.npz --preset motion-imitation --up y", 2,
                          "--preset motion-imitation is in metres and has z up; --scale changes the size"},
             KArraysError{"convert small_01.amc -o x.npz --preset motion-imitation --units cm", 2,
                          "--preset motion-imitation is in metres and has z up; --scale changes the size"},
         })
    {
        const KRunResult lResult = Call(lCase.mCall);
        EXPECT_EQ(lResult.mExit, lCase.mExit) << lCase.mCall << "\n" << lResult.mErr;
        EXPECT_NE(lResult.mErr.find(lCase.mErr), std::string::npos) << lCase.mCall << "\n" << lResult.mErr;
        EXPECT_FALSE(fs::exists(mFolder / "x.npz")) << lCase.mCall;
    }
    EXPECT_EQ(ReadFile(mFolder / "in.npz"), ThreeFrames());
}

// The thigh's limits are (-160 20), (-70 70) and none, the shin's (-10 170).
TEST_F(KArraysTest, AnglesHaveLimits)
{
    WriteFile(mFolder / "small_03.amc", ":FULLY-SPECIFIED\n:DEGREES\n1\nroot 0 0 2 0 365 0\nthigh 30 -70.5 400\nshin 170.0005\n");
    const KRunResult lLong = Call("angles -q small_03.amc --joints shin,thigh");
    EXPECT_EQ(lLong.mOut, "frame,time,bone,dof,value,min,max,outside\n"
                          "1,0.000000,shin,rx,170.00050,-10.00000,170.00000,0.00050\n"
                          "1,0.000000,thigh,rx,30.00000,-160.00000,20.00000,10.00000\n"
                          "1,0.000000,thigh,ry,-70.50000,-70.00000,70.00000,-0.50000\n"
                          "1,0.000000,thigh,rz,400.00000,-inf,inf,0.00000\n");
    EXPECT_EQ(
        Call("angles -q small_03.amc --joints root --wide --units in").mOut,
        "frame,time,root.tx,root.ty,root.tz,root.rx,root.ry,root.rz\n1,0.000000,0.000000,0.000000,4.444444,0.00000,365.00000,0.00000\n");
    EXPECT_EQ(Call("angles -q small_03.amc --joints thigh -o a.json").mExit, 0);
    const auto lTable = nlohmann::json::parse(ReadFile(mFolder / "a.json"), nullptr, false);
    EXPECT_EQ(lTable["dofs"][0],
              nlohmann::json::parse(R"({"name":"thigh.rx","bone":"thigh","dof":"rx","unit":"deg","min":-160,"max":20})"));
    EXPECT_TRUE(lTable["dofs"][2]["min"].is_null());
    EXPECT_EQ(lTable["frames"][0]["outside"], nlohmann::json::parse("[0,1]"));
    EXPECT_NE(Call("angles small_03.amc -o a.npz").mErr.find("asf: wrote a.npz: 10 degrees of freedom, 1 frame, 120 a second\n"),
              std::string::npos);
}

TEST_F(KArraysTest, AnglesNeedDegreesOfFreedom)
{
    EXPECT_EQ(Convert("small_01.amc -o small.glb").mExit, 0);
    const KRunResult lGltf = Call("angles small.glb -o a.csv");
    EXPECT_EQ(lGltf.mExit, 1);
    EXPECT_EQ(lGltf.mErr, "small.glb: error: has rotations, not degrees of freedom: asf rotations --as euler writes angles\n");
    EXPECT_FALSE(fs::exists(mFolder / "a.csv"));
    const KRunResult lHip = Call("angles -q small_01.amc --joints hip");
    EXPECT_EQ(lHip.mExit, 2);
    EXPECT_EQ(lHip.mErr, "small_01.amc: error: has no degrees of freedom at these joints\n");
    EXPECT_EQ(Convert("small.glb -o g.npz").mExit, 0) << "its arrays of degrees of freedom are empty";
    EXPECT_EQ(Convert("small.asf -o rest.npz").mExit, 0) << "one frame at rest";
}

TEST_F(KArraysTest, APipeTakesNoArchive)
{
    const KRunResult lResult =
        RunShell("mkfifo p.npz; cat p.npz > got & \"$ASF\" rotations -q small_01.amc -o p.npz; echo $?; wait", mOptions);
    EXPECT_EQ(lResult.mOut, "2\n") << lResult.mErr;
    EXPECT_EQ(lResult.mErr, "asf: error: --output: NPZ is written to a file, not to p.npz: its arrays grow side by side\n");
    EXPECT_EQ(ReadFile(mFolder / "got"), "");
}

TEST_F(KArraysTest, AClosedPipeIsQuiet)
{
    for (const char* lCommand : {"positions", "rotations", "angles"})
    {
        const KRunResult lResult =
            RunShell("{ \"$ASF\" " + std::string(lCommand) + " -q walk.amc; echo $? > status; } | head -n 1", mOptions);
        EXPECT_EQ(lResult.mErr, "");
        EXPECT_EQ(lResult.mOut.substr(0, 16), "frame,time,bone,");
        EXPECT_EQ(ReadFile(mFolder / "status"), "0\n");
    }
}

TEST_F(KArraysTest, ReportsWhatItWrote)
{
    EXPECT_EQ(Call("rotations walk.amc --joints left_foot -o one.npz").mErr.find("error"), std::string::npos);
    EXPECT_NE(Call("rotations walk.amc -o r.npy").mErr.find("asf: wrote r.npy: 28 joints, 241 frames, 120 a second\n"), std::string::npos);
    EXPECT_TRUE(fs::exists(mFolder / "r.names.txt"));
    EXPECT_NE(Call("convert walk.amc -o w.npz").mErr.find("asf: wrote w.npz: 28 joints, 241 frames, 120 a second\n"), std::string::npos);
}

TEST_F(KArraysTest, EachTakeHasItsArchive)
{
    WriteFile(mFolder / "small_02.amc", ThreeFrames());
    const KRunResult lResult = Convert("small.asf small_01.amc small_02.amc -o {name}.npz -o all.glb");
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_TRUE(fs::exists(mFolder / "small_01.npz") && fs::exists(mFolder / "small_02.npz"));
    EXPECT_EQ(ReadFile(mFolder / "small_01.npz"), ReadFile(mFolder / "small_02.npz")) << "the same motion, the same bytes";
}

TEST_F(KArraysTest, ThreadsDoNotChangeTheBytes)
{
    for (const char* lPreset : {"", "--preset motion-imitation"})
    {
        EXPECT_EQ(Convert(std::string("walk.amc -o one.npz --threads 1 ") + lPreset).mExit, 0);
        EXPECT_EQ(Convert(std::string("walk.amc -o many.npz --threads 4 ") + lPreset).mExit, 0);
        EXPECT_TRUE(ReadFile(mFolder / "one.npz") == ReadFile(mFolder / "many.npz")) << lPreset;
    }
}

} // namespace
