#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <tests/qexioplugins/acclaim/amcsupport.h>
#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// Motions against the world positions that other programs computed from the format's public definition.

using namespace qexsdk;
using namespace qextest;

namespace
{

KPoint GlobalPosition(const KQexScene& pScene, const KQexNode* pNode, KTime pTime)
{
    const KQexMatrix lMatrix = pScene.GetEvaluator()->GetNodeGlobalTransform(pNode, pTime);
    return {lMatrix.mData[3][0], lMatrix.mData[3][1], lMatrix.mData[3][2]};
}

/// The node at a bone's end: its end node, or the node of a child in the file that has no translations. Clean-up may have reparented the
/// child, but without moving it. Null when all children move along.
const KQexNode* EndNode(HKQexAsfNode pFileBone, const KQexNode* pNode, const KQexNode* pRoot)
{
    if (pFileBone->mChildBuf.GetCount() == 0)
    {
        const KQexNode* lEnd = pNode->FindChild((std::string(pFileBone->mName) + "_End").c_str(), false);
        EXPECT_NE(lEnd, nullptr) << pFileBone->mName;
        return lEnd;
    }
    for (int i = 0; i < pFileBone->mChildBuf.GetCount(); ++i)
    {
        const HKQexAsfNode lChild = pFileBone->mChildBuf[i];
        const KQexNode*    lNode = pRoot->FindChild(lChild->mName, true);
        if (lNode != nullptr && std::none_of(lChild->mOrderBuf, lChild->mOrderBuf + lChild->mOrderCount, KIsTranslationDof))
        {
            return lNode;
        }
    }
    return nullptr;
}

class KOracleTest : public testing::TestWithParam<int>
{
protected:
    static KQexImportAcclaimOptions Options()
    {
        KQexImportAcclaimOptions lOptions;
        lOptions.mRemoveDummies = (GetParam() & 1) != 0;
        lOptions.mSetRotatePivotOffet = (GetParam() & 2) != 0;
        lOptions.mSetPreRotation = (GetParam() & 4) != 0;
        return lOptions;
    }

    /// Compares starts and ends of all bones in a frame. \p pFileRoot is the skeleton as in the file, with all bones.
    /// \return the largest distance, as a fraction of the figure's height
    static double Compare(const KCorpusPair& pPair, HKQexAsfNode pFileRoot, const KWorldFrame& pFrame, const KQexScene& pScene, KTime pTime)
    {
        const KQexNode* lRoot = pScene.GetRootNode();
        double          lLargest = 0.0;
        for (const auto& [lName, lStart] : pFrame.mStarts)
        {
            const HKQexAsfNode lFileBone = pFileRoot->Find(lName.c_str());
            const KQexNode*    lNode = lRoot->FindChild(lName.c_str(), true);
            EXPECT_NE(lFileBone, nullptr) << lName;
            if (lNode == nullptr || lFileBone == nullptr)
            {
                EXPECT_TRUE(Options().mRemoveDummies && lFileBone != nullptr && lFileBone->mOrderCount == 0) << lName;
                continue;
            }
            const KQexNode* lEnd = EndNode(lFileBone, lNode, lRoot);
            const double    lAtStart = Distance(GlobalPosition(pScene, lNode, pTime), lStart) / pFrame.mHeight;
            const double    lAtEnd =
                lEnd != nullptr ? Distance(GlobalPosition(pScene, lEnd, pTime), pFrame.mEnds.at(lName)) / pFrame.mHeight : 0.0;
            EXPECT_LT(lAtStart, pPair.mTolerance) << lName << " starts elsewhere in frame " << pFrame.mNumber;
            EXPECT_LT(lAtEnd, pPair.mTolerance) << lName << " ends elsewhere in frame " << pFrame.mNumber;
            lLargest = std::max({lLargest, lAtStart, lAtEnd});
        }
        return lLargest;
    }
};

TEST_P(KOracleTest, BonePositionsMatch)
{
    for (const KCorpusPair& lPair : PairsWithWorldPositions())
    {
        SCOPED_TRACE(lPair.mName);
        KQexImportAcclaimResult lFile;
        const KQexAsfSceneOwner lFileScene = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(lPair.mAsf.string()), {}, lFile);
        ASSERT_NE(lFileScene, nullptr);
        KQexImportAcclaimResult lResult;
        const KScenePtr         lScene = MakeScene();
        ASSERT_TRUE(KQexImporterAcclaim::Import(lScene.get(), lPair.mAsf.c_str(), lPair.mAmc.c_str(), Options(), lResult));
        EXPECT_EQ(lResult.CountMessages(true), 0U);
        ASSERT_EQ(lResult.mTakes.size(), 1U);

        const KQexAmcInfo&             lInfo = lResult.mTakes[0].mInfo;
        const std::vector<KWorldFrame> lFrames = ReadWorld(lPair);
        double                         lLargest = 0.0;
        EXPECT_GE(lFrames.size(), 3U);
        for (const KWorldFrame& lFrame : lFrames)
        {
            EXPECT_GT(lFrame.mStarts.size(), 10U);
            const KTime lTime = KTime::FromSeconds(static_cast<double>(lFrame.mNumber - lInfo.mFirstFrame) / lInfo.mSamplesPerSecond);
            lLargest = std::max(lLargest, Compare(lPair, lFileScene->mRoot, lFrame, *lScene, lTime));
        }
        std::ostringstream lText;
        lText << lLargest;
        RecordProperty(lPair.mName + "_largest_distance_by_height", lText.str());
    }
}

INSTANTIATE_TEST_SUITE_P(AllFlags, KOracleTest, testing::Range(0, 8));

/// The motion's text with every angle in radians.
std::string InRadians(const std::string& pText, HKQexAsfNode pRoot)
{
    std::string        lText;
    std::istringstream lLines(pText);
    for (std::string lLine; std::getline(lLines, lLine);)
    {
        std::istringstream lWords(lLine);
        std::ostringstream lNew;
        std::string        lName;
        lWords >> lName;
        lNew.precision(17);
        lNew << (lName == ":DEGREES" ? ":RADIANS" : lName);
        if (const HKQexAsfNode lBone = pRoot->Find(lName.c_str()))
        {
            for (int lIter = 0; lIter < lBone->mOrderCount; ++lIter)
            {
                double lValue = 0.0;
                lWords >> lValue;
                lNew << ' ' << (KIsRotationDof(lBone->mOrderBuf[lIter]) ? lValue * 0.017453292519943295 : lValue);
            }
        }
        lText += lNew.str() + lWords.str().substr(lWords.tellg() < 0 ? lWords.str().size() : static_cast<size_t>(lWords.tellg())) + '\n';
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
    for (const KCorpusPair& lPair : CorpusPairs())
    {
        SCOPED_TRACE(lPair.mName);
        KQexImportAcclaimResult lFile;
        const KQexAsfSceneOwner lFileScene = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(lPair.mAsf.string()), {}, lFile);
        ASSERT_NE(lFileScene, nullptr);
        const std::string                         lDegrees = ReadFile(lPair.mAmc);
        const std::string                         lRadians = InRadians(lDegrees, lFileScene->mRoot);
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
        ASSERT_GT(lKeys[0].size(), 30U);
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
