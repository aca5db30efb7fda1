#include <qexfigure/output/kqexfigurewrite.h>

#include <tests/qexfigure/figuresupport.h>
#include <tests/support/standardoutput.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

using namespace qexsdk;
using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// A hand with two takes: frames 4, 5 and 8 at 10 a second, and frame 1 alone.
class KFigureWriteTest : public testing::Test
{
protected:
    KFigureWriteTest()
    {
        KQexFigureFiles  lFiles;
        KQexFigureReport lReport;
        EXPECT_TRUE(lFiles.mFigure.OpenBuffer(HandSkeleton(), "hand.asf", lReport));
        lFiles.mMotions.resize(2);
        EXPECT_TRUE(lFiles.mMotions[0].OpenBuffer(HandMotion(), "wave.amc", lReport));
        EXPECT_TRUE(lFiles.mMotions[1].OpenBuffer(":FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 10\n1\nroot 0 0 0 0 0 0\nhand 0 0 45\n",
                                                  "still.amc", lReport));
        EXPECT_TRUE(mFigure.Load(lFiles, KQexFigureOptions(), lReport)) << TextOf(lReport);
    }

    std::string PathOf(const std::string& pName) const { return (mFolder / pName).string(); }

    KQexFigureOutput Output(const std::string& pName, std::vector<size_t> pTakes = {}) const
    {
        KQexFigureOutput lOutput;
        EXPECT_TRUE(KQexOutputFormatOf(pName, lOutput.mFormat)) << pName;
        lOutput.mPath = PathOf(pName);
        lOutput.mTakes = std::move(pTakes);
        return lOutput;
    }

    bool Write(const std::vector<KQexFigureOutput>& pOutputs) { return KQexWriteFigure(mFigure, pOutputs, mOptions, mReport); }

    /// The names of the folder's files, with blanks between.
    std::string Names() const
    {
        std::set<std::string> lNames;
        for (const fs::directory_entry& lEntry : fs::directory_iterator(mFolder.Path()))
        {
            lNames.insert(lEntry.path().filename().string());
        }
        std::string lText;
        for (const std::string& lName : lNames)
        {
            lText += (lText.empty() ? "" : " ") + lName;
        }
        return lText;
    }

    /// The takes of files as "name: frames", and where the end of the hand is in the last frame of the last.
    std::string Read(const std::vector<std::string>& pNames) const
    {
        KQexFigure               lFigure;
        KQexFigureReport         lReport;
        std::vector<std::string> lPaths;
        std::transform(pNames.begin(), pNames.end(), std::back_inserter(lPaths),
                       [this](const std::string& pName) { return PathOf(pName); });
        EXPECT_TRUE(lFigure.Load(lPaths, KQexFigureOptions(), lReport)) << TextOf(lReport);
        std::string lText;
        for (const KQexFigureTake& lTake : lFigure.GetTakes())
        {
            lText += lTake.mName + ": " + std::to_string(lTake.mFrames) + ", ";
        }
        std::vector<KQexFigurePoint> lPoints;
        const KQexFigureTake*        lLast = lFigure.GetTakes().empty() ? nullptr : &lFigure.GetTakes().back();
        EXPECT_TRUE(lFigure.Evaluate(lLast, lLast != nullptr ? lLast->mEnd : KTime(0), lPoints));
        char lPoint[100];
        std::snprintf(lPoint, sizeof lPoint, "%.3f %.3f %.3f", lPoints.back().mX + 0.0, lPoints.back().mY + 0.0, lPoints.back().mZ + 0.0);
        return lText + lPoint;
    }

    KTempDir               mFolder;
    KQexFigure             mFigure;
    KQexFigureWriteOptions mOptions;
    KQexFigureReport       mReport;
};

