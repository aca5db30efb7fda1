#ifndef QEXCLIP_KQEXCLIPSTEPS_H
#define QEXCLIP_KQEXCLIPSTEPS_H

#include <qexclip/kqexclip.h>
#include <qexscene/kqexquaternion.h>

#include <vector>

/// \file
/// Steps from one clip to another. Each makes \p pResult, which may be the clip itself, and is false, with \p pResult unchanged, when an
/// argument is out of its range or memory runs out. Names, parents, ends, rest pose, degrees of freedom with their limits and values
/// stay as they are unless the step says otherwise.

namespace qexsdk
{

/// The motion at \p pFramesPerSecond (1e-3 to 1e6), from the first frame to the last that is not after the clip's end. Values of degrees
/// of freedom are interpolated linearly.
QEX_API bool KQexClipResample(const KQexClip& pClip, double pFramesPerSecond, KQexClip& pResult);

/// Frames \p pFirst to \p pLast, both included, of them every \p pEvery-th.
QEX_API bool KQexClipCut(const KQexClip& pClip, long long pFirst, long long pLast, int pEvery, KQexClip& pResult);

/// The frames from the last to the first.
QEX_API bool KQexClipReverse(const KQexClip& pClip, KQexClip& pResult);

/// Only the joints \p pJoints, ascending indices. Each stays where it is in the world: its transform is then relative to the nearest of
/// its ancestors that stays. The degrees of freedom of joints whose parent does not stay are dropped. A joint below one that is scaled
/// differently along its axes may be sheared, which a clip cannot hold: it loses the shear.
QEX_API bool KQexClipSelect(const KQexClip& pClip, const std::vector<int>& pJoints, KQexClip& pResult);

/// All lengths times \p pFactor, which is above 0: the figure, its way, and the limits and values of translations.
QEX_API bool KQexClipScale(const KQexClip& pClip, double pFactor, KQexClip& pResult);

/// The motion and its rest pose turned about the origin, then moved by \p pOffset (centimetres). Only roots change; their degrees of
/// freedom are dropped.
QEX_API bool KQexClipTransform(const KQexClip& pClip, const KQexQuaternion& pTurn, const double pOffset[3], KQexClip& pResult);

/// From y up to z up: (x, y, z) becomes (x, -z, y). Every joint's own axes turn with the world, so a joint without rotation stays
/// without. The numbers only change places and signs. Degrees of freedom stay, about the axes that they had.
QEX_API bool KQexClipMakeZUp(const KQexClip& pClip, KQexClip& pResult);

/// From z up to y up: the reverse of KQexClipMakeZUp().
QEX_API bool KQexClipMakeYUp(const KQexClip& pClip, KQexClip& pResult);

/// The joint on the other side for each joint, itself where there is none: names that differ in "left" and "right" or "l" and "r" as
/// words of their own or at the start, in any case ("LeftArm", "arm.L", "lfemur" with "rfemur"). Of a name with many such letters, only the
/// first eight count. Empty when memory runs out.
QEX_API std::vector<int> KQexMirrorPairs(const KQexClipData& pClip);

/// Left and right exchanged: reflected at the world's plane x = 0. \p pPairs gives the joint on the other side for each joint, as
/// KQexMirrorPairs() does: the pair of a pair is the joint itself. The rest pose stays; each joint's turn away from it, in world axes, is
/// the reflection of its pair's, so skeletons whose axes differ from side to side are mirrored as well. Values of degrees of freedom are
/// dropped.
QEX_API bool KQexClipMirror(const KQexClip& pClip, const std::vector<int>& pPairs, KQexClip& pResult);

/// The first root's way on the ground (x and z) taken out of the motion: it stays over its position in the first frame. Without
/// \p pKeepTurn its turn about the vertical since then is taken out too. Degrees of freedom of roots are dropped.
QEX_API bool KQexClipInPlace(const KQexClip& pClip, bool pKeepTurn, KQexClip& pResult);

/// Turned and moved so that the first root starts above the origin and faces along +z. It faces where its own z axis points at the
/// start, seen from above, relative to that at rest. The rest pose stays; degrees of freedom of roots are dropped.
QEX_API bool KQexClipToOrigin(const KQexClip& pClip, KQexClip& pResult);

/// \p pClip and then \p pNext, which has the same joints and rate. The last \p pBlend frames of the first fade into the first of the
/// second; with 0 the second follows one frame later. Values of degrees of freedom stay, blended, if both list the same.
QEX_API bool KQexClipJoin(const KQexClip& pClip, const KQexClip& pNext, int pBlend, KQexClip& pResult);

} // namespace qexsdk

#endif
