#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/model/kqexasflocals.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <cstdio>

namespace qexsdk
{

namespace
{

/// Creates a host node with a skeleton attribute; null when memory ran out.
KQexNode* CreateSkeletonNode(KQexScene* pScene, const char* pName)
{
    KQexNode*     lNode = KQexNode::Create(pScene, pName);
    KQexSkeleton* lSkeleton = lNode != nullptr ? KQexSkeleton::Create(pScene, "") : nullptr;
    if (lSkeleton == nullptr)
    {
        if (lNode != nullptr)
        {
            lNode->Destroy(true);
        }
        return nullptr;
    }
    lNode->SetNodeAttribute(lSkeleton);
    lSkeleton->SetSkeletonType(KQexSkeleton::eSKELETON_JOINT);
    return lNode;
}

/// Adds the end node of a leaf bone. It never moves, so it gets no curves, no rotation order and no limits.
bool AddEndNode(const KQexAsfNode& pNode, KQexNode& pQexNode, KQexScene* pScene, KQexFrameFlags pFlags)
{
    char lName[1024];
    std::snprintf(lName, sizeof(lName), "%s%s", pNode.mName, "_End");
    KQexNode* lEnd = CreateSkeletonNode(pScene, lName);
    if (lEnd == nullptr)
    {
        return false;
    }

    KgeTVector lT;
    KgeMult(lT, pNode.mAxisRMInv, pNode.mPositionV);
    if (pFlags.mSetRotatePivotOffet)
    {
        lEnd->SetRotationOffset(kPivotSet0, KQexVector4(lT));
    }
    else
    {
        lEnd->mLocalTranslation.Set(qexVectorTemplate3<double>(lT.mData[0], lT.mData[1], lT.mData[2]));
    }
    return pQexNode.AddChild(lEnd);
}

/// Rows of the limit tables for the x, y and z components of a limits object.
const int kTranslationRows[3] = {0, 1, 2};
const int kRotationRows[3] = {5, 4, 3};

bool AnyActive(const bool (&pActive)[6][2], const int (&pRows)[3])
{
    for (int lRow : pRows)
    {
        if (pActive[lRow][0] || pActive[lRow][1])
        {
            return true;
        }
    }
    return false;
}

KQexVector4 ActiveBounds(const KQexAsfNode& pNode, const int (&pRows)[3], int pBound)
{
    KQexVector4 lValues(0.0, 0.0, 0.0, 0.0);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        if (pNode.mLimitsActive[pRows[lIter]][pBound])
        {
            lValues[lIter] = pNode.mLimitsBuf[pRows[lIter]][pBound];
        }
    }
    return lValues;
}

void CopyLimits(KQexLimits& pLimits, const KQexAsfNode& pNode, const int (&pRows)[3])
{
    const bool(&lActive)[6][2] = pNode.mLimitsActive;
    pLimits.SetLimitMinActive(lActive[pRows[0]][0], lActive[pRows[1]][0], lActive[pRows[2]][0]);
    pLimits.SetLimitMaxActive(lActive[pRows[0]][1], lActive[pRows[1]][1], lActive[pRows[2]][1]);
    pLimits.SetLimitMin(ActiveBounds(pNode, pRows, 0));
    pLimits.SetLimitMax(ActiveBounds(pNode, pRows, 1));
}

} // namespace

void KQexAsfNode::SetDoFs(KQexNode* pQexNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KgeRMatrix lPAxisRMInv;
    if (mParent)
    {
        KgeInverse(lPAxisRMInv, mParent->mAxisRM);
    }
    else if (pSetRotatePivotOffet)
    {
        KgeSet(mParentPositionV, mPositionV); // Deliberately permanent: the root's offset is its own position.
    }

    KgeTVector lTOffset;
    KgeMult(lTOffset, lPAxisRMInv, mParentPositionV);
    KgeRMatrix lAxisRM;
    KgeMult(lAxisRM, lPAxisRMInv, mAxisRM);
    KgeRVector lPreR;
    KgeSet(lPreR, lAxisRM);

    pQexNode->SetRotationActive(true);
    // The math library's order codes are twice the host's.
    const int lRotOrder = EulerOrderFromOrderBuf(mOrderBuf, mOrderCount);
    pQexNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(lRotOrder / 2));
    if (pSetRotatePivotOffet)
    {
        pQexNode->SetRotationOffset(kPivotSet0, KQexVector4(lTOffset));
    }
    if (pSetPreRotation)
    {
        pQexNode->SetPreRotation(kPivotSet0, KQexVector4(lPreR));
    }
}

void KQexAsfNode::SetLimits(KQexNode* pQexNode, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    KQexNodeLimits& lNodeLimits = pQexNode->GetLimits();
    if (pSetRotatePivotOffet && AnyActive(mLimitsActive, kTranslationRows))
    {
        lNodeLimits.SetTranslationLimitActive(true);
        CopyLimits(lNodeLimits.mTranslationLimits, *this, kTranslationRows);
    }
    if (pSetPreRotation && AnyActive(mLimitsActive, kRotationRows))
    {
        lNodeLimits.SetRotationLimitActive(true);
        CopyLimits(lNodeLimits.mRotationLimits, *this, kRotationRows);
    }
}

