#include <qexscene/kqexanimcurve.h>

namespace qexsdk
{

const kQexClassId KQexAnimCurve::smClassId("KQexAnimCurve", &KQexObject::smClassId);

KQexAnimCurve* KQexAnimCurve::Create(KQexScene* pScene, const char* pName)
{
    return NullIfIncomplete(new KQexAnimCurve(pScene, pName));
}

KQexAnimCurve::KQexAnimCurve(KQexScene* pScene, const char* pName) : KQexObject(pScene, pName) {}

KQexAnimCurve::~KQexAnimCurve() = default;

const kQexClassId& KQexAnimCurve::GetClassId() const noexcept
{
    return smClassId;
}

int KQexAnimCurve::GetKeyCount() const
{
    return mKeys.GetCount();
}

int KQexAnimCurve::AddKey(const KTime& pTime, const KQexAnimCurveKey& pKey, int* pLast)
{
    const int lIndex = mKeys.Set(pTime.Get(), pKey.GetValue());
    if (pLast != nullptr && lIndex >= 0)
    {
        *pLast = lIndex;
    }
    return lIndex;
}

bool KQexAnimCurve::SetValue(int pIndex, float pValue)
{
    return mKeys.IsIndex(pIndex) && mKeys.SetValue(pIndex, pValue);
}

bool KQexAnimCurve::RemoveKey(int pIndex)
{
    if (!mKeys.IsIndex(pIndex))
    {
        return false;
    }
    KQexKeyStore lKeys;
    for (int lKey = 0; lKey < mKeys.GetCount(); ++lKey)
    {
        if (lKey != pIndex && lKeys.Set(mKeys.GetTime(lKey), mKeys.GetValue(lKey)) < 0)
        {
            return false;
        }
    }
    mKeys.Swap(lKeys);
    return true;
}

} // namespace qexsdk
