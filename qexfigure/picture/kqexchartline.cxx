#include <qexfigure/picture/kqexchartline.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kMarkPitch = 12; // Pixels between two marks, at least.

long long ColumnOf(const KQexChartAxis& pTime, double pSeconds)
{
    return std::llround(std::floor(pTime.ToPixel(pSeconds) - pTime.mFromPixel));
}

/// The values of one column that are drawn.
struct KChartColumn
{
    size_t mFirst = 0;
    size_t mLowest = 0;
    size_t mHighest = 0;
    size_t mLast = 0;

    void Include(const std::vector<double>& pValues, size_t pIndex)
    {
        mLowest = pValues[pIndex] < pValues[mLowest] ? pIndex : mLowest;
        mHighest = pValues[pIndex] > pValues[mHighest] ? pIndex : mHighest;
        mLast = pIndex;
    }

    void Append(std::vector<size_t>& pIndices) const
    {
        size_t lColumn[] = {mFirst, std::min(mLowest, mHighest), std::max(mLowest, mHighest), mLast};
        pIndices.insert(pIndices.end(), lColumn, std::unique(lColumn, lColumn + 4));
    }
};

/// The indices of the values to draw.
std::vector<size_t> VisibleValues(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime)
{
    std::vector<size_t> lIndices;
    const bool          lAll = static_cast<double>(pSeries.mValues.size()) <= 2 * (pTime.mToPixel - pTime.mFromPixel);
    KChartColumn        lColumn;
    long long           lNumber = -1;
    for (size_t lIndex = 0; lIndex < pSeries.mValues.size(); ++lIndex)
    {
        if (std::isnan(pSeries.mValues[lIndex]))
        {
            continue;
        }
        if (lAll)
        {
            lIndices.push_back(lIndex);
            continue;
        }
        const long long lOwn = ColumnOf(pTime, pChart.mSeconds[lIndex]);
        if (lOwn == lNumber)
        {
            lColumn.Include(pSeries.mValues, lIndex);
            continue;
        }
        if (lNumber >= 0)
        {
            lColumn.Append(lIndices);
        }
        lNumber = lOwn;
        lColumn = {lIndex, lIndex, lIndex, lIndex};
    }
    if (lNumber >= 0)
    {
        lColumn.Append(lIndices);
    }
    return lIndices;
}

/// Appends the marks of one side, for each stretch beyond it.
void AddMarks(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime, bool pIsAbove,
              std::vector<KQexChartMark>& pMarks)
{
    const double lSign = pIsAbove ? 1 : -1;
    const size_t lBegin = pMarks.size();
    bool         lWasOutside = false;
    for (size_t lIndex = 0; lIndex < pSeries.mValues.size(); ++lIndex)
    {
        const double lValue = pSeries.mValues[lIndex];
        if (!pSeries.IsOutside(lValue) || (pSeries.mHasMax && lValue > pSeries.mMax) != pIsAbove)
        {
            lWasOutside = lWasOutside && std::isnan(lValue);
            continue;
        }
        const double lX = pTime.ToPixel(pChart.mSeconds[lIndex]);
        if (pMarks.size() == lBegin || (!lWasOutside && lX - pMarks.back().mX >= kMarkPitch))
        {
            pMarks.push_back({lX, lValue, pIsAbove});
        }
        else if (lSign * lValue > lSign * pMarks.back().mValue)
        {
            pMarks.back() = {lX, lValue, pIsAbove};
        }
        lWasOutside = true;
    }
}

/// Where the line between two points has the value \p pLimit.
KQexChartPoint CrossingOf(const KQexChartPoint& pOne, const KQexChartPoint& pOther, double pLimit)
{
    const double lPart = (pLimit - pOne.mValue) / (pOther.mValue - pOne.mValue);
    return {pOne.mX + lPart * (pOther.mX - pOne.mX), pLimit};
}

} // namespace

std::vector<KQexChartPoint> VisiblePoints(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime)
{
    std::vector<KQexChartPoint> lPoints;
    for (const size_t lIndex : VisibleValues(pChart, pSeries, pTime))
    {
        lPoints.push_back({pTime.ToPixel(pChart.mSeconds[lIndex]), pSeries.mValues[lIndex]});
    }
    return lPoints;
}

std::vector<std::vector<KQexChartPoint>> PartsBeyond(const std::vector<KQexChartPoint>& pPoints, double pLimit, bool pIsAbove)
{
    std::vector<std::vector<KQexChartPoint>> lParts;
    bool                                     lWasBeyond = false;
    for (size_t lIndex = 0; lIndex < pPoints.size(); ++lIndex)
    {
        const KQexChartPoint& lPoint = pPoints[lIndex];
        const bool            lIsBeyond = pIsAbove ? lPoint.mValue > pLimit : lPoint.mValue < pLimit;
        if (lIsBeyond && !lWasBeyond)
        {
            lParts.emplace_back();
        }
        if (lIndex > 0 && lIsBeyond != lWasBeyond)
        {
            lParts.back().push_back(CrossingOf(pPoints[lIndex - 1], lPoint, pLimit));
        }
        if (lIsBeyond)
        {
            lParts.back().push_back(lPoint);
        }
        lWasBeyond = lIsBeyond;
    }
    return lParts;
}

std::vector<KQexChartMark> MarksOf(const KQexChart& pChart, const KQexChartSeries& pSeries, const KQexChartAxis& pTime)
{
    std::vector<KQexChartMark> lMarks;
    AddMarks(pChart, pSeries, pTime, true, lMarks);
    AddMarks(pChart, pSeries, pTime, false, lMarks);
    return lMarks;
}

} // namespace qexsdk
