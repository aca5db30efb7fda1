#include <qexscene/kqexnodepose.h>

#include <kbaselib/kmath/keulertable.h>
#include <qexscene/kqexscene.h>

namespace qexsdk
{

KQexNodePose::KQexNodePose(KQexNode* pNode, const KQexAnimLayer* pLayer)
{
    Bind(eNODE_TRANSLATION, pNode->mLocalTranslation, pLayer);
    Bind(eNODE_ROTATION, pNode->mLocalRotation, pLayer);
    Bind(eNODE_SCALING, pNode->mLocalScaling, pLayer);
    const KQexVector4 lOffset = pNode->GetRotationOffset();
    for (int i = 0; i < 3; ++i)
    {
        mOffset[i] = lOffset[i];
    }
    if (!pNode->GetRotationActive())
    {
        return;
    }
    const int         lOrder = static_cast<int>(pNode->GetRotationOrder());
    const KQexVector4 lPre = pNode->GetPreRotation();
    const KQexVector4 lPost = pNode->GetPostRotation();
    mOrder = lOrder <= eEULER_ZYX ? 2 * lOrder : 0;
    mHasPivots = lPre.Length() > 0.0 || lPost.Length() > 0.0;
    mPre = KQexQuaternion::FromEuler(lPre, 0);
    mPostInverse = KQexQuaternion::FromEuler(lPost, 0).Inverse();
}

void KQexNodePose::Bind(KQexNodeProperty pProperty, const KQexProperty& pFrom, const KQexAnimLayer* pLayer)
{
    const auto         lRest = KQexGet<qexVectorTemplate3<double>>(pFrom);
    KQexChannel* const lChannels = mChannels + 3 * pProperty;
    KQexChannel::Find(lChannels, pFrom, pLayer);
    for (int i = 0; i < 3; ++i)
    {
        mIsAnimated[pProperty] = mIsAnimated[pProperty] || lChannels[i].IsAnimated() || *lChannels[i].mValue != lRest.mData[i];
    }
}

void KQexNodePose::GetValues(KQexNodeProperty pProperty, KTime pTime, double pResult[3]) const
{
    KQexKeyTimes::KCursor lCursor;
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = mChannels[3 * pProperty + i].Evaluate(pTime, lCursor);
    }
}

void KQexNodePose::GetTranslation(KTime pTime, double pResult[3]) const
{
    GetValues(eNODE_TRANSLATION, pTime, pResult);
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] += mOffset[i];
    }
}

void KQexNodePose::GetRotation(KTime pTime, KQexQuaternion& pResult) const
{
    double lAngles[3];
    GetValues(eNODE_ROTATION, pTime, lAngles);
    ComposeRotation(lAngles, pResult);
}

void KQexNodePose::GetScaling(KTime pTime, double pResult[3]) const
{
    GetValues(eNODE_SCALING, pTime, pResult);
}

void KQexNodePose::EvaluateChannels(KTime pTime, KQexKeyTimes::KCursor& pCursor, double pValues[9]) const
{
    for (int i = 0; i < 9; ++i)
    {
        pValues[i] = mChannels[i].Evaluate(pTime, pCursor);
    }
}

void KQexNodePose::ComposeRotation(const double pAngles[3], KQexQuaternion& pResult) const
{
    pResult = KQexQuaternion::FromEuler(pAngles, mOrder);
    if (mHasPivots)
    {
        pResult = mPre * pResult * mPostInverse;
    }
}

} // namespace qexsdk
