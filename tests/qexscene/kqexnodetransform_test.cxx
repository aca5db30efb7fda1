#include <tests/qexscene/localmatrix.h>
#include <tests/qexscene/scenefixture.h>

using namespace qexsdk;
using qextest::ExpectNear;
using qextest::LocalMatrix;

namespace
{

class KQexNodeTransformTest : public qextest::KSceneTest
{
protected:
    KQexMatrix Local(const KQexNode* pNode) const { return mScene->GetEvaluator()->GetNodeLocalTransform(pNode, KTime(0)); }
};

TEST_F(KQexNodeTransformTest, Defaults)
{
    KQexNode* lNode = MakeNode("n");
    EXPECT_FALSE(lNode->GetRotationActive());
    EXPECT_EQ(lNode->GetRotationOrder(), eEULER_XYZ);
    EXPECT_EQ(lNode->GetRotationOffset(), KQexVector4());
    EXPECT_EQ(lNode->GetPreRotation(), KQexVector4());
    EXPECT_EQ(lNode->GetPostRotation(), KQexVector4());
    ExpectNear(Local(lNode), KQexMatrix(), 0.0);
}

TEST_F(KQexNodeTransformTest, PivotsAreKeptWithoutW)
{
    KQexNode* lNode = MakeNode("n");
    lNode->SetRotationOffset(kPivotSet0, KQexVector4(1.0, 2.0, 3.0, 9.0));
    lNode->SetPreRotation(kPivotSet0, KQexVector4(4.0, 5.0, 6.0, 9.0));
    lNode->SetPostRotation(kPivotSet0, KQexVector4(7.0, 8.0, 9.0, 9.0));
    EXPECT_EQ(lNode->GetRotationOffset(kPivotSet0), KQexVector4(1.0, 2.0, 3.0));
    EXPECT_EQ(lNode->GetPreRotation(kPivotSet0), KQexVector4(4.0, 5.0, 6.0));
    EXPECT_EQ(lNode->GetPostRotation(kPivotSet0), KQexVector4(7.0, 8.0, 9.0));
    EXPECT_FALSE(lNode->GetRotationActive()) << "setting them does not activate rotation";
    lNode->SetRotationOffset(kPivotSet0, KgeTVector(1.0, 1.0, 1.0));
    EXPECT_EQ(lNode->GetRotationOffset(), KQexVector4(1.0, 1.0, 1.0));
}

TEST_F(KQexNodeTransformTest, BothGettersReturnTheOrder)
{
    KQexNode* lNode = MakeNode("n");
    for (int lOrder = eEULER_XYZ; lOrder <= eSPHERIC_XYZ; ++lOrder)
    {
        lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(lOrder));
        ERotationOrder lRead = eEULER_XYZ;
        lNode->GetRotationOrder(kPivotSet0, lRead);
        EXPECT_EQ(lRead, lOrder);
        EXPECT_EQ(lNode->GetRotationOrder(kPivotSet0), lOrder);
    }
}

TEST_F(KQexNodeTransformTest, TheFirstAxisOfTheOrderIsAppliedFirst)
{
    // The y axis after a quarter turn about x and one about z: (0, 0, 1) if x is first, because z then does not move it.
    KQexNode* lNode = MakeNode("n");
    lNode->SetRotationActive(true);
    lNode->mLocalRotation.Set(qexVectorTemplate3<double>(90.0, 0.0, 90.0));
    const struct
    {
        ERotationOrder mOrder;
        KQexVector4    mY;
    } lCases[] = {{eEULER_XYZ, {0.0, 0.0, 1.0}},  {eEULER_XZY, {0.0, 0.0, 1.0}},  {eEULER_YXZ, {0.0, 0.0, 1.0}},
                  {eEULER_YZX, {-1.0, 0.0, 0.0}}, {eEULER_ZXY, {-1.0, 0.0, 0.0}}, {eEULER_ZYX, {-1.0, 0.0, 0.0}},
                  {eSPHERIC_XYZ, {0.0, 0.0, 1.0}}};
    for (const auto& lCase : lCases)
    {
        lNode->SetRotationOrder(kPivotSet0, lCase.mOrder);
        const KQexVector4 lY = Local(lNode).mData[1];
        for (int lI = 0; lI < 4; ++lI)
        {
            EXPECT_NEAR(lY[lI], lCase.mY[lI], 1e-15) << lCase.mOrder;
        }
    }
}

TEST_F(KQexNodeTransformTest, AgreesWithTheReferenceLibrary)
{
    qextest::KRandomNode lRandom(11);
    for (int lRound = 0; lRound < 3000; ++lRound)
    {
        KQexNode* lNode = MakeNode("n");
        lRandom.Set(*lNode);
        ExpectNear(Local(lNode), LocalMatrix(*lNode), 1e-13);
        lNode->Destroy();
    }
}

TEST_F(KQexNodeTransformTest, WithoutActiveRotationOrderAndPivotRotationsAreIgnored)
{
    qextest::KRandomNode lRandom(12);
    KQexNode*            lNode = MakeNode("n");
    KQexNode*            lPlain = MakeNode("plain");
    for (int lRound = 0; lRound < 200; ++lRound)
    {
        lRandom.Set(*lNode);
        lNode->SetRotationActive(false);
        lPlain->mLocalTranslation.Set(lNode->mLocalTranslation.Get());
        lPlain->mLocalRotation.Set(lNode->mLocalRotation.Get());
        lPlain->mLocalScaling.Set(lNode->mLocalScaling.Get());
        lPlain->SetRotationOffset(kPivotSet0, lNode->GetRotationOffset());
        ExpectNear(Local(lNode), Local(lPlain), 0.0);
        ExpectNear(Local(lNode), LocalMatrix(*lNode), 1e-13);
    }
}

TEST_F(KQexNodeTransformTest, PivotRotationsCanBeReset)
{
    KQexNode* lNode = MakeNode("n");
    lNode->SetRotationActive(true);
    lNode->SetPreRotation(kPivotSet0, KQexVector4(10.0, 20.0, 30.0));
    lNode->SetPostRotation(kPivotSet0, KQexVector4(10.0, 20.0, 30.0));
    ExpectNear(Local(lNode), KQexMatrix(), 1e-15);
    lNode->SetPreRotation(kPivotSet0, KQexVector4());
    lNode->SetPostRotation(kPivotSet0, KQexVector4());
    ExpectNear(Local(lNode), KQexMatrix(), 0.0);
}

} // namespace
