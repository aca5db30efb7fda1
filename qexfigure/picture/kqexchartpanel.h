#ifndef QEXFIGURE_PICTURE_KQEXCHARTPANEL_H
#define QEXFIGURE_PICTURE_KQEXCHARTPANEL_H

#include <qexfigure/picture/kqexchart.h>

#include <string>

namespace qexsdk
{

inline constexpr double kChartLeft = 70; ///< Pixels to the left of the lines.

/// sRGB, 0xRRGGBB; after M. Okabe and K. Ito, Color Universal Design: told apart with every kind of colour blindness.
inline constexpr unsigned kChartColours[] = {0x0072b2, 0xd55e00, 0x009e73, 0xcc79a7, 0x56b4e9, 0xe69f00, 0x5b6070};
inline constexpr size_t   kChartColourCount = sizeof kChartColours / sizeof kChartColours[0];

/// The style class of a colour.
inline std::string ChartColourClass(size_t pColour)
{
    return "c" + std::to_string(pColour % kChartColourCount);
}

/// Appends a panel with its title, legend, axes and lines to \p pText. \return its height in pixels
/// \param pWidth of the picture
/// \param pTop where the panel begins
double DrawChartPanel(const KQexChart& pChart, const KQexChartPanel& pPanel, double pWidth, double pTop, std::string& pText);

} // namespace qexsdk

#endif
