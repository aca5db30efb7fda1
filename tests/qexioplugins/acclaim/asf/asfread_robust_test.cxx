#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>
#include <tests/support/commalocale.h>
#include <tests/support/corpus.h>
#include <tests/support/filefaults.h>
#include <tests/support/memorywatch.h>
#include <tests/support/smallstack.h>
#include <tests/support/testfolders.h>
#include <tests/support/texts.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>

/// Unusual formatting, truncated and damaged files, and failing system calls: the same skeleton, or a clean failure.

namespace qextest
{

using namespace qexsdk;

namespace
{

/// A skeleton that uses every keyword.
const std::string kText = ":version 1.10\n"
                          ":name walker\n"
                          ":units\n"
                          "mass 1.0\n"
                          "length 0.45\n"
                          "angle deg\n"
                          ":documentation\n"
                          "free text\n"
                          ":root\n"
                          "order tx ty tz rx ry rz\n"
                          "axis xyz\n"
                          "position 0 1.5 0\n"
                          "orientation 0 0 10\n"
                          ":bonedata\n"
                          "begin\n"
                          "id 1\n"
                          "name hip\n"
                          "direction 0.5 -0.7 0.25\n"
                          "length 2.5\n"
                          "axis 10 20.5 30 zyx\n"
                          "dof rx ry rz\n"
                          "limits (-160.5 20)\n"
                          "(-70 inf)\n"
                          "(-inf 60)\n"
                          "bodymass 3\n"
                          "cofmass 1\n"
                          "end\n"
                          "begin\n"
                          "id 2\n"
                          "name knee\n"
                          "direction 0 -1 0\n"
                          "length 7\n"
                          "axis 0 0 0 xyz\n"
                          "dof rx\n"
                          "limits (-10 170)\n"
                          "end\n"
                          ":hierarchy\n"
                          "begin\n"
                          "root hip\n"
                          "hip knee\n"
                          "end\n"
                          ":skin\n"
                          "one.skn\n"
                          "two.skn\n";

/// The outcome of reading a text, as text: result, messages, tree, and the model written out.
std::string Outcome(const std::string& pText)
{
    KAsfReading lReading;
    lReading.ReadText(pText);
    std::string lResult = (lReading.mOk ? "ok\n" : "failed\n") + lReading.Messages() + lReading.Tree();
    if (lReading.mScene->mRoot != nullptr)
    {
        lResult += WrittenText(lReading.mScene);
    }
    return lResult;
}

std::string InCapitals(std::string pText)
{
    // Names are case-sensitive and keep their case.
    for (const char* lWord : {":version",  ":name", ":units", "mass",     "length",      "angle",     "deg",   ":documentation",
                              ":root",     "order", "axis",   "position", "orientation", ":bonedata", "begin", "id ",
                              "direction", "dof",   "limits", "end\n",    ":hierarchy",  ":skin",     "xyz",   "zyx",
                              "inf",       " tx",   " ty",    " tz",      " rx",         " ry",       " rz"})
    {
        std::string lCapitals = lWord;
        for (char& lCharacter : lCapitals)
        {
            lCharacter = static_cast<char>(std::toupper(lCharacter));
        }
        pText = ReplacedAll(pText, lWord, lCapitals);
    }
    return pText;
}

struct KFormCase
{
    const char* mWhat;
    std::string mText;
};

class KAsfReadFormTest : public testing::TestWithParam<KFormCase>
{
};

TEST_P(KAsfReadFormTest, SameSkeleton)
{
    const std::string lOutcome = Outcome(GetParam().mText);
    EXPECT_EQ(lOutcome, Outcome(kText)) << GetParam().mWhat;
    EXPECT_EQ(lOutcome.substr(0, 8), "ok\nroot<");
}

INSTANTIATE_TEST_SUITE_P(
    Forms, KAsfReadFormTest,
    testing::Values(KFormCase{"CR LF", ReplacedAll(kText, "\n", "\r\n")}, KFormCase{"CR", ReplacedAll(kText, "\n", "\r")},
                    KFormCase{"no last line end", kText.substr(0, kText.size() - 1)},
                    KFormCase{"UTF-8 byte-order mark", "\xEF\xBB\xBF" + kText},
                    KFormCase{"blank lines", ReplacedAll(kText, "\n", "\n\n   \n")}, KFormCase{"tabs", ReplacedAll(kText, " ", "\t \t")},
                    KFormCase{"indented", ReplacedAll(kText, "\n", "\n \t")},
                    KFormCase{"trailing blanks", ReplacedAll(kText, "\n", " \t\n")}, KFormCase{"commas", ReplacedAll(kText, " ", " , ")},
                    KFormCase{"parentheses", ReplacedAll(kText, " ", " ( ")},
                    KFormCase{"NUL for a blank", ReplacedAll(kText, " ", std::string("\0", 1))},
                    KFormCase{"comment lines", ReplacedAll(kText, "\n", "\n# begin end :root\n")},
                    KFormCase{"trailing comments", ReplacedAll(kText, "\n", "# :root\n")}, KFormCase{"capitals", InCapitals(kText)}));

TEST(AsfReadRobust, DecimalCommaOfTheProcessChangesNothing)
{
    const std::string lExpected = Outcome(kText);
    QEX_WITH_COMMA_LOCALE();
    EXPECT_EQ(Outcome(kText), lExpected);
}

/// Cut anywhere, a file is read or fails with at most one error, and nothing leaks.
void CutEverywhere(const std::string& pText, size_t pStep)
{
    KMemoryWatch lWatch;
    for (size_t lSize = 0; lSize <= pText.size(); lSize += pStep)
    {
        KAsfReading lReading;
        lReading.ReadText(std::string_view(pText).substr(0, lSize), lSize % 2 == 0);
        EXPECT_LE(lReading.mErrorCount, 1);
        if (lReading.mOk)
        {
            EXPECT_EQ(lReading.mErrorCount, 0);
        }
    }
    EXPECT_EQ(lWatch.GetBlocks(), 0u);
}

TEST(AsfReadRobust, CutAtEveryByte)
{
    CutEverywhere(kText, 1);
}

TEST(AsfReadRobust, WholeFilesCutAtEveryByte)
{
    for (const std::filesystem::path& lPath : CorpusFiles(".asf"))
    {
        SCOPED_TRACE(lPath);
        CutEverywhere(ReadFile(lPath), 1);
    }
}

TEST(AsfReadRobust, EveryByteReplaced)
{
    KMemoryWatch lWatch;
    for (size_t i = 0; i < kText.size(); ++i)
    {
        for (const char lByte : {'\0', '\n', ':', '#', 'x', '-', '(', '\xFF'})
        {
            std::string lText = kText;
            lText[i] = lByte;
            KAsfReading lReading;
            lReading.ReadText(lText);
            EXPECT_LE(lReading.mErrorCount, 1);
        }
    }
    EXPECT_EQ(lWatch.GetBlocks(), 0u);
}

/// Fails all allocations after the first N, for every N until reading succeeds: each failure reports one error.
TEST(AsfReadRobust, EveryAllocationFails)
{
    std::string lText = ":root\n:bonedata\n";
    for (int i = 0; i < 200; ++i)
    {
        lText += "begin\nname b" + std::to_string(i) + "\ndirection 1 0 0\nlength 1\nend\n";
    }
    lText += ":hierarchy\nbegin\n";
    for (int i = 1; i < 200; ++i)
    {
        lText += "b" + std::to_string(i % 7 == 0 ? i - 1 : (i - 1) / 6) + " b" + std::to_string(i) + "\n";
    }
    lText += "end\n";
    const std::string lExpected = Outcome(lText);

    bool lOk = false;
    for (long lNumber = 0; !lOk; ++lNumber)
    {
        KMemoryWatch lWatch;
        {
            KAsfReading lReading;
            lWatch.FailAfter(lNumber);
            lOk = lReading.ReadText(lText);
            EXPECT_EQ(lReading.mErrorCount, lOk ? 0 : 1) << lReading.Messages();
            if (!lOk)
            {
                ASSERT_FALSE(lReading.mMessages.empty());
                EXPECT_EQ(lReading.mMessages.back().mText, "Out of memory");
            }
            // Every child's parent agrees with the tree.
            for (HKQexAsfNode lNode : PreOrder(lReading.mScene->mRoot))
            {
                for (int i = 0; i < lNode->mChildBuf.GetCount(); ++i)
                {
                    EXPECT_EQ(lNode->mChildBuf[i]->mParent, lNode);
                }
            }
            lWatch.FailAfter(-1);
            EXPECT_TRUE(lReading.ReadText(lText)) << "the scene can be reused";
            EXPECT_EQ(lReading.Tree(), lExpected.substr(3, lReading.Tree().size()));
        }
        EXPECT_EQ(lWatch.GetBlocks(), 0u) << lNumber;
        ASSERT_LT(lNumber, 10000);
    }
}

/// Fails the only allocation that dummy removal needs: the read must fail.
TEST(AsfReadRobust, FailedDummyRemovalIsAnError)
{
    std::string lText = ":root\n:bonedata\n";
    std::string lFamily = "d";
    for (int i = 0; i < 20; ++i)
    {
        lText += "begin\nname b" + std::to_string(i) + "\ndirection 1 0 0\nlength 1\ndof rx\nend\n";
        lFamily += " b" + std::to_string(i);
    }
    lText += "begin\nname d\ndirection 1 0 0\nlength 1\nend\nbegin\nname top\ndirection 1 0 0\nlength 1\ndof "
             "rx\nend\n:hierarchy\nbegin\ntop d\n" +
             lFamily + "\nend\n";
    long lCalls = 0;
    {
        KMemoryWatch lWatch;
        KAsfReading  lPlain;
        ASSERT_TRUE(lPlain.ReadText(lText));
        lCalls = lWatch.GetCalls();
    }
    KMemoryWatch lWatch;
    KAsfReading  lReading;
    lWatch.FailAfter(lCalls);
    EXPECT_FALSE(lReading.ReadText(lText, true));
    EXPECT_EQ(lReading.Messages(), "E" + std::to_string(lReading.mMessages.back().mLine) + " Out of memory\n");
    EXPECT_EQ(lReading.Bone("top")->mChildBuf.GetCount(), 1);
    EXPECT_EQ(lReading.Bone("d")->mChildBuf.GetCount(), 20) << "nothing is lost";
}

/// Fails every read call in turn: an I/O error is never taken for the end of the file, not even after the hierarchy.
TEST(AsfReadRobust, EveryReadCallFails)
{
    KTempDir lDir;
    WriteFile(lDir / "text.asf", kText + "# " + std::string(100000, 'x') + "\n");
    KFileFaults lFaults;
    for (const int lError : {EIO, EINTR, KFileFaults::kShort})
    {
        for (int lNumber = 1, lCalls = 1; lNumber <= lCalls; ++lNumber)
        {
            lFaults.Fail(KFileFaults::eREAD, lNumber, lError);
            KQexFileAcclaimAsf lFile(false);
            KAsfReading        lReading;
            ASSERT_TRUE(lFile.OpenRead((lDir / "text.asf").c_str()));
            const bool lOk = lFile.Read(lReading.mScene, false, false, false);
            lCalls = lFaults.GetCount(KFileFaults::eREAD);
            EXPECT_EQ(lOk, lError != EIO) << lNumber;
            EXPECT_EQ(lFile.GetErrorCount(), lOk ? 0 : 1);
        }
    }
}

TEST(AsfReadRobust, TooLongALineFailsAfterTheHierarchyToo)
{
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(kText + std::string(1048577, ' ') + "\n"));
    EXPECT_EQ(lReading.Messages(), "E45 Line is too long\n");
    EXPECT_EQ(lReading.Tree(), "root<\nhip<root\nknee<hip\n");
}

TEST(AsfReadRobust, Utf16)
{
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(std::string_view("\xFF\xFE:\0r\0", 6)));
    EXPECT_EQ(lReading.Messages(), "E0 UTF-16 text is not supported\n");
}

