#include <qexscene/kqexkeyvalues.h>

#include <climits>
#include <cstring>
#include <utility>

namespace qexsdk
{

/// Whether the constant represents \p pValue too. Compares bits, so that -0 and every NaN are preserved.
bool KQexKeyValues::FitsConstant(float pValue) const
{
    return mCount == 0 || std::memcmp(&mConstant, &pValue, sizeof(float)) == 0;
}

/// Converts the constant to a list, with capacity for one more value.
bool KQexKeyValues::ConvertToList()
{
    if (!mList.ReserveMore(mCount + 1))
    {
        return false;
    }
    for (int lKey = 0; lKey < mCount; ++lKey)
    {
        mList.AppendReserved(mConstant);
    }
    mIsConstant = false;
    return true;
}

bool KQexKeyValues::ReserveSlow(float pValue)
{
    if (mCount == INT_MAX)
    {
        return false;
    }
    if (mIsConstant)
    {
        return FitsConstant(pValue) || ConvertToList();
    }
    return mList.ReserveMore(1);
}

void KQexKeyValues::InsertReserved(int pIndex, float pValue)
{
    if (mIsConstant)
    {
        mConstant = pValue;
    }
    else
    {
        mList.InsertReserved(pIndex, pValue);
    }
    ++mCount;
}

bool KQexKeyValues::Set(int pIndex, float pValue)
{
    if (mIsConstant)
    {
        if (FitsConstant(pValue))
        {
            return true;
        }
        if (mCount == 1)
        {
            mConstant = pValue;
            return true;
        }
        if (mCount == INT_MAX || !ConvertToList())
        {
            return false;
        }
    }
    mList[pIndex] = pValue;
    return true;
}

void KQexKeyValues::SwapList(KQexKeyBlock<float>& pList) noexcept
{
    mList.Swap(pList);
    mIsConstant = false;
}

void KQexKeyValues::Clear()
{
    mList.Clear();
    mConstant = 0.0F;
    mCount = 0;
    mIsConstant = true;
}

void KQexKeyValues::Compact()
{
    mList.SetCapacity(mList.GetCount());
}

void KQexKeyValues::Swap(KQexKeyValues& pOther) noexcept
{
    mList.Swap(pOther.mList);
    std::swap(mConstant, pOther.mConstant);
    std::swap(mCount, pOther.mCount);
    std::swap(mIsConstant, pOther.mIsConstant);
}

} // namespace qexsdk
