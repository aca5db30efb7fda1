#include <apps/asf/picture/pictureoutput.h>

#include <apps/asf/picture/picturepng.h>
#include <tests/apps/asf/picture/slide.h>

#include <cmath>
#include <regex>
#include <sstream>

using namespace qextest;

namespace
{

constexpr const char* kWithoutPng =
    "asf: error: --output: this build writes no PNG: it was made without librsvg; write .svg: type -o a.svg\n";

class KPictureOutputTest : public testing::Test
{
protected:
    KPictureOutputTest() { mOptions.mFolder = mFolder.Path().string(); }

    KRunResult Draw(std::vector<std::string> pArguments)
    {
        pArguments.insert(pArguments.begin(), {"draw", Sample("walker.asf")});
        return RunAsf(pArguments, mOptions);
    }

    /// Whether this build writes PNG; one that does not has to refuse it.
    bool WritesPng()
    {
        if (!asfapp::IsPngBuiltIn())
        {
            const KRunResult lResult = Draw({"-o", "a.PNG"});
            EXPECT_EQ(lResult.mExit, 2);
            EXPECT_EQ(lResult.mErr, kWithoutPng);
            EXPECT_FALSE(HasFile("a.PNG"));
        }
        return asfapp::IsPngBuiltIn();
    }

    bool HasFile(const char* pName) const { return std::filesystem::exists(mFolder / pName); }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

/// The size of a PNG file and the colours of some of its pixels, one word each.
std::vector<std::string> Pixels(const std::filesystem::path& pFile, const std::vector<std::string>& pPoints)
{
    std::vector<std::string> lCall{"python3", std::string(QEX_SOURCE_DIR) + "/tests/support/pngpixels.py", pFile.string()};
    lCall.insert(lCall.end(), pPoints.begin(), pPoints.end());
    const KRunResult lResult = RunProgram(lCall);
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    std::istringstream       lWords(lResult.mOut);
    std::vector<std::string> lPixels;
    for (std::string lWord; lWords >> lWord;)
    {
        lPixels.push_back(lWord);
    }
    return lPixels;
}

/// The middle of a bone's kite in an SVG picture, as "x,y" in pixels of a picture that is pScale times as large.
std::string MiddleOf(const std::string& pSvg, const std::string& pBone, double pScale)
{
    const std::regex lKite("<title>" + pBone + R"(</title><path class="bone" d="M([\d.]+) ([\d.]+)L[\d. ]+L([\d.]+) ([\d.]+)L)");
    std::smatch      lMatch;
    EXPECT_TRUE(std::regex_search(pSvg, lMatch, lKite)) << pBone;
    const auto lBetween = [&](size_t pOne, size_t pOther)
    {
        // A third along the bone, where it is wide.
        return std::to_string(static_cast<int>(pScale * (2 * std::stod(lMatch[pOne]) + std::stod(lMatch[pOther])) / 3));
    };
    return lBetween(1, 3) + "," + lBetween(2, 4);
}

double NumberOf(const std::string& pSvg, const std::string& pAttribute)
{
    const size_t lAt = pSvg.find(pAttribute + "=\"");
    EXPECT_NE(lAt, std::string::npos);
    return std::stod(pSvg.substr(lAt + pAttribute.size() + 2));
}

TEST_F(KPictureOutputTest, APngShowsTheSamePicture)
{
    if (!WritesPng())
    {
        return;
    }
    const std::string lSvg = Draw({"-o", "-"}).mOut;
    for (const int lWidth : {0, 400})
    {
        std::vector<std::string> lArguments{"-q", "-o", "walker.png"};
        if (lWidth > 0)
        {
            lArguments.insert(lArguments.end(), {"--width", std::to_string(lWidth)});
        }
        const KRunResult lResult = Draw(lArguments);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        EXPECT_EQ(lResult.mErr, "");
        const double                   lScale = lWidth > 0 ? lWidth / NumberOf(lSvg, "width") : 1;
        const std::vector<std::string> lPoints{"0,0", MiddleOf(lSvg, "left_thigh", lScale), MiddleOf(lSvg, "right_thigh", lScale),
                                               MiddleOf(lSvg, "head", lScale)};
        const auto                     lPixels = Pixels(mFolder / "walker.png", lPoints);
        const std::vector<std::string> lExpected{std::to_string(std::lround(lScale * NumberOf(lSvg, "width"))),
                                                 std::to_string(std::lround(lScale * NumberOf(lSvg, "height"))),
                                                 "fdfdfb", // The background, at the very edge.
                                                 "e2725b",
                                                 "2f87b7",
                                                 "5b6070"};
        EXPECT_EQ(lPixels, lExpected);
    }
}

TEST(PictureOutput, ABuildWithoutPngRefusesItsName)
{
    asfapp::KConsole lConsole;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(asfapp::CheckPictureName("a.PNG", false, lConsole));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kWithoutPng);
    EXPECT_EQ(lConsole.GetExit(), asfapp::eEXIT_USAGE);
    EXPECT_TRUE(asfapp::CheckPictureName("a.svg", false, lConsole));
    EXPECT_TRUE(asfapp::CheckPictureName("a.PNG", true, lConsole));
}

TEST_F(KPictureOutputTest, ALibraryThatCannotBeLoadedIsASystemError)
{
    if (!WritesPng())
    {
        return;
    }
    WriteFile(mFolder / "librsvg-2.so.2", "not a library");
    mOptions.mEnvironment["LD_LIBRARY_PATH"] = mFolder.Path().string();
    const KRunResult lResult = Draw({"-o", "a.png"});
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_EQ(lResult.mErr.find("a.png: error: cannot be drawn: librsvg cannot be loaded: "), 0u) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("; write .svg\n"), std::string::npos) << lResult.mErr;
    EXPECT_FALSE(HasFile("a.png"));
    EXPECT_EQ(Draw({"-o", "a.svg"}).mExit, 0);
}

