#include <apps/asf/batch/batchprogress.h>

#include <cmath>
#include <cstdio>
#include <numeric>

namespace asfapp
{

namespace
{

constexpr std::chrono::milliseconds kTerminalInterval(100);
constexpr std::chrono::seconds      kInterval(30);

std::string TimeText(double pSeconds)
{
    const auto        lSeconds = static_cast<long long>(std::llround(pSeconds));
    const std::string lRest = std::to_string(lSeconds % 60) + " s";
    const long long   lMinutes = lSeconds / 60;
    return lMinutes == 0   ? lRest
           : lMinutes < 60 ? std::to_string(lMinutes) + " min " + lRest
                           : std::to_string(lMinutes / 60) + " h " + std::to_string(lMinutes % 60) + " min";
}

} // namespace

KBatchProgress::KBatchProgress(const KConsole& pConsole)
    : mIsQuiet(pConsole.IsQuiet()), mIsTerminal(pConsole.IsErrorTerminal()), mNext(KClock::now() + kInterval)
{
}

void KBatchProgress::Start(size_t pTotal)
{
    mTotal = pTotal;
    mStart = KClock::now();
    mNext = mStart + (mIsTerminal ? KClock::duration(kTerminalInterval) : KClock::duration(kInterval));
}

double KBatchProgress::GetSeconds() const
{
    return std::chrono::duration<double>(KClock::now() - mStart).count();
}

std::string KBatchProgress::GetTime() const
{
    return TimeText(GetSeconds());
}

std::string KBatchProgress::GetCounts() const
{
    std::string lText;
    for (size_t i = 0; i < mCounts.size(); ++i)
    {
        if (mCounts[i] > 0)
        {
            lText += (lText.empty() ? "" : ", ") + std::to_string(mCounts[i]) + " " + WordOf(static_cast<EBatchStatus>(i));
        }
    }
    return lText.empty() ? "nothing to do" : lText;
}

/// "asf: 120 of 2500 motions, 31 a second, 1 min 17 s left, 2 failed". What was made before takes no time, so it does not count for the
/// time left.
std::string KBatchProgress::GetText() const
{
    const size_t lSlow = mDone - mCounts[eBATCH_UNCHANGED];
    const double lRate = static_cast<double>(lSlow) / std::max(GetSeconds(), 1e-3);
    char         lNumber[32];
    std::snprintf(lNumber, sizeof lNumber, "%.*f", lRate < 10 ? 1 : 0, lRate);
    std::string lText = "asf: " + std::to_string(mDone) + " of " + std::to_string(mTotal) + " motions, " + lNumber + " a second";
    if (lSlow > 0)
    {
        lText += ", " + TimeText(static_cast<double>(mTotal - mDone) / lRate) + " left";
    }
    return mCounts[eBATCH_FAILED] > 0 ? lText + ", " + std::to_string(mCounts[eBATCH_FAILED]) + " failed" : lText;
}

void KBatchProgress::Count(const KBatchResult& pResult)
{
    ++mCounts[pResult.mStatus];
    ++mDone;
    if (mIsQuiet || KClock::now() < mNext)
    {
        return;
    }
    mNext = KClock::now() + (mIsTerminal ? KClock::duration(kTerminalInterval) : KClock::duration(kInterval));
    mIsShown = mIsTerminal;
    std::fprintf(stderr, mIsTerminal ? "\r\033[K%s" : "%s\n", GetText().c_str());
    std::fflush(stderr);
}

void KBatchProgress::Clear()
{
    if (mIsShown)
    {
        std::fputs("\r\033[K", stderr);
    }
    mIsShown = false;
}

} // namespace asfapp
