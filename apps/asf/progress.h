#ifndef APPS_ASF_PROGRESS_H
#define APPS_ASF_PROGRESS_H

#include <apps/asf/console.h>
#include <qexioplugins/motion/kqexmotionio.h>

#include <chrono>
#include <string>

namespace asfapp
{

/// A progress bar on standard error. Shown only on a terminal, not when the console is quiet, and only for long work; the destructor
/// removes it.
class KProgress
{
public:
    KProgress(std::string pWhat, const KConsole& pConsole);
    ~KProgress();
    KProgress(const KProgress&) = delete;
    KProgress& operator=(const KProgress&) = delete;

    /// \p pFraction: the part of the work that is done, 0 to 1. Always true (never cancels).
    bool Show(double pFraction);

    /// Show() for the library, as long as this object lives.
    qexsdk::KQexProgress GetFunction()
    {
        return [this](double pFraction)
        {
            return Show(pFraction);
        };
    }

private:
    using KClock = std::chrono::steady_clock;

    std::string        mWhat;
    bool               mEnabled;
    bool               mShown = false;
    KClock::time_point mNext;
};

} // namespace asfapp

#endif
