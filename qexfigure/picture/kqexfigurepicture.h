#ifndef QEXFIGURE_PICTURE_KQEXFIGUREPICTURE_H
#define QEXFIGURE_PICTURE_KQEXFIGUREPICTURE_H

#include <qexfigure/check/kqexskeletonfile.h>
#include <qexfigure/kqexfigure.h>
#include <qexfigure/picture/kqexpicture.h>

#include <string>
#include <vector>

/// \file
/// Pictures of loaded figures: `DrawFigure(figure, &figure.GetTakes().front(), options, svg, report)`.

namespace qexsdk
{

/// What to draw of a figure.
struct QEX_API KQexFigurePictureOptions
{
    std::string                  mPath;          ///< Of the input, for messages; may be empty.
    std::string                  mTitle;         ///< Above the picture; may be empty.
    std::vector<KQexPictureView> mViews;         ///< Empty: the front.
    bool                         mNames = false; ///< Label the joints.
    std::vector<size_t>          mFrames;        ///< Indices of the take's frames, ascending; empty: five, evenly spaced.
    std::vector<std::string>     mTrails;        ///< Bones whose ends' paths are drawn; the poses are then at their world positions.
    std::string                  mTrailOption;   ///< How a user of the program names mTrails ("--trail: "); may be empty.
    KQexProgress                 mProgress;      ///< Called with the fraction of the trails' frames; false cancels. May be empty.
};

/// A picture of poses of \p pTake, one of the figure's; null: of the figure at rest, without trails. At most one pose for each pixel of
/// the width: a note in \p pReport has the number of frames left out. False, with an error in \p pReport, if a trail's bone or a frame
/// does not exist, or if memory runs out; also when cancelled.
QEX_API bool MakeFigurePicture(KQexFigure& pFigure, const KQexFigureTake* pTake, const KQexFigurePictureOptions& pOptions,
                               KQexPicture& pPicture, KQexFigureReport& pReport) noexcept;

/// A picture of a skeleton at rest: its bones as the file lists them. The title is the skeleton's name if it has one. False, with the
/// status of \p pReport raised, if memory runs out.
QEX_API bool MakeSkeletonPicture(const KQexSkeletonFile& pSkeleton, const KQexFigurePictureOptions& pOptions, KQexPicture& pPicture,
                                 KQexFigureReport& pReport) noexcept;

/// MakeFigurePicture() and DrawPicture() as wide as the poses need.
QEX_API bool DrawFigure(KQexFigure& pFigure, const KQexFigureTake* pTake, const KQexFigurePictureOptions& pOptions, KQexSvg& pSvg,
                        KQexFigureReport& pReport) noexcept;

} // namespace qexsdk

#endif
