#include <qexscene/kqexanimcurvekey.h>

#include <kbaselib/kbase/kassert.h>

#include <atomic>

namespace qexsdk
{

static KQexAnimCurveKeyData* AllocateInKey(KQexAnimCurveKeyData* pOwn)
{
    return pOwn;
}

static std::atomic<KQexAnimCurveKeyAllocatorFct> sAllocatorFct{&AllocateInKey};

/// Storage for a new key's data. Reports an assertion when no allocator is installed.
static KQexAnimCurveKeyData* AllocateData(KQexAnimCurveKeyData* pOwn)
{
    const KQexAnimCurveKeyAllocatorFct lAllocatorFct = sAllocatorFct.load(std::memory_order_relaxed);
    if (lAllocatorFct == nullptr)
    {
        static bool sHideForever = false;
        KAssertFailed("qexscene/kqexanimcurvekey", "KQexAnimCurveKey::KQexAnimCurveKey", static_cast<unsigned long>(__LINE__),
                      "mAllocatorFct != NULL", &sHideForever);
        return pOwn;
    }
    KQexAnimCurveKeyData* lData = lAllocatorFct(pOwn);
    return lData != nullptr ? lData : pOwn;
}

KQexAnimCurveKey::KQexAnimCurveKey()
{
    mData = AllocateData(&mOwn);
    mData->mValue = 0.0F;
}

KQexAnimCurveKey::KQexAnimCurveKey(const KTime& pTime, float pValue)
{
    mData = AllocateData(&mOwn);
    Set(pTime, pValue);
}

KQexAnimCurveKey::KQexAnimCurveKey(const KQexAnimCurveKey& pOther) : KQexAnimCurveKeyBase(pOther)
{
    mData = AllocateData(&mOwn);
    *mData = *pOther.mData;
}

KQexAnimCurveKey& KQexAnimCurveKey::operator=(const KQexAnimCurveKey& pOther)
{
    mTime = pOther.mTime;
    *mData = *pOther.mData;
    return *this;
}

KQexAnimCurveKeyAllocatorFct KQexAnimCurveKey::SetAllocatorFct(KQexAnimCurveKeyAllocatorFct pAllocatorFct)
{
    return sAllocatorFct.exchange(pAllocatorFct, std::memory_order_relaxed);
}

KQexAnimCurveKeyAllocatorFct KQexAnimCurveKey::GetAllocatorFct()
{
    return sAllocatorFct.load(std::memory_order_relaxed);
}

KQexAnimCurveKeyAllocatorFct KQexAnimCurveKey::GetDefaultAllocatorFct()
{
    return &AllocateInKey;
}

} // namespace qexsdk
