#include <tests/qexioplugins/acclaim/asf/asftestsupport.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

/// The loop over the sections, and every section except bones and hierarchy: the scene and the messages for each line.

namespace qextest
{

using namespace qexsdk;

namespace
{

/// The sections of a valid skeleton of a root and one bone; a case replaces one of them.
const std::string kVersion = ":version 1.10\n";
const std::string kName = ":name walker\n";
const std::string kUnits = ":units\nmass 2\nlength 0.5\nangle deg\n";
const std::string kDocumentation = ":documentation\nfree text\n";
const std::string kRoot = ":root\naxis XYZ\norder TX TY TZ RX RY RZ\nposition 1 2 3\norientation 10 20 30\n";
const std::string kBoneData = ":bonedata\nbegin\nname hip\ndirection 1 0 0\nlength 1\nend\n";
const std::string kHierarchy = ":hierarchy\nbegin\nroot hip\nend\n";

struct KMessageCase
{
    const char* mWhat;
    std::string mText;
    bool        mOk;
    std::string mMessages;
};

/// Names the case when a test fails.
void PrintTo(const KMessageCase& pCase, std::ostream* pOut)
{
    *pOut << pCase.mWhat;
}

class KAsfReadMessagesTest : public testing::TestWithParam<KMessageCase>
{
};

TEST_P(KAsfReadMessagesTest, ResultAndMessages)
{
    KAsfReading lReading;
    EXPECT_EQ(lReading.ReadText(GetParam().mText), GetParam().mOk);
    EXPECT_EQ(lReading.Messages(), GetParam().mMessages);
}

const std::string kRest = kRoot + kBoneData + kHierarchy;

INSTANTIATE_TEST_SUITE_P(
    SectionLoop, KAsfReadMessagesTest,
    testing::Values(
        KMessageCase{"whole file", kVersion + kName + kUnits + kDocumentation + kRest, true, ""},
        KMessageCase{"root and hierarchy are enough", kRoot + kHierarchy, true, ""},
        KMessageCase{"any order", kRoot + kDocumentation + kBoneData + kUnits + kHierarchy, true, ""},
        KMessageCase{"repeated sections",
                     kVersion + kUnits + kVersion + kUnits + kRoot + kBoneData + kDocumentation + kHierarchy + kHierarchy, true, ""},
        KMessageCase{"nothing", "", false, ""}, KMessageCase{"blank lines and comments", "\n# a\n  \n", false, ""},
        KMessageCase{"no root", kVersion + kName + kUnits + kDocumentation + ":skin\nfile\n", false, ""},
        KMessageCase{"unknown section", ":foo 1 2\nlines\nlike these\n" + kRest, true, "W1 Ignoring unknown keyword (:foo 1 2)\n"},
        KMessageCase{"lone colon", ": foo\nline\n" + kRest, true, "W1 Ignoring unknown keyword (: foo)\n"},
        KMessageCase{"keyword without a colon", "name x\nline\n" + kRest, true, "W1 Ignoring unknown keyword (:name x)\n"},
        KMessageCase{"unknown section at the end", kRoot + kHierarchy + ":foo\nline\n", true, "W10 Ignoring unknown keyword (:foo)\n"},
        KMessageCase{"unknown section after unknown section", ":foo\n:bar # x\n" + kRest, true,
                     "W1 Ignoring unknown keyword (:foo)\nW2 Ignoring unknown keyword (:bar)\n"},
        KMessageCase{"keyword with an extra letter", ":rooty\n" + kRest, true, "W1 Ignoring unknown keyword (:rooty)\n"},
        KMessageCase{"capitals", ":ROOT\nAXIS zyx\nOrder TX\n:Hierarchy\nBEGIN\nEND\n", true, ""},
        KMessageCase{"unknown section ends a section", ":units\n:foo\n" + kRest, true, "W2 Ignoring unknown keyword (:foo)\n"}));

INSTANTIATE_TEST_SUITE_P(
    Version, KAsfReadMessagesTest,
    testing::Values(
        KMessageCase{"1.10", ":version 1.10\n" + kRest, true, ""}, KMessageCase{"1.1", ":version 1.1\n" + kRest, true, ""},
        KMessageCase{"1.109", ":version 1.109\n" + kRest, true, ""}, KMessageCase{"+1.1e0", ":version +1.1e0\n" + kRest, true, ""},
        KMessageCase{"1.2", ":version 1.2\n" + kRest, true, "W1 Bad File format version (1.200000), trying 1.10\n"},
        KMessageCase{"1.11", ":version 1.11\n" + kRest, true, "W1 Bad File format version (1.110000), trying 1.10\n"},
        KMessageCase{"1.0999", ":version 1.0999\n" + kRest, true, "W1 Bad File format version (1.099900), trying 1.10\n"},
        KMessageCase{"-1.1", ":version -1.1\n" + kRest, true, "W1 Bad File format version (-1.100000), trying 1.10\n"},
        KMessageCase{"larger than any integer", ":version 1e20\n" + kRest, true,
                     "W1 Bad File format version (100000000000000000000.000000), trying 1.10\n"},
        KMessageCase{"a word", ":version v1 x\n" + kRest, true, "W1 Can't read file format version (v1 x), trying version 1.10\n"},
        KMessageCase{"nothing", ":version\n" + kRest, true, "W1 Can't read file format version (), trying version 1.10\n"},
        KMessageCase{"not finite", ":version inf\n" + kRest, true, "W1 Can't read file format version (inf), trying version 1.10\n"},
        KMessageCase{"lines after it", ":version 1.10\nwhatever\n1 2 3\n" + kRest, true, ""},
        KMessageCase{"end of the file", kRoot + kHierarchy + kVersion, false, ""}));

INSTANTIATE_TEST_SUITE_P(
    Name, KAsfReadMessagesTest,
    testing::Values(KMessageCase{"no name", kRoot + ":name\n" + kHierarchy, false, "W6 Can't read skeleton name, using \"Untitled\"\n"},
                    KMessageCase{"a comment is no name", kRoot + ":name # x\n" + kHierarchy, false,
                                 "W6 Can't read skeleton name, using \"Untitled\"\n"},
                    KMessageCase{"lines after it are units", ":name x\nmass 3\nfoo\n" + kRest, true, "W3 Unknown unit token\n"},
                    KMessageCase{"further words are ignored", ":name x y\n" + kRest, true, ""},
                    KMessageCase{"end of the file", kRoot + kHierarchy + kName, false, ""},
                    KMessageCase{"50 characters", ":name " + std::string(50, 'n') + "\n" + kRest, true, ""},
                    KMessageCase{"51 characters", ":name " + std::string(51, 'n') + "\n" + kRest, true,
                                 "W1 Name cut to 50 characters (" + std::string(50, 'n') + ")\n"}));

INSTANTIATE_TEST_SUITE_P(
    Units, KAsfReadMessagesTest,
    testing::Values(KMessageCase{"mass", ":units\nmass heavy\n" + kRest, true, "W2 Can't read mass unit, using 1.000000\n"},
                    KMessageCase{"bad mass keeps the old value", ":units\nmass 3\nmass\n" + kRest, true,
                                 "W3 Can't read mass unit, using 3.000000\n"},
                    KMessageCase{"length", ":units\nlength\n" + kRest, true, "W2 Can't read length unit, using 1.000000\n"},
                    KMessageCase{"bad length keeps the old value", ":units\nlength 0.45\nlength nan\n" + kRest, true,
                                 "W3 Can't read length unit, using 0.450000\n"},
                    KMessageCase{"length with a decimal comma", ":units\nlength 0,45\n" + kRest, true, ""},
                    KMessageCase{"angle", ":units\nangle grad\n" + kRest, true, "W2 Unknown angle unit, using default (deg)\n"},
                    KMessageCase{"no angle", ":units\nangle\n" + kRest, true, "W2 Unknown angle unit, using default (deg)\n"},
                    KMessageCase{"unknown", ":units\ntime 1\n" + kRest, true, "W2 Unknown unit token\n"},
                    KMessageCase{"end of the file", kRoot + kHierarchy + kUnits, false, ""}));

INSTANTIATE_TEST_SUITE_P(Documentation, KAsfReadMessagesTest,
                         testing::Values(KMessageCase{"anything", ":documentation\nbegin end\nroot\nname\n" + kRest, true, ""},
                                         KMessageCase{"a colon inside a line", ":documentation\nnote :root\n" + kRest, true, ""},
                                         KMessageCase{"a leading colon", ":documentation\n:note\n" + kRest, true,
                                                      "W2 Ignoring unknown keyword (:note)\n"},
                                         KMessageCase{"end of the file", kRoot + kHierarchy + kDocumentation, false, ""}));

INSTANTIATE_TEST_SUITE_P(
    Skin, KAsfReadMessagesTest,
    testing::Values(KMessageCase{"three names", kRest + ":skin\na\nb\nc\n", true, ""},
                    KMessageCase{"no names", kRest + ":skin\n", true, ""},
                    KMessageCase{"name after the keyword", kRest + ":skin a\nb\n", true, ""},
                    KMessageCase{"more lines", ":skin\na\nb\nc\nd\ne\n" + kRest, true, ""},
                    KMessageCase{"two names on a line", kRest + ":skin a b\nc\n", true, ""},
                    KMessageCase{"no names before a section", ":skin\n" + kRest, true, ""},
                    // With a name on the keyword's line the next two lines are names, whatever they contain.
                    KMessageCase{"a name that is a section", kRest + ":skin a\n:foo\nb\n", true, ""},
                    KMessageCase{"a root that is the third name", ":skin a\nb\n" + kRest, false, "E8 Bone data before :root\n"},
                    KMessageCase{"a root that is a name", ":skin a\n:root\nb\n" + kHierarchy, false, "E4 Hierarchy before :root\n"},
                    KMessageCase{"long name", kRest + ":skin " + std::string(5000, 's') + "\n", true, ""}));

INSTANTIATE_TEST_SUITE_P(
    Root, KAsfReadMessagesTest,
    testing::Values(
        KMessageCase{"empty", ":root\n" + kHierarchy, true, ""},
        KMessageCase{"unknown axis", ":root\naxis xyx\n" + kHierarchy, false, "E2 Unknown rotation order\n"},
        KMessageCase{"no axis", ":root\naxis\n" + kHierarchy, false, "E2 Unknown rotation order\n"},
        KMessageCase{"position", ":root\nposition 1 2\n" + kHierarchy, true, "W2 Can't read position, using 0.0 0.0 0.0\n"},
        KMessageCase{"position that is not finite", ":root\nposition 1 2 inf\n" + kHierarchy, true,
                     "W2 Can't read position, using 0.0 0.0 0.0\n"},
        KMessageCase{"orientation", ":root\norientation x\n" + kHierarchy, true, "W2 Can't read orientation, using 0.0 0.0 0.0\n"},
        KMessageCase{"unknown", ":root\nfoo 1 2\n" + kHierarchy, true, "W2 Unknown :root token (foo 1 2)\n"},
        KMessageCase{"a bone keyword", ":root\n  length 3 # x\n" + kHierarchy, true, "W2 Unknown :root token (length 3)\n"},
        KMessageCase{"order ends at an unknown word", ":root\norder tx l ty\n" + kHierarchy, true, ""},
        KMessageCase{"too many words", ":root\norder tx ty tz rx ry rz tx ty\n" + kHierarchy, true,
                     "W2 Too many degrees of freedom (tx ty)\n"},
        KMessageCase{"too many words on two lines", ":root\norder tx ty tz rx ry rz tx\norder rz rz rz rz rz rz rz rz\n" + kHierarchy, true,
                     "W2 Too many degrees of freedom (tx)\nW3 Too many degrees of freedom (rz rz)\n"},
        KMessageCase{"end of the file", ":root\naxis xyz\n", false, ""}, KMessageCase{"keyword alone", ":root", false, ""},
        KMessageCase{"second root", kRoot + kBoneData + kRoot + kHierarchy, true, "W17 Second :root takes over the bones\n"},
        KMessageCase{"second root that is cut off", kRoot + kBoneData + ":root\n", false, ""},
        KMessageCase{"three roots", kRoot + kRoot + kRoot + kHierarchy, true,
                     "W11 Second :root takes over the bones\nW16 Second :root takes over the bones\n"}));

TEST(AsfReadUnits, AreStored)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(kVersion + kName + kUnits + kRest));
    EXPECT_STREQ(lReading.mScene->mName, "walker");
    EXPECT_EQ(lReading.mScene->mMassUnit, 2.0);
    EXPECT_EQ(lReading.mScene->mLengthUnit, 0.5);
    EXPECT_EQ(lReading.mScene->mAngleUnit, 1.0);
}

