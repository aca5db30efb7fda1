#include <qexioplugins/acclaim/amc/kqexamcfit.h>

#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kRounding = 1e-12; ///< What rounding makes of a zero of a matrix, and, in degrees, of an angle left over.

bool IsIdentity(const KgeRMatrix& pMatrix)
{
    const KgeRMatrix lNone;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            if (!(std::fabs(pMatrix.mData[i][j] - lNone.mData[i][j]) <= kRounding))
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

/// Sampling turns a bone with axis A by D = D(above) A M A^-1 for the rotation M that its DOFs make, where D(above) is the turn of the
/// bone above from its rest pose. The node is to turn by the same D = G G0^-1, with G its global rotation, G0 the one at rest and both
/// as the skeleton's rest pose is aligned. So M = A^-1 D(above)^-1 D A, and as G = G(above) L with the step L,
/// M = (A^-1 G0(above)) L (G0^-1 A): what is in parentheses never changes.
void KQexAmcFit::SetRest(const KQexMatrix& pNode, const KQexMatrix* pFrom, const KgeRMatrix& pAlign, double pScale)
{
    KgeRMatrix lAlignInv;
    KgeInverse(lAlignInv, pAlign);
    pNode.GetRotation(mRight);
    KgeInverse(mRight, mRight);
    KgeMult(mRight, mRight, pAlign);
    KgeMult(mRight, mRight, mAxis);
    mHasRight = !IsIdentity(mRight);
    mHasFrom = pFrom != nullptr;
    mScale = pScale;
    if (pFrom != nullptr)
    {
        const double* lPlace = pNode.mData[3].mData;
        const double* lFrom = pFrom->mData[3].mData;
        pFrom->GetRotation(mBack);
        KgeMult(mBack, lAlignInv, mBack);
        KmV(mRest, lPlace[0] - lFrom[0], lPlace[1] - lFrom[1], lPlace[2] - lFrom[2]);
        KmVN(mRest, mRest, mScale);
        KmRV(mRest, lAlignInv.mData, mRest);
        mRestLength = KmVlength(mRest);
    }
    KgeMult(mLeft, mAxisInv, mBack);
}

bool KQexAmcFit::TakesAngles(const KQexNode& pNode) const
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
    return IsIdentity(lBefore) && IsIdentity(lAfter) && mSolver.Follows(lOrder);
}

void KQexAmcFit::GetMove(const KQexAmcStep& pStep, const KQexAmcStray* pAbove, double* pMove) const
{
    KmVN(pMove, pStep.mReach, mScale);
    if (mHasFrom)
    {
        KmRV(pMove, mBack.mData, pMove);
        if (pAbove != nullptr)
        {
            KmRV(pMove, pAbove->mTurn.mData, pMove);
        }
        KmV(pMove, pMove[0] - mRest[0], pMove[1] - mRest[1], pMove[2] - mRest[2]);
    }
    KmRV(pMove, mAxisInv.mData, pMove);
}

double KQexAmcFit::Solve(const KQexAmcStep& pStep, const KQexAmcStray* pAbove, double* pAngles, KQexAmcStray& pStray) const
{
    KgeRMatrix lWanted;
    KgeRMatrix lReached;
    if (mHasRight)
    {
        KgeMult(lWanted, pStep.mTurn, mRight);
    }
    else
    {
        KgeSet(lWanted, pStep.mTurn);
    }
    if (pAbove == nullptr)
    {
        KgeMult(lWanted, mLeft, lWanted);
    }
    else
    {
        // The bone above is not where its node is: this one makes up for it.
        KgeMult(lWanted, mBack, lWanted);
        KgeMult(lWanted, pAbove->mTurn, lWanted);
        KgeMult(lWanted, mAxisInv, lWanted);
    }
    const double lOff = mSolver.Solve(lWanted, pAngles, lReached);
    pStray.mIs = lOff > kRounding;
    if (pStray.mIs)
    {
        KgeInverse(lReached, lReached);
        KgeMult(lReached, mAxis, lReached);
        KgeMult(lWanted, lWanted, mAxisInv);
        KgeMult(pStray.mTurn, lReached, lWanted);
    }
    return lOff;
}

} // namespace qexsdk
