#include <qexscene/kqexglobaltransforms.h>

#include <kbaselib/kbase/kmemory.h>
#include <qexscene/kqexnode.h>
#include <qexscene/kqexscene.h>

#include <new>
#include <type_traits>

namespace qexsdk
{

KQexGlobalTransforms::~KQexGlobalTransforms()
{
    QexSdkFree(mItems);
}

void KQexGlobalTransforms::Clear()
{
    mCount = 0;
    mScene = 0;
}

int KQexGlobalTransforms::Find(const KQexNode* pNode) const
{
    for (int lIndex = 0; lIndex < mCount; ++lIndex)
    {
        if (mItems[lIndex].mNode == pNode)
        {
            return lIndex;
        }
    }
    return -1;
}

bool KQexGlobalTransforms::Reserve(int pCount)
{
    static_assert(std::is_trivially_destructible_v<KItem>, "items are freed without destruction");
    if (pCount <= mCapacity)
    {
        return true;
    }
    void* lMemory = QexSdkMalloc(static_cast<std::size_t>(pCount) * sizeof(KItem));
    if (lMemory == nullptr)
    {
        return false;
    }
    QexSdkFree(mItems);
    mItems = static_cast<KItem*>(lMemory);
    mCapacity = pCount;
    return true;
}

bool KQexGlobalTransforms::Collect(KQexNode* pRoot, const KQexAnimLayer* pLayer)
{
    const KQexScene* lScene = pRoot->GetScene();
    if (mScene == lScene->GetSerial() && mVersion == lScene->GetVersion() && mRoot == pRoot && mLayer == pLayer)
    {
        return true;
    }
    Clear();
    if (!Reserve(1 + pRoot->GetChildCount(true)))
    {
        return false;
    }
    int lParent = -1;
    for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        // Pre-order: the parent is the previous item or one of its ancestors.
        lParent = mCount - 1;
        while (lParent >= 0 && mItems[lParent].mNode != lNode->GetParent())
        {
            lParent = mItems[lParent].mParent;
        }
        KItem* lItem = new (mItems + mCount) KItem;
        lItem->mNode = lNode;
        lItem->mParent = lParent;
        KQexChannel::Find(lItem->mChannels, lNode->mLocalTranslation, pLayer);
        KQexChannel::Find(lItem->mChannels + 3, lNode->mLocalRotation, pLayer);
        KQexChannel::Find(lItem->mChannels + 6, lNode->mLocalScaling, pLayer);
        ++mCount;
    }
    mScene = lScene->GetSerial();
    mVersion = lScene->GetVersion();
    mRoot = pRoot;
    mLayer = pLayer;
    return true;
}

void KQexGlobalTransforms::Evaluate(const KQexMatrix& pParentTransform, KTime pTime)
{
    KQexKeyTimes::KCursor lCursor;
    for (int lIndex = 0; lIndex < mCount; ++lIndex)
    {
        KItem& lItem = mItems[lIndex];
        double lValues[9];
        for (int lI = 0; lI < 9; ++lI)
        {
            lValues[lI] = lItem.mChannels[lI].Evaluate(pTime, lCursor);
        }
        KQexMatrix lLocal;
        lItem.mNode->ComposeLocalTransform(lLocal, lValues, lValues + 3, lValues + 6);
        const KQexMatrix& lParent = lItem.mParent >= 0 ? mItems[lItem.mParent].mTransform : pParentTransform;
        lItem.mTransform = lParent * lLocal;
    }
}

} // namespace qexsdk
