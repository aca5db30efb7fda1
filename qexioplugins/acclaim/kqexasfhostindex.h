#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFHOSTINDEX_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFHOSTINDEX_H

#include <qexscene/kqexscene.h>

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

/// \file
/// Host nodes by name, for those who look up every bone of a skeleton: KQexNode::FindChild goes through the nodes one by one, which
/// for a wide tree costs the square of its size. The answers are those of FindChild.

namespace qexsdk
{

/// All nodes at and below one, numbered in pre-order (the top is 0), by name. Tells of the tree as it was at construction.
/// Building it and growing it may throw std::bad_alloc; looking up does not.
class KQexAsfTreeIndex
{
public:
    /// Indexes the nodes of the tree at \p pTop, itself included, in pre-order; they stay the scene's.
    explicit KQexAsfTreeIndex(KQexNode* pTop);

    /// The first node named \p pName below node number \p pWhere, itself excluded, in pre-order; -1 when there is none.
    int Find(const char* pName, int pWhere) const;

    /// The node with that number, from 0 in pre-order; the number is trusted.
    KQexNode* GetNode(int pNumber) const { return mNodes[static_cast<std::size_t>(pNumber)]; }

private:
    void NumberNodes(KQexNode* pTop);
    void SortByName();

    std::vector<KQexNode*>                    mNodes;
    std::vector<int>                          mEnds;   ///< By number: the number behind the last node below.
    std::unordered_map<std::string_view, int> mNames;  ///< Name to the number of the name, in the order of first use.
    std::vector<int>                          mStarts; ///< By the name's number: where its nodes begin in mByName; one more at the end.
    std::vector<int>                          mByName; ///< Nodes of one name after those of another, ascending.
};

/// The children of nodes by name, while children are only appended.
class KQexAsfChildIndex
{
public:
    /// The first child of \p pParent named \p pName, or null. Without memory for the index it is searched for.
    KQexNode* Find(const KQexNode& pParent, const char* pName);

private:
    struct KChildren
    {
        std::unordered_map<std::string_view, KQexNode*> mFirst;
        KQexNode*                                       mLast = nullptr; ///< The last child that is in the index.
    };

    KQexNode* FindIndexed(const KQexNode& pParent, const char* pName);

    std::unordered_map<const KQexNode*, KChildren> mParents;
};

} // namespace qexsdk

#endif