TEST(AsfReadRobust, NotOpenedOrMissing)
{
    KAsfReading        lReading;
    KQexFileAcclaimAsf lFile(false);
    EXPECT_FALSE(lFile.Read(lReading.mScene, true, true, true));
    EXPECT_FALSE(lFile.OpenRead("/nonexistent/x.asf"));
    EXPECT_FALSE(lFile.Read(lReading.mScene, true, true, true));
    EXPECT_EQ(lFile.GetErrorCount(), 1);
    EXPECT_EQ(lReading.mScene->mRoot, nullptr);
}

constexpr int kMany = 100000;

/// kMany bones; pFamily(i) gives the family line of bone i (from 1).
template <typename TFamily>
std::string ManyBones(TFamily pFamily)
{
    std::string lText = ":root\n:bonedata\n";
    for (int i = 0; i < kMany; ++i)
    {
        lText += "begin\nname b" + std::to_string(i) + "\ndirection 1 0 0\nlength 1\nend\n";
    }
    lText += ":hierarchy\nbegin\n";
    for (int i = 1; i < kMany; ++i)
    {
        lText += pFamily(i);
    }
    return lText + "end\n";
}

std::string BoneName(int pNumber)
{
    return "b" + std::to_string(pNumber);
}

class KAsfReadManyTest : public testing::TestWithParam<size_t>
{
};

