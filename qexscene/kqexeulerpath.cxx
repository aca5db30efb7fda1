#include <qexscene/kqexeulerpath.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexanimcurve.h>

#include <cmath>
#include <cstring>

namespace qexsdk
{

/// Degrees from the pole up to which a middle angle counts as locked. Moving the outer angles against each other turns the
/// rotation by at most twice that, which leaves more than half of the filters' 1e-4 degrees to the rounding of new angles.
static constexpr double kLockDegrees = 2e-5;

static constexpr double kSqrtHalf = 0.70710678118654752;

/// \p pAngle and whole turns, nearest to \p pBefore and in single precision. Left bit by bit when that is it already.
static double NearestTurn(double pAngle, double pBefore)
{
    if (std::fabs(pAngle - pBefore) <= 180.0)
    {
        return pAngle;
    }
    // Without its own turns first, which is exact; the sum with all turns would not be where the angle is enormous.
    const double lBase = std::fabs(pAngle) < 1e9 ? pAngle - 360.0 * std::nearbyint(pAngle / 360.0) : std::remainder(pAngle, 360.0);
    const double lTurns = std::nearbyint((pBefore - lBase) / 360.0);
    const double lNear = static_cast<double>(static_cast<float>(lBase + 360.0 * lTurns));
    if (std::fabs(lNear - pBefore) <= 180.0)
    {
        return lNear;
    }
    // Rounding carried it just beyond half a turn: then the one on the other side may be within.
    const double lOther = lTurns + (lNear > pBefore ? -1.0 : 1.0);
    const double lFar = static_cast<double>(static_cast<float>(lBase + 360.0 * lOther));
    return std::fabs(lFar - pBefore) < std::fabs(lNear - pBefore) ? lFar : lNear;
}

KQexEulerPath::KQexEulerPath(int pOrder) : mIsOdd((pOrder & 2) != 0), mIsRepeated((pOrder & 1) != 0)
{
    for (int lPlace = 0; lPlace < 3; ++lPlace)
    {
        mAxis[lPlace] = KmEulerAxisRow(pOrder)[lPlace];
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

/// The key as the curves have it. False when an angle is not finite.
bool KQexEulerPath::Read(int pKey, KTriple& pTriple) const
{
    bool lFinite = true;
    for (int lPlace = 0; lPlace < 3; ++lPlace)
    {
        const float lValue = mCurves[mAxis[lPlace]]->GetKeys().GetValue(pKey);
        pTriple.mAngle[lPlace] = static_cast<double>(lValue);
        lFinite = lFinite && std::isfinite(lValue);
    }
    return lFinite;
}

KQexEulerPath::KTriple KQexEulerPath::Chosen(int pKey) const
{
    KTriple lTriple;
    for (int lPlace = 0; lPlace < 3; ++lPlace)
    {
        lTriple.mAngle[lPlace] = static_cast<double>(mChosen[mAxis[lPlace]][pKey]);
    }
    return lTriple;
}

/// Sets the key's new values: the next key in turn, or one that has been chosen before.
void KQexEulerPath::Choose(int pKey, const KTriple& pTriple)
{
    for (int lPlace = 0; lPlace < 3; ++lPlace)
    {
        KQexKeyBlock<float>& lChosen = mChosen[mAxis[lPlace]];
        const float          lValue = static_cast<float>(pTriple.mAngle[lPlace]);
        if (pKey == lChosen.GetCount())
        {
            lChosen.AppendInRoom(lValue);
        }
        else
        {
            lChosen[pKey] = lValue;
        }
    }
}

/// The triple with each angle turned to be nearest to \p pBefore.
KQexEulerPath::KTriple KQexEulerPath::Turned(const KTriple& pTriple, const KTriple& pBefore)
{
    KTriple lTurned;
    for (int lPlace = 0; lPlace < 3; ++lPlace)
    {
        lTurned.mAngle[lPlace] = NearestTurn(pTriple.mAngle[lPlace], pBefore.mAngle[lPlace]);
    }
    return lTurned;
}

static double Squared(double pValue)
{
    return pValue * pValue;
}

static double SquaredDistance(const double (&pA)[3], const double (&pB)[3])
{
    return Squared(pA[0] - pB[0]) + Squared(pA[1] - pB[1]) + Squared(pA[2] - pB[2]);
}

/// Of the triple and its flipped twin, each with the turns that suit, the one nearer to \p pBefore; the triple where both are.
KQexEulerPath::KTriple KQexEulerPath::Nearest(const KTriple& pTriple, const KTriple& pBefore) const
{
    const KTriple lPlain = Turned(pTriple, pBefore);
    // The twin's outer angles are off by what these lack to half a turn, which settles the most of all keys at once.
    const double lFirst = std::fabs(lPlain.mAngle[0] - pBefore.mAngle[0]);
    const double lLast = std::fabs(lPlain.mAngle[2] - pBefore.mAngle[2]);
    if (Squared(lPlain.mAngle[1] - pBefore.mAngle[1]) <= 360.0 * (180.0 - lFirst - lLast))
    {
        return lPlain;
    }
    const double(&lAngle)[3] = pTriple.mAngle;
    const KTriple lTwin = {{lAngle[0] + 180.0, mIsRepeated ? -lAngle[1] : 180.0 - lAngle[1], lAngle[2] + 180.0}};
    const KTriple lFlipped = Turned(lTwin, pBefore);
    return SquaredDistance(lFlipped.mAngle, pBefore.mAngle) < SquaredDistance(lPlain.mAngle, pBefore.mAngle) ? lFlipped : lPlain;
}

/// In gimbal lock the rotation depends on first - sign · last only: 1 where that is their difference, -1 where it is their
/// sum, 0 for a triple that is not locked. (R(K)·R(J, 90)·R(I, a) = R(K, -a)·R(K)·R(J, 90) for axes I, J, K in even order.)
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

/// Chooses the triple of a locked key: what matters follows \p pBefore by the shorter way, what is free becomes \p pFree.
void KQexEulerPath::PlaceInLock(int pKey, double pSign, const KTriple& pBefore, double pFree)
{
    KTriple lTriple;
    Read(pKey, lTriple);
    const double lBefore = pBefore.mAngle[0] - pSign * pBefore.mAngle[2];
    const double lFixed = lBefore + std::remainder(lTriple.mAngle[0] - pSign * lTriple.mAngle[2] - lBefore, 360.0);
    const double lFirst = (pFree + lFixed) / 2.0;
    const double lLast = pSign * (pFree - lFixed) / 2.0;
    // A key that is in its place already keeps its bits, which the sums above may have rounded.
    if (std::fabs(lFirst - lTriple.mAngle[0]) > 1e-9 || std::fabs(lLast - lTriple.mAngle[2]) > 1e-9)
    {
        lTriple.mAngle[0] = lFirst;
        lTriple.mAngle[2] = lLast;
    }
    lTriple.mAngle[1] = NearestTurn(lTriple.mAngle[1], pBefore.mAngle[1]);
    Choose(pKey, lTriple);
}

static double FreeSum(const double (&pAngle)[3], double pSign)
{
    return pAngle[0] + pSign * pAngle[2];
}

/// How far the locked angles go from one key to the next without the free sum: in the middle angle and in what matters.
static double FixedWay(const double (&pFrom)[3], const double (&pTo)[3], double pSign)
{
    return std::hypot(pTo[1] - pFrom[1], ((pTo[0] - pSign * pTo[2]) - (pFrom[0] - pSign * pFrom[2])) * kSqrtHalf);
}

/// Whether the free sum can go \p pWay along the run in proportion to the fixed way and no outer angle leaps by more than half
/// a turn.
bool KQexEulerPath::IsProportionalSafe(const KRun& pRun, double pFixed, double pWay) const
{
    KTriple lBefore = Chosen(pRun.mBefore);
    for (int lKey = pRun.mFirst; lKey <= pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        const double lMatters = (lTriple.mAngle[0] - pRun.mSign * lTriple.mAngle[2]) - (lBefore.mAngle[0] - pRun.mSign * lBefore.mAngle[2]);
        const double lPart = FixedWay(lBefore.mAngle, lTriple.mAngle, pRun.mSign) / pFixed;
        if (std::fabs(lMatters) + std::fabs(pWay) * lPart > 359.999)
        {
            return false;
        }
        lBefore = lTriple;
    }
    return true;
}

/// Lets the free sum of a run move from the key before to the key behind (mEnd, chosen already) on the shortest path: laid out
/// flat, with the fixed way along one side and the free sum along the other, that is a straight line. In equal steps where nothing
/// else moves, or where the straight line would make an angle leap.
void KQexEulerPath::SpreadRun(const KRun& pRun)
{
    KTriple      lBefore = Chosen(pRun.mBefore);
    const double lFrom = FreeSum(lBefore.mAngle, pRun.mSign);
    const double lWay = FreeSum(Chosen(pRun.mEnd).mAngle, pRun.mSign) - lFrom;
    double       lFixed = 0.0;
    for (int lKey = pRun.mFirst; lKey <= pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        lFixed += FixedWay(lBefore.mAngle, lTriple.mAngle, pRun.mSign);
        lBefore = lTriple;
    }
    const bool   lProportional = lFixed > 1e-3 && IsProportionalSafe(pRun, lFixed, lWay);
    const double lSteps = static_cast<double>(pRun.mEnd - pRun.mFirst + 1);
    double       lDone = 0.0;
    KTriple      lOld = Chosen(pRun.mBefore);
    lBefore = lOld;
    for (int lKey = pRun.mFirst; lKey < pRun.mEnd; ++lKey)
    {
        const KTriple lTriple = Chosen(lKey);
        lDone += lProportional ? FixedWay(lOld.mAngle, lTriple.mAngle, pRun.mSign) / lFixed : 1.0 / lSteps;
        PlaceInLock(lKey, pRun.mSign, lBefore, lFrom + lWay * lDone);
        lOld = lTriple;
        lBefore = Chosen(lKey);
    }
}

void KQexEulerPath::Unroll(bool pShareInLock)
{
    int  lBefore = -1; // The last key whose angles are finite.
    KRun lRun;
    for (int lKey = 0; lKey < mKeyCount; ++lKey)
    {
        KTriple    lTriple;
        const bool lIsFinite = Read(lKey, lTriple);
        double     lSign = 0.0;
        if (!lIsFinite || lBefore < 0)
        {
            Choose(lKey, lTriple);
        }
        else if (lSign = pShareInLock ? LockSign(lTriple) : 0.0; lSign != 0.0)
        {
            if (lSign != lRun.mSign)
            {
                lRun.mFirst = lKey;
                lRun.mBefore = lBefore;
            }
            PlaceInLock(lKey, lSign, Chosen(lBefore), FreeSum(Chosen(lBefore).mAngle, lSign));
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
