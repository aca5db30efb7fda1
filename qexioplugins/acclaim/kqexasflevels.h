#ifndef QEXIOPLUGINS_ACCLAIM_KQEXASFLEVELS_H
#define QEXIOPLUGINS_ACCLAIM_KQEXASFLEVELS_H

#include <kbaselib/kbase/kprefetch.h>
#include <qexioplugins/acclaim/kqexasfnode.h>

#include <cstddef>

namespace qexsdk
{

/// A bone and all below it, level by level, for passes in which a bone only has to come after its parent. Other than KQexAsfWalk it
/// does not come back to a bone after its children, and it knows early which bones come next: in skeletons larger than the
/// processor's caches that saves one of two waits for each bone and lets the other run beside the work. It needs a pointer a bone:
///
///     KQexAsfLevels lLevels(pTop);
///     while (HKQexAsfNode lNode = lLevels.Next())
///         …
///     if (lLevels.HasFailed())
///         … all of it again with KQexAsfWalk
///
/// A bone that Next() gave may change its own children before the next call. Null entries are passed over.
class KQexAsfLevels
{
public:
    /// Which bones come up.
    enum EBones
    {
        eALL,
        eWITH_CHILDREN ///< Those that have children when their parent is passed, and the top.
    };

    /// The levels below \p pTop, itself first; owns nothing.
    explicit KQexAsfLevels(HKQexAsfNode pTop, EBones pBones = eALL) : mBones(pBones), mAt(-1), mFailed(mNodes.Add(pTop) < 0) {}

    /// The next bone; null behind the last one, and when there is no memory for more.
    HKQexAsfNode Next()
    {
        if (mAt >= 0 && !mSkip)
            AddChildren(*mNodes[mAt]);
        mSkip = false;
        if (mFailed)
            return nullptr;
        ++mAt;
        // First where its children are told, then the children's list.
        if (const KQexAsfNode* lNode = GetAhead(3 * kAhead))
            KPrefetch(&lNode->mParent, &lNode->mOrderCount + 1);
        if (const KQexAsfNode* lNode = GetAhead(2 * kAhead))
            KPrefetch(lNode->mChildBuf.GetItems());
        return mNodes[mAt];
    }

    /// Nothing below the bone that Next() gave comes up.
    void SkipChildren() { mSkip = true; }

    /// Whether Next() was null for want of memory: not all bones came up.
    bool HasFailed() const { return mFailed; }

    /// The bone that comes \p pCount calls of Next() later; null when that is not known yet. Up to kAhead, its tree fields and its list of
    /// children are at hand.
    const KQexAsfNode* GetAhead(int pCount) const { return mNodes[mAt + pCount]; }

    /// Bytes from the last bone to where the one \p pCount calls later probably is, for when GetAhead() does not know it: where every
    /// bone has one child, what is known ends at the child. Bones that were made one after the other mostly lie so.
    std::ptrdiff_t GuessAhead(int pCount) const
    {
        return mAt < 1 ? 0 : pCount * (reinterpret_cast<const char*>(mNodes[mAt]) - reinterpret_cast<const char*>(mNodes[mAt - 1]));
    }

    /// See GetAhead(): far enough for memory to answer, near enough for the answer to be in the cache still.
    static constexpr int kAhead = 4;

private:
    void AddChildren(const KQexAsfNode& pNode)
    {
        const int lCount = pNode.mChildBuf.GetCount();
        for (int lIndex = 0; lIndex < lCount && !mFailed; ++lIndex)
        {
            HKQexAsfNode lChild = pNode.mChildBuf[lIndex];
            if (lChild && (mBones == eALL || lChild->mChildBuf.GetCount() > 0))
                mFailed = mNodes.Add(lChild) < 0;
        }
    }

    EBones                       mBones;
    KArrayTemplate<KQexAsfNode*> mNodes; ///< Those that came up, then those that are known to come.
    int                          mAt;    ///< Index of the bone that Next() gave last.
    bool                         mSkip = false;
    bool                         mFailed;
};

} // namespace qexsdk

#endif
