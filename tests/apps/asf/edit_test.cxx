#include <tests/apps/asf/runasf.h>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

class KEditTest : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteFile(mFolder / "small.asf", SmallSkeleton());
        fs::copy_file(Sample("walker.asf"), mFolder / "walker.asf");
        fs::copy_file(Sample("walk.amc"), mFolder / "walk.amc");
        mOptions.mFolder = mFolder.Path().string();
    }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    KRunResult Edit(const std::vector<std::string>& pArguments, const std::string& pInput = "small.asf")
    {
        std::vector<std::string> lArguments{"edit", pInput, "-q", "-o", "out.asf"};
        lArguments.insert(lArguments.end(), pArguments.begin(), pArguments.end());
        return Run(lArguments);
    }

    std::string Out() { return ReadFile(mFolder / "out.asf"); }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

TEST_F(KEditTest, WithoutOptionsTheSkeletonStaysTheSame)
{
    EXPECT_EQ(Edit({}, "walker.asf").mErr, "");
    const KRunResult lDiff = Run({"diff", "-q", "walker.asf", "out.asf", "walk.amc", "--tolerance", "1e-5"});
    EXPECT_EQ(lDiff.mExit, 0) << lDiff.mOut;
    EXPECT_EQ(Run({"edit", "out.asf", "-o", "again.asf"}).mExit, 0);
    EXPECT_EQ(ReadFile(mFolder / "again.asf"), Out()) << "a second edit changes no byte";
}

TEST_F(KEditTest, Rename)
{
    EXPECT_EQ(Edit({"--rename", "hip=pelvis", "--rename", "thigh=leg"}).mExit, 0);
    EXPECT_NE(Out().find("    root pelvis\n    pelvis leg\n    leg shin\n"), std::string::npos) << Out();
    // A swap takes three renames.
    EXPECT_EQ(Edit({"--rename", "thigh=x", "--rename", "shin=thigh", "--rename", "x=shin"}).mExit, 0);
    EXPECT_NE(Out().find("    hip shin\n    shin thigh\n"), std::string::npos) << Out();
}

struct KRenameCase
{
    const char* mRename;
    const char* mMessage;
};

class KBadRenameTest : public KEditTest, public testing::WithParamInterface<KRenameCase>
{
};

TEST_P(KBadRenameTest, IsAUsageError)
{
    const KRunResult lResult = Edit({"--rename", GetParam().mRename});
    EXPECT_EQ(lResult.mExit, 2);
    EXPECT_EQ(lResult.mErr, std::string("asf: error: --rename ") + GetParam().mRename + ": " + GetParam().mMessage + "\n");
    EXPECT_FALSE(fs::exists(mFolder / "out.asf"));
}

INSTANTIATE_TEST_SUITE_P(
    Names, KBadRenameTest,
    testing::Values(KRenameCase{"thigh", "expected OLD=NEW"}, KRenameCase{"foot=toe", "the skeleton has no bone foot"},
                    KRenameCase{"root=base", "the root cannot be renamed"}, KRenameCase{"thigh=shin", "bone shin already exists"},
                    KRenameCase{"thigh=root", "root is a keyword"}, KRenameCase{"thigh=END", "END is a keyword"},
                    KRenameCase{"thigh=a b", "a name may not contain blanks, commas, parentheses or #, or begin with a colon"},
                    KRenameCase{"thigh=:a", "a name may not contain blanks, commas, parentheses or #, or begin with a colon"},
                    KRenameCase{"thigh=", "a name may not contain blanks, commas, parentheses or #, or begin with a colon"},
                    KRenameCase{"thigh=a123456789b123456789c123456789d123456789e123456789f", "a name has at most 50 characters"}));

TEST_F(KEditTest, Scale)
{
    EXPECT_EQ(Edit({"--scale", "0.5"}).mExit, 0);
    EXPECT_NE(Out().find("length 3.5\n"), std::string::npos) << Out();
    EXPECT_NE(Out().find("length 0.45\n"), std::string::npos) << "the unit stays";
    EXPECT_NE(Out().find("-160.000000 , 20.000000"), std::string::npos) << "angles stay";
}

TEST_F(KEditTest, DropLimits)
{
    EXPECT_EQ(Edit({"--drop-limits"}).mExit, 0);
    EXPECT_EQ(Out().find("160"), std::string::npos);
    EXPECT_NE(Out().find("dof rx ry rz\n"), std::string::npos) << Out();
    EXPECT_EQ(Run({"diff", "small.asf", "out.asf"}).mExit, 1);
    EXPECT_EQ(Run({"diff", "small.asf", "out.asf", "--ignore", "limits"}).mExit, 0);
}

TEST_F(KEditTest, RemoveDummies)
{
    // The thigh starts at the hip's end. Without the hip, the thigh would move.
    const KRunResult lKept = Edit({"--remove-dummies"});
    EXPECT_EQ(lKept.mErr, "small.asf: warning: Kept bones without degrees of freedom that cannot be merged into their parent (hip)\n");
    // Without its degree of freedom, the shin is merged into the thigh.
    WriteFile(mFolder / "stiff.asf", Replaced(SmallSkeleton(), "    dof rx\n    limits (-10 170)\n", ""));
    Edit({"--remove-dummies"}, "stiff.asf");
    EXPECT_EQ(Out().find("shin"), std::string::npos);
    EXPECT_NE(Out().find("length 14\n"), std::string::npos) << Out();
    // A bone without length can be removed.
    WriteFile(mFolder / "short.asf", Replaced(SmallSkeleton(), "length 1\n", "length 0\n"));
    EXPECT_EQ(Edit({"--remove-dummies"}, "short.asf").mErr, "");
    EXPECT_NE(Out().find("    root thigh\n    thigh shin\n"), std::string::npos) << Out();
}

