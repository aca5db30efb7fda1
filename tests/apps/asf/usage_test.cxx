#include <tests/apps/asf/runasf.h>

using namespace qextest;

namespace
{

struct KCallCase
{
    const char*              mWhat;
    std::vector<std::string> mArguments;
    int                      mExit;
    const char*              mOut; ///< Part of standard output; empty: no output.
    const char*              mErr; ///< Part of standard error; empty: no output.
};

std::ostream& operator<<(std::ostream& pOut, const KCallCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KCallTest : public testing::TestWithParam<KCallCase>
{
};

TEST_P(KCallTest, ExitStatusAndOutput)
{
    const KCallCase& lCase = GetParam();
    const KRunResult lResult = RunAsf(lCase.mArguments);
    EXPECT_EQ(lResult.mExit, lCase.mExit);
    EXPECT_NE(lResult.mOut.find(lCase.mOut), std::string::npos) << lResult.mOut;
    EXPECT_NE(lResult.mErr.find(lCase.mErr), std::string::npos) << lResult.mErr;
    EXPECT_EQ(lResult.mOut.empty(), *lCase.mOut == '\0') << lResult.mOut;
    EXPECT_EQ(lResult.mErr.empty(), *lCase.mErr == '\0') << lResult.mErr;
}

INSTANTIATE_TEST_SUITE_P(
    Calls, KCallTest,
    testing::Values(KCallCase{"help", {"--help"}, 0, "Examples:", ""}, KCallCase{"short help", {"-h"}, 0, "check", ""},
                    KCallCase{"version", {"--version"}, 0, "asf " QEX_VERSION, ""},
                    KCallCase{"help of info", {"info", "--help"}, 0, "Examples:\n  asf info", ""},
                    KCallCase{"help of check", {"check", "--help"}, 0, "Examples:\n  asf check", ""},
                    KCallCase{"help of draw", {"draw", "--help"}, 0, "Usage: asf draw [OPTIONS] FILE [FILE]\n", ""},
                    KCallCase{"nothing", {}, 2, "", "asf: error: a command is required\n"},
                    KCallCase{"unknown command", {"frobnicate"}, 2, "", "unknown command frobnicate (commands: info, check, "},
                    KCallCase{"unknown option", {"info", "--frob", "x.asf"}, 2, "", "asf info --help"},
                    KCallCase{"no file", {"info"}, 2, "", "asf: error: FILE is required"},
                    KCallCase{"no output", {"draw", "x.asf"}, 2, "", "--output is required"},
                    KCallCase{"help of positions", {"positions", "--help"}, 0, "Examples:\n  asf positions", ""},
                    KCallCase{"unknown view", {"draw", "x.asf", "-o", "x.svg", "--view", "back"}, 2, "", "back"}));

} // namespace
