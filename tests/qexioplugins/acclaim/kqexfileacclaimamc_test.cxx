#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <tests/qexioplugins/acclaim/amcsupport.h>
#include <tests/support/memorywatch.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <utility>

using namespace qexsdk;
using namespace qextest;

namespace
{

struct KAmcOutcome
{
    bool        mOk = false;
    std::string mFrames;
    std::string mMessages;
    KQexAmcInfo mInfo;
    double      mLengthFactor = 0.0;
    double      mAngleFactor = 0.0;
};

KAmcOutcome ReadAmc(const std::string& pText, KQexAmcReadOptions pOptions = {}, const std::string& pAsf = kSmallAsf)
{
    KAmcOutcome             lOutcome;
    KQexImportAcclaimResult lSkeleton;
    KQexAsfSceneOwner       lScene = ReadSmallAsf(pAsf, lSkeleton);
    if (lScene == nullptr)
    {
        return lOutcome;
    }
    if (pOptions.mSkeletonNotes.mLengthDofs.empty())
    {
        pOptions.mSkeletonNotes.mLengthDofs = lSkeleton.mSkeletonNotes.mLengthDofs;
    }
    KQexFileAcclaimAmc lFile(false);
    KFrameLog          lLog;
    EXPECT_TRUE(lFile.OpenReadBuffer(pText.data(), pText.size()));
    lOutcome.mOk = lFile.ReadFrames(lScene.get(), pOptions, lLog);
    lOutcome.mFrames = lLog.mText;
    lOutcome.mMessages = Texts(lFile.GetMessages());
    lOutcome.mInfo = lFile.GetInfo();
    lOutcome.mLengthFactor = lLog.mLengthFactor;
    lOutcome.mAngleFactor = lLog.mAngleFactor;
    return lOutcome;
}

struct KAmcCase
{
    const char* mWhat;
    std::string mText;
    bool        mOk;
    std::string mFrames;
    std::string mMessages;
    bool        mKeepGoodFrames = false;
};

std::ostream& operator<<(std::ostream& pStream, const KAmcCase& pCase)
{
    return pStream << pCase.mWhat;
}

class KAmcTest : public testing::TestWithParam<KAmcCase>
{
};

TEST_P(KAmcTest, FramesAndMessages)
{
    KQexAmcReadOptions lOptions;
    lOptions.mKeepGoodFrames = GetParam().mKeepGoodFrames;
    const KAmcOutcome lOutcome = ReadAmc(GetParam().mText, lOptions);
    EXPECT_EQ(lOutcome.mOk, GetParam().mOk);
    EXPECT_EQ(lOutcome.mFrames, GetParam().mFrames);
    EXPECT_EQ(lOutcome.mMessages, GetParam().mMessages);
}

const char kFull1[] = "1@0 root(1) a(2 3) b(4) c(5 6)\n";
const char kFull2[] = "2@1 root(2) a(3 4) b(5) c(6 7)\n";
const char kFull3[] = "3@2 root(3) a(4 5) b(6) c(7 8)\n";

const std::string kTwo = SmallFrame(1, 1) + SmallFrame(2, 2);
const std::string kTwoFrames = std::string(kFull1) + kFull2;

INSTANTIATE_TEST_SUITE_P(
    Form, KAmcTest,
    testing::Values(
        KAmcCase{"two plain frames", kTwo, true, kTwoFrames, ""},
        KAmcCase{
            "header, comments, blank lines",
            "#!OML:ASF C:\\a b\\x.ASF\n# a comment\n:FULLY-SPECIFIED\n:DEGREES\n\n1 # one\nroot 1 # x\na 2 3\n#\nb 4\n  c\t5 99 6  \n" +
                SmallFrame(2, 2),
            true, kTwoFrames, ""},
        KAmcCase{"CR LF", ReplacedAll(kTwo, "\n", "\r\n"), true, kTwoFrames, ""},
        KAmcCase{"lone CR", ReplacedAll(kTwo, "\n", "\r"), true, kTwoFrames, ""},
        KAmcCase{"no line end at the end", kTwo.substr(0, kTwo.size() - 1), true, kTwoFrames, ""},
        KAmcCase{"byte-order mark", "\xEF\xBB\xBF" + kTwo, true, kTwoFrames, ""},
        KAmcCase{"NUL bytes are blanks", ReplacedAll(kTwo, " ", std::string(1, '\0')), true, kTwoFrames, ""},
        KAmcCase{"keywords in any case", ":fully-Specified\n:degrees\n" + kTwo, true, kTwoFrames, ""},
        KAmcCase{"names in any case", ReplacedAll(ReplacedAll(kTwo, "root", "ROOT"), "\na", "\nA"), true, kTwoFrames, ""},
        KAmcCase{"bones in any order", "1\nc 5 0 6\nb 4\na 2 3\nroot 1\n" + SmallFrame(2, 2), true,
                 "1@0 c(5 6) b(4) a(2 3) root(1)\n" + std::string(kFull2), ""},
        KAmcCase{"every way to write a number",
                 "1\nroot +1\na 2.e0 .3E1\nb 400e-2\nc 5.0000000000000000000000001 -1e-999 6\n" + SmallFrame(2, 2), true, kTwoFrames, ""},
        KAmcCase{"negative frame numbers", SmallFrame(-3, 1) + SmallFrame(-2, 2), true,
                 "-3@0 root(1) a(2 3) b(4) c(5 6)\n-2@1 root(2) a(3 4) b(5) c(6 7)\n", ""},
        KAmcCase{"a bone without a DOF has no values", "1\nroot 1\na 2 3\nb 4\nc 5 99 6\nd\n" + SmallFrame(2, 2), true, kTwoFrames, ""}));

INSTANTIATE_TEST_SUITE_P(
    FrameNumbers, KAmcTest,
    testing::Values(KAmcCase{"starting anywhere", SmallFrame(1000, 1) + SmallFrame(1001, 2), true,
                             "1000@0 root(1) a(2 3) b(4) c(5 6)\n1001@1 root(2) a(3 4) b(5) c(6 7)\n", ""},
                    KAmcCase{"a jump", SmallFrame(1, 1) + SmallFrame(1000000001, 2), true,
                             std::string(kFull1) + "1000000001@1e+09 root(2) a(3 4) b(5) c(6 7)\n", ""},
                    KAmcCase{"a repeat", kTwo + SmallFrame(2, 3), true, kTwoFrames + "2@1 late root(3) a(4 5) b(6) c(7 8)\n",
                             "W11 Frame 2 comes after frame 2, the last one wins\n"},
                    KAmcCase{"going back warns once", kTwo + SmallFrame(1, 3) + SmallFrame(2, 3) + SmallFrame(3, 3), true,
                             kTwoFrames + "1@0 late root(3) a(4 5) b(6) c(7 8)\n2@1 late root(3) a(4 5) b(6) c(7 8)\n" + kFull3,
                             "W11 Frame 1 comes after frame 2, the last one wins\n"},
                    KAmcCase{"going back below the first", SmallFrame(5, 1) + SmallFrame(4, 2), true,
                             "5@0 root(1) a(2 3) b(4) c(5 6)\n4@-1 late root(2) a(3 4) b(5) c(6 7)\n",
                             "W6 Frame 4 comes after frame 5, the last one wins\n"},
                    KAmcCase{"too far", kTwo + SmallFrame(9223372036854775807, 3), false, kTwoFrames,
                             "E11 Frame number 9223372036854775807 is too far from the first, 1\n"},
                    KAmcCase{"beyond what a number holds", kTwo + "99999999999999999999\nroot 1\n", false, kTwoFrames,
                             "E11 Frame number expected, not (99999999999999999999)\n"},
                    KAmcCase{"with a point", kTwo + "3.5\nroot 1\n", false, kTwoFrames, "E11 Frame number expected, not (3.5)\n"},
                    KAmcCase{"text after a frame number", ReplacedAll(kTwo, "2\nroot", "2 of 9\nroot"), true, kTwoFrames,
                             "W6 Ignoring the text after a frame number (of 9)\n"},
                    KAmcCase{"values before a frame number", "root 1\n" + kTwo, false, "", "E1 Frame number expected before bone root\n"},
                    KAmcCase{"no frame", ":DEGREES\n", false, "", "E1 The motion has no complete frame\n"},
                    KAmcCase{"an empty file", "", false, "", "E0 The motion has no complete frame\n"}));

INSTANTIATE_TEST_SUITE_P(
    Keywords, KAmcTest,
    testing::Values(KAmcCase{"unknown keywords, each once", ":FOO 1\n:bar\n:FOO 2\n:BAR\n" + kTwo, true, kTwoFrames,
                             "W1 Ignoring unknown keyword (:FOO)\nW2 Ignoring unknown keyword (:bar)\n"},
                    KAmcCase{"a lone colon", ":\n" + kTwo, true, kTwoFrames, "W1 Ignoring unknown keyword (:)\n"},
                    KAmcCase{"known keywords with values",
                             ":FRAME-RANGE 1 2\n:ASF-FILE x y.asf\n:ASF-PATH /a\n:SAMPLES-PER-SECOND 120\n" + kTwo, true, kTwoFrames, ""},
                    KAmcCase{"invalid values", ":FRAME-RANGE 1\n:ASF-FILE\n:SAMPLES-PER-SECOND 0\n:SAMPLES-PER-SECOND fast\n" + kTwo, true,
                             kTwoFrames,
                             "W1 Invalid value of :FRAME-RANGE (1)\nW2 Invalid value of :ASF-FILE ()\n"
                             "W3 Invalid value of :SAMPLES-PER-SECOND (0)\nW4 Invalid value of :SAMPLES-PER-SECOND (fast)\n"},
                    KAmcCase{"both angle units", ":DEGREES\n:RADIANS\n" + kTwo, true, kTwoFrames,
                             "W2 Angles in degrees and in radians, the last one (:RADIANS) wins\n"},
                    KAmcCase{"keywords after the first frame",
                             SmallFrame(1, 1) + ":DEGREES\n:FULLY-SPECIFIED\n:RADIANS\n:DEGREES\n" + SmallFrame(2, 2), true, kTwoFrames,
                             "W6 Ignoring :DEGREES after the first frame\nW8 Ignoring :RADIANS after the first frame\n"}));

INSTANTIATE_TEST_SUITE_P(
    Bones, KAmcTest,
    testing::Values(
        KAmcCase{"absent, each bone once", "1\nroot 1\na 2 3\nc 5 99 6\n2\nroot 2\nc 6 99 7\n3\nroot 3\nb 4\nc 1 1 1\n", true,
                 "1@0 root(1) a(2 3) c(5 6)\n2@1 root(2) c(6 7)\n3@2 root(3) b(4) c(1 1)\n",
                 "W5 Bone b is not in frame 1, it holds its rest pose\nW8 Bone a is not in frame 2, it holds its last value\n"},
        KAmcCase{"unknown, each name once",
                 "1\nroot 1\ntail 1 2\nhorn\na 2 3\nb 4\nc 5 99 6\n" + ReplacedAll(SmallFrame(2, 2), "\nc", "\ntail x\nc"), true,
                 kTwoFrames,
                 "W3 The skeleton has no bone tail, its values are ignored\nW4 The skeleton has no bone horn, its values are ignored\n"},
        KAmcCase{
            "too many values, each bone once", ReplacedAll(kTwo, " 99 ", " 99 1 ") + "3\nroot 1 2 3\na 1 2 x\nb 1\nc 1 2 3 4\n", true,
            "1@0 root(1) a(2 3) b(4) c(5 1)\n2@1 root(2) a(3 4) b(5) c(6 1)\n3@2 root(1) a(1 2) b(1) c(1 3)\n",
            "W5 Bone c has more than 3 values, ignoring the others (6)\nW12 Bone root has more than 1 value, ignoring the others (2 3)\n"
            "W13 Bone a has more than 2 values, ignoring the others (x)\n"},
        KAmcCase{"values of a bone without a DOF", "1\nroot 1\na 2 3\nb 4\nc 5 99 6\nd 1\n" + SmallFrame(2, 2), true, kTwoFrames,
                 "W6 Bone d has more than 0 values, ignoring the others (1)\n"},
        KAmcCase{"twice in one frame", "1\nroot 7\na 2 3\nb 4\nc 5 99 6\nroot 1\n" + SmallFrame(2, 2), true, kTwoFrames,
                 "W6 Bone root appears twice in frame 1, the last one wins\n"}));

INSTANTIATE_TEST_SUITE_P(
    Faults, KAmcTest,
    testing::Values(
        KAmcCase{"too few values", kTwo + "3\nroot 3\na 4\nb 6\nc 7 99 8\n", false, kTwoFrames,
                 "E13 Bone a: 2 values expected (rx ry), only 1 found\n"},
        KAmcCase{"too few values with an l", kTwo + "3\nc 7 8\n", false, kTwoFrames,
                 "E12 Bone c: 3 values expected (rz l ry), only 2 found\n"},
        KAmcCase{"not a number", kTwo + "3\nroot 3\na 4 x5\nb 6\nc 7 99 8\n", false, kTwoFrames,
                 "E13 Bone a: number expected for ry of (rx ry), not (x5)\n"},
        KAmcCase{"a number with a suffix", kTwo + "3\nroot 3,5\n", false, kTwoFrames,
                 "E12 Bone root: number expected for tx of (tx), not (3,5)\n"},
        KAmcCase{"not finite", kTwo + "3\nroot nan\n", false, kTwoFrames, "E12 Bone root: number expected for tx of (tx), not (nan)\n"},
        KAmcCase{"too large", kTwo + "3\nroot 1e999\n", false, kTwoFrames, "E12 Bone root: number expected for tx of (tx), not (1e999)\n"},
        KAmcCase{"hexadecimal", kTwo + "3\nroot 0x10\n", false, kTwoFrames, "E12 Bone root: number expected for tx of (tx), not (0x10)\n"},
        KAmcCase{"l is not a number", kTwo + "3\nc 1 l 3\n", false, kTwoFrames,
                 "E12 Bone c: number expected for l of (rz l ry), not (l)\n"},
        KAmcCase{"good frames kept", kTwo + "3\nroot 3\na 4\nb 6\nc 7 99 8\n4\n", true, kTwoFrames,
                 "E13 Bone a: 2 values expected (rx ry), only 1 found\n", true},
        KAmcCase{"no good frame to keep", "3\nroot 3\na 4\n", false, "", "E3 Bone a: 2 values expected (rx ry), only 1 found\n", true},
        KAmcCase{"an over-long line", kTwo + "3\nroot " + std::string(1048577, '1') + "\n", false, kTwoFrames, "E12 Line is too long\n"},
        KAmcCase{"an over-long line after good frames", kTwo + "3\nroot " + std::string(1048577, '1') + "\n", true, kTwoFrames,
                 "E12 Line is too long\n", true},
        KAmcCase{"UTF-16", std::string("\xFF\xFE") + "1\n", false, "", "E0 UTF-16 text is not supported\n"}));

INSTANTIATE_TEST_SUITE_P(
    CutShort, KAmcTest,
    testing::Values(
        KAmcCase{"between two lines", kTwo + "3\nroot 3\na 4 5\n", true, kTwoFrames,
                 "W13 Frame 3 is cut short by the end of the file and dropped\n"},
        KAmcCase{"after the frame number", kTwo + "3\n", true, kTwoFrames, "W11 Frame 3 is cut short by the end of the file and dropped\n"},
        KAmcCase{"in the frame number", kTwo + "1", true, kTwoFrames, "W11 Frame 1 is cut short by the end of the file and dropped\n"},
        KAmcCase{"in a name", kTwo + "3\nroo", true, kTwoFrames, "W12 Frame 3 is cut short by the end of the file and dropped\n"},
        KAmcCase{"after a name", kTwo + "3\nroot 3\na", true, kTwoFrames, "W13 Frame 3 is cut short by the end of the file and dropped\n"},
        KAmcCase{"in a number", kTwo + "3\nroot 3\na 4 5.2e", true, kTwoFrames,
                 "W13 Frame 3 is cut short by the end of the file and dropped\n"},
        KAmcCase{"a line too short, with a line end, is a fault", kTwo + "3\nroot 3\na 4\n", false, kTwoFrames,
                 "E13 Bone a: 2 values expected (rx ry), only 1 found\n"},
        KAmcCase{"a bone that is missing in the middle is absent", kTwo + "3\nroot 3\nb 6\nc 7 99 8\n", true,
                 kTwoFrames + "3@2 root(3) b(6) c(7 8)\n", "W14 Bone a is not in frame 3, it holds its last value\n"},
        KAmcCase{"the only frame", "1\nroot 1\na 2", false, "",
                 "W3 Frame 1 is cut short by the end of the file and dropped\nE3 The motion has no complete frame\n"}));

TEST(KQexFileAcclaimAmc, UnitsOfAnglesAndLengths)
{
    const std::string lRadiansAsf = ReplacedAll(kSmallAsf, "angle deg", "angle rad");
    const std::string lLengthAsf = ReplacedAll(kSmallAsf, "length 2.54", "length 0.05");
    const std::string lNoUnitAsf = ReplacedAll(kSmallAsf, "length 2.54", "length 0");
    EXPECT_EQ(ReadAmc(kTwo).mAngleFactor, 1.0);
    EXPECT_EQ(ReadAmc(":RADIANS\n" + kTwo).mAngleFactor, 57.29577951308232);
    EXPECT_EQ(ReadAmc(kTwo, {}, lRadiansAsf).mAngleFactor, 57.29577951308232);
    EXPECT_EQ(ReadAmc(":DEGREES\n" + kTwo, {}, lRadiansAsf).mAngleFactor, 1.0);
    EXPECT_EQ(ReadAmc(kTwo).mLengthFactor, 1.0);
    EXPECT_EQ(ReadAmc(kTwo, {}, lLengthAsf).mLengthFactor, 2.54 / 0.05);
    EXPECT_EQ(ReadAmc(kTwo, {}, lNoUnitAsf).mLengthFactor, 1.0);
}

struct KRateCase
{
    double            mCaller;
    const char*       mHeader;
    double            mRate;
    KQexAmcRateSource mSource;
    long long         mTicks;
};

class KAmcRateTest : public testing::TestWithParam<KRateCase>
{
};

TEST_P(KAmcRateTest, RateAndFrameTime)
{
    KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = GetParam().mCaller;
    const KAmcOutcome lOutcome = ReadAmc(GetParam().mHeader + SmallFrame(1, 1) + SmallFrame(11, 2), lOptions);
    ASSERT_TRUE(lOutcome.mOk) << lOutcome.mMessages;
    EXPECT_EQ(lOutcome.mInfo.mSamplesPerSecond, GetParam().mRate);
    EXPECT_EQ(lOutcome.mInfo.mRateSource, GetParam().mSource);
    EXPECT_EQ(lOutcome.mInfo.mStop.Get(), GetParam().mTicks);
}

INSTANTIATE_TEST_SUITE_P(Sources, KAmcRateTest,
                         testing::Values(KRateCase{0, "", 120, eAMC_RATE_DEFAULT, 58800000},
                                         KRateCase{0, ":SAMPLES-PER-SECOND 60\n", 60, eAMC_RATE_FILE, 117600000},
                                         KRateCase{0, "# samples-per-second 30\n", 30, eAMC_RATE_FILE, 235200000},
                                         KRateCase{0, "# c\n\n  #Samples-Per-Second\t29.97002997 \r\n#\n:DEGREES\n", 29.97002997,
                                                   eAMC_RATE_FILE, 235435200},
                                         // The keyword wins over the comment, the caller over both; after the first keyword a comment
                                         // is only a comment, like a keyword that was commented out.
                                         KRateCase{0, "# samples-per-second 30\n:SAMPLES-PER-SECOND 60\n", 60, eAMC_RATE_FILE, 117600000},
                                         KRateCase{24, "# samples-per-second 30\n", 24, eAMC_RATE_CALLER, 294000000},
                                         KRateCase{0, "# samples-per-second 30\n:SAMPLES-PER-SECOND x\n", 30, eAMC_RATE_FILE, 235200000},
                                         KRateCase{0, ":DEGREES\n# samples-per-second 30\n", 120, eAMC_RATE_DEFAULT, 58800000},
                                         KRateCase{0, ":DEGREES # samples-per-second 30\n", 120, eAMC_RATE_DEFAULT, 58800000},
                                         KRateCase{0, "# :samples-per-second 30\n", 120, eAMC_RATE_DEFAULT, 58800000},
                                         KRateCase{0, "# samples-per-second 30\n# samples-per-second 60\n", 60, eAMC_RATE_FILE, 117600000},
                                         KRateCase{30, ":samples-per-second 60\n", 30, eAMC_RATE_CALLER, 235200000},
                                         KRateCase{30000.0 / 1001.0, "", 30000.0 / 1001.0, eAMC_RATE_CALLER, 235435200},
                                         KRateCase{0.5, "", 0.5, eAMC_RATE_CALLER, 14112000000},
                                         // 10 frames at a rate without whole ticks: rounded once, not ten times.
                                         KRateCase{705600000.0 / 3.25, "", 705600000.0 / 3.25, eAMC_RATE_CALLER, 33}));

TEST(KQexFileAcclaimAmc, CommentsAboutTheRateThatSayNoRateAreIgnoredWithAWarning)
{
    const KAmcOutcome lOutcome = ReadAmc("# samples-per-second\n# samples-per-second 0\n#samples-per-second 30 or so\n"
                                         "# samples-per-second fast\n# samples-per-second: 30\n" +
                                         kTwo + "# samples-per-second never\n");
    const std::string lAfter = "): a rate is expected after samples-per-second, and nothing else\n";
    EXPECT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mInfo.mRateSource, eAMC_RATE_DEFAULT);
    EXPECT_EQ(lOutcome.mMessages, "W1 Ignoring the comment (# samples-per-second" + lAfter +
                                      "W2 Ignoring the comment (# samples-per-second 0" + lAfter +
                                      "W3 Ignoring the comment (#samples-per-second 30 or so" + lAfter +
                                      "W4 Ignoring the comment (# samples-per-second fast" + lAfter);
}

