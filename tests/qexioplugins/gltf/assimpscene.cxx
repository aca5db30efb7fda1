#include <tests/qexioplugins/gltf/assimpscene.h>

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qextest
{

namespace
{

/// The keys before and after a time, of at least one; the first or last one twice when the time is outside them.
template <typename TKey>
std::pair<const TKey*, const TKey*> KeysAround(const TKey* pKeys, unsigned pCount, double pTime)
{
    const TKey* lNext = std::upper_bound(pKeys, pKeys + pCount, pTime, [](double pAt, const TKey& pKey) { return pAt < pKey.mTime; });
    const TKey* lLast = pKeys + pCount - 1;
    return {lNext == pKeys ? pKeys : lNext - 1, std::min(lNext, lLast)};
}

template <typename TKey>
float Fraction(const std::pair<const TKey*, const TKey*>& pKeys, double pTime)
{
    const double lSpan = pKeys.second->mTime - pKeys.first->mTime;
    return lSpan > 0.0 ? static_cast<float>(std::clamp((pTime - pKeys.first->mTime) / lSpan, 0.0, 1.0)) : 0.0F;
}

aiVector3D VectorAt(const aiVectorKey* pKeys, unsigned pCount, double pTime)
{
    const auto lKeys = KeysAround(pKeys, pCount, pTime);
    return lKeys.first->mValue + (lKeys.second->mValue - lKeys.first->mValue) * Fraction(lKeys, pTime);
}

aiQuaternion RotationAt(const aiQuatKey* pKeys, unsigned pCount, double pTime)
{
    const auto   lKeys = KeysAround(pKeys, pCount, pTime);
    aiQuaternion lResult;
    aiQuaternion::Interpolate(lResult, lKeys.first->mValue, lKeys.second->mValue, Fraction(lKeys, pTime));
    return lResult.Normalize();
}

aiMatrix4x4 LocalAt(const aiNode* pNode, const aiAnimation* pAnimation, double pTicks)
{
    for (unsigned i = 0; pAnimation != nullptr && i < pAnimation->mNumChannels; ++i)
    {
        const aiNodeAnim* lChannel = pAnimation->mChannels[i];
        if (lChannel->mNodeName == pNode->mName)
        {
            return aiMatrix4x4(VectorAt(lChannel->mScalingKeys, lChannel->mNumScalingKeys, pTicks),
                               RotationAt(lChannel->mRotationKeys, lChannel->mNumRotationKeys, pTicks),
                               VectorAt(lChannel->mPositionKeys, lChannel->mNumPositionKeys, pTicks));
        }
    }
    return pNode->mTransformation;
}

} // namespace

KAssimpScene::KAssimpScene(const std::filesystem::path& pPath) : mImporter(std::make_unique<Assimp::Importer>())
{
    mScene = mImporter->ReadFile(pPath.string(), 0);
    EXPECT_NE(mScene, nullptr) << mImporter->GetErrorString();
}

KAssimpScene::~KAssimpScene() = default;

int KAssimpScene::GetAnimationCount() const
{
    return mScene != nullptr ? static_cast<int>(mScene->mNumAnimations) : 0;
}

KJointPositions KAssimpScene::PositionsAt(int pAnimation, double pSeconds) const
{
    KJointPositions lPositions;
    if (mScene == nullptr || pAnimation >= GetAnimationCount())
    {
        return lPositions;
    }
    const aiAnimation*                                 lAnimation = pAnimation < 0 ? nullptr : mScene->mAnimations[pAnimation];
    const double                                       lTicks = lAnimation != nullptr ? pSeconds * lAnimation->mTicksPerSecond : 0.0;
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> lPending = {{mScene->mRootNode, aiMatrix4x4()}};
    while (!lPending.empty())
    {
        const auto [lNode, lParent] = lPending.back();
        lPending.pop_back();
        const aiMatrix4x4 lGlobal = lParent * LocalAt(lNode, lAnimation, lTicks);
        lPositions[lNode->mName.C_Str()] = {static_cast<double>(lGlobal.a4), static_cast<double>(lGlobal.b4),
                                            static_cast<double>(lGlobal.c4)};
        for (unsigned i = 0; i < lNode->mNumChildren; ++i)
        {
            lPending.emplace_back(lNode->mChildren[i], lGlobal);
        }
    }
    return lPositions;
}

} // namespace qextest
