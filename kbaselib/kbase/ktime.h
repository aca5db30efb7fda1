#ifndef KBASELIB_KBASE_KTIME_H
#define KBASELIB_KBASE_KTIME_H

#include <kbaselib/kbase/kbaseexport.h>

#include <climits>
#include <cmath>

namespace qexsdk
{

/// Frames a second as a fraction, so that film and video rates are exact: 30000/1001 is NTSC's. Both numbers are positive, the
/// first at most 1,000,000, the second at most 10,000.
struct KFrameRate
{
    int mFrames = 30; ///< Frames …
    int mSeconds = 1; ///< … in so many seconds.

    /// Frames a second.
    double GetDouble() const { return static_cast<double>(mFrames) / static_cast<double>(mSeconds); }
};

/// A time or a duration as a signed 64-bit count of flicks, 705,600,000 to the second: one frame at 24, 25, 30, 48, 50, 60, 90,
/// 100, 120 or 240 frames a second, and at 30000/1001, is a whole number of them. Reaches about 414 years both ways.
/// Sums, differences and conversions beyond that stop at kMin and kMax (a frame's, within a few seconds before them).
class QEX_API KTime
{
public:
    static constexpr long long kTicksPerSecond = 705600000LL; ///< Flicks in a second.
    static constexpr long long kMin = LLONG_MIN;              ///< The earliest time.
    static constexpr long long kMax = LLONG_MAX;              ///< The latest time.

    /// Time zero.
    constexpr KTime() = default;

    /// The time \p pTicks flicks after zero.
    constexpr KTime(long long pTicks) : mTicks(pTicks) {}

    /// Flicks since zero.
    constexpr long long Get() const { return mTicks; }
    /// Sets the flicks since zero.
    void Set(long long pTicks) { mTicks = pTicks; }

    /// The flick nearest to \p pSeconds; not a number gives zero.
    static KTime FromSeconds(double pSeconds) { return KTime(ToTicks(pSeconds * static_cast<double>(kTicksPerSecond))); }

    /// Seconds since zero.
    double GetSeconds() const { return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond); }

    /// The flick nearest to the start of frame \p pFrame (frame 0 at time zero). Exact at every rate whose frame is a whole
    /// number of flicks, and errors never add up at the others.
    static constexpr KTime FromFrame(long long pFrame, const KFrameRate& pRate)
    {
        // Every run of mFrames frames lasts mSeconds seconds exactly; only what remains is rounded.
        const long long lRunTicks = kTicksPerSecond * pRate.mSeconds;
        const long long lRuns = FloorDivide(pFrame, pRate.mFrames);
        const long long lRest = FloorRest(pFrame, pRate.mFrames);
        if (lRuns > kMax / lRunTicks - 1)
        {
            return KTime(kMax);
        }
        if (lRuns < kMin / lRunTicks)
        {
            return KTime(kMin);
        }
        return KTime(lRuns * lRunTicks + (lRest * lRunTicks + pRate.mFrames / 2) / pRate.mFrames);
    }

    /// The number of the frame that lasts at this time: the last one whose FromFrame is not after it.
    constexpr long long GetFrame(const KFrameRate& pRate) const
    {
        const long long lRunTicks = kTicksPerSecond * pRate.mSeconds;
        const long long lRuns = FloorDivide(mTicks, lRunTicks);
        const long long lFrame = lRuns * pRate.mFrames + FloorRest(mTicks, lRunTicks) * pRate.mFrames / lRunTicks;
        // The start of a frame is rounded to a flick, which can bring the next one's back to this time.
        return FromFrame(lFrame + 1, pRate).mTicks <= mTicks ? lFrame + 1 : lFrame;
    }

    /// \name Order and arithmetic of tick counts
    ///@{
    constexpr bool operator==(KTime pOther) const { return mTicks == pOther.mTicks; } ///< Same tick.
    constexpr bool operator!=(KTime pOther) const { return mTicks != pOther.mTicks; } ///< Another tick.
    constexpr bool operator<(KTime pOther) const { return mTicks < pOther.mTicks; }   ///< Earlier.
    constexpr bool operator<=(KTime pOther) const { return mTicks <= pOther.mTicks; } ///< Earlier or the same tick.
    constexpr bool operator>(KTime pOther) const { return mTicks > pOther.mTicks; }   ///< Later.
    constexpr bool operator>=(KTime pOther) const { return mTicks >= pOther.mTicks; } ///< Later or the same tick.

    /// The sum, kMin or kMax where it would lie beyond them.
    constexpr KTime operator+(KTime pOther) const
    {
        if (pOther.mTicks >= 0)
        {
            return KTime(mTicks > kMax - pOther.mTicks ? kMax : mTicks + pOther.mTicks);
        }
        return KTime(mTicks < kMin - pOther.mTicks ? kMin : mTicks + pOther.mTicks);
    }
    /// The difference, kMin or kMax where it would lie beyond them.
    constexpr KTime operator-(KTime pOther) const
    {
        if (pOther.mTicks >= 0)
        {
            return KTime(mTicks < kMin + pOther.mTicks ? kMin : mTicks - pOther.mTicks);
        }
        return KTime(mTicks > kMax + pOther.mTicks ? kMax : mTicks - pOther.mTicks);
    }
    constexpr KTime& operator+=(KTime pOther) { return *this = *this + pOther; } ///< As operator+.
    constexpr KTime& operator-=(KTime pOther) { return *this = *this - pOther; } ///< As operator-.
    ///@}

private:
    /// Quotient rounded towards minus infinity; \p pDivisor is positive.
    static constexpr long long FloorDivide(long long pValue, long long pDivisor)
    {
        return pValue / pDivisor - (pValue % pDivisor < 0 ? 1 : 0);
    }

    /// What FloorDivide leaves, 0 to the divisor without it.
    static constexpr long long FloorRest(long long pValue, long long pDivisor)
    {
        const long long lRest = pValue % pDivisor;
        return lRest < 0 ? lRest + pDivisor : lRest;
    }

    /// Nearest tick count, stopping at the ends of the range.
    static long long ToTicks(double pTicks)
    {
        constexpr double kLimit = 9223372036854775808.0;
        if (std::isnan(pTicks))
        {
            return 0;
        }
        return pTicks >= kLimit ? kMax : pTicks <= -kLimit ? kMin : static_cast<long long>(std::nearbyint(pTicks));
    }

    long long mTicks = 0;
};

} // namespace qexsdk

#endif
