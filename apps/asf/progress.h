#ifndef APPS_ASF_PROGRESS_H
#define APPS_ASF_PROGRESS_H

#include <apps/asf/console.h>

#include <chrono>
#include <string>

namespace asfapp
{

/// A bar on standard error that shows how far long work is. Only on a terminal, not when the console is quiet, and only when the
/// work takes a while; it takes itself away at the end.
class KProgress
{
public:
    KProgress(std::string pWhat, const KConsole& pConsole);
    ~KProgress();
    KProgress(const KProgress&) = delete;
    KProgress& operator=(const KProgress&) = delete;

    /// \p pFraction of the work is done, 0 to 1. Always true: the work goes on.
    bool Show(double pFraction);

private:
    using KClock = std::chrono::steady_clock;

    std::string        mWhat;
    bool               mOn;
    bool               mShown = false;
    KClock::time_point mNext;
};

} // namespace asfapp

#endif
