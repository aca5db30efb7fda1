#include <tests/qexioplugins/gltf/convertedmotion.h>
#include <tests/support/runprogram.h>

#include <nlohmann/json.hpp>

#include <cmath>

// Blender and f3d, which ./dev clients installs, on our files.

using namespace qexsdk;
using namespace qextest;

namespace
{

namespace fs = std::filesystem;

KJointPositions PositionsOf(const nlohmann::json& pBones)
{
    KJointPositions lPositions;
    for (const auto& [lName, lHead] : pBones.items())
    {
        lPositions[lName] = {lHead[0].get<double>(), lHead[1].get<double>(), lHead[2].get<double>()};
    }
    return lPositions;
}

nlohmann::json JobOf(const KConvertedMotion& pFiles, const fs::path& pFile)
{
    nlohmann::json lJob = {{"file", pFile.string()}, {"fps", std::lround(pFiles.FramesPerSecond())}, {"frames", nlohmann::json::array()}};
    for (const KWorldFrame& lFrame : pFiles.mWorld)
    {
        lJob["frames"].push_back(pFiles.FrameOf(lFrame));
    }
    return lJob;
}

TEST(Clients, BlenderMatchesTheWorldPositions)
{
    const KTempDir                lFolder;
    std::vector<KConvertedMotion> lFiles;
    nlohmann::json                lJobs = nlohmann::json::array();
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        lFiles.emplace_back(lPair, lFolder);
        lJobs.push_back(JobOf(lFiles.back(), lFiles.back().mBvh));
        lJobs.push_back(JobOf(lFiles.back(), lFiles.back().mGlb));
    }
    WriteFile(lFolder / "jobs.json", lJobs.dump());
    const KRunResult lRun = RunProgram({"blender", "--background", "--factory-startup", "--python-exit-code", "1", "--python",
                                        std::string(QEX_SOURCE_DIR) + "/tests/clients/blender_heads.py", "--",
                                        (lFolder / "jobs.json").string(), (lFolder / "heads.json").string()});
    ASSERT_EQ(lRun.mExit, 0) << lRun.mOut << lRun.mErr;
    const nlohmann::json lHeads = nlohmann::json::parse(ReadFile(lFolder / "heads.json"));
    ASSERT_EQ(lHeads.size(), lJobs.size());
    for (size_t i = 0; i < lFiles.size(); ++i)
    {
        SCOPED_TRACE(lFiles[i].mPair.mName);
        double lBvhLargest = 0.0;
        double lGlbLargest = 0.0;
        for (const KWorldFrame& lFrame : lFiles[i].mWorld)
        {
            const std::string lNumber = std::to_string(lFiles[i].FrameOf(lFrame));
            lBvhLargest = std::max(lBvhLargest, LargestDistance(lFrame, PositionsOf(lHeads[2 * i][lNumber]), 1.0));
            lGlbLargest = std::max(lGlbLargest, LargestDistance(lFrame, PositionsOf(lHeads[2 * i + 1][lNumber]), 100.0));
        }
        ReportDistance(lFiles[i].mPair.mName + "_blender_bvh", lBvhLargest);
        ReportDistance(lFiles[i].mPair.mName + "_blender_glb", lGlbLargest);
    }
}

/// The recipe is taken from the README, so that it stays correct there.
TEST(Clients, TheReadmesRecipeForBlenderGivesMetresAndTheRate)
{
    const std::string lReadme = ReadFile(fs::path(QEX_SOURCE_DIR) / "README.md");
    const std::string lOption = "blender --python-expr \"";
    const size_t      lStart = lReadme.find(lOption);
    ASSERT_NE(lStart, std::string::npos);
    const size_t      lEnd = lReadme.find('"', lStart + lOption.size());
    const std::string lRecipe = lReadme.substr(lStart + lOption.size(), lEnd - lStart - lOption.size());

    const KTempDir lFolder;
    // 400 frames at 48 a second: neither Blender's rate nor its number of frames. A figure 1.8 m high, in centimetres.
    std::string lBvh = "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 3 Xposition Yposition Zposition\nJOINT Head\n{\nOFFSET 0 180 0\n"
                       "CHANNELS 3 Zrotation Yrotation Xrotation\nEnd Site\n{\nOFFSET 0 10 0\n}\n}\n}\nMOTION\nFrames: 400\n"
                       "Frame Time: 0.0208333333\n";
    for (int lFrame = 0; lFrame < 400; ++lFrame)
    {
        lBvh += "0 0 0 0 0 0\n";
    }
    WriteFile(lFolder / "walk.bvh", lBvh);
    KRunOptions lOptions;
    lOptions.mFolder = lFolder.Path().string();
    const KRunResult lRun = RunProgram({"blender", "--background", "--factory-startup", "--python-exit-code", "1", "--python",
                                        std::string(QEX_SOURCE_DIR) + "/tests/clients/blender_recipe.py", "--", lRecipe},
                                       lOptions);
    ASSERT_EQ(lRun.mExit, 0) << lRun.mOut << lRun.mErr;
    std::istringstream lResult(lRun.mOut.substr(std::min(lRun.mOut.find("result "), lRun.mOut.size())));
    std::string        lWord;
    double             lRate = 0;
    int                lLast = 0;
    double             lHeight = 0;
    ASSERT_TRUE(lResult >> lWord >> lRate >> lLast >> lHeight) << lRun.mOut;
    EXPECT_NEAR(lRate, 48, 1e-5);
    EXPECT_EQ(lLast, 401); // Blender adds one.
    EXPECT_NEAR(lHeight, 1.8, 1e-5);
}

/// The threshold allows for small differences between versions of the renderer; a blank picture or another figure differs by about 10,000.
TEST(Clients, TheSampleRendersLikeItsPictureInTheDocs)
{
    const KTempDir          lFolder;
    const KScenePtr         lScene = MakeScene();
    KQexImportAcclaimResult lImported;
    ASSERT_TRUE(KQexImporterAcclaim::Import(lScene.get(), (SamplesDir() / "walker.asf").c_str(), (SamplesDir() / "walk.amc").c_str(), {},
                                            lImported));
    KQexGltfWriteOptions lOptions;
    KQexFileGltf         lFile;
    lOptions.mTakes.resize(1);
    lOptions.mTakes[0].mStack = lScene->FindAnimStack(lImported.mTakes[0].mName.c_str());
    ASSERT_TRUE(MakeSampling({lImported.mRootNode}, lOptions.mTakes[0].mStack, {}, lOptions.mTakes[0].mSampling));
    const std::string lPicture = (fs::path(QEX_SOURCE_DIR) / "docs/walk.png").string();
    for (const bool lHasMesh : {true, false})
    {
        lOptions.mBoneMesh = lHasMesh;
        ASSERT_TRUE(lFile.Write((lFolder / "walk.glb").string(), {lImported.mRootNode}, lOptions));
        const KRunResult lRun =
            RunProgram({std::string(QEX_SOURCE_DIR) + "/tests/clients/picture", (lFolder / "walk.glb").string(), "--ref=" + lPicture,
                        "--ref-threshold=1500", "--output=" + (lFolder / "difference.png").string()});
        EXPECT_EQ(lRun.mExit == 0, lHasMesh) << lRun.mOut << lRun.mErr;
    }
}

} // namespace
