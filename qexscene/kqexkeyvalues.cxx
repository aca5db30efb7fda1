#include <qexscene/kqexkeyvalues.h>

#include <climits>
#include <cstring>
#include <utility>

namespace qexsdk
{

/// Whether the one value can stand for \p pValue too: only if no bit differs, so that -0 and any NaN come back as they were.
bool KQexKeyValues::FitsConstant(float pValue) const
{
    return mCount == 0 || std::memcmp(&mConstant, &pValue, sizeof(float)) == 0;
}

/// Room for one value more than there are is part of it, since turning into a list serves a value that differs.
bool KQexKeyValues::TurnIntoList()
{
    if (!mList.MakeRoom(mCount + 1))
    {
        return false;
    }
    for (int lKey = 0; lKey < mCount; ++lKey)
    {
        mList.AppendInRoom(mConstant);
    }
    mIsConstant = false;
    return true;
}

bool KQexKeyValues::MakeMoreRoom(float pValue)
{
    if (mCount == INT_MAX)
    {
        return false;
    }
    if (mIsConstant)
    {
        return FitsConstant(pValue) || TurnIntoList();
    }
    return mList.MakeRoom(1);
}

void KQexKeyValues::InsertInRoom(int pIndex, float pValue)
{
    if (mIsConstant)
    {
        mConstant = pValue;
    }
    else
    {
        mList.InsertInRoom(pIndex, pValue);
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
        if (mCount == INT_MAX || !TurnIntoList())
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
