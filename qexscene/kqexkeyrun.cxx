#include <qexscene/kqexkeyrun.h>

namespace qexsdk
{

int KQexKeyRun::Find(std::int64_t pTime, int pCount) const
{
    if (pCount == 1)
    {
        return 0;
    }
    // The steps are mStep or one tick more, which leaves few keys to choose from.
    const std::uint64_t lTicks = KeyTimeStep(mStart, pTime);
    const std::uint64_t lLast = static_cast<std::uint64_t>(pCount - 1);
    const std::uint64_t lMost = lTicks / mStep;
    int                 lHigh = static_cast<int>(lMost < lLast ? lMost : lLast);
    if (IsEven() || GetTime(lHigh) <= pTime)
    {
        return lHigh;
    }
    int lLow = static_cast<int>(lTicks / (mStep + 1));
    --lHigh;
    while (lLow < lHigh)
    {
        const int lMiddle = lHigh - (lHigh - lLow) / 2;
        if (GetTime(lMiddle) <= pTime)
        {
            lLow = lMiddle;
        }
        else
        {
            lHigh = lMiddle - 1;
        }
    }
    return lLow;
}

KQexKeyRun KQexKeyRun::Split(int pKey, int pCount)
{
    KQexKeyRun lTail = *this;
    lTail.mStart = GetTime(pKey);
    lTail.mFirst += pKey;
    lTail.mShift = static_cast<int>((static_cast<std::int64_t>(mRise) * pKey + mShift) % mOver);
    if (pCount - pKey == 1)
    {
        lTail.BecomeSingle();
    }
    if (pKey == 1)
    {
        BecomeSingle();
    }
    return lTail;
}

void KQexKeyRun::BecomeSingle()
{
    mStep = 0;
    mRise = 0;
    mOver = 1;
    mShift = 0;
}

bool KQexKeyRunEnd::Extend(KQexKeyRun& pRun, int pCount, std::uint64_t pStep)
{
    if (pCount == 1)
    {
        pRun.mStep = pStep;
        return true;
    }
    if (pRun.IsEven())
    {
        if (pStep == pRun.mStep)
        {
            return true;
        }
        if (pStep != pRun.mStep - 1 && pStep != pRun.mStep + 1)
        {
            return false;
        }
        if (pStep == 0)
        {
            return false;
        }
        Begin(pRun, pCount, pStep < pRun.mStep);
    }
    else if (pStep != pRun.mStep && pStep != pRun.mStep + 1)
    {
        return false;
    }
    const KPoint lPoint = {pCount, pRun.GetRise(pCount - 1) + (pStep != pRun.mStep ? 1 : 0)};
    return mIsKnown ? AddPoint(pRun, lPoint) : pRun.GetRise(pCount) == lPoint.mRise;
}

/// The even run as a line, before the first step of another length: that is one tick shorter or longer. The point that follows
/// always continues it.
void KQexKeyRunEnd::Begin(KQexKeyRun& pRun, int pCount, bool pIsShorter)
{
    mUpperFirst = {0, 0};
    mUpperLast = {pCount - 1, 0};
    if (pIsShorter)
    {
        // All steps so far are the longer ones.
        --pRun.mStep;
        pRun.mRise = 1;
        mUpperLast.mRise = pCount - 1;
    }
    mLowerFirst = mUpperFirst;
    mLowerLast = mUpperLast;
    mIsKnown = true;
}

bool KQexKeyRunEnd::AddPoint(KQexKeyRun& pRun, const KPoint& pPoint)
{
    const auto lRemainder = [](std::int64_t pRise, std::int64_t pOver, const KPoint& pAt)
    {
        return pRise * pAt.mKey - pOver * pAt.mRise;
    };
    const std::int64_t lLeast = -static_cast<std::int64_t>(pRun.mShift);
    const std::int64_t lHere = lRemainder(pRun.mRise, pRun.mOver, pPoint);
    if (lHere < lLeast - 1 || lHere > lLeast + pRun.mOver)
    {
        return false;
    }
    if (lHere == lLeast - 1) // Just above the line: it gets steeper.
    {
        mLowerFirst = mLowerLast;
        mUpperLast = pPoint;
        pRun.mRise = pPoint.mRise - mUpperFirst.mRise;
        pRun.mOver = pPoint.mKey - mUpperFirst.mKey;
        pRun.mShift = static_cast<int>(-lRemainder(pRun.mRise, pRun.mOver, pPoint));
        return true;
    }
    if (lHere == lLeast + pRun.mOver) // Just below: it gets flatter.
    {
        mUpperFirst = mUpperLast;
        mLowerLast = pPoint;
        pRun.mRise = pPoint.mRise - mLowerFirst.mRise;
        pRun.mOver = pPoint.mKey - mLowerFirst.mKey;
        pRun.mShift = static_cast<int>(-lRemainder(pRun.mRise, pRun.mOver, pPoint) + pRun.mOver - 1);
        return true;
    }
    if (lHere == lLeast)
    {
        mUpperLast = pPoint;
    }
    if (lHere == lLeast + pRun.mOver - 1)
    {
        mLowerLast = pPoint;
    }
    return true;
}

} // namespace qexsdk
