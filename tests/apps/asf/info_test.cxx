#include <tests/apps/asf/runasf.h>

#include <cmath>

using namespace qextest;
using nlohmann::json;

namespace
{

TEST(AsfInfo, SampleMatchesTheGoldenFile)
{
    KRunOptions lOptions;
    lOptions.mFolder = SamplesDir().string();
    const KRunResult lResult = RunAsf({"info", "walker.asf"}, lOptions);
    EXPECT_EQ(lResult.mExit, 0);
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(lResult.mOut, ReadFile(std::filesystem::path(QEX_SOURCE_DIR) / "tests/apps/asf/golden/walker.info.txt"));
}

TEST(AsfInfo, JsonHoldsTheModel)
{
    KRunOptions lOptions;
    lOptions.mInput = SmallSkeleton();
    const KRunResult lResult = RunAsf({"info", "--json", "-"}, lOptions);
    ASSERT_EQ(lResult.mExit, 0) << lResult.mErr;
    const json lJson = JsonOf(lResult);
    ASSERT_TRUE(lJson.is_object()) << lResult.mOut;
    EXPECT_EQ(lJson["schema"], 1);
    EXPECT_EQ(lJson["kind"], "skeleton");
    EXPECT_EQ(lJson["file"], "-");
    EXPECT_EQ(lJson["ok"], true);
    EXPECT_EQ(lJson["messages"], json::array());

    const json& lSkeleton = lJson["skeleton"];
    EXPECT_EQ(lSkeleton["name"], "small");
    EXPECT_EQ(lSkeleton["units"], json({{"mass", 1.0}, {"length", 0.45}, {"angle", "deg"}}));
    EXPECT_EQ(lSkeleton["boneCount"], 3);
    EXPECT_EQ(lSkeleton["dofCount"], 10);
    EXPECT_EQ(lSkeleton["depth"], 3);
    EXPECT_NEAR(lSkeleton["height"], 14 * 2.54 / 0.45, 1e-9);

    const json& lBones = lSkeleton["bones"];
    ASSERT_EQ(lBones.size(), 4u);
    EXPECT_EQ(lBones[0]["name"], "root");
    EXPECT_TRUE(lBones[0]["parent"].is_null());
    EXPECT_EQ(lBones[3]["name"], "shin");
    EXPECT_EQ(lBones[3]["parent"], 2);
    EXPECT_NEAR(lBones[3]["length"], 7 * 2.54 / 0.45, 1e-9);
    EXPECT_NEAR(lBones[3]["lengthInFile"], 7, 1e-9);
    EXPECT_NEAR(lBones[3]["start"][0], 2.54 / 0.45, 1e-9);
    EXPECT_NEAR(lBones[3]["end"][1], -14 * 2.54 / 0.45, 1e-9);
    const json lDofs =
        json::parse(R"([{"dof":"rx","min":-160.0,"max":20.0},{"dof":"ry","min":-70.0,"max":70.0},{"dof":"rz","min":null,"max":null}])");
    EXPECT_EQ(lBones[2]["dofs"], lDofs);
}

TEST(AsfInfo, JsonOfAFailedReadHasTheError)
{
    KRunOptions lOptions;
    lOptions.mInput = Replaced(SmallSkeleton(), "direction 0 -1 0", "direction 0 -1");
    const KRunResult lResult = RunAsf({"info", "--json", "-"}, lOptions);
    EXPECT_EQ(lResult.mExit, 1);
    const json lJson = JsonOf(lResult);
    EXPECT_EQ(lJson["ok"], false);
    EXPECT_EQ(lJson["errors"], 1);
    EXPECT_EQ(lJson["messages"], json::parse(R"([{"severity":"error","line":25,"text":"Can't read bone direction"}])"));
    EXPECT_EQ(lJson["skeleton"]["bones"].size(), 2u);
    EXPECT_EQ(lResult.mErr, "<stdin>:25: error: Can't read bone direction\n");
}

TEST(AsfInfo, JsonIsOneObjectPerLine)
{
    const KRunResult   lResult = RunAsf({"info", "--json", Sample("walker.asf"), Sample("walker.asf")});
    std::istringstream lLines(lResult.mOut);
    std::string        lLine;
    int                lCount = 0;
    for (; std::getline(lLines, lLine); ++lCount)
    {
        EXPECT_EQ(json::parse(lLine)["skeleton"]["name"], "walker");
    }
    EXPECT_EQ(lCount, 2);
}

TEST(AsfInfo, InvalidUtf8GivesValidJson)
{
    KRunOptions lOptions;
    lOptions.mInput = Replaced(SmallSkeleton(), ":name small", ":name sm\xe4ll");
    EXPECT_EQ(JsonOf(RunAsf({"info", "--json", "-"}, lOptions))["skeleton"]["name"], "sm\xef\xbf\xbdll");
}

TEST(AsfInfo, OutputOfADeepChainIsLinear)
{
    constexpr int kBones = 20000;
    std::string   lData;
    std::string   lFamilies = "    root c0\n";
    for (int lIndex = 0; lIndex < kBones; ++lIndex)
    {
        lData += "  begin\n    name c" + std::to_string(lIndex) + "\n    direction 0 1 0\n    length 0.01\n  end\n";
        lFamilies += lIndex > 0 ? "    c" + std::to_string(lIndex - 1) + " c" + std::to_string(lIndex) + "\n" : "";
    }
    KTempDir lFolder;
    WriteFile(lFolder / "chain.asf",
              ":version 1.10\n:root\n  order rx\n:bonedata\n" + lData + ":hierarchy\n  begin\n" + lFamilies + "  end\n");
    const KRunResult lResult = RunAsf({"info", (lFolder / "chain.asf").string()});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr.substr(0, 500);
    EXPECT_NE(lResult.mOut.find("20000 below the root, 1 degree of freedom, 20000 levels deep"), std::string::npos);
    EXPECT_LT(lResult.mOut.size(), 200u * kBones);
}

} // namespace
