#include <kbaselib/kbase/kfilecalls.h>

#include <tests/faults/faultstage.h>
#include <tests/support/asnobody.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

// Every operation at places that are not plain files in a plain folder.

using namespace qexsdk;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

constexpr int kPlaceFrames = 300;

class KPlaceTest : public testing::TestWithParam<KFaultOperation>
{
protected:
    KPlaceTest() : mFiles(kPlaceFrames), mStage(mFiles)
    {
        if (GetParam().mHasMotion)
        {
            mStage.ImportMotion();
        }
        if (!GetParam().mOutputs.empty())
        {
            EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
            mNew = mFiles.GetOutputs();
            mFiles.ResetOutputs();
        }
        mOld = mFiles.GetOutputs();
    }

    ~KPlaceTest() override
    {
        ::chmod(mFiles.OutFolder().c_str(), 0755);
        KFileCallsReset();
    }

    /// Runs the operation, which has to fail because of \p pError at one of \p pPaths.
    void ExpectFailure(int pError, const std::vector<std::string>& pPaths)
    {
        EXPECT_FALSE(GetParam().mRun(mStage));
        bool lNamesFile = false;
        for (const std::string& lPath : pPaths)
        {
            lNamesFile = lNamesFile || mStage.mTold.find(lPath) != std::string::npos;
        }
        EXPECT_TRUE(lNamesFile) << mStage.mTold;
        EXPECT_NE(mStage.mTold.find(std::strerror(pError)), std::string::npos) << mStage.mTold;
    }

    std::vector<std::string> Outputs() const
    {
        std::vector<std::string> lPaths;
        for (const char* lName : GetParam().mOutputs)
        {
            lPaths.push_back(mFiles.Out(lName));
        }
        return lPaths;
    }

    std::vector<std::string> Inputs() const
    {
        std::vector<std::string> lPaths;
        for (const char* lName : GetParam().mInputs)
        {
            lPaths.push_back(mFiles.In(lName));
        }
        return lPaths;
    }

    /// Lets a user without rights write what the command line tells.
    void OpenInputFolder() const
    {
        fs::remove(mFiles.In("told"));
        ASSERT_EQ(::chmod(fs::path(mFiles.In("a")).parent_path().c_str(), 0777), 0);
    }

    KFaultFiles                        mFiles;
    KStage                             mStage;
    std::map<std::string, std::string> mOld; ///< The folder of outputs as it was.
    std::map<std::string, std::string> mNew; ///< The same once the operation has run.
};

/// All that write.
class KOutputPlaceTest : public KPlaceTest
{
};

/// All that read.
class KInputPlaceTest : public KPlaceTest
{
};

TEST_P(KOutputPlaceTest, FullDevice)
{
    for (const std::string& lPath : Outputs())
    {
        SCOPED_TRACE(lPath);
        mFiles.ResetOutputs();
        fs::remove(lPath);
        fs::create_symlink("/dev/full", lPath);
        ExpectFailure(ENOSPC, {lPath});
        EXPECT_TRUE(fs::is_symlink(lPath));
        fs::remove(lPath);
        WriteFile(lPath, "old");
        ExpectSameFiles(mFiles.GetOutputs(), mOld);
    }
}

/// Mounts a file system of \p pPages pages of memory at \p pFolder, which this process alone sees. False when that is not permitted.
bool MountSmall(const fs::path& pFolder, int pPages)
{
    const std::string lOptions = "nr_blocks=" + std::to_string(pPages);
    return ::mount("tmpfs", pFolder.c_str(), "tmpfs", 0, lOptions.c_str()) == 0;
}

/// Leaves the others' name space of mounts. False when that is not permitted.
bool LeaveMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Runs \p pCheck in a process of its own; its failed expectations count here. \return false when it says that it could not.
template <typename TCheck>
bool InChild(const TCheck& pCheck)
{
    std::fflush(stdout);
    const pid_t lChild = ::fork();
    if (lChild == 0)
    {
        const bool lCould = pCheck();
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : lCould ? 0 : 77);
    }
    int lStatus = 0;
    EXPECT_EQ(::waitpid(lChild, &lStatus, 0), lChild);
    EXPECT_TRUE(WIFEXITED(lStatus) && (WEXITSTATUS(lStatus) == 0 || WEXITSTATUS(lStatus) == 77)) << lStatus;
    return WEXITSTATUS(lStatus) != 77;
}

