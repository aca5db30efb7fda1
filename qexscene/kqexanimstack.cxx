#include <qexscene/kqexanimstack.h>

#include <qexscene/kqexscene.h>

namespace qexsdk
{

const kQexClassId KQexAnimStack::smClassId("KQexAnimStack", &KQexCollection::smClassId);

const kQexClassId& KQexAnimStack::GetClassId() const noexcept
{
    return smClassId;
}

KQexAnimStack* KQexAnimStack::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexAnimStack(pContainer->GetScene(), pName));
}

KQexAnimStack::KQexAnimStack(KQexScene* pScene, const char* pName) : KQexCollection(pScene, pName)
{
    pScene->AddStack(this);
}

KQexAnimStack::~KQexAnimStack()
{
    if (GetScene() != nullptr)
    {
        GetScene()->RemoveStack(this);
    }
}

KQexAnimLayer* KQexAnimStack::GetOrCreateBaseLayer()
{
    KQexAnimLayer* lLayer = GetMember<KQexAnimLayer>(0);
    if (lLayer != nullptr)
    {
        return lLayer;
    }
    lLayer = KQexAnimLayer::Create(this, "BaseLayer");
    AddMember(lLayer);
    return lLayer;
}

} // namespace qexsdk
