#include <tests/faults/faultstage.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// The command line is killed at random moments while it replaces files: each is the old one or the whole new one every time.

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

constexpr int         kKilledFrames = 4000;
constexpr int         kDefaultCount = 60; ///< QEX_KILL_COUNT asks for another number.
constexpr const char* kLeftover = ".qex-";

int CountOfKills()
{
    const char* lText = std::getenv("QEX_KILL_COUNT");
    const int   lCount = lText != nullptr ? std::atoi(lText) : 0;
    return lCount > 0 ? lCount : kDefaultCount;
}

/// Conversions to one or two outputs, which can be ended in their middle.
class KKillTest : public testing::Test
{
protected:
    using KClock = std::chrono::steady_clock;

    KKillTest()
    {
        mFiles.ResetOutputs();
        const KClock::time_point lStart = KClock::now();
        EXPECT_EQ(End(Start(true), 0), 0);
        mDuration = KClock::now() - lStart;
        mNew = mFiles.GetOutputs();
        mFiles.ResetOutputs();
        mOld = mFiles.GetOutputs();
    }

    pid_t Start(bool pBoth) const
    {
        std::vector<std::string> lWords = {QEX_ASF_PROGRAM, "convert", mFiles.In("a.asf"), mFiles.In("a.amc"), "-o", mFiles.Out("a.bvh")};
        if (pBoth)
        {
            lWords.insert(lWords.end(), {"-o", mFiles.Out("a.glb")});
        }
        std::vector<char*> lArguments;
        for (std::string& lWord : lWords)
        {
            lArguments.push_back(lWord.data());
        }
        lArguments.push_back(nullptr);
        const pid_t lChild = ::fork();
        if (lChild == 0)
        {
            const int lNull = ::open("/dev/null", O_RDWR);
            ::dup2(lNull, STDIN_FILENO);
            ::dup2(lNull, STDOUT_FILENO);
            ::dup2(lNull, STDERR_FILENO);
            // A shell hands on to what it runs in the background that interruptions are ignored.
            ::signal(SIGINT, SIG_DFL);
            ::execv(lArguments[0], lArguments.data());
            ::_exit(127);
        }
        return lChild;
    }

    /// Waits for the end of a conversion. \return its exit status, or minus the signal that ended it.
    static int End(pid_t pChild, int pSignal)
    {
        int lStatus = 0;
        if (pSignal != 0)
        {
            ::kill(pChild, pSignal);
        }
        EXPECT_EQ(::waitpid(pChild, &lStatus, 0), pChild);
        return WIFSIGNALED(lStatus) ? -WTERMSIG(lStatus) : WEXITSTATUS(lStatus);
    }

    /// Starts a conversion and ends it by \p pSignal at a random moment, sometimes after its own end.
    int Interrupt(int pSignal, bool pBoth)
    {
        const double lPart = std::uniform_real_distribution<double>(0.0, 1.1)(mRandom);
        const pid_t  lChild = Start(pBoth);
        std::this_thread::sleep_for(mDuration * lPart);
        return End(lChild, pSignal);
    }

    /// Expects every output to be the old or the new one, counts which, and makes them old again; leftovers stay.
    void Look()
    {
        for (const auto& [lName, lBytes] : mFiles.GetOutputs())
        {
            if (lName.compare(0, std::string(kLeftover).size(), kLeftover) == 0)
            {
                continue;
            }
            ASSERT_EQ(mOld.count(lName), 1u) << lName;
            const bool lIsOld = lBytes == mOld[lName];
            ASSERT_TRUE(lIsOld || lBytes == mNew[lName]) << lName << " is half-made";
            if (!lIsOld)
            {
                ++mReplaced;
                WriteFile(mFiles.Out(lName.c_str()), mOld[lName]);
            }
        }
    }

    int CountLeftovers() const { return static_cast<int>(mFiles.GetOutputs().size()) - static_cast<int>(mOld.size()); }

    KFaultFiles                        mFiles{kKilledFrames};
    std::map<std::string, std::string> mOld;
    std::map<std::string, std::string> mNew;
    KClock::duration                   mDuration{};
    std::mt19937                       mRandom{7};
    int                                mReplaced = 0; ///< Outputs found new.
};

TEST_F(KKillTest, OldFileOrWholeNewOneWheneverItIsKilled)
{
    const int lCount = CountOfKills();
    int       lKilled = 0;
    for (int i = 0; i < lCount && !HasFailure(); ++i)
    {
        const int lEnd = Interrupt(SIGKILL, i % 4 == 3);
        ASSERT_TRUE(lEnd == 0 || lEnd == -SIGKILL) << lEnd;
        lKilled += lEnd == 0 ? 0 : 1;
        Look();
    }
    const int lLeftovers = CountLeftovers();
    std::printf("%d runs, %d killed before their end, %d outputs replaced, %d temporary files left\n", lCount, lKilled, mReplaced,
                lLeftovers);
    EXPECT_GT(lKilled, lCount / 4);
    EXPECT_EQ(End(Start(true), 0), 0) << "with all that was left";
    EXPECT_EQ(CountLeftovers(), lLeftovers);
    for (const char* lName : {"a.bvh", "a.glb"})
    {
        EXPECT_TRUE(ReadFile(mFiles.Out(lName)) == mNew[lName]) << lName;
    }
}

TEST_F(KKillTest, NothingIsLeftByAnInterruption)
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
            Look();
            ASSERT_EQ(CountLeftovers(), 0);
        }
        std::printf("%s: %d runs, %d ended by it, %d outputs replaced, nothing left\n", lSignal == SIGINT ? "SIGINT" : "SIGTERM", lCount,
                    lInterrupted, mReplaced);
        EXPECT_GT(lInterrupted, lCount / 4);
    }
}

} // namespace
