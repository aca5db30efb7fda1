#include <kbaselib/kbase/ksystem.h>

#include <kbaselib/kbase/koutputfile.h>
#include <tests/support/asnobody.h>
#include <tests/support/filefaults.h>
#include <tests/support/memorywatch.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

size_t CountFiles(const fs::path& pFolder)
{
    size_t lCount = 0;
    for ([[maybe_unused]] const fs::directory_entry& lEntry : fs::directory_iterator(pFolder))
    {
        ++lCount;
    }
    return lCount;
}

mode_t ModeOf(const fs::path& pPath)
{
    struct stat lStat;
    EXPECT_EQ(::stat(pPath.c_str(), &lStat), 0);
    return lStat.st_mode & 07777;
}

bool WriteInChunks(KOutputFile& pOutput, const std::string& pText)
{
    bool lOk = true;
    for (size_t i = 0; i < pText.size(); i += 1000)
    {
        lOk = pOutput.Write(pText.data() + i, std::min<size_t>(1000, pText.size() - i)) && lOk;
    }
    return lOk;
}

TEST(KOutputFile, CreatesAFile)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.IsOpen());
    EXPECT_TRUE(WriteInChunks(lOutput, LongText()));
    EXPECT_FALSE(fs::exists(lDir / "new"));
    EXPECT_TRUE(lOutput.Close());
    EXPECT_FALSE(lOutput.IsOpen());
    EXPECT_EQ(lOutput.GetSize(), LongText().size());
    EXPECT_EQ(ReadFile(lDir / "new"), LongText());
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
    EXPECT_TRUE(lOutput.Close()) << "the second call returns the first result";
    EXPECT_FALSE(lOutput.Write("x", 1));
    EXPECT_TRUE(lOutput.Close());
}

TEST(KOutputFile, WritesChunksLargerThanItsBuffer)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Write("ab", 2));
    EXPECT_TRUE(lOutput.Write(LongText().data(), LongText().size()));
    EXPECT_TRUE(lOutput.Write("yz", 2));
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "new"), "ab" + LongText() + "yz");
}

TEST(KOutputFile, NewFileObeysTheUmask)
{
    KTempDir     lDir;
    const mode_t lBefore = ::umask(027);
    KOutputFile  lOutput;
    EXPECT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Close());
    ::umask(lBefore);
    EXPECT_EQ(ModeOf(lDir / "new"), 0640u);
}

TEST(KOutputFile, ReplacesAFileAndKeepsItsMode)
{
    KTempDir lDir;
    WriteFile(lDir / "old", "old");
    ASSERT_EQ(::chmod((lDir / "old").c_str(), 0751), 0);
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "old").c_str()));
    EXPECT_TRUE(lOutput.Write("new", 3));
    EXPECT_EQ(ReadFile(lDir / "old"), "old") << "until it is closed";
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "old"), "new");
    EXPECT_EQ(ModeOf(lDir / "old"), 0751u);
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
}

struct KLinkCase
{
    const char* mWhat;
    const char* mLink;   ///< The link's text.
    bool        mExists; ///< The link's target exists.
};

class KOutputFileLinkTest : public testing::TestWithParam<KLinkCase>
{
};

TEST_P(KOutputFileLinkTest, IsFollowed)
{
    KTempDir lDir;
    fs::create_directory(lDir / "sub");
    const fs::path lTarget = lDir / "sub" / "file";
    if (GetParam().mExists)
    {
        WriteFile(lTarget, "old");
    }
    const std::string lLink = GetParam().mLink;
    fs::create_symlink(lLink == "absolute" ? lTarget : fs::path(lLink), lDir / "link");
    fs::create_symlink("sub/file", lDir / "second");

    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "link").c_str()));
    EXPECT_TRUE(lOutput.Write("new", 3));
    EXPECT_TRUE(lOutput.Close());
    EXPECT_TRUE(fs::is_symlink(lDir / "link"));
    EXPECT_FALSE(fs::is_symlink(lTarget));
    EXPECT_EQ(ReadFile(lTarget), "new");
    EXPECT_EQ(CountFiles(lDir / "sub"), 1u);
    EXPECT_EQ(CountFiles(lDir.Path()), 3u);
}

