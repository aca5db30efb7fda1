#include <tests/apps/asf/runasf.h>

#include <sstream>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// What commands say that they wrote.
class KWrittenTest : public testing::Test
{
protected:
    void SetUp() override
    {
        fs::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        fs::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        fs::copy_file(Sample("walk.amc"), mFolder / "other.amc");
        mOptions.mFolder = mFolder.Path().string();
    }

    /// The lines of standard error that start with "asf: ".
    std::string ReportOf(const std::string& pCall)
    {
        const KRunResult   lResult = RunAsf(WordsOf(pCall), mOptions);
        std::istringstream lLines(lResult.mErr);
        std::string        lTold;
        for (std::string lLine; std::getline(lLines, lLine);)
        {
            lTold += lLine.rfind("asf: ", 0) == 0 ? lLine + "\n" : "";
        }
        return lTold;
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KWrittenTest, ConvertReportsEveryOutput)
{
    EXPECT_EQ(ReportOf("convert walk.amc -o w.bvh -o w.glb -o w.asf w.amc --fps 30"),
              "asf: wrote w.bvh: 28 joints, 61 frames, 30 a second\n"
              "asf: wrote w.glb: 28 joints, 61 frames, 30 a second\n"
              "asf: wrote w.asf: 28 joints\n"
              "asf: wrote w.amc: 61 frames, 30 a second\n");
    EXPECT_EQ(ReportOf("convert walker.asf walk.amc other.amc -o both.glb -o {name}.bvh"),
              "asf: wrote both.glb: 28 joints, 2 takes, 482 frames, 120 a second\n"
              "asf: wrote walk.bvh: 28 joints, 241 frames, 120 a second\n"
              "asf: wrote other.bvh: 28 joints, 241 frames, 120 a second\n");
    EXPECT_EQ(ReportOf("convert walker.asf -o rest.glb"), "asf: wrote rest.glb: 28 joints, no motion\n");
    EXPECT_EQ(ReportOf("convert walk.amc -o - --to bvh"), "asf: wrote standard output: 28 joints, 241 frames, 120 a second\n");
    EXPECT_EQ(ReportOf("convert -q walk.amc -o w.bvh"), "");
}

TEST_F(KWrittenTest, NothingIsReportedThatWasNotWritten)
{
    EXPECT_EQ(ReportOf("convert walk.amc -o w.bvh -o none/w.glb").find("wrote"), std::string::npos);
    EXPECT_EQ(ReportOf("convert walk.amc -o w.bvh -o none/w.asf none/w.amc").find("wrote"), std::string::npos);
    EXPECT_EQ(ReportOf("positions walk.amc -o none/w.csv").find("wrote"), std::string::npos);
    EXPECT_EQ(ReportOf("draw walk.amc -o none/w.svg").find("wrote"), std::string::npos);
    EXPECT_EQ(ReportOf("edit walker.asf -o none/w.asf").find("wrote"), std::string::npos);
}

TEST_F(KWrittenTest, OtherCommandsReportTheirFile)
{
    EXPECT_EQ(ReportOf("positions walk.amc -o w.csv --frames 1-10"), "asf: wrote w.csv: 28 joints, 10 frames, 120 a second\n");
    EXPECT_EQ(ReportOf("positions walk.amc -o w.npy --fps 30"), "asf: wrote w.npy: 28 joints, 61 frames, 30 a second\n");
    EXPECT_EQ(ReportOf("draw walk.amc -o w.svg"), "asf: wrote w.svg: 5 poses\n");
    EXPECT_EQ(ReportOf("draw walker.asf -o w.svg"), "asf: wrote w.svg: 1 pose\n");
    EXPECT_EQ(ReportOf("edit walker.asf -o w.asf"), "asf: wrote w.asf\n");
    EXPECT_EQ(ReportOf("positions walk.amc -q -o w.csv"), "");
    EXPECT_EQ(ReportOf("draw walk.amc -q -o w.svg"), "");
    EXPECT_EQ(ReportOf("edit walker.asf -q -o w.asf"), "");
    EXPECT_EQ(ReportOf("positions walk.amc"), "") << "standard output is the default there";
    EXPECT_EQ(ReportOf("draw walk.amc -o -"), "");
}

} // namespace
