#ifndef QEXSCENE_KQEXANIMCURVEKEY_H
#define QEXSCENE_KQEXANIMCURVEKEY_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/ktime.h>

namespace qexsdk
{

/// What every kind of key has: its time.
class QEX_API KQexAnimCurveKeyBase
{
public:
    /// A key at time 0.
    KQexAnimCurveKeyBase() = default;

    /// When the key is.
    KTime GetTime() const { return mTime; }
    /// Moves the key; a curve that it was read from keeps its own.
    void SetTime(const KTime& pTime) { mTime = pTime; }

    KTime mTime = KTime(0); ///< When the key is.
};

/// What a key of an animation curve holds beside its time.
struct KQexAnimCurveKeyData
{
    float mValue = 0.0F; ///< In the unit of what the curve moves (centimetres, degrees).
};

/// Gives a key that is being constructed the place of its data.
/// \param pOwn the data inside the key itself, which is all that the default allocator needs: it returns it.
/// \return the data to use, null for \p pOwn. Data elsewhere stays the allocator's and must outlive the key.
using KQexAnimCurveKeyAllocatorFct = KQexAnimCurveKeyData* (*)(KQexAnimCurveKeyData* pOwn);

/// A key to be added to a curve, or one read back from it: a small handle on a time and a value. It is a copy: changing it
/// changes no curve. Between two keys a curve is linear; there is no other interpolation, so a key holds none.
///
/// Keys ask an allocator where their data lives. One is installed from the start; constructing a key while none is reports
/// the assertion "mAllocatorFct != NULL" (once in a process), and the key works all the same, with data of its own.
class QEX_API KQexAnimCurveKey : public KQexAnimCurveKeyBase
{
public:
    /// Value 0 at time 0.
    KQexAnimCurveKey();
    /// A key at \p pTime with \p pValue, in the unit of what the curve moves.
    KQexAnimCurveKey(const KTime& pTime, float pValue);
    /// A key of its own with the same time and value; its data come from the allocator too.
    KQexAnimCurveKey(const KQexAnimCurveKey& pOther);
    /// Takes over time and value; the data stay where they are.
    KQexAnimCurveKey& operator=(const KQexAnimCurveKey& pOther);
    ~KQexAnimCurveKey() = default;

    /// Sets time and value; the interpolation to the next key is linear.
    void Set(const KTime& pTime, float pValue)
    {
        mTime = pTime;
        mData->mValue = pValue;
    }

    /// The value, in the unit of what the curve moves.
    float GetValue() const { return mData->mValue; }
    /// Changes the value.
    void SetValue(float pValue) { mData->mValue = pValue; }

    /// Installs the allocator for keys constructed from now on, in every thread; null takes it out.
    /// \return the one that was installed, to be put back.
    static KQexAnimCurveKeyAllocatorFct SetAllocatorFct(KQexAnimCurveKeyAllocatorFct pAllocatorFct);
    /// The installed allocator, or null.
    static KQexAnimCurveKeyAllocatorFct GetAllocatorFct();
    /// The allocator that is installed from the start: it leaves the data inside the key.
    static KQexAnimCurveKeyAllocatorFct GetDefaultAllocatorFct();

private:
    KQexAnimCurveKeyData  mOwn;          ///< Used unless the allocator gave another place.
    KQexAnimCurveKeyData* mData = &mOwn; ///< Never null.
};

} // namespace qexsdk

#endif
