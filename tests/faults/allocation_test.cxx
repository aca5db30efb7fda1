#include <tests/faults/failingallocator.h>
#include <tests/faults/faultstage.h>

// Every operation is run with allocation 1 failing, then 2, and so on until it succeeds: once failing that one alone, once that and
// all after it. What succeeds is complete; what fails says so, leaks nothing, leaves the scene and existing files alone, and works
// at the next try.

using namespace qexsdk;
using namespace qextest;

namespace
{

constexpr int kFewFrames = 3;

class KAllocationFault : public testing::TestWithParam<KFaultOperation>
{
protected:
    KAllocationFault() : mFiles(kFewFrames) {}

    /// Runs the operation with allocation \p pCall failing. False when it makes fewer allocations.
    bool Try(KFailingAllocator& pAllocator, long pCall, bool pOn) const
    {
        const long lLive = KFailingAllocator::GetLive();
        bool       lIsDone = false;
        {
            KStage lStage(mFiles);
            if (GetParam().mHasMotion)
            {
                lStage.ImportMotion();
            }
            const std::string lScene = lStage.Describe();
            pAllocator.Arm(pCall, pOn);
            bool lOk = GetParam().mRun(lStage);
            lIsDone = pAllocator.Disarm() < pCall;
            EXPECT_TRUE(lOk || !lIsDone) << "nothing failed: " << lStage.mTold;
            if (!lOk)
            {
                EXPECT_TRUE(lStage.mHasError || pOn) << "failed in silence";
                lStage.mSkeleton.reset();
                EXPECT_TRUE(lStage.Describe() == lScene) << "another scene";
                ExpectSameFiles(mFiles.GetOutputs(), mOutputs);
                // Of a call of the command line there is nothing that could be used again.
                lOk = GetParam().mIsProgram || GetParam().mRun(lStage);
                EXPECT_TRUE(lOk) << "the next try: " << lStage.mTold;
                lOk = !GetParam().mIsProgram;
            }
            else
            {
                // What succeeds although something failed has done everything all the same.
                EXPECT_TRUE(lStage.Describe() == mScene) << "success with another result";
                ExpectSameFiles(mFiles.GetOutputs(), mWritten);
            }
            if (lOk && !GetParam().mOutputs.empty())
            {
                mFiles.ResetOutputs();
            }
        }
        EXPECT_EQ(KFailingAllocator::GetLive(), lLive) << "leaks";
        return !lIsDone;
    }

    KFaultFiles                              mFiles;
    const std::map<std::string, std::string> mOutputs = mFiles.GetOutputs();
    std::map<std::string, std::string>       mWritten; ///< The files after success,
    std::string                              mScene;   ///< and the scene.
};

TEST_P(KAllocationFault, LosesNothing)
{
    KFailingAllocator lAllocator;
    {
        // What the libraries keep for good is allocated now.
        KStage lStage(mFiles);
        lStage.ImportMotion();
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mTold;
        mFiles.ResetOutputs();
    }
    {
        KStage lStage(mFiles);
        if (GetParam().mHasMotion)
        {
            lStage.ImportMotion();
        }
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mTold;
        mScene = lStage.Describe();
        mWritten = mFiles.GetOutputs();
        mFiles.ResetOutputs();
    }
    for (const bool lOn : {false, true})
    {
        long lCall = 1;
        for (bool lFails = true; lFails && lCall < 100000 && !HasFailure(); lCall += lFails ? 1 : 0)
        {
            SCOPED_TRACE("allocation " + std::to_string(lCall) + (lOn ? " and all after it" : ""));
            lFails = Try(lAllocator, lCall, lOn);
        }
        EXPECT_GT(lCall, 10);
        std::printf("%-20s each of %ld allocations %s\n", GetParam().mName, lCall - 1, lOn ? "and all after it" : "alone");
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, KAllocationFault, testing::ValuesIn(FaultOperations()),
                         [](const testing::TestParamInfo<KFaultOperation>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
