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
    const auto               lRest = KQexGet<qexVectorTemplate3<double>>(pFrom);
    const KQexAnimCurveNode* lCurveNode = pLayer != nullptr ? pFrom.GetCurveNode(pLayer) : nullptr;
    for (unsigned int i = 0; i < 3; ++i)
    {
        KChannel& lChannel = mChannels[pProperty][i];
        lChannel.mValue = lRest.mData[i];
        if (lCurveNode != nullptr)
        {
            const KQexAnimCurve* lCurve = lCurveNode->GetCurve(i);
            lChannel.mCurve = lCurve != nullptr && lCurve->GetKeyCount() > 0 ? lCurve : nullptr;
            lChannel.mValue = lCurveNode->GetChannelValue<double>(i, lChannel.mValue);
            mIsAnimated[pProperty] = mIsAnimated[pProperty] || lChannel.mCurve != nullptr || lChannel.mValue != lRest.mData[i];
        }
    }
}

void KQexNodePose::GetTranslation(KTime pTime, double pResult[3]) const
{
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = mChannels[eNODE_TRANSLATION][i].At(pTime) + mOffset[i];
    }
}

void KQexNodePose::GetRotation(KTime pTime, KQexQuaternion& pResult) const
{
    const KChannel* lRotation = mChannels[eNODE_ROTATION];
    const double    lAngles[3] = {lRotation[0].At(pTime), lRotation[1].At(pTime), lRotation[2].At(pTime)};
    pResult = KQexQuaternion::FromEuler(lAngles, mOrder);
    if (mHasPivots)
    {
        pResult = mPre * pResult * mPostInverse;
    }
}

void KQexNodePose::GetScaling(KTime pTime, double pResult[3]) const
{
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = mChannels[eNODE_SCALING][i].At(pTime);
    }
}

} // namespace qexsdk
