#include <qexioplugins/acclaim/kqexasflevels.h>
#include <qexioplugins/acclaim/kqexasflocals.h>
#include <qexioplugins/acclaim/kqexasfwalk.h>

namespace qexsdk
{

namespace
{

// Bones taken out of their parent's children, in the order in which they were taken: last index first.
// The chain runs through mParent, which means nothing any more in a bone that is about to be released.
class KTakenBones
{
public:
    KTakenBones() : mFirst(nullptr), mLast(nullptr) {}

    void Append(HKQexAsfNode pNode)
    {
        pNode->mParent = nullptr;
        (mLast ? mLast->mParent : mFirst) = pNode;
        mLast = pNode;
    }

    HKQexAsfNode TakeFirst()
    {
        HKQexAsfNode lNode = mFirst;
        if (!lNode)
            return nullptr;
        mFirst = lNode->mParent;
        if (!mFirst)
            mLast = nullptr;
        return lNode;
    }

private:
    HKQexAsfNode mFirst;
    HKQexAsfNode mLast;
};

// Closes the gaps that were left as null entries, in one pass: taking each entry out by itself would move the tail every time.
void CloseGaps(KArrayTemplate<KQexAsfNode*>& pChildBuf)
{
    pChildBuf.RemoveIf([](const KQexAsfNode* pChild) { return pChild == nullptr; });
}

/// Children ahead of the one looked at for which memory is asked.
constexpr int kChildrenAhead = 32;

struct KFrameFlags
{
    bool mSetRotatePivotOffet;
    bool mSetPreRotation;
};

bool IsDummy(const KQexAsfNode& pNode)
{
    return pNode.mOrderCount == 0;
}

/// Asks for what taking a dummy out looks at.
void ApproachDummy(const KQexAsfNode& pDummy)
{
    if (pDummy.mChildBuf.GetCount() > 0)
    {
        KPrefetch(pDummy.mChildBuf.GetItems());
        KPrefetch(&pDummy.mParentAxisRM, &pDummy.mLT + 1);
    }
    // Releasing it looks at the blocks on both sides.
    KPrefetch(reinterpret_cast<const char*>(&pDummy) - sizeof(size_t));
    KPrefetch(&pDummy.mLTData, &pDummy + 1);
    KPrefetch(&pDummy + 2);
}

/// Asks for what moving a bone computes from and writes.
void ApproachMoved(const KQexAsfNode& pBone)
{
    KPrefetch(&pBone.mAxisRM, &pBone.mLR + 1);
}

/// Calls pDo(child) for the children that TakeDummies() will look at first, but not for more than a few.
template <typename TDo>
void ForFirstChildren(const KQexAsfNode* pNode, const TDo& pDo)
{
    if (!pNode)
        return;
    const int lLast = pNode->mChildBuf.GetCount() - 1;
    for (int lIter = lLast; lIter >= 0 && lIter > lLast - kChildrenAhead; lIter--)
        if (const KQexAsfNode* lChild = pNode->mChildBuf[lIter])
            pDo(*lChild);
}

/// Asks step by step for what folding the dummies of the bones that come soon looks at.
void ApproachFolds(const KQexAsfNode& pNode, const KQexAsfLevels& pLevels)
{
    if (!pLevels.GetAhead(1))
    {
        const std::ptrdiff_t lGuess = pLevels.GuessAhead(KQexAsfLevels::kAhead);
        KPrefetch(reinterpret_cast<const char*>(&pNode.mParent) + lGuess, reinterpret_cast<const char*>(&pNode + 1) + lGuess);
        return;
    }
    ForFirstChildren(pLevels.GetAhead(KQexAsfLevels::kAhead),
                     [](const KQexAsfNode& pChild) { KPrefetch(&pChild.mParent, &pChild.mOrderCount + 1); });
    ForFirstChildren(pLevels.GetAhead(KQexAsfLevels::kAhead / 2),
                     [](const KQexAsfNode& pChild)
                     {
                         if (IsDummy(pChild))
                             ApproachDummy(pChild);
                     });
}

// Folds a dummy, with all dummies that hang on it without a bone in between, into the bone above it.
//
// Folded one by one from the lowest up, each dummy's children would move once for each dummy above them, which costs the square of
// their number where dummies hang on dummies. What comes out of that is known beforehand: a moved bone ends in the frame of the
// bone above the topmost dummy, with the offsets of all dummies in between added to its own, and every fold puts a dummy's children
// behind the others and turns their order round. So every bone is moved once, to where it would end.
class KDummyFold
{
public:
    KDummyFold(KQexAsfNode& pNode, KQexAsfNode& pDummy, const KFrameFlags& pFlags) : mNode(pNode), mDummy(pDummy), mFlags(pFlags) {}

