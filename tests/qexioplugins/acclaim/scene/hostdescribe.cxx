#include <kbaselib/kmath/keulerorder.h>
#include <tests/qexioplugins/acclaim/scene/hostcases.h>

#include <cmath>

using nlohmann::json;
using namespace qexsdk;

namespace qextest
{

namespace
{

json Row(const double* pValues)
{
    return {pValues[0], pValues[1], pValues[2]};
}

json Row(const KQexVector4& pValue)
{
    return {pValue[0], pValue[1], pValue[2]};
}

json Row(const qexVectorTemplate3<double>& pValue)
{
    return {pValue[0], pValue[1], pValue[2]};
}

json Rows(const KgeRMatrix& pMatrix)
{
    return {Row(pMatrix.mData[0]), Row(pMatrix.mData[1]), Row(pMatrix.mData[2])};
}

json DescribeCurveNode(const KQexAnimCurveNode* pCurveNode)
{
    if (pCurveNode == nullptr)
    {
        return nullptr;
    }
    json lValues = json::array();
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        lValues.push_back(pCurveNode->GetChannelValue<double>(lChannel, -1.0));
    }
    return {{"animated", pCurveNode->IsAnimated(true)}, {"values", lValues}};
}

json DescribeLimits(const KQexLimits& pLimits)
{
    bool lMin[3];
    bool lMax[3];
    pLimits.GetLimitMinActive(lMin[0], lMin[1], lMin[2]);
    pLimits.GetLimitMaxActive(lMax[0], lMax[1], lMax[2]);
    return {{"on", pLimits.GetActive()},
            {"minActive", {lMin[0], lMin[1], lMin[2]}},
            {"maxActive", {lMax[0], lMax[1], lMax[2]}},
            {"min", Row(pLimits.GetLimitMin())},
            {"max", Row(pLimits.GetLimitMax())}};
}

json DescribeCurve(const KQexAnimCurve* pCurve)
{
    if (pCurve == nullptr)
    {
        return nullptr;
    }
    json lKeys = json::array();
    for (int lIter = 0; lIter < pCurve->GetKeyCount(); ++lIter)
    {
        lKeys.push_back({pCurve->GetKey(lIter).GetTime().Get(), pCurve->GetValue(lIter)});
    }
    return {{"name", pCurve->GetName()}, {"keys", lKeys}};
}

json DescribeTakes(KQexNode& pNode)
{
    json       lTakes = json::object();
    KQexScene* lScene = pNode.GetScene();
    for (int lIter = 0; lIter < lScene->GetAnimStackCount(); ++lIter)
    {
        const char* lTake = lScene->GetAnimStack(lIter)->GetName();
        for (const char* lWhich : {"t", "r", "s"})
        {
            KQexAnimCurveNode* lCurveNode = Property(pNode, lWhich).GetCurveNode(false, lTake);
            if (lCurveNode == nullptr)
            {
                continue;
            }
            json lGroup = DescribeCurveNode(lCurveNode);
            for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
            {
                lGroup["curves"].push_back(DescribeCurve(lCurveNode->GetCurve(lChannel)));
            }
            lTakes[lTake][lWhich] = lGroup;
        }
    }
    return lTakes;
}

json DescribeNode(KQexNode& pNode, int pParent)
{
    const KQexSkeleton* lSkeleton = pNode.GetSkeleton();
    return {{"name", pNode.GetName()},
            {"parent", pParent},
            {"active", pNode.GetRotationActive()},
            {"order", static_cast<int>(pNode.GetRotationOrder())},
            {"offset", Row(pNode.GetRotationOffset())},
            {"pre", Row(pNode.GetPreRotation())},
            {"post", Row(pNode.GetPostRotation())},
            {"t", Row(pNode.mLocalTranslation.Get())},
            {"r", Row(pNode.mLocalRotation.Get())},
            {"s", Row(pNode.mLocalScaling.Get())},
            {"skeleton", lSkeleton != nullptr ? json(static_cast<int>(lSkeleton->GetSkeletonType())) : json(nullptr)},
            {"tLimits", DescribeLimits(pNode.GetLimits().mTranslationLimits)},
            {"rLimits", DescribeLimits(pNode.GetLimits().mRotationLimits)},
            {"takes", DescribeTakes(pNode)}};
}

json DescribeLimitRows(const KQexAsfNode& pBone, int pRows)
{
    json lLimits = json::array();
    for (int lRow = 0; lRow < pRows; ++lRow)
    {
        lLimits.push_back({pBone.mLimitsBuf[lRow][0], pBone.mLimitsBuf[lRow][1]});
    }
    return lLimits;
}

json DescribeBone(const KQexAsfNode& pBone, int pParent, int pLimitRows)
{
    json lActive = json::array();
    for (const auto& lRow : pBone.mLimitsActive)
    {
        lActive.push_back({lRow[0], lRow[1]});
    }
    return {{"name", pBone.mName},
            {"parent", pParent},
            {"order", std::vector<int>(pBone.mOrderBuf, pBone.mOrderBuf + pBone.mOrderCount)},
            {"eulerOrder", EulerOrderFromOrderBuf(pBone.mOrderBuf, pBone.mOrderCount)},
            {"limits", DescribeLimitRows(pBone, pLimitRows)},
            {"limitsActive", lActive},
            {"invalidLimits", pBone.mInvalidateRLimits},
            {"orientationOrder", pBone.mOrientationOrder},
            {"orientation", Row(pBone.mOrientationV.mData)},
            {"position", Row(pBone.mPositionV.mData)},
            {"direction", Row(pBone.mDirectionV.mData)},
            {"length", pBone.mLength},
            {"axis", Rows(pBone.mAxisRM)},
            {"axisInv", Rows(pBone.mAxisRMInv)},
            {"parentAxis", Rows(pBone.mParentAxisRM)},
            {"parentAxisInv", Rows(pBone.mParentAxisRMInv)},
            {"parentPosition", Row(pBone.mParentPositionV.mData)},
            {"lt", Row(pBone.mLT.mData)},
            {"lr", Row(pBone.mLR.mData)},
            {"ltNode", DescribeCurveNode(pBone.mLTNode)},
            {"lrNode", DescribeCurveNode(pBone.mLRNode)},
            {"lsNode", DescribeCurveNode(pBone.mLSNode)},
            {"tOffset", Row(pBone.mTOffset)},
            {"preRotation", Row(pBone.mPreRotation)},
            {"postRotation", Row(pBone.mPostRotation)},
            {"data", DescribeCurveSizes(pBone)}};
}

} // namespace

