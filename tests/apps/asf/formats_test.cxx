#include <tests/apps/asf/runasf.h>

#include <cmath>
#include <sstream>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

/// The samples' walk in every format, in one folder: walk.amc with walker.asf, walk.bvh, walk.glb, walk.gltf.
class KFormatsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        mOptions.mFolder = mFolder.Path().string();
        fs::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        fs::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        ASSERT_EQ(Run("convert -q walk.amc -o walk.bvh -o walk.glb").mExit, 0);
        ASSERT_EQ(Run("convert -q walk.amc -o walk.gltf").mExit, 0);
    }

    KRunResult Run(const std::string& pCall) { return RunAsf(WordsOf(pCall), mOptions); }

    /// Runs without errors and messages. \return standard output
    std::string Output(const std::string& pCall)
    {
        const KRunResult lResult = Run(pCall);
        EXPECT_EQ(lResult.mExit, 0) << pCall << ": " << lResult.mErr;
        EXPECT_EQ(lResult.mErr, "") << pCall;
        return lResult.mOut;
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

/// The largest difference of two tables of numbers; infinite if a word that is no number differs.
double LargestDifference(const std::string& pOne, const std::string& pOther)
{
    std::istringstream lOne(ReplacedAll(pOne, ",", " "));
    std::istringstream lOther(ReplacedAll(pOther, ",", " "));
    std::string        lWords[2];
    double             lLargest = 0;
    while (true)
    {
        const bool lGot[2] = {static_cast<bool>(lOne >> lWords[0]), static_cast<bool>(lOther >> lWords[1])};
        if (!lGot[0] || !lGot[1])
        {
            return lGot[0] == lGot[1] ? lLargest : INFINITY;
        }
        char*        lEnd = nullptr;
        const double lValue = std::strtod(lWords[0].c_str(), &lEnd);
        if (*lEnd != '\0')
        {
            lLargest = lWords[0] == lWords[1] ? lLargest : INFINITY;
            continue;
        }
        lLargest = std::max(lLargest, std::fabs(lValue - std::strtod(lWords[1].c_str(), nullptr)));
    }
}

const char* const kOwnFormats[] = {"walk.bvh", "walk.glb", "walk.gltf"};

TEST_F(KFormatsTest, PositionsAreThoseOfTheAcclaimFiles)
{
    for (const char* lOptions : {"--frames 1,60,last --ends", "--frames 1-last:40 --wide"})
    {
        const std::string lAcclaim = Output(std::string("positions -q walk.amc ") + lOptions);
        EXPECT_GT(lAcclaim.size(), 1000u);
        for (const char* lName : kOwnFormats)
        {
            EXPECT_LT(LargestDifference(lAcclaim, Output(std::string("positions ") + lName + " " + lOptions)), 2e-3) << lName;
        }
    }
    Output("positions walk.glb --frames last -q -o a.json");
    const json lJson = json::parse(ReadFile(mFolder / "a.json"));
    EXPECT_EQ(lJson["skeleton"], "walk.glb");
    EXPECT_EQ(lJson["motion"], "walk.glb");
    EXPECT_EQ(lJson["frames"][0]["frame"], 241);
}

TEST_F(KFormatsTest, InfoOfAFigureWithItsMotion)
{
    for (const char* lName : kOwnFormats)
    {
        const std::string lText = Output(std::string("info ") + lName);
        EXPECT_EQ(lText.find(std::string(lName) + ": a figure in "), 0u) << lText;
        EXPECT_NE(lText.find("  joints  28, 7 ends, 9 levels deep\n  height  166.9 cm at rest"), std::string::npos) << lText;
        EXPECT_NE(lText.find("walk: 241 frames (1 to 241), 120 a second, 2.000 s\n          22 joints move; root 257.8 cm"),
                  std::string::npos)
            << lText;
        EXPECT_NE(lText.find("          left_foot                    41.600  rotation"), std::string::npos) << lText;
        EXPECT_EQ(lText.find("rx(-5 150)") != std::string::npos, std::string(lName) != "walk.bvh") << "limits, where the format has them";

        const json lJson = JsonOf(Run(std::string("info --json ") + lName));
        EXPECT_EQ(lJson["kind"], "figure");
        EXPECT_EQ(lJson["ok"], true);
        const json& lFigure = lJson["figure"];
        EXPECT_EQ(lFigure["format"], std::string(lName) == "walk.bvh" ? "BVH" : "glTF");
        EXPECT_EQ(lFigure["jointCount"], 28);
        EXPECT_EQ(lFigure["endCount"], 7);
        EXPECT_NEAR(lFigure["height"], 166.88, 0.01);
        ASSERT_EQ(lFigure["takes"].size(), 1u);
        const json& lTake = lFigure["takes"][0];
        EXPECT_EQ(lTake["frameCount"], 241);
        EXPECT_EQ(lTake["firstFrame"], 1);
        EXPECT_EQ(lTake["lastFrame"], 241);
        EXPECT_NEAR(lTake["framesPerSecond"], 120, 1e-9);
        EXPECT_NEAR(lTake["seconds"], 2, 1e-9);
        EXPECT_EQ(lTake["jointsMoved"], 22);
        ASSERT_EQ(lFigure["joints"].size(), 35u);
        EXPECT_EQ(lFigure["joints"][0]["moves"], json({"translation", "rotation"}));
        EXPECT_TRUE(lFigure["joints"][0]["parent"].is_null());
        EXPECT_EQ(lFigure["joints"][6]["name"], "left_toes_End");
        EXPECT_EQ(lFigure["joints"][6]["isEnd"], true);
        EXPECT_EQ(lFigure["joints"][6]["parent"], 5);
        EXPECT_NEAR(lFigure["joints"][6]["length"], 6.4, 1e-3);
        EXPECT_EQ(lFigure["joints"][6]["moves"], json::array());
    }
}

TEST_F(KFormatsTest, DrawCheckAndDiffReadEveryFormat)
{
    for (const char* lName : kOwnFormats)
    {
        const std::string lSvg = Output(std::string("draw -o - --frames 1,last --view side ") + lName);
        EXPECT_NE(lSvg.find(">frame 241, 2.00 s</text>"), std::string::npos) << lName;
        EXPECT_NE(lSvg.find("241 frames, 120 a second"), std::string::npos) << lName;
        const std::string lTrail = Output(std::string("draw -o - --trail left_foot ") + lName);
        EXPECT_NE(lTrail.find("<title>left_foot</title></path>"), std::string::npos) << lName;
        EXPECT_EQ(Output(std::string("check --strict ") + lName), "1 file, 0 errors, 0 warnings\n");
        EXPECT_NE(Output(std::string("diff -q walk.amc ") + lName).find("same within tolerance"), std::string::npos) << lName;
    }
}

TEST_F(KFormatsTest, StandardInputAndAGivenFormat)
{
    mOptions.mInput = ReadFile(mFolder / "walk.glb");
    EXPECT_EQ(Output("info -").find("<stdin>: a figure in glTF\n"), 0u);
    EXPECT_EQ(LargestDifference(Output("positions walk.glb --frames 7"), Output("positions - --frames 7")), 0);
    mOptions.mInput = "\n" + ReadFile(mFolder / "walk.bvh");
    for (const char* lCall : {"info --from bvh -", "check --from bvh -", "positions --from bvh -", "draw --from bvh - -o a.svg"})
    {
        EXPECT_EQ(Run(lCall).mExit, 0) << lCall;
    }
    EXPECT_EQ(Run("info --from asf walk.bvh").mExit, 1) << "read as ASF, it has no root";
    EXPECT_EQ(Run("info --from fbx walk.bvh").mExit, 2);
}

TEST_F(KFormatsTest, WithoutMotionThereIsTheRestPose)
{
    ASSERT_EQ(Run("convert -q walker.asf -o rest.glb").mExit, 0);
    EXPECT_NE(Output("info rest.glb").find("  take    none\n"), std::string::npos);
    EXPECT_EQ(JsonOf(Run("info --json rest.glb"))["figure"]["takes"], json::array());
    EXPECT_NE(Output("draw rest.glb -o -").find("35 joints at rest"), std::string::npos);
    EXPECT_EQ(Run("draw rest.glb -o - --frames 1").mErr, "asf: error: --frames, --fps and --trail need a motion\n");
    const KRunResult lPositions = Run("positions rest.glb");
    EXPECT_EQ(lPositions.mExit, 1);
    EXPECT_EQ(lPositions.mErr, "rest.glb: error: has no motion\n");
    EXPECT_EQ(lPositions.mOut, "");
}

TEST_F(KFormatsTest, OneOfSeveralTakes)
{
    fs::copy_file(mFolder / "walk.amc", mFolder / "stroll.amc");
    ASSERT_EQ(Run("convert -q walker.asf walk.amc stroll.amc -o both.glb").mExit, 0);
    EXPECT_EQ(JsonOf(Run("info --json both.glb"))["figure"]["takes"].size(), 2u);
    const KRunResult lFirst = Run("positions both.glb --frames 1");
    EXPECT_EQ(lFirst.mErr, "both.glb: note: has 2 takes, using walk; choose another with --take NAME\n");
    EXPECT_EQ(Output("positions both.glb --frames 1 --take stroll"), lFirst.mOut);
    EXPECT_NE(Output("draw both.glb -o - --take stroll"), "");
    const KRunResult lNone = Run("positions both.glb --take run");
    EXPECT_EQ(lNone.mExit, 2);
    EXPECT_EQ(lNone.mErr, "asf: error: --take: there is no take run; there are walk, stroll\n");
    EXPECT_EQ(Run("positions walk.amc stroll.amc").mErr.substr(Run("positions walk.amc stroll.amc").mErr.rfind("asf: error:")),
              "asf: error: expected one motion, not walk.amc and stroll.amc\n");
}

TEST_F(KFormatsTest, CheckReportsWhatTheReaderAndTheFigureShow)
{
    const std::string lBvh = ReadFile(mFolder / "walk.bvh");
    WriteFile(mFolder / "cut.bvh", lBvh.substr(0, lBvh.find("CHANNELS")));
    const KRunResult lCut = Run("check cut.bvh walk.bvh");
    EXPECT_EQ(lCut.mExit, 1);
    EXPECT_EQ(lCut.mErr.find("cut.bvh:"), 0u) << lCut.mErr;
    EXPECT_NE(lCut.mErr.find(": error: "), std::string::npos) << lCut.mErr;
    EXPECT_EQ(lCut.mOut, "2 files, 1 error, 0 warnings\n");
    const json lJson = JsonOf(Run("info --json cut.bvh"));
    EXPECT_EQ(lJson["ok"], false);
    EXPECT_EQ(lJson["errors"], 1);
    EXPECT_TRUE(lJson["figure"].is_null());

    WriteFile(mFolder / "twice.bvh", Replaced(lBvh, "JOINT right_hip", "JOINT left_hip"));
    const KRunResult lTwice = Run("check twice.bvh");
    EXPECT_EQ(lTwice.mErr, "twice.bvh: warning: Joint name is used more than once (left_hip)\n");
    EXPECT_EQ(Run("check --strict twice.bvh").mExit, 1);

    WriteFile(mFolder / "still.bvh", "HIERARCHY\nROOT a\n{\nOFFSET 0 0 0\nCHANNELS 3 Zrotation Xrotation Yrotation\nEnd Site\n{\nOFFSET "
                                     "0 0 0\n}\n}\nMOTION\nFrames: 2\nFrame Time: 0.1\n5 0 0\n5 0 0\n");
    EXPECT_EQ(Run("check still.bvh").mErr, "still.bvh: warning: All joints are at the same position at rest\n"
                                           "still.bvh: warning: No joint moves in the take (still)\n");
}

/// The example of `check --help`, with skeleton and motion in different folders.
TEST_F(KFormatsTest, CheckAndInfoPairWhatIsGiven)
{
    fs::create_directories(mFolder / "takes");
    fs::rename(mFolder / "walk.amc", mFolder / "takes/walk.amc");
    EXPECT_EQ(Run("check takes/walk.amc").mExit, 2) << "no skeleton there";
    EXPECT_EQ(Output("check walker.asf takes/walk.amc"), "2 files, 0 errors, 0 warnings\n");
    EXPECT_EQ(Output("check takes/walk.amc walker.asf walk.bvh"), "3 files, 0 errors, 0 warnings\n");
    EXPECT_NE(Output("info takes/walk.amc walker.asf").find("takes/walk.amc: motion of walker.asf\n"), std::string::npos);

    // Of several skeletons, the one whose name fits.
    fs::create_directories(mFolder / "more");
    WriteFile(mFolder / "more/small.asf", SmallSkeleton());
    WriteFile(mFolder / "takes/small_01.amc", ":DEGREES\n1\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n");
    const KRunResult lBoth = Run("check walker.asf more/small.asf takes/small_01.amc takes/walk.amc");
    EXPECT_EQ(lBoth.mExit, 0) << lBoth.mErr;
    EXPECT_NE(lBoth.mErr.find("takes/small_01.amc: note: using skeleton more/small.asf (its name is a prefix of the motion's)\n"),
              std::string::npos)
        << lBoth.mErr;
    EXPECT_NE(lBoth.mErr.find("takes/walk.amc: note: using skeleton walker.asf (named in the header)\n"), std::string::npos) << lBoth.mErr;

    // --asf still comes first.
    EXPECT_NE(Run("info -q takes/walk.amc more/small.asf --asf walker.asf").mOut.find("motion of walker.asf"), std::string::npos);
}

} // namespace
