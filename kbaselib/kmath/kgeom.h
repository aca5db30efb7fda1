#ifndef KBASELIB_KMATH_KGEOM_H
#define KBASELIB_KMATH_KGEOM_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kmath/keulerorder.h>
#include <kbaselib/kmath/kmath.h>

#include <type_traits>

/// \file
/// Value types over the raw arrays of kmath.h, and its operations on them. Each wrapper calls the function that its comment names,
/// which documents units, aliasing and edge cases, and returns its output.

namespace qexsdk
{

namespace kmathdetail
{
/// Enabled for vector classes of other layers, which convert to const double*.
template <typename TVector>
using KIfComponents = std::enable_if_t<std::is_class_v<TVector> && std::is_convertible_v<const TVector&, const double*>>;
} // namespace kmathdetail

/// A point or a translation with a homogeneous fourth component. Constructors set the fourth to 1; operations keep it.
class QEX_API KgeTVector
{
public:
    /// (0, 0, 0, 1)
    KgeTVector() : mData{0.0, 0.0, 0.0, 1.0} {}
    /// (x, y, z, 1)
    KgeTVector(double pX, double pY, double pZ) : mData{pX, pY, pZ, 1.0} {}
    /// x, y and z of \p pOther; the fourth is always 1.
    KgeTVector(const KgeTVector& pOther) : mData{pOther.mData[0], pOther.mData[1], pOther.mData[2], 1.0} {}

    /// Copies x, y and z; the fourth is kept.
    KgeTVector& operator=(const KgeTVector& pOther)
    {
        KmVset(mData, pOther.mData);
        return *this;
    }
    /// Copies three components; the fourth is kept.
    KgeTVector& operator=(const double* pV)
    {
        KmVset(mData, pV);
        return *this;
    }
    /// Copies the first three components of a vector class of another layer; the fourth is kept.
    template <typename TVector, typename = kmathdetail::KIfComponents<TVector>>
    KgeTVector& operator=(const TVector& pV)
    {
        return *this = static_cast<const double*>(pV);
    }

    /// Zeroes x, y and z; the fourth is kept.
    void Init() { KmV(mData, 0.0, 0.0, 0.0); }

    /// Component \p pIndex, 0 to 3.
    double& operator[](int pIndex) { return mData[pIndex]; }
    /// Component \p pIndex, 0 to 3.
    const double& operator[](int pIndex) const { return mData[pIndex]; }

    double mData[4]; ///< x, y, z and the homogeneous component.
};

/// Three Euler angles in degrees: about x, y and z, or about the axes of the order code that an operation takes.
class QEX_API KgeRVector
{
public:
    /// (0, 0, 0)
    KgeRVector() : mData{0.0, 0.0, 0.0} {}
    /// (\p pX, \p pY, \p pZ), degrees.
    KgeRVector(double pX, double pY, double pZ) : mData{pX, pY, pZ} {}
    /// All three components.
    KgeRVector(const KgeRVector&) = default;

    /// All three components.
    KgeRVector& operator=(const KgeRVector&) = default;
    /// Copies three components.
    KgeRVector& operator=(const double* pV)
    {
        KmVset(mData, pV);
        return *this;
    }
    /// Copies the first three components of a vector class of another layer.
    template <typename TVector, typename = kmathdetail::KIfComponents<TVector>>
    KgeRVector& operator=(const TVector& pV)
    {
        return *this = static_cast<const double*>(pV);
    }

    /// Zeroes the angles.
    void Init() { KmV(mData, 0.0, 0.0, 0.0); }

    /// The three angles.
    operator const double*() const { return mData; }

    double mData[3]; ///< Degrees.
};

/// A rotation. mData[j] is the image of axis j.
class QEX_API KgeRMatrix
{
public:
    /// The identity.
    KgeRMatrix() { KmId(mData); }
    /// The rotation of the XYZ angles \p pV (KmVXYZtoR).
    explicit KgeRMatrix(const KgeRVector& pV)
    {
        KmRinit(mData);
        KmVXYZtoR(mData, pV);
    }

    /// Resets to the identity.
    void Init() { KmId(mData); }

    double mData[4][4]; ///< The rotation is the upper 3×3 part.
};

/// \name Vectors
///@{

/// KmV
inline KgeTVector& KgeSet(KgeTVector& pOut, double pX, double pY, double pZ)
{
    KmV(pOut.mData, pX, pY, pZ);
    return pOut;
}
/// KmVset
inline KgeTVector& KgeSet(KgeTVector& pOut, const KgeTVector& pV)
{
    KmVset(pOut.mData, pV.mData);
    return pOut;
}
/// KmVadd
inline KgeTVector& KgeAdd(KgeTVector& pOut, const KgeTVector& pA, const KgeTVector& pB)
{
    KmVadd(pOut.mData, pA.mData, pB.mData);
    return pOut;
}
/// KmVN
inline KgeTVector& KgeMult(KgeTVector& pOut, const KgeTVector& pV, double pS)
{
    KmVN(pOut.mData, pV.mData, pS);
    return pOut;
}
/// KmVnorm
inline KgeTVector& KgeNorm(KgeTVector& pOut, const KgeTVector& pV)
{
    KmVnorm(pOut.mData, pV.mData);
    return pOut;
}
/// KmVlength
inline double KgeLength(const KgeTVector& pV)
{
    return KmVlength(pV.mData);
}
/// KmRV: \p pM applied to \p pV.
inline KgeTVector& KgeMult(KgeTVector& pOut, const KgeRMatrix& pM, const KgeTVector& pV)
{
    KmRV(pOut.mData, pM.mData, pV.mData);
    return pOut;
}

///@}
/// \name Rotations
///@{

/// KmRset
inline KgeRMatrix& KgeSet(KgeRMatrix& pOut, const KgeRMatrix& pM)
{
    KmRset(pOut.mData, pM.mData);
    return pOut;
}
/// KmRi
inline KgeRMatrix& KgeInverse(KgeRMatrix& pOut, const KgeRMatrix& pM)
{
    KmRi(pOut.mData, pM.mData);
    return pOut;
}
/// KmRR: \p pB applied first.
inline KgeRMatrix& KgeMult(KgeRMatrix& pOut, const KgeRMatrix& pA, const KgeRMatrix& pB)
{
    KmRR(pOut.mData, pA.mData, pB.mData);
    return pOut;
}

///@}
/// \name Rotations and Euler angles
///@{

/// KmRtoVXYZ
inline KgeRVector& KgeSetXYZ(KgeRVector& pOut, const KgeRMatrix& pM)
{
    KmRtoVXYZ(pOut.mData, pM.mData);
    return pOut;
}
/// KmRtoVXYZ
inline KgeRVector& KgeSet(KgeRVector& pOut, const KgeRMatrix& pM)
{
    KmRtoVXYZ(pOut.mData, pM.mData);
    return pOut;
}
/// KmRtoVord
inline KgeRVector& KgeSet(KgeRVector& pOut, const KgeRMatrix& pM, int pOrd)
{
    KmRtoVord(pOut.mData, pM.mData, pOrd);
    return pOut;
}
/// KmVXYZtoR
inline KgeRMatrix& KgeSet(KgeRMatrix& pOut, const KgeRVector& pV)
{
    KmVXYZtoR(pOut.mData, pV.mData);
    return pOut;
}
/// KmVIJKtoR
inline KgeRMatrix& KgeSet(KgeRMatrix& pOut, const KgeRVector& pV, int pOrd)
{
    KmVIJKtoR(pOut.mData, pV.mData, pOrd);
    return pOut;
}

///@}

} // namespace qexsdk

#endif
