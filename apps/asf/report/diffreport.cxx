#include <apps/asf/report/diffreport.h>

#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>

#include <algorithm>
#include <cmath>

namespace asfapp
{

namespace
{

const char* const kTitles[eASPECT_COUNT] = {"joints missing", "other parents", "rest pose",         "bone lengths", "degrees of freedom",
                                            "limits",         "frames",        "frames per second", "duration",     "world positions"};

std::string CountJoints(const KFigureComparison& pComparison)
{
    return CountText(static_cast<long long>(pComparison.GetPairCount()), "joint", "joints");
}

std::string CountFrames(const KFigureComparison& pComparison)
{
    return CountText(pComparison.GetComparedFrames(), "frame", "frames");
}

/// What an aspect was compared for, if that is not everything: "24 joints, 83 frames".
std::string PartText(const KFigureComparison& pComparison, int pAspect)
{
    const bool lIsOfJoints =
        pAspect != eASPECT_NAMES && pAspect != eASPECT_FRAMES && pAspect != eASPECT_RATE && pAspect != eASPECT_DURATION;
    std::string lText = lIsOfJoints && pComparison.HasUnpairedJoints() ? CountJoints(pComparison) : "";
    if (pAspect == eASPECT_POSITIONS && pComparison.HasUnpairedFrames())
    {
        lText += (lText.empty() ? "" : ", ") + CountFrames(pComparison);
    }
    return lText;
}

std::string VerdictText(const KDiffReport& pReport, int pAspect)
{
    const KAspectResult& lResult = pReport.mComparison.Get(pAspect);
    if (lResult.mIsCompared && lResult.mDiffers)
    {
        return pReport.IsIgnored(pAspect) ? "ignored" : "DIFFERS";
    }
    const std::string lPart = PartText(pReport.mComparison, pAspect);
    return !lResult.mIsCompared ? "not compared" : lPart.empty() ? "same" : "same for " + lPart;
}

/// What the figures are the same in: never more than was compared.
std::string ResultText(const KDiffReport& pReport)
{
    const KFigureComparison& lComparison = pReport.mComparison;
    if (!pReport.IsSame())
    {
        return "different";
    }
    std::string lText = "same within tolerance";
    lText += lComparison.HasUnpairedJoints() ? " for the " + CountJoints(lComparison) + " compared" : "";
    lText += lComparison.HasUnpairedFrames() ? ", in the first " + CountFrames(lComparison) : "";
    std::string lNotCompared;
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        if (lComparison.Get(lAspect).mIsOneSided && !pReport.IsIgnored(lAspect))
        {
            lNotCompared += (lNotCompared.empty() ? "; not compared: " : ", ") + std::string(kTitles[lAspect]);
        }
    }
    return lText + lNotCompared;
}

std::string ValueText(const KAspectResult& pResult)
{
    if (!pResult.mIsCompared)
    {
        return "-";
    }
    if (*pResult.mUnit == '\0')
    {
        return ShortText(pResult.mLargest);
    }
    return std::isfinite(pResult.mLargest) ? FixedText(pResult.mLargest, 5) + " " + pResult.mUnit : "one-sided";
}

void WriteFigure(const KDiffReport& pReport, int pSide, KConsole& pConsole)
{
    const KFigureComparison&        lComparison = pReport.mComparison;
    const std::vector<std::string>& lOnly = lComparison.GetOnly(pSide);
    std::string                     lLine = std::string(pSide == 0 ? "first   " : "second  ") + Printable(pReport.mTitles[pSide]) + ": " +
                        CountText(static_cast<long long>(lComparison.GetJointCount(pSide)), "joint", "joints");
    for (const std::string& lName : lOnly)
    {
        lLine += (&lName == &lOnly.front() ? ", only here: " : " ") + Printable(lName);
    }
    pConsole.Out(lLine + "\n");
}

void WriteTolerance(const KDiffReport& pReport, KConsole& pConsole)
{
    const KFigureComparison& lComparison = pReport.mComparison;
    const bool               lHasHeight = lComparison.GetReferenceLength() == lComparison.GetHeight();
    pConsole.Out(
        "height  " + FixedText(lComparison.GetHeight(), 2) + " cm, tolerance " + ShortText(lComparison.GetLengthTolerance()) + " cm" +
        (lHasHeight ? "" : ", " + ShortText(pReport.mTolerance) + " of " + ShortText(lComparison.GetReferenceLength()) + " cm") + "\n\n");
}

KJson JsonOfAspect(const KDiffReport& pReport, int pAspect)
{
    const KAspectResult& lResult = pReport.mComparison.Get(pAspect);
    KJson                lObject;
    lObject["compared"] = lResult.mIsCompared;
    lObject["same"] = lResult.mIsCompared ? KJson(!lResult.mDiffers) : KJson();
    lObject["ignored"] = pReport.IsIgnored(pAspect);
    // Infinite if only one side has the limit; JSON has no infinity.
    lObject["largest"] = lResult.mIsCompared && std::isfinite(lResult.mLargest) ? KJson(lResult.mLargest) : KJson();
    lObject["unit"] = lResult.mUnit;
    lObject["where"] = lResult.mWhere;
    return lObject;
}

} // namespace

