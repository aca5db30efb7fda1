#include <qexioplugins/acclaim/kqexasfnameindex.h>

#include <climits>
#include <cstring>

namespace qexsdk
{

namespace
{

constexpr int kFirstRoom = 64;

/// FNV-1a.
uint32_t HashOf(const char* pName)
{
    uint32_t lHash = 2166136261u;
    for (; *pName != '\0'; ++pName)
        lHash = (lHash ^ static_cast<unsigned char>(*pName)) * 16777619u;
    return lHash ^ (lHash >> 15);
}

} // namespace

KQexAsfNameIndex::~KQexAsfNameIndex()
{
    QexSdkFree(mBones);
    QexSdkFree(mTable);
}

bool KQexAsfNameIndex::Update(HKQexAsfNode pRoot)
{
    if (mCount == 0 && !Add(pRoot, 0))
        return false;
    int lFirst = mCount;
    for (; mKnownChildren < pRoot->mChildBuf.GetCount(); ++mKnownChildren)
        if (!Add(pRoot->mChildBuf[mKnownChildren], 0))
            return false;
    // A tree that was not read here may be deeper. The order in which bones get their places does not matter, as long as it
    // is that of the list among the children of one parent.
    for (; lFirst < mCount; ++lFirst)
    {
        const auto& lChildren = mBones[lFirst].mNode->mChildBuf;
        for (int i = 0; i < lChildren.GetCount(); ++i)
            if (!Add(lChildren[i], lFirst))
                return false;
    }
    return true;
}

bool KQexAsfNameIndex::Add(HKQexAsfNode pNode, int pParent)
{
    if ((mCount == mRoom && !GrowBones()) || (mNameCount * 2 >= mTableSize && !GrowTable()))
        return false;
    const int lBone = mCount++;
    KBone&    lNew = mBones[lBone];
    lNew.mNode = pNode;
    lNew.mHash = HashOf(pNode->mName);
    lNew.mParent = pParent;
    lNew.mUp = pParent == 0 ? lBone : pParent;
    lNew.mPlace = mNextPlace++;
    lNew.mSameName = lBone;
    lNew.mAnswerFor = 0;
    lNew.mHoldsTwin = false;
    AddName(lBone);
    return true;
}

void KQexAsfNameIndex::AddName(int pBone)
{
    int* lSlot = SlotOf(mBones[pBone].mNode->mName, mBones[pBone].mHash);
    if (*lSlot == kNone)
    {
        *lSlot = pBone;
        ++mNameCount;
        return;
    }
    mBones[pBone].mSameName = mBones[*lSlot].mSameName;
    mBones[*lSlot].mSameName = pBone;
    mBones[TopOf(pBone)].mHoldsTwin = true;
    mBones[TopOf(*lSlot)].mHoldsTwin = true;
    ++mState;
}

bool KQexAsfNameIndex::GrowBones()
{
    if (mRoom > INT_MAX / 2)
        return false;
    const int lRoom = mRoom == 0 ? kFirstRoom : mRoom * 2;
    KBone*    lBones = static_cast<KBone*>(QexSdkMalloc(static_cast<size_t>(lRoom) * sizeof(KBone)));
    if (lBones == nullptr)
        return false;
    if (mCount > 0)
        std::memcpy(lBones, mBones, static_cast<size_t>(mCount) * sizeof(KBone));
    QexSdkFree(mBones);
    mBones = lBones;
    mRoom = lRoom;
    return true;
}

bool KQexAsfNameIndex::GrowTable()
{
    const size_t lSize = mTableSize == 0 ? 4 * kFirstRoom : mTableSize * 2;
    int*         lTable = static_cast<int*>(QexSdkMalloc(lSize * sizeof(int)));
    if (lTable == nullptr)
        return false;
    for (size_t i = 0; i < lSize; ++i)
        lTable[i] = kNone;
    for (size_t i = 0; i < mTableSize; ++i)
    {
        if (mTable[i] == kNone)
            continue;
        size_t lSlot = mBones[mTable[i]].mHash & (lSize - 1);
        while (lTable[lSlot] != kNone)
            lSlot = (lSlot + 1) & (lSize - 1);
        lTable[lSlot] = mTable[i];
    }
    QexSdkFree(mTable);
    mTable = lTable;
    mTableSize = lSize;
    return true;
}

/// The slot that holds a bone of the name, or the free one where it would go.
int* KQexAsfNameIndex::SlotOf(const char* pName, uint32_t pHash) const
{
    for (size_t lSlot = pHash & (mTableSize - 1);; lSlot = (lSlot + 1) & (mTableSize - 1))
    {
        const int lBone = mTable[lSlot];
        if (lBone == kNone || (mBones[lBone].mHash == pHash && std::strcmp(mBones[lBone].mNode->mName, pName) == 0))
            return &mTable[lSlot];
    }
}

int KQexAsfNameIndex::Find(const char* pName)
{
    int* lSlot = SlotOf(pName, HashOf(pName));
    if (*lSlot != kNone && mBones[*lSlot].mSameName != *lSlot && mBones[*lSlot].mAnswerFor != mState)
    {
        *lSlot = FirstOf(*lSlot);
        mBones[*lSlot].mAnswerFor = mState;
    }
    return *lSlot;
}

/// The first in pre-order of the bones in a ring of one name. Where two of them hang below the same child of the root, their
/// order never changes any more, as only whole subtrees move and only away from the root: the later one leaves the ring.
int KQexAsfNameIndex::FirstOf(int pBone)
{
    int lBest = pBone;
    int lBefore = pBone;
    for (int lBone = mBones[pBone].mSameName; lBone != pBone; lBone = mBones[lBefore].mSameName)
    {
        const bool lFixed = TopOf(lBone) == TopOf(lBest);
        const bool lBetter = lFixed ? IsBefore(lBone, lBest) : PlaceOfTop(lBone) < PlaceOfTop(lBest);
        if (lFixed && !lBetter)
        {
            mBones[lBefore].mSameName = mBones[lBone].mSameName;
            continue;
        }
        if (lBetter)
            lBest = lBone;
        lBefore = lBone;
    }
    return lBest;
}

/// Pre-order of two bones below the same child of the root.
bool KQexAsfNameIndex::IsBefore(int pLeft, int pRight) const
{
    int        lLeft = pLeft;
    int        lRight = pRight;
    int        lLeftDepth = DepthOf(lLeft);
    int        lRightDepth = DepthOf(lRight);
    const bool lLeftHigher = lLeftDepth < lRightDepth;
    for (; lLeftDepth > lRightDepth; --lLeftDepth)
        lLeft = mBones[lLeft].mParent;
    for (; lRightDepth > lLeftDepth; --lRightDepth)
        lRight = mBones[lRight].mParent;
    if (lLeft == lRight)
        return lLeftHigher;
    while (mBones[lLeft].mParent != mBones[lRight].mParent)
    {
        lLeft = mBones[lLeft].mParent;
        lRight = mBones[lRight].mParent;
    }
    return mBones[lLeft].mPlace < mBones[lRight].mPlace;
}

int KQexAsfNameIndex::DepthOf(int pBone) const
{
    int lDepth = 0;
    for (; pBone != 0; pBone = mBones[pBone].mParent)
        ++lDepth;
    return lDepth;
}

/// The child of the root that pBone is or hangs below. Halves the ways it goes, so that they stay short.
int KQexAsfNameIndex::TopOf(int pBone)
{
    while (mBones[pBone].mUp != pBone)
    {
        mBones[pBone].mUp = mBones[mBones[pBone].mUp].mUp;
        pBone = mBones[pBone].mUp;
    }
    return pBone;
}

bool KQexAsfNameIndex::Move(int pBone, int pParent)
{
    KBone&       lBone = mBones[pBone];
    HKQexAsfNode lParent = mBones[pParent].mNode;
    if (pParent == 0)
    {
        // To the end of the list that it stands in; the room it leaves is the room it takes.
        lParent->RemoveChild(lBone.mNode);
        lParent->AddChild(lBone.mNode);
    }
    else if (!lParent->AddChild(lBone.mNode))
        return false;
    lBone.mPlace = mNextPlace++;
    lBone.mParent = pParent;
    lBone.mUp = pParent == 0 ? pBone : TopOf(pParent);
    mHasMoved = true;
    if (lBone.mHoldsTwin)
    {
        mBones[lBone.mUp].mHoldsTwin = true;
        ++mState;
    }
    return true;
}

void KQexAsfNameIndex::Compact()
{
    if (!mHasMoved)
        return;
    HKQexAsfNode lRoot = mBones[0].mNode;
    lRoot->mChildBuf.RemoveIf([lRoot](HKQexAsfNode pChild) { return pChild->mParent != lRoot; });
    mKnownChildren = lRoot->mChildBuf.GetCount();
    mHasMoved = false;
}

} // namespace qexsdk