/// From no page free behind the old files to enough for the new ones: a page more each time.
TEST_P(KOutputPlaceTest, DeviceFromFullToNearlyFullToRoomEnough)
{
    const auto lCheck = [this]
    {
        if (!LeaveMounts())
        {
            return false;
        }
        int  lFailures = 0;
        bool lOk = false;
        for (int lPages = 7; !lOk && lPages < 1000 && !HasFailure(); lPages += 1 + lFailures / 8)
        {
            if (!MountSmall(mFiles.OutFolder(), lPages))
            {
                return false;
            }
            for (const auto& [lName, lBytes] : mOld)
            {
                WriteFile(mFiles.Out(lName.c_str()), lBytes);
            }
            lOk = GetParam().mRun(mStage);
            lFailures += lOk ? 0 : 1;
            EXPECT_TRUE(lOk || mStage.mTold.find(std::strerror(ENOSPC)) != std::string::npos) << mStage.mTold;
            ExpectSameFiles(mFiles.GetOutputs(), lOk ? mNew : mOld);
            EXPECT_EQ(::umount(mFiles.OutFolder().c_str()), 0);
        }
        EXPECT_TRUE(lOk);
        EXPECT_GT(lFailures, 0);
        return true;
    };
    if (!InChild(lCheck))
    {
        GTEST_SKIP() << "mounting is not permitted here";
    }
}

fs::path sGoingAway; ///< The folder that the next write takes away.

TEST_P(KOutputPlaceTest, FolderThatGoesAwayWhileItIsWrittenTo)
{
    sGoingAway = mFiles.OutFolder();
    KFileCallsInUse().mWrite = [](int pFile, const void* pData, size_t pSize)
    {
        fs::remove_all(sGoingAway);
        return ::write(pFile, pData, pSize);
    };
    ExpectFailure(ENOENT, Outputs());
    KFileCallsReset();
    EXPECT_FALSE(fs::exists(mFiles.OutFolder()));
    mFiles.ResetOutputs();
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
    ExpectSameFiles(mFiles.GetOutputs(), mNew);
}

TEST_P(KOutputPlaceTest, FileThatMayNotBeWritten)
{
    OpenInputFolder();
    ASSERT_EQ(::chmod(mFiles.OutFolder().c_str(), 0777), 0);
    for (const std::string& lPath : Outputs())
    {
        SCOPED_TRACE(lPath);
        mFiles.ResetOutputs();
        ASSERT_EQ(::chmod(mFiles.OutFolder().c_str(), 0777), 0);
        for (const std::string& lEach : Outputs())
        {
            ASSERT_EQ(::chmod(lEach.c_str(), lEach == lPath ? 0444 : 0666), 0);
        }
        EXPECT_TRUE(AsNobody(
            [&]
            {
                ExpectFailure(EACCES, {lPath});
                return !HasFailure();
            }));
        ExpectSameFiles(mFiles.GetOutputs(), mOld);
    }
}

TEST_P(KOutputPlaceTest, FolderThatMayNotBeWritten)
{
    OpenInputFolder();
    for (const std::string& lPath : Outputs())
    {
        ASSERT_EQ(::chmod(lPath.c_str(), 0666), 0);
    }
    ASSERT_EQ(::chmod(mFiles.OutFolder().c_str(), 0555), 0);
    EXPECT_TRUE(AsNobody(
        [&]
        {
            ExpectFailure(EACCES, Outputs());
            return !HasFailure();
        }));
    ExpectSameFiles(mFiles.GetOutputs(), mOld);
}

/// The file that a link points at is replaced or made, in its own folder; the link stays.
TEST_P(KOutputPlaceTest, SymbolicLinks)
{
    for (const bool lIsDangling : {false, true})
    {
        for (const bool lIsRelative : {false, true})
        {
            mFiles.ResetOutputs();
            const KTempDir lElsewhere;
            for (const char* lName : GetParam().mOutputs)
            {
                const fs::path lTarget = lElsewhere / lName;
                fs::remove(mFiles.Out(lName));
                fs::create_symlink(lIsRelative ? lTarget.lexically_relative(mFiles.OutFolder()) : lTarget, mFiles.Out(lName));
                if (!lIsDangling)
                {
                    WriteFile(lTarget, "old");
                }
            }
            EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
            std::map<std::string, std::string> lFiles;
            for (const auto& lEntry : fs::directory_iterator(lElsewhere.Path()))
            {
                EXPECT_TRUE(lEntry.is_regular_file() && !lEntry.is_symlink());
                lFiles[lEntry.path().filename().string()] = ReadFile(lEntry.path());
            }
            EXPECT_EQ(lFiles.size(), GetParam().mOutputs.size());
            for (const char* lName : GetParam().mOutputs)
            {
                EXPECT_TRUE(fs::is_symlink(mFiles.Out(lName)));
                EXPECT_TRUE(lFiles[lName] == mNew[lName]) << lName;
            }
            ExpectSameFiles(mFiles.GetOutputs(), mNew);
        }
    }
}