/// Reads and writes pText on a small stack. pDepth is the depth of the last bone.
void ReadMany(const std::string& pText, size_t pStack, size_t pDepth)
{
    RunWithStackSize(pStack,
                     [&]
                     {
                         KAsfReading lReading;
                         ASSERT_TRUE(lReading.ReadText(pText, true));
                         EXPECT_EQ(lReading.mWarningCount, 0);
                     });
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(pText));
    const std::vector<HKQexAsfNode> lNodes = PreOrder(lReading.mScene->mRoot);
    ASSERT_EQ(lNodes.size(), static_cast<size_t>(kMany) + 1);
    size_t lDepth = 0;
    for (HKQexAsfNode lNode = lReading.Bone(BoneName(kMany - 1).c_str()); lNode->mParent != nullptr; lNode = lNode->mParent)
    {
        ++lDepth;
    }
    EXPECT_EQ(lDepth, pDepth);
    RunWithStackSize(pStack, [&] { EXPECT_GT(WrittenText(lReading.mScene).size(), pText.size()); });
}

TEST_P(KAsfReadManyTest, Chain)
{
    ReadMany(ManyBones([](int pBone) { return BoneName(pBone - 1) + " " + BoneName(pBone) + "\n"; }), GetParam(), kMany);
}

TEST_P(KAsfReadManyTest, ChainFromItsEnd)
{
    ReadMany(ManyBones([](int pBone) { return BoneName(kMany - 1 - pBone) + " " + BoneName(kMany - pBone) + "\n"; }), GetParam(), kMany);
}

