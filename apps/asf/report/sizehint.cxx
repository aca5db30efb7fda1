#include <apps/asf/report/sizehint.h>

#include <apps/asf/report/figuresurvey.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/skeletonfile.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace asfapp
{

namespace
{

/// Fewer joints are a prop or an example rather than a person.
constexpr size_t kMinJoints = 10;

/// Centimetres: extents outside are unusual, and a unit is plausible if it gives a person's.
constexpr double kSmallest = 30;
constexpr double kLargest = 350;
constexpr double kLeastPerson = 90;
constexpr double kUsualPerson = 170;
constexpr double kMostPerson = 220;

struct KLengthUnit
{
    const char* mName;
    double      mCentimetres;
};

/// ASF files with a length unit of 0.45 are common, and so are files made from them as if their units were centimetres.
const KLengthUnit kUnits[] = {{"metres", 100},     {"decimetres", 10},
                              {"feet", 30.48},     {"units of 5.64 cm, as many ASF files are", qexsdk::kCentimetresPerInch / 0.45},
                              {"inches", 2.54},    {"centimetres", 1.0},
                              {"millimetres", 0.1}};

std::string HeightText(double pCentimetres)
{
    return pCentimetres < 100 ? Short(std::round(pCentimetres * 100) / 100) + " cm" : Short(std::round(pCentimetres) / 100) + " m";
}

double LargestExtent(const KPoint& pMin, const KPoint& pMax)
{
    return std::max({pMax.mX - pMin.mX, pMax.mY - pMin.mY, pMax.mZ - pMin.mZ});
}

/// The unit of BVH and glTF files is fixed.
double UnitOf(const qexsdk::KQexFigureFile& pFile)
{
    return pFile.GetFormat() == qexsdk::eFIGURE_GLTF ? 100.0 : 1.0;
}

void Print(const qexsdk::KQexFigureFile& pFile, const std::string& pHint, KConsole& pConsole)
{
    if (!pHint.empty())
    {
        pConsole.Message(eNOTE, pFile.GetDisplayPath(), 0, pHint);
    }
}

} // namespace

std::string SizeHint(double pExtent, size_t pJoints, double pCentimetresPerUnit)
{
    if (pJoints < kMinJoints || !(pExtent > 0) || !std::isfinite(pExtent) || (pExtent >= kSmallest && pExtent <= kLargest))
    {
        return "";
    }
    const KLengthUnit* lBest = nullptr;
    double             lLeast = 0;
    for (const KLengthUnit& lUnit : kUnits)
    {
        const double lHeight = pExtent * lUnit.mCentimetres / pCentimetresPerUnit;
        const double lDistance = std::fabs(std::log(lHeight / kUsualPerson));
        if (lHeight >= kLeastPerson && lHeight <= kMostPerson && (lBest == nullptr || lDistance < lLeast))
        {
            lBest = &lUnit;
            lLeast = lDistance;
        }
    }
    const std::string lText = "measures " + HeightText(pExtent) + " at rest, unlike a person";
    if (lBest == nullptr && pExtent > kLargest && pExtent / qexsdk::kCentimetresPerInch <= kMostPerson)
    {
        return lText + ": its lengths may have been taken for inches, then asf convert --scale " + Short(1 / qexsdk::kCentimetresPerInch) +
               " makes it " + HeightText(pExtent / qexsdk::kCentimetresPerInch);
    }
    if (lBest == nullptr)
    {
        return lText + ": asf convert --scale FACTOR corrects that";
    }
    const double lFactor = lBest->mCentimetres / pCentimetresPerUnit;
    return lText + ": the file may be in " + lBest->mName + ", then asf convert --scale " + Short(lFactor) + " makes it " +
           HeightText(pExtent * lFactor);
}

void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const KFigureSurvey& pSurvey, KConsole& pConsole)
{
    KPoint lMin;
    KPoint lMax;
    if (pSurvey.GetBounds(lMin, lMax))
    {
        Print(pFile, SizeHint(LargestExtent(lMin, lMax), pSurvey.GetRest().size(), UnitOf(pFile)), pConsole);
    }
}

void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, const KSkeletonFile& pSkeleton, KConsole& pConsole)
{
    KPoint lMin;
    KPoint lMax;
    if (pSkeleton.GetBounds(lMin, lMax))
    {
        Print(pFile, SizeHint(LargestExtent(lMin, lMax), pSkeleton.GetBones().size(), pSkeleton.GetCentimetresPerUnit()), pConsole);
    }
}

void PrintSizeHint(const qexsdk::KQexFigureFile& pFile, qexsdk::KQexFigure& pFigure, KConsole& pConsole)
{
    std::vector<KPoint> lRest;
    if (!pFigure.Evaluate(nullptr, qexsdk::KTime(0), lRest))
    {
        throw std::bad_alloc();
    }
    KPoint lMin = lRest.empty() ? KPoint() : lRest.front();
    KPoint lMax = lMin;
    for (const KPoint& lPoint : lRest)
    {
        lMin = {std::min(lMin.mX, lPoint.mX), std::min(lMin.mY, lPoint.mY), std::min(lMin.mZ, lPoint.mZ)};
        lMax = {std::max(lMax.mX, lPoint.mX), std::max(lMax.mY, lPoint.mY), std::max(lMax.mZ, lPoint.mZ)};
    }
    const qexsdk::KQexAsfScene* lSkeleton = pFigure.GetSkeleton();
    const bool                  lHasUnit = lSkeleton != nullptr && lSkeleton->mLengthUnit > 0;
    Print(
        pFile,
        SizeHint(LargestExtent(lMin, lMax), lRest.size(), lHasUnit ? qexsdk::kCentimetresPerInch / lSkeleton->mLengthUnit : UnitOf(pFile)),
        pConsole);
}

} // namespace asfapp
