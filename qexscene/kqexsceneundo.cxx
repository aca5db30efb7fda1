#include <qexscene/kqexsceneundo.h>

namespace qexsdk
{

KQexSceneUndo::KQexSceneUndo(KQexScene* pScene) : mScene(pScene)
{
    if (mScene != nullptr)
    {
        mLast = mScene->GetLastObject();
        mContext = mScene->GetEvaluator()->GetContext();
    }
}

KQexSceneUndo::~KQexSceneUndo()
{
    if (mScene == nullptr)
    {
        return;
    }
    // Not recursive, which could destroy older objects: a new node may be the parent of an older one.
    while (KQexObject* lObject = mScene->GetNextObject(mLast))
    {
        lObject->Destroy(false, false);
    }
    mScene->GetEvaluator()->SetContext(mContext);
}

} // namespace qexsdk
