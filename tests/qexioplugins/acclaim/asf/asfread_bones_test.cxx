#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>
#include <tests/support/memorywatch.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

/// Bone groups and the hierarchy: the tree and the messages for each line.

namespace qextest
{

using namespace qexsdk;

namespace
{

const std::string kHead = ":root\n"; // line 1
const std::string kEnd = ":hierarchy\n";

/// A file up to a bone group that lacks only its "end"; a case's own lines start at line 7.
const std::string kBone = kHead + ":bonedata\nbegin\nname a\ndirection 0 2 0\nlength 1\n";

/// A complete bone group of five lines.
std::string Bone(const std::string& pName)
{
    return "begin\nname " + pName + " \ndirection 1 0 0\nlength 1\nend\n";
}

struct KBoneCase
{
    const char* mWhat;
    std::string mText;
    bool        mOk;
    std::string mMessages;
    std::string mTree;
};

void PrintTo(const KBoneCase& pCase, std::ostream* pOut)
{
    *pOut << pCase.mWhat;
}

class KAsfReadBonesTest : public testing::TestWithParam<KBoneCase>
{
};

TEST_P(KAsfReadBonesTest, ResultMessagesAndTree)
{
    KMemoryWatch lWatch;
    {
        KAsfReading lReading;
        EXPECT_EQ(lReading.ReadText(GetParam().mText), GetParam().mOk);
        EXPECT_EQ(lReading.Messages(), GetParam().mMessages);
        EXPECT_EQ(lReading.Tree(), GetParam().mTree);
    }
    EXPECT_EQ(lWatch.GetBlocks(), 0u);
}

const std::string kOne = "root<\na<root\n";
const std::string kNone = "root<\n";

INSTANTIATE_TEST_SUITE_P(
    BoneData, KAsfReadBonesTest,
    testing::Values(
        KBoneCase{"one bone", kBone + "end\n" + kEnd, true, "", kOne}, KBoneCase{"no bones", kHead + ":bonedata\n" + kEnd, true, "", kNone},
        KBoneCase{"before the root", ":bonedata\n" + Bone("a") + kHead + kEnd, false, "E1 Bone data before :root\n", ""},
        KBoneCase{"end of the file at once", kHead + ":bonedata\n", false, "", kNone},
        KBoneCase{"end of the file after a bone", kBone + "end\n", false, "", kOne},
        KBoneCase{"end of the file in a bone", kBone, false, "", kNone},
        KBoneCase{"begin ends a group too", kBone + Bone("b") + kEnd, true, "", "root<\na<root\nb<root\n"},
        KBoneCase{"two ends", kBone + "end\nend\n" + kEnd, true, "", kOne},
        KBoneCase{"misplaced word", kHead + ":bonedata\nfoo\n" + Bone("a") + kEnd, true, "W3 Begin/End keyword expected\n", kOne},
        KBoneCase{"misplaced words, one warning each", kHead + ":bonedata\nfoo bar baz\n" + Bone("a") + kEnd, true,
                  "W3 Begin/End keyword expected\nW3 Begin/End keyword expected\nW3 Begin/End keyword expected\n", kOne},
        KBoneCase{"begin after a misplaced word", kHead + ":bonedata\nfoo begin\nname a\ndirection 1 0 0\nlength 1\nend\n" + kEnd, true,
                  "W3 Begin/End keyword expected\n", kOne},
        KBoneCase{"end after a misplaced word", kHead + ":bonedata\nfoo end bar\n" + Bone("a") + kEnd, true,
                  "W3 Begin/End keyword expected\n", kOne},
        KBoneCase{"misplaced words to the end of the file", kHead + ":bonedata\nfoo\nbar\n", false,
                  "W3 Begin/End keyword expected\nW4 Begin/End keyword expected\n", kNone},
        KBoneCase{"a section after a misplaced word", kHead + ":bonedata\nfoo :hierarchy\nbegin\nend\n", true,
                  "W3 Begin/End keyword expected\n", kNone},
        KBoneCase{"second section", kBone + "end\n:bonedata\n" + Bone("b") + kEnd, true, "", "root<\na<root\nb<root\n"},
        KBoneCase{"section keyword inside a group", kBone + ":hierarchy\n", false, "W7 Unknown bonedata token\n", kNone},
        KBoneCase{"capitals", kHead + ":BoneData\nBEGIN\nNAME a\nDirection 1 0 0\nLENGTH 1\nEND\n" + kEnd, true, "", kOne}));

INSTANTIATE_TEST_SUITE_P(
    BoneLines, KAsfReadBonesTest,
    testing::Values(
        KBoneCase{"unknown word", kBone + "foo 1\nend\n" + kEnd, true, "W7 Unknown bonedata token\n", kOne},
        KBoneCase{"id", kBone + "id 1\nend\n" + kEnd, true, "", kOne},
        KBoneCase{"id that is not a number", kBone + "id x\nend\n" + kEnd, true, "W7 Can't read bone id value\n", kOne},
        KBoneCase{"no id", kBone + "id\nend\n" + kEnd, true, "W7 Can't read bone id value\n", kOne},
        KBoneCase{"name without a value", kBone + "name\nend\n" + kEnd, false, "E7 Can't read bone name\n", kNone},
        KBoneCase{"a bone named root", kBone + "name root\nend\n" + kEnd, false, "E7 Forbidden bone name\n", kNone},
        KBoneCase{"a bone named Root", kBone + "name Root\nend\n" + kEnd, true, "", "root<\nRoot<root\n"},
        KBoneCase{"50 characters", kBone + "name " + std::string(50, 'b') + "\nend\n" + kEnd, true, "",
                  "root<\n" + std::string(50, 'b') + "<root\n"},
        KBoneCase{"51 characters", kBone + "name " + std::string(51, 'b') + "\nend\n" + kEnd, true,
                  "W7 Name cut to 50 characters (" + std::string(50, 'b') + ")\n", "root<\n" + std::string(50, 'b') + "<root\n"},
        KBoneCase{"direction", kBone + "direction 1 0\nend\n" + kEnd, false, "E7 Can't read bone direction\n", kNone},
        KBoneCase{"direction that is not finite", kBone + "direction 1 0 nan\nend\n" + kEnd, false, "E7 Can't read bone direction\n",
                  kNone},
        KBoneCase{"length", kBone + "length\nend\n" + kEnd, false, "E7 Can't read bone length\n", kNone},
        KBoneCase{"length that is a word", kBone + "length long\nend\n" + kEnd, false, "E7 Can't read bone length\n", kNone},
        KBoneCase{"axis", kBone + "axis 0 0 XYZ\nend\n" + kEnd, false, "E7 Can't read bone local coordinate system\n", kNone},
        KBoneCase{"no axis word", kBone + "axis 0 0 0\nend\n" + kEnd, false, "E7 Unknown rotation order\n", kNone},
        KBoneCase{"unknown axis word", kBone + "axis 0 0 0 xxx\nend\n" + kEnd, false, "E7 Unknown rotation order\n", kNone},
        KBoneCase{"bodymass", kBone + "bodymass 3\nend\n" + kEnd, true, "", kOne},
        KBoneCase{"no bodymass", kBone + "bodymass\nend\n" + kEnd, true, "W7 Can't read bodymass value\n", kOne},
        KBoneCase{"cofmass", kBone + "cofmass 3\nend\n" + kEnd, true, "", kOne},
        KBoneCase{"no cofmass", kBone + "cofmass x\nend\n" + kEnd, true, "W7 Can't read cofmass value\n", kOne},
        KBoneCase{"l", kBone + "dof rx l ry\nend\n" + kEnd, true, "W7 Unknown degree of freedom (l ry)\n", kOne},
        KBoneCase{"two l", kBone + "dof l L\nend\n" + kEnd, true, "W7 Unknown degree of freedom (l L)\nW7 Unknown degree of freedom (L)\n",
                  kOne},
        KBoneCase{"too many words", kBone + "dof tx ty tz l rx ry rz rx ry\nend\n" + kEnd, true,
                  "W7 Unknown degree of freedom (l rx ry rz rx ry)\nW7 Too many degrees of freedom (rx ry)\n", kOne},
        KBoneCase{"limits", kBone + "dof rx\nlimits (1)\nend\n" + kEnd, false, "E9 Can't read dof limits\n", kNone},
        KBoneCase{"limits on the next line", kBone + "dof rx\nlimits\n(-1 1)\nend\n" + kEnd, true, "", kOne},
        KBoneCase{"limits missing", kBone + "dof rx ry\nlimits (-1 1)\nend\n" + kEnd, false, "E9 Can't read dof limits\n", kNone},
        KBoneCase{"limits at the end of the file", kBone + "dof rx ry\nlimits (-1 1)\n", false, "E8 Can't read dof limits\n", kNone},
        KBoneCase{"limits without DOFs", kBone + "limits (-1 1)\n(-2 2)\nend\n" + kEnd, true, "W8 Unknown bonedata token\n", kOne},
        KBoneCase{"more limits than DOFs", kBone + "dof rx\nlimits (-1 1)\n(-2 2)\nend\n" + kEnd, true, "W9 Unknown bonedata token\n",
                  kOne}));

INSTANTIATE_TEST_SUITE_P(
    BoneEnds, KAsfReadBonesTest,
    testing::Values(
        KBoneCase{"nothing", kHead + ":bonedata\nbegin\nend\n" + kEnd, false, "E4 Bone has no name\n", kNone},
        KBoneCase{"no direction", kHead + ":bonedata\nbegin\nname a\nlength 1\nend\n" + kEnd, false, "E6 Bone has no direction\n", kNone},
        KBoneCase{"no length", kHead + ":bonedata\nbegin\nname a\ndirection 1 0 0\nend\n" + kEnd, false, "E6 Bone has no length\n", kNone},
        KBoneCase{"name comes first", kHead + ":bonedata\nbegin\nlength 1\nend\n" + kEnd, false, "E5 Bone has no name\n", kNone},
        KBoneCase{"fields are counted per bone", kBone + "end\nbegin\nname b\nend\n" + kEnd, false, "E10 Bone has no direction\n", kOne}));

const std::string kThree = kHead + ":bonedata\n" + Bone("a") + Bone("b") + Bone("c"); // lines 1 to 17

INSTANTIATE_TEST_SUITE_P(
    Hierarchy, KAsfReadBonesTest,
    testing::Values(
        KBoneCase{"none", kThree + ":hierarchy\n", true, "", "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"chain", kThree + ":hierarchy\nbegin\nroot a\na b\nb c\nend\n", true, "", "root<\na<root\nb<a\nc<b\n"},
        KBoneCase{"chain, last link first", kThree + ":hierarchy\nbegin\nb c\na b\nroot a\nend\n", true, "", "root<\na<root\nb<a\nc<b\n"},
        KBoneCase{"children in the order of the line", kThree + ":hierarchy\nbegin\na c b\nend\n", true, "", "root<\na<root\nc<a\nb<a\n"},
        KBoneCase{"a bone that is not in the hierarchy", kThree + ":hierarchy\nbegin\nb c\nend\n", true, "",
                  "root<\na<root\nb<root\nc<b\n"},
        KBoneCase{"no end", kThree + ":hierarchy\nbegin\na b\n", true, "", "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"before the root", ":hierarchy\nbegin\nend\n" + kHead + kEnd, false, "E1 Hierarchy before :root\n", ""},
        KBoneCase{"first family wins", kThree + ":hierarchy\nbegin\na c\nb c\nend\n", true, "", "root<\na<root\nc<a\nb<root\n"},
        KBoneCase{"root's line is skipped", kThree + ":hierarchy\nbegin\nroot foo bar\nend\n", true, "", "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"ROOT is not the root", kThree + ":hierarchy\nbegin\nROOT a\nend\n", false, "E20 Unknown parent bone name (ROOT)\n",
                  "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"unknown parent", kThree + ":hierarchy\nbegin\na b\nfoo c\nend\n", false, "E21 Unknown parent bone name (foo)\n",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"unknown child", kThree + ":hierarchy\nbegin\na b foo c\nend\n", false, "E20 Unknown child bone name (foo)\n",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"names are case-sensitive", kThree + ":hierarchy\nbegin\na B\nend\n", false, "E20 Unknown child bone name (B)\n",
                  "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"misplaced words, one warning a line", kThree + ":hierarchy\nfoo bar\na b\nbegin\na b\nend\nbaz\n", true,
                  "W19 Begin/End keyword expected\nW20 Begin/End keyword expected\nW24 Begin/End keyword expected\n",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"end before begin", kThree + ":hierarchy\nend\nbegin\na b\nend\n", true, "", "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"begin inside", kThree + ":hierarchy\nbegin\na b\nbegin\na c\nend\n", true, "W22 Begin/End keyword expected\n",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"section after it", kThree + ":hierarchy\nbegin\na b\nend\n:units\n", false, "", "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"section inside the families", kThree + ":hierarchy\nbegin\na b\n:units\nend\n", false,
                  "E21 Unknown parent bone name (:units)\n", "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"two sections", kThree + ":hierarchy\nbegin\na b\nend\n:hierarchy\nbegin\nb c\nend\n", true, "",
                  "root<\na<root\nb<a\nc<b\n"},
        KBoneCase{"bones after the hierarchy",
                  kThree + ":hierarchy\nbegin\na b\nend\n:bonedata\n" + Bone("d") + ":hierarchy\nbegin\nd c\nend\n", true, "",
                  "root<\na<root\nb<a\nd<root\nc<d\n"},
        KBoneCase{"a bone under itself", kThree + ":hierarchy\nbegin\na a\nend\n", true, "W20 Bone under itself (a)\n",
                  "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"a cycle of two", kThree + ":hierarchy\nbegin\na b\nb a\nend\n", true, "W21 Bone under itself (a)\n",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"a cycle of three", kThree + ":hierarchy\nbegin\na b\nb c\nc a\nend\n", true, "W22 Bone under itself (a)\n",
                  "root<\na<root\nb<a\nc<b\n"},
        KBoneCase{"a bone under itself that already has a parent", kThree + ":hierarchy\nbegin\na b\nb b\nend\n", true, "",
                  "root<\na<root\nb<a\nc<root\n"},
        KBoneCase{"root as a child", kThree + ":hierarchy\nbegin\na root\nend\n", true, "", "root<\na<root\nb<root\nc<root\n"},
        KBoneCase{"bones of one name: a line names the first",
                  kHead + ":bonedata\n" + Bone("a") + Bone("b") + Bone("b") + ":hierarchy\nbegin\nb a\nend\n", true, "",
                  "root<\nb<root\na<b\nb<root\n"},
        KBoneCase{"bones of one name: two lines move both",
                  kHead + ":bonedata\n" + Bone("b") + Bone("a") + Bone("b") + ":hierarchy\nbegin\na b\na b\nend\n", true, "",
                  "root<\na<root\nb<a\nb<root\n"},
        KBoneCase{"parent name cut",
                  kHead + ":bonedata\n" + Bone(std::string(50, 'p')) + Bone("a") + ":hierarchy\nbegin\n" + std::string(60, 'p') +
                      " a\nend\n",
                  true, "W15 Name cut to 50 characters (" + std::string(50, 'p') + ")\n",
                  "root<\n" + std::string(50, 'p') + "<root\na<" + std::string(50, 'p') + "\n"},
        KBoneCase{
            "child name cut",
            kHead + ":bonedata\n" + Bone(std::string(50, 'p')) + Bone("a") + ":hierarchy\nbegin\na " + std::string(60, 'p') + "\nend\n",
            true, "W15 Name cut to 50 characters (" + std::string(50, 'p') + ")\n", "root<\na<root\n" + std::string(50, 'p') + "<a\n"}));

/// Reads a bone with pLines after its name, direction and length.
HKQexAsfNode ReadBone(KAsfReading& pReading, const std::string& pLines, const std::string& pUnits = "")
{
    EXPECT_TRUE(pReading.ReadText(pUnits + kBone + pLines + "end\n" + kEnd)) << pReading.Messages();
    return pReading.Bone("a");
}

TEST(AsfReadBone, DirectionIsNormalised)
{
    KAsfReading  lReading;
    HKQexAsfNode lBone = ReadBone(lReading, "direction 3 0 -4\n");
    EXPECT_DOUBLE_EQ(lBone->mDirectionV.mData[0], 0.6);
    EXPECT_DOUBLE_EQ(lBone->mDirectionV.mData[2], -0.8);
    lBone = ReadBone(lReading, "direction 0 0 0\n");
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(lBone->mDirectionV.mData[i], 0.0);
    }
    EXPECT_EQ(lReading.Messages(), "");
    lBone = ReadBone(lReading, "direction 0 0 1e-300\n");
    EXPECT_EQ(lBone->mDirectionV.mData[2], 1.0) << "however short";
}

struct KLengthCase
{
    const char* mUnit;
    double      mLength; ///< Of a bone of length 10.
};

class KAsfReadLengthTest : public testing::TestWithParam<KLengthCase>
{
};

TEST_P(KAsfReadLengthTest, IsConverted)
{
    KAsfReading lReading;
    const auto  lUnits = std::string(":units\nlength ") + GetParam().mUnit + "\n";
    EXPECT_EQ(ReadBone(lReading, "length 10\n", lUnits)->mLength, GetParam().mLength);
}

INSTANTIATE_TEST_SUITE_P(Units, KAsfReadLengthTest,
                         testing::Values(KLengthCase{"0.45", (2.54 / 0.45) * 10.0}, KLengthCase{"1", 2.54 * 10.0},
                                         KLengthCase{"2.54", 10.0}, KLengthCase{"0", 10.0}, KLengthCase{"-1", 10.0}));

TEST(AsfReadBone, UnitsDoNotApplyToEarlierBones)
{
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(kBone + "end\n:units\nlength 0.5\n"));
    EXPECT_EQ(lReading.Bone("a")->mLength, 2.54);
}

TEST(AsfReadBone, AxisAnglesStayAsWritten)
{
    KAsfReading  lReading;
    HKQexAsfNode lBone = ReadBone(lReading, "axis 370 -20 1e3 ZYX\n", ":units\nangle rad\n");
    EXPECT_EQ(lBone->mOrientationV.mData[0], 370.0);
    EXPECT_EQ(lBone->mOrientationV.mData[2], 1000.0);
    EXPECT_EQ(lBone->mOrientationOrder, 10);
}

struct KDofCase
{
    const char*      mLines;
    std::vector<int> mCodes;
};

class KAsfReadDofTest : public testing::TestWithParam<KDofCase>
{
};

TEST_P(KAsfReadDofTest, Codes)
{
    KAsfReading  lReading;
    HKQexAsfNode lBone = ReadBone(lReading, GetParam().mLines);
    EXPECT_EQ(std::vector<int>(lBone->mOrderBuf, lBone->mOrderBuf + lBone->mOrderCount), GetParam().mCodes);
}

INSTANTIATE_TEST_SUITE_P(Words, KAsfReadDofTest,
                         testing::Values(KDofCase{"", {}}, KDofCase{"dof\n", {}}, KDofCase{"dof tx ty tz rz ry rx\n", {0, 1, 2, 3, 4, 5}},
                                         KDofCase{"dof rx ry rz\n", {5, 4, 3}}, KDofCase{"dof RZ Tx\n", {3, 0}},
                                         KDofCase{"dof rx foo ry\n", {5}}, KDofCase{"dof l rx l ry l\n", {5, 4}},
                                         KDofCase{"dof rx rx\n", {5, 5}}, KDofCase{"dof rx\ndof rz\n", {3}},
                                         KDofCase{"dof rx ry rz tx ty tz tx ty\n", {5, 4, 3, 0, 1, 2}}));

TEST(AsfReadBone, LengthDofsAreRecorded)
{
    const std::string lText = kHead + ":bonedata\nbegin\ndof rx l\nname a\ndirection 1 0 0\nlength 1\ndof l ty l\nend\n" + Bone("b") +
                              "begin\nname c\n" + "direction 1 0 0\nlength 1\ndof rx ry l\nend\n" + "begin\ndof l\nname d\nend\n";
    KAsfReading        lReading;
    KQexFileAcclaimAsf lFile(false);
    for (int i = 0; i < 2; ++i)
    {
        ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
        EXPECT_FALSE(lFile.Read(lReading.mScene, false, false, false)) << "the last bone is incomplete";
        std::string lRecorded;
        for (const KQexAsfLengthDof& lDof : lFile.GetLengthDofs())
        {
            lRecorded += lDof.mBone + std::to_string(lDof.mIndex) + " ";
        }
        EXPECT_EQ(lRecorded, "a0 a2 c2 ");
    }
}

struct KLimitsCase
{
    const char* mWhat;
    const char* mLines;
    const char* mExpected; ///< "code:min,max " for each DOF, a dash for a bound that is not active.
};

class KAsfReadLimitsTest : public testing::TestWithParam<KLimitsCase>
{
};

std::string LimitsOf(HKQexAsfNode pNode)
{
    std::string lText;
    for (int i = 0; i < pNode->mOrderCount; ++i)
    {
        const int lCode = pNode->mOrderBuf[i];
        lText += std::to_string(lCode) + ":";
        for (int j = 0; j < 2; ++j)
        {
            char lNumber[32];
            std::snprintf(lNumber, sizeof lNumber, "%g", pNode->mLimitsBuf[lCode][j]);
            lText += (pNode->mLimitsActive[lCode][j] ? std::string(lNumber) : pNode->mLimitsBuf[lCode][j] == 0.0 ? "-" : "not zero");
            lText += j == 0 ? "," : " ";
        }
    }
    return lText;
}

TEST_P(KAsfReadLimitsTest, Rows)
{
    KAsfReading  lReading;
    HKQexAsfNode lBone = ReadBone(lReading, GetParam().mLines);
    EXPECT_EQ(LimitsOf(lBone), GetParam().mExpected);
    EXPECT_EQ(lReading.Messages(), "");
}

INSTANTIATE_TEST_SUITE_P(Pairs, KAsfReadLimitsTest,
                         testing::Values(KLimitsCase{"three lines", "dof rx ry rz\nlimits (-160 20)\n(-70 70)\n(-60, 70)\n",
                                                     "5:-160,20 4:-70,70 3:-60,70 "},
                                         KLimitsCase{"one line", "dof rz tx\nlimits (-1 1) (-2 2)\n", "3:-1,1 0:-2,2 "},
                                         KLimitsCase{"all on the next line", "dof rz tx\nlimits\n\n# c\n(-1 1) (-2 2)\n", "3:-1,1 0:-2,2 "},
                                         KLimitsCase{"incomplete pair", "dof rz tx\nlimits (-1 1) (-2\n(-2 2)\n", "3:-1,1 0:-2,2 "},
                                         KLimitsCase{"infinities", "dof rx\nlimits (-inf inf)\n", "5:-,- "},
                                         KLimitsCase{"capitals", "dof rx\nlimits (-INF Infinity)\n", "5:-,- "},
                                         KLimitsCase{"one infinity", "dof rx\nlimits (-10 inf)\n", "5:-10,- "},
                                         KLimitsCase{"infinities on the wrong side", "dof rx\nlimits (inf -inf)\n", "5:inf,-inf "},
                                         KLimitsCase{"NaN", "dof rx\nlimits (nan nan)\n", "5:-,- "},
                                         KLimitsCase{"too large for a double", "dof rx\nlimits (-1e999 1e999)\n", "5:-,- "},
                                         KLimitsCase{"largest", "dof rx\nlimits (-1.7976931348623157e308 1.7976931348623157e308)\n",
                                                     "5:-1.79769e+308,1.79769e+308 "},
                                         KLimitsCase{"minimum above maximum", "dof rx\nlimits (3 -3)\n", "5:3,-3 "},
                                         KLimitsCase{"the last line wins", "dof rx\nlimits (3 4)\nlimits (-inf 5)\n", "5:-,5 "},
                                         KLimitsCase{"repeated DOF", "dof rx rx\nlimits (1 2) (3 4)\n", "5:3,4 5:3,4 "}));

TEST(AsfReadBone, Defaults)
{
    KAsfReading  lReading;
    HKQexAsfNode lBone = ReadBone(lReading, "");
    EXPECT_EQ(lBone->mOrderCount, 0);
    EXPECT_EQ(lBone->mOrientationOrder, 0);
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            EXPECT_EQ(lBone->mAxisRM.mData[i][j], i == j ? 1.0 : 0.0);
        }
    }
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_FALSE(lBone->mLimitsActive[i][0] || lBone->mLimitsActive[i][1]);
    }
}

