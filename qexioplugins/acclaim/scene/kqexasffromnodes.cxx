#include <kbaselib/kmath/keulerorder.h>
#include <qexioplugins/acclaim/kqexasfscene.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

namespace qexsdk
{

namespace
{

/// The math library's order code: twice the host's value. A spheric order counts as XYZ.
int OrderCode(ERotationOrder pOrder)
{
    return pOrder >= eEULER_XYZ && pOrder <= eEULER_ZYX ? 2 * static_cast<int>(pOrder) : 0;
}

/// Where a host child node starts, in its parent's space.
KQexVector4 ExportOffset(KQexNode& pChild, bool pExportDefaultsAsBaseTR)
{
    KQexVector4 lOffset = pChild.GetRotationOffset();
    if (!pExportDefaultsAsBaseTR)
    {
        return lOffset;
    }
    KQexVector4 lT = pChild.EvaluateLocalTranslation(KTime(0));
    lT += lOffset;
    return lT;
}

KQexVector4 LocalScale(const KQexNode& pQexNode, const KQexVector4& pBaseScale)
{
    KQexVector4 lScale(pQexNode.mLocalScaling.Get());
    lScale *= pBaseScale;
    return lScale;
}

/// Every bone starts where its parent bone ends, so children that start at different positions need a dummy each. Starts are compared
/// exactly. A single child needs one only below the root, whose bone ends where it starts.
bool MustCreateDummies(KQexNode& pQexNode, bool pIsRoot, bool pExportDefaultsAsBaseTR)
{
    const int lCount = pQexNode.GetChildCount(false);
    if (lCount == 1 && pIsRoot)
    {
        return ExportOffset(*pQexNode.GetChild(0), pExportDefaultsAsBaseTR).Length() > 0.0;
    }
    if (lCount < 2)
    {
        return false;
    }
    const KQexVector4 lFirst = ExportOffset(*pQexNode.GetChild(0), pExportDefaultsAsBaseTR);
    for (int lIter = 1; lIter < lCount; ++lIter)
    {
        if (ExportOffset(*pQexNode.GetChild(lIter), pExportDefaultsAsBaseTR) != lFirst)
        {
            return true;
        }
    }
    return false;
}

KgeRMatrix RotationXYZ(const KQexVector4& pAngles)
{
    KgeRVector lAngles;
    lAngles = pAngles;
    return KgeRMatrix(lAngles);
}

/// The product of pre-rotation, rotation at time zero and inverse post-rotation, as XYZ angles.
KQexVector4 RotationAtZero(KQexNode& pQexNode)
{
    const KgeRMatrix lPreRM = RotationXYZ(pQexNode.GetPreRotation());
    KgeRMatrix       lPostRM = RotationXYZ(pQexNode.GetPostRotation());
    KgeInverse(lPostRM, lPostRM);

    KQexVector4 lR = pQexNode.EvaluateLocalRotation(KTime(0));
    const int   lRotOrder = OrderCode(pQexNode.GetRotationOrder());
    const int*  lAxis = KmEulerAxis[lRotOrder];
    KgeRVector  lV;
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        lV.mData[lIter] = lR[lAxis[lIter]];
    }

    KgeRMatrix lRM;
    KgeSet(lRM, lV, lRotOrder);
    KgeMult(lRM, lPreRM, lRM);
    KgeMult(lRM, lRM, lPostRM);
    KgeSet(lV, lRM, 0);
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        lR[KmEulerAxis[0][lIter]] = lV.mData[lIter];
    }
    return lR;
}

void AppendDof(KQexAsfNode& pNode, int pCode)
{
    pNode.mOrderBuf[pNode.mOrderCount++] = pCode;
}

void SetDofs(KQexAsfNode& pNode, KQexNode& pQexNode, bool pTAnimated)
{
    if (pTAnimated)
    {
        for (int lCode = 0; lCode < 3; ++lCode)
        {
            AppendDof(pNode, lCode);
        }
    }
    for (int lCode = 5; lCode > 2; --lCode)
    {
        AppendDof(pNode, lCode);
    }
    OrderBufFromEulerOrder(pNode.mOrderBuf, pNode.mOrderCount, pQexNode.GetRotationOrder());
}

