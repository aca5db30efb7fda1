#include <tests/apps/asf/runasf.h>
#include <tests/support/corpus.h>

#include <set>

using namespace qextest;

namespace
{

/// A change of the small skeleton, and the message of `check`.
struct KCheckCase
{
    const char* mWhat;
    const char* mFrom; ///< Part of SmallSkeleton(), replaced by mTo.
    const char* mTo;
    const char* mAt;      ///< Part of the changed text, on the message's line. Empty: the message has no line.
    const char* mMessage; ///< Severity and text; empty: no message.
    int         mExit;
};

std::ostream& operator<<(std::ostream& pOut, const KCheckCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KCheckTest : public testing::TestWithParam<KCheckCase>
{
};

TEST_P(KCheckTest, ReportsOneMessage)
{
    const KCheckCase& lCase = GetParam();
    const std::string lText = Replaced(SmallSkeleton(), lCase.mFrom, lCase.mTo);
    KTempDir          lFolder;
    WriteFile(lFolder / "a.asf", lText);
    KRunOptions lOptions;
    lOptions.mFolder = lFolder.Path().string();

    const KRunResult  lResult = RunAsf({"check", "a.asf"}, lOptions);
    const std::string lLocation = *lCase.mAt != '\0' ? "a.asf:" + std::to_string(LineOf(lText, lCase.mAt)) : std::string("a.asf");
    const std::string lExpected = *lCase.mMessage != '\0' ? lLocation + ": " + lCase.mMessage + "\n" : std::string();
    EXPECT_EQ(lResult.mErr, lExpected);
    EXPECT_EQ(lResult.mExit, lCase.mExit);

    const bool        lError = lExpected.find(": error: ") != std::string::npos;
    const std::string lTotal = lError              ? "1 file, 1 error, 0 warnings\n"
                               : lExpected.empty() ? "1 file, 0 errors, 0 warnings\n"
                                                   : "1 file, 0 errors, 1 warning\n";
    EXPECT_EQ(lResult.mOut, lTotal);
    EXPECT_EQ(RunAsf({"check", "--strict", "a.asf"}, lOptions).mExit, lExpected.empty() ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(
    Findings, KCheckTest,
    testing::Values(
        KCheckCase{"nothing wrong", "small", "small", "", "", 0},
        KCheckCase{"bone missing from the hierarchy", "    thigh shin\n", "", "name shin",
                   "warning: Bone is missing from the hierarchy, it stays under root (shin)", 0},
        KCheckCase{"no hierarchy at all", ":hierarchy\n  begin\n    root hip\n    hip thigh\n    thigh shin\n  end\n", ":skin\n",
                   "name hip", "warning: No section :hierarchy: every bone stays under root", 0},
        KCheckCase{"duplicate name", ":hierarchy", "  begin\n    name hip # again\n    direction 0 1 0\n    length 1\n  end\n:hierarchy",
                   "name hip # again", "warning: Duplicate bone name, first used on line 17 (hip)", 0},
        KCheckCase{"lower limit above the upper", "(-10 170)", "(170 -10)", "(170 -10)",
                   "warning: Lower limit exceeds upper limit (rx 170 -10)", 0},
        KCheckCase{"lower limit above the upper, on a line of its own", "(-70 70)", "(70 -70)", "(70 -70)",
                   "warning: Lower limit exceeds upper limit (ry 70 -70)", 0},
        KCheckCase{"zero direction with a length", "direction 1 0 0", "direction 0 0 0", "direction 0 0 0",
                   "warning: Bone has a length but its direction is zero (hip)", 0},
        KCheckCase{"zero direction without a length", "direction 1 0 0\n    length 1", "direction 0 0 0\n    length 0", "", "", 0},
        KCheckCase{"repeated DOF word", "dof rx\n    limits (-10 170)", "dof rx rx\n    limits (-10 170) (1 2)", "dof rx rx",
                   "warning: Degree of freedom appears twice on the line (rx)", 0},
        KCheckCase{"repeated DOF word at the root", "RY RZ", "RY RX", "order", "warning: Degree of freedom appears twice on the line (rx)",
                   0},
        KCheckCase{"name cut short", ":name small", ":name xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", ":name",
                   "warning: Name cut to 50 characters (xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx)", 0},
        KCheckCase{"radians", "angle deg", "angle rad", "angle rad",
                   "warning: Angles are declared in rad, but axes, orientation and limits are read as degrees", 0},
        KCheckCase{"keyword line read as a skin name", ":version 1.10", ":skin one.skn\n  two.skn\n:version 1.10", ":version",
                   "warning: Keyword line is read as a skin name, its section is lost (:version)", 0},
        KCheckCase{"axis word read as another order", "length 1\n    axis 0 0 0 XYZ", "length 1\n    axis 0 0 20 XZY", "XZY",
                   "warning: Axis word xzy is read as the order yxz", 0},
        KCheckCase{"axis word without an angle", "length 1\n    axis 0 0 0 XYZ", "length 1\n    axis 0 0 0 XZY", "", "", 0},
        KCheckCase{"axis word read as its letters", "length 1\n    axis 0 0 0 XYZ", "length 1\n    axis 1 2 3 ZYX", "", "", 0},
        KCheckCase{"unusual length unit", "length 0.45", "length 4500", "length 4500", "warning: Unusual length unit 4500", 0},
        KCheckCase{"negative length unit", "length 0.45", "length -1", "length -1",
                   "warning: Invalid length unit -1: lengths are not converted", 0},
        KCheckCase{"second number", "length 0.45", "length 0.45 9", "length 0.45 9", "warning: Ignoring extra text on the line (9)", 0},
        KCheckCase{"second pair", "(-10 170)", "(-10 170) (3 4)", "(3 4)", "warning: Ignoring extra text on the line (3 4)", 0},
        KCheckCase{"unknown DOF word", "dof rx\n", "dof rx qq\n", "dof rx qq", "warning: Ignoring extra text on the line (qq)", 0},
        KCheckCase{"second word of a name", ":name small", ":name small figure", ":name",
                   "warning: Ignoring extra text on the line (figure)", 0},
        KCheckCase{"text after begin", "  begin\n    id 1", "  begin hip\n    id 1", "begin hip",
                   "warning: Ignoring extra text on the line (hip)", 0},
        KCheckCase{"root position", "position 0 0 0", "position 0 1 0", "position 0 1 0",
                   "warning: Root position is not zero: importing applies it twice and does not scale it", 0},
        KCheckCase{"root orientation", "orientation 0 0 0", "orientation 0 1 0", "orientation 0 1 0",
                   "warning: Root orientation is not zero: importing rotates the root's translation by it", 0},
        KCheckCase{"unknown bone under root", "root hip", "root hip knee", "root hip knee", "warning: Unknown bone under root (knee)", 0},
        KCheckCase{"two parents", "thigh shin", "thigh shin\n    hip shin", "hip shin", "warning: Bone keeps its first parent thigh (shin)",
                   0},
        KCheckCase{"the reader's own warning", "id 1\n", "id one\n", "id one", "warning: Can't read bone id value", 0},
        KCheckCase{"the reader's own error", "direction 1 0 0", "direction 1 0", "direction 1 0", "error: Can't read bone direction", 1}));

TEST(AsfCheck, BonesNamedLikeKeywords)
{
    KRunOptions lOptions;
    lOptions.mInput = Replaced(Replaced(SmallSkeleton(), "name shin", "name End"), "thigh shin", "thigh End");
    const KRunResult lResult = RunAsf({"check", "-"}, lOptions);
    EXPECT_EQ(lResult.mErr, "<stdin>:35: warning: Bone is named like a keyword, so it cannot start a hierarchy line (End)\n");
}

/// The small skeleton, cut off before mCut, and the message.
struct KCutCase
{
    const char* mCut;
    const char* mMessage;
};

std::ostream& operator<<(std::ostream& pOut, const KCutCase& pCase)
{
    return pOut << pCase.mCut;
}

class KCutTest : public testing::TestWithParam<KCutCase>
{
};

/// The reader itself reports nothing for a truncated file.
TEST_P(KCutTest, NamesTheSectionAndItsLine)
{
    KRunOptions lOptions;
    lOptions.mInput = SmallSkeleton().substr(0, SmallSkeleton().find(GetParam().mCut));
    for (const char* lCommand : {"check", "info"})
    {
        const KRunResult lResult = RunAsf({lCommand, "-"}, lOptions);
        EXPECT_EQ(lResult.mExit, 1);
        EXPECT_EQ(lResult.mErr, GetParam().mMessage);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cuts, KCutTest,
    testing::Values(KCutCase{":name", "<stdin>:1: error: The file ends inside the section :version, which begins here\n"},
                    KCutCase{":units", "<stdin>:2: error: The file ends inside the section :name, which begins here\n"},
                    KCutCase{":documentation", "<stdin>:3: error: The file ends inside the section :units, which begins here\n"},
                    KCutCase{":root", "<stdin>:7: error: The file ends inside the section :documentation, which begins here\n"},
                    KCutCase{":bonedata", "<stdin>:9: error: The file ends inside the section :root, which begins here\n"},
                    KCutCase{"direction 1 0 0", "<stdin>:15: error: The file ends inside the bone hip, which begins here\n"},
                    KCutCase{":hierarchy", "<stdin>:14: error: The file ends inside the section :bonedata, which begins here\n"}));

TEST(AsfCheck, NoRootAndNoName)
{
    KRunOptions lOptions;
    lOptions.mInput = ":version 1.10\n:hierarchy\n";
    EXPECT_EQ(RunAsf({"check", "-"}, lOptions).mErr.find("<stdin>:2: error: "), 0u);
    lOptions.mInput = ":version 1.10\n:skin\n";
    EXPECT_EQ(RunAsf({"check", "-"}, lOptions).mErr, "<stdin>: error: No section :root\n");
    lOptions.mInput = ":name\n:units\n";
    EXPECT_EQ(RunAsf({"check", "-"}, lOptions).mErr, "<stdin>:1: warning: Can't read skeleton name, using \"Untitled\"\n"
                                                     "<stdin>:1: error: Reading stops here: section :name has no name\n");
}

TEST(AsfCheck, CountsManyFindingsAndShowsTheFirst)
{
    std::string lText;
    for (int lIndex = 0; lIndex < 3000; ++lIndex)
    {
        lText += "  begin\n    name b" + std::to_string(lIndex) + "\n    direction 0 1 0 7\n    length 1\n  end\n";
    }
    KRunOptions lOptions;
    lOptions.mInput = Replaced(SmallSkeleton(), ":hierarchy", lText + ":hierarchy");
    const KRunResult lResult = RunAsf({"check", "-"}, lOptions);
    EXPECT_EQ(lResult.mOut, "1 file, 0 errors, 6000 warnings\n");
    EXPECT_EQ(std::count(lResult.mErr.begin(), lResult.mErr.end(), '\n'), 1001);
    EXPECT_NE(lResult.mErr.find("<stdin>: warning: 5000 further warnings are not shown\n"), std::string::npos);
}

TEST(AsfCheck, SamplesAndRealSkeletonsAreClean)
{
    std::vector<std::string> lArguments{"check", "--strict"};
    for (const std::filesystem::path& lPath : CorpusFiles(".asf"))
    {
        lArguments.push_back(lPath.string());
    }
    const KRunResult lResult = RunAsf(lArguments);
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(lResult.mOut, std::to_string(lArguments.size() - 2) + " files, 0 errors, 0 warnings\n");
    EXPECT_EQ(lResult.mExit, 0);
}

} // namespace
