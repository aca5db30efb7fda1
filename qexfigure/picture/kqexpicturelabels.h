#ifndef QEXFIGURE_PICTURE_KQEXPICTURELABELS_H
#define QEXFIGURE_PICTURE_KQEXPICTURELABELS_H

#include <qexfigure/picture/kqexpicturelayout.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// How far along a bone it is widest, as a fraction of its length.
constexpr double kWidestPart = 0.18;

/// The picture's labels for one pose as SVG: a column of names on each side of the panel, with a line from each name to its joint.
/// \param pStarts, pEnds the pose's bones in pixels
std::string DrawLabels(const KQexPicture& pPicture, const KQexPictureLayout& pLayout, const KQexPictureCell& pCell,
                       const std::vector<KQexViewPoint>& pStarts, const std::vector<KQexViewPoint>& pEnds);

} // namespace qexsdk

#endif
