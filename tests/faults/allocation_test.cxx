#include <qexioplugins/motion/kqextextfile.h>

#include <tests/faults/faultoperations.h>
#include <tests/faults/foreachallocation.h>

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
        KStage lStage(mFiles);
        if (GetParam().mNeedsMotion)
        {
            lStage.ImportMotion();
        }
        const std::string lScene = lStage.Describe();
        pAllocator.Arm(pCall, pAndLater);
        bool       lOk = GetParam().mRun(lStage);
        const bool lIsDone = pAllocator.Disarm() < pCall;
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
        return !lIsDone;
    }

    KFaultFiles                              mFiles;
    const std::map<std::string, std::string> mOldFiles = mFiles.GetOutputs();
    std::map<std::string, std::string>       mNewFiles; ///< Output files after success.
    std::string                              mScene;    ///< Scene after success.
};

TEST_P(KAllocationFault, LosesNothing)
{
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
    ForEachAllocation([this](KFailingAllocator& pAllocator, long pCall, bool pAndLater) { return Try(pAllocator, pCall, pAndLater); }, 10);
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
