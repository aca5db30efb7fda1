#include <qexfigure/picture/kqexchartpanel.h>

#include <qexfigure/kqexnumbertext.h>
#include <qexfigure/picture/kqexchartaxis.h>
#include <qexfigure/picture/kqexchartlegend.h>
#include <qexfigure/picture/kqexchartline.h>
#include <qexfigure/picture/kqexsvgtext.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kPlotHeight = 250;
constexpr double kTitleHeight = 22;
constexpr double kAboveLines = 16; // Between the legend and the lines, for marks.
constexpr double kTimeHeight = 58; // Below the lines.
constexpr double kRightMargin = 44;
constexpr double kRangePitch = 11; // Between two vertical bars of limits.
constexpr double kEndPitch = 13;   // Between two names at the ends of lines.

bool HasLimits(const KQexChartSeries& pSeries)
{
    return pSeries.mHasMin || pSeries.mHasMax;
}

/// The most lines with limits in a panel; all panels leave room for as many bars, so that their times are aligned.
long long MostLimits(const KQexChart& pChart)
{
    long long lMost = 0;
    for (const KQexChartPanel& lPanel : pChart.mPanels)
    {
        lMost = std::max<long long>(lMost, std::count_if(lPanel.mSeries.begin(), lPanel.mSeries.end(), HasLimits));
    }
    return lMost;
}

/// Draws one panel.
class KChartPanelDrawing
{
public:
    KChartPanelDrawing(const KQexChart& pChart, const KQexChartPanel& pPanel, double pWidth, double pTop, std::string& pText)
        : mChart(pChart), mPanel(pPanel), mTop(pTop), mText(pText), mTime(TimeAxis(pChart)), mValues(ValueAxis(pPanel))
    {
        const auto lRanges = static_cast<double>(MostLimits(pChart));
        mTime.mFromPixel = kChartLeft;
        mTime.mToPixel = pWidth - kRightMargin - (lRanges > 0 ? (lRanges + 1) * kRangePitch : 0);
        mLegend = LegendOf(pChart, pPanel, mTime.mToPixel - mTime.mFromPixel);
        mPlotTop = pTop + kTitleHeight + (mLegend.empty() ? 0 : mLegend.back().mY) + kAboveLines;
        mPlotBottom = mPlotTop + kPlotHeight;
        mValues.mFromPixel = mPlotBottom;
        mValues.mToPixel = mPlotTop;
    }

    /// Returns the panel's height.
    double Draw()
    {
        mText += "<g class=\"panel\">\n";
        mText += TextAt(kChartLeft, mTop + 14, "name", "start", mPanel.mTitle);
        Legend();
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            Band(lSeries);
        }
        Grid();
        Frames();
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            Limits(lSeries);
        }
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            const std::vector<KQexChartPoint> lPoints = VisiblePoints(mChart, lSeries, mTime);
            Outside(lSeries, lPoints);
            mText += "<path class=\"line " + ChartColourClass(lSeries.mColour) + "\" d=\"" + PathOf(lPoints) + "\"><title>" +
                     EscapeXml(mPanel.mTitle + " " + lSeries.mName) + "</title></path>\n";
        }
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            Marks(lSeries);
        }
        Ends();
        Ranges();
        mText += "</g>\n";
        return mPlotBottom + kTimeHeight - mTop;
    }

