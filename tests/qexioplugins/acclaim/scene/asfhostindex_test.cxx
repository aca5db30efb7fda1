#include <qexioplugins/acclaim/scene/kqexasfhostindex.h>

#include <tests/qexioplugins/acclaim/asfbuild.h>

#include <gtest/gtest.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// A random tree in which about four nodes share each name.
std::vector<KQexNode*> RandomNodes(KQexScene* pScene, int pCount, unsigned int pSeed)
{
    std::mt19937           lRandom(pSeed);
    std::vector<KQexNode*> lNodes;
    for (int lIter = 0; lIter < pCount; ++lIter)
    {
        KQexNode* lNode = KQexNode::Create(pScene, std::to_string(lRandom() % static_cast<unsigned int>(pCount / 4)).c_str());
        if (!lNodes.empty())
        {
            lNodes[lRandom() % 3 == 0 ? 0 : lRandom() % lNodes.size()]->AddChild(lNode);
        }
        lNodes.push_back(lNode);
    }
    return lNodes;
}

TEST(KQexAsfTreeIndexTest, MatchesFindChild)
{
    for (unsigned int lSeed = 1; lSeed <= 20; ++lSeed)
    {
        KScenePair             lStage;
        const int              lCount = 200;
        KQexNode*              lTop = RandomNodes(lStage.mScene, lCount, lSeed)[0];
        const KQexAsfTreeIndex lIndex(lTop);
        int                    lNumber = 0;
        for (KQexNode* lNode = lTop; lNode != nullptr; lNode = lNode->GetNextInTree(lTop), ++lNumber)
        {
            ASSERT_EQ(lIndex.GetNode(lNumber), lNode);
            for (int lName = 0; lName <= lCount / 4; ++lName) // no node has the last one
            {
                const std::string lText = std::to_string(lName);
                const int         lFound = lIndex.Find(lText.c_str(), lNumber);
                EXPECT_EQ(lFound < 0 ? nullptr : lIndex.GetNode(lFound), lNode->FindChild(lText.c_str(), true, false));
            }
        }
        EXPECT_EQ(lNumber, lCount);
    }
}

TEST(KQexAsfTreeIndexTest, SearchesBelowItsTopOnly)
{
    KScenePair lStage;
    KQexNode*  lAbove = KQexNode::Create(lStage.mScene, "above");
    KQexNode*  lTop = KQexNode::Create(lStage.mScene, "top");
    lAbove->AddChild(lTop);
    lAbove->AddChild(KQexNode::Create(lStage.mScene, "sibling"));
    const KQexAsfTreeIndex lIndex(lTop);
    EXPECT_EQ(lIndex.Find("sibling", 0), -1);
    EXPECT_EQ(lIndex.Find("top", 0), -1);
}

TEST(KQexAsfChildIndexTest, MatchesFindChildWhileChildrenAreAppended)
{
    KScenePair        lStage;
    KQexNode*         lParent = KQexNode::Create(lStage.mScene, "parent");
    KQexNode*         lOther = KQexNode::Create(lStage.mScene, "other");
    KQexAsfChildIndex lIndex;
    for (int lIter = 0; lIter < 60; ++lIter)
    {
        const std::string lName = std::to_string(lIter % 40); // the first of two equal names wins
        for (const char* lAsked : {lName.c_str(), "0", "39", "nobody"})
        {
            EXPECT_EQ(lIndex.Find(*lParent, lAsked), lParent->FindChild(lAsked, false, false));
        }
        KQexNode* lChild = KQexNode::Create(lStage.mScene, lName.c_str());
        lParent->AddChild(lChild);
        lChild->AddChild(KQexNode::Create(lStage.mScene, "nobody"));
        lOther->AddChild(KQexNode::Create(lStage.mScene, ("other" + lName).c_str()));
        EXPECT_EQ(lIndex.Find(*lOther, "other0"), lOther->GetChild(0));
    }
}

} // namespace
