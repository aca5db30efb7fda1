#ifndef QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFDOFPOSE_H
#define QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFDOFPOSE_H

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

/// \file
/// One frame of a bone: from the values of its DOFs to the local translation and rotation of its host node.
///
/// This is run for every bone of every frame, and its results are those of the general operations (a matrix for every angle, a
/// product for every step, in the order of the DOF list) to the last bit, the signs of zeros included: where a product is exactly
/// zero or a plain turn, arc tangents tell the signs of zeros apart. What is left out cannot show: the sines of angles that are a
/// constant zero, sums with a positive zero where no negative zero can be, and matrices whose angles nobody asks for.

namespace qexsdk
{

/// Sum of the angles by axis, in degrees. A frame's sum begins at +0, so that it never is -0 and adding +0 to it changes nothing.
inline KgeRVector SumOfAngles(const KQexAsfNode& pNode, const double* pDOF, double pAngleUnit)
{
    KgeRVector lR;
    for (int lIter = 0; lIter < pNode.mOrderCount; ++lIter)
    {
        const int lCode = pNode.mOrderBuf[lIter];
        if (KIsRotationDof(lCode))
        {
            lR.mData[5 - lCode] += pDOF[lIter] * pAngleUnit;
        }
    }
    return lR;
}

/// The rotation by \p pAngle degrees about one axis.
inline void SetAxisRotation(KgeRMatrix& pRM, int pAxis, double pAngle)
{
    double       lCos;
    const double lSin = kSinCosd(pAngle, &lCos);
    if (pAxis == 0)
    {
        KmSinCosXYZtoR(pRM.mData, lSin, lCos, 0.0, 1.0, 0.0, 1.0);
    }
    else if (pAxis == 1)
    {
        KmSinCosXYZtoR(pRM.mData, 0.0, 1.0, lSin, lCos, 0.0, 1.0);
    }
    else
    {
        KmSinCosXYZtoR(pRM.mData, 0.0, 1.0, 0.0, 1.0, lSin, lCos);
    }
}

/// The angles by axis, in degrees, with the bone's axis frame folded in: the DOFs' rotations one after another, first in the list
/// first, then the bone's axis, then the inverse of its parent's, taken apart in the order of the list.
inline KgeRVector FoldedAngles(const KQexAsfNode& pNode, const double* pDOF, double pAngleUnit)
{
    KgeRMatrix lRM;
    KgeRMatrix lDofRM;
    for (int lIter = 0; lIter < pNode.mOrderCount; ++lIter)
    {
        const int lCode = pNode.mOrderBuf[lIter];
        if (!KIsRotationDof(lCode))
        {
            continue;
        }
        SetAxisRotation(lDofRM, 5 - lCode, pDOF[lIter] * pAngleUnit);
        KgeMult(lRM, lDofRM, lRM);
    }
    KgeMult(lRM, pNode.mAxisRM, lRM);
    KgeMult(lRM, pNode.mParentAxisRMInv, lRM);
    KgeRVector lR;
    SetAxisAngles(lR, lRM, pNode);
    return lR;
}

/// The local translation: the sum of the DOFs' translations, turned from the bone's axis frame into the node's local space; with the
/// parent bone's end added, unless the node's rotation offset carries that.
inline KgeTVector KeyTranslation(const KQexAsfNode& pNode, const double* pDOF, double pLengthUnit, KQexFrameFlags pFlags)
{
    KgeTVector lT;
    for (int lIter = 0; lIter < pNode.mOrderCount; ++lIter)
    {
        const int lCode = pNode.mOrderBuf[lIter];
        if (KIsTranslationDof(lCode))
        {
            lT.mData[lCode] += pDOF[lIter] * pLengthUnit;
        }
    }
    KgeTVector lGlobal;
    KgeMult(lGlobal, pNode.mAxisRM, lT);
    if (!pFlags.mSetRotatePivotOffet)
    {
        KgeAdd(lGlobal, pNode.mParentPositionV, lGlobal);
        KgeMult(lT, pNode.mParentAxisRMInv, lGlobal);
        return lT;
    }
    if (!pNode.mParent)
    {
        return lGlobal;
    }
    KgeMult(lT, pNode.mParent->mAxisRMInv, lGlobal);
    return lT;
}

} // namespace qexsdk

#endif
