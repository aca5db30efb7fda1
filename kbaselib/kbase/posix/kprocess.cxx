#include <kbaselib/kbase/kprocess.h>

#include <kbaselib/kbase/posix/kposix.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

extern char** environ;

namespace qexsdk
{

namespace
{

using KClock = std::chrono::steady_clock;

constexpr int kTickMilliseconds = 50; ///< How soon a cancel is seen.

/// Both ends of a pipe. The program's end is closed in this process once it has been started.
class KPipe
{
public:
    KPipe()
    {
        const bool lOk = ::pipe(mEnds) == 0 && ::fcntl(mEnds[0], F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(mEnds[1], F_SETFD, FD_CLOEXEC) == 0;
        mError = lOk ? 0 : errno;
    }
    ~KPipe()
    {
        CloseRead();
        CloseWrite();
    }
    KPipe(const KPipe&) = delete;
    KPipe& operator=(const KPipe&) = delete;

    int  GetError() const { return mError; }
    int  GetRead() const { return mEnds[0]; }
    int  GetWrite() const { return mEnds[1]; }
    void CloseRead() { Close(mEnds[0]); }
    void CloseWrite() { Close(mEnds[1]); }

private:
    static void Close(int& pEnd)
    {
        if (pEnd >= 0)
        {
            ::close(pEnd);
        }
        pEnd = -1;
    }

    int mEnds[2] = {-1, -1};
    int mError = 0;
};

/// Held from making pipes to starting the program: no other program that is started meanwhile inherits them.
std::mutex sStartMutex;

/// What the started program gets as its streams.
class KFileActions
{
public:
    KFileActions() { posix_spawn_file_actions_init(&mActions); }
    ~KFileActions() { posix_spawn_file_actions_destroy(&mActions); }
    KFileActions(const KFileActions&) = delete;
    KFileActions& operator=(const KFileActions&) = delete;