INSTANTIATE_TEST_SUITE_P(Links, KOutputFileLinkTest,
                         testing::Values(KLinkCase{"relative", "sub/file", true}, KLinkCase{"absolute", "absolute", true},
                                         KLinkCase{"to another link", "second", true}, KLinkCase{"to a missing file", "sub/file", false},
                                         KLinkCase{"to a dangling link", "second", false}));

struct KRefusal
{
    const char* mWhat;
    const char* mPath;
    int         mError;
};

class KOutputFileRefusalTest : public testing::TestWithParam<KRefusal>
{
};

TEST_P(KOutputFileRefusalTest, IsReported)
{
    KTempDir lDir;
    fs::create_directory(lDir / "folder");
    WriteFile(lDir / "file", "old");
    fs::create_symlink("loop", lDir / "loop");
    const size_t      lBefore = CountFiles(lDir.Path());
    const std::string lName = GetParam().mPath;

    KOutputFile lOutput;
    EXPECT_FALSE(lOutput.Open(lName.empty() ? "" : (lDir / lName).c_str()));
    EXPECT_EQ(lOutput.GetError(), GetParam().mError) << lOutput.GetReason();
    EXPECT_FALSE(lOutput.GetReason().empty());
    EXPECT_FALSE(lOutput.IsOpen());
    EXPECT_FALSE(lOutput.Write("x", 1));
    EXPECT_FALSE(lOutput.Close());
    EXPECT_EQ(CountFiles(lDir.Path()), lBefore);
}

INSTANTIATE_TEST_SUITE_P(Refusals, KOutputFileRefusalTest,
                         testing::Values(KRefusal{"no name", "", ENOENT}, KRefusal{"a folder", "folder", EISDIR},
                                         KRefusal{"no such folder", "none/file", ENOENT}, KRefusal{"a file as folder", "file/x", ENOTDIR},
                                         KRefusal{"link loop", "loop", ELOOP}));

TEST(KOutputFile, RefusesAReadOnlyFile)
{
    KTempDir lDir;
    WriteFile(lDir / "old", "old");
    ASSERT_EQ(::chmod((lDir / "old").c_str(), 0444), 0);
    ASSERT_EQ(::chmod(lDir.Path().c_str(), 0777), 0);
    EXPECT_TRUE(AsNobody(
        [&]
        {
            KOutputFile lOutput;
            return !lOutput.Open((lDir / "old").c_str()) && lOutput.GetError() == EACCES;
        }));
    EXPECT_EQ(ReadFile(lDir / "old"), "old");
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
}

TEST(KOutputFile, RefusesAReadOnlyFolder)
{
    KTempDir lDir;
    WriteFile(lDir / "old", "old");
    ASSERT_EQ(::chmod((lDir / "old").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(lDir.Path().c_str(), 0555), 0);
    EXPECT_TRUE(AsNobody(
        [&]
        {
            KOutputFile lOutput;
            return !lOutput.Open((lDir / "old").c_str()) && lOutput.GetError() == EACCES;
        }));
    EXPECT_EQ(ReadFile(lDir / "old"), "old");
    ASSERT_EQ(::chmod(lDir.Path().c_str(), 0755), 0);
}

TEST(KOutputFile, DiscardLeavesTheOldFile)
{
    KTempDir lDir;
    WriteFile(lDir / "old", "old");
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "old").c_str()));
    EXPECT_TRUE(WriteInChunks(lOutput, LongText()));
    lOutput.Discard();
    EXPECT_FALSE(lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "old"), "old");
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
}