TEST(AsfReadMessages, TheFirstThousandAreKept)
{
    std::string lText = kHead + ":bonedata\n";
    for (int i = 0; i < 3000; ++i)
    {
        lText += "foo\n";
    }
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(lText + "begin\nend\n"));
    EXPECT_EQ(lReading.mWarningCount, 3000);
    EXPECT_EQ(lReading.mErrorCount, 1);
    ASSERT_EQ(lReading.mMessages.size(), 1001u);
    EXPECT_EQ(MessageLine(lReading.mMessages.back()), "E3004 Bone has no name");
}

/// A family line of a root with another name moves the children it lists to the end.
TEST(AsfReadSections, ARenamedRootMovesListedChildrenToTheEnd)
{
    for (const char* lComment : {"", " # slow path"})
    {
        KAsfReading lReading;
        lReading.mScene->mRoot = QexSdkNew<KQexAsfNode>();
        std::strcpy(lReading.mScene->mRoot->mName, "Hips");
        for (const char* lName : {"a", "b", "c", "d"})
        {
            HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
            std::strcpy(lNode->mName, lName);
            lReading.mScene->mRoot->AddChild(lNode);
        }
        const std::string  lText = std::string("x\nbegin\na c\nHips b") + lComment + "\nHips d a" + lComment + "\nend\n";
        KQexFileAcclaimAsf lFile(false);
        ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
        lFile.mQexAsfScene = lReading.mScene;
        lFile.FirstLine();
        EXPECT_TRUE(lFile.ReadHierarchy());
        EXPECT_TRUE(lFile.GetMessages().empty());
        std::string lOrder;
        for (const KQexAsfNode* lNode : PreOrder(lReading.mScene->mRoot))
        {
            lOrder += lNode->mName + std::string(" ");
        }
        EXPECT_EQ(lOrder, "Hips b d a c ") << lComment;
    }
}

