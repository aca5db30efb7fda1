#include <qexioplugins/motion/kqextextfile.h>

#include <tests/support/commalocale.h>
#include <tests/support/filefaults.h>
#include <tests/support/memorywatch.h>
#include <tests/support/nonfinite.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

/// A text file read from a string, with the delimiters of skeleton and motion files.
class KText : public KQexTextFile
{
public:
    explicit KText(std::string_view pText, const char* pCom = "#", bool pFoldCase = true)
        : KQexTextFile("TXT", " \t, ()\r\n", pCom, pFoldCase, false)
    {
        EXPECT_TRUE(OpenReadBuffer(pText.data(), pText.size()));
        FirstLine();
    }

    std::string Rest() const { return static_cast<char*>(*this); }
};

std::string MessagesOf(const KQexTextFile& pFile)
{
    std::string lText;
    for (const KQexTextMessage& lMessage : pFile.GetMessages())
    {
        lText += (lMessage.mSeverity == KQexTextMessage::eERROR ? "E" : "W") + std::to_string(lMessage.mLine) + " " + lMessage.mText + "\n";
    }
    return lText;
}

/// All tokens of a file, as "line number:token,token;" for each line.
std::string TokensOf(KText& pFile)
{
    std::string lText;
    for (; !pFile.Eof(); pFile.NextLine())
    {
        lText += std::to_string(pFile.GetLineNumber()) + ":";
        for (char lToken[64]; pFile.GetString(lToken, 63);)
        {
            lText += std::string(lToken) + ",";
        }
        lText.back() = ';';
    }
    return lText;
}

struct KLinesCase
{
    const char* mWhat;
    std::string mText;
    const char* mTokens;
};

class KQexTextFileLinesTest : public testing::TestWithParam<KLinesCase>
{
};

TEST_P(KQexTextFileLinesTest, Tokens)
{
    KText lFile(GetParam().mText);
    EXPECT_EQ(TokensOf(lFile), GetParam().mTokens);
    EXPECT_TRUE(lFile.Eof());
    EXPECT_FALSE(lFile.NextLine());
    EXPECT_EQ(MessagesOf(lFile), "");
}

/// Keeps the lines that it is shown.
class KHeaderText : public KQexTextFile
{
public:
    explicit KHeaderText(std::string_view pText) : KQexTextFile("TXT", " \t\r\n", "#", true, false)
    {
        EXPECT_TRUE(OpenReadBuffer(pText.data(), pText.size()));
    }

    std::string mShown;

protected:
    void HeaderLine(std::string_view pLine) override { mShown += std::to_string(GetLineNumber()) + "[" + std::string(pLine) + "]"; }
};

TEST(KQexTextFileHeader, LinesUpToTheFirstTokenAreShownWithTheirComments)
{
    KHeaderText lFile("# a b \n\n \t# c\r\nd # e\n# f\ng\n");
    EXPECT_TRUE(lFile.FirstLine());
    EXPECT_EQ(lFile.mShown, "1[# a b ]2[]3[ \t# c]4[d # e]");
    EXPECT_EQ(lFile.GetLine(), std::string("d"));
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_EQ(lFile.mShown, "1[# a b ]2[]3[ \t# c]4[d # e]");
    EXPECT_TRUE(lFile.FirstLine()) << "rewinding shows them again";
    EXPECT_EQ(lFile.mShown.size(), 2 * std::string("1[# a b ]2[]3[ \t# c]4[d # e]").size());
    KHeaderText lEmpty("# a\n#");
    EXPECT_FALSE(lEmpty.FirstLine());
    EXPECT_EQ(lEmpty.mShown, "1[# a]2[#]");
}

INSTANTIATE_TEST_SUITE_P(Lines, KQexTextFileLinesTest,
                         testing::Values(KLinesCase{"nothing", "", ""}, KLinesCase{"no tokens", "\n  \n# a\n\t,()\n", ""},
                                         KLinesCase{"LF", "a b\nc\n", "1:a,b;2:c;"}, KLinesCase{"CR LF", "a b\r\nc\r\n", "1:a,b;2:c;"},
                                         KLinesCase{"CR", "a b\rc\r", "1:a,b;2:c;"}, KLinesCase{"no end", "a b\nc", "1:a,b;2:c;"},
                                         KLinesCase{"delimiters", "\t(a,b)( c )\t\n", "1:a,b,c;"},
                                         KLinesCase{"comments", "# x\na # b\n#\nc#d\n", "2:a;4:c;"},
                                         KLinesCase{"blank lines", "\n\na\n\n  \nb\n\n", "3:a;6:b;"},
                                         KLinesCase{"NUL is a blank", std::string("a\0b\0\0c\0", 7), "1:a,b,c;"},
                                         KLinesCase{"NUL alone", std::string("\0\0\n\0a", 5), "2:a;"},
                                         KLinesCase{"UTF-8 byte-order mark",
                                                    "\xEF\xBB\xBF"
                                                    "a\n",
                                                    "1:a;"},
                                         KLinesCase{"bytes above 127", "\xC3\xA4 \xFF\n", "1:\xC3\xA4,\xFF;"}));

