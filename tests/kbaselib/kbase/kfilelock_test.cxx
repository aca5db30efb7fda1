#include <kbaselib/kbase/kfilelock.h>

#include <kbaselib/kbase/kprocess.h>
#include <kbaselib/kbase/ksystem.h>
#include <tests/support/filefaults.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// Another process that locks the file at \p pPath, then runs \p pThen. Its exit status is 9 if the file is locked already.
KProcessResult LockElsewhere(const std::string& pPath, const std::string& pThen)
{
    KProcessOptions lOptions;
    lOptions.mArguments = {QEX_TEST_PYTHON, "-c",
                           "import fcntl, os, sys\n"
                           "file = open(sys.argv[1], 'a')\n"
                           "try:\n"
                           "    fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)\n"
                           "except BlockingIOError:\n"
                           "    sys.exit(9)\n" +
                               pThen,
                           pPath};
    return KRunProcess(lOptions);
}

TEST(KFileLock, ExcludesOtherProcessesUntilItIsReleased)
{
    const KTempDir    lDir;
    const std::string lPath = (lDir / "lock").string();
    {
        KFileLock lLock;
        ASSERT_TRUE(lLock.Lock(lPath));
        EXPECT_TRUE(lLock.IsLocked());
        EXPECT_EQ(LockElsewhere(lPath, "").mExit, 9);
    }
    EXPECT_EQ(LockElsewhere(lPath, "").mExit, 0);
}

TEST(KFileLock, IsReleasedWhenAProcessIsKilled)
{
    const KTempDir    lDir;
    const std::string lPath = (lDir / "lock").string();
    EXPECT_EQ(LockElsewhere(lPath, "os.kill(os.getpid(), 9)").mSignal, SIGKILL);
    KFileLock lLock;
    EXPECT_TRUE(lLock.Lock(lPath));
}

TEST(KFileLock, OneObjectAtATime)
{
    const KTempDir    lDir;
    const std::string lPath = (lDir / "lock").string();
    WriteFile(lPath, "contents");
    KFileLock lOne;
    KFileLock lOther;
    ASSERT_TRUE(lOne.Lock(lPath));
    EXPECT_FALSE(lOther.Lock(lPath));
    EXPECT_EQ(errno, EWOULDBLOCK);
    EXPECT_FALSE(lOther.IsLocked());
    EXPECT_TRUE(lOther.Lock((lDir / "another").string()));
    lOne.Unlock();
    EXPECT_TRUE(lOther.Lock(lPath));
    EXPECT_TRUE(lOne.Lock((lDir / "another").string())) << "released by the second call of Lock()";
    EXPECT_EQ(ReadFile(lPath), "contents");
}

TEST(KFileLock, IsNotInheritedByAProgramThatIsStarted)
{
    const KTempDir    lDir;
    const std::string lPath = (lDir / "lock").string();
    KFileLock         lLock;
    ASSERT_TRUE(lLock.Lock(lPath));
    KProcessOptions lOptions;
    lOptions.mArguments = {"/bin/sh", "-c", "ls -l /proc/self/fd | grep -c \"$0\"", lPath};
    EXPECT_EQ(KRunProcess(lOptions).mOut, "0\n");
}

TEST(KFileLock, FailuresHaveAReason)
{
    const KTempDir lDir;
    KFileLock      lLock;
    EXPECT_FALSE(lLock.Lock((lDir / "missing" / "lock").string()));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(lLock.Lock(lDir.Path().string()));
    EXPECT_EQ(errno, EISDIR);

    KFileFaults lFaults;
    KSystemInUse().mLock = [](int)
    {
        errno = ENOLCK;
        return -1;
    };
    EXPECT_FALSE(lLock.Lock((lDir / "lock").string()));
    EXPECT_EQ(errno, ENOLCK);
    EXPECT_EQ(lFaults.GetCount(KFileFaults::eCLOSE), 1) << "the file is not left open";

    KSystemReset();
    lFaults.Fail(KFileFaults::eOPEN, 1, EINTR);
    EXPECT_TRUE(lLock.Lock((lDir / "lock").string()));
}

} // namespace
