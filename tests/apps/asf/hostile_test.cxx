#include <tests/apps/asf/runasf.h>

#include <sys/resource.h>
#include <unistd.h>

// Hostile inputs, through pipes and as files: the program exits with a clear message, and its memory does not depend on what they
// contain or claim.

using namespace qextest;

namespace
{

constexpr long kMemory = 192 * 1024; ///< KiB in addition to this program's own peak, which a child process starts with.

long OwnPeak()
{
    struct rusage lUsage = {};
    getrusage(RUSAGE_SELF, &lUsage);
    return lUsage.ru_maxrss;
}

struct KStreamCase
{
    const char* mWhat;
    const char* mHead; ///< The text before the long line's filling.
    char        mFill; ///< The character that fills the long line.
    bool        mIsMotion;
    const char* mMessage; ///< Part of the error message.
};

std::ostream& operator<<(std::ostream& pOut, const KStreamCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KLongLineTest : public testing::TestWithParam<KStreamCase>
{
};

/// Writes up to 2 GiB, until the program stops reading.
TEST_P(KLongLineTest, EndsInBoundedMemory)
{
    for (const std::vector<std::string>& lArguments :
         {std::vector<std::string>{"check", "-"}, {"info", "-"}, {"convert", "-", "-o", "-", "--to", "bvh"}})
    {
        size_t      lSent = 0;
        KRunOptions lOptions;
        lOptions.mWriteInput = [&lSent](int pPipe)
        {
            constexpr size_t  kAll = size_t(2) << 30;
            const std::string lHead = GetParam().mHead;
            const std::string lPiece(1 << 20, GetParam().mFill);
            ssize_t           lWritten = lHead.empty() ? 1 : write(pPipe, lHead.data(), lHead.size());
            while (lWritten > 0 && lSent < kAll)
            {
                lWritten = write(pPipe, lPiece.data(), lPiece.size());
                lSent += static_cast<size_t>(std::max<ssize_t>(lWritten, 0));
            }
        };
        const long               lOwn = OwnPeak();
        std::vector<std::string> lCall = lArguments;
        if (GetParam().mIsMotion)
        {
            lCall.insert(lCall.end(), {"--asf", Sample("walker.asf")});
        }
        const KRunResult lResult = RunAsf(lCall, lOptions);
        EXPECT_EQ(lResult.mExit, 1) << lArguments[0] << ": " << lResult.mExit << lResult.mErr;
        EXPECT_NE(lResult.mErr.find("error: "), std::string::npos);
        EXPECT_NE(lResult.mErr.find(GetParam().mMessage), std::string::npos) << lArguments[0] << ": " << lResult.mErr;
        EXPECT_LT(lResult.mErr.size(), 10000u);
        EXPECT_LT(lResult.mPeak, lOwn + kMemory) << lArguments[0];
        std::printf("%-16s %-8s %5zu MiB read, peak %ld KiB\n", GetParam().mWhat, lArguments[0].c_str(), lSent >> 20, lResult.mPeak);
    }
}

INSTANTIATE_TEST_SUITE_P(Streams, KLongLineTest,
                         testing::Values(KStreamCase{"skeleton", ":version 1.10\n:name ", 'x', false, "Line is too long"},
                                         KStreamCase{"motion", ":FULLY-SPECIFIED\n:DEGREES\n1\nroot ", '1', true, "Line is too long"},
                                         KStreamCase{"BVH", "HIERARCHY\nROOT ", 'x', false, ""},
                                         KStreamCase{"NULs", "", '\0', false, "binary data"},
                                         KStreamCase{"letters", "", 'a', false, "Line is too long"}));

/// A file of a few frames whose numbers are far apart is not sampled frame by frame.
TEST(AsfHostile, AMotionThatSpansABillionFrames)
{
    const KTempDir lFolder;
    KRunOptions    lOptions;
    lOptions.mFolder = lFolder.Path().string();
    WriteFile(lFolder / "a.asf", SmallSkeleton());
    std::string lMotion = ":FULLY-SPECIFIED\n:DEGREES\n";
    for (const char* lNumber : {"1", "2", "3", "1000000000"})
    {
        lMotion += std::string(lNumber) + "\nroot 0 0 " + lNumber[0] + " 0 0 0\nthigh 1 2 3\nshin 4\n";
    }
    WriteFile(lFolder / "a.amc", lMotion);
    const std::string lExpected = "take a spans 1000000000 frames, but its file has only 4\n";
    for (const char* lOutput : {"a.bvh", "a.glb", "a.gltf", "b.amc"})
    {
        const KRunResult lResult = RunAsf({"convert", "a.asf", "a.amc", "-q", "-o", lOutput}, lOptions);
        EXPECT_EQ(lResult.mExit, 1) << lOutput;
        EXPECT_EQ(lResult.mErr, "asf: error: " + lExpected);
        EXPECT_FALSE(std::filesystem::exists(lFolder / lOutput));
    }
    EXPECT_EQ(RunAsf({"diff", "a.asf", "a.amc", "a.asf", "a.amc", "-q"}, lOptions).mErr, "asf: error: " + lExpected);
    EXPECT_EQ(RunAsf({"convert", "a.asf", "a.amc", "-q", "--end", "2f", "-o", "a.bvh"}, lOptions).mExit, 0) << "a part of it";
    for (const char* lCommand : {"check", "info"})
    {
        const KRunResult lResult = RunAsf({lCommand, "a.amc"}, lOptions);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        EXPECT_LT(lResult.mPeak, OwnPeak() + kMemory);
    }
    EXPECT_EQ(RunAsf({"positions", "a.asf", "a.amc", "-q", "-o", "a.csv"}, lOptions).mExit, 0) << "writes the frames there are";
}

} // namespace
