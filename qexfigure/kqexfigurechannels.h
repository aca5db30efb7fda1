#ifndef QEXFIGURE_KQEXFIGURECHANNELS_H
#define QEXFIGURE_KQEXFIGURECHANNELS_H

#include <qexscene/kqexdoftrack.h>
#include <qexscene/kqexscene.h>

#include <memory>
#include <vector>

/// \file
/// The channels of a BVH motion that was read.

namespace qexsdk
{

/// The values of all channels of the trees at \p pRoots on \p pLayer, as their file has them: joint by joint, in pre-order, each joint's in
/// the order of application. May throw std::bad_alloc.
std::shared_ptr<const KQexDofValues> KeepChannels(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer);

/// Makes the rotations continuous, so that they can be evaluated between frames: files wrap angles at 180 degrees. Rotations at frames stay.
/// \p pIsGimbal: by the filter that also takes the shortest path near gimbal lock. A joint for which memory runs out stays as it is.
void UnrollChannels(const std::vector<KQexNode*>& pRoots, const KQexAnimLayer* pLayer, bool pIsGimbal);

} // namespace qexsdk

#endif
