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
    return static_cast<int>(mCount == 1 ? 0 : std::min(TicksBetween(mStart, pTime) / mStep, lLast));
}

KQexKeyTimes::KSegment KQexKeyTimes::Locate(std::int64_t pTime) const
{
    const int lKey = Find(pTime);
    if (lKey < 0)
    {
        return {-1, 0, 0};
    }
    const std::int64_t lBefore = Get(lKey);
    return {lKey, TicksBetween(lBefore, pTime), TicksBetween(lBefore, Get(lKey + 1))};
}

std::uint64_t KQexKeyTimes::GetCommonStep() const
{
    std::uint64_t lCommon = mStep;
    for (int lKey = 1; lKey < mList.GetCount(); ++lKey)
    {
        lCommon = std::gcd(lCommon, TicksBetween(mList[0], mList[lKey]));
    }
    return lCommon;
}

bool KQexKeyTimes::IsSame(const KQexKeyTimes& pOther) const
{
    // Evenly spaced times are never stored as a list, so equal times have the same form.
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

bool KQexKeyTimes::AppendUneven(std::int64_t pTime)
{
    if (mCount < 2)
    {
        mStep = mCount == 0 ? 0 : TicksBetween(mStart, pTime);
        mStart = mCount == 0 ? pTime : mStart;
    }
    else if ((IsEven() && !ConvertToList()) || !mList.Append(pTime))
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
    if (pIndex == 0 && IsEven() && (mCount == 1 || TicksBetween(pTime, mStart) == mStep))
    {
        mStep = TicksBetween(pTime, mStart);
        mStart = pTime;
        ++mCount;
        return true;
    }
    if ((IsEven() && !ConvertToList()) || !mList.ReserveMore(1))
    {
        return false;
    }
    mList.InsertReserved(pIndex, pTime);
    ++mCount;
    ConvertToEven();
    return true;
}

/// Converts evenly spaced times to a list, with capacity for one more, which the caller adds.
bool KQexKeyTimes::ConvertToList()
{
    if (!mList.ReserveMore(mCount + 1))
    {
        return false;
    }
    for (int lKey = 0; lKey < mCount; ++lKey)
    {
        mList.AppendReserved(After(mStart, mStep * static_cast<std::uint64_t>(lKey)));
    }
    mStart = 0;
    mStep = 0;
    return true;
}

/// Converts the list to start and step if its times are evenly spaced, which an inserted time can make them.
void KQexKeyTimes::ConvertToEven()
{
    const std::uint64_t lStep = TicksBetween(mList[0], mList[1]);
    for (int lKey = 2; lKey < mCount; ++lKey)
    {
        if (TicksBetween(mList[lKey - 1], mList[lKey]) != lStep)
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
