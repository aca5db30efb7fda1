#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFVECTORS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFVECTORS_H

#include <kbaselib/kmath/kmath.h>

namespace qexsdk
{

/// Sum of the products of three components.
inline double Dot(const double* pA, const double* pB)
{
    return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2];
}

/// What is square to both; \p pOut may be neither of them.
inline void Cross(double* pOut, const double* pA, const double* pB)
{
    KmV(pOut, pA[1] * pB[2] - pA[2] * pB[1], pA[2] * pB[0] - pA[0] * pB[2], pA[0] * pB[1] - pA[1] * pB[0]);
}

/// \p pA without \p pB; \p pOut may be any of them.
inline void Subtract(double* pOut, const double* pA, const double* pB)
{
    KmV(pOut, pA[0] - pB[0], pA[1] - pB[1], pA[2] - pB[2]);
}

} // namespace qexsdk

#endif
