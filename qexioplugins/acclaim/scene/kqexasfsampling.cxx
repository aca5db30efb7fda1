#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/kqexasfnode.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/acclaim/scene/kqexasfdofpose.h>

#include <cstdio>

namespace qexsdk
{

namespace
{

/// Source path in assertions about missing curve nodes; fixed, wherever the code is.
const char* const kAssertPath = "qexioplugins/acclaim/kqexfileacclaimasf";

bool HasDof(const KQexAsfNode& pNode, bool (*pIsOfGroup)(int))
{
    for (int lIter = 0; lIter < pNode.mOrderCount; ++lIter)
    {
        if (pIsOfGroup(pNode.mOrderBuf[lIter]))
        {
            return true;
        }
    }
    return false;
}

void DestroyGroup(KQexAnimCurve* (&pCurves)[3])
{
    for (KQexAnimCurve*& lCurve : pCurves)
    {
        if (lCurve != nullptr)
        {
            lCurve->Destroy(false, false);
        }
        lCurve = nullptr;
    }
}

/// Creates all three curves of a group or none, so that no partial motion results.
bool CreateGroup(KQexAnimCurve* (&pCurves)[3], const KQexAsfNode& pNode, const char* const (&pSuffixes)[3])
{
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        char lName[sizeof(pNode.mName) + 4];
        std::snprintf(lName, sizeof(lName), "%s%s", pNode.mName, pSuffixes[lIter]);
        pCurves[lIter] = KQexAnimCurve::Create(pNode.mScene, lName);
        if (pCurves[lIter] == nullptr)
        {
            DestroyGroup(pCurves);
            return false;
        }
    }
    return true;
}

bool CreateCurves(KQexAsfNode& pNode)
{
    static const char* const sTranslationSuffixes[3] = {"_tx", "_ty", "_tz"};
    static const char* const sRotationSuffixes[3] = {"_rx", "_ry", "_rz"};

    DestroyGroup(pNode.mLTData);
    DestroyGroup(pNode.mLRData);
    const bool lHasT = !HasDof(pNode, KIsTranslationDof) || CreateGroup(pNode.mLTData, pNode, sTranslationSuffixes);
    const bool lHasR = !HasDof(pNode, KIsRotationDof) || CreateGroup(pNode.mLRData, pNode, sRotationSuffixes);
    return lHasT && lHasR;
}

bool HasCurve(KQexAnimCurve* const (&pCurves)[3])
{
    return pCurves[0] != nullptr || pCurves[1] != nullptr || pCurves[2] != nullptr;
}

bool AddKeys(KQexAnimCurve* (&pCurves)[3], const double* pValues, KQexAnimCurveKey& pKey, const KTime& pTime)
{
    bool lAll = true;
    for (int lIter = 0; lIter < 3; ++lIter)
    {
        pKey.Set(pTime, static_cast<float>(pValues[lIter]));
        if (pCurves[lIter] != nullptr)
        {
            lAll = pCurves[lIter]->AddKey(pTime, pKey) >= 0 && lAll;
        }
    }
    return lAll;
}

void ReduceKeys(KQexAnimCurve* (&pCurves)[3])
{
    if (!KFCURVE_GetUseConstantKeyReducer())
    {
        return;
    }
    KQexAnimCurveFilterConstantKeyReducer lFilter;
    lFilter.Apply(pCurves, 3);
}

/// Whether there is a group to filter. Destroys curves with fewer than two keys: they add nothing to the node's default value. Only
/// the first curve is checked.
bool KeepGroup(KQexAnimCurve* (&pCurves)[3])
{
    if (pCurves[0] == nullptr)
    {
        return false;
    }
    if (pCurves[0]->GetKeyCount() > 1)
    {
        return true;
    }
    DestroyGroup(pCurves);
    return false;
}

void FilterRotation(KQexAsfNode& pNode)
{
    const int lChoice = KFCURVE_GetRotationFilterToApply();
    if (lChoice == 2)
    {
        // The filter takes the math library's order code, which is twice the host's.
        KQexAnimCurveFilterUnroll lFilter;
        lFilter.SetRotationOrder(EulerOrderFromOrderBuf(pNode.mOrderBuf, pNode.mOrderCount));
        lFilter.Apply(pNode.mLRData, 3);
    }
    else if (lChoice == 1)
    {
        // Which triples are equivalent depends on the order, so this filter needs it as well.
        KQexAnimCurveFilterGimbleKiller lFilter;
        lFilter.SetRotationOrder(EulerOrderFromOrderBuf(pNode.mOrderBuf, pNode.mOrderCount));
        lFilter.Apply(pNode.mLRData, 3);
    }
}

void StopSampling(KQexAsfNode& pNode)
{
    if (KeepGroup(pNode.mLTData))
    {
        ReduceKeys(pNode.mLTData);
    }
    if (KeepGroup(pNode.mLRData))
    {
        FilterRotation(pNode);
        ReduceKeys(pNode.mLRData);
    }
}

/// Connects pCurve to a channel and destroys the channel's old curve. False when memory ran out; the bone then keeps pCurve and the
/// channel its curve. When pCurve is from another scene than the node, nothing changes either, but the result is true.
bool ReplaceCurve(KQexAnimCurveNode& pCurveNode, unsigned int pChannel, KQexAnimCurve*& pCurve)
{
    KQexAnimCurve* lOld = pCurveNode.GetCurve(pChannel, 0, nullptr);
    if (pCurve != nullptr && pCurve != lOld && !pCurveNode.ConnectToChannel(pCurve, pChannel, true))
    {
        return pCurve->GetScene() != nullptr && pCurve->GetScene() != pCurveNode.GetScene();
    }
    if (lOld != nullptr && pCurve != lOld)
    {
        pCurveNode.DisconnectFromChannel(lOld, pChannel);
        lOld->Destroy(false, false);
    }
    pCurve = nullptr;
    return true;
}

bool ConnectGroup(KQexAnimCurveNode& pCurveNode, KQexAnimCurve* (&pCurves)[3], const double* pDefaults)
{
    bool lAll = true;
    for (unsigned int lChannel = 0; lChannel < 3; ++lChannel)
    {
        pCurveNode.SetChannelValue<double>(lChannel, pDefaults[lChannel]);
        lAll = ReplaceCurve(pCurveNode, lChannel, pCurves[lChannel]) && lAll;
    }
    return lAll;
}

/// Without a name there is no curve node, which does not mean that memory ran out.
bool HasTakeName(const char* pTakeName)
{
    return pTakeName != nullptr && *pTakeName;
}

qexVectorTemplate3<double> ToVector3(const double* pValues)
{
    return qexVectorTemplate3<double>(pValues[0], pValues[1], pValues[2]);
}

} // namespace

