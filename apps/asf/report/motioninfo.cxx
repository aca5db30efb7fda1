#include <apps/asf/report/motioninfo.h>

#include <apps/asf/report/jsontext.h>
#include <apps/asf/report/numbertext.h>
#include <kbaselib/kmath/kdofcodes.h>

#include <algorithm>

namespace asfapp
{

namespace
{

void WriteSummary(const qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole)
{
    const qexsdk::KQexAmcInfo& lInfo = pSurvey.GetInfo();
    pConsole.Out("  frames  " + std::to_string(lInfo.mFrameCount) + " (" + std::to_string(lInfo.mLowestFrame) + " to " +
                 std::to_string(lInfo.mHighestFrame) + "), " + ShortText(lInfo.mSamplesPerSecond) + " a second, " +
                 FixedText(pSurvey.GetSeconds(), 3) + " s\n");
    pConsole.Out("  bones   " + std::to_string(pSurvey.CountMoving()) + " of " + std::to_string(pSurvey.GetBones().size()) +
                 " with degrees of freedom move\n");
    pConsole.Out("  root    " + FixedText(pSurvey.GetRootTravel(), 1) + " cm from start to end, " +
                 FixedText(pSurvey.GetRootPathLength(), 1) + " cm along its path\n\n");
}

std::string OutsideText(const qexsdk::KQexDofSurvey& pDof)
{
    return pDof.mOutside == 0
               ? std::string()
               : CountText(pDof.mOutside, "frame", "frames") + " outside limits, first " + std::to_string(pDof.mFirstOutside);
}

KJson JsonDof(const qexsdk::KQexDofSurvey& pDof)
{
    KJson lDof;
    lDof["dof"] = qexsdk::kDofWords[pDof.mCode];
    lDof["least"] = pDof.mLowest;
    lDof["greatest"] = pDof.mHighest;
    lDof["min"] = pDof.mHasMin ? KJson(pDof.mMin) : KJson(nullptr);
    lDof["max"] = pDof.mHasMax ? KJson(pDof.mMax) : KJson(nullptr);
    lDof["framesOutside"] = pDof.mOutside;
    lDof["firstOutside"] = pDof.mOutside > 0 ? KJson(pDof.mFirstOutside) : KJson(nullptr);
    return lDof;
}

KJson JsonMotion(const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexMotionSurvey& pSurvey)
{
    static const char* const   sSources[] = {"caller", "file", "default"};
    const qexsdk::KQexAmcInfo& lInfo = pSurvey.GetInfo();
    KJson                      lBones = KJson::array();
    for (const qexsdk::KQexBoneSurvey& lBone : pSurvey.GetBones())
    {
        KJson lDofs = KJson::array();
        for (const qexsdk::KQexDofSurvey& lDof : lBone.mDofs)
        {
            lDofs.push_back(JsonDof(lDof));
        }
        lBones.push_back({{"name", lBone.mName}, {"frames", lBone.mFrames}, {"moves", lBone.Moves()}, {"dofs", lDofs}});
    }
    KJson lMotion;
    lMotion["skeleton"] = pFiles.mFigure.GetPath();
    lMotion["frameCount"] = lInfo.mFrameCount;
    lMotion["firstFrame"] = lInfo.mLowestFrame;
    lMotion["lastFrame"] = lInfo.mHighestFrame;
    lMotion["framesPerSecond"] = lInfo.mSamplesPerSecond;
    lMotion["rateFrom"] = sSources[lInfo.mRateSource];
    lMotion["seconds"] = pSurvey.GetSeconds();
    lMotion["bonesMoved"] = pSurvey.CountMoving();
    lMotion["rootTravel"] = pSurvey.GetRootTravel();
    lMotion["rootPathLength"] = pSurvey.GetRootPathLength();
    lMotion["bones"] = lBones;
    return lMotion;
}

/// "" without limits.
std::string LimitsOf(const qexsdk::KQexDofSurvey& pDof)
{
    return pDof.mHasMin || pDof.mHasMax ? LimitsText(pDof.mHasMin, pDof.mMin, pDof.mHasMax, pDof.mMax) : std::string();
}

} // namespace

void WriteMotionInfo(const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole)
{
    pConsole.Out(pConsole.Bold(Printable(pFiles.mMotions.front().GetDisplayPath())) + ": motion of " +
                 Printable(pFiles.mFigure.GetDisplayPath()) + "\n");
    WriteSummary(pSurvey, pConsole);
    size_t lWidth = 4;
    for (const qexsdk::KQexBoneSurvey& lBone : pSurvey.GetBones())
    {
        lWidth = std::max(lWidth, Printable(lBone.mName).size());
    }
    const auto lWriteRow = [&](const std::string& pBone, const char* pDof, const std::string& pLowest, const std::string& pHighest,
                               const std::string& pLimits, const std::string& pRemark)
    {
        std::string lLine = "  " + PadRight(pBone, lWidth) + "  " + PadRight(pDof, 3) + "  " + PadLeft(pLowest, 10) + "  " +
                            PadLeft(pHighest, 10) + "  " + PadRight(pLimits, 14) + "  " + pRemark;
        lLine.erase(lLine.find_last_not_of(' ') + 1);
        pConsole.Out(lLine + "\n");
    };
    lWriteRow("bone", "dof", "least", "greatest", "limits", "");
    for (const qexsdk::KQexBoneSurvey& lBone : pSurvey.GetBones())
    {
        std::string lName = Printable(lBone.mName);
        for (const qexsdk::KQexDofSurvey& lDof : lBone.mDofs)
        {
            const bool lHasValues = lBone.mFrames > 0;
            lWriteRow(lName, qexsdk::kDofWords[lDof.mCode], lHasValues ? FixedText(lDof.mLowest, 3) : "-",
                      lHasValues ? FixedText(lDof.mHighest, 3) : "-", LimitsOf(lDof), OutsideText(lDof));
            lName.clear();
        }
    }
}

void WriteMotionJson(const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexMotionSurvey& pSurvey, KConsole& pConsole)
{
    KJson lObject = JsonHead("motion", pFiles.mMotions.front().GetPath(), pSurvey.IsOk(), pSurvey.GetMessages());
    lObject["motion"] = pSurvey.IsOk() ? JsonMotion(pFiles, pSurvey) : KJson(nullptr);
    PrintJsonLine(lObject, pConsole);
}

} // namespace asfapp
