#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFWRITEEXTRAS_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFWRITEEXTRAS_H

#include <qexioplugins/gltf/kqexgltfjsonwriter.h>
#include <qexioplugins/motion/kqexmotionio.h>

namespace qexsdk
{

class KQexNode;

/// Writes the member "extras" of a node, for what glTF itself has no place for: rotation order, pre- and post-rotation, limits, and the
/// bone's degrees of freedom with theirs as \p pBoneDofs (null: none) has them. Nothing when there is none of these.
void WriteGltfExtras(KQexGltfJsonWriter& pJson, const KQexNode& pNode, const KQexBoneDofs* pBoneDofs);

} // namespace qexsdk

#endif