TEST_F(KEditTest, WarnsAboutLosses)
{
    WriteFile(mFolder / "odd.asf", Replaced(Replaced(Replaced(SmallSkeleton(), "position 0 0 0", "position 0 9 0"), "mass 1.0", "mass 2"),
                                            "angle deg", "angle rad"));
    const KRunResult lResult = Edit({}, "odd.asf");
    EXPECT_EQ(lResult.mExit, 0);
    for (const char* lPart :
         {"The root's position is written as zero", "The mass unit 2 is written as 1", "The angle unit is written as degrees"})
    {
        EXPECT_NE(lResult.mErr.find(lPart), std::string::npos) << lResult.mErr;
    }
}

TEST_F(KEditTest, BadInputsAndOutputs)
{
    WriteFile(mFolder / "bad.asf", Replaced(SmallSkeleton(), "direction 1 0 0", "direction 1 0"));
    WriteFile(mFolder / "out.asf", "old");
    EXPECT_EQ(Edit({}, "bad.asf").mExit, 1);
    EXPECT_EQ(Edit({}, "walk.amc").mExit, 2);
    EXPECT_EQ(Edit({}, "none.asf").mExit, 3);
    EXPECT_EQ(Edit({"--scale", "0"}).mExit, 2);
    EXPECT_EQ(Out(), "old");
    EXPECT_EQ(Run({"edit", "small.asf", "-o", "small.asf"}).mExit, 2);
    EXPECT_EQ(ReadFile(mFolder / "small.asf"), SmallSkeleton());
    EXPECT_EQ(Run({"edit", "small.asf", "-o", "-"}).mOut.substr(0, 13), ":version 1.10");
    EXPECT_EQ(Run({"edit", "small.asf", "-o", "none/a.asf"}).mErr, "none/a.asf: error: cannot be written: No such file or directory\n");
}

class KDiffTest : public KEditTest
{
};

TEST_F(KDiffTest, ReportsEachDifference)
{
    EXPECT_EQ(Run({"diff", "small.asf", "small.asf"}).mExit, 0);
    const struct
    {
        const char* mFrom;
        const char* mTo;
        const char* mAspect;
    } lCases[] = {{"length 7\n", "length 7.1\n", "lengths"},
                  {"direction 0 -1 0", "direction 0 -1 0.1", "rest"},
                  {"(-160 20)", "(-150 20)", "limits"},
                  {"dof rx ry rz", "dof rz ry rx", "dofs"},
                  {"hip thigh\n    thigh shin", "hip thigh shin", "parents"}};
    for (const auto& lCase : lCases)
    {
        WriteFile(mFolder / "other.asf", Replaced(SmallSkeleton(), lCase.mFrom, lCase.mTo));
        const KRunResult lResult = Run({"diff", "small.asf", "other.asf", "--json"});
        EXPECT_EQ(lResult.mExit, 1) << lCase.mAspect;
        const json lObject = JsonOf(lResult);
        EXPECT_EQ(lObject["ok"], false);
        EXPECT_EQ(lObject["differences"][lCase.mAspect]["same"], false) << lResult.mOut;
    }
}

TEST_F(KDiffTest, NamesToleranceAndMotions)
{
    EXPECT_EQ(Edit({"--rename", "shin=calf"}).mExit, 0);
    const json lNames = JsonOf(Run({"diff", "small.asf", "out.asf", "--json"}));
    EXPECT_EQ(lNames["only"], json::parse(R"([["shin","shin_End"],["calf","calf_End"]])"));
    EXPECT_EQ(Edit({"--scale", "1.01"}, "walker.asf").mExit, 0);
    EXPECT_EQ(Run({"diff", "-q", "walker.asf", "out.asf"}).mExit, 1);
    EXPECT_EQ(Run({"diff", "-q", "walker.asf", "out.asf", "--tolerance", "0.02"}).mExit, 0);
    const json lMotion = JsonOf(Run({"diff", "-q", "walker.asf", "out.asf", "walk.amc", "--json"}));
    EXPECT_EQ(lMotion["frames"], json::parse("[241,241]"));
    EXPECT_GT(lMotion["differences"]["positions"]["largest"].get<double>(), 0.1);
    EXPECT_EQ(Run({"diff", "-q", "walk.amc", "walk.amc"}).mExit, 0);
    EXPECT_EQ(Run({"diff", "walker.asf"}).mExit, 2);
    EXPECT_EQ(Run({"diff", "walker.asf", "walk.amc"}).mExit, 2);
    EXPECT_EQ(Run({"diff", "walker.asf", "none.asf"}).mExit, 3);
    EXPECT_EQ(Run({"diff", "walker.asf", "out.asf", "--ignore", "colour"}).mExit, 2);
}

} // namespace
