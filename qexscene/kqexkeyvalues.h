#ifndef QEXSCENE_KQEXKEYVALUES_H
#define QEXSCENE_KQEXKEYVALUES_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeyblock.h>

#include <cstddef>

namespace qexsdk
{

/// Values of keys in the order of their times. As long as all of them are the same, bit by bit, the value is kept once:
/// sampled motion has curves for axes that a joint does not turn about.
///
/// Indices are trusted. Operations that can fail for want of memory change nothing then.
class QEX_API KQexKeyValues
{
public:
    /// Number of values.
    int  GetCount() const { return mCount; }
    bool IsConstant() const { return mIsConstant; } ///< Whether the value is kept once; true without keys.
    /// Value \p pIndex.
    float Get(int pIndex) const { return mIsConstant ? mConstant : mList[pIndex]; }
    /// Changes value \p pIndex. False, and nothing changed, when memory runs out.
    bool Set(int pIndex, float pValue);

    /// Sees to it that inserting \p pValue cannot fail.
    bool MakeRoom(float pValue) { return mIsConstant || !mList.HasRoom() ? MakeMoreRoom(pValue) : true; }
    /// Puts the value before the value \p pIndex (at the end when it is the count), after MakeRoom for it.
    void InsertInRoom(int pIndex, float pValue);
    /// Puts the value behind all others, after MakeRoom for it.
    void AppendInRoom(float pValue)
    {
        if (mIsConstant)
        {
            mConstant = pValue;
        }
        else
        {
            mList.AppendInRoom(pValue);
        }
        ++mCount;
    }

    /// Exchanges the values with a list of as many (at least one). What was kept once is not listed: \p pList is empty then.
    void SwapList(KQexKeyBlock<float>& pList) noexcept;

    /// Removes every value and gives their memory back.
    void Clear();
    /// Gives spare room back.
    void Compact();
    /// Exchanges all values.
    void Swap(KQexKeyValues& pOther) noexcept;
    /// Bytes allocated, spare room included.
    std::size_t GetMemoryUse() const { return mList.GetMemoryUse(); }

private:
    bool MakeMoreRoom(float pValue);
    bool FitsConstant(float pValue) const;
    bool TurnIntoList();

    KQexKeyBlock<float> mList; ///< Empty while mIsConstant.
    float               mConstant = 0.0F;
    int                 mCount = 0;
    bool                mIsConstant = true;
};

} // namespace qexsdk

#endif
