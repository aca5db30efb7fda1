#include <qexscene/kqexscene.h>

#include <gtest/gtest.h>

using namespace qexsdk;

namespace
{

struct KClassCase
{
    const char*        mName;
    const kQexClassId* mClass;
    const kQexClassId* mBase;
};

class KQexClassIdTest : public testing::TestWithParam<KClassCase>
{
};

TEST_P(KQexClassIdTest, KnowsItsNameAndItsBase)
{
    const KClassCase& lCase = GetParam();
    EXPECT_STREQ(lCase.mClass->GetName(), lCase.mName);
    EXPECT_TRUE(lCase.mClass->IsValid());
    EXPECT_TRUE(lCase.mClass->Is(*lCase.mClass));
    EXPECT_TRUE(lCase.mClass->Is(*lCase.mBase));
    EXPECT_TRUE(lCase.mClass->Is(KQexObject::smClassId));
    EXPECT_FALSE(lCase.mBase->Is(*lCase.mClass));
}

INSTANTIATE_TEST_SUITE_P(Classes, KQexClassIdTest,
                         testing::Values(KClassCase{"KQexNode", &KQexNode::smClassId, &KQexObject::smClassId},
                                         KClassCase{"KQexScene", &KQexScene::smClassId, &KQexObject::smClassId},
                                         KClassCase{"KQexSkeleton", &KQexSkeleton::smClassId, &KQexNodeAttribute::smClassId},
                                         KClassCase{"KQexAnimStack", &KQexAnimStack::smClassId, &KQexCollection::smClassId},
                                         KClassCase{"KQexAnimLayer", &KQexAnimLayer::smClassId, &KQexCollection::smClassId},
                                         KClassCase{"KQexAnimCurve", &KQexAnimCurve::smClassId, &KQexObject::smClassId},
                                         KClassCase{"KQexAnimCurveNode", &KQexAnimCurveNode::smClassId, &KQexObject::smClassId},
                                         KClassCase{"KQexAnimEvaluator", &KQexAnimEvaluator::smClassId, &KQexObject::smClassId}),
                         [](const auto& pInfo) { return std::string(pInfo.param.mName); });

TEST(KQexClassId, TheInvalidIdMatchesEveryClass)
{
    EXPECT_FALSE(kQexClassId().IsValid());
    EXPECT_TRUE(KQexNode::smClassId.Is(kQexClassId()));
    EXPECT_FALSE(kQexClassId().Is(KQexNode::smClassId));
    EXPECT_NE(kQexClassId(), KQexNode::smClassId);
    EXPECT_EQ(kQexClassId(), kQexClassId());
}

TEST(KQexClassId, EqualNamesAreOneClass)
{
    const char        lName[] = "KQexNode"; // Another address, as in another shared library.
    const kQexClassId lId(lName, &KQexObject::smClassId);
    EXPECT_EQ(lId, KQexNode::smClassId);
}

} // namespace