TEST(KQexFileAcclaimAmc, RatesThatDisagreeAreReported)
{
    const std::string lHeader = "# samples-per-second 30\n:SAMPLES-PER-SECOND ";
    EXPECT_EQ(ReadAmc(lHeader + "30.000\n" + kTwo).mMessages, "");
    EXPECT_EQ(ReadAmc(lHeader + "60\n" + kTwo).mMessages, "W3 The rate of :SAMPLES-PER-SECOND (60) wins over that of the comment (30)\n");
    KQexAmcReadOptions lOptions;
    lOptions.mSamplesPerSecond = 24;
    EXPECT_EQ(ReadAmc(lHeader + "60\n" + kTwo, lOptions).mMessages, "") << "the caller decided";
}

/// The rate that is written gives the same time between frames when read.
TEST(KQexFileAcclaimAmc, WrittenRatesReadBackExactly)
{
    const struct
    {
        long long   mTicks;
        const char* mText;
    } lCases[] = {{23520000, "30"},           {5880000, "120"},          {23543520, "29.97002997"}, {29429400, "23.97602398"},
                  {11771760, "59.94005994"},  {28224000, "25"},          {1, "705600000"},          {7, "100800000"},
                  {705600000000000, "1e-06"}, {29429429, "23.97600035"}, {70560000000, "0.01"},     {123456789012345, nullptr}};
    for (const auto& lCase : lCases)
    {
        KQexImportAcclaimResult lResult;
        const KQexAsfSceneOwner lSkeleton = ReadSmallAsf(kSmallAsf, lResult);
        const KScenePtr         lScene = MakeScene();
        KQexAmcWriteOptions     lOptions;
        lOptions.mSampling = {KTime(0), KTime(lCase.mTicks), 3};
        lOptions.mSkeletonNotes = lResult.mSkeletonNotes;
        for (const bool lKeyword : {false, true})
        {
            lOptions.mWriteRate = lKeyword;
            std::string        lText;
            KQexFileAcclaimAmc lFile(false);
            ASSERT_TRUE(lFile.OpenWriteBuffer(&lText) &&
                        lFile.Write(lSkeleton.get(), {{lSkeleton->mRoot, lScene->GetRootNode()}}, lOptions));
            const size_t      lFrom = sizeof "# samples-per-second";
            const std::string lRate = lText.substr(lFrom, lText.find('\n') - lFrom);
            const std::string lExpected = "# samples-per-second " + lRate + "\n:FULLY-SPECIFIED\n:DEGREES\n" +
                                          (lKeyword ? ":SAMPLES-PER-SECOND " + lRate + "\n" : "") + "1\n";
            EXPECT_EQ(lText.substr(0, lExpected.size()), lExpected);
            EXPECT_EQ(lRate, lCase.mText != nullptr ? lCase.mText : lRate);
            const KAmcOutcome lOutcome = ReadAmc(lText);
            EXPECT_EQ(lOutcome.mMessages, "");
            EXPECT_EQ(lOutcome.mInfo.mStop.Get(), 2 * lCase.mTicks) << lText;
        }
    }
}

