#ifndef QEXFIGURE_PICTURE_KQEXPICTUREJOINTS_H
#define QEXFIGURE_PICTURE_KQEXPICTUREJOINTS_H

#include <qexfigure/picture/kqexpicture.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// Sets the names and sides of the picture's bones for poses made with PoseOf(): bone i is the line from the parent of joint i to
/// joint i, and is named like the parent; a root's bone has no length. With \p pLabels, each joint gets one label.
QEX_API void SetPictureJoints(const std::vector<KQexFigureJoint>& pJoints, bool pLabels, KQexPicture& pPicture);

/// The pose in which the joints are at \p pPositions.
QEX_API KQexPicturePose PoseOf(const std::vector<KQexFigureJoint>& pJoints, const std::vector<KQexFigurePoint>& pPositions);

/// Sets the names and sides of the picture's bones, for poses that have each bone's start and end. With \p pLabels, each bone's start
/// gets a label.
QEX_API void SetPictureBones(const std::vector<std::string>& pNames, bool pLabels, KQexPicture& pPicture);

} // namespace qexsdk

#endif
