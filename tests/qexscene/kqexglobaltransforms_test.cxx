#include <tests/qexscene/localmatrix.h>
#include <tests/qexscene/scenefixture.h>

#include <string>
#include <vector>

using namespace qexsdk;
using qextest::ExpectNear;
using qextest::LocalMatrix;
using qextest::Product;

namespace
{

class KQexGlobalTransformsTest : public qextest::KSceneTest
{
protected:
    /// \p pCount nodes, parents before children: the scene's root and random nodes below it.
    std::vector<KQexNode*> MakeTree(int pCount)
    {
        std::vector<KQexNode*> lNodes = {mScene->GetRootNode()};
        for (int lI = 1; lI < pCount; ++lI)
        {
            lNodes.push_back(MakeNode(std::to_string(lI).c_str(), lNodes[static_cast<size_t>(mRandom.Below(lI))]));
            mRandom.Set(*lNodes.back());
        }
        return lNodes;
    }

    /// Curves from 0 s to 1 s on about half of all channels of take \p pTake.
    void Animate(const std::vector<KQexNode*>& pNodes, const char* pTake)
    {
        for (KQexNode* lNode : pNodes)
        {
            for (KQexProperty lProperty :
                 {KQexProperty(lNode->mLocalTranslation), KQexProperty(lNode->mLocalRotation), KQexProperty(lNode->mLocalScaling)})
            {
                for (unsigned int lI = 0; lI < 3; ++lI)
                {
                    if (mRandom.Below(2) == 0)
                    {
                        const float lFrom = static_cast<float>(mRandom.Between(0.5, 2.0));
                        const float lTo = static_cast<float>(mRandom.Between(0.5, 2.0));
                        lProperty.GetCurveNode(true, pTake)->ConnectToChannel(MakeCurve({lFrom, lTo}), lI);
                    }
                }
            }
        }
    }

    /// Compares the buffer with transforms that the reference library composes from the nodes' evaluated local values.
    void ExpectReference(const KQexGlobalTransforms& pBuffer, KQexNode* pRoot, KTime pTime)
    {
        int lIndex = 0;
        for (KQexNode* lNode = pRoot; lNode != nullptr; lNode = lNode->GetNextInTree(pRoot), ++lIndex)
        {
            ASSERT_LT(lIndex, pBuffer.GetCount());
            ASSERT_EQ(pBuffer.GetNode(lIndex), lNode);
            const int lParent = pBuffer.GetParentIndex(lIndex);
            ASSERT_EQ(lParent < 0 ? nullptr : pBuffer.GetNode(lParent), lNode == pRoot ? nullptr : lNode->GetParent());
            KQexMatrix lParentTransform;
            for (const KQexNode* lAncestor = pRoot->GetParent(); lNode == pRoot && lAncestor != nullptr; lAncestor = lAncestor->GetParent())
            {
                lParentTransform = Product(Local(lAncestor, pTime), lParentTransform);
            }
            ExpectNear(pBuffer.GetTransform(lIndex),
                       Product(lParent < 0 ? lParentTransform : pBuffer.GetTransform(lParent), Local(lNode, pTime)), 1e-12);
        }
        EXPECT_EQ(lIndex, pBuffer.GetCount());
    }

    KQexMatrix Local(const KQexNode* pNode, KTime pTime) const
    {
        return LocalMatrix(*pNode, pNode->EvaluateLocalTranslation(pTime), pNode->EvaluateLocalRotation(pTime),
                           pNode->EvaluateLocalScaling(pTime));
    }

    bool Evaluate(KQexNode* pRoot, KTime pTime) { return mScene->GetEvaluator()->EvaluateGlobalTransforms(pRoot, pTime, *mBuffer); }

    void TearDown() override
    {
        mBuffer.reset();
        KSceneTest::TearDown();
    }

