#include <kbaselib/kbase/kfilecalls.h>
#include <kbaselib/kbase/koutputfile.h>
#include <kbaselib/kbase/koutputnames.h>
#include <kbaselib/kbase/kpendingfiles.h>

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
        // Nothing comes behind the last one that could still fail.
        if ((lDone + 1 < pCount && !pOutputs[lDone]->KeepOld()) || !pOutputs[lDone]->Commit())
        {
            lFailed = pOutputs[lDone];
        }
    }
    for (size_t i = 0; i < pCount && lFailed != nullptr; ++i)
    {
        if (i < lDone && pOutputs[i] != lFailed)
        {
            pOutputs[i]->PutOldBack();
        }
        else
        {
            pOutputs[i]->Discard();
        }
    }
    for (size_t i = 0; i < pCount; ++i)
    {
        pOutputs[i]->DropOld();
    }
    return lFailed;
}

/// Gives the file that is about to be replaced a second name. True when there is none, or the file system has no such names.
bool KOutputFile::KeepOld()
{
    const KFileCalls& lCalls = KFileCallsInUse();
    mHadOld = true;
    if (mTemporary.empty())
    {
        return true;
    }
    for (int i = 0; i < kMaxTemporaryNames; ++i)
    {
        try
        {
            mOld = KTemporaryName(mTarget);
        }
        catch (const std::bad_alloc&)
        {
            return Fail(ENOMEM);
        }
        mOldSlot = KPendingFileAdd(mOld);
        if (lCalls.mLink(mTarget.c_str(), mOld.c_str()) == 0)
        {
            return true;
        }
        const int lError = errno;
        KPendingFileRemove(mOldSlot);
        mOld.clear();
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

/// Undoes a commit, as far as the old file is still there.
void KOutputFile::PutOldBack()
{
    mResult = false;
    if (!mOld.empty() && KFileCallsInUse().mRename(mOld.c_str(), mTarget.c_str()) == 0)
    {
        KPendingFileRemove(mOldSlot);
        mOld.clear();
    }
    else if (!mHadOld)
    {
        KFileCallsInUse().mUnlink(mTarget.c_str());
    }
}

void KOutputFile::DropOld()
{
    if (mOld.empty())
    {
        return;
    }
    KFileCallsInUse().mUnlink(mOld.c_str());
    KPendingFileRemove(mOldSlot);
    mOld.clear();
}

} // namespace qexsdk