TEST(AsfReadUnits, DefaultsStayWithoutThem)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(kRest));
    EXPECT_STREQ(lReading.mScene->mName, "");
    EXPECT_EQ(lReading.mScene->mMassUnit, 1.0);
    EXPECT_EQ(lReading.mScene->mLengthUnit, 1.0);
    EXPECT_EQ(lReading.mScene->mAngleUnit, 1.0);
    EXPECT_EQ(lReading.Bone("hip")->mLength, 2.54);
}

TEST(AsfReadUnits, AngleWords)
{
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(":units\nangle RAD\n" + kRest));
    EXPECT_EQ(lReading.mScene->mAngleUnit, 57.29577951308232);
    EXPECT_TRUE(lReading.ReadText(":units\nangle foo\n" + kRest));
    EXPECT_EQ(lReading.mScene->mAngleUnit, 57.29577951308232) << "an unknown word changes nothing";
    EXPECT_TRUE(lReading.ReadText(":units\nangle deg\n" + kRest));
    EXPECT_EQ(lReading.mScene->mAngleUnit, 1.0);
}

TEST(AsfReadUnits, AnglesOfTheSkeletonStayAsWritten)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(":units\nangle rad\n" + kRest));
    EXPECT_EQ(lReading.mScene->mRoot->mOrientationV.mData[0], 10.0);
}

