#ifndef QEXCLIP_KQEXCLIPWORLD_H
#define QEXCLIP_KQEXCLIPWORLD_H

#include <qexclip/kqexclipdata.h>
#include <qexscene/kqexquaternion.h>

namespace qexsdk
{

/// A joint relative to one of its ancestors or the world, in double precision. Scaling makes the axes' images longer, and may shear them.
struct KWorldJoint
{
    double         mImages[3][3]; ///< Of the axes.
    double         mPosition[3];  ///< Centimetres.
    KQexQuaternion mRotation;     ///< Without scaling: the product of the rotations.
};

/// The joint with the transform \p pLocal relative to \p pParent; null: relative to the result's own reference.
KWorldJoint KGetWorldJoint(const KQexJointTransform& pLocal, const KWorldJoint* pParent);

} // namespace qexsdk

#endif
