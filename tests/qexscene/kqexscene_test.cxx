#include <tests/qexscene/scenefixture.h>
#include <tests/support/smallstack.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace qexsdk;

namespace
{

class KQexSceneTest : public qextest::KSceneTest
{
};

TEST_F(KQexSceneTest, StartsWithARootAndAnEvaluator)
{
    EXPECT_STREQ(mScene->GetName(), "scene");
    ASSERT_NE(mScene->GetRootNode(), nullptr);
    ASSERT_NE(mScene->GetEvaluator(), nullptr);
    EXPECT_EQ(mScene->GetRootNode()->GetParent(), nullptr);
    EXPECT_EQ(mScene->GetRootNode()->GetScene(), mScene);
    EXPECT_EQ(mScene->GetAnimStackCount(), 0);
    EXPECT_EQ(mScene->GetObjectCount(), 2);
    EXPECT_EQ(mScene->GetFirstObject(), mScene->GetRootNode());
    EXPECT_EQ(mScene->GetNextObject(mScene->GetRootNode()), mScene->GetEvaluator());
    EXPECT_EQ(mScene->GetNextObject(mScene->GetEvaluator()), nullptr);
}

TEST_F(KQexSceneTest, CountsItsObjects)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_EQ(mScene->GetObjectCount(), 3);
    lNode->Destroy();
    EXPECT_EQ(mScene->GetObjectCount(), 2);
}

TEST_F(KQexSceneTest, WithoutMemoryCreateReturnsNull)
{
    const size_t lBlocks = mMemory.GetBlocks();
    long         lFail = 0;
    for (KQexScene* lScene = nullptr; lScene == nullptr; ++lFail)
    {
        mMemory.FailAfter(lFail);
        lScene = KQexScene::Create("s");
        mMemory.FailAfter(-1);
        if (lScene != nullptr)
        {
            lScene->Destroy();
        }
        ASSERT_EQ(mMemory.GetBlocks(), lBlocks) << lFail;
    }
    EXPECT_EQ(lFail, 7) << "scene, root, evaluator and their names";
}

/// Creates, connects, reparents and destroys objects of every kind at random.
class KRandomScene
{
public:
    KRandomScene(KQexScene* pScene, unsigned int pSeed) : mScene(pScene), mRandom(pSeed) {}

    void Step()
    {
        switch (mRandom() % 12)
        {
        case 0:
        case 1:
            KQexNode::Create(mScene, "n");
            break;
        case 2:
            KQexAnimCurve::Create(mScene, "c");
            break;
        case 3:
            Pick<KQexNode>()->SetNodeAttribute(KQexSkeleton::Create(mScene, ""));
            break;
        case 4:
        case 5:
            Pick<KQexNode>()->AddChild(Pick<KQexNode>());
            break;
        case 6:
            Pick<KQexNode>()->mLocalRotation.GetCurveNode(true, mRandom() % 2 == 0 ? "a" : "b");
            break;
        case 7:
        case 8:
            Connect();
            break;
        case 9:
            Pick<KQexObject>()->Destroy(false, false);
            break;
        case 10:
            if (mRandom() % 8 == 0)
            {
                Pick<KQexObject>()->Destroy(true, false);
            }
            break;
        default:
            mScene->GetEvaluator()->EvaluateGlobalTransforms(mScene->GetRootNode(), KTime(0), mBuffer);
            break;
        }
    }

    /// Children, skeletons and collection members refer back to their owners, and connected curves are in the scene.
    void Check()
    {
        for (KQexObject* lObject = mScene->GetFirstObject(); lObject != nullptr; lObject = mScene->GetNextObject(lObject))
        {
            ASSERT_EQ(lObject->GetScene(), mScene);
            if (const KQexNode* lNode = QexCast<KQexNode>(lObject))
            {
                for (int lI = 0; lI < lNode->GetChildCount(); ++lI)
                {
                    ASSERT_EQ(lNode->GetChild(lI)->GetParent(), lNode);
                    ASSERT_EQ(lNode->GetChild(lI)->GetScene(), mScene);
                }
                ASSERT_TRUE(lNode->GetSkeleton() == nullptr || lNode->GetSkeleton()->GetNode() == lNode);
            }
            if (const KQexCollection* lCollection = QexCast<KQexCollection>(lObject))
            {
                for (int lI = 0; lI < lCollection->GetMemberCount(); ++lI)
                {
                    ASSERT_EQ(lCollection->GetMember(lI)->GetCollection(), lCollection);
                }
            }
            if (const KQexAnimCurveNode* lCurveNode = QexCast<KQexAnimCurveNode>(lObject))
            {
                for (unsigned int lI = 0; lI < 3; ++lI)
                {
                    const KQexAnimCurve* lCurve = lCurveNode->GetCurve(lI);
                    ASSERT_TRUE(lCurve == nullptr || lCurve->GetScene() == mScene);
                }
            }
        }
    }

private:
    void Connect()
    {
        KQexAnimCurveNode* lCurveNode = Pick<KQexAnimCurveNode>();
        KQexAnimCurve*     lCurve = Pick<KQexAnimCurve>();
        const unsigned int lChannel = static_cast<unsigned int>(mRandom() % 3);
        if (lCurveNode != nullptr && lCurve != nullptr)
        {
            if (mRandom() % 3 != 0)
            {
                lCurveNode->ConnectToChannel(lCurve, lChannel);
            }
            else
            {
                lCurveNode->DisconnectFromChannel(lCurve, lChannel);
            }
        }
    }

