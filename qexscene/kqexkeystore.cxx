#include <qexscene/kqexkeystore.h>

namespace qexsdk
{

int KQexKeyStore::Set(std::int64_t pTime, float pValue)
{
    const int lCount = GetCount();
    if (lCount == 0 || pTime > mTimes.GetLast())
    {
        if (!mValues.MakeRoom(pValue) || !mTimes.Append(pTime))
        {
            return -1;
        }
        mValues.AppendInRoom(pValue);
        return lCount;
    }
    const int lIndex = mTimes.Find(pTime);
    if (lIndex >= 0 && mTimes.Get(lIndex) == pTime)
    {
        return mValues.Set(lIndex, pValue) ? lIndex : -1;
    }
    return Insert(lIndex + 1, pTime, pValue) ? lIndex + 1 : -1;
}

/// Here as in Set the value's room comes first, so that after the time is in nothing can fail any more.
bool KQexKeyStore::Insert(int pIndex, std::int64_t pTime, float pValue)
{
    if (!mValues.MakeRoom(pValue) || !mTimes.Insert(pIndex, pTime))
    {
        return false;
    }
    mValues.InsertInRoom(pIndex, pValue);
    return true;
}

double KQexKeyStore::Evaluate(std::int64_t pTime, KQexKeyTimes::KSpot& pSpot) const
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
    const KQexKeyTimes::KPlace lPlace = mTimes.Locate(pTime, pSpot);
    if (lPlace.mKey < 0)
    {
        return static_cast<double>(mValues.Get(0));
    }
    const double lValue = static_cast<double>(mValues.Get(lPlace.mKey));
    const double lNext = static_cast<double>(mValues.Get(lPlace.mKey + 1));
    if (lPlace.mSince == 0 || lValue == lNext)
    {
        return lValue;
    }
    // Weights instead of a difference: the difference of an infinity and a number would lose the number's side of the sign.
    const double lWeight = static_cast<double>(lPlace.mSince) / static_cast<double>(lPlace.mStep);
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
