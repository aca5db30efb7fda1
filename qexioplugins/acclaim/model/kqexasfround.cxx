#include <qexioplugins/acclaim/model/kqexasfround.h>

#include <kbaselib/kbase/knumber.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qexsdk
{

namespace
{

constexpr int    kMaxTurns = 10;      ///< Rounds of rounding after which the values are taken as they are.
constexpr int    kTextDigits = 6;     ///< Digits of a number in the written text.
constexpr double kAngleScale = 1e6;   ///< Angles keep six decimals: smaller ones are rounding.
constexpr double kPlaceSteps = 0.125; ///< Steps of a direction's last digit that rounding places takes.
constexpr double kMostOff = 0.35;     ///< Steps that making it a unit vector may take beside that.
constexpr double kMostShort = 0.47;   ///< The same for steps ten times as wide.
constexpr double kPlaceNoise = 1e-6;  ///< Centimetres by which other formats round places.

/// \p pValue as the written text holds it, and never a negative zero.
double AsWritten(double pValue)
{
    char        lText[kNumberBufferSize];
    const char* lEnd = KNumberPrint(lText, lText + sizeof lText, pValue, 'g', kTextDigits);
    double      lValue = pValue;
    KNumberParse(std::string_view(lText, static_cast<size_t>(lEnd - lText)), lValue);
    return lValue == 0.0 ? 0.0 : lValue;
}

/// Rounds to a number of decimals, and to what the text holds.
double Rounded(double pValue, double pScale)
{
    return AsWritten(std::round(pValue * pScale) / pScale);
}

/// By how much making \p pDirection a unit vector moves it to or away from \p pFrom, the component that differs most.
double UnitOff(const double* pDirection, const double* pFrom)
{
    double lUnit[3];
    KmVnorm(lUnit, pDirection);
    return kLargest(lUnit[0] - pFrom[0], lUnit[1] - pFrom[1], lUnit[2] - pFrom[2]);
}

/// The rounding of \p pUnit moved by whole steps.
void RoundComponents(const double* pUnit, const int* pMoves, double pScale, double* pRounded)
{
    for (int i = 0; i < 3; ++i)
    {
        pRounded[i] = Rounded(pUnit[i] + pMoves[i] / pScale, pScale);
    }
}

/// Of the roundings next to a direction the nearest that is settled: made a unit vector it moves by \p pMost steps at most, so that it still
/// rounds to itself. False when there is none.
bool FindStable(const double* pUnit, double pScale, double pMost, double* pFound)
{
    double lLeast = std::numeric_limits<double>::infinity();
    for (int lTry = 0; lTry < 27; ++lTry)
    {
        const int lMoves[3] = {lTry % 3 - 1, lTry / 3 % 3 - 1, lTry / 9 - 1};
        double    lRounded[3];
        RoundComponents(pUnit, lMoves, pScale, lRounded);
        const double lOff[3] = {lRounded[0] - pUnit[0], lRounded[1] - pUnit[1], lRounded[2] - pUnit[2]};
        const double lDistance = KmVlength(lOff);
        if (lDistance < lLeast && UnitOff(lRounded, lRounded) * pScale <= pMost)
        {
            lLeast = lDistance;
            KmVset(pFound, lRounded);
        }
    }
    return lLeast < std::numeric_limits<double>::infinity();
}

/// Whether a unit vector comes from a settled direction of steps of 1 / \p pScale, up to \p pMost of them. That is \p pFound then.
bool IsShort(const double* pUnit, double pScale, double pMost, double* pFound)
{
    const int lNoMoves[3] = {};
    double    lRounded[3];
    RoundComponents(pUnit, lNoMoves, pScale, lRounded);
    if (UnitOff(lRounded, pUnit) * pScale > pMost || UnitOff(lRounded, lRounded) * pScale > kMostShort)
    {
        return false;
    }
    KmVset(pFound, lRounded);
    return true;
}

/// A direction is made a unit vector again when it is read, and other formats round the place it leads to: it is rounded such that
/// neither changes a digit. A short bone's direction keeps fewer digits, as the places have no more; one digit less is kept where none
/// of the roundings holds, and then found again by its being that short. So no other direction may look as if it were.
void RoundDirection(KQexAsfNode& pBone, double pLengthUnit)
{
    const double lLength = pBone.mLength * kCentimetresPerInch / (pLengthUnit > 0.0 ? pLengthUnit : kCentimetresPerInch);
    const double lDecimals = std::floor(-std::log10(4.0 * kPlaceNoise / std::max(lLength, 1e-9)));
    const double lScale = std::pow(10.0, std::min(6.0, std::max(2.0, lDecimals)));
    double       lUnit[3];
    double       lFound[3];
    KmVnorm(lUnit, pBone.mDirectionV.mData);
    if (!IsShort(lUnit, lScale / 10.0, 2.0 * kPlaceSteps / 10.0, lFound))
    {
        if (FindStable(lUnit, lScale, kMostOff, lFound))
        {
            KmVnorm(lUnit, lFound);
            IsShort(lUnit, lScale / 10.0, 3.0 * kPlaceSteps / 10.0, lFound);
        }
        else if (!FindStable(lUnit, lScale / 10.0, kMostShort, lFound))
        {
            const int lNoMoves[3] = {};
            RoundComponents(lUnit, lNoMoves, lScale, lFound);
        }
    }
    pBone.mDirectionV = lFound;
}

/// A length keeps the digits that places have.
void RoundLength(KQexAsfNode& pBone, double pLengthUnit)
{
    const double lNoise = kPlaceNoise * (pLengthUnit > 0.0 ? pLengthUnit : kCentimetresPerInch) / kCentimetresPerInch;
    pBone.mLength = Rounded(pBone.mLength, std::pow(10.0, std::floor(-std::log10(4.0 * lNoise))));
}

/// Angles are decomposed again when the skeleton has gone through a scene: rounds until that changes no digit. Half a turn is
/// always written as 180.
void RoundAxis(KQexAsfNode& pBone)
{
    for (int lTurn = 0; lTurn < kMaxTurns; ++lTurn)
    {
        bool   lIsStable = lTurn > 0;
        double lAngles[3];
        KmRtoVord(lAngles, pBone.mAxisRM.mData, 0);
        for (int i = 0; i < 3; ++i)
        {
            lAngles[i] = Rounded(lAngles[i], kAngleScale);
            lAngles[i] = lAngles[i] == -180.0 ? 180.0 : lAngles[i];
            lIsStable = lIsStable && lAngles[i] == pBone.mOrientationV.mData[i];
        }
        pBone.mOrientationV = lAngles;
        KgeSet(pBone.mAxisRM, pBone.mOrientationV);
        if (lIsStable)
        {
            break;
        }
    }
    pBone.mOrientationOrder = 0;
    KgeInverse(pBone.mAxisRMInv, pBone.mAxisRM);
}

} // namespace

void RoundBone(KQexAsfNode& pBone, double pLengthUnit)
{
    RoundLength(pBone, pLengthUnit);
    RoundDirection(pBone, pLengthUnit);
    RoundAxis(pBone);
}

} // namespace qexsdk
