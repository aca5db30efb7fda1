#include <kbaselib/kbase/kpendingfiles.h>

#include <kbaselib/kbase/ksystem.h>

#include <atomic>
#include <cstring>

namespace qexsdk
{

namespace
{

/// A temporary file to remove when a signal ends the process. Holds a copy of the path, so that the signal handler never reads memory
/// that may have been freed.
struct KPendingFile
{
    std::atomic<int> mState; ///< 0 free, 1 being filled in, 2 pending.
    char             mPath[kMaxPathSize];
};

constexpr int kMaxPending = 512; ///< Takes of one figure may be as many files. Pages without an entry use no memory.

KPendingFile sPending[kMaxPending];

} // namespace

int KPendingFileAdd(const std::string& pPath)
{
    if (pPath.size() >= kMaxPathSize)
    {
        return -1;
    }
    for (int i = 0; i < kMaxPending; ++i)
    {
        int lFree = 0;
        if (!sPending[i].mState.compare_exchange_strong(lFree, 1))
        {
            continue;
        }
        std::memcpy(sPending[i].mPath, pPath.c_str(), pPath.size() + 1);
        sPending[i].mState.store(2);
        return i;
    }
    return -1;
}

void KPendingFileRemove(int& pSlot)
{
    if (pSlot >= 0)
    {
        sPending[pSlot].mState.store(0);
    }
    pSlot = -1;
}

void KPendingFilesUnlink()
{
    // The system's own call, not a test's: a signal handler may only call async-signal-safe functions. Its table exists: opening the
    // first pending file has used it.
    for (KPendingFile& lFile : sPending)
    {
        if (lFile.mState.load() == 2)
        {
            KSystemOwn().mUnlink(lFile.mPath);
        }
    }
}

} // namespace qexsdk
