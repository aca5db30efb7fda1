#include <qexfigure/picture/kqexchartaxis.h>

#include <qexfigure/kqexnumbertext.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kMostTimeTicks = 12;
constexpr double kMostValueTicks = 7;
constexpr int    kMostTicks = 20;
constexpr double kLeastSpan = 2;    // Of an axis of values.
constexpr double kLimitShare = 0.6; // Of the values' span, by which a limit may lengthen the axis at either end.

/// Steps that people count in, between those with one digit: seconds of minutes, degrees of turns.
constexpr double kRoundSteps[] = {15, 30, 45, 60, 90, 180, 360, 600, 720, 1800, 3600, 7200};

/// The least step of at least \p pLeast that is 1, 2 or 5 times a power of ten.
double DecimalStep(double pLeast)
{
    const double lPower = std::pow(10.0, std::floor(std::log10(pLeast)));
    double       lStep = 10 * lPower;
    for (const double lDigit : {5.0, 2.0, 1.0})
    {
        lStep = lDigit * lPower >= pLeast ? lDigit * lPower : lStep;
    }
    return lStep;
}

/// The same, or one of kRoundSteps if that is less.
double StepOf(double pLeast)
{
    double lStep = DecimalStep(pLeast);
    for (const double lRound : kRoundSteps)
    {
        lStep = lRound >= pLeast && lRound < lStep ? lRound : lStep;
    }
    return lStep;
}

} // namespace

std::vector<double> KQexChartAxis::Ticks() const
{
    std::vector<double> lTicks;
    const double        lFirst = std::ceil(mFrom / mStep - 1e-9);
    // Far from zero, neighbouring ticks may be the same number: the count ends the loop.
    for (int lTick = 0; lTick < kMostTicks && (lFirst + lTick) * mStep <= mTo + 1e-9 * mStep; ++lTick)
    {
        lTicks.push_back((lFirst + lTick) * mStep);
    }
    return lTicks;
}

std::string KQexChartAxis::TickText(double pTick) const
{
    const int lDecimals = mStep < 1 ? static_cast<int>(std::ceil(-std::log10(mStep) - 1e-9)) : 0;
    return FixedText(pTick, lDecimals);
}

KQexChartAxis TimeAxis(const KQexChart& pChart)
{
    KQexChartAxis lAxis;
    const bool    lIsSingle = !(pChart.mSeconds.back() > pChart.mSeconds.front());
    lAxis.mFrom = pChart.mSeconds.front() - (lIsSingle ? 0.5 : 0);
    lAxis.mTo = pChart.mSeconds.back() + (lIsSingle ? 0.5 : 0);
    lAxis.mStep = StepOf((lAxis.mTo - lAxis.mFrom) / kMostTimeTicks);
    return lAxis;
}

KQexChartAxis FrameAxis(const KQexChart& pChart)
{
    KQexChartAxis lAxis;
    lAxis.mFrom = static_cast<double>(pChart.mNumbers.front());
    lAxis.mTo = static_cast<double>(pChart.mNumbers.back());
    lAxis.mStep = DecimalStep(std::max((lAxis.mTo - lAxis.mFrom) / kMostTimeTicks, 1.0));
    return lAxis;
}

KQexChartAxis ValueAxis(const KQexChartPanel& pPanel)
{
    KQexChartAxis lAxis;
    bool          lIsEmpty = true;
    for (const KQexChartSeries& lSeries : pPanel.mSeries)
    {
        for (const double lValue : lSeries.mValues)
        {
            if (!std::isnan(lValue))
            {
                lAxis.mFrom = lIsEmpty ? lValue : std::min(lAxis.mFrom, lValue);
                lAxis.mTo = lIsEmpty ? lValue : std::max(lAxis.mTo, lValue);
                lIsEmpty = false;
            }
        }
    }
    const double lMore = std::max(kLeastSpan - (lAxis.mTo - lAxis.mFrom), 0.0) / 2;
    lAxis.mFrom -= lMore;
    lAxis.mTo += lMore;
    const double lReach = kLimitShare * (lAxis.mTo - lAxis.mFrom);
    const double lLowest = lAxis.mFrom - lReach;
    const double lHighest = lAxis.mTo + lReach;
    const auto   lInclude = [&](double pValue)
    {
        if (pValue >= lLowest && pValue <= lHighest)
        {
            lAxis.mFrom = std::min(lAxis.mFrom, pValue);
            lAxis.mTo = std::max(lAxis.mTo, pValue);
        }
    };
    lInclude(0);
    for (const KQexChartSeries& lSeries : pPanel.mSeries)
    {
        lInclude(lSeries.mHasMin ? lSeries.mMin : 0);
        lInclude(lSeries.mHasMax ? lSeries.mMax : 0);
    }
    const double lMargin = 0.05 * (lAxis.mTo - lAxis.mFrom);
    lAxis.mFrom -= lMargin;
    lAxis.mTo += lMargin;
    lAxis.mStep = StepOf((lAxis.mTo - lAxis.mFrom) / kMostValueTicks);
    return lAxis;
}

} // namespace qexsdk