TEST(KQexFileAcclaimAmc, RefusesInvalidRates)
{
    for (const double lRate : {-1.0, 1e-9, 1e12, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
    {
        KQexAmcReadOptions lOptions;
        lOptions.mSamplesPerSecond = lRate;
        const KAmcOutcome lOutcome = ReadAmc(kTwo, lOptions);
        EXPECT_FALSE(lOutcome.mOk) << lRate;
        EXPECT_EQ(lOutcome.mMessages.substr(0, 15), "E1 Invalid rate") << lRate;
    }
}

TEST(KQexFileAcclaimAmc, InfoSummarisesTheFrames)
{
    const KAmcOutcome lOutcome = ReadAmc(SmallFrame(10, 1) + SmallFrame(12, 2) + SmallFrame(8, 3));
    ASSERT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mInfo.mFrameCount, 3);
    EXPECT_EQ(lOutcome.mInfo.mFirstFrame, 10);
    EXPECT_EQ(lOutcome.mInfo.mLowestFrame, 8);
    EXPECT_EQ(lOutcome.mInfo.mHighestFrame, 12);
    EXPECT_EQ(lOutcome.mInfo.mStart.Get(), -2 * 5880000);
    EXPECT_EQ(lOutcome.mInfo.mStop.Get(), 2 * 5880000);
}

TEST(KQexFileAcclaimAmc, StopsWhenTheVisitorAsksTo)
{
    KQexImportAcclaimResult lSkeleton;
    KQexAsfSceneOwner       lScene = ReadSmallAsf(kSmallAsf, lSkeleton);
    ASSERT_NE(lScene, nullptr);
    KQexFileAcclaimAmc lFile(false);
    KFrameLog          lLog;
    lLog.mStopAfter = 1;
    KQexAmcReadOptions lOptions;
    lOptions.mSkeletonNotes = lSkeleton.mSkeletonNotes;
    lOptions.mKeepGoodFrames = true;
    ASSERT_TRUE(lFile.OpenReadBuffer(kTwo.data(), kTwo.size()));
    EXPECT_FALSE(lFile.ReadFrames(lScene.get(), lOptions, lLog));
    EXPECT_EQ(Texts(lFile.GetMessages()), "");
    EXPECT_EQ(lLog.mText, kFull1);
}

/// A bad frame is left out whole, and frames after it are complete: nothing of it counts as seen before.
TEST(KQexFileAcclaimAmc, FindsMoreErrors)
{
    KQexAmcReadOptions lOptions;
    lOptions.mFindMoreErrors = true;
    const std::string lBad = "7\na 2 3\nroot x\na also bad\n:RADIANS\n8.5\n";
    const KAmcOutcome lOutcome = ReadAmc(lBad + kTwo + "9\n", lOptions);
    EXPECT_FALSE(lOutcome.mOk);
    EXPECT_EQ(std::count(lOutcome.mMessages.begin(), lOutcome.mMessages.end(), '\n'), 3) << lOutcome.mMessages;
    EXPECT_NE(lOutcome.mMessages.find("Frame number expected, not (8.5)"), std::string::npos) << lOutcome.mMessages;
    EXPECT_EQ(lOutcome.mMessages.find("appears twice"), std::string::npos) << lOutcome.mMessages;
    EXPECT_EQ(lOutcome.mInfo.mFrameCount, 2);
    EXPECT_EQ(lOutcome.mInfo.mFirstFrame, 1);
}

TEST(KQexFileAcclaimAmc, NeedsASkeleton)
{
    KQexFileAcclaimAmc lFile(false);
    KFrameLog          lLog;
    ASSERT_TRUE(lFile.OpenReadBuffer(kTwo.data(), kTwo.size()));
    EXPECT_FALSE(lFile.ReadFrames(nullptr, {}, lLog));
    EXPECT_FALSE(lFile.Read(nullptr, nullptr, {}));
    EXPECT_EQ(lFile.GetErrorCount(), 2);
}

TEST(KQexFileAcclaimAmc, RefusesToWriteNothing)
{
    KQexImportAcclaimResult        lResult;
    const KQexAsfSceneOwner        lSkeleton = ReadSmallAsf(kSmallAsf, lResult);
    const KQexAsfSceneOwner        lEmpty(QexSdkNew<KQexAsfScene>());
    const KScenePtr                lScene = MakeScene();
    const std::vector<KQexAmcPair> lPairs = {{lSkeleton->mRoot, lScene->GetRootNode()}};
    KQexAmcWriteOptions            lOne;
    KQexAmcWriteOptions            lNone;
    lOne.mSampling = {KTime(0), FrameTime(1), 1};
    std::string lOut;

    const auto lWrites = [&lOut](KQexAsfScene* pSkeleton, const std::vector<KQexAmcPair>& pPairs, const KQexAmcWriteOptions& pOptions)
    {
        KQexFileAcclaimAmc lFile(false);
        const bool         lOk = lFile.OpenWriteBuffer(&lOut) && lFile.Write(pSkeleton, pPairs, pOptions);
        EXPECT_EQ(Texts(lFile.GetMessages()), lOk ? "" : "E0 Nothing to write\n");
        return lOk;
    };
    EXPECT_FALSE(lWrites(nullptr, lPairs, lOne));
    EXPECT_FALSE(lWrites(lEmpty.get(), lPairs, lOne));
    EXPECT_FALSE(lWrites(lSkeleton.get(), {}, lOne));
    EXPECT_FALSE(lWrites(lSkeleton.get(), lPairs, lNone));
    EXPECT_TRUE(lWrites(lSkeleton.get(), lPairs, lOne));
    EXPECT_EQ(lOut, "# samples-per-second 120\n:FULLY-SPECIFIED\n:DEGREES\n1\nroot 0\na 0 0\nb 0\nc 0 0\n");
}

TEST(KQexFileAcclaimAmc, BonesThatCleanUpRemovedAreIgnored)
{
    KQexAmcReadOptions lOptions;
    lOptions.mSkeletonNotes.mRemovedBones = {"hip", "l"};
    const KAmcOutcome lOutcome = ReadAmc(ReplacedAll(kTwo, "\na", "\nhip 1 2 3\nl x\na"), lOptions);
    EXPECT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mFrames, kTwoFrames);
    EXPECT_EQ(lOutcome.mMessages, "");
}

