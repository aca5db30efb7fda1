#ifndef QEXFIGURE_PICTURE_KQEXCHARTLEGEND_H
#define QEXFIGURE_PICTURE_KQEXCHARTLEGEND_H

#include <qexfigure/picture/kqexchart.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// An entry of a panel's legend, relative to the legend's top left.
struct KQexLegendEntry
{
    std::string mText;              ///< The line's name and range.
    double      mX = 0;             ///< Of the entry's left side.
    double      mY = 0;             ///< Of the text's baseline.
    bool        mIsOutside = false; ///< The line passes its limits.
};

/// The entries of the panel's lines, in rows of at most \p pWidth pixels.
std::vector<KQexLegendEntry> LegendOf(const KQexChart& pChart, const KQexChartPanel& pPanel, double pWidth);

inline constexpr double kLegendPitch = 16; ///< Pixels between two rows.
inline constexpr double kSwatchWidth = 22; ///< Pixels of the piece of line before the text.

} // namespace qexsdk

#endif
