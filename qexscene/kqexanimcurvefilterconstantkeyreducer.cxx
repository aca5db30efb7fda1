#include <qexscene/kqexanimcurvefilterconstantkeyreducer.h>

#include <qexscene/kqexanimcurve.h>

namespace qexsdk
{

static bool IsInsideRun(const KQexKeyStore& pKeys, int pKey)
{
    if (pKey == 0 || pKey + 1 == pKeys.GetCount())
    {
        return false;
    }
    const float lValue = pKeys.GetValue(pKey);
    return pKeys.GetValue(pKey - 1) == lValue && lValue == pKeys.GetValue(pKey + 1);
}

static bool HasKeyInsideRun(const KQexKeyStore& pKeys)
{
    for (int lKey = 0; lKey < pKeys.GetCount(); ++lKey)
    {
        if (IsInsideRun(pKeys, lKey))
        {
            return true;
        }
    }
    return false;
}

static bool Reduce(KQexAnimCurve& pCurve)
{
    const KQexKeyStore& lKeys = pCurve.GetKeys();
    if (!HasKeyInsideRun(lKeys))
    {
        return true;
    }
    KQexKeyStore lReduced;
    for (int lKey = 0; lKey < lKeys.GetCount(); ++lKey)
    {
        if (!IsInsideRun(lKeys, lKey) && lReduced.Set(lKeys.GetTime(lKey), lKeys.GetValue(lKey)) < 0)
        {
            return false;
        }
    }
    pCurve.SwapKeys(lReduced);
    return true;
}

bool KQexAnimCurveFilterConstantKeyReducer::Apply(KQexAnimCurve** pCurves, int pCount)
{
    if (pCount < 0 || (pCurves == nullptr && pCount > 0))
    {
        return false;
    }
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
    {
        if (pCurves[lIndex] != nullptr && !Reduce(*pCurves[lIndex]))
        {
            return false;
        }
    }
    return true;
}

} // namespace qexsdk