TEST(KQexFileAcclaimAmc, BonesNamedLikeNumbers)
{
    const std::string lAsf = ReplacedAll(ReplacedAll(kSmallAsf, "name b", "name 7"), "a b\n    b c", "a 7\n    7 c");
    const KAmcOutcome lOutcome = ReadAmc(ReplacedAll(kTwo, "\nb", "\n7"), {}, lAsf);
    EXPECT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mFrames, ReplacedAll(kTwoFrames, " b(", " 7("));
    EXPECT_EQ(lOutcome.mMessages, "");
}

TEST(KQexFileAcclaimAmc, CutBoneNamesAreFound)
{
    const std::string lName(60, 'n');
    const std::string lAsf =
        ReplacedAll(ReplacedAll(kSmallAsf, "name b", "name " + lName), "a b\n    b c", "a " + lName + "\n    " + lName + " c");
    const KAmcOutcome lOutcome = ReadAmc(ReplacedAll(kTwo, "\nb", "\n" + lName), {}, lAsf);
    EXPECT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mFrames, ReplacedAll(kTwoFrames, " b(", " " + std::string(50, 'n') + "("));
}

TEST(KQexFileAcclaimAmc, LengthDofsAnywhereOnTheLine)
{
    struct KLengthCase
    {
        const char* mDof;
        const char* mValues;
        const char* mFrame;
    };
    const KLengthCase lCases[] = {
        {"l rz ry", "9 1 2", "c(1 2)"}, {"rz ry l", "1 2 9", "c(1 2)"}, {"l rz l ry l", "8 1 9 2 7", "c(1 2)"}, {"l", "9", ""}};
    for (const KLengthCase& lCase : lCases)
    {
        const std::string lAsf = ReplacedAll(kSmallAsf, "dof rz l ry", std::string("dof ") + lCase.mDof);
        const KAmcOutcome lOutcome = ReadAmc(std::string("1\nroot 1\na 2 3\nb 4\nc ") + lCase.mValues + "\n", {}, lAsf);
        EXPECT_TRUE(lOutcome.mOk) << lCase.mDof;
        const std::string lBone = *lCase.mFrame == '\0' ? "" : std::string(" ") + lCase.mFrame;
        EXPECT_EQ(lOutcome.mFrames, "1@0 root(1) a(2 3) b(4)" + lBone + "\n") << lCase.mDof;
        EXPECT_EQ(lOutcome.mMessages, "") << lCase.mDof;
    }
}