TEST(KOutputFile, DestructionAndReopeningDiscardWhatWasNotClosed)
{
    KTempDir lDir;
    {
        KOutputFile lOutput;
        ASSERT_TRUE(lOutput.Open((lDir / "first").c_str()));
        EXPECT_TRUE(lOutput.Write("1", 1));
        ASSERT_TRUE(lOutput.Open((lDir / "second").c_str()));
        EXPECT_TRUE(lOutput.Write("2", 1));
    }
    EXPECT_EQ(CountFiles(lDir.Path()), 0u);
}

TEST(KOutputFile, DiscardAfterCloseUndoesNothing)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Close());
    lOutput.Discard();
    EXPECT_TRUE(lOutput.Close());
    EXPECT_TRUE(fs::exists(lDir / "new"));
}

TEST(KOutputFile, ClosingWithoutOpeningSucceeds)
{
    KOutputFile lOutput;
    EXPECT_TRUE(lOutput.Prepare());
    EXPECT_TRUE(lOutput.Close());
    EXPECT_FALSE(lOutput.HasFailed());
}

TEST(KOutputFile, WritingWithoutOpeningFails)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    EXPECT_FALSE(lOutput.Write("x", 1));
    EXPECT_FALSE(lOutput.Close());
    EXPECT_FALSE(lOutput.Close());
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Close()) << "Open() resets the failure";
}

TEST(KOutputFile, TwoArePreparedBeforeEitherIsCommitted)
{
    KTempDir lDir;
    WriteFile(lDir / "a", "old a");
    WriteFile(lDir / "b", "old b");
    KOutputFile lA;
    KOutputFile lB;
    ASSERT_TRUE(lA.Open((lDir / "a").c_str()));
    ASSERT_TRUE(lB.Open((lDir / "b").c_str()));
    EXPECT_TRUE(lA.Write("new a", 5));
    EXPECT_TRUE(lB.Write("new b", 5));
    EXPECT_TRUE(lA.Prepare());
    EXPECT_TRUE(lA.Prepare());
    EXPECT_TRUE(lB.Prepare());
    EXPECT_FALSE(lA.Write("x", 1)) << "already prepared";
    EXPECT_EQ(ReadFile(lDir / "a"), "old a");
    EXPECT_TRUE(lA.Commit());
    EXPECT_TRUE(lB.Commit());
    EXPECT_EQ(ReadFile(lDir / "a"), "new a");
    EXPECT_EQ(ReadFile(lDir / "b"), "new b");
    EXPECT_EQ(CountFiles(lDir.Path()), 2u);
}

TEST(KOutputFile, AMovedOutputIsItsNewOwners)
{
    KTempDir lDir;
    WriteFile(lDir / "a", "old a");
    KOutputFile lFirst;
    ASSERT_TRUE(lFirst.Open((lDir / "a").c_str()));
    EXPECT_TRUE(lFirst.Write("new ", 4));
    KOutputFile lSecond(std::move(lFirst));
    EXPECT_FALSE(lFirst.IsOpen());
    EXPECT_EQ(lFirst.GetPath(), "");
    EXPECT_TRUE(lFirst.Close()) << "as if it had never been opened";
    EXPECT_EQ(ReadFile(lDir / "a"), "old a");
    EXPECT_TRUE(lSecond.Write("a", 1));
    EXPECT_TRUE(lSecond.Prepare());
    KOutputFile lThird(std::move(lSecond));
    EXPECT_EQ(lThird.GetPath(), (lDir / "a").string());
    EXPECT_EQ(lThird.GetSize(), 5u);
    EXPECT_TRUE(lThird.Commit());
    EXPECT_EQ(ReadFile(lDir / "a"), "new a");
    {
        KOutputFile lFourth;
        ASSERT_TRUE(lFourth.Open((lDir / "a").c_str()));
        KOutputFile(std::move(lFourth)); // NOLINT(bugprone-unused-raii): discarded at once
    }
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
}

