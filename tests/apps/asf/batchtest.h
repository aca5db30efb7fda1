#ifndef TESTS_APPS_ASF_BATCHTEST_H
#define TESTS_APPS_ASF_BATCHTEST_H

#include <tests/apps/asf/converttest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qextest
{

/// Two frames of two joints.
inline std::string SmallBvh()
{
    return "HIERARCHY\nROOT hip\n{\n  OFFSET 0 0 0\n  CHANNELS 3 Zrotation Xrotation Yrotation\n  End Site\n  {\n    OFFSET 0 1 0\n  }\n}\n"
           "MOTION\nFrames: 2\nFrame Time: 0.1\n0 0 0\n0 10 0\n";
}

/// A program that runs while the test goes on, in a process group of its own. Its standard error goes to a file.
class KStartedProgram
{
public:
    KStartedProgram(std::vector<std::string> pArguments, const std::string& pFolder, std::string pErrors) : mErrors(std::move(pErrors))
    {
        std::vector<char*> lArguments;
        for (std::string& lArgument : pArguments)
        {
            lArguments.push_back(lArgument.data());
        }
        lArguments.push_back(nullptr);
        mProcess = ::fork();
        if (mProcess == 0)
        {
            ::setpgid(0, 0);
            ::signal(SIGINT, SIG_DFL); // A shell's background jobs ignore it.
            const int lOut = ::open(mErrors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
            ::dup2(lOut, STDOUT_FILENO);
            ::dup2(lOut, STDERR_FILENO);
            ::execv(::chdir(pFolder.c_str()) == 0 ? lArguments[0] : "", lArguments.data());
            ::_exit(127);
        }
        ::setpgid(mProcess, mProcess);
    }

    ~KStartedProgram()
    {
        if (mProcess > 0)
        {
            KillGroup();
        }
    }

    KStartedProgram(const KStartedProgram&) = delete;
    KStartedProgram& operator=(const KStartedProgram&) = delete;

    pid_t GetProcess() const { return mProcess; }

    /// True if it has ended; Wait() has its status.
    bool HasEnded() const
    {
        siginfo_t lInfo = {};
        return ::waitid(P_PID, static_cast<id_t>(mProcess), &lInfo, WEXITED | WNOHANG | WNOWAIT) == 0 && lInfo.si_pid != 0;
    }

    /// Its exit status, or minus the signal that ended it.
    int Wait()
    {
        int lStatus = 0;
        EXPECT_EQ(::waitpid(mProcess, &lStatus, 0), mProcess);
        mProcess = -1;
        return WIFSIGNALED(lStatus) ? -WTERMSIG(lStatus) : WEXITSTATUS(lStatus);
    }

    /// Kills it and all that it has started.
    int KillGroup()
    {
        ::kill(-mProcess, SIGKILL);
        return Wait();
    }

    /// A process that it has started and that has not ended; 0 without one.
    pid_t GetChild() const
    {
        namespace fs = std::filesystem;
        for (const fs::directory_entry& lTask : fs::directory_iterator("/proc/" + std::to_string(mProcess) + "/task"))
        {
            std::istringstream lChildren(ReadFile(lTask.path() / "children"));
            pid_t              lChild = 0;
            if (lChildren >> lChild)
            {
                return lChild;
            }
        }
        return 0;
    }

    std::string GetErrors() const { return ReadFile(mErrors); }

private:
    const std::string mErrors;
    pid_t             mProcess = -1;
};

/// A folder with a collection of five motions, two skeletons and a file of another kind below "in".
class KBatchTest : public testing::Test
{
protected:
    using KBytes = std::map<std::string, std::string>;

    static constexpr size_t kMotions = 5;

    void SetUp() override
    {
        Write("in/small.asf", SmallSkeleton());
        Write("in/01/a.amc", ThreeFrames());
        Write("in/01/b.amc", ThreeFrames());
        Write("in/02/own.asf", SmallSkeleton());
        Write("in/02/c.amc", ThreeFrames());
        Write("in/02/deep/d.amc", ThreeFrames()); // Its skeleton is in the folder above.
        Write("in/top.bvh", SmallBvh());
        Write("in/notes.txt", "not a motion");
        mOptions.mFolder = mFolder.Path().string();
    }

    /// Writes a file below the test's folder, and the folders that it needs.
    void Write(const std::string& pName, const std::string& pText)
    {
        std::filesystem::create_directories((mFolder / pName).parent_path());
        WriteFile(mFolder / pName, pText);
    }

    std::string Text(const std::string& pName) { return ReadFile(mFolder / pName); }

    KRunResult Run(const std::vector<std::string>& pArguments) { return RunAsf(pArguments, mOptions); }

    static std::vector<std::string> WordsOf(const std::string& pCall)
    {
        std::istringstream       lWords(pCall);
        std::vector<std::string> lArguments{"batch"};
        for (std::string lWord; lWords >> lWord;)
        {
            lArguments.push_back(lWord);
        }
        return lArguments;
    }

    /// Starts `asf batch` with the words of \p pCall.
    std::unique_ptr<KStartedProgram> StartBatch(const std::string& pCall)
    {
        static int               sNumber = 0;
        std::vector<std::string> lArguments = WordsOf(pCall);
        lArguments.insert(lArguments.begin(), QEX_ASF_PROGRAM);
        return std::make_unique<KStartedProgram>(lArguments, mFolder.Path().string(), mFolder / ("errors" + std::to_string(++sNumber)));
    }

    /// Runs `asf batch` with the words of \p pCall.
    KRunResult Batch(const std::string& pCall) { return Run(WordsOf(pCall)); }

    /// Runs it, expects its exit status, and that its messages have \p pPart, or are empty if that is.
    void Expect(const std::string& pCall, int pExit, const std::string& pPart)
    {
        const KRunResult lResult = Batch(pCall);
        EXPECT_EQ(lResult.mExit, pExit) << pCall << "\n" << lResult.mErr;
        if (pPart.empty())
        {
            EXPECT_EQ(lResult.mErr, "") << pCall;
        }
        EXPECT_NE(lResult.mErr.find(pPart), std::string::npos) << pCall << "\n" << lResult.mErr << "lacks\n" << pPart;
    }

    /// All files below a folder but the manifests; none if there is no such folder.
    KBytes Tree(const std::string& pFolder)
    {
        KBytes lTree;
        if (!std::filesystem::exists(mFolder / pFolder))
        {
            return lTree;
        }
        for (const auto& lEntry : std::filesystem::recursive_directory_iterator(mFolder / pFolder))
        {
            const std::string lName = std::filesystem::relative(lEntry.path(), mFolder / pFolder).string();
            if (lEntry.is_regular_file() && lName.rfind(".asf-batch", 0) != 0)
            {
                lTree[lName] = ReadFile(lEntry.path());
            }
        }
        return lTree;
    }

    /// The names of Tree(), each followed by a space.
    std::string Names(const std::string& pFolder)
    {
        std::string lNames;
        for (const auto& [lName, lText] : Tree(pFolder))
        {
            lNames += lName + " ";
        }
        return lNames;
    }

    /// What lies in the folder of manifests.
    std::string BatchFolder(const std::string& pOutput)
    {
        std::set<std::string> lNames;
        for (const auto& lEntry : std::filesystem::directory_iterator(mFolder / pOutput / ".asf-batch"))
        {
            lNames.insert(lEntry.path().filename().string());
        }
        std::string lAll;
        for (const std::string& lName : lNames)
        {
            lAll += lName + " ";
        }
        return lAll;
    }

    /// Expects in \p pOutput what one run makes of the collection as BVH, and nothing else.
    void ExpectWhole(const std::string& pOutput)
    {
        if (!std::filesystem::exists(mFolder / "whole"))
        {
            Expect("in -o whole --to bvh -q", 0, "");
        }
        EXPECT_EQ(Tree(pOutput), Tree("whole"));
        EXPECT_EQ(BatchFolder(pOutput), "made-1-of-1.jsonl ");
    }

    /// The objects of a report, by their motions' names.
    std::map<std::string, nlohmann::json> Report(const std::string& pName)
    {
        std::map<std::string, nlohmann::json> lObjects;
        std::istringstream                    lLines(Text(pName));
        for (std::string lLine; std::getline(lLines, lLine);)
        {
            nlohmann::json lObject = nlohmann::json::parse(lLine, nullptr, false);
            EXPECT_TRUE(lObject.is_object()) << lLine;
            const std::string lFile = lObject["file"].is_string() ? lObject["file"].get<std::string>() : lObject["file"].dump();
            EXPECT_TRUE(lObjects.emplace(lFile, lObject).second) << lFile << " appears twice";
        }
        return lObjects;
    }

    /// Runs it with a report. \return the motions of \p pStatus, each followed by a space
    std::string With(const std::string& pStatus, const std::string& pCall)
    {
        std::string lNames;
        Batch(pCall + " -q --report with.jsonl");
        for (const auto& [lName, lObject] : Report("with.jsonl"))
        {
            lNames += lObject["status"] == pStatus ? lName + " " : "";
        }
        return lNames;
    }

    /// Gives a file another time without changing it.
    void Touch(const std::string& pName)
    {
        std::filesystem::last_write_time(mFolder / pName, std::filesystem::last_write_time(mFolder / pName) + std::chrono::seconds(2));
    }

    KTempDir    mFolder;
    KRunOptions mOptions;
};

} // namespace qextest

#endif