void CopyBounds(KQexAsfNode& pNode, const KQexLimits& pLimits, const int (&pRows)[3])
{
    bool(&lActive)[6][2] = pNode.mLimitsActive;
    pLimits.GetLimitMinActive(lActive[pRows[0]][0], lActive[pRows[1]][0], lActive[pRows[2]][0]);
    pLimits.GetLimitMaxActive(lActive[pRows[0]][1], lActive[pRows[1]][1], lActive[pRows[2]][1]);
    const KQexVector4 lMin = pLimits.GetLimitMin();
    const KQexVector4 lMax = pLimits.GetLimitMax();
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        pNode.mLimitsBuf[pRows[lIter]][0] = lMin[lIter];
        pNode.mLimitsBuf[pRows[lIter]][1] = lMax[lIter];
    }
}

/// Deliberate: rows are filled consecutively. Without translations the rotation limits, always as z, y, x, go to the first three rows,
/// whatever the DOFs are. To write them, move them to the rows of their codes.
void CopyLimitRows(KQexAsfNode& pNode, KQexNode& pQexNode, bool pTAnimated)
{
    KQexNodeLimits& lNodeLimits = pQexNode.GetLimits();
    int             lLimitCounter = 0;
    if (pTAnimated)
    {
        CopyBounds(pNode, lNodeLimits.mTranslationLimits, {0, 1, 2});
        lLimitCounter = 3;
    }
    CopyBounds(pNode, lNodeLimits.mRotationLimits, {lLimitCounter + 2, lLimitCounter + 1, lLimitCounter});
}

/// Computes the bone's frame from its offset and rotation (XYZ angles) in its parent's frame. The offset is in centimetres, before the
/// accumulated scale pGS of the bone's node and its ancestors; the length is in file units, pLengthUnit / 2.54 per centimetre.
void SetFrame(KQexAsfNode& pNode, const KQexVector4& pT, const KQexVector4& pR, const KQexVector4& pGS, double pLengthUnit)
{
    KgeMult(pNode.mAxisRM, pNode.mParentAxisRM, RotationXYZ(pR));
    KgeInverse(pNode.mAxisRMInv, pNode.mAxisRM);
    KgeSetXYZ(pNode.mOrientationV, pNode.mAxisRM);

    KgeTVector lT;
    KgeSet(lT, pT[0] * pGS[0], pT[1] * pGS[1], pT[2] * pGS[2]);
    KgeMult(pNode.mPositionV, pNode.mAxisRM, lT);
    KgeSet(pNode.mDirectionV, pNode.mPositionV);
    pNode.mLength = KgeLength(pNode.mDirectionV) * pLengthUnit / kCentimetresPerInch;
    KgeNorm(pNode.mDirectionV, pNode.mDirectionV);
}

/// Creates a bone below pParent; null when memory ran out. A name that is too long is cut before the suffix.
KQexAsfNode* CreateBone(KQexAsfNode& pParent, const char* pName, const char* pSuffix)
{
    KQexAsfNode* lNode = QexSdkNew<KQexAsfNode>();
    if (lNode == nullptr)
    {
        return nullptr;
    }
    const int lRoom = static_cast<int>(sizeof(lNode->mName) - 1 - std::strlen(pSuffix));
    std::snprintf(lNode->mName, sizeof(lNode->mName), "%.*s%s", lRoom, pName, pSuffix);
    if (!pParent.AddChild(lNode))
    {
        QexSdkDelete(lNode);
        return nullptr;
    }
    KgeSet(lNode->mParentPositionV, pParent.mPositionV);
    KgeSet(lNode->mParentAxisRM, pParent.mAxisRM);
    KgeSet(lNode->mParentAxisRMInv, pParent.mAxisRMInv);
    return lNode;
}

/// A host node on the current path: its bone, what its children need of it, and the index of the next child.
struct KPathNode
{
    KQexNode*    mQexNode;
    KQexAsfNode* mAsfNode;
    KQexVector4  mScale;
    bool         mDummies;
    int          mNext;
};

/// One extraction: its constants, and the steps for one node.
struct KExtraction
{
    KQexAsfNode* mRoot;
    double       mLengthUnit;
    bool         mTAnimated;
    bool         mDefaultsAsBaseTR;

    // Opens a node whose bone exists, and completes that bone. A leaf's bone keeps its initial frame.
    KPathNode Enter(KQexNode* pQexNode, KQexAsfNode* pAsfNode, const KQexVector4& pBaseScale) const
    {
        KPathNode lPathNode = {pQexNode, pAsfNode, LocalScale(*pQexNode, pBaseScale), false, 0};
        lPathNode.mDummies = MustCreateDummies(*pQexNode, pAsfNode == mRoot, mDefaultsAsBaseTR);
        if (pQexNode->GetChildCount(false) > 0)
        {
            CompleteBone(lPathNode);
        }
        return lPathNode;
    }

