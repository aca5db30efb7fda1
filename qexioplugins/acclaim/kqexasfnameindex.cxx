#include <kbaselib/kbase/kbits.h>
#include <kbaselib/kbase/kprefetch.h>
#include <qexioplugins/acclaim/kqexasflocals.h>
#include <qexioplugins/acclaim/kqexasfnameindex.h>

#include <climits>
#include <cstring>
#include <memory>

namespace qexsdk
{

namespace
{

constexpr int kFirstRoom = 64;

/// Bones by which a walk asks for what it will need ahead of itself.
constexpr int kBonesAhead = 4;
constexpr int kMovesAhead = 12;

constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;

/// Where hashes begin: the place of the program in memory, which systems choose anew for each run, so that no file can be written whose
/// names all meet in one place of the table.
uint64_t Seed()
{
    static const char sPlace = '\0';
    return reinterpret_cast<uintptr_t>(&sPlace);
}

/// Eight characters at a time: the factor moves each bit up, and what is up there comes back down. Every bit of the text has reached all
/// places after the second turn behind it.
uint64_t Mixed(uint64_t pHash, uint64_t pText)
{
    const uint64_t lProduct = (pHash ^ pText) * kFactor;
    return lProduct ^ (lProduct >> 32);
}

constexpr size_t kEnd = sizeof(uint64_t);

/// A name of less than eight characters, such that among those of one length no two come to the same.
uint64_t ShortName(const char* pText, size_t pLength)
{
    if (pLength >= sizeof(uint32_t))
        return KBitsAt<uint32_t>(pText) | uint64_t{KBitsAt<uint32_t>(pText + pLength - sizeof(uint32_t))} << 32;
    uint64_t lText = 0;
    for (size_t i = 0; i < pLength; ++i)
        lText = lText << 8 | static_cast<unsigned char>(pText[i]);
    return lText;
}

} // namespace

KQexAsfNameIndex::KName::KName(const char* pText, size_t pLength) : mText(pText), mLength(pLength)
{
    if (pLength < kEnd)
        mEnds.mFirst = ShortName(pText, pLength);
    else
        mEnds = {KBitsAt<uint64_t>(pText), KBitsAt<uint64_t>(pText + pLength - kEnd)};
    uint64_t lHash = Mixed(Mixed(Seed() + pLength, mEnds.mFirst), mEnds.mLast);
    for (size_t i = kEnd; i + kEnd < pLength; i += kEnd)
        lHash = Mixed(lHash, KBitsAt<uint64_t>(pText + i));
    mHash = static_cast<uint32_t>(Mixed(lHash, 0));
}

KQexAsfNameIndex::~KQexAsfNameIndex()
{
    QexSdkFree(mBonesMemory);
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
    lNew.mParent = pParent;
    lNew.mUp = pParent == 0 ? lBone : pParent;
    lNew.mPlace = mNextPlace++;
    lNew.mSameName = lBone;
    lNew.mMoved = kNone;
    lNew.mAnswerFor = 0;
    lNew.mHoldsTwin = false;
    AddName(lBone);
    return true;
}

KQexAsfNameIndex::KName KQexAsfNameIndex::NameOf(const KQexAsfNode& pNode)
{
    if (mExpected.mText != pNode.mName)
        return KName(pNode.mName, std::strlen(pNode.mName));
    const KName lName = mExpected;
    mExpected = KName();
    return lName;
}

void KQexAsfNameIndex::AddName(int pBone)
{
    const KName lName = NameOf(*mBones[pBone].mNode);
    mBones[pBone].mEnds = lName.mEnds;
    mBones[pBone].mLength = static_cast<uint8_t>(lName.mLength);
    KSlot* lSlot = SlotOf(lName);
    if (lSlot->mBone == kNone)
    {
        *lSlot = {lName.mHash, pBone};
        ++mNameCount;
        return;
    }
    KBone& lTwin = mBones[lSlot->mBone];
    mBones[pBone].mSameName = lTwin.mSameName;
    lTwin.mSameName = pBone;
    mBones[TopOf(pBone)].mHoldsTwin = true;
    mBones[TopOf(lSlot->mBone)].mHoldsTwin = true;
    ++mState;
}

bool KQexAsfNameIndex::GrowBones()
{
    if (mRoom > INT_MAX / 2)
        return false;
    const int lRoom = mRoom == 0 ? kFirstRoom : mRoom * 2;
    // The allocator aligns for less than a line.
    const size_t lSize = static_cast<size_t>(lRoom) * sizeof(KBone);
    size_t       lSpace = lSize + alignof(KBone);
    void*        lMemory = QexSdkMalloc(lSpace);
    if (lMemory == nullptr)
        return false;
    void*  lAligned = lMemory;
    KBone* lBones = static_cast<KBone*>(std::align(alignof(KBone), lSize, lAligned, lSpace));
    if (mCount > 0)
        std::memcpy(lBones, mBones, static_cast<size_t>(mCount) * sizeof(KBone));
    QexSdkFree(mBonesMemory);
    mBonesMemory = lMemory;
    mBones = lBones;
    mRoom = lRoom;
    return true;
}

bool KQexAsfNameIndex::GrowTable()
{
    const size_t lSize = mTableSize == 0 ? 4 * kFirstRoom : mTableSize * 2;
    KSlot*       lTable = static_cast<KSlot*>(QexSdkMalloc(lSize * sizeof(KSlot)));
    if (lTable == nullptr)
        return false;
    for (size_t i = 0; i < lSize; ++i)
        lTable[i] = {0, kNone};
    for (size_t i = 0; i < mTableSize; ++i)
    {
        if (mTable[i].mBone == kNone)
            continue;
        size_t lPlace = mTable[i].mHash & (lSize - 1);
        while (lTable[lPlace].mBone != kNone)
            lPlace = (lPlace + 1) & (lSize - 1);
        lTable[lPlace] = mTable[i];
    }
    QexSdkFree(mTable);
    mTable = lTable;
    mTableSize = lSize;
    return true;
}

bool KQexAsfNameIndex::IsNamed(int pBone, const KName& pName) const
{
    const KBone& lBone = mBones[pBone];
    if (lBone.mEnds.mFirst != pName.mEnds.mFirst || lBone.mEnds.mLast != pName.mEnds.mLast || lBone.mLength != pName.mLength)
        return false;
    return pName.mLength <= 2 * kEnd || std::memcmp(lBone.mNode->mName, pName.mText, pName.mLength) == 0;
}

/// The slot that holds a bone of the name, or the free one where it would go.
KQexAsfNameIndex::KSlot* KQexAsfNameIndex::SlotOf(const KName& pName) const
{
    for (size_t lPlace = pName.mHash & (mTableSize - 1);; lPlace = (lPlace + 1) & (mTableSize - 1))
    {
        KSlot& lSlot = mTable[lPlace];
        if (lSlot.mBone == kNone || (lSlot.mHash == pName.mHash && IsNamed(lSlot.mBone, pName)))
            return &lSlot;
    }
}

int KQexAsfNameIndex::Find(const char* pName)
{
    return Find(KName(pName, std::strlen(pName)));
}

int KQexAsfNameIndex::Find(const KName& pName)
{
    int lBone = Guess(pName);
    if (lBone == kNone)
        lBone = LookUp(pName);
    if (lBone != kNone && lBone != mFound[0])
    {
        mFound[1] = mFound[0];
        mFound[0] = lBone;
    }
    return lBone;
}

/// Families mostly name bones in the order in which they were read, and one parent again and again: the bones found last and
/// those behind them answer most questions. kNone when none of them does, or when others share the name.
int KQexAsfNameIndex::Guess(const KName& pName) const
{
    for (const int lBone : {mFound[0], mFound[0] + 1, mFound[1], mFound[1] + 1})
        if (lBone < mCount && IsNamed(lBone, pName))
            return mBones[lBone].mSameName == lBone ? lBone : kNone;
    return kNone;
}

int KQexAsfNameIndex::LookUp(const KName& pName)
{
    KSlot* lSlot = SlotOf(pName);
    if (lSlot->mBone == kNone)
        return kNone;
    const KBone& lBone = mBones[lSlot->mBone];
    if (lBone.mSameName != lSlot->mBone && lBone.mAnswerFor != mState)
    {
        lSlot->mBone = FirstOf(lSlot->mBone);
        mBones[lSlot->mBone].mAnswerFor = mState;
    }
    return lSlot->mBone;
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

void KQexAsfNameIndex::Move(int pBone, int pParent)
{
    KBone& lBone = mBones[pBone];
    if (pParent == 0)
    {
        // To the end of the list that it stands in; the room it leaves is the room it takes.
        HKQexAsfNode lRoot = mBones[0].mNode;
        lRoot->RemoveChild(lBone.mNode);
        lRoot->AddChild(lBone.mNode);
    }
    else
    {
        // Bones that are asked for here and there lie far apart in memory. Hung over one after the other later, what each of them
        // needs can be fetched beforehand.
        mBones[mMovedCount++].mMoved = pBone;
    }
    lBone.mPlace = mNextPlace++;
    lBone.mParent = pParent;
    lBone.mUp = pParent == 0 ? pBone : TopOf(pParent);
    if (lBone.mHoldsTwin)
    {
        mBones[lBone.mUp].mHoldsTwin = true;
        ++mState;
    }
}

bool KQexAsfNameIndex::Settle()
{
    if (mMovedCount == 0)
        return true;
    const bool   lOk = HangOver();
    HKQexAsfNode lRoot = mBones[0].mNode;
    // The children stand here in the order of the list, but for those that were hung back under the root: so only of those the bone
    // itself has to be asked.
    int lBone = 0;
    lRoot->mChildBuf.RemoveIf(
        [this, lRoot, &lBone](HKQexAsfNode pChild)
        {
            while (lBone < mCount && mBones[lBone].mNode != pChild)
                ++lBone;
            return lBone < mCount ? mBones[lBone].mParent != 0 : pChild->mParent != lRoot;
        });
    mKnownChildren = lRoot->mChildBuf.GetCount();
    mMovedCount = 0;
    return lOk;
}

/// The bones of the list to their parents. Those that no memory is left for go back under the root, as far as the index knows.
bool KQexAsfNameIndex::HangOver()
{
    bool lOk = true;
    for (int i = 0; i < mMovedCount; ++i)
    {
        ApproachMove(i);
        KBone& lBone = mBones[mBones[i].mMoved];
        lOk = lOk && mBones[lBone.mParent].mNode->AddChild(lBone.mNode);
        if (!lOk)
            lBone.mParent = 0;
    }
    return lOk;
}

/// Asks for what hanging over the bones behind place pMove of the list needs, and for where that is told before.
void KQexAsfNameIndex::ApproachMove(int pMove) const
{
    if (pMove + 2 * kMovesAhead < mMovedCount)
        KPrefetch(&mBones[mBones[pMove + 2 * kMovesAhead].mMoved]);
    if (pMove + kMovesAhead >= mMovedCount)
        return;
    const KBone& lBone = mBones[mBones[pMove + kMovesAhead].mMoved];
    KPrefetch(&lBone.mNode->mParent);
    const KQexAsfNode* lParent = mBones[lBone.mParent].mNode;
    KPrefetch(&lParent->mChildBuf, &lParent->mChildBuf + 1);
}

void KQexAsfNameIndex::Approach(const KName& pName) const
{
    if (mTableSize != 0)
        KPrefetch(&mTable[pName.mHash & (mTableSize - 1)]);
}

void KQexAsfNameIndex::ApproachFound(const KName& pName) const
{
    if (mTableSize == 0)
        return;
    const int lBone = mTable[pName.mHash & (mTableSize - 1)].mBone;
    if (lBone != kNone)
        KPrefetch(&mBones[lBone]);
}

void KQexAsfNameIndex::Expect(const char* pName, size_t pLength)
{
    mExpected = KName(pName, pLength);
    Approach(mExpected);
}

/// Asks for what the frame of a bone is computed from, and for where it goes.
void KQexAsfNameIndex::ApproachFrame(int pBone) const
{
    // Where a bone's parent is told, before that.
    if (pBone + 3 * kBonesAhead < mCount)
        KPrefetch(&mBones[mBones[pBone + 3 * kBonesAhead].mParent]);
    if (pBone >= mCount)
        return;
    const KQexAsfNode* lNode = mBones[pBone].mNode;
    KPrefetch(&lNode->mOrderCount, &lNode->mLR + 1);
    if (mBones[pBone].mParent + 1 == pBone)
        return;
    const KQexAsfNode* lParent = mBones[mBones[pBone].mParent].mNode;
    KPrefetch(&lParent->mPositionV, &lParent->mAxisRM + 1);
}

void KQexAsfNameIndex::SetupPosition(bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    SetupFrame(*mBones[0].mNode, pSetRotatePivotOffet, pSetPreRotation);
    for (int lBone = 1; lBone < mCount; ++lBone)
    {
        ApproachFrame(lBone + kBonesAhead);
        KQexAsfNode& lParent = *mBones[mBones[lBone].mParent].mNode;
        // A parent that stands behind its child: its end is the one thing of it that has to be there before.
        if (mBones[lBone].mParent > lBone)
            KgeMult(lParent.mPositionV, lParent.mDirectionV, lParent.mLength);
        SetupReadFrame(*mBones[lBone].mNode, lParent, pSetRotatePivotOffet, pSetPreRotation);
    }
}

} // namespace qexsdk