bool KDiffReport::IsIgnored(int pAspect) const
{
    return std::find(mIgnored.begin(), mIgnored.end(), AspectWord(pAspect)) != mIgnored.end();
}

bool KDiffReport::IsSame() const
{
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        if (mComparison.Get(lAspect).mDiffers && !IsIgnored(lAspect))
        {
            return false;
        }
    }
    return true;
}

void WriteDiffTable(const KDiffReport& pReport, KConsole& pConsole)
{
    const KFigureComparison& lComparison = pReport.mComparison;
    WriteFigure(pReport, 0, pConsole);
    WriteFigure(pReport, 1, pConsole);
    if (lComparison.GetBareCount() > 0)
    {
        pConsole.Out("paired  " + CountText(lComparison.GetBareCount(), "joint", "joints") + " by the name after the last colon, such as " +
                     Printable(lComparison.GetBareExample()) + "\n");
    }
    WriteTolerance(pReport, pConsole);
    size_t lWidth = 14;
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        lWidth = std::max(lWidth, VerdictText(pReport, lAspect).size() + 2);
    }
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        const KAspectResult& lResult = lComparison.Get(lAspect);
        const std::string    lVerdict = VerdictText(pReport, lAspect);
        pConsole.Out(PadRight(kTitles[lAspect], 20) + PadLeft(ValueText(lResult), 16) + "  " +
                     (lResult.mWhere.empty() ? lVerdict : PadRight(lVerdict, lWidth) + Printable(lResult.mWhere)) + "\n");
    }
    pConsole.Out("\n" + ResultText(pReport) + "\n");
}

void WriteDiffJson(const KDiffReport& pReport, KConsole& pConsole)
{
    const KFigureComparison& lComparison = pReport.mComparison;
    KJson                    lObject = JsonHead("diff", pReport.mTitles[0], pReport.IsSame(), {});
    lObject["other"] = pReport.mTitles[1];
    lObject["height"] = lComparison.GetHeight();
    lObject["tolerance"] = pReport.mTolerance;
    lObject["lengthTolerance"] = lComparison.GetLengthTolerance();
    lObject["joints"] = KJson::array({lComparison.GetJointCount(0), lComparison.GetJointCount(1)});
    lObject["frames"] = KJson::array({lComparison.GetSampling(0).mCount, lComparison.GetSampling(1).mCount});
    lObject["jointsCompared"] = lComparison.GetPairCount();
    lObject["framesCompared"] = lComparison.GetComparedFrames();
    lObject["pairedAfterColon"] = lComparison.GetBareCount();
    for (int lSide = 0; lSide < 2; ++lSide)
    {
        // Braces around two lists of two strings would make an object.
        lObject["only"].push_back(lComparison.GetOnly(lSide));
    }
    KJson lAspects = KJson::object();
    for (int lAspect = 0; lAspect < eASPECT_COUNT; ++lAspect)
    {
        lAspects[AspectWord(lAspect)] = JsonOfAspect(pReport, lAspect);
    }
    lObject["differences"] = lAspects;
    PrintJsonLine(lObject, pConsole);
}

} // namespace asfapp
