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

constexpr int    kMaxIterations = 300; ///< Iterations after which the angles are accepted as they are.
constexpr double kConverged = 1e-10;   ///< Largest change of an angle, in degrees, that counts as converged.
constexpr double kGimbalCosine = 1e-6; ///< Smaller cosines count as gimbal lock; bounds the gain.
constexpr double kFarFromLock = 89.0;  ///< Middle angle, in degrees, up to which the two equivalent triples are clearly distinct.
constexpr double kExact = 1e-9;        ///< Residual, in degrees, that counts as none; iterating on would only add rounding.
constexpr double kGlobalBound = 5.0;   ///< Residual of two DOFs, in degrees, below which a local minimum is the global one.

/// The order code that begins with the given axes. A pair of axes has one code; a single axis gets the cyclic order (XYZ, YZX, ZXY).
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

/// An angle as cosine and sine: rotates matrices without trigonometry.
struct KCosSin
{
    double mCos = 1.0;
    double mSin = 0.0;

    /// The angle of the vector (x, y); 0 when both are zero.
    static KCosSin Of(double pX, double pY)
    {
        const double lLength = kHypot(pX, pY);
        return lLength > 0.0 ? KCosSin{pX / lLength, pY / lLength} : KCosSin{};
    }

    double Degrees() const { return kAtand(mSin, mCos); }

    /// Whether \p pOther is within kConverged of this angle.
    bool IsNear(const KCosSin& pOther) const
    {
        return std::fabs(mSin * pOther.mCos - mCos * pOther.mSin) <= kConverged * kRadiansPerDegree &&
               mCos * pOther.mCos + mSin * pOther.mSin > 0.0;
    }
};

/// The rotation about \p pAxis nearest to \p pTarget: the one that maximises the trace of their quotient.
KCosSin NearestRotation(KmConstMatrix pTarget, int pAxis)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    return KCosSin::Of(pTarget[lJ][lJ] + pTarget[lK][lK], pTarget[lJ][lK] - pTarget[lK][lJ]);
}

double NearestAngle(const KgeRMatrix& pTarget, int pAxis)
{
    return NearestRotation(pTarget.mData, pAxis).Degrees();
}

/// out = m × the rotation about \p pAxis.
void RotateFirst(KmMatrix pOut, KmConstMatrix pM, int pAxis, const KCosSin& pRotation)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    for (int i = 0; i < 3; ++i)
    {
        pOut[pAxis][i] = pM[pAxis][i];
        pOut[lJ][i] = pRotation.mCos * pM[lJ][i] + pRotation.mSin * pM[lK][i];
        pOut[lK][i] = pRotation.mCos * pM[lK][i] - pRotation.mSin * pM[lJ][i];
    }
}

/// out = the rotation about \p pAxis × m.
void RotateLast(KmMatrix pOut, KmConstMatrix pM, int pAxis, const KCosSin& pRotation)
{
    const int lJ = (pAxis + 1) % 3;
    const int lK = (pAxis + 2) % 3;
    for (int i = 0; i < 3; ++i)
    {
        pOut[i][pAxis] = pM[i][pAxis];
        pOut[i][lJ] = pRotation.mCos * pM[i][lJ] - pRotation.mSin * pM[i][lK];
        pOut[i][lK] = pRotation.mCos * pM[i][lK] + pRotation.mSin * pM[i][lJ];
    }
}

KCosSin Negated(const KCosSin& pRotation)
{
    return {pRotation.mCos, -pRotation.mSin};
}

/// The rotation about the first axis, then the second.
void ComposeTwo(KgeRMatrix& pResult, const int* pAxes, const KCosSin* pRotations)
{
    const KgeRMatrix lIdentity;
    double           lFirst[3][4];
    RotateFirst(lFirst, lIdentity.mData, pAxes[0], pRotations[0]);
    RotateLast(pResult.mData, lFirst, pAxes[1], pRotations[1]);
}

} // namespace

double AngleBetween(const KgeRMatrix& pA, const KgeRMatrix& pB)
{
    // Uses the sine of half the angle: the arc cosine of the trace is imprecise for small angles.
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
            mIsDistinct = mIsDistinct && !mHasAxis[lAxis];
            mHasAxis[lAxis] = true;
            mAxes[mCount++] = lAxis;
        }
    }
    const bool lRepeatsFirst = mCount == 3 && mAxes[0] == mAxes[2] && mAxes[0] != mAxes[1];
    mIsComplete = (mCount == 3 && mIsDistinct) || lRepeatsFirst;
    mCode = mCount > 0 ? CodeOf(mAxes, mIsDistinct || lRepeatsFirst ? mCount : 1) : 0;
    mCode |= lRepeatsFirst ? 1 : 0;
}

