#ifndef QEXCLIP_KQEXCLIPQUANTITIES_H
#define QEXCLIP_KQEXCLIPQUANTITIES_H

#include <qexclip/kqexclip.h>
#include <qexclip/kqexrotationform.h>

/// \file
/// Numbers computed from a clip, for frames \p pFirst to \p pFirst + \p pCount - 1 and all joints: arrays frame by frame, in it joint by
/// joint. The caller's array has pCount × joints × the numbers of an item. Computed in double precision from the clip's numbers. Every
/// function is false, with nothing written, when the frames do not exist or memory runs out.

namespace qexsdk
{

/// What transforms are relative to.
enum class KQexSpace
{
    eLOCAL, ///< The joint's parent.
    eWORLD
};

/// The rotation of every joint. \p pOrder is the order code of Euler angles (see keulertable.h), which are those about x, y and z; of the
/// twelve, those with a repeated axis give the angles in order of application instead; false for another code. World rotations leave out
/// scaling.
QEX_API bool KQexGetRotations(const KQexClip& pClip, KQexSpace pSpace, KQexRotationForm pForm, int pOrder, long long pFirst,
                              long long pCount, double* pResult);

/// The position of every joint in the world: x, y, z in centimetres.
QEX_API bool KQexGetPositions(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult);

/// The velocity of every joint in the world: x, y, z in centimetres a second. Central differences between the frames before and after;
/// one-sided in the clip's first and last frame; 0 for a clip of one frame.
QEX_API bool KQexGetVelocities(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult);

/// The angular velocity of every joint in world axes: x, y, z in radians a second, from the rotation between the frames as for
/// KQexGetVelocities().
QEX_API bool KQexGetAngularVelocities(const KQexClip& pClip, long long pFirst, long long pCount, double* pResult);

/// The values of the degrees of freedom in frame \p pFrame that pass a limit (KQexBoneDof::GetExcess()), as indices of mDofs, ascending, in
/// \p pPassed. None when the clip keeps no values. False, with \p pPassed unchanged, for a frame that does not exist or when memory runs
/// out.
QEX_API bool KQexPassedLimits(const KQexClipData& pClip, long long pFrame, std::vector<int>& pPassed);

} // namespace qexsdk

#endif