private:
    void Legend()
    {
        for (size_t lIndex = 0; lIndex < mLegend.size(); ++lIndex)
        {
            const KQexLegendEntry& lEntry = mLegend[lIndex];
            const double           lX = kChartLeft + lEntry.mX;
            const double           lY = mTop + kTitleHeight + lEntry.mY;
            if (lEntry.mIsOutside)
            {
                mText += LineAt("outside", lX + 4, lY - 4, lX + kSwatchWidth - 6, lY - 4);
            }
            mText +=
                LineAt(("line " + ChartColourClass(mPanel.mSeries[lIndex].mColour)).c_str(), lX, lY - 4, lX + kSwatchWidth - 2, lY - 4);
            mText += TextAt(lX + kSwatchWidth + 4, lY, "", "start", lEntry.mText);
        }
    }

    /// What is within the limits, as far as it is on the axis.
    void Band(const KQexChartSeries& pSeries)
    {
        if (!HasLimits(pSeries))
        {
            return;
        }
        const double      lTop = mValues.ToPixel(mValues.Clamp(pSeries.mHasMax ? pSeries.mMax : mValues.mTo));
        const double      lBottom = mValues.ToPixel(mValues.Clamp(pSeries.mHasMin ? pSeries.mMin : mValues.mFrom));
        const std::string lColour = " " + ChartColourClass(pSeries.mColour) + "\"";
        if (lBottom > lTop)
        {
            mText += "<rect class=\"band" + lColour + " x=\"" + Px(mTime.mFromPixel) + "\" y=\"" + Px(lTop) + "\" width=\"" +
                     Px(mTime.mToPixel - mTime.mFromPixel) + "\" height=\"" + Px(lBottom - lTop) + "\"/>\n";
        }
    }

    void Limits(const KQexChartSeries& pSeries)
    {
        for (const auto& [lHas, lLimit] : {std::pair(pSeries.mHasMin, pSeries.mMin), std::pair(pSeries.mHasMax, pSeries.mMax)})
        {
            if (lHas && lLimit == mValues.Clamp(lLimit))
            {
                const double lY = mValues.ToPixel(lLimit);
                mText += LineAt(("limit " + ChartColourClass(pSeries.mColour)).c_str(), mTime.mFromPixel, lY, mTime.mToPixel, lY);
            }
        }
    }

    void Grid()
    {
        for (const double lTick : mValues.Ticks())
        {
            const double lY = mValues.ToPixel(lTick);
            mText += LineAt(lTick == 0 ? "zero" : "grid", mTime.mFromPixel, lY, mTime.mToPixel, lY);
            mText += TextAt(mTime.mFromPixel - 8, lY + 4, "tick", "end", mValues.TickText(lTick) + mPanel.mSuffix);
        }
        const double lMiddle = (mPlotTop + mPlotBottom) / 2;
        mText += "<text x=\"16\" y=\"" + Px(lMiddle) + "\" class=\"tick\" text-anchor=\"middle\" transform=\"rotate(-90 16 " + Px(lMiddle) +
                 ")\">" + EscapeXml(mPanel.mUnit) + "</text>\n";
        for (const double lTick : mTime.Ticks())
        {
            const double lX = mTime.ToPixel(lTick);
            mText += LineAt("grid", lX, mPlotTop, lX, mPlotBottom + 4);
            mText += TextAt(lX, mPlotBottom + 17, "tick", "middle", mTime.TickText(lTick));
        }
        mText += TextAt(mTime.mFromPixel - 22, mPlotBottom + 17, "tick", "end", "seconds");
        mText += "<rect class=\"frame\" x=\"" + Px(mTime.mFromPixel) + "\" y=\"" + Px(mPlotTop) + "\" width=\"" +
                 Px(mTime.mToPixel - mTime.mFromPixel) + "\" height=\"" + Px(mPlotBottom - mPlotTop) + "\"/>\n";
    }

    /// Short ticks at frames of round numbers, below those of seconds: one of these need not be at a frame.
    void Frames()
    {
        size_t lLast = mChart.mNumbers.size();
        for (const double lTick : FrameAxis(mChart).Ticks())
        {
            const auto   lNext = std::lower_bound(mChart.mNumbers.begin(), mChart.mNumbers.end(), std::llround(lTick));
            const size_t lIndex = static_cast<size_t>(lNext - mChart.mNumbers.begin());
            if (lIndex != lLast && lIndex < mChart.mNumbers.size())
            {
                const double lX = mTime.ToPixel(mChart.mSeconds[lIndex]);
                mText += LineAt("frame", lX, mPlotBottom - 5, lX, mPlotBottom);
                mText += TextAt(lX, mPlotBottom + 31, "tick", "middle", std::to_string(mChart.mNumbers[lIndex]));
                lLast = lIndex;
            }
        }
        mText += TextAt(mTime.mFromPixel - 22, mPlotBottom + 31, "tick", "end", "frame");
    }

    std::string PathOf(const std::vector<KQexChartPoint>& pPoints) const
    {
        std::string lPath;
        for (const KQexChartPoint& lPoint : pPoints)
        {
            lPath += (lPath.empty() ? "M" : "L") + Px(lPoint.mX) + " " + Px(mValues.ToPixel(lPoint.mValue));
        }
        // A line of no length is shown as a dot.
        return pPoints.size() == 1 ? lPath + "h0" : lPath;
    }

    /// A dark outline of the line where it is beyond a limit.
    void Outside(const KQexChartSeries& pSeries, const std::vector<KQexChartPoint>& pPoints)
    {
        std::string lPath;
        for (const bool lIsAbove : {true, false})
        {
            if (lIsAbove ? pSeries.mHasMax : pSeries.mHasMin)
            {
                const double lLimit = lIsAbove ? pSeries.mMax + pSeries.mTolerance : pSeries.mMin - pSeries.mTolerance;
                for (const std::vector<KQexChartPoint>& lPart : PartsBeyond(pPoints, lLimit, lIsAbove))
                {
                    lPath += PathOf(lPart);
                }
            }
        }
        if (!lPath.empty())
        {
            mText += "<path class=\"outside\" d=\"" + lPath + "\"/>\n";
        }
    }

    void Marks(const KQexChartSeries& pSeries)
    {
        for (const KQexChartMark& lMark : MarksOf(mChart, pSeries, mTime))
        {
            const double lUp = lMark.mIsAbove ? -1 : 1;
            const double lY = mValues.ToPixel(lMark.mValue) + 14 * lUp;
            mText += "<path class=\"mark\" d=\"M" + Px(lMark.mX) + " " + Px(lY) + "l5 " + Px(-9 * lUp) + "h-10Z\"/>\n";
        }
    }

    /// The names at the ends of the lines, moved apart.
    void Ends()
    {
        struct KEnd
        {
            double                 mY;
            const KQexChartSeries* mSeries;
        };
        std::vector<KEnd> lEnds;
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            const auto lLast =
                std::find_if(lSeries.mValues.rbegin(), lSeries.mValues.rend(), [](double pValue) { return !std::isnan(pValue); });
            if (lLast != lSeries.mValues.rend())
            {
                lEnds.push_back({mValues.ToPixel(*lLast) + 4, &lSeries});
            }
        }
        std::stable_sort(lEnds.begin(), lEnds.end(), [](const KEnd& pOne, const KEnd& pOther) { return pOne.mY < pOther.mY; });
        double lBelow = mPlotBottom + kEndPitch;
        for (size_t lIndex = lEnds.size(); lIndex-- > 0;)
        {
            lEnds[lIndex].mY = lBelow = std::min(lEnds[lIndex].mY, lBelow - kEndPitch);
        }
        for (const KEnd& lEnd : lEnds)
        {
            mText += TextAt(mTime.mToPixel + 6, lEnd.mY, ("end " + ChartColourClass(lEnd.mSeries->mColour)).c_str(), "start",
                            lEnd.mSeries->mName);
        }
    }

    /// A vertical bar for the limits of each line; open at an end that is not on the axis.
    void Ranges()
    {
        double lX = mTime.mToPixel + kRightMargin - 10;
        for (const KQexChartSeries& lSeries : mPanel.mSeries)
        {
            if (!HasLimits(lSeries))
            {
                continue;
            }
            const double lLow = lSeries.mHasMin ? lSeries.mMin : mValues.mFrom;
            const double lHigh = lSeries.mHasMax ? lSeries.mMax : mValues.mTo;
            const double lBottom = mValues.ToPixel(mValues.Clamp(lLow));
            const double lTop = mValues.ToPixel(mValues.Clamp(lHigh));
            const bool   lHasBottom = lSeries.mHasMin && lLow == mValues.Clamp(lLow);
            const bool   lHasTop = lSeries.mHasMax && lHigh == mValues.Clamp(lHigh);
            mText += "<path class=\"range " + ChartColourClass(lSeries.mColour) + "\" d=\"M" + Px(lX) + " " + Px(lTop) + "V" + Px(lBottom) +
                     (lHasTop ? "M" + Px(lX - 4) + " " + Px(lTop) + "h8" : "") +
                     (lHasBottom ? "M" + Px(lX - 4) + " " + Px(lBottom) + "h8" : "") + "\"><title>" +
                     EscapeXml("limits of " + lSeries.mName) + "</title></path>\n";
            lX += kRangePitch;
        }
        const double lFirst = mTime.mToPixel + kRightMargin - 10;
        if (lX > lFirst)
        {
            mText += TextAt((lFirst + lX - kRangePitch) / 2, mPlotTop - 6, "tick", "middle", "limits");
        }
    }

    const KQexChart&             mChart;
    const KQexChartPanel&        mPanel;
    double                       mTop;
    std::string&                 mText;
    KQexChartAxis                mTime;
    KQexChartAxis                mValues;
    std::vector<KQexLegendEntry> mLegend;
    double                       mPlotTop = 0;
    double                       mPlotBottom = 0;
};

} // namespace

double DrawChartPanel(const KQexChart& pChart, const KQexChartPanel& pPanel, double pWidth, double pTop, std::string& pText)
{
    return KChartPanelDrawing(pChart, pPanel, pWidth, pTop, pText).Draw();
}

} // namespace qexsdk
