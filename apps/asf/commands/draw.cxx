#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/drawoptions.h>
#include <apps/asf/commands/framelist.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <apps/asf/picture/pictureoutput.h>
#include <apps/asf/picture/picturepng.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/usage.h>
#include <qexfigure/picture/kqexfigurepicture.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

using qexsdk::KQexFigureFile;

std::vector<qexsdk::KQexPictureView> ViewsOf(const std::string& pWord)
{
    if (pWord == "all")
    {
        return {qexsdk::ePICTURE_FRONT, qexsdk::ePICTURE_SIDE, qexsdk::ePICTURE_TOP};
    }
    return {pWord == "side" ? qexsdk::ePICTURE_SIDE : pWord == "top" ? qexsdk::ePICTURE_TOP : qexsdk::ePICTURE_FRONT};
}

qexsdk::KQexFigurePictureOptions PictureOptions(const KDrawOptions& pOptions, const KQexFigureFile& pFile)
{
    qexsdk::KQexFigurePictureOptions lOptions;
    lOptions.mPath = pFile.GetDisplayPath();
    lOptions.mTitle = PictureTitle(pFile);
    lOptions.mViews = ViewsOf(pOptions.mView);
    lOptions.mNames = pOptions.mNames;
    lOptions.mTrails = pOptions.mTrails;
    lOptions.mTrailOption = "--trail: ";
    return lOptions;
}

void WritePoses(const KDrawOptions& pOptions, const qexsdk::KQexPicture& pPicture, KConsole& pConsole)
{
    const auto lDraw = [&pPicture](double pWidth, qexsdk::KQexSvg& pSvg, qexsdk::KQexFigureReport& pReport)
    {
        return qexsdk::DrawPicture(pPicture, pWidth, pSvg, pReport);
    };
    const std::string lContents = CountText(static_cast<long long>(pPicture.mPoses.size()), "pose", "poses");
    WritePicture(lDraw, lContents, pOptions.mWidth, pOptions.mOutput, pConsole);
}

/// Leaves of \p pFrames, one range, those that are nearest to even times, \p pRate a second from the first.
void KeepAtRate(const KLoadedMotion& pMotion, double pRate, std::vector<size_t>& pFrames)
{
    const double        lStart = pMotion.GetTime(pFrames.front()).GetSeconds();
    std::vector<size_t> lKept;
    double              lKeptSlot = -1;
    double              lKeptDistance = 0;
    for (const size_t lFrame : pFrames)
    {
        const double lPosition = (pMotion.GetTime(lFrame).GetSeconds() - lStart) * pRate;
        const double lSlot = std::round(lPosition);
        const double lDistance = std::fabs(lPosition - lSlot);
        if (lSlot > lKeptSlot)
        {
            lKept.push_back(lFrame);
        }
        else if (lDistance < lKeptDistance)
        {
            lKept.back() = lFrame;
        }
        lKeptDistance = lSlot > lKeptSlot ? lDistance : std::min(lDistance, lKeptDistance);
        lKeptSlot = lSlot;
    }
    // The last even time may be after the last frame.
    if (lKept.size() > 1 && lKeptDistance > pRate / pMotion.GetRate())
    {
        lKept.pop_back();
    }
    pFrames = lKept;
}

/// The indices of the frames to draw; none for the default. False after an error.
bool ChooseFrames(const KDrawOptions& pOptions, const KLoadedMotion& pMotion, std::vector<size_t>& pFrames, KConsole& pConsole)
{
    const bool        lHasRate = pOptions.mMotion.mRate > 0;
    const std::string lList = pOptions.mFrames.empty() && lHasRate ? "first-last" : pOptions.mFrames;
    const std::string lError = lList.empty() ? std::string() : PickFrames(lList, pMotion.GetFrames(), pFrames);
    if (!lError.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--frames: " + lError);
        return false;
    }
    if (lHasRate && !CheckOneRange(pFrames, pConsole))
    {
        return false;
    }
    if (lHasRate)
    {
        KeepAtRate(pMotion, pOptions.mMotion.mRate, pFrames);
    }
    return true;
}

/// Frames and trails need a motion. False, with an error, if they are asked for.
bool CheckRestOptions(const KDrawOptions& pOptions, KConsole& pConsole)
{
    const bool lOk = pOptions.mFrames.empty() && pOptions.mTrails.empty() && pOptions.mMotion.mFps.empty();
    if (!lOk)
    {
        pConsole.Fail(eEXIT_USAGE, "--frames, --fps and --trail need a motion");
    }
    return lOk;
}

/// An ASF skeleton at rest: its bones as the file lists them.
void DrawSkeleton(const KDrawOptions& pOptions, const KQexFigureFile& pFile, KConsole& pConsole)
{
    if (!CheckRestOptions(pOptions, pConsole))
    {
        return;
    }
    qexsdk::KQexSkeletonFile lSkeleton;
    qexsdk::KQexFigureReport lReport;
    const bool               lOk = lSkeleton.Read(pFile, false, lReport);
    PrintReport(lReport, pConsole);
    PrintMessages(lSkeleton.GetMessages(), pFile.GetDisplayPath(), pConsole);
    qexsdk::KQexPicture      lPicture;
    qexsdk::KQexFigureReport lDrawing;
    if (lOk && qexsdk::MakeSkeletonPicture(lSkeleton, PictureOptions(pOptions, pFile), lPicture, lDrawing))
    {
        WritePoses(pOptions, lPicture, pConsole);
    }
    PrintReport(lDrawing, pConsole);
}

