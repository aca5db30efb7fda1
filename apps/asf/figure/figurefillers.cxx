#include <apps/asf/figure/figurescene.h>
#include <qexioplugins/motion/kqexrestpose.h>

#include <cmath>

namespace asfapp
{

namespace
{

using qexsdk::KQexAnimLayer;
using qexsdk::KQexNode;
using KVector = qexsdk::qexVectorTemplate3<double>;

const std::string kFiller = "Dummy";

template <typename TVector>
bool IsNear(const TVector& pValue, double pExpected)
{
    return std::fabs(pValue.mData[0] - pExpected) < 1e-6 && std::fabs(pValue.mData[1] - pExpected) < 1e-6 &&
           std::fabs(pValue.mData[2] - pExpected) < 1e-6;
}

bool IsStill(const KQexNode& pNode, const std::vector<KFigureTake>& pTakes)
{
    for (const KFigureTake& lTake : pTakes)
    {
        const KQexAnimLayer* lLayer = lTake.mStack->GetMember<KQexAnimLayer>(0);
        if (qexsdk::LeavesRest(pNode.mLocalTranslation, lLayer) || qexsdk::LeavesRest(pNode.mLocalRotation, lLayer) ||
            qexsdk::LeavesRest(pNode.mLocalScaling, lLayer))
        {
            return false;
        }
    }
    return true;
}

/// Only a shift can be handed to the children as it is.
bool IsShift(const KQexNode& pNode)
{
    return IsNear(pNode.mLocalRotation.Get(), 0) && IsNear(pNode.mLocalScaling.Get(), 1) && IsNear(pNode.GetPreRotation(), 0) &&
           IsNear(pNode.GetPostRotation(), 0);
}

void ShiftCurves(KQexNode& pNode, KQexAnimLayer* pLayer, const double* pShift)
{
    qexsdk::KQexAnimCurveNode* lCurves = pNode.mLocalTranslation.GetCurveNode(pLayer, false);
    for (unsigned int lAxis = 0; lCurves != nullptr && lAxis < 3; ++lAxis)
    {
        lCurves->SetChannelValue(lAxis, lCurves->GetChannelValue<double>(lAxis, 0.0) + pShift[lAxis]);
        qexsdk::KQexAnimCurve* lCurve = lCurves->GetCurve(lAxis);
        for (int lKey = 0; lCurve != nullptr && lKey < lCurve->GetKeyCount(); ++lKey)
        {
            lCurve->SetValue(lKey, static_cast<float>(lCurve->GetValue(lKey) + pShift[lAxis]));
        }
    }
}

void Shift(KQexNode& pNode, const double* pShift, const std::vector<KFigureTake>& pTakes)
{
    const KVector lOld = pNode.mLocalTranslation.Get();
    pNode.mLocalTranslation.Set(KVector(lOld.mData[0] + pShift[0], lOld.mData[1] + pShift[1], lOld.mData[2] + pShift[2]));
    for (const KFigureTake& lTake : pTakes)
    {
        ShiftCurves(pNode, lTake.mStack->GetMember<KQexAnimLayer>(0), pShift);
    }
}

void TakeOut(KQexNode& pNode, const std::vector<KFigureTake>& pTakes)
{
    const KVector             lPlace = pNode.mLocalTranslation.Get();
    const qexsdk::KQexVector4 lOffset = pNode.GetRotationOffset();
    const double lShift[3] = {lPlace.mData[0] + lOffset.mData[0], lPlace.mData[1] + lOffset.mData[1], lPlace.mData[2] + lOffset.mData[2]};
    while (KQexNode* lChild = pNode.GetFirstChild())
    {
        Shift(*lChild, lShift, pTakes);
        pNode.GetParent()->AddChild(lChild);
    }
    pNode.Destroy(true, false);
}

} // namespace

bool IsNamedAsFiller(const KQexNode& pNode)
{
    const std::string lName = pNode.GetName();
    for (const KQexNode* lChild = pNode.GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        if (lChild->GetName() + kFiller == lName)
        {
            return true;
        }
    }
    return false;
}

int RemoveFillers(KQexNode* pRoot, const std::vector<KFigureTake>& pTakes)
{
    std::vector<KQexNode*> lFillers;
    for (KQexNode* lNode = pRoot->GetNextInTree(pRoot); lNode != nullptr; lNode = lNode->GetNextInTree(pRoot))
    {
        if (IsNamedAsFiller(*lNode) && IsShift(*lNode) && IsStill(*lNode, pTakes))
        {
            lFillers.push_back(lNode);
        }
    }
    for (KQexNode* lFiller : lFillers)
    {
        TakeOut(*lFiller, pTakes);
    }
    return static_cast<int>(lFillers.size());
}

} // namespace asfapp
