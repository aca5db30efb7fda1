#ifndef QEXSCENE_KQEXKEYSTORE_H
#define QEXSCENE_KQEXKEYSTORE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeytimes.h>
#include <qexscene/kqexkeyvalues.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// The keys of a curve: a time in ticks and a value each, sorted by time, no two at the same time. Times and values are kept
/// apart, each in the form that takes little room (see KQexKeyTimes and KQexKeyValues).
///
/// Indices are trusted. Operations that can fail for want of memory change nothing then. At most INT_MAX keys.
class QEX_API KQexKeyStore
{
public:
    /// Number of keys.
    int GetCount() const { return mTimes.GetCount(); }
    /// Whether there is a key \p pIndex.
    bool IsIndex(int pIndex) const { return pIndex >= 0 && pIndex < GetCount(); }
    /// Time of key \p pIndex in ticks.
    std::int64_t GetTime(int pIndex) const { return mTimes.Get(pIndex); }
    /// Value of key \p pIndex.
    float GetValue(int pIndex) const { return mValues.Get(pIndex); }
    /// All times; valid until a key comes or goes.
    const KQexKeyTimes& GetTimes() const { return mTimes; }

    /// Puts a value at a time, over the one that is there. Amortised O(1) behind the last key, elsewhere the keys behind it move.
    /// \return the key's index, -1 when memory runs out.
    int Set(std::int64_t pTime, float pValue);

    /// Gives a key another value. False when memory runs out.
    bool SetValue(int pIndex, float pValue) { return mValues.Set(pIndex, pValue); }

    /// Exchanges the values with a list of as many. Cannot fail; a value that was kept once is gone, \p pList is then empty.
    void SwapValues(KQexKeyBlock<float>& pList) noexcept { mValues.SwapList(pList); }

    /// The value at \p pTime as KQexAnimCurve::Evaluate tells it.
    double Evaluate(std::int64_t pTime) const
    {
        KQexKeyTimes::KSpot lSpot;
        return Evaluate(pTime, lSpot);
    }
    /// The same for many curves that have mostly the same times: \p pSpot keeps what was found for the one before.
    double Evaluate(std::int64_t pTime, KQexKeyTimes::KSpot& pSpot) const;

    /// Removes every key and gives their memory back.
    void Clear();
    /// Gives spare room back.
    void Compact();
    /// Exchanges all keys.
    void Swap(KQexKeyStore& pOther) noexcept;
    /// Bytes allocated for keys, spare room included.
    std::size_t GetMemoryUse() const { return mTimes.GetMemoryUse() + mValues.GetMemoryUse(); }

private:
    bool Insert(int pIndex, std::int64_t pTime, float pValue);

    KQexKeyTimes  mTimes;
    KQexKeyValues mValues;
};

} // namespace qexsdk

#endif
