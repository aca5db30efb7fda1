// The pivots of a node, and its local transform.

#include <kbaselib/kmath/kmath.h>
#include <qexscene/kqexanimevaluator.h>
#include <qexscene/kqexnode.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

namespace
{

KQexVector4 WithoutW(const KQexVector4& pVector)
{
    return KQexVector4(pVector.mData[0], pVector.mData[1], pVector.mData[2]);
}

/// The rotation of Euler angles \p pAngles (degrees about x, y, z) applied in the order \p pOrder; pMatrix[j] is the image of
/// axis j.
void SetRotation(double (*pMatrix)[4], const double pAngles[3], ERotationOrder pOrder)
{
    if (pAngles[0] == 0.0 && pAngles[1] == 0.0 && pAngles[2] == 0.0)
    {
        for (int lJ = 0; lJ < 3; ++lJ)
        {
            for (int lI = 0; lI < 3; ++lI)
            {
                pMatrix[lJ][lI] = lI == lJ ? 1.0 : 0.0;
            }
        }
    }
    else if (pOrder > eEULER_XYZ && pOrder <= eEULER_ZYX)
    {
        const int  lCode = 2 * pOrder;
        const int* lAxis = KmEulerAxis[lCode];
        KmIJKtoR(pMatrix, pAngles[lAxis[0]], pAngles[lAxis[1]], pAngles[lAxis[2]], lCode);
    }
    else
    {
        KmXYZtoR(pMatrix, pAngles[0], pAngles[1], pAngles[2]);
    }
}

} // namespace

void KQexNode::KPivotRotation::Set(const KQexVector4& pAngles)
{
    mAngles = WithoutW(pAngles);
    mIdentity = mAngles == KQexVector4();
    SetRotation(mMatrix, mAngles.mData, eEULER_XYZ);
}

void KQexNode::SetRotationOrder(int, ERotationOrder pOrder)
{
    mRotationOrder = pOrder;
}

ERotationOrder KQexNode::GetRotationOrder(int) const
{
    return mRotationOrder;
}

void KQexNode::GetRotationOrder(int, ERotationOrder& pOrder) const
{
    pOrder = mRotationOrder;
}

void KQexNode::SetRotationOffset(int, KQexVector4 pOffset)
{
    mRotationOffset = WithoutW(pOffset);
}

KQexVector4 KQexNode::GetRotationOffset(int) const
{
    return mRotationOffset;
}

void KQexNode::SetPreRotation(int, KQexVector4 pRotation)
{
    mPreRotation.Set(pRotation);
}

KQexVector4 KQexNode::GetPreRotation(int) const
{
    return mPreRotation.mAngles;
}

void KQexNode::SetPostRotation(int, KQexVector4 pRotation)
{
    mPostRotation.Set(pRotation);
    // Only the inverse is used.
    KmRi(mPostRotation.mMatrix, mPostRotation.mMatrix);
}

KQexVector4 KQexNode::GetPostRotation(int) const
{
    return mPostRotation.mAngles;
}

void KQexNode::ComposeLocalTransform(KQexMatrix& pResult, const double pTranslation[3], const double pRotation[3],
                                     const double pScaling[3]) const
{
    double lRotation[3][4];
    SetRotation(lRotation, pRotation, mRotationActive ? mRotationOrder : eEULER_XYZ);
    if (mRotationActive && !mPreRotation.mIdentity)
    {
        KmRR(lRotation, mPreRotation.mMatrix, lRotation);
    }
    if (mRotationActive && !mPostRotation.mIdentity)
    {
        KmRR(lRotation, lRotation, mPostRotation.mMatrix);
    }
    for (int lJ = 0; lJ < 3; ++lJ)
    {
        for (int lI = 0; lI < 3; ++lI)
        {
            pResult.mData[lJ].mData[lI] = lRotation[lJ][lI] * pScaling[lJ];
        }
        pResult.mData[lJ].mData[3] = 0.0;
        pResult.mData[3].mData[lJ] = pTranslation[lJ] + mRotationOffset.mData[lJ];
    }
    pResult.mData[3].mData[3] = 1.0;
}

KQexVector4 KQexNode::EvaluateLocalTranslation(KTime pTime, int, bool, bool) const
{
    return GetScene()->GetEvaluator()->GetNodeLocalTranslation(this, pTime);
}

KQexVector4 KQexNode::EvaluateLocalRotation(KTime pTime, int, bool, bool) const
{
    return GetScene()->GetEvaluator()->GetNodeLocalRotation(this, pTime);
}

KQexVector4 KQexNode::EvaluateLocalScaling(KTime pTime, int, bool, bool) const
{
    return GetScene()->GetEvaluator()->GetNodeLocalScaling(this, pTime);
}

} // namespace qexsdk
