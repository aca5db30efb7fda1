#include <qexioplugins/motion/kqextextfile.h>

#include <tests/faults/failingallocator.h>
#include <tests/faults/faultstage.h>

#include <cstdio>

// Runs every operation with its 1st allocation failing, then its 2nd, and so on until it makes no more: once with that one alone failing,
// once with all later ones failing too. An operation that succeeds is complete; one that fails reports it, leaks nothing, leaves the scene
// and existing files unchanged, and succeeds when retried.

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
    bool Try(KFailingAllocator& pAllocator, long pCall, bool pAndLater) const
    {
        const long lLive = KFailingAllocator::GetLive();
        bool       lIsDone = false;
        {
            KStage lStage(mFiles);
            if (GetParam().mNeedsMotion)
            {
                lStage.ImportMotion();
            }
            const std::string lScene = lStage.Describe();
            pAllocator.Arm(pCall, pAndLater);
            bool lOk = GetParam().mRun(lStage);
            lIsDone = pAllocator.Disarm() < pCall;
            EXPECT_TRUE(lOk || !lIsDone) << "nothing failed: " << lStage.mErrors;
            if (!lOk)
            {
                EXPECT_TRUE(lStage.mHasError || pAndLater) << "failed without an error";
                lStage.mSkeleton.reset();
                EXPECT_TRUE(lStage.Describe() == lScene) << "scene changed";
                ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
                // A command line run leaves no object to retry with.
                lOk = GetParam().mIsProgram || GetParam().mRun(lStage);
                EXPECT_TRUE(lOk) << "retry: " << lStage.mErrors;
                lOk = !GetParam().mIsProgram;
            }
            else
            {
                // An operation that survives the failure must still be complete.
                EXPECT_TRUE(lStage.Describe() == mScene) << "succeeded with a different result";
                ExpectSameFiles(mFiles.GetOutputs(), mNewFiles);
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
    const std::map<std::string, std::string> mOldFiles = mFiles.GetOutputs();
    std::map<std::string, std::string>       mNewFiles; ///< Output files after success.
    std::string                              mScene;    ///< Scene after success.
};

TEST_P(KAllocationFault, LosesNothing)
{
    KFailingAllocator lAllocator;
    {
        // Warm up: allocates what the libraries never free.
        KStage lStage(mFiles);
        lStage.ImportMotion();
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mErrors;
        mFiles.ResetOutputs();
    }
    {
        KStage lStage(mFiles);
        if (GetParam().mNeedsMotion)
        {
            lStage.ImportMotion();
        }
        EXPECT_TRUE(GetParam().mRun(lStage)) << lStage.mErrors;
        mScene = lStage.Describe();
        mNewFiles = mFiles.GetOutputs();
        mFiles.ResetOutputs();
    }
    for (const bool lAndLater : {false, true})
    {
        long lCall = 1;
        for (bool lFails = true; lFails && lCall < 100000 && !HasFailure(); lCall += lFails ? 1 : 0)
        {
            SCOPED_TRACE("allocation " + std::to_string(lCall) + (lAndLater ? " and all after it" : ""));
            lFails = Try(lAllocator, lCall, lAndLater);
        }
        EXPECT_GT(lCall, 10);
        std::printf("%-20s each of %ld allocations %s\n", GetParam().mName, lCall - 1, lAndLater ? "and all after it" : "alone");
    }
}

TEST(TextFileMessages, AnErrorThatMemoryCannotHoldCountsOnce)
{
    const std::string lText(1000, 'x');
    KFailingAllocator lAllocator;
    KQexTextFile      lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenReadBuffer("a\n", 2));
    lAllocator.Arm(1, true);
    lFile.Error("%s\n", lText.c_str());
    lFile.Warning("%s\n", lText.c_str());
    lAllocator.Disarm();
    EXPECT_EQ(lFile.GetErrorCount(), 2) << "out of memory, twice";
    EXPECT_EQ(lFile.GetWarningCount(), 1);
    ASSERT_EQ(lFile.GetMessages().size(), 2u);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Out of memory");
    EXPECT_TRUE(lFile.HasFailed());
}

INSTANTIATE_TEST_SUITE_P(Operations, KAllocationFault, testing::ValuesIn(FaultOperations()),
                         [](const testing::TestParamInfo<KFaultOperation>& pInfo) { return std::string(pInfo.param.mName); });

} // namespace
