#include <qexfigure/check/kqexsizehint.h>

#include <qexfigure/check/kqexbounds.h>
#include <qexfigure/check/kqexfiguresurvey.h>
#include <qexfigure/check/kqexskeletonfile.h>
#include <qexfigure/kqexnumbertext.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace qexsdk
{

namespace
{

/// Fewer joints are a prop or an example rather than a person.
constexpr size_t kMinJoints = 10;

/// Centimetres: extents outside are unusual, and a unit is plausible if it gives a person's.
constexpr double kTooSmall = 30;
constexpr double kTooLarge = 350;
constexpr double kLeastPerson = 90;
constexpr double kUsualPerson = 170;
constexpr double kMostPerson = 220;

struct KHintUnit
{
    const char* mName;
    double      mCentimetres;
};

/// ASF files with a length unit of 0.45 are common, and so are files made from them as if their units were centimetres.
const KHintUnit kHintUnits[] = {
    {"metres", 100},  {"decimetres", 10},   {"feet", 30.48},     {"units of 5.64 cm, as many ASF files are", kCentimetresPerInch / 0.45},
    {"inches", 2.54}, {"centimetres", 1.0}, {"millimetres", 0.1}};

std::string HeightText(double pCentimetres)
{
    return pCentimetres < 100 ? ShortText(std::round(pCentimetres * 100) / 100) + " cm" : ShortText(std::round(pCentimetres) / 100) + " m";
}

double LargestExtent(const KQexFigurePoint& pMin, const KQexFigurePoint& pMax)
{
    return std::max({pMax.mX - pMin.mX, pMax.mY - pMin.mY, pMax.mZ - pMin.mZ});
}

/// The unit of BVH and glTF files is fixed.
double UnitOf(const KQexFigureFile& pFile)
{
    return pFile.GetFormat() == eFIGURE_GLTF ? 100.0 : 1.0;
}

} // namespace

std::string SizeHint(double pExtent, size_t pJoints, double pCentimetresPerUnit, const std::string& pScaleOption)
{
    if (pJoints < kMinJoints || !(pExtent > 0) || !std::isfinite(pExtent) || (pExtent >= kTooSmall && pExtent <= kTooLarge))
    {
        return "";
    }
    const KHintUnit* lBest = nullptr;
    double           lLeast = 0;
    for (const KHintUnit& lUnit : kHintUnits)
    {
        const double lHeight = pExtent * lUnit.mCentimetres / pCentimetresPerUnit;
        const double lDistance = std::fabs(std::log(lHeight / kUsualPerson));
        if (lHeight >= kLeastPerson && lHeight <= kMostPerson && (lBest == nullptr || lDistance < lLeast))
        {
            lBest = &lUnit;
            lLeast = lDistance;
        }
    }
    const std::string lScale = pScaleOption.empty() ? "scaling by" : pScaleOption;
    const std::string lText = "measures " + HeightText(pExtent) + " at rest, unlike a person";
    if (lBest == nullptr && pExtent > kTooLarge && pExtent / kCentimetresPerInch <= kMostPerson)
    {
        return lText + ": its lengths may have been taken for inches, then " + lScale + " " + ShortText(1 / kCentimetresPerInch) +
               " makes it " + HeightText(pExtent / kCentimetresPerInch);
    }
    if (lBest == nullptr)
    {
        return lText + ": " + lScale + " FACTOR corrects that";
    }
    const double lFactor = lBest->mCentimetres / pCentimetresPerUnit;
    return lText + ": the file may be in " + lBest->mName + ", then " + lScale + " " + ShortText(lFactor) + " makes it " +
           HeightText(pExtent * lFactor);
}

std::string SizeHint(const KQexSkeletonFile& pSkeleton, const std::string& pScaleOption)
{
    KQexFigurePoint lMin;
    KQexFigurePoint lMax;
    return pSkeleton.GetBounds(lMin, lMax)
               ? SizeHint(LargestExtent(lMin, lMax), pSkeleton.GetBones().size(), pSkeleton.GetCentimetresPerUnit(), pScaleOption)
               : std::string();
}

std::string SizeHint(const KQexFigureFile& pFile, const KQexFigureSurvey& pSurvey, const std::string& pScaleOption)
{
    KQexFigurePoint lMin;
    KQexFigurePoint lMax;
    return pSurvey.GetBounds(lMin, lMax) ? SizeHint(LargestExtent(lMin, lMax), pSurvey.GetRest().size(), UnitOf(pFile), pScaleOption)
                                         : std::string();
}

std::string SizeHint(const KQexFigureFile& pFile, KQexFigure& pFigure, const std::string& pScaleOption)
{
    std::vector<KQexFigurePoint> lRest;
    if (!pFigure.Evaluate(nullptr, KTime(0), lRest))
    {
        throw std::bad_alloc();
    }
    KQexFigurePoint lMin;
    KQexFigurePoint lMax;
    if (!FindBounds(lRest, lMin, lMax))
    {
        return "";
    }
    const KQexAsfScene* lSkeleton = pFigure.GetSkeleton();
    const bool          lHasUnit = lSkeleton != nullptr && lSkeleton->mLengthUnit > 0;
    return SizeHint(LargestExtent(lMin, lMax), lRest.size(), lHasUnit ? kCentimetresPerInch / lSkeleton->mLengthUnit : UnitOf(pFile),
                    pScaleOption);
}

} // namespace qexsdk
