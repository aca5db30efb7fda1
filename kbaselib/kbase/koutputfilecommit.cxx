#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/koutputnames.h>
#include <kbaselib/kbase/kpendingfiles.h>
#include <kbaselib/kbase/ksystem.h>

#include <cerrno>
#include <new>

namespace qexsdk
{

KOutputFile* KOutputFile::CommitAll(KOutputFile* const* pOutputs, size_t pCount)
{
    KOutputFile* lFailed = nullptr;
    for (size_t i = 0; i < pCount && lFailed == nullptr; ++i)
    {
        if (!pOutputs[i]->Prepare())
        {
            lFailed = pOutputs[i];
        }
    }
    size_t lDone = 0;
    for (; lDone < pCount && lFailed == nullptr; ++lDone)
    {
        // The last one needs no backup: nothing after it can fail.
        if ((lDone + 1 < pCount && !pOutputs[lDone]->BackUpOld()) || !pOutputs[lDone]->Commit())
        {
            lFailed = pOutputs[lDone];
        }
    }
    for (size_t i = 0; i < pCount && lFailed != nullptr; ++i)
    {
        if (i < lDone && pOutputs[i] != lFailed)
        {
            pOutputs[i]->RestoreOld();
        }
        else
        {
            pOutputs[i]->Discard();
        }
    }
    for (size_t i = 0; i < pCount; ++i)
    {
        pOutputs[i]->RemoveBackup();
    }
    return lFailed;
}

/// Hard-links the file that is about to be replaced to a temporary name. True also when there is no such file, or the file system has
/// no hard links.
bool KOutputFile::BackUpOld()
{
    const KSystemCalls& lCalls = KSystemInUse();
    mHadOld = true;
    if (mTemporary.empty())
    {
        return true;
    }
    for (int i = 0; i < kMaxTemporaryNames; ++i)
    {
        try
        {
            mBackup = KTemporaryName(mTarget);
        }
        catch (const std::bad_alloc&)
        {
            return Fail(ENOMEM);
        }
        mBackupSlot = KPendingFileAdd(mBackup);
        if (lCalls.mLink(mTarget.c_str(), mBackup.c_str()) == 0)
        {
            return true;
        }
        const int lError = errno;
        KPendingFileRemove(mBackupSlot);
        mBackup.clear();
        mHadOld = lError != ENOENT;
        if (lError == ENOENT || lError == EPERM || lError == EOPNOTSUPP || lError == EMLINK || lError == ENOSYS)
        {
            return true;
        }
        if (lError != EEXIST)
        {
            return Fail(lError);
        }
    }
    return Fail(EEXIST);
}

/// Undoes a commit: restores the backup, or removes the target when there was no file before.
void KOutputFile::RestoreOld()
{
    mResult = false;
    if (!mBackup.empty() && KSystemInUse().mRename(mBackup.c_str(), mTarget.c_str()) == 0)
    {
        KPendingFileRemove(mBackupSlot);
        mBackup.clear();
    }
    else if (!mHadOld)
    {
        KSystemInUse().mUnlink(mTarget.c_str());
    }
}

void KOutputFile::RemoveBackup()
{
    if (mBackup.empty())
    {
        return;
    }
    KSystemInUse().mUnlink(mBackup.c_str());
    KPendingFileRemove(mBackupSlot);
    mBackup.clear();
}

} // namespace qexsdk
