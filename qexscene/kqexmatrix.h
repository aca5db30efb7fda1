#ifndef QEXSCENE_KQEXMATRIX_H
#define QEXSCENE_KQEXMATRIX_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexvector4.h>

namespace qexsdk
{

/// An affine transform. mData[j] is the image of axis j (j = 0, 1, 2 for x, y, z; w = 0) and mData[3] the translation
/// (w = 1): a point p goes to x·mData[0] + y·mData[1] + z·mData[2] + mData[3]. Identity by default.
class QEX_API KQexMatrix
{
public:
    /// Images of the axes, then the translation.
    KQexVector4 mData[4] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0, 1.0}};

    /// The translation, with w = 0.
    KQexVector4 GetT() const { return {mData[3].mData[0], mData[3].mData[1], mData[3].mData[2]}; }

    /// The image of the point \p pPoint; the w of the result is 0.
    KQexVector4 Map(const KQexVector4& pPoint) const
    {
        KQexVector4 lResult;
        for (int lI = 0; lI < 3; ++lI)
        {
            lResult.mData[lI] = mData[0].mData[lI] * pPoint.mData[0] + mData[1].mData[lI] * pPoint.mData[1] +
                                mData[2].mData[lI] * pPoint.mData[2] + mData[3].mData[lI];
        }
        return lResult;
    }

    /// The rotation without scaling and shear: Gram-Schmidt on the images of the axes, x first. Writes only the upper 3x3 part of
    /// \p pRotation. Axes that cannot be normalised, because the transform flattens x or the x-y plane, become zero.
    void GetRotation(KgeRMatrix& pRotation) const
    {
        double(*lM)[4] = pRotation.mData;
        KmVnorm(lM[0], mData[0].mData);
        const double* lY = mData[1].mData;
        const double  lDot = lM[0][0] * lY[0] + lM[0][1] * lY[1] + lM[0][2] * lY[2];
        KmV(lM[1], lY[0] - lDot * lM[0][0], lY[1] - lDot * lM[0][1], lY[2] - lDot * lM[0][2]);
        KmVnorm(lM[1], lM[1]);
        KmV(lM[2], lM[0][1] * lM[1][2] - lM[0][2] * lM[1][1], lM[0][2] * lM[1][0] - lM[0][0] * lM[1][2],
            lM[0][0] * lM[1][1] - lM[0][1] * lM[1][0]);
    }

    /// The product of column-vector matrices: \p pRight is applied first, then this one.
    KQexMatrix operator*(const KQexMatrix& pRight) const
    {
        KQexMatrix lResult;
        for (int lJ = 0; lJ < 4; ++lJ)
        {
            const double* lColumn = pRight.mData[lJ].mData;
            for (int lI = 0; lI < 3; ++lI)
            {
                lResult.mData[lJ].mData[lI] =
                    mData[0].mData[lI] * lColumn[0] + mData[1].mData[lI] * lColumn[1] + mData[2].mData[lI] * lColumn[2];
            }
        }
        for (int lI = 0; lI < 3; ++lI)
        {
            lResult.mData[3].mData[lI] += mData[3].mData[lI];
        }
        return lResult;
    }
};

} // namespace qexsdk

#endif
