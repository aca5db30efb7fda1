// Poses of a clip and their world transforms.

#include <kbaselib/kmath/kquaternion.h>
#include <qexclip/kqexclip.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace qexsdk
{

namespace
{

/// Cosine of half the turn from one frame to the next above which a normalised linear step is within 5e-8 radians of slerp's.
constexpr float kNearlySame = 0.9999F;

/// From \p pFrom to \p pTo along the shorter arc. Single precision, as the clip.
void Slerp(const float* pFrom, const float* pTo, float pFraction, float* pResult)
{
    const float lDot = kQuaternionDot(pFrom, pTo);
    float       lFrom = 0.0F;
    float       lTo = 0.0F;
    kSlerpWeights(std::fabs(lDot), kNearlySame, pFraction, lFrom, lTo);
    lTo = lDot < 0.0F ? -lTo : lTo;
    float lSquare = 0.0F;
    for (int i = 0; i < 4; ++i)
    {
        pResult[i] = lFrom * pFrom[i] + lTo * pTo[i];
        lSquare += pResult[i] * pResult[i];
    }
    const float lScale = 1.0F / std::sqrt(lSquare);
    for (int i = 0; i < 4; ++i)
    {
        pResult[i] *= lScale;
    }
}

void Lerp(const float* pFrom, const float* pTo, float pFraction, float* pResult)
{
    for (int i = 0; i < 3; ++i)
    {
        pResult[i] = pFrom[i] + pFraction * (pTo[i] - pFrom[i]);
    }
}

/// The transforms of \p pPose in frame \p pFrame, or \p pFraction of the way from it to the next.
void Fill(const KQexClipData& pData, size_t pFrame, float pFraction, KQexPose& pPose)
{
    const size_t lJoints = pData.mNames.size();
    const float* lRotations = pData.mRotations.data() + pFrame * lJoints * 4;
    const float* lTranslations = pData.mTranslations.data() + pFrame * pData.mMovingJoints.size() * 3;
    const float* lScalings = pData.mScalings.data() + pFrame * pData.mScaledJoints.size() * 3;
    const size_t lNext = pFraction > 0.0F ? 1 : 0;
    for (size_t lJoint = 0; lJoint < lJoints; ++lJoint, lRotations += 4)
    {
        pPose[lJoint] = pData.mRest[lJoint];
        if (lNext == 0)
        {
            std::copy(lRotations, lRotations + 4, pPose[lJoint].mRotation);
        }
        else
        {
            Slerp(lRotations, lRotations + lJoints * 4, pFraction, pPose[lJoint].mRotation);
        }
    }
    for (const int lJoint : pData.mMovingJoints)
    {
        Lerp(lTranslations, lTranslations + lNext * pData.mMovingJoints.size() * 3, pFraction,
             pPose[static_cast<size_t>(lJoint)].mTranslation);
        lTranslations += 3;
    }
    for (const int lJoint : pData.mScaledJoints)
    {
        Lerp(lScalings, lScalings + lNext * pData.mScaledJoints.size() * 3, pFraction, pPose[static_cast<size_t>(lJoint)].mScaling);
        lScalings += 3;
    }
}

/// Sets \p pColumn, the image of an axis, to three numbers times \p pFactor.
void SetImage(float (&pColumn)[4], float pX, float pY, float pZ, float pFactor)
{
    pColumn[0] = pX * pFactor;
    pColumn[1] = pY * pFactor;
    pColumn[2] = pZ * pFactor;
    pColumn[3] = 0.0F;
}

/// The matrix of \p pLocal.
void ToMatrix(const KQexJointTransform& pLocal, KQexWorldTransform& pMatrix)
{
    const float lX = pLocal.mRotation[1];
    const float lY = pLocal.mRotation[2];
    const float lZ = pLocal.mRotation[3];
    const float lW = pLocal.mRotation[0];
    SetImage(pMatrix.mData[0], 1.0F - 2.0F * (lY * lY + lZ * lZ), 2.0F * (lX * lY + lZ * lW), 2.0F * (lX * lZ - lY * lW),
             pLocal.mScaling[0]);
    SetImage(pMatrix.mData[1], 2.0F * (lX * lY - lZ * lW), 1.0F - 2.0F * (lX * lX + lZ * lZ), 2.0F * (lY * lZ + lX * lW),
             pLocal.mScaling[1]);
    SetImage(pMatrix.mData[2], 2.0F * (lX * lZ + lY * lW), 2.0F * (lY * lZ - lX * lW), 1.0F - 2.0F * (lX * lX + lY * lY),
             pLocal.mScaling[2]);
    SetImage(pMatrix.mData[3], pLocal.mTranslation[0], pLocal.mTranslation[1], pLocal.mTranslation[2], 1.0F);
    pMatrix.mData[3][3] = 1.0F;
}

/// pParent × pLocal; all four numbers of a column at once, which compilers turn into vector instructions. Returned, as a result that could
/// be the parent itself would keep them from it.
KQexWorldTransform Multiply(const KQexWorldTransform& pParent, const KQexWorldTransform& pLocal)
{
    KQexWorldTransform lResult;
    for (int j = 0; j < 4; ++j)
    {
        const float* lColumn = pLocal.mData[j];
        for (int i = 0; i < 4; ++i)
        {
            lResult.mData[j][i] = pParent.mData[0][i] * lColumn[0] + pParent.mData[1][i] * lColumn[1] + pParent.mData[2][i] * lColumn[2] +
                                  pParent.mData[3][i] * lColumn[3];
        }
    }
    return lResult;
}

/// World transforms of \p pPose; joint j's goes to pTransforms[j * pStride].
void ToWorld(const KQexClipData& pData, const KQexPose& pPose, KQexWorldTransform* pTransforms, size_t pStride)
{
    for (size_t lJoint = 0; lJoint < pPose.size(); ++lJoint)
    {
        KQexWorldTransform lLocal;
        ToMatrix(pPose[lJoint], lLocal);
        const int lParent = pData.mParents[lJoint];
        pTransforms[lJoint * pStride] = lParent < 0 ? lLocal : Multiply(pTransforms[static_cast<size_t>(lParent) * pStride], lLocal);
    }
}

} // namespace

bool KQexClip::SampleFrame(long long pFrame, KQexPose& pPose) const
{
    if (pFrame < 0 || pFrame >= GetFrameCount() || pPose.size() != mData.mNames.size())
    {
        return false;
    }
    Fill(mData, static_cast<size_t>(pFrame), 0.0F, pPose);
    return true;
}

bool KQexClip::Sample(double pSeconds, KQexPose& pPose, KQexClipEnds pEnds) const
{
    if (GetFrameCount() < 1 || std::isnan(pSeconds) || pPose.size() != mData.mNames.size())
    {
        return false;
    }
    const double lLast = static_cast<double>(GetFrameCount() - 1);
    double       lPosition = pSeconds / mData.mSampling.mStep.GetSeconds();
    if (pEnds == KQexClipEnds::eLOOP && lLast > 0.0 && std::isfinite(lPosition))
    {
        lPosition = std::fmod(lPosition, lLast);
        lPosition += lPosition < 0.0 ? lLast : 0.0;
    }
    lPosition = std::clamp(lPosition, 0.0, lLast);
    const double lFrame = std::floor(lPosition);
    Fill(mData, static_cast<size_t>(lFrame), static_cast<float>(lPosition - lFrame), pPose);
    return true;
}

bool KQexClip::WorldTransforms(const KQexPose& pPose, std::vector<KQexWorldTransform>& pTransforms) const
{
    if (pPose.size() != mData.mNames.size() || pTransforms.size() != pPose.size())
    {
        return false;
    }
    ToWorld(mData, pPose, pTransforms.data(), 1);
    return true;
}

bool KQexClip::WorldTransforms(long long pFirst, long long pCount, KQexWorldTransform* pTransforms, size_t pFrameStride,
                               size_t pJointStride) const
{
    if (pFirst < 0 || pCount < 0 || pFirst > GetFrameCount() || pCount > GetFrameCount() - pFirst)
    {
        return false;
    }
    try
    {
        KQexPose lPose(mData.mNames.size());
        for (long long lFrame = 0; lFrame < pCount; ++lFrame)
        {
            Fill(mData, static_cast<size_t>(pFirst + lFrame), 0.0F, lPose);
            ToWorld(mData, lPose, pTransforms + static_cast<size_t>(lFrame) * pFrameStride, pJointStride);
        }
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace qexsdk
