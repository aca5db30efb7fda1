#include <qexioplugins/gltf/kqexgltftracks.h>

#include <kbaselib/kmath/kquaternion.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kRotationTolerance = 1e-7; ///< Quaternions whose components differ by no more count as equal.

} // namespace

KQexGltfTracks::KQexGltfTracks(KQexGltfBuffer& pBuffer, long long pFrames, double pScale)
    : mBuffer(pBuffer), mFrames(pFrames), mScale(pScale)
{
}

void KQexGltfTracks::AddNode(KQexNode* pNode, size_t pIndex, const KQexAnimLayer* pLayer)
{
    const KQexNodePose lRest(pNode, nullptr);
    const KQexNodePose lPose(pNode, pLayer);
    for (const KQexNodeProperty lProperty : {eNODE_TRANSLATION, eNODE_ROTATION, eNODE_SCALING})
    {
        if (!lPose.IsAnimated(lProperty))
        {
            continue;
        }
        KQexGltfTrack lTrack{pIndex, pNode, lProperty, {}};
        if (lProperty == eNODE_ROTATION)
        {
            KQexQuaternion lRotation;
            lRest.GetRotation(KTime(0), lRotation);
            std::copy(lRotation.mData, lRotation.mData + 4, lTrack.mRest);
        }
        else if (lProperty == eNODE_SCALING)
        {
            lRest.GetScaling(KTime(0), lTrack.mRest);
        }
        else
        {
            lRest.GetTranslation(KTime(0), lTrack.mRest);
            std::transform(lTrack.mRest, lTrack.mRest + 3, lTrack.mRest, [this](double pNumber) { return pNumber * mScale; });
        }
        lTrack.mFirst = mValueCount;
        mValueCount += lTrack.GetSize();
        mLast.insert(mLast.end(), lTrack.mRest, lTrack.mRest + lTrack.GetSize());
        mTracks.push_back(lTrack);
    }
}

void KQexGltfTracks::Begin(const KQexFrameNodes& pNodes, int)
{
    for (KQexGltfTrack& lTrack : mTracks)
    {
        lTrack.mIndex = static_cast<size_t>(pNodes.Find(lTrack.mSource));
    }
    mBuffer.ReserveFloats(mValueCount * static_cast<size_t>(mFrames));
}

void KQexGltfTracks::Compute(int, const KQexFrame& pFrame, double* pValues) noexcept
{
    for (const KQexGltfTrack& lTrack : mTracks)
    {
        double* const lValue = pValues + lTrack.mFirst;
        if (lTrack.mProperty == eNODE_ROTATION)
        {
            const double* lRotation = pFrame.GetRotation(lTrack.mIndex).mData;
            double        lSquare = 0.0;
            std::for_each(lRotation, lRotation + 4, [&lSquare](double pNumber) { lSquare += pNumber * pNumber; });
            const double lFactor = 1.0 / std::sqrt(lSquare);
            std::transform(lRotation, lRotation + 4, lValue, [lFactor](double pNumber) { return pNumber * lFactor; });
        }
        else if (lTrack.mProperty == eNODE_SCALING)
        {
            std::copy_n(pFrame.GetScaling(lTrack.mIndex), 3, lValue);
        }
        else
        {
            pFrame.GetTranslation(lTrack.mIndex, lValue);
            std::transform(lValue, lValue + 3, lValue, [this](double pNumber) { return pNumber * mScale; });
        }
    }
}

/// Each quaternion gets the sign that is closer to the previous one, so that viewers interpolate along the shorter arc.
void KQexGltfTracks::MakeContinuous(double* pValues)
{
    for (const KQexGltfTrack& lTrack : mTracks)
    {
        double* const lValue = pValues + lTrack.mFirst;
        double* const lLast = mLast.data() + lTrack.mFirst;
        if (lTrack.mProperty != eNODE_ROTATION)
        {
            continue;
        }
        kChooseNearer(lValue, lLast);
        std::copy_n(lValue, 4, lLast);
    }
}

bool KQexGltfTracks::Write(const KQexFrameBlock& pBlock)
{
    for (KQexGltfTrack& lTrack : mTracks)
    {
        WriteTrack(lTrack, pBlock);
    }
    return true;
}

void KQexGltfTracks::WriteTrack(KQexGltfTrack& pTrack, const KQexFrameBlock& pBlock)
{
    const size_t  lSize = pTrack.GetSize();
    const bool    lIsRotation = pTrack.mProperty == eNODE_ROTATION;
    const double* lValue = pBlock.mValues.data() + pTrack.mFirst;
    float*        lOut = mBuffer.GetReserved() + pTrack.mFirst * static_cast<size_t>(mFrames) + lSize * static_cast<size_t>(pBlock.mFirst);
    for (long long i = pBlock.mFirst; i < pBlock.mEnd; ++i)
    {
        for (size_t k = 0; k < lSize; ++k)
        {
            *lOut = static_cast<float>(lValue[k]);
            pTrack.mHasMotion = pTrack.mHasMotion || (lIsRotation ? std::fabs(lValue[k] - pTrack.mRest[k]) > kRotationTolerance
                                                                  : *lOut != static_cast<float>(pTrack.mRest[k]));
            ++lOut;
        }
        lValue += mValueCount;
    }
}

int KQexGltfTracks::Keep(const KQexGltfTrack& pTrack)
{
    return mBuffer.KeepFloats(pTrack.GetSize() == 4 ? eGLTF_VEC4 : eGLTF_VEC3, static_cast<size_t>(mFrames),
                              pTrack.mFirst * static_cast<size_t>(mFrames));
}

} // namespace qexsdk
