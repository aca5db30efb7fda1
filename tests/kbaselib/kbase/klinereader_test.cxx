#include <kbaselib/kbase/klinereader.h>

#include <tests/support/asnobody.h>
#include <tests/support/filefaults.h>
#include <tests/support/memorywatch.h>
#include <tests/support/standardinput.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qextest
{

using namespace qexsdk;
namespace fs = std::filesystem;

namespace
{

using KLines = std::vector<std::string>;

KLines LinesOf(KLineReader& pReader)
{
    KLines lLines;
    while (pReader.NextLine())
    {
        lLines.emplace_back(pReader.GetLine(), pReader.GetLength());
        EXPECT_EQ(pReader.GetLine()[pReader.GetLength()], '\0');
        EXPECT_EQ(pReader.GetLineNumber(), static_cast<int64_t>(lLines.size()));
    }
    return lLines;
}

/// The reference: splits byte by byte.
KLines Split(const std::string& pText)
{
    KLines lLines;
    bool   lOpen = false;
    for (size_t i = 0; i < pText.size(); ++i)
    {
        if (pText[i] == '\n' && i > 0 && pText[i - 1] == '\r')
        {
            continue;
        }
        if (!lOpen)
        {
            lLines.emplace_back();
        }
        lOpen = pText[i] != '\n' && pText[i] != '\r';
        if (lOpen)
        {
            lLines.back() += pText[i];
        }
    }
    return lLines;
}

std::string Text(const char* pText, size_t pSize)
{
    return std::string(pText, pSize);
}

struct KSplitCase
{
    const char* mWhat;
    std::string mText;
    KLines      mLines;
};

class KLineReaderSplitTest : public testing::TestWithParam<KSplitCase>
{
};

TEST_P(KLineReaderSplitTest, MemoryAndFile)
{
    KLineReader lReader;
    ASSERT_TRUE(lReader.OpenBuffer(GetParam().mText.data(), GetParam().mText.size()));
    EXPECT_EQ(LinesOf(lReader), GetParam().mLines);
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eEND);
    EXPECT_FALSE(lReader.HasFailed());
    EXPECT_FALSE(lReader.NextLine()) << "a second time";

    KTempDir lDir;
    WriteFile(lDir / "text", GetParam().mText);
    ASSERT_TRUE(lReader.OpenPath((lDir / "text").c_str()));
    EXPECT_EQ(LinesOf(lReader), GetParam().mLines);
    ASSERT_TRUE(lReader.Rewind());
    EXPECT_EQ(lReader.GetLineNumber(), 0);
    EXPECT_EQ(LinesOf(lReader), GetParam().mLines) << "after rewinding";
}

INSTANTIATE_TEST_SUITE_P(Splits, KLineReaderSplitTest,
                         testing::Values(KSplitCase{"nothing", "", {}}, KSplitCase{"one line", "abc\n", {"abc"}},
                                         KSplitCase{"no end", "abc", {"abc"}}, KSplitCase{"LF", "a\nb\n", {"a", "b"}},
                                         KSplitCase{"CR LF", "a\r\nb\r\n", {"a", "b"}}, KSplitCase{"CR", "a\rb\r", {"a", "b"}},
                                         KSplitCase{"mixed", "a\r\nb\rc\nd", {"a", "b", "c", "d"}},
                                         KSplitCase{"LF CR", "a\n\rb", {"a", "", "b"}}, KSplitCase{"CR CR LF", "a\r\r\nb", {"a", "", "b"}},
                                         KSplitCase{"empty lines", "\n\na\n\n", {"", "", "a", ""}},
                                         KSplitCase{"only ends", "\r\n\r\n", {"", ""}}, KSplitCase{"CR at the end", "a\r", {"a"}},
                                         KSplitCase{"NUL inside", Text("a\0b\nc", 5), {Text("a\0b", 3), "c"}},
                                         KSplitCase{"UTF-8 BOM",
                                                    "\xEF\xBB\xBF"
                                                    "a\nb",
                                                    {"a", "b"}},
                                         KSplitCase{"BOM alone", "\xEF\xBB\xBF", {}}, KSplitCase{"half a BOM", "\xEF\xBB", {"\xEF\xBB"}},
                                         KSplitCase{"BOM in the second line", "a\n\xEF\xBB\xBF", {"a", "\xEF\xBB\xBF"}},
                                         KSplitCase{"one byte", "\xFF", {"\xFF"}}));

TEST(KLineReader, LineEndsAroundTheBufferBoundary)
{
    // Line ends of every kind at and around 65,536 bytes, where the buffer is refilled.
    for (const char* lEnd : {"\n", "\r\n", "\r", "\n\r", "\r\r\n"})
    {
        for (size_t lPad = 65530; lPad < 65540; ++lPad)
        {
            const std::string lText = std::string(lPad, 'x') + lEnd + "next" + lEnd + std::string(70000, 'y') + lEnd + "last";
            KLineReader       lReader;
            ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
            EXPECT_EQ(LinesOf(lReader), Split(lText)) << lPad;
        }
    }
}

/// The first line is an exception: NextLine() fills the buffer for it, and does not report it as plain.
TEST(KLineReader, LinesWithoutWatchedBytesArePlain)
{
    for (const char* lEnd : {"\n", "\r\n"})
    {
        std::string lText;
        for (int i = 0; i < 100; ++i)
        {
            lText += "line" + std::to_string(i) + lEnd;
        }
        KLineReader lReader;
        lReader.Watch("#");
        ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
        ASSERT_TRUE(lReader.NextLine());
        for (int i = 1; i < 100; ++i)
        {
            ASSERT_TRUE(lReader.NextLine());
            EXPECT_EQ(std::string(lReader.GetLine(), lReader.GetLength()), "line" + std::to_string(i));
            EXPECT_TRUE(lReader.IsPlain()) << i;
        }
        EXPECT_FALSE(lReader.NextLine());
    }
}

TEST(KLineReader, WatchedBytesAreFoundInTheirLinesOnly)
{
    // What each line holds, in a text longer than the buffer: nothing, a watched byte, a NUL, both.
    const std::string kLines[] = {"plain", "", "no#tes", std::string("nu\0l", 4), "more", std::string("#\0", 2), "end#"};
    for (const char* lEnd : {"\n", "\r\n", "\r"})
    {
        std::string lText;
        while (lText.size() < 200000)
        {
            for (const std::string& lLine : kLines)
            {
                lText += lLine + lEnd;
            }
        }
        KLineReader lReader;
        lReader.Watch("#;");
        ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
        for (size_t i = 0; lReader.NextLine(); ++i)
        {
            const std::string& lLine = kLines[i % std::size(kLines)];
            ASSERT_EQ(std::string(lReader.GetLine(), lReader.GetLength()), lLine) << i;
            const size_t lMark = lLine.find('#');
            const size_t lNul = lLine.find('\0');
            ASSERT_EQ(lReader.FindWatched(0), lMark == std::string::npos ? nullptr : lReader.GetLine() + lMark) << i;
            ASSERT_EQ(lReader.FindWatched(1), nullptr) << i;
            ASSERT_EQ(lReader.FindNul(), lNul == std::string::npos ? nullptr : lReader.GetLine() + lNul) << i;
            ASSERT_FALSE(lReader.IsPlain() && (lMark != std::string::npos || lNul != std::string::npos)) << i;
        }
        EXPECT_EQ(lReader.GetStatus(), KLineReader::eEND);
    }
}

TEST(KLineReader, OneByteReads)
{
    const std::string lText = "\xEF\xBB\xBFone\r\ntwo\rthree\n\nfive";
    KTempDir          lDir;
    WriteFile(lDir / "text", lText);
    KFileFaults lFaults;
    lFaults.Fail(KFileFaults::eREAD, 1, KFileFaults::kShort, true);
    KLineReader lReader;
    ASSERT_TRUE(lReader.OpenPath((lDir / "text").c_str()));
    EXPECT_EQ(LinesOf(lReader), (KLines{"one", "two", "three", "", "five"}));
}

struct KBomCase
{
    const char* mWhat;
    std::string mText;
};

class KLineReaderUtf16Test : public testing::TestWithParam<KBomCase>
{
};

TEST_P(KLineReaderUtf16Test, IsReported)
{
    KLineReader lReader;
    ASSERT_TRUE(lReader.OpenBuffer(GetParam().mText.data(), GetParam().mText.size()));
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eUTF16);
    EXPECT_TRUE(lReader.HasFailed());
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_EQ(lReader.GetLineNumber(), 0);
}

