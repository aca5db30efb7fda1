#include <qexioplugins/gltf/kqexgltfpose.h>

#include <kbaselib/kmath/keulertable.h>
#include <kbaselib/kmath/maths.h>

namespace qexsdk
{

KQexQuaternion KQexQuaternion::About(int pAxis, double pDegrees)
{
    KQexQuaternion lResult;
    lResult.mData[pAxis] = kSinCosd(0.5 * pDegrees, &lResult.mData[3]);
    return lResult;
}

KQexQuaternion KQexQuaternion::FromEuler(const double pDegrees[3], int pOrder)
{
    const int* lAxes = KmEulerAxisRow(pOrder);
    return About(lAxes[2], pDegrees[lAxes[2]]) * About(lAxes[1], pDegrees[lAxes[1]]) * About(lAxes[0], pDegrees[lAxes[0]]);
}

KQexQuaternion KQexQuaternion::operator*(const KQexQuaternion& pRight) const
{
    const double*  lA = mData;
    const double*  lB = pRight.mData;
    KQexQuaternion lResult;
    lResult.mData[0] = lA[3] * lB[0] + lA[0] * lB[3] + lA[1] * lB[2] - lA[2] * lB[1];
    lResult.mData[1] = lA[3] * lB[1] - lA[0] * lB[2] + lA[1] * lB[3] + lA[2] * lB[0];
    lResult.mData[2] = lA[3] * lB[2] + lA[0] * lB[1] - lA[1] * lB[0] + lA[2] * lB[3];
    lResult.mData[3] = lA[3] * lB[3] - lA[0] * lB[0] - lA[1] * lB[1] - lA[2] * lB[2];
    return lResult;
}

KQexQuaternion KQexQuaternion::Inverse() const
{
    KQexQuaternion lResult;
    for (int i = 0; i < 3; ++i)
    {
        lResult.mData[i] = -mData[i];
    }
    lResult.mData[3] = mData[3];
    return lResult;
}

KQexGltfNodePose::KQexGltfNodePose(KQexNode* pNode, const KQexAnimLayer* pLayer)
{
    Bind(eGLTF_TRANSLATION, pNode->mLocalTranslation, pLayer);
    Bind(eGLTF_ROTATION, pNode->mLocalRotation, pLayer);
    Bind(eGLTF_SCALING, pNode->mLocalScaling, pLayer);
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

void KQexGltfNodePose::Bind(KQexGltfProperty pProperty, const KQexProperty& pFrom, const KQexAnimLayer* pLayer)
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

void KQexGltfNodePose::GetTranslation(KTime pTime, double pResult[3]) const
{
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = mChannels[eGLTF_TRANSLATION][i].At(pTime) + mOffset[i];
    }
}

void KQexGltfNodePose::GetRotation(KTime pTime, KQexQuaternion& pResult) const
{
    const KChannel* lRotation = mChannels[eGLTF_ROTATION];
    const double    lAngles[3] = {lRotation[0].At(pTime), lRotation[1].At(pTime), lRotation[2].At(pTime)};
    pResult = KQexQuaternion::FromEuler(lAngles, mOrder);
    if (mHasPivots)
    {
        pResult = mPre * pResult * mPostInverse;
    }
}

void KQexGltfNodePose::GetScaling(KTime pTime, double pResult[3]) const
{
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = mChannels[eGLTF_SCALING][i].At(pTime);
    }
}

} // namespace qexsdk
