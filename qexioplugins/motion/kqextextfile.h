#ifndef QEXIOPLUGINS_MOTION_KQEXTEXTFILE_H
#define QEXIOPLUGINS_MOTION_KQEXTEXTFILE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/klinereader.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if defined(__GNUC__)
#define QEX_PRINTF(pFormat, pFirst) __attribute__((format(printf, pFormat, pFirst)))
#else
#define QEX_PRINTF(pFormat, pFirst)
#endif

namespace qexsdk
{

/// Entry of a keyword table. A table is an array whose last entry has the text "".
struct KToken
{
    const char* mStr;   ///< The keyword.
    int         mCount; ///< Matches by Handle() since InitTokens().

    /// mCount, so that an entry can be used as a flag.
    operator int() const { return mCount; }

    /// False for the entry that ends a table.
    bool IsValid() const { return mStr != nullptr && *mStr != '\0'; }
};

/// Text services for line-oriented files: lines, tokens, keyword tables, values, formatted output, messages. A file class
/// derives from it and adds the grammar. An object reads or writes one file at a time and is used by one thread.
///
/// Tokens are separated by delimiters; the rest of a line from a comment character on is ignored. A NUL byte counts as a blank.
/// Lines without a token are skipped. For line ends, encodings and limits see KLineReader.
class QEX_API KQexTextFile
{
public:
    /// \p pType is the file type's name for messages, \p pDel the characters that separate tokens, \p pCom those that
    /// start a comment (at most four); all three must outlive the object. With \p pFoldCase keyword lookup ignores ASCII case; with
    /// \p pVerb each message also goes to standard error.
    KQexTextFile(const char* pType, const char* pDel, const char* pCom, bool pFoldCase, bool pVerb);

    /// Closes the input. Discards an output that was not closed: a class that wants it completed closes it in its own destructor.
    virtual ~KQexTextFile();

    KQexTextFile(const KQexTextFile&) = delete;
    KQexTextFile& operator=(const KQexTextFile&) = delete;

    /// \name Opening and closing
    /// Opening closes the previous input, discards the previous output and clears the messages.
    ///@{

    /// Opens a file for reading, "-" for standard input. A failure is reported as an Error naming path and reason.
    bool OpenRead(const char* pPath);

    /// Reads \p pSize bytes of memory, which the caller owns and which must outlive the reading.
    bool OpenReadBuffer(const char* pData, size_t pSize);

    /// Opens a file for writing, "-" for standard output; see KOutputFile. A failure is reported as an Error.
    bool OpenWrite(const char* pPath);

    /// Writes into \p pOut, which is cleared first and must outlive the writing.
    bool OpenWriteBuffer(std::string* pOut);

    /// Closes. False when something printed could not be written (reported as an Error); an existing file is then unchanged.
    /// A second call returns the first result again. After reading: true.
    bool Close();

    /// Discards the output: no file is created, an existing one is unchanged. Close() then returns false.
    void Discard();

    /// The output, for a caller that closes two files in two phases.
    KOutputFile& GetOutput() { return mOutput; }

    /// Hands over the output, for a caller that commits it after this object is gone. This then has none, and Close() returns true.
    KOutputFile ReleaseOutput()
    {
        mWriting = false;
        return std::move(mOutput);
    }
    ///@}

    /// \name Lines
    ///@{

    /// Rewinds the input and makes the first line with a token current. False when there is none, or when the input cannot be
    /// rewound (a pipe that has been read from), which is reported as an Error.
    bool FirstLine();

    /// Makes the next line with a token current, its first token unconsumed. False at the end of the input and after a read
    /// error, which is reported as an Error once.
    bool NextLine();

    /// True when no line is current: at the end, after a failure, before FirstLine() and when nothing was opened.
    bool Eof() const { return !mHasLine; }

    /// True when reading stopped before the end of the input; the reason was reported as an Error.
    bool HasFailed() const { return mFailed; }

    /// Number of the line loaded last, from 1; 0 before the first.
    int GetLineNumber() const;

    /// False when the current line ends with the input instead of a line end: it may have been truncated.
    bool HasLineEnd() const { return mInput.HasLineEnd(); }

    /// Fraction of the input read so far, 0 to 1; 0 when its size is unknown, as for a pipe.
    double GetFraction() const;

    /// The current line as in the file, leading blanks included, up to the end of its last token; NUL-terminated, never null.
    /// It may be written to, and is valid until the next line is loaded.
    char* GetLine() const { return mLine; }

    /// Bytes of GetLine(), up to the end of the last token. 0 when no line is current.
    size_t GetLineLength() const { return static_cast<size_t>(mEnd - mLine); }
    ///@}

    /// \name Tokens
    ///@{

    /// The line's text from the token last examined (by Check(), Handle() or a value getter) to its last token, so that a
    /// message that quotes it shows the offending word. Right after a line is loaded: from its first token. "" when no token
    /// was left to examine or no line is current; never null. When Handle() matched a lone ":" entry: the text after the colon.
    operator char*() const { return mText; }

    /// True when the current line has a token that is not consumed.
    bool HasToken() const { return mNext != mEnd; }

    /// Sets the count of every entry of \p pTokens to 0.
    void InitTokens(KToken* pTokens) const;

    /// Index of the first entry of \p pTokens that equals the next token, -1 for none or when no token is left. Consumes
    /// and counts nothing. An entry ":" matches any token that begins with a colon and equals no earlier entry.
    int Check(const KToken* pTokens);

