#ifndef QEXFIGURE_CHECK_KQEXBOUNDS_H
#define QEXFIGURE_CHECK_KQEXBOUNDS_H

#include <qexfigure/kqexfigure.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qexsdk
{

/// Bounding box of \p pPoints. False if there are none.
inline bool FindBounds(const std::vector<KQexFigurePoint>& pPoints, KQexFigurePoint& pMin, KQexFigurePoint& pMax)
{
    if (pPoints.empty())
    {
        return false;
    }
    pMin = pMax = pPoints.front();
    for (const KQexFigurePoint& lPoint : pPoints)
    {
        pMin = {std::min(pMin.mX, lPoint.mX), std::min(pMin.mY, lPoint.mY), std::min(pMin.mZ, lPoint.mZ)};
        pMax = {std::max(pMax.mX, lPoint.mX), std::max(pMax.mY, lPoint.mY), std::max(pMax.mZ, lPoint.mZ)};
    }
    return true;
}

/// Centimetres.
inline double DistanceOf(const KQexFigurePoint& pOne, const KQexFigurePoint& pOther)
{
    return std::hypot(pOne.mX - pOther.mX, pOne.mY - pOther.mY, pOne.mZ - pOther.mZ);
}

} // namespace qexsdk

#endif