namespace
{

struct KImportFlags
{
    bool           mSetLimits;
    KQexFrameFlags mFrame;
};

/// Creates the host node of one bone, below pParent unless that is null; null, and no node, when memory ran out. The node is attached
/// before it has children, so that AddChild() does not search the ancestors for a cycle.
KQexNode* CreateBoneNode(KQexAsfNode& pNode, KQexScene* pScene, KQexNode* pParent, const char* pTakeName, const KImportFlags& pFlags)
{
    KQexNode* lNode = CreateSkeletonNode(pScene, pNode.mName);
    if (lNode == nullptr)
    {
        return nullptr;
    }
    const bool lIsAttached = pParent == nullptr || pParent->AddChild(lNode);
    const bool lHasCurves = pNode.SetKFCurves(lNode, pTakeName);
    pNode.SetDoFs(lNode, pFlags.mFrame.mSetRotatePivotOffet, pFlags.mFrame.mSetPreRotation);
    if (pFlags.mSetLimits)
    {
        pNode.SetLimits(lNode, pFlags.mFrame.mSetRotatePivotOffet, pFlags.mFrame.mSetPreRotation);
    }
    const bool lNeedsEnd = pNode.mChildBuf.GetCount() == 0 && pNode.mLength > 0.0;
    const bool lHasEnd = !lNeedsEnd || AddEndNode(pNode, *lNode, pScene, pFlags.mFrame);
    if (lIsAttached && lHasCurves && lHasEnd)
    {
        return lNode;
    }
    lNode->Destroy(true);
    return nullptr;
}

/// Creates host nodes for a bone and all below it, the top one below pParent unless that is null; null, and no nodes, when memory ran out.
KQexNode* CreateTree(KQexAsfNode& pTop, KQexScene* pScene, KQexNode* pParent, const char* pTakeName, const KImportFlags& pFlags)
{
    KQexNode*   lTop = nullptr;
    KQexNode*   lParent = pParent;
    KQexAsfWalk lWalk(&pTop);
    while (HKQexAsfNode lAsfNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lParent = lParent->GetParent();
            continue;
        }
        lParent = CreateBoneNode(*lAsfNode, pScene, lParent, pTakeName, pFlags);
        if (lTop == nullptr)
        {
            lTop = lParent;
        }
        if (lParent == nullptr)
        {
            if (lTop != nullptr)
            {
                lTop->Destroy(true);
            }
            return nullptr;
        }
    }
    return lTop;
}

} // namespace

KQexNode* KQexAsfNode::ASFToQEX(KQexScene* pScene, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    return CreateTree(*this, pScene, nullptr, pTakeName, {pSetLimits, {pSetRotatePivotOffet, pSetPreRotation}});
}

bool KQexAsfNode::MergeASFToQEX(KQexScene* pScene, KQexNode* pParent, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet,
                                bool pSetPreRotation)
{
    bool              lAll = true;
    KQexNode*         lParent = pParent;
    KQexAsfChildIndex lIndex;
    KQexAsfWalk       lWalk(this);
    while (HKQexAsfNode lAsfNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lParent = lParent->GetParent();
            continue;
        }
        KQexNode* lNode = lIndex.Find(*lParent, lAsfNode->mName);
        if (lNode != nullptr && lNode->GetSkeleton() != nullptr)
        {
            // An existing node keeps its offsets, its order and its limits.
            lAll = lAsfNode->SetKFCurves(lNode, pTakeName) && lAll;
            lParent = lNode;
            continue;
        }
        // Deliberate: a node of that name without a skeleton attribute stays next to the new one.
        lAll = CreateTree(*lAsfNode, pScene, lParent, pTakeName, {pSetLimits, {pSetRotatePivotOffet, pSetPreRotation}}) != nullptr && lAll;
        lWalk.SkipChildren();
    }
    return lAll;
}

KQexNode* KQexAsfScene::ASFToQEX(KQexScene* pScene, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet, bool pSetPreRotation)
{
    if (!mRoot)
    {
        return nullptr;
    }
    return mRoot->ASFToQEX(pScene, pTakeName, pSetLimits, pSetRotatePivotOffet, pSetPreRotation);
}

bool KQexAsfScene::MergeASFToQEX(KQexScene* pScene, KQexNode* pRootNode, const char* pTakeName, bool pSetLimits, bool pSetRotatePivotOffet,
                                 bool pSetPreRotation)
{
    if (!mRoot)
    {
        return true;
    }
    KQexNode* lNode = pRootNode->FindChild(mRoot->mName, true, false);
    // The merge starts at the parent, where it finds the node again as a child.
    if (lNode != nullptr && lNode->GetParent() != nullptr)
    {
        return mRoot->MergeASFToQEX(pScene, lNode->GetParent(), pTakeName, pSetLimits, pSetRotatePivotOffet, pSetPreRotation);
    }
    return CreateTree(*mRoot, pScene, pRootNode, pTakeName, {pSetLimits, {pSetRotatePivotOffet, pSetPreRotation}}) != nullptr;
}

} // namespace qexsdk
