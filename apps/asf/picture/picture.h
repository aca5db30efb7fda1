#ifndef APPS_ASF_PICTURE_PICTURE_H
#define APPS_ASF_PICTURE_PICTURE_H

#include <apps/asf/figure/point.h>
#include <qexioplugins/motion/kqexsides.h>

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
    qexsdk::KQexSide    mSide = qexsdk::eSIDE_MIDDLE;
    std::vector<KPoint> mPoints;
};

/// The name of a joint, at the edge of the panel with a line to the joint.
struct KLabel
{
    std::string mName;
    size_t      mBone = 0;      ///< A bone at the joint: index in KPicture::mNames.
    bool        mAtEnd = false; ///< The joint is that bone's end instead of its start.
};

/// A picture of one figure in one or more poses.
struct KPicture
{
    std::string                   mTitle;
    std::string                   mSubtitle;
    std::vector<std::string>      mNames;  ///< Names of the bones.
    std::vector<qexsdk::KQexSide> mSides;  ///< Sides of the bones.
    std::vector<KLabel>           mLabels; ///< Shown in every pose; empty for none.
    std::vector<KPose>            mPoses;  ///< At least one.
    std::vector<KTrail>           mTrails;
    std::vector<EView>            mViews;           ///< At least one.
    bool                          mInPlace = false; ///< Poses at their world positions, instead of side by side.
};

constexpr unsigned kBackground = 0xfdfdfb; ///< sRGB, 0xRRGGBB.

/// A picture as SVG text, and its size in pixels.
struct KSvg
{
    std::string mText;
    double      mWidth = 0;
    double      mHeight = 0;
};

/// The picture as SVG, with a scale bar in centimetres, \p pWidth pixels wide (0: as the poses need). Without text if a coordinate is
/// not finite or too large to draw.
KSvg DrawSvg(const KPicture& pPicture, double pWidth = 0);

} // namespace asfapp

#endif
