#ifndef APPS_ASF_BATCH_INTERRUPT_H
#define APPS_ASF_BATCH_INTERRUPT_H

#include <atomic>

namespace asfapp
{

/// While one lives, the first signal that would end the program (Ctrl-C, SIGTERM) only sets a flag; the second ends it.
class KInterrupt
{
public:
    explicit KInterrupt(std::atomic<bool>& pFlag);
    ~KInterrupt();
    KInterrupt(const KInterrupt&) = delete;
    KInterrupt& operator=(const KInterrupt&) = delete;

private:
    void (*mOld[2])(int) = {};
};

/// Ends the program by the signal that was received, as if there had been no KInterrupt.
void RaiseInterrupt();

} // namespace asfapp

#endif
