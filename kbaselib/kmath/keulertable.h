#ifndef KBASELIB_KMATH_KEULERTABLE_H
#define KBASELIB_KMATH_KEULERTABLE_H

/// \file
/// Rotation orders.
///
/// An order code of the math layer gives the axes of an Euler triple, first to last, all fixed axes of the parent: code >> 2 is the
/// first axis (x = 0, y = 1, z = 2), bit 1 is set for the odd permutations (XZY, YXZ, ZYX), bit 0 when the third rotation is about the
/// first axis again. The six orders without a repeated axis are twice their ERotationOrder: XYZ 0, XZY 2, YZX 4, YXZ 6, ZXY 8, ZYX 10.

namespace qexsdk
{

/// The order in which a node's three rotation angles are applied: eEULER_XYZ rotates about x first, R = Rz·Ry·Rx. May hold any integer:
/// code that takes an order must handle other values.
enum ERotationOrder : int
{
    eEULER_XYZ = 0,
    eEULER_XZY = 1,
    eEULER_YZX = 2,
    eEULER_YXZ = 3,
    eEULER_ZXY = 4,
    eEULER_ZYX = 5,
    eSPHERIC_XYZ = 6, ///< Not an Euler order; its angles count as XYZ where one is needed.
};

/// Number of rows of KmEulerAxis.
inline constexpr int KmEulerAxisCount = 12;

/// The axes (I, J, K) of every order code. J follows I in the cycle x, y, z, x when bit 1 is clear and precedes it when set; K is the
/// remaining axis, even for the codes whose third rotation is about I again.
inline constexpr int KmEulerAxis[KmEulerAxisCount][3] = {
    {0, 1, 2}, // XYZ
    {0, 1, 2}, // XYX
    {0, 2, 1}, // XZY
    {0, 2, 1}, // XZX
    {1, 2, 0}, // YZX
    {1, 2, 0}, // YZY
    {1, 0, 2}, // YXZ
    {1, 0, 2}, // YXY
    {2, 0, 1}, // ZXY
    {2, 0, 1}, // ZXZ
    {2, 1, 0}, // ZYX
    {2, 1, 0}, // ZYZ
};

/// The row of KmEulerAxis for \p pOrd; row 0 when that is not a valid code.
inline const int* KmEulerAxisRow(int pOrd)
{
    return KmEulerAxis[pOrd >= 0 && pOrd < KmEulerAxisCount ? pOrd : 0];
}

/// The axes of \p pOrder, an ERotationOrder, in the order in which they are applied; those of XYZ for any other integer.
inline const int* KmRotationOrderAxes(int pOrder)
{
    return KmEulerAxisRow(pOrder >= eEULER_XYZ && pOrder <= eEULER_ZYX ? 2 * pOrder : 0);
}

} // namespace qexsdk

#endif
