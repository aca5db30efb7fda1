#include <tests/apps/asf/runasf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

/// World positions by frame and joint, as `asf positions` writes them.
struct KPositions
{
    std::string                                     mUnit;
    std::vector<std::string>                        mNames;
    std::vector<std::vector<std::array<double, 3>>> mFrames;
    std::array<double, 3>                           At(size_t pFrame, size_t pJoint) const { return mFrames[pFrame][pJoint]; }
};

std::vector<std::string> Words(const std::string& pText)
{
    std::vector<std::string> lWords;
    std::istringstream       lStream(pText);
    for (std::string lWord; lStream >> lWord;)
    {
        lWords.push_back(lWord);
    }
    return lWords;
}

class KWorldTest : public testing::Test
{
protected:
    void SetUp() override
    {
        fs::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        fs::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        mOptions.mFolder = mFolder.Path().string();
        mSource = Positions("walk.amc");
    }

    KRunResult Run(const std::string& pCall) { return RunAsf(Words(pCall), mOptions); }

    void Convert(const std::string& pCall)
    {
        const KRunResult lResult = Run("convert -q " + pCall);
        EXPECT_EQ(lResult.mExit, 0) << pCall << "\n" << lResult.mErr;
        EXPECT_EQ(lResult.mErr, "") << pCall;
    }

    KPositions Positions(const std::string& pCall, const std::string& pFrames = "1,50,120,last")
    {
        const KRunResult lResult = Run("positions -q --ends -o out.json --frames " + pFrames + " " + pCall);
        EXPECT_EQ(lResult.mExit, 0) << pCall << "\n" << lResult.mErr;
        const json lJson = json::parse(ReadFile(mFolder / "out.json"), nullptr, false);
        KPositions lPositions;
        lPositions.mUnit = lJson["unit"];
        lPositions.mNames = lJson["joints"].get<std::vector<std::string>>();
        for (const json& lFrame : lJson["frames"])
        {
            lPositions.mFrames.push_back(lFrame["positions"].get<std::vector<std::array<double, 3>>>());
        }
        return lPositions;
    }

    /// Expects the joints of pPositions where pMap puts those of the source, within pTolerance times the extent, about 180 cm.
    template <typename TMap>
    void ExpectPlaces(const KPositions& pPositions, double pTolerance, const TMap& pMap)
    {
        ASSERT_EQ(pPositions.mNames, mSource.mNames);
        ASSERT_EQ(pPositions.mFrames.size(), mSource.mFrames.size());
        double lFarthest = 0;
        for (size_t lFrame = 0; lFrame < mSource.mFrames.size(); ++lFrame)
        {
            for (size_t lJoint = 0; lJoint < mSource.mNames.size(); ++lJoint)
            {
                const std::array<double, 3> lAt = pPositions.At(lFrame, lJoint);
                const std::array<double, 3> lWanted = pMap(lFrame, mSource.At(lFrame, lJoint));
                lFarthest = std::max(lFarthest, std::hypot(lAt[0] - lWanted[0], lAt[1] - lWanted[1], lAt[2] - lWanted[2]));
            }
        }
        EXPECT_LT(lFarthest, 180 * pTolerance);
    }

    static std::array<double, 3> ZUp(size_t, const std::array<double, 3>& pAt) { return {pAt[0], -pAt[2], pAt[1]}; }

    /// The root is joint 0.
    std::array<double, 3> InPlace(size_t pFrame, const std::array<double, 3>& pAt) const
    {
        const std::array<double, 3> lFirst = mSource.At(0, 0);
        const std::array<double, 3> lNow = mSource.At(pFrame, 0);
        return {pAt[0] - lNow[0] + lFirst[0], pAt[1], pAt[2] - lNow[2] + lFirst[2]};
    }

