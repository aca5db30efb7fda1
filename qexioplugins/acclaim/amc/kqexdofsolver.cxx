#include <qexioplugins/acclaim/amc/kqexdofsolver.h>

#include <kbaselib/kmath/kdofcodes.h>
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
constexpr double kFarFromLock = 89.0;  ///< Degrees of a middle angle up to which a rotation's triples are told apart well.
constexpr double kExact = 1e-9;        ///< Degrees left over up to which two DOFs express a rotation; rounds would only add rounding.
constexpr double kOnlyHill = 5.0;      ///< Degrees left over below which no other angles of two DOFs can leave less.

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

/// An angle by its cosine and sine: it turns matrices without being known itself.
struct KDirection
{
    double mCos = 1.0;
    double mSin = 0.0;

    /// The direction of (x, y); of an angle of 0 when both are zero.
    static KDirection Of(double pX, double pY)
    {
        const double lLength = kHypot(pX, pY);
        return lLength > 0.0 ? KDirection{pX / lLength, pY / lLength} : KDirection{};
    }

    double Degrees() const { return kAtand(mSin, mCos); }

    /// Whether the other one is within kSettled of it.
    bool IsNear(const KDirection& pOther) const
    {
        return std::fabs(mSin * pOther.mCos - mCos * pOther.mSin) <= kSettled * kRadiansPerDegree &&
               mCos * pOther.mCos + mSin * pOther.mSin > 0.0;
    }
};

/// The turn about \p pAxis that brings identity nearest to \p pWanted: where the trace of their quotient is greatest.
KDirection BestTurn(KmConstMatrix pWanted, int pAxis)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    return KDirection::Of(pWanted[lJ][lJ] + pWanted[lK][lK], pWanted[lJ][lK] - pWanted[lK][lJ]);
}

double BestAngle(const KgeRMatrix& pWanted, int pAxis)
{
    return BestTurn(pWanted.mData, pAxis).Degrees();
}

/// out = m × the turn about \p pAxis.
void TurnFirst(KmMatrix pOut, KmConstMatrix pM, int pAxis, const KDirection& pTurn)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    for (int i = 0; i < 3; ++i)
    {
        pOut[pAxis][i] = pM[pAxis][i];
        pOut[lJ][i] = pTurn.mCos * pM[lJ][i] + pTurn.mSin * pM[lK][i];
        pOut[lK][i] = pTurn.mCos * pM[lK][i] - pTurn.mSin * pM[lJ][i];
    }
}

/// out = the turn about \p pAxis × m.
void TurnLast(KmMatrix pOut, KmConstMatrix pM, int pAxis, const KDirection& pTurn)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    for (int i = 0; i < 3; ++i)
    {
        pOut[i][pAxis] = pM[i][pAxis];
        pOut[i][lJ] = pTurn.mCos * pM[i][lJ] - pTurn.mSin * pM[i][lK];
        pOut[i][lK] = pTurn.mCos * pM[i][lK] + pTurn.mSin * pM[i][lJ];
    }
}

KDirection Back(const KDirection& pTurn)
{
    return {pTurn.mCos, -pTurn.mSin};
}

