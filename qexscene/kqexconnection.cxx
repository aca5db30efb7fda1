#include <qexscene/kqexconnection.h>

#include <qexscene/kqexobject.h>
#include <qexscene/kqexproperty.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

KQexConnection* KQexConnection::Make(KQexObject* pSrc, KQexPropertyData* pDst) noexcept
{
    KQexConnection* lConnection = QexSdkNew<KQexConnection>();
    if (lConnection == nullptr)
    {
        return nullptr;
    }
    lConnection->mSrc = pSrc;
    lConnection->mDst = pDst;
    lConnection->mNextDst = pSrc->mFirstDst;
    if (pSrc->mFirstDst != nullptr)
    {
        pSrc->mFirstDst->mPrevDst = lConnection;
    }
    pSrc->mFirstDst = lConnection;
    pDst->mSources.Append(lConnection);
    lConnection->TouchScene();
    return lConnection;
}

void KQexConnection::Remove() noexcept
{
    TouchScene();
    (mPrevDst != nullptr ? mPrevDst->mNextDst : mSrc->mFirstDst) = mNextDst;
    if (mNextDst != nullptr)
    {
        mNextDst->mPrevDst = mPrevDst;
    }
    mDst->mSources.Remove(this);
    QexSdkDelete(this);
}

void KQexConnection::TouchScene() const noexcept
{
    KQexScene* lScene = mDst->mOwner->GetScene();
    if (lScene != nullptr)
    {
        lScene->Touch();
    }
}

} // namespace qexsdk
