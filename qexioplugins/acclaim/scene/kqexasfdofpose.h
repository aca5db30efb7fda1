#ifndef QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFDOFPOSE_H
#define QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFDOFPOSE_H

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>

/// \file
/// One frame of a bone: from the values of its DOFs to the local translation and rotation of its host node.
///
/// This runs for every bone of every frame. Its results equal those of the general operations (a matrix per angle, a product per step,
/// in the order of the DOF list) to the last bit, signs of zeros included, as arc tangents depend on them. Only what cannot change the
/// result is omitted: sines of constant zero angles, adding +0 where -0 cannot occur, and matrices whose angles are not needed.

namespace qexsdk
{

/// Sum of the angles by axis, in degrees. Sums start at +0, so they are never -0 and adding +0 would change nothing.
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

/// The angles by axis, in degrees, with the bone's axis frame folded in: the DOFs' rotations in the order of the list, then the
/// bone's axis, then the inverse of its parent's, decomposed in the order of the list.
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

/// The local translation: the sum of the DOFs' translations, rotated from the bone's axis frame into the node's local space, plus the
/// parent bone's end unless that is in the node's rotation offset.
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
