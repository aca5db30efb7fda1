#ifndef KBASELIB_KBASE_KLINEREADER_H
#define KBASELIB_KBASE_KLINEREADER_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/kbytesource.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qexsdk
{

/// Reads lines of text from a file, standard input or memory, one at a time, through one buffer whose size does not depend on the
/// input's. Lines end at LF, CR LF or a lone CR. A UTF-8 byte-order mark is skipped.
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
        eSYSTEM,   ///< A system call failed; GetReason() says why.
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

    /// Reads \p pSize bytes at \p pData, which must outlive the reading. They stay the caller's and are not changed.
    bool OpenBuffer(const char* pData, size_t pSize);

    /// Closes; status and line number stay readable. The current line is gone.
    void Close();

    /// Closes, and resets status and line number.
    void Reset();

    /// Makes NextLine() locate the first of each byte of \p pBytes (at most kMaxWatched, further ones are ignored) in each line.
    /// Cheaper than searching every line: a byte that the input lacks is searched for once per buffer. Call it before the first line is
    /// read.
    void Watch(const char* pBytes);

    /// The first occurrence of byte \p pNumber (from 0) of Watch() in the current line; null when there is none.
    char* FindWatched(int pNumber) const { return InLine(mMarks[eFIRST_WATCHED + pNumber].mNext); }

    /// The first NUL in the current line; null when there is none.
    char* FindNul() const { return InLine(mMarks[eNUL].mNext); }

    /// True when the current line is known to hold no byte of Watch() and no NUL, so that it need not be searched.
    bool IsPlain() const { return mIsPlain; }

    /// Maximum number of bytes for Watch().
    static constexpr int kMaxWatched = 4;

    /// Goes back to before the first line. False, with nothing changed, when the input is a pipe that was read from; false with eSYSTEM
    /// when seeking fails or nothing is open.
    bool Rewind();

    /// Loads the next line. False when there is none, for the reason in GetStatus(); further calls are false too.
    bool NextLine();

    /// The current line without its end, followed by a NUL. Writable until the next NextLine().
    char* GetLine() const { return mLine; }

    /// Bytes of the current line without its end. The line may hold NUL bytes.
    size_t GetLength() const { return mLength; }

    /// False when the current line ended with the input instead of a line end: it may be truncated.
    bool HasLineEnd() const { return mHasLineEnd; }

    /// Bytes of the input up to the end of the current line.
    int64_t GetPosition() const { return mRead - (mFill - mBegin); }

    /// Bytes of the whole input when it was opened; 0 when unknown, as for a pipe.
    int64_t GetSize() const { return mSource.GetSize(); }

    /// Number of the last line loaded, from 1; 0 before the first. A line that was too long counts.
    int64_t GetLineNumber() const { return mLineNumber; }

    /// Why the last NextLine() or open returned false.
    EStatus GetStatus() const { return mStatus; }

    /// True when reading stopped for a reason other than the end of the input.
    bool HasFailed() const { return mStatus > eEND; }

    /// True between a successful open and Close().
    bool IsOpen() const { return mSource.IsOpen(); }

    /// The errno of an eSYSTEM failure, 0 without one.
    int GetError() const { return mError; }

    /// The system's text for GetError(), "" without a failure, or when memory runs out for it.
    std::string GetReason() const noexcept;

private:
    /// A byte that lines are searched for, and its cached position.
    struct KMark
    {
        char  mByte = '\0';
        char* mNext = nullptr; ///< First occurrence at or after the start of the last search, else mFill; null: not searched.
    };

    /// Indices into mMarks.
    enum EMark
    {
        eRETURN,
        eNUL,
        eFIRST_WATCHED
    };

    char* InLine(char* pAt) const { return pAt >= mLine && pAt < mLine + mLength ? pAt : nullptr; }
    void  ResetMarks();
    bool  NextBufferedLine();
    bool  SkipFeed();
    bool  LoadLine();
    char* LoadToLineEnd();
    void  Restart();
    bool  HasNoMarks(const char* pEnd);
    char* FindMark(KMark& pMark, char* pFrom) const;

    bool  Fail(EStatus pStatus, int pError);
    bool  Begin();
    bool  Refill();
    bool  MakeRoom();
    char* FindEnd(char* pFrom);

    KByteSource mSource;
    bool        mStarted = false;  ///< Something was read since opening or rewinding.
    bool        mAtEnd = false;    ///< The input has ended.
    bool        mSkipFeed = false; ///< The last line ended at a CR: skip an LF that follows.
    char*       mBuffer = nullptr;
    size_t      mCapacity = 0;    ///< Bytes of mBuffer, without the one for a NUL.
    char*       mBegin = nullptr; ///< First byte not yet returned.
    char*       mFill = nullptr;  ///< End of the bytes read.
    KMark       mMarks[eFIRST_WATCHED + kMaxWatched] = {{'\r', nullptr}, {'\0', nullptr}};
    int         mMarkCount = eFIRST_WATCHED;
    char*       mUnmarkedEnd = nullptr; ///< From mBegin up to here there is no mark but eRETURN; null when unknown.
    bool        mIsPlain = false;
    char*       mLine = nullptr;
    size_t      mLength = 0;
    bool        mHasLineEnd = false;
    int64_t     mRead = 0; ///< Bytes read since opening or rewinding.
    int64_t     mLineNumber = 0;
    EStatus     mStatus = eOK;
    int         mError = 0;
};

} // namespace qexsdk

#endif
