#include <kbaselib/kbase/ksystem.h>

#include <tests/faults/faultoperations.h>
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

// Runs every operation on paths that are not regular files in a writable folder.

using namespace qexsdk;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

constexpr int kPathFrames = 300;

class KPathTest : public testing::TestWithParam<KFaultOperation>
{
protected:
    KPathTest() : mFiles(kPathFrames), mStage(mFiles)
    {
        if (GetParam().mNeedsMotion)
        {
            mStage.ImportMotion();
        }
        if (!GetParam().mOutputs.empty())
        {
            EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
            mNewFiles = mFiles.GetOutputs();
            mFiles.ResetOutputs();
        }
        mOldFiles = mFiles.GetOutputs();
    }

    ~KPathTest() override
    {
        ::chmod(mFiles.OutFolder().c_str(), 0755);
        KSystemReset();
    }

    /// Runs the operation and expects it to fail with \p pError, naming one of \p pPaths.
    void ExpectFailure(int pError, const std::vector<std::string>& pPaths)
    {
        EXPECT_FALSE(GetParam().mRun(mStage));
        bool lNamesFile = false;
        for (const std::string& lPath : pPaths)
        {
            lNamesFile = lNamesFile || mStage.mErrors.find(lPath) != std::string::npos;
        }
        EXPECT_TRUE(lNamesFile) << mStage.mErrors;
        EXPECT_NE(mStage.mErrors.find(std::strerror(pError)), std::string::npos) << mStage.mErrors;
    }

    /// Runs an operation that needs a file with something else in its place, and expects it to refuse that.
    void ExpectRefusal()
    {
        EXPECT_FALSE(GetParam().mRun(mStage));
        EXPECT_NE(mStage.mErrors.find("is written to a file, not to " + Outputs().front()), std::string::npos) << mStage.mErrors;
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

    /// Lets an unprivileged user write the command line's error file.
    void OpenInputFolder() const
    {
        fs::remove(mFiles.In("stderr"));
        ASSERT_EQ(::chmod(fs::path(mFiles.In("a")).parent_path().c_str(), 0777), 0);
    }

    KFaultFiles                        mFiles;
    KStage                             mStage;
    std::map<std::string, std::string> mOldFiles; ///< Output files before the operation.
    std::map<std::string, std::string> mNewFiles; ///< Output files after it.
};

/// Operations that write.
class KOutputPathTest : public KPathTest
{
};

/// Operations that read.
class KInputPathTest : public KPathTest
{
};

TEST_P(KOutputPathTest, FullDevice)
{
    for (const std::string& lPath : Outputs())
    {
        SCOPED_TRACE(lPath);
        mFiles.ResetOutputs();
        fs::remove(lPath);
        fs::create_symlink("/dev/full", lPath);
        GetParam().mNeedsFile ? ExpectRefusal() : ExpectFailure(ENOSPC, {lPath});
        EXPECT_TRUE(fs::is_symlink(lPath));
        fs::remove(lPath);
        WriteFile(lPath, "old");
        ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
    }
}

/// Mounts a tmpfs of \p pPages pages at \p pFolder. False when that is not permitted.
bool MountSmall(const fs::path& pFolder, int pPages)
{
    const std::string lOptions = "nr_blocks=" + std::to_string(pPages);
    return ::mount("tmpfs", pFolder.c_str(), "tmpfs", 0, lOptions.c_str()) == 0;
}

/// Enters a mount namespace of its own, so that no other process sees later mounts. False when that is not permitted.
bool UnshareMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Runs \p pCheck in a child process; its failed expectations fail this test. \return false when \p pCheck returns false
template <typename TCheck>
bool RunInChild(const TCheck& pCheck)
{
    std::fflush(stdout);
    const pid_t lChild = ::fork();
    if (lChild == 0)
    {
        const bool lRan = pCheck();
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : lRan ? 0 : 77);
    }
    int lStatus = 0;
    EXPECT_EQ(::waitpid(lChild, &lStatus, 0), lChild);
    EXPECT_TRUE(WIFEXITED(lStatus) && (WEXITSTATUS(lStatus) == 0 || WEXITSTATUS(lStatus) == 77)) << lStatus;
    return WEXITSTATUS(lStatus) != 77;
}

