#ifndef KBASELIB_KMATH_KEULERORDER_H
#define KBASELIB_KMATH_KEULERORDER_H

#include <kbaselib/kmath/kdofcodes.h>
#include <kbaselib/kmath/keulertable.h>

/// \file
/// Conversion between a bone's list of degrees of freedom and rotation orders.

namespace qexsdk
{

/// Order codes by 3 × (axis of the last rotation DOF) + (axis of the one before it). Rows of a repeated axis hold their
/// neighbour's code on purpose: a list that repeats an axis still gets an order.
inline constexpr int sEulerOrderBuf[9] = {
    10, // x, x
    10, // x, y: ZYX
    4,  // x, z: YZX
    8,  // y, x: ZXY
    8,  // y, y
    2,  // y, z: XZY
    6,  // z, x: YXZ
    0,  // z, y: XYZ
    0,  // z, z
};

/// The order code of a bone's rotation DOFs, which are applied in list order. Only the last two rotation DOFs decide, since they
/// determine the third axis; missing ones default to the last axes of XYZ. So no rotation DOF gives XYZ, rx alone ZYX, ry alone ZXY, rz
/// alone XYZ, on purpose: callers rely on it.
inline int EulerOrderFromOrderBuf(const int* pOrderBuf, int pOrderCount)
{
    int lOrderBuf[2] = {2, 1};
    int lIndex = 0;
    for (int lIter = pOrderCount - 1; lIter >= 0 && lIndex < 2; --lIter)
    {
        if (KIsRotationDof(pOrderBuf[lIter]))
        {
            lOrderBuf[lIndex++] = 5 - pOrderBuf[lIter];
        }
    }
    return sEulerOrderBuf[3 * lOrderBuf[0] + lOrderBuf[1]];
}

/// Overwrites the last three of \p pOrderCount DOF codes (at least three, as the caller ensures) with the rotation DOFs in the order of
/// \p pOrder. Changes nothing unless that is one of the six Euler orders.
inline void OrderBufFromEulerOrder(int* pOrderBuf, int pOrderCount, ERotationOrder pOrder)
{
    if (pOrder < eEULER_XYZ || pOrder > eEULER_ZYX)
    {
        return;
    }
    const int* lAxis = KmEulerAxisRow(2 * pOrder);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        pOrderBuf[pOrderCount - 3 + lIter] = 5 - lAxis[lIter];
    }
}

} // namespace qexsdk

#endif