/// The turn about the first axis, then the second.
void ComposeTwo(KgeRMatrix& pResult, const int* pAxes, const KDirection* pTurns)
{
    const KgeRMatrix lNone;
    double           lFirst[3][4];
    TurnFirst(lFirst, lNone.mData, pAxes[0], pTurns[0]);
    TurnLast(pResult.mData, lFirst, pAxes[1], pTurns[1]);
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

KQexDofSolver::KQexDofSolver(const int* pCodes, int pCount)
{
    for (int i = 0; i < pCount; ++i)
    {
        if (KIsRotationDof(pCodes[i]))
        {
            const int lAxis = 5 - pCodes[i];
            mIsDistinct = mIsDistinct && !mHas[lAxis];
            mHas[lAxis] = true;
            mAxes[mCount++] = lAxis;
        }
    }
    const bool lReturns = mCount == 3 && mAxes[0] == mAxes[2] && mAxes[0] != mAxes[1];
    mIsWhole = (mCount == 3 && mIsDistinct) || lReturns;
    mCode = mCount > 0 ? CodeOf(mAxes, mIsDistinct || lReturns ? mCount : 1) : 0;
    mCode |= lReturns ? 1 : 0;
}

/// The product of the DOFs' rotations from \p pFrom to before \p pTo.
void KQexDofSolver::Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const
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

void KQexDofSolver::Refine(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
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
void KQexDofSolver::RefineFromBehind(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
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

double KQexDofSolver::SolveOne(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    const KDirection lTurn = BestTurn(pWanted.mData, mAxes[0]);
    const KgeRMatrix lNone;
    TurnFirst(pReached.mData, lNone.mData, mAxes[0], lTurn);
    pAngles[0] = lTurn.Degrees();
    return AngleBetween(pWanted, pReached);
}

/// From the angles of a triple whose third is as good as zero, two DOFs about different axes settle after a round or two, during
/// which no angle needs to be known. When they end close to the rotation they are at its only hill: angles (a, b) and others
/// (a', b') make rotations that are at least the larger of |a - a'| and |b - b'| apart, as the axes are at right angles.
double KQexDofSolver::SolveTwo(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    const int* lAxis = KmEulerAxisRow(mCode);
    const double(*lM)[4] = pWanted.mData;
    const double lSign = (mCode & 2) != 0 ? -1.0 : 1.0;
    const double lCosine = kHypot(lM[lAxis[0]][lAxis[0]], lM[lAxis[0]][lAxis[1]]);
    if (lCosine < kGimbalCosine)
    {
        return SolveTwoInLock(pWanted, pAngles, pReached);
    }
    KDirection lTurns[2] = {KDirection::Of(lM[lAxis[2]][lAxis[2]], lSign * lM[lAxis[1]][lAxis[2]]),
                            KDirection::Of(lCosine, -lSign * lM[lAxis[0]][lAxis[2]])};
    ComposeTwo(pReached, mAxes, lTurns);
    double lLeft = AngleBetween(pWanted, pReached);
    bool   lIsSettled = lLeft <= kExact;
    for (int lRound = 0; lRound < kMaxRounds && !lIsSettled; ++lRound)
    {
        double           lQuotient[3][4];
        const KDirection lLast[2] = {lTurns[0], lTurns[1]};
        TurnFirst(lQuotient, lM, mAxes[0], Back(lTurns[0]));
        lTurns[1] = BestTurn(lQuotient, mAxes[1]);
        TurnLast(lQuotient, lM, mAxes[1], Back(lTurns[1]));
        lTurns[0] = BestTurn(lQuotient, mAxes[0]);
        lIsSettled = lTurns[0].IsNear(lLast[0]) && lTurns[1].IsNear(lLast[1]);
    }
    if (lLeft > kExact)
    {
        ComposeTwo(pReached, mAxes, lTurns);
        lLeft = AngleBetween(pWanted, pReached);
    }
    pAngles[0] = lTurns[0].Degrees();
    pAngles[1] = lTurns[1].Degrees();
    if (lLeft > kOnlyHill)
    {
        RefineFromBehind(pWanted, pAngles, pReached);
        lLeft = AngleBetween(pWanted, pReached);
    }
    return lLeft;
}

/// Where the triple's first and third angle turn about one axis, the search begins with that triple of which the third is zero.
double KQexDofSolver::SolveTwoInLock(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    double lTriple[3];
    KmRtoVord(lTriple, pWanted.mData, mCode);
    std::copy(lTriple, lTriple + 2, pAngles);
    Compose(pAngles, 0, mCount, pReached);
    double lLeft = AngleBetween(pWanted, pReached);
    if (lLeft > kExact)
    {
        Refine(pWanted, pAngles, pReached);
        RefineFromBehind(pWanted, pAngles, pReached);
        lLeft = AngleBetween(pWanted, pReached);
    }
    return lLeft;
}

/// A DOF about the axis of the one before adds nothing to it, and of the others three reach everything. The rest stay at zero.
double KQexDofSolver::SolveRepeated(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    int    lCodes[3] = {};
    int    lPlaces[3] = {};
    double lAngles[3] = {};
    int    lCount = 0;
    for (int i = 0; i < mCount && lCount < 3; ++i)
    {
        if (lCount == 0 || mAxes[i] != mAxes[lPlaces[lCount - 1]])
        {
            lCodes[lCount] = 5 - mAxes[i];
            lPlaces[lCount++] = i;
        }
    }
    const double lLeft = KQexDofSolver(lCodes, lCount).Solve(pWanted, lAngles, pReached);
    std::fill(pAngles, pAngles + mCount, 0.0);
    for (int i = 0; i < lCount; ++i)
    {
        pAngles[lPlaces[i]] = lAngles[i];
    }
    return lLeft;
}

double KQexDofSolver::Solve(const KgeRMatrix& pWanted, double* pAngles, KgeRMatrix& pReached) const
{
    if (mIsWhole)
    {
        KmRtoVord(pAngles, pWanted.mData, mCode);
        KgeSet(pReached, pWanted);
        return 0.0;
    }
    if (mCount == 0)
    {
        pReached.Init();
        return AngleBetween(pWanted, pReached);
    }
    if (mCount == 1)
    {
        return SolveOne(pWanted, pAngles, pReached);
    }
    return mCount == 2 && mIsDistinct ? SolveTwo(pWanted, pAngles, pReached) : SolveRepeated(pWanted, pAngles, pReached);
}

bool KQexDofSolver::Follows(ERotationOrder pOrder) const
{
    const int* lAxes = KmEulerAxisRow(pOrder > eEULER_XYZ && pOrder <= eEULER_ZYX ? 2 * pOrder : 0);
    int        lNext = 0;
    for (int i = 0; i < 3 && lNext < mCount; ++i)
    {
        lNext += mAxes[lNext] == lAxes[i] ? 1 : 0;
    }
    return mIsDistinct && lNext == mCount;
}

bool KQexDofSolver::TakeAngles(const double* pByAxis, double* pAngles) const
{
    for (int i = 0; i < 3; ++i)
    {
        if (!mHas[i] && pByAxis[i] != 0.0)
        {
            return false;
        }
    }
    for (int i = 0; i < mCount; ++i)
    {
        pAngles[i] = pByAxis[mAxes[i]];
    }
    return mCount < 3 || std::fabs(pAngles[1]) <= kFarFromLock || std::fabs(std::remainder(pAngles[1], 180.0)) <= kFarFromLock;
}

void KQexDofSolver::Continue(double* pAngles, const double* pLast) const
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

/// At the pole the second turn takes the first axis to the third or to its opposite, so that the third angle and plus or minus the
/// first make one turn: for axes x, y, z and y = 90 degrees it takes x to -z.
void KQexDofSolver::RoundInLock(double* pAngles, double pStep) const
{
    if (!mIsWhole)
    {
        return;
    }
    double       lCosine;
    const double lSine = kSinCosd(pAngles[1], &lCosine);
    const bool   lIsSum = (mCode & 1) != 0 ? lCosine > 0.0 : (lSine < 0.0) == ((mCode & 2) == 0);
    const double lRounded = std::round(pAngles[0] / pStep) * pStep;
    pAngles[2] += (pAngles[0] - lRounded) * (lIsSum ? 1.0 : -1.0);
    pAngles[0] = lRounded;
}

double KQexDofSolver::GetGainBound(const double* pAngles) const
{
    if (!mIsWhole)
    {
        return 1.0;
    }
    // cos 60 and sin 30 degrees are a half.
    const double lAngle = std::fabs(pAngles[1]);
    const bool   lIsFar = (mCode & 1) != 0 ? lAngle >= 30.0 && lAngle <= 150.0 : lAngle <= 60.0;
    return lIsFar ? 2.0 : 1.0 / kGimbalCosine;
}

double KQexDofSolver::GetGain(const double* pAngles) const
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
