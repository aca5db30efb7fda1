#include <tests/qexioplugins/acclaim/scene/hostcases.h>

#include <cstring>

using nlohmann::json;
using namespace qexsdk;

namespace qextest
{

namespace
{

template <typename T>
T Vector3(const json& pValue)
{
    return T(pValue[0].get<double>(), pValue[1].get<double>(), pValue[2].get<double>());
}

void FillLimits(KQexAsfNode& pBone, const json& pDescription)
{
    for (size_t lRow = 0; lRow < 6; ++lRow)
    {
        for (size_t lBound = 0; lBound < 2; ++lBound)
        {
            pBone.mLimitsBuf[lRow][lBound] = pDescription["limits"][lRow][lBound].get<double>();
            pBone.mLimitsActive[lRow][lBound] = pDescription["limitsActive"][lRow][lBound].get<bool>();
        }
    }
}

void FillLimits(KQexLimits& pLimits, const json& pDescription)
{
    const json& lMin = pDescription["minActive"];
    const json& lMax = pDescription["maxActive"];
    pLimits.SetActive(pDescription["on"].get<bool>());
    pLimits.SetLimitMinActive(lMin[0].get<bool>(), lMin[1].get<bool>(), lMin[2].get<bool>());
    pLimits.SetLimitMaxActive(lMax[0].get<bool>(), lMax[1].get<bool>(), lMax[2].get<bool>());
    pLimits.SetLimitMin(Vector3<KQexVector4>(pDescription["min"]));
    pLimits.SetLimitMax(Vector3<KQexVector4>(pDescription["max"]));
}

void AddCurve(KQexNode& pNode, KQexAnimCurveNode& pCurveNode, unsigned int pChannel, const std::string& pName, const json& pKeys)
{
    KQexAnimCurve* lCurve = KQexAnimCurve::Create(pNode.GetScene(), pName.c_str());
    for (const json& lPair : pKeys)
    {
        const KTime      lTime(lPair[0].get<long long>());
        KQexAnimCurveKey lKey;
        lKey.Set(lTime, lPair[1].get<float>());
        lCurve->AddKey(lTime, lKey);
    }
    pCurveNode.ConnectToChannel(lCurve, pChannel, true);
}

void AddCurves(KQexNode& pNode, const json& pTakes)
{
    for (const auto& lTake : pTakes.items())
    {
        for (const auto& lGroup : lTake.value().items())
        {
            KQexAnimCurveNode* lCurveNode = Property(pNode, lGroup.key()).GetCurveNode(true, lTake.key().c_str());
            for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
            {
                if (!lGroup.value()[lChannel].is_null())
                {
                    AddCurve(pNode, *lCurveNode, lChannel, "old_" + lGroup.key() + "xyz"[lChannel], lGroup.value()[lChannel]);
                }
            }
        }
    }
}

KQexNode* MakeNode(KQexScene* pScene, const json& pDescription)
{
    KQexNode* lNode = KQexNode::Create(pScene, pDescription["name"].get<std::string>().c_str());
    lNode->mLocalTranslation.Set(Vector3<qexVectorTemplate3<double>>(pDescription["t"]));
    lNode->mLocalRotation.Set(Vector3<qexVectorTemplate3<double>>(pDescription["r"]));
    lNode->mLocalScaling.Set(Vector3<qexVectorTemplate3<double>>(pDescription["s"]));
    lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(pDescription["order"].get<int>()));
    lNode->SetRotationActive(pDescription["active"].get<bool>());
    lNode->SetRotationOffset(kPivotSet0, Vector3<KQexVector4>(pDescription["offset"]));
    lNode->SetPreRotation(kPivotSet0, Vector3<KQexVector4>(pDescription["pre"]));
    lNode->SetPostRotation(kPivotSet0, Vector3<KQexVector4>(pDescription["post"]));
    if (pDescription["skeleton"].get<bool>())
    {
        KQexSkeleton* lSkeleton = KQexSkeleton::Create(pScene, "");
        lSkeleton->SetSkeletonType(KQexSkeleton::eSKELETON_JOINT);
        lNode->SetNodeAttribute(lSkeleton);
    }
    if (pDescription.contains("limits"))
    {
        const json& lLimits = pDescription["limits"];
        if (lLimits.contains("t"))
        {
            FillLimits(lNode->GetLimits().mTranslationLimits, lLimits["t"]);
        }
        if (lLimits.contains("r"))
        {
            FillLimits(lNode->GetLimits().mRotationLimits, lLimits["r"]);
        }
    }
    if (pDescription.contains("curves"))
    {
        AddCurves(*lNode, pDescription["curves"]);
    }
    return lNode;
}

} // namespace

