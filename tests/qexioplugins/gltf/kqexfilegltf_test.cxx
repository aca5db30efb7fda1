#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>

using namespace qexsdk;
using namespace qextest;

namespace
{

TEST(GltfWrite, PreparedOutputsReplaceNothingUntilTheyAreCommitted)
{
    std::mt19937    lRandom(6);
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTreeOptions());
    KTempDir        lFolder;
    KQexFileGltf    lFile;
    for (const char* lName : {"a.gltf", "a.bin", "a.glb"})
    {
        WriteFile(lFolder / lName, "old");
    }
    const auto lExpectOld = [&lFolder]
    {
        for (const char* lName : {"a.gltf", "a.bin", "a.glb"})
        {
            EXPECT_EQ(ReadFile(lFolder / lName), "old") << lName;
        }
    };
    std::vector<std::unique_ptr<KOutputFile>> lOutputs;
    KQexGltfWriteOptions                      lOptions;
    lOptions.mPrepared = &lOutputs;
    ASSERT_TRUE(lFile.Write((lFolder / "a.gltf").string(), {lRoot}, lOptions));
    ASSERT_TRUE(lFile.Write((lFolder / "a.glb").string(), {lRoot}, lOptions));
    EXPECT_FALSE(lFile.Write((lFolder / "none/a.gltf").string(), {lRoot}, lOptions));
    ASSERT_EQ(lOutputs.size(), 3u);
    lExpectOld();
    lOutputs.clear();
    lExpectOld();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(lFolder.Path()), std::filesystem::directory_iterator()), 3);

    ASSERT_TRUE(lFile.Write((lFolder / "a.gltf").string(), {lRoot}, lOptions));
    ASSERT_TRUE(lFile.Write((lFolder / "a.glb").string(), {lRoot}, lOptions));
    KOutputFile* const lAll[] = {lOutputs[0].get(), lOutputs[1].get(), lOutputs[2].get()};
    EXPECT_EQ(KOutputFile::CommitAll(lAll, 3), nullptr);
    std::string lBytes;
    ASSERT_TRUE(lFile.WriteBuffer(lBytes, {lRoot}, lOptions));
    EXPECT_EQ(ReadFile(lFolder / "a.glb"), lBytes);
    EXPECT_EQ(nlohmann::json::parse(ReadFile(lFolder / "a.gltf"))["buffers"][0]["uri"], "a.bin");
    EXPECT_EQ(nlohmann::json::parse(ReadFile(lFolder / "a.gltf"))["buffers"][0]["byteLength"], ReadFile(lFolder / "a.bin").size());
}

TEST(GltfWrite, TheBinaryHeaderHasTheFileSize)
{
    std::mt19937         lRandom(5);
    const KScenePtr      lScene = MakeScene();
    KQexNode*            lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTreeOptions());
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
    std::string lThreaded;
    ASSERT_TRUE(lFile.WriteBuffer(lThreaded, {lRoot}, lOptions));
    EXPECT_EQ(lThreaded, lOut) << "the bytes do not depend on the threads";
}

TEST(GltfWrite, EveryAccessorHasItsMinimumAndMaximum)
{
    const KScenePtr         lScene = MakeScene();
    KQexImportAcclaimResult lImported;
    ASSERT_TRUE(KQexImporterAcclaim::Import(lScene.get(), (SamplesDir() / "walker.asf").c_str(), (SamplesDir() / "walk.amc").c_str(), {},
                                            lImported));
    KQexGltfWriteOptions lOptions;
    lOptions.mTakes.resize(1);
    lOptions.mTakes[0].mStack = lScene->GetAnimStack(0);
    ASSERT_TRUE(MakeSampling({lImported.mRootNode}, lOptions.mTakes[0].mStack, {}, lOptions.mTakes[0].mSampling));
    const KTempDir lFolder;
    KQexFileGltf   lFile;
    ASSERT_TRUE(lFile.Write((lFolder / "walk.gltf").string(), {lImported.mRootNode}, lOptions));
    const nlohmann::json lJson = nlohmann::json::parse(ReadFile(lFolder / "walk.gltf"));
    ASSERT_GT(lJson["accessors"].size(), 6u);
    const std::map<std::string, size_t> kComponents = {{"SCALAR", 1}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
    for (const nlohmann::json& lAccessor : lJson["accessors"])
    {
        const size_t lComponents = kComponents.at(lAccessor["type"]);
        EXPECT_EQ(lAccessor.value("min", nlohmann::json()).size(), lComponents) << lAccessor;
        EXPECT_EQ(lAccessor.value("max", nlohmann::json()).size(), lComponents) << lAccessor;
    }
}

} // namespace
