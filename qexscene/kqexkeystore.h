#ifndef QEXSCENE_KQEXKEYSTORE_H
#define QEXSCENE_KQEXKEYSTORE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexkeytimes.h>
#include <qexscene/kqexkeyvalues.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// The keys of a curve: a time in ticks and a value each, sorted by time, no two at the same time. Times and values are stored
/// separately, each in a compact form (see KQexKeyTimes and KQexKeyValues).
///
/// Indices are not checked. An operation that runs out of memory changes nothing. At most INT_MAX keys.
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
    /// All times; valid until a key is added or removed.
    const KQexKeyTimes& GetTimes() const { return mTimes; }

    /// Adds a key, or replaces the value of the key at that time. Amortised O(1) after the last key, O(n) elsewhere.
    /// \return the key's index, -1 when memory runs out.
    int Set(std::int64_t pTime, float pValue);

    /// Sets the value of a key. False when memory runs out.
    bool SetValue(int pIndex, float pValue) { return mValues.Set(pIndex, pValue); }

    /// Swaps the values with a list of the same length. Cannot fail. If all values were equal, \p pList is empty afterwards.
    void SwapValues(KQexKeyBlock<float>& pList) noexcept { mValues.SwapList(pList); }

    /// The value at \p pTime; see KQexAnimCurve::Evaluate.
    double Evaluate(std::int64_t pTime) const
    {
        KQexKeyTimes::KCursor lCursor;
        return Evaluate(pTime, lCursor);
    }
    /// The same for many curves that mostly share their times: \p pCursor caches the last look-up.
    double Evaluate(std::int64_t pTime, KQexKeyTimes::KCursor& pCursor) const;

    /// Removes every key and frees their memory.
    void Clear();
    /// Frees spare capacity.
    void Compact();
    /// Swaps all keys.
    void Swap(KQexKeyStore& pOther) noexcept;
    /// Bytes allocated for keys, spare capacity included.
    std::size_t GetMemoryUse() const { return mTimes.GetMemoryUse() + mValues.GetMemoryUse(); }

private:
    bool Insert(int pIndex, std::int64_t pTime, float pValue);

    KQexKeyTimes  mTimes;
    KQexKeyValues mValues;
};

} // namespace qexsdk

#endif
