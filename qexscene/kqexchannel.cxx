#include <qexscene/kqexchannel.h>

#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexproperty.h>

namespace qexsdk
{

bool KQexChannel::IsConstantAt(double pValue) const
{
    if (!IsAnimated())
    {
        return *mValue == pValue;
    }
    const int lKeys = mCurve->GetKeyCount();
    for (int i = 0; i < lKeys; ++i)
    {
        if (static_cast<double>(mCurve->GetValue(i)) != pValue)
        {
            return false;
        }
    }
    return true;
}

void KQexChannel::Find(KQexChannel* pChannels, const KQexProperty& pProperty, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pLayer);
    for (unsigned int lI = 0; lI < 3; ++lI)
    {
        pChannels[lI].mCurve = lCurveNode != nullptr ? lCurveNode->GetCurve(lI) : nullptr;
        pChannels[lI].mValue = lCurveNode != nullptr ? lCurveNode->GetChannelData(lI)->mValue : pProperty.GetData()->mValue + lI;
    }
}

} // namespace qexsdk
