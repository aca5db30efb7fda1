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
    // Each object by itself: none of them takes the next one along.
    while (KQexObject* lObject = mScene->GetNextObject(mLast))
    {
        lObject->Destroy(false, false);
    }
    mScene->GetEvaluator()->SetContext(mContext);
}

} // namespace qexsdk
