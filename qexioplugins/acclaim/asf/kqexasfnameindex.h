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

/// The bones of a skeleton by name while its hierarchy is read, so that reading stays linear: Find() answers what KQexAsfNode::Find() on
/// the root would, and Move() reparents a child of the root; neither walks the tree or searches a child list.
///
/// Bones are numbered, the root is 0. While the index is in use, bones may be added at the end of the root's children; nothing else may
/// change the tree. Used by one thread; owns nothing of the tree. Where not said otherwise, std::bad_alloc is thrown when memory runs out.
class KQexAsfNameIndex
{
public:
    static constexpr int kNone = -1; ///< No bone of that name.

    /// Adds the bones at and below \p pRoot that are not in the index yet: all of them the first time, then those that were added to the
    /// root's children. \p pRoot is the same each time.
    void Update(HKQexAsfNode pRoot);

    /// The first bone in pre-order whose name is \p pName, or kNone. Constant time for a name that one bone has, else amortised
    /// logarithmic; after a move of a subtree with many repeated names, in proportion to the bones of the name.
    int Find(const char* pName);

    /// Whether the bone is a child of the root.
    bool IsUnderRoot(int pBone) const { return pBone != 0 && At(pBone).mParent == 0; }

    /// Whether \p pBone is \p pTop or below it, \p pTop being a child of the root.
    bool IsBelow(int pBone, int pTop) { return TopOf(pBone) == pTop; }

    /// Makes \p pBone, a child of the root, the last child of \p pParent, which is not below it. Its entry in the root's child list
    /// becomes null. False, with the bone where it was, when memory for the parent's child list runs out.
    bool Move(int pBone, int pParent);

    /// Takes the null entries out of the root's child list, all in one pass. Throws nothing. The index is not used afterwards.
    void CloseGaps();

private:
    /// The place of the child of the root that a bone is below, and the bone. The place may be out of date.
    using KTwin = std::pair<unsigned, int>;

    /// The bones of one name.
    struct KName
    {
        int                mBone = kNone; ///< The bone, while there is only one.
        std::vector<KTwin> mTwins;        ///< Else all that may still come first, as a heap with the lowest place in front.
        unsigned           mAdvances = 0; ///< mAdvances of the index when all places were computed last.
    };

    struct KBone
    {
        HKQexAsfNode mNode;
        KName*       mName;
        int          mParent;
        int          mUp;             ///< Union-find: a bone nearer to the child of the root that this one is below, or itself.
        unsigned     mPlace;          ///< Order among the children of one parent.
        int          mEntry;          ///< At a child of the root: index in its child list.
        int          mTwins = kNone;  ///< At a child of the root: one of the bones at and below it that share their name.
        int          mNextTwin = 0;   ///< The next of those, in a ring.
        unsigned     mSought = 0;     ///< The last FirstInPreOrder() that was about this bone.
        unsigned     mPassed = 0;     ///< The last one whose paths led through here.
        int          mFirstChild = 0; ///< The first child on one of those paths.
    };

    KBone&       At(int pBone) { return mBones[static_cast<size_t>(pBone)]; }
    const KBone& At(int pBone) const { return mBones[static_cast<size_t>(pBone)]; }
    void         Add(HKQexAsfNode pNode, int pParent, int pEntry);
    void         AddName(int pBone);
    void         AddTwin(int pBone);
    void         PushTwin(int pBone);
    void         PushTwins(int pRing);
    int          TopOf(int pBone);
    unsigned     PlaceOf(int pBone) { return At(TopOf(pBone)).mPlace; }
    int          FirstOf(KName& pName);
    KTwin        GetLowest(std::vector<KTwin>& pTwins);
    int          FirstInPreOrder(const std::vector<int>& pBones);

    std::vector<KBone>                                       mBones;
    std::unordered_map<std::string_view, KName, KStringHash> mNames;
    int                                                      mKnownChildren = 0; ///< Entries of the root's child list in the index.
    unsigned                                                 mNextPlace = 0;
    unsigned                                                 mAdvances = 0; ///< Moves to a lower place for which heaps have no entries.
    unsigned                                                 mSearches = 0; ///< Calls of FirstInPreOrder().
};

} // namespace qexsdk

#endif
