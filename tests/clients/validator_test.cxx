#include <qexioplugins/gltf/kqexfilegltf.h>

#include <tests/support/randomscene.h>
#include <tests/support/runprogram.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

// All written files must pass the Khronos validator, which ./dev clients installs, without warnings.

using namespace qexsdk;
using namespace qextest;

namespace
{

const std::string kClients = std::string(QEX_SOURCE_DIR) + "/tests/clients/";
const std::string kModules = std::string(QEX_SOURCE_DIR) + "/build/npm/node_modules";

/// Writes a random scene in both formats and adds the paths to \p pFiles.
void WriteScene(unsigned pSeed, const KTempDir& pFolder, std::vector<std::string>& pFiles)
{
    std::mt19937       lRandom(pSeed);
    KRandomTreeOptions lTree;
    lTree.mNodes = 1 + static_cast<int>(pSeed * 11 % 60);
    lTree.mFrames = pSeed % 5 == 4 ? 1 : 30;
    lTree.mScaling = pSeed % 3 == 0;
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    // Names with sides, so that the mesh has several materials.
    int lPairs = 0;
    for (KQexNode* lNode = lRoot; lNode != nullptr && pSeed % 4 == 0; lNode = lNode->GetNextInTree(lRoot))
    {
        lNode->SetName(((lPairs % 2 == 0 ? "left" : "right") + std::to_string(lPairs / 2)).c_str());
        ++lPairs;
    }
    KQexGltfWriteOptions lOptions;
    KQexBoneDofs         lDofs;
    lRoot->GetLimits().SetRotationLimitActive(true);
    lRoot->GetLimits().mRotationLimits.SetLimitMinActive(true, false, true);
    lDofs[lRoot->GetName()] = {{"rx", true, true, -10.0, 20.0}, {"rz", false, false, 0.0, 0.0}};
    lOptions.mBoneDofs = &lDofs;
    lOptions.mBoneMesh = pSeed % 2 == 0;
    AnimateProperty(lRandom, lRoot, lRoot->mLocalRotation, "another", 30.0, 17);
    for (const char* lName : {"take", "another"})
    {
        KQexGltfTake lTake;
        lTake.mStack = lScene->FindAnimStack(lName);
        ASSERT_TRUE(MakeSampling({lRoot}, lTake.mStack, KQexSamplingRequest(), lTake.mSampling));
        lOptions.mTakes.push_back(lTake);
    }
    for (const char* lExtension : {".glb", ".gltf"})
    {
        KQexFileGltf lFile;
        pFiles.push_back((pFolder / ("scene " + std::to_string(pSeed) + lExtension)).string());
        ASSERT_TRUE(lFile.Write(pFiles.back(), {lRoot}, lOptions));
    }
}

TEST(Clients, TheKhronosValidatorReportsNothing)
{
    const KTempDir           lFolder;
    std::vector<std::string> lArguments = {"node", kClients + "validate.js"};
    for (unsigned lSeed = 1; lSeed <= 20; ++lSeed)
    {
        WriteScene(lSeed, lFolder, lArguments);
    }
    KRunOptions lOptions;
    lOptions.mEnvironment["NODE_PATH"] = kModules;
    const KRunResult lRun = RunProgram(lArguments, lOptions);
    EXPECT_EQ(lRun.mExit, 0) << lRun.mOut << lRun.mErr;
    EXPECT_NE(lRun.mOut.find("40 files, 0 errors and warnings"), std::string::npos) << lRun.mOut;
}

/// Passing means something only if the validator rejects a broken file.
TEST(Clients, TheKhronosValidatorRejectsABrokenFile)
{
    const KTempDir lFolder;
    WriteFile(lFolder / "bad.gltf", R"({"asset":{"version":"2.0"},"nodes":[{"children":[7]}]})");
    KRunOptions lOptions;
    lOptions.mEnvironment["NODE_PATH"] = kModules;
    EXPECT_EQ(RunProgram({"node", kClients + "validate.js", (lFolder / "bad.gltf").string()}, lOptions).mExit, 1);
}

} // namespace
