#include <apps/asf/batch/manifest.h>
#include <tests/apps/asf/batchtest.h>
#include <tests/support/asnobody.h>

#include <sys/resource.h>

using namespace asfapp;
using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

/// Runs that meet bad inputs, folders and devices.
class KBatchFaultTest : public KBatchTest
{
};

TEST_F(KBatchFaultTest, NamesOfAllKinds)
{
    const std::string lNames[] = {"new\nline.bvh", "with space.bvh", "-dash.bvh",   "{name}.bvh",     "{.bvh",     "}{{-take}.bvh",
                                  "\xFF\xFE.bvh",  "quote\".bvh",    "back\\s.bvh", "per%cent.bvh",   "[1].bvh",   "*.bvh",
                                  "\xC3\xA4.bvh",  "..dots..bvh",    "tab\t.bvh",   "semi;colon.bvh", "UPPER.BVH", "$HOME.bvh"};
    for (const std::string& lName : lNames)
    {
        Write("odd/" + lName, SmallBvh());
        Write("odd/sub {n}\n\"\xFF/" + lName, SmallBvh());
        mOptions.mInput += "odd/" + lName + '\0';
    }
    for (const std::string lFormat : {"bvh", "gltf"})
    {
        Expect("odd -o out{take}\"\xFF --to " + lFormat + " -q", 0, "");
        EXPECT_EQ(Tree("out{take}\"\xFF").size(), 2 * std::size(lNames) * (lFormat == "gltf" ? 3 : 1)); // With buffers and the first ones.
        Expect("odd -o out{take}\"\xFF --to " + lFormat, 0, ": 36 unchanged");
    }
    Expect("--list - --null -o listed --to bvh", 0, ": 18 made");
    EXPECT_EQ(Tree("listed").count("odd/new\nline.bvh"), 1U);
    Expect("--gather odd -o out{take}\"\xFF -q", 0, "");
    EXPECT_NE(With("made", "odd -o reported --to npz").find("{\"hex\":\"fffe2e627668\"} "), std::string::npos);
}

TEST_F(KBatchFaultTest, AMissingInputCostsOnlyItself)
{
    const KRunResult lResult = Batch("nowhere in/none.bvh in -o out --to bvh -q");
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_EQ(lResult.mErr, "nowhere: error: cannot be read: No such file or folder\n"
                            "in/none.bvh: error: cannot be read: No such file or folder\n");
    ExpectWhole("out");
}

TEST_F(KBatchFaultTest, BadMotionsCostOnlyThemselves)
{
    ExpectWhole("whole");
    Write("in/03/bad.amc", "1\nroot x\n");
    Write("in/03/empty.bvh", "");
    Write("in/03/noise.glb", std::string(5000, '\xA5'));
    Write("alone/none.amc", ThreeFrames());
    const KRunResult lResult = Batch("in alone -o out --to bvh");
    EXPECT_EQ(lResult.mExit, 1) << lResult.mErr;
    for (const char* lPart : {"in/03/bad.amc: error: ", "in/03/empty.bvh: error: ", "in/03/noise.glb: error: ", "alone/none.amc: error: ",
                              ": 5 made, 4 failed\n"})
    {
        EXPECT_NE(lResult.mErr.find(lPart), std::string::npos) << lPart << lResult.mErr;
    }
    ExpectWhole("out");
    EXPECT_EQ(With("failed", "in alone -o out --to bvh"), "03/bad.amc 03/empty.bvh 03/noise.glb none.amc ");
    EXPECT_EQ(Report("with.jsonl").at("03/bad.amc")["cause"], "input");
    Write("in/03/empty.bvh", SmallBvh());
    EXPECT_EQ(With("made", "in alone -o out --to bvh"), "03/empty.bvh ");
}

TEST_F(KBatchFaultTest, FoldersThatCannotBeRead)
{
    ExpectWhole("whole");
    Write("in/locked/e.bvh", SmallBvh());
    Write("in/dark.bvh", SmallBvh());
    ASSERT_EQ(::chmod((mFolder / "in/locked").c_str(), 0), 0);
    ASSERT_EQ(::chmod((mFolder / "in/dark.bvh").c_str(), 0), 0);
    ASSERT_EQ(::chmod(mFolder.Path().c_str(), 0777), 0);
    KRunResult lResult;
    const auto lRun = [&]
    {
        lResult = Batch("in -o out --to bvh -q");
        return lResult.mExit == 3 && lResult.mErr.find("in/locked/: error: cannot be read: Permission denied\n") != std::string::npos &&
               lResult.mErr.find("in/dark.bvh: error: ") != std::string::npos &&
               std::count(lResult.mErr.begin(), lResult.mErr.end(), '\n') == 2;
    };
    EXPECT_TRUE(AsNobody(lRun));
    ExpectWhole("out");
    ASSERT_EQ(::chmod((mFolder / "in/locked").c_str(), 0755), 0);
    // A folder that cannot be written.
    fs::create_directory(mFolder / "fixed");
    const auto lWrite = [&]
    {
        lResult = Batch("in -o fixed --to bvh -q");
        return lResult.mExit == 3 && lResult.mErr == "fixed: error: cannot be written: Permission denied\n";
    };
    EXPECT_TRUE(AsNobody(lWrite));
}

