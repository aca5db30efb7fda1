#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFLOCALS_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFLOCALS_H

#include <kbaselib/kmath/keulerorder.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// The two frame flags (see KQexAsfNode) as one value.
struct KQexFrameFlags
{
    bool mSetRotatePivotOffet = false; ///< The bone's offset is in the host node's rotation offset.
    bool mSetPreRotation = false;      ///< The bone's axis frame is in the host node's pre-rotation.
};

/// Computes the bone's axis frame from the angles and the order of its axis line.
inline void SetAxisFrame(KQexAsfNode* pNode)
{
    KgeSet(pNode->mAxisRM, pNode->mOrientationV, pNode->mOrientationOrder);
    KgeInverse(pNode->mAxisRMInv, pNode->mAxisRM);
}

/// Angles of \p pRM about x, y and z, in degrees, for the rotation order that the bone's DOF list implies. The decomposition
/// gives them in the order of application; \p pAngles has them by axis.
inline void SetAxisAngles(KgeRVector& pAngles, const KgeRMatrix& pRM, const KQexAsfNode& pNode)
{
    const int  lRotOrder = EulerOrderFromOrderBuf(pNode.mOrderBuf, pNode.mOrderCount);
    KgeRVector lApplied;
    KgeSet(lApplied, pRM, lRotOrder);
    const int* lAxis = KmEulerAxis[lRotOrder];
    pAngles.mData[lAxis[0]] = lApplied.mData[0];
    pAngles.mData[lAxis[1]] = lApplied.mData[1];
    pAngles.mData[lAxis[2]] = lApplied.mData[2];
}

/// The parent bone's end in the parent's axis frame: where this bone's host node is.
inline void SetLocalTranslation(KQexAsfNode& pNode)
{
    KgeMult(pNode.mLT, pNode.mParentAxisRMInv, pNode.mParentPositionV);
}

/// The bone's axis relative to its parent's axis.
inline void SetLocalRotation(KQexAsfNode& pNode)
{
    KgeRMatrix lRM;
    KgeMult(lRM, pNode.mParentAxisRMInv, pNode.mAxisRM);
    SetAxisAngles(pNode.mLR, lRM, pNode);
}

/// Local translation and rotation, except those that a frame flag puts into the host node's rotation offset or pre-rotation.
inline void SetLocals(KQexAsfNode& pNode, KQexFrameFlags pFlags)
{
    if (!pFlags.mSetRotatePivotOffet)
    {
        SetLocalTranslation(pNode);
    }
    if (!pFlags.mSetPreRotation)
    {
        SetLocalRotation(pNode);
    }
}

} // namespace qexsdk

#endif
