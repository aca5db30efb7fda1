#include <qexioplugins/acclaim/asf/kqexasfnameindex.h>

#include <algorithm>
#include <functional>

namespace qexsdk
{

namespace
{

/// Entries added to heaps for one move at most.
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
    // A tree that was not read here may be deeper. Level by level does as well as pre-order: places count among the children of one
    // parent only.
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
    mBones.push_back({pNode, &mNames[pNode->mName], pParent, pParent == 0 ? lBone : pParent, mNextPlace++, pEntry});
    AddName(lBone);
}

void KQexAsfNameIndex::AddName(int pBone)
{
    KName& lName = *At(pBone).mName;
    if (lName.mBone == kNone && lName.mTwins.empty())
    {
        lName.mBone = pBone;
        return;
    }
    if (lName.mBone != kNone)
    {
        AddTwin(lName.mBone);
        lName.mBone = kNone;
    }
    AddTwin(pBone);
}

void KQexAsfNameIndex::AddTwin(int pBone)
{
    KBone& lTop = At(TopOf(pBone));
    At(pBone).mNextTwin = pBone;
    if (lTop.mTwins == kNone)
    {
        lTop.mTwins = pBone;
    }
    std::swap(At(pBone).mNextTwin, At(lTop.mTwins).mNextTwin);
    PushTwin(pBone);
}

void KQexAsfNameIndex::PushTwin(int pBone)
{
    std::vector<KTwin>& lTwins = At(pBone).mName->mTwins;
    lTwins.emplace_back(PlaceOf(pBone), pBone);
    std::push_heap(lTwins.begin(), lTwins.end(), std::greater<>());
}

/// The bones of the ring came to a lower place, which their heaps do not show by themselves. For many bones the places are computed anew
/// where they are needed: a large subtree may move again and again.
void KQexAsfNameIndex::PushTwins(int pRing)
{
    int lTwin = pRing;
    for (int i = 0; i < kMaxPushes; ++i)
    {
        PushTwin(lTwin);
        lTwin = At(lTwin).mNextTwin;
        if (lTwin == pRing)
        {
            return;
        }
    }
    ++mAdvances;
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

/// The first in pre-order of several bones of one name: one below the child of the root with the lowest place.
int KQexAsfNameIndex::FirstOf(KName& pName)
{
    std::vector<KTwin>& lTwins = pName.mTwins;
    if (pName.mAdvances != mAdvances)
    {
        for (KTwin& lTwin : lTwins)
        {
            lTwin.first = PlaceOf(lTwin.second);
        }
        std::make_heap(lTwins.begin(), lTwins.end(), std::greater<>());
        pName.mAdvances = mAdvances;
    }
    // The order of bones below one child of the root never changes, as only whole subtrees move, and only away from the root. So those
    // that are not the first of them never will be, and leave the heap.
    const unsigned   lPlace = GetLowest(lTwins).first;
    std::vector<int> lTied;
    while (!lTwins.empty() && GetLowest(lTwins).first == lPlace)
    {
        lTied.push_back(lTwins.front().second);
        std::pop_heap(lTwins.begin(), lTwins.end(), std::greater<>());
        lTwins.pop_back();
    }
    const int lFirst = lTied.size() == 1 ? lTied.front() : FirstInPreOrder(lTied);
    lTwins.emplace_back(lPlace, lFirst);
    std::push_heap(lTwins.begin(), lTwins.end(), std::greater<>());
    return lFirst;
}

/// Brings the places in front of the heap up to date, until the lowest is.
KQexAsfNameIndex::KTwin KQexAsfNameIndex::GetLowest(std::vector<KTwin>& pTwins)
{
    for (;;)
    {
        const unsigned lPlace = PlaceOf(pTwins.front().second);
        if (lPlace == pTwins.front().first)
        {
            return pTwins.front();
        }
        std::pop_heap(pTwins.begin(), pTwins.end(), std::greater<>());
        pTwins.back().first = lPlace;
        std::push_heap(pTwins.begin(), pTwins.end(), std::greater<>());
    }
}

/// The first of bones below the same child of the root: walks up from each until a path is met that was walked before, then down the first
/// branches.
int KQexAsfNameIndex::FirstInPreOrder(const std::vector<int>& pBones)
{
    const int lTop = TopOf(pBones.front());
    ++mSearches;
    for (int lChild : pBones)
    {
        At(lChild).mSought = mSearches;
        for (bool lIsNew = true; lIsNew && lChild != lTop; lChild = At(lChild).mParent)
        {
            KBone& lParent = At(At(lChild).mParent);
            lIsNew = lParent.mPassed != mSearches;
            lParent.mPassed = mSearches;
            if (lIsNew || At(lChild).mPlace < At(lParent.mFirstChild).mPlace)
            {
                lParent.mFirstChild = lChild;
            }
        }
    }
    int lFirst = lTop;
    while (At(lFirst).mSought != mSearches)
    {
        lFirst = At(lFirst).mFirstChild;
    }
    return lFirst;
}

/// The child of the root that pBone is or is below. Halves the paths that it takes, so that they stay short.
int KQexAsfNameIndex::TopOf(int pBone)
{
    while (At(pBone).mUp != pBone)
    {
        At(pBone).mUp = At(At(pBone).mUp).mUp;
        pBone = At(pBone).mUp;
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
    const unsigned lFormerPlace = lBone.mPlace;
    lBone.mPlace = mNextPlace++;
    lBone.mParent = pParent;
    lBone.mUp = pParent == 0 ? pBone : TopOf(pParent);
    if (lBone.mTwins != kNone)
    {
        if (PlaceOf(pBone) < lFormerPlace)
        {
            PushTwins(lBone.mTwins);
        }
        KBone& lTop = At(lBone.mUp);
        lTop.mTwins = lTop.mTwins == kNone ? lBone.mTwins : lTop.mTwins;
        if (lTop.mTwins != lBone.mTwins)
        {
            std::swap(At(lTop.mTwins).mNextTwin, At(lBone.mTwins).mNextTwin);
        }
    }
    return true;
}

void KQexAsfNameIndex::CloseGaps()
{
    if (!mBones.empty())
    {
        At(0).mNode->mChildBuf.RemoveIf([](const KQexAsfNode* pChild) { return pChild == nullptr; });
    }
}

} // namespace qexsdk
