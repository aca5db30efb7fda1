#include <tests/faults/faultfiles.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// Kills the command line at random moments while it replaces files: every file must be the old one or the complete new one.

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

constexpr int         kKilledFrames = 4000;
constexpr int         kDefaultCount = 60; ///< QEX_KILL_COUNT overrides it.
constexpr const char* kTempPrefix = ".qex-";

int CountOfKills()
{
    const char* lText = std::getenv("QEX_KILL_COUNT");
    const int   lCount = lText != nullptr ? std::atoi(lText) : 0;
    return lCount > 0 ? lCount : kDefaultCount;
}

/// Runs conversions to one or two outputs and interrupts them.
class KKillTest : public testing::Test
{
protected:
    using KClock = std::chrono::steady_clock;

    KKillTest()
    {
        mFiles.ResetOutputs();
        const KClock::time_point lStart = KClock::now();
        EXPECT_EQ(SignalAndWait(Start(true), 0), 0);
        mDuration = KClock::now() - lStart;
        mNewFiles = mFiles.GetOutputs();
        mFiles.ResetOutputs();
        mOldFiles = mFiles.GetOutputs();
    }

    pid_t Start(bool pBoth) const
    {
        std::vector<std::string> lArguments = {QEX_ASF_PROGRAM,    "convert", mFiles.In("a.asf"),
                                               mFiles.In("a.amc"), "-o",      mFiles.Out("a.bvh")};
        if (pBoth)
        {
            lArguments.insert(lArguments.end(), {"-o", mFiles.Out("a.glb")});
        }
        std::vector<char*> lArgv;
        for (std::string& lArgument : lArguments)
        {
            lArgv.push_back(lArgument.data());
        }
        lArgv.push_back(nullptr);
        const pid_t lChild = ::fork();
        if (lChild == 0)
        {
            const int lNull = ::open("/dev/null", O_RDWR);
            ::dup2(lNull, STDIN_FILENO);
            ::dup2(lNull, STDOUT_FILENO);
            ::dup2(lNull, STDERR_FILENO);
            // The shell of a background job makes it ignore SIGINT.
            ::signal(SIGINT, SIG_DFL);
            ::execv(lArgv[0], lArgv.data());
            ::_exit(127);
        }
        return lChild;
    }

    /// Sends \p pSignal, unless it is 0, and waits for the process. \return its exit status, or minus the signal that ended it.
    static int SignalAndWait(pid_t pChild, int pSignal)
    {
        int lStatus = 0;
        if (pSignal != 0)
        {
            ::kill(pChild, pSignal);
        }
        EXPECT_EQ(::waitpid(pChild, &lStatus, 0), pChild);
        return WIFSIGNALED(lStatus) ? -WTERMSIG(lStatus) : WEXITSTATUS(lStatus);
    }

    /// Starts a conversion and sends \p pSignal at a random moment, sometimes after it has finished.
    int Interrupt(int pSignal, bool pBoth)
    {
        const double lPart = std::uniform_real_distribution<double>(0.0, 1.1)(mRandom);
        const pid_t  lChild = Start(pBoth);
        std::this_thread::sleep_for(mDuration * lPart);
        const int lEnd = SignalAndWait(lChild, pSignal);
        // The machine's speed may change: most signals have to come before the end.
        mDuration = mDuration * (lEnd == 0 ? 7 : 11) / 10;
        return lEnd;
    }

    /// Expects every output to be the old or the complete new one, counts the new ones and resets them. Leftovers stay.
    void CheckOutputs()
    {
        for (const auto& [lName, lBytes] : mFiles.GetOutputs())
        {
            if (lName.compare(0, std::string(kTempPrefix).size(), kTempPrefix) == 0)
            {
                continue;
            }
            ASSERT_EQ(mOldFiles.count(lName), 1u) << lName;
            const bool lIsOld = lBytes == mOldFiles[lName];
            ASSERT_TRUE(lIsOld || lBytes == mNewFiles[lName]) << lName << " is incomplete";
            if (!lIsOld)
            {
                ++mReplaced;
                WriteFile(mFiles.Out(lName.c_str()), mOldFiles[lName]);
            }
        }
    }

    int CountLeftovers() const { return static_cast<int>(mFiles.GetOutputs().size()) - static_cast<int>(mOldFiles.size()); }

    KFaultFiles                        mFiles{kKilledFrames};
    std::map<std::string, std::string> mOldFiles;
    std::map<std::string, std::string> mNewFiles;
    KClock::duration                   mDuration{}; ///< Of a conversion, about.
    std::mt19937                       mRandom{7};
    int                                mReplaced = 0; ///< New outputs seen.
};

TEST_F(KKillTest, EveryOutputIsOldOrCompleteAfterAKill)
{
    const int lCount = CountOfKills();
    int       lKilled = 0;
    for (int i = 0; i < lCount && !HasFailure(); ++i)
    {
        const int lEnd = Interrupt(SIGKILL, i % 4 == 3);
        ASSERT_TRUE(lEnd == 0 || lEnd == -SIGKILL) << lEnd;
        lKilled += lEnd == 0 ? 0 : 1;
        CheckOutputs();
    }
    const int lLeftovers = CountLeftovers();
    std::printf("%d runs, %d killed before their end, %d outputs replaced, %d temporary files left\n", lCount, lKilled, mReplaced,
                lLeftovers);
    EXPECT_GT(lKilled, lCount / 4);
    EXPECT_EQ(SignalAndWait(Start(true), 0), 0) << "with leftovers present";
    EXPECT_EQ(CountLeftovers(), lLeftovers);
    for (const char* lName : {"a.bvh", "a.glb"})
    {
        EXPECT_TRUE(ReadFile(mFiles.Out(lName)) == mNewFiles[lName]) << lName;
    }
}

TEST_F(KKillTest, InterruptingLeavesNoTemporaryFile)
{
    const int lCount = std::max(1, CountOfKills() / 5);
    for (const int lSignal : {SIGINT, SIGTERM})
    {
        int lInterrupted = 0;
        mReplaced = 0;
        for (int i = 0; i < lCount && !HasFailure(); ++i)
        {
            const int lEnd = Interrupt(lSignal, i % 2 == 1);
            ASSERT_TRUE(lEnd == 0 || lEnd == -lSignal) << lEnd;
            lInterrupted += lEnd == 0 ? 0 : 1;
            CheckOutputs();
            ASSERT_EQ(CountLeftovers(), 0);
        }
        std::printf("%s: %d runs, %d ended by it, %d outputs replaced, nothing left\n", lSignal == SIGINT ? "SIGINT" : "SIGTERM", lCount,
                    lInterrupted, mReplaced);
        EXPECT_GT(lInterrupted, lCount / 4);
    }
}

} // namespace
