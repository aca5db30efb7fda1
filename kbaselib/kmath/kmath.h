#ifndef KBASELIB_KMATH_KMATH_H
#define KBASELIB_KMATH_KMATH_H

#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/maths.h>

/// \file
/// Vectors of three doubles and 4×4 matrices as raw arrays. Every function returns its output and allocates nothing. There is no error
/// reporting: NaN propagates. Angles are in degrees.
///
/// In a matrix, m[j] is the image of the unit axis j: m applied to v is vx·m[0] + vy·m[1] + vz·m[2], and the element in row r, column c
/// of a textbook matrix is m[c][r]. Products compose as for column vectors: A×B applies B first. Rotations use the upper 3×3 part,
/// m[0..2][0..2], and leave the rest; no translation is stored or applied.
///
/// Sums and products are evaluated in the order written: results are compared to the last bit.

namespace qexsdk
{

/// A writable matrix.
using KmMatrix = double (*)[4];
/// A read-only matrix.
using KmConstMatrix = const double (*)[4];

/// \name Vectors of three components; a fourth is neither read nor written
///@{

/// out = (x, y, z)
inline double* KmV(double* pOut, double pX, double pY, double pZ)
{
    pOut[0] = pX;
    pOut[1] = pY;
    pOut[2] = pZ;
    return pOut;
}

/// out = v
inline double* KmVset(double* pOut, const double* pV)
{
    return KmV(pOut, pV[0], pV[1], pV[2]);
}

/// out = -v; may be in place.
inline double* KmVneg(double* pOut, const double* pV)
{
    return KmV(pOut, -pV[0], -pV[1], -pV[2]);
}

/// out = a + b; may be in place.
inline double* KmVadd(double* pOut, const double* pA, const double* pB)
{
    return KmV(pOut, pA[0] + pB[0], pA[1] + pB[1], pA[2] + pB[2]);
}

/// out = v × s; may be in place.
inline double* KmVN(double* pOut, const double* pV, double pS)
{
    return KmV(pOut, pV[0] * pS, pV[1] * pS, pV[2] * pS);
}

/// The length of v; zero only for an exact zero.
inline double KmVlength(const double* pV)
{
    return kNorm(pV[0], pV[1], pV[2]);
}

/// out = v × (1 / length of v), (0, 0, 0) when the length is exactly zero; may be in place. A vector whose sum of squares underflows or
/// overflows is divided by its largest component first.
inline double* KmVnorm(double* pOut, const double* pV)
{
    double lV[3] = {pV[0], pV[1], pV[2]};
    if (kIsOutOfRange(kSumOfSquares(lV[0], lV[1], lV[2])))
    {
        const double lLargest = kLargest(lV[0], lV[1], lV[2]);
        if (lLargest != 0.0 && !std::isinf(lLargest))
        {
            KmV(lV, lV[0] / lLargest, lV[1] / lLargest, lV[2] / lLargest);
        }
    }
    const double lLength = KmVlength(lV);
    return lLength == 0.0 ? KmV(pOut, 0.0, 0.0, 0.0) : KmVN(pOut, lV, 1.0 / lLength);
}

///@}
/// \name Matrices
///@{

/// Sets the fourth row and column to those of the identity; leaves the 3×3 part.
inline KmMatrix KmRinit(KmMatrix pM)
{
    pM[0][3] = 0.0;
    pM[1][3] = 0.0;
    pM[2][3] = 0.0;
    KmV(pM[3], 0.0, 0.0, 0.0);
    pM[3][3] = 1.0;
    return pM;
}

/// The 4×4 identity.
inline KmMatrix KmId(KmMatrix pM)
{
    KmV(pM[0], 1.0, 0.0, 0.0);
    KmV(pM[1], 0.0, 1.0, 0.0);
    KmV(pM[2], 0.0, 0.0, 1.0);
    return KmRinit(pM);
}

/// Copies the 3×3 part.
inline KmMatrix KmRset(KmMatrix pOut, KmConstMatrix pM)
{
    KmVset(pOut[0], pM[0]);
    KmVset(pOut[1], pM[1]);
    KmVset(pOut[2], pM[2]);
    return pOut;
}

/// The inverse of a rotation, its transpose: out[i][j] = m[j][i]. May be in place.
inline KmMatrix KmRi(KmMatrix pOut, KmConstMatrix pM)
{
    const double l01 = pM[0][1];
    const double l02 = pM[0][2];
    const double l12 = pM[1][2];
    pOut[0][0] = pM[0][0];
    pOut[1][1] = pM[1][1];
    pOut[2][2] = pM[2][2];
    pOut[0][1] = pM[1][0];
    pOut[0][2] = pM[2][0];
    pOut[1][2] = pM[2][1];
    pOut[1][0] = l01;
    pOut[2][0] = l02;
    pOut[2][1] = l12;
    return pOut;
}

/// out = m applied to v; may be in place.
inline double* KmRV(double* pOut, KmConstMatrix pM, const double* pV)
{
    return KmV(pOut, pM[0][0] * pV[0] + pM[1][0] * pV[1] + pM[2][0] * pV[2], pM[0][1] * pV[0] + pM[1][1] * pV[1] + pM[2][1] * pV[2],
               pM[0][2] * pV[0] + pM[1][2] * pV[1] + pM[2][2] * pV[2]);
}

/// out = a × b, b applied first: out[r][i] = b[r][0]·a[0][i] + b[r][1]·a[1][i] + b[r][2]·a[2][i]. \p pOut may be \p pA, \p pB or
/// both: everything is computed before anything is stored.
inline KmMatrix KmRR(KmMatrix pOut, KmConstMatrix pA, KmConstMatrix pB)
{
    // Nine variables instead of an array: loading in pairs what was stored one by one would stall until the stores complete.
    const auto lAt = [pA, pB](int pRow, int pColumn)
    {
        return pB[pRow][0] * pA[0][pColumn] + pB[pRow][1] * pA[1][pColumn] + pB[pRow][2] * pA[2][pColumn];
    };
    const double l00 = lAt(0, 0);
    const double l01 = lAt(0, 1);
    const double l02 = lAt(0, 2);
    const double l10 = lAt(1, 0);
    const double l11 = lAt(1, 1);
    const double l12 = lAt(1, 2);
    const double l20 = lAt(2, 0);
    const double l21 = lAt(2, 1);
    const double l22 = lAt(2, 2);
    KmV(pOut[0], l00, l01, l02);
    KmV(pOut[1], l10, l11, l12);
    KmV(pOut[2], l20, l21, l22);
    return pOut;
}

///@}
/// \name Euler angles to rotations; only the 3×3 part is written
/// The formulas are Ken Shoemake's (Euler Angle Conversion, Graphics Gems IV), with every order about fixed axes.
///@{

/// KmXYZtoR of angles given by sine and cosine. For a constant angle 0 the compiler drops the factors of 1; the result equals that of
/// KmXYZtoR to the last bit.
inline KmMatrix KmSinCosXYZtoR(KmMatrix pM, double pSX, double pCX, double pSY, double pCY, double pSZ, double pCZ)
{
    KmV(pM[0], pCY * pCZ, pCY * pSZ, -pSY);
    KmV(pM[1], pCZ * (pSY * pSX) - pSZ * pCX, pSZ * (pSY * pSX) + pCZ * pCX, pCY * pSX);
    KmV(pM[2], pCZ * (pSY * pCX) + pSZ * pSX, pSZ * (pSY * pCX) - pCZ * pSX, pCX * pCY);
    return pM;
}

/// The rotation by \p pX about x, then \p pY about y, then \p pZ about z: Rz·Ry·Rx.
inline KmMatrix KmXYZtoR(KmMatrix pM, double pX, double pY, double pZ)
{
    double       lCX, lCY, lCZ;
    const double lSX = kSinCosd(pX, &lCX);
    const double lSY = kSinCosd(pY, &lCY);
    const double lSZ = kSinCosd(pZ, &lCZ);
    return KmSinCosXYZtoR(pM, lSX, lCX, lSY, lCY, lSZ, lCZ);
}

/// KmXYZtoR of the angles (v[0], v[1], v[2]).
inline KmMatrix KmVXYZtoR(KmMatrix pM, const double* pV)
{
    return KmXYZtoR(pM, pV[0], pV[1], pV[2]);
}

/// KmVXYZtoR.
inline KmMatrix KmVtoR(KmMatrix pM, const double* pV)
{
    return KmVXYZtoR(pM, pV);
}

/// The rotation by \p pI, \p pJ and \p pK about the first, second and third axis of order code \p pOrd. An invalid code gets the axes
/// of XYZ, but keeps its own bits 0 and 1.
inline KmMatrix KmIJKtoR(KmMatrix pRo, double pI, double pJ, double pK, int pOrd)
{
    if ((pOrd & 2) != 0)
    {
        pI = -pI;
        pJ = -pJ;
        pK = -pK;
    }
    double       lCI, lCJ, lCK;
    const double lSI = kSinCosd(pI, &lCI);
    const double lSJ = kSinCosd(pJ, &lCJ);
    const double lSK = kSinCosd(pK, &lCK);
    const double lCC = lCI * lCK;
    const double lCS = lCI * lSK;
    const double lSC = lSI * lCK;
    const double lSS = lSI * lSK;

    const int* lAxis = KmEulerAxisRow(pOrd);
    double*    lI = pRo[lAxis[0]];
    double*    lJ = pRo[lAxis[1]];
    double*    lK = pRo[lAxis[2]];
    const int  i = lAxis[0];
    const int  j = lAxis[1];
    const int  k = lAxis[2];
    if ((pOrd & 1) == 0)
    {
        lI[i] = lCJ * lCK;
        lJ[i] = lSJ * lSC - lCS;
        lK[i] = lSJ * lCC + lSS;
        lI[j] = lCJ * lSK;
        lJ[j] = lSJ * lSS + lCC;
        lK[j] = lSJ * lCS - lSC;
        lI[k] = -lSJ;
        lJ[k] = lCJ * lSI;
        lK[k] = lCJ * lCI;
    }
    else
    {
        lI[i] = lCJ;
        lJ[i] = lSJ * lSI;
        lK[i] = lSJ * lCI;
        lI[j] = lSJ * lSK;
        lJ[j] = -lCJ * lSS + lCC;
        lK[j] = -lCJ * lCS - lSC;
        lI[k] = -lSJ * lCK;
        lJ[k] = lCJ * lSC + lCS;
        lK[k] = lCJ * lCC - lSS;
    }
    return pRo;
}

/// KmIJKtoR of the angles (v[0], v[1], v[2]), in order of application.
inline KmMatrix KmVIJKtoR(KmMatrix pM, const double* pV, int pOrd)
{
    return KmIJKtoR(pM, pV[0], pV[1], pV[2], pOrd);
}

///@}
/// \name Rotations to Euler angles
///@{

/// The XYZ angles of a rotation: about x, y and z, with y from -90 to 90. Where |sin y| is at least 0.999999 (y within 0.081 degrees
/// of a pole), y is ±90, z is 0 and x covers the remaining rotation.
inline double* KmRtoVXYZ(double* pOut, KmConstMatrix pM)
{
    constexpr double kPole = 0.999999;
    if (pM[0][2] >= kPole)
    {
        return KmV(pOut, kAtand(-pM[2][1], -pM[2][0]), -90.0, 0.0);
    }
    if (pM[0][2] <= -kPole)
    {
        return KmV(pOut, kAtand(pM[1][0], pM[1][1]), 90.0, 0.0);
    }
    return KmV(pOut, kAtand(pM[1][2], pM[2][2]), -kAsind(pM[0][2]), kAtand(pM[0][1], pM[0][0]));
}

/// KmRtoVXYZ.
inline double* KmRtoV(double* pOut, KmConstMatrix pM)
{
    return KmRtoVXYZ(pOut, pM);
}

/// The angles of a rotation for order code \p pOrd, in order of application, so that KmIJKtoR reproduces it. In gimbal lock (cosine of
/// the middle angle, or its sine for a repeated axis, up to 1.6e-9) the third angle is 0 and the first covers the remaining rotation.
/// An invalid code is treated as in KmIJKtoR.
inline double* KmRtoVord(double* pVo, KmConstMatrix pRi, int pOrd)
{
    constexpr double kLock = 1.6e-9;
    const int*       lAxis = KmEulerAxisRow(pOrd);
    const double*    lI = pRi[lAxis[0]];
    const double*    lJ = pRi[lAxis[1]];
    const double*    lK = pRi[lAxis[2]];
    const int        i = lAxis[0];
    const int        j = lAxis[1];
    const int        k = lAxis[2];
    if ((pOrd & 1) == 0)
    {
        const double lT = kHypot(lI[i], lI[j]);
        if (lT > kLock)
        {
            KmV(pVo, kAtand(lJ[k], lK[k]), kAtand(-lI[k], lT), kAtand(lI[j], lI[i]));
        }
        else
        {
            KmV(pVo, kAtand(-lK[j], lJ[j]), kAtand(-lI[k], lT), 0.0);
        }
    }
    else
    {
        const double lT = kHypot(lJ[i], lK[i]);
        if (lT > kLock)
        {
            KmV(pVo, kAtand(lJ[i], lK[i]), kAtand(lT, lI[i]), kAtand(lI[j], -lI[k]));
        }
        else
        {
            KmV(pVo, kAtand(-lK[j], lJ[j]), kAtand(lT, lI[i]), 0.0);
        }
    }
    return (pOrd & 2) != 0 ? KmVneg(pVo, pVo) : pVo;
}

///@}

} // namespace qexsdk

#endif
