#include <qexioplugins/acclaim/asf/kqexasfnameindex.h>

#include <algorithm>
#include <functional>

namespace qexsdk
{

namespace
{

/// Maximum number of heap entries pushed per move.
constexpr int kMaxPushes = 16;

} // namespace

void KQexAsfNameIndex::Update(HKQexAsfNode pRoot)
{
    if (mBones.empty())
    {
        Add(pRoot, 0, 0);
    }
    size_t lFirst = mBones.size();
    for (; mKnownChildren < pRoot->mChildBuf.GetCount(); ++mKnownChildren)
    {
        Add(pRoot->mChildBuf[mKnownChildren], 0, mKnownChildren);
    }
    // A tree that was not read here may be deeper. Level order is enough: mOrder is compared among siblings only.
    for (; lFirst < mBones.size(); ++lFirst)
    {
        const auto& lChildren = mBones[lFirst].mNode->mChildBuf;
        for (int i = 0; i < lChildren.GetCount(); ++i)
        {
            Add(lChildren[i], static_cast<int>(lFirst), i);
        }
    }
}

void KQexAsfNameIndex::Add(HKQexAsfNode pNode, int pParent, int pEntry)
{
    const int lBone = static_cast<int>(mBones.size());
    mBones.push_back({pNode, &mNames[pNode->mName], pParent, pParent == 0 ? lBone : pParent, mNextOrder++, pEntry});
    AddName(lBone);
}

void KQexAsfNameIndex::AddName(int pBone)
{
    KName& lName = *At(pBone).mName;
    if (lName.mBone == kNone && lName.mDuplicates.empty())
    {
        lName.mBone = pBone;
        return;
    }
    if (lName.mBone != kNone)
    {
        AddDuplicate(lName.mBone);
        lName.mBone = kNone;
    }
    AddDuplicate(pBone);
}

void KQexAsfNameIndex::AddDuplicate(int pBone)
{
    KBone& lTop = At(FindTop(pBone));
    At(pBone).mNextDuplicate = pBone;
    if (lTop.mDuplicates == kNone)
    {
        lTop.mDuplicates = pBone;
    }
    std::swap(At(pBone).mNextDuplicate, At(lTop.mDuplicates).mNextDuplicate);
    PushDuplicate(pBone);
}

void KQexAsfNameIndex::PushDuplicate(int pBone)
{
    std::vector<KDuplicate>& lDuplicates = At(pBone).mName->mDuplicates;
    lDuplicates.emplace_back(OrderOf(pBone), pBone);
    std::push_heap(lDuplicates.begin(), lDuplicates.end(), std::greater<>());
}

/// Pushes new heap entries for a ring of bones whose order became lower. For a large ring the heaps are only marked as stale and rebuilt
/// on demand: a large subtree may move repeatedly.
void KQexAsfNameIndex::PushDuplicates(int pRing)
{
    int lDuplicate = pRing;
    for (int i = 0; i < kMaxPushes; ++i)
    {
        PushDuplicate(lDuplicate);
        lDuplicate = At(lDuplicate).mNextDuplicate;
        if (lDuplicate == pRing)
        {
            return;
        }
    }
    ++mGeneration;
}

int KQexAsfNameIndex::Find(const char* pName)
{
    const auto lName = mNames.find(pName);
    if (lName == mNames.end())
    {
        return kNone;
    }
    return lName->second.mBone != kNone ? lName->second.mBone : FirstOf(lName->second);
}

/// The first in pre-order of several bones of one name: it is below the root child with the lowest order.
int KQexAsfNameIndex::FirstOf(KName& pName)
{
    std::vector<KDuplicate>& lDuplicates = pName.mDuplicates;
    if (pName.mGeneration != mGeneration)
    {
        for (KDuplicate& lDuplicate : lDuplicates)
        {
            lDuplicate.first = OrderOf(lDuplicate.second);
        }
        std::make_heap(lDuplicates.begin(), lDuplicates.end(), std::greater<>());
        pName.mGeneration = mGeneration;
    }
    // The order of bones below one root child never changes: only whole subtrees move, and only away from the root. So all but the first
    // of them can leave the heap for good.
    const unsigned   lOrder = GetLowest(lDuplicates).first;
    std::vector<int> lTied;
    while (!lDuplicates.empty() && GetLowest(lDuplicates).first == lOrder)
    {
        lTied.push_back(lDuplicates.front().second);
        std::pop_heap(lDuplicates.begin(), lDuplicates.end(), std::greater<>());
        lDuplicates.pop_back();
    }
    const int lFirst = lTied.size() == 1 ? lTied.front() : FirstInPreOrder(lTied);
    lDuplicates.emplace_back(lOrder, lFirst);
    std::push_heap(lDuplicates.begin(), lDuplicates.end(), std::greater<>());
    return lFirst;
}

/// The lowest entry of the heap. Updates stale entries at the front until the first is current.
KQexAsfNameIndex::KDuplicate KQexAsfNameIndex::GetLowest(std::vector<KDuplicate>& pDuplicates)
{
    for (;;)
    {
        const unsigned lOrder = OrderOf(pDuplicates.front().second);
        if (lOrder == pDuplicates.front().first)
        {
            return pDuplicates.front();
        }
        std::pop_heap(pDuplicates.begin(), pDuplicates.end(), std::greater<>());
        pDuplicates.back().first = lOrder;
        std::push_heap(pDuplicates.begin(), pDuplicates.end(), std::greater<>());
    }
}

/// The first in pre-order of bones below the same root child: walks up from each until it meets an earlier path, then down the first
/// branches.
int KQexAsfNameIndex::FirstInPreOrder(const std::vector<int>& pBones)
{
    const int lTop = FindTop(pBones.front());
    ++mSearches;
    for (int lChild : pBones)
    {
        At(lChild).mTargetSearch = mSearches;
        for (bool lIsNew = true; lIsNew && lChild != lTop; lChild = At(lChild).mParent)
        {
            KBone& lParent = At(At(lChild).mParent);
            lIsNew = lParent.mPathSearch != mSearches;
            lParent.mPathSearch = mSearches;
            if (lIsNew || At(lChild).mOrder < At(lParent.mFirstChild).mOrder)
            {
                lParent.mFirstChild = lChild;
            }
        }
    }
    int lFirst = lTop;
    while (At(lFirst).mTargetSearch != mSearches)
    {
        lFirst = At(lFirst).mFirstChild;
    }
    return lFirst;
}

/// The root child that pBone is or is below: union-find with path halving.
int KQexAsfNameIndex::FindTop(int pBone)
{
    while (At(pBone).mSetParent != pBone)
    {
        At(pBone).mSetParent = At(At(pBone).mSetParent).mSetParent;
        pBone = At(pBone).mSetParent;
    }
    return pBone;
}

bool KQexAsfNameIndex::Move(int pBone, int pParent)
{
    KBone&       lBone = At(pBone);
    HKQexAsfNode lRoot = At(0).mNode;
    if (!At(pParent).mNode->AddChild(lBone.mNode))
    {
        return false;
    }
    lRoot->mChildBuf.SetAt(lBone.mEntry, nullptr);
    lBone.mEntry = lRoot->mChildBuf.GetCount() - 1;
    const unsigned lFormerOrder = lBone.mOrder;
    lBone.mOrder = mNextOrder++;
    lBone.mParent = pParent;
    lBone.mSetParent = pParent == 0 ? pBone : FindTop(pParent);
    if (lBone.mDuplicates != kNone)
    {
        if (OrderOf(pBone) < lFormerOrder)
        {
            PushDuplicates(lBone.mDuplicates);
        }
        KBone& lTop = At(lBone.mSetParent);
        lTop.mDuplicates = lTop.mDuplicates == kNone ? lBone.mDuplicates : lTop.mDuplicates;
        if (lTop.mDuplicates != lBone.mDuplicates)
        {
            std::swap(At(lTop.mDuplicates).mNextDuplicate, At(lBone.mDuplicates).mNextDuplicate);
        }
    }
    return true;
}

void KQexAsfNameIndex::RemoveNulls()
{
    if (!mBones.empty())
    {
        At(0).mNode->mChildBuf.RemoveIf([](const KQexAsfNode* pChild) { return pChild == nullptr; });
    }
}

} // namespace qexsdk
