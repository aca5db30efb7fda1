#ifndef QEXSCENE_KQEXKEYVALUES_H
#define QEXSCENE_KQEXKEYVALUES_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

#include <cstddef>

namespace qexsdk
{

/// Values of keys in the order of their times. While all of them are bitwise equal, the value is stored once: sampled motion has
/// curves for axes about which a joint does not rotate.
///
/// Indices are not checked. An operation that runs out of memory changes nothing.
class QEX_API KQexKeyValues
{
public:
    /// Number of values.
    int  GetCount() const { return mCount; }
    bool IsConstant() const { return mIsConstant; } ///< Whether the value is stored once; true without keys.
    /// Value \p pIndex.
    float Get(int pIndex) const { return mIsConstant ? mConstant : mList[pIndex]; }
    /// Sets value \p pIndex. False, and nothing changed, when memory runs out.
    bool Set(int pIndex, float pValue);

    /// Reserves memory so that adding \p pValue cannot fail.
    bool ReserveFor(float pValue) { return mIsConstant || !mList.HasSpare() ? ReserveSlow(pValue) : true; }
    /// Inserts the value before value \p pIndex (the count: appends), after ReserveFor.
    void InsertReserved(int pIndex, float pValue);
    /// Appends the value, after ReserveFor.
    void AppendReserved(float pValue)
    {
        if (mIsConstant)
        {
            mConstant = pValue;
        }
        else
        {
            mList.AppendReserved(pValue);
        }
        ++mCount;
    }

    /// Swaps the values with a list of the same length (at least one). If the value was stored once, \p pList is empty afterwards.
    void SwapList(KQexKeyBlock<float>& pList) noexcept;

    /// Removes every value and frees their memory.
    void Clear();
    /// Frees spare capacity.
    void Compact();
    /// Swaps all values.
    void Swap(KQexKeyValues& pOther) noexcept;
    /// Bytes allocated, spare capacity included.
    std::size_t GetMemoryUse() const { return mList.GetMemoryUse(); }

private:
    bool ReserveSlow(float pValue);
    bool FitsConstant(float pValue) const;
    bool ConvertToList();

    KQexKeyBlock<float> mList; ///< Empty while mIsConstant.
    float               mConstant = 0.0F;
    int                 mCount = 0;
    bool                mIsConstant = true;
};

} // namespace qexsdk

#endif
