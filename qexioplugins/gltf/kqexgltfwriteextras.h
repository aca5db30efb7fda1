#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFWRITEEXTRAS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFWRITEEXTRAS_H

#include <qexioplugins/gltf/kqexgltfjsonwriter.h>
#include <qexioplugins/motion/kqexmotionio.h>

namespace qexsdk
{

class KQexNode;

/// Writes a node's "extras", for data that glTF has no property for: rotation order, pre- and post-rotation, limits, and the bone's
/// degrees of freedom with their limits from \p pBoneDofs (may be null). Writes nothing when there are none of these.
void WriteGltfExtras(KQexGltfJsonWriter& pJson, const KQexNode& pNode, const KQexBoneDofs* pBoneDofs);

} // namespace qexsdk

#endif
