#include <tests/support/filefaults.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace qextest
{

using qexsdk::KFileCalls;

namespace
{

/// State of the functions below: the table holds plain function pointers.
KFileCalls         sSystem;
int                sCounts[KFileFaults::eCALLS];
KFileFaults::ECall sCall = KFileFaults::eCALLS;
int                sNumber = 0;
int                sError = 0;
bool               sAndLater = false;

/// Counts a call. \return 0 to let it proceed; else an errno (already set) or kShort
int Count(KFileFaults::ECall pCall)
{
    const int lCount = ++sCounts[pCall];
    if (pCall != sCall || lCount < sNumber || (lCount > sNumber && !sAndLater))
    {
        return 0;
    }
    if (sError != KFileFaults::kShort)
    {
        errno = sError;
    }
    return sError;
}

int Open(const char* pPath, int pFlags, mode_t pMode)
{
    return Count(KFileFaults::eOPEN) == 0 ? sSystem.mOpen(pPath, pFlags, pMode) : -1;
}

ssize_t Read(int pFile, void* pData, size_t pSize)
{
    const int lFault = Count(KFileFaults::eREAD);
    if (lFault > 0)
    {
        return -1;
    }
    return sSystem.mRead(pFile, pData, lFault == 0 ? pSize : std::min<size_t>(pSize, 1));
}

ssize_t Write(int pFile, const void* pData, size_t pSize)
{
    const int lFault = Count(KFileFaults::eWRITE);
    if (lFault > 0)
    {
        return -1;
    }
    return sSystem.mWrite(pFile, pData, lFault == 0 ? pSize : std::min<size_t>(pSize, 1));
}

ssize_t WriteAt(int pFile, const void* pData, size_t pSize, off_t pAt)
{
    const int lFault = Count(KFileFaults::eWRITE);
    if (lFault > 0)
    {
        return -1;
    }
    return sSystem.mWriteAt(pFile, pData, lFault == 0 ? pSize : std::min<size_t>(pSize, 1), pAt);
}

int Close(int pFile)
{
    // close() closes the file even when it reports an error.
    const int lResult = sSystem.mClose(pFile);
    return Count(KFileFaults::eCLOSE) == 0 ? lResult : -1;
}

off_t Seek(int pFile, off_t pOffset, int pWhence)
{
    return Count(KFileFaults::eSEEK) == 0 ? sSystem.mSeek(pFile, pOffset, pWhence) : -1;
}

int FileStat(int pFile, struct stat* pStat)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mFileStat(pFile, pStat) : -1;
}

int Stat(const char* pPath, struct stat* pStat)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mStat(pPath, pStat) : -1;
}

int LinkStat(const char* pPath, struct stat* pStat)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mLinkStat(pPath, pStat) : -1;
}

ssize_t ReadLink(const char* pPath, char* pText, size_t pSize)
{
    return Count(KFileFaults::eREAD_LINK) == 0 ? sSystem.mReadLink(pPath, pText, pSize) : -1;
}

int Access(const char* pPath, int pMode)
{
    return Count(KFileFaults::eACCESS) == 0 ? sSystem.mAccess(pPath, pMode) : -1;
}

int ChangeMode(int pFile, mode_t pMode)
{
    return Count(KFileFaults::eCHANGE_MODE) == 0 ? sSystem.mChangeMode(pFile, pMode) : -1;
}

int Rename(const char* pFrom, const char* pTo)
{
    return Count(KFileFaults::eRENAME) == 0 ? sSystem.mRename(pFrom, pTo) : -1;
}

int Link(const char* pFrom, const char* pTo)
{
    return Count(KFileFaults::eLINK) == 0 ? sSystem.mLink(pFrom, pTo) : -1;
}

int Unlink(const char* pPath)
{
    return Count(KFileFaults::eUNLINK) == 0 ? sSystem.mUnlink(pPath) : -1;
}

} // namespace

KFileFaults::KFileFaults()
{
    qexsdk::KFileCallsReset();
    KFileCalls& lCalls = qexsdk::KFileCallsInUse();
    sSystem = lCalls;
    lCalls.mOpen = Open;
    lCalls.mRead = Read;
    lCalls.mWrite = Write;
    lCalls.mWriteAt = WriteAt;
    lCalls.mClose = Close;
    lCalls.mSeek = Seek;
    lCalls.mFileStat = FileStat;
    lCalls.mStat = Stat;
    lCalls.mLinkStat = LinkStat;
    lCalls.mReadLink = ReadLink;
    lCalls.mAccess = Access;
    lCalls.mChangeMode = ChangeMode;
    lCalls.mRename = Rename;
    lCalls.mLink = Link;
    lCalls.mUnlink = Unlink;
    Fail(eCALLS, 0, 0);
}

KFileFaults::~KFileFaults()
{
    qexsdk::KFileCallsReset();
}

void KFileFaults::Fail(ECall pCall, int pNumber, int pError, bool pAndLater)
{
    std::fill(std::begin(sCounts), std::end(sCounts), 0);
    sCall = pCall;
    sNumber = pNumber;
    sError = pError;
    sAndLater = pAndLater;
}

int KFileFaults::GetCount(ECall pCall) const
{
    return sCounts[pCall];
}

} // namespace qextest