    // Moves the bones and releases the dummies. There must be room for the bones.
    void Fold()
    {
        KQexAsfWalk lWalk(&mDummy, KQexAsfWalk::eALTERNATING);
        while (HKQexAsfNode lBone = lWalk.Next())
        {
            if (!IsDummy(*lBone))
                lWalk.SkipChildren();
            else if (lWalk.IsEntering())
                Enter(*lBone, lWalk);
            else
                Leave(*lBone, lWalk);
        }
    }

private:
    // Below the topmost dummy a list is turned round once for each dummy above it; where it is not, its bones come before what the
    // dummies in it hold, else behind.
    void Enter(KQexAsfNode& pDummy, const KQexAsfWalk& pWalk)
    {
        const KQexAsfNode* lAbove = pWalk.GetAbove();
        mDepth++;
        mAdditions += kAdditionsPerBone;
        // The sum from the topmost dummy on, in a field that no one reads again.
        if (lAbove)
            KgeAdd(pDummy.mLT, lAbove->mLT, pDummy.mParentPositionV);
        else
            KgeSet(pDummy.mLT, pDummy.mParentPositionV);
        if (!pWalk.IsForward())
            for (int lIter = 0; lIter < pDummy.mChildBuf.GetCount(); lIter++)
                Move(pDummy, pDummy.mChildBuf[lIter], pWalk);
    }

    void Leave(KQexAsfNode& pDummy, KQexAsfWalk& pWalk)
    {
        if (pWalk.IsForward())
            for (int lIter = pDummy.mChildBuf.GetCount() - 1; lIter >= 0; lIter--)
                Move(pDummy, pDummy.mChildBuf[lIter], pWalk);
        mDepth--;
        if (pWalk.GetAbove())
            pWalk.ClearEntry();
        pDummy.mChildBuf.Clear();
        if (&pDummy != &mDummy)
            QexSdkDelete(&pDummy);
    }

    void Move(const KQexAsfNode& pDummy, HKQexAsfNode pBone, const KQexAsfWalk& pWalk)
    {
        if (!pBone || IsDummy(*pBone))
            return;
        KgeSet(pBone->mParentAxisRM, mDummy.mParentAxisRM);
        KgeSet(pBone->mParentAxisRMInv, mDummy.mParentAxisRMInv);
        AddOffsets(pDummy, *pBone, pWalk);
        mNode.AddChild(pBone);
        SetLocals(*pBone, mFlags.mSetRotatePivotOffet, mFlags.mSetPreRotation);
    }

    // Added from the lowest dummy up, as folding one by one would, so that the sum has the same bits. Where bones hang on hundreds of
    // dummies in a row at every height that would be the square of their number again: there, the sum of all dummies above is added.
    void AddOffsets(const KQexAsfNode& pDummy, KQexAsfNode& pBone, const KQexAsfWalk& pWalk)
    {
        mAdditions += kAdditionsPerBone - mDepth;
        if (mAdditions < 0)
        {
            mAdditions += mDepth;
            KgeAdd(pBone.mParentPositionV, pDummy.mLT, pBone.mParentPositionV);
            return;
        }
        for (const KQexAsfNode* lDummy = &pDummy; lDummy; lDummy = pWalk.GetAbove(*lDummy))
            KgeAdd(pBone.mParentPositionV, lDummy->mParentPositionV, pBone.mParentPositionV);
    }

    /// Dummies and moved bones give that many additions, which is more than skeletons need.
    static constexpr int kAdditionsPerBone = 64;

