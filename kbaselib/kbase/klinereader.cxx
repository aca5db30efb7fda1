#include <kbaselib/kbase/klinereader.h>

#include <kbaselib/kbase/kmemory.h>
#include <kbaselib/kbase/ksystem.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qexsdk
{

namespace
{

constexpr size_t kFirstCapacity = 65536;

/// Room for the longest line and for the bytes that show where it ends or that it is too long.
constexpr size_t kLastCapacity = KLineReader::kMaxLine + kFirstCapacity;

} // namespace

KLineReader::~KLineReader()
{
    Close();
}

bool KLineReader::OpenPath(const char* pPath)
{
    Reset();
    return mSource.OpenPath(pPath) || Fail(eSYSTEM, errno);
}

bool KLineReader::OpenBuffer(const char* pData, size_t pSize)
{
    Reset();
    mSource.OpenBuffer(pData, pSize);
    return true;
}

void KLineReader::Close()
{
    mSource.Close();
    QexSdkFree(mBuffer);
    mBuffer = nullptr;
    mCapacity = 0;
    Restart();
}

void KLineReader::Reset()
{
    Close();
    mStatus = eOK;
    mError = 0;
    mLineNumber = 0;
    mRead = 0;
}

bool KLineReader::Rewind()
{
    if (!IsOpen())
    {
        return Fail(eSYSTEM, EBADF);
    }
    if (mStarted && !mSource.Rewind())
    {
        return errno == ESPIPE ? false : Fail(eSYSTEM, errno);
    }
    Restart();
    mLineNumber = 0;
    mRead = 0;
    mStatus = eOK;
    mError = 0;
    return true;
}

/// Forgets what is in the buffer, and the current line.
void KLineReader::Restart()
{
    mStarted = false;
    mAtEnd = false;
    mSkipFeed = false;
    mBegin = mBuffer;
    mFill = mBuffer;
    ResetMarks();
    mLine = nullptr;
    mLength = 0;
}

bool KLineReader::NextLine()
{
    return NextBufferedLine() || LoadLine();
}

/// NextLine() for most lines: those that are complete in the buffer and end at LF or CR LF. False, with no byte consumed, for any other.
bool KLineReader::NextBufferedLine()
{
    if (mStatus != eOK || !SkipFeed())
    {
        return false;
    }
    char* const lFeed = static_cast<char*>(std::memchr(mBegin, '\n', static_cast<size_t>(mFill - mBegin)));
    if (lFeed == nullptr)
    {
        return false;
    }
    char* lEnd = FindMark(mMarks[eRETURN], mBegin);
    if (lEnd >= lFeed)
    {
        lEnd = lFeed;
    }
    else if (lEnd + 1 != lFeed)
    {
        return false;
    }
    const size_t lLength = static_cast<size_t>(lEnd - mBegin);
    if (lLength > kMaxLine)
    {
        return false;
    }
    mIsPlain = lEnd <= mUnmarkedEnd || HasNoMarks(lEnd);
    mLine = mBegin;
    mLength = lLength;
    mBegin = lFeed + 1;
    mHasLineEnd = true;
    *lEnd = '\0';
    ++mLineNumber;
    return true;
}

/// Skips the LF after a CR that ended the previous line. \return whether there are bytes at mBegin then
bool KLineReader::SkipFeed()
{
    if (mSkipFeed && mBegin != mFill)
    {
        mBegin += *mBegin == '\n' ? 1 : 0;
        mSkipFeed = false;
    }
    return mBegin != mFill;
}

/// Whether no mark, except carriage returns, lies between mBegin and \p pEnd.
bool KLineReader::HasNoMarks(const char* pEnd)
{
    mUnmarkedEnd = mFill;
    for (int i = eNUL; i < mMarkCount; ++i)
    {
        mUnmarkedEnd = std::min(mUnmarkedEnd, FindMark(mMarks[i], mBegin));
    }
    return pEnd <= mUnmarkedEnd;
}

/// NextLine() for any line: reads on until the line is complete.
bool KLineReader::LoadLine()
{
    mLine = nullptr;
    mLength = 0;
    mIsPlain = false;
    if (mStatus != eOK || !IsOpen() || (!mStarted && !Begin()))
    {
        return false;
    }
    char* const lEnd = LoadToLineEnd();
    if (lEnd == nullptr)
    {
        return false;
    }
    if (lEnd > mBegin)
    {
        for (int i = eNUL; i < mMarkCount; ++i)
        {
            FindMark(mMarks[i], mBegin);
        }
    }
    mLine = mBegin;
    mLength = static_cast<size_t>(lEnd - mBegin);
    mBegin = lEnd;
    mHasLineEnd = lEnd != mFill;
    if (mHasLineEnd)
    {
        mSkipFeed = *lEnd == '\r';
        ++mBegin;
    }
    *lEnd = '\0';
    ++mLineNumber;
    return true;
}

/// Refills the buffer until the line at mBegin is complete. \return its end, mFill when it ends with the input; null, with the status
/// set, when there is no line
char* KLineReader::LoadToLineEnd()
{
    size_t lSearched = 0;
    for (;;)
    {
        SkipFeed();
        char* const  lEnd = FindEnd(mBegin + lSearched);
        const size_t lLength = static_cast<size_t>(lEnd - mBegin);
        if (lLength > kMaxLine)
        {
            ++mLineNumber;
            Fail(eTOO_LONG, 0);
            return nullptr;
        }
        if (lEnd != mFill || (mAtEnd && lLength > 0))
        {
            return lEnd;
        }
        if (mAtEnd)
        {
            Fail(eEND, 0);
            return nullptr;
        }
        lSearched = lLength;
        if (!Refill())
        {
            return nullptr;
        }
    }
}

/// The first LF or CR at or after \p pFrom; mFill when there is none.
char* KLineReader::FindEnd(char* pFrom)
{
    if (pFrom == mFill)
    {
        return mFill;
    }
    char* lFeed = static_cast<char*>(std::memchr(pFrom, '\n', static_cast<size_t>(mFill - pFrom)));
    return std::min(lFeed == nullptr ? mFill : lFeed, FindMark(mMarks[eRETURN], pFrom));
}

/// The mark's first byte at or after \p pFrom; mFill when there is none. Cached: a text without the byte is searched for it once per
/// buffer, not once per line.
char* KLineReader::FindMark(KMark& pMark, char* pFrom) const
{
    if (pMark.mNext == nullptr || pMark.mNext < pFrom)
    {
        pMark.mNext = static_cast<char*>(std::memchr(pFrom, pMark.mByte, static_cast<size_t>(mFill - pFrom)));
        if (pMark.mNext == nullptr)
        {
            pMark.mNext = mFill;
        }
    }
    return pMark.mNext;
}

void KLineReader::ResetMarks()
{
    for (KMark& lMark : mMarks)
    {
        lMark.mNext = nullptr;
    }
    mUnmarkedEnd = nullptr;
}

void KLineReader::Watch(const char* pBytes)
{
    for (mMarkCount = eFIRST_WATCHED; *pBytes != '\0' && mMarkCount < eFIRST_WATCHED + kMaxWatched; ++pBytes)
    {
        mMarks[mMarkCount++] = {*pBytes, nullptr};
    }
    mUnmarkedEnd = nullptr;
}

/// Reads the input's first bytes and skips a UTF-8 byte-order mark; fails at a UTF-16 one.
bool KLineReader::Begin()
{
    mStarted = true;
    mBegin = mBuffer;
    mFill = mBuffer;
    while (mFill - mBegin < 3 && !mAtEnd)
    {
        if (!Refill())
        {
            return false;
        }
    }
    const size_t lSize = static_cast<size_t>(mFill - mBegin);
    if (lSize >= 2 && (std::memcmp(mBegin, "\xFF\xFE", 2) == 0 || std::memcmp(mBegin, "\xFE\xFF", 2) == 0))
    {
        return Fail(eUTF16, 0);
    }
    if (lSize >= 3 && std::memcmp(mBegin, "\xEF\xBB\xBF", 3) == 0)
    {
        mBegin += 3;
    }
    return true;
}

/// Moves the bytes not yet returned to the front of the buffer and reads more after them.
bool KLineReader::Refill()
{
    if (!MakeRoom())
    {
        return Fail(eMEMORY, 0);
    }
    const ptrdiff_t lRead = mSource.Read(mFill, mCapacity - static_cast<size_t>(mFill - mBuffer));
    if (lRead < 0)
    {
        return Fail(eSYSTEM, errno);
    }
    mAtEnd = lRead == 0;
    mFill += lRead;
    *mFill = '\0';
    mRead += lRead;
    ResetMarks();
    return true;
}

bool KLineReader::MakeRoom()
{
    const size_t lKept = static_cast<size_t>(mFill - mBegin);
    if (mBuffer != nullptr && lKept < mCapacity)
    {
        if (mBegin != mBuffer)
        {
            std::memmove(mBuffer, mBegin, lKept);
        }
        mBegin = mBuffer;
        mFill = mBuffer + lKept;
        return true;
    }
    // One line fills the buffer. LoadLine() fails before the largest buffer is full.
    const size_t lCapacity = mBuffer == nullptr ? kFirstCapacity : std::min(mCapacity * 2, kLastCapacity);
    char*        lBuffer = static_cast<char*>(QexSdkMalloc(lCapacity + 1));
    if (lBuffer == nullptr)
    {
        return false;
    }
    if (lKept > 0)
    {
        std::memcpy(lBuffer, mBegin, lKept);
    }
    QexSdkFree(mBuffer);
    mBuffer = lBuffer;
    mCapacity = lCapacity;
    mBegin = lBuffer;
    mFill = lBuffer + lKept;
    return true;
}

bool KLineReader::Fail(EStatus pStatus, int pError)
{
    mStatus = pStatus;
    mError = pError;
    return false;
}

std::string KLineReader::GetReason() const noexcept
{
    return KFileErrorText(mError);
}

} // namespace qexsdk
