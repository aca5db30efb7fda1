#include <qexioplugins/gltf/kqexfilegltf.h>

#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

std::string MessagesOf(const KQexFileGltf& pFile)
{
    std::string lText;
    for (const KQexTextMessage& lMessage : pFile.GetMessages())
    {
        lText += lMessage.mText + "\n";
    }
    return lText;
}

/// What a tree of a scene has to have in common with what was read back.
class KRoundTrip
{
public:
    KRoundTrip(unsigned pSeed, const KRandomTree& pWhat)
    {
        std::mt19937 lRandom(pSeed);
        mScene = MakeScene();
        mRoot = MakeRandomTree(lRandom, mScene.get(), pWhat);
        mOptions.mTakes.resize(1);
        mOptions.mTakes[0].mStack = mScene->FindAnimStack("take");
        EXPECT_TRUE(MakeSampling({mRoot}, mOptions.mTakes[0].mStack, KQexSamplingRequest(), mOptions.mTakes[0].mSampling));
    }

    /// The largest distance between a node of \p pTree in its scene and its namesake here, over all frames of take \p pTake.
    double Compare(KQexNode* pTree, const KQexGltfTake& pTake, const KQexGltfTake& pHere)
    {
        KQexGlobalTransforms lHere;
        KQexGlobalTransforms lThere;
        double               lWorst = 0.0;
        mScene->GetEvaluator()->SetContext(pHere.mStack);
        pTree->GetScene()->GetEvaluator()->SetContext(pTake.mStack);
        EXPECT_EQ(pTake.mSampling.mCount, pHere.mSampling.mCount);
        EXPECT_EQ(pTake.mSampling.mStep.Get(), pHere.mSampling.mStep.Get());
        for (long long lFrame = 0; lFrame < pHere.mSampling.mCount; ++lFrame)
        {
            EXPECT_TRUE(mScene->GetEvaluator()->EvaluateGlobalTransforms(mRoot, pHere.mSampling.GetTime(lFrame), lHere));
            EXPECT_TRUE(pTree->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pTree, pTake.mSampling.GetTime(lFrame), lThere));
            EXPECT_EQ(lHere.GetCount(), lThere.GetCount());
            for (int i = 0; i < std::min(lHere.GetCount(), lThere.GetCount()); ++i)
            {
                EXPECT_STREQ(lHere.GetNode(i)->GetName(), lThere.GetNode(i)->GetName());
                for (int j = 0; j < 4; ++j)
                {
                    for (int k = 0; k < 3; ++k)
                    {
                        lWorst = std::max(lWorst, std::fabs(lHere.GetTransform(i).mData[j][k] - lThere.GetTransform(i).mData[j][k]));
                    }
                }
            }
        }
        return lWorst;
    }

    KScenePtr            mScene;
    KQexNode*            mRoot;
    KQexGltfWriteOptions mOptions;
};

class KGltfRoundTripTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(KGltfRoundTripTest, EveryNodeComesBackToItsPlaceAtEveryFrame)
{
    KRandomTree lWhat;
    lWhat.mNodes = 1 + static_cast<int>(GetParam() * 7 % 40);
    lWhat.mScaling = GetParam() % 3 == 1;
    lWhat.mPivots = GetParam() % 2 == 0;
    KRoundTrip   lTrip(GetParam(), lWhat);
    std::string  lBytes;
    KQexFileGltf lFile;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, {lTrip.mRoot}, lTrip.mOptions));
    const KScenePtr    lScene = MakeScene();
    KQexGltfReadResult lResult;
    ASSERT_TRUE(lFile.ReadBuffer(lBytes.data(), lBytes.size(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
    EXPECT_EQ(MessagesOf(lFile), "");
    ASSERT_EQ(lResult.mRoots.size(), 1u);
    ASSERT_EQ(lResult.mTakes.size(), 1u);
    EXPECT_STREQ(lResult.mTakes[0].mStack->GetName(), "take");
    EXPECT_LT(lTrip.Compare(lResult.mRoots[0], lResult.mTakes[0], lTrip.mOptions.mTakes[0]), lWhat.mScaling ? 0.05 : 5e-3);
}

INSTANTIATE_TEST_SUITE_P(Seeds, KGltfRoundTripTest, testing::Range(1u, 25u));

} // namespace
