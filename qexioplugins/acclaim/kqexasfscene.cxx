#include <qexioplugins/acclaim/kqexasfscene.h>

namespace qexsdk
{

KQexAsfScene::KQexAsfScene() : mName{}, mMassUnit(1.0), mLengthUnit(1.0), mAngleUnit(1.0), mRoot(nullptr) {}

KQexAsfScene::~KQexAsfScene()
{
    QexSdkDelete(mRoot);
}

void KQexAsfScene::Destroy()
{
    QexSdkDelete(this);
}

char* KQexAsfScene::GetName()
{
    return mName;
}

HKQexAsfNode KQexAsfScene::GetRootNode()
{
    return mRoot;
}

void KQexAsfSceneDestroyer::operator()(KQexAsfScene* pScene) const
{
    if (pScene != nullptr)
    {
        pScene->Destroy();
    }
}

} // namespace qexsdk
