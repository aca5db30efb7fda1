#include <kbaselib/kbase/koutputfile.h>

#include <tests/support/filefaults.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

/// The same calls for a file and a string.
bool WriteParts(KOutputFile& pOutput)
{
    return pOutput.Write("01234", 5) && pOutput.WriteAt(8, "89", 2) && pOutput.WriteAt(1, "abc", 3) && pOutput.Write("end", 3) &&
           pOutput.WriteAt(12, "D!", 2);
}

const std::string kParts("0abc4\0\0\0"
                         "89enD!",
                         14);

TEST(KOutputFileAt, WritesAnywhereInAFile)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.CanWriteAt());
    EXPECT_TRUE(WriteParts(lOutput));
    EXPECT_EQ(lOutput.GetSize(), kParts.size());
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "new"), kParts);
    EXPECT_FALSE(lOutput.CanWriteAt());
    EXPECT_FALSE(lOutput.WriteAt(0, "x", 1)) << "closed";
    EXPECT_TRUE(lOutput.Close());
}

TEST(KOutputFileAt, WritesAnywhereInAString)
{
    std::string lText;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.OpenBuffer(&lText));
    EXPECT_TRUE(lOutput.CanWriteAt());
    EXPECT_TRUE(WriteParts(lOutput));
    EXPECT_EQ(lText, kParts);
    EXPECT_EQ(lOutput.GetSize(), kParts.size());
    EXPECT_FALSE(lOutput.WriteAt(uint64_t(1) << 62, "x", 1));
    EXPECT_EQ(lOutput.GetError(), ENOMEM);
    EXPECT_FALSE(lOutput.Close());
}

TEST(KOutputFileAt, BytesAfterFourGigabytesNeedNoDisk)
{
    constexpr uint64_t kFar = uint64_t(5) << 30;
    KTempDir           lDir;
    KOutputFile        lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_TRUE(lOutput.WriteAt(kFar, "x", 1));
    EXPECT_TRUE(lOutput.Close());
    EXPECT_EQ(fs::file_size(lDir / "new"), kFar + 1);
}

TEST(KOutputFileAt, APositionThatNoFileHasIsRefused)
{
    KTempDir    lDir;
    KOutputFile lOutput;
    ASSERT_TRUE(lOutput.Open((lDir / "new").c_str()));
    EXPECT_FALSE(lOutput.WriteAt(std::numeric_limits<uint64_t>::max(), "x", 1));
    EXPECT_EQ(lOutput.GetError(), EFBIG);
    EXPECT_FALSE(lOutput.Close());
    EXPECT_FALSE(fs::exists(lDir / "new"));
}

TEST(KOutputFileAt, WhatTakesBytesInOrderOnlyRefuses)
{
    for (const char* lPath : {"/dev/null", "-"})
    {
        KOutputFile lOutput;
        ASSERT_TRUE(lOutput.Open(lPath));
        EXPECT_FALSE(lOutput.CanWriteAt());
        EXPECT_FALSE(lOutput.WriteAt(0, "x", 1));
        EXPECT_EQ(lOutput.GetError(), ESPIPE);
        EXPECT_FALSE(lOutput.Close());
    }
}

TEST(KOutputFileAt, WritingWithoutOpeningFails)
{
    KOutputFile lOutput;
    EXPECT_FALSE(lOutput.CanWriteAt());
    EXPECT_FALSE(lOutput.WriteAt(0, "x", 1));
    EXPECT_FALSE(lOutput.Close());
}

struct KAtFault
{
    const char* mName;
    int         mError;
    bool        mFails;
};

// Each write fails in turn: the target is the old file or the complete new one.
TEST(KOutputFileAt, OldFileOrWholeNewOne)
{
    for (const KAtFault& lFault : {KAtFault{"full disk", ENOSPC, true}, KAtFault{"device error", EIO, true},
                                   KAtFault{"interrupted", EINTR, false}, KAtFault{"short", KFileFaults::kShort, false}})
    {
        int lNumber = 1;
        for (int lCalls = 1; lCalls >= lNumber - 1; ++lNumber)
        {
            KTempDir lDir;
            WriteFile(lDir / "old", "old");
            KFileFaults lFaults;
            lFaults.Fail(KFileFaults::eWRITE, lNumber, lFault.mError);
            KOutputFile lOutput;
            ASSERT_TRUE(lOutput.Open((lDir / "old").c_str()));
            const bool lOk = WriteParts(lOutput);
            const bool lClosed = lOutput.Close();
            lCalls = lFaults.GetCount(KFileFaults::eWRITE);
            EXPECT_EQ(lOk, lClosed) << lFault.mName;
            EXPECT_EQ(lClosed, !lFault.mFails || lCalls < lNumber) << lFault.mName;
            EXPECT_EQ(ReadFile(lDir / "old"), lClosed ? kParts : "old") << lFault.mName << lNumber;
        }
        EXPECT_GT(lNumber, 4);
    }
}

TEST(KOutputFileAt, AMovedOutputKeepsItsOrder)
{
    KTempDir    lDir;
    KOutputFile lFirst;
    ASSERT_TRUE(lFirst.Open((lDir / "new").c_str()) && lFirst.WriteAt(2, "cd", 2));
    KOutputFile lOutput(std::move(lFirst));
    EXPECT_TRUE(lOutput.Write("e", 1) && lOutput.WriteAt(0, "ab", 2) && lOutput.Close());
    EXPECT_EQ(ReadFile(lDir / "new"), "abcde");
}

} // namespace

} // namespace qextest
