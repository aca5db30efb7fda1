#ifndef QEXFIGURE_PICTURE_KQEXPICTURE_H
#define QEXFIGURE_PICTURE_KQEXPICTURE_H

#include <qexfigure/kqexfigure.h>
#include <qexfigure/kqexfigurereport.h>
#include <qexfigure/picture/kqexsvg.h>
#include <qexioplugins/motion/kqexsides.h>

#include <string>
#include <vector>

/// \file
/// Pictures of skeletons in one or more poses, as SVG.

namespace qexsdk
{

/// View direction.
enum KQexPictureView
{
    ePICTURE_FRONT, ///< Facing the figure: its left is on the right.
    ePICTURE_SIDE,  ///< From the figure's right: it faces right.
    ePICTURE_TOP    ///< From above: it faces down the page.
};

/// Positions of all bones, in centimetres, world space; the vectors have the size of KQexPicture::mNames.
struct QEX_API KQexPicturePose
{
    std::string                  mCaption; ///< Below the figure; may be empty.
    std::vector<KQexFigurePoint> mStarts;  ///< Of the bones.
    std::vector<KQexFigurePoint> mEnds;    ///< Of the bones.
};

/// The path of a point through the whole motion.
struct QEX_API KQexPictureTrail
{
    std::string                  mName;                ///< Shown by viewers when the mouse is over it.
    KQexSide                     mSide = eSIDE_MIDDLE; ///< Gives the colour.
    std::vector<KQexFigurePoint> mPoints;              ///< Centimetres, world space, in the order of time.
};

/// The name of a joint, at the edge of the panel with a line to the joint.
struct QEX_API KQexPictureLabel
{
    std::string mName;          ///< The text.
    size_t      mBone = 0;      ///< A bone at the joint: index in KQexPicture::mNames.
    bool        mAtEnd = false; ///< The joint is that bone's end instead of its start.
};

/// A picture of one figure in one or more poses.
struct QEX_API KQexPicture
{
    std::string                   mPath;            ///< Of the input, for messages; may be empty.
    std::string                   mTitle;           ///< Above the figure, in bold.
    std::string                   mSubtitle;        ///< Below the title.
    std::vector<std::string>      mNames;           ///< Names of the bones.
    std::vector<KQexSide>         mSides;           ///< Sides of the bones.
    std::vector<KQexPictureLabel> mLabels;          ///< Shown in every pose; empty for none.
    std::vector<KQexPicturePose>  mPoses;           ///< At least one.
    std::vector<KQexPictureTrail> mTrails;          ///< In every panel.
    std::vector<KQexPictureView>  mViews;           ///< At least one.
    bool                          mInPlace = false; ///< Poses at their world positions, instead of side by side.
};

/// The picture as SVG, with a scale bar in centimetres, \p pWidth pixels wide (0: as the poses need). False, with an error in \p pReport
/// and no text in \p pSvg, if a coordinate is not finite or too large to draw, if the lists do not fit together, or if memory runs out.
QEX_API bool DrawPicture(const KQexPicture& pPicture, double pWidth, KQexSvg& pSvg, KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
