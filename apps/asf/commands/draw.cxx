#include <apps/asf/commands/commands.h>

#include <apps/asf/inputfile.h>
#include <apps/asf/numbertext.h>
#include <apps/asf/outputs.h>
#include <apps/asf/picture.h>
#include <apps/asf/skeletonfile.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace asfapp
{

namespace
{

struct KDrawOptions
{
    std::string mFile;
    std::string mOutput;
    std::string mView = "front";
    bool        mNames = false;
};

std::vector<EView> ViewsOf(const std::string& pWord)
{
    if (pWord == "all")
    {
        return {eVIEW_FRONT, eVIEW_SIDE, eVIEW_TOP};
    }
    return {pWord == "side" ? eVIEW_SIDE : pWord == "top" ? eVIEW_TOP : eVIEW_FRONT};
}

KPicture PictureOf(const KInputFile& pFile, const KSkeletonFile& pSkeleton, const KDrawOptions& pOptions)
{
    KPicture lPicture;
    KPose    lPose;
    for (const KRestBone& lBone : pSkeleton.GetBones())
    {
        lPicture.mNames.push_back(lBone.mNode->mName);
        lPose.mStarts.push_back(lBone.mStart);
        lPose.mEnds.push_back(lBone.mEnd);
    }
    KPoint lLeast;
    KPoint lMost;
    pSkeleton.GetBounds(lLeast, lMost);
    const std::string lName = pSkeleton.GetScene().mName;
    lPicture.mTitle = lName.empty() ? pFile.GetShown() : lName;
    lPicture.mSubtitle = Count(static_cast<long long>(lPicture.mNames.size()) - 1, "bone", "bones") + ", " +
                         Fixed(lMost.mY - lLeast.mY, 1) + " cm high at rest";
    lPicture.mSides = SidesOf(lPicture.mNames);
    lPicture.mPoses.push_back(lPose);
    lPicture.mViews = ViewsOf(pOptions.mView);
    lPicture.mShowNames = pOptions.mNames;
    return lPicture;
}

void RunDraw(const KDrawOptions& pOptions, KConsole& pConsole)
{
    KInputFile    lFile;
    KSkeletonFile lSkeleton;
    if (!CheckOutput(pOptions.mOutput, {pOptions.mFile}, pConsole) || !lFile.Open(pOptions.mFile, pConsole))
    {
        return;
    }
    const bool lOk = lSkeleton.Read(lFile, false, pConsole);
    lSkeleton.GetMessages().Print(lFile.GetShown(), pConsole);
    if (!lOk)
    {
        return;
    }
    const std::string lSvg = DrawSvg(PictureOf(lFile, lSkeleton, pOptions));
    if (lSvg.empty())
    {
        pConsole.Message(eERROR, lFile.GetShown(), 0, "cannot be drawn: its bones reach too far");
        pConsole.Raise(eEXIT_INPUT);
        return;
    }
    WriteOutput(pOptions.mOutput, lSvg, pConsole);
}

} // namespace

void AddDrawCommand(CLI::App& pProgram, KConsole& pConsole)
{
    auto      lOptions = std::make_shared<KDrawOptions>();
    CLI::App* lCommand = pProgram.add_subcommand("draw", "Draw a skeleton at rest as an SVG picture");
    lCommand->add_option("FILE", lOptions->mFile, "Skeleton to draw; \"-\" is standard input")->required()->option_text(" ");
    lCommand->add_option("-o,--output", lOptions->mOutput, "SVG file to write; \"-\" is standard output")
        ->required()
        ->option_text("FILE (needed)");
    lCommand->add_option("--view", lOptions->mView, "front (the default), side, top or all")
        ->check(CLI::IsMember({"front", "side", "top", "all"}))
        ->option_text("VIEW");
    lCommand->add_flag("--names", lOptions->mNames, "Write the bones' names beside them");
    lCommand->footer("The picture opens in any browser. Left limbs are red, right ones blue; the bar at the bottom is the scale.\n"
                     "\n"
                     "Examples:\n"
                     "  asf draw walker.asf -o walker.svg\n"
                     "  asf draw walker.asf -o walker.svg --view all --names");
    lCommand->callback([lOptions, &pConsole] { RunDraw(*lOptions, pConsole); });
}

} // namespace asfapp
