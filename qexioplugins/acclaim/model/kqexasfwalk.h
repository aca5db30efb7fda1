#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFWALK_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFWALK_H

#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// Depth-first walk over a bone and all below it, without recursion or allocation, so that it works at any depth and cannot fail.
/// Every bone is visited twice, when it is entered (before its children) and when it is left (after them):
///
///     KQexAsfWalk lWalk(pRoot);
///     while (HKQexAsfNode lNode = lWalk.Next())
///         if (lWalk.IsEntering())
///             …
///
/// A bone's children may be changed when it is entered. A bone may be released when it is left; the indices of its siblings must not
/// change. Null entries are skipped.
///
/// The path is stored in the bones. A walk may be nested in another one on the same tree when it starts at the outer walk's current
/// bone or below it.
class KQexAsfWalk
{
public:
    /// In which order the children of a bone are walked.
    enum EDirection
    {
        eFIRST_TO_LAST, ///< Children in index order.
        eLAST_TO_FIRST, ///< Children from the last index down.
        eALTERNATING    ///< The top's children from the last index down, their children in index order, and so on.
    };

    /// A walk over \p pTop (null: over nothing) and everything below it; owns nothing.
    explicit KQexAsfWalk(HKQexAsfNode pTop, EDirection pDirection = eFIRST_TO_LAST)
        : mTop(pTop),
          mNode(nullptr),
          mParent(nullptr),
          mIndex(0),
          mStep(pDirection == eLAST_TO_FIRST ? -1 : 1),
          mStepFactor(pDirection == eALTERNATING ? -1 : 1),
          mEntering(false)
    {
    }

    /// The next bone, entered or left; null when the top has been left.
    HKQexAsfNode Next()
    {
        if (!mNode)
        {
            return Enter(mTop);
        }
        if (mEntering)
        {
            return Descend(mNode, mStep > 0 ? 0 : mNode->mChildBuf.GetCount() - 1);
        }
        if (!mParent)
        {
            return nullptr;
        }
        return Descend(mParent, mIndex + mStep);
    }

    /// Whether the bone that Next() gave is being entered; else it is being left.
    bool IsEntering() const { return mEntering; }

    /// Whether the children of the bone that Next() gave are visited in index order.
    bool IsForward() const { return mStep * (mEntering ? 1 : mStepFactor) > 0; }

    /// The parent, in this walk, of the bone that Next() gave; null at the top.
    HKQexAsfNode GetParent() const { return !mEntering ? mParent : mNode == mTop ? nullptr : mNode->mWalkParent; }

    /// For a bone that was left and will be released: sets its entry in its parent's children to null. Not for the top.
    void ClearEntry() { mParent->mChildBuf.SetAt(mIndex, nullptr); }

    /// For a bone that was entered: skips its children and the second visit, when it is left.
    void SkipChildren() { Leave(mNode); }

private:
    HKQexAsfNode Enter(HKQexAsfNode pNode)
    {
        mEntering = true;
        mStep *= mStepFactor;
        return mNode = pNode;
    }

    HKQexAsfNode Leave(HKQexAsfNode pNode)
    {
        // Copied now: the caller may release the bone after this.
        mEntering = false;
        mStep *= mStepFactor;
        mParent = pNode == mTop ? nullptr : pNode->mWalkParent;
        mIndex = pNode->mWalkIndex;
        return mNode = pNode;
    }

    HKQexAsfNode Descend(HKQexAsfNode pParent, int pIndex)
    {
        const int lCount = pParent->mChildBuf.GetCount();
        for (int lIndex = pIndex; lIndex >= 0 && lIndex < lCount; lIndex += mStep)
        {
            HKQexAsfNode lChild = pParent->mChildBuf[lIndex];
            if (lChild)
            {
                lChild->mWalkParent = pParent;
                lChild->mWalkIndex = lIndex;
                return Enter(lChild);
            }
        }
        return Leave(pParent);
    }

    HKQexAsfNode mTop;
    HKQexAsfNode mNode;
    HKQexAsfNode mParent;
    int          mIndex;
    int          mStep;       ///< Direction among the children of the bone entered, or of the parent of the bone left.
    int          mStepFactor; ///< Factor applied to mStep at every step down or up.
    bool         mEntering;
};

} // namespace qexsdk

#endif