/// The product of the rotations of DOFs \p pFrom to \p pTo - 1.
void KQexDofSolver::Compose(const double* pAngles, int pFrom, int pTo, KgeRMatrix& pResult) const
{
    pResult.Init();
    for (int i = pFrom; i < pTo; ++i)
    {
        KgeRVector lAngle;
        KgeRMatrix lRotation;
        lAngle.mData[mAxes[i]] = pAngles[i];
        KgeSet(lRotation, lAngle);
        KgeMult(pResult, lRotation, pResult);
    }
}

void KQexDofSolver::Refine(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    double lLargestChange = 1.0;
    for (int lIteration = 0; lIteration < kMaxIterations && lLargestChange > kConverged; ++lIteration)
    {
        lLargestChange = 0.0;
        for (int i = mCount - 1; i >= 0; --i)
        {
            KgeRMatrix lBefore;
            KgeRMatrix lAfter;
            Compose(pAngles, 0, i, lBefore);
            Compose(pAngles, i + 1, mCount, lAfter);
            KgeInverse(lBefore, lBefore);
            KgeInverse(lAfter, lAfter);
            KgeMult(lAfter, lAfter, pTarget);
            KgeMult(lAfter, lAfter, lBefore);
            const double lAngle = NearestAngle(lAfter, mAxes[i]);
            lLargestChange = std::max(lLargestChange, std::fabs(std::remainder(lAngle - pAngles[i], 360.0)));
            pAngles[i] = lAngle;
        }
    }
    Compose(pAngles, 0, mCount, pReached);
}

/// Refining one DOF at a time may end in a local minimum of the residual. Starts again with the first DOF half a turn away and keeps the
/// better result.
void KQexDofSolver::RefineFromOpposite(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    double     lOther[6] = {};
    KgeRMatrix lReached;
    std::copy(pAngles, pAngles + mCount, lOther);
    lOther[0] += 180.0;
    Refine(pTarget, lOther, lReached);
    if (AngleBetween(pTarget, lReached) < AngleBetween(pTarget, pReached))
    {
        std::copy(lOther, lOther + mCount, pAngles);
        KgeSet(pReached, lReached);
    }
}

double KQexDofSolver::SolveOne(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    const KCosSin    lRotation = NearestRotation(pTarget.mData, mAxes[0]);
    const KgeRMatrix lIdentity;
    RotateFirst(pReached.mData, lIdentity.mData, mAxes[0], lRotation);
    pAngles[0] = lRotation.Degrees();
    return AngleBetween(pTarget, pReached);
}

/// Starts from the first two angles of the Euler triple, with the third taken as zero; two DOFs about different axes then converge in an
/// iteration or two, without trigonometry. A small residual is the global minimum: as the axes are perpendicular, the rotations by
/// (a, b) and (a', b') are at least max(|a - a'|, |b - b'|) apart.
double KQexDofSolver::SolveTwo(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    const int* lAxis = KmEulerAxisRow(mCode);
    const double(*lM)[4] = pTarget.mData;
    const double lSign = (mCode & 2) != 0 ? -1.0 : 1.0;
    const double lCosine = kHypot(lM[lAxis[0]][lAxis[0]], lM[lAxis[0]][lAxis[1]]);
    if (lCosine < kGimbalCosine)
    {
        return SolveTwoInLock(pTarget, pAngles, pReached);
    }
    KCosSin lRotations[2] = {KCosSin::Of(lM[lAxis[2]][lAxis[2]], lSign * lM[lAxis[1]][lAxis[2]]),
                             KCosSin::Of(lCosine, -lSign * lM[lAxis[0]][lAxis[2]])};
    ComposeTwo(pReached, mAxes, lRotations);
    double lResidual = AngleBetween(pTarget, pReached);
    bool   lHasConverged = lResidual <= kExact;
    for (int lIteration = 0; lIteration < kMaxIterations && !lHasConverged; ++lIteration)
    {
        double        lQuotient[3][4];
        const KCosSin lLast[2] = {lRotations[0], lRotations[1]};
        RotateFirst(lQuotient, lM, mAxes[0], Negated(lRotations[0]));
        lRotations[1] = NearestRotation(lQuotient, mAxes[1]);
        RotateLast(lQuotient, lM, mAxes[1], Negated(lRotations[1]));
        lRotations[0] = NearestRotation(lQuotient, mAxes[0]);
        lHasConverged = lRotations[0].IsNear(lLast[0]) && lRotations[1].IsNear(lLast[1]);
    }
    if (lResidual > kExact)
    {
        ComposeTwo(pReached, mAxes, lRotations);
        lResidual = AngleBetween(pTarget, pReached);
    }
    pAngles[0] = lRotations[0].Degrees();
    pAngles[1] = lRotations[1].Degrees();
    if (lResidual > kGlobalBound)
    {
        RefineFromOpposite(pTarget, pAngles, pReached);
        lResidual = AngleBetween(pTarget, pReached);
    }
    return lResidual;
}