TEST(OutputFormat, IsThatOfTheExtension)
{
    const std::vector<std::pair<const char*, KQexOutputFormat>> lCases = {
        {"a.asf", eOUTPUT_ASF},  {"a.AMC", eOUTPUT_AMC},   {"/b.x/a.bvh", eOUTPUT_BVH}, {"a.glb", eOUTPUT_GLB},
        {".gltf", eOUTPUT_GLTF}, {"a.b.Npz", eOUTPUT_NPZ}, {"a.csv", eOUTPUT_CSV}};
    for (const auto& [lPath, lExpected] : lCases)
    {
        KQexOutputFormat lFormat = lExpected == eOUTPUT_BVH ? eOUTPUT_ASF : eOUTPUT_BVH;
        EXPECT_TRUE(KQexOutputFormatOf(lPath, lFormat)) << lPath;
        EXPECT_EQ(lFormat, lExpected) << lPath;
    }
    for (const char* lPath : {"", "-", "bvh", "a.fbx", "a.bvh/b", "a."})
    {
        KQexOutputFormat lFormat = eOUTPUT_CSV;
        EXPECT_FALSE(KQexOutputFormatOf(lPath, lFormat)) << lPath;
        EXPECT_EQ(lFormat, eOUTPUT_CSV) << lPath;
    }
}

TEST_F(KFigureWriteTest, AllFormatsInOneCall)
{
    ASSERT_TRUE(Write({Output("a.bvh", {0}), Output("b.bvh", {1}), Output("a.glb"), Output("a.gltf", {1, 0}), Output("a.npz", {0}),
                       Output("a.csv", {0}), Output("a.asf"), Output("b.amc", {1}), Output("a.amc", {0})}))
        << TextOf(mReport);
    EXPECT_EQ(TextOf(mReport), "");
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_OK);
    EXPECT_EQ(Names(), "a.amc a.asf a.bin a.bvh a.csv a.glb a.gltf a.npz b.amc b.bvh");
    // Between frames 5 and 8 of the file the motion is sampled.
    EXPECT_EQ(Read({"a.bvh"}), "a: 5, 15.000 4.000 0.000");
    EXPECT_EQ(Read({"b.bvh"}), "b: 1, 13.536 3.536 0.000");
    EXPECT_EQ(Read({"a.glb"}), "wave: 13, still: 1, 13.536 3.536 0.000") << "glTF is read at 30 frames a second";
    EXPECT_EQ(Read({"a.gltf"}), "wave: 13, still: 1, 13.536 3.536 0.000") << "takes are in the figure's order";
    EXPECT_EQ(Read({"a.asf", "a.amc", "b.amc"}), "a: 5, b: 1, 13.536 3.536 0.000");
    EXPECT_EQ(ReadFile(mFolder / "a.csv").substr(0, 67), "frame,time,bone,x,y,z\n4,0.000000,root,0.00000,0.00000,0.00000\n4,0.0");
}

TEST_F(KFigureWriteTest, AFigureWithoutMotion)
{
    KQexFigure lSkeleton;
    ASSERT_TRUE(lSkeleton.Load({(SamplesDir() / "walker.asf").string()}, KQexFigureOptions(), mReport)) << TextOf(mReport);
    ASSERT_TRUE(KQexWriteFigure(lSkeleton, {Output("a.asf"), Output("a.bvh"), Output("a.glb"), Output("a.npz")}, mOptions, mReport))
        << TextOf(mReport);
    EXPECT_EQ(Names(), "a.asf a.bvh a.glb a.npz");
    EXPECT_EQ(Read({"a.glb"}), Read({"a.asf"}));
    EXPECT_FALSE(KQexWriteFigure(lSkeleton, {Output("b.csv")}, mOptions, mReport));
    EXPECT_EQ(TextOf(mReport), "error " + PathOf("b.csv") + ":0: holds a motion, but there is none\n");
}