TEST(KOutputFile, PreparedCanStillBeDiscarded)
{
    KTempDir lDir;
    WriteFile(lDir / "a", "old a");
    KOutputFile lA;
    ASSERT_TRUE(lA.Open((lDir / "a").c_str()));
    EXPECT_TRUE(lA.Write("new a", 5));
    EXPECT_TRUE(lA.Prepare());
    lA.Discard();
    EXPECT_FALSE(lA.Commit());
    EXPECT_EQ(ReadFile(lDir / "a"), "old a");
    EXPECT_EQ(CountFiles(lDir.Path()), 1u);
}

/// Three outputs that belong together: the first and the last replace a file, the second creates one.
TEST(KOutputFile, CommitAllCommitsAllOrNone)
{
    for (int lNumber = 1; lNumber <= 4; ++lNumber)
    {
        KTempDir lDir;
        WriteFile(lDir / "a", "old a");
        WriteFile(lDir / "c", "old c");
        KFileFaults lFaults;
        KOutputFile lOutputs[3];
        for (int i = 0; i < 3; ++i)
        {
            ASSERT_TRUE(lOutputs[i].Open((lDir / std::string(1, static_cast<char>('a' + i))).c_str()));
            EXPECT_TRUE(lOutputs[i].Write("new", 3));
            EXPECT_TRUE(lOutputs[i].Prepare());
        }
        lFaults.Fail(KFileFaults::eRENAME, lNumber, EACCES);
        KOutputFile* const lAll[] = {&lOutputs[0], &lOutputs[1], &lOutputs[2]};
        KOutputFile* const lFailed = KOutputFile::CommitAll(lAll, 3);
        EXPECT_EQ(lFailed, lNumber < 4 ? lAll[lNumber - 1] : nullptr);
        EXPECT_EQ(lFailed != nullptr ? lFailed->GetError() : 0, lNumber < 4 ? EACCES : 0);
        for (KOutputFile* lOutput : lAll)
        {
            EXPECT_FALSE(lOutput->IsOpen());
            EXPECT_EQ(lOutput->Close(), lFailed == nullptr);
        }
        EXPECT_EQ(ReadFile(lDir / "a"), lFailed != nullptr ? "old a" : "new");
        EXPECT_EQ(fs::exists(lDir / "b"), lFailed == nullptr);
        EXPECT_EQ(ReadFile(lDir / "c"), lFailed != nullptr ? "old c" : "new");
        EXPECT_EQ(CountFiles(lDir.Path()), lFailed != nullptr ? 2u : 3u);
    }
}

TEST(KOutputFile, SetFailedMakesCloseFail)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Write("x", 1));
    lOutput.SetFailed(ENOMEM);
    EXPECT_FALSE(lOutput.Close());
    EXPECT_EQ(lOutput.GetError(), ENOMEM);
    EXPECT_EQ(CountFiles(lDir.Path()), 0u);
}

struct KFaultCase
{
    const char*        mWhat;
    KFileFaults::ECall mCall;
    int                mError;
    bool               mFails; ///< False: the output is complete nevertheless.
};

class KOutputFileFaultTest : public testing::TestWithParam<KFaultCase>
{
};

