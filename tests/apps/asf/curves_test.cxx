#include <tests/apps/asf/runasf.h>
#include <tests/qexfigure/picture/chartsvg.h>

#include <cmath>
#include <sstream>

using namespace qextest;

namespace
{

class KCurvesTest : public testing::Test
{
protected:
    KCurvesTest()
    {
        mOptions.mFolder = mFolder.Path().string();
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 50\n";
        for (int lFrame = 1; lFrame <= 40; ++lFrame)
        {
            lMotion += std::to_string(lFrame) + "\nroot 0 0 0 0 " + std::to_string(20 * lFrame) + " 0\nthigh " + std::to_string(lFrame) +
                       " 0 0\nshin 10\n";
        }
        WriteFile(mFolder / "small_01.amc", lMotion);
    }

    KRunResult Draw(std::vector<std::string> pArguments)
    {
        pArguments.insert(pArguments.begin(), {"draw", "small.asf", "small_01.amc"});
        return RunAsf(pArguments, mOptions);
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KCurvesTest, EveryValueOfTheFile)
{
    const KRunResult lResult = Draw({"-o", "-", "--curves", "root,thigh"});
    EXPECT_EQ(lResult.mErr, "");
    const auto lPanels = ParseChart(lResult.mOut);
    ASSERT_EQ(lPanels.size(), 2u);
    ASSERT_EQ(lPanels[0].mLines.size(), 3u);
    ASSERT_EQ(lPanels[0].mLines[1].size(), 40u);
    for (size_t lFrame = 0; lFrame < 40; ++lFrame)
    {
        // Up to two turns.
        EXPECT_NEAR(lPanels[0].mLines[1][lFrame].second, 20 * static_cast<double>(lFrame + 1), 0.1);
        EXPECT_NEAR(lPanels[0].mLines[1][lFrame].first, static_cast<double>(lFrame) / 50, 1e-3);
        EXPECT_NEAR(lPanels[1].mLines[0][lFrame].second, static_cast<double>(lFrame + 1), 0.02);
    }
}

TEST_F(KCurvesTest, MarksAgreeWithTheCheck)
{
    WriteFile(mFolder / "small.asf", Replaced(SmallSkeleton(), "(-160 20)", "(-5 25.5)"));
    const KRunResult lCheck = RunAsf({"check", "small_01.amc", "-q"}, mOptions);
    EXPECT_NE(lCheck.mErr.find("rx is outside its limits (-5 25.5) in 15 frames, first in frame 26"), std::string::npos) << lCheck.mErr;
    const KRunResult lResult = Draw({"-o", "-", "--curves", "thigh"});
    EXPECT_NE(lResult.mOut.find("limits -5 to 25.5\xC2\xB0; passed in 15 of 40 frames, first in 26<"), std::string::npos);
    const KChartPanelSvg lPanel = ParseChart(lResult.mOut).at(0);
    ASSERT_EQ(lPanel.mBands.size(), 2u);
    EXPECT_NEAR(lPanel.mBands[0][0].second, 25.5, 0.02);
    ASSERT_EQ(lPanel.mOutside.size(), 1u);
    EXPECT_NEAR(lPanel.mOutside[0].front().second, 25.5, 0.02);
    EXPECT_NEAR(lPanel.mOutside[0].back().second, 40, 0.02);
    ASSERT_EQ(lPanel.mMarks.size(), 1u);
    EXPECT_NEAR(lPanel.mTime.ValueAt(lPanel.mMarks[0].first), 39.0 / 50, 1e-3);
}

TEST_F(KCurvesTest, FramesChooseAPart)
{
    const KRunResult lResult = Draw({"-o", "-", "--curves", "thigh", "--frames", "10-20"});
    EXPECT_EQ(lResult.mErr, "");
    const KChartPanelSvg lPanel = ParseChart(lResult.mOut).at(0);
    ASSERT_EQ(lPanel.mLines.at(0).size(), 11u);
    EXPECT_NEAR(lPanel.mLines[0][0].first, 9.0 / 50, 1e-3);
    EXPECT_NEAR(lPanel.mLines[0][10].second, 20, 0.02);
    EXPECT_NE(lResult.mOut.find(">40 frames, 50 a second; frames 10 to 20<"), std::string::npos);
}

TEST_F(KCurvesTest, LocalAnglesOfOtherFormats)
{
    ASSERT_EQ(RunAsf({"convert", "small.asf", "small_01.amc", "-o", "small.bvh", "-q"}, mOptions).mExit, 0);
    const KRunResult lResult = RunAsf({"draw", "small.bvh", "-o", "-", "--curves", "thigh"}, mOptions);
    EXPECT_EQ(lResult.mErr, "");
    const KChartPanelSvg lPanel = ParseChart(lResult.mOut).at(0);
    ASSERT_EQ(lPanel.mLines.size(), 3u);
    ASSERT_EQ(lPanel.mLines[0].size(), 40u);
    EXPECT_NEAR(lPanel.mLines[0][29].second, 30, 0.02);
    EXPECT_TRUE(lPanel.mBands.empty());
    const KRunResult lUnknown = RunAsf({"draw", "small.bvh", "-o", "-", "--curves", "thihg"}, mOptions);
    EXPECT_EQ(lUnknown.mExit, 2);
    EXPECT_EQ(lUnknown.mErr, "asf: error: --curves: the figure has no joint thihg, did you mean thigh?\n");
}

TEST_F(KCurvesTest, UsageErrors)
{
    const std::string lNoPoses = "--curves draws no poses: it is used without --view, --names, --trail and --fps";
    const std::vector<std::pair<std::vector<std::string>, std::string>> lCases{
        {{"--curves", "thgih"}, "--curves: the figure has no joint thgih, did you mean thigh?"},
        {{"--curves", "thigh,tail"}, "--curves: the figure has no joint tail"},
        {{"--curves", "hip"}, "--curves: the joint hip has no rotations"},
        {{"--curves", "thigh", "--names"}, lNoPoses},
        {{"--curves", "thigh", "--view", "front"}, lNoPoses},
        {{"--curves", "thigh", "--trail", "thigh"}, lNoPoses},
        {{"--curves", "thigh", "--fps", "10"}, lNoPoses},
        {{"--curves", "thigh", "--frames", "1-9:2"}, "--frames: expected one range without a step, such as 100-200, because of --curves"}};
    for (const auto& [lArguments, lText] : lCases)
    {
        std::vector<std::string> lAll{"-o", "a.svg"};
        lAll.insert(lAll.end(), lArguments.begin(), lArguments.end());
        const KRunResult lResult = Draw(lAll);
        EXPECT_EQ(lResult.mExit, 2) << lText;
        EXPECT_EQ(lResult.mErr, "asf: error: " + lText + "\n");
        EXPECT_FALSE(std::filesystem::exists(mFolder / "a.svg"));
    }
    const KRunResult lRest = RunAsf({"draw", "small.asf", "-o", "a.svg", "--curves", "thigh"}, mOptions);
    EXPECT_EQ(lRest.mErr, "small.asf: error: is a skeleton, but a motion is expected\n");
}

TEST_F(KCurvesTest, NamesAreEscapedAndLargeValuesRefused)
{
    WriteFile(mFolder / "small.asf", ReplacedAll(SmallSkeleton(), "thigh", "a<b&c"));
    WriteFile(mFolder / "small_01.amc", ReplacedAll(ReadFile(mFolder / "small_01.amc"), "thigh", "a<b&c"));
    EXPECT_NE(Draw({"-o", "-", "--curves", "a<b&c"}).mOut.find(">a&lt;b&amp;c<"), std::string::npos);
    WriteFile(mFolder / "small_01.amc", Replaced(ReadFile(mFolder / "small_01.amc"), "shin 10", "shin 1e30"));
    const KRunResult lResult = Draw({"-o", "-", "--curves", "shin"});
    EXPECT_EQ(lResult.mExit, 1);
    EXPECT_EQ(lResult.mErr, "small_01.amc: error: cannot be drawn: values are too large\n");
    EXPECT_EQ(lResult.mOut, "");
}

} // namespace
