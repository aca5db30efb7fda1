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

constexpr int    kMaxPasses = 10;           ///< Passes of rounding after which the values are accepted as they are.
constexpr int    kTextDigits = 6;           ///< Digits of a number in the written text.
constexpr double kAngleScale = 1e6;         ///< Angles keep six decimals: the rest is rounding error.
constexpr double kPositionSteps = 0.125;    ///< Largest error of a direction from rounded positions, in steps of its last digit.
constexpr double kMaxUnitError = 0.35;      ///< Steps by which normalising may move a direction on top of that.
constexpr double kMaxShortUnitError = 0.47; ///< The same for a direction with one digit less.
constexpr double kPositionNoise = 1e-6;     ///< Rounding error of positions in other formats, centimetres.

/// \p pValue rounded as in the written text, and never a negative zero.
double AsWritten(double pValue)
{
    char        lText[kNumberBufferSize];
    const char* lEnd = KNumberPrint(lText, lText + sizeof lText, pValue, 'g', kTextDigits);
    double      lValue = pValue;
    KNumberParse(std::string_view(lText, static_cast<size_t>(lEnd - lText)), lValue);
    return lValue == 0.0 ? 0.0 : lValue;
}

/// Rounds to steps of 1 / \p pScale, then as in the written text.
double Rounded(double pValue, double pScale)
{
    return AsWritten(std::round(pValue * pScale) / pScale);
}

/// Largest difference of a component between the normalised \p pDirection and \p pFrom.
double UnitError(const double* pDirection, const double* pFrom)
{
    double lUnit[3];
    KmVnorm(lUnit, pDirection);
    return kLargest(lUnit[0] - pFrom[0], lUnit[1] - pFrom[1], lUnit[2] - pFrom[2]);
}

/// Rounds \p pUnit, moved by \p pMoves whole steps.
void RoundComponents(const double* pUnit, const int* pMoves, double pScale, double* pRounded)
{
    for (int i = 0; i < 3; ++i)
    {
        pRounded[i] = Rounded(pUnit[i] + pMoves[i] / pScale, pScale);
    }
}

/// Of the roundings next to a direction, finds the nearest stable one: normalising moves it by at most \p pMaxSteps steps, so that it
/// still rounds to itself. False when there is none.
bool FindStable(const double* pUnit, double pScale, double pMaxSteps, double* pFound)
{
    double lLowest = std::numeric_limits<double>::infinity();
    for (int lTry = 0; lTry < 27; ++lTry)
    {
        const int lMoves[3] = {lTry % 3 - 1, lTry / 3 % 3 - 1, lTry / 9 - 1};
        double    lRounded[3];
        RoundComponents(pUnit, lMoves, pScale, lRounded);
        const double lDifference[3] = {lRounded[0] - pUnit[0], lRounded[1] - pUnit[1], lRounded[2] - pUnit[2]};
        const double lDistance = KmVlength(lDifference);
        if (lDistance < lLowest && UnitError(lRounded, lRounded) * pScale <= pMaxSteps)
        {
            lLowest = lDistance;
            KmVset(pFound, lRounded);
        }
    }
    return lLowest < std::numeric_limits<double>::infinity();
}

/// Whether \p pUnit rounds to a stable direction in steps of 1 / \p pScale that, normalised, is within \p pMaxSteps steps of it.
/// \p pFound receives that direction.
bool IsShort(const double* pUnit, double pScale, double pMaxSteps, double* pFound)
{
    const int lNoMoves[3] = {};
    double    lRounded[3];
    RoundComponents(pUnit, lNoMoves, pScale, lRounded);
    if (UnitError(lRounded, pUnit) * pScale > pMaxSteps || UnitError(lRounded, lRounded) * pScale > kMaxShortUnitError)
    {
        return false;
    }
    KmVset(pFound, lRounded);
    return true;
}

/// Reading normalises a direction, and other formats round the position of the bone's end. The direction is rounded such that neither
/// changes its digits. Short bones keep fewer digits, as their positions have no more. Where no rounding is stable, one digit less is
/// kept; IsShort() recognises such a direction later, so a longer one that looks like it is shortened as well.
void RoundDirection(KQexAsfNode& pBone, double pLengthUnit)
{
    const double lLength = pBone.mLength * kCentimetresPerInch / (pLengthUnit > 0.0 ? pLengthUnit : kCentimetresPerInch);
    const double lDecimals = std::floor(-std::log10(4.0 * kPositionNoise / std::max(lLength, 1e-9)));
    const double lScale = std::pow(10.0, std::min(6.0, std::max(2.0, lDecimals)));
    double       lUnit[3];
    double       lFound[3];
    KmVnorm(lUnit, pBone.mDirectionV.mData);
    if (!IsShort(lUnit, lScale / 10.0, 2.0 * kPositionSteps / 10.0, lFound))
    {
        if (FindStable(lUnit, lScale, kMaxUnitError, lFound))
        {
            KmVnorm(lUnit, lFound);
            IsShort(lUnit, lScale / 10.0, 3.0 * kPositionSteps / 10.0, lFound);
        }
        else if (!FindStable(lUnit, lScale / 10.0, kMaxShortUnitError, lFound))
        {
            const int lNoMoves[3] = {};
            RoundComponents(lUnit, lNoMoves, lScale, lFound);
        }
    }
    pBone.mDirectionV = lFound;
}

/// A length keeps the digits that positions have.
void RoundLength(KQexAsfNode& pBone, double pLengthUnit)
{
    const double lNoise = kPositionNoise * (pLengthUnit > 0.0 ? pLengthUnit : kCentimetresPerInch) / kCentimetresPerInch;
    pBone.mLength = Rounded(pBone.mLength, std::pow(10.0, std::floor(-std::log10(4.0 * lNoise))));
}

/// A skeleton extracted from a scene has its axis angles decomposed again: rounds until that changes no digit. -180 becomes 180.
void RoundAxis(KQexAsfNode& pBone)
{
    for (int lPass = 0; lPass < kMaxPasses; ++lPass)
    {
        bool   lIsStable = lPass > 0;
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
