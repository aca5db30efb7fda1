#include <tests/apps/asf/picture/slide.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <regex>
#include <sstream>
#include <utility>

using namespace qextest;

namespace
{

std::string Draw(std::vector<std::string> pArguments, const std::string& pInput)
{
    KRunOptions lOptions;
    lOptions.mInput = pInput;
    pArguments.insert(pArguments.begin(), {"draw", "-", "-o", "-"});
    const KRunResult lResult = RunAsf(pArguments, lOptions);
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(lResult.mErr, "");
    return lResult.mOut;
}

size_t CountOf(const std::string& pText, const std::string& pPart)
{
    size_t lCount = 0;
    for (size_t lPosition = pText.find(pPart); lPosition != std::string::npos; lPosition = pText.find(pPart, lPosition + 1))
    {
        ++lCount;
    }
    return lCount;
}

TEST(AsfDraw, SampleMatchesTheGoldenFile)
{
    const std::string lSvg = RunAsf({"draw", Sample("walker.asf"), "-o", "-", "--view", "all"}).mOut;
    EXPECT_TRUE(lSvg == ReadFile(std::filesystem::path(QEX_SOURCE_DIR) / "tests/apps/asf/golden/walker.svg"));
}

TEST(AsfDraw, EveryBoneOncePerView)
{
    for (const auto& [lView, lCount] : {std::pair<const char*, size_t>{"front", 1}, {"side", 1}, {"top", 1}, {"all", 3}})
    {
        const std::string lSvg = Draw({"--view", lView}, SmallSkeleton());
        EXPECT_EQ(CountOf(lSvg, "<circle "), 4 * lCount);
        EXPECT_EQ(CountOf(lSvg, "<title>thigh</title>"), lCount);
        EXPECT_EQ(CountOf(lSvg, " cm</text>"), 1u);
        EXPECT_EQ(CountOf(lSvg, "</svg>\n"), 1u);
    }
}

TEST(AsfDraw, NamesOnRequest)
{
    EXPECT_EQ(CountOf(Draw({}, SmallSkeleton()), ">thigh</text>"), 0u);
    EXPECT_EQ(CountOf(Draw({"--names"}, SmallSkeleton()), ">thigh</text>"), 1u);
}

TEST(AsfDraw, NamesAreEscaped)
{
    const std::string lSvg =
        Draw({"--names"}, Replaced(Replaced(SmallSkeleton(), "name shin", "name a<&>\xff"), "thigh shin", "thigh a<&>\xff"));
    EXPECT_EQ(CountOf(lSvg, ">a&lt;&amp;&gt;\xef\xbf\xbd</text>"), 1u);
}

TEST(AsfDraw, TheRootPositionDoesNotChangeThePicture)
{
    const std::string lSvg = Draw({}, SmallSkeleton());
    EXPECT_EQ(lSvg, Draw({}, Replaced(SmallSkeleton(), "position 0 0 0", "position 10 20 30")));
}

TEST(AsfDraw, ARootAloneIsDrawn)
{
    const std::string lSvg = Draw({"--view", "all", "--names"}, ":root\n order rx\n:hierarchy\n");
    EXPECT_EQ(CountOf(lSvg, "<circle "), 3u);
    EXPECT_EQ(lSvg.find("nan"), std::string::npos);
    EXPECT_EQ(lSvg.find("inf"), std::string::npos);
}

TEST(AsfDraw, LargeCoordinatesAreRefused)
{
    KRunOptions lOptions;
    for (const char* lLength : {"length 1e30", "length 1.7e308"})
    {
        lOptions.mInput = Replaced(SmallSkeleton(), "length 7", lLength);
        const KRunResult lResult = RunAsf({"draw", "-", "-o", "-"}, lOptions);
        EXPECT_EQ(lResult.mExit, 1);
        EXPECT_EQ(lResult.mOut, "");
        EXPECT_EQ(lResult.mErr, "<stdin>: error: cannot be drawn: coordinates are too large\n");
    }
}

/// Where the picture's labels point to: pixels of the front view, by name. Fails for a name that appears twice.
std::map<std::string, std::pair<double, double>> LabelPoints(const std::string& pSvg)
{
    std::map<std::string, std::pair<double, double>> lPoints;
    const std::regex     lLabel(R"re(class="leader" d="M[-\d. ]+L([-\d.]+) ([-\d.]+)"/>\n<text [^>]*class="label"[^>]*>([^<]*)<)re");
    std::sregex_iterator lMatch(pSvg.begin(), pSvg.end(), lLabel);
    for (; lMatch != std::sregex_iterator(); ++lMatch)
    {
        const auto& lMatched = *lMatch;
        EXPECT_TRUE(lPoints.emplace(lMatched[3], std::make_pair(std::stod(lMatched[1]), std::stod(lMatched[2]))).second) << lMatched[3];
    }
    return lPoints;
}

/// Pixels per centimetre, from the scale bar.
double ScaleOf(const std::string& pSvg)
{
    std::smatch lBar;
    EXPECT_TRUE(std::regex_search(pSvg, lBar, std::regex(R"re(class="bar" d="M28 [^H]*H([\d.]+)m[^>]*>\n<text[^>]*>([\d.]+) cm)re")));
    return lBar.empty() ? 0 : (std::stod(lBar[1]) - 28) / std::stod(lBar[2]);
}

TEST(AsfDraw, LabelsOfAMotionPointToTheJointsOfTheirNames)
{
    const std::string lSvg = RunAsf({"draw", Sample("walk.amc"), "-q", "-o", "-", "--frames", "61", "--names"}).mOut;
    std::map<std::string, std::pair<double, double>> lJoints;
    std::istringstream                               lRows(RunAsf({"positions", Sample("walk.amc"), "-q", "--frames", "61"}).mOut);
    std::string                                      lRow;
    std::getline(lRows, lRow); // The header.
    while (std::getline(lRows, lRow))
    {
        std::smatch lField;
        ASSERT_TRUE(std::regex_match(lRow, lField, std::regex("61,[^,]*,([^,]*),([^,]*),([^,]*),[^,]*")));
        lJoints[lField[1]] = {std::stod(lField[2]), std::stod(lField[3])};
    }
    const auto   lLabels = LabelPoints(lSvg);
    const double lScale = ScaleOf(lSvg);
    ASSERT_EQ(lLabels.size(), lJoints.size());
    ASSERT_EQ(lLabels.count("root"), 1u);
    const auto& lRoot = lLabels.at("root");
    for (const auto& lJoint : lJoints)
    {
        ASSERT_EQ(lLabels.count(lJoint.first), 1u) << lJoint.first;
        const auto&  lLabel = lLabels.at(lJoint.first);
        const double lX = lRoot.first + lScale * (lJoint.second.first - lJoints["root"].first);
        const double lY = lRoot.second - lScale * (lJoint.second.second - lJoints["root"].second);
        const double lAway = std::hypot(lLabel.first - lX, lLabel.second - lY) / lScale;
        // Bones that start at the same place are labelled a little beyond it: 18 % of their length, at most 17.2 cm.
        const auto lShare =
            std::count_if(lJoints.begin(), lJoints.end(), [&](const auto& pOther) { return pOther.second == lJoint.second; });
        EXPECT_LT(lAway, lShare > 1 ? 0.18 * 17.2 + 0.02 : 0.02) << lJoint.first;
    }
}

// A pose for each of 275,100 frames would be 300 MB.
TEST(AsfDraw, OnePoseForEachPixelOfWidth)
{
    const KTempDir   lFolder;
    const KRunResult lResult = DrawSlide(lFolder, 275100, 1e-4, {"--frames", "1-last", "-o", "-"});
    EXPECT_EQ(lResult.mExit, 0);
    EXPECT_EQ(lResult.mErr,
              "slide.amc: note: 273656 of 275100 frames are left out: a picture has at most 1444 poses, one for each pixel of "
              "its width\n");
    EXPECT_EQ(CountOf(lResult.mOut, ">frame "), 1444u);
    EXPECT_EQ(CountOf(lResult.mOut, ">frame 1, 0.00 s<"), 1u);
    EXPECT_EQ(CountOf(lResult.mOut, ">frame 275100, "), 1u);
    EXPECT_LT(lResult.mOut.size(), 4000000u);
}

TEST(AsfDraw, TrailsSkipPointsThatAreTooCloseToSee)
{
    const KTempDir    lFolder;
    const std::string lSvg = DrawSlide(lFolder, 20000, 1e-4, {"--trail", "leg", "-o", "-"}).mOut;
    const size_t      lTrail = lSvg.find("class=\"trail");
    ASSERT_NE(lTrail, std::string::npos);
    // The root moves by 2 units, the figure has 14 in 250 pixels: at most 2 points for each of 36 pixels, and the ends.
    const size_t lPoints = CountOf(lSvg.substr(lTrail, lSvg.find("<title>", lTrail) - lTrail), "L");
    EXPECT_GT(lPoints, 30u);
    EXPECT_LT(lPoints, 76u);
}

} // namespace
