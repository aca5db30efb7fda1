#include <apps/asf/figure/worldoptions.h>

#include <qexfigure/kqexfigureworld.h>

#include <cmath>
#include <new>

namespace asfapp
{

namespace
{

constexpr double kInch = 2.54; ///< In centimetres.
constexpr double kMetre = 100; ///< The same.

} // namespace

double KWorldOptions::GetUnit() const
{
    return mUnits == "m" ? kMetre : mUnits == "in" ? kInch : mUnits == "file" ? mFileUnit : 1;
}

qexsdk::KQexOutputSpace KWorldOptions::GetSpace() const
{
    qexsdk::KQexOutputSpace lSpace;
    lSpace.mPerCentimetre = GetFactor();
    lSpace.mZUp = IsZUp();
    return lSpace;
}

void SetFileUnit(KWorldOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexFigure& pFigure)
{
    const qexsdk::KQexAsfScene* lSkeleton = pFigure.GetSkeleton();
    pOptions.mFileUnit = pFiles.mFigure.GetFormat() == qexsdk::eFIGURE_GLTF   ? kMetre
                         : lSkeleton != nullptr && lSkeleton->mLengthUnit > 0 ? kInch / lSkeleton->mLengthUnit
                                                                              : 1;
}

double LengthUnitOf(const KWorldOptions& pOptions)
{
    return kInch / pOptions.GetUnit();
}

bool CheckLengthUnit(const KWorldOptions& pOptions, double pLengthUnit, bool pIsLoaded, KConsole& pConsole)
{
    const bool   lIsKnown = pIsLoaded || pOptions.mUnits != "file";
    const double lWanted = LengthUnitOf(pOptions);
    if (pOptions.mUnits.empty() || pLengthUnit == 0 || !lIsKnown || std::fabs(pLengthUnit - lWanted) <= 1e-6 * lWanted)
    {
        return true;
    }
    pConsole.Fail(eEXIT_USAGE, "--units " + pOptions.mUnits + " contradicts --length-unit: give one of them");
    return false;
}

void HoldInPlace(const KWorldOptions& pOptions, qexsdk::KQexFigure& pFigure)
{
    if (pOptions.mInPlace && !qexsdk::HoldFigureInPlace(pFigure))
    {
        throw std::bad_alloc();
    }
}

} // namespace asfapp
