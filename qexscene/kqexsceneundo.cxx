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
    // Not recursive: each object is destroyed by itself, so none can destroy the next one.
    while (KQexObject* lObject = mScene->GetNextObject(mLast))
    {
        lObject->Destroy(false, false);
    }
    mScene->GetEvaluator()->SetContext(mContext);
}

} // namespace qexsdk
