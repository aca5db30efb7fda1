#include <qexfigure/picture/kqexchart.h>

#include <tests/qexfigure/figuresupport.h>
#include <tests/qexfigure/picture/chartsvg.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// A chart of lines at 10 frames a second from frame 5 at time 0.
KQexChart ChartOf(const std::vector<std::vector<double>>& pLines)
{
    KQexChart lChart;
    lChart.mPath = "made";
    lChart.mTitle = "a<b";
    lChart.mPanels = {{"bone", "degrees", "\xC2\xB0", {}}};
    for (size_t lFrame = 0; lFrame < pLines.at(0).size(); ++lFrame)
    {
        lChart.mSeconds.push_back(static_cast<double>(lFrame) / 10);
        lChart.mNumbers.push_back(static_cast<long long>(lFrame) + 5);
    }
    for (size_t lLine = 0; lLine < pLines.size(); ++lLine)
    {
        KQexChartSeries lSeries;
        lSeries.mName = std::string("r") + "xyz"[lLine % 3];
        lSeries.mColour = lLine;
        lSeries.mValues = pLines[lLine];
        lChart.mPanels[0].mSeries.push_back(lSeries);
    }
    return lChart;
}

void Limit(KQexChartSeries& pSeries, double pMin, double pMax)
{
    pSeries.mHasMin = pSeries.mHasMax = true;
    pSeries.mMin = pMin;
    pSeries.mMax = pMax;
}

std::string SvgOf(const KQexChart& pChart, double pWidth = 0)
{
    KQexSvg          lSvg;
    KQexFigureReport lReport;
    EXPECT_TRUE(DrawChart(pChart, pWidth, lSvg, lReport)) << TextOf(lReport);
    EXPECT_EQ(lSvg.mText.find("nan"), std::string::npos);
    EXPECT_EQ(lSvg.mText.find("inf"), std::string::npos);
    return lSvg.mText;
}

KChartPanelSvg PanelOf(const KQexChart& pChart)
{
    const auto lPanels = ParseChart(SvgOf(pChart));
    EXPECT_EQ(lPanels.size(), 1u);
    return lPanels.at(0);
}

TEST(Chart, LinesGoThroughTheirValues)
{
    const std::vector<std::vector<double>> lLines{{0, 10, -20, 400, 5}, {3, kNone, -7.5, kNone, 2}};
    const KChartPanelSvg                   lPanel = PanelOf(ChartOf(lLines));
    ASSERT_EQ(lPanel.mLines.size(), 2u);
    for (size_t lLine = 0; lLine < 2; ++lLine)
    {
        size_t lPoint = 0;
        for (size_t lFrame = 0; lFrame < 5; ++lFrame)
        {
            if (!std::isnan(lLines[lLine][lFrame]))
            {
                ASSERT_LT(lPoint, lPanel.mLines[lLine].size());
                EXPECT_NEAR(lPanel.mLines[lLine][lPoint].first, static_cast<double>(lFrame) / 10, 1e-4);
                EXPECT_NEAR(lPanel.mLines[lLine][lPoint].second, lLines[lLine][lFrame], 0.03);
                ++lPoint;
            }
        }
        EXPECT_EQ(lPoint, lPanel.mLines[lLine].size());
    }
}

TEST(Chart, TheAxesAreLabelled)
{
    const std::string lSvg = SvgOf(ChartOf({{0, 10, -20, 40, 5}}));
    for (const char* lText : {">degrees<", ">seconds<", ">frame<", ">0.00<", ">5<", ">0.40<", ">9<", ">-10\xC2\xB0<", ">30\xC2\xB0<",
                              ">a&lt;b<", ">rx: -20.0 to 40.0\xC2\xB0<"})
    {
        EXPECT_NE(lSvg.find(lText), std::string::npos) << lText;
    }
}

TEST(Chart, FrameNumbersAreAtTheirTimes)
{
    KQexChart lChart = ChartOf({std::vector<double>(50, 1)});
    lChart.mNumbers.back() = 100; // After a gap, one frame in time.
    const KChartPanelSvg lPanel = PanelOf(lChart);
    std::string          lFound;
    for (const std::smatch& lFrame :
         MatchesOf(lPanel.mText, "<text x=\"([-0-9.]+)\" y=\"([-0-9.]+)\" class=\"tick\" text-anchor=\"middle\">([0-9]+)<"))
    {
        const size_t lAt = static_cast<size_t>(std::lround(lPanel.mTime.ValueAt(std::stod(lFrame[1])) * 10));
        EXPECT_EQ(lFrame[3], std::to_string(lChart.mNumbers.at(lAt)));
        lFound += lFrame[3].str() + " ";
    }
    EXPECT_EQ(lFound, "10 20 30 40 50 100 ");
}