TEST_F(KBatchFaultTest, OutputsInPlacesOfOtherKinds)
{
    Write("file", "mine");
    Expect("in -o file --to bvh -q", 3, "file: error: cannot be written: Not a directory\n");
    Expect("in -o file --to bvh -q --dry-run", 3, "Not a directory\n");
    Expect("in -o file/below --to bvh -q", 3, "Not a directory\n");
    EXPECT_EQ(Text("file"), "mine");
    Write("out/top.bvh/mine", "");
    Write("out/02", "a file");
    fs::create_directory(mFolder / "out/01");
    fs::create_symlink("nowhere", mFolder / "out/01/a.bvh");
    for (const char* lMore : {"", " --force"})
    {
        const KRunResult lResult = Batch(std::string("in -o out --to bvh --jobs 1 -q") + lMore);
        EXPECT_EQ(lResult.mExit, 3);
        EXPECT_EQ(lResult.mErr, "in/01/a.amc: error: out/01/a.bvh is not a file: remove it\n"
                                "in/02/c.amc: error: out/02/c cannot be written: Not a directory\n"
                                "in/02/deep/d.amc: error: out/02/deep/d cannot be written: Not a directory\n"
                                "in/top.bvh: error: out/top.bvh is not a file: remove it\n");
        EXPECT_EQ(Names("out"), "01/b.bvh 02 top.bvh/mine ");
        EXPECT_EQ(fs::read_symlink(mFolder / "out/01/a.bvh"), "nowhere");
    }
    Expect("in -o other --to bvh -q --report out", 3, "out: error: cannot be written: ");
}

/// A manifest is what was written before a crash, or by something else.
TEST_F(KBatchFaultTest, ManifestsWithLinesThatAreNone)
{
    Expect("in -o out --to bvh -q", 0, "");
    const std::string lManifest = "out/.asf-batch/made-1-of-1.jsonl";
    const std::string lWhole = Text(lManifest);
    const auto        lReplaced = [&](const std::string& pFrom, const std::string& pTo)
    {
        std::string lText = lWhole;
        for (size_t lAt = lText.find(pFrom); lAt != std::string::npos; lAt = lText.find(pFrom, lAt + pTo.size()))
        {
            lText.replace(lAt, pFrom.size(), pTo);
        }
        EXPECT_NE(lText, lWhole) << pFrom;
        return lText;
    };
    std::string lGarbage = std::string("\0\xFF\n\n[]\n{}\n1\n", 11) + std::string(100000, '[') + "\n{\"file\":\"01/a.amc\"}\n";
    for (const auto& [lFrom, lTo] : std::map<std::string, std::string>{{"\"status\":\"made\"", "\"status\":1"},
                                                                       {"\"crc32\":", "\"crc32\":-"},
                                                                       {"\"options\":\"--to bvh\"", "\"options\":[]"},
                                                                       {"\"generation\":1", "\"generation\":\"1\""},
                                                                       {"\"inputs\":[", "\"inputs\":[1,"},
                                                                       {"\"version\":\"", "\"version\":1,\"other\":\""},
                                                                       {"\"output\":\"", "\"output\":1,\"other\":\""}})
    {
        lGarbage += lReplaced(lFrom, lTo);
    }
    Write(lManifest, lWhole + lGarbage);
    EXPECT_EQ(With("unchanged", "in -o out --to bvh"), "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ");
    Expect("--gather in -o out", 0, "out: 5 motions made, 0 missing or failed\n");
    // A line torn at any byte costs only itself: what it is about is not made by anyone known, so it stays and is reported.
    const size_t      lLast = lWhole.rfind('\n', lWhole.size() - 2) + 1;
    const std::string lName = json::parse(lWhole.substr(lLast))["file"];
    for (const size_t lAt : {lLast, lLast + 1, (lLast + lWhole.size()) / 2, lWhole.size() - 2})
    {
        Write(lManifest, lWhole.substr(0, lAt));
        EXPECT_EQ(With("kept", "in -o out --to bvh"), lName + " ") << lAt;
        EXPECT_EQ(With("unchanged", "in -o out --to bvh").find(lName), std::string::npos);
    }
    Write(lManifest, lWhole.substr(0, lWhole.size() - 1)); // Only the end of the line is missing.
    EXPECT_EQ(With("kept", "in -o out --to bvh --force"), "");
    ExpectWhole("out");
}

