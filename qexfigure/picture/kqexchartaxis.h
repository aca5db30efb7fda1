#ifndef QEXFIGURE_PICTURE_KQEXCHARTAXIS_H
#define QEXFIGURE_PICTURE_KQEXCHARTAXIS_H

#include <qexfigure/picture/kqexchart.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A range of values along one side of a panel, and its pixels.
struct KQexChartAxis
{
    double mFrom = 0;      ///< Value at mFromPixel.
    double mTo = 1;        ///< Value at mToPixel; above mFrom.
    double mFromPixel = 0; ///< Pixel of the picture.
    double mToPixel = 1;   ///< Below mFromPixel on an axis that points up.
    double mStep = 1;      ///< Between two ticks.

    /// The pixel of \p pValue, which may be beyond the ends.
    double ToPixel(double pValue) const { return mFromPixel + (pValue - mFrom) / (mTo - mFrom) * (mToPixel - mFromPixel); }

    /// \p pValue, or the end of the axis that it is beyond.
    double Clamp(double pValue) const { return pValue < mFrom ? mFrom : pValue > mTo ? mTo : pValue; }

    /// The multiples of mStep on the axis, ascending.
    std::vector<double> Ticks() const;

    /// A tick's number, with as many decimals as the step needs.
    std::string TickText(double pTick) const;
};

/// The axis of time for all panels, from the first time to the last; a single one is in the middle of a second.
KQexChartAxis TimeAxis(const KQexChart& pChart);

/// The numbers of the frames, which need not be even in time; without pixels.
KQexChartAxis FrameAxis(const KQexChart& pChart);

/// The axis of values: all values and zero if it is near; limits where that does not shrink the lines by much.
KQexChartAxis ValueAxis(const KQexChartPanel& pPanel);

} // namespace qexsdk

#endif
