// `asf edit` with motions: they are written for the edited skeleton, together with it.

#include <tests/apps/asf/runasf.h>

#include <cmath>
#include <map>
#include <sstream>

using namespace qextest;
namespace fs = std::filesystem;

namespace
{

/// Two frames of the small skeleton.
std::string SmallMotion(const std::string& pHeader = ":FULLY-SPECIFIED\n:DEGREES\n")
{
    return pHeader + "1\nroot 1 2 3 10 20 30\nthigh 5 6 7\nshin 8\n2\nroot 1.5 2 3 40 50 60\nthigh -5 6 7\nshin 80\n";
}

class KEditMotionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        WriteFile(mFolder / "small.amc", SmallMotion());
        fs::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        fs::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        fs::copy_file(Sample("walk.bvh"), mFolder / "walk.bvh");
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    /// Edits `pName`.asf and its motion to out.asf and out.amc.
    KRunResult Edit(const std::string& pName, const std::vector<std::string>& pArguments)
    {
        std::vector<std::string> lArguments{"edit", pName + ".asf", pName + ".amc", "-o", "out.asf", "out.amc"};
        lArguments.insert(lArguments.end(), pArguments.begin(), pArguments.end());
        const KRunResult lResult = Run(lArguments);
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        return lResult;
    }

    std::string Text(const std::string& pName) { return ReadFile(mFolder / pName); }

    std::string Frames(const std::string& pName)
    {
        const std::string lText = Text(pName);
        return lText.substr(lText.find("\n1\n") + 1);
    }

    using KPositions = std::map<std::string, std::vector<double>>;

    /// Coordinates of each joint in all frames.
    KPositions Positions(const std::string& pName)
    {
        const KRunResult lResult = Run({"positions", "-q", "--ends", pName + ".asf", pName + ".amc"});
        EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
        KPositions         lPositions;
        std::istringstream lRows(lResult.mOut.substr(lResult.mOut.find('\n') + 1));
        for (std::string lFrame, lTime, lBone, lX, lY, lZ; std::getline(lRows, lFrame, ',');)
        {
            std::getline(lRows, lTime, ',');
            std::getline(lRows, lBone, ',');
            std::getline(lRows, lX, ',');
            std::getline(lRows, lY, ',');
            std::getline(lRows, lZ);
            for (const std::string* lText : {&lX, &lY, &lZ})
            {
                lPositions[lBone].push_back(std::stod(*lText));
            }
        }
        EXPECT_GT(lPositions.size(), 1u);
        return lPositions;
    }

    /// The joints of out.asf with out.amc are where those of \p pName are, \p pScale times as far from the origin.
    void ExpectSamePositions(const std::string& pName, double pScale = 1)
    {
        const KPositions lOld = Positions(pName);
        const KPositions lNew = Positions("out");
        ASSERT_EQ(lOld.size(), lNew.size());
        for (const auto& lJoint : lOld)
        {
            const std::vector<double>& lMoved = lNew.at(lJoint.first);
            ASSERT_EQ(lJoint.second.size(), lMoved.size());
            for (size_t lValue = 0; lValue < lMoved.size() && (lJoint.first != "root" || mHasSameRoot); ++lValue)
            {
                EXPECT_NEAR(lJoint.second[lValue] * pScale, lMoved[lValue], 2e-4 * pScale) << lJoint.first << ' ' << lValue;
            }
        }
    }

    bool        mHasSameRoot = true; ///< The root's own joint is compared as well.
    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KEditMotionTest, WithoutChangesEveryValueStays)
{
    fs::rename(mFolder / "walk.amc", mFolder / "walker.amc");
    EXPECT_EQ(Edit("walker", {}).mErr, "asf: wrote out.asf\nasf: wrote out.amc\n");
    EXPECT_EQ(Text("out.amc").substr(0, 94),
              "#!OML:ASF out.asf\n# samples-per-second 120\n:FULLY-SPECIFIED\n:DEGREES\n:SAMPLES-PER-SECOND 120\n1");
    EXPECT_EQ(Frames("out.amc"), Frames("walker.amc"));

    const std::string lValues = "1\nroot 0.1 1e+300 -0.30000000000000004 1e-05 123456789012345678 5e-324\nthigh 1 2 3\nshin 4\n";
    WriteFile(mFolder / "small.amc", ":DEGREES\n" + lValues);
    Edit("small", {});
    const std::string lKept = Frames("out.amc");
    for (const char* lValue : {" 0.1 ", " 1e+300 ", " -0.30000000000000004 ", " 1e-05 ", " 4.94065645841247e-324\n"})
    {
        EXPECT_NE(lKept.find(lValue), std::string::npos) << lKept;
    }
}

