#include <qexscene/kqexscene.h>

#include <atomic>
#include <cstring>

namespace qexsdk
{

namespace
{

std::atomic<unsigned long long> sSceneCount{0};

} // namespace

const kQexClassId KQexScene::smClassId("KQexScene", &KQexObject::smClassId);

const kQexClassId& KQexScene::GetClassId() const noexcept
{
    return smClassId;
}

KQexScene::KQexScene(const char* pName) : KQexObject(nullptr, pName), mSerial(++sSceneCount)
{
    SetScene(this);
}

KQexScene* KQexScene::Create(const char* pName)
{
    KQexScene* lScene = NullIfIncomplete(new KQexScene(pName));
    if (lScene == nullptr)
    {
        return nullptr;
    }
    lScene->mRootNode = KQexNode::Create(lScene, "RootNode");
    lScene->mEvaluator = KQexAnimEvaluator::Create(lScene);
    if (lScene->mRootNode == nullptr || lScene->mEvaluator == nullptr)
    {
        lScene->Destroy();
        return nullptr;
    }
    return lScene;
}

void KQexScene::Destroy(bool pRecursive, bool pDependents)
{
    KQexObject::Destroy(pRecursive, pDependents);
}

KQexScene::~KQexScene()
{
    DestroyObjects();
    SetScene(nullptr);
}

void KQexScene::DestroyObjects()
{
    mRootNode = nullptr;
    mEvaluator = nullptr;
    while (KQexObject* lObject = mObjects.GetFirst())
    {
        // An object without a scene can be destroyed, even the root node and the evaluator.
        Release(lObject);
        lObject->Destroy(false, false);
    }
}

void KQexScene::Adopt(KQexObject* pObject) noexcept
{
    mObjects.Append(pObject);
    pObject->mScene = this;
}

void KQexScene::Release(KQexObject* pObject) noexcept
{
    mObjects.Remove(pObject);
    pObject->mScene = nullptr;
    Touch();
}

KQexAnimStack* KQexScene::FindAnimStack(const char* pName) const
{
    if (pName == nullptr || *pName == '\0')
    {
        return nullptr;
    }
    for (KQexAnimStack* lStack = mStacks.GetFirst(); lStack != nullptr; lStack = KStacks::GetNext(lStack))
    {
        if (std::strcmp(lStack->GetName(), pName) == 0)
        {
            return lStack;
        }
    }
    return nullptr;
}

KQexAnimStack* KQexScene::CreateAnimStack(const char* pName)
{
    if (pName == nullptr || *pName == '\0')
    {
        return nullptr;
    }
    KQexAnimStack* lFound = FindAnimStack(pName);
    KQexAnimStack* lStack = lFound != nullptr ? lFound : KQexAnimStack::Create(this, pName);
    if (lStack == nullptr || lStack->GetOrCreateBaseLayer() != nullptr)
    {
        return lStack;
    }
    if (lFound == nullptr)
    {
        lStack->Destroy();
    }
    return nullptr;
}

void KQexScene::AddStack(KQexAnimStack* pStack)
{
    mStacks.Append(pStack);
    if (mStacks.GetCount() == 1 && mEvaluator != nullptr)
    {
        mEvaluator->SetContext(pStack);
    }
}

void KQexScene::RemoveStack(KQexAnimStack* pStack)
{
    mStacks.Remove(pStack);
    if (mEvaluator != nullptr && mEvaluator->GetContext() == pStack)
    {
        mEvaluator->SetContext(mStacks.GetFirst());
    }
}

} // namespace qexsdk