TEST(AsfReadUnits, AreReadWhenTheFileEndsThere)
{
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(kRest + ":units\nmass 5\nlength 7\n"));
    EXPECT_EQ(lReading.mScene->mMassUnit, 5.0);
    EXPECT_EQ(lReading.mScene->mLengthUnit, 7.0);
    EXPECT_NE(lReading.Bone("hip"), nullptr) << "what was read stays";
}

TEST(AsfReadName, UntitledIsStoredAlthoughReadingFails)
{
    KAsfReading lReading;
    EXPECT_FALSE(lReading.ReadText(":name\n" + kRest));
    EXPECT_STREQ(lReading.mScene->mName, "Untitled");
    EXPECT_EQ(lReading.mScene->mRoot, nullptr);
}

TEST(AsfReadName, IsCut)
{
    KAsfReading lReading;
    EXPECT_TRUE(lReading.ReadText(":name " + std::string(5000, 'n') + " rest\n" + kRest));
    EXPECT_EQ(std::string(lReading.mScene->mName), std::string(50, 'n'));
}

TEST(AsfReadRoot, Values)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(kUnits + kRest));
    HKQexAsfNode lRoot = lReading.mScene->mRoot;
    EXPECT_STREQ(lRoot->mName, "root");
    EXPECT_EQ(lRoot->mParent, nullptr);
    EXPECT_EQ(std::vector<int>(lRoot->mOrderBuf, lRoot->mOrderBuf + lRoot->mOrderCount), (std::vector<int>{0, 1, 2, 5, 4, 3}));
    EXPECT_EQ(lRoot->mOrientationOrder, 0);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(lRoot->mPositionV.mData[i], 1.0 + i) << "not scaled";
        EXPECT_EQ(lRoot->mOrientationV.mData[i], 10.0 * (i + 1));
    }
    KgeRMatrix lExpected;
    KgeRMatrix lInverse;
    KgeSet(lExpected, KgeRVector(10, 20, 30), 0);
    KgeInverse(lInverse, lExpected);
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            EXPECT_EQ(lRoot->mAxisRM.mData[i][j], lExpected.mData[i][j]);
            EXPECT_EQ(lRoot->mAxisRMInv.mData[i][j], lInverse.mData[i][j]);
        }
    }
}

