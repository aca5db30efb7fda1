#include <kbaselib/kbase/ksystem.h>

#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/kprocess.h>
#include <tests/support/filefaults.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qexsdk;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

KFileInfo InfoOf(const fs::path& pPath)
{
    KFileInfo lInfo;
    EXPECT_TRUE(KGetFileInfo(pPath.string(), lInfo)) << pPath;
    return lInfo;
}

TEST(KSystem, KindsOfFiles)
{
    const KTempDir lDir;
    WriteFile(lDir / "file", "12345");
    fs::create_symlink("file", lDir / "link");
    ASSERT_EQ(::mkfifo((lDir / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(InfoOf(lDir / "file").mKind, KFileInfo::eREGULAR);
    EXPECT_EQ(InfoOf(lDir / "file").mSize, 5U);
    EXPECT_EQ(InfoOf(lDir.Path()).mKind, KFileInfo::eFOLDER);
    EXPECT_EQ(InfoOf(lDir / "fifo").mKind, KFileInfo::eOTHER);
    EXPECT_EQ(InfoOf(lDir / "link").mKind, KFileInfo::eREGULAR) << "of the link's target";
    KFileInfo lInfo;
    EXPECT_EQ(KSystemInUse().mLinkInfo((lDir / "link").c_str(), &lInfo), 0);
    EXPECT_EQ(lInfo.mKind, KFileInfo::eLINK);
    EXPECT_FALSE(KGetFileInfo((lDir / "missing").string(), lInfo));
    EXPECT_EQ(errno, ENOENT);
}

TEST(KSystem, PathsToTheSameFileHaveTheSameIdentity)
{
    const KTempDir lDir;
    WriteFile(lDir / "file", "");
    WriteFile(lDir / "other", "");
    fs::create_hard_link(lDir / "file", lDir / "hard");
    const KFileInfo lFile = InfoOf(lDir / "file");
    EXPECT_EQ(InfoOf(lDir / "hard").mIndex, lFile.mIndex);
    EXPECT_EQ(InfoOf(lDir / "hard").mDevice, lFile.mDevice);
    EXPECT_NE(InfoOf(lDir / "other").mIndex, lFile.mIndex);
}

TEST(KSystem, TheTimeOfTheLastChangeInNanoseconds)
{
    const KTempDir lDir;
    WriteFile(lDir / "file", "");
    const struct timespec lTimes[2] = {{0, 0}, {1700000000, 123456789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (lDir / "file").c_str(), lTimes, 0), 0);
    EXPECT_EQ(InfoOf(lDir / "file").mModified, 1700000000123456789);
}

TEST(KSystem, AReplacedEntryIsUsedUntilTheReset)
{
    KSystemInUse().mRun = [](const KProcessOptions&)
    {
        KProcessResult lResult;
        lResult.mError = EAGAIN;
        return lResult;
    };
    KSystemInUse().mProgramPath = []
    {
        return std::string("/a/program");
    };
    KSystemInUse().mLimitMemory = [](uint64_t pBytes)
    {
        return pBytes == 7;
    };
    EXPECT_EQ(KRunProcess(KProcessOptions()).mError, EAGAIN);
    EXPECT_EQ(KProgramPath(), "/a/program");
    EXPECT_TRUE(KLimitMemory(7));
    KSystemReset();
    EXPECT_NE(KProgramPath(), "/a/program");
    EXPECT_EQ(KSystemInUse().mProcessId(), ::getpid());
}

TEST(KSystem, AFileThatCannotBeWaitedForIsAnError)
{
    const KTempDir lDir;
    KFileFaults    lFaults;
    KSystemInUse().mWait = [](int, EFileEvent)
    {
        errno = ENOMEM;
        return -1;
    };
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    lOutput.Write("x", 1);
    lFaults.Fail(KFileFaults::eWRITE, 1, EAGAIN);
    EXPECT_FALSE(lOutput.Close());
    EXPECT_EQ(lOutput.GetError(), ENOMEM);
}

TEST(KSystem, NoByteIsWrittenBeyondTheSystemsLimit)
{
    EXPECT_EQ(KSystemInUse().mWriteAt(kStandardOutput, "x", 1, ~uint64_t(0)), -1);
    EXPECT_EQ(errno, EFBIG);
}

TEST(KSystem, WidthOfATerminal)
{
    const int lMaster = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(lMaster, 0);
    ASSERT_EQ(::grantpt(lMaster) + ::unlockpt(lMaster), 0);
    const int lTerminal = ::open(::ptsname(lMaster), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(lTerminal, 0);
    struct winsize lSize = {};
    lSize.ws_col = 101;
    ASSERT_EQ(::ioctl(lTerminal, TIOCSWINSZ, &lSize), 0);
    EXPECT_TRUE(KSystemInUse().mIsTerminal(lTerminal));
    EXPECT_EQ(KSystemInUse().mTerminalWidth(lTerminal), 101);
    ::close(lTerminal);
    ::close(lMaster);

    const int lNull = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    EXPECT_FALSE(KSystemInUse().mIsTerminal(lNull));
    EXPECT_EQ(KSystemInUse().mTerminalWidth(lNull), 0);
    ::close(lNull);
}

TEST(KSystem, LibrariesAndTheirFunctions)
{
    const KSystemCalls& lCalls = KSystemInUse();
    void* const         lLibrary = lCalls.mOpenLibrary("m", 6);
    ASSERT_NE(lLibrary, nullptr) << lCalls.mLibraryReason();
    const auto lCosine = reinterpret_cast<double (*)(double)>(lCalls.mFindFunction(lLibrary, "cos"));
    ASSERT_NE(lCosine, nullptr);
    EXPECT_EQ(lCosine(0), 1);
    EXPECT_EQ(lCalls.mFindFunction(lLibrary, "qex_missing"), nullptr);
    EXPECT_NE(std::string(lCalls.mLibraryReason()).find("qex_missing"), std::string::npos);
    EXPECT_EQ(lCalls.mOpenLibrary("qex-missing", 3), nullptr);
    EXPECT_NE(std::string(lCalls.mLibraryReason()).find("qex-missing"), std::string::npos);
}

/// Status of a child that runs \p pTask, or 1000 + the signal that ended it.
template <typename TTask>
int RunInChild(const TTask& pTask)
{
    const pid_t lChild = ::fork();
    if (lChild == 0)
    {
        pTask();
        ::_exit(5);
    }
    int lStatus = 0;
    EXPECT_EQ(::waitpid(lChild, &lStatus, 0), lChild);
    return WIFSIGNALED(lStatus) ? 1000 + WTERMSIG(lStatus) : WEXITSTATUS(lStatus);
}

int sLog = -1; ///< What a child writes to when it is ended.

void CatchEnd(const fs::path& pLog)
{
    sLog = ::open(pLog.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    KSystemInUse().mCatchEnd([] { static_cast<void>(::write(sLog, "end", 3) == 3); });
}

/// How a child ends that catches signals and sends itself \p pSignal. Its handler writes to \p pLog.
int EndOfChild(int pSignal, bool pIgnored, const fs::path& pLog)
{
    return RunInChild(
        [&]
        {
            ::signal(pSignal, pIgnored ? SIG_IGN : SIG_DFL);
            CatchEnd(pLog);
            ::raise(pSignal);
        });
}

TEST(KSystem, SignalsEndTheProcessAfterTheHandler)
{
    const KTempDir lDir;
    for (const int lSignal : {SIGINT, SIGTERM, SIGHUP})
    {
        const fs::path lLog = lDir / std::to_string(lSignal).c_str();
        EXPECT_EQ(EndOfChild(lSignal, true, lLog), 5) << "still ignored";
        EXPECT_EQ(ReadFile(lLog), "");
        EXPECT_EQ(EndOfChild(lSignal, false, lLog), 1000 + lSignal);
        EXPECT_EQ(ReadFile(lLog), "end");
    }
    EXPECT_EQ(EndOfChild(SIGPIPE, false, lDir / "pipe"), 5);
    EXPECT_EQ(ReadFile(lDir / "pipe"), "");
}

std::atomic<bool> sIsHeld{false};

/// How a child ends that holds signals, sends itself \p pCount, and goes on after the first. Its handler writes to \p pLog.
int EndOfHoldingChild(int pCount, bool pRelease, bool pIgnored, const fs::path& pLog)
{
    return RunInChild(
        [&]
        {
            ::signal(SIGTERM, pIgnored ? SIG_IGN : SIG_DFL);
            CatchEnd(pLog);
            KSystemInUse().mPostponeEnd(&sIsHeld);
            for (int i = 0; i < pCount; ++i)
            {
                ::raise(SIGTERM);
            }
            if (pRelease)
            {
                KSystemInUse().mPostponeEnd(nullptr);
                KSystemInUse().mEndByPostponed();
            }
            ::_exit(sIsHeld ? 6 : 5);
        });
}

TEST(KSystem, AHeldSignalSetsAFlagAndEndsTheProcessLater)
{
    const KTempDir lDir;
    EXPECT_EQ(EndOfHoldingChild(0, true, false, lDir / "none"), 5);
    EXPECT_EQ(EndOfHoldingChild(1, false, false, lDir / "first"), 6);
    EXPECT_EQ(ReadFile(lDir / "first"), "");
    EXPECT_EQ(EndOfHoldingChild(1, true, false, lDir / "later"), 1000 + SIGTERM);
    EXPECT_EQ(ReadFile(lDir / "later"), "end") << "temporary files are removed";
    EXPECT_EQ(EndOfHoldingChild(2, false, false, lDir / "second"), 1000 + SIGTERM);
    EXPECT_EQ(ReadFile(lDir / "second"), "end");
    EXPECT_EQ(EndOfHoldingChild(2, true, true, lDir / "ignored"), 5);
}

} // namespace
