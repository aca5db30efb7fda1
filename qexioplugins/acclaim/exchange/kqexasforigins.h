#ifndef QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFORIGINS_H
#define QEXIOPLUGINS_ACCLAIM_EXCHANGE_KQEXASFORIGINS_H

#include <qexioplugins/acclaim/kqexasfnode.h>

#include <string>
#include <vector>

namespace qexsdk
{

/// A bone of an extracted skeleton and the host nodes that it was made for. The skeleton owns the bone, the host scene the nodes.
struct KQexAsfOrigin
{
    HKQexAsfNode mBone = nullptr; ///< The bone.
    KQexNode*    mNode = nullptr; ///< The node; null for a generated bone (a dummy).
    KQexNode*    mEnd = nullptr;  ///< The node at which the bone ends; null for none.
};

/// Suffix of a generated bone's name.
inline constexpr char kDummySuffix[] = "Dummy";

/// Suffix of the name of a node that is only the end of its parent's bone.
inline constexpr char kEndSuffix[] = "_End";

/// Pairs the bones of a skeleton that was extracted from the tree at \p pRoot, and not changed since, with its nodes: in pre-order, the
/// root first. May throw std::bad_alloc.
std::vector<KQexAsfOrigin> FindAsfOrigins(HKQexAsfNode pBone, KQexNode* pRoot);

/// The name without its name-space prefix.
inline std::string BareName(const KQexNode* pNode)
{
    return pNode->GetBareName();
}

} // namespace qexsdk

#endif