/// Of bones of one name only one has a line in the motion, and only its own length DOFs count.
TEST(KQexFileAcclaimAmc, LengthDofsOfBonesOfOneName)
{
    const std::string lTwin = "name c\n    direction 0 -1 0\n    length 1\n    axis 0 0 0 XYZ\n    dof l rz ry\n  end\n";
    const std::string lAsf =
        ReplacedAll(ReplacedAll(kSmallAsf, "dof rz l ry", "dof l rz ry"), "name d", lTwin + "  begin\n    id 5\n    name d");
    const KAmcOutcome lOutcome = ReadAmc("1\nroot 1\na 2 3\nb 4\nc 9 1 2\n", {}, lAsf);
    EXPECT_TRUE(lOutcome.mOk) << lOutcome.mMessages;
    const KAmcOutcome lShort = ReadAmc("1\nroot 1\na 2 3\nb 4\nc 9 1\n", {}, lAsf);
    EXPECT_NE(lShort.mMessages.find("Bone c: 3 values expected (l rz ry), only 2 found\n"), std::string::npos) << lShort.mMessages;
}

/// Cut anywhere, a file gives only complete frames. The exception is a cut between two lines of the first frame: it looks like a file
/// without the other bones.
TEST(KQexFileAcclaimAmc, TruncationAtEveryByte)
{
    const std::string lText = "#!OML:ASF x\n:FULLY-SPECIFIED\n:DEGREES\n" + kTwo + SmallFrame(3, 3);
    const std::string lAll = kTwoFrames + kFull3;
    const size_t      lFirstFrame = lText.find("\n2\n");
    for (size_t lSize = 0; lSize < lText.size(); ++lSize)
    {
        for (const bool lKeep : {false, true})
        {
            KQexAmcReadOptions lOptions;
            lOptions.mKeepGoodFrames = lKeep;
            const KAmcOutcome lOutcome = ReadAmc(lText.substr(0, lSize), lOptions);
            EXPECT_EQ(lOutcome.mOk, !lOutcome.mFrames.empty()) << lSize;
            std::string lFrames = lOutcome.mFrames;
            if (lSize <= lFirstFrame && !lFrames.empty())
            {
                lFrames.pop_back();
            }
            EXPECT_EQ(lAll.substr(0, lFrames.size()), lFrames) << lSize;
            EXPECT_EQ(lOutcome.mOk, lOutcome.mMessages.find('E') == std::string::npos) << lSize << lOutcome.mMessages;
        }
    }
}

