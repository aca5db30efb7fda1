#include <tests/apps/asf/batchtest.h>

using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

TEST_F(KBatchTest, KeepsTheTreeOfFoldersAndFindsSkeletons)
{
    const KRunResult lResult = Batch("in -o out --to bvh,glb --report r.jsonl");
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find(": 5 made\n"), std::string::npos) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("also found 2 skeletons, 1 file of other kinds\n"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(Names("out"), "01/a.bvh 01/a.glb 01/b.bvh 01/b.glb 02/c.bvh 02/c.glb 02/deep/d.bvh 02/deep/d.glb top.bvh top.glb ");
    EXPECT_EQ(BatchFolder("out"), "made-1-of-1.jsonl ");
    // As asf convert makes it of each.
    for (const std::string lCase : {"in/small.asf in/01/a.amc 01/a", "in/02/own.asf in/02/deep/d.amc 02/deep/d", "in/top.bvh top"})
    {
        const std::string lName = lCase.substr(lCase.rfind(' ') + 1);
        std::string       lCall = "convert -q " + lCase.substr(0, lCase.rfind(' ')) + " -o one.bvh -o one.glb";
        EXPECT_EQ(RunShell("\"$ASF\" " + lCall, mOptions).mExit, 0);
        EXPECT_EQ(Text("one.bvh"), Text("out/" + lName + ".bvh")) << lName;
    }
    const std::map<std::string, json> lReport = Report("r.jsonl");
    ASSERT_EQ(lReport.size(), kMotions);
    const json& lDeep = lReport.at("02/deep/d.amc");
    EXPECT_EQ(lDeep["schema"], 1);
    EXPECT_EQ(lDeep["status"], "made");
    EXPECT_EQ(lDeep["takes"][0]["frameCount"], 3);
    EXPECT_EQ(lDeep["inputs"][0]["file"], "../own.asf");
    EXPECT_EQ(lDeep["inputs"][1]["size"], ThreeFrames().size());
    EXPECT_EQ(lDeep["skeleton"], "../own.asf");
    EXPECT_EQ(lDeep["outputs"][1]["file"], "02/deep/d.glb");
    EXPECT_EQ(lDeep["outputs"][1]["size"], Text("out/02/deep/d.glb").size());
}