TEST_P(KOutputPlaceTest, Fifos)
{
    std::vector<std::thread> lReaders;
    std::vector<std::string> lGot(GetParam().mOutputs.size());
    for (size_t i = 0; i < lGot.size(); ++i)
    {
        const std::string lPath = Outputs()[i];
        fs::remove(lPath);
        ASSERT_EQ(::mkfifo(lPath.c_str(), 0600), 0);
        lReaders.emplace_back([&lGot, i, lPath] { lGot[i] = ReadFile(lPath); });
    }
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
    for (std::thread& lReader : lReaders)
    {
        lReader.join();
    }
    for (size_t i = 0; i < lGot.size(); ++i)
    {
        EXPECT_TRUE(lGot[i] == mNew[GetParam().mOutputs[i]]) << Outputs()[i];
        EXPECT_TRUE(fs::is_fifo(Outputs()[i]));
        fs::remove(Outputs()[i]);
        WriteFile(Outputs()[i], "old");
    }
    ExpectSameFiles(mFiles.GetOutputs(), mOld);
}

TEST_P(KOutputPlaceTest, Directories)
{
    for (const std::string& lPath : Outputs())
    {
        SCOPED_TRACE(lPath);
        mFiles.ResetOutputs();
        fs::remove(lPath);
        fs::create_directory(lPath);
        ExpectFailure(EISDIR, {lPath});
        EXPECT_TRUE(fs::is_directory(lPath));
        fs::remove(lPath);
        WriteFile(lPath, "old");
        ExpectSameFiles(mFiles.GetOutputs(), mOld);
    }
}

TEST_P(KInputPlaceTest, MissingAndDirectories)
{
    for (const std::string& lPath : Inputs())
    {
        for (const bool lIsDirectory : {false, true})
        {
            SCOPED_TRACE(lPath);
            const std::string lBytes = ReadFile(lPath);
            fs::remove(lPath);
            if (lIsDirectory)
            {
                fs::create_directory(lPath);
            }
            ExpectFailure(lIsDirectory ? EISDIR : ENOENT, {lPath});
            ExpectSameFiles(mFiles.GetOutputs(), mOld);
            fs::remove(lPath);
            WriteFile(lPath, lBytes);
        }
    }
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
}

TEST_P(KInputPlaceTest, FileThatMayNotBeRead)
{
    OpenInputFolder();
    for (const std::string& lPath : Inputs())
    {
        ASSERT_EQ(::chmod(lPath.c_str(), 0), 0);
        EXPECT_TRUE(AsNobody(
            [&]
            {
                ExpectFailure(EACCES, {lPath});
                return !HasFailure();
            }));
        ASSERT_EQ(::chmod(lPath.c_str(), 0644), 0);
    }
    ExpectSameFiles(mFiles.GetOutputs(), mOld);
}

/// What comes through a FIFO makes what comes from a file; only the numbers beside a glTF file have to be a file.
TEST_P(KInputPlaceTest, Fifos)
{
    std::vector<std::thread> lWriters;
    for (const std::string& lPath : Inputs())
    {
        if (fs::path(lPath).extension() != ".bin")
        {
            const std::string lBytes = ReadFile(lPath);
            fs::remove(lPath);
            ASSERT_EQ(::mkfifo(lPath.c_str(), 0600), 0);
            lWriters.emplace_back([lPath, lBytes] { WriteFile(lPath, lBytes); });
        }
    }
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mTold;
    for (std::thread& lWriter : lWriters)
    {
        lWriter.join();
    }
    ExpectSameFiles(mFiles.GetOutputs(), GetParam().mOutputs.empty() ? mOld : mNew);
}

TEST(KQexGltfPlace, NumbersOfAModelFromAFifoAreRefusedAtOnce)
{
    const KFaultFiles lFiles(kPlaceFrames);
    KStage            lStage(lFiles);
    fs::remove(lFiles.In("a.bin"));
    ASSERT_EQ(::mkfifo(lFiles.In("a.bin").c_str(), 0600), 0);
    KQexGltfReadResult lResult;
    EXPECT_FALSE(lStage.mGltf.Read(lFiles.In("a.gltf"), lStage.mScene.get(), {}, lResult));
    ASSERT_EQ(lStage.mGltf.GetMessages().size(), 1u);
    EXPECT_NE(lStage.mGltf.GetMessages()[0].mText.find(lFiles.In("a.bin")), std::string::npos);
}

std::vector<KFaultOperation> Those(bool pWrite)
{
    std::vector<KFaultOperation> lOperations;
    for (const KFaultOperation& lOperation : FaultOperations())
    {
        if (!(pWrite ? lOperation.mOutputs : lOperation.mInputs).empty())
        {
            lOperations.push_back(lOperation);
        }
    }
    return lOperations;
}

std::string NameOf(const testing::TestParamInfo<KFaultOperation>& pInfo)
{
    return pInfo.param.mName;
}

INSTANTIATE_TEST_SUITE_P(Operations, KOutputPlaceTest, testing::ValuesIn(Those(true)), NameOf);
INSTANTIATE_TEST_SUITE_P(Operations, KInputPlaceTest, testing::ValuesIn(Those(false)), NameOf);

} // namespace
