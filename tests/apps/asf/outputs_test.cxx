#include <tests/apps/asf/runasf.h>

#include <csignal>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

class KOutputTest : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    size_t FileCount() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(mFolder.Path()), fs::directory_iterator()));
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KOutputTest, AnOutputThatIsAnInputIsRefused)
{
    fs::create_symlink("small.asf", mFolder / "link.asf");
    fs::create_hard_link(mFolder / "small.asf", mFolder / "hard.asf");
    fs::create_directory(mFolder / "sub");
    for (const char* lOutput : {"small.asf", "./small.asf", "sub/../small.asf", "link.asf", "hard.asf"})
    {
        const KRunResult lResult = Run({"draw", "small.asf", "-o", lOutput});
        EXPECT_EQ(lResult.mExit, 2) << lOutput;
        EXPECT_EQ(lResult.mErr, std::string(lOutput) + ": error: is also an input (small.asf): choose another output\n");
        EXPECT_EQ(ReadFile(mFolder / "small.asf"), SmallSkeleton());
    }
}

TEST_F(KOutputTest, StandardOutputHoldsTheSameBytesAsAFile)
{
    const KRunResult lStandard = Run({"draw", "small.asf", "-o", "-"});
    EXPECT_EQ(lStandard.mExit, 0);
    EXPECT_EQ(Run({"draw", "small.asf", "-o", "small.svg"}).mExit, 0);
    EXPECT_EQ(lStandard.mOut, ReadFile(mFolder / "small.svg"));
    EXPECT_EQ(lStandard.mErr, "");
}

TEST_F(KOutputTest, AFailedRunLeavesTheOldFile)
{
    WriteFile(mFolder / "out.svg", "old");
    WriteFile(mFolder / "bad.asf", Replaced(SmallSkeleton(), "direction 1 0 0", "direction 1 0"));
    EXPECT_EQ(Run({"draw", "bad.asf", "-o", "out.svg"}).mExit, 1);
    EXPECT_EQ(ReadFile(mFolder / "out.svg"), "old");
    EXPECT_EQ(FileCount(), 3u);
}

TEST_F(KOutputTest, AFolderOrAMissingFolderIsRefused)
{
    fs::create_directory(mFolder / "out");
    const KRunResult lFolder = Run({"draw", "small.asf", "-o", "out"});
    EXPECT_EQ(lFolder.mExit, 3);
    EXPECT_EQ(lFolder.mErr, "out: error: cannot be written: Is a directory\n");
    const KRunResult lMissing = Run({"draw", "small.asf", "-o", "none/out.svg"});
    EXPECT_EQ(lMissing.mExit, 3);
    EXPECT_EQ(lMissing.mErr, "none/out.svg: error: cannot be written: No such file or directory\n");
}

TEST_F(KOutputTest, AFullDeviceIsASystemError)
{
    const KRunResult lFile = Run({"draw", "small.asf", "-o", "/dev/full"});
    EXPECT_EQ(lFile.mExit, 3);
    EXPECT_EQ(lFile.mErr, "/dev/full: error: cannot be written: No space left on device\n");
    for (const char* lCall : {"info small.asf", "info --json small.asf", "check small.asf", "--help", "--version"})
    {
        const KRunResult lStandard = RunShell(std::string("\"$ASF\" ") + lCall + " > /dev/full", mOptions);
        EXPECT_EQ(lStandard.mExit, 3) << lCall;
        EXPECT_EQ(lStandard.mErr, "asf: error: cannot write standard output: No space left on device\n") << lCall;
    }
}

TEST_F(KOutputTest, AClosedPipeEndsItQuietly)
{
    std::string lBones;
    for (int lIndex = 0; lIndex < 5000; ++lIndex)
    {
        lBones += "  begin\n    name b" + std::to_string(lIndex) + "\n    direction 0 1 0\n    length 1\n  end\n";
    }
    const std::string lMany = Replaced(SmallSkeleton(), ":hierarchy", lBones + ":hierarchy");
    WriteFile(mFolder / "many.asf", lMany);
    for (const char* lCall : {"info many.asf many.asf many.asf", "info --json many.asf", "draw many.asf -o -", "check many.asf", "--help"})
    {
        const KRunResult lResult = RunShell(std::string("{ \"$ASF\" ") + lCall + "; echo $? >&2; } | true", mOptions);
        // check also warns there.
        EXPECT_TRUE(lResult.mErr == "0\n" || lCall[0] == 'c') << lCall << ": " << lResult.mErr;
        EXPECT_EQ(lResult.mErr.find("error"), std::string::npos) << lResult.mErr;
    }
}

TEST_F(KOutputTest, NoColourWithoutATerminal)
{
    WriteFile(mFolder / "warn.asf", Replaced(SmallSkeleton(), "length 7", "length 7,5"));
    KRunOptions lOptions = mOptions;
    lOptions.mEnvironment["TERM"] = "xterm-256color";
    const KRunResult lResult = RunAsf({"check", "warn.asf"}, lOptions);
    EXPECT_EQ(lResult.mErr.find('\x1b'), std::string::npos);
}

/// `script` runs the program in a terminal.
TEST_F(KOutputTest, ColourOnATerminalUnlessForbidden)
{
    WriteFile(mFolder / "warn.asf", Replaced(SmallSkeleton(), "length 7", "length 7,5"));
    KRunOptions lOptions = mOptions;
    lOptions.mEnvironment["TERM"] = "xterm-256color";
    const std::string lScript = "script -qec \"'$ASF' check warn.asf\" /dev/null";
    EXPECT_NE(RunShell(lScript, lOptions).mOut.find("\x1b[1;35mwarning:\x1b[0m"), std::string::npos);
    lOptions.mEnvironment["NO_COLOR"] = "1";
    EXPECT_EQ(RunShell(lScript, lOptions).mOut.find('\x1b'), std::string::npos);
}

} // namespace
