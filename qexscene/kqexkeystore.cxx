#include <qexscene/kqexkeystore.h>

namespace qexsdk
{

int KQexKeyStore::Set(std::int64_t pTime, float pValue)
{
    const int lCount = GetCount();
    if (lCount == 0 || pTime > mTimes.GetLast())
    {
        return Insert(lCount, pTime, pValue) ? lCount : -1;
    }
    const int lIndex = mTimes.Find(pTime);
    if (lIndex >= 0 && mTimes.Get(lIndex) == pTime)
    {
        return mValues.Set(lIndex, pValue) ? lIndex : -1;
    }
    return Insert(lIndex + 1, pTime, pValue) ? lIndex + 1 : -1;
}

/// The value's room comes first, so that after the time is in nothing can fail any more.
bool KQexKeyStore::Insert(int pIndex, std::int64_t pTime, float pValue)
{
    if (!mValues.MakeRoom(pValue) || !mTimes.Insert(pIndex, pTime))
    {
        return false;
    }
    mValues.InsertInRoom(pIndex, pValue);
    return true;
}

double KQexKeyStore::Evaluate(std::int64_t pTime) const
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
    const int lKey = mTimes.Find(pTime);
    if (lKey < 0)
    {
        return static_cast<double>(mValues.Get(0));
    }
    const std::uint64_t lStart = static_cast<std::uint64_t>(mTimes.Get(lKey));
    const std::uint64_t lSince = static_cast<std::uint64_t>(pTime) - lStart;
    const double        lValue = static_cast<double>(mValues.Get(lKey));
    const double        lNext = static_cast<double>(mValues.Get(lKey + 1));
    if (lSince == 0 || lValue == lNext)
    {
        return lValue;
    }
    // Weights instead of a difference: the difference of an infinity and a number would lose the number's side of the sign.
    const std::uint64_t lStep = static_cast<std::uint64_t>(mTimes.Get(lKey + 1)) - lStart;
    const double        lWeight = static_cast<double>(lSince) / static_cast<double>(lStep);
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
