#include <qexscene/kqexkeytimes.h>

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
    const KRun& lRun = mRuns[FindRun(pIndex)];
    return After(lRun.mStart, lRun.mStep * static_cast<std::uint64_t>(pIndex - lRun.mFirst));
}

int KQexKeyTimes::Find(std::int64_t pTime) const
{
    // How many entries (times, or starts of runs) are at or before pTime.
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
    if (mIsListed || lLow == 0)
    {
        return lLow - 1;
    }
    const KRun& lRun = mRuns[lLow - 1];
    const int   lLastInRun = RunCount(lLow - 1) - 1;
    if (lLastInRun == 0)
    {
        return lRun.mFirst;
    }
    const std::uint64_t lSteps = Step(lRun.mStart, pTime) / lRun.mStep;
    return lRun.mFirst + (lSteps < static_cast<std::uint64_t>(lLastInRun) ? static_cast<int>(lSteps) : lLastInRun);
}

std::uint64_t KQexKeyTimes::GetCommonStep() const
{
    std::uint64_t lCommon = 0;
    if (mIsListed)
    {
        for (int lKey = 1; lKey < mCount; ++lKey)
        {
            lCommon = std::gcd(lCommon, Step(mList[0], mList[lKey]));
        }
        return lCommon;
    }
    for (int lRun = 0; lRun < mRuns.GetCount(); ++lRun)
    {
        lCommon = std::gcd(lCommon, Step(mRuns[0].mStart, mRuns[lRun].mStart));
        if (RunCount(lRun) > 1)
        {
            lCommon = std::gcd(lCommon, mRuns[lRun].mStep);
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
        const KRun& lMine = mRuns[lRun];
        const KRun& lOther = pOther.mRuns[lRun];
        lSameRuns = lMine.mStart == lOther.mStart && lMine.mStep == lOther.mStep && lMine.mFirst == lOther.mFirst;
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
            SplitRun(lRun - 1, pIndex);
        }
    }
    mRuns.InsertInRoom(lRun, KRun{pTime, 0, pIndex});
    for (int lLater = lRun + 1; lLater < mRuns.GetCount(); ++lLater)
    {
        ++mRuns[lLater].mFirst;
    }
    ++mCount;
    // A half of one key may now belong to the run on its other side.
    MergeRuns(lRun - 2, lRun + 2);
    mRuns.ShrinkIdle();
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
    return After(mRuns[pRun].mStart, mRuns[pRun].mStep * static_cast<std::uint64_t>(RunCount(pRun) - 1));
}

/// Cuts a run before the key \p pIndex, which is in it and not its first. There must be room.
void KQexKeyTimes::SplitRun(int pRun, int pIndex)
{
    KRun&     lRun = mRuns[pRun];
    const int lEnd = lRun.mFirst + RunCount(pRun);
    KRun      lTail{After(lRun.mStart, lRun.mStep * static_cast<std::uint64_t>(pIndex - lRun.mFirst)), lRun.mStep, pIndex};
    if (lEnd - pIndex == 1)
    {
        lTail.mStep = 0;
    }
    if (pIndex - lRun.mFirst == 1)
    {
        lRun.mStep = 0;
    }
    mRuns.InsertInRoom(pRun + 1, lTail);
}

/// Makes one run of two if they go on with one step.
bool KQexKeyTimes::MergeWithNext(int pRun)
{
    KRun&               lRun = mRuns[pRun];
    const std::uint64_t lNextStep = mRuns[pRun + 1].mStep;
    const std::uint64_t lGap = Step(RunLast(pRun), mRuns[pRun + 1].mStart);
    if ((lRun.mStep != 0 && lRun.mStep != lGap) || (lNextStep != 0 && lNextStep != lGap))
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
    KRun* lRun = mCount > 0 ? &mRuns[mRuns.GetCount() - 1] : nullptr;
    if (lRun != nullptr && lRun->mStep == 0)
    {
        lRun->mStep = Step(mLast, pTime);
    }
    else if (lRun == nullptr || lRun->mStep != Step(mLast, pTime))
    {
        if (!mRuns.Append(KRun{pTime, 0, mCount}))
        {
            return false;
        }
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
        if (Step(mList[lKey - 1], mList[lKey]) != Step(mList[lKey], mList[lKey + 1]))
        {
            ++lBreaks;
        }
    }
    return lBreaks;
}

/// Changes over to the form that takes less room, when it is clearly less. Without the memory to do so all stays as it is.
void KQexKeyTimes::ChooseForm()
{
    if (mIsListed)
    {
        if (mBreaks < mCount / 8)
        {
            TurnIntoRuns();
        }
    }
    else if (mRuns.GetCount() > 4 && mRuns.GetCount() > mCount / 3)
    {
        TurnIntoList();
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
        const int    lKeys = RunCount(lRun);
        std::int64_t lTime = mRuns[lRun].mStart;
        for (int lKey = 0; lKey < lKeys; ++lKey)
        {
            mList.AppendInRoom(lTime);
            lTime = After(lTime, mRuns[lRun].mStep);
        }
    }
    mRuns.Clear();
    mIsListed = true;
    mBreaks = CountBreaks(0, mCount);
}

void KQexKeyTimes::TurnIntoRuns()
{
    // A run begins with the first key, and each further one where the step changed at the key before: that many are enough.
    if (!mRuns.SetCapacity(mBreaks + 1))
    {
        return;
    }
    mIsListed = false;
    const int lCount = mCount;
    mCount = 0;
    for (int lKey = 0; lKey < lCount; ++lKey)
    {
        AppendToRuns(mList[lKey]);
    }
    mList.Clear();
    mRuns.ShrinkIdle();
}

void KQexKeyTimes::Clear()
{
    mRuns.Clear();
    mList.Clear();
    mLast = 0;
    mCount = 0;
    mBreaks = 0;
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
    std::swap(mLast, pOther.mLast);
    std::swap(mCount, pOther.mCount);
    std::swap(mBreaks, pOther.mBreaks);
    std::swap(mIsListed, pOther.mIsListed);
}

} // namespace qexsdk