struct KPeekCase
{
    const char* mWhat;
    const char* mText;
    const char* mAsfFile;
    const char* mAsfPath;
    double      mRate;
    int         mAngle;
    double      mCommentRate = 0;
};

class KAmcPeekTest : public testing::TestWithParam<KPeekCase>
{
};

TEST_P(KAmcPeekTest, Header)
{
    KQexAmcHeader lHeader;
    KQexFileAcclaimAmc::PeekHeaderBuffer(GetParam().mText, std::strlen(GetParam().mText), lHeader);
    EXPECT_EQ(lHeader.mAsfFile, GetParam().mAsfFile);
    EXPECT_EQ(lHeader.mAsfPath, GetParam().mAsfPath);
    EXPECT_EQ(lHeader.mSamplesPerSecond, GetParam().mRate);
    EXPECT_EQ(lHeader.mAngle, GetParam().mAngle);
    EXPECT_EQ(lHeader.mCommentRate, GetParam().mCommentRate);

    // The same from a file.
    const KTempDir lFolder;
    const auto     lPath = lFolder / "a.amc";
    WriteFile(lPath, GetParam().mText);
    KQexAmcHeader lOfFile;
    std::string   lReason;
    EXPECT_TRUE(KQexFileAcclaimAmc::PeekHeader(lPath.c_str(), lOfFile, lReason));
    EXPECT_EQ(lOfFile.mAsfFile, GetParam().mAsfFile);
    EXPECT_EQ(lOfFile.mAngle, GetParam().mAngle);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KAmcPeekTest,
    testing::Values(
        KPeekCase{"nothing", "", "", "", 0, eAMC_ANGLE_SKELETON},
        KPeekCase{"first line", "#!OML:ASF C:\\My Files\\a.ASF \r\n:DEGREES\r\n1\r\n", "C:\\My Files\\a.ASF", "", 0, eAMC_ANGLE_DEGREES},
        KPeekCase{"keywords", "# c\n:asf-file b c.asf # d\n:ASF-PATH /x y/\n:RADIANS\n:samples-per-second 60\n1\n", "b c.asf", "/x y/", 60,
                  eAMC_ANGLE_RADIANS},
        KPeekCase{"the keyword wins over an earlier comment", "#!OML:ASF a.asf\n:ASF-FILE b.asf\n1\n", "b.asf", "", 0, eAMC_ANGLE_SKELETON},
        KPeekCase{"the keyword wins over a later comment", ":ASF-FILE b.asf\n#!OML:ASF a.asf\n1\n", "b.asf", "", 0, eAMC_ANGLE_SKELETON},
        KPeekCase{"a rate in a comment", "#!OML:ASF a.asf\n# samples-per-second 30\n:DEGREES\n# samples-per-second 60\n1\n", "a.asf", "", 0,
                  eAMC_ANGLE_DEGREES, 30},
        KPeekCase{"stops at the first frame", ":DEGREES\n1\n:RADIANS\n:ASF-FILE a\n", "", "", 0, eAMC_ANGLE_DEGREES}));

