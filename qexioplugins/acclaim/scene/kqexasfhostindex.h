#ifndef QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFHOSTINDEX_H
#define QEXIOPLUGINS_ACCLAIM_SCENE_KQEXASFHOSTINDEX_H

#include <kbaselib/kbase/kstringhash.h>
#include <qexscene/kqexscene.h>

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

/// \file
/// Host nodes by name, for looking up every bone of a skeleton: KQexNode::FindChild searches linearly, which makes that quadratic for a
/// wide tree. The results are those of FindChild.

namespace qexsdk
{

/// All nodes at and below one, numbered in pre-order (the top is 0), by name. A snapshot of the tree at construction, which may throw
/// std::bad_alloc; look-ups do not.
class KQexAsfTreeIndex
{
public:
    /// Which part of a node's name counts.
    enum ENamePart
    {
        eWHOLE, ///< All of it.
        eBARE   ///< What follows the name-space prefix.
    };

    /// Indexes the nodes of the tree at \p pTop, itself included; they stay the scene's.
    explicit KQexAsfTreeIndex(KQexNode* pTop, ENamePart pPart = eWHOLE);

    /// The first node named \p pName below node number \p pAncestor, itself excluded, in pre-order; -1 when there is none. O(log n).
    int Find(const char* pName, int pAncestor) const;

    /// The node with that number, from 0 in pre-order; the number is not checked.
    KQexNode* GetNode(int pNumber) const { return mNodes[static_cast<std::size_t>(pNumber)]; }

private:
    std::vector<KQexNode*>                                              mNodes;
    std::vector<int>                                                    mEnds;  ///< By number: one past the number of the last descendant.
    std::unordered_map<std::string_view, std::vector<int>, KStringHash> mNames; ///< Numbers of the nodes of a name, ascending.
};

/// The children of nodes by name, while children are only appended.
class KQexAsfChildIndex
{
public:
    /// The first child of \p pParent named \p pName, or null. Searches linearly when memory for the index runs out.
    KQexNode* Find(const KQexNode& pParent, const char* pName);

private:
    struct KChildren
    {
        std::unordered_map<std::string_view, KQexNode*, KStringHash> mFirst;
        KQexNode*                                                    mLast = nullptr; ///< The last child in the index.
    };

    KQexNode* FindIndexed(const KQexNode& pParent, const char* pName);

    std::unordered_map<const KQexNode*, KChildren> mParents;
};

} // namespace qexsdk

#endif