TEST_F(KBatchTest, NothingIsMadeTwice)
{
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    const auto lTime = fs::last_write_time(mFolder / "out/top.bvh");
    EXPECT_EQ(With("unchanged", "in -o out --to bvh"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(fs::last_write_time(mFolder / "out/top.bvh"), lTime);
    Touch("in/01/b.amc");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/b.amc ");
    Touch("in/02/own.asf");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "02/c.amc 02/deep/d.amc ");
    fs::remove(mFolder / "out/01/a.bvh");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/a.amc ");
    Write("in/03/e.bvh", SmallBvh());
    EXPECT_EQ(With("made", "in -o out --to bvh"), "03/e.bvh ");
    EXPECT_EQ(With("made", "in -o out --to bvh --fps 30"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc 03/e.bvh top.bvh ");
    EXPECT_EQ(With("unchanged", "in -o out --to bvh --fps 30"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc 03/e.bvh top.bvh ");
    EXPECT_EQ(With("made", "in -o out --to bvh --fps 30 --force"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc 03/e.bvh top.bvh ");
}

// A file changed by hand stays, and is replaced on demand only.
TEST_F(KBatchTest, OutputsChangedByHandStay)
{
    Expect("in -o out --to bvh -q", 0, "");
    const std::string lMade = Text("out/01/a.bvh");
    Write("out/01/a.bvh", "mine");
    for (const char* lMore : {"", " --fps 30", " --verify"})
    {
        SCOPED_TRACE(lMore);
        EXPECT_EQ(With("kept", std::string("in -o out --to bvh") + lMore), "01/a.amc ");
        EXPECT_EQ(Text("out/01/a.bvh"), "mine");
    }
    Expect("in -o out --to bvh --fps 30 -q", 1,
           "in/01/a.amc: error: out/01/a.bvh was changed since it was made: left as it is; --force replaces it\n");
    EXPECT_EQ(With("made", "in -o out --to bvh --force"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(Text("out/01/a.bvh"), lMade);
}

TEST_F(KBatchTest, FilesThatNoRunMadeStay)
{
    Write("out/top.bvh", "not of a run");
    Expect("in -o out --to bvh -q", 1, "in/top.bvh: error: out/top.bvh was not made by asf batch: left as it is; --force replaces it\n");
    EXPECT_EQ(Text("out/top.bvh"), "not of a run");
    Expect("--gather out -q", 1, "top.bvh: error: out/top.bvh was not made by asf batch");
    EXPECT_EQ(With("kept", "in -o out --to bvh"), "top.bvh ");
    fs::remove(mFolder / "out/top.bvh");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "top.bvh ");
    Expect("--gather out -q", 0, "");
}

TEST_F(KBatchTest, VerifyComparesContents)
{
    Expect("in -o out --to bvh -q", 0, "");
    Touch("out/01/a.bvh"); // As a copy of the folder has it.
    EXPECT_EQ(With("kept", "in -o out --to bvh"), "01/a.amc ");
    EXPECT_EQ(With("kept", "in -o out --to bvh --verify"), "");
    Expect("--gather out -q --verify", 0, "");
    Touch("in/01/a.amc");
    EXPECT_EQ(With("made", "in -o out --to bvh --verify"), "01/a.amc ") << "known by its contents";
    // Other contents of the same size and time.
    const auto  lTime = fs::last_write_time(mFolder / "out/02/c.bvh");
    std::string lText = Text("out/02/c.bvh");
    lText[lText.size() / 2] ^= 1;
    Write("out/02/c.bvh", lText);
    fs::last_write_time(mFolder / "out/02/c.bvh", lTime);
    EXPECT_EQ(With("unchanged", "in -o out --to bvh"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(With("kept", "in -o out --to bvh --verify"), "02/c.amc ");
    EXPECT_EQ(Text("out/02/c.bvh"), lText);
    Expect("--gather out -q --verify", 1, "out/02/c.bvh was changed since it was made");
}

// Whatever is asked for, no input is written over.
TEST_F(KBatchTest, InputsAreNeverReplaced)
{
    const std::string lBefore = Text("in/top.bvh");
    Expect("in/top.bvh -o . --to bvh --force -q", 1, "in/top.bvh is an input: choose another folder");
    Expect("in/01/a.amc -o . --to asf,amc --force -q", 1, "in/01/a.amc is an input: choose another folder");
    EXPECT_EQ(Text("in/top.bvh"), lBefore);
    Expect("in -o out --to bvh --report in/top.bvh", 2, "--report: expected a name such as report.jsonl, not in/top.bvh");
    Expect("in -o out --to bvh --report out/.asf-batch/made-1-of-1.jsonl", 2, "is among the manifests: choose another folder");
    EXPECT_EQ(Text("in/top.bvh"), lBefore);
}

// Patterns may be below OUTDIR itself, and what runs have made is no input.
TEST_F(KBatchTest, OutdirAboveAPattern)
{
    EXPECT_EQ(With("made", "in/*.bvh -o . --to npz"), "in/top.bvh ");
    Expect("in -o in/out --to glb -q", 0, "");
    EXPECT_EQ(With("read", "in --to none"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
}

TEST_F(KBatchTest, GatheringGivesOneReport)
{
    Expect("in -o out --to bvh --shard 1/2 -q", 0, "");
    Expect("in -o out --to bvh --shard 2/2 -q", 0, "");
    Expect("--gather out --report all.jsonl -q", 0, "");
    EXPECT_EQ(Report("all.jsonl").size(), kMotions);
}

// The part may not exist any more.
TEST_F(KBatchTest, WhatAKilledPartLeftIsRemoved)
{
    Write("out/.asf-batch/making-3-of-8/0/half.bvh", "half");
    Expect("in -o out --to bvh -q", 0, "");
    EXPECT_EQ(BatchFolder("out"), "made-1-of-1.jsonl made-3-of-8.jsonl ");
}

// What a run with other options made stays known.
TEST_F(KBatchTest, OneOutdirForSeveralFormats)
{
    Expect("in -o out --to glb -q", 0, "");
    Expect("in -o out --to bvh -q", 0, "");
    Expect("in -o out --to none -q", 0, "");
    Touch("in/top.bvh");
    Expect("in -o out --to glb -q", 0, "");
    Write("out/01/a.bvh", "mine");
    Expect("in -o out --to bvh -q", 1, "out/01/a.bvh was changed since it was made");
    EXPECT_EQ(Text("out/01/a.bvh"), "mine");
}

TEST_F(KBatchTest, EveryFormatAndSeveralTakes)
{
    Expect("in -o out --to gltf,asf,amc,npz --limits -q", 0, "");
    EXPECT_EQ(With("unchanged", "in -o out --to gltf,asf,amc,npz --limits"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(Names("out").substr(0, 40), "01/a.amc 01/a.asf 01/a.bin 01/a.gltf 01/");
    Write("in/small_02.amc", ThreeFrames());
    fs::create_directory(mFolder / "takes");
    EXPECT_EQ(RunShell("\"$ASF\" convert -q in/small.asf in/01/a.amc in/small_02.amc -o takes/both.glb", mOptions).mExit, 0);
    Expect("takes -o split --to bvh,glb -q", 0, "");
    EXPECT_EQ(Names("split"), "both-a.bvh both-small_02.bvh both.glb ");
    EXPECT_EQ(With("unchanged", "takes -o split --to bvh,glb"), "both.glb ");
    // A take may have an output of the name that another motion's has: the first one stays.
    Write("takes/both-a.bvh", SmallBvh());
    Expect("takes -o split --to bvh -q", 1, "takes/both-a.bvh: error: split/both-a.bvh was not made by asf batch");
    Expect("takes -o fresh --to bvh -q --jobs 1", 1, "takes/both.glb: error: fresh/both-a.bvh was not made by asf batch");
    EXPECT_EQ(Names("fresh"), "both-a.bvh ");
    Expect("takes -o both --to bvh -q --jobs 2", 1, "both/both-a.bvh was not made by asf batch");
}

TEST_F(KBatchTest, DryRunListsAndWritesNothing)
{
    const KRunResult lResult = Batch("in -o out --to bvh --dry-run");
    EXPECT_EQ(lResult.mExit, 0);
    EXPECT_EQ(std::count(lResult.mOut.begin(), lResult.mOut.end(), '\n'), 5);
    EXPECT_NE(lResult.mOut.find("in/02/deep/d.amc\n"), std::string::npos) << lResult.mOut;
    EXPECT_FALSE(fs::exists(mFolder / "out"));
    Expect("in -o out --to bvh -q", 0, "");
    Touch("in/01/a.amc");
    EXPECT_EQ(Batch("in -o out --to bvh --dry-run -q").mOut, "in/01/a.amc\n");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/a.amc ");
}

// Without a folder to write to, nothing in the current one is touched.
TEST_F(KBatchTest, OnlyChecks)
{
    Write("0/mine", "");
    Write("1/mine", "");
    Write("in/bad.bvh", "HIERARCHY\nROOT");
    const KBytes lBefore = Tree(".");
    Expect("in --to none --jobs 2", 1, "in/bad.bvh: error: ");
    EXPECT_EQ(Tree("."), lBefore);
    EXPECT_EQ(With("read", "in --to none"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(Report("with.jsonl").at("01/a.amc")["takes"][0]["rateFrom"], "default");
    EXPECT_EQ(Report("with.jsonl").at("01/a.amc")["outputs"], json::array());
    // Nothing that a run has made is forgotten, and outputs do not matter.
    Write("in/01/a.bvh", SmallBvh());
    Expect("in -o out --to none -q", 1, "in/bad.bvh: error: ");
    EXPECT_FALSE(fs::exists(mFolder / "out"));
    EXPECT_EQ(With("read", "in --to none"), "01/a.amc 01/a.bvh 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
}

TEST_F(KBatchTest, InputsMayBeFilesPatternsAndLists)
{
    Expect("in/01/a.amc -o one --to bvh -q", 0, "");
    EXPECT_EQ(Names("one"), "in/01/a.bvh ");
    Expect("in/**/*.amc -o two --to bvh -q", 0, "");
    EXPECT_EQ(Names("two"), "in/01/a.bvh in/01/b.bvh in/02/c.bvh in/02/deep/d.bvh ");
    Expect("**/*.bvh in/0[2-9]/?.amc -o three --to npz -q", 0, "");
    EXPECT_EQ(Names("three").find("in/02/c.npz in/top.npz "), 0U) << Names("three");
    Write("list", "in/02\r\n\n./in/top.bvh\nin/top.bvh\n");
    Expect("--list list -o four --to bvh -q", 0, "");
    EXPECT_EQ(Names("four"), "c.bvh deep/d.bvh in/top.bvh ") << "one name twice is one motion";
    mOptions.mInput = std::string("in/01/a.amc\0in/01/b.amc\0", 24);
    Expect("--list - --null -o five --to bvh -q", 0, "");
    EXPECT_EQ(Names("five"), "in/01/a.bvh in/01/b.bvh ");
    EXPECT_EQ(With("unchanged", "./in//01/a.amc in/01/b.amc -o five --to bvh"), "in/01/a.amc in/01/b.amc ");
    Expect((mFolder / "in/top.bvh").string() + " -o six --to npz -q", 0, "");
    EXPECT_EQ(Names("six"), (mFolder / "in/top.npz ").string().substr(1));
    Expect("../" + mFolder.Path().filename().string() + "/in/top.bvh -o seven --to npz -q", 0, "");
    EXPECT_EQ(Names("seven"), mFolder.Path().filename().string() + "/in/top.npz ") << "never outside";
}

TEST_F(KBatchTest, LinksAreFollowedButNotInCircles)
{
    Write("elsewhere/far.bvh", SmallBvh());
    fs::create_directory_symlink("../elsewhere", mFolder / "in/linked");
    fs::create_symlink("../../in/top.bvh", mFolder / "in/01/same.bvh");
    fs::create_directory_symlink("..", mFolder / "in/02/deep/up");
    fs::create_directory_symlink(".", mFolder / "in/self");
    const KRunResult lResult = Batch("in -o out --to npz");
    EXPECT_EQ(lResult.mExit, 0) << lResult.mErr;
    EXPECT_EQ(Names("out"), "01/a.npz 01/b.npz 01/same.npz 02/c.npz 02/deep/d.npz linked/far.npz top.npz ");
    EXPECT_NE(lResult.mErr.find("in/02/deep/up/: warning: leads to a folder that is read already: skipped\n"), std::string::npos)
        << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("in/self/: warning: leads to a folder that is read already: skipped\n"), std::string::npos) << lResult.mErr;
}

// There are 2^40 ways through these links.
TEST_F(KBatchTest, EachFolderIsReadOnce)
{
    for (int lLevel = 0; lLevel < 40; ++lLevel)
    {
        const fs::path lFolder = mFolder / "net" / std::to_string(lLevel);
        fs::create_directories(lFolder);
        fs::create_directory_symlink("../" + std::to_string(lLevel + 1), lFolder / "a");
        fs::create_directory_symlink("../" + std::to_string(lLevel + 1), lFolder / "b");
    }
    Write("net/40/end.bvh", SmallBvh());
    Expect("net/0 -o out --to npz -q", 0, "leads to a folder that is read already: skipped");
    EXPECT_EQ(Names("out").size(), 40 * 2 + std::string("end.npz ").size());
}

// Pipes and sockets would make a worker wait for ever.
TEST_F(KBatchTest, OnlyFilesAreMotions)
{
    ASSERT_EQ(::mkfifo((mFolder / "in/pipe.bvh").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", mFolder / "in/zero.bvh");
    fs::create_symlink("nowhere", mFolder / "in/broken.bvh");
    const KRunResult lResult = Batch("in -o out --to npz -q");
    EXPECT_EQ(lResult.mExit, 3) << lResult.mErr;
    EXPECT_EQ(std::count(lResult.mErr.begin(), lResult.mErr.end(), '\n'), 1) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("in/broken.bvh: error: "), std::string::npos) << lResult.mErr;
    EXPECT_EQ(Tree("out").size(), kMotions);
}

TEST_F(KBatchTest, OutdirInsideAnInput)
{
    Expect("in -o in/02/made --to bvh -q", 0, "");
    EXPECT_EQ(Names("in/02/made"), "01/a.bvh 01/b.bvh 02/c.bvh 02/deep/d.bvh top.bvh ");
    EXPECT_EQ(With("unchanged", "in -o ./in/02/made/ --to bvh"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    EXPECT_EQ(With("made", "in/**/*.bvh in/02/deep -o in/02/made --to npz"), "d.amc in/top.bvh ");
    Expect("in -o in --to bvh", 2, "asf: error: --output: in is also an input: choose another folder; it may be inside\n");
    Expect("in -o in/../in/ --to bvh", 2, "is also an input");
}

TEST_F(KBatchTest, RatesOfATable)
{
    Write("rates.csv", "subject,file,source_fps\r\n1,01/*.amc,60\r\nx,01/b.amc,30000/1001\n\n2,top.bvh,10\n");
    Expect("in -o out --to bvh --rates rates.csv -q", 0, "");
    EXPECT_EQ(LineWith(Text("out/01/a.bvh"), "Frame Time:").substr(0, 20), "Frame Time: 0.016666");
    EXPECT_EQ(LineWith(Text("out/01/b.bvh"), "Frame Time:").substr(0, 20), "Frame Time: 0.033366");
    EXPECT_EQ(LineWith(Text("out/02/c.bvh"), "Frame Time:").substr(0, 19), "Frame Time: 0.00833");
    Write("rates.csv", "file,source_fps\n01/*.amc,60\n01/b.amc,25\ntop.bvh,10\n");
    EXPECT_EQ(With("made", "in -o out --to bvh --rates rates.csv"), "01/b.amc ");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/a.amc 01/b.amc top.bvh ");
    Write("rates.csv", "file,source_fps\n01/*.amc,fast\n");
    Expect("in -o out --to bvh --rates rates.csv", 1,
           "rates.csv:2: error: source_fps: expected a rate such as 120, 23.976 or 30000/1001, not fast\n");
    Expect("in -o out --to bvh --rates none.csv", 3, "none.csv: error: cannot be read: No such file or directory\n");
}

// Motions with one output, also on file systems that ignore case.
TEST_F(KBatchTest, CollisionsFailOrGetNumbers)
{
    Write("in/01/a.bvh", SmallBvh());
    Write("in/01/A-2.bvh", SmallBvh());
    Write("in/TOP.bvh", SmallBvh());
    Expect("in -o out --to bvh -q", 1,
           "in/01/a.amc: error: another motion has the same output 01/a: rename one of them, or give --on-collision suffix\n");
    EXPECT_EQ(Names("out"), "01/A-2.bvh 01/b.bvh 02/c.bvh 02/deep/d.bvh ");
    EXPECT_EQ(With("failed", "in -o out --to bvh"), "01/a.amc 01/a.bvh TOP.bvh top.bvh ");
    Expect("--gather out -q", 1, "01/a.amc: error: another motion has the same output");
    Expect("in -o out --to bvh --on-collision suffix -q", 0, "");
    EXPECT_EQ(Names("out"), "01/A-2.bvh 01/a-3.bvh 01/a.bvh 01/b.bvh 02/c.bvh 02/deep/d.bvh TOP.bvh top-2.bvh ");
    EXPECT_EQ(With("made", "in -o out --to bvh --on-collision suffix"), "");
}

TEST_F(KBatchTest, FoldersWithEqualNamesGetNumbers)
{
    Write("more/top.bvh", SmallBvh());
    Write("more/01/a.bvh", SmallBvh());
    Expect("in more -o out --to npz -q", 1, "more/top.bvh: error: another motion has the same output top");
    Expect("in more in/ -o out --to npz --on-collision suffix -q", 0, "");
    EXPECT_EQ(Names("out"), "01/a-2.npz 01/a.npz 01/b.npz 02/c.npz 02/deep/d.npz top-2.npz top.npz ");
    Expect("in more -o out --to npz --on-collision suffix", 0, ": 7 unchanged\n");
    Touch("more/top.bvh");
    Expect("in more -o out --to npz --on-collision suffix", 0, ": 1 made, 6 unchanged\n");
    Expect("--gather in more -o out --on-collision suffix -q", 0, "");
}

struct KUsageCase
{
    const char* mCall;
    int         mExit;
    const char* mMessage;
};

class KBatchUsageTest : public KBatchTest, public testing::WithParamInterface<KUsageCase>
{
};

/// Refused calls write nothing.
TEST_P(KBatchUsageTest, Refuses)
{
    Write("empty/notes.txt", "");
    Write("list", "");
    const KBytes lBefore = Tree(".");
    Expect(GetParam().mCall, GetParam().mExit, GetParam().mMessage);
    EXPECT_EQ(Tree("."), lBefore);
    EXPECT_FALSE(fs::exists(mFolder / "out"));
}

INSTANTIATE_TEST_SUITE_P(
    Calls, KBatchUsageTest,
    testing::Values(KUsageCase{"-o out --to bvh", 2, "asf: error: INPUT is required: folders, files or patterns, or a list with --list\n"},
                    KUsageCase{"in --to bvh", 2, "asf: error: --output is required: write the folder's name after -o\n"},
                    KUsageCase{"in -o out", 2, "asf: error: --to is required"},
                    KUsageCase{"in -o out --to none,bvh", 2, "asf: error: --to none stands alone: it writes nothing\n"},
                    KUsageCase{"in -o out --to fbx", 2, "fbx"}, KUsageCase{"in -o out --to bvh --jobs 0", 2, "--jobs"},
                    KUsageCase{"in -o out --to bvh --memory lots", 2, "--memory"},
                    KUsageCase{"in -o out --to bvh --timeout 0", 2, "--timeout"}, KUsageCase{"in -o out --to bvh --fps fast", 2, "--fps"},
                    KUsageCase{"in -o out --to bvh --on-collision guess", 2, "--on-collision"},
                    KUsageCase{"in -o out --to bvh --shard 0/3", 2, "asf: error: --shard: expected a part such as 3/8, or auto, not 0/3\n"},
                    KUsageCase{"in -o out --to bvh --shard 4/3", 2, "not 4/3\n"},
                    KUsageCase{"in -o out --to bvh --shard 1/9999999", 2, "not 1/9999999\n"},
                    KUsageCase{"in -o out --to bvh --shard -1/3", 2, "--shard"},
                    KUsageCase{"in -o out --to bvh --shard auto", 2, "asf: error: --shard auto: this is no task of a Slurm array"},
                    KUsageCase{"empty -o out --to bvh", 1, "asf: error: no motion was found: AMC, BVH, GLB or glTF\n"},
                    KUsageCase{"--list list -o out --to bvh", 1, "no motion was found"},
                    KUsageCase{"--list none -o out --to bvh", 3, "none: error: cannot be read: No such file or directory\n"},
                    KUsageCase{"nowhere -o out --to bvh", 3, "nowhere: error: cannot be read: No such file or folder\n"},
                    KUsageCase{"nowhere/** -o out --to bvh", 3, "nowhere/: error: cannot be read: No such file or directory\n"},
                    KUsageCase{"--gather", 2, "asf: error: --gather: expected the folder of one collection"},
                    KUsageCase{"--gather in", 1, "in: error: has no manifest: asf batch has written nothing there\n"}));

} // namespace