TEST(KQexFileAcclaimAmc, PeekReportsWhyItFails)
{
    const KTempDir lFolder;
    KQexAmcHeader  lHeader;
    std::string    lReason;
    EXPECT_FALSE(KQexFileAcclaimAmc::PeekHeader((lFolder / "none.amc").c_str(), lHeader, lReason));
    EXPECT_EQ(lReason, "No such file or directory");
    EXPECT_FALSE(KQexFileAcclaimAmc::PeekHeader(lFolder.Path().c_str(), lHeader, lReason));
    EXPECT_EQ(lReason, "Is a directory");
    const std::pair<std::string, const char*> lTexts[] = {{"# " + std::string(2000000, 'x') + "\n1\n", "Line is too long"},
                                                          {"\xFF\xFE"
                                                           "1\n",
                                                           "UTF-16 text is not supported"}};
    for (const auto& [lText, lExpected] : lTexts)
    {
        WriteFile(lFolder / "a.amc", lText);
        EXPECT_FALSE(KQexFileAcclaimAmc::PeekHeader((lFolder / "a.amc").c_str(), lHeader, lReason));
        EXPECT_EQ(lReason, lExpected);
    }
    KMemoryWatch lWatch;
    lWatch.FailAfter(0);
    EXPECT_FALSE(KQexFileAcclaimAmc::PeekHeader((lFolder / "a.amc").c_str(), lHeader, lReason));
    EXPECT_EQ(lReason, "Out of memory");
}