TEST_P(KAsfReadManyTest, Fan)
{
    ReadMany(ManyBones([](int pBone) { return BoneName(0) + " " + BoneName(pBone) + "\n"; }), GetParam(), 2);
}

INSTANTIATE_TEST_SUITE_P(Stacks, KAsfReadManyTest, testing::ValuesIn(kStackSizes));

/// These tests would take minutes if every section, name or bone needed a walk over the tree.
TEST(AsfReadMany, ManySections)
{
    std::string lText = ManyBones([](int) { return std::string(); });
    for (int i = 1; i < 20000; ++i)
    {
        lText += ":root\n:hierarchy\nbegin\n" + BoneName(0) + " " + BoneName(i) + "\nend\n";
    }
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(lText));
    EXPECT_EQ(lReading.mWarningCount, 19999);
    EXPECT_EQ(lReading.Bone("b19999")->mParent, lReading.Bone("b0"));
}

TEST(AsfReadMany, EveryNameTwice)
{
    // A name means its first bone in pre-order; the twin stays under the root.
    std::string lText = ":root\n:bonedata\n";
    for (int lTwin = 0; lTwin < 2; ++lTwin)
    {
        for (int i = 0; i < kMany / 2; ++i)
        {
            lText += "begin\nname b" + std::to_string(i) + "\ndirection 1 0 0\nlength 1\nend\n";
        }
    }
    lText += ":hierarchy\nbegin\n";
    for (int i = 1; i < kMany / 2; ++i)
    {
        lText += BoneName(i - 1) + " " + BoneName(i) + "\n";
    }
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(lText + "end\n"));
    EXPECT_EQ(lReading.mScene->mRoot->mChildBuf.GetCount(), kMany / 2 + 1);
}

TEST(AsfReadMany, AllOfOneName)
{
    std::string lText = ":root\n:bonedata\n";
    for (int i = 0; i < kMany; ++i)
    {
        lText += "begin\nname b\ndirection 1 0 0\nlength 1\nend\n";
    }
    lText += "begin\nname c\ndirection 1 0 0\nlength 1\nend\n:hierarchy\nbegin\n";
    for (int i = 0; i < kMany; ++i)
    {
        lText += "b b c\n";
    }
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(lText + "end\n"));
    EXPECT_EQ(lReading.mWarningCount, kMany) << "each line would make the first bone its own parent";
}

