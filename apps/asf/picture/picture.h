#ifndef APPS_ASF_PICTURE_PICTURE_H
#define APPS_ASF_PICTURE_PICTURE_H

#include <apps/asf/figure/skeletonfile.h>

#include <string>
#include <vector>

/// \file
/// Skeletons as pictures: what to draw, and the SVG text of it.

namespace asfapp
{

/// From where a figure is seen.
enum EView
{
    eVIEW_FRONT, ///< Looking at its face: its left is on the right.
    eVIEW_SIDE,  ///< From its right: it looks to the right.
    eVIEW_TOP    ///< From above: it looks down the page.
};

/// Side of the body that a bone belongs to; it decides the colour.
enum ESide
{
    eSIDE_MIDDLE,
    eSIDE_LEFT,
    eSIDE_RIGHT
};

/// Where all bones are at one moment, in centimetres, world space; the sizes are those of KPicture::mNames.
struct KPose
{
    std::string         mCaption; ///< Below the figure; may be empty.
    std::vector<KPoint> mStarts;
    std::vector<KPoint> mEnds;
};

/// The path of a point through the whole motion.
struct KTrail
{
    std::string         mName;
    ESide               mSide = eSIDE_MIDDLE;
    std::vector<KPoint> mPoints;
};

/// A picture of one figure in one pose or several.
struct KPicture
{
    std::string              mTitle;
    std::string              mSubtitle;
    std::vector<std::string> mNames; ///< Of the bones.
    std::vector<ESide>       mSides; ///< Of the bones, see SidesOf().
    std::vector<KPose>       mPoses; ///< At least one.
    std::vector<KTrail>      mTrails;
    std::vector<EView>       mViews;             ///< At least one.
    bool                     mShowNames = false; ///< Write the bones' names beside them.
    bool                     mInPlace = false;   ///< Poses where they are in the world, instead of side by side.
};

/// The side of each bone by its name: left or right when the other side has a bone of the same name (lfoot and rfoot,
/// LeftFoot and RightFoot, foot_l and foot_r).
std::vector<ESide> SidesOf(const std::vector<std::string>& pNames);

/// The picture as SVG, a scale bar in centimetres included. Empty when a position is not finite or too far away to draw.
std::string DrawSvg(const KPicture& pPicture);

} // namespace asfapp

#endif
