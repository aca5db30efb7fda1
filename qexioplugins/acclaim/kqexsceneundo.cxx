#include <qexioplugins/acclaim/kqexsceneundo.h>

namespace qexsdk
{

KQexSceneUndo::KQexSceneUndo(KQexScene* pScene) : mScene(pScene)
{
    if (mScene == nullptr)
        return;
    mContext = mScene->GetEvaluator()->GetContext();
    for (const KQexObject* lObject = mScene->GetFirstObject(); lObject != nullptr; lObject = mScene->GetNextObject(lObject))
        mLast = lObject;
}

KQexSceneUndo::~KQexSceneUndo()
{
    if (mScene == nullptr)
        return;
    // Each object goes by itself: none of them takes the next one along.
    for (const KQexObject* lObject = mScene->GetNextObject(mLast); lObject != nullptr; lObject = mScene->GetNextObject(mLast))
        const_cast<KQexObject*>(lObject)->Destroy(false, false);
    mScene->GetEvaluator()->SetContext(mContext);
}

} // namespace qexsdk