TEST(KQexTextFile, WithoutACommentCharacterNothingIsAComment)
{
    KText lFile("a # b\n", "");
    EXPECT_EQ(TokensOf(lFile), "1:a,#,b;");
}

TEST(KQexTextFile, SeveralCommentCharacters)
{
    KText lFile("a ; b # c\nd # e ; f\n", "#;");
    EXPECT_EQ(TokensOf(lFile), "1:a;2:d;");
}

TEST(KQexTextFile, NeverOpened)
{
    KQexTextFile lFile("TXT", " ", "#", true, false);
    EXPECT_TRUE(lFile.Eof());
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_FALSE(lFile.NextLine());
    EXPECT_FALSE(lFile.HasToken());
    EXPECT_STREQ(lFile, "");
    EXPECT_EQ(lFile.GetLineNumber(), 0);
    EXPECT_TRUE(lFile.Close());
    EXPECT_EQ(lFile.GetErrorCount(), 0);
    double lValue = 3;
    EXPECT_FALSE(lFile.GetDouble(lValue, 1.0));
    EXPECT_EQ(lValue, 3);
}

TEST(KQexTextFile, PrintingWithoutAFileFails)
{
    KQexTextFile lFile("TXT", " ", "#", true, false);
    lFile.Print(0, "text\n");
    EXPECT_FALSE(lFile.Close());
    std::string lText;
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lText));
    lFile.Print(0, "text\n");
    EXPECT_TRUE(lFile.Close()) << "opening resets the failure";
    EXPECT_EQ(lText, "text\n");
}

TEST(KQexTextFile, LastLineIsCurrentUntilThereIsNone)
{
    KText lFile("a\nb");
    EXPECT_FALSE(lFile.Eof());
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_FALSE(lFile.Eof());
    EXPECT_STREQ(lFile, "b");
    EXPECT_FALSE(lFile.NextLine());
    EXPECT_TRUE(lFile.Eof());
    EXPECT_STREQ(lFile, "");
    EXPECT_FALSE(lFile.HasToken());
    EXPECT_EQ(lFile.GetLineLength(), 0u);
    EXPECT_TRUE(lFile.FirstLine());
    EXPECT_STREQ(lFile, "a");
    EXPECT_EQ(lFile.GetLineNumber(), 1);
}

TEST(KQexTextFile, RawLineEndsAtItsLastToken)
{
    KText lFile("  1 2 \t# c\n");
    EXPECT_STREQ(lFile.GetLine(), "  1 2");
    EXPECT_EQ(lFile.GetLineLength(), 5u);
}

/// Sections as in a skeleton file. The lone colon matches every section that no earlier entry matches, and so hides ":late".
KToken sSections[] = {{":one", 0}, {":two", 0}, {":", 0}, {":late", 0}, {"", 0}};
KToken sWords[] = {{"alpha", 0}, {"beta", 0}, {"alpha", 0}, {"", 0}};

struct KMatchCase
{
    const char* mText;
    int         mSection;
    int         mWord;
};

class KQexTextFileMatchTest : public testing::TestWithParam<KMatchCase>
{
};

