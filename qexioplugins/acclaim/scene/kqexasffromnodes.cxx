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

/// Every bone starts where its parent bone ends, so children that start at different places need a bone each in front of them.
/// Starts are compared exactly. A single child only needs one below the root, whose own bone has its end at its start.
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

/// Pre-rotation, rotation at time zero and inverse post-rotation in one, as XYZ angles.
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

/// Rows are filled one after another, deliberately: without translations the rotations' limits, always as z, y, x, land in the
/// first three rows, whatever the DOFs are. Who wants them written moves them to the rows of their codes.
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

/// The bone's frame from its offset and its rotation (XYZ angles) in its parent's frame. The offset is in host centimetres, its
/// scale that of all nodes above and the bone's own; the length is in the file's unit of pLengthUnit / 2.54.
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

/// A new bone under pParent, in its frame; null when memory ran out. A name that is too long loses its end, never the suffix.
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

/// A host node on the way down: the bone made for it, what its children get from it, and which of them comes next.
struct KPlace
{
    KQexNode*    mQexNode;
    KQexAsfNode* mAsfNode;
    KQexVector4  mScale;
    bool         mDummies;
    int          mNext;
};

/// One extraction: what stays the same all the way down, and the steps for one node.
struct KExtraction
{
    KQexAsfNode* mRoot;
    double       mLengthUnit;
    bool         mTAnimated;
    bool         mDefaultsAsBaseTR;

    // The place of a node whose bone exists; completes that bone. A leaf's bone keeps the frame it was made with.
    KPlace Enter(KQexNode* pQexNode, KQexAsfNode* pAsfNode, const KQexVector4& pBaseScale) const
    {
        KPlace lPlace = {pQexNode, pAsfNode, LocalScale(*pQexNode, pBaseScale), false, 0};
        lPlace.mDummies = MustCreateDummies(*pQexNode, pAsfNode == mRoot, mDefaultsAsBaseTR);
        if (pQexNode->GetChildCount(false) > 0)
        {
            CompleteBone(lPlace);
        }
        return lPlace;
    }

    void CompleteBone(const KPlace& pPlace) const
    {
        const bool  lIsRoot = pPlace.mAsfNode == mRoot;
        KQexVector4 lT;
        KQexVector4 lR;
        // With dummies the bone has no length of its own: they reach to the children.
        if (!pPlace.mDummies)
        {
            lT = ExportOffset(*pPlace.mQexNode->GetChild(0), mDefaultsAsBaseTR);
        }
        if (!lIsRoot)
        {
            lR = mDefaultsAsBaseTR ? RotationAtZero(*pPlace.mQexNode) : pPlace.mQexNode->GetPreRotation();
        }
        SetFrame(*pPlace.mAsfNode, lT, lR, pPlace.mScale, mLengthUnit);
        if (lIsRoot)
        {
            // Taken raw: the root's rotation is never folded with the pose at time zero.
            pPlace.mAsfNode->mPositionV = pPlace.mQexNode->GetRotationOffset();
            pPlace.mAsfNode->mOrientationV = pPlace.mQexNode->GetPreRotation();
        }
    }

    // The bone of a host child, behind its dummy where there is one; null when memory ran out.
    KQexAsfNode* CreateChild(const KPlace& pPlace, KQexNode& pChild) const
    {
        const KString lName = pChild.GetNameWithoutNameSpacePrefix();
        KQexAsfNode*  lParent = pPlace.mAsfNode;
        if (pPlace.mDummies)
        {
            lParent = CreateBone(*lParent, lName, "Dummy");
            if (lParent == nullptr)
            {
                return nullptr;
            }
            SetFrame(*lParent, ExportOffset(pChild, mDefaultsAsBaseTR), KQexVector4(), pPlace.mScale, mLengthUnit);
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
    std::strcpy(lRoot->mName, "root");
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
    // The way down is kept on the heap, so that depth costs no stack.
    std::vector<KPlace> lPath;
    lPath.push_back(lExtraction.Enter(pQexNode, pAsfNode, pBaseScale));
    while (!lPath.empty())
    {
        KPlace&   lPlace = lPath.back();
        KQexNode* lChild = lPlace.mQexNode->GetChild(lPlace.mNext++);
        if (lChild == nullptr)
        {
            lPath.pop_back();
            continue;
        }
        KQexAsfNode* lBone = lExtraction.CreateChild(lPlace, *lChild);
        if (lBone == nullptr)
        {
            return false;
        }
        lPath.push_back(lExtraction.Enter(lChild, lBone, lPlace.mScale));
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
