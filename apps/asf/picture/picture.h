#ifndef APPS_ASF_PICTURE_PICTURE_H
#define APPS_ASF_PICTURE_PICTURE_H

#include <apps/asf/figure/point.h>

#include <string>
#include <vector>

/// \file
/// Pictures of skeletons, and their SVG text.

namespace asfapp
{

/// View direction.
enum EView
{
    eVIEW_FRONT, ///< Facing the figure: its left is on the right.
    eVIEW_SIDE,  ///< From the figure's right: it faces right.
    eVIEW_TOP    ///< From above: it faces down the page.
};

/// Side of the body that a bone belongs to; it decides the colour.
enum ESide
{
    eSIDE_MIDDLE,
    eSIDE_LEFT,
    eSIDE_RIGHT
};

/// Positions of all bones, in centimetres, world space; the vectors have the size of KPicture::mNames.
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

/// A picture of one figure in one or more poses.
struct KPicture
{
    std::string              mTitle;
    std::string              mSubtitle;
    std::vector<std::string> mNames; ///< Names of the bones.
    std::vector<ESide>       mSides; ///< Sides of the bones, see SidesOf().
    std::vector<KPose>       mPoses; ///< At least one.
    std::vector<KTrail>      mTrails;
    std::vector<EView>       mViews;             ///< At least one.
    bool                     mShowNames = false; ///< Label the bones with their names.
    bool                     mInPlace = false;   ///< Poses at their world positions, instead of side by side.
};

/// The side of each bone by its name: left or right if there is a counterpart on the other side (lfoot and rfoot, LeftFoot and
/// RightFoot, foot_l and foot_r).
std::vector<ESide> SidesOf(const std::vector<std::string>& pNames);

/// The picture as SVG, with a scale bar in centimetres. Empty if a coordinate is not finite or too large to draw.
std::string DrawSvg(const KPicture& pPicture);

} // namespace asfapp

#endif
