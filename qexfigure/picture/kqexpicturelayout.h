#ifndef QEXFIGURE_PICTURE_KQEXPICTURELAYOUT_H
#define QEXFIGURE_PICTURE_KQEXPICTURELAYOUT_H

#include <qexfigure/picture/kqexpicture.h>

namespace qexsdk
{

/// A point in view coordinates: centimetres, or pixels (see ToPixels()).
struct KQexViewPoint
{
    double mRight = 0; ///< To the viewer's right.
    double mUp = 0;    ///< Upwards.
    double mNear = 0;  ///< Towards the viewer.
};

/// Projects a point in world space, in centimetres, to view coordinates.
KQexViewPoint ProjectPoint(KQexPictureView pView, const KQexFigurePoint& pPoint);

/// A rectangle in view coordinates, in centimetres.
struct KQexViewExtent
{
    double mLeft = 0;     ///< Lowest KQexViewPoint::mRight.
    double mRight = 0;    ///< Highest.
    double mBottom = 0;   ///< Lowest KQexViewPoint::mUp.
    double mTop = 0;      ///< Highest.
    bool   mEmpty = true; ///< No point is included yet.

    /// Extends it to \p pPoint.
    void Include(const KQexViewPoint& pPoint);
    /// Centimetres from left to right.
    double Width() const { return mRight - mLeft; }
    /// Centimetres from bottom to top.
    double Height() const { return mTop - mBottom; }
};

/// One panel of the picture: a view of one pose, or of all poses at their world positions.
struct KQexPictureCell
{
    KQexPictureView     mView = ePICTURE_FRONT; ///< Where from.
    std::vector<size_t> mPoses;                 ///< Indices into KQexPicture::mPoses.
    bool                mCentred = false;       ///< The pose's root is the origin horizontally; from above, vertically, too.
    std::string         mCaption;               ///< Below the panel; empty: the view's name.
    KQexViewExtent      mExtent;                ///< Centimetres.
    double              mX = 0;                 ///< Pixel position of mExtent.mLeft.
    double              mY = 0;                 ///< Pixel position of mExtent.mBottom, from the top of the picture.
    double              mLabels = 0;            ///< Pixels reserved for names on each side.
};

/// All cells with their positions, and the size of the picture.
struct KQexPictureLayout
{
    std::vector<KQexPictureCell> mCells;      ///< In rows, from the top left.
    double                       mScale = 1;  ///< Pixels per centimetre.
    double                       mWidth = 0;  ///< Pixels.
    double                       mHeight = 0; ///< Pixels.
    double                       mFigure = 0; ///< Centimetres of the largest pose, or more for far motion; scales the strokes.
};

/// The text below the cell: its caption, else the view's name; both if there are several views.
std::string CaptionOf(const KQexPicture& pPicture, const KQexPictureCell& pCell);

/// Places the picture's views and poses on the page. False if coordinates are not finite or too large.
bool LayOutPicture(const KQexPicture& pPicture, KQexPictureLayout& pLayout);

/// Converts a point of pose \p pPose, drawn in \p pCell, to pixels of the picture; mUp counts downwards.
KQexViewPoint ToPixels(const KQexPicture& pPicture, const KQexPictureLayout& pLayout, const KQexPictureCell& pCell, size_t pPose,
                       const KQexFigurePoint& pPoint);

inline constexpr double kWidestRow = 1500; ///< Pixels; a row of several panels is never wider.
inline constexpr double kMargin = 28;
inline constexpr double kHeaderHeight = 58;
inline constexpr double kFooterHeight = 46;
inline constexpr double kCaptionHeight = 24;
inline constexpr double kLabelPitch = 13;

} // namespace qexsdk

#endif
