#ifndef APPS_ASF_PICTURE_PICTURELABELS_H
#define APPS_ASF_PICTURE_PICTURELABELS_H

#include <apps/asf/picture/picturelayout.h>

#include <string>
#include <vector>

namespace asfapp
{

/// How far along a bone it is widest, as a fraction of its length.
constexpr double kWidestPart = 0.18;

/// The picture's labels for one pose as SVG: a column of names on each side of the panel, with a line from each name to its joint.
/// \param pStarts, pEnds the pose's bones in pixels
std::string DrawLabels(const KPicture& pPicture, const KLayout& pLayout, const KCell& pCell, const std::vector<KViewPoint>& pStarts,
                       const std::vector<KViewPoint>& pEnds);

} // namespace asfapp

#endif