/// Poses of a motion; a figure without motion, at rest.
void DrawMotion(const KDrawOptions& pOptions, KLoadedMotion& pMotion, const KQexFigureFile& pFile, KConsole& pConsole)
{
    qexsdk::KQexFigurePictureOptions lOptions = PictureOptions(pOptions, pFile);
    if (pMotion.HasTake() ? !ChooseFrames(pOptions, pMotion, lOptions.mFrames, pConsole) : !CheckRestOptions(pOptions, pConsole))
    {
        return;
    }
    qexsdk::KQexPicture      lPicture;
    qexsdk::KQexFigureReport lReport;
    bool                     lOk = false;
    {
        KProgress lProgress("drawing", pConsole);
        lOptions.mProgress = lProgress.GetFunction();
        lOk = qexsdk::MakeFigurePicture(pMotion.GetFigure(), pMotion.GetTake(), lOptions, lPicture, lReport);
    }
    PrintReport(lReport, pConsole);
    if (lOk)
    {
        WritePoses(pOptions, lPicture, pConsole);
    }
}

void RunDraw(KDrawOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles lFiles;
    if (!CheckCurveOptions(pOptions, pConsole) || !ApplyMotionOptions(pOptions.mMotion, pConsole) ||
        !CheckOutput(pOptions.mOutput, pOptions.mFiles, pConsole) || !CheckPictureName(pOptions.mOutput, IsPngBuiltIn(), pConsole) ||
        !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole) || !CheckOutput(pOptions.mOutput, PathsOf(lFiles), pConsole))
    {
        return;
    }
    if (!pOptions.mCurves.empty())
    {
        DrawCurves(pOptions, lFiles, pConsole);
        return;
    }
    if (lFiles.mFigure.GetFormat() == qexsdk::eFIGURE_ASF && lFiles.mMotions.empty())
    {
        DrawSkeleton(pOptions, lFiles.mFigure, pConsole);
        return;
    }
    KLoadedMotion         lMotion;
    const KQexFigureFile& lFile = lFiles.mMotions.empty() ? lFiles.mFigure : lFiles.mMotions.front();
    if (lMotion.LoadFigureOrMotion(lFiles, pOptions.mMotion, pOptions.mTake, pConsole))
    {
        DrawMotion(pOptions, lMotion, lFile, pConsole);
    }
}

} // namespace

void SetUpDraw(CLI::App& pCommand, KConsole& pConsole)
{
    auto lOptions = std::make_shared<KDrawOptions>();
    pCommand.add_option("FILE", lOptions->mFiles, "ASF, ASF and AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->expected(1, 2)
        ->option_text(" ");
    pCommand.add_option("-o,--output", lOptions->mOutput, "File to write: .svg or .png; \"-\" is SVG to standard output")
        ->required()
        ->option_text("FILE (required)");
    pCommand.add_option("--view", lOptions->mView, "front (the default), side, top or all")
        ->check(OneOf({"front", "side", "top", "all"}))
        ->option_text("VIEW");
    pCommand.add_option("--width", lOptions->mWidth, "Width of the picture (default: as the poses need)")
        ->check(NumberFrom(kMinPictureWidth, kMaxPictureWidth, true))
        ->option_text("PIXELS");
    pCommand.add_flag("--names", lOptions->mNames, "Label the joints with their names");
    pCommand
        .add_option("--frames", lOptions->mFrames, "Frames of a motion to draw, such as 1,100-200:20,last (default: five, evenly spaced)")
        ->option_text("LIST");
    pCommand
        .add_option("--trail", lOptions->mTrails,
                    "Also draw the path of a bone's end, with the poses at their world positions; may be repeated")
        ->option_text("BONE")
        ->allow_extra_args(false);
    pCommand
        .add_option("--curves", lOptions->mCurves,
                    "Instead draw these joints' angles over time, and where they pass their limits; several are separated by commas")
        ->option_text("JOINT,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    pCommand.add_option("--take", lOptions->mTake, "Take to draw if there are several (default: the first)")->option_text("NAME");
    AddFormatOption(pCommand, lOptions->mMotion.mFrom);
    AddRate(pCommand, "Poses per second of the motion to draw: the frames nearest to them (default: five poses)", lOptions->mMotion);
    AddMotionOptions(pCommand, lOptions->mMotion);
    pCommand.footer("SVG opens in any browser and stays sharp at every size. Left limbs are red, right limbs blue; the bar at the bottom "
                    "shows the scale. Poses\n"
                    "of a motion are drawn side by side.\n"
                    "\n"
                    "Examples:\n"
                    "  asf draw walker.asf -o walker.svg\n"
                    "  asf draw walker.asf -o walker.png --width 1920 --view all --names\n"
                    "  asf draw walk.amc -o walk.svg --view side --frames 1-last:30\n"
                    "  asf draw walk.amc -o walk.svg --view side --trail left_foot --trail right_hand\n"
                    "  asf draw walk.amc -o knees.svg --curves left_shin,right_shin");
    pCommand.callback([lOptions, &pConsole] { RunDraw(*lOptions, pConsole); });
}

} // namespace asfapp
