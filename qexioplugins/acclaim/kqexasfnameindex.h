#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFNAMEINDEX_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFNAMEINDEX_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kprefetch.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

#include <cstddef>
#include <cstdint>

namespace qexsdk
{

/// The bones of a skeleton by name while a hierarchy is being read, so that reading stays linear: Find() answers what
/// KQexAsfNode::Find() on the root would, Move() hangs a child of the root under another bone. Neither walks the tree or
/// searches a child list.
///
/// A moved bone leaves the root's child list for that of its new parent only at Settle().
/// While the index is in use, bones may be added at the end of the root's children, and are changed in no other way.
///
/// Bones are told by their place in the index, 0 for the root. Used by one thread; owns nothing of the tree.
class QEX_API KQexAsfNameIndex
{
    /// The first and the last eight characters of a name, which may be the same ones. With the length they are all of nearly every name, so
    /// that comparing names does not fetch the bones themselves.
    struct KNameEnds
    {
        uint64_t mFirst;
        uint64_t mLast; ///< 0 where mFirst holds the whole name.
    };

public:
    static constexpr int kNone = -1; ///< No bone of that name.

    /// A name made ready to be looked for. What it was made from stays the caller's and has to outlive it.
    class KName
    {
    public:
        KName() = default;
        /// The \p pLength characters at \p pText.
        KName(const char* pText, size_t pLength);

    private:
        friend class KQexAsfNameIndex;
        const char* mText = nullptr;
        size_t      mLength = 0;
        KNameEnds   mEnds = {0, 0};
        uint32_t    mHash = 0;
    };

    KQexAsfNameIndex() = default;
    ~KQexAsfNameIndex();
    KQexAsfNameIndex(const KQexAsfNameIndex&) = delete;
    KQexAsfNameIndex& operator=(const KQexAsfNameIndex&) = delete;

    /// Takes in the bones below \p pRoot that are not known yet: all the first time, then those that were added to the
    /// root's children since. \p pRoot is the same each time. False, with nothing lost, when memory runs out.
    bool Update(HKQexAsfNode pRoot);

    /// The first bone in pre-order whose name is \p pName, or kNone. Amortised constant time while names are
    /// unique; else in proportion to the bones of that name.
    int Find(const KName& pName);
    /// The same for a name that ends with a NUL.
    int Find(const char* pName);

    /// Asks for the memory that Find(\p pName) will look at first. For many names, this is called for all of them, then ApproachFound()
    /// for all, then Find().
    void Approach(const KName& pName) const;

    /// Asks for what Find(\p pName) will look at then; see Approach().
    void ApproachFound(const KName& pName) const;

    /// As Find(), for a name for which ApproachFound() was called before: what it looks at is at hand, which no guess beats. The index has
    /// been updated.
    int FindApproached(const KName& pName) { return LookUp(pName); }

    /// Whether the bone is a child of the root. Does not look at the bone itself: of many, that would be a wait for memory each.
    bool IsUnderRoot(int pBone) const { return pBone != 0 && mBones[pBone].mParent == 0; }

    /// True when \p pBone is \p pTop or hangs below it, \p pTop being a child of the root.
    bool IsBelow(int pBone, int pTop) { return TopOf(pBone) == pTop; }

    /// Hangs \p pBone, a child of the root, behind the children of \p pParent, which is not below it. For the index this counts at
    /// once; the bones themselves are hung over by Settle().
    void Move(int pBone, int pParent);

    /// Carries out what Move() was asked for, in that order, and takes the bones out of the root's child list. False when memory
    /// runs out: the bones whose turn had not come are still children of the root then.
    bool Settle();

    /// Takes note that a bone will be added soon whose mName is at \p pName, \p pLength characters that stay as they are until then: where
    /// its name will go comes into reach meanwhile.
    void Expect(const char* pName, size_t pLength);

    /// Computes the frames of all bones as SetupPosition() of the root does, in the order in which they stand in memory. Nothing may
    /// have been added to the tree since the last Update().
    void SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation);

private:
    /// A whole line of memory each, as bones are mostly asked for here and there: across two of them, most would be fetched twice.
    struct alignas(kPrefetchLine) KBone
    {
        HKQexAsfNode mNode;
        KNameEnds    mEnds;
        int          mUp;        ///< A bone nearer to the child of the root that this one hangs below, or itself.
        int          mParent;    ///< Bone that this one is a child of.
        unsigned     mPlace;     ///< Grows along the children of one parent.
        int          mSameName;  ///< Next bone of the same name, in a ring.
        int          mMoved;     ///< Not of this bone: at place n, the n-th bone to be hung over.
        unsigned     mAnswerFor; ///< mState for which this bone is known to be the first of its name.
        bool         mHoldsTwin; ///< At a child of the root: a bone at or below it shares its name with another.
        uint8_t      mLength;    ///< Of the name; it has no more than 255 characters.
    };

    /// A place in the table of names. The hash stands here too, so that looking on costs no look at a bone.
    struct KSlot
    {
        uint32_t mHash;
        int      mBone; ///< A bone of the name, kNone for a free slot.
    };

    void     ApproachFrame(int pBone) const;
    bool     Add(HKQexAsfNode pNode, int pParent);
    KName    NameOf(const KQexAsfNode& pNode);
    void     AddName(int pBone);
    bool     GrowBones();
    bool     GrowTable();
    KSlot*   SlotOf(const KName& pName) const;
    bool     IsNamed(int pBone, const KName& pName) const;
    int      Guess(const KName& pName) const;
    int      LookUp(const KName& pName);
    bool     HangOver();
    void     ApproachMove(int pMove) const;
    int      FirstOf(int pBone);
    bool     IsBefore(int pLeft, int pRight) const;
    int      DepthOf(int pBone) const;
    int      TopOf(int pBone);
    unsigned PlaceOfTop(int pBone) { return mBones[TopOf(pBone)].mPlace; }

    void*    mBonesMemory = nullptr; ///< What mBones lie in.
    KBone*   mBones = nullptr;
    int      mCount = 0;
    int      mRoom = 0;
    KSlot*   mTable = nullptr; ///< Open addressing.
    size_t   mTableSize = 0;   ///< A power of two, more than twice the number of names.
    size_t   mNameCount = 0;
    KName    mExpected;          ///< Of the bone that is added next, if its name lies there.
    int      mFound[2] = {0, 0}; ///< What Find() found last and before that.
    int      mMovedCount = 0;    ///< Bones to be hung over.
    int      mKnownChildren = 0; ///< Children of the root taken in.
    unsigned mNextPlace = 0;
    unsigned mState = 1; ///< Counts changes that may alter which bone of a name comes first.
};

} // namespace qexsdk

#endif
