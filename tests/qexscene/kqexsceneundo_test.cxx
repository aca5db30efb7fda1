#include <qexscene/kqexsceneundo.h>

#include <tests/qexscene/scenefixture.h>

#include <gtest/gtest.h>

using namespace qexsdk;

namespace qextest
{

namespace
{

class KQexSceneUndoTest : public KSceneTest
{
protected:
    /// Adds a node with an animated translation in a new take, and makes the take current.
    void AddMotion()
    {
        KQexNode*          lNode = MakeNode("new", mScene->GetRootNode());
        KQexAnimCurveNode* lCurveNode = lNode->mLocalTranslation.GetCurveNode(true, "new take");
        lCurveNode->ConnectToChannel(KQexAnimCurve::Create(mScene, "new curve"), 0, true);
        mScene->GetEvaluator()->SetContext(mScene->FindAnimStack("new take"));
    }
};

TEST_F(KQexSceneUndoTest, DestroysNewObjectsAndRestoresTheContext)
{
    KQexAnimStack* lStack = mScene->CreateAnimStack("old take");
    mScene->GetEvaluator()->SetContext(lStack);
    const int lObjects = mScene->GetObjectCount();
    {
        KQexSceneUndo lUndo(mScene);
        EXPECT_TRUE(lUndo.IsArmed());
        AddMotion();
        EXPECT_GT(mScene->GetObjectCount(), lObjects);
    }
    EXPECT_EQ(mScene->GetObjectCount(), lObjects);
    EXPECT_EQ(mScene->GetRootNode()->GetChildCount(true), 0);
    EXPECT_EQ(mScene->GetEvaluator()->GetContext(), lStack);
}

TEST_F(KQexSceneUndoTest, KeepKeepsNewObjects)
{
    {
        KQexSceneUndo lUndo(mScene);
        AddMotion();
        lUndo.Keep();
        EXPECT_FALSE(lUndo.IsArmed());
    }
    EXPECT_NE(mScene->FindAnimStack("new take"), nullptr);
    EXPECT_EQ(mScene->GetEvaluator()->GetContext(), mScene->FindAnimStack("new take"));
    EXPECT_EQ(mScene->GetRootNode()->GetChildCount(true), 1);
}

TEST_F(KQexSceneUndoTest, AcceptsNoScene)
{
    EXPECT_FALSE(KQexSceneUndo(nullptr).IsArmed());
}

} // namespace

} // namespace qextest