constexpr size_t kPageSize = 4096;
size_t           sFreeBytes = 0; ///< What the next writes leave free on a simulated device.

/// Writes as much as fits on the simulated device, as the system does on a full one.
template <typename TWrite>
ssize_t WriteToSmallDevice(size_t pSize, const TWrite& pWrite)
{
    if (sFreeBytes == 0 && pSize > 0)
    {
        errno = ENOSPC;
        return -1;
    }
    const ssize_t lWritten = pWrite(std::min(pSize, sFreeBytes));
    sFreeBytes -= static_cast<size_t>(std::max<ssize_t>(lWritten, 0));
    return lWritten;
}

/// Sends all writes to the simulated device.
void SimulateSmallDevice()
{
    KSystemInUse().mWrite = [](int pFile, const void* pData, size_t pSize)
    {
        return WriteToSmallDevice(pSize, [=](size_t pFree) { return ::write(pFile, pData, pFree); });
    };
    KSystemInUse().mWriteAt = [](int pFile, const void* pData, size_t pSize, uint64_t pAt)
    {
        return WriteToSmallDevice(pSize, [=](size_t pFree) { return ::pwrite(pFile, pData, pFree, static_cast<off_t>(pAt)); });
    };
}

TEST_P(KOutputPathTest, SimulatedDeviceFromFullToLargeEnough)
{
    bool lOk = false;
    int  lFailures = 0;
    for (size_t lPages = 0; !lOk && lPages < 1000 && !HasFailure(); lPages += 1 + static_cast<size_t>(lFailures) / 8)
    {
        sFreeBytes = lPages * kPageSize;
        SimulateSmallDevice();
        lOk = GetParam().mRun(mStage);
        KSystemReset();
        lFailures += lOk ? 0 : 1;
        EXPECT_TRUE(lOk || mStage.mErrors.find(std::strerror(ENOSPC)) != std::string::npos) << mStage.mErrors;
        ExpectSameFiles(mFiles.GetOutputs(), lOk ? mNewFiles : mOldFiles);
    }
    EXPECT_TRUE(lOk);
    EXPECT_GT(lFailures, 0);
}

/// Grows a real device in steps, from full with the old files to large enough for the new ones, where the system permits mounting one;
/// elsewhere the simulated one above has to do.
TEST_P(KOutputPathTest, DeviceFromFullToLargeEnough)
{
    const auto lCheck = [this]
    {
        if (!UnshareMounts())
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
            for (const auto& [lName, lBytes] : mOldFiles)
            {
                WriteFile(mFiles.Out(lName.c_str()), lBytes);
            }
            lOk = GetParam().mRun(mStage);
            lFailures += lOk ? 0 : 1;
            EXPECT_TRUE(lOk || mStage.mErrors.find(std::strerror(ENOSPC)) != std::string::npos) << mStage.mErrors;
            ExpectSameFiles(mFiles.GetOutputs(), lOk ? mNewFiles : mOldFiles);
            EXPECT_EQ(::umount(mFiles.OutFolder().c_str()), 0);
        }
        EXPECT_TRUE(lOk);
        EXPECT_GT(lFailures, 0);
        return true;
    };
    const bool lIsPermitted = RunInChild([] { return UnshareMounts(); });
    EXPECT_EQ(RunInChild(lCheck), lIsPermitted);
}

fs::path sRemovedFolder; ///< Folder that the next write removes.

TEST_P(KOutputPathTest, FolderRemovedDuringWrite)
{
    sRemovedFolder = mFiles.OutFolder();
    KSystemInUse().mWrite = [](int pFile, const void* pData, size_t pSize)
    {
        fs::remove_all(sRemovedFolder);
        return ::write(pFile, pData, pSize);
    };
    KSystemInUse().mWriteAt = [](int pFile, const void* pData, size_t pSize, uint64_t pAt)
    {
        fs::remove_all(sRemovedFolder);
        return ::pwrite(pFile, pData, pSize, static_cast<off_t>(pAt));
    };
    ExpectFailure(ENOENT, Outputs());
    KSystemReset();
    EXPECT_FALSE(fs::exists(mFiles.OutFolder()));
    mFiles.ResetOutputs();
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
    ExpectSameFiles(mFiles.GetOutputs(), mNewFiles);
}