INSTANTIATE_TEST_SUITE_P(Marks, KLineReaderUtf16Test,
                         testing::Values(KBomCase{"little-endian", Text("\xFF\xFE:\0\n\0", 6)},
                                         KBomCase{"big-endian", Text("\xFE\xFF\0:\0\n", 6)}, KBomCase{"BOM alone", "\xFF\xFE"}));

struct KLengthCase
{
    const char* mWhat;
    size_t      mLength;
    const char* mEnd;
    bool        mTooLong;
};

class KLineReaderLengthTest : public testing::TestWithParam<KLengthCase>
{
};

TEST_P(KLineReaderLengthTest, LongestLine)
{
    const std::string lText = "first\n" + std::string(GetParam().mLength, 'x') + GetParam().mEnd + "last\n";
    KLineReader       lReader;
    ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
    ASSERT_TRUE(lReader.NextLine());
    EXPECT_EQ(lReader.NextLine(), !GetParam().mTooLong);
    EXPECT_EQ(lReader.GetLineNumber(), 2);
    if (GetParam().mTooLong)
    {
        EXPECT_EQ(lReader.GetStatus(), KLineReader::eTOO_LONG);
        EXPECT_FALSE(lReader.NextLine());
        EXPECT_EQ(lReader.GetLineNumber(), 2);
        return;
    }
    EXPECT_EQ(lReader.GetLength(), GetParam().mLength);
    ASSERT_TRUE(lReader.NextLine());
    EXPECT_STREQ(lReader.GetLine(), "last");
}