/// Fails call 1, 2, … of its kind, alone or with all later ones, until no call is left to fail: each time the target is the old file or
/// the complete new one, and no other file remains.
TEST_P(KOutputFileFaultTest, OldFileOrWholeNewOne)
{
    const KFaultCase lCase = GetParam();
    for (const bool lAndLater : {false, true})
    {
        if (lAndLater && (lCase.mError == EINTR || lCase.mError == EAGAIN))
        {
            continue;
        }
        // A failed call is often the last one: only a run in which none failed ends the series.
        for (int lNumber = 1, lCalls = 1; lCalls >= lNumber - 1; ++lNumber)
        {
            KTempDir lDir;
            WriteFile(lDir / "old", "old");
            fs::create_symlink("old", lDir / "link");
            KFileFaults lFaults;
            lFaults.Fail(lCase.mCall, lNumber, lCase.mError, lAndLater);
            KOutputFile lOutput;
            bool        lOk = lOutput.Open((lDir / "link").c_str());
            lOk = lOk && WriteInChunks(lOutput, LongText());
            const bool lClosed = lOutput.Close();
            lCalls = lFaults.GetCount(lCase.mCall);
            EXPECT_EQ(lClosed, lOutput.Close());
            EXPECT_TRUE(lOk || !lClosed);
            EXPECT_EQ(lClosed, !lCase.mFails || lCalls < lNumber);
            EXPECT_EQ(lOutput.GetError(), lClosed ? 0 : lCase.mError);
            EXPECT_EQ(ReadFile(lDir / "old"), lClosed ? LongText() : "old") << lNumber;
            EXPECT_EQ(CountFiles(lDir.Path()), 2u) << lNumber;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, KOutputFileFaultTest,
                         testing::Values(KFaultCase{"full disk", KFileFaults::eWRITE, ENOSPC, true},
                                         KFaultCase{"device error", KFileFaults::eWRITE, EIO, true},
                                         KFaultCase{"interrupted write", KFileFaults::eWRITE, EINTR, false},
                                         KFaultCase{"short write", KFileFaults::eWRITE, KFileFaults::kShort, false},
                                         KFaultCase{"open refused", KFileFaults::eOPEN, EACCES, true},
                                         KFaultCase{"interrupted open", KFileFaults::eOPEN, EINTR, false},
                                         KFaultCase{"error on close", KFileFaults::eCLOSE, EIO, true},
                                         KFaultCase{"interrupted close", KFileFaults::eCLOSE, EINTR, false},
                                         KFaultCase{"temporarily full", KFileFaults::eWRITE, EAGAIN, false},
                                         KFaultCase{"stat refused", KFileFaults::eSTAT, EACCES, true},
                                         KFaultCase{"readlink refused", KFileFaults::eREAD_LINK, EACCES, true},
                                         KFaultCase{"read-only", KFileFaults::eACCESS, EACCES, true},
                                         KFaultCase{"chmod refused", KFileFaults::eCHANGE_MODE, EPERM, true},
                                         KFaultCase{"rename refused", KFileFaults::eRENAME, EACCES, true}));

TEST(KOutputFile, AZeroByteWriteIsAnError)
{
    KTempDir lDir;
    KSystemInUse().mWrite = [](int, const void*, size_t) -> std::ptrdiff_t
    {
        return 0;
    };
    KOutputFile lOutput;
    EXPECT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.Write("x", 1)) << "only buffered";
    EXPECT_FALSE(lOutput.Close());
    KSystemReset();
    EXPECT_EQ(lOutput.GetError(), EIO);
    EXPECT_EQ(CountFiles(lDir.Path()), 0u);
}

TEST(KOutputFile, EndlessLinksAreRefused)
{
    // The system itself refuses a loop; one that is created between the calls gets here.
    KTempDir lDir;
    WriteFile(lDir / "real", "old");
    fs::create_symlink("real", lDir / "link");
    KSystemInUse().mReadLink = [](const char*, char* pText, size_t) -> std::ptrdiff_t
    {
        std::memcpy(pText, "link", 4);
        return 4;
    };
    KOutputFile lOutput;
    EXPECT_FALSE(lOutput.Open((lDir / "link").c_str()));
    EXPECT_EQ(lOutput.GetError(), ELOOP);
    KSystemInUse().mReadLink = [](const char*, char* pText, size_t pSize) -> std::ptrdiff_t
    {
        std::memset(pText, 'x', pSize);
        return static_cast<std::ptrdiff_t>(pSize);
    };
    EXPECT_FALSE(lOutput.Open((lDir / "link").c_str()));
    EXPECT_EQ(lOutput.GetError(), ENAMETOOLONG) << "a truncated path would be another file";
    KSystemReset();
    EXPECT_EQ(ReadFile(lDir / "real"), "old");
}

TEST(KOutputFile, CommitAllCommitsNoneWhenOneCannotBePrepared)
{
    KTempDir lDir;
    WriteFile(lDir / "a", "old");
    WriteFile(lDir / "b", "old");
    for (const int lBad : {1, 2})
    {
        KOutputFile lA;
        KOutputFile lB;
        ASSERT_TRUE(lA.Open((lDir / "a").c_str()) && lA.Write("new", 3));
        ASSERT_TRUE(lB.Open((lDir / "b").c_str()) && lB.Write("new", 3));
        KFileFaults lFaults;
        lFaults.Fail(KFileFaults::eWRITE, lBad, ENOSPC);
        KOutputFile* lBoth[] = {&lA, &lB};
        EXPECT_EQ(KOutputFile::CommitAll(lBoth, 2), lBad == 1 ? &lA : &lB);
        EXPECT_EQ(lBoth[lBad - 1]->GetError(), ENOSPC);
        EXPECT_EQ(ReadFile(lDir / "a") + ReadFile(lDir / "b"), "oldold");
        EXPECT_EQ(CountFiles(lDir.Path()), 2u);
    }
}

TEST(KOutputFile, OpenFailsWithoutMemory)
{
    KTempDir     lDir;
    KMemoryWatch lWatch;
    lWatch.FailAfter(0);
    KOutputFile lOutput;
    EXPECT_FALSE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_EQ(lOutput.GetError(), ENOMEM);
    EXPECT_EQ(CountFiles(lDir.Path()), 0u);
    EXPECT_EQ(lWatch.GetBlocks(), 0u);
}

TEST(KOutputFile, FolderRemovedWhileOpen)
{
    KTempDir lDir;
    fs::create_directory(lDir / "sub");
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "sub" / "new").c_str()));
    EXPECT_TRUE(lOutput.Write("x", 1));
    fs::remove_all(lDir / "sub");
    EXPECT_FALSE(lOutput.Close());
    EXPECT_EQ(lOutput.GetError(), ENOENT);
}