TEST_P(KOutputPathTest, ReadOnlyFile)
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
        ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
    }
}

TEST_P(KOutputPathTest, ReadOnlyFolder)
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
    ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
}

/// The target of a link is replaced or created in its own folder; the link stays.
TEST_P(KOutputPathTest, SymbolicLinks)
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
            EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
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
                EXPECT_TRUE(lFiles[lName] == mNewFiles[lName]) << lName;
            }
            ExpectSameFiles(mFiles.GetOutputs(), mNewFiles);
        }
    }
}

TEST_P(KOutputPathTest, Fifos)
{
    if (GetParam().mNeedsFile)
    {
        fs::remove(Outputs().front());
        ASSERT_EQ(::mkfifo(Outputs().front().c_str(), 0600), 0);
        std::string lGot;
        std::thread lReader([&] { lGot = ReadFile(Outputs().front()); });
        ExpectRefusal();
        lReader.join();
        EXPECT_EQ(lGot, "");
        return;
    }
    std::vector<std::thread> lReaders;
    std::vector<std::string> lGot(GetParam().mOutputs.size());
    for (size_t i = 0; i < lGot.size(); ++i)
    {
        const std::string lPath = Outputs()[i];
        fs::remove(lPath);
        ASSERT_EQ(::mkfifo(lPath.c_str(), 0600), 0);
        lReaders.emplace_back([&lGot, i, lPath] { lGot[i] = ReadFile(lPath); });
    }
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
    for (std::thread& lReader : lReaders)
    {
        lReader.join();
    }
    for (size_t i = 0; i < lGot.size(); ++i)
    {
        EXPECT_TRUE(lGot[i] == mNewFiles[GetParam().mOutputs[i]]) << Outputs()[i];
        EXPECT_TRUE(fs::is_fifo(Outputs()[i]));
        fs::remove(Outputs()[i]);
        WriteFile(Outputs()[i], "old");
    }
    ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
}

TEST_P(KOutputPathTest, Directories)
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
        ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
    }
}

TEST_P(KInputPathTest, MissingAndDirectories)
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
            ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
            fs::remove(lPath);
            WriteFile(lPath, lBytes);
        }
    }
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
}

TEST_P(KInputPathTest, UnreadableFile)
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
    ExpectSameFiles(mFiles.GetOutputs(), mOldFiles);
}

/// Reading from a FIFO gives the same result as from a file. Only a glTF file's buffer has to be a file.
TEST_P(KInputPathTest, Fifos)
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
    EXPECT_TRUE(GetParam().mRun(mStage)) << mStage.mErrors;
    for (std::thread& lWriter : lWriters)
    {
        lWriter.join();
    }
    ExpectSameFiles(mFiles.GetOutputs(), GetParam().mOutputs.empty() ? mOldFiles : mNewFiles);
}

TEST(KQexGltfBufferTest, FifoIsRefusedWithoutBlocking)
{
    const KFaultFiles lFiles(kPathFrames);
    KStage            lStage(lFiles);
    fs::remove(lFiles.In("a.bin"));
    ASSERT_EQ(::mkfifo(lFiles.In("a.bin").c_str(), 0600), 0);
    KQexGltfReadResult lResult;
    EXPECT_FALSE(lStage.mGltf.Read(lFiles.In("a.gltf"), lStage.mScene.get(), {}, lResult));
    ASSERT_EQ(lStage.mGltf.GetMessages().size(), 1u);
    EXPECT_NE(lStage.mGltf.GetMessages()[0].mText.find(lFiles.In("a.bin")), std::string::npos);
}

std::vector<KFaultOperation> ReadersOrWriters(bool pWriters)
{
    std::vector<KFaultOperation> lOperations;
    for (const KFaultOperation& lOperation : FaultOperations())
    {
        if (!(pWriters ? lOperation.mOutputs : lOperation.mInputs).empty())
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

INSTANTIATE_TEST_SUITE_P(Operations, KOutputPathTest, testing::ValuesIn(ReadersOrWriters(true)), NameOf);
INSTANTIATE_TEST_SUITE_P(Operations, KInputPathTest, testing::ValuesIn(ReadersOrWriters(false)), NameOf);

} // namespace