std::vector<KQexAsfNode*> BonesOf(KQexAsfNode* pRoot)
{
    std::vector<KQexAsfNode*> lBones;
    std::vector<KQexAsfNode*> lStack = {pRoot};
    while (!lStack.empty())
    {
        KQexAsfNode* lBone = lStack.back();
        lStack.pop_back();
        lBones.push_back(lBone);
        for (int lIter = lBone->mChildBuf.GetCount() - 1; lIter >= 0; --lIter)
        {
            lStack.push_back(lBone->GetChild(lIter));
        }
    }
    return lBones;
}

json DescribeCurveSizes(const KQexAsfNode& pBone)
{
    json lSizes = json::array();
    for (const auto& lGroup : {pBone.mLTData, pBone.mLRData})
    {
        for (int lIter = 0; lIter < 3; ++lIter)
        {
            lSizes.push_back(lGroup[lIter] != nullptr ? json(lGroup[lIter]->GetKeyCount()) : json(nullptr));
        }
    }
    return lSizes;
}

json DescribeBones(KQexAsfNode* pRoot, int pLimitRows)
{
    json                            lResult = json::array();
    const std::vector<KQexAsfNode*> lBones = BonesOf(pRoot);
    for (const KQexAsfNode* lBone : lBones)
    {
        int lParent = -1;
        for (size_t lIter = 0; lIter < lBones.size(); ++lIter)
        {
            if (lBones[lIter] == lBone->mParent)
            {
                lParent = static_cast<int>(lIter);
            }
        }
        const bool lHasRows = lBone != pRoot && lBone->mOrderCount > 0;
        lResult.push_back(DescribeBone(*lBone, lParent, pLimitRows < 0 ? 6 : lHasRows ? pLimitRows : 0));
    }
    return lResult;
}

json DescribeBonesBriefly(KQexAsfNode* pRoot)
{
    json lResult = json::array();
    for (const KQexAsfNode* lBone : BonesOf(pRoot))
    {
        lResult.push_back(
            {{"name", lBone->mName}, {"parentPosition", Row(lBone->mParentPositionV.mData)}, {"data", DescribeCurveSizes(*lBone)}});
    }
    return lResult;
}