/// In gimbal lock the triple's first and third angle rotate about one axis: starts from the triple whose third angle is zero.
double KQexDofSolver::SolveTwoInLock(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    double lTriple[3];
    KmRtoVord(lTriple, pTarget.mData, mCode);
    std::copy(lTriple, lTriple + 2, pAngles);
    Compose(pAngles, 0, mCount, pReached);
    double lResidual = AngleBetween(pTarget, pReached);
    if (lResidual > kExact)
    {
        Refine(pTarget, pAngles, pReached);
        RefineFromOpposite(pTarget, pAngles, pReached);
        lResidual = AngleBetween(pTarget, pReached);
    }
    return lResidual;
}

/// A DOF about the same axis as the one before adds nothing, and three of the others reach every rotation. The rest stay zero.
double KQexDofSolver::SolveRepeated(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    int    lCodes[3] = {};
    int    lIndices[3] = {};
    double lAngles[3] = {};
    int    lCount = 0;
    for (int i = 0; i < mCount && lCount < 3; ++i)
    {
        if (lCount == 0 || mAxes[i] != mAxes[lIndices[lCount - 1]])
        {
            lCodes[lCount] = 5 - mAxes[i];
            lIndices[lCount++] = i;
        }
    }
    const double lResidual = KQexDofSolver(lCodes, lCount).Solve(pTarget, lAngles, pReached);
    std::fill(pAngles, pAngles + mCount, 0.0);
    for (int i = 0; i < lCount; ++i)
    {
        pAngles[lIndices[i]] = lAngles[i];
    }
    return lResidual;
}

double KQexDofSolver::Solve(const KgeRMatrix& pTarget, double* pAngles, KgeRMatrix& pReached) const
{
    if (mIsComplete)
    {
        KmRtoVord(pAngles, pTarget.mData, mCode);
        KgeSet(pReached, pTarget);
        return 0.0;
    }
    if (mCount == 0)
    {
        pReached.Init();
        return AngleBetween(pTarget, pReached);
    }
    if (mCount == 1)
    {
        return SolveOne(pTarget, pAngles, pReached);
    }
    return mCount == 2 && mIsDistinct ? SolveTwo(pTarget, pAngles, pReached) : SolveRepeated(pTarget, pAngles, pReached);
}

bool KQexDofSolver::MatchesOrder(ERotationOrder pOrder) const
{
    const int* lAxes = KmRotationOrderAxes(pOrder);
    int        lNext = 0;
    for (int i = 0; i < 3 && lNext < mCount; ++i)
    {
        lNext += mAxes[lNext] == lAxes[i] ? 1 : 0;
    }
    return mIsDistinct && lNext == mCount;
}

bool KQexDofSolver::TryAngles(const double* pByAxis, double* pAngles) const
{
    for (int i = 0; i < 3; ++i)
    {
        if (!mHasAxis[i] && pByAxis[i] != 0.0)
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

void KQexDofSolver::MakeContinuous(double* pAngles, const double* pLast) const
{
    if (mIsComplete)
    {
        KmNearestEuler(pAngles, pLast, mCode);
        return;
    }
    for (int i = 0; i < mCount; ++i)
    {
        pAngles[i] = KmNearestTurn(pAngles[i], pLast[i]);
    }
}

/// At the pole the second rotation maps the first axis to the third or its opposite, so that the third angle plus or minus the first is
/// one rotation: for axes x, y, z, y = 90 degrees maps x to -z.
void KQexDofSolver::RoundInLock(double* pAngles, double pStep) const
{
    if (!mIsComplete)
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
    if (!mIsComplete)
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
    if (!mIsComplete)
    {
        return 1.0;
    }
    double       lCosine;
    const double lSine = kSinCosd(pAngles[1], &lCosine);
    return 1.0 / std::max(kGimbalCosine, std::fabs((mCode & 1) != 0 ? lSine : lCosine));
}

} // namespace qexsdk