TEST_P(KQexTextFileMatchTest, Lookup)
{
    KText lFile(GetParam().mText);
    lFile.InitTokens(sSections);
    lFile.InitTokens(sWords);
    EXPECT_EQ(lFile.Check(sSections), GetParam().mSection);
    EXPECT_EQ(lFile.Check(sWords), GetParam().mWord);
    EXPECT_EQ(lFile.Check(sWords), GetParam().mWord) << "nothing was consumed";
    EXPECT_EQ(sWords[0].mCount + sWords[1].mCount, 0) << "nor counted";
    EXPECT_EQ(lFile.Handle(sWords), GetParam().mWord);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(sWords[i], i == GetParam().mWord ? 1 : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Words, KQexTextFileMatchTest,
                         testing::Values(KMatchCase{"alpha", -1, 0}, KMatchCase{"ALPHA x", -1, 0}, KMatchCase{"bEtA", -1, 1},
                                         KMatchCase{"alph", -1, -1}, KMatchCase{"alphas", -1, -1}, KMatchCase{":one", 0, -1},
                                         KMatchCase{":TWO", 1, -1}, KMatchCase{":three", 2, -1}, KMatchCase{":", 2, -1},
                                         KMatchCase{":on", 2, -1}, KMatchCase{":ones", 2, -1}, KMatchCase{"one", -1, -1},
                                         KMatchCase{":late", 2, -1}, KMatchCase{"x :one", -1, -1}, KMatchCase{"", -1, -1}));

TEST(KQexTextFile, CaseMattersWithoutFolding)
{
    KText lFile("Alpha alpha", "#", false);
    EXPECT_EQ(lFile.Handle(sWords), -1);
    EXPECT_EQ(lFile.Handle(sWords), 0);
}

TEST(KQexTextFile, OnlyAsciiLettersAreFolded)
{
    KToken lTable[] = {{"\xC3\xA4[", 0}, {"", 0}};
    KText  lFile("\xC3\x84[ \xC3\xA4{ \xC3\xA4[");
    EXPECT_EQ(lFile.Handle(lTable), -1);
    EXPECT_EQ(lFile.Handle(lTable), -1);
    EXPECT_EQ(lFile.Handle(lTable), 0);
}

TEST(KQexTextFile, HandleConsumesWhetherOrNotItMatched)
{
    KText lFile("x alpha y");
    lFile.InitTokens(sWords);
    EXPECT_EQ(lFile.Handle(sWords), -1);
    EXPECT_EQ(lFile.Handle(sWords), 0);
    EXPECT_TRUE(lFile.HasToken());
    EXPECT_EQ(lFile.Handle(sWords), -1);
    EXPECT_FALSE(lFile.HasToken());
    EXPECT_EQ(lFile.Handle(sWords), -1);
    EXPECT_EQ(sWords[0].mCount, 1);
    EXPECT_EQ(sWords[2].mCount, 0) << "the first entry wins";
    lFile.InitTokens(sWords);
    EXPECT_EQ(sWords[0].mCount, 0);
}

TEST(KQexTextFile, EntryWithADelimiterMatchesNoToken)
{
    KToken lTable[] = {{"a b", 0}, {"a", 0}, {"", 0}};
    KText  lFile("a b");
    EXPECT_EQ(lFile.Check(lTable), 1);
}

TEST(KQexTextFile, OnlyTheLastEntryIsInvalid)
{
    EXPECT_TRUE(sWords[0].IsValid());
    EXPECT_FALSE(sWords[3].IsValid());
}

TEST(KQexTextFile, TextBeginsAtTheTokenLastExamined)
{
    KText lFile(" (alpha) beta x, y # comment");
    EXPECT_EQ(lFile.Rest(), "alpha) beta x, y") << "right after loading";
    EXPECT_EQ(lFile.Handle(sWords), 0);
    EXPECT_EQ(lFile.Rest(), "alpha) beta x, y") << "the token that was handled";
    EXPECT_EQ(lFile.Check(sSections), -1);
    EXPECT_EQ(lFile.Rest(), "beta x, y") << "the token that was checked";
    EXPECT_EQ(lFile.Handle(sWords), 1);
    double lValue = 0;
    EXPECT_FALSE(lFile.GetDouble(lValue, 1.0));
    EXPECT_EQ(lFile.Rest(), "x, y") << "the token that is no number";
    char lName[8];
    EXPECT_TRUE(lFile.GetString(lName, 7));
    EXPECT_TRUE(lFile.GetString(lName, 7));
    EXPECT_EQ(lFile.Rest(), "y");
    EXPECT_FALSE(lFile.GetString(lName, 7));
    EXPECT_EQ(lFile.Rest(), "") << "no token left";
}

TEST(KQexTextFile, TextOfAFailedVectorBeginsAtTheOffendingWord)
{
    KText  lFile("1 2 x 4\n1 2");
    double lVector[3] = {7, 8, 9};
    EXPECT_FALSE(lFile.GetVector(lVector, 1.0));
    EXPECT_EQ(lFile.Rest(), "x 4");
    EXPECT_EQ(lVector[0], 7);
    int lFirst = 0;
    EXPECT_TRUE(lFile.GetInteger(lFirst)) << "nothing was consumed";
    EXPECT_EQ(lFirst, 1);
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_FALSE(lFile.GetVector(lVector, 1.0));
    EXPECT_EQ(lFile.Rest(), "");
    EXPECT_TRUE(lFile.HasToken());
}

TEST(KQexTextFile, TextAfterAnUnknownSectionsColon)
{
    KText lFile(":three x\n:\n:one y");
    EXPECT_EQ(lFile.Check(sSections), 2);
    EXPECT_EQ(lFile.Rest(), ":three x");
    EXPECT_EQ(lFile.Handle(sSections), 2);
    EXPECT_EQ(lFile.Rest(), "three x");
    lFile.NextLine();
    EXPECT_EQ(lFile.Handle(sSections), 2);
    EXPECT_EQ(lFile.Rest(), "");
    lFile.NextLine();
    EXPECT_EQ(lFile.Handle(sSections), 0);
    EXPECT_EQ(lFile.Rest(), ":one y");
}

TEST(KQexTextFile, TextWithNulIsQuotedAsAWhole)
{
    KText lFile(std::string_view("a\0b", 3));
    EXPECT_EQ(lFile.Rest(), "a b");
}

TEST(KQexTextFile, StringsAreCutAndConsumedWhole)
{
    KText lFile("abcdef gh");
    char  lName[8] = "zzzzzzz";
    bool  lCut = false;
    EXPECT_TRUE(lFile.GetString(lName, 3, lCut));
    EXPECT_STREQ(lName, "abc");
    EXPECT_EQ(lName[4], 'z') << "nothing written past the NUL";
    EXPECT_TRUE(lCut);
    EXPECT_TRUE(lFile.GetString(lName, 2, lCut));
    EXPECT_STREQ(lName, "gh");
    EXPECT_FALSE(lCut);
    EXPECT_FALSE(lFile.GetString(lName, 2, lCut));
    EXPECT_STREQ(lName, "gh") << "unchanged";
}

TEST(KQexTextFile, PeekDoesNotConsume)
{
    KText  lFile("ab (c) d");
    size_t lLength = 0;
    EXPECT_EQ(std::string(lFile.PeekToken(lLength), 2), "ab");
    EXPECT_EQ(lLength, 2u);
    EXPECT_EQ(lFile.Rest(), "ab (c) d");
    char lName[8];
    while (lFile.GetString(lName, 7))
    {
    }
    EXPECT_EQ(lFile.PeekToken(lLength), nullptr);
    EXPECT_EQ(lLength, 0u);
}

struct KNumberCase
{
    const char* mText;
    bool        mFinite; ///< GetDouble accepts it.
    bool        mAny;    ///< GetPair accepts it.
    double      mValue;
};

class KQexTextFileNumberTest : public testing::TestWithParam<KNumberCase>
{
};

void ExpectSame(double pActual, double pExpected)
{
    EXPECT_EQ(std::isnan(pActual), std::isnan(pExpected));
    EXPECT_EQ(std::signbit(pActual), std::signbit(pExpected));
    if (!std::isnan(pExpected))
    {
        EXPECT_EQ(pActual, pExpected);
    }
}

TEST_P(KQexTextFileNumberTest, DoubleAndPair)
{
    const std::string lText = GetParam().mText;
    const std::string lLine = lText + " " + lText + " " + lText;
    KText             lFile(lLine);
    double            lValues[3] = {7, 7, 7};
    EXPECT_EQ(lFile.GetDouble(lValues[0], 1.0), GetParam().mFinite);
    ExpectSame(lValues[0], GetParam().mFinite ? GetParam().mValue : 7);
    EXPECT_EQ(lFile.HasToken(), true);
    lFile.FirstLine();
    EXPECT_EQ(lFile.GetVector(lValues, 1.0), GetParam().mFinite);
    ExpectSame(lValues[2], GetParam().mFinite ? GetParam().mValue : 7);
    lFile.FirstLine();
    double lPair[2] = {7, 7};
    EXPECT_EQ(lFile.GetPair(lPair, 1.0), GetParam().mAny);
    ExpectSame(lPair[1], GetParam().mAny ? GetParam().mValue : 7);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, KQexTextFileNumberTest,
    testing::Values(KNumberCase{"0", true, true, 0.0}, KNumberCase{"-0", true, true, -0.0}, KNumberCase{"1.5", true, true, 1.5},
                    KNumberCase{"+2", true, true, 2}, KNumberCase{".5", true, true, 0.5}, KNumberCase{"5.", true, true, 5},
                    KNumberCase{"-.5e1", true, true, -5}, KNumberCase{"1E3", true, true, 1000}, KNumberCase{"0.1", true, true, 0.1},
                    KNumberCase{"123456789012345678901234567890", true, true, 123456789012345678901234567890.0},
                    KNumberCase{"1.7976931348623157e308", true, true, DBL_MAX}, KNumberCase{"1e-400", true, true, 0.0},
                    KNumberCase{"-1e-400", true, true, -0.0}, KNumberCase{"1e400", false, true, kInf},
                    KNumberCase{"-1e400", false, true, -kInf}, KNumberCase{"inf", false, true, kInf},
                    KNumberCase{"-inf", false, true, -kInf}, KNumberCase{"+INF", false, true, kInf},
                    KNumberCase{"-Infinity", false, true, -kInf}, KNumberCase{"nan", false, true, std::nan("")},
                    KNumberCase{"NaN", false, true, std::nan("")}, KNumberCase{"0x10", false, false, 0},
                    KNumberCase{"1.5x", false, false, 0}, KNumberCase{"x", false, false, 0}, KNumberCase{"-", false, false, 0},
                    KNumberCase{"+-1", false, false, 0}, KNumberCase{"1e", false, false, 0}, KNumberCase{".", false, false, 0},
                    KNumberCase{"--1", false, false, 0}, KNumberCase{"1.2.3", false, false, 0}, KNumberCase{"1;5", false, false, 0},
                    KNumberCase{"infx", false, false, 0}));

TEST(KQexTextFile, FactorsMultiply)
{
    KText  lFile("2 1 2 3 -inf 4");
    double lValue = 0;
    double lVector[3];
    double lPair[2];
    EXPECT_TRUE(lFile.GetDouble(lValue, 2.54));
    EXPECT_EQ(lValue, 5.08);
    EXPECT_TRUE(lFile.GetVector(lVector, -2.0));
    EXPECT_EQ(lVector[2], -6.0);
    EXPECT_TRUE(lFile.GetPair(lPair, 0.5));
    EXPECT_EQ(lPair[0], -kInf);
    EXPECT_EQ(lPair[1], 2.0);
}

TEST(KQexTextFile, PairsInParentheses)
{
    KText  lFile("(-10.5,20)( 1 , 2 ) (3 4)(5");
    double lPair[2];
    EXPECT_TRUE(lFile.GetPair(lPair, 1.0));
    EXPECT_EQ(lPair[0], -10.5);
    EXPECT_EQ(lPair[1], 20.0);
    EXPECT_TRUE(lFile.GetPair(lPair, 1.0));
    EXPECT_TRUE(lFile.GetPair(lPair, 1.0));
    EXPECT_EQ(lPair[1], 4.0);
    EXPECT_FALSE(lFile.GetPair(lPair, 1.0)) << "half a pair";
    EXPECT_EQ(lPair[1], 4.0);
}

struct KIntegerCase
{
    const char* mText;
    bool        mOk;
    int         mValue;
};

class KQexTextFileIntegerTest : public testing::TestWithParam<KIntegerCase>
{
};

TEST_P(KQexTextFileIntegerTest, Integer)
{
    KText lFile(GetParam().mText);
    int   lValue = 7;
    EXPECT_EQ(lFile.GetInteger(lValue), GetParam().mOk);
    EXPECT_EQ(lValue, GetParam().mOk ? GetParam().mValue : 7);
    EXPECT_EQ(lFile.HasToken(), !GetParam().mOk);
}

INSTANTIATE_TEST_SUITE_P(Integers, KQexTextFileIntegerTest,
                         testing::Values(KIntegerCase{"0", true, 0}, KIntegerCase{"-12", true, -12}, KIntegerCase{"+3", true, 3},
                                         KIntegerCase{"2147483647", true, 2147483647}, KIntegerCase{"-2147483648", true, -2147483647 - 1},
                                         KIntegerCase{"2147483648", false, 0}, KIntegerCase{"99999999999999999999", false, 0},
                                         KIntegerCase{"1.5", false, 0}, KIntegerCase{"x", false, 0}, KIntegerCase{"12x", false, 0},
                                         KIntegerCase{"inf", false, 0}));

TEST(KQexTextFile, CommaLocaleChangesNothing)
{
    QEX_WITH_COMMA_LOCALE();
    KText  lFile("1.5 2,5");
    double lValues[3];
    EXPECT_TRUE(lFile.GetVector(lValues, 1.0));
    EXPECT_EQ(lValues[0], 1.5);
    EXPECT_EQ(lValues[1], 2.0);
    lFile.Warning("%f\n", 0.25);
    EXPECT_EQ(MessagesOf(lFile), "W1 0.250000\n");

    std::string  lOut;
    KQexTextFile lWriter("TXT", " ", "#", true, false);
    ASSERT_TRUE(lWriter.OpenWriteBuffer(&lOut));
    lWriter.Print(1, "%g %f %d\n", 0.5, 1234.5, 1234567);
    EXPECT_TRUE(lWriter.Close());
    EXPECT_EQ(lOut, "  0.5 1234.500000 1234567\n");
}

TEST(KQexTextFile, MessagesCarryTheirLine)
{
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenReadBuffer("a\n\nb\n\n", 6));
    lFile.Warning("before\n");
    lFile.FirstLine();
    lFile.Warning("one %d %s\n", 1, "x");
    lFile.NextLine();
    lFile.Error("no newline");
    lFile.NextLine();
    lFile.Warning("two\n\n");
    EXPECT_EQ(MessagesOf(lFile), "W0 before\nW1 one 1 x\nE3 no newline\nW4 two\n\n");
    EXPECT_EQ(lFile.GetWarningCount(), 3);
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    ASSERT_TRUE(lFile.OpenReadBuffer("a\n", 2));
    EXPECT_EQ(MessagesOf(lFile), "");
    EXPECT_EQ(lFile.GetWarningCount() + lFile.GetErrorCount(), 0);
}

