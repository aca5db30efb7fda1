#ifndef KBASELIB_KBASE_KLINEREADER_H
#define KBASELIB_KBASE_KLINEREADER_H

#include <kbaselib/kbase/kbaseexport.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qexsdk
{

/// Lines of text out of a file, standard input or memory, one at a time through one buffer whose size does not depend
/// on the input's. Lines end at LF, CR LF or a lone CR. A UTF-8 byte-order mark is skipped.
class QEX_API KLineReader
{
public:
    /// The longest line, line end not counted.
    static constexpr size_t kMaxLine = 1048576;

    /// Why there is no line.
    enum EStatus
    {
        eOK,       ///< A line is current, or nothing was read yet.
        eEND,      ///< The input has no further line.
        eSYSTEM,   ///< The system refused; GetReason() says why.
        eTOO_LONG, ///< The next line, GetLineNumber(), is longer than kMaxLine.
        eUTF16,    ///< The input begins with a UTF-16 byte-order mark.
        eMEMORY    ///< No memory for the buffer.
    };

    KLineReader() = default;
    ~KLineReader();

    KLineReader(const KLineReader&) = delete;
    KLineReader& operator=(const KLineReader&) = delete;

    /// Opens a file, FIFO or device, or standard input for "-". False, with GetReason(), for a missing or unreadable file
    /// and for a directory.
    bool OpenPath(const char* pPath);

    /// Reads \p pSize bytes at \p pData, which stay the caller's, are not changed and have to outlive the reading.
    bool OpenBuffer(const char* pData, size_t pSize);

    /// Closes; the status and the line number stay to be asked for. The current line is gone.
    void Close();

    /// Closes, and forgets status and line number too.
    void Reset();

    /// Has NextLine() look for the first of each byte of \p pBytes (at most kMaxWatched, those beyond are left out) in each line:
    /// cheaper than searching every line, as a byte that the input does not hold is looked for once a buffer. To be called before
    /// the first line is read.
    void Watch(const char* pBytes);

    /// Place of the first byte number \p pNumber of Watch() in the current line; null when it holds none.
    char* FindWatched(int pNumber) const { return InLine(mMarks[eFIRST_WATCHED + pNumber].mNext); }

    /// Place of the first NUL in the current line; null when it holds none.
    char* FindNul() const { return InLine(mMarks[eNUL].mNext); }

    /// True when the current line is known to hold neither a byte of Watch() nor a NUL, so that nothing needs to be looked for.
    bool IsPlain() const { return mIsPlain; }

    /// Most bytes that Watch() takes.
    static constexpr int kMaxWatched = 4;

    /// Back to before the first line. False, and nothing changed, when the input is a pipe of which something was read;
    /// false with eSYSTEM when the system refuses, or when nothing is open.
    bool Rewind();

    /// Loads the next line. False when there is none, GetStatus() tells why; asked again, it stays false.
    bool NextLine();

    /// The current line without its end, followed by a NUL. It may be written to until the next call of NextLine().
    char* GetLine() const { return mLine; }

    /// Bytes of the current line, its end not counted. The line may hold NUL bytes.
    size_t GetLength() const { return mLength; }

    /// False when the input's end, not a line end, ended the current line: it may have been cut short.
    bool HasLineEnd() const { return mHasLineEnd; }

    /// Bytes of the input up to the end of the current line.
    int64_t GetPosition() const { return mRead - (mFill - mBegin); }

    /// Bytes of the whole input as it was when it was opened; 0 when that is not known, as for a pipe.
    int64_t GetSize() const { return mSize; }

    /// Number of the line loaded last, from 1; 0 before the first. A line that was too long counts.
    int64_t GetLineNumber() const { return mLineNumber; }

    /// How reading stands: why the last NextLine() or opening was false.
    EStatus GetStatus() const { return mStatus; }

    /// True when reading stopped for another reason than the end of the input.
    bool HasFailed() const { return mStatus > eEND; }

    /// True between a successful open and Close().
    bool IsOpen() const { return mFile >= 0 || mMemory != nullptr; }

    /// The errno of an eSYSTEM failure, 0 without one.
    int GetError() const { return mError; }

    /// The system's text for GetError(), "" without a failure.
    std::string GetReason() const;

private:
    /// A byte that lines are searched for.
    struct KMark
    {
        char  mByte = '\0';
        char* mNext = nullptr; ///< First one at or behind where the search began last, or mFill; null when not known.
    };

    /// Places in mMarks.
    enum EMark
    {
        eRETURN,
        eNUL,
        eFIRST_WATCHED
    };

    char* InLine(char* pPlace) const { return pPlace >= mLine && pPlace < mLine + mLength ? pPlace : nullptr; }
    void  ForgetMarks();
    bool  TakeLine();
    bool  SkipFeed();
    bool  LoadLine();
    bool  IsQuiet(const char* pEnd);
    char* FindMark(KMark& pMark, char* pFrom) const;

    bool      Fail(EStatus pStatus, int pError);
    bool      Begin();
    bool      Refill();
    bool      MakeRoom();
    ptrdiff_t ReadSome(char* pTo, size_t pSize);
    char*     FindEnd(char* pFrom);

    int         mFile = -1;
    bool        mOwnsFile = false;
    const char* mMemory = nullptr;
    size_t      mMemorySize = 0;
    size_t      mMemoryPlace = 0;
    bool        mStarted = false;  ///< Something was read since opening or rewinding.
    bool        mAtEnd = false;    ///< The input gave its last byte.
    bool        mSkipFeed = false; ///< The last line ended at a CR: an LF that follows belongs to it.
    char*       mBuffer = nullptr;
    size_t      mCapacity = 0;    ///< Bytes of mBuffer, that for a NUL not counted.
    char*       mBegin = nullptr; ///< First byte not yet handed out.
    char*       mFill = nullptr;  ///< End of the bytes read.
    KMark       mMarks[eFIRST_WATCHED + kMaxWatched] = {{'\r', nullptr}, {'\0', nullptr}};
    int         mMarkCount = eFIRST_WATCHED;
    char*       mQuietEnd = nullptr; ///< From mBegin up to here no mark but eRETURN was found; null when not known.
    bool        mIsPlain = false;
    char*       mLine = nullptr;
    size_t      mLength = 0;
    bool        mHasLineEnd = false;
    int64_t     mRead = 0; ///< Bytes read since opening or rewinding.
    int64_t     mSize = 0;
    int64_t     mLineNumber = 0;
    EStatus     mStatus = eOK;
    int         mError = 0;
};

} // namespace qexsdk

#endif