INSTANTIATE_TEST_SUITE_P(Lengths, KLineReaderLengthTest,
                         testing::Values(KLengthCase{"longest, LF", 1048576, "\n", false},
                                         KLengthCase{"longest, CR LF", 1048576, "\r\n", false},
                                         KLengthCase{"longest, CR", 1048576, "\r", false}, KLengthCase{"one more", 1048577, "\n", true},
                                         KLengthCase{"one more, CR LF", 1048577, "\r\n", true},
                                         KLengthCase{"far more", 5000000, "\n", true}));

TEST(KLineReader, LongestLineAtTheEnd)
{
    for (const size_t lMore : {0u, 1u})
    {
        const std::string lText(KLineReader::kMaxLine + lMore, 'x');
        KLineReader       lReader;
        ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
        EXPECT_EQ(lReader.NextLine(), lMore == 0);
    }
}

TEST(KLineReader, MemoryDoesNotGrowWithTheInput)
{
    std::string lText;
    for (int i = 0; i < 200000; ++i)
    {
        lText += "line " + std::to_string(i) + "\n";
    }
    KMemoryWatch lWatch;
    KLineReader  lReader;
    ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
    EXPECT_EQ(LinesOf(lReader).size(), 200000u);
    EXPECT_EQ(lWatch.GetCalls(), 1);
    EXPECT_LE(lWatch.GetPeakBytes(), 70000u);
}

TEST(KLineReader, OutOfMemoryIsReportedAndNothingLeaks)
{
    const std::string lText(300000, 'x');
    for (long i = 0; i < 5; ++i)
    {
        KMemoryWatch lWatch;
        lWatch.FailAfter(i);
        {
            KLineReader lReader;
            ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
            EXPECT_EQ(lReader.NextLine(), i == 4);
            EXPECT_EQ(lReader.GetStatus(), i == 4 ? KLineReader::eOK : KLineReader::eMEMORY) << i;
            EXPECT_FALSE(lReader.NextLine());
        }
        EXPECT_EQ(lWatch.GetBlocks(), 0u);
    }
}

struct KNoFileCase
{
    const char* mWhat;
    const char* mPath;
    int         mError;
};

