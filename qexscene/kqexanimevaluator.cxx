#include <qexscene/kqexanimevaluator.h>

#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexanimstack.h>
#include <qexscene/kqexnode.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

namespace
{

/// The three components of \p pProperty on \p pLayer at \p pTime.
KQexVector4 EvaluateProperty(const KQexProperty& pProperty, const KQexAnimLayer* pLayer, KTime pTime)
{
    const KQexAnimCurveNode* lCurveNode = pProperty.GetCurveNode(pLayer);
    KQexVector4              lResult;
    for (int lI = 0; lI < 3; ++lI)
    {
        lResult.mData[lI] =
            lCurveNode != nullptr ? lCurveNode->Evaluate(static_cast<unsigned int>(lI), pTime) : pProperty.GetData()->mValue[lI];
    }
    return lResult;
}

void EvaluateLocal(KQexMatrix& pResult, const KQexNode& pNode, const KQexAnimLayer* pLayer, KTime pTime)
{
    const KQexVector4 lTranslation = EvaluateProperty(pNode.mLocalTranslation, pLayer, pTime);
    const KQexVector4 lRotation = EvaluateProperty(pNode.mLocalRotation, pLayer, pTime);
    const KQexVector4 lScaling = EvaluateProperty(pNode.mLocalScaling, pLayer, pTime);
    pNode.ComposeLocalTransform(pResult, lTranslation.mData, lRotation.mData, lScaling.mData);
}

} // namespace

const kQexClassId KQexAnimEvaluator::smClassId("KQexAnimEvaluator", &KQexObject::smClassId);

const kQexClassId& KQexAnimEvaluator::GetClassId() const noexcept
{
    return smClassId;
}

KQexAnimEvaluator* KQexAnimEvaluator::Create(KQexScene* pScene)
{
    return NullIfIncomplete(new KQexAnimEvaluator(pScene, "Evaluator"));
}

void KQexAnimEvaluator::Destroy(bool pRecursive, bool pDependents)
{
    if (GetScene() == nullptr)
    {
        KQexObject::Destroy(pRecursive, pDependents);
    }
}

bool KQexAnimEvaluator::SetContext(KQexAnimStack* pStack)
{
    if (pStack != nullptr && pStack->GetScene() != GetScene())
    {
        return false;
    }
    mContext = pStack;
    return true;
}

KQexAnimLayer* KQexAnimEvaluator::GetLayer() const
{
    return KQexLayerOf(mContext);
}

KQexVector4 KQexAnimEvaluator::GetNodeLocalTranslation(const KQexNode* pNode, KTime pTime) const
{
    return pNode != nullptr ? EvaluateProperty(pNode->mLocalTranslation, GetLayer(), pTime) : KQexVector4();
}

KQexVector4 KQexAnimEvaluator::GetNodeLocalRotation(const KQexNode* pNode, KTime pTime) const
{
    return pNode != nullptr ? EvaluateProperty(pNode->mLocalRotation, GetLayer(), pTime) : KQexVector4();
}

KQexVector4 KQexAnimEvaluator::GetNodeLocalScaling(const KQexNode* pNode, KTime pTime) const
{
    return pNode != nullptr ? EvaluateProperty(pNode->mLocalScaling, GetLayer(), pTime) : KQexVector4(1.0, 1.0, 1.0);
}

KQexMatrix KQexAnimEvaluator::GetNodeLocalTransform(const KQexNode* pNode, KTime pTime) const
{
    KQexMatrix lResult;
    if (pNode != nullptr)
    {
        EvaluateLocal(lResult, *pNode, GetLayer(), pTime);
    }
    return lResult;
}

KQexMatrix KQexAnimEvaluator::GetNodeGlobalTransform(const KQexNode* pNode, KTime pTime) const
{
    const KQexAnimLayer* lLayer = GetLayer();
    KQexMatrix           lResult;
    for (const KQexNode* lNode = pNode; lNode != nullptr; lNode = lNode->GetParent())
    {
        KQexMatrix lLocal;
        EvaluateLocal(lLocal, *lNode, lLayer, pTime);
        lResult = lLocal * lResult;
    }
    return lResult;
}

bool KQexAnimEvaluator::EvaluateGlobalTransforms(KQexNode* pRoot, KTime pTime, KQexGlobalTransforms& pBuffer) const
{
    if (pRoot == nullptr || pRoot->GetScene() != GetScene() || !pBuffer.Collect(pRoot, GetLayer()))
    {
        pBuffer.Clear();
        return false;
    }
    const KQexMatrix lParentTransform = GetNodeGlobalTransform(pRoot->GetParent(), pTime);
    pBuffer.Evaluate(lParentTransform, pTime);
    return true;
}

} // namespace qexsdk