/// A caller may call the section operations one at a time.
TEST(AsfReadSections, CanBeCalledAlone)
{
    KAsfReading        lReading;
    KQexFileAcclaimAsf lFile(false);
    const std::string  lText =
        "begin\nname a\ndirection 1 0 0\nlength 1\nend\nbegin\nname b\ndirection 1 0 0\nlength 1\nend\n:hierarchy\nbegin\na b\nend\n";
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    lFile.mQexAsfScene = lReading.mScene;
    lFile.FirstLine();
    EXPECT_EQ(lFile.Handle(KQexFileAcclaimAsf::smGroup), 0);
    EXPECT_FALSE(lFile.ReadBone()) << "no root";
    EXPECT_FALSE(lFile.ReadHierarchy());
    lReading.mScene->mRoot = QexSdkNew<KQexAsfNode>();
    lFile.FirstLine();
    EXPECT_EQ(lFile.Handle(KQexFileAcclaimAsf::smGroup), 0);
    EXPECT_TRUE(lFile.ReadBone());
    EXPECT_EQ(lFile.Handle(KQexFileAcclaimAsf::smGroup), 1);
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_EQ(lFile.Handle(KQexFileAcclaimAsf::smGroup), 0);
    EXPECT_TRUE(lFile.ReadBone());
    EXPECT_TRUE(lFile.NextLine());
    EXPECT_EQ(lFile.Handle(KQexFileAcclaimAsf::smMain), 6);
    EXPECT_TRUE(lFile.ReadHierarchy());
    EXPECT_EQ(lReading.Tree(), "<\na<\nb<a\n");
    lFile.mQexAsfScene = nullptr;
}

