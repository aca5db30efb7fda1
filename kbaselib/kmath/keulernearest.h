#ifndef KBASELIB_KMATH_KEULERNEAREST_H
#define KBASELIB_KMATH_KEULERNEAREST_H

#include <kbaselib/kmath/kmath.h>

#include <cmath>

/// \file
/// The Euler triples of one rotation, and which of them is nearest to a given triple.

namespace qexsdk
{

/// \p pAngle plus the full turns (360 degrees) that bring it nearest to \p pNear.
inline double KmNearestTurn(double pAngle, double pNear)
{
    return pAngle + 360.0 * std::round((pNear - pAngle) / 360.0);
}

/// Replaces \p pV by the triple nearest to \p pNear (sum of squared differences) among those of the same rotation: full turns of each
/// angle, and the flipped triple. Angles in degrees, in order of application for the order code \p pOrd.
///
/// The flipped triple adds half a turn to the first and the third angle and reflects the middle one: for three
/// distinct axes (a, b, c) becomes (a + 180, 180 - b, c + 180), for a repeated axis (a + 180, -b, c + 180). Both follow from
/// R(x, 180) R(y, b) R(x, 180) = R(y, -b).
inline double* KmNearestEuler(double* pV, const double* pNear, int pOrd)
{
    // With all three within 60 degrees, the flipped triple is off by at least 120 in two.
    constexpr double kNear = 60.0;
    if (std::fabs(pV[0] - pNear[0]) <= kNear && std::fabs(pV[1] - pNear[1]) <= kNear && std::fabs(pV[2] - pNear[2]) <= kNear)
    {
        return KmV(pV, pV[0] + 0.0, pV[1] + 0.0, pV[2] + 0.0); // Adding zero makes -0 zero, as below.
    }
    const double lFlipped[3] = {pV[0] + 180.0, ((pOrd & 1) != 0 ? 0.0 : 180.0) - pV[1], pV[2] + 180.0};
    double       lPlain[3];
    double       lOther[3];
    double       lPlainSum = 0.0;
    double       lOtherSum = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        lPlain[i] = KmNearestTurn(pV[i], pNear[i]);
        lOther[i] = KmNearestTurn(lFlipped[i], pNear[i]);
        lPlainSum += (lPlain[i] - pNear[i]) * (lPlain[i] - pNear[i]);
        lOtherSum += (lOther[i] - pNear[i]) * (lOther[i] - pNear[i]);
    }
    const double* lBest = lOtherSum < lPlainSum ? lOther : lPlain;
    for (int i = 0; i < 3; ++i)
    {
        pV[i] = lBest[i];
    }
    return pV;
}

} // namespace qexsdk

#endif