TEST(Chart, LimitsAreBands)
{
    KQexChart lChart = ChartOf({{0, 10, -20, 40, 5}, {1, 1, 1, 1, 1}, {2, 2, 2, 2, 2}});
    Limit(lChart.mPanels[0].mSeries[0], -30, 50);
    lChart.mPanels[0].mSeries[1].mHasMax = true;
    lChart.mPanels[0].mSeries[1].mMax = 20;
    Limit(lChart.mPanels[0].mSeries[2], -5000, 30);
    const KChartPanelSvg lPanel = PanelOf(lChart);
    ASSERT_EQ(lPanel.mBands.size(), 3u);
    EXPECT_NEAR(lPanel.mBands[0][0].first, -30, 0.02);
    EXPECT_NEAR(lPanel.mBands[0][0].second, 50, 0.02);
    EXPECT_NEAR(lPanel.mBands[1][0].second, 20, 0.02);
    EXPECT_NEAR(lPanel.mBands[2][0].second, 30, 0.02);
    // To the end of the axis, which a far limit does not lengthen.
    EXPECT_NEAR(lPanel.mBands[1][0].first, lPanel.mBands[2][0].first, 1e-9);
    EXPECT_GT(lPanel.mBands[2][0].first, -60);
    ASSERT_EQ(lPanel.mLimits.size(), 4u);
    EXPECT_NEAR(lPanel.mLimits[0], -30, 0.02);
    EXPECT_NEAR(lPanel.mLimits[3], 30, 0.02);
    EXPECT_TRUE(lPanel.mOutside.empty());
    EXPECT_TRUE(lPanel.mMarks.empty());
    EXPECT_NE(lPanel.mText.find(">rx: -20.0 to 40.0\xC2\xB0, limits -30 to 50\xC2\xB0<"), std::string::npos);
    EXPECT_NE(lPanel.mText.find(", at most 20\xC2\xB0<"), std::string::npos);
}

TEST(Chart, PassedLimitsAreMarked)
{
    KQexChart lChart = ChartOf({{0, 30, 40, 0, -20, 0, 0, 0, 20, 0}});
    Limit(lChart.mPanels[0].mSeries[0], -10, 20);
    const KChartPanelSvg lPanel = PanelOf(lChart);
    // From where the line crosses the limit to where it returns; at the limit is not beyond it.
    ASSERT_EQ(lPanel.mOutside.size(), 2u);
    const std::vector<KChartPoints> lExpected{{{0.0667, 20}, {0.1, 30}, {0.2, 40}, {0.25, 20}}, {{0.35, -10}, {0.4, -20}, {0.45, -10}}};
    for (size_t lPart = 0; lPart < 2; ++lPart)
    {
        ASSERT_EQ(lPanel.mOutside[lPart].size(), lExpected[lPart].size());
        for (size_t lPoint = 0; lPoint < lExpected[lPart].size(); ++lPoint)
        {
            EXPECT_NEAR(lPanel.mOutside[lPart][lPoint].first, lExpected[lPart][lPoint].first, 1e-3);
            EXPECT_NEAR(lPanel.mOutside[lPart][lPoint].second, lExpected[lPart][lPoint].second, 0.02);
        }
    }
    ASSERT_EQ(lPanel.mMarks.size(), 2u);
    EXPECT_NEAR(lPanel.mTime.ValueAt(lPanel.mMarks[0].first), 0.2, 1e-3);
    EXPECT_LT(lPanel.mMarks[0].second, lPanel.mValues.PixelAt(40));
    EXPECT_NEAR(lPanel.mTime.ValueAt(lPanel.mMarks[1].first), 0.4, 1e-3);
    EXPECT_GT(lPanel.mMarks[1].second, lPanel.mValues.PixelAt(-20));
    EXPECT_NE(lPanel.mText.find(", limits -10 to 20\xC2\xB0; passed in 3 of 10 frames, first in 6<"), std::string::npos) << lPanel.mText;
}

TEST(Chart, ALimitWithinRoundingIsNotPassed)
{
    KQexChart lChart = ChartOf({{0, 20.0000005, 0}});
    Limit(lChart.mPanels[0].mSeries[0], -10, 20);
    EXPECT_TRUE(PanelOf(lChart).mMarks.empty());
    EXPECT_TRUE(PanelOf(lChart).mOutside.empty());
}

