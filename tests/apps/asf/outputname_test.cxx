#include <apps/asf/outputname.h>

#include <tests/apps/asf/runasf.h>

using namespace qextest;

namespace
{

struct KNameCase
{
    const char* mCall; ///< $S is the samples' folder.
    const char* mName; ///< The output.
    const char* mErr;  ///< After "asf: error: --output: ".
};

std::ostream& operator<<(std::ostream& pOut, const KNameCase& pCase)
{
    return pOut << pCase.mCall << " -o " << pCase.mName;
}

class KOutputNameTest : public testing::TestWithParam<KNameCase>
{
};

TEST_P(KOutputNameTest, ANameOfAnotherFormatIsAUsageError)
{
    const KTempDir lFolder;
    KRunOptions    lOptions;
    lOptions.mFolder = lFolder.Path().string();
    lOptions.mEnvironment["S"] = SamplesDir().string();
    const KRunResult lResult = RunShell(std::string("\"$ASF\" ") + GetParam().mCall + " -o " + GetParam().mName, lOptions);
    EXPECT_EQ(lResult.mExit, 2);
    EXPECT_EQ(lResult.mErr.substr(0, lResult.mErr.find('\n')), std::string("asf: error: --output: ") + GetParam().mErr);
    EXPECT_TRUE(std::filesystem::is_empty(lFolder.Path()));
}

INSTANTIATE_TEST_SUITE_P(
    Names, KOutputNameTest,
    testing::Values(KNameCase{"edit $S/walker.asf", "k.bvh", "edit writes ASF, not BVH: type -o k.asf; asf convert writes BVH"},
                    KNameCase{"edit $S/walker.asf", "a.b/k.AMC", "edit writes ASF, not AMC: type -o a.b/k.asf; asf convert writes AMC"},
                    KNameCase{"edit $S/walker.asf", "k.svg", "edit writes ASF, not SVG: type -o k.asf; asf draw writes SVG"},
                    KNameCase{"edit $S/walker.asf", "k.fbx", "edit writes ASF, not FBX: type -o k.asf"},
                    KNameCase{"positions $S/walk.amc", "p.png",
                              "positions writes CSV, JSON, NPY and NPZ, not PNG: type -o p.csv; asf draw writes PNG"},
                    KNameCase{"positions $S/walk.amc", "p.trc", "positions writes CSV, JSON, NPY and NPZ, not TRC: type -o p.csv"},
                    KNameCase{"convert $S/walk.amc", "w.svg",
                              "convert writes BVH, ASF, AMC, GLB, glTF, NPZ and CSV, not SVG: type -o w.bvh; asf draw writes SVG"},
                    KNameCase{"convert $S/walk.amc --to bvh", "w.glb", "convert --to bvh writes BVH, not GLB: type -o w.bvh"},
                    KNameCase{"convert $S/walk.amc --to glb", "w.gltf", "convert --to glb writes GLB, not glTF: type -o w.glb"}));

TEST(OutputName, DrawRefusesWhatItDoesNotDraw)
{
    for (const char* lName : {"x.pdf", "x.jpg", "x.csv", "x.glb"})
    {
        const KRunResult lResult = RunAsf({"draw", Sample("walker.asf"), "-o", lName});
        EXPECT_EQ(lResult.mExit, 2) << lName;
        EXPECT_EQ(lResult.mErr.find("asf: error: --output: draw writes SVG"), 0u) << lResult.mErr;
        EXPECT_NE(lResult.mErr.find(": type -o x.svg"), std::string::npos) << lResult.mErr;
    }
}

TEST(OutputName, UnknownEndingsAreTheUsersChoice)
{
    const KTempDir lFolder;
    for (const char* lName : {"picture", "picture.svg.new", "picture.2024"})
    {
        const std::string lPath = (lFolder / lName).string();
        EXPECT_EQ(RunAsf({"draw", Sample("walker.asf"), "-o", lPath}).mExit, 0) << lName;
        EXPECT_EQ(ReadFile(lPath).substr(0, 4), "<svg");
        EXPECT_EQ(RunAsf({"edit", Sample("walker.asf"), "-o", lPath}).mExit, 0) << lName;
    }
}

TEST(OutputName, WithEnding)
{
    using asfapp::WithEnding;
    EXPECT_EQ(WithEnding("a/b.png", ".svg"), "a/b.svg");
    EXPECT_EQ(WithEnding("a.b/c", ".svg"), "a.b/c.svg");
    EXPECT_EQ(WithEnding("a.b.PNG", ".svg"), "a.b.svg");
}

} // namespace
