#include <qexfigure/picture/kqexchart.h>

#include <qexfigure/kqexfigureguard.h>
#include <qexfigure/kqexnumbertext.h>
#include <qexfigure/picture/kqexchartpanel.h>
#include <qexfigure/picture/kqexsvgtext.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kChartWidth = 1000;
constexpr double kChartHeader = 60;
constexpr double kChartFooter = 14;

/// Beyond this, the single precision of SVG viewers becomes visible.
constexpr double kMaxChartValue = 1e9;

std::string ChartStyle()
{
    std::string lText = "<style>\n"
                        "text{font-family:'DejaVu Sans','Segoe UI',Helvetica,Arial,sans-serif;fill:#3a3d46;font-size:11px}\n"
                        ".title{font-size:17px;font-weight:600;fill:#22242b}\n"
                        ".small{font-size:12px;fill:#7b7f8c}\n"
                        ".name{font-size:13px;font-weight:600;fill:#22242b}\n"
                        ".tick{fill:#6a6e7a}\n"
                        ".grid{stroke:#e6e7ec;stroke-width:1}\n"
                        ".zero{stroke:#b4b7c1;stroke-width:1}\n"
                        ".frame{fill:none;stroke:#c3c6cf;stroke-width:1}\n"
                        ".line{fill:none;stroke-width:1.7;stroke-linejoin:round;stroke-linecap:round}\n"
                        ".outside{fill:none;stroke:#22242b;stroke-width:5.4;stroke-linejoin:round}\n"
                        ".mark{fill:#22242b;stroke:" +
                        HexColor(kPictureBackground) +
                        ";stroke-width:1}\n"
                        ".band{fill-opacity:.06}\n"
                        ".limit{fill:none;stroke-width:1.1;stroke-dasharray:6 4;stroke-opacity:.75}\n"
                        ".range{fill:none;stroke-width:2}\n"
                        ".end{font-weight:600}\n";
    for (size_t lColour = 0; lColour < kChartColourCount; ++lColour)
    {
        const std::string lClass = ChartColourClass(lColour);
        const std::string lHex = HexColor(kChartColours[lColour]);
        lText += "." + lClass + "{stroke:" + lHex + "}." + lClass + ".band,." + lClass + ".end{fill:" + lHex + ";stroke:none}\n";
    }
    return lText + "</style>\n";
}

/// Whether all lists have the size of the times.
bool ListsMatch(const KQexChart& pChart)
{
    const size_t lCount = pChart.mSeconds.size();
    return pChart.mNumbers.size() == lCount &&
           std::all_of(pChart.mPanels.begin(), pChart.mPanels.end(),
                       [lCount](const KQexChartPanel& pPanel)
                       {
                           return std::all_of(pPanel.mSeries.begin(), pPanel.mSeries.end(),
                                              [lCount](const KQexChartSeries& pSeries) { return pSeries.mValues.size() == lCount; });
                       });
}

bool IsSorted(const KQexChart& pChart)
{
    return std::is_sorted(pChart.mSeconds.begin(), pChart.mSeconds.end()) && std::is_sorted(pChart.mNumbers.begin(), pChart.mNumbers.end());
}

bool ValuesFit(const KQexChart& pChart)
{
    const auto lIsTime = [](double pSeconds)
    {
        return std::fabs(pSeconds) <= kMaxChartValue;
    };
    const auto lIsValue = [](double pValue)
    {
        return std::isnan(pValue) || std::fabs(pValue) <= kMaxChartValue;
    };
    return std::all_of(pChart.mSeconds.begin(), pChart.mSeconds.end(), lIsTime) &&
           std::all_of(pChart.mPanels.begin(), pChart.mPanels.end(),
                       [&lIsValue](const KQexChartPanel& pPanel)
                       {
                           return std::all_of(pPanel.mSeries.begin(), pPanel.mSeries.end(),
                                              [&lIsValue](const KQexChartSeries& pSeries)
                                              { return std::all_of(pSeries.mValues.begin(), pSeries.mValues.end(), lIsValue); });
                       });
}

/// False, with an error, for a chart that cannot be drawn.
bool CheckChart(const KQexChart& pChart, KQexFigureReport& pReport)
{
    const char* lError = !ListsMatch(pChart)                                 ? "the chart's lists differ in size"
                         : pChart.mSeconds.empty() || pChart.mPanels.empty() ? "the chart is empty"
                         : !IsSorted(pChart)                                 ? "the chart's times or numbers do not ascend"
                                                                             : nullptr;
    if (lError != nullptr)
    {
        return pReport.Fail(eFIGURE_USAGE, pChart.mPath, std::string("cannot be drawn: ") + lError);
    }
    return ValuesFit(pChart) || pReport.Fail(eFIGURE_INPUT, pChart.mPath, "cannot be drawn: values are too large");
}

void DrawPanels(const KQexChart& pChart, double pWidth, KQexSvg& pSvg)
{
    std::string lPanels;
    double      lY = kChartHeader;
    for (const KQexChartPanel& lPanel : pChart.mPanels)
    {
        lY += DrawChartPanel(pChart, lPanel, kChartWidth, lY, lPanels);
    }
    const double      lHeight = lY + kChartFooter;
    const std::string lArea = "width=\"" + Px(kChartWidth) + "\" height=\"" + Px(lHeight) + "\"";
    pSvg.mWidth = pWidth > 0 ? pWidth : kChartWidth;
    pSvg.mHeight = lHeight * pSvg.mWidth / kChartWidth;
    pSvg.mText = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Px(pSvg.mWidth) + "\" height=\"" + Px(pSvg.mHeight) +
                 "\" viewBox=\"0 0 " + Px(kChartWidth) + " " + Px(lHeight) + "\" role=\"img\">\n<title>" + EscapeXml(pChart.mTitle) +
                 "</title>\n" + ChartStyle() + "<rect " + lArea + " fill=\"" + HexColor(kPictureBackground) + "\"/>\n" +
                 TextAt(kChartLeft, 30, "title", "start", pChart.mTitle) + TextAt(kChartLeft, 48, "small", "start", pChart.mSubtitle) +
                 lPanels + "</svg>\n";
}

} // namespace

bool DrawChart(const KQexChart& pChart, double pWidth, KQexSvg& pSvg, KQexFigureReport& pReport) noexcept
{
    pSvg.mText.clear();
    return RunGuarded(pReport,
                      [&]
                      {
                          if (!CheckChart(pChart, pReport))
                          {
                              return false;
                          }
                          DrawPanels(pChart, pWidth, pSvg);
                          return true;
                      });
}

} // namespace qexsdk
