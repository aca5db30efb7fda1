#include <tests/support/runprogram.h>

#include <tests/support/testfolders.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qextest
{

namespace
{

/// Runs in the child: between fork and exec, only calls that are safe in a multithreaded program.
[[noreturn]] void RunChild(char* const* pArguments, char* const* pEnvironment, const char* pFolder, const int* pStreams)
{
    if (*pFolder != '\0' && chdir(pFolder) != 0)
    {
        _exit(127);
    }
    for (int lIndex = 0; lIndex < 3; ++lIndex)
    {
        if (dup2(pStreams[lIndex], lIndex) < 0)
        {
            _exit(127);
        }
    }
    execvpe(pArguments[0], pArguments, pEnvironment);
    _exit(127);
}

std::vector<std::string> EnvironmentWith(const std::map<std::string, std::string>& pExtra)
{
    std::vector<std::string> lResult;
    for (char** lEntry = environ; *lEntry != nullptr; ++lEntry)
    {
        const std::string lText = *lEntry;
        if (pExtra.count(lText.substr(0, lText.find('='))) == 0)
        {
            lResult.push_back(lText);
        }
    }
    for (const auto& [lName, lValue] : pExtra)
    {
        lResult.push_back(lName + "=" + lValue);
    }
    return lResult;
}

std::vector<char*> Pointers(std::vector<std::string>& pTexts)
{
    std::vector<char*> lResult;
    for (std::string& lText : pTexts)
    {
        lResult.push_back(lText.data());
    }
    lResult.push_back(nullptr);
    return lResult;
}

} // namespace

KRunResult RunProgram(const std::vector<std::string>& pArguments, const KRunOptions& pOptions)
{
    // Files instead of pipes: neither side can block the other, whatever the sizes.
    KTempDir          lTemp;
    const std::string lOutPath = lTemp / "out";
    const std::string lErrPath = lTemp / "err";
    WriteFile(lTemp / "in", pOptions.mInput);

    std::vector<std::string> lArguments = pArguments;
    std::vector<std::string> lEnvironment = EnvironmentWith(pOptions.mEnvironment);
    std::vector<char*>       lArgumentPointers = Pointers(lArguments);
    std::vector<char*>       lEnvironmentPointers = Pointers(lEnvironment);
    int                      lPipe[2] = {-1, -1};
    if (pOptions.mWriteInput && pipe2(lPipe, O_CLOEXEC) != 0)
    {
        return {};
    }
    const int lStreams[3] = {pOptions.mWriteInput ? lPipe[0] : open((lTemp / "in").c_str(), O_RDONLY | O_CLOEXEC),
                             open(lOutPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600),
                             open(lErrPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};

    const pid_t lChild = fork();
    if (lChild == 0)
    {
        RunChild(lArgumentPointers.data(), lEnvironmentPointers.data(), pOptions.mFolder.c_str(), lStreams);
    }
    for (const int lStream : lStreams)
    {
        close(lStream);
    }

    if (pOptions.mWriteInput)
    {
        // A program that stops reading early would otherwise kill this one with SIGPIPE.
        const auto lBefore = std::signal(SIGPIPE, SIG_IGN);
        pOptions.mWriteInput(lPipe[1]);
        close(lPipe[1]);
        std::signal(SIGPIPE, lBefore);
    }

    KRunResult    lResult;
    struct rusage lUsage = {};
    int           lStatus = 0;
    if (lChild > 0 && wait4(lChild, &lStatus, 0, &lUsage) == lChild)
    {
        lResult.mPeak = lUsage.ru_maxrss;
        lResult.mExit = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : -1;
        lResult.mSignal = WIFSIGNALED(lStatus) ? WTERMSIG(lStatus) : 0;
    }
    lResult.mOut = ReadFile(lOutPath);
    lResult.mErr = ReadFile(lErrPath);
    return lResult;
}

} // namespace qextest