TEST(KQexTextFile, TheFirstThousandMessagesAndEveryErrorAreKept)
{
    KText lFile("a\n");
    for (int i = 0; i < 1500; ++i)
    {
        lFile.Warning("%d\n", i);
    }
    lFile.Error("the error\n");
    lFile.Warning("late\n");
    EXPECT_EQ(lFile.GetMessages().size(), 1001u);
    EXPECT_EQ(lFile.GetMessages()[999].mText, "999");
    EXPECT_EQ(lFile.GetMessages()[1000].mText, "the error");
    EXPECT_EQ(lFile.GetWarningCount(), 1501);
    EXPECT_EQ(lFile.GetErrorCount(), 1);
}

TEST(KQexTextFile, LongMessagesStayBounded)
{
    const std::string lText(1000000, 'x');
    KText             lFile(lText);
    for (int i = 0; i < 1000; ++i)
    {
        lFile.Warning("(%s)\n", static_cast<char*>(lFile));
    }
    EXPECT_EQ(lFile.GetMessages()[0].mText.size(), 1000002u) << "quoted as a whole at first";
    EXPECT_EQ(lFile.GetMessages()[999].mText.size(), KQexTextFile::kMaxLongText);
}

TEST(KQexTextFile, VerboseMessagesGoToStandardErrorToo)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "\na\n");
    const std::string lPath = (lDir / "text").string();
    KQexTextFile      lFile("TXT", " ", "#", true, true);
    ASSERT_TRUE(lFile.OpenRead(lPath.c_str()));
    lFile.FirstLine();
    testing::internal::CaptureStderr();
    lFile.Warning("careful %d\n", 3);
    lFile.Error("broken\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), lPath + ":2: warning: careful 3\n" + lPath + ":2: error: broken\n");
    EXPECT_EQ(MessagesOf(lFile), "W2 careful 3\nE2 broken\n");
    EXPECT_EQ(lFile.GetPath(), lPath);
    EXPECT_STREQ(lFile.GetType(), "TXT");
}

