#include <qexscene/kqexeulerpath.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexanimcurve.h>

#include <cmath>
#include <cstring>

namespace qexsdk
{

/// A key is locked if its middle angle is within this many degrees of the pole. Redistributing the outer angles then changes the
/// rotation by at most twice that, which leaves more than half of the filters' 1e-4 degrees for rounding.
static constexpr double kLockDegrees = 2e-5;

static constexpr double kSqrtHalf = 0.70710678118654752;

/// \p pAngle plus the whole turns that bring it nearest to \p pBefore, in single precision. Unchanged if already nearest.
static double NearestTurn(double pAngle, double pBefore)
{
    if (std::fabs(pAngle - pBefore) <= 180.0)
    {
        return pAngle;
    }
    // Remove the angle's own turns first, which is exact; adding all turns at once would round a huge angle.
    const double lBase = std::fabs(pAngle) < 1e9 ? pAngle - 360.0 * std::nearbyint(pAngle / 360.0) : std::remainder(pAngle, 360.0);
    const double lTurns = std::nearbyint((pBefore - lBase) / 360.0);
    const double lResult = static_cast<double>(static_cast<float>(lBase + 360.0 * lTurns));
    if (std::fabs(lResult - pBefore) <= 180.0)
    {
        return lResult;
    }
    // Rounded to just above half a turn; the candidate on the other side may be closer.
    const double lOther = lTurns + (lResult > pBefore ? -1.0 : 1.0);
    const double lOtherResult = static_cast<double>(static_cast<float>(lBase + 360.0 * lOther));
    return std::fabs(lOtherResult - pBefore) < std::fabs(lResult - pBefore) ? lOtherResult : lResult;
}

KQexEulerPath::KQexEulerPath(int pOrder) : mIsOdd((pOrder & 2) != 0), mIsRepeated((pOrder & 1) != 0)
{
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        mAxis[lIndex] = KmEulerAxisRow(pOrder)[lIndex];
    }
}

bool KQexEulerPath::Open(KQexAnimCurve** pCurves, int pCount)
{
    if (pCurves == nullptr || pCount != 3 || pCurves[0] == nullptr || pCurves[1] == nullptr || pCurves[2] == nullptr ||
        pCurves[0] == pCurves[1] || pCurves[1] == pCurves[2] || pCurves[2] == pCurves[0])
    {
        return false;
    }
    const KQexKeyTimes& lTimes = pCurves[0]->GetKeys().GetTimes();
    if (!lTimes.IsSame(pCurves[1]->GetKeys().GetTimes()) || !lTimes.IsSame(pCurves[2]->GetKeys().GetTimes()))
    {
        return false;
    }
    mKeyCount = lTimes.GetCount();
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        mCurves[lAxis] = pCurves[lAxis];
        if (!mChosen[lAxis].SetCapacity(mKeyCount))
        {
            return false;
        }
    }
    return true;
}

/// The key's angles in the curves. False when one is not finite.
bool KQexEulerPath::Read(int pKey, KTriple& pTriple) const
{
    bool lFinite = true;
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        const float lValue = mCurves[mAxis[lIndex]]->GetKeys().GetValue(pKey);
        pTriple.mAngle[lIndex] = static_cast<double>(lValue);
        lFinite = lFinite && std::isfinite(lValue);
    }
    return lFinite;
}

KQexEulerPath::KTriple KQexEulerPath::Chosen(int pKey) const
{
    KTriple lTriple;
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        lTriple.mAngle[lIndex] = static_cast<double>(mChosen[mAxis[lIndex]][pKey]);
    }
    return lTriple;
}

/// Sets the key's new values: appends the next key, or overwrites one chosen before.
void KQexEulerPath::Choose(int pKey, const KTriple& pTriple)
{
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        KQexKeyBlock<float>& lChosen = mChosen[mAxis[lIndex]];
        const float          lValue = static_cast<float>(pTriple.mAngle[lIndex]);
        if (pKey == lChosen.GetCount())
        {
            lChosen.AppendReserved(lValue);
        }
        else
        {
            lChosen[pKey] = lValue;
        }
    }
}

/// The triple with whole turns added to each angle, nearest to \p pBefore.
KQexEulerPath::KTriple KQexEulerPath::AddTurns(const KTriple& pTriple, const KTriple& pBefore)
{
    KTriple lResult;
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        lResult.mAngle[lIndex] = NearestTurn(pTriple.mAngle[lIndex], pBefore.mAngle[lIndex]);
    }
    return lResult;
}

