#include <tests/apps/asf/runasf.h>

#include <algorithm>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// Two motions of the small skeleton with different names, and one of the same name in another folder.
class KOutputTemplateTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 30\n";
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "walk.amc", lMotion + "1\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n2\nroot 0 0 1 0 0 0\nthigh 0 9 0\nshin 0\n");
        WriteFile(mFolder / "run.amc", lMotion + "1\nroot 0 0 0 0 0 0\nthigh 0 0 0\nshin 0\n2\nroot 0 0 1 0 0 0\nthigh 0 0 0\nshin 9\n");
        fs::create_directory(mFolder / "b");
        fs::copy_file(mFolder / "walk.amc", mFolder / "b/walk.amc");
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::string& pCall) { return RunAsf(WordsOf(pCall), mOptions); }

    /// Converts both motions. \return the names of the new files, in order
    std::string NewFiles(const std::string& pOutputs)
    {
        fs::remove_all(mFolder / "out");
        fs::create_directory(mFolder / "out");
        const KRunResult lResult = Run("convert -q small.asf walk.amc run.amc " + pOutputs);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        std::vector<std::string> lNames;
        for (const fs::directory_entry& lEntry : fs::directory_iterator(mFolder / "out"))
        {
            lNames.push_back(lEntry.path().filename().string());
        }
        std::sort(lNames.begin(), lNames.end());
        std::string lAll;
        for (const std::string& lName : lNames)
        {
            lAll += lName + " ";
        }
        return lAll;
    }

    /// Expects a usage error, and no new file.
    void ExpectRefused(const std::string& pCall, const std::string& pMessage)
    {
        const auto       lCount = std::distance(fs::directory_iterator(mFolder.Path()), fs::directory_iterator());
        const KRunResult lResult = Run("convert -q " + pCall);
        EXPECT_EQ(lResult.mExit, 2) << pCall;
        EXPECT_EQ(lResult.mErr, "asf: error: --output: " + pMessage + "\n");
        EXPECT_EQ(std::distance(fs::directory_iterator(mFolder.Path()), fs::directory_iterator()), lCount) << pCall;
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KOutputTemplateTest, EveryKindOfOutputTakesWords)
{
    EXPECT_EQ(NewFiles("-o out/{name}.bvh"), "run.bvh walk.bvh ");
    EXPECT_EQ(NewFiles("-o out/{take}.glb"), "run.glb walk.glb ");
    EXPECT_EQ(NewFiles("-o out/{n}.gltf"), "1.bin 1.gltf 2.bin 2.gltf ");
    EXPECT_EQ(NewFiles("-o out/{skeleton}_{n}_{name}.asf out/{skeleton}_{n}_{name}.amc"),
              "small_1_walk.amc small_1_walk.asf small_2_run.amc small_2_run.asf ");
    EXPECT_EQ(NewFiles("-o out/{skeleton}.asf out/{name}.amc"), "run.amc small.asf walk.amc ");
    EXPECT_EQ(NewFiles("-o out/{skeleton}.glb"), "small.glb ") << "all takes in one file";
}

/// Each file has its take, and a skeleton of a take fits its motion.
TEST_F(KOutputTemplateTest, EachFileHasItsTake)
{
    ASSERT_EQ(NewFiles("-o out/{name}.glb -o out/{name}.asf out/{name}.amc"), "run.amc run.asf run.glb walk.amc walk.asf walk.glb ");
    for (const std::string lName : {"walk", "run"})
    {
        for (const std::string& lOutput : {"out/" + lName + ".glb", "out/" + lName + ".asf out/" + lName + ".amc"})
        {
            const KRunResult lResult = Run("diff -q --ignore dofs,limits small.asf " + lName + ".amc " + lOutput);
            EXPECT_EQ(lResult.mExit, 0) << lOutput << lResult.mOut << lResult.mErr;
        }
        EXPECT_EQ(JsonOf(Run("info -q --json out/" + lName + ".glb"))["figure"]["takes"].size(), 1u);
    }
}

TEST_F(KOutputTemplateTest, UnknownWordsAreRefused)
{
    ExpectRefused("small.asf walk.amc -o {nmae}.bvh", "{nmae}.bvh has {nmae}; known are {name}, {take}, {skeleton} and {n}");
    ExpectRefused("small.asf walk.amc -o a{}.glb", "a{}.glb has {}; known are {name}, {take}, {skeleton} and {n}");
    EXPECT_EQ(Run("convert -q small.asf walk.amc -o a{b.bvh").mExit, 0);
    EXPECT_TRUE(fs::exists(mFolder / "a{b.bvh"));
}

TEST_F(KOutputTemplateTest, TwoOutputsOfOneNameAreRefused)
{
    const std::string lTwice = "walk.bvh would be written twice, for the takes walk and walk 2: put {n} into its name";
    ExpectRefused("small.asf walk.amc b/walk.amc -o {name}.bvh", lTwice);
    EXPECT_EQ(Run("convert -q small.asf walk.amc b/walk.amc -o {name}_{n}.bvh").mExit, 0);
    EXPECT_TRUE(fs::exists(mFolder / "walk_1.bvh") && fs::exists(mFolder / "walk_2.bvh"));
    ExpectRefused("small.asf walk.amc -o a.bvh -o ./a.bvh", "./a.bvh would be written twice");
    ExpectRefused("small.asf walk.amc -o a.bvh -o b/../a.bvh", "b/../a.bvh would be written twice");

    ASSERT_EQ(Run("convert -q small.asf walk.amc run.amc -o two.gltf").mExit, 0);
    WriteFile(mFolder / "two.gltf", Replaced(ReadFile(mFolder / "two.gltf"), "\"run\"", "\"walk\""));
    ExpectRefused("two.gltf -o {name}.bvh", Replaced(lTwice, "walk 2", "walk_2"));
}

TEST_F(KOutputTemplateTest, NamesOfTakesAreMadeSafe)
{
    ASSERT_EQ(Run("convert -q small.asf walk.amc -o {name}.bvh --take ../up").mExit, 0);
    EXPECT_TRUE(fs::exists(mFolder / ".._up.bvh"));
}

} // namespace
