#include <tests/apps/asf/runasf.h>

#include <sstream>

using namespace qextest;
using nlohmann::json;

namespace
{

/// A folder with a skeleton, a motion that exceeds a limit, one with two bad frames and one without a skeleton.
class KCheckJsonTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string lFrame = "root 0 0 0 0 0 0\nthigh 0 0 0\nshin ";
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "over.amc", ":DEGREES\n1\n" + lFrame + "0\n2\n" + lFrame + "180\n");
        WriteFile(mFolder / "bad.amc",
                  ":DEGREES\n1\n" + lFrame + "0\n2\n" + lFrame + "x\nthigh also bad\n3\n" + lFrame + "180\n4\nroot 0\n");
        std::filesystem::create_directory(mFolder / "lone");
        WriteFile(mFolder / "lone/lone.amc", ":DEGREES\n1\n" + lFrame + "0\n");
        WriteFile(mFolder / "empty\xE4.bvh", "");
    }

    KRunResult Run(std::vector<std::string> pArguments)
    {
        KRunOptions lOptions;
        lOptions.mFolder = mFolder.Path().string();
        return RunAsf(pArguments, lOptions);
    }

    static std::vector<json> LinesOf(const KRunResult& pResult)
    {
        std::vector<json>  lObjects;
        std::istringstream lLines(pResult.mOut);
        for (std::string lLine; std::getline(lLines, lLine);)
        {
            lObjects.push_back(json::parse(lLine, nullptr, false));
            EXPECT_FALSE(lObjects.back().is_discarded()) << lLine;
        }
        return lObjects;
    }

    KTempDir mFolder;
};

TEST_F(KCheckJsonTest, OneObjectForEveryInputInOrder)
{
    const std::vector<std::string> lFiles = {"none.bvh", "small.asf", "empty\xE4.bvh", "lone/lone.amc", "over.amc"};
    for (const char* lCommand : {"info", "check"})
    {
        std::vector<json> lObjects;
        for (const bool lIsPaired : {false, true})
        {
            std::vector<std::string> lArguments = {lCommand, "--json", "-q"};
            lArguments.insert(lArguments.end(), lFiles.begin(), lFiles.end());
            if (!lIsPaired)
            {
                // Without a skeleton in the call, the lone motion has none.
                lArguments.erase(lArguments.begin() + 4);
            }
            const KRunResult lResult = Run(lArguments);
            EXPECT_EQ(lResult.mExit, 3);
            lObjects = LinesOf(lResult);
            ASSERT_EQ(lObjects.size(), lArguments.size() - 3);
            EXPECT_EQ(lObjects[lIsPaired ? 3 : 2]["kind"], "motion");
            EXPECT_EQ(lObjects[lIsPaired ? 3 : 2]["ok"], lIsPaired);
        }
        EXPECT_EQ(lObjects[0]["file"], "none.bvh");
        EXPECT_EQ(lObjects[0]["kind"], "unknown");
        EXPECT_EQ(lObjects[0]["error"], "cannot be read: No such file or directory");
        EXPECT_EQ(lObjects[0]["errors"], 1);
        EXPECT_EQ(lObjects[0]["messages"][0]["severity"], "error");
        EXPECT_EQ(lObjects[1]["kind"], "skeleton");
        EXPECT_EQ(lObjects[1]["error"], nullptr);
        EXPECT_EQ(lObjects[2]["file"], "empty\xEF\xBF\xBD.bvh");
        EXPECT_EQ(lObjects[2]["error"], "is empty");
        EXPECT_EQ(lObjects[4]["file"], "over.amc");
        EXPECT_EQ(lObjects[4]["warnings"], lCommand == std::string("check") ? 1 : 0);
    }
}

TEST_F(KCheckJsonTest, CheckGoesOnAfterAnErrorOfAMotion)
{
    const KRunResult lResult = Run({"check", "-q", "bad.amc"});
    EXPECT_EQ(lResult.mExit, 1);
    EXPECT_EQ(lResult.mErr,
              "bad.amc:9: error: Bone shin: number expected for rx of (rx), not (x)\n"
              "bad.amc:16: error: Bone root: 6 values expected (tx ty tz rx ry rz), only 1 found\n"
              "bad.amc: warning: Bone shin: rx is outside its limits (-10 170) in 1 frame, first in frame 3; its range is 0 to 180\n");
    EXPECT_EQ(lResult.mOut, "1 file, 2 errors, 1 warning\n");

    // One hundred errors are enough.
    std::string lText = ":DEGREES\n";
    for (int lFrame = 1; lFrame < 1000; ++lFrame)
    {
        lText += std::to_string(lFrame) + "\nshin x\n";
    }
    WriteFile(mFolder / "worse.amc", lText);
    const KRunResult lWorse = Run({"check", "-q", "worse.amc"});
    EXPECT_EQ(lWorse.mOut, "1 file, 100 errors, 1 warning\n");
    EXPECT_NE(lWorse.mErr.find("worse.amc:201: warning: Reading stops here, after 100 errors\n"), std::string::npos) << lWorse.mErr;
}

TEST_F(KCheckJsonTest, OnlySelectsWhatIsShown)
{
    const KRunResult lErrors = Run({"check", "--only", "errors", "bad.amc"});
    EXPECT_EQ(lErrors.mErr.find("warning"), std::string::npos) << lErrors.mErr;
    EXPECT_EQ(lErrors.mErr.find("note"), std::string::npos) << lErrors.mErr;
    EXPECT_NE(lErrors.mErr.find("bad.amc:9: error:"), std::string::npos) << lErrors.mErr;
    EXPECT_EQ(lErrors.mOut, "1 file, 2 errors, 1 warning\n");

    const KRunResult lWarnings = Run({"check", "--only", "warnings", "bad.amc", "none.asf"});
    EXPECT_EQ(lWarnings.mErr.find("error"), std::string::npos) << lWarnings.mErr;
    EXPECT_NE(lWarnings.mErr.find("bad.amc: warning:"), std::string::npos) << lWarnings.mErr;
    EXPECT_EQ(lWarnings.mExit, 3);

    const json lJson = JsonOf(Run({"check", "--json", "--only=errors", "bad.amc"}));
    EXPECT_EQ(lJson["messages"].size(), 2U);
    EXPECT_EQ(lJson["warnings"], 1);
    EXPECT_EQ(Run({"check", "--only", "notes", "bad.amc"}).mExit, 2);
}

TEST_F(KCheckJsonTest, NoLimitsLeavesOutPassedLimits)
{
    const KRunResult lResult = Run({"check", "-q", "--strict", "--no-limits", "over.amc"});
    EXPECT_EQ(lResult.mErr, "");
    EXPECT_EQ(lResult.mOut, "1 file, 0 errors, 0 warnings\n");
    EXPECT_EQ(lResult.mExit, 0);
}

} // namespace
