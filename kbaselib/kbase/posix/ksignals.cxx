#include <kbaselib/kbase/posix/kposix.h>

#include <atomic>
#include <csignal>

namespace qexsdk
{

namespace
{

std::atomic<void (*)()> sAtEnd{nullptr};

extern "C" void EndBySignal(int pSignal)
{
    sAtEnd.load()();
    // SA_RESETHAND has restored the default action, so the shell sees which signal ended the process.
    ::raise(pSignal);
}

void CatchEnd(void (*pHandler)())
{
    sAtEnd = pHandler;
    struct sigaction lAction = {};
    lAction.sa_handler = EndBySignal;
    lAction.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    sigemptyset(&lAction.sa_mask);
    for (const int lSignal : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction lOld = {};
        if (::sigaction(lSignal, nullptr, &lOld) == 0 && lOld.sa_handler != SIG_IGN)
        {
            ::sigaction(lSignal, &lAction, nullptr);
        }
    }
    lAction.sa_handler = SIG_IGN;
    lAction.sa_flags = 0;
    ::sigaction(SIGPIPE, &lAction, nullptr);
}

} // namespace

void SetSignalCalls(KSystemCalls& pCalls)
{
    pCalls.mCatchEnd = CatchEnd;
}

} // namespace qexsdk
