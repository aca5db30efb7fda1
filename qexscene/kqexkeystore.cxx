#include <qexscene/kqexkeystore.h>

namespace qexsdk
{

int KQexKeyStore::Set(std::int64_t pTime, float pValue)
{
    const int lCount = GetCount();
    if (lCount == 0 || pTime > mTimes.GetLast())
    {
        if (!mValues.ReserveFor(pValue) || !mTimes.Append(pTime))
        {
            return -1;
        }
        mValues.AppendReserved(pValue);
        return lCount;
    }
    const int lIndex = mTimes.Find(pTime);
    if (lIndex >= 0 && mTimes.Get(lIndex) == pTime)
    {
        return mValues.Set(lIndex, pValue) ? lIndex : -1;
    }
    return Insert(lIndex + 1, pTime, pValue) ? lIndex + 1 : -1;
}

/// As in Set, reserves for the value first, so that nothing can fail after the time is inserted.
bool KQexKeyStore::Insert(int pIndex, std::int64_t pTime, float pValue)
{
    if (!mValues.ReserveFor(pValue) || !mTimes.Insert(pIndex, pTime))
    {
        return false;
    }
    mValues.InsertReserved(pIndex, pValue);
    return true;
}

double KQexKeyStore::Evaluate(std::int64_t pTime, KQexKeyTimes::KCursor& pCursor) const
{
    const int lCount = GetCount();
    if (lCount == 0)
    {
        return 0.0;
    }
    if (mValues.IsConstant() || pTime >= mTimes.GetLast())
    {
        return static_cast<double>(mValues.Get(lCount - 1));
    }
    const KQexKeyTimes::KSegment lSegment = mTimes.Locate(pTime, pCursor);
    if (lSegment.mKey < 0)
    {
        return static_cast<double>(mValues.Get(0));
    }
    const double lValue = static_cast<double>(mValues.Get(lSegment.mKey));
    const double lNext = static_cast<double>(mValues.Get(lSegment.mKey + 1));
    if (lSegment.mSince == 0 || lValue == lNext)
    {
        return lValue;
    }
    // A weighted sum, because value + weight * difference would be NaN for an infinite value.
    const double lWeight = static_cast<double>(lSegment.mSince) / static_cast<double>(lSegment.mStep);
    return (1.0 - lWeight) * lValue + lWeight * lNext;
}

void KQexKeyStore::Clear()
{
    mTimes.Clear();
    mValues.Clear();
}

void KQexKeyStore::Compact()
{
    mTimes.Compact();
    mValues.Compact();
}

void KQexKeyStore::Swap(KQexKeyStore& pOther) noexcept
{
    mTimes.Swap(pOther.mTimes);
    mValues.Swap(pOther.mValues);
}

} // namespace qexsdk
