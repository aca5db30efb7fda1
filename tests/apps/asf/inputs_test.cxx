#include <tests/apps/asf/runasf.h>
#include <tests/support/asnobody.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qextest;

namespace
{

struct KInputCase
{
    const char* mWhat;
    const char* mName;  ///< Name of the input file.
    const char* mBytes; ///< Null: the file does not exist.
    size_t      mSize;
    int         mExit;
    const char* mMessage; ///< The error text after the name.
};

std::ostream& operator<<(std::ostream& pOut, const KInputCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KInputTest : public testing::TestWithParam<KInputCase>
{
protected:
    void SetUp() override
    {
        if (GetParam().mBytes != nullptr)
        {
            WriteFile(mFolder / GetParam().mName, std::string(GetParam().mBytes, GetParam().mSize));
        }
        std::filesystem::create_directory(mFolder / "folder.asf");
    }

    KRunResult Run(std::vector<std::string> pArguments)
    {
        KRunOptions lOptions;
        lOptions.mFolder = mFolder.Path().string();
        return RunAsf(pArguments, lOptions);
    }

    KTempDir mFolder;
};

/// Every command prints the same single line to standard error.
TEST_P(KInputTest, OneErrorLine)
{
    const std::string lName = GetParam().mName;
    const std::string lExpected = lName + ": error: " + GetParam().mMessage + "\n";
    for (const std::vector<std::string>& lArguments : {std::vector<std::string>{"info", lName},
                                                       {"info", "--json", lName},
                                                       {"check", "--json", lName},
                                                       {"draw", lName, "-o", "out.svg"},
                                                       {"check", lName}})
    {
        const KRunResult lResult = Run(lArguments);
        EXPECT_EQ(lResult.mExit, GetParam().mExit) << lArguments[0];
        EXPECT_EQ(lResult.mErr, lExpected) << lArguments[0];
        if (lArguments[1] == "--json")
        {
            const nlohmann::json lJson = JsonOf(lResult);
            EXPECT_EQ(lJson["file"], lName);
            EXPECT_EQ(lJson["ok"], false);
            EXPECT_EQ(lJson["error"], GetParam().mMessage);
            continue;
        }
        EXPECT_EQ(lResult.mOut, lArguments[0] == "check" ? "1 file, 1 error, 0 warnings\n" : "");
    }
    EXPECT_FALSE(std::filesystem::exists(mFolder / "out.svg"));
}

INSTANTIATE_TEST_SUITE_P(Inputs, KInputTest,
                         testing::Values(KInputCase{"missing", "none.asf", nullptr, 0, 3, "cannot be read: No such file or directory"},
                                         KInputCase{"a folder", "folder.asf", nullptr, 0, 3, "cannot be read: Is a directory"},
                                         KInputCase{"empty", "empty.asf", "", 0, 1, "is empty"},
                                         KInputCase{"blank", "blank.asf", " \n\n\t\r\n", 6, 1, "is empty"},
                                         KInputCase{"comments only", "comment.asf", "# a\n# b\n", 8, 1, "is empty"},
                                         KInputCase{"binary", "picture.asf", "\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16, 1,
                                                    "holds binary data, not a skeleton or a motion"}));

TEST(AsfInputs, AReadErrorIsASystemError)
{
    const KRunResult lResult = RunAsf({"info", "/proc/self/mem"});
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_EQ(lResult.mErr, "/proc/self/mem: error: cannot be read: Input/output error\n");
}

TEST(AsfInputs, UnreadableFile)
{
    KTempDir          lFolder;
    const std::string lPath = (lFolder / "secret.asf").string();
    WriteFile(lPath, SmallSkeleton());
    ASSERT_EQ(chmod(lPath.c_str(), 0), 0);
    // The program is copied, because another user may not reach the folder that it is built in.
    const std::string lProgram = (lFolder / "asf").string();
    std::filesystem::copy_file(QEX_ASF_PROGRAM, lProgram);
    ASSERT_EQ(chmod(lProgram.c_str(), 0755), 0);
    ASSERT_EQ(chmod(lFolder.Path().c_str(), 0755), 0);
    EXPECT_TRUE(AsNobody(
        [&lPath, &lProgram]
        {
            const KRunResult lResult = RunProgram({lProgram, "info", lPath});
            EXPECT_EQ(lResult.mExit, 3);
            EXPECT_EQ(lResult.mErr, lPath + ": error: cannot be read: Permission denied\n");
            return !testing::Test::HasFailure();
        }));
}

TEST(AsfInputs, StandardInputCanBeReread)
{
    KRunOptions lOptions;
    lOptions.mInput = Replaced(SmallSkeleton(), "length 7", "length 7,5");
    for (const std::vector<std::string>& lArguments : {std::vector<std::string>{"check", "-"}, {"info", "-"}, {"draw", "-", "-o", "-"}})
    {
        const KRunResult lResult = RunAsf(lArguments, lOptions);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        EXPECT_FALSE(lResult.mOut.empty());
        EXPECT_EQ(lResult.mErr.empty(), lArguments[0] != "check") << lResult.mErr;
    }
    EXPECT_EQ(RunAsf({"check", "-"}, lOptions).mErr, "<stdin>:26: warning: Ignoring extra text on the line (5)\n");
}

TEST(AsfInputs, PipesCanBeReread)
{
    KRunOptions lOptions;
    lOptions.mInput = SmallSkeleton();
    const KRunResult lResult = RunShell("cat | \"$ASF\" check /dev/stdin", lOptions);
    EXPECT_EQ(lResult.mOut, "1 file, 0 errors, 0 warnings\n");
    EXPECT_EQ(lResult.mErr, "");
}

TEST(AsfInputs, TheHighestExitStatusOfSeveralInputsCounts)
{
    KTempDir lFolder;
    WriteFile(lFolder / "good.asf", SmallSkeleton());
    WriteFile(lFolder / "bad.asf", Replaced(SmallSkeleton(), "direction 1 0 0", "direction 1 0"));
    KRunOptions lOptions;
    lOptions.mFolder = lFolder.Path().string();
    EXPECT_EQ(RunAsf({"info", "good.asf", "good.asf"}, lOptions).mExit, 0);
    EXPECT_EQ(RunAsf({"info", "bad.asf", "good.asf"}, lOptions).mExit, 1);
    EXPECT_EQ(RunAsf({"info", "none.asf", "bad.asf", "good.asf"}, lOptions).mExit, 3);

    const KRunResult lAll = RunAsf({"check", "none.asf", "bad.asf", "good.asf"}, lOptions);
    EXPECT_EQ(lAll.mExit, 3);
    EXPECT_EQ(lAll.mOut, "3 files, 2 errors, 0 warnings\n");
    EXPECT_EQ(lAll.mErr, "none.asf: error: cannot be read: No such file or directory\nbad.asf:18: error: Can't read bone direction\n");
}

TEST(AsfInputs, ANameCannotControlTheTerminal)
{
    KTempDir lFolder;
    WriteFile(lFolder / "escape.asf", Replaced(SmallSkeleton(), ":name small", ":name \x1b[2Jsmall"));
    const KRunResult lResult = RunAsf({"info", (lFolder / "escape.asf").string()});
    EXPECT_EQ(lResult.mOut.find('\x1b'), std::string::npos);
    EXPECT_NE(lResult.mOut.find("\\x1B[2Jsmall"), std::string::npos);
}

} // namespace
