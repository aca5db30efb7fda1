#include <qexscene/kqexcollection.h>

#include <qexscene/kqexscene.h>

namespace qexsdk
{

const kQexClassId KQexCollection::smClassId("KQexCollection", &KQexObject::smClassId);

const kQexClassId& KQexCollection::GetClassId() const noexcept
{
    return smClassId;
}

KQexCollection* KQexCollection::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexCollection(pContainer->GetScene(), pName));
}

KQexCollection::~KQexCollection()
{
    while (mMembers.GetLast() != nullptr)
    {
        RemoveMember(mMembers.GetLast());
    }
}

void KQexCollection::Destroy(bool pRecursive, bool pDependents)
{
    // Depth first from the last member, without recursion: collections may be nested deeper than the call stack allows.
    KQexCollection* lCollection = pRecursive ? this : nullptr;
    while (lCollection != nullptr)
    {
        KQexObject*     lMember = lCollection->mMembers.GetLast();
        KQexCollection* lInner = QexCast<KQexCollection>(lMember);
        if (lInner != nullptr)
        {
            lCollection = lInner;
        }
        else if (lMember != nullptr)
        {
            lCollection->RemoveMember(lMember);
            lMember->Destroy(true, pDependents);
        }
        else
        {
            KQexCollection* lOuter = lCollection == this ? nullptr : lCollection->GetCollection();
            if (lOuter != nullptr)
            {
                lOuter->RemoveMember(lCollection);
                lCollection->Destroy(false, pDependents);
            }
            lCollection = lOuter;
        }
    }
    KQexObject::Destroy(pRecursive, pDependents);
}

bool KQexCollection::AddMember(KQexObject* pMember)
{
    if (pMember == nullptr || pMember->GetScene() == nullptr || pMember->GetScene() != GetScene())
    {
        return false;
    }
    for (const KQexCollection* lOuter = this; lOuter != nullptr; lOuter = lOuter->GetCollection())
    {
        if (lOuter == pMember)
        {
            return false;
        }
    }
    if (pMember->mCollection != nullptr)
    {
        pMember->mCollection->RemoveMember(pMember);
    }
    mMembers.Append(pMember);
    pMember->mCollection = this;
    GetScene()->Touch();
    return true;
}

bool KQexCollection::RemoveMember(KQexObject* pMember)
{
    if (pMember == nullptr || pMember->mCollection != this)
    {
        return false;
    }
    mMembers.Remove(pMember);
    pMember->mCollection = nullptr;
    if (GetScene() != nullptr)
    {
        GetScene()->Touch();
    }
    return true;
}

KQexObject* KQexCollection::GetMember(const kQexClassId& pClass, int pIndex) const
{
    if (pIndex < 0)
    {
        return nullptr;
    }
    int lIndex = pIndex;
    for (KQexObject* lMember = mMembers.GetFirst(); lMember != nullptr; lMember = KMembers::GetNext(lMember))
    {
        if (lMember->Is(pClass) && lIndex-- == 0)
        {
            return lMember;
        }
    }
    return nullptr;
}

} // namespace qexsdk
