#include <qexioplugins/gltf/kqexgltfwriter.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

namespace qexsdk
{

namespace
{

constexpr int         kNodesPerThread = 4;       ///< Nodes in a batch per thread.
constexpr double      kRotationTolerance = 1e-7; ///< Quaternions whose components differ by no more count as equal.
constexpr const char* kPaths[3] = {"translation", "rotation", "scale"};

} // namespace

void KQexGltfWriter::MakeVectorTrack(const KQexNodePose& pRest, const KQexNodePose& pPose, const KQexSampling& pSampling,
                                     KQexGltfTrack& pTrack) const
{
    const bool   lIsScaling = pTrack.mProperty == eNODE_SCALING;
    const double lFactor = lIsScaling ? 1.0 : mOptions.mScale;
    const auto   lGet = [lIsScaling](const KQexNodePose& pFrom, KTime pTime, double* pValue)
    {
        lIsScaling ? pFrom.GetScaling(pTime, pValue) : pFrom.GetTranslation(pTime, pValue);
    };
    double lRest[3];
    double lValue[3];
    bool   lMoves = false;
    lGet(pRest, KTime(0), lRest);
    pTrack.mValues.resize(static_cast<size_t>(3 * pSampling.mCount));
    float* lOut = pTrack.mValues.data();
    for (long long lFrame = 0; lFrame < pSampling.mCount; ++lFrame)
    {
        lGet(pPose, pSampling.GetTime(lFrame), lValue);
        for (int i = 0; i < 3; ++i)
        {
            *lOut = static_cast<float>(lValue[i] * lFactor);
            lMoves = lMoves || *lOut != static_cast<float>(lRest[i] * lFactor);
            ++lOut;
        }
    }
    if (!lMoves)
    {
        pTrack.mValues.clear();
    }
}

/// Each quaternion gets the sign that is closer to the previous one, so that viewers interpolate along the shorter arc.
void KQexGltfWriter::MakeRotationTrack(const KQexNodePose& pRest, const KQexNodePose& pPose, const KQexSampling& pSampling,
                                       KQexGltfTrack& pTrack) const
{
    KQexQuaternion lRest;
    KQexQuaternion lLast;
    KQexQuaternion lValue;
    bool           lMoves = false;
    pRest.GetRotation(KTime(0), lRest);
    lLast = lRest;
    pTrack.mValues.resize(static_cast<size_t>(4 * pSampling.mCount));
    float* lOut = pTrack.mValues.data();
    for (long long lFrame = 0; lFrame < pSampling.mCount; ++lFrame)
    {
        pPose.GetRotation(pSampling.GetTime(lFrame), lValue);
        double lDot = 0.0;
        double lSquare = 0.0;
        for (int i = 0; i < 4; ++i)
        {
            lDot += lValue.mData[i] * lLast.mData[i];
            lSquare += lValue.mData[i] * lValue.mData[i];
        }
        const double lFactor = (lDot < 0.0 ? -1.0 : 1.0) / std::sqrt(lSquare);
        for (int i = 0; i < 4; ++i)
        {
            lLast.mData[i] = lValue.mData[i] * lFactor;
            lMoves = lMoves || std::fabs(lLast.mData[i] - lRest.mData[i]) > kRotationTolerance;
            *lOut++ = static_cast<float>(lLast.mData[i]);
        }
    }
    if (!lMoves)
    {
        pTrack.mValues.clear();
    }
}

void KQexGltfWriter::MakeTracks(KQexNode* pNode, const KQexGltfTake& pTake, std::vector<KQexGltfTrack>& pTracks) const
{
    const KQexNodePose lRest(pNode, nullptr);
    const KQexNodePose lPose(pNode, pTake.mStack->GetMember<KQexAnimLayer>(0));
    for (const KQexNodeProperty lProperty : {eNODE_TRANSLATION, eNODE_ROTATION, eNODE_SCALING})
    {
        if (!lPose.IsAnimated(lProperty))
        {
            continue;
        }
        KQexGltfTrack lTrack{lProperty, {}};
        lProperty == eNODE_ROTATION ? MakeRotationTrack(lRest, lPose, pTake.mSampling, lTrack)
                                    : MakeVectorTrack(lRest, lPose, pTake.mSampling, lTrack);
        if (!lTrack.mValues.empty())
        {
            pTracks.push_back(std::move(lTrack));
        }
    }
}

int KQexGltfWriter::AddTimes(const KQexSampling& pSampling)
{
    const int lTimes = mBuffer.AddFloats(eGLTF_SCALAR, static_cast<size_t>(pSampling.mCount));
    float*    lOut = mBuffer.GetFloats(lTimes);
    for (long long lFrame = 0; lFrame < pSampling.mCount; ++lFrame)
    {
        lOut[lFrame] = static_cast<float>(KTime(lFrame * pSampling.mStep.Get()).GetSeconds());
    }
    mBuffer.SetBounds(lTimes);
    return lTimes;
}

void KQexGltfWriter::AddChannel(KQexGltfModel::KAnimation& pAnimation, int pTimes, size_t pNode, const KQexGltfTrack& pTrack)
{
    const int lComponents = pTrack.mProperty == eNODE_ROTATION ? 4 : 3;
    const int lValues =
        mBuffer.AddFloats(lComponents == 4 ? eGLTF_VEC4 : eGLTF_VEC3, pTrack.mValues.size() / static_cast<size_t>(lComponents));
    std::copy(pTrack.mValues.begin(), pTrack.mValues.end(), mBuffer.GetFloats(lValues));
    mBuffer.SetBounds(lValues);
    pAnimation.mChannels.push_back({pTimes, lValues, static_cast<int>(pNode), kPaths[pTrack.mProperty]});
}

/// Gives a take that shows the rest pose a channel in which the first node keeps its place: glTF allows no animation without channels, and
/// without the animation its name and its length would be lost.
void KQexGltfWriter::AddStillChannel(KQexGltfModel::KAnimation& pAnimation, const KQexSampling& pSampling)
{
    double        lRest[3];
    KQexGltfTrack lTrack{eNODE_TRANSLATION, {}};
    KQexNodePose(mNodes.front().mNode, nullptr).GetTranslation(KTime(0), lRest);
    lTrack.mValues.resize(static_cast<size_t>(3 * pSampling.mCount));
    for (size_t i = 0; i < lTrack.mValues.size(); ++i)
    {
        lTrack.mValues[i] = static_cast<float>(lRest[i % 3] * mOptions.mScale);
    }
    AddChannel(pAnimation, AddTimes(pSampling), 0, lTrack);
}

/// Reserves the maximum size of a take up front: growing a buffer of hundreds of megabytes would copy it again and again.
void KQexGltfWriter::ReserveTake(const KQexAnimLayer* pLayer, long long pFrames)
{
    size_t lFloats = 4; // The times, and the values of a still channel.
    for (const KQexGltfNode& lNode : mNodes)
    {
        const KQexNodePose lPose(lNode.mNode, pLayer);
        lFloats += (lPose.IsAnimated(eNODE_TRANSLATION) ? 3u : 0u) + (lPose.IsAnimated(eNODE_ROTATION) ? 4u : 0u) +
                   (lPose.IsAnimated(eNODE_SCALING) ? 3u : 0u);
    }
    mBuffer.GetBytes().reserve(mBuffer.GetBytes().size() + lFloats * sizeof(float) * static_cast<size_t>(pFrames));
}

bool KQexGltfWriter::AddAnimation(const KQexGltfTake& pTake)
{
    ReserveTake(pTake.mStack->GetMember<KQexAnimLayer>(0), pTake.mSampling.mCount);
    KQexGltfModel::KAnimation lAnimation;
    const size_t              lBatch = static_cast<size_t>(kNodesPerThread) * static_cast<size_t>(mThreads);
    int                       lTimes = -1;
    for (size_t lFirst = 0; lFirst < mNodes.size(); lFirst += lBatch)
    {
        const int                               lCount = static_cast<int>(std::min(lBatch, mNodes.size() - lFirst));
        std::vector<std::vector<KQexGltfTrack>> lTracks(static_cast<size_t>(lCount));
        std::atomic<bool>                       lOk{true};
        KParallelFor(lCount, mThreads,
                     [&](int pIndex)
                     {
                         try
                         {
                             MakeTracks(mNodes[lFirst + static_cast<size_t>(pIndex)].mNode, pTake, lTracks[static_cast<size_t>(pIndex)]);
                         }
                         catch (const std::bad_alloc&)
                         {
                             lOk = false;
                         }
                     });
        if (!lOk)
        {
            throw std::bad_alloc();
        }
        for (size_t i = 0; i < lTracks.size(); ++i)
        {
            for (const KQexGltfTrack& lTrack : lTracks[i])
            {
                lTimes = lTimes < 0 ? AddTimes(pTake.mSampling) : lTimes;
                AddChannel(lAnimation, lTimes, lFirst + i, lTrack);
            }
        }
        mDoneNodes += static_cast<size_t>(lCount);
        if (mOptions.mProgress &&
            !mOptions.mProgress(static_cast<double>(mDoneNodes) / static_cast<double>(mNodes.size() * mOptions.mTakes.size())))
        {
            return false;
        }
    }
    if (lAnimation.mChannels.empty())
    {
        AddStillChannel(lAnimation, pTake.mSampling);
    }
    mModel.mAnimations.push_back(lAnimation);
    return true;
}

} // namespace qexsdk