    qextest::KRandomNode                  mRandom{41};
    std::unique_ptr<KQexGlobalTransforms> mBuffer = std::make_unique<KQexGlobalTransforms>();
};

TEST_F(KQexGlobalTransformsTest, AgreeWithTheReferenceOnRandomTrees)
{
    for (int lRound = 0; lRound < 40; ++lRound)
    {
        const std::vector<KQexNode*> lNodes = MakeTree(1 + mRandom.Below(60));
        Animate(lNodes, "take");
        for (const double lTime : {-1.0, 0.0, 0.3, 1.0, 2.0})
        {
            KQexNode* lRoot = lNodes[static_cast<size_t>(mRandom.Below(static_cast<int>(lNodes.size())))];
            ASSERT_TRUE(Evaluate(lRoot, Seconds(lTime)));
            ExpectReference(*mBuffer, lRoot, Seconds(lTime));
            for (int lI = 0; lI < mBuffer->GetCount(); ++lI)
            {
                ExpectNear(mBuffer->GetTransform(lI), mScene->GetEvaluator()->GetNodeGlobalTransform(mBuffer->GetNode(lI), Seconds(lTime)),
                           1e-10);
                EXPECT_EQ(mBuffer->Find(mBuffer->GetNode(lI)), lI);
            }
        }
        mScene->Destroy();
        mScene = KQexScene::Create("next");
        mBuffer = std::make_unique<KQexGlobalTransforms>();
    }
}

/// Data cached from one call to the next must never be stale.
TEST_F(KQexGlobalTransformsTest, SeeEveryChange)
{
    const std::vector<KQexNode*> lNodes = MakeTree(30);
    Animate(lNodes, "walk");
    KQexNode*   lRoot = lNodes[0];
    const KTime lTime = Seconds(0.4);
    const auto  lCheck = [&](const char* pWhat)
    {
        SCOPED_TRACE(pWhat);
        ASSERT_TRUE(Evaluate(lRoot, lTime));
        ExpectReference(*mBuffer, lRoot, lTime);
    };
    lCheck("first");
    lCheck("again");
    lNodes[3]->mLocalTranslation.Set(KQexVector4(1.0, 2.0, 3.0));
    lCheck("a value");
    lNodes[3]->SetPreRotation(kPivotSet0, KQexVector4(1.0, 2.0, 3.0));
    lNodes[3]->SetRotationActive(!lNodes[3]->GetRotationActive());
    lCheck("a pivot");
    KQexAnimCurveNode* lCurveNode = lNodes[4]->mLocalRotation.GetCurveNode(true, "walk");
    lCheck("a curve node");
    lCurveNode->SetChannelValue<double>(1, 33.0);
    lCheck("a channel's value");
    KQexAnimCurve* lCurve = MakeCurve({5.0F});
    KQexAnimCurve* lOld = lCurveNode->GetCurve(1);
    if (lOld != nullptr)
    {
        lCurveNode->DisconnectFromChannel(lOld, 1);
    }
    lCurveNode->ConnectToChannel(lCurve, 1);
    lCheck("a curve");
    lCurve->AddKey(Seconds(1.0), KQexAnimCurveKey(Seconds(1.0), 50.0F));
    lCheck("a key");
    lCurve->Clear();
    lCheck("no key");
    lCurve->Destroy(false, false);
    lCheck("no curve");
    lCurveNode->Destroy();
    lCheck("no curve node");
    MakeNode("new", lNodes[7])->mLocalTranslation.Set(KQexVector4(4.0, 5.0, 6.0));
    lCheck("a node added");
    EXPECT_EQ(mBuffer->GetCount(), 31);
    lNodes[29]->Destroy();
    lCheck("a node destroyed");
    EXPECT_EQ(mBuffer->GetCount(), 30);
    Animate({lNodes[1], lNodes[2], lNodes[5]}, "run");
    mScene->GetEvaluator()->SetContext(mScene->FindAnimStack("run"));
    lCheck("another take");
    mScene->FindAnimStack("run")->GetMember<KQexAnimLayer>(0)->Destroy();
    lCheck("no layer");
    mScene->FindAnimStack("run")->Destroy(true);
    lCheck("the previous take");
    lRoot = lNodes[1];
    lCheck("another root");
    EXPECT_EQ(mBuffer->Find(lNodes[0]), -1);
}

TEST_F(KQexGlobalTransformsTest, AreEmptyAfterAFailure)
{
    KQexScene* lOther = KQexScene::Create("other");
    ASSERT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    EXPECT_FALSE(Evaluate(nullptr, KTime(0)));
    EXPECT_EQ(mBuffer->GetCount(), 0);
    ASSERT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    EXPECT_EQ(mBuffer->GetCount(), 1);
    EXPECT_FALSE(Evaluate(lOther->GetRootNode(), KTime(0)));
    EXPECT_EQ(mBuffer->GetCount(), 0);
    MakeNode("n", mScene->GetRootNode());
    mMemory.FailAfter(0);
    EXPECT_FALSE(Evaluate(mScene->GetRootNode(), KTime(0)));
    mMemory.FailAfter(-1);
    EXPECT_EQ(mBuffer->GetCount(), 0);
    EXPECT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    EXPECT_EQ(mBuffer->GetCount(), 2);
    lOther->Destroy();
}

TEST_F(KQexGlobalTransformsTest, MayOutliveTheSceneAndBeReusedForAnother)
{
    ASSERT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    mScene->Destroy();
    ExpectNear(mBuffer->GetTransform(0), KQexMatrix(), 0.0);
    mScene = KQexScene::Create("next"); // Likely at the same address.
    mScene->GetRootNode()->mLocalTranslation.Set(KQexVector4(1.0, 0.0, 0.0));
    ASSERT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    EXPECT_EQ(mBuffer->GetNode(0), mScene->GetRootNode());
    EXPECT_EQ(mBuffer->GetTransform(0).mData[3][0], 1.0);
}

TEST_F(KQexGlobalTransformsTest, TreesMayBeDeeperThanTheStack)
{
    constexpr int kDepth = 100000;
    KQexNode*     lNode = mScene->GetRootNode();
    for (int lI = 1; lI < kDepth; ++lI)
    {
        lNode = MakeNode("n", lNode);
        lNode->mLocalTranslation.Set(KQexVector4(0.0, 1.0, 0.0));
    }
    ASSERT_TRUE(Evaluate(mScene->GetRootNode(), KTime(0)));
    ASSERT_EQ(mBuffer->GetCount(), kDepth);
    EXPECT_EQ(mBuffer->GetTransform(kDepth - 1).mData[3][1], kDepth - 1.0);
    EXPECT_EQ(mScene->GetEvaluator()->GetNodeGlobalTransform(lNode, KTime(0)).mData[3][1], kDepth - 1.0);
    EXPECT_EQ(mScene->GetRootNode()->FindChild("none", true, false), nullptr);
}

} // namespace
