#ifndef QEXFIGURE_PICTURE_KQEXCHART_H
#define QEXFIGURE_PICTURE_KQEXCHART_H

#include <qexfigure/kqexfigurereport.h>
#include <qexfigure/picture/kqexsvg.h>

#include <string>
#include <vector>

/// \file
/// Charts of values over time as SVG, wherever the values come from.

namespace qexsdk
{

/// One line of a chart.
struct QEX_API KQexChartSeries
{
    std::string         mName;           ///< In the legend and at the end of the line.
    size_t              mColour = 0;     ///< One of seven colours, which people with colour blindness can tell apart; then from the first.
    std::vector<double> mValues;         ///< For each of KQexChart::mSeconds; NaN for none: the line goes on at the next value.
    bool                mHasMin = false; ///< There is a lower limit.
    bool                mHasMax = false; ///< There is an upper limit.
    double              mMin = 0;        ///< Lower limit; valid if mHasMin.
    double              mMax = 0;        ///< Upper limit; valid if mHasMax.
    double              mTolerance = 1e-6; ///< A value that exceeds a limit by no more is at the limit: files have about six digits.

    /// Whether a value passes a limit.
    bool IsOutside(double pValue) const { return (mHasMin && pValue < mMin - mTolerance) || (mHasMax && pValue > mMax + mTolerance); }
};

/// Lines with one axis of values.
struct QEX_API KQexChartPanel
{
    std::string                  mTitle;  ///< Above the panel.
    std::string                  mUnit;   ///< On the axis: "degrees".
    std::string                  mSuffix; ///< After values: "°".
    std::vector<KQexChartSeries> mSeries; ///< Drawn in this order.
};

/// Panels one below the other, with one axis of time.
struct QEX_API KQexChart
{
    std::string                 mPath;     ///< Of the input, for messages; may be empty.
    std::string                 mTitle;    ///< Above the panels, in bold.
    std::string                 mSubtitle; ///< Below the title.
    std::vector<double>         mSeconds;  ///< Ascending.
    std::vector<long long>      mNumbers;  ///< Frame numbers at these times, ascending.
    std::vector<KQexChartPanel> mPanels;   ///< At least one.
};

/// The chart as SVG, \p pWidth pixels wide (0: 1000). Limits are bands behind the lines; where a line passes its limits, it has a dark
/// outline, and a triangle at the farthest value. Of many values only the first, lowest, highest and last in each column of pixels are
/// drawn. False, with an error in \p pReport and no text in \p pSvg, if there is nothing to draw, if the lists differ in size, if times or
/// numbers do not ascend, if a value is infinite or beyond 1e9, or if memory runs out.
QEX_API bool DrawChart(const KQexChart& pChart, double pWidth, KQexSvg& pSvg, KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