// Otherwise 275,100 frames would be 8 MB, and their peaks no more visible.
TEST(Chart, LongMotionsKeepTheirPeaks)
{
    constexpr size_t    kFrames = 275100;
    std::vector<double> lValues(kFrames);
    for (size_t lFrame = 0; lFrame < kFrames; ++lFrame)
    {
        lValues[lFrame] = (lFrame % 2 == 0 ? 10 : -10) + std::sin(static_cast<double>(lFrame));
    }
    lValues[123456] = 80;
    lValues[200000] = -60;
    KQexChart lChart = ChartOf({lValues, lValues, lValues});
    Limit(lChart.mPanels[0].mSeries[0], 0, 5);
    const std::string lSvg = SvgOf(lChart);
    EXPECT_LT(lSvg.size(), 500000u);
    const KChartPanelSvg lPanel = ParseChart(lSvg).at(0);
    for (const KChartPoints& lLine : lPanel.mLines)
    {
        EXPECT_LT(lLine.size(), 4000u);
        EXPECT_TRUE(std::is_sorted(lLine.begin(), lLine.end(),
                                   [](const auto& pOne, const auto& pOther) { return pOne.first < pOther.first - 0.1; }));
        for (const size_t lPeak : {size_t(123456), size_t(200000)})
        {
            EXPECT_TRUE(std::any_of(lLine.begin(), lLine.end(),
                                    [&](const auto& pPoint) {
                                        return std::fabs(pPoint.second - lValues[lPeak]) < 0.1 &&
                                               std::fabs(pPoint.first - lChart.mSeconds[lPeak]) < 0.5;
                                    }))
                << lPeak;
        }
    }
    // At most one for each 12 pixels and side.
    EXPECT_LT(lPanel.mMarks.size(), 160u);
    EXPECT_GT(lPanel.mMarks.size(), 2u);
}

TEST(Chart, TimesOfAllPanelsAreAligned)
{
    KQexChart lChart = ChartOf({{0, 10, -20, 40, 5}});
    lChart.mPanels.push_back(lChart.mPanels[0]);
    Limit(lChart.mPanels[1].mSeries[0], -30, 50);
    const auto lPanels = ParseChart(SvgOf(lChart));
    ASSERT_EQ(lPanels.size(), 2u);
    EXPECT_EQ(lPanels[0].mTime.PixelAt(0.3), lPanels[1].mTime.PixelAt(0.3));
    EXPECT_GT(lPanels[1].mValues.PixelAt(0), lPanels[0].mValues.PixelAt(-20) + 50);
}

TEST(Chart, SingleAndConstantValues)
{
    for (const std::vector<double>& lValues : {std::vector<double>{7}, {7, 7, 7}, {kNone, kNone}, {1e-9, 2e-9}, {-1e9, 1e9}})
    {
        const std::string lSvg = SvgOf(ChartOf({lValues}));
        EXPECT_LT(lSvg.size(), 20000u) << lValues[0];
    }
    EXPECT_NE(SvgOf(ChartOf({{7}})).find("h0\""), std::string::npos);
    EXPECT_NE(SvgOf(ChartOf({{kNone}})).find(">rx: no values<"), std::string::npos);
}

TEST(Chart, TimesAndNumbersFarFromZero)
{
    KQexChart lChart = ChartOf({{1, 2}});
    lChart.mSeconds = {1e9 - 1e-6, 1e9};
    lChart.mNumbers = {std::numeric_limits<long long>::max() - 1, std::numeric_limits<long long>::max()};
    EXPECT_LT(SvgOf(lChart).size(), 20000u);
    lChart.mNumbers.front() = std::numeric_limits<long long>::min();
    EXPECT_LT(SvgOf(lChart).size(), 20000u);
}

TEST(Chart, TheWidthScalesThePicture)
{
    KQexSvg          lSvg;
    KQexFigureReport lReport;
    ASSERT_TRUE(DrawChart(ChartOf({{0, 1}}), 500, lSvg, lReport));
    EXPECT_EQ(lSvg.mWidth, 500);
    EXPECT_NE(lSvg.mText.find("width=\"500\""), std::string::npos);
    EXPECT_NE(lSvg.mText.find("viewBox=\"0 0 1000 "), std::string::npos);
}

TEST(Chart, AnUnfitChartIsRefused)
{
    const KQexChart        lGood = ChartOf({{0, 10, -20}});
    std::vector<KQexChart> lBad(9, lGood);
    lBad[0].mPanels.clear();
    lBad[1] = ChartOf({{}});
    lBad[2].mNumbers.pop_back();
    lBad[3].mPanels[0].mSeries[0].mValues.push_back(1);
    lBad[4].mSeconds = {0, 2, 1};
    lBad[5].mNumbers = {3, 2, 1};
    lBad[6].mPanels[0].mSeries[0].mValues[1] = std::numeric_limits<double>::infinity();
    lBad[7].mPanels[0].mSeries[0].mValues[1] = 1e10;
    lBad[8].mSeconds[2] = 1e300;
    const char* lEmpty = "the chart is empty";
    const char* lSizes = "the chart's lists differ in size";
    const char* lOrder = "the chart's times or numbers do not ascend";
    const char* lLarge = "values are too large";
    const char* lErrors[] = {lEmpty, lEmpty, lSizes, lSizes, lOrder, lOrder, lLarge, lLarge, lLarge};
    for (size_t i = 0; i < lBad.size(); ++i)
    {
        KQexSvg          lSvg;
        KQexFigureReport lReport;
        EXPECT_FALSE(DrawChart(lBad[i], 0, lSvg, lReport));
        EXPECT_EQ(TextOf(lReport), std::string("error made:0: cannot be drawn: ") + lErrors[i] + "\n");
        EXPECT_EQ(lSvg.mText, "");
    }
}

} // namespace
