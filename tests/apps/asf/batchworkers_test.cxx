#include <tests/apps/asf/batchworkertest.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <random>
#include <thread>

// Workers that fail, and runs that end in the middle.

using namespace asfapp;
using namespace qextest;
using nlohmann::json;
namespace fs = std::filesystem;

namespace
{

TEST_F(KBatchWorkerTest, InputsThatChangeWhileTheyAreRead)
{
    const auto lWorker = [](const qexsdk::KProcessOptions& pOptions)
    {
        const qexsdk::KProcessResult lResult = smRun(pOptions);
        if (IsAbout(pOptions, "a.amc"))
        {
            std::ofstream(smFolder / "in/01/a.amc", std::ios::app) << "4\nroot 0 0 0 0 0 0\n";
        }
        if (IsAbout(pOptions, "c.amc"))
        {
            fs::last_write_time(smFolder / "in/02/own.asf", fs::file_time_type::clock::now() + std::chrono::hours(1));
        }
        if (IsAbout(pOptions, "top.bvh"))
        {
            fs::remove(smFolder / "in/top.bvh");
        }
        return lResult;
    };
    const std::map<std::string, json> lReport = RunWith(lWorker, 1);
    for (const char* lName : {"01/a.amc", "02/c.amc", "top.bvh"})
    {
        EXPECT_EQ(lReport.at(lName)["cause"], "changed") << lName;
    }
    EXPECT_NE(mErrors.find("01/a.amc was changed while it was read: run again\n"), std::string::npos) << mErrors;
    EXPECT_FALSE(fs::exists(mFolder / "out/01/a.bvh"));
    Write("in/01/a.amc", ThreeFrames());
    Write("in/top.bvh", SmallBvh());
    Expect("in -o out --to bvh -q", 0, "");
    ExpectWhole("out");
}

TEST_F(KBatchWorkerTest, InputsDeletedBeforeTheyAreRead)
{
    const auto lWorker = [](const qexsdk::KProcessOptions& pOptions)
    {
        if (IsAbout(pOptions, "top.bvh"))
        {
            fs::remove(smFolder / "in/top.bvh");
        }
        return smRun(pOptions);
    };
    const std::map<std::string, json> lReport = RunWith(lWorker, 3);
    EXPECT_EQ(lReport.at("top.bvh")["status"], "failed");
    EXPECT_NE(mErrors.find("in/top.bvh: error: "), std::string::npos) << mErrors;
    EXPECT_NE(mErrors.find("No such file or directory"), std::string::npos) << mErrors;
    EXPECT_EQ(Names("out"), "01/a.bvh 01/b.bvh 02/c.bvh 02/deep/d.bvh ");
}

TEST_F(KBatchWorkerTest, WorkersThatFail)
{
    const auto lWorker = [](const qexsdk::KProcessOptions& pOptions)
    {
        qexsdk::KProcessResult lResult;
        if (IsAbout(pOptions, "a.amc"))
        {
            lResult.mSignal = SIGSEGV;
        }
        else if (IsAbout(pOptions, "b.amc"))
        {
            lResult.mError = EAGAIN;
        }
        else if (IsAbout(pOptions, "c.amc"))
        {
            lResult.mExit = 0;
            lResult.mOut = "[1, 2";
        }
        else if (IsAbout(pOptions, "d.amc"))
        {
            throw std::bad_alloc();
        }
        else
        {
            return smRun(pOptions);
        }
        lResult.mErr = lResult.mError == 0 ? "first line\nlast line\n" : "";
        return lResult;
    };
    const std::map<std::string, json> lReport = RunWith(lWorker, 3);
    EXPECT_EQ(lReport.at("01/a.amc")["cause"], "crash");
    EXPECT_EQ(lReport.at("01/a.amc")["error"], "its worker ended with signal 11: last line");
    EXPECT_EQ(lReport.at("01/b.amc")["cause"], "system");
    EXPECT_EQ(lReport.at("02/c.amc")["error"], "its worker ended with status 0: last line");
    EXPECT_EQ(lReport.at("02/deep/d.amc")["status"], "failed");
    EXPECT_EQ(lReport.at("top.bvh")["status"], "made");
    EXPECT_EQ(Names("out"), "top.bvh ");
    Expect("in -o out --to bvh", 0, ": 4 made, 1 unchanged\n");
    ExpectWhole("out");
}

/// AddressSanitizer needs terabytes of addresses: with a limit, no worker starts.
bool HasAddressSanitizer()
{
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
    return true;
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
    return true;
#else
    return false;
#endif
}

TEST_F(KBatchTest, MemoryOfOneMotion)
{
    const std::string lAll = "01/a.amc 01/b.amc 02/c.amc 02/deep/d.amc top.bvh ";
    Write("in/huge.gltf", "{\"asset\":{\"version\":\"2.0\",\"generator\":\"" + std::string(60000000, 'x') + "\"}}");
    const std::string lMade = With("made", "in -o out --to bvh --memory 48M --jobs 1");
    EXPECT_EQ(Report("with.jsonl").at("huge.gltf")["status"], "failed");
    EXPECT_EQ(Report("with.jsonl").at("huge.gltf")["cause"], HasAddressSanitizer() ? "crash" : "memory");
    EXPECT_EQ(lMade, HasAddressSanitizer() ? "" : lAll);
    fs::remove(mFolder / "in/huge.gltf");
    // Too little for any worker.
    Expect("in -o none --to bvh -q --memory 1 --jobs 1", HasAddressSanitizer() ? 1 : 3, "in/top.bvh: error: ");
    EXPECT_EQ(Names("none"), "");
    Expect("in -o none --to bvh -q", 0, "");
    ExpectWhole("none");
}

/// Runs whose worker waits for a pipe until the test writes to it: the first motion by name.
class KBatchGateTest : public KBatchTest
{
protected:
    void SetUp() override
    {
        KBatchTest::SetUp();
        ASSERT_EQ(::mkfifo((mFolder / "in/gate.bvh").c_str(), 0600), 0);
    }