json DescribeTree(KQexNode* pTop)
{
    json                   lResult = json::array();
    std::vector<KQexNode*> lNodes;
    for (KQexNode* lNode = pTop; lNode != nullptr; lNode = lNode->GetNextInTree(pTop))
    {
        int lParent = -1;
        for (size_t lIter = 0; lIter < lNodes.size(); ++lIter)
        {
            if (lNodes[lIter] == lNode->GetParent())
            {
                lParent = static_cast<int>(lIter);
            }
        }
        lNodes.push_back(lNode);
        lResult.push_back(DescribeNode(*lNode, lParent));
    }
    return lResult;
}

json DescribeTransforms(KQexNode* pTop, const json& pTimes)
{
    json lResult = json::array();
    for (const json& lTime : pTimes)
    {
        json lNodes = json::array();
        for (KQexNode* lNode = pTop; lNode != nullptr; lNode = lNode->GetNextInTree(pTop))
        {
            const KQexMatrix lMatrix = lNode->GetScene()->GetEvaluator()->GetNodeGlobalTransform(lNode, KTime(lTime.get<long long>()));
            json             lRows = json::array();
            for (int lRow = 0; lRow < 3; ++lRow)
            {
                for (int lColumn = 0; lColumn < 4; ++lColumn)
                {
                    lRows.push_back(lMatrix.mData[lColumn][lRow]);
                }
            }
            lNodes.push_back(lRows);
        }
        lResult.push_back(lNodes);
    }
    return lResult;
}

namespace
{

void Compare(const json& pExpected, const json& pActual, double pTolerance, const std::string& pWhere, std::vector<std::string>& pOut);

/// Keys are pairs of a time in ticks, which is exact, and a value, which is a float.
void CompareKeys(const json& pExpected, const json& pActual, const std::string& pWhere, std::vector<std::string>& pOut)
{
    bool lIsSame = pExpected.size() == pActual.size();
    for (size_t lIter = 0; lIsSame && lIter < pExpected.size(); ++lIter)
    {
        lIsSame = pExpected[lIter][0] == pActual[lIter][0];
        Compare(pExpected[lIter][1], pActual[lIter][1], 1e-5, pWhere + "[" + std::to_string(lIter) + "]", pOut);
    }
    if (!lIsSame)
    {
        pOut.push_back(pWhere + ": " + pActual.dump() + " instead of " + pExpected.dump());
    }
}

void Compare(const json& pExpected, const json& pActual, double pTolerance, const std::string& pWhere, std::vector<std::string>& pOut)
{
    const auto lReport = [&]
    {
        pOut.push_back(pWhere + ": " + pActual.dump() + " instead of " + pExpected.dump());
    };
    if (pExpected.is_number() && pActual.is_number())
    {
        const double lExpected = pExpected.get<double>();
        const double lError = std::fabs(lExpected - pActual.get<double>());
        if (!(lError <= pTolerance * std::fmax(1.0, std::fabs(lExpected))))
        {
            lReport();
        }
    }
    else if (pExpected.is_array() && pActual.is_array() && pExpected.size() == pActual.size())
    {
        for (size_t lIter = 0; lIter < pExpected.size(); ++lIter)
        {
            Compare(pExpected[lIter], pActual[lIter], pTolerance, pWhere + "[" + std::to_string(lIter) + "]", pOut);
        }
    }
    else if (pExpected.is_object() && pActual.is_object())
    {
        for (const auto& lItem : pExpected.items())
        {
            if (!pActual.contains(lItem.key()))
            {
                pOut.push_back(pWhere + "." + lItem.key() + " is missing");
            }
            else if (lItem.key() == "keys")
            {
                CompareKeys(lItem.value(), pActual[lItem.key()], pWhere + ".keys", pOut);
            }
            else
            {
                Compare(lItem.value(), pActual[lItem.key()], pTolerance, pWhere + "." + lItem.key(), pOut);
            }
        }
    }
    else if (pExpected != pActual)
    {
        lReport();
    }
}

} // namespace

std::vector<std::string> Differences(const json& pExpected, const json& pActual, double pTolerance)
{
    std::vector<std::string> lOut;
    Compare(pExpected, pActual, pTolerance, "", lOut);
    return lOut;
}

} // namespace qextest
