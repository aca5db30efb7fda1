#ifndef QEXSCENE_KQEXQUATERNION_H
#define QEXSCENE_KQEXQUATERNION_H

#include <kbaselib/kbase/kbaseexport.h>

namespace qexsdk
{

/// A rotation as a unit quaternion: x, y, z, w. q and -q are the same rotation.
struct QEX_API KQexQuaternion
{
    double mData[4] = {0.0, 0.0, 0.0, 1.0}; ///< x, y, z, w.

    /// The rotation by \p pDegrees about axis \p pAxis (0 to 2).
    static KQexQuaternion About(int pAxis, double pDegrees);

    /// The rotation by \p pDegrees about x, y and z, applied in the order of code \p pOrder.
    static KQexQuaternion FromEuler(const double pDegrees[3], int pOrder);

    /// The rotation that maps axis j to pImages[j]. The images are orthonormal and right-handed.
    static KQexQuaternion FromAxes(const double (*pImages)[3]);

    /// Between \p pFrom (fraction 0) and \p pTo (1), along the shorter arc at constant speed. Both are unit quaternions; the result has
    /// unit length within 3e-7.
    static KQexQuaternion Slerp(const KQexQuaternion& pFrom, const KQexQuaternion& pTo, double pFraction);

    /// The product of rotations: \p pRight is applied first.
    KQexQuaternion operator*(const KQexQuaternion& pRight) const;

    /// The inverse rotation.
    KQexQuaternion Inverse() const;

    /// Scales to unit length. False, and the identity, when no component differs from zero or one is not finite.
    bool Normalize();

    /// The image of each axis: pImages[j] is that of axis j. Writes three components of each.
    void ToAxes(double (*pImages)[4]) const;

    /// Angles in degrees about x, y and z whose rotations, applied in the order of code \p pOrder, give this one: of all such triples
    /// the one nearest to \p pNear, which may be \p pDegrees.
    void ToEuler(int pOrder, const double pNear[3], double pDegrees[3]) const;

    /// The image of \p pVector; may be in place.
    void Rotate(const double pVector[3], double pResult[3]) const;
};

} // namespace qexsdk

#endif
