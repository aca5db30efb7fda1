#include <python/core/corelock.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace qexpython
{

namespace py = pybind11;

namespace
{

std::atomic<bool> sIsEnding{false};
int               sWithoutLock = 0; ///< Works without the lock; changed with it.
unsigned long     sMainThread = 0;

constexpr auto kBetweenLooks = std::chrono::milliseconds(100);
constexpr auto kLongestWait = std::chrono::seconds(5);

/// At the interpreter's end, with the lock.
void WaitForWork()
{
    sIsEnding = true;
    const auto lEnd = std::chrono::steady_clock::now() + kLongestWait;
    while (sWithoutLock > 0 && std::chrono::steady_clock::now() < lEnd)
    {
        PyThreadState* const lState = PyEval_SaveThread();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        PyEval_RestoreThread(lState);
    }
}

} // namespace

KWithoutLock::KWithoutLock()
{
    if (!sIsEnding)
    {
        ++sWithoutLock;
        mState = PyEval_SaveThread();
    }
}

KWithoutLock::~KWithoutLock()
{
    if (mState != nullptr)
    {
        PyEval_RestoreThread(mState);
        --sWithoutLock;
    }
}

qexsdk::KQexProgress StopAtSignals()
{
    auto lNext = std::chrono::steady_clock::now() + kBetweenLooks;
    return [lNext](double) mutable
    {
        if (sIsEnding)
        {
            return false;
        }
        const auto lNow = std::chrono::steady_clock::now();
        if (lNow < lNext || PyThread_get_thread_ident() != sMainThread)
        {
            return true;
        }
        lNext = lNow + kBetweenLooks;
        const py::gil_scoped_acquire lAcquire;
        return PyErr_CheckSignals() == 0;
    };
}

void WaitAtExit()
{
    sMainThread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
    py::module_::import("atexit").attr("register")(py::cpp_function(WaitForWork));
}

} // namespace qexpython