    /// Waits until a worker has opened the pipe.
    int Enter() const { return ::open((mFolder / "in/gate.bvh").c_str(), O_WRONLY | O_CLOEXEC); }

    static void Open(int pGate)
    {
        const std::string lText = SmallBvh();
        EXPECT_EQ(::write(pGate, lText.data(), lText.size()), static_cast<ssize_t>(lText.size()));
        ::close(pGate);
    }
};

TEST_F(KBatchGateTest, Timeout)
{
    Expect("in in/gate.bvh -o out --to bvh -q --timeout 20 --dry-run", 0, "");
    Expect("in/gate.bvh -o out --to bvh -q --timeout 0.2", 1, "in/gate.bvh: error: took longer than --timeout 0.2\n");
    EXPECT_EQ(Names("out"), "");
    EXPECT_EQ(BatchFolder("out"), "made-1-of-1.jsonl ");
    Expect("--gather out -q", 1, "in/gate.bvh: error: took longer than --timeout 0.2\n");
}

TEST_F(KBatchGateTest, WorkerKilledFromOutside)
{
    const auto lRun = StartBatch("in/gate.bvh in -o out --to bvh -q --jobs 1");
    const int  lGate = Enter();
    ASSERT_EQ(::kill(lRun->GetChild(), SIGKILL), 0);
    EXPECT_EQ(lRun->Wait(), 1);
    ::close(lGate);
    EXPECT_EQ(lRun->GetErrors(), "in/gate.bvh: error: its worker ended with signal 9\n");
    ExpectWhole("out");
}

TEST_F(KBatchGateTest, OneRunOfAPartAtATime)
{
    const auto lRun = StartBatch("in in/gate.bvh -o out --to bvh -q --jobs 2");
    const int  lGate = Enter();
    Expect("in -o out --to bvh -q", 3,
           "out/.asf-batch/made-1-of-1.jsonl: error: is in use: another asf batch is writing this part of the collection\n");
    Open(lGate);
    EXPECT_EQ(lRun->Wait(), 0) << lRun->GetErrors();
    EXPECT_TRUE(fs::exists(mFolder / "out/in/gate.bvh"));
    Expect("in -o out --to bvh -q", 0, "");
}

// A pipe may have other contents each time.
TEST_F(KBatchGateTest, APipeIsAlwaysReadAgain)
{
    for (const char* lCounts : {": 1 made\n", ": 1 made\n"})
    {
        const auto lRun = StartBatch("in/gate.bvh -o out --to bvh");
        Open(Enter());
        EXPECT_EQ(lRun->Wait(), 0);
        EXPECT_NE(lRun->GetErrors().find(lCounts), std::string::npos) << lRun->GetErrors();
    }
}

TEST_F(KBatchGateTest, InterruptingStopsAndSaysHowToGoOn)
{
    // A terminal sends the signal to the worker, too.
    for (const auto& [lSignal, lIsToAll] :
         std::vector<std::pair<int, bool>>{{SIGINT, false}, {SIGTERM, false}, {SIGHUP, false}, {SIGINT, true}})
    {
        const std::string lOut = "out" + std::to_string(lSignal) + (lIsToAll ? "all" : "");
        const auto        lRun = StartBatch("in/gate.bvh in -o " + lOut + " --to bvh --jobs 1 --report r.jsonl");
        const int         lGate = Enter();
        ASSERT_EQ(::kill(lIsToAll ? -lRun->GetProcess() : lRun->GetProcess(), lSignal), 0);
        EXPECT_EQ(lRun->Wait(), -lSignal);
        ::close(lGate);
        EXPECT_NE(lRun->GetErrors().find("asf: stopped; the same call goes on from here\n"), std::string::npos) << lRun->GetErrors();
        EXPECT_NE(lRun->GetErrors().find(" of 6 motions"), std::string::npos) << lRun->GetErrors();
        EXPECT_EQ(lRun->GetErrors().find("error"), std::string::npos) << lRun->GetErrors();
        EXPECT_EQ(BatchFolder(lOut), "made-1-of-1.jsonl ");
        Expect("in -o " + lOut + " --to bvh -q", 0, "");
        ExpectWhole(lOut);
    }
}

/// Kills a run with all its workers.
class KBatchKillTest : public KBatchTest
{
protected:
    void SetUp() override
    {
        KBatchTest::SetUp();
        fs::copy_file(Sample("walker.asf"), mFolder / "in/small.asf", fs::copy_options::overwrite_existing);
        fs::copy_file(Sample("walk.amc"), mFolder / "in/01/a.amc", fs::copy_options::overwrite_existing);
        fs::copy_file(Sample("walk.amc"), mFolder / "in/01/b.amc", fs::copy_options::overwrite_existing);
        for (int i = 0; i < 6; ++i)
        {
            fs::copy_file(Sample("walk.bvh"), mFolder / ("in/walk" + std::to_string(i) + ".bvh"));
        }
        Expect("in -o whole --to bvh,glb -q", 0, "");
    }

