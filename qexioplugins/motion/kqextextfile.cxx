#include <qexioplugins/motion/kqextextfile.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <exception>
#include <iterator>

namespace qexsdk
{

namespace
{

constexpr size_t kFirstMessages = 4;

/// Maps each byte to itself, or ASCII capitals to lower case.
struct KFoldTable
{
    constexpr explicit KFoldTable(bool pFold) : mTo{}
    {
        for (int i = 0; i < 256; ++i)
        {
            mTo[i] = static_cast<unsigned char>(pFold && i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
        }
    }

    unsigned char Of(char pCharacter) const { return mTo[static_cast<unsigned char>(pCharacter)]; }

    unsigned char mTo[256];
};

constexpr KFoldTable kAsIs(false);
constexpr KFoldTable kFolded(true);

/// The entry that matches any token beginning with a colon.
bool IsLoneColon(const KToken& pToken)
{
    return pToken.mStr[0] == ':' && pToken.mStr[1] == '\0';
}

} // namespace

KQexTextFile::KQexTextFile(const char* pType, const char* pDel, const char* pCom, bool pFoldCase, bool pVerb)
    : mType(pType),
      mCommentCount(0),
      mFoldCase(pFoldCase),
      mVerb(pVerb),
      mLine(mEmpty),
      mEnd(mEmpty),
      mNext(mEmpty),
      mNextEnd(nullptr),
      mText(mEmpty)
{
    std::fill(std::begin(mClass), std::end(mClass), static_cast<unsigned char>(eWORD));
    mClass[0] = eEND;
    for (; *pDel != '\0'; ++pDel)
    {
        mClass[static_cast<unsigned char>(*pDel)] = eBLANK;
    }
    mInput.Watch(pCom);
    mCommentCount = static_cast<int>(std::min<size_t>(std::strlen(pCom), KLineReader::kMaxWatched));
}

KQexTextFile::~KQexTextFile() = default;

bool KQexTextFile::Reopen(const char* pPath)
{
    mOutput.Discard();
    mInput.Reset();
    ClearLine();
    mFailed = false;
    mWriting = false;
    mMessages.clear();
    mMessageSize = 0;
    mWarningCount = 0;
    mErrorCount = 0;
    try
    {
        mPath = pPath;
        // Reserved, so that running out of memory can still be reported.
        mMessages.reserve(kFirstMessages);
        return true;
    }
    catch (const std::exception&)
    {
        ReportNoMemory();
        return false;
    }
}

bool KQexTextFile::OpenRead(const char* pPath)
{
    if (!Reopen(pPath))
    {
        return false;
    }
    return mInput.OpenPath(pPath) || FailRead();
}

bool KQexTextFile::OpenReadBuffer(const char* pData, size_t pSize)
{
    return Reopen("") && mInput.OpenBuffer(pData, pSize);
}

bool KQexTextFile::OpenWrite(const char* pPath)
{
    if (!Reopen(pPath))
    {
        return false;
    }
    mWriting = true;
    if (mOutput.Open(pPath))
    {
        return true;
    }
    Error("Can't write %s (%s)\n", pPath, std::strerror(mOutput.GetError()));
    return false;
}

bool KQexTextFile::OpenWriteBuffer(std::string* pOut)
{
    if (!Reopen(""))
    {
        return false;
    }
    mWriting = true;
    return mOutput.OpenBuffer(pOut);
}

bool KQexTextFile::Close()
{
    mInput.Close();
    ClearLine();
    if (!mWriting)
    {
        return true;
    }
    const bool lWasOpen = mOutput.IsOpen();
    const bool lResult = mOutput.Close();
    if (lWasOpen && !lResult)
    {
        Error("Can't write %s (%s)\n", mPath.c_str(), std::strerror(mOutput.GetError()));
    }
    return lResult;
}

void KQexTextFile::Discard()
{
    mOutput.Discard();
}

bool KQexTextFile::FirstLine()
{
    ClearLine();
    if (mFailed || !mInput.IsOpen())
    {
        return false;
    }
    if (!mInput.Rewind())
    {
        if (mInput.HasFailed())
        {
            return FailRead();
        }
        mFailed = true;
        Error("Can't go back to the beginning of %s\n", mPath.c_str());
        return false;
    }
    while (mInput.NextLine())
    {
        // Before LoadLine(), which cuts the comment off.
        HeaderLine(std::string_view(mInput.GetLine(), mInput.GetLength()));
        if (LoadLine())
        {
            return true;
        }
    }
    ClearLine();
    return mInput.HasFailed() ? FailRead() : false;
}

void KQexTextFile::HeaderLine(std::string_view) {}

bool KQexTextFile::NextLine()
{
    if (!mFailed)
    {
        while (mInput.NextLine())
        {
            if (LoadLine())
            {
                return true;
            }
        }
    }
    ClearLine();
    return mInput.HasFailed() && !mFailed ? FailRead() : false;
}

int KQexTextFile::GetLineNumber() const
{
    return static_cast<int>(std::min<int64_t>(mInput.GetLineNumber(), INT_MAX));
}

double KQexTextFile::GetFraction() const
{
    const double lSize = static_cast<double>(mInput.GetSize());
    // The file may have grown since it was opened.
    return lSize > 0.0 ? std::min(1.0, static_cast<double>(mInput.GetPosition()) / lSize) : 0.0;
}

void KQexTextFile::ClearLine()
{
    mHasLine = false;
    mLine = mEmpty;
    mEnd = mEmpty;
    mNext = mEmpty;
    mNextEnd = nullptr;
    mText = mEmpty;
}

/// Makes the input's line current, up to its last token and without its comment. False when it has no token.
bool KQexTextFile::LoadLine()
{
    mLine = mInput.GetLine();
    char* lEnd = mLine + mInput.GetLength();
    if (!mInput.IsPlain())
    {
        lEnd = CutComment(lEnd);
    }
    while (lEnd != mLine && !IsInToken(lEnd[-1]))
    {
        --lEnd;
    }
    *lEnd = '\0';
    mEnd = lEnd;
    SkipBlanks(mLine);
    mText = mNext;
    mHasLine = mNext != lEnd;
    return mHasLine;
}

/// End of the line without its comment. NULs before it become blanks, because they would end quoted or copied text.
char* KQexTextFile::CutComment(char* pEnd)
{
    for (int i = 0; i < mCommentCount; ++i)
    {
        if (char* lComment = mInput.FindWatched(i))
        {
            pEnd = std::min(pEnd, lComment);
        }
    }
    for (char* lNul = mInput.FindNul(); lNul != nullptr && lNul < pEnd; ++lNul)
    {
        *lNul = *lNul == '\0' ? ' ' : *lNul;
    }
    return pEnd;
}

/// Makes the first token at or after pFrom the next one. Stops at mEnd, whose NUL is not a blank.
void KQexTextFile::SkipBlanks(char* pFrom)
{
    while (IsBlank(*pFrom))
    {
        ++pFrom;
    }
    mNext = pFrom;
    mNextEnd = nullptr;
}

/// End of the next token.
char* KQexTextFile::TokenEnd()
{
    if (mNextEnd != nullptr)
    {
        return mNextEnd;
    }
    char* lEnd = mNext;
    while (IsInToken(*lEnd))
    {
        ++lEnd;
    }
    return mNextEnd = lEnd;
}

void KQexTextFile::InitTokens(KToken* pTokens) const
{
    for (; pTokens->IsValid(); ++pTokens)
    {
        pTokens->mCount = 0;
    }
}

/// Index of the entry that the next token matches, or -1.
int KQexTextFile::Match(const KToken* pTokens)
{
    const KFoldTable&   lFold = mFoldCase ? kFolded : kAsIs;
    const unsigned char lFirst = lFold.Of(*mNext);
    for (const KToken* lToken = pTokens; *lToken->mStr != '\0'; ++lToken)
    {
        const char* lEntry = lToken->mStr;
        if (lFold.Of(*lEntry) != lFirst)
        {
            continue;
        }
        // Comparing also finds the token's end, so most tokens are scanned once.
        char* lAt = mNext + 1;
        for (++lEntry; IsInToken(*lAt) && lFold.Of(*lEntry) == lFold.Of(*lAt); ++lEntry)
        {
            ++lAt;
        }
        if (*lEntry != '\0')
        {
            continue;
        }
        if (!IsInToken(*lAt))
        {
            mNextEnd = lAt;
        }
        else if (!IsLoneColon(*lToken))
        {
            continue;
        }
        return static_cast<int>(lToken - pTokens);
    }
    return -1;
}

int KQexTextFile::Check(const KToken* pTokens)
{
    mText = mNext;
    return Match(pTokens);
}

int KQexTextFile::Handle(KToken* pTokens)
{
    const int lIndex = Check(pTokens);
    SkipBlanks(TokenEnd());
    if (lIndex >= 0)
    {
        ++pTokens[lIndex].mCount;
        // An unknown section: the caller's message supplies the colon.
        if (IsLoneColon(pTokens[lIndex]))
        {
            ++mText;
        }
    }
    return lIndex;
}

const char* KQexTextFile::PeekToken(size_t& pLength)
{
    mText = mNext;
    pLength = static_cast<size_t>(TokenEnd() - mNext);
    return pLength == 0 ? nullptr : mNext;
}

bool KQexTextFile::GetString(char* pText, int pMax, bool& pCut)
{
    mText = mNext;
    if (!HasToken())
    {
        return false;
    }
    char* lAt = mNext;
    for (int i = 0; i < pMax && IsInToken(*lAt); ++i)
    {
        *pText++ = *lAt++;
    }
    *pText = '\0';
    pCut = IsInToken(*lAt);
    SkipBlanks(pCut ? TokenEnd() : lAt);
    return true;
}

bool KQexTextFile::GetString(char* pText, int pMax)
{
    bool lCut = false;
    return GetString(pText, pMax, lCut);
}

} // namespace qexsdk
