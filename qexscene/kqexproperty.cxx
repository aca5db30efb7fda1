#include <qexscene/kqexproperty.h>

#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexanimlayer.h>
#include <qexscene/kqexanimstack.h>
#include <qexscene/kqexscene.h>

#include <climits>

namespace qexsdk
{

namespace
{

/// Number of components of a value of the type; 0 for eQexUndefined.
int ComponentCount(EQexType pType)
{
    switch (pType)
    {
    case eQexBool:
    case eQexInt:
    case eQexFloat:
    case eQexDouble:
        return 1;
    case eQexDouble3:
        return 3;
    case eQexDouble4:
        return 4;
    case eQexUndefined:
        break;
    }
    return 0;
}

/// Whether the types convert to each other: number and number, vector and vector.
bool Converts(EQexType pFirst, EQexType pSecond)
{
    const int lFirst = ComponentCount(pFirst);
    const int lSecond = ComponentCount(pSecond);
    return lFirst != 0 && lSecond != 0 && (lFirst == 1) == (lSecond == 1);
}

/// The value at \p pValue as doubles; missing components are 0.
void Load(double (&pResult)[4], const void* pValue, EQexType pType)
{
    for (double& lComponent : pResult)
    {
        lComponent = 0.0;
    }
    switch (pType)
    {
    case eQexBool:
        pResult[0] = *static_cast<const bool*>(pValue) ? 1.0 : 0.0;
        break;
    case eQexInt:
        pResult[0] = *static_cast<const int*>(pValue);
        break;
    case eQexFloat:
        pResult[0] = static_cast<double>(*static_cast<const float*>(pValue));
        break;
    default:
        for (int lI = 0; lI < ComponentCount(pType); ++lI)
        {
            pResult[lI] = static_cast<const double*>(pValue)[lI];
        }
        break;
    }
}

/// \p pValue truncated and clamped to int; 0 for NaN.
int ToInt(double pValue)
{
    if (pValue != pValue)
    {
        return 0;
    }
    return pValue >= INT_MAX ? INT_MAX : pValue <= INT_MIN ? INT_MIN : static_cast<int>(pValue);
}

void Store(void* pResult, EQexType pType, const double (&pValue)[4])
{
    switch (pType)
    {
    case eQexBool:
        *static_cast<bool*>(pResult) = pValue[0] != 0.0;
        break;
    case eQexInt:
        *static_cast<int*>(pResult) = ToInt(pValue[0]);
        break;
    case eQexFloat:
        *static_cast<float*>(pResult) = static_cast<float>(pValue[0]);
        break;
    default:
        for (int lI = 0; lI < ComponentCount(pType); ++lI)
        {
            static_cast<double*>(pResult)[lI] = pValue[lI];
        }
        break;
    }
}

/// The curve node of \p pData on \p pLayer. Searches from the last source, because the latest takes are used most.
KQexAnimCurveNode* FindCurveNode(const KQexPropertyData& pData, const KQexAnimLayer* pLayer)
{
    using KSources = KQexList<KQexConnection, &KQexConnection::mSrcHook>;
    for (const KQexConnection* lSource = pData.mSources.GetLast(); lSource != nullptr; lSource = KSources::GetPrev(lSource))
    {
        if (lSource->mSrc->GetCollection() == pLayer)
        {
            KQexAnimCurveNode* lCurveNode = QexCast<KQexAnimCurveNode>(lSource->mSrc);
            if (lCurveNode != nullptr)
            {
                return lCurveNode;
            }
        }
    }
    return nullptr;
}

} // namespace

KQexPropertyData::KQexPropertyData(KQexObject* pOwner, const char* pName, EQexType pType, double pX, double pY, double pZ)
    : mOwner(pOwner), mName(pName), mType(pType), mValue{pX, pY, pZ, 0.0}
{
}

KQexPropertyData::~KQexPropertyData()
{
    while (mSources.GetFirst() != nullptr)
    {
        mSources.GetFirst()->Remove();
    }
}

bool KQexProperty::Set(const void* pValue, EQexType pType, bool)
{
    if (mProperty == nullptr || pValue == nullptr || !Converts(pType, mProperty->mType))
    {
        return false;
    }
    double lValue[4];
    Load(lValue, pValue, pType);
    if (mProperty->mType == eQexDouble3)
    {
        lValue[3] = 0.0;
    }
    for (int lI = 0; lI < 4; ++lI)
    {
        mProperty->mValue[lI] = lValue[lI];
    }
    return true;
}

bool KQexProperty::Get(void* pValue, EQexType pType) const
{
    if (mProperty == nullptr || pValue == nullptr || !Converts(mProperty->mType, pType))
    {
        return false;
    }
    Store(pValue, pType, mProperty->mValue);
    return true;
}

KQexAnimCurveNode* KQexProperty::GetCurveNode(bool pCreate, const char* pTakeName)
{
    KQexScene* lScene = mProperty != nullptr ? mProperty->mOwner->GetScene() : nullptr;
    if (lScene == nullptr || mProperty->mType != eQexDouble3)
    {
        return nullptr;
    }
    const int      lStackCount = lScene->GetAnimStackCount();
    KQexAnimStack* lStack = pCreate ? lScene->CreateAnimStack(pTakeName) : lScene->FindAnimStack(pTakeName);
    if (lStack == nullptr)
    {
        return nullptr;
    }
    KQexAnimCurveNode* lCurveNode = GetCurveNode(KQexLayerOf(lStack), pCreate);
    if (lCurveNode == nullptr && lScene->GetAnimStackCount() != lStackCount)
    {
        // Undo the take created above: there was no memory for its curve node.
        lStack->Destroy(true);
    }
    return lCurveNode;
}

KQexAnimCurveNode* KQexProperty::GetCurveNode(KQexAnimLayer* pLayer, bool pCreate)
{
    if (mProperty == nullptr || pLayer == nullptr || mProperty->mType != eQexDouble3)
    {
        return nullptr;
    }
    KQexAnimCurveNode* lCurveNode = FindCurveNode(*mProperty, pLayer);
    KQexScene*         lScene = mProperty->mOwner->GetScene();
    if (lCurveNode != nullptr || !pCreate || lScene == nullptr || pLayer->GetScene() != lScene)
    {
        return lCurveNode;
    }
    lCurveNode = KQexAnimCurveNode::Create(lScene, mProperty->mName);
    if (lCurveNode == nullptr)
    {
        return nullptr;
    }
    if (!pLayer->AddMember(lCurveNode) || !ConnectSrcObject(lCurveNode))
    {
        lCurveNode->Destroy();
        return nullptr;
    }
    for (unsigned int lChannel = 0; lChannel < KQexAnimCurveNode::kChannelCount; ++lChannel)
    {
        lCurveNode->SetChannelValue<double>(lChannel, mProperty->mValue[lChannel]);
    }
    return lCurveNode;
}

const KQexAnimCurveNode* KQexProperty::GetCurveNode(const KQexAnimLayer* pLayer) const
{
    return mProperty != nullptr && pLayer != nullptr ? FindCurveNode(*mProperty, pLayer) : nullptr;
}

KQexObject* KQexProperty::GetSrcObject(const kQexClassId& pClass, int pIndex) const
{
    if (mProperty == nullptr || pIndex < 0)
    {
        return nullptr;
    }
    using KSources = KQexList<KQexConnection, &KQexConnection::mSrcHook>;
    int lIndex = pIndex;
    for (const KQexConnection* lSource = mProperty->mSources.GetFirst(); lSource != nullptr; lSource = KSources::GetNext(lSource))
    {
        if (lSource->mSrc->Is(pClass) && lIndex-- == 0)
        {
            return lSource->mSrc;
        }
    }
    return nullptr;
}

bool KQexProperty::ConnectSrcObject(KQexObject* pObject)
{
    if (mProperty == nullptr || pObject == nullptr)
    {
        return false;
    }
    KQexScene* lScene = mProperty->mOwner->GetScene();
    if (pObject->GetScene() != nullptr && pObject->GetScene() != lScene)
    {
        return false;
    }
    if (KQexConnection::Make(pObject, mProperty) == nullptr)
    {
        return false;
    }
    if (pObject->GetScene() == nullptr && lScene != nullptr)
    {
        lScene->Adopt(pObject);
    }
    return true;
}

bool KQexProperty::DisconnectSrcObject(KQexObject* pObject)
{
    if (mProperty == nullptr || pObject == nullptr)
    {
        return false;
    }
    // Search the object's list, newest first: it drives few properties, while a property may have a source per take.
    KQexConnection* lFound = nullptr;
    for (KQexConnection* lConnection = pObject->mFirstDst; lConnection != nullptr; lConnection = lConnection->mNextDst)
    {
        if (lConnection->mDst == mProperty)
        {
            lFound = lConnection;
        }
    }
    if (lFound == nullptr)
    {
        return false;
    }
    lFound->Remove();
    return true;
}

} // namespace qexsdk
