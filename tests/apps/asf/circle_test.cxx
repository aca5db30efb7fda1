// Circles through every format by the command line, over random skeletons and motions: joints stay where they were, names, parents,
// degrees of freedom and limits as they were, and a second turn changes no byte.

#include <tests/apps/asf/runasf.h>
#include <tests/support/randomfigure.h>

#include <random>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// A circle of a seed's figure.
struct KCircleCase
{
    unsigned int mSeed;
    const char*  mThrough; ///< The format between, empty: none.
};

class KCircleTest : public testing::TestWithParam<KCircleCase>
{
protected:
    static constexpr int kFrames = 8;

    void SetUp() override
    {
        std::mt19937 lRandom(GetParam().mSeed);
        // Sizes from 1 to 200, small ones more often.
        const int     lBones = 1 + static_cast<int>(lRandom() % (GetParam().mSeed % 8 == 0 ? 200U : 25U));
        KRandomFigure lFigure = MakeRandomFigure(GetParam().mSeed, lBones, kFrames);
        mIsRootTurned = lFigure.mIsRootTurned;
        WriteFile(mFolder / "a.asf", lFigure.mAsf);
        WriteFile(mFolder / "a.amc", lFigure.mAmc);
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(std::vector<std::string> pArguments) { return RunAsf(pArguments, mOptions); }

    /// One turn from \p pFrom.asf and .amc to files of the name w in the folder \p pTo.
    void Turn(const std::string& pFrom, const std::string& pTo)
    {
        fs::create_directory(mFolder / pTo);
        std::vector<std::string> lSource{pFrom + ".asf", pFrom + ".amc"};
        if (*GetParam().mThrough != '\0')
        {
            const std::string lBetween = pTo + "/w." + GetParam().mThrough;
            const KRunResult  lThere = Run({"convert", "-q", lSource[0], lSource[1], "-o", lBetween});
            EXPECT_EQ(lThere.mExit, 0) << lThere.mErr;
            lSource = {lBetween};
        }
        std::vector<std::string> lCall{"convert", "-q"};
        lCall.insert(lCall.end(), lSource.begin(), lSource.end());
        lCall.insert(lCall.end(), {"-o", pTo + "/w.asf", pTo + "/w.amc"});
        const KRunResult lBack = Run(lCall);
        EXPECT_EQ(lBack.mExit, 0) << lBack.mErr;
    }

    /// What a skeleton file cannot carry back: the root's words stand in one order, and its rest orientation is in the motion; BVH has
    /// no degrees of freedom.
    std::string Ignored() const
    {
        return std::string("dofs") + (mIsRootTurned ? ",rest" : "") + (GetParam().mThrough == std::string("bvh") ? ",limits" : "");
    }

    bool        mIsRootTurned = false;
    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_P(KCircleTest, ComesBackWhereItWas)
{
    Turn("a", "one");
    const KRunResult lResult = Run({"diff", "-q", "a.asf", "one/w.asf", "a.amc", "one/w.amc", "--ignore", Ignored()});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mOut << lResult.mErr;
    Turn("one/w", "two");
    EXPECT_EQ(ReadFile(mFolder / "one/w.asf"), ReadFile(mFolder / "two/w.asf"));
    EXPECT_EQ(ReadFile(mFolder / "one/w.amc"), ReadFile(mFolder / "two/w.amc"));
}

std::vector<KCircleCase> Cases()
{
    std::vector<KCircleCase> lCases;
    for (unsigned int lSeed = 0; lSeed < 32; ++lSeed)
    {
        for (const char* lThrough : {"", "bvh", "glb"})
        {
            lCases.push_back({lSeed, lThrough});
        }
    }
    return lCases;
}

INSTANTIATE_TEST_SUITE_P(Figures, KCircleTest, testing::ValuesIn(Cases()),
                         [](const testing::TestParamInfo<KCircleCase>& pInfo) {
                             return std::to_string(pInfo.param.mSeed) + "through" +
                                    (*pInfo.param.mThrough != '\0' ? pInfo.param.mThrough : "none");
                         });

/// From BVH to ASF and AMC to BVH.
class KBvhCircleTest : public KCircleTest
{
};

TEST_P(KBvhCircleTest, ComesBackWhereItWas)
{
    EXPECT_EQ(Run({"convert", "-q", "a.asf", "a.amc", "-o", "w.bvh"}).mExit, 0);
    std::string lFrom = "w.bvh";
    for (const std::string lTo : {"one", "two"})
    {
        fs::create_directory(mFolder / lTo);
        EXPECT_EQ(Run({"convert", "-q", lFrom, "-o", lTo + "/w.asf", lTo + "/w.amc"}).mExit, 0);
        EXPECT_EQ(Run({"convert", "-q", lTo + "/w.asf", lTo + "/w.amc", "-o", lTo + "/w.bvh"}).mExit, 0);
        const KRunResult lResult = Run({"diff", "-q", "w.bvh", lTo + "/w.bvh"});
        EXPECT_EQ(lResult.mExit, 0) << lResult.mOut << lResult.mErr;
        lFrom = lTo + "/w.bvh";
    }
    for (const char* lName : {"w.asf", "w.amc", "w.bvh"})
    {
        EXPECT_EQ(ReadFile(mFolder / "one" / lName), ReadFile(mFolder / "two" / lName)) << lName;
    }
}

INSTANTIATE_TEST_SUITE_P(Figures, KBvhCircleTest,
                         testing::Values(KCircleCase{100, ""}, KCircleCase{101, ""}, KCircleCase{102, ""}, KCircleCase{103, ""},
                                         KCircleCase{104, ""}, KCircleCase{105, ""}, KCircleCase{106, ""}, KCircleCase{107, ""},
                                         KCircleCase{108, ""}, KCircleCase{109, ""}, KCircleCase{110, ""}, KCircleCase{111, ""}),
                         [](const testing::TestParamInfo<KCircleCase>& pInfo) { return std::to_string(pInfo.param.mSeed); });

} // namespace
