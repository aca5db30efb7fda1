#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFVECTORS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFVECTORS_H

#include <kbaselib/kmath/kmath.h>

namespace qexsdk
{

/// Dot product.
inline double Dot(const double* pA, const double* pB)
{
    return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2];
}

/// Cross product; \p pOut must not alias \p pA or \p pB.
inline void Cross(double* pOut, const double* pA, const double* pB)
{
    KmV(pOut, pA[1] * pB[2] - pA[2] * pB[1], pA[2] * pB[0] - pA[0] * pB[2], pA[0] * pB[1] - pA[1] * pB[0]);
}

/// \p pA - \p pB; \p pOut may alias either.
inline void Subtract(double* pOut, const double* pA, const double* pB)
{
    KmV(pOut, pA[0] - pB[0], pA[1] - pB[1], pA[2] - pB[2]);
}

} // namespace qexsdk

#endif
