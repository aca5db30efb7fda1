#include <qexscene/kqexkeytimes.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace qexsdk
{

int KQexKeyTimes::Find(std::int64_t pTime) const
{
    if (!IsEven())
    {
        const std::int64_t* lTimes = mList.GetItems();
        return static_cast<int>(std::upper_bound(lTimes, lTimes + mCount, pTime) - lTimes) - 1;
    }
    if (mCount == 0 || pTime < mStart)
    {
        return -1;
    }
    const std::uint64_t lLast = static_cast<std::uint64_t>(mCount - 1);
    return static_cast<int>(mCount == 1 ? 0 : std::min(Step(mStart, pTime) / mStep, lLast));
}

KQexKeyTimes::KPlace KQexKeyTimes::Locate(std::int64_t pTime) const
{
    const int lKey = Find(pTime);
    if (lKey < 0)
    {
        return {-1, 0, 0};
    }
    const std::int64_t lBefore = Get(lKey);
    return {lKey, Step(lBefore, pTime), Step(lBefore, Get(lKey + 1))};
}

std::uint64_t KQexKeyTimes::GetCommonStep() const
{
    std::uint64_t lCommon = mStep;
    for (int lKey = 1; lKey < mList.GetCount(); ++lKey)
    {
        lCommon = std::gcd(lCommon, Step(mList[0], mList[lKey]));
    }
    return lCommon;
}

bool KQexKeyTimes::IsSame(const KQexKeyTimes& pOther) const
{
    // Times that are evenly spaced are never listed, so the forms of the same times are the same.
    if (mCount != pOther.mCount || IsEven() != pOther.IsEven())
    {
        return false;
    }
    if (IsEven())
    {
        return mStart == pOther.mStart && mStep == pOther.mStep;
    }
    return std::equal(mList.GetItems(), mList.GetItems() + mCount, pOther.mList.GetItems());
}

bool KQexKeyTimes::AppendElsewhere(std::int64_t pTime)
{
    if (mCount < 2)
    {
        mStep = mCount == 0 ? 0 : Step(mStart, pTime);
        mStart = mCount == 0 ? pTime : mStart;
    }
    else if ((IsEven() && !TurnIntoList()) || !mList.Append(pTime))
    {
        return false;
    }
    ++mCount;
    return true;
}

bool KQexKeyTimes::Insert(int pIndex, std::int64_t pTime)
{
    if (pIndex == mCount)
    {
        return Append(pTime);
    }
    if (pIndex == 0 && IsEven() && (mCount == 1 || Step(pTime, mStart) == mStep))
    {
        mStep = Step(pTime, mStart);
        mStart = pTime;
        ++mCount;
        return true;
    }
    if ((IsEven() && !TurnIntoList()) || !mList.MakeRoom(1))
    {
        return false;
    }
    mList.InsertInRoom(pIndex, pTime);
    ++mCount;
    TurnIntoRun();
    return true;
}

/// Lists evenly spaced times, with room for one more. The caller adds one that makes them uneven.
bool KQexKeyTimes::TurnIntoList()
{
    if (!mList.MakeRoom(mCount + 1))
    {
        return false;
    }
    for (int lKey = 0; lKey < mCount; ++lKey)
    {
        mList.AppendInRoom(After(mStart, mStep * static_cast<std::uint64_t>(lKey)));
    }
    mStart = 0;
    mStep = 0;
    return true;
}

/// Forgets the list when its times are evenly spaced, as a time put between others can make them.
void KQexKeyTimes::TurnIntoRun()
{
    const std::uint64_t lStep = Step(mList[0], mList[1]);
    for (int lKey = 2; lKey < mCount; ++lKey)
    {
        if (Step(mList[lKey - 1], mList[lKey]) != lStep)
        {
            return;
        }
    }
    mStart = mList[0];
    mStep = lStep;
    mList.Clear();
}

void KQexKeyTimes::Clear()
{
    mList.Clear();
    mStart = 0;
    mStep = 0;
    mCount = 0;
}

void KQexKeyTimes::Swap(KQexKeyTimes& pOther) noexcept
{
    mList.Swap(pOther.mList);
    std::swap(mStart, pOther.mStart);
    std::swap(mStep, pOther.mStep);
    std::swap(mCount, pOther.mCount);
}

} // namespace qexsdk
