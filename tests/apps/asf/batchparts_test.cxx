#include <apps/asf/batch/manifest.h>
#include <apps/asf/batch/pathpattern.h>
#include <apps/asf/batch/rates.h>
#include <apps/asf/figure/motionoptions.h>
#include <apps/asf/report/messagelog.h>
#include <tests/apps/asf/batchtest.h>

using namespace asfapp;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

struct KPatternCase
{
    const char* mPattern;
    const char* mPath;
    bool        mMatches;
};

class KPatternTest : public testing::TestWithParam<KPatternCase>
{
};

TEST_P(KPatternTest, Matches)
{
    EXPECT_EQ(MatchesPattern(GetParam().mPath, GetParam().mPattern), GetParam().mMatches) << GetParam().mPattern << " " << GetParam().mPath;
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, KPatternTest,
    testing::Values(KPatternCase{"a.amc", "a.amc", true}, KPatternCase{"a.amc", "b.amc", false}, KPatternCase{"a.amc", "a.am", false},
                    KPatternCase{"a.am", "a.amc", false}, KPatternCase{"", "", true}, KPatternCase{"", "a", false},
                    KPatternCase{"*", "", true}, KPatternCase{"*", "abc", true}, KPatternCase{"*", "a/b", false},
                    KPatternCase{"*.amc", ".amc", true}, KPatternCase{"*.amc", "01/a.amc", false},
                    KPatternCase{"*/*.amc", "01/a.amc", true}, KPatternCase{"a*b*c", "aXbYbZc", true},
                    KPatternCase{"a*b*c", "aXbYbZ", false}, KPatternCase{"**", "a/b/c", true}, KPatternCase{"**", "", true},
                    KPatternCase{"**/a", "a", true}, KPatternCase{"**/a", "x/y/a", true}, KPatternCase{"**/a", "xa", false},
                    KPatternCase{"**/a", "x/ya", false}, KPatternCase{"x/**/a", "x/a", true}, KPatternCase{"x/**/a", "x/y/z/a", true},
                    KPatternCase{"x/**/a", "xa", false}, KPatternCase{"x/**/a", "y/x/a", false}, KPatternCase{"x/**", "x/y/z", true},
                    KPatternCase{"x/**", "x", false}, KPatternCase{"x/**", "xy/z", false}, KPatternCase{"**/**/a", "a", true},
                    KPatternCase{"x**/a", "xy/z/a", true}, KPatternCase{"x**/a", "xa", false}, KPatternCase{"**.amc", "x/y.amc", true},
                    KPatternCase{"?", "a", true}, KPatternCase{"?", "", false}, KPatternCase{"?", "/", false},
                    KPatternCase{"a?c", "abc", true}, KPatternCase{"[a-c]x", "bx", true}, KPatternCase{"[a-c]x", "dx", false},
                    KPatternCase{"[!a-c]x", "dx", true}, KPatternCase{"[!a-c]x", "bx", false}, KPatternCase{"[!a]x", "/x", false},
                    KPatternCase{"[]a]x", "]x", true}, KPatternCase{"[a-]x", "-x", true}, KPatternCase{"[!]x", "[!]x", true},
                    KPatternCase{"[ax", "[ax", true}, KPatternCase{"[ax", "ax", false},
                    KPatternCase{"0[1-3]/*_0?.amc", "02/02_01.amc", true}, KPatternCase{"[", "[", true}, KPatternCase{"a]", "a]", true}));

// Backtracking would take the age of the universe.
TEST(Pattern, StarsTakeNoTime)
{
    std::string lStars;
    for (int i = 0; i < 2000; ++i)
    {
        lStars += i % 3 == 0 ? "a*" : i % 3 == 1 ? "**/" : "a**";
    }
    EXPECT_FALSE(MatchesPattern(std::string(4000, 'a') + "/b", lStars + "c"));
    EXPECT_TRUE(MatchesPattern(std::string(4000, 'a'), std::string(3000, '*')));
}

TEST(Pattern, FolderBeforeTheFirstWildcard)
{
    EXPECT_EQ(FolderOfPattern("a/b/*.amc"), "a/b");
    EXPECT_EQ(FolderOfPattern("a/b[1]/c.amc"), "a");
    EXPECT_EQ(FolderOfPattern("*.amc"), "");
    EXPECT_EQ(FolderOfPattern("/*.amc"), "/");
    EXPECT_TRUE(IsPattern("a?") && IsPattern("*") && IsPattern("[") && !IsPattern("a/b]{c}"));
}

