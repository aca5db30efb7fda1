#include <kbaselib/kbase/kprocess.h>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

using namespace qexsdk;

namespace
{

KProcessResult RunShell(const std::string& pScript, double pSeconds = 0)
{
    KProcessOptions lOptions;
    lOptions.mArguments = {"/bin/sh", "-c", pScript};
    lOptions.mSeconds = pSeconds;
    return KRunProcess(lOptions);
}

TEST(KProcess, KeepsBothStreamsAndTheStatus)
{
    const KProcessResult lResult = RunShell("echo out; echo err >&2; exit 7");
    EXPECT_EQ(lResult.mError, 0);
    EXPECT_EQ(lResult.mExit, 7);
    EXPECT_EQ(lResult.mSignal, 0);
    EXPECT_EQ(lResult.mOut, "out\n");
    EXPECT_EQ(lResult.mErr, "err\n");
    EXPECT_GT(lResult.mPeakMemory, 0U);
}

TEST(KProcess, StandardInputIsEmpty)
{
    EXPECT_EQ(RunShell("cat").mExit, 0);
}

TEST(KProcess, ReportsTheSignal)
{
    const KProcessResult lResult = RunShell("kill -SEGV $$");
    EXPECT_EQ(lResult.mExit, -1);
    EXPECT_EQ(lResult.mSignal, SIGSEGV);
    EXPECT_FALSE(lResult.mTimedOut);
}

TEST(KProcess, EndsAProgramWhoseTimeIsOver)
{
    const KProcessResult lResult = RunShell("exec sleep 600", 0.2);
    EXPECT_TRUE(lResult.mTimedOut);
    EXPECT_EQ(lResult.mSignal, SIGKILL);
}

TEST(KProcess, EndsACancelledProgram)
{
    std::atomic<bool> lIsCancelled{false};
    KProcessOptions   lOptions;
    lOptions.mArguments = {"/bin/sleep", "600"};
    lOptions.mIsCancelled = &lIsCancelled;
    std::thread lOther(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            lIsCancelled = true;
        });
    const KProcessResult lResult = KRunProcess(lOptions);
    lOther.join();
    EXPECT_EQ(lResult.mSignal, SIGKILL);
    EXPECT_FALSE(lResult.mTimedOut);
}

TEST(KProcess, AMissingProgramIsAnError)
{
    KProcessOptions lOptions;
    lOptions.mArguments = {"/nowhere/program"};
    EXPECT_EQ(KRunProcess(lOptions).mError, ENOENT);
}

TEST(KProcess, LongOutputIsReadToItsEndAndCut)
{
    KProcessOptions lOptions;
    lOptions.mArguments = {"/bin/sh", "-c", "head -c 1000000 /dev/zero; echo end >&2"};
    lOptions.mMaxText = 1000;
    const KProcessResult lResult = KRunProcess(lOptions);
    EXPECT_EQ(lResult.mOut.size(), 1000U);
    EXPECT_EQ(lResult.mErr, "end\n");
    EXPECT_EQ(lResult.mExit, 0);
}

TEST(KProcess, ManyAtOnceDoNotHoldEachOthersPipes)
{
    std::vector<std::thread> lThreads;
    std::atomic<int>         lRight{0};
    for (int lThread = 0; lThread < 4; ++lThread)
    {
        lThreads.emplace_back(
            [&lRight, lThread]
            {
                for (int i = 0; i < 10; ++i)
                {
                    const std::string lWord = std::to_string(lThread * 100 + i);
                    lRight += RunShell("echo " + lWord).mOut == lWord + "\n" ? 1 : 0;
                }
            });
    }
    for (std::thread& lThread : lThreads)
    {
        lThread.join();
    }
    EXPECT_EQ(lRight, 40);
}

TEST(KProcess, KnowsItsOwnPath)
{
    EXPECT_NE(KProgramPath().find("tests_kbase"), std::string::npos);
}

} // namespace