TEST_F(KFigureWriteTest, PartsOfTakes)
{
    const KTime lSecond(KTime::kTicksPerSecond);
    mOptions.mTakes.resize(2);
    mOptions.mTakes[0].mTake = &mFigure.GetTakes()[0];
    mOptions.mTakes[0].mRequest.mHasStart = true;
    mOptions.mTakes[0].mRequest.mStart = KTime(mFigure.GetTakes()[0].mStart.Get() + lSecond.Get() / 10);
    mOptions.mTakes[0].mRequest.mEvery = 3;
    mOptions.mTakes[1].mTake = nullptr; // At rest.
    ASSERT_TRUE(Write({Output("a.bvh", {0}), Output("rest.bvh", {1}), Output("both.glb")})) << TextOf(mReport);
    EXPECT_EQ(Read({"a.bvh"}), "a: 2, 15.000 4.000 0.000");
    EXPECT_EQ(Read({"rest.bvh"}), "rest: 1, 15.000 0.000 0.000");
    EXPECT_EQ(Read({"both.glb"}), "wave: 10, 15.000 4.000 0.000") << "a pose at rest is no animation";
}

TEST_F(KFigureWriteTest, ScaleUnitAndUpAxis)
{
    mOptions.mScale = 2;
    mOptions.mUnit = 100;
    mOptions.mZUp = true;
    ASSERT_TRUE(Write({Output("a.bvh", {0}), Output("a.asf"), Output("a.amc", {0})})) << TextOf(mReport);
    EXPECT_EQ(Read({"a.bvh"}), "a: 5, 0.300 0.000 0.080");
    EXPECT_EQ(Read({"a.asf", "a.amc"}), "a: 5, 30.000 0.000 8.000") << "an ASF file says its unit: read as centimetres";
    EXPECT_NE(ReadFile(mFolder / "a.asf").find("length 0.0254"), std::string::npos);
}

TEST_F(KFigureWriteTest, AFailureLeavesEveryFileAsItWas)
{
    for (const char* lName : {"a.asf", "a.amc", "a.bvh", "a.glb"})
    {
        WriteFile(mFolder / lName, "old");
    }
    const std::string lBad = PathOf("none/a.csv");
    for (const char* lName : {"none/a.csv", "none/a.npz", "none/a.bvh", "none/a.glb", "none/a.gltf", "none/a.asf"})
    {
        KQexFigureReport              lReport;
        std::vector<KQexFigureOutput> lOutputs = {Output("a.bvh", {0}), Output("a.glb"), Output(lName, {0})};
        if (lOutputs.back().mFormat != eOUTPUT_ASF)
        {
            lOutputs.insert(lOutputs.begin(), {Output("a.asf"), Output("a.amc", {0})});
        }
        EXPECT_FALSE(KQexWriteFigure(mFigure, lOutputs, mOptions, lReport)) << lName;
        const std::string lText = TextOf(lReport);
        EXPECT_EQ(lText.substr(0, 6 + mFolder.Path().string().size()), "error " + mFolder.Path().string()) << lName;
        EXPECT_NE(lText.find("No such file or directory"), std::string::npos) << lText;
        EXPECT_EQ(lReport.GetMessages().size(), 1u) << lText;
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_SYSTEM) << lName;
        EXPECT_EQ(Names(), "a.amc a.asf a.bvh a.glb") << lName;
        for (const char* lOld : {"a.asf", "a.amc", "a.bvh", "a.glb"})
        {
            EXPECT_EQ(ReadFile(mFolder / lOld), "old") << lName;
        }
    }
}

struct KUsageCase
{
    const char*                   mWhat;
    std::vector<KQexFigureOutput> mOutputs;
    const char*                   mText;
};