/// A table of rates in a file.
class KRateTableTest : public testing::Test
{
protected:
    bool Read(const std::string& pText)
    {
        WriteFile(mFolder / "rates.csv", pText);
        testing::internal::CaptureStderr();
        const bool lOk = mTable.Read(mFolder / "rates.csv", mConsole);
        mErrors = testing::internal::GetCapturedStderr();
        mErrors.erase(0, mErrors.find("rates.csv") == std::string::npos ? 0 : mErrors.find("rates.csv"));
        return lOk;
    }

    KTempDir    mFolder;
    KConsole    mConsole;
    KRateTable  mTable;
    std::string mErrors;
};

TEST_F(KRateTableTest, TheLastLineThatMatchesWins)
{
    ASSERT_TRUE(Read("\xEF\xBB\xBFsubject,source_fps,file\r\n1,120,**\r\n1,60,01/*.amc\r\n\r\n2,30000/1001,\"a, \"\"b\"\".amc\"\n"
                     "3,25,01/[x].amc\n,23.976,last.amc"))
        << mErrors;
    EXPECT_EQ(mTable.Find("01/a.amc"), "60");
    EXPECT_EQ(mTable.Find("02/a.amc"), "120");
    EXPECT_EQ(mTable.Find("a, \"b\".amc"), "30000/1001");
    EXPECT_EQ(mTable.Find("01/[x].amc"), "25") << "a name that looks like a pattern";
    EXPECT_EQ(mTable.Find("01/x.amc"), "25");
    EXPECT_EQ(mTable.Find("last.amc"), "23.976");
    ASSERT_TRUE(Read("file,source_fps\n")) << mErrors;
}

TEST_F(KRateTableTest, ErrorsNameTheLine)
{
    const struct
    {
        const char* mText;
        const char* mError;
    } lCases[] = {
        {"file;source_fps\na;30\n", "rates.csv:1: error: expected the columns file and source_fps, not file;source_fps\n"},
        {"file,rate\n", "rates.csv:1: error: expected the columns file and source_fps, not file,rate\n"},
        {"file,source_fps\na,30\nb\n", "rates.csv:3: error: has too few columns\n"},
        {"file,source_fps\na,\n", "rates.csv:2: error: source_fps: expected a rate such as 120, 23.976 or 30000/1001, not \n"},
        {"file,source_fps\n\na,-1\n", "rates.csv:3: error: source_fps: expected a rate such as 120, 23.976 or 30000/1001, not -1\n"},
        {"", "rates.csv: error: is empty: expected the columns file and source_fps\n"}};
    for (const auto& lCase : lCases)
    {
        EXPECT_FALSE(Read(lCase.mText)) << lCase.mText;
        EXPECT_EQ(mErrors, lCase.mError);
    }
    EXPECT_EQ(mConsole.GetExit(), eEXIT_INPUT);
}

TEST(Shard, PartsAreDisjointAndComplete)
{
    for (const uint32_t lCount : {1U, 2U, 7U, 64U, 1000000U})
    {
        std::vector<int> lSizes(std::min(lCount, 64U), 0);
        for (int i = 0; i < 1000; ++i)
        {
            // A number that appears twice must not matter.
            const std::string lName = std::to_string(i % 2 == 0 ? i : i % 40) + "/" + std::to_string(i) + ".amc";
            uint32_t          lParts = 0;
            for (uint32_t lIndex = 1; lIndex <= std::min(lCount, 64U); ++lIndex)
            {
                const bool lHas = KShard{lIndex, lCount}.Has(lName);
                lParts += lHas ? 1 : 0;
                lSizes[lIndex - 1] += lHas ? 1 : 0;
            }
            EXPECT_TRUE(lParts == 1 || (lParts == 0 && lCount > 64)) << lName;
        }
        if (lCount <= 64)
        {
            EXPECT_GT(*std::min_element(lSizes.begin(), lSizes.end()), 0) << lCount;
            EXPECT_LT(*std::max_element(lSizes.begin(), lSizes.end()), static_cast<int>(3 * 1000 / lCount)) << lCount;
        }
    }
    // The parts of a collection must not change between versions: the published values of FNV-1a, 64 bits,
    // after the published finalizer of MurmurHash3.
    EXPECT_TRUE((KShard{0xefd01f60ba992926 % 1000000 + 1, 1000000}.Has("")));
    EXPECT_TRUE((KShard{0x82a2a958a9bece5b % 1000000 + 1, 1000000}.Has("a")));
    EXPECT_TRUE((KShard{0x2c22194922d1672b % 1000000 + 1, 1000000}.Has("foobar")));
    EXPECT_EQ((KShard{3, 8}.GetWord()), "3-of-8");
}