TEST_F(KEditMotionTest, Scale)
{
    EXPECT_EQ(Edit("small", {"--scale", "3"}).mErr, "asf: wrote out.asf\nasf: wrote out.amc\n");
    EXPECT_EQ(Frames("out.amc"), "1\nroot 3 6 9 10 20 30\nthigh 5 6 7\nshin 8\n2\nroot 4.5 6 9 40 50 60\nthigh -5 6 7\nshin 80\n");
    ExpectSamePositions("small", 3);
    Edit("small", {"--scale", "0.1"});
    EXPECT_NE(Frames("out.amc").find("root 0.1 0.2 0.3 10"), std::string::npos) << "no digits of rounding errors";
    // Translations of other bones are scaled, too.
    WriteFile(mFolder / "slide.asf", Replaced(SmallSkeleton(), "    dof rx\n    limits (-10 170)\n", "    dof rx tx tz\n"));
    WriteFile(mFolder / "slide.amc", Replaced(Replaced(SmallMotion(), "shin 8\n", "shin 8 9 10\n"), "shin 80\n", "shin 80 9 10\n"));
    Edit("slide", {"--scale", "2"});
    EXPECT_NE(Frames("out.amc").find("shin 8 18 20\n"), std::string::npos) << Frames("out.amc");
    ExpectSamePositions("slide", 2);
}

TEST_F(KEditMotionTest, Rename)
{
    fs::rename(mFolder / "walk.amc", mFolder / "walker.amc");
    EXPECT_EQ(Edit("walker", {"--rename", "left_thigh=x", "--rename", "left_shin=left_thigh", "--rename", "x=left_shin"}).mErr,
              "asf: wrote out.asf\nasf: wrote out.amc\n");
    const std::string lSwapped = Frames("out.amc");
    EXPECT_NE(lSwapped, Frames("walker.amc"));
    EXPECT_EQ(ReplacedAll(ReplacedAll(ReplacedAll(lSwapped, "left_thigh", "x"), "left_shin", "left_thigh"), "\nx ", "\nleft_shin "),
              Frames("walker.amc"));
    const KRunResult lDiff = Run({"diff", "-q", "walker.asf", "walker.amc", "out.asf", "out.amc", "--ignore", "names,parents"});
    EXPECT_NE(lDiff.mOut.find("DIFFERS"), std::string::npos) << "the names are swapped";
    // And back.
    EXPECT_EQ(Run({"edit", "out.asf", "out.amc", "-o", "back.asf", "back.amc", "--rename", "left_shin=x", "--rename",
                   "left_thigh=left_shin", "--rename", "x=left_thigh"})
                  .mErr,
              "asf: wrote back.asf\nasf: wrote back.amc\n");
    EXPECT_EQ(Frames("back.amc"), Frames("walker.amc"));
    EXPECT_EQ(Run({"diff", "-q", "walker.asf", "walker.amc", "back.asf", "back.amc"}).mExit, 0);
}

