#include <qexscene/kqexobject.h>

#include <qexscene/kqexcollection.h>
#include <qexscene/kqexconnection.h>
#include <qexscene/kqexscene.h>

#include <cstring>

namespace qexsdk
{

const kQexClassId KQexObject::smClassId("KQexObject", nullptr);

KQexObject::KQexObject(KQexScene* pScene, const char* pName)
{
    SetName(pName);
    if (pScene != nullptr)
    {
        pScene->Adopt(this);
    }
}

KQexObject::~KQexObject()
{
    while (mFirstDst != nullptr)
    {
        mFirstDst->Remove();
    }
    if (mCollection != nullptr)
    {
        mCollection->RemoveMember(this);
    }
    if (mScene != nullptr)
    {
        mScene->Release(this);
    }
    QexSdkFree(mName);
}

void KQexObject::Destroy(bool, bool)
{
    delete this;
}

bool KQexObject::SetName(const char* pName)
{
    const char*       lName = pName != nullptr ? pName : "";
    const std::size_t lSize = std::strlen(lName) + 1;
    char*             lCopy = static_cast<char*>(QexSdkMalloc(lSize));
    if (lCopy == nullptr)
    {
        return false;
    }
    std::memcpy(lCopy, lName, lSize);
    QexSdkFree(mName);
    mName = lCopy;
    return true;
}

KString KQexObject::GetNameWithoutNameSpacePrefix() const noexcept
{
    return KString(GetBareName());
}

const char* KQexObject::GetBareName() const noexcept
{
    const char* lColon = std::strrchr(GetName(), ':');
    return lColon != nullptr ? lColon + 1 : GetName();
}

const kQexClassId& KQexObject::GetClassId() const noexcept
{
    return smClassId;
}

KQexObject* KQexObject::GetSrcObject(kQexClassId, int) const
{
    return nullptr;
}

int KQexObject::GetDstPropertyCount() const noexcept
{
    int lCount = 0;
    for (const KQexConnection* lConnection = mFirstDst; lConnection != nullptr; lConnection = lConnection->mNextDst)
    {
        ++lCount;
    }
    return lCount;
}

} // namespace qexsdk
