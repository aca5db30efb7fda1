#ifndef TESTS_QEXSCENE_SCENEFIXTURE_H
#define TESTS_QEXSCENE_SCENEFIXTURE_H

#include <qexscene/kqexscene.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <initializer_list>

namespace qextest
{

/// Fixture with a scene. The test fails if the scene leaks memory.
class KSceneTest : public testing::Test
{
protected:
    void SetUp() override
    {
        mScene = qexsdk::KQexScene::Create("scene");
        ASSERT_NE(mScene, nullptr);
    }

    void TearDown() override
    {
        if (mScene != nullptr)
        {
            mScene->Destroy();
        }
        EXPECT_EQ(mMemory.GetBlocks(), 0U);
    }

    qexsdk::KQexNode* MakeNode(const char* pName, qexsdk::KQexNode* pParent = nullptr)
    {
        qexsdk::KQexNode* lNode = qexsdk::KQexNode::Create(mScene, pName);
        if (pParent != nullptr)
        {
            EXPECT_TRUE(pParent->AddChild(lNode));
        }
        return lNode;
    }

    /// A curve with value \p pValues[i] at i seconds.
    qexsdk::KQexAnimCurve* MakeCurve(std::initializer_list<float> pValues, const char* pName = "curve")
    {
        qexsdk::KQexAnimCurve* lCurve = qexsdk::KQexAnimCurve::Create(mScene, pName);
        long long              lSecond = 0;
        for (const float lValue : pValues)
        {
            qexsdk::KQexAnimCurveKey lKey;
            const qexsdk::KTime      lTime(lSecond++ * qexsdk::KTime::kTicksPerSecond);
            lKey.Set(lTime, lValue);
            lCurve->AddKey(lTime, lKey);
        }
        return lCurve;
    }

    static qexsdk::KTime Seconds(double pSeconds) { return qexsdk::KTime::FromSeconds(pSeconds); }

    qexsdk::KMemoryWatch mMemory;
    qexsdk::KQexScene*   mScene = nullptr;
};

} // namespace qextest

#endif
