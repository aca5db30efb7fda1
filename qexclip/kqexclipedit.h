#ifndef QEXCLIP_KQEXCLIPEDIT_H
#define QEXCLIP_KQEXCLIPEDIT_H

#include <qexclip/kqexclip.h>
#include <qexscene/kqexquaternion.h>

#include <exception>
#include <utility>
#include <vector>

/// \file
/// What the steps from clip to clip share. Everything here may throw std::bad_alloc, or std::length_error for sizes that no memory has;
/// KMakeClip() turns both into false.

namespace qexsdk
{

/// A clip of what \p pMake does to a copy of \p pClip's arrays. False, with \p pResult unchanged, when \p pMake is false, the arrays do not
/// fit together, or memory runs out.
template <typename TMake>
bool KMakeClip(const KQexClip& pClip, KQexClip& pResult, const TMake& pMake)
{
    try
    {
        KQexClipData lData = pClip.GetData();
        return pMake(lData) && KQexClip::FromArrays(std::move(lData), pResult);
    }
    catch (const std::exception&)
    {
        return false;
    }
}

/// Removes all frames, and the values of degrees of freedom.
void KClearFrames(KQexClipData& pData);

/// Adds a frame. Translations and scalings of joints that are not listed as moving or scaled do not count.
void KAppendPose(KQexClipData& pData, const KQexPose& pPose);

/// Lists exactly the joints as moving for which \p pIsMoving is not 0; those that were not have their translation at rest.
void KSetMoving(KQexClipData& pData, const std::vector<char>& pIsMoving);

/// As KSetMoving() for the joints that are scaled.
void KSetScaled(KQexClipData& pData, const std::vector<char>& pIsScaled);

/// Makes room for the frames of \p pData, which are not there yet.
void KReserveFrames(KQexClipData& pData);

/// The numbers that are in one or both of two ascending lists, ascending.
std::vector<int> KUnion(const std::vector<int>& pOne, const std::vector<int>& pOther);

/// Removes the degrees of freedom of joints for which \p pIsDropped is not 0, with their values.
void KDropDofs(KQexClipData& pData, const std::vector<char>& pIsDropped);

/// 1 for each root, 0 for the others.
std::vector<char> KRoots(const KQexClipData& pData);

/// The quaternion of \p pNumbers: w, x, y, z.
KQexQuaternion KToQuaternion(const float* pNumbers);

/// Sets \p pNumbers to w, x, y, z of \p pRotation as it is.
void KPutQuaternion(const KQexQuaternion& pRotation, float* pNumbers);

/// KPutQuaternion() of \p pRotation scaled to unit length.
void KFromQuaternion(const KQexQuaternion& pRotation, float* pNumbers);

} // namespace qexsdk

#endif
