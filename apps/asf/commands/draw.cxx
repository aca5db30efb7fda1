#include <apps/asf/commands/arguments.h>
#include <apps/asf/commands/commands.h>
#include <apps/asf/commands/framelist.h>
#include <apps/asf/figure/loading.h>
#include <apps/asf/outputs.h>
#include <apps/asf/picture/picture.h>
#include <apps/asf/picture/pictureframes.h>
#include <apps/asf/picture/picturejoints.h>
#include <apps/asf/picture/pictureoutput.h>
#include <apps/asf/picture/picturepng.h>
#include <apps/asf/progress.h>
#include <apps/asf/report/numbertext.h>
#include <apps/asf/report/skeletonfile.h>
#include <apps/asf/usage.h>

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

struct KDrawOptions
{
    std::vector<std::string> mFiles;
    std::string              mOutput;
    std::string              mView = "front";
    std::string              mFrames;
    std::string              mTake;
    std::vector<std::string> mTrails;
    bool                     mNames = false;
    int                      mWidth = 0; ///< Pixels; 0: as the poses need.
    KMotionOptions           mMotion;
};

std::vector<EView> ViewsOf(const std::string& pWord)
{
    if (pWord == "all")
    {
        return {eVIEW_FRONT, eVIEW_SIDE, eVIEW_TOP};
    }
    return {pWord == "side" ? eVIEW_SIDE : pWord == "top" ? eVIEW_TOP : eVIEW_FRONT};
}

std::string FileName(const KQexFigureFile& pFile)
{
    return pFile.GetDisplayPath().substr(pFile.GetDisplayPath().find_last_of('/') + 1);
}

/// A picture with the settings that do not depend on the pose.
KPicture MakePicture(const KDrawOptions& pOptions, const std::string& pTitle)
{
    KPicture lPicture;
    lPicture.mTitle = pTitle;
    lPicture.mViews = ViewsOf(pOptions.mView);
    return lPicture;
}

KPicture RestPicture(const KQexFigureFile& pFile, const KSkeletonFile& pSkeleton, const KDrawOptions& pOptions)
{
    const std::string        lName = pSkeleton.GetScene().mName;
    KPicture                 lPicture = MakePicture(pOptions, lName.empty() ? FileName(pFile) : lName);
    KPose                    lPose;
    std::vector<std::string> lNames;
    for (const KRestBone& lBone : pSkeleton.GetBones())
    {
        lNames.push_back(lBone.mNode->mName);
        lPose.mStarts.push_back(lBone.mStart);
        lPose.mEnds.push_back(lBone.mEnd);
    }
    SetBones(lNames, pOptions.mNames, lPicture);
    KPoint lMin;
    KPoint lMax;
    pSkeleton.GetBounds(lMin, lMax);
    lPicture.mSubtitle = Count(static_cast<long long>(lPicture.mNames.size()) - 1, "bone", "bones") + ", " + Fixed(lMax.mY - lMin.mY, 1) +
                         " cm high at rest";
    lPicture.mPoses.push_back(lPose);
    return lPicture;
}

/// Makes poses of a scene.
class KPoseMaker
{
public:
    explicit KPoseMaker(KLoadedMotion& pMotion) : mMotion(pMotion)
    {
        for (const qexsdk::KQexFigureJoint& lJoint : pMotion.GetJoints())
        {
            mJoints.push_back({lJoint.mName, lJoint.mParent, lJoint.mIsEnd});
        }
    }

    void SetUp(bool pLabels, KPicture& pPicture) const { SetJoints(mJoints, pLabels, pPicture); }

    /// The pose in frame \p pFrame; without a motion, at rest.
    KPose Pose(size_t pFrame)
    {
        mMotion.Evaluate(mMotion.GetTime(pFrame), mPositions);
        KPose lPose = PoseOf(mJoints, mPositions);
        if (mMotion.HasTake())
        {
            lPose.mCaption = "frame " + std::to_string(mMotion.GetFrames()[pFrame]) + ", " +
                             Fixed(mMotion.GetSeconds(mMotion.GetTime(pFrame)), 2) + " s";
        }
        return lPose;
    }

private:
    KLoadedMotion&             mMotion;
    std::vector<KPictureJoint> mJoints;
    std::vector<KPoint>        mPositions;
};