/// A limit on the sizes of files stands for a device that is full for some of them.
TEST_F(KBatchFaultTest, OutputsThatDoNotFit)
{
    fs::copy_file(Sample("walker.asf"), mFolder / "in/small.asf", fs::copy_options::overwrite_existing);
    fs::copy_file(Sample("walk.amc"), mFolder / "in/01/b.amc", fs::copy_options::overwrite_existing);
    fs::remove(mFolder / "in/01/a.amc");
    const KRunResult lResult = RunShell("trap '' XFSZ; ulimit -f 64; \"$ASF\" batch in -o out --to bvh -q", mOptions);
    EXPECT_EQ(lResult.mExit, 3);
    EXPECT_NE(lResult.mErr.find("in/01/b.amc: error: "), std::string::npos) << lResult.mErr;
    EXPECT_NE(lResult.mErr.find("File too large"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(lResult.mErr.find("making"), std::string::npos) << lResult.mErr;
    EXPECT_EQ(Names("out"), "02/c.bvh 02/deep/d.bvh top.bvh ");
    EXPECT_EQ(With("made", "in -o out --to bvh"), "01/b.amc ");
    ExpectWhole("out");
}

/// A device of some pages, where the system permits mounting one; then the same run with enough of them.
TEST_F(KBatchFaultTest, DeviceThatIsFullInTheMiddle)
{
    fs::create_directory(mFolder / "device");
    const bool lIsPermitted = RunShell("unshare -m mount -t tmpfs tmpfs device", mOptions).mExit == 0;
    int        lFull = 0;
    for (int lPages = 4; lIsPermitted && lPages < 26 && !HasFailure(); lPages += 2)
    {
        const std::string lPlace = "copy" + std::to_string(lPages);
        const KRunResult  lResult = RunShell(
             "unshare -m sh -c 'mount -t tmpfs -o nr_blocks=" + std::to_string(lPages) +
                 " tmpfs device && \"$ASF\" batch in -o device --to bvh -q --jobs 2; echo $?; cp -r device first" + lPlace +
                 "; mount -o remount,nr_blocks=500 device; \"$ASF\" batch in -o device --to bvh -q 1>&2; cp -r device " + lPlace + "'",
             mOptions);
        lFull += lResult.mOut == "3\n" ? 1 : 0;
        EXPECT_TRUE(lResult.mOut == "3\n" ? lResult.mErr.find("No space left on device") != std::string::npos : lResult.mOut == "0\n")
            << lPages << lResult.mOut << lResult.mErr;
        ExpectWhole(lPlace);
        for (const auto& [lName, lText] : Tree("first" + lPlace))
        {
            EXPECT_EQ(lText, Text("whole/" + lName)) << lPages;
        }
    }
    EXPECT_EQ(lFull > 0, lIsPermitted);
}

// A line of which a part was written must not spoil the next one.
TEST_F(KBatchFaultTest, ManifestOnAFullDevice)
{
    const auto lCheck = [this]
    {
        struct rlimit lLimit = {60, RLIM_INFINITY};
        ::signal(SIGXFSZ, SIG_IGN);
        KConsole        lConsole;
        KManifestWriter lWriter;
        std::string     lReason;
        const auto      lLine = [](const char* pName)
        {
            return KJson{{"file", pName}, {"output", pName}, {"generation", 1U}};
        };
        bool lOk = lWriter.Open(mFolder / "made.jsonl", lConsole) && lWriter.Append(lLine("a"), lReason);
        ::setrlimit(RLIMIT_FSIZE, &lLimit);
        lOk = lOk && !lWriter.Append(lLine("b"), lReason) && lReason == "File too large";
        lLimit.rlim_cur = RLIM_INFINITY;
        ::setrlimit(RLIMIT_FSIZE, &lLimit);
        lOk = lOk && lWriter.Append(lLine("c"), lReason);
        KManifestIndex lIndex;
        KJson          lFound;
        return lOk && lIndex.Read(mFolder.Path().string(), lConsole) && lIndex.Find("a", lFound) && !lIndex.Find("b", lFound) &&
               lIndex.Find("c", lFound);
    };
    ASSERT_EQ(::chmod(mFolder.Path().c_str(), 0777), 0);
    EXPECT_TRUE(AsNobody(lCheck));
}

} // namespace
