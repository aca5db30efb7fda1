#include <qexscene/kqexanimcurvenode.h>

#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexanimlayer.h>

#include <cstring>

namespace qexsdk
{

namespace
{

using KSources = KQexList<KQexConnection, &KQexConnection::mSrcHook>;

} // namespace

const kQexClassId KQexAnimCurveNode::smClassId("KQexAnimCurveNode", &KQexObject::smClassId);

const kQexClassId& KQexAnimCurveNode::GetClassId() const noexcept
{
    return smClassId;
}

KQexAnimCurveNode* KQexAnimCurveNode::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexAnimCurveNode(pContainer->GetScene(), pName));
}

KQexAnimCurveNode::KQexAnimCurveNode(KQexScene* pScene, const char* pName)
    : KQexObject(pScene, pName), mChannels{{this, "X"}, {this, "Y"}, {this, "Z"}}
{
}

void KQexAnimCurveNode::Destroy(bool pRecursive, bool pDependents)
{
    if (pRecursive)
    {
        for (KQexTypedProperty<double>& lChannel : mChannels)
        {
            while (KQexObject* lCurve = lChannel.GetSrcObject(kQexClassId(), 0))
            {
                lChannel.DisconnectSrcObject(lCurve);
                lCurve->Destroy(false, pDependents);
            }
        }
    }
    KQexObject::Destroy(pRecursive, pDependents);
}

KQexObject* KQexAnimCurveNode::GetSrcObject(kQexClassId pClass, int pIndex) const
{
    int lIndex = pIndex;
    for (const KQexTypedProperty<double>& lChannel : mChannels)
    {
        const KSources& lSources = lChannel.GetData()->mSources;
        for (const KQexConnection* lSource = lSources.GetFirst(); lSource != nullptr; lSource = KSources::GetNext(lSource))
        {
            if (lSource->mSrc->Is(pClass) && lIndex-- == 0)
            {
                return lSource->mSrc;
            }
        }
    }
    return nullptr;
}

KQexProperty KQexAnimCurveNode::GetChannel(unsigned int pChannel)
{
    return pChannel < kChannelCount ? mChannels[pChannel] : KQexProperty();
}

KQexAnimCurve* KQexAnimCurveNode::GetCurve(unsigned int pChannel, unsigned int pIndex, const char* pName) const
{
    if (pChannel >= kChannelCount)
    {
        return nullptr;
    }
    unsigned int    lIndex = pIndex;
    const KSources& lSources = mChannels[pChannel].GetData()->mSources;
    for (const KQexConnection* lSource = lSources.GetFirst(); lSource != nullptr; lSource = KSources::GetNext(lSource))
    {
        KQexAnimCurve* lCurve = QexCast<KQexAnimCurve>(lSource->mSrc);
        if (lCurve != nullptr && (pName == nullptr || std::strcmp(lCurve->GetName(), pName) == 0) && lIndex-- == 0)
        {
            return lCurve;
        }
    }
    return nullptr;
}

int KQexAnimCurveNode::GetCurveCount(unsigned int pChannel) const
{
    int lCount = 0;
    while (GetCurve(pChannel, static_cast<unsigned int>(lCount)) != nullptr)
    {
        ++lCount;
    }
    return lCount;
}

bool KQexAnimCurveNode::ConnectToChannel(KQexAnimCurve* pCurve, unsigned int pChannel, bool)
{
    return GetChannel(pChannel).ConnectSrcObject(pCurve);
}

bool KQexAnimCurveNode::DisconnectFromChannel(KQexAnimCurve* pCurve, unsigned int pChannel)
{
    return GetChannel(pChannel).DisconnectSrcObject(pCurve);
}

bool KQexAnimCurveNode::IsAnimated(bool) const
{
    for (unsigned int lChannel = 0; lChannel < kChannelCount; ++lChannel)
    {
        const KQexAnimCurve* lCurve = nullptr;
        for (unsigned int lIndex = 0; (lCurve = GetCurve(lChannel, lIndex)) != nullptr; ++lIndex)
        {
            if (lCurve->GetKeyCount() > 0)
            {
                return true;
            }
        }
    }
    return false;
}

double KQexAnimCurveNode::Evaluate(unsigned int pChannel, KTime pTime) const
{
    const KQexAnimCurve* lCurve = GetCurve(pChannel);
    if (lCurve != nullptr && lCurve->GetKeyCount() > 0)
    {
        return lCurve->Evaluate(pTime);
    }
    return pChannel < kChannelCount ? mChannels[pChannel].GetData()->mValue[0] : 0.0;
}

KQexAnimLayer* KQexAnimCurveNode::GetLayer() const
{
    return QexCast<KQexAnimLayer>(GetCollection());
}

} // namespace qexsdk
