#include <qexscene/kqexrestpose.h>

#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kRestTolerance = 1e-5; ///< Keys within this distance of the rest value count as at rest.

} // namespace

bool DiffersFromRest(const KQexProperty& pProperty, const KQexAnimLayer* pLayer)
{
    const KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pLayer);
    if (lCurveNode == nullptr)
    {
        return false;
    }
    const auto lRest = KQexGet<qexVectorTemplate3<double>>(pProperty);
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        const double         lValue = lRest.mData[lChannel];
        const double         lBound = kRestTolerance + 1e-6 * std::fabs(lValue);
        const KQexAnimCurve* lCurve = lCurveNode->GetCurve(lChannel);
        const int            lCount = lCurve != nullptr ? lCurve->GetKeyCount() : 0;
        if (lCount == 0 && std::fabs(lCurveNode->GetChannelValue<double>(lChannel, lValue) - lValue) > lBound)
        {
            return true;
        }
        for (int lKey = 0; lKey < lCount; ++lKey)
        {
            if (std::fabs(static_cast<double>(lCurve->GetValue(lKey)) - lValue) > lBound)
            {
                return true;
            }
        }
    }
    return false;
}

} // namespace qexsdk
