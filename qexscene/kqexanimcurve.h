#ifndef QEXSCENE_KQEXANIMCURVE_H
#define QEXSCENE_KQEXANIMCURVE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>
#include <qexscene/kqexanimcurvekey.h>
#include <qexscene/kqexkeystore.h>
#include <qexscene/kqexobject.h>

#include <cstddef>

namespace qexsdk
{

/// A value over time: keys sorted by time, no two at the same time; linear between keys, constant outside.
///
/// Values are single precision, in the unit of the property that the curve drives (centimetres, degrees). Evenly spaced keys take
/// at most 5 bytes each, spare capacity included, and none while all values are equal; other keys take at most 15 (see
/// KQexKeyStore).
///
/// Owned by its scene, until Destroy or the end of the scene; both disconnect it from every curve node first. Derive from it to
/// observe what happens to a curve.
class QEX_API KQexAnimCurve : public KQexObject
{
public:
    /// Class id, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// An empty curve in \p pScene (null: without a scene; the caller calls Destroy). Null when memory runs out.
    static KQexAnimCurve* Create(KQexScene* pScene, const char* pName);

    ~KQexAnimCurve() override;

    const kQexClassId& GetClassId() const noexcept override;

    /// Number of keys.
    virtual int GetKeyCount() const;

    /// Adds a key at \p pTime with the value of \p pKey, whose own time is ignored, or replaces the value of the key at that
    /// time. Amortised O(1) after the last key; O(n) elsewhere.
    /// \param pTime time of the key.
    /// \param pKey  its value.
    /// \param pLast if not null, receives the index of the key; its previous value is ignored.
    /// \return the index of the key; -1, and the curve unchanged, when memory runs out.
    virtual int AddKey(const KTime& pTime, const KQexAnimCurveKey& pKey, int* pLast = nullptr);

    /// AddKey without a key object, for adding many. False, and the curve unchanged, when memory runs out.
    bool AppendSample(const KTime& pTime, float pValue) { return mKeys.Set(pTime.Get(), pValue) >= 0; }

    /// Time and value of a key. An index outside 0 … GetKeyCount() - 1 gives value 0 at time 0.
    KQexAnimCurveKey GetKey(int pIndex) const { return KQexAnimCurveKey(GetTime(pIndex), GetValue(pIndex)); }
    /// The value of key \p pIndex; 0 for an index out of range.
    float GetValue(int pIndex) const { return mKeys.IsIndex(pIndex) ? mKeys.GetValue(pIndex) : 0.0F; }
    /// The time of key \p pIndex; 0 for an index out of range.
    KTime GetTime(int pIndex) const { return KTime(mKeys.IsIndex(pIndex) ? mKeys.GetTime(pIndex) : 0); }

    /// Sets the value of key \p pIndex. False, and the curve unchanged, for an index out of range or when memory runs out.
    bool SetValue(int pIndex, float pValue);

    /// Removes the key \p pIndex. False, and the curve unchanged, for an index out of range or when memory runs out.
    bool RemoveKey(int pIndex);

    /// Removes every key and frees their memory.
    void Clear() { mKeys.Clear(); }

    /// Frees spare capacity, for a curve that is complete.
    void Compact() { mKeys.Compact(); }

    /// The curve's value at \p pTime: the first key's before it, the last key's after it, linear in between; 0 without keys.
    /// Exact at a key and between keys of equal value. Elsewhere the weighted sum of the two values in double precision, within
    /// 4 ulp (of the larger value) of the true one; next to a NaN it is NaN, next to an infinity that infinity, between opposite
    /// infinities NaN.
    /// O(1) on uniformly sampled keys, else O(log n).
    double Evaluate(const KTime& pTime) const { return mKeys.Evaluate(pTime.Get()); }

    /// The same for evaluating many curves, which mostly share their key times, at one time: pass the same \p pCursor to all.
    double Evaluate(const KTime& pTime, KQexKeyTimes::KCursor& pCursor) const { return mKeys.Evaluate(pTime.Get(), pCursor); }

    /// Bytes allocated for keys, spare capacity included.
    std::size_t GetMemoryUse() const { return mKeys.GetMemoryUse(); }

    /// \name Keys as a whole
    /// For filters, which read all keys and then replace them.
    /// \{

    /// All keys; valid until the curve changes or is destroyed.
    const KQexKeyStore& GetKeys() const { return mKeys; }
    /// Swaps the values with \p pValues, one per key. Cannot fail.
    void SwapValues(KQexKeyBlock<float>& pValues) { mKeys.SwapValues(pValues); }
    /// Swaps all keys with \p pKeys. Cannot fail.
    void SwapKeys(KQexKeyStore& pKeys) { mKeys.Swap(pKeys); }
    /// \}

protected:
    /// See KQexObject; use Create.
    KQexAnimCurve(KQexScene* pScene, const char* pName);

private:
    KQexKeyStore mKeys;
};

} // namespace qexsdk

#endif
