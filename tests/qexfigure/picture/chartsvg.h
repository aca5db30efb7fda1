#ifndef TESTS_QEXFIGURE_PICTURE_CHARTSVG_H
#define TESTS_QEXFIGURE_PICTURE_CHARTSVG_H

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace qextest
{

using KChartPoints = std::vector<std::pair<double, double>>;

/// Values along one side of a panel, from the labels of its first and its last tick.
struct KTickScale
{
    double mPixel = 0;
    double mValue = 0;
    double mValuesPerPixel = 0;

    double ValueAt(double pPixel) const { return mValue + (pPixel - mPixel) * mValuesPerPixel; }
    double PixelAt(double pValue) const { return mPixel + (pValue - mValue) / mValuesPerPixel; }
};

/// One panel of a chart's SVG, read back.
struct KChartPanelSvg
{
    std::string               mText;
    KTickScale                mTime;
    KTickScale                mValues;
    std::vector<KChartPoints> mLines;   ///< Seconds and values.
    std::vector<KChartPoints> mBands;   ///< Of each: lowest and highest value, as the two coordinates of one point.
    std::vector<double>       mLimits;  ///< Values of the dashed lines.
    std::vector<KChartPoints> mOutside; ///< The outlines' parts: seconds and values.
    KChartPoints              mMarks;   ///< Tips of the triangles, pixels.
};

/// The groups of every match of \p pPattern.
inline std::vector<std::smatch> MatchesOf(const std::string& pText, const std::string& pPattern)
{
    const std::regex         lPattern(pPattern);
    std::vector<std::smatch> lMatches;
    for (std::sregex_iterator lMatch(pText.begin(), pText.end(), lPattern); lMatch != std::sregex_iterator(); ++lMatch)
    {
        lMatches.push_back(*lMatch);
    }
    return lMatches;
}

/// The d attributes of the paths whose class begins with \p pClass and that are followed by \p pEnd. Without a regular expression: they
/// may be too long for one.
inline std::vector<std::string> PathsOf(const std::string& pText, const std::string& pClass, const std::string& pEnd)
{
    std::vector<std::string> lPaths;
    const std::string        lStart = "<path class=\"" + pClass;
    for (size_t lAt = pText.find(lStart); lAt != std::string::npos; lAt = pText.find(lStart, lAt + 1))
    {
        const size_t lBegin = pText.find(" d=\"", lAt) + 4;
        const size_t lEnd = pText.find('"', lBegin);
        if (pText.compare(lEnd + 1, pEnd.size(), pEnd) == 0)
        {
            lPaths.push_back(pText.substr(lBegin, lEnd - lBegin));
        }
    }
    return lPaths;
}

/// The parts of a path of straight lines.
inline std::vector<KChartPoints> PartsOf(const std::string& pPath)
{
    std::vector<KChartPoints> lParts;
    for (const std::smatch& lPoint : MatchesOf(pPath, "([ML])([-0-9.]+) ([-0-9.]+)"))
    {
        if (lPoint[1] == "M")
        {
            lParts.emplace_back();
        }
        lParts.back().emplace_back(std::stod(lPoint[2]), std::stod(lPoint[3]));
    }
    return lParts;
}

/// From the pixels and the numbers of ticks.
inline KTickScale ScaleOfTicks(const std::vector<std::smatch>& pTicks, size_t pPixelGroup, double pOffset)
{
    KTickScale lScale;
    EXPECT_GE(pTicks.size(), 2u);
    if (pTicks.size() >= 2)
    {
        const double lLastPixel = std::stod(pTicks.back()[pPixelGroup]) + pOffset;
        lScale.mPixel = std::stod(pTicks.front()[pPixelGroup]) + pOffset;
        lScale.mValue = std::stod(pTicks.front()[3]);
        lScale.mValuesPerPixel = (std::stod(pTicks.back()[3]) - lScale.mValue) / (lLastPixel - lScale.mPixel);
    }
    return lScale;
}

inline KChartPoints InUnits(const KChartPanelSvg& pPanel, KChartPoints pPixels)
{
    for (auto& lPoint : pPixels)
    {
        lPoint = {pPanel.mTime.ValueAt(lPoint.first), pPanel.mValues.ValueAt(lPoint.second)};
    }
    return pPixels;
}

/// Reads one panel's SVG.
inline KChartPanelSvg ParsePanel(const std::string& pText)
{
    KChartPanelSvg lPanel;
    lPanel.mText = pText;
    // Text is drawn 4 pixels below the middle of its letters.
    lPanel.mValues = ScaleOfTicks(
        MatchesOf(pText, "<text x=\"([-0-9.]+)\" y=\"([-0-9.]+)\" class=\"tick\" text-anchor=\"end\">([-0-9.]+)\xC2\xB0<"), 2, -4);
    const std::string lFirst = MatchesOf(pText, "y=\"([-0-9.]+)\" class=\"tick\" text-anchor=\"end\">seconds<").at(0)[1];
    lPanel.mTime = ScaleOfTicks(
        MatchesOf(pText, "<text x=\"([-0-9.]+)\" y=\"(" + lFirst + ")\" class=\"tick\" text-anchor=\"middle\">([-0-9.]+)<"), 1, 0);
    for (const std::string& lLine : PathsOf(pText, "line ", "><title>"))
    {
        lPanel.mLines.push_back(InUnits(lPanel, PartsOf(lLine).at(0)));
    }
    for (const std::smatch& lBand :
         MatchesOf(pText, "class=\"band [^\"]*\" x=\"[^\"]*\" y=\"([^\"]*)\" width=\"[^\"]*\" height=\"([^\"]*)\""))
    {
        const double lTop = std::stod(lBand[1]);
        lPanel.mBands.push_back({{lPanel.mValues.ValueAt(lTop + std::stod(lBand[2])), lPanel.mValues.ValueAt(lTop)}});
    }
    for (const std::smatch& lLimit : MatchesOf(pText, "class=\"limit [^\"]*\" d=\"M[-0-9.]+ ([-0-9.]+)L"))
    {
        lPanel.mLimits.push_back(lPanel.mValues.ValueAt(std::stod(lLimit[1])));
    }
    const std::string lPlot = pText.substr(pText.find("class=\"frame\""));
    for (const std::string& lOutside : PathsOf(lPlot, "outside", "/>"))
    {
        for (const KChartPoints& lPart : PartsOf(lOutside))
        {
            lPanel.mOutside.push_back(InUnits(lPanel, lPart));
        }
    }
    for (const std::smatch& lMark : MatchesOf(pText, "class=\"mark\" d=\"M([-0-9.]+) ([-0-9.]+)l"))
    {
        lPanel.mMarks.emplace_back(std::stod(lMark[1]), std::stod(lMark[2]));
    }
    return lPanel;
}

/// Reads a chart's SVG.
inline std::vector<KChartPanelSvg> ParseChart(const std::string& pSvg)
{
    std::vector<KChartPanelSvg> lPanels;
    for (size_t lAt = pSvg.find("<g class=\"panel\">"); lAt != std::string::npos; lAt = pSvg.find("<g class=\"panel\">", lAt + 1))
    {
        lPanels.push_back(ParsePanel(pSvg.substr(lAt, pSvg.find("</g>", lAt) - lAt)));
    }
    return lPanels;
}

} // namespace qextest

#endif