/// Reads the bones pNames with the family lines pLines; expects each bone of pParents to have one child.
void ReadRepeated(const std::vector<std::string>& pNames, const std::string& pLines, const std::vector<std::string>& pParents)
{
    std::string lText = ":root\n:bonedata\n";
    for (const std::string& lName : pNames)
    {
        lText += "begin\nname " + lName + "\ndirection 1 0 0\nlength 1\nend\n";
    }
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(lText + ":hierarchy\nbegin\n" + pLines + "end\n"));
    std::map<std::string, int> lChildren;
    for (const HKQexAsfNode lNode : PreOrder(lReading.mScene->mRoot))
    {
        lChildren[lNode->mName] = lNode->mChildBuf.GetCount();
    }
    for (const std::string& lParent : pParents)
    {
        ASSERT_EQ(lChildren[lParent], 1) << lParent;
    }
}

/// In these tests the family lines keep changing which bone of a name is first in pre-order.
TEST(AsfReadMany, FirstBoneOfANameMovesAway)
{
    std::vector<std::string> lNames(kMany / 2, "a");
    std::vector<std::string> lParents;
    std::string              lLines;
    for (int i = 0; i < kMany / 2; ++i)
    {
        lParents.push_back("c" + std::to_string(i));
        lLines += lParents.back() + " a\n";
    }
    lNames.insert(lNames.end(), lParents.begin(), lParents.end());
    ReadRepeated(lNames, lLines, lParents);
}

TEST(AsfReadMany, BonesOfANameMoveToTheFront)
{
    std::vector<std::string> lNames(kMany / 2, "a");
    std::vector<std::string> lParents;
    std::string              lLines;
    std::string              lMoves;
    for (int i = 0; i < kMany / 2; ++i)
    {
        lParents.push_back("c" + std::to_string(i));
        lParents.push_back("d" + std::to_string(i));
        lLines += lParents.back() + " a\n";
        lMoves += lParents.end()[-2] + " d" + std::to_string(kMany / 2 - 1 - i) + "\na\n";
    }
    for (const char lKind : {'c', 'd'})
    {
        std::copy_if(lParents.begin(), lParents.end(), std::back_inserter(lNames),
                     [=](const std::string& pName) { return pName[0] == lKind; });
    }
    ReadRepeated(lNames, lLines + lMoves, lParents);
}

/// 50,000 bones of one name below the last bone of a chain of 50,000.
TEST(AsfReadMany, BonesOfANameShareADeepParent)
{
    std::vector<std::string> lNames(kMany / 2, "a");
    std::vector<std::string> lParents;
    std::string              lLines;
    for (int i = 0; i < kMany / 2; ++i)
    {
        lNames.push_back(BoneName(i));
        if (i > 0)
        {
            lParents.push_back(BoneName(i - 1));
            lLines += BoneName(i - 1) + " " + BoneName(i) + "\n";
        }
    }
    lNames.emplace_back("z");
    for (int i = 0; i < kMany / 2; ++i)
    {
        lLines += lNames.end()[-2] + " a\n";
    }
    ReadRepeated(lNames, lLines + "a z\n", lParents);
}

TEST(AsfReadMany, MisplacedWordsOnOneLine)
{
    std::string lText = ":root\n:bonedata\n";
    for (int i = 0; i < 500000; ++i)
    {
        lText += "l ";
    }
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(lText + "\n"));
    EXPECT_EQ(lReading.mWarningCount, 500000);
    lText = ":root\n:bonedata\nbegin\ndof ";
    for (int i = 0; i < 500000; ++i)
    {
        lText += "l ";
    }
    EXPECT_FALSE(lReading.ReadText(lText + "\n"));
    EXPECT_EQ(lReading.mWarningCount, 500000);
}

/// The plain rule: search the tree for each name, and move only children of the root.
class KPlainHierarchy
{
public:
    explicit KPlainHierarchy(HKQexAsfNode pRoot) : mRoot(pRoot) {}

    void Family(const std::string& pParent, const std::string& pChild)
    {
        HKQexAsfNode lParent = mRoot->Find(pParent.c_str());
        HKQexAsfNode lChild = mRoot->Find(pChild.c_str());
        if (lChild->mParent != mRoot)
        {
            return;
        }
        for (HKQexAsfNode lAncestor = lParent; lAncestor != nullptr; lAncestor = lAncestor->mParent)
        {
            if (lAncestor == lChild)
            {
                return;
            }
        }
        mRoot->RemoveChild(lChild);
        lParent->AddChild(lChild);
    }

private:
    HKQexAsfNode mRoot;
};