    /// As Check(), but consumes the token, matched or not, and counts the match in its entry.
    int Handle(KToken* pTokens);

    /// Pointer to the next token in the current line, not NUL-terminated; null when no token is left. Consumes nothing.
    const char* PeekToken(size_t& pLength);

    /// Consumes the next token and copies at most \p pMax characters of it and a NUL: \p pText has room for \p pMax + 1.
    /// \p pCut is set to whether the token was longer. False, and nothing changed, when no token is left.
    bool GetString(char* pText, int pMax, bool& pCut);
    /// The same without \p pCut.
    bool GetString(char* pText, int pMax);
    ///@}

    /// \name Values
    /// Each token must be a number as a whole, in the "C" locale; a leading plus is allowed. A getter that fails consumes and
    /// changes nothing. A number too small for a double becomes a zero of its sign.
    ///@{

    /// An integer in the range of int.
    bool GetInteger(int& pValue);

    /// A finite number, multiplied by \p pFactor.
    bool GetDouble(double& pValue, double pFactor);

    /// Three finite numbers into pValue[0..2], each multiplied by \p pFactor.
    bool GetVector(double* pValue, double pFactor);

    /// Two numbers into pValue[0..1], each multiplied by \p pFactor. Accepts infinities and NaN (inf, infinity, nan with
    /// any sign and case); a number too large for a double becomes an infinity.
    bool GetPair(double* pValue, double pFactor);
    ///@}

    /// \name Output
    ///@{

    /// Writes two blanks per level of \p pLevel, then the formatted text. Numbers are formatted as in the "C" locale, whatever
    /// the process's locale. Close() reports failures.
    void Print(int pLevel, const char* pFormat, ...) QEX_PRINTF(3, 4);
    ///@}

    /// \name Messages
    ///@{

    /// Reports a problem after which reading continues. Stored with the current line number.
    void Warning(const char* pFormat, ...) QEX_PRINTF(2, 3);
    /// Reports a problem that ends the reading. Stored with the current line number.
    void Error(const char* pFormat, ...) QEX_PRINTF(2, 3);

    /// The messages since opening, in order: the first kMaxMessages, after them errors only. The counts include all messages.
    /// Once the texts exceed kMaxMessageSize bytes together, further ones are cut to kMaxLongText.
    const std::vector<KQexTextMessage>& GetMessages() const { return mMessages; }
    /// Warnings since opening, including those that GetMessages() drops.
    int GetWarningCount() const { return mWarningCount; }
    /// Errors since opening.
    int GetErrorCount() const { return mErrorCount; }

    static constexpr size_t kMaxMessages = 1000;       ///< Messages of any kind that are kept.
    static constexpr size_t kMaxMessageSize = 4194304; ///< Total bytes of text; later texts are cut.
    static constexpr size_t kMaxLongText = 4096;       ///< Bytes kept of a text that is cut.
    ///@}

    /// The type text given to the constructor.
    const char* GetType() const { return mType; }

    /// The path that was opened; "" for memory.
    const std::string& GetPath() const { return mPath; }

protected:
    /// Called by FirstLine() with each line that it loads, comments included, the first line with a token being the last one. For formats
    /// that keep information in comments. Does nothing.
    virtual void HeaderLine(std::string_view pLine);

private:
    enum EClass : unsigned char
    {
        eWORD,
        eBLANK,
        eEND ///< The NUL after a line; NULs inside became blanks.
    };

    bool  Reopen(const char* pPath);
    bool  LoadLine();
    char* CutComment(char* pEnd);
    bool  IsInToken(char pCharacter) const { return mClass[static_cast<unsigned char>(pCharacter)] == eWORD; }
    bool  IsBlank(char pCharacter) const { return mClass[static_cast<unsigned char>(pCharacter)] == eBLANK; }
    void  ClearLine();
    bool  FailRead();
    char* TokenEnd();
    void  SkipBlanks(char* pFrom);
    int   Match(const KToken* pTokens);
    bool  ParseNumber(double& pValue, bool pFinite, const char*& pAt) const;
    bool  GetNumbers(double* pValue, int pCount, double pFactor, bool pFinite);
    bool  Report(KQexTextMessage::ESeverity pSeverity, const char* pFormat, std::va_list pArguments);
    void  ReportNoMemory();
    void  PrintToStandardError(const KQexTextMessage& pMessage) const;

    const char*   mType;
    int           mCommentCount; ///< Number of comment characters, which mInput looks for.
    bool          mFoldCase;
    bool          mVerb;
    unsigned char mClass[256];

    KLineReader mInput;
    KOutputFile mOutput;
    std::string mPath;
    std::string mPrinted; ///< Buffer of Print().
    bool        mWriting = false;
    bool        mHasLine = false;
    bool        mFailed = false;

    // The current line: [mLine, mEnd), mEnd being the NUL after its last token. Without a line all of these point at mEmpty.
    char* mLine;
    char* mEnd;
    char* mNext;    ///< Next token, or mEnd when none is left.
    char* mNextEnd; ///< End of the next token; null until TokenEnd() has found it.
    char* mText;    ///< Result of operator char*().
    char  mEmpty[1] = {};

    std::vector<KQexTextMessage> mMessages;
    size_t                       mMessageSize = 0; ///< Bytes of the texts of mMessages.
    int                          mWarningCount = 0;
    int                          mErrorCount = 0;
};

} // namespace qexsdk

#endif
