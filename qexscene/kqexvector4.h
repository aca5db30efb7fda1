#ifndef QEXSCENE_KQEXVECTOR4_H
#define QEXSCENE_KQEXVECTOR4_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kmath/kgeom.h>
#include <qexscene/kqexvectortemplate3.h>

namespace qexsdk
{

/// The scene's vector: a translation, a scaling or three Euler angles (degrees) in x, y, z, and an unused w. Default (0, 0, 0, 0).
/// Every vector that a node or the evaluator returns has w = 0, because comparison includes w.
class QEX_API KQexVector4
{
public:
    /// x, y, z, w.
    double mData[4] = {0.0, 0.0, 0.0, 0.0};

    constexpr KQexVector4() = default;
    /// (\p pX, \p pY, \p pZ, \p pW).
    constexpr KQexVector4(double pX, double pY, double pZ, double pW = 0.0) : mData{pX, pY, pZ, pW} {}

    /// \name From three components; w becomes 0.
    /// \{

    /// x, y, z of a property's value.
    constexpr KQexVector4(const qexVectorTemplate3<double>& pV) : mData{pV[0], pV[1], pV[2], 0.0} {}
    /// x, y, z of a translation, without its homogeneous component.
    KQexVector4(const KgeTVector& pV) : mData{pV.mData[0], pV.mData[1], pV.mData[2], 0.0} {}
    /// Three Euler angles.
    KQexVector4(const KgeRVector& pV) : mData{pV.mData[0], pV.mData[1], pV.mData[2], 0.0} {}
    /// \}

    /// x, y, z as a property's value.
    constexpr operator qexVectorTemplate3<double>() const { return {mData[0], mData[1], mData[2]}; }

    /// x, y, z as a new KgeTVector, whose fourth component is 1. Assigning to an existing KgeTVector or KgeRVector uses that
    /// class's own operator.
    operator KgeTVector() const { return {mData[0], mData[1], mData[2]}; }
    /// x, y, z as Euler angles.
    operator KgeRVector() const { return {mData[0], mData[1], mData[2]}; }

    /// All four components.
    constexpr operator const double*() const { return mData; }

    /// Component \p pIndex, 0 to 3.
    constexpr double& operator[](int pIndex) { return mData[pIndex]; }
    /// Component \p pIndex, 0 to 3.
    constexpr const double& operator[](int pIndex) const { return mData[pIndex]; }

    /// Component by component, all four.
    constexpr KQexVector4& operator*=(const KQexVector4& pOther)
    {
        for (int lI = 0; lI < 4; ++lI)
        {
            mData[lI] *= pOther.mData[lI];
        }
        return *this;
    }
    /// Component by component, all four.
    constexpr KQexVector4& operator+=(const KQexVector4& pOther)
    {
        for (int lI = 0; lI < 4; ++lI)
        {
            mData[lI] += pOther.mData[lI];
        }
        return *this;
    }

    /// Length of (x, y, z).
    double Length() const { return KmVlength(mData); }

    /// Exact comparison of all four components, without any tolerance.
    constexpr bool operator==(const KQexVector4& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1] && mData[2] == pOther.mData[2] && mData[3] == pOther.mData[3];
    }
    /// Not operator==.
    constexpr bool operator!=(const KQexVector4& pOther) const { return !(*this == pOther); }
};

} // namespace qexsdk

#endif
