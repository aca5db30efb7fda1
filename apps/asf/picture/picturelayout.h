#ifndef APPS_ASF_PICTURE_PICTURELAYOUT_H
#define APPS_ASF_PICTURE_PICTURELAYOUT_H

#include <apps/asf/picture/picture.h>

namespace asfapp
{

/// A point in view coordinates: centimetres, or pixels (see ToPixels()).
struct KViewPoint
{
    double mRight = 0;
    double mUp = 0;
    double mNear = 0; ///< Towards the viewer.
};

/// Projects a point in world space, in centimetres, to view coordinates.
KViewPoint Project(EView pView, const KPoint& pPoint);

/// A rectangle in view coordinates, in centimetres.
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

/// One panel of the picture: a view of one pose, or of all poses at their world positions.
struct KCell
{
    EView               mView = eVIEW_FRONT;
    std::vector<size_t> mPoses;           ///< Indices into KPicture::mPoses.
    bool                mCentred = false; ///< The pose's root is the origin horizontally; from above, vertically, too.
    std::string         mCaption;
    KExtent             mExtent;     ///< Centimetres.
    double              mX = 0;      ///< Pixel position of mExtent.mLeft.
    double              mY = 0;      ///< Pixel position of mExtent.mBottom, from the top of the picture.
    double              mLabels = 0; ///< Pixels reserved for names on each side.
};

/// All cells with their positions, and the size of the picture.
struct KLayout
{
    std::vector<KCell> mCells;
    double             mScale = 1; ///< Pixels per centimetre.
    double             mWidth = 0;
    double             mHeight = 0;
    double             mFigure = 0; ///< Size of the largest pose in centimetres, which scales the strokes.
};

/// The text below the cell: its caption, else the view's name; both if there are several views.
std::string CaptionOf(const KPicture& pPicture, const KCell& pCell);

/// Places the picture's views and poses on the page. False if coordinates are not finite or too large.
bool LayOut(const KPicture& pPicture, KLayout& pLayout);

/// Converts a point of pose \p pPose, drawn in \p pCell, to pixels of the picture; mUp counts downwards.
KViewPoint ToPixels(const KPicture& pPicture, const KLayout& pLayout, const KCell& pCell, size_t pPose, const KPoint& pPoint);

constexpr double kWidestRow = 1500; ///< Pixels; a row of several panels is never wider.
constexpr double kMargin = 28;
constexpr double kHeaderHeight = 58;
constexpr double kFooterHeight = 46;
constexpr double kCaptionHeight = 24;
constexpr double kLabelPitch = 13;

} // namespace asfapp

#endif