TEST(KQexTextFile, VerboseMessagesBeyondTheLimitAreStillPrinted)
{
    KQexTextFile      lFile("TXT", " ", "#", true, true);
    const std::string lText = "a\n";
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    testing::internal::CaptureStderr();
    for (size_t i = 0; i <= KQexTextFile::kMaxMessages; ++i)
    {
        lFile.Warning("%zu\n", i);
    }
    const std::string lShown = testing::internal::GetCapturedStderr();
    EXPECT_EQ(lFile.GetMessages().size(), KQexTextFile::kMaxMessages);
    EXPECT_EQ(lShown.substr(lShown.size() - 20), "\nTXT: warning: 1000\n") << "no path: the type instead";
}

TEST(KQexTextFile, QuietMessagesAreNotPrinted)
{
    KText lFile("a\n");
    testing::internal::CaptureStderr();
    lFile.Warning("careful\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

struct KUnreadableCase
{
    const char* mWhat;
    const char* mPath;
    const char* mReason;
};

class KQexTextFileUnreadableTest : public testing::TestWithParam<KUnreadableCase>
{
};

TEST_P(KQexTextFileUnreadableTest, ErrorNamesPathAndReason)
{
    KTempDir lDir;
    fs::create_directory(lDir / "folder");
    const std::string lPath = (lDir / GetParam().mPath).string();
    KQexTextFile      lFile("TXT", " ", "#", true, false);
    EXPECT_FALSE(lFile.OpenRead(lPath.c_str()));
    EXPECT_EQ(MessagesOf(lFile), "E0 Can't read " + lPath + " (" + GetParam().mReason + ")\n");
    EXPECT_TRUE(lFile.Eof());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_EQ(lFile.GetErrorCount(), 1);
}

INSTANTIATE_TEST_SUITE_P(Paths, KQexTextFileUnreadableTest,
                         testing::Values(KUnreadableCase{"missing", "none", "No such file or directory"},
                                         KUnreadableCase{"a folder", "folder", "Is a directory"}));

TEST(KQexTextFile, DeviceErrorHalfWayIsReportedOnceAndEndsReading)
{
    std::string lText;
    for (int i = 0; i < 50000; ++i)
    {
        lText += "line\n";
    }
    KTempDir lDir;
    WriteFile(lDir / "text", lText);
    KFileFaults lFaults;
    lFaults.Fail(KFileFaults::eREAD, 3, EIO);
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenRead((lDir / "text").c_str()));
    int lLines = 0;
    for (bool lMore = lFile.FirstLine(); lMore; lMore = lFile.NextLine())
    {
        ++lLines;
    }
    EXPECT_GT(lLines, 10000);
    EXPECT_LT(lLines, 50000);
    EXPECT_TRUE(lFile.Eof());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_FALSE(lFile.NextLine());
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(MessagesOf(lFile), "E" + std::to_string(lLines) + " Can't read " + (lDir / "text").string() + " (Input/output error)\n");
}

TEST(KQexTextFile, FailedRewindIsReported)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "one\ntwo\n");
    KFileFaults  lFaults;
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenRead((lDir / "text").c_str()));
    EXPECT_TRUE(lFile.FirstLine());
    lFaults.Fail(KFileFaults::eSEEK, 1, EIO);
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_TRUE(lFile.Eof());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_EQ(MessagesOf(lFile), "E1 Can't read " + (lDir / "text").string() + " (Input/output error)\n");
}

