#ifndef QEXFIGURE_PICTURE_KQEXCHARTLINE_H
#define QEXFIGURE_PICTURE_KQEXCHARTLINE_H

#include <qexfigure/picture/kqexchartaxis.h>

#include <vector>

namespace qexsdk
{

/// A point of a line.
struct KQexChartPoint
{
    double mX = 0;     ///< Pixels.
    double mValue = 0; ///< In the panel's unit.
};

/// The farthest value of a stretch that passes a limit.
struct KQexChartMark
{
    double mX = 0;           ///< Pixels.
    double mValue = 0;       ///< In the panel's unit.
    bool   mIsAbove = false; ///< The upper limit is passed, not the lower.
};

/// The points to draw: of all values, or of many the first, lowest, highest and last in each column of pixels. Without NaN.
std::vector<KQexChartPoint> VisiblePoints(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime);

/// The parts of the line through \p pPoints that are above \p pLimit, or below it: from where it crosses the limit to where it returns.
std::vector<std::vector<KQexChartPoint>> PartsBeyond(const std::vector<KQexChartPoint>& pPoints, double pLimit, bool pIsAbove);

/// Marks of all stretches that pass a limit; of stretches within a few pixels, one.
std::vector<KQexChartMark> MarksOf(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime);

} // namespace qexsdk

#endif
