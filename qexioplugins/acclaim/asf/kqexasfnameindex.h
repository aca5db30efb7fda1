#ifndef QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFNAMEINDEX_H
#define QEXIOPLUGINS_ACCLAIM_ASF_KQEXASFNAMEINDEX_H

#include <kbaselib/kbase/kstringhash.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qexsdk
{

/// Index of a skeleton's bones by name while its hierarchy is read, so that reading stays linear: Find() gives what KQexAsfNode::Find() on
/// the root would, and Move() reparents a child of the root; neither walks the tree or searches a child list.
///
/// Bones are numbered, the root is 0. While the index is in use, bones may be appended to the root's children; nothing else may change
/// the tree. Not thread-safe; owns no bones. Throws std::bad_alloc unless stated otherwise.
class KQexAsfNameIndex
{
public:
    static constexpr int kNone = -1; ///< No bone of that name.

    /// Adds the bones at and below \p pRoot that are not in the index yet: all of them the first time, then those that were added to the
    /// root's children. \p pRoot is the same each time.
    void Update(HKQexAsfNode pRoot);

    /// The first bone in pre-order named \p pName, or kNone. O(1) for a unique name, else amortised O(log n); after a move of a subtree
    /// with many repeated names, linear in the bones of that name.
    int Find(const char* pName);

    /// Whether the bone is a child of the root.
    bool IsUnderRoot(int pBone) const { return pBone != 0 && At(pBone).mParent == 0; }

    /// Whether \p pBone is \p pTop or below it, \p pTop being a child of the root.
    bool IsBelow(int pBone, int pTop) { return FindTop(pBone) == pTop; }

    /// Makes \p pBone, a child of the root, the last child of \p pParent, which is not below it. Its entry in the root's child list
    /// becomes null. False, with nothing changed, when memory for the parent's child list runs out.
    bool Move(int pBone, int pParent);

    /// Removes the null entries from the root's child list in one pass. Does not throw. The index must not be used afterwards.
    void RemoveNulls();

private:
    /// The order of the root child that a bone is below, and the bone. The order may be stale.
    using KDuplicate = std::pair<unsigned, int>;

    /// The bones of one name.
    struct KName
    {
        int                     mBone = kNone;   ///< The bone, while there is only one.
        std::vector<KDuplicate> mDuplicates;     ///< Else all candidates for the first, as a min-heap.
        unsigned                mGeneration = 0; ///< mGeneration of the index when the heap was last rebuilt.
    };

    struct KBone
    {
        HKQexAsfNode mNode;
        KName*       mName;
        int          mParent;
        int          mSetParent;          ///< Union-find: a bone on the way up to the root child, or itself.
        unsigned     mOrder;              ///< Order among siblings.
        int          mEntry;              ///< For a root child: index in the root's child list.
        int          mDuplicates = kNone; ///< For a root child: one of the bones at and below it whose name is repeated.
        int          mNextDuplicate = 0;  ///< The next of those, as a ring.
        unsigned     mTargetSearch = 0;   ///< Last search (mSearches) for this bone.
        unsigned     mPathSearch = 0;     ///< Last search with a path through this bone.
        int          mFirstChild = 0;     ///< First child on those paths.
    };

    KBone&       At(int pBone) { return mBones[static_cast<size_t>(pBone)]; }
    const KBone& At(int pBone) const { return mBones[static_cast<size_t>(pBone)]; }
    void         Add(HKQexAsfNode pNode, int pParent, int pEntry);
    void         AddName(int pBone);
    void         AddDuplicate(int pBone);
    void         PushDuplicate(int pBone);
    void         PushDuplicates(int pRing);
    int          FindTop(int pBone);
    unsigned     OrderOf(int pBone) { return At(FindTop(pBone)).mOrder; }
    int          FirstOf(KName& pName);
    KDuplicate   GetLowest(std::vector<KDuplicate>& pDuplicates);
    int          FirstInPreOrder(const std::vector<int>& pBones);

    std::vector<KBone>                                       mBones;
    std::unordered_map<std::string_view, KName, KStringHash> mNames;
    int                                                      mKnownChildren = 0; ///< Entries of the root's child list in the index.
    unsigned                                                 mNextOrder = 0;
    unsigned                                                 mGeneration = 0; ///< Counts the moves that made heaps stale.
    unsigned                                                 mSearches = 0;   ///< Number of FirstInPreOrder() calls.
};

} // namespace qexsdk

#endif
