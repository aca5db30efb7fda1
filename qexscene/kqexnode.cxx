#include <qexscene/kqexnode.h>

#include <qexscene/kqexanimcurvenode.h>
#include <qexscene/kqexscene.h>
#include <qexscene/kqexskeleton.h>

#include <cstring>

namespace qexsdk
{

const kQexClassId KQexNode::smClassId("KQexNode", &KQexObject::smClassId);

const kQexClassId& KQexNode::GetClassId() const noexcept
{
    return smClassId;
}

KQexNode* KQexNode::Create(KQexObject* pContainer, const char* pName)
{
    if (pContainer == nullptr || pContainer->GetScene() == nullptr)
    {
        return nullptr;
    }
    return NullIfIncomplete(new KQexNode(pContainer->GetScene(), pName));
}

KQexNode::KQexNode(KQexScene* pScene, const char* pName)
    : KQexObject(pScene, pName),
      mLocalTranslation(this, "Lcl Translation"),
      mLocalRotation(this, "Lcl Rotation"),
      mLocalScaling(this, "Lcl Scaling", 1.0, 1.0, 1.0),
      mLimits(this)
{
}

KQexNode::~KQexNode()
{
    while (mChildren.GetLast() != nullptr)
    {
        Detach(mChildren.GetLast());
    }
    if (mParent != nullptr)
    {
        mParent->Detach(this);
    }
    SetNodeAttribute(nullptr);
}

bool KQexNode::IsSceneRoot() const
{
    return GetScene() != nullptr && GetScene()->GetRootNode() == this;
}

void KQexNode::DestroyAttributeAndCurves(KQexNode* pNode)
{
    for (KQexProperty* lProperty : {static_cast<KQexProperty*>(&pNode->mLocalTranslation),
                                    static_cast<KQexProperty*>(&pNode->mLocalRotation), static_cast<KQexProperty*>(&pNode->mLocalScaling)})
    {
        while (KQexObject* lSource = lProperty->GetSrcObject(kQexClassId()))
        {
            lProperty->DisconnectSrcObject(lSource);
            lSource->Destroy(true);
        }
    }
    KQexNodeAttribute* lAttribute = pNode->mAttribute;
    if (lAttribute != nullptr)
    {
        pNode->SetNodeAttribute(nullptr);
        lAttribute->Destroy();
    }
}

void KQexNode::Destroy(bool pRecursive, bool pDependents)
{
    // Children before parents, last first, without recursion: trees may be deeper than the stack.
    KQexNode* lNode = pRecursive ? this : nullptr;
    while (lNode != nullptr)
    {
        if (lNode->mChildren.GetLast() != nullptr)
        {
            lNode = lNode->mChildren.GetLast();
            continue;
        }
        KQexNode* lParent = lNode == this ? nullptr : lNode->mParent;
        if (!lNode->IsSceneRoot())
        {
            DestroyAttributeAndCurves(lNode);
        }
        if (lParent != nullptr)
        {
            lParent->Detach(lNode);
            lNode->Destroy(false, pDependents);
        }
        lNode = lParent;
    }
    if (!IsSceneRoot())
    {
        KQexObject::Destroy(pRecursive, pDependents);
    }
}

KQexObject* KQexNode::GetSrcObject(kQexClassId pClass, int pIndex) const
{
    int lIndex = pIndex;
    if (mAttribute != nullptr && mAttribute->Is(pClass) && lIndex-- == 0)
    {
        return mAttribute;
    }
    for (KQexNode* lChild = mChildren.GetFirst(); lChild != nullptr; lChild = KChildren::GetNext(lChild))
    {
        if (lChild->Is(pClass) && lIndex-- == 0)
        {
            return lChild;
        }
    }
    return nullptr;
}

bool KQexNode::SetNodeAttribute(KQexNodeAttribute* pAttribute)
{
    if (pAttribute != nullptr && pAttribute->GetScene() != GetScene())
    {
        return false;
    }
    if (mAttribute != nullptr)
    {
        mAttribute->mNode = nullptr;
    }
    mAttribute = pAttribute;
    if (pAttribute != nullptr)
    {
        if (pAttribute->mNode != nullptr)
        {
            pAttribute->mNode->mAttribute = nullptr;
        }
        pAttribute->mNode = this;
    }
    return true;
}

KQexSkeleton* KQexNode::GetSkeleton() const
{
    return QexCast<KQexSkeleton>(static_cast<KQexObject*>(mAttribute));
}

bool KQexNode::AddChild(KQexNode* pChild)
{
    if (pChild == nullptr || pChild == this || pChild->GetScene() == nullptr || pChild->GetScene() != GetScene() || pChild->IsSceneRoot())
    {
        return false;
    }
    if (pChild->mChildren.GetCount() > 0)
    {
        for (const KQexNode* lAncestor = mParent; lAncestor != nullptr; lAncestor = lAncestor->mParent)
        {
            if (lAncestor == pChild)
            {
                return false;
            }
        }
    }
    if (pChild->mParent != nullptr)
    {
        pChild->mParent->Detach(pChild);
    }
    mChildren.Append(pChild);
    pChild->mParent = this;
    GetScene()->Touch();
    return true;
}

bool KQexNode::RemoveChild(KQexNode* pChild)
{
    if (pChild == nullptr || pChild->mParent != this)
    {
        return false;
    }
    Detach(pChild);
    return true;
}

void KQexNode::Detach(KQexNode* pChild)
{
    mChildren.Remove(pChild);
    pChild->mParent = nullptr;
    if (GetScene() != nullptr)
    {
        GetScene()->Touch();
    }
}

int KQexNode::GetChildCount(bool pRecursive) const
{
    if (!pRecursive)
    {
        return mChildren.GetCount();
    }
    int lCount = 0;
    for (const KQexNode* lNode = GetNextInTree(this); lNode != nullptr; lNode = lNode->GetNextInTree(this))
    {
        ++lCount;
    }
    return lCount;
}

KQexNode* KQexNode::GetNextInTree(const KQexNode* pRoot) const
{
    if (mChildren.GetFirst() != nullptr)
    {
        return mChildren.GetFirst();
    }
    for (const KQexNode* lNode = this; lNode != nullptr && lNode != pRoot; lNode = lNode->mParent)
    {
        if (lNode->GetNextSibling() != nullptr)
        {
            return lNode->GetNextSibling();
        }
    }
    return nullptr;
}

KQexNode* KQexNode::FindChild(const char* pName, bool pRecursive, bool) const
{
    if (pName == nullptr)
    {
        return nullptr;
    }
    KQexNode* lNode = mChildren.GetFirst();
    while (lNode != nullptr && std::strcmp(lNode->GetName(), pName) != 0)
    {
        lNode = pRecursive ? lNode->GetNextInTree(this) : lNode->GetNextSibling();
    }
    return lNode;
}

} // namespace qexsdk