struct KAxisCase
{
    const char* mWord;
    int         mCode;
};

class KAsfReadAxisTest : public testing::TestWithParam<KAxisCase>
{
};

TEST_P(KAsfReadAxisTest, OfRootAndBone)
{
    const std::string lWord = GetParam().mWord;
    KAsfReading       lReading;
    ASSERT_TRUE(lReading.ReadText(":root\naxis " + lWord +
                                  "\norientation 10 20 30\n:bonedata\nbegin\nname a\ndirection 0 1 0\nlength 1\naxis 10 20 30 " + lWord +
                                  "\nend\n" + kHierarchy.substr(0, 17) + "end\n"));
    KgeRMatrix lExpected;
    KgeSet(lExpected, KgeRVector(10, 20, 30), GetParam().mCode);
    for (HKQexAsfNode lNode : {lReading.mScene->mRoot, lReading.Bone("a")})
    {
        EXPECT_EQ(lNode->mOrientationOrder, GetParam().mCode);
        for (int i = 0; i < 3; ++i)
        {
            for (int j = 0; j < 3; ++j)
            {
                EXPECT_EQ(lNode->mAxisRM.mData[i][j], lExpected.mData[i][j]);
                EXPECT_NEAR(lNode->mAxisRMInv.mData[i][j], lExpected.mData[j][i], 1e-15);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Words, KAsfReadAxisTest,
                         testing::Values(KAxisCase{"zyx", 10}, KAxisCase{"xzy", 6}, KAxisCase{"yxz", 2}, KAxisCase{"yzx", 8},
                                         KAxisCase{"zxy", 4}, KAxisCase{"xyz", 0}, KAxisCase{"XYZ", 0}, KAxisCase{"ZyX", 10}));

struct KOrderCase
{
    const char*      mWords;
    std::vector<int> mCodes;
};

class KAsfReadOrderTest : public testing::TestWithParam<KOrderCase>
{
};

TEST_P(KAsfReadOrderTest, Codes)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(std::string(":root\norder ") + GetParam().mWords + "\n" + kHierarchy.substr(0, 17) + "end\n"));
    HKQexAsfNode lRoot = lReading.mScene->mRoot;
    EXPECT_EQ(std::vector<int>(lRoot->mOrderBuf, lRoot->mOrderBuf + lRoot->mOrderCount), GetParam().mCodes);
}

INSTANTIATE_TEST_SUITE_P(Words, KAsfReadOrderTest,
                         testing::Values(KOrderCase{"tx ty tz rz ry rx", {0, 1, 2, 3, 4, 5}}, KOrderCase{"RX RY RZ", {5, 4, 3}},
                                         KOrderCase{"", {}}, KOrderCase{"foo tx", {}}, KOrderCase{"tx l ty", {0}},
                                         KOrderCase{"tx tx", {0, 0}}, KOrderCase{"tx ty tz rz ry rx rx tx", {0, 1, 2, 3, 4, 5}},
                                         KOrderCase{"tx,ty (rz)", {0, 1, 3}}, KOrderCase{"tx\norder rz", {3}},
                                         KOrderCase{"tx\norder", {}}));

TEST(AsfReadRoot, SecondOneTakesOverTheBonesInOrder)
{
    const std::string lBones = ":bonedata\nbegin\nname a\ndirection 1 0 0\nlength 1\nend\nbegin\nname b\ndirection 1 0 0\nlength 1\nend\n"
                               "begin\nname c\ndirection 1 0 0\nlength 1\nend\n";
    KAsfReading       lReading;
    ASSERT_TRUE(lReading.ReadText(kRoot + lBones + ":hierarchy\nbegin\na c\nend\n:root\norder rz\nposition 7 8 9\n" + kDocumentation +
                                  ":hierarchy\nbegin\nroot a b\nend\n"));
    EXPECT_EQ(lReading.Tree(), "root<\na<root\nc<a\nb<root\n");
    HKQexAsfNode lRoot = lReading.mScene->mRoot;
    EXPECT_EQ(lRoot->mOrderCount, 1);
    EXPECT_EQ(lRoot->mOrderBuf[0], 3);
    EXPECT_EQ(lRoot->mPositionV.mData[0], 7.0);
    EXPECT_EQ(lRoot->mOrientationV.mData[0], 0.0) << "no value of the first root stays";
    EXPECT_EQ(lRoot->mAxisRM.mData[0][0], 1.0);
}

TEST(AsfReadRoot, SecondOneKeepsNothingOfARootMadeByHand)
{
    KAsfReading  lReading;
    HKQexAsfNode lFirst = QexSdkNew<KQexAsfNode>();
    std::strcpy(lFirst->mName, "hips");
    lFirst->mLength = 3.0;
    lFirst->mDirectionV.mData[0] = 1.0;
    lFirst->mLimitsActive[5][1] = true;
    lReading.mScene->mRoot = lFirst;

    const std::string  lText = "order rz\n" + kDocumentation;
    KQexFileAcclaimAsf lFile(false);
    ASSERT_TRUE(lFile.OpenReadBuffer(lText.data(), lText.size()));
    lFile.mQexAsfScene = lReading.mScene;
    ASSERT_TRUE(lFile.ReadRoot());
    lFile.mQexAsfScene = nullptr;
    HKQexAsfNode lRoot = lReading.mScene->mRoot;
    EXPECT_STREQ(lRoot->mName, "root");
    EXPECT_EQ(lRoot->mLength, 0.0);
    EXPECT_EQ(lRoot->mDirectionV.mData[0], 0.0);
    EXPECT_FALSE(lRoot->mLimitsActive[5][1]);
    EXPECT_EQ(lRoot->mOrderCount, 1);
}

TEST(AsfReadRoot, OfAnEarlierReadIsReleasedWithItsBones)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(kRest));
    ASSERT_TRUE(lReading.ReadText(kRoot + kHierarchy.substr(0, 17) + "end\n"));
    EXPECT_EQ(lReading.Tree(), "root<\n");
    EXPECT_EQ(lReading.Messages(), "");
}

