#include <qexscene/kqexanimlayer.h>

namespace qexsdk
{

const kQexClassId KQexAnimLayer::smClassId("KQexAnimLayer", &KQexCollection::smClassId);

const kQexClassId& KQexAnimLayer::GetClassId() const noexcept
{
    return smClassId;
}

KQexAnimLayer* KQexAnimLayer::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexAnimLayer(pContainer->GetScene(), pName));
}

} // namespace qexsdk
