#include <qexfigure/kqexfigurefiles.h>

#include <tests/qexfigure/figuresupport.h>

using namespace qexsdk;
using namespace qextest;

namespace
{

class KFilesTest : public testing::Test
{
protected:
    void Write(const std::string& pName, const std::string& pText)
    {
        std::filesystem::create_directories((mFolder / pName).parent_path());
        WriteFile(mFolder / pName, pText);
    }

    std::string In(const std::string& pName) const { return (mFolder / pName).string(); }

    /// The reported text, with the folder's path left out.
    std::string Text() const
    {
        std::string       lText = TextOf(mReport);
        const std::string lFolder = mFolder.Path().string() + "/";
        for (size_t lAt = lText.find(lFolder); lAt != std::string::npos; lAt = lText.find(lFolder))
        {
            lText.erase(lAt, lFolder.size());
        }
        return lText;
    }

    /// Opens the files, with a new report. \return the skeleton's name, or "" after an error
    std::string Open(const std::vector<std::string>& pNames)
    {
        std::vector<std::string> lPaths;
        for (const std::string& lName : pNames)
        {
            lPaths.push_back(In(lName));
        }
        mReport = KQexFigureReport();
        mFiles = KQexFigureFiles();
        return mFiles.Open(lPaths, mOptions, mReport) ? std::filesystem::path(mFiles.mFigure.GetPath()).filename().string() : "";
    }

    KTempDir               mFolder;
    KQexFigureFilesOptions mOptions;
    KQexFigureReport       mReport;
    KQexFigureFiles        mFiles;
};

TEST_F(KFilesTest, ASkeletonAndItsMotionsInAnyOrder)
{
    Write("a.asf", HandSkeleton());
    Write("sub/one.amc", HandMotion());
    Write("sub/two.amc", HandMotion());
    EXPECT_EQ(Open({"sub/one.amc", "a.asf", "sub/two.amc"}), "a.asf");
    EXPECT_EQ(mFiles.mMotions.size(), 2u);
    EXPECT_EQ(Text(), "");
    std::vector<std::string> lPaths;
    EXPECT_TRUE(mFiles.CollectPaths(lPaths));
    EXPECT_EQ(lPaths, std::vector<std::string>({In("a.asf"), In("sub/one.amc"), In("sub/two.amc")}));
}

TEST_F(KFilesTest, AMotionAloneFindsItsSkeleton)
{
    Write("walk.amc", HandMotion());
    EXPECT_EQ(Open({"walk.amc"}), "");
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_USAGE);
    EXPECT_EQ(Text(), "error walk.amc:0: needs a skeleton: there is no ASF file in its folder\n");
    mOptions.mSkeletonOption = "--bones";
    EXPECT_EQ(Open({"walk.amc"}), "");
    EXPECT_EQ(Text(), "error walk.amc:0: needs a skeleton: there is no ASF file in its folder; give one with --bones FILE\n");

    Write("other.asf", HandSkeleton());
    EXPECT_EQ(Open({"walk.amc"}), "other.asf");
    EXPECT_EQ(Text(), "note walk.amc:0: using skeleton other.asf (the only one in the folder)\n");
    Write("wal.ASF", HandSkeleton());
    EXPECT_EQ(Open({"walk.amc"}), "wal.ASF");
    Write("walk.amc", "#!OML:ASF C:\\data\\OTHER.asf\n" + HandMotion());
    EXPECT_EQ(Open({"walk.amc"}), "other.asf");
    mOptions.mSkeleton = In("wal.ASF");
    EXPECT_EQ(Open({"walk.amc"}), "wal.ASF");
}