TEST(MessageKind, NumbersAndBracketsDoNotCount)
{
    const struct
    {
        const char* mText;
        const char* mKind;
    } lCases[] = {{"", ""},
                  {"frame 12 has 3 values", "frame # has # values"},
                  {"joint3 of 120", "joint# of #"},
                  {"a value (12 of 30 (and more)) is missing", "a value  is missing"},
                  {"too large (4)", "too large"},
                  {"1.5 and 2", "#.# and #"},
                  {"a ) alone 7", "a ) alone #"},
                  {"open ( never closed 7", "open"},
                  {"  ", ""}};
    for (const auto& lCase : lCases)
    {
        EXPECT_EQ(qexsdk::KQexKindOfMessage(lCase.mText), lCase.mKind) << lCase.mText;
    }
}

TEST(Bytes, NumbersWithUnits)
{
    const struct
    {
        const char* mText;
        uint64_t    mBytes; ///< 0: none.
    } lCases[] = {{"1", 1},
                  {"800000", 800000},
                  {"64K", 65536},
                  {"1.5K", 1536},
                  {"512M", 536870912},
                  {"2G", 2147483648U},
                  {"1T", 1ULL << 40},
                  {"1e3", 1000},
                  {"", 0},
                  {"K", 0},
                  {"0", 0},
                  {"0.5", 0},
                  {"-1", 0},
                  {"64k", 0},
                  {"64KB", 0},
                  {"6 4", 0},
                  {"nan", 0},
                  {"inf", 0},
                  {"1e19", 0},
                  {"1e6T", 0},
                  {"64 K", 0},
                  {"0.001K", 1}};
    for (const auto& lCase : lCases)
    {
        uint64_t lBytes = 0;
        EXPECT_EQ(ParseBytes(lCase.mText, lBytes), lCase.mBytes != 0) << lCase.mText;
        EXPECT_EQ(lBytes, lCase.mBytes) << lCase.mText;
    }
}

/// Runs that do parts of a collection.
class KBatchPartsTest : public KBatchTest
{
protected:
    void SetUp() override
    {
        KBatchTest::SetUp();
        for (int i = 0; i < 12; ++i)
        {
            Write("in/more/" + std::to_string(i) + ".bvh", SmallBvh());
        }
    }

    std::set<std::string> MadeBy(const std::string& pCall)
    {
        std::istringstream lNames(With("made", pCall));
        return {std::istream_iterator<std::string>(lNames), {}};
    }
};

TEST_F(KBatchPartsTest, PartsMakeTogetherWhatOneRunMakes)
{
    Expect("in -o whole --to bvh -q", 0, "");
    std::set<std::string> lAll;
    size_t                lSum = 0;
    for (const char* lPart : {"1/3", "2/3", "3/3"})
    {
        const std::set<std::string> lMade = MadeBy(std::string("in -o parts --to bvh --shard ") + lPart);
        lSum += lMade.size();
        lAll.insert(lMade.begin(), lMade.end());
    }
    EXPECT_EQ(lAll.size(), kMotions + 12);
    EXPECT_EQ(lSum, lAll.size());
    EXPECT_EQ(Tree("parts"), Tree("whole"));
    EXPECT_EQ(BatchFolder("parts"), "made-1-of-3.jsonl made-2-of-3.jsonl made-3-of-3.jsonl ");
    // New files move no others to another part, and what another number of parts made counts, too.
    Write("in/00/new.bvh", SmallBvh());
    std::set<std::string> lNew;
    for (const char* lPart : {"1/3", "2/3", "3/3", "1/2", "2/2", "1/1"})
    {
        lNew.merge(MadeBy(std::string("in -o parts --to bvh --shard ") + lPart));
    }
    EXPECT_EQ(lNew, std::set<std::string>{"00/new.bvh"});
}

TEST_F(KBatchPartsTest, PartsMayRunAtOneTime)
{
    Expect("in -o whole --to bvh,glb -q", 0, "");
    std::vector<std::unique_ptr<KStartedProgram>> lRuns;
    for (const std::string lPart : {"1/4", "2/4", "3/4", "4/4"})
    {
        lRuns.push_back(StartBatch("in -o parts --to bvh,glb -q --shard " + lPart));
    }
    for (const std::unique_ptr<KStartedProgram>& lRun : lRuns)
    {
        EXPECT_EQ(lRun->Wait(), 0) << lRun->GetErrors();
    }
    EXPECT_EQ(Tree("parts"), Tree("whole"));
    Expect("--gather in -o parts", 0, "parts: 17 motions made, 0 missing or failed\n");
}

