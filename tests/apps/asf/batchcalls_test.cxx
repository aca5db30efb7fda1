#include <tests/apps/asf/batchworkertest.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// Runs in which one call of the system fails, the smCall-th of its kind.
class KBatchCallTest : public KBatchWorkerTest
{
protected:
    static bool IsTheOne()
    {
        const bool lIs = ++smCalls == smCall;
        errno = lIs ? EIO : errno;
        return lIs;
    }

    void SetUp() override
    {
        KBatchWorkerTest::SetUp();
        Expect("in -o whole --to bvh -q", 0, "");
    }

    /// Each output is the one of a good run or missing, and the same call again completes the run.
    void ExpectGoesOn()
    {
        for (const auto& [lName, lBytes] : Tree("out"))
        {
            EXPECT_EQ(lBytes, Text("whole/" + lName)) << lName;
        }
        Expect("in -o out --to bvh -q", 0, "");
        ExpectWhole("out");
        Expect("--gather in -o out -q", 0, "");
        fs::remove_all(mFolder / "out");
    }

    static inline std::atomic<int> smCalls{0};
    static inline int              smCall = 0;

    static inline std::ptrdiff_t (*smWrite)(int, const void*, size_t) = nullptr; ///< The system's own.
};

TEST_F(KBatchCallTest, RenamesThatFail)
{
    for (smCall = 1; smCall <= static_cast<int>(kMotions); ++smCall)
    {
        smCalls = 0;
        qexsdk::KSystemInUse().mRename = [](const char* pFrom, const char* pTo)
        {
            return IsTheOne() ? -1 : std::rename(pFrom, pTo);
        };
        RunWith(qexsdk::KSystemInUse().mRun, 3);
        EXPECT_NE(mErrors.find(".bvh cannot be written: Input/output error\n"), std::string::npos) << mErrors;
        ExpectGoesOn();
    }
}

TEST_F(KBatchCallTest, ManifestsThatCannotBeWritten)
{
    for (smCall = 1; smCall <= static_cast<int>(kMotions); ++smCall)
    {
        smCalls = 0;
        smWrite = qexsdk::KSystemInUse().mWrite;
        // A part of the line is written.
        qexsdk::KSystemInUse().mWrite = [](int pFile, const void* pData, size_t pSize) -> std::ptrdiff_t
        {
            const bool lIsLine = pSize > 10 && std::memcmp(pData, "{\"schema\"", 9) == 0;
            if (lIsLine && IsTheOne())
            {
                smWrite(pFile, pData, pSize / 2);
                errno = ENOSPC;
                return -1;
            }
            return smWrite(pFile, pData, pSize);
        };
        RunWith(qexsdk::KSystemInUse().mRun, 3);
        EXPECT_NE(mErrors.find("the manifest cannot be written: No space left on device\n"), std::string::npos) << mErrors;
        ExpectGoesOn();
    }
}

} // namespace
