#ifndef QEXSCENE_KQEXKEYRUN_H
#define QEXSCENE_KQEXKEYRUN_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstdint>

namespace qexsdk
{

/// Ticks from one time to a later one; a difference of two 64-bit numbers with a sign may not fit into one with a sign.
inline std::uint64_t KeyTimeStep(std::int64_t pFrom, std::int64_t pTo)
{
    return static_cast<std::uint64_t>(pTo) - static_cast<std::uint64_t>(pFrom);
}

/// The time \p pTicks ticks after another.
inline std::int64_t KeyTimeAfter(std::int64_t pFrom, std::uint64_t pTicks)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(pFrom) + pTicks);
}

/// Times of evenly spaced keys. Key k of the run (0-based) is at mStart + k · mStep + floor((k · mRise + mShift) / mOver): at a
/// rate whose frame is no whole number of ticks, rounding makes some steps a tick longer than others, and then mRise / mOver is
/// the part of a tick that mStep lacks. A run does not know its length.
struct QEX_API KQexKeyRun
{
    std::int64_t  mStart;     ///< Time of its first key.
    std::uint64_t mStep;      ///< 0 in a run of one key only.
    int           mFirst;     ///< Index of its first key in the curve.
    int           mRise = 0;  ///< 0 … mOver - 1; 0 when all steps are equal.
    int           mOver = 1;  ///< Positive.
    int           mShift = 0; ///< 0 … mOver - 1.

    /// A run of the one key with index \p pFirst at time \p pStart.
    KQexKeyRun(std::int64_t pStart, int pFirst) : mStart(pStart), mStep(0), mFirst(pFirst) {}

    bool IsEven() const { return mRise == 0; } ///< Whether all steps are equal.

    /// How many of the steps up to key \p pKey are longer.
    int GetRise(int pKey) const { return static_cast<int>((static_cast<std::int64_t>(mRise) * pKey + mShift) / mOver); }

    /// Time in ticks of key \p pKey of the run, by the formula above.
    std::int64_t GetTime(int pKey) const
    {
        const std::int64_t lTime = KeyTimeAfter(mStart, mStep * static_cast<std::uint64_t>(pKey));
        return IsEven() ? lTime : KeyTimeAfter(lTime, static_cast<std::uint64_t>(GetRise(pKey)));
    }

    /// The last of its \p pCount keys at or before \p pTime, which is not before the first.
    int Find(std::int64_t pTime, int pCount) const;

    /// What is left from key \p pKey on of the run's \p pCount keys; this run then ends before it.
    KQexKeyRun Split(int pKey, int pCount);

    /// Whether all six numbers are the same.
    bool operator==(const KQexKeyRun& pOther) const
    {
        return mStart == pOther.mStart && mStep == pOther.mStep && mFirst == pOther.mFirst && mRise == pOther.mRise &&
               mOver == pOther.mOver && mShift == pOther.mShift;
    }

private:
    void BecomeSingle();
};

/// Finds the line that a growing run's rounded times lie on, key by key: the recognition of digital straight segments after
/// Debled-Rennesson and Reveillès (1995). Kept beside the run that grows.
class QEX_API KQexKeyRunEnd
{
public:
    /// Forgets what is known of the last run. It can then still grow by the keys that lie on the line it has.
    void Forget() { mIsKnown = false; }

    /// Takes the next key into a run of \p pCount keys. False, and the run unchanged, when no line goes through all of them.
    /// \param pRun   the run, as it was when this last extended it.
    /// \param pCount its keys so far, at least one.
    /// \param pStep  ticks from the run's last key to the new one.
    bool Extend(KQexKeyRun& pRun, int pCount, std::uint64_t pStep);

private:
    /// A key's index in the run and its GetRise.
    struct KPoint
    {
        int mKey;
        int mRise;
    };

    void Begin(KQexKeyRun& pRun, int pCount, bool pIsShorter);
    bool AddPoint(KQexKeyRun& pRun, const KPoint& pPoint);

    // The first and last keys that touch the line from above (their rise as high as rounding allows) and from below.
    KPoint mUpperFirst = {0, 0};
    KPoint mUpperLast = {0, 0};
    KPoint mLowerFirst = {0, 0};
    KPoint mLowerLast = {0, 0};
    bool   mIsKnown = false;
};

} // namespace qexsdk

#endif