class KLineReaderNoFileTest : public testing::TestWithParam<KNoFileCase>
{
};

TEST_P(KLineReaderNoFileTest, IsReported)
{
    KTempDir lDir;
    fs::create_directory(lDir / "folder");
    KLineReader lReader;
    EXPECT_FALSE(lReader.OpenPath((lDir / GetParam().mPath).c_str()));
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eSYSTEM);
    EXPECT_EQ(lReader.GetError(), GetParam().mError);
    EXPECT_FALSE(lReader.GetReason().empty());
    EXPECT_FALSE(lReader.IsOpen());
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_FALSE(lReader.Rewind());
}

INSTANTIATE_TEST_SUITE_P(NoFiles, KLineReaderNoFileTest,
                         testing::Values(KNoFileCase{"missing", "none", ENOENT}, KNoFileCase{"a folder", "folder", EISDIR}));

TEST(KLineReader, UnreadableFile)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "x");
    ASSERT_EQ(::chmod((lDir / "text").c_str(), 0), 0);
    ASSERT_EQ(::chmod(lDir.Path().c_str(), 0755), 0);
    EXPECT_TRUE(AsNobody(
        [&]
        {
            KLineReader lReader;
            return !lReader.OpenPath((lDir / "text").c_str()) && lReader.GetError() == EACCES;
        }));
}

TEST(KLineReader, NeverOpened)
{
    KLineReader lReader;
    EXPECT_FALSE(lReader.IsOpen());
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eOK);
    EXPECT_EQ(lReader.GetReason(), "");
}

TEST(KLineReader, ADeviceErrorIsNotTheEndOfTheInput)
{
    std::string lText;
    for (int i = 0; i < 50000; ++i)
    {
        lText += "line\n";
    }
    KTempDir lDir;
    WriteFile(lDir / "text", lText);
    KFileFaults lFaults;
    for (int lNumber = 1; lNumber <= 4; ++lNumber)
    {
        lFaults.Fail(KFileFaults::eREAD, lNumber, EIO);
        KLineReader lReader;
        ASSERT_TRUE(lReader.OpenPath((lDir / "text").c_str()));
        const KLines lLines = LinesOf(lReader);
        EXPECT_LT(lLines.size(), 50000u);
        for (const std::string& lLine : lLines)
        {
            EXPECT_EQ(lLine, "line") << "no half lines";
        }
        EXPECT_EQ(lReader.GetStatus(), KLineReader::eSYSTEM);
        EXPECT_EQ(lReader.GetError(), EIO);
        EXPECT_FALSE(lReader.NextLine());
    }
}

TEST(KLineReader, InterruptedCallsAreRepeated)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "one\ntwo\n");
    KFileFaults                              lFaults;
    const std::pair<KFileFaults::ECall, int> lCases[] = {
        {KFileFaults::eREAD, EINTR}, {KFileFaults::eREAD, EAGAIN}, {KFileFaults::eOPEN, EINTR}};
    for (const auto& [lCall, lError] : lCases)
    {
        lFaults.Fail(lCall, 1, lError);
        KLineReader lReader;
        ASSERT_TRUE(lReader.OpenPath((lDir / "text").c_str()));
        EXPECT_EQ(LinesOf(lReader), (KLines{"one", "two"}));
    }
}

TEST(KLineReader, WaitsForANonBlockingPipe)
{
    KStandardInput lInput("one\ntwo\n", true);
    KLineReader    lReader;
    ASSERT_TRUE(lReader.OpenPath("-"));
    EXPECT_EQ(LinesOf(lReader), (KLines{"one", "two"}));
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eEND);
}

TEST(KLineReader, RewindReportsASeekError)
{
    KTempDir lDir;
    WriteFile(lDir / "text", "one\n");
    KFileFaults lFaults;
    KLineReader lReader;
    ASSERT_TRUE(lReader.OpenPath((lDir / "text").c_str()));
    EXPECT_TRUE(lReader.Rewind()) << "nothing was read: no call is needed";
    EXPECT_TRUE(lReader.NextLine());
    lFaults.Fail(KFileFaults::eSEEK, 1, EIO);
    EXPECT_FALSE(lReader.Rewind());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eSYSTEM);
}

