#include <qexioplugins/acclaim/kqexexporteracclaim.h>

#include <qexioplugins/acclaim/kqeximporteracclaim.h>
#include <tests/qexioplugins/acclaim/exchange/exportpositions.h>
#include <tests/support/corpus.h>
#include <tests/support/randomscene.h>
#include <tests/support/testfolders.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace qexsdk;
using namespace qextest;

namespace
{

/// The texts of both files of an export.
struct KTexts
{
    std::string mAsf;
    std::string mAmc;
};

/// Exports the tree at \p pRoot to files in \p pDir and returns their texts.
KTexts ExportTexts(const KTempDir& pDir, KQexNode* pRoot, const KQexExportAcclaimOptions& pOptions = KQexExportAcclaimOptions())
{
    KQexExportAcclaimResult lResult;
    const std::string       lAsf = (pDir / "out.asf").string();
    const std::string       lAmc = (pDir / "out.amc").string();
    EXPECT_TRUE(KQexExporterAcclaim::Export(pRoot, lAsf.c_str(), lAmc.c_str(), pOptions, lResult));
    for (const KQexImportMessage& lMessage : lResult.mMessages)
    {
        EXPECT_EQ(lMessage.mMessage.mSeverity, KQexTextMessage::eWARNING) << lMessage.mMessage.mText;
    }
    return KTexts{ReadFile(lAsf), ReadFile(lAmc)};
}

/// Imports texts and returns the root's node.
KQexNode* ImportTexts(KQexScene* pScene, const KTexts& pTexts, KQexImportAcclaimResult& pResult, bool pRemoveDummies = false)
{
    KQexImportAcclaimOptions lOptions;
    lOptions.mKeepAsfScene = true;
    lOptions.mRemoveDummies = pRemoveDummies;
    EXPECT_TRUE(KQexImporterAcclaim::Import(pScene, KQexAcclaimSource::Buffer(pTexts.mAsf.data(), pTexts.mAsf.size(), "a.asf"),
                                            {KQexAcclaimSource::Buffer(pTexts.mAmc.data(), pTexts.mAmc.size(), "a.amc")}, lOptions,
                                            pResult))
        << (pResult.mMessages.empty() ? "" : pResult.mMessages.back().mMessage.mText);
    return pResult.mRootNode;
}

/// The first line that differs, from both texts; empty when they are equal.
std::string FirstDifference(const std::string& pA, const std::string& pB)
{
    if (pA == pB)
    {
        return "";
    }
    const size_t lAt = static_cast<size_t>(std::mismatch(pA.begin(), pA.end(), pB.begin(), pB.end()).first - pA.begin());
    const size_t lFrom = pA.rfind('\n', lAt) + 1;
    return pA.substr(lFrom, pA.find('\n', lAt) - lFrom) + " | " + pB.substr(lFrom, pB.find('\n', lAt) - lFrom);
}

class KExportRoundTripTest : public testing::TestWithParam<int>
{
};

TEST_P(KExportRoundTripTest, RandomTreesKeepTheirPositions)
{
    std::mt19937       lRandom(static_cast<unsigned>(4000 + GetParam()));
    KRandomTreeOptions lTree;
    lTree.mNodes = 1 + 4 * GetParam();
    lTree.mTranslations = GetParam() % 2 == 0;
    const KScenePtr          lScene = MakeScene();
    KQexNode*                lRoot = MakeRandomTree(lRandom, lScene.get(), lTree);
    const KTempDir           lDir;
    KQexExportAcclaimOptions lOptions;
    lOptions.mLengthUnit = GetParam() % 3 == 0 ? 0.45 : 1.0;
    const KTexts            lFirst = ExportTexts(lDir, lRoot, lOptions);
    const KScenePtr         lBack = MakeScene();
    KQexImportAcclaimResult lResult;
    KQexNode*               lBackRoot = ImportTexts(lBack.get(), lFirst, lResult);
    ASSERT_NE(lBackRoot, nullptr) << lFirst.mAsf;
    const int lSame = ExpectSamePositions(NodePositions(lRoot, lTree.mFrames), NodePositions(lBackRoot, lTree.mFrames), 0.02);
    EXPECT_GE(lSame, 1);
    const KTexts lSecond = ExportTexts(lDir, lBackRoot, lOptions);
    EXPECT_EQ(FirstDifference(lFirst.mAsf, lSecond.mAsf), "");
    EXPECT_EQ(FirstDifference(lFirst.mAmc, lSecond.mAmc), "");
}

INSTANTIATE_TEST_SUITE_P(Trees, KExportRoundTripTest, testing::Range(0, 20));

TEST(KExportMotion, NamesItsSkeletonFile)
{
    std::mt19937    lRandom(3);
    const KScenePtr lScene = MakeScene();
    KQexNode*       lRoot = MakeRandomTree(lRandom, lScene.get(), KRandomTreeOptions());
    const KTempDir  lDir;
    EXPECT_EQ(ExportTexts(lDir, lRoot).mAmc.compare(0, 43, "#!OML:ASF out.asf\n# samples-per-second 120\n"), 0);

    // In memory there is no file to name.
    KTexts                  lTexts;
    KQexExportAcclaimResult lResult;
    EXPECT_TRUE(KQexExporterAcclaim::ExportBuffers(lRoot, lTexts.mAsf, lTexts.mAmc, KQexExportAcclaimOptions(), lResult));
    EXPECT_EQ(lTexts.mAmc.compare(0, 42, "# samples-per-second 120\n:FULLY-SPECIFIED\n"), 0) << lTexts.mAmc.substr(0, 60);
}

TEST(KExportDofs, LimitsOfTranslationsBecomeCentimetres)
{
    const std::string lText =
        ":version 1.10\n:name s\n:units\nlength 0.5\n:root\norder TX RZ\n:bonedata\nbegin\nname arm\ndirection 1 0 0\n"
        "length 1\naxis 0 0 0 XYZ\ndof ry ty l\nlimits (-10 inf)\n(1 2)\nend\n:hierarchy\nbegin\nroot arm\nend\n";
    KQexImportAcclaimResult lResult;
    const KQexAsfSceneOwner lSkeleton =
        KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::Buffer(lText.data(), lText.size(), "s.asf"), {}, lResult);
    ASSERT_NE(lSkeleton, nullptr);