// Whichever manifest has the newest line about a motion: that one counts.
TEST_F(KBatchPartsTest, PartsAndWholeRunsMayTakeTurns)
{
    Expect("in -o out --to bvh --shard 1/2 -q", 0, "");
    Expect("in -o out --to bvh --shard 2/2 -q", 0, "");
    Expect("in -o out --to bvh --fps 30 -q", 0, "");
    EXPECT_EQ(MadeBy("in -o out --to bvh --fps 30"), std::set<std::string>());
    Expect("in -o out --to bvh --fps 60 -q", 0, "");
    Expect("in -o out --to bvh --fps 10 --shard 2/2 -q", 0, "");
    Expect("in -o out --to bvh --fps 60 -q", 0, "");
    Expect("--gather in -o out", 0, "out: 17 motions made, 0 missing or failed\n");
}

struct KArrayCase
{
    const char* mId;
    const char* mCount;
    const char* mMin;
    const char* mStep;
    const char* mPart; ///< Empty: refused.
};

class KArrayTest : public KBatchPartsTest, public testing::WithParamInterface<KArrayCase>
{
};

TEST_P(KArrayTest, AutoIsThePartOfTheTask)
{
    const KArrayCase& lCase = GetParam();
    const auto        lSet = [this](const char* pName, const char* pValue)
    {
        if (pValue != nullptr)
        {
            mOptions.mEnvironment[pName] = pValue;
        }
    };
    lSet("SLURM_ARRAY_TASK_ID", lCase.mId);
    lSet("SLURM_ARRAY_TASK_COUNT", lCase.mCount);
    lSet("SLURM_ARRAY_TASK_MIN", lCase.mMin);
    lSet("SLURM_ARRAY_TASK_STEP", lCase.mStep);
    const KRunResult lAuto = Batch("in -o auto --to npz --shard auto --dry-run -q");
    const bool       lIsRefused = *lCase.mPart == '\0';
    EXPECT_EQ(lAuto.mExit, lIsRefused ? 2 : 0) << lAuto.mErr;
    if (!lIsRefused)
    {
        EXPECT_EQ(lAuto.mOut, Batch(std::string("in -o auto --to npz --dry-run -q --shard ") + lCase.mPart).mOut);
    }
}

INSTANTIATE_TEST_SUITE_P(Tasks, KArrayTest,
                         testing::Values(KArrayCase{"0", "4", "0", "1", "1/4"}, KArrayCase{"3", "4", "0", "1", "4/4"},
                                         KArrayCase{"1", "4", "1", "1", "1/4"}, KArrayCase{"10", "3", "4", "3", "3/3"},
                                         KArrayCase{"2", "3", nullptr, nullptr, "3/3"}, KArrayCase{"4", "4", "0", "1", ""},
                                         KArrayCase{"5", "3", "4", "3", ""}, KArrayCase{"0", "4", "1", "1", ""},
                                         KArrayCase{nullptr, "4", nullptr, nullptr, ""}, KArrayCase{"1", nullptr, nullptr, nullptr, ""},
                                         KArrayCase{"x", "4", "0", "1", ""}, KArrayCase{"-1", "4", "0", "1", ""},
                                         KArrayCase{"0", "4", "0", "0", "1/4"}));

TEST_F(KBatchPartsTest, GatherListsWhatIsNotThere)
{
    Expect("in -o out --to bvh --shard 1/2 -q", 0, "");
    Expect("--gather out -q", 1, "out: error: only 1 of 2 parts have been run\n");
    Expect("--gather in -o out -q", 1, ": error: no run has done it\n");
    Write("in/bad.bvh", "HIERARCHY\nROOT");
    Expect("in -o out --to bvh -q", 1, "in/bad.bvh: error: ");
    Expect("--gather out -q", 1, "bad.bvh: error: ");
    fs::remove(mFolder / "out/01/a.bvh");
    Write("out/top.bvh", "mine");
    const KRunResult lResult = Batch("--gather out");
    EXPECT_EQ(lResult.mExit, 1);
    EXPECT_NE(lResult.mErr.find("01/a.amc: error: out/01/a.bvh is missing\n"), std::string::npos) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("top.bvh: error: out/top.bvh was changed since it was made\n"), std::string::npos) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("asf: out: 15 motions made, 3 missing or failed\n"), std::string::npos) << lResult.mErr;
    // A motion that failed and was taken away counts only without the inputs.
    fs::remove(mFolder / "in/bad.bvh");
    Expect("in -o out --to bvh -q --force", 0, "");
    Expect("--gather out -q", 1, "bad.bvh: error: ");
    Expect("--gather in -o out -q", 0, "");
    Touch("in/02/own.asf");
    Expect("--gather in -o out -q", 1, "02/c.amc: error: own.asf was changed since it was read: run again\n");
}

} // namespace