TEST_F(KFilesTest, FilesThatAreNotOneFigure)
{
    Write("a.asf", HandSkeleton());
    Write("a1.amc", HandMotion());
    Write("b/b.asf", HandSkeleton());
    Write("b/b1.amc", HandMotion());
    Write("leg.bvh", LegBvh());
    for (const auto& [lNames, lText] :
         {std::pair<std::vector<std::string>, const char*>{{"a.asf", "leg.bvh"}, "error :0: expected one figure, not a.asf and leg.bvh\n"},
          {{"leg.bvh", "a1.amc"}, "error :0: leg.bvh has its own motion: a1.amc needs an ASF file\n"},
          {{}, "error :0: an input file is required\n"}})
    {
        EXPECT_EQ(Open(lNames), "");
        EXPECT_EQ(mReport.GetStatus(), eFIGURE_USAGE);
        EXPECT_EQ(Text(), lText);
    }
    EXPECT_EQ(Open({"a1.amc", "b/b1.amc"}), "");
    EXPECT_NE(Text().find("a1.amc and b/b1.amc have different skeletons"), std::string::npos) << Text();
    EXPECT_EQ(Open({"a.asf", "none.amc"}), "");
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_SYSTEM);
    mOptions.mSkeleton = In("a1.amc");
    EXPECT_EQ(Open({"a1.amc"}), "");
    EXPECT_EQ(Text(), "error a1.amc:0: is not an ASF file\n");
}

/// The skeletons given with a motion, the motion and the one to use.
struct KPairCase
{
    std::vector<std::string> mSkeletons;
    std::string              mMotion;
    const char*              mExpected; ///< Relative path.
    const char*              mNote;
};

TEST_F(KFilesTest, PairsWithWhatIsGiven)
{
    for (const char* lName : {"s/walk.asf", "s/run.asf", "s/walk_fast.asf", "m/walk.asf", "m/own.asf"})
    {
        Write(lName, HandSkeleton());
    }
    for (const char* lName : {"m/walk_fast_1.amc", "m/jump.amc"})
    {
        Write(lName, HandMotion());
    }
    Write("m/named.amc", "#!OML:ASF C:\\data\\RUN.asf\n" + HandMotion());
    Write("alone/jump.amc", HandMotion());
    Write("alone/found.asf", HandSkeleton());
    const KPairCase lCases[] = {
        {{"s/run.asf"}, "m/jump.amc", "s/run.asf", ""},
        {{"s/run.asf", "s/walk.asf"}, "m/walk_fast_1.amc", "s/walk.asf", "its name is a prefix of the motion's"},
        {{"s/walk.asf", "s/walk_fast.asf"}, "m/walk_fast_1.amc", "s/walk_fast.asf", "its name is a prefix of the motion's"},
        {{"s/walk.asf", "m/walk.asf"}, "m/walk_fast_1.amc", "m/walk.asf", "its name is a prefix of the motion's"},
        {{"s/walk.asf", "s/run.asf"}, "m/named.amc", "s/run.asf", "named in the header"},
        {{"s/walk.asf", "s/run.asf"}, "alone/jump.amc", "alone/found.asf", "the only one in the folder"},
        {{}, "alone/jump.amc", "alone/found.asf", "the only one in the folder"},
    };
    for (const KPairCase& lCase : lCases)
    {
        std::vector<KQexFigureFile> lSkeletons(lCase.mSkeletons.size());
        for (size_t lIndex = 0; lIndex < lSkeletons.size(); ++lIndex)
        {
            ASSERT_TRUE(lSkeletons[lIndex].Open(In(lCase.mSkeletons[lIndex]), mReport));
        }
        KQexFigureFile lMotion;
        ASSERT_TRUE(lMotion.Open(In(lCase.mMotion), mReport));
        mReport = KQexFigureReport();
        ASSERT_TRUE(mFiles.Pair(lMotion, lSkeletons, mOptions, mReport)) << lCase.mMotion << Text();
        EXPECT_EQ(mFiles.mFigure.GetPath(), In(lCase.mExpected)) << lCase.mMotion;
        EXPECT_EQ(Text(), *lCase.mNote == '\0'
                              ? ""
                              : "note " + lCase.mMotion + ":0: using skeleton " + lCase.mExpected + " (" + lCase.mNote + ")\n");
    }
}

} // namespace
