#include <kbaselib/kbase/kpendingfiles.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <unistd.h>

namespace qexsdk
{

namespace
{

/// A temporary file to remove when a signal ends the process. Holds a copy of the path, so that the signal handler never reads memory
/// that may have been freed.
struct KPendingFile
{
    std::atomic<int> mState; ///< 0 free, 1 being filled in, 2 pending.
    char             mPath[PATH_MAX];
};

constexpr int kMaxPending = 512; ///< Takes of one figure may be as many files. Pages without an entry use no memory.

KPendingFile sPending[kMaxPending];

} // namespace

int KPendingFileAdd(const std::string& pPath)
{
    if (pPath.size() >= PATH_MAX)
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
    // unlink() itself, not the table's: a signal handler may only call async-signal-safe functions.
    for (KPendingFile& lFile : sPending)
    {
        if (lFile.mState.load() == 2)
        {
            ::unlink(lFile.mPath);
        }
    }
}

} // namespace qexsdk