bool KQexAsfNode::CreateDataFromDOF(KQexScene* pScene)
{
    bool        lAll = true;
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            continue;
        }
        lNode->SetScene(pScene);
        lAll = CreateCurves(*lNode) && lAll;
    }
    return lAll;
}

void KQexAsfNode::StartSamplingData()
{
    KQexAsfWalk lWalk(this);
    while (lWalk.Next())
    {
        // Nothing to do: the curves are new and empty.
    }
}

bool KQexAsfNode::AddSampleFromDOF(const double* pDOF, const KTime& pTime, double pLengthUnit, double pAngleUnit, bool pSetRotatePivotOffet,
                                   bool pSetPreRotation)
{
    // Computes only what a curve receives; translation and rotation are independent.
    KQexAnimCurveKey lKey;
    bool             lAll = true;
    if (HasCurve(mLTData))
    {
        const KgeTVector lT = KeyTranslation(*this, pDOF, pLengthUnit, {pSetRotatePivotOffet, pSetPreRotation});
        lAll = AddKeys(mLTData, lT.mData, lKey, pTime);
    }
    if (HasCurve(mLRData))
    {
        const KgeRVector lR = pSetPreRotation ? SumOfAngles(*this, pDOF, pAngleUnit) : FoldedAngles(*this, pDOF, pAngleUnit);
        lAll = AddKeys(mLRData, lR.mData, lKey, pTime) && lAll;
    }
    return lAll;
}

void KQexAsfNode::StopSamplingData()
{
    KQexAsfWalk lWalk(this);
    while (HKQexAsfNode lNode = lWalk.Next())
    {
        if (lWalk.IsEntering())
        {
            StopSampling(*lNode);
        }
    }
}

bool KQexAsfNode::SetKFCurves(KQexNode* pQexNode, const char* pTakeName)
{
    bool lAll = true;
    pQexNode->mLocalTranslation.Set(ToVector3(mLT.mData));
    if (mLTData[0] != nullptr)
    {
        KQexAnimCurveNode* lTranslation = pQexNode->mLocalTranslation.GetCurveNode(true, pTakeName);
        QEX_ASSERT(kAssertPath, lTranslation, "lTranslation!=NULL");
        lAll = lTranslation != nullptr ? ConnectGroup(*lTranslation, mLTData, mLT.mData) : !HasTakeName(pTakeName);
    }

    pQexNode->mLocalRotation.Set(ToVector3(mLR.mData));
    if (mLRData[0] != nullptr)
    {
        KQexAnimCurveNode* lRotation = pQexNode->mLocalRotation.GetCurveNode(true, pTakeName);
        QEX_ASSERT(kAssertPath, lRotation, "lRotation!=NULL");
        lAll = (lRotation != nullptr ? ConnectGroup(*lRotation, mLRData, mLR.mData) : !HasTakeName(pTakeName)) && lAll;
    }
    return lAll;
}

void KQexAsfNode::GetCurveNodePointers(KQexNode* pQexNode)
{
    if (pQexNode == nullptr)
    {
        return;
    }
    KQexAnimStack* lStack = pQexNode->GetScene()->GetEvaluator()->GetContext();
    KQexAnimLayer* lLayer = KQexLayerOf(lStack);

    mTOffset = pQexNode->GetRotationOffset();
    mPreRotation = pQexNode->GetPreRotation();
    mPostRotation = pQexNode->GetPostRotation();
    mLTNode = lLayer != nullptr ? pQexNode->mLocalTranslation.GetCurveNode(lLayer, false) : nullptr;
    mLRNode = lLayer != nullptr ? pQexNode->mLocalRotation.GetCurveNode(lLayer, false) : nullptr;
    mLSNode = lLayer != nullptr ? pQexNode->mLocalScaling.GetCurveNode(lLayer, false) : nullptr;
}

} // namespace qexsdk
