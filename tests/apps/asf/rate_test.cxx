#include <tests/apps/asf/runasf.h>

#include <sstream>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

/// A motion of the small skeleton at 120 frames a second, which no file says: frames 11 to 31, the root one unit further along z in each.
class KRateTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n";
        for (int lFrame = 11; lFrame <= 31; ++lFrame)
        {
            lMotion += std::to_string(lFrame) + "\nroot 0 0 " + std::to_string(lFrame - 11) + " 0 0 0\nthigh 0 0 0\nshin 0\n";
        }
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "small_01.amc", lMotion);
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::string& pCall) { return RunAsf(WordsOf(pCall), mOptions); }

    /// "frame,time,z of the root" of every row of `asf positions`.
    std::string Rows(const std::string& pCall)
    {
        const KRunResult lResult = Run("positions --wide -q " + pCall);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        std::istringstream lLines(lResult.mOut);
        std::string        lLine;
        std::string        lRows;
        std::getline(lLines, lLine);
        while (std::getline(lLines, lLine))
        {
            std::istringstream       lLineText(lLine);
            std::vector<std::string> lFields;
            for (std::string lField; std::getline(lLineText, lField, ',');)
            {
                lFields.push_back(lField);
            }
            lRows += lFields[0] + "," + lFields[1] + "," + lFields[4].substr(0, lFields[4].size() - 3) +
                     "\n"; // Single precision rounds the last digits.
        }
        return lRows;
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

// One unit is 2.54 / 0.45 = 5.64444 cm.
TEST_F(KRateTest, PositionsAreResampled)
{
    EXPECT_EQ(Rows("small_01.amc --fps 12"), "11,0.000000,0.00\n21,0.083333,56.44\n31,0.166667,112.88\n");
    EXPECT_EQ(Rows("small_01.amc --fps 240 --frames 30-last"), "30,0.158333,107.24\n30.500,0.162500,110.06\n31,0.166667,112.88\n");
    EXPECT_EQ(Rows("small_01.amc --source-fps 60 --fps 12"),
              "11,0.000000,0.00\n16,0.083333,28.22\n21,0.166667,56.44\n26,0.250000,84.66\n31,0.333333,112.88\n");
    ASSERT_EQ(Run("positions -q small_01.amc --fps 12 -o a.json").mExit, 0);
    const json lTable = json::parse(ReadFile(mFolder / "a.json"));
    EXPECT_EQ(lTable["framesPerSecond"], 12);
    EXPECT_EQ(lTable["frames"].size(), 3u);
    EXPECT_EQ(lTable["frames"][1]["frame"], 21);
    ASSERT_EQ(Run("positions -q small_01.amc --fps 12 -o a.npy").mExit, 0);
    EXPECT_NE(ReadFile(mFolder / "a.npy").find("(3, 4, 3)"), std::string::npos);
    EXPECT_EQ(Run("positions -q small_01.amc --fps 12 --frames 11-31:2").mErr,
              "asf: error: --frames: expected one range without a step, such as 100-200, because of --fps\n");
}

TEST_F(KRateTest, EveryFormatIsResampledAlike)
{
    ASSERT_EQ(Run("convert -q small_01.amc -o a.bvh -o a.glb").mExit, 0);
    // In files without numbers, the first frame is 1.
    const std::string lExpected = "1,0.000000,0.00\n11,0.083333,56.44\n21,0.166667,112.88\n";
    EXPECT_EQ(Rows("a.bvh --fps 12"), lExpected);
    EXPECT_EQ(Rows("a.glb --fps 12"), lExpected);
    EXPECT_EQ(Rows("a.glb --fps 60 --frames 20-21"), "20,0.158333,107.24\n");
}

TEST_F(KRateTest, APictureHasPosesAtTheRate)
{
    const auto lPoses = [this](const std::string& pCall)
    {
        const KRunResult lResult = Run("draw -q small_01.amc -o - " + pCall);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        std::string lNumbers;
        for (size_t lAt = lResult.mOut.find(">frame "); lAt != std::string::npos; lAt = lResult.mOut.find(">frame ", lAt + 1))
        {
            lNumbers += lResult.mOut.substr(lAt + 7, lResult.mOut.find(',', lAt) - lAt - 7) + " ";
        }
        return lNumbers;
    };
    EXPECT_EQ(lPoses("--fps 12"), "11 21 31 ");
    EXPECT_EQ(lPoses("--fps 12 --frames 12-30"), "12 22 ");
    EXPECT_EQ(lPoses("--fps 50"), "11 13 16 18 21 23 25 28 30 ");
    EXPECT_EQ(lPoses("--fps 1000 --frames 29-31"), "29 30 31 ");
}

TEST_F(KRateTest, CommandsWithoutARateRefuseIt)
{
    for (const char* lCall : {"info small_01.amc", "check small_01.amc", "diff small_01.amc small_01.amc"})
    {
        const KRunResult lResult = Run(std::string(lCall) + " --fps 30");
        EXPECT_EQ(lResult.mExit, 2) << lCall;
        EXPECT_EQ(lResult.mErr, "asf: error: --fps is the rate of the output, and this command writes no motion; for an AMC file that does "
                                "not say its rate, type --source-fps 30\n");
        EXPECT_EQ(Run(std::string(lCall) + " -q --source-fps 30").mExit, 0) << lCall;
    }
}

TEST_F(KRateTest, NotesSayWhichRateIsMeant)
{
    const std::string lNote = "small_01.amc: note: --fps is the rate of the output; if it was meant for this file, type --source-fps 30\n";
    EXPECT_NE(Run("positions small_01.amc --fps 30").mErr.find(lNote), std::string::npos);
    EXPECT_NE(Run("draw small_01.amc --fps 30 -o a.svg").mErr.find(lNote), std::string::npos);
    EXPECT_EQ(Run("positions small_01.amc --fps 30 --source-fps 60").mErr.find(lNote), std::string::npos);
    ASSERT_EQ(Run("convert -q small_01.amc -o a.bvh").mExit, 0);
    EXPECT_EQ(Run("positions a.bvh --source-fps 30").mErr, "a.bvh: note: --source-fps is for AMC files, and is not used here\n");
}

/// The numbers of --start and --end are those of --frames.
TEST_F(KRateTest, PartsAreCountedInTheFilesNumbers)
{
    ASSERT_EQ(Run("convert -q small_01.amc -o part.bvh --start 12f --end 14f").mExit, 0);
    EXPECT_EQ(Rows("part.bvh"), "1,0.000000,5.64\n2,0.008333,11.28\n3,0.016667,16.93\n");
    const KRunResult lOutside = Run("convert small_01.amc -q -o no.bvh --start 0f");
    EXPECT_EQ(lOutside.mExit, 2);
    EXPECT_EQ(lOutside.mErr, "asf: error: --start 0f is outside small_01, which has frames 11 to 31 (0 to 0.166667 seconds)\n");
    EXPECT_FALSE(fs::exists(mFolder / "no.bvh"));
    ASSERT_EQ(Run("convert -q small_01.amc -o a.glb").mExit, 0);
    ASSERT_EQ(Run("convert -q a.glb -o part.bvh --start 2f --end 20f --fps 20").mExit, 0);
    EXPECT_EQ(Rows("part.bvh"), "1,0.000000,5.64\n2,0.050000,39.51\n3,0.100000,73.37\n4,0.150000,107.24\n");
}

} // namespace
