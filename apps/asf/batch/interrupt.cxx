#include <apps/asf/batch/interrupt.h>

#include <csignal>

namespace asfapp
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM};

std::atomic<bool>*         sFlag = nullptr;
volatile std::sig_atomic_t sSignal = 0;

extern "C" void NoteInterrupt(int pSignal)
{
    sSignal = pSignal;
    sFlag->store(true);
    std::signal(pSignal, SIG_DFL);
}

} // namespace

KInterrupt::KInterrupt(std::atomic<bool>& pFlag)
{
    sFlag = &pFlag;
    for (int i = 0; i < 2; ++i)
    {
        mOld[i] = std::signal(kSignals[i], NoteInterrupt);
        if (mOld[i] == SIG_IGN)
        {
            std::signal(kSignals[i], SIG_IGN); // What the parent process ignores stays ignored.
        }
    }
}

KInterrupt::~KInterrupt()
{
    for (int i = 0; i < 2; ++i)
    {
        std::signal(kSignals[i], mOld[i]);
    }
}

void RaiseInterrupt()
{
    if (sSignal != 0)
    {
        std::signal(sSignal, SIG_DFL);
        std::raise(sSignal);
    }
}

} // namespace asfapp
