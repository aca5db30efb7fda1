#ifndef QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFWALK_H
#define QEXIOPLUGINS_ACCLAIM_MODEL_KQEXASFWALK_H

#include <qexioplugins/acclaim/kqexasfnode.h>

namespace qexsdk
{

/// A walk over a bone and all below it, without recursion and without memory of its own, so that trees of any depth can be
/// walked and no walk fails half-way. Every bone comes up twice, when it is entered (before its children) and when it is left
/// (after them):
///
///     KQexAsfWalk lWalk(pRoot);
///     while (HKQexAsfNode lNode = lWalk.Next())
///         if (lWalk.IsEntering())
///             …
///
/// At its entering a bone may change its own children. At its leaving a bone may be released; the places of its brothers in
/// their parent's children must not have moved. Null entries are passed over.
///
/// The way back is kept in the bones. A walk may run inside another one on the same tree when it begins at the bone at which
/// the outer one stands, or below it.
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
          mUp(nullptr),
          mUpIndex(0),
          mStep(pDirection == eLAST_TO_FIRST ? -1 : 1),
          mTurn(pDirection == eALTERNATING ? -1 : 1),
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
        if (!mUp)
        {
            return nullptr;
        }
        return Descend(mUp, mUpIndex + mStep);
    }

    /// Whether the bone that Next() gave is being entered; else it is being left.
    bool IsEntering() const { return mEntering; }

    /// Whether the children of the bone that Next() gave are visited in index order.
    bool IsForward() const { return mStep * (mEntering ? 1 : mTurn) > 0; }

    /// The bone that the walk came from to the one that Next() gave; null at the top.
    HKQexAsfNode GetAbove() const { return !mEntering ? mUp : mNode == mTop ? nullptr : mNode->mWalkParent; }

    /// At the leaving of a bone that is released: makes its entry among its parent's children null. Not for the top.
    void ClearEntry() { mUp->mChildBuf.SetAt(mUpIndex, nullptr); }

    /// At the entering of a bone: goes on behind it. Its children do not come up, and neither does its leaving.
    void SkipChildren() { Leave(mNode); }

private:
    HKQexAsfNode Enter(HKQexAsfNode pNode)
    {
        mEntering = true;
        mStep *= mTurn;
        return mNode = pNode;
    }

    HKQexAsfNode Leave(HKQexAsfNode pNode)
    {
        // The way up is taken out of the bone now: after this the caller may release it.
        mEntering = false;
        mStep *= mTurn;
        mUp = pNode == mTop ? nullptr : pNode->mWalkParent;
        mUpIndex = pNode->mWalkIndex;
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
    HKQexAsfNode mUp;
    int          mUpIndex;
    int          mStep; ///< Direction among the children of the bone entered, or of the parent of the bone left.
    int          mTurn; ///< Factor of mStep at every step down or up.
    bool         mEntering;
};

} // namespace qexsdk

#endif
