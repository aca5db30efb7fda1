#include <kbaselib/kbase/posix/kposix.h>

#include <atomic>
#include <csignal>

namespace qexsdk
{

namespace
{

void CatchSignals();

std::atomic<void (*)()>         sAtEnd{nullptr};
std::atomic<std::atomic<bool>*> sPostponed{nullptr};
std::atomic<int>                sSignal{0};

extern "C" void EndBySignal(int pSignal)
{
    std::atomic<bool>* const lPostponed = sPostponed.exchange(nullptr);
    if (lPostponed != nullptr)
    {
        sSignal = pSignal;
        CatchSignals(); // Again, for the next one.
        lPostponed->store(true);
        return;
    }
    sAtEnd.load()();
    // SA_RESETHAND has restored the default action, so the shell sees which signal ended the process.
    ::raise(pSignal);
}

/// Async-signal-safe.
void CatchSignals()
{
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
}

void CatchEnd(void (*pHandler)())
{
    sAtEnd = pHandler;
    CatchSignals();
    struct sigaction lAction = {};
    lAction.sa_handler = SIG_IGN;
    sigemptyset(&lAction.sa_mask);
    ::sigaction(SIGPIPE, &lAction, nullptr);
}

void PostponeEnd(std::atomic<bool>* pFlag)
{
    if (pFlag != nullptr)
    {
        sSignal = 0;
    }
    sPostponed = pFlag;
}

void EndByPostponed()
{
    sPostponed = nullptr;
    if (sSignal != 0)
    {
        ::raise(sSignal);
    }
}

} // namespace

void SetSignalCalls(KSystemCalls& pCalls)
{
    pCalls.mCatchEnd = CatchEnd;
    pCalls.mPostponeEnd = PostponeEnd;
    pCalls.mEndByPostponed = EndByPostponed;
}

} // namespace qexsdk