/// The joint that the bone's trail follows: the one at the bone's end; for the root, its own joint. -1 for an unknown bone.
int TrailJoint(const KLoadedMotion& pMotion, const std::string& pBone)
{
    int lFound = -1;
    for (size_t lJoint = 0; lJoint < pMotion.GetJoints().size(); ++lJoint)
    {
        const qexsdk::KQexFigureJoint& lCandidate = pMotion.GetJoints()[lJoint];
        if (lCandidate.mName == pBone && lFound < 0)
        {
            lFound = static_cast<int>(lJoint);
        }
        else if (lFound > 0 && lCandidate.mParent == lFound)
        {
            return static_cast<int>(lJoint);
        }
    }
    return lFound;
}

bool AddTrails(const KDrawOptions& pOptions, KLoadedMotion& pMotion, KPicture& pPicture, KConsole& pConsole)
{
    std::vector<int> lJoints;
    for (const std::string& lBone : pOptions.mTrails)
    {
        lJoints.push_back(TrailJoint(pMotion, lBone));
        if (lJoints.back() < 0)
        {
            pConsole.Fail(eEXIT_USAGE, "--trail: the skeleton has no bone " + lBone);
            return false;
        }
        KTrail lTrail;
        lTrail.mName = lBone;
        lTrail.mSide = pPicture.mSides[static_cast<size_t>(lJoints.back())];
        pPicture.mTrails.push_back(lTrail);
    }
    KProgress           lProgress("drawing", pConsole);
    std::vector<KPoint> lPositions;
    for (size_t lFrame = 0; !lJoints.empty() && lFrame < pMotion.GetFrames().size(); ++lFrame)
    {
        pMotion.Evaluate(pMotion.GetTime(lFrame), lPositions);
        for (size_t lTrail = 0; lTrail < lJoints.size(); ++lTrail)
        {
            pPicture.mTrails[lTrail].mPoints.push_back(lPositions[static_cast<size_t>(lJoints[lTrail])]);
        }
        lProgress.Show(static_cast<double>(lFrame) / static_cast<double>(pMotion.GetFrames().size()));
    }
    pPicture.mInPlace = !lJoints.empty();
    return true;
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

/// The indices of the frames to draw. False after an error.
bool ChooseFrames(const KDrawOptions& pOptions, const KLoadedMotion& pMotion, const KQexFigureFile& pFile, std::vector<size_t>& pFrames,
                  KConsole& pConsole)
{
    const bool        lHasRate = pOptions.mMotion.mRate > 0;
    const std::string lList = pOptions.mFrames.empty() && lHasRate ? "first-last" : pOptions.mFrames;
    pFrames = DefaultFrames(pMotion.GetFrames().size());
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
    const size_t lLeftOut = LimitFrames(pFrames);
    if (lLeftOut > 0)
    {
        pConsole.Message(eNOTE, pFile.GetDisplayPath(), 0,
                         std::to_string(lLeftOut) + " of " + std::to_string(pFrames.size() + lLeftOut) +
                             " frames are left out: a picture has at most " + std::to_string(MaxPoses()) +
                             " poses, one for each pixel of its width");
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
    KSkeletonFile lSkeleton;
    const bool    lOk = lSkeleton.Read(pFile, false, pConsole);
    lSkeleton.GetMessages().Print(pFile.GetDisplayPath(), pConsole);
    if (lOk)
    {
        WritePicture(RestPicture(pFile, lSkeleton, pOptions), pOptions.mWidth, pOptions.mOutput, pFile.GetDisplayPath(), pConsole);
    }
}

/// A figure of another format without motion, at rest.
void DrawRest(const KDrawOptions& pOptions, KLoadedMotion& pMotion, const KQexFigureFile& pFile, KConsole& pConsole)
{
    if (!CheckRestOptions(pOptions, pConsole))
    {
        return;
    }
    KPicture   lPicture = MakePicture(pOptions, FileName(pFile));
    KPoseMaker lPoseMaker(pMotion);
    lPoseMaker.SetUp(pOptions.mNames, lPicture);
    lPicture.mPoses.push_back(lPoseMaker.Pose(0));
    lPicture.mSubtitle = Count(static_cast<long long>(lPicture.mNames.size()), "joint", "joints") + " at rest";
    WritePicture(lPicture, pOptions.mWidth, pOptions.mOutput, pFile.GetDisplayPath(), pConsole);
}

void DrawMotion(const KDrawOptions& pOptions, KLoadedMotion& pMotion, const KQexFigureFile& pFile, KConsole& pConsole)
{
    std::vector<size_t> lFrames;
    if (!ChooseFrames(pOptions, pMotion, pFile, lFrames, pConsole))
    {
        return;
    }
    KPicture lPicture = MakePicture(pOptions, FileName(pFile));
    lPicture.mSubtitle =
        Count(static_cast<long long>(pMotion.GetFrames().size()), "frame", "frames") + ", " + Short(pMotion.GetRate()) + " a second";
    KPoseMaker lPoseMaker(pMotion);
    lPoseMaker.SetUp(pOptions.mNames, lPicture);
    for (const size_t lFrame : lFrames)
    {
        lPicture.mPoses.push_back(lPoseMaker.Pose(lFrame));
    }
    if (AddTrails(pOptions, pMotion, lPicture, pConsole))
    {
        WritePicture(lPicture, pOptions.mWidth, pOptions.mOutput, pFile.GetDisplayPath(), pConsole);
    }
}

void RunDraw(KDrawOptions& pOptions, KConsole& pConsole)
{
    qexsdk::KQexFigureFiles lFiles;
    if (!ApplyMotionOptions(pOptions.mMotion, pConsole) || !CheckOutput(pOptions.mOutput, pOptions.mFiles, pConsole) ||
        !CheckPictureName(pOptions.mOutput, IsPngBuiltIn(), pConsole) || !OpenFigure(lFiles, pOptions.mFiles, pOptions.mMotion, pConsole) ||
        !CheckOutput(pOptions.mOutput, PathsOf(lFiles), pConsole))
    {
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
        (lMotion.HasTake() ? DrawMotion : DrawRest)(pOptions, lMotion, lFile, pConsole);
    }
}

} // namespace

void AddDrawCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KDrawOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("draw", "Draw a skeleton at rest, or poses of a motion, as an SVG or PNG picture");
    lCommand->add_option("FILE", lOptions->mFiles, "ASF, ASF and AMC, AMC alone, BVH, GLB or glTF; \"-\" is standard input")
        ->required()
        ->expected(1, 2)
        ->option_text(" ");
    lCommand->add_option("-o,--output", lOptions->mOutput, "File to write: .svg or .png; \"-\" is SVG to standard output")
        ->required()
        ->option_text("FILE (required)");
    lCommand->add_option("--view", lOptions->mView, "front (the default), side, top or all")
        ->check(OneOf({"front", "side", "top", "all"}))
        ->option_text("VIEW");
    lCommand->add_option("--width", lOptions->mWidth, "Width of the picture (default: as the poses need)")
        ->check(NumberFrom(kMinPictureWidth, kMaxPictureWidth, true))
        ->option_text("PIXELS");
    lCommand->add_flag("--names", lOptions->mNames, "Label the joints with their names");
    lCommand
        ->add_option("--frames", lOptions->mFrames, "Frames of a motion to draw, such as 1,100-200:20,last (default: five, evenly spaced)")
        ->option_text("LIST");
    lCommand
        ->add_option("--trail", lOptions->mTrails,
                     "Also draw the path of a bone's end, with the poses at their world positions; may be repeated")
        ->option_text("BONE")
        ->allow_extra_args(false);
    lCommand->add_option("--take", lOptions->mTake, "Take to draw if there are several (default: the first)")->option_text("NAME");
    AddFormatOption(*lCommand, lOptions->mMotion.mFrom);
    AddRate(*lCommand, "Poses per second of the motion to draw: the frames nearest to them (default: five poses)", lOptions->mMotion);
    AddMotionOptions(*lCommand, lOptions->mMotion);
    lCommand->footer("SVG opens in any browser and stays sharp at every size. Left limbs are red, right limbs blue; the bar at the bottom "
                     "shows the scale. Poses\n"
                     "of a motion are drawn side by side.\n"
                     "\n"
                     "Examples:\n"
                     "  asf draw walker.asf -o walker.svg\n"
                     "  asf draw walker.asf -o walker.png --width 1920 --view all --names\n"
                     "  asf draw walk.amc -o walk.svg --view side --frames 1-last:30\n"
                     "  asf draw walk.amc -o walk.svg --view side --trail left_foot --trail right_hand");
    lCommand->callback([lOptions, &pConsole] { RunDraw(*lOptions, pConsole); });
}

} // namespace asfapp