TEST_F(KFigureWriteTest, OutputsThatDoNotFit)
{
    const std::string lFolder = mFolder.Path().string();
    const auto        lStandard = [](KQexOutputFormat pFormat)
    {
        return KQexFigureOutput{"-", pFormat, {0}};
    };
    const std::vector<KUsageCase> lCases = {
        {"two takes in BVH", {Output("a.bvh")}, "a.bvh:0: holds one take, but there are 2"},
        {"a take that does not exist", {Output("a.glb", {0, 2})}, "a.glb:0: has take 2, counted from 0, of only 2"},
        {"a take twice", {Output("a.glb", {1, 1})}, "a.glb:0: has a take twice"},
        {"a file twice", {Output("a.glb"), Output("a.glb")}, "a.glb:0: would be written twice"},
        {"a take with two motions",
         {Output("a.asf"), Output("a.amc", {0}), Output("b.amc", {0})},
         "b.amc:0: is a second motion file of one take"},
        {"a motion of no skeleton",
         {Output("a.asf", {0}), Output("a.amc", {1})},
         "a.amc:0: holds a take that none of the skeletons has that are written"},
        {"an archive on standard output",
         {lStandard(eOUTPUT_NPZ)},
         "-o: NPZ is written to a file, not to standard output: its arrays grow side by side"},
        {"standard output twice", {lStandard(eOUTPUT_BVH), lStandard(eOUTPUT_CSV)}, "standard output:0: would be written twice"},
    };
    mOptions.mOutputOption = "-o";
    for (const KUsageCase& lCase : lCases)
    {
        KQexFigureReport lReport;
        EXPECT_FALSE(KQexWriteFigure(mFigure, lCase.mOutputs, mOptions, lReport)) << lCase.mWhat;
        EXPECT_EQ(lReport.GetMessages().size(), 1u) << lCase.mWhat;
        EXPECT_NE(TextOf(lReport).find(std::string(lCase.mText) + "\n"), std::string::npos) << lCase.mWhat << ": " << TextOf(lReport);
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE) << lCase.mWhat;
        EXPECT_EQ(Names(), "") << lCase.mWhat;
    }
}

