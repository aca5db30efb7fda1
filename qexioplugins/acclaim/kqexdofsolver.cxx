#include <qexioplugins/acclaim/kqexdofsolver.h>

#include <kbaselib/kmath/keulernearest.h>
#include <kbaselib/kmath/keulertable.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr int    kMaxRounds = 300;     ///< Rounds after which the angles are taken as they are.
constexpr double kSettled = 1e-10;     ///< Degrees by which no angle moves any more.
constexpr double kGimbalCosine = 1e-6; ///< Below this the gain is as good as boundless.

/// The order code whose first axes are those given. A pair of axes has one code, a single axis takes the rising one.
int CodeOf(const int* pAxes, int pCount)
{
    for (int lCode = 0; lCode < KmEulerAxisCount; lCode += 2)
    {
        const int* lRow = KmEulerAxisRow(lCode);
        if (lRow[0] == pAxes[0] && (pCount < 2 || lRow[1] == pAxes[1]))
        {
            return lCode;
        }
    }
    return 0;
}

/// The angle about \p pAxis that brings identity nearest to \p pWanted: where the trace of their quotient is greatest.
double BestAngle(const KgeRMatrix& pWanted, int pAxis)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    const double(*lM)[4] = pWanted.mData;
    return kAtand(lM[lJ][lK] - lM[lK][lJ], lM[lJ][lJ] + lM[lK][lK]);
}

} // namespace

double AngleBetween(const KgeRMatrix& pA, const KgeRMatrix& pB)
{
    // From the sine of half the angle: the trace's arc cosine is blind to small ones.
    double lSum = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            const double lDifference = pA.mData[i][j] - pB.mData[i][j];
            lSum += lDifference * lDifference;
        }
    }
    return 2.0 * kAsind(std::min(1.0, std::sqrt(lSum / 8.0)));
}

KDofSolver::KDofSolver(const int* pCodes, int pCount)
{
    bool lSeen[3] = {false, false, false};
    for (int i = 0; i < pCount; ++i)
    {
        if (pCodes[i] >= 3 && pCodes[i] <= 5)
        {
            const int lAxis = 5 - pCodes[i];
            mIsDistinct = mIsDistinct && !lSeen[lAxis];
            lSeen[lAxis] = true;
            mAxes[mCount++] = lAxis;
        }
    }
    const bool lReturns = mCount == 3 && mAxes[0] == mAxes[2] && mAxes[0] != mAxes[1];
    mIsWhole = (mCount == 3 && mIsDistinct) || lReturns;
    mCode = mCount > 0 ? CodeOf(mAxes, mIsDistinct || lReturns ? mCount : 1) : 0;
    mCode |= lReturns ? 1 : 0;
}

/// The product of the DOFs' rotations from \p pFrom to before \p pTo.
void KDofSolver::Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const
{
    pResult.Init();
    for (int i = pFrom; i < pTo; ++i)
    {
        KgeRVector lAngle;
        KgeRMatrix lTurn;
        lAngle.mData[mAxes[i]] = pAngles[i];
        KgeSet(lTurn, lAngle);
        KgeMult(pResult, lTurn, pResult);
    }
}

void KDofSolver::Refine(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    double lMoved = 1.0;
    for (int lRound = 0; lRound < kMaxRounds && lMoved > kSettled; ++lRound)
    {
        lMoved = 0.0;
        for (int i = mCount - 1; i >= 0; --i)
        {
            KgeRMatrix lBefore;
            KgeRMatrix lAfter;
            Compose(pAngles, 0, i, lBefore);
            Compose(pAngles, i + 1, mCount, lAfter);
            KgeInverse(lBefore, lBefore);
            KgeInverse(lAfter, lAfter);
            KgeMult(lAfter, lAfter, pWanted);
            KgeMult(lAfter, lAfter, lBefore);
            const double lAngle = BestAngle(lAfter, mAxes[i]);
            lMoved = std::max(lMoved, std::fabs(std::remainder(lAngle - pAngles[i], 360.0)));
            pAngles[i] = lAngle;
        }
    }
    Compose(pAngles, 0, mCount, pReached);
}

/// Going around from where the DOFs left may end at a hill that is not the highest. Half a turn of the first DOF begins on the
/// other side.
void KDofSolver::RefineFromBehind(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    double     lOther[6] = {};
    KgeRMatrix lReached;
    std::copy(pAngles, pAngles + mCount, lOther);
    lOther[0] += 180.0;
    Refine(pWanted, lOther, lReached);
    if (AngleBetween(pWanted, lReached) < AngleBetween(pWanted, pReached))
    {
        std::copy(lOther, lOther + mCount, pAngles);
        KgeSet(pReached, lReached);
    }
}

void KDofSolver::Solve(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    double lTriple[3] = {0.0, 0.0, 0.0};
    if (mCount > 0)
    {
        KmRtoVord(lTriple, pWanted.mData, mCode);
    }
    if (mIsWhole)
    {
        KmVset(pAngles, lTriple);
        KgeSet(pReached, pWanted);
        return;
    }
    for (int i = 0; i < mCount; ++i)
    {
        pAngles[i] = i < 2 && mIsDistinct ? lTriple[i] : 0.0;
    }
    if (mCount == 1)
    {
        pAngles[0] = BestAngle(pWanted, mAxes[0]);
    }
    Compose(pAngles, 0, mCount, pReached);
    // Two DOFs that can express the rotation have it now; rounds would only add rounding.
    if (mCount > 1 && AngleBetween(pWanted, pReached) > 1e-9)
    {
        Refine(pWanted, pAngles, pReached);
        RefineFromBehind(pWanted, pAngles, pReached);
    }
}

void KDofSolver::Continue(double* pAngles, const double* pLast) const
{
    if (mIsWhole)
    {
        KmNearestEuler(pAngles, pLast, mCode);
        return;
    }
    for (int i = 0; i < mCount; ++i)
    {
        pAngles[i] = KmNearestTurn(pAngles[i], pLast[i]);
    }
}

double KDofSolver::GetGain(const double* pAngles) const
{
    if (!mIsWhole)
    {
        return 1.0;
    }
    double       lCosine;
    const double lSine = kSinCosd(pAngles[1], &lCosine);
    return 1.0 / std::max(kGimbalCosine, std::fabs((mCode & 1) != 0 ? lSine : lCosine));
}

} // namespace qexsdk
