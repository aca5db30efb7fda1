#include <apps/asf/picture/picture.h>

#include <tests/apps/asf/runasf.h>

using namespace qextest;

namespace
{

std::string Draw(std::vector<std::string> pArguments, const std::string& pInput)
{
    KRunOptions lOptions;
    lOptions.mInput = pInput;
    pArguments.insert(pArguments.begin(), {"draw", "-", "-o", "-"});
    const KRunResult lResult = RunAsf(pArguments, lOptions);
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(lResult.mErr, "");
    return lResult.mOut;
}

size_t CountOf(const std::string& pText, const std::string& pPart)
{
    size_t lCount = 0;
    for (size_t lPosition = pText.find(pPart); lPosition != std::string::npos; lPosition = pText.find(pPart, lPosition + 1))
    {
        ++lCount;
    }
    return lCount;
}

TEST(AsfDraw, SampleMatchesTheGoldenFile)
{
    const std::string lSvg = RunAsf({"draw", Sample("walker.asf"), "-o", "-", "--view", "all"}).mOut;
    EXPECT_TRUE(lSvg == ReadFile(std::filesystem::path(QEX_SOURCE_DIR) / "tests/apps/asf/golden/walker.svg"));
}

TEST(AsfDraw, EveryBoneOncePerView)
{
    for (const auto& [lView, lCount] : {std::pair<const char*, size_t>{"front", 1}, {"side", 1}, {"top", 1}, {"all", 3}})
    {
        const std::string lSvg = Draw({"--view", lView}, SmallSkeleton());
        EXPECT_EQ(CountOf(lSvg, "<circle "), 4 * lCount);
        EXPECT_EQ(CountOf(lSvg, "<title>thigh</title>"), lCount);
        EXPECT_EQ(CountOf(lSvg, " cm</text>"), 1u);
        EXPECT_EQ(CountOf(lSvg, "</svg>\n"), 1u);
    }
}

TEST(AsfDraw, NamesOnRequest)
{
    EXPECT_EQ(CountOf(Draw({}, SmallSkeleton()), ">thigh</text>"), 0u);
    EXPECT_EQ(CountOf(Draw({"--names"}, SmallSkeleton()), ">thigh</text>"), 1u);
}

TEST(AsfDraw, NamesAreEscaped)
{
    const std::string lSvg =
        Draw({"--names"}, Replaced(Replaced(SmallSkeleton(), "name shin", "name a<&>\xff"), "thigh shin", "thigh a<&>\xff"));
    EXPECT_EQ(CountOf(lSvg, ">a&lt;&amp;&gt;\xef\xbf\xbd</text>"), 1u);
}

TEST(AsfDraw, TheRootPositionDoesNotChangeThePicture)
{
    const std::string lSvg = Draw({}, SmallSkeleton());
    EXPECT_EQ(lSvg, Draw({}, Replaced(SmallSkeleton(), "position 0 0 0", "position 10 20 30")));
}

TEST(AsfDraw, ARootAloneIsDrawn)
{
    const std::string lSvg = Draw({"--view", "all", "--names"}, ":root\n order rx\n:hierarchy\n");
    EXPECT_EQ(CountOf(lSvg, "<circle "), 3u);
    EXPECT_EQ(lSvg.find("nan"), std::string::npos);
    EXPECT_EQ(lSvg.find("inf"), std::string::npos);
}

TEST(AsfDraw, LargeCoordinatesAreRefused)
{
    KRunOptions lOptions;
    for (const char* lLength : {"length 1e30", "length 1.7e308"})
    {
        lOptions.mInput = Replaced(SmallSkeleton(), "length 7", lLength);
        const KRunResult lResult = RunAsf({"draw", "-", "-o", "-"}, lOptions);
        EXPECT_EQ(lResult.mExit, 1);
        EXPECT_EQ(lResult.mOut, "");
        EXPECT_EQ(lResult.mErr, "<stdin>: error: cannot be drawn: coordinates are too large\n");
    }
}

TEST(AsfSides, ByNames)
{
    using asfapp::SidesOf;
    const std::vector<asfapp::ESide> lLeftRight{asfapp::eSIDE_LEFT, asfapp::eSIDE_RIGHT, asfapp::eSIDE_MIDDLE};
    EXPECT_EQ(SidesOf({"lfoot", "rfoot", "root"}), lLeftRight);
    EXPECT_EQ(SidesOf({"LeftFoot", "RightFoot", "Hips"}), lLeftRight);
    EXPECT_EQ(SidesOf({"foot_l", "foot_r", "collar"}), lLeftRight);
    EXPECT_EQ(SidesOf({"Foot.L", "Foot.R", ""}), lLeftRight);
    EXPECT_EQ(SidesOf({"lowerback", "root", "ribs"}), std::vector<asfapp::ESide>(3, asfapp::eSIDE_MIDDLE));
}

} // namespace