TEST(KLineReader, DashIsStandardInput)
{
    std::string lText;
    for (int i = 0; i < 100000; ++i)
    {
        lText += std::to_string(i) + "\r\n";
    }
    KStandardInput lInput(lText);
    KLineReader    lReader;
    ASSERT_TRUE(lReader.OpenPath("-"));
    EXPECT_TRUE(lReader.Rewind()) << "nothing was read yet";
    EXPECT_EQ(LinesOf(lReader), Split(lText));
    EXPECT_FALSE(lReader.Rewind());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eEND) << "rewinding is refused, nothing else changed";
}

TEST(KLineReader, LineThatIsTooLongTakesBoundedMemory)
{
    KStandardInput lInput(std::string(3000000, 'x') + "\n");
    KMemoryWatch   lWatch;
    KLineReader    lReader;
    ASSERT_TRUE(lReader.OpenPath("-"));
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eTOO_LONG);
    EXPECT_LE(lWatch.GetLargest(), KLineReader::kMaxLine + 100000);
    // The writer finishes once the pipe is drained.
    char lRest[65536];
    while (::read(STDIN_FILENO, lRest, sizeof lRest) > 0)
    {
    }
}

TEST(KLineReader, NothingIsReadAfterALineThatIsTooLong)
{
    // With a first line in the buffer, so that both the fast and the slow path see the long one.
    const std::string lText = "one\n" + std::string(KLineReader::kMaxLine + 1, 'x') + "\ntwo\n";
    KLineReader       lReader;
    ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
    EXPECT_TRUE(lReader.NextLine());
    EXPECT_FALSE(lReader.NextLine());
    EXPECT_EQ(lReader.GetStatus(), KLineReader::eTOO_LONG);
    EXPECT_EQ(lReader.GetLineNumber(), 2);
    EXPECT_FALSE(lReader.NextLine());
}

/// A long line makes the buffer large. A later line that is too long may then be complete in the buffer, and must still be refused.
TEST(KLineReader, LineThatIsTooLongAfterALongOne)
{
    for (int lShort = 0; lShort < 40000; lShort += 2500)
    {
        std::string lText(KLineReader::kMaxLine, 'x');
        for (int i = 0; i <= lShort; ++i)
        {
            lText += "\nab";
        }
        lText += '\n' + std::string(KLineReader::kMaxLine + 1, 'y') + "\nend\n";
        KLineReader lReader;
        ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
        EXPECT_EQ(LinesOf(lReader).size(), static_cast<size_t>(lShort) + 2);
        EXPECT_EQ(lReader.GetStatus(), KLineReader::eTOO_LONG);
        EXPECT_EQ(lReader.GetLineNumber(), lShort + 3);
    }
}

TEST(KLineReader, PositionInTheInput)
{
    const std::string lText = "one\ntwo\r\nthree";
    KLineReader       lReader;
    ASSERT_TRUE(lReader.OpenBuffer(lText.data(), lText.size()));
    EXPECT_EQ(lReader.GetSize(), static_cast<int64_t>(lText.size()));
    EXPECT_TRUE(lReader.NextLine());
    EXPECT_TRUE(lReader.HasLineEnd());
    EXPECT_EQ(lReader.GetPosition(), 4);
    EXPECT_TRUE(lReader.NextLine());
    EXPECT_TRUE(lReader.HasLineEnd());
    EXPECT_TRUE(lReader.NextLine());
    EXPECT_FALSE(lReader.HasLineEnd());
    EXPECT_EQ(lReader.GetPosition(), static_cast<int64_t>(lText.size()));
}

TEST(KLineReader, LineNumberSurvivesClose)
{
    KLineReader lReader;
    ASSERT_TRUE(lReader.OpenBuffer("one\n", 4));
    EXPECT_TRUE(lReader.NextLine());
    lReader.Close();
    EXPECT_EQ(lReader.GetLineNumber(), 1);
    EXPECT_FALSE(lReader.NextLine());
    lReader.Reset();
    EXPECT_EQ(lReader.GetLineNumber(), 0);
}

} // namespace

} // namespace qextest