    static auto Times(double pFactor)
    {
        return [pFactor](size_t, const std::array<double, 3>& pAt)
        {
            return std::array<double, 3>{pAt[0] * pFactor, pAt[1] * pFactor, pAt[2] * pFactor};
        };
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
    KPositions  mSource;
};

TEST_F(KWorldTest, UpTurnsEveryOutput)
{
    Convert("walk.amc -o z.bvh -o z.asf z.amc --up z");
    Convert("walk.amc -o only.amc --up z");
    Convert("walk.amc --skeleton walker.asf -o other.amc --up z");
    ExpectPlaces(Positions("walk.amc --up z"), 1e-6, ZUp);
    ExpectPlaces(Positions("z.bvh"), 1e-5, ZUp);
    ExpectPlaces(Positions("z.asf z.amc"), 1e-4, ZUp);
    ExpectPlaces(Positions("walker.asf only.amc"), 1e-4, ZUp);
    ExpectPlaces(Positions("walker.asf other.amc"), 1e-4, ZUp);
    ExpectPlaces(Positions("walk.amc --up y"), 1e-6, Times(1));
}

TEST_F(KWorldTest, UpTurnsASkeletonWithoutMotion)
{
    Convert("walker.asf -o rest.bvh");
    Convert("walker.asf -o z.asf --up z");
    Convert("z.asf -o z.bvh");
    mSource = Positions("rest.bvh", "1");
    ExpectPlaces(Positions("z.bvh", "1"), 1e-5, ZUp);
    // Degrees of freedom and limits stay.
    EXPECT_EQ(Run("diff -q walker.asf z.asf --ignore rest").mExit, 0) << Run("diff -q walker.asf z.asf --ignore rest").mOut;
}

/// Two trees: the exporter adds a root above them, which has the turn.
TEST_F(KWorldTest, UpTurnsSeveralRoots)
{
    const std::string lTree = "ROOT R\n{\n OFFSET 0 0 0\n CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"
                              " JOINT KR\n {\n  OFFSET 10 90 5\n  CHANNELS 3 Zrotation Xrotation Yrotation\n"
                              "  End Site\n  {\n   OFFSET 0 40 7\n  }\n }\n}\n";
    WriteFile(mFolder / "two.bvh", "HIERARCHY\n" + lTree + Replaced(Replaced(lTree, "KR", "KS"), "ROOT R", "ROOT S") +
                                       "MOTION\nFrames: 2\nFrame Time: 0.1\n0 9 1 10 20 30 40 50 60 5 6 7 80 70 60 50 40 30\n"
                                       "3 9 -1 15 25 35 45 55 65 5 6 70 80 70 65 55 45 35\n");
    Convert("two.bvh -o two.asf two.amc");
    Convert("two.bvh -o z.bvh -o z.asf z.amc --up z");
    Convert("two.bvh --skeleton two.asf -o only.amc --up z");
    for (const char* lCall : {"z.bvh", "z.asf z.amc", "two.asf only.amc"})
    {
        SCOPED_TRACE(lCall);
        mSource = Positions(std::string(lCall) == "z.bvh" ? "two.bvh" : "two.asf two.amc", "1,last");
        ExpectPlaces(Positions(lCall, "1,last"), 1e-5, ZUp);
    }
}

TEST_F(KWorldTest, UnitsOfNumbers)
{
    // The sample's length unit is 0.45.
    const std::vector<std::pair<std::string, double>> lUnits{{"cm", 1}, {"m", 0.01}, {"in", 1 / 2.54}, {"file", 0.45 / 2.54}};
    for (const auto& [lUnit, lFactor] : lUnits)
    {
        SCOPED_TRACE(lUnit);
        Convert("walk.amc -o u.bvh --units " + lUnit);
        ExpectPlaces(Positions("u.bvh"), 1e-5 * lFactor, Times(lFactor));
        const KPositions lDirect = Positions("walk.amc --units " + lUnit);
        EXPECT_EQ(lDirect.mUnit, lUnit);
        ExpectPlaces(lDirect, 1e-6 * lFactor, Times(lFactor));
    }
    Convert("walk.amc -o a.bvh -o a.glb");
    ExpectPlaces(Positions("a.bvh --units file"), 1e-5, Times(1));
    ExpectPlaces(Positions("a.glb --units file"), 1e-7, Times(0.01));
    ExpectPlaces(Positions("walk.amc --units m --scale 3"), 1e-6, Times(0.03));
}

TEST_F(KWorldTest, UnitsSetTheLengthUnitOfAsf)
{
    const std::vector<std::pair<std::string, std::string>> lUnits{
        {"cm", "length 2.54"}, {"m", "length 0.0254"}, {"in", "length 1\n"}, {"file", "length 0.45"}};
    for (const auto& [lUnit, lLine] : lUnits)
    {
        SCOPED_TRACE(lUnit);
        Convert("walk.amc -o u.asf u.amc --units " + lUnit);
        EXPECT_NE(ReadFile(mFolder / "u.asf").find(lLine), std::string::npos);
        ExpectPlaces(Positions("u.asf u.amc"), 1e-4, Times(1));
    }
    Convert("walk.amc -o a.glb");
    Convert("a.glb -o g.asf g.amc --units file");
    EXPECT_NE(ReadFile(mFolder / "g.asf").find("length 0.0254"), std::string::npos);
    Convert("walk.amc -o b.asf b.amc --units cm --length-unit 2.54");
}

TEST_F(KWorldTest, InPlaceKeepsHeightAndTurns)
{
    const auto lInPlace = [this](size_t pFrame, const std::array<double, 3>& pAt)
    {
        return InPlace(pFrame, pAt);
    };
    Convert("walk.amc -o i.bvh -o i.glb -o i.asf i.amc --in-place");
    Convert("walk.amc -o only.amc --in-place");
    ExpectPlaces(Positions("walk.amc --in-place"), 1e-6, lInPlace);
    ExpectPlaces(Positions("i.bvh"), 1e-5, lInPlace);
    ExpectPlaces(Positions("i.glb"), 1e-5, lInPlace);
    ExpectPlaces(Positions("i.asf i.amc"), 1e-4, lInPlace);
    ExpectPlaces(Positions("walker.asf only.amc"), 1e-4, lInPlace);
}

TEST_F(KWorldTest, AllTogether)
{
    const auto lMap = [this](size_t pFrame, const std::array<double, 3>& pAt)
    {
        return Times(2)(0, ZUp(0, InPlace(pFrame, pAt)));
    };
    const std::string lOptions = " --in-place --up z --scale 2";
    Convert("walk.amc -o t.bvh -o t.asf t.amc" + lOptions);
    ExpectPlaces(Positions("walk.amc" + lOptions), 1e-6, lMap);
    ExpectPlaces(Positions("t.bvh"), 1e-5, lMap);
    ExpectPlaces(Positions("t.asf t.amc"), 1e-4, lMap);
}

TEST_F(KWorldTest, WhatAFormatDefinesIsAUsageError)
{
    const std::vector<std::pair<std::string, std::string>> lCalls{
        {"walk.amc -o a.glb --up z", "--up is not for glTF, where y is up by its standard"},
        {"walk.amc -o a.bvh -o a.gltf --up y", "--up is not for glTF, where y is up by its standard"},
        {"walk.amc -o a.glb --units m", "--units is not for glTF, which is in metres by its standard"},
        {"walk.amc -o a.amc --units m", "--units is not for AMC without ASF"},
        {"walk.amc -o a.asf --units m --length-unit 1", "--units m contradicts --length-unit"},
        {"walk.amc -o a.asf --units file --length-unit 2", "--units file contradicts --length-unit"},
        {"walk.amc -o a.bvh --units mm", "--units"}};
    for (const auto& [lCall, lMessage] : lCalls)
    {
        const KRunResult lResult = Run("convert -q " + lCall);
        EXPECT_EQ(lResult.mExit, 2) << lCall;
        EXPECT_NE(lResult.mErr.find(lMessage), std::string::npos) << lResult.mErr;
        EXPECT_FALSE(fs::exists(mFolder / "a.asf") || fs::exists(mFolder / "a.bvh") || fs::exists(mFolder / "a.amc"));
    }
}

} // namespace
