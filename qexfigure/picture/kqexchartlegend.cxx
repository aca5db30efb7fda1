#include <qexfigure/picture/kqexchartlegend.h>

#include <qexfigure/kqexnumbertext.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kLegendCharacter = 5.8; // Mean width.
constexpr double kLegendGap = 22;

/// ", limits -160 to 20°".
std::string LimitsPart(const KQexChartSeries& pSeries, const std::string& pSuffix)
{
    if (pSeries.mHasMin && pSeries.mHasMax)
    {
        return ", limits " + ShortText(pSeries.mMin) + " to " + ShortText(pSeries.mMax) + pSuffix;
    }
    return pSeries.mHasMin   ? ", at least " + ShortText(pSeries.mMin) + pSuffix
           : pSeries.mHasMax ? ", at most " + ShortText(pSeries.mMax) + pSuffix
                             : std::string();
}

std::string TextOfSeries(const KQexChart& pChart, const KQexChartSeries& pSeries, const std::string& pSuffix, long long& pOutside)
{
    double    lLowest = 0;
    double    lHighest = 0;
    long long lCount = 0;
    long long lFirst = 0;
    pOutside = 0;
    for (size_t lIndex = 0; lIndex < pSeries.mValues.size(); ++lIndex)
    {
        const double lValue = pSeries.mValues[lIndex];
        if (std::isnan(lValue))
        {
            continue;
        }
        lLowest = lCount == 0 ? lValue : std::min(lLowest, lValue);
        lHighest = lCount == 0 ? lValue : std::max(lHighest, lValue);
        ++lCount;
        if (pSeries.IsOutside(lValue))
        {
            lFirst = pOutside == 0 ? pChart.mNumbers[lIndex] : lFirst;
            ++pOutside;
        }
    }
    const std::string lFrom = FixedText(lLowest, 1);
    const std::string lTo = FixedText(lHighest, 1);
    const std::string lRange = lCount == 0 ? "no values" : (lFrom == lTo ? "" : lFrom + " to ") + lTo + pSuffix;
    const std::string lPassed = pOutside == 0 ? std::string()
                                              : "; passed in " + std::to_string(pOutside) + " of " + CountText(lCount, "frame", "frames") +
                                                    (pOutside == lCount ? "" : ", first in " + std::to_string(lFirst));
    return pSeries.mName + ": " + lRange + LimitsPart(pSeries, pSuffix) + lPassed;
}

} // namespace

std::vector<KQexLegendEntry> LegendOf(const KQexChart& pChart, const KQexChartPanel& pPanel, double pWidth)
{
    std::vector<KQexLegendEntry> lEntries;
    double                       lX = 0;
    double                       lY = kLegendPitch;
    for (const KQexChartSeries& lSeries : pPanel.mSeries)
    {
        long long         lOutside = 0;
        const std::string lText = TextOfSeries(pChart, lSeries, pPanel.mSuffix, lOutside);
        const double      lWidth = kSwatchWidth + 6 + kLegendCharacter * static_cast<double>(lText.size());
        if (lX > 0 && lX + lWidth > pWidth)
        {
            lX = 0;
            lY += kLegendPitch;
        }
        lEntries.push_back({lText, lX, lY, lOutside > 0});
        lX += lWidth + kLegendGap;
    }
    return lEntries;
}

} // namespace qexsdk
