#include <tests/support/filefaults.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace qextest
{

using qexsdk::KFileInfo;
using qexsdk::KSystemCalls;

namespace
{

/// State of the functions below: the table holds plain function pointers.
KSystemCalls       sSystem;
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

int Open(const char* pPath, qexsdk::EOpenMode pMode)
{
    return Count(KFileFaults::eOPEN) == 0 ? sSystem.mOpen(pPath, pMode) : -1;
}

std::ptrdiff_t Read(int pFile, void* pData, size_t pSize)
{
    const int lFault = Count(KFileFaults::eREAD);
    if (lFault > 0)
    {
        return -1;
    }
    return sSystem.mRead(pFile, pData, lFault == 0 ? pSize : std::min<size_t>(pSize, 1));
}

std::ptrdiff_t Write(int pFile, const void* pData, size_t pSize)
{
    const int lFault = Count(KFileFaults::eWRITE);
    if (lFault > 0)
    {
        return -1;
    }
    return sSystem.mWrite(pFile, pData, lFault == 0 ? pSize : std::min<size_t>(pSize, 1));
}

std::ptrdiff_t WriteAt(int pFile, const void* pData, size_t pSize, uint64_t pAt)
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

int Rewind(int pFile)
{
    return Count(KFileFaults::eSEEK) == 0 ? sSystem.mRewind(pFile) : -1;
}

int FileInfo(int pFile, KFileInfo* pInfo)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mFileInfo(pFile, pInfo) : -1;
}

int Info(const char* pPath, KFileInfo* pInfo)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mInfo(pPath, pInfo) : -1;
}

int LinkInfo(const char* pPath, KFileInfo* pInfo)
{
    return Count(KFileFaults::eSTAT) == 0 ? sSystem.mLinkInfo(pPath, pInfo) : -1;
}

std::ptrdiff_t ReadLink(const char* pPath, char* pText, size_t pSize)
{
    return Count(KFileFaults::eREAD_LINK) == 0 ? sSystem.mReadLink(pPath, pText, pSize) : -1;
}

int CheckWrite(const char* pPath)
{
    return Count(KFileFaults::eACCESS) == 0 ? sSystem.mCheckWrite(pPath) : -1;
}

int ChangeMode(int pFile, uint32_t pMode)
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
    qexsdk::KSystemReset();
    KSystemCalls& lCalls = qexsdk::KSystemInUse();
    sSystem = lCalls;
    lCalls.mOpen = Open;
    lCalls.mRead = Read;
    lCalls.mWrite = Write;
    lCalls.mWriteAt = WriteAt;
    lCalls.mClose = Close;
    lCalls.mRewind = Rewind;
    lCalls.mFileInfo = FileInfo;
    lCalls.mInfo = Info;
    lCalls.mLinkInfo = LinkInfo;
    lCalls.mReadLink = ReadLink;
    lCalls.mCheckWrite = CheckWrite;
    lCalls.mChangeMode = ChangeMode;
    lCalls.mRename = Rename;
    lCalls.mLink = Link;
    lCalls.mUnlink = Unlink;
    Fail(eCALLS, 0, 0);
}

KFileFaults::~KFileFaults()
{
    qexsdk::KSystemReset();
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
