#include <apps/asf/progress.h>

#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace asfapp
{

namespace
{

constexpr std::chrono::milliseconds kFirstDelay(400);
constexpr std::chrono::milliseconds kInterval(80);
constexpr size_t                    kWidth = 30;

} // namespace

KProgress::KProgress(std::string pWhat, const KConsole& pConsole)
    : mWhat(std::move(pWhat)),
      mEnabled(!pConsole.IsQuiet() && qexsdk::KSystemInUse().mIsTerminal(qexsdk::kStandardError)),
      mNext(KClock::now() + kFirstDelay)
{
}

KProgress::~KProgress()
{
    if (mShown)
    {
        std::fputs("\r\033[K", stderr);
    }
}

bool KProgress::Show(double pFraction)
{
    if (mEnabled && KClock::now() >= mNext)
    {
        mNext = KClock::now() + kInterval;
        mShown = true;
        const double      lDone = std::min(std::max(pFraction, 0.0), 1.0);
        const size_t      lFilled = static_cast<size_t>(lDone * static_cast<double>(kWidth));
        const std::string lBar = std::string(lFilled, '#') + std::string(kWidth - lFilled, '.');
        std::fprintf(stderr, "\r\033[K%s [%s] %3d%%", mWhat.c_str(), lBar.c_str(), static_cast<int>(lDone * 100));
        std::fflush(stderr);
    }
    return true;
}

} // namespace asfapp
