#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <tests/qexioplugins/acclaim/amcsupport.h>
#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// Real motions against the world positions that another program computed from the format's public definition.

using namespace qexsdk;
using namespace qextest;

namespace
{

KPoint PointOf(const nlohmann::json& pArray, double pFactor)
{
    return {pFactor * pArray[0].get<double>(), pFactor * pArray[1].get<double>(), pFactor * pArray[2].get<double>()};
}

double Height(const nlohmann::json& pFrame, double pFactor)
{
    double lLow = 1e300;
    double lHigh = -1e300;
    for (const auto& [lName, lBone] : pFrame.items())
    {
        for (const char* lEnd : {"start", "end"})
        {
            lLow = std::min(lLow, PointOf(lBone[lEnd], pFactor).mY);
            lHigh = std::max(lHigh, PointOf(lBone[lEnd], pFactor).mY);
        }
    }
    return lHigh - lLow;
}

KPoint GlobalPosition(const KQexScene& pScene, const KQexNode* pNode, KTime pTime)
{
    const KQexMatrix lMatrix = pScene.GetEvaluator()->GetNodeGlobalTransform(pNode, pTime);
    return {lMatrix.mData[3][0], lMatrix.mData[3][1], lMatrix.mData[3][2]};
}

/// The node at a bone's end: its end node, or the node of one of its children in the file. Clean-up may have reparented the child, but
/// without moving it.
const KQexNode* EndNode(HKQexAsfNode pFileBone, const KQexNode* pNode, const KQexNode* pRoot)
{
    if (pFileBone->mChildBuf.GetCount() == 0)
    {
        return pNode->FindChild((std::string(pFileBone->mName) + "_End").c_str(), false);
    }
    for (int i = 0; i < pFileBone->mChildBuf.GetCount(); ++i)
    {
        if (const KQexNode* lChild = pRoot->FindChild(pFileBone->mChildBuf[i]->mName, true))
        {
            return lChild;
        }
    }
    return nullptr;
}

class KOracleTest : public testing::TestWithParam<int>
{
};

TEST_P(KOracleTest, BonePositionsMatch)
{
    QEX_SKIP_WITHOUT_CORPUS();
    QEX_SKIP_WITHOUT_ORACLE();
    const std::vector<KCorpusPair> lPairs = CorpusPairs();
    ASSERT_FALSE(lPairs.empty());
    for (const KCorpusPair& lPair : lPairs)
    {
        SCOPED_TRACE(lPair.mAmc.filename().string());
        KQexImportAcclaimResult lFile;
        const KQexAsfSceneOwner lFileScene = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(lPair.mAsf.string()), {}, lFile);
        ASSERT_NE(lFileScene, nullptr);

        KQexImportAcclaimOptions lOptions;
        lOptions.mRemoveDummies = (GetParam() & 1) != 0;
        lOptions.mSetRotatePivotOffet = (GetParam() & 2) != 0;
        lOptions.mSetPreRotation = (GetParam() & 4) != 0;
        KQexImportAcclaimResult lResult;
        const KScenePtr         lScene = MakeScene();
        ASSERT_TRUE(KQexImporterAcclaim::Import(lScene.get(), lPair.mAsf.c_str(), lPair.mAmc.c_str(), lOptions, lResult));
        EXPECT_EQ(lResult.CountMessages(true), 0U);
        ASSERT_EQ(lResult.mTakes.size(), 1U);

        const nlohmann::json lOracle = nlohmann::json::parse(ReadFile(lPair.mOracle));
        const double         lFactor = 2.54 / lFileScene->mLengthUnit;
        double               lWorst = 0.0;
        int                  lBones = 0;
        for (const auto& [lNumber, lFrame] : lOracle["frames"].items())
        {
            const KTime  lTime((std::stoll(lNumber) - lResult.mTakes[0].mInfo.mFirstFrame) * 5880000);
            const double lHeight = Height(lFrame, lFactor);
            for (const auto& [lName, lExpected] : lFrame.items())
            {
                const KQexNode*    lNode = lScene->GetRootNode()->FindChild(lName.c_str(), true);
                const HKQexAsfNode lFileBone = lFileScene->mRoot->Find(lName.c_str());
                ASSERT_NE(lFileBone, nullptr) << lName;
                if (lNode == nullptr)
                {
                    EXPECT_TRUE(lOptions.mRemoveDummies && lFileBone->mOrderCount == 0) << lName;
                    continue;
                }
                const KQexNode* lEnd = EndNode(lFileBone, lNode, lScene->GetRootNode());
                ASSERT_NE(lEnd, nullptr) << lName;
                ++lBones;
                const double lStartError = Distance(GlobalPosition(*lScene, lNode, lTime), PointOf(lExpected["start"], lFactor)) / lHeight;
                const double lEndError = Distance(GlobalPosition(*lScene, lEnd, lTime), PointOf(lExpected["end"], lFactor)) / lHeight;
                EXPECT_LT(lStartError, 1e-4) << lName << " starts elsewhere in frame " << lNumber;
                EXPECT_LT(lEndError, 1e-4) << lName << " ends elsewhere in frame " << lNumber;
                lWorst = std::max({lWorst, lStartError, lEndError});
            }
        }
        EXPECT_GT(lBones, 80);
        std::ostringstream lText;
        lText << lWorst;
        RecordProperty(lPair.mAmc.stem().string() + "_largest_distance_by_height", lText.str());
    }
}