TEST(KQexFileAcclaimAmc, FramesTooFarApartForTimeAreRefused)
{
    struct KCase
    {
        double      mRate;
        const char* mText;
        const char* mMessage;
    };
    const KCase lCases[] = {{0, "1\nb 1\n1568706801120\nb 2\n", "E3 Frame number 1568706801120 is too far from the first, 1\n"},
                            {0, "-9223372036854775807\nb 1\n9223372036854775807\nb 2\n",
                             "E3 Frame number 9223372036854775807 is too far from the first, -9223372036854775807\n"},
                            {7.3, "1\nb 1\n99999999999\nb 2\n", "E3 Frame number 99999999999 is too far from the first, 1\n"},
                            {7.3, "1\nb 1\n-99999999999\nb 2\n", "E3 Frame number -99999999999 is too far from the first, 1\n"},
                            {1e-11, "1\nb 1\n3\nb 2\n", nullptr}};
    for (const KCase& lCase : lCases)
    {
        KQexAmcReadOptions lOptions;
        lOptions.mSamplesPerSecond = lCase.mRate;
        const KAmcOutcome lOutcome = ReadAmc(lCase.mText, lOptions);
        EXPECT_FALSE(lOutcome.mOk);
        const size_t lLast = lOutcome.mMessages.rfind('E');
        ASSERT_NE(lLast, std::string::npos);
        EXPECT_EQ(lOutcome.mMessages.substr(lLast),
                  lCase.mMessage == nullptr ? "E1 Invalid rate: 1e-11 samples per second\n" : lCase.mMessage);
    }
}

TEST(KQexFileAcclaimAmc, KeywordsBetweenFramesAndTextAfterNumbersWarnOnce)
{
    const KAmcOutcome lOutcome = ReadAmc("1 x\n" + SmallFrame(1, 1).substr(2) + ":DEGREES\n:SAMPLES-PER-SECOND 60\n:degrees\n" +
                                         ":FULLY-SPECIFIED\n2 y\n" + SmallFrame(2, 2).substr(2) + ":radians\n");
    EXPECT_TRUE(lOutcome.mOk);
    EXPECT_EQ(lOutcome.mFrames, kTwoFrames);
    EXPECT_EQ(lOutcome.mMessages, "W1 Ignoring the text after a frame number (x)\n"
                                  "W6 Ignoring :DEGREES after the first frame\n"
                                  "W7 Ignoring :SAMPLES-PER-SECOND after the first frame\n"
                                  "W15 Ignoring :radians after the first frame\n");
}

TEST(KQexFileAcclaimAmc, LongDofListsAreShortened)
{
    std::string  lAsf = kSmallAsf;
    const size_t lAt = lAsf.find("dof rx\n");
    ASSERT_NE(lAt, std::string::npos);
    lAsf.replace(lAt, 6, "dof rx l l l l l l l l l l l l l");
    const KAmcOutcome lOutcome = ReadAmc("1\nb 1 2\n", {}, lAsf);
    EXPECT_FALSE(lOutcome.mOk);
    EXPECT_NE(lOutcome.mMessages.find("Bone b: 14 values expected (rx l l l l l l l l l l l ...), only 2 found\n"), std::string::npos)
        << lOutcome.mMessages;
}

TEST(KQexFileAcclaimAmc, AFileThatCannotBeOpened)
{
    const KTempDir     lFolder;
    const auto         lPath = lFolder / "none.amc";
    KQexFileAcclaimAmc lFile(false);
    EXPECT_FALSE(lFile.OpenRead(lPath.c_str()));
    EXPECT_EQ(Texts(lFile.GetMessages()), "E0 Can't read " + lPath.string() + " (No such file or directory)\n");
}

} // namespace