TEST(KQexTextFile, APipeIsReadOnceOnly)
{
    KTempDir          lDir;
    const std::string lPath = (lDir / "fifo").string();
    ASSERT_EQ(::mkfifo(lPath.c_str(), 0600), 0);
    std::thread  lWriter([&lPath] { std::ofstream(lPath) << "one\ntwo\n"; });
    KQexTextFile lFile("TXT", " ", "#", true, false);
    EXPECT_TRUE(lFile.OpenRead(lPath.c_str()));
    EXPECT_TRUE(lFile.FirstLine());
    EXPECT_STREQ(lFile, "one");
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_FALSE(lFile.FirstLine());
    lWriter.join();
    EXPECT_TRUE(lFile.Eof());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_EQ(MessagesOf(lFile), "E2 Can't go back to the beginning of " + lPath + "\n");
}

TEST(KQexTextFile, LineThatIsTooLong)
{
    for (const size_t lMore : {0u, 1u})
    {
        const std::string lText = "a\n" + std::string(1048570, ' ') + "b#xxxx" + std::string(lMore, 'y') + "\nc\n";
        KText             lFile(lText);
        EXPECT_EQ(lFile.NextLine(), lMore == 0) << "the comment counts, the line end does not";
        EXPECT_EQ(lFile.Eof(), lMore == 1);
        EXPECT_EQ(lFile.HasFailed(), lMore == 1);
        EXPECT_EQ(MessagesOf(lFile), lMore == 0 ? "" : "E2 Line is too long\n");
        EXPECT_EQ(lFile.NextLine(), lMore == 0);
        EXPECT_EQ(lFile.GetErrorCount(), static_cast<int>(lMore));
    }
}

