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

/// One number over time: keys sorted by time, no two at the same time, linear in between and constant outside.
///
/// Values are single precision, in the unit of what the curve moves (centimetres, degrees). Uniformly sampled keys take at
/// most five bytes each, spare room included, and 40 more for each gap in the sampling; while all values are the same they
/// take none; keys without any regularity take 15 bytes at most (see KQexKeyStore).
///
/// Belongs to the scene it was made in, until Destroy ends it or the scene does; that takes it off every curve node first.
/// A class derived from it can watch what happens to a curve.
class QEX_API KQexAnimCurve : public KQexObject
{
public:
    /// The class, for QexCast and GetMember.
    static const kQexClassId smClassId;

    /// An empty curve in \p pScene (null: a curve that belongs to no scene and is ended by Destroy). Null when memory runs out.
    static KQexAnimCurve* Create(KQexScene* pScene, const char* pName);

    ~KQexAnimCurve() override;

    const kQexClassId& GetClassId() const noexcept override;

    /// Number of keys.
    virtual int GetKeyCount() const;

    /// Puts a key with the value of \p pKey at \p pTime; the time in \p pKey is not looked at. A key that is already at that
    /// time gets the value. Later than all others: amortised O(1); elsewhere the keys behind it are moved up.
    /// \param pTime when the key is.
    /// \param pKey  its value.
    /// \param pLast when given, receives the index of the key; what it holds before is not looked at.
    /// \return the index of the key; -1, and the curve unchanged, when memory runs out.
    virtual int AddKey(const KTime& pTime, const KQexAnimCurveKey& pKey, int* pLast = nullptr);

    /// AddKey without a key object, for those who write many. False, and the curve unchanged, when memory runs out.
    bool AppendSample(const KTime& pTime, float pValue) { return mKeys.Set(pTime.Get(), pValue) >= 0; }

    /// Time and value of a key. An index outside 0 … GetKeyCount() - 1 gives value 0 at time 0.
    KQexAnimCurveKey GetKey(int pIndex) const { return KQexAnimCurveKey(GetTime(pIndex), GetValue(pIndex)); }
    /// The value of key \p pIndex alone; 0 outside.
    float GetValue(int pIndex) const { return mKeys.IsIndex(pIndex) ? mKeys.GetValue(pIndex) : 0.0F; }
    /// The time of key \p pIndex alone; 0 outside.
    KTime GetTime(int pIndex) const { return KTime(mKeys.IsIndex(pIndex) ? mKeys.GetTime(pIndex) : 0); }

    /// Gives the key \p pIndex another value. False, and the curve unchanged, for an index out of range or when memory runs out.
    bool SetValue(int pIndex, float pValue);

    /// Removes the key \p pIndex. False, and the curve unchanged, for an index out of range or when memory runs out.
    bool RemoveKey(int pIndex);

    /// Removes every key and gives their memory back.
    void Clear() { mKeys.Clear(); }

    /// Gives spare room back, for a curve that takes no more keys.
    void Compact() { mKeys.Compact(); }

    /// The curve's value at \p pTime: the first key's before it, the last key's behind it, linear in between; 0 without keys.
    /// At a key, and between keys of equal value, it is that value exactly. Elsewhere the two values are weighted in double
    /// precision, which is within 4 ulp of a double of the larger of them, and never leaves their interval by more; next to a NaN
    /// it is NaN, next to an infinity that infinity, between opposite infinities NaN.
    /// O(1) on uniformly sampled keys, else O(log n).
    double Evaluate(const KTime& pTime) const { return mKeys.Evaluate(pTime.Get()); }

    /// The same, for one time of many curves that have mostly the same key times: \p pSpot goes from one to the next.
    double Evaluate(const KTime& pTime, KQexKeyTimes::KSpot& pSpot) const { return mKeys.Evaluate(pTime.Get(), pSpot); }

    /// Bytes allocated for keys, spare room included.
    std::size_t GetMemoryUse() const { return mKeys.GetMemoryUse(); }

    /// \name Keys as a whole
    /// For filters, which read one set of keys and then put another in its place.
    /// \{

    /// All keys; valid until the curve changes or ends.
    const KQexKeyStore& GetKeys() const { return mKeys; }
    /// Exchanges the values with those of \p pValues, which are as many as there are keys. Cannot fail.
    void SwapValues(KQexKeyBlock<float>& pValues) { mKeys.SwapValues(pValues); }
    /// Exchanges all keys with those of \p pKeys. Cannot fail.
    void SwapKeys(KQexKeyStore& pKeys) { mKeys.Swap(pKeys); }
    /// \}

protected:
    /// As KQexObject's; objects are made by Create.
    KQexAnimCurve(KQexScene* pScene, const char* pName);

private:
    KQexKeyStore mKeys;
};

} // namespace qexsdk

#endif
