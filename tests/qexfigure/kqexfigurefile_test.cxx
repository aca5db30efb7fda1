#include <qexfigure/kqexfigurefile.h>

#include <tests/qexfigure/figuresupport.h>
#include <tests/support/standardinput.h>

#include <sys/stat.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

struct KFormatCase
{
    const char*      mWhat;
    const char*      mName;
    std::string      mBytes;
    KQexFigureFormat mFormat;
};

std::ostream& operator<<(std::ostream& pOut, const KFormatCase& pCase)
{
    return pOut << pCase.mWhat;
}

class KFormatTest : public testing::TestWithParam<KFormatCase>
{
};

TEST_P(KFormatTest, IsDetectedOnDiskAndInMemory)
{
    KTempDir          lFolder;
    const std::string lPath = (lFolder / GetParam().mName).string();
    WriteFile(lPath, GetParam().mBytes);
    KQexFigureFile   lFile;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFile.Open(lPath, lReport)) << TextOf(lReport);
    EXPECT_EQ(lFile.GetFormat(), GetParam().mFormat);
    EXPECT_FALSE(lFile.IsInMemory());
    EXPECT_EQ(lFile.GetBytes(), "");

    KQexFigureFile lBuffer;
    ASSERT_TRUE(lBuffer.OpenBuffer(GetParam().mBytes, GetParam().mName, lReport)) << TextOf(lReport);
    EXPECT_EQ(lBuffer.GetFormat(), GetParam().mFormat);
    EXPECT_EQ(lBuffer.GetBytes(), GetParam().mBytes);
    EXPECT_EQ(lReport.GetStatus(), eFIGURE_OK);
    EXPECT_TRUE(lReport.GetMessages().empty());
}

INSTANTIATE_TEST_SUITE_P(Formats, KFormatTest,
                         testing::Values(KFormatCase{"skeleton", "a.asf", HandSkeleton(), eFIGURE_ASF},
                                         KFormatCase{"skeleton named as a motion", "a.amc", HandSkeleton(), eFIGURE_ASF},
                                         KFormatCase{"motion", "a.amc", HandMotion(), eFIGURE_AMC},
                                         KFormatCase{"motion without a header", "a", "1\nroot 0 0 0\n", eFIGURE_AMC},
                                         KFormatCase{"motion with a comment only", "a.x", "#!OML:ASF x.asf\n", eFIGURE_AMC},
                                         KFormatCase{"BVH", "a.txt", LegBvh(), eFIGURE_BVH},
                                         KFormatCase{"BVH after a byte-order mark", "a.txt", "\xef\xbb\xbf" + LegBvh(), eFIGURE_BVH},
                                         KFormatCase{"GLB", "a", std::string("glTF\2\0\0\0", 8), eFIGURE_GLTF},
                                         KFormatCase{"glTF", "a", "{ \"asset\": {} }", eFIGURE_GLTF},
                                         KFormatCase{"other text: the extension", "a.BVH", "text\n", eFIGURE_BVH},
                                         KFormatCase{"other text", "a", "text\n", eFIGURE_ASF}));

struct KBadFileCase
{
    const char* mWhat;
    std::string mBytes;
    const char* mText;
};

TEST(KQexFigureFile, BadContentsAreErrors)
{
    for (const KBadFileCase& lCase : {KBadFileCase{"empty", "", "is empty"}, KBadFileCase{"comments only", "# a\n", "is empty"},
                                      KBadFileCase{"binary", std::string("\x89PNG\0", 5), "holds binary data, not a skeleton or a motion"}})
    {
        KQexFigureFile   lFile;
        KQexFigureReport lReport;
        EXPECT_FALSE(lFile.OpenBuffer(lCase.mBytes, "a.asf", lReport)) << lCase.mWhat;
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_INPUT);
        EXPECT_EQ(TextOf(lReport), std::string("error a.asf:0: ") + lCase.mText + "\n");
    }
}

TEST(KQexFigureFile, WhatCannotBeReadIsASystemError)
{
    KTempDir lFolder;
    for (const auto& [lName, lReason] : {std::pair("none.bvh", "No such file or directory"), std::pair(".", "Is a directory")})
    {
        KQexFigureFile    lFile;
        KQexFigureReport  lReport;
        const std::string lPath = (lFolder / lName).string();
        EXPECT_FALSE(lFile.Open(lPath, lReport));
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_SYSTEM);
        EXPECT_EQ(TextOf(lReport), "error " + lPath + ":0: cannot be read: " + lReason + "\n");
    }
}

TEST(KQexFigureFile, StandardInputIsKeptInMemory)
{
    const KStandardInput lInput(LegBvh());
    KQexFigureFile       lFile;
    KQexFigureReport     lReport;
    ASSERT_TRUE(lFile.Open("-", lReport)) << TextOf(lReport);
    EXPECT_EQ(lFile.GetPath(), "-");
    EXPECT_EQ(lFile.GetDisplayPath(), "<stdin>");
    EXPECT_EQ(lFile.GetBytes(), LegBvh());
    KQexFigureFiles lFiles;
    lFiles.mFigure = lFile;
    for (int lTime = 0; lTime < 2; ++lTime)
    {
        KQexFigure lFigure;
        EXPECT_TRUE(lFigure.Load(lFiles, KQexFigureOptions(), lReport)) << TextOf(lReport);
        EXPECT_EQ(lFigure.GetTakes().at(0).mName, "motion");
    }
}

} // namespace
