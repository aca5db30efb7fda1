#ifndef KBASELIB_KMATH_KQUATERNION_H
#define KBASELIB_KMATH_KQUATERNION_H

#include <cmath>

/// \file
/// Quaternions as arrays of four floats or doubles, in any order of components. q and -q are the same rotation.

namespace qexsdk
{

/// The sum of the products of the components; for unit quaternions, ± the cosine of half the angle between the rotations.
template <typename T>
inline T kQuaternionDot(const T* pA, const T* pB)
{
    return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2] + pA[3] * pB[3];
}

/// Negates q if -q is nearer to \p pNear.
template <typename T>
inline void kChooseNearer(T* pQ, const T* pNear)
{
    if (kQuaternionDot(pQ, pNear) < T(0))
    {
        for (int i = 0; i < 4; ++i)
        {
            pQ[i] = -pQ[i];
        }
    }
}

/// The weights of two unit quaternions in the one that is \p pFraction of the way between them, at constant speed; their sum is that one
/// times the sine of the angle that is returned. Where \p pCosine, 0 to 1, their dot product, is \p pNearlySame or more, the weights are
/// linear, and the angle 0.
template <typename T>
inline T kSlerpWeights(T pCosine, T pNearlySame, T pFraction, T& pFrom, T& pTo)
{
    pFrom = T(1) - pFraction;
    pTo = pFraction;
    if (!(pCosine < pNearlySame))
    {
        return T(0);
    }
    const T lAngle = std::acos(pCosine);
    pFrom = std::sin(pFrom * lAngle);
    pTo = std::sin(pTo * lAngle);
    return lAngle;
}

} // namespace qexsdk

#endif