    KQexAsfNode& mNode;
    KQexAsfNode& mDummy;
    KFrameFlags  mFlags;
    int          mDepth = 0;     ///< Dummies from the topmost one to the one entered.
    long long    mAdditions = 0; ///< How many may still be made.
};

// How many bones folding the dummy would move.
int CountBelowDummies(KQexAsfNode& pDummy)
{
    int         lCount = 0;
    KQexAsfWalk lWalk(&pDummy);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (IsDummy(*lBone) || !lWalk.IsEntering())
            continue;
        ApproachMoved(*lBone);
        lCount++;
        lWalk.SkipChildren();
    }
    return lCount;
}

// Takes the dummies out of the children, as far as there is room for the bones that they hold. Those that hold none are gone then.
// Returns whether a child has, or will have, anything below it.
bool TakeDummies(KQexAsfNode& pNode, KTakenBones& pTaken)
{
    bool lDeeper = false;
    // The count as it would be if each dummy went by itself: its bones come before it goes.
    int lCount = pNode.mChildBuf.GetCount();
    for (int lIter = lCount - 1; lIter >= 0; lIter--)
    {
        HKQexAsfNode lChild = pNode.mChildBuf[lIter];
        if (const KQexAsfNode* lAhead = pNode.mChildBuf[lIter - kChildrenAhead])
            KPrefetch(&lAhead->mParent, &lAhead->mOrderCount + 1);
        const KQexAsfNode* lNear = pNode.mChildBuf[lIter - kChildrenAhead / 2];
        if (lNear && IsDummy(*lNear))
            ApproachDummy(*lNear);
        if (!lChild)
            continue;
        lDeeper = lDeeper || lChild->mChildBuf.GetCount() > 0;
        if (!IsDummy(*lChild))
            continue;
        const int lMoved = CountBelowDummies(*lChild);
        if (!pNode.mChildBuf.Reserve(lCount + lMoved))
            continue;
        lCount += lMoved - 1;
        pNode.mChildBuf.SetAt(lIter, nullptr);
        if (lChild->mChildBuf.GetCount() == 0)
            QexSdkDelete(lChild);
        else
            pTaken.Append(lChild);
    }
    CloseGaps(pNode.mChildBuf);
    return lDeeper;
}

// Returns as TakeDummies() does.
bool FoldDummies(KQexAsfNode& pNode, const KFrameFlags& pFlags)
{
    KTakenBones lTaken;
    const bool  lDeeper = TakeDummies(pNode, lTaken);
    while (HKQexAsfNode lDummy = lTaken.TakeFirst())
    {
        KDummyFold(pNode, *lDummy, pFlags).Fold();
        QexSdkDelete(lDummy);
    }
    return lDeeper;
}

bool IsEndSite(const KQexAsfNode& pNode)
{
    // The length is compared exactly: a bone that has any length is kept.
    return pNode.mChildBuf.GetCount() == 0 && pNode.mLength == 0.0 && !(pNode.mLTNode && pNode.mLTNode->IsAnimated(true)) &&
           !(pNode.mLRNode && pNode.mLRNode->IsAnimated(true));
}

void RemoveEndSiteChildren(KQexAsfNode& pNode)
{
    KTakenBones lTaken;
    for (int lIter = pNode.mChildBuf.GetCount() - 1; lIter >= 0; lIter--)
    {
        HKQexAsfNode lChild = pNode.mChildBuf[lIter];
        if (!lChild || !IsEndSite(*lChild))
            continue;
        pNode.mChildBuf.SetAt(lIter, nullptr);
        lTaken.Append(lChild);
    }
    CloseGaps(pNode.mChildBuf);
    while (HKQexAsfNode lEndSite = lTaken.TakeFirst())
        QexSdkDelete(lEndSite);
}

} // namespace

void KQexAsfNode::RemoveDummy(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexAsfLevels lLevels(this, KQexAsfLevels::eWITH_CHILDREN);
    while (HKQexAsfNode lNode = lLevels.Next())
    {
        ApproachFolds(*lNode, lLevels);
        if (!FoldDummies(*lNode, {pSetRotatePivotOffet, pSetPreRotation}))
            lLevels.SkipChildren();
    }
    if (!lLevels.HasFailed())
        return;
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
        if (lWalk.IsEntering())
            FoldDummies(*lNode, {pSetRotatePivotOffet, pSetPreRotation});
}

void KQexAsfNode::RemoveEndSite()
{
    // The children are judged before the walk goes into them, deliberately: a bone that becomes a leaf in this call is kept, so
    // that one call takes off one level.
    KQexAsfWalk lWalk(this, KQexAsfWalk::eLAST_TO_FIRST);
    while (HKQexAsfNode lNode = lWalk.Next())
        if (lWalk.IsEntering())
            RemoveEndSiteChildren(*lNode);
}

} // namespace qexsdk
