#include <tests/support/corpus.h>

#include <tests/support/testfolders.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace qextest
{

namespace fs = std::filesystem;

namespace
{

/// Single precision, in which curves keep their keys, is the limit for the samples.
constexpr double kSampleTolerance = 1e-6;
constexpr double kRealTolerance = 1e-4;

void AddRealPairs(const fs::path& pFolder, std::vector<KCorpusPair>& pPairs)
{
    for (const fs::directory_entry& lMotion : fs::recursive_directory_iterator(pFolder))
    {
        const std::string lStem = lMotion.path().stem().string();
        if (lMotion.path().extension() != ".amc")
        {
            continue;
        }
        const fs::path lWorld = OracleDir().empty() ? fs::path() : OracleDir() / (lStem + ".world.json");
        for (const fs::directory_entry& lSkeleton : fs::directory_iterator(lMotion.path().parent_path()))
        {
            if (lSkeleton.path().extension() == ".asf" && lStem.rfind(lSkeleton.path().stem().string(), 0) == 0)
            {
                pPairs.push_back({lStem, lSkeleton.path(), lMotion.path(), fs::exists(lWorld) ? lWorld : fs::path(), kRealTolerance});
            }
        }
    }
}

} // namespace

std::vector<KCorpusPair> CorpusPairs()
{
    const fs::path           lWalk = SamplesDir();
    const fs::path           lRobot = SamplesDir() / "robot";
    std::vector<KCorpusPair> lPairs = {
        {"walk", lWalk / "walker.asf", lWalk / "walk.amc", lWalk / "walk.world.json", kSampleTolerance},
        {"robot_pick", lRobot / "robot.asf", lRobot / "robot_pick.amc", lRobot / "robot_pick.world.json", kSampleTolerance}};
    if (!CorpusDir().empty())
    {
        AddRealPairs(CorpusDir(), lPairs);
    }
    return lPairs;
}

std::vector<KCorpusPair> PairsWithWorldPositions()
{
    std::vector<KCorpusPair> lPairs = CorpusPairs();
    lPairs.erase(std::remove_if(lPairs.begin(), lPairs.end(), [](const KCorpusPair& pPair) { return pPair.mWorld.empty(); }), lPairs.end());
    return lPairs;
}

std::vector<fs::path> CorpusFiles(const std::string& pExtension)
{
    std::vector<fs::path> lFiles;
    for (const fs::path& lFolder : {SamplesDir(), CorpusDir()})
    {
        if (lFolder.empty())
        {
            continue;
        }
        for (const fs::directory_entry& lEntry : fs::recursive_directory_iterator(lFolder))
        {
            if (lEntry.path().extension() == pExtension)
            {
                lFiles.push_back(lEntry.path());
            }
        }
    }
    std::sort(lFiles.begin(), lFiles.end());
    return lFiles;
}

double CentimetresPerUnit(const fs::path& pAsf)
{
    // The first line "length" is that of the section :units.
    std::istringstream lWords(ReadFile(pAsf));
    std::string        lWord;
    double             lUnit = 0.0;
    while (lWords >> lWord && lWord != "length")
    {
    }
    EXPECT_TRUE(lWords >> lUnit) << pAsf << " has no unit of length";
    return 2.54 / lUnit;
}

double Distance(const KPoint& pLeft, const KPoint& pRight)
{
    return std::hypot(pLeft.mX - pRight.mX, pLeft.mY - pRight.mY, pLeft.mZ - pRight.mZ);
}

std::vector<KWorldFrame> ReadWorld(const KCorpusPair& pPair)
{
    std::vector<KWorldFrame> lFrames;
    const double             lFactor = CentimetresPerUnit(pPair.mAsf);
    const nlohmann::json     lJson = nlohmann::json::parse(ReadFile(pPair.mWorld));
    const auto               lPointOf = [lFactor](const nlohmann::json& pArray)
    {
        return KPoint{lFactor * pArray[0].get<double>(), lFactor * pArray[1].get<double>(), lFactor * pArray[2].get<double>()};
    };
    for (const auto& [lNumber, lBones] : lJson["frames"].items())
    {
        KWorldFrame lFrame{std::stoll(lNumber), 0.0, {}, {}};
        double      lLow = 1e300;
        double      lHigh = -1e300;
        for (const auto& [lName, lBone] : lBones.items())
        {
            lFrame.mStarts[lName] = lPointOf(lBone["start"]);
            lFrame.mEnds[lName] = lPointOf(lBone["end"]);
            lLow = std::min({lLow, lFrame.mStarts[lName].mY, lFrame.mEnds[lName].mY});
            lHigh = std::max({lHigh, lFrame.mStarts[lName].mY, lFrame.mEnds[lName].mY});
        }
        lFrame.mHeight = lHigh - lLow;
        lFrames.push_back(lFrame);
    }
    return lFrames;
}

} // namespace qextest
