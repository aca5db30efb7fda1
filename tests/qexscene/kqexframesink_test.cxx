#include <qexscene/kqexframesink.h>

#include <tests/support/randomscene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <random>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr long long kManyFrames = 1000;
constexpr long long kShortAt = 500; ///< Frame at which memory runs out.

/// What a sink has no memory for.
enum EShortOf
{
    eNOTHING,
    eBEGIN,
    eFORMAT,
    eWRITE
};

/// Keeps the world x of the last node, minus that of the frame before, and writes it as text.
class KSink : public KQexFrameSink
{
public:
    void Begin(const KQexFrameNodes& pNodes, int pThreads) override
    {
        Allocate(eBEGIN, kShortAt);
        mNode = pNodes.GetCount() - 1;
        mThreads = pThreads;
    }
    unsigned int GetParts() const override { return eFRAME_WORLD; }
    size_t       GetValueCount() const override { return 2; }
    void         Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept override
    {
        mIsInRange = mIsInRange && pThread >= 0 && pThread < mThreads;
        pValues[0] = pFrame.GetWorld(mNode).mData[3].mData[0];
        pValues[1] = static_cast<double>(pFrame.GetTime().Get());
    }
    void MakeContinuous(double* pValues) override
    {
        const double lX = pValues[0];
        pValues[0] -= mLast;
        mLast = lX;
    }
    void Format(long long pFrame, const double* pValues, std::string& pText) const override
    {
        Allocate(eFORMAT, pFrame);
        pText += std::to_string(pFrame) + " " + std::to_string(pValues[0]) + " " + std::to_string(pValues[1]) + "\n";
    }
    bool Write(const KQexFrameBlock& pBlock) override
    {
        Allocate(eWRITE, pBlock.mEnd);
        EXPECT_EQ(pBlock.mFirst, mNext);
        EXPECT_EQ(pBlock.mValues.size(), static_cast<size_t>(2 * (pBlock.mEnd - pBlock.mFirst)));
        mNext = pBlock.mEnd;
        mText += pBlock.mText;
        return mNext <= mStopAt;
    }

    size_t            mNode = 0;
    int               mThreads = 0;
    std::atomic<bool> mIsInRange{true};
    double            mLast = 0.0;
    long long         mNext = 0;
    EShortOf          mShortOf = eNOTHING;
    long long         mStopAt = kManyFrames;
    std::string       mText;

private:
    void Allocate(EShortOf pWhat, long long pFrame) const
    {
        if (pWhat == mShortOf && pFrame >= kShortAt)
        {
            throw std::bad_alloc();
        }
    }
};

class KFrameSinkTest : public testing::Test
{
protected:
    KFrameSinkTest()
    {
        KRandomTreeOptions lTree;
        lTree.mNodes = 10;
        lTree.mFrames = 20;
        mTop = MakeRandomTree(mRandom, mScene.get(), lTree);
        mLayer = mScene->FindAnimStack("take")->GetMember<KQexAnimLayer>(0);
        mSampling.mStep = KTime(1 + FrameTime(20).Get() / kManyFrames);
        mSampling.mCount = kManyFrames;
    }

    KQexRunResult Run(const std::vector<KQexFrameSink*>& pSinks, int pThreads, const KQexProgress& pProgress = nullptr) const
    {
        return KQexRunFrames({mTop}, mLayer, mSampling, pSinks.data(), pSinks.size(), pThreads, pProgress);
    }

    std::mt19937   mRandom{3};
    KScenePtr      mScene = MakeScene();
    KQexNode*      mTop = nullptr;
    KQexAnimLayer* mLayer = nullptr;
    KQexSampling   mSampling;
};

TEST_F(KFrameSinkTest, ThreadsAndOtherSinksChangeNothing)
{
    KSink lAlone;
    EXPECT_EQ(Run({&lAlone}, 1), KQexRunResult::eDONE);
    EXPECT_EQ(std::count(lAlone.mText.begin(), lAlone.mText.end(), '\n'), kManyFrames);
    for (const int lThreads : {2, 3, 7})
    {
        KSink lSinks[2];
        EXPECT_EQ(Run({&lSinks[0], &lSinks[1]}, lThreads), KQexRunResult::eDONE);
        EXPECT_TRUE(lSinks[0].mText == lAlone.mText);
        EXPECT_TRUE(lSinks[1].mText == lAlone.mText);
        EXPECT_TRUE(lSinks[0].mIsInRange && lSinks[1].mIsInRange);
    }
}

TEST_F(KFrameSinkTest, AnyTimes)
{
    const std::vector<KTime> lTimes{FrameTime(3), FrameTime(1), FrameTime(17)};
    KSink                    lSink;
    KQexFrameSink* const     lPointer = &lSink;
    ASSERT_EQ(KQexRunFrames({mTop}, mLayer, KQexFrameTimes(lTimes), &lPointer, 1, 2, nullptr), KQexRunResult::eDONE);
    EXPECT_EQ(lSink.mNext, 3);
    EXPECT_NE(lSink.mText.find(std::to_string(static_cast<double>(FrameTime(17).Get()))), std::string::npos);
}

TEST_F(KFrameSinkTest, StopsAsSoonAsASinkDoes)
{
    KSink lSink;
    lSink.mStopAt = 100;
    EXPECT_EQ(Run({&lSink}, 1), KQexRunResult::eSTOPPED);
    EXPECT_LE(lSink.mNext, 200);
}

TEST_F(KFrameSinkTest, ReportsProgressAndCancels)
{
    KSink  lSink;
    double lLast = 0.0;
    EXPECT_EQ(Run({&lSink}, 1,
                  [&](double pFraction)
                  {
                      EXPECT_GT(pFraction, lLast);
                      lLast = pFraction;
                      return true;
                  }),
              KQexRunResult::eDONE);
    EXPECT_EQ(lLast, 1.0);
    KSink lCancelled;
    EXPECT_EQ(Run({&lCancelled}, 1, [](double) { return false; }), KQexRunResult::eCANCELLED);
    EXPECT_LT(lCancelled.mNext, kManyFrames);
}

TEST_F(KFrameSinkTest, LackOfMemoryEndsTheRun)
{
    for (const EShortOf lWhat : {eBEGIN, eFORMAT, eWRITE})
    {
        KSink lSink;
        lSink.mShortOf = lWhat;
        EXPECT_EQ(Run({&lSink}, 2), KQexRunResult::eOUT_OF_MEMORY) << lWhat;
        EXPECT_LE(lSink.mNext, kShortAt) << lWhat;
    }
}

TEST_F(KFrameSinkTest, NoSinksNoFrames)
{
    EXPECT_EQ(Run({}, 1), KQexRunResult::eDONE);
    KSink lSink;
    mSampling.mCount = 0;
    EXPECT_EQ(Run({&lSink}, 1), KQexRunResult::eDONE);
    EXPECT_EQ(lSink.mText, "");
}

} // namespace
