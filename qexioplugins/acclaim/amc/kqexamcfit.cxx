#include <qexioplugins/acclaim/amc/kqexamcfit.h>

#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kRounding = 1e-12; ///< Rounding error of a zero matrix element, and of a zero residual in degrees.

bool IsIdentity(const KgeRMatrix& pMatrix)
{
    const KgeRMatrix lIdentity;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            if (!(std::fabs(pMatrix.mData[i][j] - lIdentity.mData[i][j]) <= kRounding))
            {
                return false;
            }
        }
    }
    return true;
}

} // namespace

KQexAmcFit::KQexAmcFit(const KQexAsfNode& pBone) : mSolver(pBone.mOrderBuf, pBone.mOrderCount)
{
    KgeSet(mAxis, pBone.mAxisRM);
    KgeSet(mAxisInv, pBone.mAxisRMInv);
}

/// Sampling rotates a bone with axis A from its rest pose by D = D(parent) A M A^-1, with M the rotation by its DOFs. The node rotates by
/// the same D = G G0^-1, with G its global rotation, G0 that at rest, both aligned with the skeleton's rest pose. So
/// M = A^-1 D(parent)^-1 D A, and as G = G(parent) L with the step L, M = (A^-1 G0(parent)) L (G0^-1 A). The factors in parentheses
/// are constant. "Parent" is the nearest ancestor bone that has a node.
void KQexAmcFit::SetRest(const KQexJointFrame& pNode, const KQexJointFrame* pParent, const KgeRMatrix& pAlign, double pScale)
{
    KgeRMatrix lAlignInv;
    KgeInverse(lAlignInv, pAlign);
    KgeInverse(mRight, pNode.mRotation);
    KgeMult(mRight, mRight, pAlign);
    KgeMult(mRight, mRight, mAxis);
    mHasRight = !IsIdentity(mRight);
    mHasParent = pParent != nullptr;
    mScale = pScale;
    if (pParent != nullptr)
    {
        const double* lPosition = pNode.mPosition;
        const double* lParent = pParent->mPosition;
        KgeMult(mParentToRest, lAlignInv, pParent->mRotation);
        KmV(mRest, lPosition[0] - lParent[0], lPosition[1] - lParent[1], lPosition[2] - lParent[2]);
        KmVN(mRest, mRest, mScale);
        KmRV(mRest, lAlignInv.mData, mRest);
        mRestLength = KmVlength(mRest);
    }
    KgeMult(mLeft, mAxisInv, mParentToRest);
}

bool KQexAmcFit::CanUseNodeAngles(const KQexNode& pNode) const
{
    KgeRMatrix lBefore;
    KgeRMatrix lAfter;
    if (pNode.GetRotationActive())
    {
        KgeRVector lAngles;
        lAngles = pNode.GetPreRotation();
        KgeSet(lBefore, lAngles);
        lAngles = pNode.GetPostRotation();
        KgeSet(lAfter, lAngles);
        KgeInverse(lAfter, lAfter);
    }
    KgeMult(lBefore, mLeft, lBefore);
    KgeMult(lAfter, lAfter, mRight);
    const ERotationOrder lOrder = pNode.GetRotationActive() ? pNode.GetRotationOrder() : eEULER_XYZ;
    return IsIdentity(lBefore) && IsIdentity(lAfter) && mSolver.MatchesOrder(lOrder);
}

void KQexAmcFit::GetDisplacement(const KQexAmcStep& pStep, const KQexAmcResidual* pParent, double* pDisplacement) const
{
    KmVN(pDisplacement, pStep.mTranslation, mScale);
    if (mHasParent)
    {
        KmRV(pDisplacement, mParentToRest.mData, pDisplacement);
        if (pParent != nullptr)
        {
            KmRV(pDisplacement, pParent->mRotation.mData, pDisplacement);
        }
        KmV(pDisplacement, pDisplacement[0] - mRest[0], pDisplacement[1] - mRest[1], pDisplacement[2] - mRest[2]);
    }
    KmRV(pDisplacement, mAxisInv.mData, pDisplacement);
}

double KQexAmcFit::Solve(const KQexAmcStep& pStep, const KQexAmcResidual* pParent, double* pAngles, KQexAmcResidual& pResidual) const
{
    KgeRMatrix lTarget;
    KgeRMatrix lReached;
    if (mHasRight)
    {
        KgeMult(lTarget, pStep.mRotation, mRight);
    }
    else
    {
        KgeSet(lTarget, pStep.mRotation);
    }
    if (pParent == nullptr)
    {
        KgeMult(lTarget, mLeft, lTarget);
    }
    else
    {
        // Compensates for what the parent missed.
        KgeMult(lTarget, mParentToRest, lTarget);
        KgeMult(lTarget, pParent->mRotation, lTarget);
        KgeMult(lTarget, mAxisInv, lTarget);
    }
    const double lError = mSolver.Solve(lTarget, pAngles, lReached);
    pResidual.mIsSet = lError > kRounding;
    if (pResidual.mIsSet)
    {
        KgeInverse(lReached, lReached);
        KgeMult(lReached, mAxis, lReached);
        KgeMult(lTarget, lTarget, mAxisInv);
        KgeMult(pResidual.mRotation, lReached, lTarget);
    }
    return lError;
}

} // namespace qexsdk
