#include <kbaselib/kbase/koutputfile.h>

#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kbase/koutputnames.h>
#include <kbaselib/kbase/kpendingfiles.h>
#include <kbaselib/kbase/ksystem.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

namespace qexsdk
{

namespace
{

constexpr size_t kBufferSize = 65536;

} // namespace

KOutputFile::KOutputFile(KOutputFile&& pOther) noexcept
    : mState(std::exchange(pOther.mState, eCLOSED)),
      mResult(std::exchange(pOther.mResult, true)),
      mError(std::exchange(pOther.mError, 0)),
      mFile(std::exchange(pOther.mFile, -1)),
      mOwnsFile(std::exchange(pOther.mOwnsFile, false)),
      mIsAnyOrder(std::exchange(pOther.mIsAnyOrder, false)),
      mSlot(std::exchange(pOther.mSlot, -1)),
      mSize(std::exchange(pOther.mSize, 0)),
      mBuffer(std::exchange(pOther.mBuffer, nullptr)),
      mFill(std::exchange(pOther.mFill, 0)),
      mOut(std::exchange(pOther.mOut, nullptr)),
      mPath(std::move(pOther.mPath)),
      mTarget(std::move(pOther.mTarget)),
      mTemporary(std::move(pOther.mTemporary)),
      mBackup(std::move(pOther.mBackup)),
      mBackupSlot(std::exchange(pOther.mBackupSlot, -1)),
      mHadOld(std::exchange(pOther.mHadOld, false))
{
    // A moved string may keep its text.
    pOther.mTemporary.clear();
    pOther.mBackup.clear();
    pOther.Reset();
}

KOutputFile::~KOutputFile()
{
    // A string keeps its contents, or is already gone: Discard() must not touch it.
    mOut = nullptr;
    Discard();
    Reset();
}

bool KOutputFile::Open(const char* pPath)
{
    Discard();
    Reset();
    mResult = false;
    try
    {
        mPath = pPath;
        if (mPath.empty())
        {
            return Fail(ENOENT);
        }
        mBuffer = static_cast<char*>(QexSdkMalloc(kBufferSize));
        if (mBuffer == nullptr)
        {
            return Fail(ENOMEM);
        }
        if (mPath == "-")
        {
            mFile = kStandardOutput;
            mState = eOPEN;
            return true;
        }

        KFileInfo  lInfo;
        const bool lExists = KGetFileInfo(mPath, lInfo);
        if (!lExists && errno != ENOENT)
        {
            return Fail(errno);
        }
        if (lExists && lInfo.mKind == KFileInfo::eFOLDER)
        {
            return Fail(EISDIR);
        }
        if (lExists && lInfo.mKind != KFileInfo::eREGULAR)
        {
            return OpenDirect(pPath);
        }

        std::string lTarget = pPath;
        if (const int lError = KFollowLinks(lTarget))
        {
            return Fail(lError);
        }
        // rename() needs no write permission on the file itself, but a read-only file is not meant to be replaced.
        if (lExists && KSystemInUse().mCheckWrite(lTarget.c_str()) != 0)
        {
            return Fail(errno);
        }
        return OpenTemporary(lTarget, lExists ? &lInfo : nullptr);
    }
    catch (const std::bad_alloc&)
    {
        RemoveTemporary();
        return Fail(ENOMEM);
    }
}

bool KOutputFile::OpenBuffer(std::string* pOut)
{
    Discard();
    Reset();
    mOut = pOut;
    mOut->clear();
    mState = eOPEN;
    return true;
}

bool KOutputFile::OpenDirect(const char* pPath)
{
    do
    {
        mFile = KSystemInUse().mOpen(pPath, eOPEN_WRITE);
    } while (mFile < 0 && errno == EINTR);
    if (mFile < 0)
    {
        return Fail(errno);
    }
    mOwnsFile = true;
    mState = eOPEN;
    return true;
}

bool KOutputFile::OpenTemporary(const std::string& pTarget, const KFileInfo* pOld)
{
    const KSystemCalls& lCalls = KSystemInUse();
    mTarget = pTarget;
    for (int i = 0; i < kMaxTemporaryNames && mFile < 0; ++i)
    {
        // Registered before it exists: a signal in between finds nothing to remove, which does no harm.
        mTemporary = KTemporaryName(pTarget);
        mSlot = KPendingFileAdd(mTemporary);
        mFile = lCalls.mOpen(mTemporary.c_str(), eOPEN_NEW);
        if (mFile >= 0)
        {
            break;
        }
        const int lError = errno;
        KPendingFileRemove(mSlot);
        mTemporary.clear();
        if (lError != EEXIST && lError != EINTR)
        {
            return Fail(lError);
        }
    }
    if (mFile < 0)
    {
        return Fail(EEXIST);
    }
    mOwnsFile = true;
    mState = eOPEN;
    if (pOld != nullptr && lCalls.mChangeMode(mFile, pOld->mMode) != 0)
    {
        Fail(errno);
        RemoveTemporary();
        mState = eCLOSED;
        return false;
    }
    return true;
}

bool KOutputFile::Write(const char* pData, size_t pSize)
{
    if (mState == eCLOSED)
    {
        mResult = false;
    }
    if (mState != eOPEN || mError != 0)
    {
        return false;
    }
    if (mIsAnyOrder)
    {
        return WriteAt(mSize, pData, pSize);
    }
    mSize += pSize;
    if (mOut != nullptr)
    {
        try
        {
            mOut->append(pData, pSize);
            return true;
        }
        catch (const std::exception&)
        {
            return Fail(ENOMEM);
        }
    }
    if (pSize > kBufferSize - mFill && !Flush())
    {
        return false;
    }
    if (pSize >= kBufferSize)
    {
        return WriteAll(pData, pSize);
    }
    std::memcpy(mBuffer + mFill, pData, pSize);
    mFill += pSize;
    return true;
}

bool KOutputFile::Flush()
{
    const size_t lFill = mFill;
    mFill = 0;
    return WriteAll(mBuffer, lFill);
}

bool KOutputFile::WriteAll(const char* pData, size_t pSize)
{
    while (pSize > 0)
    {
        const std::ptrdiff_t lWritten = KSystemInUse().mWrite(mFile, pData, pSize);
        if (lWritten < 0 && KFileCanRetry(mFile, eCAN_WRITE))
        {
            continue;
        }
        if (lWritten < 0)
        {
            return Fail(errno);
        }
        // A call that writes nothing and reports no error would be repeated forever.
        if (lWritten == 0)
        {
            return Fail(EIO);
        }
        pData += lWritten;
        pSize -= static_cast<size_t>(lWritten);
    }
    return true;
}

bool KOutputFile::Prepare()
{
    if (mState == eDONE || mState == eCLOSED)
    {
        return mResult;
    }
    if (mState == ePREPARED)
    {
        return mError == 0;
    }
    mState = ePREPARED;
    if (mError == 0 && mOut == nullptr)
    {
        Flush();
    }
    CloseFile();
    if (mError != 0)
    {
        RemoveTemporary();
    }
    return mError == 0;
}

bool KOutputFile::Commit()
{
    if (mState == eDONE || mState == eCLOSED)
    {
        return mResult;
    }
    if (Prepare() && !mTemporary.empty())
    {
        if (KSystemInUse().mRename(mTemporary.c_str(), mTarget.c_str()) == 0)
        {
            KPendingFileRemove(mSlot);
            mTemporary.clear();
        }
        else
        {
            Fail(errno);
            RemoveTemporary();
        }
    }
    mResult = mError == 0;
    mState = eDONE;
    return mResult;
}

bool KOutputFile::Close()
{
    return Commit();
}

void KOutputFile::Discard()
{
    if (!IsOpen())
    {
        return;
    }
    CloseFile();
    RemoveTemporary();
    if (mOut != nullptr)
    {
        mOut->clear();
    }
    mResult = false;
    mState = eDONE;
}

void KOutputFile::CloseFile()
{
    // close() closes the file even when interrupted. Any other error can be a delayed write error.
    if (mOwnsFile && KSystemInUse().mClose(mFile) != 0 && errno != EINTR)
    {
        Fail(errno);
    }
    mFile = -1;
    mOwnsFile = false;
    QexSdkFree(mBuffer);
    mBuffer = nullptr;
    mFill = 0;
}

void KOutputFile::RemoveTemporary()
{
    CloseFile();
    if (mTemporary.empty())
    {
        return;
    }
    KSystemInUse().mUnlink(mTemporary.c_str());
    KPendingFileRemove(mSlot);
    mTemporary.clear();
}

bool KOutputFile::Fail(int pError)
{
    if (mError == 0)
    {
        mError = pError == 0 ? EIO : pError;
    }
    return false;
}

void KOutputFile::SetFailed(int pError)
{
    if (IsOpen())
    {
        Fail(pError);
    }
}

void KOutputFile::Reset()
{
    QexSdkFree(mBuffer);
    mBuffer = nullptr;
    mFill = 0;
    mOut = nullptr;
    mPath.clear();
    mTarget.clear();
    mSize = 0;
    mIsAnyOrder = false;
    mError = 0;
    mResult = true;
    mState = eCLOSED;
}

bool KOutputFile::IsBrokenPipe() const
{
    return mError == EPIPE;
}

std::string KOutputFile::GetReason() const noexcept
{
    return KFileErrorText(mError);
}

void KOutputFile::RemovePending()
{
    KPendingFilesUnlink();
}

} // namespace qexsdk
