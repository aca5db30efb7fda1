#ifndef QEXIOPLUGINS_MOTION_KQEXTEXTFILE_H
#define QEXIOPLUGINS_MOTION_KQEXTEXTFILE_H

#include <kbaselib/kbase/kbaseexport.h>
#include <kbaselib/kbase/klinereader.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexioplugins/motion/kqextextmessage.h>

#include <cstdarg>
#include <cstddef>
#include <string>
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
    int         mCount; ///< How often Handle() matched the entry since the table went through InitTokens().

    /// mCount, so that an entry can be asked like a flag.
    operator int() const { return mCount; }

    /// False for the entry that ends a table.
    bool IsValid() const { return mStr != nullptr && *mStr != '\0'; }
};

/// Text services for line-oriented files: lines, tokens, keyword tables, values, formatted output, messages. A file class
/// derives from it and adds the grammar. An object reads or writes one file at a time and is used by one thread.
///
/// Tokens are what stands between delimiters; from a comment character on a line is not looked at. A NUL byte counts as a
/// blank. Lines without a token are passed over. Lines, encodings and limits are KLineReader's.
class QEX_API KQexTextFile
{
public:
    /// \p pType is the file type's name for messages, \p pDel the characters that separate tokens, \p pCom those that
    /// start a comment (at most four); the three stay the caller's and have to outlive the object. With \p pFoldCase keywords are looked
    /// up without regard to the case of ASCII letters; with \p pVerb each message also goes to standard error.
    KQexTextFile(const char* pType, const char* pDel, const char* pCom, bool pFoldCase, bool pVerb);

    /// Closes the input. An output that was not closed is given up: a class that wants it completed closes it in its own
    /// destructor.
    virtual ~KQexTextFile();

    KQexTextFile(const KQexTextFile&) = delete;
    KQexTextFile& operator=(const KQexTextFile&) = delete;

    /// \name Opening and closing
    /// Opening closes the input and gives up the output that was open before, and clears the messages.
    ///@{

    /// Opens a file for reading, "-" for standard input. A failure is reported as an Error naming path and reason.
    bool OpenRead(const char* pPath);

    /// Reads \p pSize bytes of memory, which stay the caller's and have to outlive the reading.
    bool OpenReadBuffer(const char* pData, size_t pSize);

    /// Opens a file for writing, "-" for standard output; see KOutputFile. A failure is reported as an Error.
    bool OpenWrite(const char* pPath);

    /// Writes into \p pOut, which is emptied first and has to outlive the writing.
    bool OpenWriteBuffer(std::string* pOut);

    /// Closes. False when something that was printed did not get where it belongs (reported as an Error); an existing file
    /// is then as it was. A second call gives the first result again. After reading: true.
    bool Close();

    /// Gives up what is being written: no file appears, an existing one stays as it was. Close() is false afterwards.
    void Discard();

    /// The output, for a caller that closes two files in two phases.
    KOutputFile& GetOutput() { return mOutput; }
    ///@}

    /// \name Lines
    ///@{

    /// Makes the first line that holds a token current, going back to the input's beginning when it can be rewound; an
    /// input that cannot (a pipe of which something was read) is reported as an Error. False when there is no such line.
    bool FirstLine();

    /// Makes the next line that holds a token current, its first token unconsumed. False at the end of the input, and
    /// after a failure to read, which is reported as an Error once.
    bool NextLine();

    /// True when no line is current: at the end, after a failure, before FirstLine() and when nothing was opened.
    bool Eof() const { return !mHasLine; }

    /// True when reading stopped for another reason than the end of the input; the reason was reported as an Error.
    bool HasFailed() const { return mFailed; }

    /// Number of the line loaded last, from 1; 0 before the first.
    int GetLineNumber() const;

    /// False when the input's end, not a line end, ended the current line: it may have been cut short.
    bool HasLineEnd() const { return mInput.HasLineEnd(); }

    /// Part of the input that was read, 0 to 1; 0 when its size is not known, as for a pipe.
    double GetFraction() const;

    /// First byte of the current line as it stands in the file, blanks before the first token included, up to the end of
    /// its last token (a comment is cut off). Never null; a NUL follows the last byte. It may be written to, and lives
    /// until the next line is loaded.
    char* GetLine() const { return mLine; }

    /// Bytes of GetLine(), up to the end of the last token. 0 when no line is current.
    size_t GetLineLength() const { return static_cast<size_t>(mEnd - mLine); }
    ///@}

    /// \name Tokens
    ///@{

    /// The statement's text from the token looked at last (by Check(), Handle() or a value getter) to the last token of
    /// the line: so a message that quotes it shows the offending word. Right after a line was loaded: from its first
    /// token. "" after a look that found no token left, and when no line is current; never null. When Handle() matched a
    /// lone ":" entry: the text behind the token's colon.
    operator char*() const { return mText; }

    /// True when the current line has a token that is not consumed.
    bool HasToken() const { return mNext != mEnd; }

    /// Sets the count of every entry of \p pTokens to 0.
    void InitTokens(KToken* pTokens) const;

    /// Index of the first entry of \p pTokens that the next token equals, -1 for none or when no token is left. Consumes
    /// and counts nothing. An entry ":" matches any token that begins with a colon and equals no earlier entry.
    int Check(const KToken* pTokens);

