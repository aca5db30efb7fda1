#include <qexioplugins/gltf/kqexfilegltf.h>

#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

TEST(GltfWrite, BinaryHeadTellsTheSize)
{
    std::mt19937         lRandom(5);
    const KScenePtr      lScene = MakeScene();
    KQexNode*            lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTree());
    KQexGltfWriteOptions lOptions;
    lOptions.mTakes.resize(1);
    lOptions.mTakes[0].mStack = lScene->FindAnimStack("take");
    ASSERT_TRUE(MakeSampling({lRoot}, lOptions.mTakes[0].mStack, KQexSamplingRequest(), lOptions.mTakes[0].mSampling));
    std::string  lOut;
    KQexFileGltf lFile;
    ASSERT_TRUE(lFile.WriteBuffer(lOut, {lRoot}, lOptions));
    ASSERT_GT(lOut.size(), 20u);
    EXPECT_EQ(lOut.substr(0, 4), "glTF");
    size_t lSize = 0;
    for (int i = 3; i >= 0; --i)
    {
        lSize = lSize << 8 | static_cast<unsigned char>(lOut[static_cast<size_t>(8 + i)]);
    }
    EXPECT_EQ(lSize, lOut.size());
    lOptions.mThreads = 3;
    std::string lThree;
    ASSERT_TRUE(lFile.WriteBuffer(lThree, {lRoot}, lOptions));
    EXPECT_EQ(lThree, lOut) << "the bytes do not depend on the threads";
    if (const char* lKeep = std::getenv("QEX_KEEP"))
    {
        WriteFile(lKeep, lOut);
    }
}

} // namespace
