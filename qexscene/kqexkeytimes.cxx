#include <qexscene/kqexkeytimes.h>

#include <climits>
#include <numeric>
#include <utility>

namespace qexsdk
{

std::int64_t KQexKeyTimes::Get(int pIndex) const
{
    if (mIsListed)
    {
        return mList[pIndex];
    }
    const KQexKeyRun& lRun = mRuns[FindRun(pIndex)];
    return lRun.GetTime(pIndex - lRun.mFirst);
}

/// How many listed times, or starts of runs, are at or before \p pTime.
int KQexKeyTimes::CountEntriesUpTo(std::int64_t pTime) const
{
    int lLow = 0;
    int lHigh = mIsListed ? mCount : mRuns.GetCount();
    while (lLow < lHigh)
    {
        const int lMiddle = lLow + (lHigh - lLow) / 2;
        if ((mIsListed ? mList[lMiddle] : mRuns[lMiddle].mStart) <= pTime)
        {
            lLow = lMiddle + 1;
        }
        else
        {
            lHigh = lMiddle;
        }
    }
    return lLow;
}

int KQexKeyTimes::Find(std::int64_t pTime) const
{
    const int lEntry = CountEntriesUpTo(pTime) - 1;
    return mIsListed || lEntry < 0 ? lEntry : mRuns[lEntry].mFirst + mRuns[lEntry].Find(pTime, RunCount(lEntry));
}

KQexKeyTimes::KPlace KQexKeyTimes::Locate(std::int64_t pTime) const
{
    const int lEntry = CountEntriesUpTo(pTime) - 1;
    if (lEntry < 0)
    {
        return {-1, 0, 0};
    }
    if (mIsListed)
    {
        return {lEntry, KeyTimeStep(mList[lEntry], pTime), KeyTimeStep(mList[lEntry], mList[lEntry + 1])};
    }
    const KQexKeyRun&  lRun = mRuns[lEntry];
    const int          lCount = RunCount(lEntry);
    const int          lKey = lRun.Find(pTime, lCount);
    const std::int64_t lBefore = lRun.GetTime(lKey);
    const std::int64_t lNext = lKey + 1 < lCount ? lRun.GetTime(lKey + 1) : mRuns[lEntry + 1].mStart;
    return {lRun.mFirst + lKey, KeyTimeStep(lBefore, pTime), KeyTimeStep(lBefore, lNext)};
}

std::uint64_t KQexKeyTimes::GetCommonStep() const
{
    std::uint64_t lCommon = 0;
    for (int lKey = 1; lKey < mList.GetCount(); ++lKey)
    {
        lCommon = std::gcd(lCommon, KeyTimeStep(mList[0], mList[lKey]));
    }
    for (int lRun = 0; lRun < mRuns.GetCount(); ++lRun)
    {
        lCommon = std::gcd(lCommon, KeyTimeStep(mRuns[0].mStart, mRuns[lRun].mStart));
        const int lSteps = RunCount(lRun) - 1;
        const int lLonger = mRuns[lRun].GetRise(lSteps);
        if (lLonger < lSteps)
        {
            lCommon = std::gcd(lCommon, mRuns[lRun].mStep);
        }
        if (lLonger > 0)
        {
            lCommon = std::gcd(lCommon, mRuns[lRun].mStep + 1);
        }
    }
    return lCommon;
}

bool KQexKeyTimes::IsSame(const KQexKeyTimes& pOther) const
{
    if (mCount != pOther.mCount)
    {
        return false;
    }
    bool lSameRuns = !mIsListed && !pOther.mIsListed && mRuns.GetCount() == pOther.mRuns.GetCount();
    for (int lRun = 0; lSameRuns && lRun < mRuns.GetCount(); ++lRun)
    {
        lSameRuns = mRuns[lRun] == pOther.mRuns[lRun];
    }
    if (lSameRuns)
    {
        return true;
    }
    // The same times may be cut into runs in several ways, so unlike runs decide nothing.
    for (int lKey = 0; lKey < mCount; ++lKey)
    {
        if (Get(lKey) != pOther.Get(lKey))
        {
            return false;
        }
    }
    return true;
}

bool KQexKeyTimes::AppendElsewhere(std::int64_t pTime)
{
    if (mIsListed)
    {
        return InsertIntoList(mCount, pTime);
    }
    if (!AppendToRuns(pTime))
    {
        return false;
    }
    ChooseForm();
    return true;
}

bool KQexKeyTimes::Insert(int pIndex, std::int64_t pTime)
{
    if (pIndex == mCount)
    {
        return Append(pTime);
    }
    return mIsListed ? InsertIntoList(pIndex, pTime) : InsertIntoRuns(pIndex, pTime);
}

bool KQexKeyTimes::InsertIntoList(int pIndex, std::int64_t pTime)
{
    if (!mList.MakeRoom(1))
    {
        return false;
    }
    mBreaks -= CountBreaks(pIndex - 1, pIndex);
    mList.InsertInRoom(pIndex, pTime);
    ++mCount;
    mBreaks += CountBreaks(pIndex - 1, pIndex + 1);
    mLast = mList[mCount - 1];
    ChooseForm();
    return true;
}

bool KQexKeyTimes::InsertIntoRuns(int pIndex, std::int64_t pTime)
{
    if (!mRuns.MakeRoom(2))
    {
        return false;
    }
    int lRun = 0; // The new run's place: before the run that the time precedes, or between the halves of the one it falls into.
    if (pIndex > 0)
    {
        lRun = FindRun(pIndex - 1) + 1;
        if (lRun == mRuns.GetCount() || mRuns[lRun].mFirst != pIndex)
        {
            KQexKeyRun& lCut = mRuns[lRun - 1];
            mRuns.InsertInRoom(lRun, lCut.Split(pIndex - lCut.mFirst, RunCount(lRun - 1)));
        }
    }
    mRuns.InsertInRoom(lRun, KQexKeyRun(pTime, pIndex));
    for (int lLater = lRun + 1; lLater < mRuns.GetCount(); ++lLater)
    {
        ++mRuns[lLater].mFirst;
    }
    ++mCount;
    // A half of one key may now belong to the run on its other side.
    MergeRuns(lRun - 2, lRun + 2);
    mRuns.ShrinkIdle();
    mRunEnd.Forget();
    ChooseForm();
    return true;
}

int KQexKeyTimes::FindRun(int pIndex) const
{
    int lLow = 0;
    int lHigh = mRuns.GetCount() - 1;
    while (lLow < lHigh)
    {
        const int lMiddle = lHigh - (lHigh - lLow) / 2;
        if (mRuns[lMiddle].mFirst <= pIndex)
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

int KQexKeyTimes::RunCount(int pRun) const
{
    return (pRun + 1 < mRuns.GetCount() ? mRuns[pRun + 1].mFirst : mCount) - mRuns[pRun].mFirst;
}

std::int64_t KQexKeyTimes::RunLast(int pRun) const
{
    return mRuns[pRun].GetTime(RunCount(pRun) - 1);
}

/// Makes one run of two if they are even and go on with one step.
bool KQexKeyTimes::MergeWithNext(int pRun)
{
    KQexKeyRun&         lRun = mRuns[pRun];
    const KQexKeyRun&   lNext = mRuns[pRun + 1];
    const std::uint64_t lGap = KeyTimeStep(RunLast(pRun), lNext.mStart);
    if (!lRun.IsEven() || !lNext.IsEven() || (lRun.mStep != 0 && lRun.mStep != lGap) || (lNext.mStep != 0 && lNext.mStep != lGap))
    {
        return false;
    }
    lRun.mStep = lGap;
    mRuns.Remove(pRun + 1);
    return true;
}

void KQexKeyTimes::MergeRuns(int pFirst, int pLast)
{
    int lRun = pFirst > 0 ? pFirst : 0;
    int lLeft = pLast - lRun;
    while (lLeft-- > 0 && lRun + 1 < mRuns.GetCount())
    {
        if (!MergeWithNext(lRun))
        {
            ++lRun;
        }
    }
}

bool KQexKeyTimes::AppendToRuns(std::int64_t pTime)
{
    const int lLast = mRuns.GetCount() - 1;
    if (lLast < 0 || !mRunEnd.Extend(mRuns[lLast], RunCount(lLast), KeyTimeStep(mLast, pTime)))
    {
        if (!mRuns.Append(KQexKeyRun(pTime, mCount)))
        {
            return false;
        }
        mRunEnd.Forget();
    }
    mLast = pTime;
    ++mCount;
    return true;
}

/// How many of the listed keys \p pFrom to \p pTo have keys on both sides and unlike steps to them.
int KQexKeyTimes::CountBreaks(int pFrom, int pTo) const
{
    const int lFrom = pFrom > 1 ? pFrom : 1;
    const int lTo = pTo < mCount - 2 ? pTo : mCount - 2;
    int       lBreaks = 0;
    for (int lKey = lFrom; lKey <= lTo; ++lKey)
    {
        if (KeyTimeStep(mList[lKey - 1], mList[lKey]) != KeyTimeStep(mList[lKey], mList[lKey + 1]))
        {
            ++lBreaks;
        }
    }
    return lBreaks;
}

/// Changes over to the form that takes less room, when it is clearly less. Without the memory to do so all stays as it is.
void KQexKeyTimes::ChooseForm()
{
    if (!mIsListed)
    {
        if (mRuns.GetCount() > 4 && mRuns.GetCount() > mCount / 4)
        {
            TurnIntoList();
        }
    }
    else if (mBreaks < mCount / 8)
    {
        TurnIntoRuns(mCount / 8);
    }
    else if (mCount >= mNextTry)
    {
        // Steps that differ by rounding do not show in the number of breaks, so whether runs are few must be tried.
        mNextTry = mCount > INT_MAX / 2 ? INT_MAX : 2 * mCount;
        TurnIntoRuns(mCount / 8);
    }
}

void KQexKeyTimes::TurnIntoList()
{
    if (!mList.SetCapacity(mCount))
    {
        return;
    }
    for (int lRun = 0; lRun < mRuns.GetCount(); ++lRun)
    {
        const int lKeys = RunCount(lRun);
        for (int lKey = 0; lKey < lKeys; ++lKey)
        {
            mList.AppendInRoom(mRuns[lRun].GetTime(lKey));
        }
    }
    mRuns.Clear();
    mIsListed = true;
    mBreaks = CountBreaks(0, mCount);
    mNextTry = mCount > INT_MAX / 2 ? INT_MAX : 2 * mCount;
}

/// False, and the times still listed, when it takes more than \p pMost runs or memory runs out.
bool KQexKeyTimes::TurnIntoRuns(int pMost)
{
    const int lCount = mCount;
    mCount = 0;
    mIsListed = false;
    mRunEnd.Forget();
    for (int lKey = 0; lKey < lCount; ++lKey)
    {
        if (!AppendToRuns(mList[lKey]) || mRuns.GetCount() > pMost)
        {
            mRuns.Clear();
            mLast = mList[lCount - 1];
            mCount = lCount;
            mIsListed = true;
            return false;
        }
    }
    mList.Clear();
    return true;
}

void KQexKeyTimes::Clear()
{
    mRuns.Clear();
    mList.Clear();
    mLast = 0;
    mCount = 0;
    mBreaks = 0;
    mNextTry = 0;
    mIsListed = false;
}

void KQexKeyTimes::Compact()
{
    mRuns.SetCapacity(mRuns.GetCount());
    mList.SetCapacity(mList.GetCount());
}

void KQexKeyTimes::Swap(KQexKeyTimes& pOther) noexcept
{
    mRuns.Swap(pOther.mRuns);
    mList.Swap(pOther.mList);
    std::swap(mRunEnd, pOther.mRunEnd);
    std::swap(mLast, pOther.mLast);
    std::swap(mCount, pOther.mCount);
    std::swap(mBreaks, pOther.mBreaks);
    std::swap(mNextTry, pOther.mNextTry);
    std::swap(mIsListed, pOther.mIsListed);
}

} // namespace qexsdk