    /// As Check(), but consumes the token, matched or not, and counts the match in its entry.
    int Handle(KToken* pTokens);

    /// Text of the next token, as a place in the current line; null when no token is left. Consumes nothing.
    const char* PeekToken(size_t& pLength);

    /// Consumes the next token and copies at most \p pMax characters of it and a NUL: \p pText has room for \p pMax + 1.
    /// False, and nothing changed, when no token is left. \p pCut tells whether the token was longer.
    bool GetString(char* pText, int pMax, bool& pCut);
    /// The same for callers that do not ask whether it was cut.
    bool GetString(char* pText, int pMax);
    ///@}

    /// \name Values
    /// The next tokens, each of which has to be a number as a whole, written in the "C" locale, a leading plus allowed. A
    /// getter that fails consumes and changes nothing. A number too small for a double is a zero of its sign.
    ///@{

    /// A whole number in the range of int.
    bool GetInteger(int& pValue);

    /// A finite number, multiplied by \p pFactor.
    bool GetDouble(double& pValue, double pFactor);

    /// Three finite numbers into pValue[0..2], each multiplied by \p pFactor.
    bool GetVector(double* pValue, double pFactor);

    /// Two numbers into pValue[0..1], each multiplied by \p pFactor. Infinities and NaN are taken (inf, infinity, nan
    /// with any sign and case), and a number too large for a double is an infinity.
    bool GetPair(double* pValue, double pFactor);
    ///@}

    /// \name Output
    ///@{

    /// Writes two blanks for each level of \p pLevel, then the formatted text. Numbers are formatted as in the "C" locale
    /// whatever the process's locale is. Whether all went well is what Close() answers.
    void Print(int pLevel, const char* pFormat, ...) QEX_PRINTF(3, 4);
    ///@}

    /// \name Messages
    ///@{

    /// Reports a problem after which reading goes on / does not go on. Kept with the current line number.
    void Warning(const char* pFormat, ...) QEX_PRINTF(2, 3);
    /// Reports a problem after which reading does not go on. Kept with the current line number.
    void Error(const char* pFormat, ...) QEX_PRINTF(2, 3);

    /// The messages since opening, in order: of the first kMaxMessages all, behind them errors only. Counts leave out none.
    /// When all texts together grow beyond kMaxMessageSize bytes, further ones are cut to kMaxLongText.
    const std::vector<KQexTextMessage>& GetMessages() const { return mMessages; }
    /// Warnings since opening, those that GetMessages() leaves out included.
    int GetWarningCount() const { return mWarningCount; }
    /// Errors since opening.
    int GetErrorCount() const { return mErrorCount; }

    static constexpr size_t kMaxMessages = 1000;       ///< Messages of any kind that are kept.
    static constexpr size_t kMaxMessageSize = 4194304; ///< Bytes of text that are kept uncut.
    static constexpr size_t kMaxLongText = 4096;       ///< Bytes of a text beyond that.
    ///@}

    /// The type text given to the constructor.
    const char* GetType() const { return mType; }

    /// The path that was opened; "" for memory.
    const std::string& GetPath() const { return mPath; }

private:
    enum EClass : unsigned char
    {
        eWORD,
        eBLANK,
        eEND ///< The NUL behind a line; a NUL inside was made a blank.
    };

    bool  Reopen(const char* pPath);
    bool  LoadLine();
    char* CutComment(char* pEnd);
    bool  IsInToken(char pCharacter) const { return mClass[static_cast<unsigned char>(pCharacter)] == eWORD; }
    bool  IsBlank(char pCharacter) const { return mClass[static_cast<unsigned char>(pCharacter)] == eBLANK; }
    void  ClearLine();
    bool  Stop();
    char* TokenEnd();
    void  SkipBlanks(char* pFrom);
    int   Match(const KToken* pTokens);
    bool  ParseNumber(double& pValue, bool pFinite, const char*& pAt) const;
    bool  GetNumbers(double* pValue, int pCount, double pFactor, bool pFinite);
    void  Report(KQexTextMessage::ESeverity pSeverity, const char* pFormat, std::va_list pArguments);
    void  ReportNoMemory();
    void  PrintToStandardError(const KQexTextMessage& pMessage) const;

    const char*   mType;
    int           mCommentCount; ///< Comment characters, watched by mInput.
    bool          mFoldCase;
    bool          mVerb;
    unsigned char mClass[256];

    KLineReader mInput;
    KOutputFile mOutput;
    std::string mPath;
    std::string mPrinted; ///< What Print() formats at a time.
    bool        mWriting = false;
    bool        mHasLine = false;
    bool        mFailed = false;

    // The current line: [mLine, mEnd) with a NUL at mEnd, which is the end of its last token. Without a line all of
    // these point at mEmpty.
    char* mLine;
    char* mEnd;
    char* mNext;    ///< Next token, or mEnd when none is left.
    char* mNextEnd; ///< End of the next token; null while it is not looked for.
    char* mText;    ///< What operator char*() gives.
    char  mEmpty[1] = {};

    std::vector<KQexTextMessage> mMessages;
    size_t                       mMessageSize = 0; ///< Bytes of the texts of mMessages.
    int                          mWarningCount = 0;
    int                          mErrorCount = 0;
};

} // namespace qexsdk

#endif