TEST(KOutputFile, DeviceIsWrittenDirectly)
{
    KOutputFile lNull;
    ASSERT_TRUE(lNull.Open("/dev/null"));
    EXPECT_TRUE(lNull.Write("x", 1));
    EXPECT_TRUE(lNull.Close());
    EXPECT_TRUE(fs::is_character_file("/dev/null"));

    KOutputFile lFull;
    ASSERT_TRUE(lFull.Open("/dev/full"));
    EXPECT_TRUE(lFull.Write("x", 1)) << "only buffered";
    EXPECT_FALSE(lFull.Close());
    EXPECT_EQ(lFull.GetError(), ENOSPC);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST(KOutputFile, FifoIsWrittenDirectly)
{
    KTempDir lDir;
    ASSERT_EQ(::mkfifo((lDir / "fifo").c_str(), 0600), 0);
    std::string lGot;
    std::thread lReader(
        [&]
        {
            const int lFile = ::open((lDir / "fifo").c_str(), O_RDONLY);
            char      lBuffer[4096];
            for (ssize_t lSize = 0; (lSize = ::read(lFile, lBuffer, sizeof lBuffer)) > 0;)
            {
                lGot.append(lBuffer, static_cast<size_t>(lSize));
            }
            ::close(lFile);
        });
    KOutputFile lOutput;
    EXPECT_TRUE(lOutput.Open((lDir / "fifo").c_str()));
    EXPECT_TRUE(WriteInChunks(lOutput, LongText()));
    EXPECT_TRUE(lOutput.Close());
    lReader.join();
    EXPECT_EQ(lGot, LongText());
    EXPECT_TRUE(fs::is_fifo(lDir / "fifo"));
}

TEST(KOutputFile, DeviceThatCannotBeOpened)
{
    KFileFaults lFaults;
    KOutputFile lOutput;
    lFaults.Fail(KFileFaults::eOPEN, 1, EACCES);
    EXPECT_FALSE(lOutput.Open("/dev/null"));
    EXPECT_EQ(lOutput.GetError(), EACCES);
    lFaults.Fail(KFileFaults::eOPEN, 1, EINTR);
    EXPECT_TRUE(lOutput.Open("/dev/null")) << "an interrupted call is repeated";
    EXPECT_EQ(lFaults.GetCount(KFileFaults::eOPEN), 2);
    EXPECT_TRUE(lOutput.Close());
}

/// Redirects standard output to \p pFile during its lifetime.
class KStandardOutput
{
public:
    explicit KStandardOutput(int pFile) : mKept(::dup(STDOUT_FILENO)) { ::dup2(pFile, STDOUT_FILENO); }
    ~KStandardOutput()
    {
        ::dup2(mKept, STDOUT_FILENO);
        ::close(mKept);
    }

private:
    int mKept;
};

TEST(KOutputFile, DashIsStandardOutputAndStaysOpen)
{
    KTempDir  lDir;
    const int lFile = ::open((lDir / "out").c_str(), O_WRONLY | O_CREAT, 0600);
    bool      lOk = false;
    {
        KStandardOutput lOut(lFile);
        KOutputFile     lOutput;
        lOk = lOutput.Open("-") && lOutput.Write("one ", 4) && lOutput.Close();
        lOk = lOutput.Open("-") && lOutput.Write("two", 3) && lOutput.Close() && lOk;
    }
    ::close(lFile);
    EXPECT_TRUE(lOk);
    EXPECT_EQ(ReadFile(lDir / "out"), "one two");
}

TEST(KOutputFile, RecognizesABrokenPipe)
{
    int lEnds[2];
    ASSERT_EQ(::pipe(lEnds), 0);
    ::close(lEnds[0]);
    void (*lBefore)(int) = std::signal(SIGPIPE, SIG_IGN);
    KOutputFile lOutput;
    bool        lClosed = true;
    {
        KStandardOutput lOut(lEnds[1]);
        lOutput.Open("-");
        lOutput.Write("x", 1);
        lClosed = lOutput.Close();
    }
    std::signal(SIGPIPE, lBefore);
    ::close(lEnds[1]);
    EXPECT_FALSE(lClosed);
    EXPECT_TRUE(lOutput.IsBrokenPipe());
}

TEST(KOutputFile, WaitsForANonBlockingPipe)
{
    int lEnds[2];
    ASSERT_EQ(::pipe(lEnds), 0);
    ASSERT_EQ(::fcntl(lEnds[1], F_SETFL, O_NONBLOCK), 0);
    size_t lBefore = 0;
    for (const std::string lFull(4096, '-'); ::write(lEnds[1], lFull.data(), lFull.size()) > 0;)
    {
        lBefore += lFull.size();
    }
    size_t      lGot = 0;
    std::thread lReader(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // The first write then finds the pipe full.
            char lBuffer[512];
            for (ssize_t lSize = 0; (lSize = ::read(lEnds[0], lBuffer, sizeof lBuffer)) > 0;)
            {
                lGot += static_cast<size_t>(lSize);
            }
        });
    KOutputFile lOutput;
    bool        lClosed = false;
    {
        KStandardOutput lOut(lEnds[1]);
        lOutput.Open("-");
        WriteInChunks(lOutput, LongText());
        lClosed = lOutput.Close();
    }
    ::close(lEnds[1]);
    lReader.join();
    ::close(lEnds[0]);
    EXPECT_TRUE(lClosed);
    EXPECT_EQ(lGot, lBefore + LongText().size());
}

