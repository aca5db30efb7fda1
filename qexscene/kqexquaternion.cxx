#include <qexscene/kqexquaternion.h>

#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/kquaternion.h>
#include <kbaselib/kmath/maths.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

/// Cosine of half the angle above which linear interpolation differs from slerp by less than single precision.
constexpr double kNearlySame = 0.9999;

} // namespace

KQexQuaternion KQexQuaternion::About(int pAxis, double pDegrees)
{
    KQexQuaternion lResult;
    lResult.mData[pAxis] = kSinCosd(0.5 * pDegrees, &lResult.mData[3]);
    return lResult;
}

KQexQuaternion KQexQuaternion::FromEuler(const double pDegrees[3], int pOrder)
{
    const int* lAxes = KmEulerAxisRow(pOrder);
    return About(lAxes[2], pDegrees[lAxes[2]]) * About(lAxes[1], pDegrees[lAxes[1]]) * About(lAxes[0], pDegrees[lAxes[0]]);
}

KQexQuaternion KQexQuaternion::operator*(const KQexQuaternion& pRight) const
{
    const double*  lA = mData;
    const double*  lB = pRight.mData;
    KQexQuaternion lResult;
    lResult.mData[0] = lA[3] * lB[0] + lA[0] * lB[3] + lA[1] * lB[2] - lA[2] * lB[1];
    lResult.mData[1] = lA[3] * lB[1] - lA[0] * lB[2] + lA[1] * lB[3] + lA[2] * lB[0];
    lResult.mData[2] = lA[3] * lB[2] + lA[0] * lB[1] - lA[1] * lB[0] + lA[2] * lB[3];
    lResult.mData[3] = lA[3] * lB[3] - lA[0] * lB[0] - lA[1] * lB[1] - lA[2] * lB[2];
    return lResult;
}

KQexQuaternion KQexQuaternion::Inverse() const
{
    KQexQuaternion lResult;
    for (int i = 0; i < 3; ++i)
    {
        lResult.mData[i] = -mData[i];
    }
    lResult.mData[3] = mData[3];
    return lResult;
}

KQexQuaternion KQexQuaternion::FromAxes(const double (*pImages)[3])
{
    // Start with the largest component, to avoid dividing by a small number.
    const double   lTrace = pImages[0][0] + pImages[1][1] + pImages[2][2];
    KQexQuaternion lQ;
    if (lTrace > 0.0)
    {
        const double lS = 2.0 * std::sqrt(1.0 + lTrace);
        lQ.mData[0] = (pImages[1][2] - pImages[2][1]) / lS;
        lQ.mData[1] = (pImages[2][0] - pImages[0][2]) / lS;
        lQ.mData[2] = (pImages[0][1] - pImages[1][0]) / lS;
        lQ.mData[3] = lS / 4.0;
        return lQ;
    }
    const int    i = pImages[0][0] >= pImages[1][1] && pImages[0][0] >= pImages[2][2] ? 0 : pImages[1][1] >= pImages[2][2] ? 1 : 2;
    const int    j = (i + 1) % 3;
    const int    k = (i + 2) % 3;
    const double lS = 2.0 * std::sqrt(1.0 + pImages[i][i] - pImages[j][j] - pImages[k][k]);
    lQ.mData[i] = lS / 4.0;
    lQ.mData[j] = (pImages[i][j] + pImages[j][i]) / lS;
    lQ.mData[k] = (pImages[i][k] + pImages[k][i]) / lS;
    lQ.mData[3] = (pImages[j][k] - pImages[k][j]) / lS;
    return lQ;
}

bool KQexQuaternion::Normalize()
{
    double lLargest = 0.0;
    for (const double lNumber : mData)
    {
        lLargest = std::max(lLargest, std::fabs(lNumber));
    }
    if (!(lLargest > 0.0) || !std::isfinite(lLargest))
    {
        *this = KQexQuaternion();
        return false;
    }
    double lSquare = 0.0;
    for (double& lNumber : mData)
    {
        lNumber /= lLargest;
        lSquare += lNumber * lNumber;
    }
    for (double& lNumber : mData)
    {
        lNumber /= std::sqrt(lSquare);
    }
    return true;
}

KQexQuaternion KQexQuaternion::Slerp(const KQexQuaternion& pFrom, const KQexQuaternion& pTo, double pFraction)
{
    const double lDot = kQuaternionDot(pFrom.mData, pTo.mData);
    double       lFrom = 0.0;
    double       lTo = 0.0;
    const double lAngle = kSlerpWeights(std::fabs(lDot), kNearlySame, pFraction, lFrom, lTo);
    const double lScale = lAngle > 0.0 ? std::sin(lAngle) : 1.0;
    lFrom /= lScale;
    lTo /= lDot < 0.0 ? -lScale : lScale;
    KQexQuaternion lResult;
    for (int i = 0; i < 4; ++i)
    {
        lResult.mData[i] = lFrom * pFrom.mData[i] + lTo * pTo.mData[i];
    }
    return lResult;
}

void KQexQuaternion::ToAxes(double (*pImages)[4]) const
{
    for (int i = 0; i < 3; ++i)
    {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        pImages[i][i] = 1.0 - 2.0 * (mData[j] * mData[j] + mData[k] * mData[k]);
        pImages[i][j] = 2.0 * (mData[i] * mData[j] + mData[k] * mData[3]);
        pImages[i][k] = 2.0 * (mData[i] * mData[k] - mData[j] * mData[3]);
    }
}

void KQexQuaternion::ToEuler(int pOrder, const double pNear[3], double pDegrees[3]) const
{
    double     lImages[3][4];
    double     lAngles[3];
    double     lNear[3];
    const int* lAxes = KmEulerAxisRow(pOrder);
    ToAxes(lImages);
    KmRtoVord(lAngles, lImages, pOrder);
    for (int i = 0; i < 3; ++i)
    {
        lNear[i] = pNear[lAxes[i]];
    }
    KmNearestEuler(lAngles, lNear, pOrder);
    for (int i = 0; i < 3; ++i)
    {
        pDegrees[lAxes[i]] = lAngles[i];
    }
}

void KQexQuaternion::Rotate(const double pVector[3], double pResult[3]) const
{
    // v + w t + q × t, with t = 2 q × v: two cross products instead of a matrix.
    const double* lQ = mData;
    const double  lT[3] = {2.0 * (lQ[1] * pVector[2] - lQ[2] * pVector[1]), 2.0 * (lQ[2] * pVector[0] - lQ[0] * pVector[2]),
                           2.0 * (lQ[0] * pVector[1] - lQ[1] * pVector[0])};
    const double  lCross[3] = {lQ[1] * lT[2] - lQ[2] * lT[1], lQ[2] * lT[0] - lQ[0] * lT[2], lQ[0] * lT[1] - lQ[1] * lT[0]};
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = pVector[i] + lQ[3] * lT[i] + lCross[i];
    }
}

} // namespace qexsdk