    /// Starts a run and kills it a moment after it has noted \p pCount motions. False if it was done before.
    bool KillAfter(size_t pCount, const std::string& pCall)
    {
        const auto     lRun = StartBatch(pCall);
        const fs::path lManifest = mFolder / "out/.asf-batch/made-1-of-1.jsonl";
        const auto     lHasEnough = [&]
        {
            std::ifstream lLines(lManifest);
            return static_cast<size_t>(std::count(std::istreambuf_iterator<char>(lLines), {}, '\n')) >= pCount;
        };
        while (!lRun->HasEnded() && !lHasEnough())
        {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(std::uniform_int_distribution<int>(0, 4000)(mRandom)));
        return lRun->KillGroup() == -SIGKILL;
    }

    /// The outputs that the next run will not make, and which files they are.
    std::map<std::string, ino_t> Finished(const std::string& pCall)
    {
        const std::string            lPending = Batch(pCall + " --dry-run").mOut;
        std::map<std::string, ino_t> lFiles;
        for (const auto& [lName, lText] : Tree("out"))
        {
            const std::string lStem = "in/" + lName.substr(0, lName.rfind('.')) + ".";
            struct stat       lStat = {};
            if (lPending.find(lStem) == std::string::npos && ::stat((mFolder / ("out/" + lName)).c_str(), &lStat) == 0)
            {
                lFiles[lName] = lStat.st_ino;
            }
        }
        return lFiles;
    }

    std::mt19937 mRandom{11};
};

// At every moment: what is there is whole, what was finished is not made again, and the next run makes the rest and cleans up.
TEST_F(KBatchKillTest, GoesOnAfterAKill)
{
    const std::string lCall = "in -o out --to bvh,glb -q --jobs 3";
    int               lKilled = 0;
    for (size_t i = 0; i < 36 && !HasFailure(); ++i)
    {
        if (i % 3 == 0)
        {
            fs::remove_all(mFolder / "out"); // Else it goes on with what the last one left, which may have torn its manifest.
        }
        lKilled += KillAfter(i % 12, lCall) ? 1 : 0;
        for (const auto& [lName, lText] : Tree("out"))
        {
            EXPECT_TRUE(lText == Text("whole/" + lName)) << lName;
        }
        const std::map<std::string, ino_t> lFinished = Finished(lCall);
        if (i % 3 == 2)
        {
            Expect(lCall, 0, "");
            EXPECT_TRUE(Tree("out") == Tree("whole")) << Names("out");
            EXPECT_EQ(BatchFolder("out"), "made-1-of-1.jsonl ");
            Expect("--gather in -o out -q --verify", 0, "");
        }
        for (const auto& [lName, lFile] : lFinished)
        {
            struct stat lStat = {};
            EXPECT_EQ(::stat((mFolder / ("out/" + lName)).c_str(), &lStat), 0) << lName;
            EXPECT_EQ(lStat.st_ino, lFile) << lName << " was made again";
        }
    }
    std::printf("%d of 36 runs killed before their end\n", lKilled);
    EXPECT_GT(lKilled, 12);
}

// Replacing outputs: at every moment, one is the old or the new one, and none is taken for one changed by hand.
TEST_F(KBatchKillTest, ReplacesAfterAKill)
{
    const std::string lCall = "in -o out --to bvh,glb -q --jobs 2";
    Expect(lCall + " --fps 10", 0, "");
    const KBytes lOld = Tree("out");
    for (size_t i = 0; i < 8 && !HasFailure(); ++i)
    {
        KillAfter(11 + 2 * i, lCall);
        for (const auto& [lName, lText] : Tree("out"))
        {
            EXPECT_TRUE(lText == Text("whole/" + lName) || lText == lOld.at(lName)) << lName;
        }
    }
    Expect(lCall, 0, "");
    EXPECT_TRUE(Tree("out") == Tree("whole"));
    Expect("--gather in -o out -q --verify", 0, "");
}

} // namespace