TEST_F(KPictureOutputTest, TheWidthOfAnSvg)
{
    const std::string lNatural = Draw({"-o", "-"}).mOut;
    const std::string lWide = Draw({"-o", "-", "--width", "1920"}).mOut;
    EXPECT_EQ(NumberOf(lWide, "width"), 1920);
    EXPECT_NEAR(NumberOf(lWide, "height"), 1920 / NumberOf(lNatural, "width") * NumberOf(lNatural, "height"), 0.01);
    EXPECT_EQ(lWide.substr(lWide.find("viewBox")), lNatural.substr(lNatural.find("viewBox")));
    EXPECT_EQ(Draw({"-o", "-", "--width", "15"}).mExit, 2);
    EXPECT_EQ(Draw({"-o", "-", "--width", "wide"}).mExit, 2);
}

TEST_F(KPictureOutputTest, APngThatIsTooLargeIsReducedUnlessTheWidthIsGiven)
{
    if (!WritesPng())
    {
        return;
    }
    // The figure rises by 200 times its height: rows of 3000 pixels, more than the 32767 pixels that a PNG can have.
    const auto lDraw = [&](std::vector<std::string> pMore)
    {
        pMore.insert(pMore.begin(), {"--frames", "1-last", "-o", "slide.png"});
        return DrawSlide(mFolder, 200, 15, pMore);
    };
    const KRunResult lGiven = lDraw({"--width", "1000"});
    EXPECT_EQ(lGiven.mExit, 2);
    std::smatch      lHint;
    const std::regex lMessage(
        R"(slide\.png: error: 1000 x \d+ pixels are too large for a PNG: use --width (\d+) or less, draw fewer frames, or write \.svg\n)");
    ASSERT_TRUE(std::regex_match(lGiven.mErr, lHint, lMessage)) << lGiven.mErr;
    EXPECT_FALSE(HasFile("slide.png"));

    const KRunResult lReduced = lDraw({});
    EXPECT_EQ(lReduced.mExit, 0) << lReduced.mErr;
    const std::string lNote = ", which is too large for a PNG, to " + lHint[1].str() + " x ";
    EXPECT_NE(lReduced.mErr.find(lNote), std::string::npos) << lReduced.mErr;
    EXPECT_EQ(ReadFile(mFolder / "slide.png").substr(1, 3), "PNG");
}

TEST(PictureOutput, TheLargestWidthOfAPng)
{
    using asfapp::MaxPngWidth;
    EXPECT_EQ(MaxPngWidth(600.25, 400), 601); // Fits.
    EXPECT_EQ(MaxPngWidth(8000, 8000), 8000); // The most pixels.
    for (const auto& [lWidth, lHeight] : {std::pair<double, double>{8001, 8001}, {1500, 90000}, {90000, 30}, {1e9, 1e9}, {1e9, 10}})
    {
        const double lMax = MaxPngWidth(lWidth, lHeight);
        const double lRows = lMax * lHeight / lWidth;
        EXPECT_TRUE(lMax >= 1 && lMax <= 32767 && lRows <= 32767 && lMax * lRows <= 64e6) << lWidth;
        // Not much smaller than it has to be.
        EXPECT_TRUE(lMax + 3 > 32767 || lRows + 3 * lHeight / lWidth > 32767 || (lMax + 3) * lRows * 1.01 > 64e6) << lWidth;
    }
    EXPECT_LT(MaxPngWidth(1, 1e7), 1); // None.
}

} // namespace
