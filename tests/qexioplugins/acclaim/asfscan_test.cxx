#include "asftestsupport.h"

#include <tests/support/comments.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>
#include <random>
#include <string>
#include <vector>

/// Lines of bones as most files have them are read by a quicker way of their own. With a comment on every line no line is one of those,
/// and what reading comes to has to be the same, to the last bit and message.

namespace qextest
{

using namespace qexsdk;

namespace
{

constexpr unsigned kSeed = 20261121u;
constexpr int      kRounds = 6000;

std::string Bits(double pValue)
{
    char lText[40];
    std::snprintf(lText, sizeof lText, " %a", pValue);
    return lText;
}

std::string BoneBits(const KQexAsfNode& pNode)
{
    std::string lResult =
        pNode.mName + std::string("<") + (pNode.mParent == nullptr ? "" : pNode.mParent->mName + Bits(pNode.mParent->mLength));
    for (const char lByte : pNode.mName)
        lResult += lByte == '\0' ? '.' : lByte;
    for (int i = 0; i < 3; ++i)
        lResult += Bits(pNode.mDirectionV.mData[i]) + Bits(pNode.mOrientationV.mData[i]) + Bits(pNode.mLR.mData[i]);
    lResult += Bits(pNode.mLength) + " " + std::to_string(pNode.mOrientationOrder);
    for (int i = 0; i < pNode.mOrderCount; ++i)
        lResult += " " + std::to_string(pNode.mOrderBuf[i]);
    for (int lCode = 0; lCode < 6; ++lCode)
        for (int i = 0; i < 2; ++i)
            lResult += pNode.mLimitsActive[lCode][i] ? Bits(pNode.mLimitsBuf[lCode][i]) : " -";
    return lResult + "\n";
}

/// The tables with the words of bones and families, which count what was found.
KToken* const kTables[] = {KQexFileAcclaimAsf::smGroup, KQexFileAcclaimAsf::smBoneData, KQexFileAcclaimAsf::smAxis,
                           KQexFileAcclaimAsf::smOrder, KQexFileAcclaimAsf::smDof};

/// All that reading the text gave.
std::string OutcomeBits(const std::string& pText)
{
    for (KToken* lTable : kTables)
        for (; *lTable->mStr != '\0'; ++lTable)
            lTable->mCount = 0;
    KAsfReading lReading;
    lReading.ReadText(pText);
    std::string lResult = (lReading.mOk ? "ok\n" : "failed\n") + lReading.Messages();
    for (const KToken* lTable : kTables)
        for (; *lTable->mStr != '\0'; ++lTable)
            lResult += lTable->mStr + std::string("=") + std::to_string(lTable->mCount) + " ";
    if (lReading.mScene->mRoot != nullptr)
        for (const KQexAsfNode* lNode : PreOrder(lReading.mScene->mRoot))
            lResult += BoneBits(*lNode);
    return lResult;
}

std::string Bone(int pId, const std::string& pDofs, const std::string& pLimits)
{
    const std::string lId = std::to_string(pId);
    return "  begin\n     id " + lId + "\n     name bone" + lId + "\n     direction 0.566809 -0.746272 0.349008 \n     length 2.4" + lId +
           "\n     axis 10.5 -20 " + lId + "0  XYZ\n" + (pDofs.empty() ? "" : "    dof " + pDofs + "\n    limits " + pLimits + "\n") +
           "  end\n";
}

const std::string kHead = ":root\norder tx ty tz\naxis xyz\nposition 0 0 0\norientation 0 0 0\n:units\nlength 0.45\n:bonedata\n";

std::string Skeleton()
{
    return kHead + Bone(1, "", "") + Bone(2, "rx ry rz", "(-160.0 20.0)\n           (-70 70)\n   (-60.123456 7e1)") +
           Bone(3, "RX", "(-inf 170.25)") + Bone(4, "tx ty tz rz ry rx", "(1 2)\n(3 4)\n(5 6)\n(7 8)\n(9 10)\n(11 12)") +
           ":hierarchy\n  begin\n    root bone1 bone2\n    bone2 bone3\n  end\n";
}

/// The text with one thing changed.
std::string Changed(std::string pText, std::mt19937& pRandom)
{
    static const char* const kPieces[] = {" ",
                                          "\n",
                                          "\r\n",
                                          "\r",
                                          "\t",
                                          "(",
                                          ")",
                                          ",",
                                          "#",
                                          "0",
                                          "12345678901234567",
                                          ".",
                                          "-",
                                          "+",
                                          "e5",
                                          "e999",
                                          "x",
                                          "X",
                                          "rx ",
                                          "l ",
                                          "tz ",
                                          "inf ",
                                          "nan",
                                          "end\n",
                                          "id ",
                                          "dof",
                                          "begin\n",
                                          "limits",
                                          "name root\n",
                                          "\xC3\xA4",
                                          "bodymass 1\n",
                                          ":skin"};
    const auto               lBelow = [&pRandom](size_t pCount)
    {
        return static_cast<size_t>(pRandom()) % pCount;
    };
    const size_t lAt = kHead.size() + lBelow(pText.size() - kHead.size());
    switch (lBelow(4))
    {
    case 0:
        return pText.erase(lAt, 1 + lBelow(3));
    case 1:
        return pText.erase(lAt, pText.find('\n', lAt) - lAt);
    case 2:
        return pText.insert(lAt, std::string(1, static_cast<char>(lBelow(128))));
    default:
        return pText.insert(lAt, kPieces[lBelow(std::size(kPieces))]);
    }
}

} // namespace

TEST(AsfScan, ChangedTextsReadAsWithComments)
{
    std::mt19937 lRandom(kSeed);
    int          lFailed = 0;
    for (int lRound = 0; lRound < kRounds; ++lRound)
    {
        std::string lText = Changed(Skeleton(), lRandom);
        if (lRound % 2 == 1)
            lText = Changed(lText, lRandom);
        const std::string lOutcome = OutcomeBits(lText);
        ASSERT_EQ(lOutcome, OutcomeBits(Commented(lText))) << lText;
        lFailed += lOutcome[0] == 'f' ? 1 : 0;
    }
    // Both kinds came up, often.
    EXPECT_GT(lFailed, kRounds / 20);
    EXPECT_LT(lFailed, kRounds * 3 / 4);
}

TEST(AsfScan, ForeignLinesReadAsWithComments)
{
    const std::string lLong(60, 'n');
    for (const char* lLine : {"id -1",
                              "id 1234567890",
                              "id 12x",
                              "id",
                              "id 1 2",
                              "name",
                              "name root",
                              "name a b",
                              "name a:b",
                              "name \xC3\xA4",
                              "direction 1 2",
                              "direction 0 0 0",
                              "direction -0.0 -0 0",
                              "direction 1 2 3 4",
                              "direction 1e400 0 0",
                              "direction 1,2,3",
                              "length",
                              "length 1.",
                              "length .5",
                              "length 5 6",
                              "length -3",
                              "length 1e-400",
                              "length 0,45",
                              "axis 1 2 3",
                              "axis 1 2 3 xy",
                              "axis 1 2 3 xyzz",
                              "axis 1 2 3 XyZ",
                              "axis 1 2 3 zyx q",
                              "axis 1 2 xyz",
                              "dof",
                              "dof rx rx",
                              "dof rx ry rz tx ty tz rx",
                              "dof rx l ry",
                              "dof q",
                              "dof RxRy",
                              "dof rx\nlimits",
                              "limits (1 2)",
                              "dof rx\nlimits (1 2) (3 4)",
                              "dof rx ry\nlimits (1 2) (3 4)",
                              "dof rx ry\nlimits\n(1 2)\n\n(3 4)",
                              "dof rx ry\nlimits (1 2)\nend",
                              "dof rx\nlimits (nan inf)",
                              "dof rx\ndof ry rz\nlimits (1 2)\n(3 4)",
                              "dof tx\nlimits (1 2)\nlimits (3 4)"})
    {
        const std::string lBone = "begin\nid 7\nname hand\ndirection 1 0 0\nlength 1\naxis 0 0 0 xyz\n";
        const std::string lEnd = "\nend\n:hierarchy\n";
        const size_t      lKeyword = lBone.find('\n' + std::string(lLine).substr(0, std::string(lLine).find(' ')) + ' ');
        std::string       lText = kHead + lBone + lLine + lEnd;
        EXPECT_EQ(OutcomeBits(lText), OutcomeBits(Commented(lText))) << lText;
        if (lKeyword == std::string::npos)
            continue;
        // In the place of its own line, where the quicker way looks for it.
        lText = kHead + lBone.substr(0, lKeyword + 1) + lLine + lBone.substr(lBone.find('\n', lKeyword + 1)) + lEnd;
        EXPECT_EQ(OutcomeBits(lText), OutcomeBits(Commented(lText))) << lText;
    }
    const std::string lText = kHead + "begin\nid 7\nname " + lLong + "\ndirection 1 0 0\nlength 1\nend\n:hierarchy\n";
    EXPECT_EQ(OutcomeBits(lText), OutcomeBits(Commented(lText)));
}

TEST(AsfScan, LinesThatTheBufferCutsReadAsWithComments)
{
    // Blanks in front move the bones over the end of the first buffer, byte by byte.
    const std::string lText = Skeleton();
    const std::string lExpected = OutcomeBits(lText);
    for (size_t lShift = 0; lShift < lText.size(); ++lShift)
        ASSERT_EQ(OutcomeBits(std::string(65536 - lShift, '\n') + lText), lExpected) << lShift;
    // Blanks in a line up to and beyond the longest one that is read.
    const std::string lBone = kHead + "begin\nid 7";
    for (const size_t lSize : {KLineReader::kMaxLine - 4, KLineReader::kMaxLine - 3})
    {
        const std::string lWide = ":documentation\n" + std::string(900000, 'x') + "\n" + lBone + std::string(lSize, ' ') +
                                  "\nname hand\ndirection 1 0 0\nlength 1\nend\n:hierarchy\n";
        EXPECT_EQ(OutcomeBits(lWide).substr(0, 2), lSize + 4 > KLineReader::kMaxLine ? "fa" : "ok");
    }
}

/// A buffer that a long line made grow can hold the whole of one that is too long: nothing that stands there is done. Such a line has to
/// begin where the buffer does, so that the line before it lies across the end of the buffer before.
TEST(AsfScan, NothingOnALineThatIsTooLongIsDone)
{
    constexpr size_t  kBuffer = KLineReader::kMaxLine + 65536;
    const std::string lHead = ":documentation\n" + std::string(KLineReader::kMaxLine, 'x') + "\n" + kHead;
    std::string       lText = lHead;
    for (const char* lName : {"a", "b", "c"})
        lText += std::string("begin\nid 1\nname ") + lName + "\ndirection 1 0 0\nlength 1\naxis 0 0 0 xyz\nend\n";
    lText += ":hierarchy\nbegin\n";
    for (const size_t lEnd : {kBuffer - 100, kBuffer - 10, kBuffer, kBuffer + 10, kBuffer + 1000})
    {
        std::string lLong = lText;
        while (lLong.size() + 500 < lEnd)
            lLong += "root" + std::string(100, ' ') + "\n";
        lLong += "root" + std::string(1000, ' ') + "\n";
        lLong += "a b c" + std::string(KLineReader::kMaxLine - 4, ' ') + "\nend\n";
        KAsfReading lReading;
        EXPECT_FALSE(lReading.ReadText(lLong));
        EXPECT_NE(lReading.Messages().find("Line is too long"), std::string::npos);
        EXPECT_EQ(lReading.mScene->mRoot->mChildBuf.GetCount(), 3) << lEnd;
    }
}

TEST(AsfScan, GroupsThatEndAndBeginOtherwise)
{
    const std::string lBone = "id 1\nname NAME\ndirection 1 0 0\nlength 1\naxis 0 0 0 xyz\n";
    const auto        lNamed = [&lBone](const char* pName)
    {
        return std::string(lBone).replace(lBone.find("NAME"), 4, pName);
    };
    for (const char* lBetween :
         {"end\nbegin\n", "begin\n", "end\nend\nbegin\n", "end\nbegin\nbegin\n", "end begin\nbegin\n", "end\nbegin x\n", "END\nBEGIN\n",
          "end\n\nbegin\n", "end\nwhat\nbegin\n", "end\n:bonedata\nbegin\n", "end\n:root\n:bonedata\nbegin\n"})
        for (const char* lEnd :
             {"end\n", "end", "", "begin\n", "end\nbegin\n", "end\nbegin", "end\n:hierarchy\n", "end\n:hierarchy\nbegin\na b\nend\n"})
        {
            const std::string lText = kHead + "begin\n" + lNamed("a") + lBetween + lNamed("b") + lEnd;
            EXPECT_EQ(OutcomeBits(lText), OutcomeBits(Commented(lText))) << lText;
        }
}

/// Twins: asked for again, a name may be another bone's, so that nothing may be asked for twice.
TEST(AsfScan, FamiliesOfTwinsReadAsWithComments)
{
    std::mt19937 lRandom(kSeed);
    const auto   lBelow = [&lRandom](int pCount)
    {
        return static_cast<int>(lRandom() % static_cast<unsigned>(pCount));
    };
    for (int lRound = 0; lRound < 2000; ++lRound)
    {
        const int   lBones = 3 + lBelow(8);
        std::string lText = kHead;
        for (int i = 0; i < lBones; ++i)
            lText += "begin\nid 1\nname " + std::string(1, static_cast<char>('a' + lBelow(4))) + "\ndirection 1 0 0\nlength " +
                     std::to_string(i + 1) + "\nend\n";
        lText += ":hierarchy\nbegin\n";
        for (int lLine = 1 + lBelow(5); lLine > 0; --lLine)
        {
            for (int lWord = 2 + lBelow(lRound % 5 == 0 ? 60 : 4); lWord > 0; --lWord)
                lText +=
                    (lBelow(20) == 0 ? std::string("x\xE4") : std::string(1, static_cast<char>('a' + lBelow(lRound % 3 == 0 ? 5 : 4)))) +
                    " ";
            lText += lBelow(8) == 0 ? "#\n" : "\n";
        }
        lText += lBelow(4) == 0 ? "" : "end\n";
        ASSERT_EQ(OutcomeBits(lText), OutcomeBits(Commented(lText))) << lText;
    }
}

TEST(AsfScan, LineNumbersGoOnBehindIt)
{
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(kHead + Bone(1, "rx", "(1 2)") + "begin\nname b\ndirection 1 0 0\nlength 1\nwhat\nend\n:hierarchy\n"));
    EXPECT_EQ(lReading.Messages(), "W22 Unknown bonedata token\n");
}

} // namespace qextest