TEST(KOutputFile, StringHoldsWhatWasWritten)
{
    std::string lText = "before";
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.OpenBuffer(&lText));
    EXPECT_EQ(lText, "");
    EXPECT_TRUE(lOutput.Write("abc", 3));
    EXPECT_EQ(lText, "abc");
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(lText, "abc");

    ASSERT_TRUE(lOutput.OpenBuffer(&lText));
    EXPECT_TRUE(lOutput.Write("abc", 3));
    lOutput.Discard();
    EXPECT_EQ(lText, "");
    EXPECT_FALSE(lOutput.Close());
}

TEST(KOutputFile, DestructionLeavesTheStringAlone)
{
    std::string lText;
    {
        KOutputFile lOutput;
        ASSERT_TRUE(lOutput.OpenBuffer(&lText));
        EXPECT_TRUE(lOutput.Write("abc", 3));
    }
    EXPECT_EQ(lText, "abc");
    KOutputFile lOutput;
    {
        std::string lShort;
        ASSERT_TRUE(lOutput.OpenBuffer(&lShort));
        EXPECT_TRUE(lOutput.Write("abc", 3));
    }
}

TEST(KOutputFile, RemovePendingRemovesTemporaryFiles)
{
    KTempDir lDir;
    WriteFile(lDir / "a", "old");
    KOutputFile lA;
    KOutputFile lB;
    KOutputFile lDone;
    ASSERT_TRUE(lA.Open((lDir / "a").c_str()));
    ASSERT_TRUE(lB.Open((lDir / "b").c_str()));
    ASSERT_TRUE(lDone.Open((lDir / "done").c_str()));
    EXPECT_TRUE(lDone.Close());
    EXPECT_EQ(CountFiles(lDir.Path()), 4u);
    KOutputFile::RemovePending();
    EXPECT_EQ(CountFiles(lDir.Path()), 2u);
    EXPECT_EQ(ReadFile(lDir / "a"), "old");
    EXPECT_FALSE(lA.Close()) << "its temporary file is gone";
    EXPECT_EQ(ReadFile(lDir / "a"), "old");
}

