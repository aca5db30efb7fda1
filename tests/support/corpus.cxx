#include <tests/support/corpus.h>

#include <tests/support/testfolders.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace qextest
{

namespace fs = std::filesystem;

std::vector<KCorpusPair> CorpusPairs()
{
    std::vector<KCorpusPair> lPairs;
    for (const fs::directory_entry& lMotion : fs::recursive_directory_iterator(CorpusDir()))
    {
        const std::string lStem = lMotion.path().stem().string();
        if (lMotion.path().extension() != ".amc")
        {
            continue;
        }
        for (const fs::directory_entry& lSkeleton : fs::directory_iterator(lMotion.path().parent_path()))
        {
            if (lSkeleton.path().extension() == ".asf" && lStem.rfind(lSkeleton.path().stem().string(), 0) == 0)
            {
                lPairs.push_back({lStem, lSkeleton.path(), lMotion.path(), OracleDir() / (lStem + ".world.json")});
            }
        }
    }
    return lPairs;
}

double Distance(const KPoint& pLeft, const KPoint& pRight)
{
    return std::hypot(pLeft.mX - pRight.mX, pLeft.mY - pRight.mY, pLeft.mZ - pRight.mZ);
}

std::vector<KWorldFrame> ReadWorld(const fs::path& pOracle, double pFactor)
{
    std::vector<KWorldFrame> lFrames;
    const nlohmann::json     lJson = nlohmann::json::parse(ReadFile(pOracle));
    const auto               lPointOf = [pFactor](const nlohmann::json& pArray)
    {
        return KPoint{pFactor * pArray[0].get<double>(), pFactor * pArray[1].get<double>(), pFactor * pArray[2].get<double>()};
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
