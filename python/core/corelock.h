#ifndef PYTHON_CORE_CORELOCK_H
#define PYTHON_CORE_CORELOCK_H

#include <qexscene/kqexsampling.h>

#include <pybind11/pybind11.h>

/// \file
/// Work without Python's lock, signals, and the end of the interpreter.

namespace qexpython
{

/// Gives up Python's lock while it exists, so that other threads run. Once the interpreter ends it keeps the lock: a thread that asks for it
/// then would be ended within C++, which aborts the process.
class KWithoutLock
{
public:
    KWithoutLock();
    ~KWithoutLock();
    KWithoutLock(const KWithoutLock&) = delete;
    KWithoutLock& operator=(const KWithoutLock&) = delete;

private:
    PyThreadState* mState = nullptr; ///< Null: it was kept.
};

/// For work without the lock: cancels it when a signal has come whose handler raises, as that of Ctrl-C does, and when the interpreter
/// ends. Looks ten times a second, and for signals in the main thread alone, which gets them: waiting for the lock costs up to five
/// thousandths of a second.
qexsdk::KQexProgress StopAtSignals();

/// Lets the interpreter wait at its end until no work is without the lock, at most some seconds.
void WaitAtExit();

} // namespace qexpython

#endif
