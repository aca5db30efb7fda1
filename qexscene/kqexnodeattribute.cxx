#include <qexscene/kqexnodeattribute.h>

#include <qexscene/kqexnode.h>

namespace qexsdk
{

const kQexClassId KQexNodeAttribute::smClassId("KQexNodeAttribute", &KQexObject::smClassId);

const kQexClassId& KQexNodeAttribute::GetClassId() const noexcept
{
    return smClassId;
}

KQexNodeAttribute::~KQexNodeAttribute()
{
    if (mNode != nullptr)
    {
        mNode->SetNodeAttribute(nullptr);
    }
}

} // namespace qexsdk