KQexProperty Property(KQexNode& pNode, const std::string& pWhich)
{
    if (pWhich == "t")
    {
        return pNode.mLocalTranslation;
    }
    return pWhich == "r" ? pNode.mLocalRotation : pNode.mLocalScaling;
}

KHostCase::KHostCase(const json& pCase) : mScene(KQexScene::Create("")), mAsf(QexSdkNew<KQexAsfScene>())
{
    if (pCase.contains("skeleton"))
    {
        const json& lSkeleton = pCase["skeleton"];
        std::strcpy(mAsf->GetName(), lSkeleton["name"].get<std::string>().c_str());
        mAsf->mLengthUnit = lSkeleton["lengthUnit"].get<double>();
        for (const json& lBone : lSkeleton["bones"])
        {
            mBones.push_back(MakeBone(lBone));
            const int lParent = lBone["parent"].get<int>();
            if (lParent < 0)
            {
                mAsf->mRoot = mBones.back();
            }
            else
            {
                mBones[static_cast<size_t>(lParent)]->AddChild(mBones.back());
            }
        }
    }
    if (pCase.contains("host"))
    {
        const json& lHost = pCase["host"];
        for (const json& lNode : lHost["nodes"])
        {
            mNodes.push_back(MakeNode(mScene, lNode));
            const int lParent = lNode["parent"].get<int>();
            if (lParent >= 0)
            {
                mNodes[static_cast<size_t>(lParent)]->AddChild(mNodes.back());
            }
        }
        if (!lHost["current"].is_null())
        {
            mScene->GetEvaluator()->SetContext(mScene->CreateAnimStack(lHost["current"].get<std::string>().c_str()));
        }
    }
}

KHostCase::~KHostCase()
{
    mAsf->Destroy();
    mScene->Destroy();
}

KQexAsfNode* MakeBone(const json& pBone)
{
    KQexAsfNode* lBone = QexSdkNew<KQexAsfNode>();
    std::strcpy(lBone->mName, pBone["name"].get<std::string>().c_str());
    for (const json& lCode : pBone["dof"])
    {
        lBone->mOrderBuf[lBone->mOrderCount++] = lCode.get<int>();
    }
    FillLimits(*lBone, pBone);
    lBone->mInvalidateRLimits = pBone.value("invalidLimits", false);
    lBone->mDirectionV = Vector3<KgeTVector>(pBone["direction"]);
    lBone->mLength = pBone["length"].get<double>();
    lBone->mOrientationV = Vector3<KgeRVector>(pBone["axis"]);
    lBone->mOrientationOrder = pBone["axisOrder"].get<int>();
    KgeSet(lBone->mAxisRM, lBone->mOrientationV, lBone->mOrientationOrder);
    KgeInverse(lBone->mAxisRMInv, lBone->mAxisRM);
    if (pBone.contains("position"))
    {
        lBone->mPositionV = Vector3<KgeTVector>(pBone["position"]);
    }
    if (pBone.contains("lt"))
    {
        lBone->mLT = Vector3<KgeTVector>(pBone["lt"]);
    }
    if (pBone.contains("lr"))
    {
        lBone->mLR = Vector3<KgeRVector>(pBone["lr"]);
    }
    return lBone;
}

} // namespace qextest
