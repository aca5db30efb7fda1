#ifndef KBASELIB_KBASE_KTIME_H
#define KBASELIB_KBASE_KTIME_H

#include <kbaselib/kbase/kbaseexport.h>

#include <climits>
#include <cmath>
#include <type_traits>

namespace qexsdk
{

/// A frame rate as a fraction, so that film and video rates are exact: NTSC is 30000/1001. Both numbers are positive, the first at most
/// 1,000,000, the second at most 10,000.
struct KFrameRate
{
    int mFrames = 30; ///< Frames in mSeconds seconds.
    int mSeconds = 1; ///< Seconds that mFrames frames last.

    /// Frames per second.
    double GetDouble() const { return static_cast<double>(mFrames) / static_cast<double>(mSeconds); }
};

/// A time or a duration as a signed 64-bit count of flicks, 705,600,000 per second: one frame at 24, 25, 30, 48, 50, 60, 90, 100, 120
/// or 240 frames per second, and at 30000/1001, is a whole number of them. The range is about 414 years both ways. Sums, differences
/// and conversions are clamped to kMin and kMax; FromFrame also clamps what is less than mSeconds seconds away from them.
class QEX_API KTime
{
public:
    static constexpr long long kTicksPerSecond = 705600000LL; ///< Flicks per second.
    static constexpr long long kMin = LLONG_MIN;              ///< The earliest time.
    static constexpr long long kMax = LLONG_MAX;              ///< The latest time.

    /// Time zero.
    constexpr KTime() = default;

    /// The time \p pTicks flicks after zero. Explicit: a bare number could be meant as seconds or as a frame.
    constexpr explicit KTime(long long pTicks) : mTicks(pTicks) {}

    /// Seconds are not ticks: use FromSeconds.
    template <typename T, typename = std::enable_if_t<std::is_floating_point_v<T>>>
    KTime(T pSeconds) = delete;

    /// Flicks since zero.
    constexpr long long Get() const { return mTicks; }
    /// Sets the flicks since zero.
    void Set(long long pTicks) { mTicks = pTicks; }

    /// The flick nearest to \p pSeconds; NaN gives zero.
    static KTime FromSeconds(double pSeconds) { return KTime(ToTicks(pSeconds * static_cast<double>(kTicksPerSecond))); }

    /// Seconds since zero.
    double GetSeconds() const { return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond); }

    /// The flick nearest to the start of frame \p pFrame (frame 0 at time zero). Exact at every rate whose frame is a whole number of
    /// flicks; at the others, errors do not accumulate.
    static constexpr KTime FromFrame(long long pFrame, const KFrameRate& pRate)
    {
        // A period of mFrames frames lasts exactly mSeconds seconds; only the remainder is rounded.
        const long long lPeriodTicks = kTicksPerSecond * pRate.mSeconds;
        const long long lPeriods = FloorDivide(pFrame, pRate.mFrames);
        const long long lRemainder = FloorRemainder(pFrame, pRate.mFrames);
        if (lPeriods > kMax / lPeriodTicks - 1)
        {
            return KTime(kMax);
        }
        if (lPeriods < kMin / lPeriodTicks)
        {
            return KTime(kMin);
        }
        return KTime(lPeriods * lPeriodTicks + (lRemainder * lPeriodTicks + pRate.mFrames / 2) / pRate.mFrames);
    }

    /// The number of the frame at this time: the last one whose FromFrame is not after it.
    constexpr long long GetFrame(const KFrameRate& pRate) const
    {
        const long long lPeriodTicks = kTicksPerSecond * pRate.mSeconds;
        const long long lPeriods = FloorDivide(mTicks, lPeriodTicks);
        const long long lFrame = lPeriods * pRate.mFrames + FloorRemainder(mTicks, lPeriodTicks) * pRate.mFrames / lPeriodTicks;
        // A frame starts at a rounded flick, so the next one may already start at this time.
        return FromFrame(lFrame + 1, pRate).mTicks <= mTicks ? lFrame + 1 : lFrame;
    }

    /// \name Order and arithmetic of tick counts
    ///@{
    constexpr bool operator==(KTime pOther) const { return mTicks == pOther.mTicks; } ///< Same tick.
    constexpr bool operator!=(KTime pOther) const { return mTicks != pOther.mTicks; } ///< Different tick.
    constexpr bool operator<(KTime pOther) const { return mTicks < pOther.mTicks; }   ///< Earlier.
    constexpr bool operator<=(KTime pOther) const { return mTicks <= pOther.mTicks; } ///< Earlier or the same tick.
    constexpr bool operator>(KTime pOther) const { return mTicks > pOther.mTicks; }   ///< Later.
    constexpr bool operator>=(KTime pOther) const { return mTicks >= pOther.mTicks; } ///< Later or the same tick.

    /// The sum, clamped to kMin and kMax.
    constexpr KTime operator+(KTime pOther) const
    {
        if (pOther.mTicks >= 0)
        {
            return KTime(mTicks > kMax - pOther.mTicks ? kMax : mTicks + pOther.mTicks);
        }
        return KTime(mTicks < kMin - pOther.mTicks ? kMin : mTicks + pOther.mTicks);
    }
    /// The difference, clamped to kMin and kMax.
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

    /// Remainder of FloorDivide: 0 to \p pDivisor - 1.
    static constexpr long long FloorRemainder(long long pValue, long long pDivisor)
    {
        const long long lRemainder = pValue % pDivisor;
        return lRemainder < 0 ? lRemainder + pDivisor : lRemainder;
    }

    /// Nearest tick count, clamped to the range; NaN gives zero.
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
