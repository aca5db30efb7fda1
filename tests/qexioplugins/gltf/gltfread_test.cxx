#include <qexioplugins/gltf/kqexfilegltf.h>

#include <tests/qexioplugins/gltf/gltfbuild.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A random scene to write, and its comparison with what was read back.
class KRandomScene
{
public:
    KRandomScene(unsigned pSeed, const KRandomTreeOptions& pOptions)
    {
        std::mt19937 lRandom(pSeed);
        mScene = MakeScene();
        mRoot = MakeRandomTree(lRandom, mScene.get(), pOptions);
        mOptions.mTakes.resize(1);
        mOptions.mTakes[0].mStack = mScene->FindAnimStack("take");
        EXPECT_TRUE(MakeSampling({mRoot}, mOptions.mTakes[0].mStack, KQexSamplingRequest(), mOptions.mTakes[0].mSampling));
    }

    /// The largest difference of global transform components between the nodes of \p pTree in take \p pTake and those of this scene in
    /// take \p pHere, over all frames.
    double Compare(KQexNode* pTree, const KQexGltfTake& pTake, const KQexGltfTake& pHere)
    {
        KQexGlobalTransforms lHere;
        KQexGlobalTransforms lOther;
        double               lWorst = 0.0;
        mScene->GetEvaluator()->SetContext(pHere.mStack);
        pTree->GetScene()->GetEvaluator()->SetContext(pTake.mStack);
        EXPECT_EQ(pTake.mSampling.mCount, pHere.mSampling.mCount);
        EXPECT_EQ(pTake.mSampling.mStep.Get(), pHere.mSampling.mStep.Get());
        for (long long lFrame = 0; lFrame < pHere.mSampling.mCount; ++lFrame)
        {
            EXPECT_TRUE(mScene->GetEvaluator()->EvaluateGlobalTransforms(mRoot, pHere.mSampling.GetTime(lFrame), lHere));
            EXPECT_TRUE(pTree->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pTree, pTake.mSampling.GetTime(lFrame), lOther));
            EXPECT_EQ(lHere.GetCount(), lOther.GetCount());
            for (int i = 0; i < std::min(lHere.GetCount(), lOther.GetCount()); ++i)
            {
                EXPECT_STREQ(lHere.GetNode(i)->GetName(), lOther.GetNode(i)->GetName());
                for (int j = 0; j < 4; ++j)
                {
                    for (int k = 0; k < 3; ++k)
                    {
                        lWorst = std::max(lWorst, std::fabs(lHere.GetTransform(i).mData[j][k] - lOther.GetTransform(i).mData[j][k]));
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

class KQexGltfRoundTripTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(KQexGltfRoundTripTest, KeepsTheTransformOfEveryNodeAtEveryFrame)
{
    KRandomTreeOptions lTree;
    lTree.mNodes = 1 + static_cast<int>(GetParam() * 7 % 40);
    lTree.mScaling = GetParam() % 3 == 1;
    lTree.mPivots = GetParam() % 2 == 0;
    KRandomScene lSource(GetParam(), lTree);
    std::string  lBytes;
    KQexFileGltf lFile;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, {lSource.mRoot}, lSource.mOptions));
    const KScenePtr    lScene = MakeScene();
    KQexGltfReadResult lResult;
    ASSERT_TRUE(lFile.ReadBuffer(lBytes.data(), lBytes.size(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
    EXPECT_EQ(MessagesOf(lFile), "");
    ASSERT_EQ(lResult.mRoots.size(), 1u);
    ASSERT_EQ(lResult.mTakes.size(), 1u);
    EXPECT_STREQ(lResult.mTakes[0].mStack->GetName(), "take");
    EXPECT_LT(lSource.Compare(lResult.mRoots[0], lResult.mTakes[0], lSource.mOptions.mTakes[0]), lTree.mScaling ? 0.05 : 5e-3);
}

INSTANTIATE_TEST_SUITE_P(Seeds, KQexGltfRoundTripTest, testing::Range(1u, 25u));

TEST(GltfRoundTrip, BothFormatsGiveTheSameScene)
{
    KRandomScene   lSource(77, KRandomTreeOptions());
    const KTempDir lFolder;
    for (const char* lName : {"a walk.glb", "a walk: 100%.gltf"})
    {
        KQexFileGltf lFile;
        ASSERT_TRUE(lFile.Write((lFolder / lName).string(), {lSource.mRoot}, lSource.mOptions));
        const KScenePtr    lScene = MakeScene();
        KQexGltfReadResult lResult;
        ASSERT_TRUE(lFile.Read((lFolder / lName).string(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
        ASSERT_EQ(lResult.mTakes.size(), 1u);
        EXPECT_LT(lSource.Compare(lResult.mRoots[0], lResult.mTakes[0], lSource.mOptions.mTakes[0]), 5e-3) << lName;
    }
}

TEST(GltfRoundTrip, KeepsEveryTake)
{
    KRandomScene lSource(78, KRandomTreeOptions());
    std::mt19937 lRandom(79);
    for (const char* lName : {"run", "jump"})
    {
        AnimateProperty(lRandom, lSource.mRoot, lSource.mRoot->mLocalRotation, lName, 70.0, 33);
        AnimateProperty(lRandom, lSource.mRoot->GetChild(0), lSource.mRoot->GetChild(0)->mLocalTranslation, lName, 7.0, 33);
        KQexGltfTake lTake;
        lTake.mStack = lSource.mScene->FindAnimStack(lName);
        ASSERT_TRUE(MakeSampling({lSource.mRoot}, lTake.mStack, KQexSamplingRequest(), lTake.mSampling));
        lSource.mOptions.mTakes.push_back(lTake);
    }
    KQexFileGltf lFile;
    std::string  lBytes;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, {lSource.mRoot}, lSource.mOptions));
    const KScenePtr    lScene = MakeScene();
    KQexGltfReadResult lResult;
    ASSERT_TRUE(lFile.ReadBuffer(lBytes.data(), lBytes.size(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
    ASSERT_EQ(lResult.mTakes.size(), 3u);
    for (size_t i = 0; i < 3; ++i)
    {
        EXPECT_STREQ(lResult.mTakes[i].mStack->GetName(), lSource.mOptions.mTakes[i].mStack->GetName());
        EXPECT_LT(lSource.Compare(lResult.mRoots[0], lResult.mTakes[i], lSource.mOptions.mTakes[i]), 5e-3);
    }

    // Reading into the same scene again renames the takes.
    KQexGltfReadResult lAgain;
    ASSERT_TRUE(lFile.ReadBuffer(lBytes.data(), lBytes.size(), lScene.get(), {}, lAgain));
    EXPECT_STREQ(lAgain.mTakes[0].mStack->GetName(), "take_2");
    EXPECT_EQ(lScene->GetAnimStackCount(), 6);
}

TEST(GltfRoundTrip, KeepsLimitsPivotsAndDegreesOfFreedomInExtras)
{
    KRandomTreeOptions lTree;
    lTree.mNodes = 6;
    KRandomScene lSource(80, lTree);
    KQexLimits&  lFrom = lSource.mRoot->GetLimits().mRotationLimits;
    lFrom.SetActive(true);
    lFrom.SetLimitMinActive(false, true, false);
    lFrom.SetLimitMaxActive(true, true, false);
    lFrom.SetLimitMin(KQexVector4(0.0, -45.5, 0.0));
    lFrom.SetLimitMax(KQexVector4(12.25, 90.0, 0.0));
    lSource.mRoot->GetLimits().mTranslationLimits.SetActive(true);
    lSource.mRoot->GetLimits().mTranslationLimits.SetLimitMaxActive(false, false, true);
    lSource.mRoot->GetLimits().mTranslationLimits.SetLimitMax(KQexVector4(0.0, 0.0, 7.0));
    KQexBoneDofs lDofs;
    lDofs["node0"] = {{"ry", true, true, -45.5, 90.0}, {"rx", false, true, 0.0, 12.25}, {"tz", false, false, 0.0, 0.0}};
    lSource.mOptions.mBoneDofs = &lDofs;

    KQexFileGltf lFile;
    std::string  lBytes;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, {lSource.mRoot}, lSource.mOptions));
    const KScenePtr    lScene = MakeScene();
    KQexGltfReadResult lResult;
    ASSERT_TRUE(lFile.ReadBuffer(lBytes.data(), lBytes.size(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
    const KQexNode*   lRoot = lResult.mRoots[0];
    const KQexLimits& lTo = lRoot->GetLimits().mRotationLimits;
    bool              lMin[3];
    bool              lMax[3];
    lTo.GetLimitMinActive(lMin[0], lMin[1], lMin[2]);
    lTo.GetLimitMaxActive(lMax[0], lMax[1], lMax[2]);
    EXPECT_TRUE(lTo.GetActive());
    EXPECT_TRUE(!lMin[0] && lMin[1] && !lMin[2]);
    EXPECT_TRUE(lMax[0] && lMax[1] && !lMax[2]);
    EXPECT_EQ(lTo.GetLimitMin()[1], -45.5);
    EXPECT_EQ(lTo.GetLimitMax()[0], 12.25);
    EXPECT_TRUE(lRoot->GetLimits().GetTranslationLimitActive());
    EXPECT_EQ(lRoot->GetLimits().mTranslationLimits.GetLimitMax()[2], 7.0);
    ASSERT_EQ(lResult.mBoneDofs.size(), 1u);
    const std::vector<KQexBoneDof>& lRead = lResult.mBoneDofs["node0"];
    ASSERT_EQ(lRead.size(), 3u);
    EXPECT_EQ(lRead[0].mWord, "ry");
    EXPECT_EQ(lRead[0].mMin, -45.5);
    EXPECT_FALSE(lRead[1].mHasMin);
    EXPECT_TRUE(lRead[1].mHasMax);
    EXPECT_EQ(lRead[2].mWord, "tz");
    for (const KQexNode *lOld = lSource.mRoot, *lNew = lRoot; lOld != nullptr && lNew != nullptr;
         lOld = lOld->GetNextInTree(lSource.mRoot), lNew = lNew->GetNextInTree(lRoot))
    {
        EXPECT_EQ(lOld->GetRotationOrder(), lNew->GetRotationOrder());
        EXPECT_TRUE(lNew->GetRotationActive());
        EXPECT_NE(lNew->GetSkeleton(), nullptr);
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_EQ(lOld->GetPreRotation()[i], lNew->GetPreRotation()[i]);
            EXPECT_EQ(lOld->GetPostRotation()[i], lNew->GetPostRotation()[i]);
        }
    }
}

TEST(GltfRoundTrip, ReadsAChainOf100000Nodes)
{
    KQexGltfBuilder lBuilder;
    lBuilder.AddNode({{"translation", {0.0, 1.0, 0.0}}});
    for (int i = 1; i < 100000; ++i)
    {
        lBuilder.mJson["nodes"][static_cast<size_t>(i - 1)]["children"] = {i};
        lBuilder.mJson["nodes"].push_back({{"translation", {0.0, 0.5, 0.0}}});
    }
    const std::string  lText = lBuilder.Text();
    const KScenePtr    lScene = MakeScene();
    KQexFileGltf       lFile;
    KQexGltfReadResult lResult;
    ASSERT_TRUE(lFile.ReadBuffer(lText.data(), lText.size(), lScene.get(), {}, lResult)) << MessagesOf(lFile);
    EXPECT_EQ(lScene->GetRootNode()->GetChildCount(true), 100000);
}

} // namespace
