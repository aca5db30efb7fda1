#include <qexioplugins/acclaim/kqexasfprepare.h>

#include <kbaselib/kbase/knumber.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr int    kMaxTurns = 10;  ///< Rounds of rounding after which the values are taken as they are.
constexpr int    kTextDigits = 6; ///< Digits of a number in the written text.
constexpr double kCentimetres = 2.54;
constexpr double kAngleScale = 1e6;  ///< Angles keep six decimals: smaller ones are rounding.
constexpr double kPlaceNoise = 1e-6; ///< Centimetres by which other formats round places.

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

/// A direction is made a unit vector again when it is read: rounds until that changes no digit. A short bone's direction keeps fewer
/// digits: the places it stands for have no more.
void SettleDirection(KQexAsfNode& pBone, double pLengthUnit)
{
    const double lLength = pBone.mLength * kCentimetres / (pLengthUnit > 0.0 ? pLengthUnit : kCentimetres);
    const double lDecimals = std::floor(-std::log10(4.0 * kPlaceNoise / std::max(lLength, 1e-9)));
    const double lScale = std::pow(10.0, std::min(6.0, std::max(2.0, lDecimals)));
    for (int lTurn = 0; lTurn < kMaxTurns; ++lTurn)
    {
        bool       lIsSettled = lTurn > 0;
        KgeTVector lRounded;
        KgeNorm(lRounded, pBone.mDirectionV);
        for (int i = 0; i < 3; ++i)
        {
            lRounded.mData[i] = Rounded(lRounded.mData[i], lScale);
            lIsSettled = lIsSettled && lRounded.mData[i] == pBone.mDirectionV.mData[i];
        }
        KgeSet(pBone.mDirectionV, lRounded);
        if (lIsSettled)
        {
            return;
        }
    }
}

/// Angles are decomposed again when the skeleton has gone through a scene: rounds until that changes no digit. Half a turn is
/// always written as 180.
void SettleAxis(KQexAsfNode& pBone)
{
    for (int lTurn = 0; lTurn < kMaxTurns; ++lTurn)
    {
        bool   lIsSettled = lTurn > 0;
        double lAngles[3];
        KmRtoVord(lAngles, pBone.mAxisRM.mData, 0);
        for (int i = 0; i < 3; ++i)
        {
            lAngles[i] = Rounded(lAngles[i], kAngleScale);
            lAngles[i] = lAngles[i] == -180.0 ? 180.0 : lAngles[i];
            lIsSettled = lIsSettled && lAngles[i] == pBone.mOrientationV.mData[i];
        }
        pBone.mOrientationV = lAngles;
        KgeSet(pBone.mAxisRM, pBone.mOrientationV);
        if (lIsSettled)
        {
            break;
        }
    }
    pBone.mOrientationOrder = 0;
    KgeInverse(pBone.mAxisRMInv, pBone.mAxisRM);
}

} // namespace

void SettleBone(KQexAsfNode& pBone, double pLengthUnit)
{
    pBone.mLength = AsWritten(pBone.mLength);
    SettleDirection(pBone, pLengthUnit);
    SettleAxis(pBone);
}

} // namespace qexsdk
