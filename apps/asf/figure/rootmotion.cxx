#include <apps/asf/figure/rootmotion.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <kbaselib/kmath/kmath.h>
#include <qexioplugins/acclaim/scene/kqexasfdofpose.h>

#include <algorithm>
#include <cmath>

namespace asfapp
{

namespace
{

using qexsdk::KgeRMatrix;
using qexsdk::KgeTVector;

/// Without the rounding errors of the conversion, which would fill the file with digits.
double WithoutNoise(double pValue)
{
    return std::round(pValue * 1e9) / 1e9 + 0.0;
}

bool IsZero(const double* pVector)
{
    return pVector[0] == 0.0 && pVector[1] == 0.0 && pVector[2] == 0.0;
}

} // namespace

bool HasRestPosition(const qexsdk::KQexAsfNode& pRoot)
{
    return !IsZero(pRoot.mPositionV.mData);
}

bool HasRestOrientation(const qexsdk::KQexAsfNode& pRoot)
{
    return !IsZero(pRoot.mOrientationV.mData);
}

KRootMotion::KRootMotion(const qexsdk::KQexAsfNode& pRoot)
    : mRoot(pRoot), mSolver(pRoot.mOrderBuf, pRoot.mOrderCount), mIsNeeded(HasRestPosition(pRoot) || HasRestOrientation(pRoot))
{
}

/// The rotation that the root's children see: that of the DOFs, each later one on the left, in the root's axis frame.
void KRootMotion::GetRotation(const double* pValues, double pAngleFactor, KgeRMatrix& pRotation) const
{
    for (int lDof = 0; lDof < mRoot.mOrderCount; ++lDof)
    {
        if (qexsdk::KIsRotationDof(mRoot.mOrderBuf[lDof]))
        {
            KgeRMatrix lOne;
            qexsdk::SetAxisRotation(lOne, 5 - mRoot.mOrderBuf[lDof], pValues[lDof] * pAngleFactor);
            KgeMult(pRotation, lOne, pRotation);
        }
    }
    KgeMult(pRotation, mRoot.mAxisRM, pRotation);
    KgeMult(pRotation, pRotation, mRoot.mAxisRMInv);
}

void KRootMotion::SetRotation(const KgeRMatrix& pRotation, double* pValues, double pAngleFactor)
{
    double     lAngles[6];
    KgeRMatrix lReached;
    mLostDegrees = std::max(mLostDegrees, mSolver.Solve(pRotation, lAngles, lReached));
    if (mHasLast)
    {
        mSolver.MakeContinuous(lAngles, mLast);
    }
    std::copy(lAngles, lAngles + mSolver.GetCount(), mLast);
    mHasLast = true;
    const double* lAngle = lAngles;
    for (int lDof = 0; lDof < mRoot.mOrderCount; ++lDof)
    {
        if (qexsdk::KIsRotationDof(mRoot.mOrderBuf[lDof]))
        {
            pValues[lDof] = WithoutNoise(*lAngle++ / pAngleFactor);
        }
    }
}

/// The first DOF of each axis receives its component.
void KRootMotion::SetTranslation(const KgeTVector& pTranslation, double* pValues, double pLengthFactor)
{
    KgeTVector lRest = pTranslation;
    for (int lDof = 0; lDof < mRoot.mOrderCount; ++lDof)
    {
        const int lCode = mRoot.mOrderBuf[lDof];
        if (qexsdk::KIsTranslationDof(lCode))
        {
            pValues[lDof] = WithoutNoise(lRest[lCode] / pLengthFactor);
            lRest[lCode] = 0.0;
        }
    }
    mLostCentimetres = std::max(mLostCentimetres, qexsdk::KmVlength(lRest.mData));
}

void KRootMotion::Convert(double* pValues, double pLengthFactor, double pAngleFactor)
{
    KgeTVector lOwn;
    for (int lDof = 0; lDof < mRoot.mOrderCount; ++lDof)
    {
        if (qexsdk::KIsTranslationDof(mRoot.mOrderBuf[lDof]))
        {
            lOwn[mRoot.mOrderBuf[lDof]] += pValues[lDof] * pLengthFactor;
        }
    }
    KgeRMatrix lRotation;
    KgeTVector lTranslation;
    KgeTVector lOffset;
    GetRotation(pValues, pAngleFactor, lRotation);
    KgeMult(lTranslation, mRoot.mAxisRM, lOwn);
    // The root's position is the offset of its children; it is never converted to centimetres.
    KgeMult(lOffset, lRotation, mRoot.mPositionV);
    KgeAdd(lTranslation, lTranslation, lOffset);
    SetTranslation(lTranslation, pValues, pLengthFactor);
    SetRotation(lRotation, pValues, pAngleFactor);
}

} // namespace asfapp
