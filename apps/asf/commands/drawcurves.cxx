#include <apps/asf/commands/drawoptions.h>
#include <apps/asf/commands/framelist.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/picture/pictureoutput.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <qexfigure/picture/kqexangles.h>

namespace asfapp
{

namespace
{

/// The angles as the motion's file has them. False after an error.
bool LoadAngles(const KDrawOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, qexsdk::KQexChart& pChart, KConsole& pConsole)
{
    KLoadedMotion  lMotion;
    KMotionOptions lLoading = pOptions.mMotion;
    lLoading.mKeepDofValues = true;
    if (!lMotion.Load(pFiles, lLoading, pOptions.mTake, pConsole))
    {
        return false;
    }
    qexsdk::KQexFigureReport lReport;
    bool                     lOk = false;
    {
        KProgress                lProgress("drawing", pConsole);
        qexsdk::KQexAngleOptions lOptions;
        lOptions.mJoints = pOptions.mCurves;
        lOptions.mJointOption = "--curves: ";
        lOptions.mProgress = lProgress.GetFunction();
        lOk = qexsdk::CollectAngles(lMotion.GetFigure(), *lMotion.GetTake(), lOptions, pChart, lReport);
    }
    PrintReport(lReport, pConsole);
    return lOk;
}

template <typename TValue>
void KeepRange(std::vector<TValue>& pValues, size_t pBegin, size_t pEnd)
{
    pValues.erase(pValues.begin() + static_cast<std::ptrdiff_t>(pEnd), pValues.end());
    pValues.erase(pValues.begin(), pValues.begin() + static_cast<std::ptrdiff_t>(pBegin));
}

/// Keeps the frames of --frames, one range. False after an error.
bool CutFrames(const KDrawOptions& pOptions, qexsdk::KQexChart& pChart, KConsole& pConsole)
{
    if (pOptions.mFrames.empty())
    {
        return true;
    }
    std::vector<size_t> lFrames;
    const std::string   lError = PickFrames(pOptions.mFrames, pChart.mNumbers, lFrames);
    if (!lError.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--frames: " + lError);
        return false;
    }
    if (!CheckOneRange(lFrames, pConsole, "--curves"))
    {
        return false;
    }
    KeepRange(pChart.mSeconds, lFrames.front(), lFrames.back() + 1);
    KeepRange(pChart.mNumbers, lFrames.front(), lFrames.back() + 1);
    for (qexsdk::KQexChartPanel& lPanel : pChart.mPanels)
    {
        for (qexsdk::KQexChartSeries& lSeries : lPanel.mSeries)
        {
            KeepRange(lSeries.mValues, lFrames.front(), lFrames.back() + 1);
        }
    }
    pChart.mSubtitle += "; frames " + std::to_string(pChart.mNumbers.front()) + " to " + std::to_string(pChart.mNumbers.back());
    return true;
}

} // namespace

std::string PictureTitle(const qexsdk::KQexFigureFile& pFile)
{
    return pFile.GetDisplayPath().substr(pFile.GetDisplayPath().find_last_of('/') + 1);
}

bool CheckCurveOptions(const KDrawOptions& pOptions, KConsole& pConsole)
{
    const bool lHasOthers = !pOptions.mView.empty() || pOptions.mNames || !pOptions.mTrails.empty() || !pOptions.mMotion.mFps.empty();
    if (!pOptions.mCurves.empty() && lHasOthers)
    {
        pConsole.Fail(eEXIT_USAGE, "--curves draws no poses: it is used without --view, --names, --trail and --fps");
        return false;
    }
    return true;
}

void DrawCurves(const KDrawOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, KConsole& pConsole)
{
    const qexsdk::KQexFigureFile& lFile = pFiles.mMotions.empty() ? pFiles.mFigure : pFiles.mMotions.front();
    qexsdk::KQexChart             lChart;
    lChart.mPath = lFile.GetDisplayPath();
    lChart.mTitle = PictureTitle(lFile);
    if (!LoadAngles(pOptions, pFiles, lChart, pConsole) || !CutFrames(pOptions, lChart, pConsole))
    {
        return;
    }
    const auto lDraw = [&lChart](double pWidth, qexsdk::KQexSvg& pSvg, qexsdk::KQexFigureReport& pReport)
    {
        return qexsdk::DrawChart(lChart, pWidth, pSvg, pReport);
    };
    const std::string lContents = "angles of " + CountText(static_cast<long long>(lChart.mPanels.size()), "joint", "joints");
    WritePicture(lDraw, lContents, pOptions.mWidth, pOptions.mOutput, pConsole);
}

} // namespace asfapp