TEST(AsfReadRoot, OfAnEarlierReadStaysWhenThereIsNoNewOne)
{
    KAsfReading lReading;
    ASSERT_TRUE(lReading.ReadText(kRest));
    EXPECT_FALSE(lReading.ReadText(kVersion));
    EXPECT_EQ(lReading.Tree(), "root<\nhip<root\n");
    EXPECT_FALSE(lReading.ReadText(kBoneData)) << "and gets no bones of another file";
    EXPECT_EQ(lReading.Messages(), "E1 Bone data before :root\n");
    EXPECT_EQ(lReading.Tree(), "root<\nhip<root\n");
}

TEST(AsfReadFlags, ArePassedOn)
{
    const std::string lText = kRoot + kBoneData + kHierarchy;
    for (int i = 0; i < 4; ++i)
    {
        KAsfReading lReading;
        const bool  lPivot = (i & 1) != 0;
        const bool  lPre = (i & 2) != 0;
        ASSERT_TRUE(lReading.ReadText(lText, false, lPivot, lPre));
        EXPECT_EQ(lReading.mScene->mRoot->mLT.mData[0], lPivot ? 0.0 : 1.0);
        EXPECT_EQ(lReading.mScene->mRoot->mLR.mData[0] != 0.0, !lPre);
    }
}

TEST(AsfReadFlags, DummiesAreRemovedOnRequestOnly)
{
    const std::string lBones =
        ":bonedata\nbegin\nname hip\ndirection 1 0 0\nlength 1\nend\nbegin\nname toe\ndirection 1 0 0\nlength 1\ndof rx\nend\n";
    const std::string lText = kRoot + lBones + ":hierarchy\nbegin\nhip toe\nend\n";
    KAsfReading       lReading;
    ASSERT_TRUE(lReading.ReadText(lText, false));
    EXPECT_EQ(lReading.Tree(), "root<\nhip<root\ntoe<hip\n");
    ASSERT_TRUE(lReading.ReadText(lText, true));
    EXPECT_EQ(lReading.Tree(), "root<\ntoe<root\n");
}

} // namespace

} // namespace qextest