INSTANTIATE_TEST_SUITE_P(AllFlags, KOracleTest, testing::Range(0, 8));

/// The motion's text with every angle in radians; the root's translations are unchanged.
std::string InRadians(const std::string& pText)
{
    std::string lText;
    size_t      lAt = 0;
    while (lAt < pText.size())
    {
        const size_t lEnd = std::min(pText.find('\n', lAt), pText.size());
        std::string  lLine = pText.substr(lAt, lEnd - lAt);
        lAt = lEnd + 1;
        if (lLine.rfind(":DEGREES", 0) == 0)
        {
            lLine = ":RADIANS";
        }
        std::istringstream lWords(lLine);
        std::string        lName;
        lWords >> lName;
        double lValue = 0.0;
        if (!lName.empty() && std::isalpha(static_cast<unsigned char>(lName[0])) != 0 && lWords >> lValue)
        {
            std::ostringstream lNew;
            lNew.precision(17);
            lNew << lName;
            int lIndex = 0;
            do
            {
                lNew << ' ' << (lName == "root" && lIndex < 3 ? lValue : lValue * 0.017453292519943295);
                ++lIndex;
            } while (lWords >> lValue);
            lLine = lNew.str();
        }
        lText += lLine + '\n';
    }
    return lText;
}

/// Key values by "node.property.channel".
std::map<std::string, std::vector<float>> AllKeys(KQexScene& pScene)
{
    std::map<std::string, std::vector<float>> lKeys;
    for (KQexNode* lNode = pScene.GetRootNode(); lNode != nullptr; lNode = lNode->GetNextInTree(pScene.GetRootNode()))
    {
        for (KQexProperty* lProperty :
             {static_cast<KQexProperty*>(&lNode->mLocalTranslation), static_cast<KQexProperty*>(&lNode->mLocalRotation)})
        {
            KQexAnimCurveNode* lCurveNode = lProperty->GetCurveNode(false, "take");
            for (unsigned int i = 0; lCurveNode != nullptr && i < 3; ++i)
            {
                const KQexAnimCurve* lCurve = lCurveNode->GetCurve(i, 0, nullptr);
                std::vector<float>&  lValues = lKeys[std::string(lNode->GetName()) + '.' + lProperty->GetName() + '.' + std::to_string(i)];
                for (int k = 0; lCurve != nullptr && k < lCurve->GetKeyCount(); ++k)
                {
                    lValues.push_back(lCurve->GetValue(k));
                }
            }
        }
    }
    return lKeys;
}

TEST(KQexImporterAcclaimOracle, DegreesAndRadiansGiveTheSameScene)
{
    QEX_SKIP_WITHOUT_CORPUS();
    for (const KCorpusPair& lPair : CorpusPairs())
    {
        const std::string                         lDegrees = ReadFile(lPair.mAmc);
        const std::string                         lRadians = InRadians(lDegrees);
        std::map<std::string, std::vector<float>> lKeys[2];
        for (int i = 0; i < 2; ++i)
        {
            const std::string&       lText = i == 0 ? lDegrees : lRadians;
            const KScenePtr          lScene = MakeScene();
            KQexImportAcclaimOptions lOptions;
            lOptions.mTakeName = "take";
            KQexImportAcclaimResult lResult;
            ASSERT_TRUE(KQexImporterAcclaim::Import(lScene.get(), KQexAcclaimSource::File(lPair.mAsf.string()),
                                                    {KQexAcclaimSource::Buffer(lText.data(), lText.size(), "motion")}, lOptions, lResult))
                << Texts(lResult.mMessages);
            lKeys[i] = AllKeys(*lScene);
        }
        ASSERT_EQ(lKeys[0].size(), lKeys[1].size());
        ASSERT_GT(lKeys[0].size(), 80U);
        for (const auto& [lName, lValues] : lKeys[0])
        {
            const std::vector<float>& lOthers = lKeys[1][lName];
            ASSERT_EQ(lValues.size(), lOthers.size()) << lName;
            for (size_t i = 0; i < lValues.size(); ++i)
            {
                ASSERT_NEAR(lValues[i], lOthers[i], 1e-4) << lName << " key " << i;
            }
        }
    }
}

} // namespace
