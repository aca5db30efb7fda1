#include <qexioplugins/gltf/kqexgltfwriter.h>

namespace qexsdk
{

namespace
{

constexpr const char* kPaths[3] = {"translation", "rotation", "scale"};

} // namespace

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

/// Gives a take that shows the rest pose a channel in which the first node keeps its position: glTF allows no animation without channels,
/// and without the animation its name and its length would be lost.
void KQexGltfWriter::AddStillChannel(KQexGltfModel::KAnimation& pAnimation, int pTimes, long long pFrames)
{
    double       lRest[3];
    const size_t lCount = 3 * static_cast<size_t>(pFrames);
    const int    lValues = mBuffer.AddFloats(eGLTF_VEC3, static_cast<size_t>(pFrames));
    KQexNodePose(mNodes.front().mNode, nullptr).GetTranslation(KTime(0), lRest);
    for (size_t i = 0; i < lCount; ++i)
    {
        mBuffer.GetFloats(lValues)[i] = static_cast<float>(lRest[i % 3] * mOptions.mScale);
    }
    mBuffer.SetBounds(lValues);
    pAnimation.mChannels.push_back({pTimes, lValues, 0, kPaths[eNODE_TRANSLATION]});
}

KQexFrameSink* KQexGltfWriter::BeginTake(size_t pTake)
{
    const KQexGltfTake&        lTake = mOptions.mTakes[pTake];
    const KQexAnimLayer* const lLayer = KQexLayerOf(lTake.mStack);
    mTimes = AddTimes(lTake.mSampling);
    mTracks = std::make_unique<KQexGltfTracks>(mBuffer, lTake.mSampling.mCount, mOptions.mScale);
    for (size_t i = 0; i < mNodes.size(); ++i)
    {
        mTracks->AddNode(mNodes[i].mNode, i, lLayer);
    }
    return mTracks.get();
}

void KQexGltfWriter::EndTake(size_t pTake)
{
    const KQexGltfTake&       lTake = mOptions.mTakes[pTake];
    KQexGltfModel::KAnimation lAnimation;
    for (const KQexGltfTrack& lTrack : mTracks->GetTracks())
    {
        if (lTrack.mHasMotion)
        {
            const int lValues = mTracks->Keep(lTrack);
            mBuffer.SetBounds(lValues);
            lAnimation.mChannels.push_back({mTimes, lValues, static_cast<int>(lTrack.mNode), kPaths[lTrack.mProperty]});
        }
    }
    mBuffer.ReleaseReserved();
    mTracks.reset();
    if (lAnimation.mChannels.empty())
    {
        AddStillChannel(lAnimation, mTimes, lTake.mSampling.mCount);
    }
    lAnimation.mName = SafeName(mTakeNames, lTake.mStack->GetName(), "take");
    mModel.mAnimations.push_back(lAnimation);
}

} // namespace qexsdk
