// Round trips through every format with the command line, for random skeletons and motions: joint positions, names, parents, degrees
// of freedom and limits stay the same, and a second round trip changes no byte.

#include <tests/apps/asf/runasf.h>
#include <tests/support/randomfigure.h>

#include <random>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// A round trip of the random figure of a seed.
struct KRoundTripCase
{
    unsigned int mSeed;
    const char*  mFormat; ///< The intermediate format; empty: none.
};

class KRoundTripTest : public testing::TestWithParam<KRoundTripCase>
{
protected:
    static constexpr int kFrames = 8;

    void SetUp() override
    {
        std::mt19937 lRandom(GetParam().mSeed);
        // 1 to 200 bones, mostly few.
        const int     lBones = 1 + static_cast<int>(lRandom() % (GetParam().mSeed % 8 == 0 ? 200U : 25U));
        KRandomFigure lFigure = MakeRandomFigure(GetParam().mSeed, lBones, kFrames);
        mIsRootRotated = lFigure.mIsRootRotated;
        WriteFile(mFolder / "a.asf", lFigure.mAsf);
        WriteFile(mFolder / "a.amc", lFigure.mAmc);
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(std::vector<std::string> pArguments) { return RunAsf(pArguments, mOptions); }

    /// One round trip from \p pFrom.asf and .amc to w.asf and w.amc in the folder \p pTo.
    void RoundTrip(const std::string& pFrom, const std::string& pTo)
    {
        fs::create_directory(mFolder / pTo);
        std::vector<std::string> lSource{pFrom + ".asf", pFrom + ".amc"};
        if (*GetParam().mFormat != '\0')
        {
            const std::string lIntermediate = pTo + "/w." + GetParam().mFormat;
            const KRunResult  lThere = Run({"convert", "-q", lSource[0], lSource[1], "-o", lIntermediate});
            EXPECT_EQ(lThere.mExit, 0) << lThere.mErr;
            lSource = {lIntermediate};
        }
        std::vector<std::string> lCall{"convert", "-q"};
        lCall.insert(lCall.end(), lSource.begin(), lSource.end());
        lCall.insert(lCall.end(), {"-o", pTo + "/w.asf", pTo + "/w.amc"});
        const KRunResult lBack = Run(lCall);
        EXPECT_EQ(lBack.mExit, 0) << lBack.mErr;
    }

    /// What a round trip loses: the order of the root's DOF words; its rest orientation, which moves into the motion; with BVH, limits.
    std::string Ignored() const
    {
        return std::string("dofs") + (mIsRootRotated ? ",rest" : "") + (GetParam().mFormat == std::string("bvh") ? ",limits" : "");
    }

    bool        mIsRootRotated = false;
    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_P(KRoundTripTest, KeepsTheFigure)
{
    RoundTrip("a", "one");
    const KRunResult lResult = Run({"diff", "-q", "a.asf", "one/w.asf", "a.amc", "one/w.amc", "--ignore", Ignored()});
    EXPECT_EQ(lResult.mExit, 0) << lResult.mOut << lResult.mErr;
    RoundTrip("one/w", "two");
    EXPECT_EQ(ReadFile(mFolder / "one/w.asf"), ReadFile(mFolder / "two/w.asf"));
    EXPECT_EQ(ReadFile(mFolder / "one/w.amc"), ReadFile(mFolder / "two/w.amc"));
}

std::vector<KRoundTripCase> Cases()
{
    std::vector<KRoundTripCase> lCases;
    for (unsigned int lSeed = 0; lSeed < 32; ++lSeed)
    {
        for (const char* lFormat : {"", "bvh", "glb"})
        {
            lCases.push_back({lSeed, lFormat});
        }
    }
    return lCases;
}

INSTANTIATE_TEST_SUITE_P(Figures, KRoundTripTest, testing::ValuesIn(Cases()),
                         [](const testing::TestParamInfo<KRoundTripCase>& pInfo) {
                             return std::to_string(pInfo.param.mSeed) + "through" +
                                    (*pInfo.param.mFormat != '\0' ? pInfo.param.mFormat : "none");
                         });

/// From BVH to ASF and AMC and back.
class KBvhRoundTripTest : public KRoundTripTest
{
};

TEST_P(KBvhRoundTripTest, KeepsTheFigure)
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

INSTANTIATE_TEST_SUITE_P(Figures, KBvhRoundTripTest,
                         testing::Values(KRoundTripCase{100, ""}, KRoundTripCase{101, ""}, KRoundTripCase{102, ""}, KRoundTripCase{103, ""},
                                         KRoundTripCase{104, ""}, KRoundTripCase{105, ""}, KRoundTripCase{106, ""}, KRoundTripCase{107, ""},
                                         KRoundTripCase{108, ""}, KRoundTripCase{109, ""}, KRoundTripCase{110, ""},
                                         KRoundTripCase{111, ""}),
                         [](const testing::TestParamInfo<KRoundTripCase>& pInfo) { return std::to_string(pInfo.param.mSeed); });

} // namespace