TEST(KQexTextFile, Utf16IsNotSupported)
{
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenReadBuffer("\xFF\xFE:\0", 4));
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_TRUE(lFile.Eof());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_EQ(MessagesOf(lFile), "E0 UTF-16 text is not supported\n");
}

TEST(KQexTextFile, NoMemoryForTheLine)
{
    KMemoryWatch lWatch;
    lWatch.FailAfter(0);
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenReadBuffer("a\n", 2));
    EXPECT_FALSE(lFile.FirstLine());
    EXPECT_TRUE(lFile.HasFailed());
    EXPECT_EQ(MessagesOf(lFile), "E0 Out of memory\n");
}

TEST(KQexTextFile, PrintIndentsAndFormats)
{
    std::string  lOut;
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lOut));
    lFile.Print(0, "%s\n", "zero");
    lFile.Print(1, "%s %g\n", "one", 1.0);
    lFile.Print(2, "two");
    lFile.Print(0, " %f\n", -160.0);
    EXPECT_TRUE(lFile.Close());
    EXPECT_EQ(lOut, "zero\n  one 1\n    two -160.000000\n");
    EXPECT_TRUE(lFile.Close());
}

TEST(KQexTextFile, FilesAppearOnClose)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "old");
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenWrite((lDir / "text").c_str()));
    lFile.Print(0, "new\n");
    EXPECT_EQ(ReadFile(lDir / "text"), "old");
    EXPECT_TRUE(lFile.Close());
    EXPECT_EQ(ReadFile(lDir / "text"), "new\n");

    ASSERT_TRUE(lFile.OpenWrite((lDir / "text").c_str()));
    lFile.Print(0, "newer\n");
    lFile.Discard();
    EXPECT_FALSE(lFile.Close());
    EXPECT_EQ(ReadFile(lDir / "text"), "new\n");
    EXPECT_EQ(lFile.GetErrorCount(), 0) << "discarded on purpose";
}

