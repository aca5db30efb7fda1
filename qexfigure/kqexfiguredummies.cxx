#include <qexfigure/kqexfiguredummies.h>

#include <qexscene/kqexrestpose.h>

#include <cmath>
#include <string_view>

namespace qexsdk
{

namespace
{

using KVector = qexVectorTemplate3<double>;

constexpr std::string_view kDummySuffix = "Dummy";

template <typename TVector>
bool IsNear(const TVector& pValue, double pExpected)
{
    return std::fabs(pValue.mData[0] - pExpected) < 1e-6 && std::fabs(pValue.mData[1] - pExpected) < 1e-6 &&
           std::fabs(pValue.mData[2] - pExpected) < 1e-6;
}

bool IsAnimated(const KQexNode& pNode, const std::vector<KQexFigureTake>& pTakes)
{
    for (const KQexFigureTake& lTake : pTakes)
    {
        const KQexAnimLayer* lLayer = KQexLayerOf(lTake.mStack);
        if (DiffersFromRest(pNode.mLocalTranslation, lLayer) || DiffersFromRest(pNode.mLocalRotation, lLayer) ||
            DiffersFromRest(pNode.mLocalScaling, lLayer))
        {
            return true;
        }
    }
    return false;
}

/// Only a pure translation can be moved to the children unchanged.
bool IsPureTranslation(const KQexNode& pNode)
{
    return IsNear(pNode.mLocalRotation.Get(), 0) && IsNear(pNode.mLocalScaling.Get(), 1) && IsNear(pNode.GetPreRotation(), 0) &&
           IsNear(pNode.GetPostRotation(), 0);
}

void TranslateCurves(KQexNode& pNode, KQexAnimLayer* pLayer, const double* pOffset)
{
    KQexAnimCurveNode* lCurves = pNode.mLocalTranslation.GetCurveNode(pLayer, false);
    for (unsigned int lAxis = 0; lCurves != nullptr && lAxis < 3; ++lAxis)
    {
        lCurves->SetChannelValue(lAxis, lCurves->GetChannelValue<double>(lAxis, 0.0) + pOffset[lAxis]);
        KQexAnimCurve* lCurve = lCurves->GetCurve(lAxis);
        for (int lKey = 0; lCurve != nullptr && lKey < lCurve->GetKeyCount(); ++lKey)
        {
            lCurve->SetValue(lKey, static_cast<float>(lCurve->GetValue(lKey) + pOffset[lAxis]));
        }
    }
}

void Translate(KQexNode& pNode, const double* pOffset, const std::vector<KQexFigureTake>& pTakes)
{
    const KVector lOld = pNode.mLocalTranslation.Get();
    pNode.mLocalTranslation.Set(KVector(lOld.mData[0] + pOffset[0], lOld.mData[1] + pOffset[1], lOld.mData[2] + pOffset[2]));
    for (const KQexFigureTake& lTake : pTakes)
    {
        TranslateCurves(pNode, KQexLayerOf(lTake.mStack), pOffset);
    }
}

void RemoveDummy(KQexNode& pNode, const std::vector<KQexFigureTake>& pTakes)
{
    const KVector     lTranslation = pNode.mLocalTranslation.Get();
    const KQexVector4 lRotationOffset = pNode.GetRotationOffset();
    const double      lOffset[3] = {lTranslation.mData[0] + lRotationOffset.mData[0], lTranslation.mData[1] + lRotationOffset.mData[1],
                                    lTranslation.mData[2] + lRotationOffset.mData[2]};
    while (KQexNode* lChild = pNode.GetFirstChild())
    {
        Translate(*lChild, lOffset, pTakes);
        pNode.GetParent()->AddChild(lChild);
    }
    pNode.Destroy(true, false);
}

} // namespace

bool IsFigureDummy(const KQexNode& pNode)
{
    const std::string_view lName = pNode.GetName();
    for (const KQexNode* lChild = pNode.GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        const std::string_view lChildName = lChild->GetName();
        if (lName.size() == lChildName.size() + kDummySuffix.size() && lName.substr(0, lChildName.size()) == lChildName &&
            lName.substr(lChildName.size()) == kDummySuffix)
        {
            return true;
        }
    }
    return false;
}

int RemoveDummyNodes(KQexNode* pRoot, const std::vector<KQexFigureTake>& pTakes)
{
    std::vector<KQexNode*> lDummies;
    for (KQexNode* lNode = pRoot->GetNextInTree(pRoot); lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        if (IsFigureDummy(*lNode) && IsPureTranslation(*lNode) && !IsAnimated(*lNode, pTakes))
        {
            lDummies.push_back(lNode);
        }
    }
    for (KQexNode* lDummy : lDummies)
    {
        RemoveDummy(*lDummy, pTakes);
    }
    return static_cast<int>(lDummies.size());
}

} // namespace qexsdk