    // Without a positive unit nothing is converted.
    for (const double lUnit : {0.5, 0.0, -1.0})
    {
        lSkeleton->mLengthUnit = lUnit;
        const double       lFactor = lUnit > 0.0 ? 2.54 / lUnit : 1.0;
        const KQexBoneDofs lDofs = KQexExporterAcclaim::GetBoneDofs(lSkeleton.get());
        ASSERT_EQ(lDofs.size(), 2U);
        EXPECT_EQ(lDofs.at("root").size(), 2U);
        const std::vector<KQexBoneDof>& lArm = lDofs.at("arm");
        ASSERT_EQ(lArm.size(), 2U);
        EXPECT_EQ(std::string(lArm[0].mWord) + lArm[1].mWord, "ryty");
        EXPECT_TRUE(lArm[0].mHasMin && !lArm[0].mHasMax && lArm[1].mHasMin && lArm[1].mHasMax);
        EXPECT_EQ(lArm[0].mMin, -10.0);
        EXPECT_EQ(lArm[0].mMax, 0.0);
        EXPECT_DOUBLE_EQ(lArm[1].mMin, lFactor);
        EXPECT_DOUBLE_EQ(lArm[1].mMax, 2.0 * lFactor);
    }
}

TEST(KExportCorpus, WholeMotionsKeepTheirPositions)
{
    for (const KCorpusPair& lPair : CorpusPairs())
    {
        SCOPED_TRACE(lPair.mName);
        const KTexts            lOriginal{ReadFile(lPair.mAsf), ReadFile(lPair.mAmc)};
        const KScenePtr         lScene = MakeScene();
        KQexImportAcclaimResult lResult;
        KQexNode*               lRoot = ImportTexts(lScene.get(), lOriginal, lResult);
        ASSERT_NE(lRoot, nullptr);
        const KQexBoneDofs       lDofs = KQexExporterAcclaim::GetBoneDofs(lResult.mAsfScene.get());
        KQexExportAcclaimOptions lOptions;
        lOptions.mLengthUnit = 0.45;
        lOptions.mBoneDofs = &lDofs;
        lOptions.mWriteRate = true;
        const KTempDir          lDir;
        const KTexts            lFirst = ExportTexts(lDir, lRoot, lOptions);
        const KScenePtr         lBack = MakeScene();
        KQexImportAcclaimResult lBackResult;
        KQexNode*               lBackRoot = ImportTexts(lBack.get(), lFirst, lBackResult);
        ASSERT_NE(lBackRoot, nullptr);
        const int lNodes = lRoot->GetChildCount(true) + 1;
        EXPECT_EQ(ExpectSamePositions(NodePositions(lRoot, 300), NodePositions(lBackRoot, 300), 0.01), lNodes);
        const KTexts lSecond = ExportTexts(lDir, lBackRoot, lOptions);
        EXPECT_EQ(FirstDifference(lFirst.mAsf, lSecond.mAsf), "");
        EXPECT_EQ(FirstDifference(lFirst.mAmc, lSecond.mAmc), "");
    }
}

} // namespace