TEST(KOutputFile, MoreOutputsThanPendingSlotsAreWritten)
{
    KTempDir                                  lDir;
    std::vector<std::unique_ptr<KOutputFile>> lOutputs;
    for (int i = 0; i < 600; ++i)
    {
        lOutputs.push_back(std::make_unique<KOutputFile>());
        ASSERT_TRUE(lOutputs.back()->Open((lDir / std::to_string(i)).c_str()));
        ASSERT_TRUE(lOutputs.back()->Prepare());
    }
    for (const auto& lOutput : lOutputs)
    {
        EXPECT_TRUE(lOutput->Close());
    }
    EXPECT_EQ(CountFiles(lDir.Path()), 600u);
}

TEST(KOutputFile, LeftoversOfAKilledProcessDoNotMatter)
{
    KTempDir lDir;
    WriteFile(lDir / "old", "old");
    const pid_t lChild = ::fork();
    ASSERT_GE(lChild, 0);
    if (lChild == 0)
    {
        KOutputFile lOutput;
        lOutput.Open((lDir / "old").c_str());
        lOutput.Write("new", 3);
        ::raise(SIGKILL);
    }
    int lStatus = 0;
    ASSERT_EQ(::waitpid(lChild, &lStatus, 0), lChild);
    EXPECT_TRUE(WIFSIGNALED(lStatus));
    EXPECT_EQ(ReadFile(lDir / "old"), "old");

    // The next temporary name may be in use.
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "old").c_str()));
    EXPECT_TRUE(lOutput.Write("new", 3));
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "old"), "new");
}

TEST(KOutputFile, SkipsTemporaryNamesInUse)
{
    KTempDir    lDir;
    KFileFaults lFaults;
    lFaults.Fail(KFileFaults::eOPEN, 1, EEXIST);
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_EQ(lFaults.GetCount(KFileFaults::eOPEN), 2);
    EXPECT_TRUE(lOutput.Close());
    lFaults.Fail(KFileFaults::eOPEN, 1, EEXIST, true);
    EXPECT_FALSE(lOutput.Open((lDir / "new").c_str())) << "but not forever";
    EXPECT_EQ(lOutput.GetError(), EEXIST);
}

} // namespace

} // namespace qextest