static double Squared(double pValue)
{
    return pValue * pValue;
}

static double SquaredDistance(const double (&pA)[3], const double (&pB)[3])
{
    return Squared(pA[0] - pB[0]) + Squared(pA[1] - pB[1]) + Squared(pA[2] - pB[2]);
}

/// The triple or the flipped triple, each with whole turns added, whichever is nearer to \p pBefore; the former on a tie.
KQexEulerPath::KTriple KQexEulerPath::Nearest(const KTriple& pTriple, const KTriple& pBefore) const
{
    const KTriple lPlain = AddTurns(pTriple, pBefore);
    // The flipped triple's outer angles differ by 180 degrees minus these: for most keys that alone makes it the farther one.
    const double lFirst = std::fabs(lPlain.mAngle[0] - pBefore.mAngle[0]);
    const double lLast = std::fabs(lPlain.mAngle[2] - pBefore.mAngle[2]);
    if (Squared(lPlain.mAngle[1] - pBefore.mAngle[1]) <= 360.0 * (180.0 - lFirst - lLast))
    {
        return lPlain;
    }
    const double(&lAngle)[3] = pTriple.mAngle;
    const KTriple lMirrored = {{lAngle[0] + 180.0, mIsRepeated ? -lAngle[1] : 180.0 - lAngle[1], lAngle[2] + 180.0}};
    const KTriple lFlipped = AddTurns(lMirrored, pBefore);
    return SquaredDistance(lFlipped.mAngle, pBefore.mAngle) < SquaredDistance(lPlain.mAngle, pBefore.mAngle) ? lFlipped : lPlain;
}

/// The sign of a locked triple, 0 for any other. In gimbal lock the rotation depends only on the fixed part, first - sign · last;
/// the free part, first + sign · last, is arbitrary. (R(K, c)·R(J, 90)·R(I, a) = R(K, c - a)·R(J, 90) for axes I, J, K in even order.)
double KQexEulerPath::LockSign(const KTriple& pTriple) const
{
    const double lFromPole = pTriple.mAngle[1] - (mIsRepeated ? 0.0 : 90.0);
    if (std::fabs(std::remainder(lFromPole, 180.0)) > kLockDegrees)
    {
        return 0.0;
    }
    const bool lAtThisPole = std::fabs(std::remainder(lFromPole, 360.0)) < 90.0;
    const bool lDifference = mIsRepeated ? !lAtThisPole : lAtThisPole != mIsOdd;
    return lDifference ? 1.0 : -1.0;
}

/// Chooses the triple of a locked key: the fixed part nearest to that of \p pBefore, the free part \p pFree.
void KQexEulerPath::ChooseLocked(int pKey, double pSign, const KTriple& pBefore, double pFree)
{
    KTriple lTriple;
    Read(pKey, lTriple);
    const double lBefore = pBefore.mAngle[0] - pSign * pBefore.mAngle[2];
    const double lFixed = lBefore + std::remainder(lTriple.mAngle[0] - pSign * lTriple.mAngle[2] - lBefore, 360.0);
    const double lFirst = (pFree + lFixed) / 2.0;
    const double lLast = pSign * (pFree - lFixed) / 2.0;
    // Keep the exact bits of a key that does not change; the sums above may have rounded.
    if (std::fabs(lFirst - lTriple.mAngle[0]) > 1e-9 || std::fabs(lLast - lTriple.mAngle[2]) > 1e-9)
    {
        lTriple.mAngle[0] = lFirst;
        lTriple.mAngle[2] = lLast;
    }
    lTriple.mAngle[1] = NearestTurn(lTriple.mAngle[1], pBefore.mAngle[1]);
    Choose(pKey, lTriple);
}

static double FreePart(const double (&pAngle)[3], double pSign)
{
    return pAngle[0] + pSign * pAngle[2];
}

/// Distance between two locked triples without the free part: in the middle angle and the fixed part.
static double FixedDistance(const double (&pFrom)[3], const double (&pTo)[3], double pSign)
{
    return std::hypot(pTo[1] - pFrom[1], ((pTo[0] - pSign * pTo[2]) - (pFrom[0] - pSign * pFrom[2])) * kSqrtHalf);
}