TEST(AsfReadHierarchy, OfAnExistingTree)
{
    // root - a - b - c, and d, e and another c under the root: any bone is found, only those under the root are moved.
    KAsfReading lReading;
    lReading.mScene->mRoot = QexSdkNew<KQexAsfNode>();
    HKQexAsfNode lParent = lReading.mScene->mRoot;
    for (const char* lName : {"a", "b", "c"})
    {
        HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
        std::snprintf(lNode->mName, sizeof lNode->mName, "%s", lName);
        lParent->AddChild(lNode);
        lParent = lNode;
    }
    for (const char* lName : {"d", "e", "c"})
    {
        HKQexAsfNode lNode = QexSdkNew<KQexAsfNode>();
        std::snprintf(lNode->mName, sizeof lNode->mName, "%s", lName);
        lReading.mScene->mRoot->AddChild(lNode);
    }
    const std::string  lText = "x\nbegin\nc d\nd a e\nc b\nend\n";
    KQexFileAcclaimAsf lFile(false);
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    lFile.mQexAsfScene = lReading.mScene;
    lFile.FirstLine();
    EXPECT_TRUE(lFile.ReadHierarchy());
    lFile.mQexAsfScene = nullptr;
    EXPECT_EQ(lReading.Tree(), "<\na<\nb<a\nc<b\nd<c\ne<d\nc<\n");
    ASSERT_EQ(lFile.GetMessages().size(), 1u);
    EXPECT_EQ(lFile.GetMessages()[0].mText, "Bone under itself (a)");
}

} // namespace

} // namespace qextest