    void CompleteBone(const KPathNode& pPathNode) const
    {
        const bool  lIsRoot = pPathNode.mAsfNode == mRoot;
        KQexVector4 lT;
        KQexVector4 lR;
        // With dummies the bone has no length: they extend to the children.
        if (!pPathNode.mDummies)
        {
            lT = ExportOffset(*pPathNode.mQexNode->GetChild(0), mDefaultsAsBaseTR);
        }
        if (!lIsRoot)
        {
            lR = mDefaultsAsBaseTR ? RotationAtZero(*pPathNode.mQexNode) : pPathNode.mQexNode->GetPreRotation();
        }
        SetFrame(*pPathNode.mAsfNode, lT, lR, pPathNode.mScale, mLengthUnit);
        if (lIsRoot)
        {
            // The node's own values: the root's rotation is never combined with the pose at time zero.
            pPathNode.mAsfNode->mPositionV = pPathNode.mQexNode->GetRotationOffset();
            pPathNode.mAsfNode->mOrientationV = pPathNode.mQexNode->GetPreRotation();
        }
    }

    // Creates the bone of a host child, below a dummy where needed; null when memory ran out.
    KQexAsfNode* CreateChild(const KPathNode& pPathNode, KQexNode& pChild) const
    {
        const char*  lName = pChild.GetBareName();
        KQexAsfNode* lParent = pPathNode.mAsfNode;
        if (pPathNode.mDummies)
        {
            lParent = CreateBone(*lParent, lName, "Dummy");
            if (lParent == nullptr)
            {
                return nullptr;
            }
            SetFrame(*lParent, ExportOffset(pChild, mDefaultsAsBaseTR), KQexVector4(), pPathNode.mScale, mLengthUnit);
        }
        KQexAsfNode* lNode = CreateBone(*lParent, lName, "");
        if (lNode == nullptr)
        {
            return nullptr;
        }
        lNode->GetCurveNodePointers(&pChild);
        SetDofs(*lNode, pChild, mTAnimated);
        CopyLimitRows(*lNode, pChild, mTAnimated);
        return lNode;
    }
};

} // namespace

KQexAsfNode* KQexAsfScene::CreateRoot(KQexNode* pQexNode)
{
    KQexAsfNode* lRoot = QexSdkNew<KQexAsfNode>();
    if (lRoot == nullptr)
    {
        return nullptr;
    }
    std::strcpy(lRoot->mName, kRootName);
    SetDofs(*lRoot, *pQexNode, true); // all six, whatever is animated
    lRoot->GetCurveNodePointers(pQexNode);
    return lRoot;
}

void KQexAsfScene::SetupNode(KQexAsfNode* pAsfNode, KQexVector4 pT, KQexVector4 pR, KQexVector4 pGS)
{
    SetFrame(*pAsfNode, pT, pR, pGS, mLengthUnit);
}

bool KQexAsfScene::RecursiveCreate(KQexNode* pQexNode, KQexAsfNode* pAsfNode, bool pTAnimated, KQexVector4 pBaseScale,
                                   bool pExportDefaultsAsBaseTR)
try
{
    const KExtraction lExtraction = {mRoot, mLengthUnit, pTAnimated, pExportDefaultsAsBaseTR};
    // The path is on the heap, so that stack use does not grow with depth.
    std::vector<KPathNode> lPath;
    lPath.push_back(lExtraction.Enter(pQexNode, pAsfNode, pBaseScale));
    while (!lPath.empty())
    {
        KPathNode& lPathNode = lPath.back();
        KQexNode*  lChild = lPathNode.mQexNode->GetChild(lPathNode.mNext++);
        if (lChild == nullptr)
        {
            lPath.pop_back();
            continue;
        }
        KQexAsfNode* lBone = lExtraction.CreateChild(lPathNode, *lChild);
        if (lBone == nullptr)
        {
            return false;
        }
        lPath.push_back(lExtraction.Enter(lChild, lBone, lPathNode.mScale));
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool KQexAsfScene::QEXToASF(KQexNode* pRootNode, bool pTAnimated, KQexVector4 pBaseScale, bool pExportDefaultsAsBaseTR)
{
    std::strcpy(mName, "ASF");
    mLengthUnit = 1.0;
    mRoot = CreateRoot(pRootNode);
    if (!mRoot)
    {
        return false;
    }
    if (!RecursiveCreate(pRootNode, mRoot, pTAnimated, pBaseScale, pExportDefaultsAsBaseTR))
    {
        QexSdkDelete(mRoot);
        mRoot = nullptr;
        return false;
    }
    mRoot->RemoveEndSite();
    return true;
}

} // namespace qexsdk