/// Whether the free part can change by \p pFreeDelta along the run, in proportion to the fixed distance (\p pFixedLength in all),
/// without an outer angle changing by more than half a turn from key to key.
bool KQexEulerPath::CanSpreadProportionally(const KLockedRun& pRun, double pFixedLength, double pFreeDelta) const
{
    KTriple lBefore = Chosen(pRun.mBefore);
    for (int lKey = pRun.mFirst; lKey <= pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        const double  lFixedDelta =
            (lTriple.mAngle[0] - pRun.mSign * lTriple.mAngle[2]) - (lBefore.mAngle[0] - pRun.mSign * lBefore.mAngle[2]);
        const double lShare = FixedDistance(lBefore.mAngle, lTriple.mAngle, pRun.mSign) / pFixedLength;
        if (std::fabs(lFixedDelta) + std::fabs(pFreeDelta) * lShare > 359.999)
        {
            return false;
        }
        lBefore = lTriple;
    }
    return true;
}

/// Moves the free part of a run from the key before it to the key after it (mEnd, already chosen) along the shortest path: a straight
/// line in the plane of fixed distance and free part. Uses equal steps where the fixed part does not move, or where the straight
/// line would make an angle jump.
void KQexEulerPath::SpreadRun(const KLockedRun& pRun)
{
    KTriple      lBefore = Chosen(pRun.mBefore);
    const double lFrom = FreePart(lBefore.mAngle, pRun.mSign);
    const double lFreeDelta = FreePart(Chosen(pRun.mEnd).mAngle, pRun.mSign) - lFrom;
    double       lFixedLength = 0.0;
    for (int lKey = pRun.mFirst; lKey <= pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        lFixedLength += FixedDistance(lBefore.mAngle, lTriple.mAngle, pRun.mSign);
        lBefore = lTriple;
    }
    const bool   lProportional = lFixedLength > 1e-3 && CanSpreadProportionally(pRun, lFixedLength, lFreeDelta);
    const double lSteps = static_cast<double>(pRun.mEnd - pRun.mFirst + 1);
    double       lDone = 0.0;
    KTriple      lOld = Chosen(pRun.mBefore);
    lBefore = lOld;
    for (int lKey = pRun.mFirst; lKey < pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        lDone += lProportional ? FixedDistance(lOld.mAngle, lTriple.mAngle, pRun.mSign) / lFixedLength : 1.0 / lSteps;
        ChooseLocked(lKey, pRun.mSign, lBefore, lFrom + lFreeDelta * lDone);
        lOld = lTriple;
        lBefore = Chosen(lKey);
    }
}

void KQexEulerPath::Unroll(bool pUnlock)
{
    int        lBefore = -1; // The last key whose angles are finite.
    KLockedRun lRun;
    for (int lKey = 0; lKey < mKeyCount; ++lKey)
    {
        KTriple    lTriple;
        const bool lIsFinite = Read(lKey, lTriple);
        double     lSign = 0.0;
        if (!lIsFinite || lBefore < 0)
        {
            Choose(lKey, lTriple);
        }
        else if (lSign = pUnlock ? LockSign(lTriple) : 0.0; lSign != 0.0)
        {
            if (lSign != lRun.mSign)
            {
                lRun.mFirst = lKey;
                lRun.mBefore = lBefore;
            }
            ChooseLocked(lKey, lSign, Chosen(lBefore), FreePart(Chosen(lBefore).mAngle, lSign));
        }
        else
        {
            Choose(lKey, Nearest(lTriple, Chosen(lBefore)));
            if (lRun.mSign != 0.0)
            {
                lRun.mEnd = lKey;
                SpreadRun(lRun);
            }
        }
        lRun.mSign = lSign;
        lBefore = lIsFinite ? lKey : lBefore;
    }
}

void KQexEulerPath::Close()
{
    for (int lAxis = 0; lAxis < 3; ++lAxis)
    {
        const KQexKeyStore& lKeys = mCurves[lAxis]->GetKeys();
        for (int lKey = 0; lKey < mKeyCount; ++lKey)
        {
            const float lValue = lKeys.GetValue(lKey);
            if (std::memcmp(&lValue, &mChosen[lAxis][lKey], sizeof(float)) != 0)
            {
                mCurves[lAxis]->SwapValues(mChosen[lAxis]);
                break;
            }
        }
    }
}

} // namespace qexsdk