TEST(KQexTextFile, DestructionDiscardsAnUnclosedOutput)
{
    KTempDir lDir;
    {
        KQexTextFile lFile("TXT", " ", "#", true, false);
        ASSERT_TRUE(lFile.OpenWrite((lDir / "text").c_str()));
        lFile.Print(0, "new\n");
    }
    EXPECT_FALSE(fs::exists(lDir / "text"));
}

TEST(KQexTextFile, WriteThatFailedIsReportedOnce)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "old");
    const std::string lPath = (lDir / "text").string();
    KFileFaults       lFaults;
    lFaults.Fail(KFileFaults::eWRITE, 1, ENOSPC);
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenWrite(lPath.c_str()));
    lFile.Print(0, "new\n");
    EXPECT_FALSE(lFile.Close());
    EXPECT_FALSE(lFile.Close());
    EXPECT_EQ(MessagesOf(lFile), "E0 Can't write " + lPath + " (No space left on device)\n");
    EXPECT_EQ(ReadFile(lPath), "old");
}

TEST(KQexTextFile, TargetThatCannotBeWritten)
{
    KTempDir     lDir;
    KQexTextFile lFile("TXT", " ", "#", true, false);
    EXPECT_FALSE(lFile.OpenWrite(lDir.Path().c_str()));
    EXPECT_EQ(MessagesOf(lFile), "E0 Can't write " + lDir.Path().string() + " (Is a directory)\n");
    lFile.Print(0, "x");
    EXPECT_FALSE(lFile.Close());
    EXPECT_EQ(lFile.GetErrorCount(), 1);
}

TEST(KQexTextFile, OneObjectReadsAndWritesInTurn)
{
    std::string  lOut;
    KQexTextFile lFile("TXT", " ", "#", true, false);
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lOut));
    lFile.Print(0, "a b\n");
    EXPECT_TRUE(lFile.Close());
    const std::string lText = lOut;
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    EXPECT_TRUE(lFile.FirstLine());
    EXPECT_STREQ(lFile, "a b");
    EXPECT_TRUE(lFile.Close());
    EXPECT_TRUE(lFile.Eof());
    EXPECT_STREQ(lFile, "");
    ASSERT_TRUE(lFile.OpenWriteBuffer(&lOut));
    lFile.Discard();
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    EXPECT_TRUE(lFile.Close()) << "the output discarded before does not count";
}

} // namespace

} // namespace qextest