    int Set(int pOut, int pErr)
    {
        int lError = posix_spawn_file_actions_addopen(&mActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        lError = lError != 0 ? lError : posix_spawn_file_actions_adddup2(&mActions, pOut, STDOUT_FILENO);
        return lError != 0 ? lError : posix_spawn_file_actions_adddup2(&mActions, pErr, STDERR_FILENO);
    }

    const posix_spawn_file_actions_t* Get() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions;
};

int Start(const std::vector<std::string>& pArguments, int pOut, int pErr, pid_t& pProcess)
{
    std::vector<char*> lArguments;
    for (const std::string& lArgument : pArguments)
    {
        lArguments.push_back(const_cast<char*>(lArgument.c_str()));
    }
    lArguments.push_back(nullptr);
    KFileActions lActions;
    const int    lError = lActions.Set(pOut, pErr);
    return lError != 0 ? lError : posix_spawn(&pProcess, lArguments.front(), lActions.Get(), nullptr, lArguments.data(), environ);
}

void Keep(const char* pData, size_t pSize, size_t pMax, std::string& pText) noexcept
{
    try
    {
        pText.append(pData, std::min(pSize, pMax - std::min(pMax, pText.size())));
    }
    catch (const std::exception&)
    {
        return; // There is no memory for it.
    }
}

/// Reads what is there. False at the end.
bool ReadSome(int pFile, size_t pMax, std::string& pText)
{
    char          lBytes[65536];
    const ssize_t lRead = ::read(pFile, lBytes, sizeof lBytes);
    if (lRead > 0)
    {
        Keep(lBytes, static_cast<size_t>(lRead), pMax, pText);
    }
    return lRead > 0 || (lRead < 0 && (errno == EINTR || errno == EAGAIN));
}

/// Reads both streams until they end; kills the program when its time is over or it is cancelled.
void ReadStreams(const KProcessOptions& pOptions, pid_t pProcess, KPipe& pOut, KPipe& pErr, KProcessResult& pResult)
{
    const auto lEnd = KClock::now() + std::chrono::duration<double>(pOptions.mSeconds);
    bool       lIsKilled = false;
    while (pOut.GetRead() >= 0 || pErr.GetRead() >= 0)
    {
        struct pollfd lPoll[2] = {{pOut.GetRead(), POLLIN, 0}, {pErr.GetRead(), POLLIN, 0}}; // Negative ones are ignored.
        const int     lReady = ::poll(lPoll, 2, kTickMilliseconds);
        if (lReady > 0 && lPoll[0].revents != 0 && !ReadSome(pOut.GetRead(), pOptions.mMaxText, pResult.mOut))
        {
            pOut.CloseRead();
        }
        if (lReady > 0 && lPoll[1].revents != 0 && !ReadSome(pErr.GetRead(), pOptions.mMaxText, pResult.mErr))
        {
            pErr.CloseRead();
        }
        const bool lIsLate = pOptions.mSeconds > 0 && KClock::now() >= lEnd;
        if (!lIsKilled && (lIsLate || (pOptions.mIsCancelled != nullptr && *pOptions.mIsCancelled)))
        {
            lIsKilled = true;
            pResult.mTimedOut = lIsLate;
            ::kill(pProcess, SIGKILL);
        }
    }
}

void Wait(pid_t pProcess, KProcessResult& pResult)
{
    int           lStatus = 0;
    struct rusage lUsage = {};
    while (::wait4(pProcess, &lStatus, 0, &lUsage) < 0 && errno == EINTR)
    {
    }
    pResult.mExit = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : -1;
    pResult.mSignal = WIFSIGNALED(lStatus) ? WTERMSIG(lStatus) : 0;
    const auto lSeconds = [](const struct timeval& pTime)
    {
        return static_cast<double>(pTime.tv_sec) + static_cast<double>(pTime.tv_usec) * 1e-6;
    };
    pResult.mCpuSeconds = lSeconds(lUsage.ru_utime) + lSeconds(lUsage.ru_stime);
#ifdef __APPLE__
    pResult.mPeakMemory = static_cast<uint64_t>(lUsage.ru_maxrss);
#else
    pResult.mPeakMemory = static_cast<uint64_t>(lUsage.ru_maxrss) * 1024;
#endif
}

KProcessResult Run(const KProcessOptions& pOptions)
{
    KProcessResult               lResult;
    std::unique_lock<std::mutex> lStarting(sStartMutex);
    KPipe                        lOut;
    KPipe                        lErr;
    pid_t                        lProcess = -1;
    lResult.mError = lOut.GetError() != 0 ? lOut.GetError() : lErr.GetError();
    if (lResult.mError == 0)
    {
        lResult.mError = Start(pOptions.mArguments, lOut.GetWrite(), lErr.GetWrite(), lProcess);
    }
    lStarting.unlock();
    if (lResult.mError != 0)
    {
        return lResult;
    }
    lOut.CloseWrite();
    lErr.CloseWrite();
    ReadStreams(pOptions, lProcess, lOut, lErr, lResult);
    Wait(lProcess, lResult);
    return lResult;
}

std::string ProgramPath()
{
#ifdef __APPLE__
    char     lName[4096];
    uint32_t lLength = sizeof lName;
    return _NSGetExecutablePath(lName, &lLength) == 0 ? std::string(lName) : std::string();
#else
    char          lPath[4096];
    const ssize_t lSize = ::readlink("/proc/self/exe", lPath, sizeof lPath);
    return lSize > 0 && static_cast<size_t>(lSize) < sizeof lPath ? std::string(lPath, static_cast<size_t>(lSize)) : std::string();
#endif
}

bool LimitMemory(uint64_t pBytes)
{
    struct rlimit lLimit = {};
    if (::getrlimit(RLIMIT_AS, &lLimit) != 0)
    {
        return false;
    }
    lLimit.rlim_cur = lLimit.rlim_max == RLIM_INFINITY ? pBytes : std::min<rlim_t>(pBytes, lLimit.rlim_max);
    if (::setrlimit(RLIMIT_AS, &lLimit) != 0)
    {
        return false;
    }
    // A limit that is passed already takes nothing away: what was freed before would still be given out again.
    const size_t lPage = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    void* const  lProbe = ::mmap(nullptr, lPage, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return lProbe != MAP_FAILED && ::munmap(lProbe, lPage) == 0;
}

void AtFork(void (*pBefore)(), void (*pAfter)())
{
    ::pthread_atfork(pBefore, pAfter, pAfter);
}

} // namespace

void SetProcessCalls(KSystemCalls& pCalls)
{
    pCalls.mRun = Run;
    pCalls.mProgramPath = ProgramPath;
    pCalls.mLimitMemory = LimitMemory;
    pCalls.mProcessId = ::getpid;
    pCalls.mAtFork = AtFork;
}

} // namespace qexsdk