TEST_F(KEditMotionTest, HeaderNumbersAndGapsStay)
{
    WriteFile(mFolder / "small.amc", "# samples-per-second 29.97002997\n# note\n:ASF-FILE old.asf\n:ASF-PATH c:\\x\n:FRAME-RANGE 7 30\n"
                                     "7\nROOT 1 2 3 4 5 6\nhip\nthigh 1 2 3\n20\nshin 9\n15\nshin 8 # c\nelbow 3\n");
    const KRunResult lResult = Edit("small", {"--remove-dummies"});
    EXPECT_NE(lResult.mErr.find("small.amc:14: warning: The skeleton has no bone elbow"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(Text("out.amc"), "#!OML:ASF out.asf\n# samples-per-second 29.97002997\n:FULLY-SPECIFIED\n:DEGREES\n:FRAME-RANGE 7 30\n"
                               "7\nroot 1 2 3 4 5 6\nthigh 1 2 3\n20\nshin 9\n15\nshin 8\n");
    WriteFile(mFolder / "small.amc", SmallMotion());
    Edit("small", {});
    EXPECT_EQ(Text("out.amc").find("samples"), std::string::npos) << "an unknown rate stays unknown";
}

TEST_F(KEditMotionTest, RadiansAndLengthDofs)
{
    WriteFile(mFolder / "odd.asf",
              Replaced(Replaced(SmallSkeleton(), "angle deg", "angle rad"), "dof rx\n    limits (-10 170)\n", "dof l rx\n"));
    WriteFile(mFolder / "odd.amc", "1\nroot 1 2 3 .1 .2 .3\nthigh .5 .6 .7\nshin 44 .8\n");
    const KRunResult lResult = Edit("odd", {});
    EXPECT_NE(lResult.mErr.find("loses its degree of freedom l\n"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(lResult.mErr.find("do not fit"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(Text("out.amc"), "#!OML:ASF out.asf\n:FULLY-SPECIFIED\n:RADIANS\n1\nroot 1 2 3 0.1 0.2 0.3\nthigh 0.5 0.6 0.7\nshin 0.8\n");
    ExpectSamePositions("odd");
}

/// The root's rest position and orientation are not written; its values take them over.
class KEditRootTest : public KEditMotionTest, public testing::WithParamInterface<std::vector<std::pair<const char*, const char*>>>
{
};

TEST_P(KEditRootTest, RestPoseMovesIntoTheMotion)
{
    std::string lSkeleton = ReadFile(mFolder / "walker.asf");
    for (const auto& lChange : GetParam())
    {
        lSkeleton = Replaced(lSkeleton, lChange.first, lChange.second);
        mHasSameRoot = mHasSameRoot && lChange.first != std::string("position 0 0 0");
    }
    WriteFile(mFolder / "turned.asf", lSkeleton);
    fs::rename(mFolder / "walk.amc", mFolder / "turned.amc");
    EXPECT_EQ(Edit("turned", {"--scale", "2"}).mErr.find("lost"), std::string::npos);
    ExpectSamePositions("turned", 2);
    EXPECT_EQ(Run({"edit", "out.asf", "out.amc", "-o", "again.asf", "again.amc"}).mErr, "asf: wrote again.asf\nasf: wrote again.amc\n");
    EXPECT_EQ(Frames("again.amc"), Frames("out.amc"));
}

INSTANTIATE_TEST_SUITE_P(Roots, KEditRootTest,
                         testing::Values(std::vector<std::pair<const char*, const char*>>{{"orientation 0 0 0", "orientation 0 90 0"}},
                                         std::vector<std::pair<const char*, const char*>>{{"position 0 0 0", "position 1 9 -3"}},
                                         std::vector<std::pair<const char*, const char*>>{
                                             {"orientation 0 0 0", "orientation 10 80 -35"},
                                             {"position 0 0 0", "position 1 9 -3"},
                                             {"axis XYZ", "axis ZYX"},
                                             {"order TX TY TZ RX RY RZ", "order RZ TX TY RX RY TZ"}}));

TEST_F(KEditMotionTest, ARootThatCannotReplaceItsRestPoseIsReported)
{
    WriteFile(mFolder / "stiff.asf",
              Replaced(Replaced(SmallSkeleton(), "TX TY TZ RX RY RZ", "TX TZ RY"), "orientation 0 0 0", "orientation 30 0 0"));
    WriteFile(mFolder / "stiff.amc", "1\nroot 0 20 5\n2\nroot 0 20 45\n");
    const std::string lErr = Edit("stiff", {}).mErr;
    EXPECT_NE(lErr.find("stiff.amc: warning: The root's degrees of freedom cannot replace its rest pose: up to "), std::string::npos)
        << lErr;
    EXPECT_NE(lErr.find(" cm are lost\n"), std::string::npos) << lErr;
}

TEST_F(KEditMotionTest, ARootWithoutValuesAtFirst)
{
    WriteFile(mFolder / "late.asf", Replaced(SmallSkeleton(), "position 0 0 0", "position 0 5.08 0"));
    WriteFile(mFolder / "late.amc", ":DEGREES\n1\nshin 5\n2\nshin 6\nroot 1 2 3 0 0 0\n3\nroot 1 2 3 0 0 0\n");
    Edit("late", {});
    // 5.08 cm are 0.9 units.
    EXPECT_EQ(Frames("out.amc"), "1\nroot 0 0.9 0 0 0 0\nshin 5\n2\nshin 6\nroot 1 2.9 3 0 0 0\n3\nroot 1 2.9 3 0 0 0\n");
    mHasSameRoot = false;
    ExpectSamePositions("late");
}

TEST_F(KEditMotionTest, SeveralMotions)
{
    WriteFile(mFolder / "run.amc", ReplacedAll(SmallMotion(), "80", "90"));
    EXPECT_EQ(Run({"edit", "small.amc", "small.asf", "run.amc", "-o", "new.asf", "a.amc", "b.amc", "--rename", "shin=calf"}).mErr,
              "asf: wrote new.asf\nasf: wrote a.amc\nasf: wrote b.amc\n");
    EXPECT_NE(Text("a.amc").find("calf 80\n"), std::string::npos) << Text("a.amc");
    EXPECT_NE(Text("b.amc").find("calf 90\n"), std::string::npos) << Text("b.amc");
    fs::create_directory(mFolder / "new");
    EXPECT_EQ(Run({"edit", "-o", "new/s.asf", "new/{name}.amc", "small.asf", "small.amc", "run.amc", "--rename", "shin=calf", "-q"}).mErr,
              "");
    EXPECT_EQ(Text("new/small.amc"), Replaced(Text("a.amc"), "new.asf", "s.asf"));
    EXPECT_EQ(Text("new/run.amc"), Replaced(Text("b.amc"), "new.asf", "s.asf"));
    EXPECT_EQ(Run({"edit", "small.asf", "-o", "-", "-o", "c.amc", "small.amc", "--rename", "shin=calf"}).mOut, Text("new.asf"));
    EXPECT_EQ(Text("c.amc"), Replaced(Text("a.amc"), "#!OML:ASF new.asf\n", ""));
}

TEST_F(KEditMotionTest, AllFilesOrNone)
{
    for (const char* lName : {"new.asf", "a.amc", "b.amc"})
    {
        WriteFile(mFolder / lName, "old");
    }
    const auto lExpectFails = [&](int pExit, const std::string& pPart, const std::vector<std::string>& pMore)
    {
        std::vector<std::string> lCall{"edit", "small.asf", "small.amc", "bad.amc", "-o", "new.asf", "a.amc", "b.amc"};
        lCall.insert(lCall.end(), pMore.begin(), pMore.end());
        const KRunResult lResult = Run(lCall);
        EXPECT_EQ(lResult.mExit, pExit) << lResult.mErr;
        EXPECT_NE(lResult.mErr.find(pPart), std::string::npos) << lResult.mErr;
        for (const char* lName : {"new.asf", "a.amc", "b.amc"})
        {
            EXPECT_EQ(Text(lName), "old") << lName;
        }
    };
    WriteFile(mFolder / "bad.amc", ReplacedAll(SmallMotion(), "shin 80", "shin x"));
    lExpectFails(1, "bad.amc:10: error: Bone shin: number expected for rx of (rx), not (x)\n", {});
    WriteFile(mFolder / "bad.amc", ReplacedAll(SmallMotion(), "1.5", "1e305"));
    lExpectFails(1, "bad.amc:10: error: A value is too large to be scaled\n", {"--scale", "1e6"});
    fs::remove(mFolder / "bad.amc");
    lExpectFails(3, "bad.amc: error: ", {});
    WriteFile(mFolder / "bad.amc", SmallMotion());
    fs::remove(mFolder / "b.amc");
    fs::create_directory(mFolder / "b.amc");
    const KRunResult lResult = Run({"edit", "small.asf", "small.amc", "bad.amc", "-o", "new.asf", "a.amc", "b.amc"});
    EXPECT_EQ(lResult.mErr, "b.amc: error: cannot be written: Is a directory\n");
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_EQ(Text("new.asf") + Text("a.amc"), "oldold");
}

TEST_F(KEditMotionTest, WarnsWhenMotionsAreNotGivenAndDoNotFit)
{
    const std::string lOdd = Replaced(SmallSkeleton(), "angle deg", "angle rad");
    const struct
    {
        std::vector<std::string> mArguments;
        std::string              mSkeleton;
        const char*              mObstacles; ///< "" if motions fit.
    } lCases[] = {{{}, SmallSkeleton(), ""},
                  {{"--drop-limits", "--remove-dummies"}, SmallSkeleton(), ""},
                  {{"--rename", "hip=pelvis"}, SmallSkeleton(), ""}, // It has no degrees of freedom, so no motion names it.
                  {{"--rename", "shin=calf"}, SmallSkeleton(), "renamed bones"},
                  {{"--rename", "shin=calf", "--rename", "calf=shin"}, SmallSkeleton(), ""},
                  {{"--scale", "2", "--rename", "shin=calf"}, SmallSkeleton(), "renamed bones, scaled lengths"},
                  {{"--scale", "2"}, Replaced(SmallSkeleton(), "TX TY TZ RX", "RX"), ""},
                  {{}, Replaced(SmallSkeleton(), "position 0 0 0", "position 0 0 1"), "the root's rest pose"},
                  {{}, Replaced(lOdd, "dof rx\n", "dof rx l\n"), "values of l, angles in radians"}};
    for (const auto& lCase : lCases)
    {
        WriteFile(mFolder / "case.asf", lCase.mSkeleton);
        std::vector<std::string> lCall{"edit", "case.asf", "-o", "out.asf"};
        lCall.insert(lCall.end(), lCase.mArguments.begin(), lCase.mArguments.end());
        const std::string lErr = Run(lCall).mErr;
        const std::string lStart = "case.asf: warning: Its motions do not fit the new skeleton (";
        const size_t      lFound = lErr.find(lStart);
        ASSERT_EQ(lFound == std::string::npos, *lCase.mObstacles == '\0') << lErr;
        if (lFound != std::string::npos)
        {
            EXPECT_EQ(lErr.substr(lFound + lStart.size()).find(lCase.mObstacles + std::string("): edit them in the same call")), 0u)
                << lErr;
        }
    }
}

TEST_F(KEditMotionTest, FilesThatDoNotBelongTogetherAreUsageErrors)
{
    const struct
    {
        std::vector<std::string> mArguments;
        const char*              mMessage;
    } lCases[] = {{{"small.amc", "-o", "o.asf"}, "expected one skeleton and any number of its motions, not 0 skeletons and 1 motion\n"},
                  {{"small.asf", "walker.asf", "-o", "o.asf"},
                   "expected one skeleton and any number of its motions, not 2 skeletons and 0 motions\n"},
                  {{"small.asf", "small.amc", "-o", "o.asf"},
                   "--output: expected as many files as are read, 1 skeleton and 1 motion (.amc), not 1 skeleton and 0 motions\n"},
                  {{"small.asf", "-o", "o.asf", "o.amc"},
                   "--output: expected as many files as are read, 1 skeleton and 0 motions (.amc), not 1 skeleton and 1 motion\n"},
                  {{"small.asf", "-o", "o.asf", "{name}.amc"},
                   "--output: expected as many files as are read, 1 skeleton and 0 motions (.amc), not 1 skeleton and 1 motion\n"},
                  {{"small.asf", "small.amc", "-o", "o.amc"},
                   "--output: expected as many files as are read, 1 skeleton and 1 motion (.amc), not 0 skeletons and 1 motion\n"},
                  {{"small.asf", "small.amc", "walk.amc", "-o", "o.asf", "o.amc", "o.amc"}, "--output: o.amc would be written twice\n"},
                  {{"small.asf", "small.amc", "-o", "o.bvh", "-o", "o.amc"},
                   "--output: edit writes ASF, not BVH: type -o o.asf; asf convert writes BVH\n"},
                  {{"small.asf", "walk.bvh", "-o", "o.asf", "o.amc"}, "walk.bvh: error: is not an ASF or AMC file\n"},
                  {{"small.asf", "small.amc", "-o", "o.asf", "small.amc"}, "small.amc: error: is also an input"},
                  {{"small.asf", "small.amc", "-o", "o.asf", "{name}.amc"}, "small.amc: error: is also an input"}};
    for (const auto& lCase : lCases)
    {
        std::vector<std::string> lCall{"edit"};
        lCall.insert(lCall.end(), lCase.mArguments.begin(), lCase.mArguments.end());
        const KRunResult lResult = Run(lCall);
        EXPECT_EQ(lResult.mExit, 2) << lResult.mErr;
        EXPECT_NE(lResult.mErr.find(lCase.mMessage), std::string::npos) << lResult.mErr;
        EXPECT_FALSE(fs::exists(mFolder / "o.asf") || fs::exists(mFolder / "o.bvh") || fs::exists(mFolder / "o.amc"));
    }
    EXPECT_EQ(Text("small.amc"), SmallMotion());
}

/// Its lines would be dropped one by one, and the new motion be empty.
TEST_F(KEditMotionTest, AMotionOfAnotherSkeletonIsRefused)
{
    const std::vector<std::string> lCall{"edit", "small.asf", "walk.amc", "-o", "o.asf", "o.amc"};
    const KRunResult               lRefused = Run(lCall);
    EXPECT_EQ(lRefused.mExit, 1);
    EXPECT_EQ(lRefused.mErr.find("walk.amc: error: "), 0u) << lRefused.mErr;
    EXPECT_NE(lRefused.mErr.find("use --allow-unmatched to go on nevertheless\n"), std::string::npos) << lRefused.mErr;
    EXPECT_FALSE(fs::exists(mFolder / "o.asf") || fs::exists(mFolder / "o.amc"));
    std::vector<std::string> lAllowed = lCall;
    lAllowed.emplace_back("--allow-unmatched");
    EXPECT_EQ(Run(lAllowed).mExit, 0);
    EXPECT_EQ(Text("o.amc").find("left"), std::string::npos);
    EXPECT_NE(Text("o.amc").find("\nroot "), std::string::npos);
}

} // namespace
