#include <qexscene/kqexskeleton.h>

namespace qexsdk
{

const kQexClassId KQexSkeleton::smClassId("KQexSkeleton", &KQexNodeAttribute::smClassId);

const kQexClassId& KQexSkeleton::GetClassId() const noexcept
{
    return smClassId;
}

KQexSkeleton* KQexSkeleton::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexSkeleton(pContainer->GetScene(), pName));
}

} // namespace qexsdk
