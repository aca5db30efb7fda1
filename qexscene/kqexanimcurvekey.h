#ifndef QEXSCENE_KQEXANIMCURVEKEY_H
#define QEXSCENE_KQEXANIMCURVEKEY_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>

namespace qexsdk
{

/// Base of keys: the time.
class QEX_API KQexAnimCurveKeyBase
{
public:
    /// A key at time 0.
    KQexAnimCurveKeyBase() = default;

    /// Time of the key.
    KTime GetTime() const { return mTime; }
    /// Sets the time of this copy; the curve that it was read from does not change.
    void SetTime(const KTime& pTime) { mTime = pTime; }

    KTime mTime = KTime(0); ///< Time of the key.
};

/// Data of an animation curve's key besides its time.
struct KQexAnimCurveKeyData
{
    float mValue = 0.0F; ///< In the unit of the property that the curve drives (centimetres, degrees).
};

/// Chooses the storage of a new key's data.
/// \param pOwn the storage inside the key itself; the default allocator returns it.
/// \return the storage to use, null for \p pOwn. Storage outside the key is owned by the allocator and must outlive the key.
using KQexAnimCurveKeyAllocatorFct = KQexAnimCurveKeyData* (*)(KQexAnimCurveKeyData* pOwn);

/// A key to be added to a curve, or read back from one: a time and a value. It is a copy: changing it does not change the curve.
/// Interpolation is always linear, so a key does not store any.
///
/// An allocator chooses where a key's data is stored. One is installed by default; constructing a key without one reports the
/// assertion "mAllocatorFct != NULL" (once per process), and the key stores its data itself.
class QEX_API KQexAnimCurveKey : public KQexAnimCurveKeyBase
{
public:
    /// Value 0 at time 0.
    KQexAnimCurveKey();
    /// A key at \p pTime with \p pValue.
    KQexAnimCurveKey(const KTime& pTime, float pValue);
    /// Copies time and value; the new key's storage comes from the allocator too.
    KQexAnimCurveKey(const KQexAnimCurveKey& pOther);
    /// Copies time and value; the storage stays the same.
    KQexAnimCurveKey& operator=(const KQexAnimCurveKey& pOther);
    ~KQexAnimCurveKey() = default;

    /// Sets time and value.
    void Set(const KTime& pTime, float pValue)
    {
        mTime = pTime;
        mData->mValue = pValue;
    }

    /// The value, in the unit of the property that the curve drives.
    float GetValue() const { return mData->mValue; }
    /// Sets the value.
    void SetValue(float pValue) { mData->mValue = pValue; }

    /// Installs the allocator for keys constructed from now on, in every thread; null removes it.
    /// \return the previous allocator.
    static KQexAnimCurveKeyAllocatorFct SetAllocatorFct(KQexAnimCurveKeyAllocatorFct pAllocatorFct);
    /// The installed allocator, or null.
    static KQexAnimCurveKeyAllocatorFct GetAllocatorFct();
    /// The allocator installed by default: it keeps the data inside the key.
    static KQexAnimCurveKeyAllocatorFct GetDefaultAllocatorFct();

private:
    KQexAnimCurveKeyData  mOwn;          ///< Used unless the allocator returned other storage.
    KQexAnimCurveKeyData* mData = &mOwn; ///< Never null.
};

} // namespace qexsdk

#endif
