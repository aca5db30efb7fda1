#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <qexioplugins/bvh/kqexfilebvh.h>
#include <qexioplugins/gltf/kqexfilegltf.h>
#include <tests/qexioplugins/gltf/assimpscene.h>
#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/runprogram.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>

// Motions, written as BVH and glTF and read by other programs: their joints must be at the world positions that are known of them.

using namespace qexsdk;
using namespace qextest;

namespace
{

namespace fs = std::filesystem;

constexpr double kTicksPerSecond = 705600000.0;
constexpr double kTolerance = 1e-3; ///< Fraction of the figure's height.

/// A motion, imported and written in both formats.
class KConvertedMotion
{
public:
    KConvertedMotion(const KCorpusPair& pPair, const KTempDir& pFolder)
        : mPair(pPair), mBvh(pFolder / (pPair.mName + ".bvh")), mGlb(pFolder / (pPair.mName + ".glb")), mScene(MakeScene())
    {
        KQexImportAcclaimOptions lOptions;
        EXPECT_TRUE(KQexImporterAcclaim::Import(mScene.get(), pPair.mAsf.c_str(), pPair.mAmc.c_str(), lOptions, mImported));
        mWorld = ReadWorld(pPair);
        mTake.mStack = mScene->FindAnimStack(mImported.mTakes[0].mName.c_str());
        EXPECT_TRUE(MakeSampling({mImported.mRootNode}, mTake.mStack, KQexSamplingRequest(), mTake.mSampling));
        WriteBvh();
        WriteGlb();
    }

    /// Frame of the written files, from 0.
    long long FrameOf(const KWorldFrame& pFrame) const { return pFrame.mNumber - mImported.mTakes[0].mInfo.mFirstFrame; }

    double FramesPerSecond() const { return kTicksPerSecond / static_cast<double>(mTake.mSampling.mStep.Get()); }

    double SecondsOf(const KWorldFrame& pFrame) const { return static_cast<double>(FrameOf(pFrame)) / FramesPerSecond(); }

    KCorpusPair              mPair;
    fs::path                 mBvh;
    fs::path                 mGlb;
    std::vector<KWorldFrame> mWorld; ///< Centimetres.

private:
    void WriteBvh()
    {
        KQexBvhWriteOptions lOptions;
        KQexFileBvh         lFile;
        lOptions.mStack = mTake.mStack;
        lOptions.mSampling = mTake.mSampling;
        EXPECT_TRUE(lFile.OpenWrite(mBvh.c_str()) && lFile.Write({mImported.mRootNode}, lOptions) && lFile.Close());
    }

    void WriteGlb()
    {
        KQexGltfWriteOptions lOptions;
        KQexFileGltf         lFile;
        lOptions.mTakes.push_back(mTake);
        EXPECT_TRUE(lFile.Write(mGlb.string(), {mImported.mRootNode}, lOptions));
    }

    KScenePtr               mScene;
    KQexImportAcclaimResult mImported;
    KQexGltfTake            mTake;
};

/// The largest distance between a bone's start and its expected position, as a fraction of the figure's height. \p pFactor converts
/// \p pPositions to centimetres. Fails for a missing bone.
double LargestDistance(const KWorldFrame& pFrame, const KJointPositions& pPositions, double pFactor)
{
    double lLargest = 0.0;
    for (const auto& [lName, lStart] : pFrame.mStarts)
    {
        const auto lFound = pPositions.find(lName);
        if (lFound == pPositions.end())
        {
            ADD_FAILURE() << lName << " is missing";
            continue;
        }
        const KPoint lPosition{lFound->second.mX * pFactor, lFound->second.mY * pFactor, lFound->second.mZ * pFactor};
        const double lDistance = Distance(lPosition, lStart) / pFrame.mHeight;
        EXPECT_LT(lDistance, kTolerance) << lName << " in frame " << pFrame.mNumber;
        lLargest = std::max(lLargest, lDistance);
    }
    return lLargest;
}

void ReportDistance(const std::string& pWhat, double pDistance)
{
    std::ostringstream lText;
    lText << pDistance;
    testing::Test::RecordProperty(pWhat + "_largest_distance_by_height", lText.str());
    std::cout << pWhat << ": largest distance over height " << lText.str() << '\n';
}

TEST(Clients, AssimpMatchesTheWorldPositions)
{
    const KTempDir lFolder;
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        SCOPED_TRACE(lPair.mName);
        const KConvertedMotion lFiles(lPair, lFolder);
        const KAssimpScene     lBvh(lFiles.mBvh);
        const KAssimpScene     lGlb(lFiles.mGlb);
        double                 lBvhLargest = 0.0;
        double                 lGlbLargest = 0.0;
        for (const KWorldFrame& lFrame : lFiles.mWorld)
        {
            const double lSeconds = lFiles.SecondsOf(lFrame);
            lBvhLargest = std::max(lBvhLargest, LargestDistance(lFrame, lBvh.PositionsAt(0, lSeconds), 1.0));
            lGlbLargest = std::max(lGlbLargest, LargestDistance(lFrame, lGlb.PositionsAt(0, lSeconds), 100.0));
        }
        ReportDistance(lPair.mName + "_assimp_bvh", lBvhLargest);
        ReportDistance(lPair.mName + "_assimp_glb", lGlbLargest);
    }
}

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
    if (RunProgram({"sh", "-c", "command -v blender"}).mExit != 0)
    {
        GTEST_SKIP() << "blender is not installed";
    }
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
    if (RunProgram({"sh", "-c", "command -v blender"}).mExit != 0)
    {
        GTEST_SKIP() << "blender is not installed";
    }
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
    if (RunProgram({"sh", "-c", "command -v f3d && command -v xvfb-run"}).mExit != 0)
    {
        GTEST_SKIP() << "f3d or xvfb-run is not installed";
    }
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
