#ifndef APPS_ASF_PICTURE_PICTUREJOINTS_H
#define APPS_ASF_PICTURE_PICTUREJOINTS_H

#include <apps/asf/picture/picture.h>

#include <string>
#include <vector>

namespace asfapp
{

/// A joint of the figure to draw.
struct KPictureJoint
{
    std::string mName;
    int         mParent = -1;   ///< Index of an earlier joint; -1 for a root.
    bool        mIsEnd = false; ///< Only the end of its parent's bone: it gets no label.
};

/// Sets the names and sides of the picture's bones for poses made with PoseOf(): bone i is the line from the parent of joint i to
/// joint i, and is named like the parent; a root's bone has no length. With \p pLabels, each joint gets one label.
void SetJoints(const std::vector<KPictureJoint>& pJoints, bool pLabels, KPicture& pPicture);

/// The pose in which the joints are at \p pPositions.
KPose PoseOf(const std::vector<KPictureJoint>& pJoints, const std::vector<KPoint>& pPositions);

/// Sets the names and sides of the picture's bones, for poses that have each bone's start and end. With \p pLabels, each bone's start
/// gets a label.
void SetBones(const std::vector<std::string>& pNames, bool pLabels, KPicture& pPicture);

} // namespace asfapp

#endif