TEST_F(KFigureWriteTest, OptionsThatDoNotFit)
{
    const KQexFigureWriteOptions lGood;
    const auto                   lExpect = [this](const KQexFigureWriteOptions& pOptions, const std::string& pText)
    {
        KQexFigureReport lReport;
        EXPECT_FALSE(KQexWriteFigure(mFigure, {Output("a.glb")}, pOptions, lReport)) << pText;
        EXPECT_EQ(TextOf(lReport), "error :0: " + pText + "\n");
        EXPECT_EQ(lReport.GetStatus(), eFIGURE_USAGE) << pText;
    };
    KQexFigureWriteOptions lBad = lGood;
    for (const double lScale : {0.0, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
    {
        lBad.mScale = lScale;
        lExpect(lBad, "the scale of a figure must be above 0");
    }
    lBad = lGood;
    lBad.mOrder = eSPHERIC_XYZ;
    lExpect(lBad, "the order of rotations must be one of three axes");
    lBad = lGood;
    lBad.mTakes.resize(1);
    lBad.mTakes[0].mTake = &mFigure.GetTakes()[0];
    lBad.mTakes[0].mRequest.mEvery = 0;
    lExpect(lBad, "there are no frames to write of wave");
    KQexFigure lEmpty;
    EXPECT_FALSE(KQexWriteFigure(lEmpty, {Output("a.glb")}, lGood, mReport));
    EXPECT_EQ(TextOf(mReport), "error :0: there is no figure to write\n");
    EXPECT_EQ(Names(), "");
}

TEST_F(KFigureWriteTest, MotionsOfAnExistingSkeleton)
{
    ASSERT_TRUE(Write({Output("a.amc", {0}), Output("b.amc", {1})})) << TextOf(mReport);
    EXPECT_EQ(Names(), "a.amc b.amc") << "for the skeleton that was read";
    KQexImportAcclaimResult lResult;
    const std::string       lWalker = (SamplesDir() / "walker.asf").string();
    const KQexAsfSceneOwner lOther = KQexImporterAcclaim::ReadSkeleton(KQexAcclaimSource::File(lWalker), {}, lResult);
    mOptions.mSkeleton = lOther.get();
    mOptions.mSkeletonNotes = lResult.mSkeletonNotes;
    EXPECT_FALSE(Write({Output("c.amc", {0})}));
    EXPECT_TRUE(mReport.IsMismatch());
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_INPUT);
    KQexFigure       lLeg;
    KQexFigureFiles  lFiles;
    KQexFigureReport lReport;
    ASSERT_TRUE(lFiles.mFigure.OpenBuffer(LegBvh(), "leg.bvh", lReport));
    ASSERT_TRUE(lLeg.Load(lFiles, KQexFigureOptions(), lReport));
    EXPECT_FALSE(KQexWriteFigure(lLeg, {Output("leg.amc")}, KQexFigureWriteOptions(), lReport));
    EXPECT_EQ(TextOf(lReport), "error " + PathOf("leg.amc") + ":0: needs a skeleton: write one, too, or choose an existing one\n");
    EXPECT_EQ(Names(), "a.amc b.amc");
}

TEST_F(KFigureWriteTest, StandardOutput)
{
    for (const char* lName : {"a.bvh", "a.glb", "a.csv", "a.amc"})
    {
        KQexFigureOutput lOutput = Output(lName, {0});
        lOutput.mPath = "-";
        {
            const KStandardOutput lRedirect(mFolder / "out");
            EXPECT_TRUE(Write({lOutput})) << TextOf(mReport);
        }
        ASSERT_TRUE(Write({Output(lName, {0})})) << TextOf(mReport);
        EXPECT_TRUE(ReadFile(mFolder / "out") == ReadFile(mFolder / lName)) << lName;
    }
}

TEST_F(KFigureWriteTest, AClosedPipeIsNoError)
{
    WriteFile(mFolder / "b.bvh", "old");
    for (const char* lName : {"a.bvh", "a.glb", "a.csv", "a.asf", "a.amc"})
    {
        std::vector<KQexFigureOutput> lOutputs = {Output("b.bvh", {0}), Output("b.glb"), Output("b.npz", {0}), Output(lName, {0})};
        lOutputs.back().mPath = "-";
        const KStandardOutput lRedirect;
        EXPECT_FALSE(Write(lOutputs)) << lName;
        EXPECT_EQ(TextOf(mReport), "") << lName;
        EXPECT_EQ(mReport.GetStatus(), eFIGURE_OK) << lName;
        EXPECT_EQ(Names(), "b.bvh") << lName;
        EXPECT_EQ(ReadFile(mFolder / "b.bvh"), "old") << lName;
    }
}

TEST_F(KFigureWriteTest, ProgressRisesAndCancels)
{
    double lLast = 0;
    bool   lRises = true;
    mOptions.mZUp = true; // ASF and AMC are evaluated apart from the others.
    mOptions.mProgress = [&](double pFraction)
    {
        lRises = lRises && pFraction >= lLast && pFraction <= 1;
        lLast = pFraction;
        return true;
    };
    const std::vector<KQexFigureOutput> lOutputs = {Output("a.bvh", {0}), Output("a.asf"), Output("a.amc", {0}), Output("a.glb")};
    ASSERT_TRUE(Write(lOutputs)) << TextOf(mReport);
    EXPECT_TRUE(lRises);
    EXPECT_DOUBLE_EQ(lLast, 1.0);
    for (const char* lName : {"a.bvh", "a.asf", "a.amc", "a.glb"})
    {
        WriteFile(mFolder / lName, "old");
    }
    mOptions.mProgress = [](double)
    {
        return false;
    };
    EXPECT_FALSE(Write(lOutputs));
    EXPECT_TRUE(mReport.IsCancelled());
    EXPECT_EQ(TextOf(mReport), "");
    EXPECT_EQ(mReport.GetStatus(), eFIGURE_OK);
    EXPECT_EQ(Names(), "a.amc a.asf a.bvh a.glb");
    EXPECT_EQ(ReadFile(mFolder / "a.glb"), "old");
}

} // namespace