    template <typename T>
    T* Pick()
    {
        std::vector<T*> lCandidates;
        for (KQexObject* lObject = mScene->GetFirstObject(); lObject != nullptr; lObject = mScene->GetNextObject(lObject))
        {
            if (T* lCandidate = QexCast<T>(lObject))
            {
                lCandidates.push_back(lCandidate);
            }
        }
        return lCandidates.empty() ? nullptr : lCandidates[mRandom() % lCandidates.size()];
    }

    KQexScene*           mScene;
    std::mt19937         mRandom;
    KQexGlobalTransforms mBuffer;
};

/// Finds dangling references when run with AddressSanitizer.
TEST_F(KQexSceneTest, DestroyLeavesNoDanglingReferences)
{
    for (unsigned int lSeed = 0; lSeed < 20; ++lSeed)
    {
        KRandomScene lRandom(mScene, lSeed);
        for (int lStep = 0; lStep < 400; ++lStep)
        {
            lRandom.Step();
        }
        lRandom.Check();
        mScene->Destroy();
        mScene = KQexScene::Create("next");
    }
}

TEST_F(KQexSceneTest, DestroyLeavesNoDanglingReferencesWhenMemoryRunsOut)
{
    for (unsigned int lSeed = 0; lSeed < 20; ++lSeed)
    {
        KRandomScene lRandom(mScene, 100 + lSeed);
        for (int lStep = 0; lStep < 300; ++lStep)
        {
            mMemory.FailAfter(lStep % 5 == 4 ? lStep % 7 : -1);
            lRandom.Step();
            mMemory.FailAfter(-1);
        }
        lRandom.Check();
        mScene->Destroy();
        mScene = KQexScene::Create("next");
    }
}

/// Creates, walks, evaluates and destroys deep chains of nodes. \return how many of its 4 checks passed
int CheckDeepTrees()
{
    constexpr int kDepth = 100000;
    KQexScene*    lScene = KQexScene::Create("deep");
    KQexNode*     lNode = lScene->GetRootNode();
    for (int lI = 0; lI < kDepth; ++lI)
    {
        KQexNode* lChild = KQexNode::Create(lScene, "n");
        lNode->AddChild(lChild);
        lNode = lChild;
        if (lI % 100 == 0)
        {
            lNode->mLocalRotation.GetCurveNode(true, "take")->ConnectToChannel(KQexAnimCurve::Create(lScene, "c"), 0);
        }
    }
    KQexGlobalTransforms lBuffer;
    int                  lResult = lScene->GetEvaluator()->EvaluateGlobalTransforms(lScene->GetRootNode(), KTime(0), lBuffer);
    lResult += lScene->GetRootNode()->GetChildCount(true) == kDepth;
    lResult += lScene->GetRootNode()->FindChild("none", true, false) == nullptr;
    lScene->GetRootNode()->GetChild(0)->GetChild(0)->Destroy(true);
    lResult += lScene->GetRootNode()->GetChildCount(true) == 1;
    for (int lI = 0; lI < kDepth; ++lI)
    {
        KQexNode* lParent = KQexNode::Create(lScene, "n");
        lParent->AddChild(lNode = lI == 0 ? KQexNode::Create(lScene, "n") : lNode);
        lNode = lParent;
    }
    lScene->Destroy();
    return lResult;
}

TEST_F(KQexSceneTest, DeepTreesNeedOnlyASmallStack)
{
    for (const size_t lSize : qextest::kStackSizes)
    {
        int lResult = 0;
        qextest::RunWithStackSize(lSize, [&lResult] { lResult = CheckDeepTrees(); });
        EXPECT_EQ(lResult, 4) << lSize;
    }
}

TEST_F(KQexSceneTest, ScenesOfSeveralThreadsAreIndependent)
{
    std::vector<std::thread> lThreads;
    for (unsigned int lI = 0; lI < 4; ++lI)
    {
        lThreads.emplace_back(
            [lI]
            {
                KQexScene*   lScene = KQexScene::Create("threaded");
                KRandomScene lRandom(lScene, 200 + lI);
                for (int lStep = 0; lStep < 300; ++lStep)
                {
                    lRandom.Step();
                }
                lScene->Destroy();
            });
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
    KQexScene* lOther = KQexScene::Create("other");
    EXPECT_NE(lOther->GetSerial(), mScene->GetSerial());
    lOther->Destroy();
}

} // namespace
