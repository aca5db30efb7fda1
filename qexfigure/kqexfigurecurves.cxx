#include <qexfigure/kqexfigurecurves.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

namespace
{

constexpr unsigned int kAxes = 3;

/// The times of all keys of the three channels, ascending.
std::vector<KTime> KeyTimesOf(const KQexAnimCurveNode& pCurves)
{
    std::vector<KTime> lTimes;
    for (unsigned int lAxis = 0; lAxis < kAxes; ++lAxis)
    {
        const KQexAnimCurve* lCurve = pCurves.GetCurve(lAxis);
        const std::ptrdiff_t lOld = static_cast<std::ptrdiff_t>(lTimes.size());
        for (int lKey = 0; lCurve != nullptr && lKey < lCurve->GetKeyCount(); ++lKey)
        {
            lTimes.push_back(lCurve->GetTime(lKey));
        }
        std::inplace_merge(lTimes.begin(), lTimes.begin() + lOld, lTimes.end());
        lTimes.erase(std::unique(lTimes.begin(), lTimes.end()), lTimes.end());
    }
    return lTimes;
}

void SetCurve(KQexAnimCurveNode& pCurves, unsigned int pAxis, const std::vector<KTime>& pTimes, const std::vector<KQexVector4>& pPoints)
{
    KQexAnimCurve* lCurve = pCurves.GetCurve(pAxis);
    if (lCurve == nullptr)
    {
        lCurve = KQexAnimCurve::Create(pCurves.GetScene(), "");
        if (lCurve == nullptr || !pCurves.ConnectToChannel(lCurve, pAxis))
        {
            throw std::bad_alloc();
        }
    }
    lCurve->Clear();
    for (size_t lKey = 0; lKey < pTimes.size(); ++lKey)
    {
        if (!lCurve->AppendSample(pTimes[lKey], static_cast<float>(pPoints[lKey].mData[pAxis])))
        {
            throw std::bad_alloc();
        }
    }
}

} // namespace

void MapCurves(KQexAnimCurveNode& pCurves, const KQexMatrix& pMap)
{
    const auto lEvaluate = [&pCurves, &pMap](KTime pTime)
    {
        return pMap.Map(KQexVector4(pCurves.Evaluate(0, pTime), pCurves.Evaluate(1, pTime), pCurves.Evaluate(2, pTime)));
    };
    const std::vector<KTime> lTimes = KeyTimesOf(pCurves);
    std::vector<KQexVector4> lPoints;
    for (const KTime& lTime : lTimes)
    {
        lPoints.push_back(lEvaluate(lTime));
    }
    const KQexVector4 lFirst = lEvaluate(lTimes.empty() ? KTime(0) : lTimes.front());
    for (unsigned int lAxis = 0; lAxis < kAxes; ++lAxis)
    {
        pCurves.SetChannelValue(lAxis, lFirst.mData[lAxis]);
        if (!lTimes.empty())
        {
            SetCurve(pCurves, lAxis, lTimes, lPoints);
        }
    }
}

} // namespace qexsdk
