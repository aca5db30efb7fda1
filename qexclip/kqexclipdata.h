#ifndef QEXCLIP_KQEXCLIPDATA_H
#define QEXCLIP_KQEXCLIPDATA_H

#include <kbaselib/kbase/kbaseexport.h>
#include <qexscene/kqexbonedof.h>
#include <qexscene/kqexsampling.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A joint's transform relative to its parent: scaled first, then rotated, then moved.
struct QEX_API KQexJointTransform
{
    float mRotation[4] = {1.0F, 0.0F, 0.0F, 0.0F}; ///< Unit quaternion w, x, y, z.
    float mTranslation[3] = {0.0F, 0.0F, 0.0F};    ///< Centimetres, in the parent's axes.
    float mScaling[3] = {1.0F, 1.0F, 1.0F};        ///< Factors along the joint's own axes.
};

/// The transforms of all joints at one time, in the order of the clip's joints.
using KQexPose = std::vector<KQexJointTransform>;

/// A degree of freedom of a clip's joint.
struct QEX_API KQexClipDof
{
    int         mJoint = 0; ///< Index of the joint.
    KQexBoneDof mDof;       ///< Word and limits.
};

/// The arrays of a motion. A frame is mSampling's; all arrays of frames are frame by frame, in it joint by joint, in it component by
/// component.
struct QEX_API KQexClipData
{
    std::vector<std::string>        mNames;    ///< One for each joint.
    std::vector<int>                mParents;  ///< Index of each joint's parent, below its own; -1 for a root.
    std::vector<char>               mIsEnd;    ///< 1: only the end of its parent, with no motion of its own. Empty: none is.
    std::vector<KQexJointTransform> mRest;     ///< Each joint at rest.
    KQexSampling                    mSampling; ///< Times of the frames.

    std::vector<float> mRotations;    ///< Frames × joints × 4: unit quaternions w, x, y, z.
    std::vector<int>   mMovingJoints; ///< Ascending indices of the joints whose translation is not always that at rest.
    std::vector<float> mTranslations; ///< Frames × moving joints × 3, in centimetres.
    std::vector<int>   mScaledJoints; ///< Ascending indices of the joints whose scaling is not always that at rest.
    std::vector<float> mScalings;     ///< Frames × scaled joints × 3.

    std::vector<KQexClipDof> mDofs;      ///< Degrees of freedom that the source lists, by ascending joint, each joint's in its order.
    std::vector<float>       mDofValues; ///< Frames × degrees of freedom, in degrees or centimetres, turns included; empty: not kept.
};

} // namespace qexsdk

#endif
