#include <apps/asf/console.h>
#include <tests/apps/asf/runasf.h>

using namespace qextest;

namespace
{

struct KUsageCase
{
    const char*              mWhat;
    std::vector<std::string> mArguments;
    const char*              mText;
};

std::ostream& operator<<(std::ostream& pOut, const KUsageCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KUsageTextTest : public testing::TestWithParam<KUsageCase>
{
};

TEST_P(KUsageTextTest, SaysWhatIsExpected)
{
    const KRunResult lResult = RunAsf(GetParam().mArguments);
    EXPECT_EQ(lResult.mExit, 2);
    EXPECT_EQ(lResult.mErr.substr(0, lResult.mErr.find('\n')), std::string("asf: error: ") + GetParam().mText);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, KUsageTextTest,
    testing::Values(
        KUsageCase{"too many files", {"draw", "a", "b", "c", "d", "e", "-o", "x.svg"}, "FILE: expected at most 2, not 5"},
        KUsageCase{"too few files", {"diff", "a"}, "FILE: expected at least 2, not 1"},
        KUsageCase{"a value is missing", {"info", "a", "--asf"}, "--asf: a value is missing"},
        KUsageCase{"an option twice", {"info", "a", "--asf", "b", "--asf", "c"}, "--asf: expected once, not 2 times"},
        KUsageCase{
            "out of range", {"convert", "a", "-o", "b.bvh", "--scale", "0"}, "--scale: expected a number from 1e-09 to 1e+09, not 0"},
        KUsageCase{"no number", {"diff", "a", "b", "--tolerance", "x"}, "--tolerance: expected a number from 0 to 1e+09, not x"},
        KUsageCase{"no whole number",
                   {"draw", "a", "-o", "x.svg", "--width", "99.5"},
                   "--width: expected a whole number from 16 to 32767, not 99.5"},
        KUsageCase{"a flag with a value", {"info", "--json=foo", "a"}, "not understood: --json = foo"},
        KUsageCase{"no such word", {"draw", "a", "-o", "x.svg", "--view", "back"}, "--view: expected front, side, top or all, not back"},
        KUsageCase{
            "an output without -o", {"convert", "a.amc", "a.bvh"}, "--output is required: write the output's name after -o: -o a.bvh"},
        KUsageCase{"no output", {"convert", "a.amc"}, "--output is required: write the output's name after -o FILE"},
        KUsageCase{"a misspelt command", {"cnovert", "a.amc"}, "unknown command cnovert, did you mean convert?"},
        KUsageCase{"a misspelt option", {"convert", "a.amc", "--fsp", "30", "-o", "b.bvh"}, "unknown option --fsp, did you mean --fps?"},
        KUsageCase{"a misspelt option before what is missing",
                   {"convert", "a.amc", "--ouptut=b.bvh"},
                   "unknown option --ouptut, did you mean --output?"},
        KUsageCase{"an option unlike all others", {"info", "--frobnicate", "a.asf"}, "unknown option --frobnicate"}));

TEST(AsfMessages, BytesThatAreNoTextAreEscaped)
{
    EXPECT_EQ(asfapp::Printable("Gr\xC3\xB6\xC3\x9F"
                                "e \xF0\x9F\x99\x82"),
              "Gr\xC3\xB6\xC3\x9F"
              "e \xF0\x9F\x99\x82");
    EXPECT_EQ(asfapp::Printable("b\xE4 \xC3"), "b\\xE4 \\xC3");
    EXPECT_EQ(asfapp::Printable("\xED\xA0\x80\xC0\xAF"), "\\xED\\xA0\\x80\\xC0\\xAF");
    EXPECT_EQ(asfapp::Printable("\x1b\x7f\xC2\x9B[2J"), "\\x1B\\x7F\\xC2\\x9B[2J");
}

TEST(AsfMessages, NamesOfFilesAndBonesAreEscaped)
{
    KTempDir    lFolder;
    KRunOptions lOptions;
    lOptions.mFolder = lFolder.Path().string();
    WriteFile(lFolder / "a\xE4.asf", ReplacedAll(SmallSkeleton(), "thigh", "b\xE4\xFC"));
    EXPECT_EQ(RunAsf({"info", "none\xE4.asf"}, lOptions).mErr, "none\\xE4.asf: error: cannot be read: No such file or directory\n");
    EXPECT_NE(RunAsf({"info", "a\xE4.asf"}, lOptions).mOut.find("b\\xE4\\xFC"), std::string::npos);
#ifdef QEX_WITH_GLTF
    const KRunResult lResult = RunAsf({"convert", "a\xE4.asf", "-o", "a.glb"}, lOptions);
    EXPECT_NE(lResult.mErr.find("warning: Name changed (b__), from (b\\xE4\\xFC)\n"), std::string::npos) << lResult.mErr;
#endif
}

TEST(AsfMessages, AClosedPipeEndsQuietly)
{
#ifdef QEX_WITH_GLTF
    for (const char* lKind : {"gltf", "glb", "bvh"})
    {
        // The reader is gone before the first byte.
        const KRunResult lResult = RunShell("(sleep 0.3; \"$ASF\" convert -q " + Sample("walk.amc") + " -o - --to " + lKind + ") | true");
        EXPECT_EQ(lResult.mErr, "") << lKind;
    }
#endif
}

TEST(AsfMessages, EveryCommandThatLooksAtSizeGivesTheHint)
{
    KTempDir          lFolder;
    const std::string lSmall = (lFolder / "small.asf").string();
    ASSERT_EQ(RunAsf({"edit", Sample("walker.asf"), "-o", lSmall, "--scale", "0.01", "-q"}).mExit, 0);
    ASSERT_EQ(RunAsf({"convert", lSmall, "-o", (lFolder / "small.bvh").string(), "-q"}).mExit, 0);
    for (const char* lName : {"small.asf", "small.bvh"})
    {
        const std::string lPath = (lFolder / lName).string();
        const std::string lNote = lPath + ": note: measures 1.75 cm at rest, unlike a person: ";
        for (const std::vector<std::string>& lArguments :
             {std::vector<std::string>{"info", lPath}, {"check", lPath}, {"convert", lPath, "-o", (lFolder / "out.asf").string()}})
        {
            EXPECT_EQ(RunAsf(lArguments).mErr.rfind(lNote, 0), 0U) << lArguments[0] << RunAsf(lArguments).mErr;
        }
        EXPECT_EQ(RunAsf({"check", "-q", lPath}).mErr, "");
        EXPECT_EQ(RunAsf({"convert", lPath, "-o", (lFolder / "out.asf").string(), "--scale", "100"}).mErr.find("measures"),
                  std::string::npos);
    }
}

} // namespace
