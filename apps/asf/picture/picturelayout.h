#ifndef APPS_ASF_PICTURE_PICTURELAYOUT_H
#define APPS_ASF_PICTURE_PICTURELAYOUT_H

#include <apps/asf/picture/picture.h>

namespace asfapp
{

/// A point of a view: to the right, upwards, towards the viewer.
struct KViewPoint
{
    double mRight = 0;
    double mUp = 0;
    double mNear = 0;
};

KViewPoint Project(EView pView, const KPoint& pPoint);

/// A rectangle of a view, in centimetres.
struct KExtent
{
    double mLeft = 0;
    double mRight = 0;
    double mBottom = 0;
    double mTop = 0;
    bool   mEmpty = true;

    void   Include(const KViewPoint& pPoint);
    double Width() const { return mRight - mLeft; }
    double Height() const { return mTop - mBottom; }
};

/// One frame of the picture: a view of one pose, or of all poses in their places.
struct KCell
{
    EView               mView = eVIEW_FRONT;
    std::vector<size_t> mPoses;           ///< Indices into KPicture::mPoses.
    bool                mCentred = false; ///< The pose's root is the origin to the right (and, from above, upwards).
    std::string         mCaption;
    KExtent             mExtent;     ///< Centimetres.
    double              mX = 0;      ///< Pixel of mExtent.mLeft.
    double              mY = 0;      ///< Pixel of mExtent.mBottom, counted downwards.
    double              mLabels = 0; ///< Pixels kept free for names on either side.
};

/// All cells with their places, and the size of the whole.
struct KLayout
{
    std::vector<KCell> mCells;
    double             mScale = 1; ///< Pixels a centimetre.
    double             mWidth = 0;
    double             mHeight = 0;
    double             mFigure = 0; ///< Height of a figure in centimetres: what sizes of strokes go by.
};

/// What stands below the cell: its caption, and the view where there are several.
std::string CaptionOf(const KPicture& pPicture, const KCell& pCell);

/// Places the picture's views and poses on the page. False when that is not possible: positions are not finite, or too far away.
bool LayOut(const KPicture& pPicture, KLayout& pLayout);

/// The point of pose \p pPose in the cell, in pixels (mUp counts downwards).
KViewPoint ToPixels(const KPicture& pPicture, const KLayout& pLayout, const KCell& pCell, size_t pPose, const KPoint& pPoint);

constexpr double kMargin = 28;
constexpr double kHeaderHeight = 58;
constexpr double kFooterHeight = 46;
constexpr double kCaptionHeight = 24;
constexpr double kLabelPitch = 13;

} // namespace asfapp

#endif