TEST(AsfReadHierarchy, MatchesAPlainSearch)
{
    unsigned   lState = 1;
    const auto lNext = [&lState](int pBelow)
    {
        lState = lState * 1664525u + 1013904223u;
        return static_cast<int>((lState >> 8) % static_cast<unsigned>(pBelow));
    };
    for (int lRound = 0; lRound < 600; ++lRound)
    {
        // Only half of the bones share names: if all did, the lines would soon name only bones that have already moved.
        const bool               lIsLarge = lRound % 10 == 0;
        const int                lShared = lIsLarge ? 40 : 3;
        std::vector<std::string> lNames;
        std::string              lText = ":root\n:bonedata\n";
        for (int i = 2 + lNext(lIsLarge ? 400 : 40); i > 0; --i)
        {
            lNames.push_back(BoneName(lNext(2) == 0 ? lNext(lShared) : i + lShared));
            lText += "begin\nname " + lNames.back() + "\ndirection 1 0 0\nlength " + std::to_string(i) + "\nend\n";
        }
        KAsfReading lPlain;
        ASSERT_TRUE(lPlain.ReadText(lText + ":hierarchy\n"));
        KPlainHierarchy lExpected(lPlain.mScene->mRoot);
        lText += ":hierarchy\nbegin\n";
        for (int i = 0; i < (lIsLarge ? 1000 : 60); ++i)
        {
            const std::string lParent = lNames[static_cast<size_t>(lNext(static_cast<int>(lNames.size())))];
            const std::string lChild = lNames[static_cast<size_t>(lNext(static_cast<int>(lNames.size())))];
            lText += lParent + " " + lChild + "\n";
            lExpected.Family(lParent, lChild);
            if (lNext(10) == 0)
            {
                lText += "end\n:hierarchy\nbegin\n";
            }
        }
        KAsfReading lReading;
        ASSERT_TRUE(lReading.ReadText(lText + "end\n"));
        lPlain.mScene->mRoot->SetupPosition(false, false);
        ASSERT_EQ(WrittenText(lReading.mScene), WrittenText(lPlain.mScene)) << lText;
    }
}

/// Names of up to 50 equal letters, and all that differ from them in one letter: comparing only a part would confuse some.
TEST(AsfReadHierarchy, NamesDifferByEveryLetterAndTheirLength)
{
    std::vector<std::string> lNames;
    for (size_t lLength = 1; lLength <= 50; ++lLength)
    {
        const std::string lPlain(lLength, 'a');
        lNames.push_back(lPlain);
        for (size_t i = 0; i < lLength; ++i)
        {
            lNames.emplace_back(lPlain).at(i) = 'b';
        }
    }
    std::string lBones = ":root\n:bonedata\n";
    std::string lFamilies = ":hierarchy\nbegin\n";
    for (size_t i = 0; i < lNames.size(); ++i)
    {
        // A bone's last name line wins.
        lBones += "begin\nname " + lNames[lNames.size() - 1 - i] + "x\nname " + lNames[i] + "\ndirection 1 0 0\nlength 1\nend\n";
        if (i > 0)
        {
            lFamilies += lNames[i - 1] + " " + lNames[i] + "\n";
        }
    }
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(lBones + lFamilies + "end\n"));
    const std::vector<HKQexAsfNode> lNodes = PreOrder(lReading.mScene->mRoot);
    ASSERT_EQ(lNodes.size(), lNames.size() + 1);
    for (size_t i = 0; i < lNames.size(); ++i)
    {
        ASSERT_EQ(lNodes[i + 1]->mName, lNames[i]);
        ASSERT_EQ(lNodes[i + 1]->mParent, lNodes[i]);
    }
}

TEST(AsfReadMemory, HeapHoldsBonesChildArraysAndOneBuffer)
{
    KMemoryWatch lWatch;
    KAsfReading  lReading;
    const long   lBefore = lWatch.GetCalls();
    ASSERT_TRUE(lReading.ReadText(kText));
    // Root and two bones, the child blocks of root and hip, the line buffer. The name index uses the standard allocator.
    EXPECT_EQ(lWatch.GetCalls() - lBefore, 3 + 2 + 1);
    // Scene, three bones and two child blocks are left.
    EXPECT_EQ(lWatch.GetBlocks(), 6u);
}

} // namespace

} // namespace qextest
