#include <qexioplugins/motion/kqextextfile.h>

#include <kbaselib/kbase/kformat.h>
#include <kbaselib/kbase/knumber.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

namespace qexsdk
{

namespace
{

constexpr size_t kBlanksPerLevel = 2;
constexpr size_t kFirstMessages = 4;

/// Each character as it is, or ASCII capitals as small letters.
struct KFoldTable
{
    constexpr explicit KFoldTable(bool pFold) : mTo{}
    {
        for (int i = 0; i < 256; ++i)
            mTo[i] = static_cast<unsigned char>(pFold && i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }

    unsigned char Of(char pCharacter) const { return mTo[static_cast<unsigned char>(pCharacter)]; }

    unsigned char mTo[256];
};

constexpr KFoldTable kAsIs(false);
constexpr KFoldTable kFolded(true);

/// The entry that any token with a colon in front matches.
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
        mClass[static_cast<unsigned char>(*pDel)] = eBLANK;
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
        // Room for the first messages, so that running out of memory can be told even then.
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
        return false;
    return mInput.OpenPath(pPath) || Stop();
}

bool KQexTextFile::OpenReadBuffer(const char* pData, size_t pSize)
{
    return Reopen("") && mInput.OpenBuffer(pData, pSize);
}

bool KQexTextFile::OpenWrite(const char* pPath)
{
    if (!Reopen(pPath))
        return false;
    mWriting = true;
    if (mOutput.Open(pPath))
        return true;
    Error("Can't write %s (%s)\n", pPath, std::strerror(mOutput.GetError()));
    return false;
}

bool KQexTextFile::OpenWriteBuffer(std::string* pOut)
{
    if (!Reopen(""))
        return false;
    mWriting = true;
    return mOutput.OpenBuffer(pOut);
}

bool KQexTextFile::Close()
{
    mInput.Close();
    ClearLine();
    if (!mWriting)
        return true;
    const bool lWasOpen = mOutput.IsOpen();
    const bool lResult = mOutput.Close();
    if (lWasOpen && !lResult)
        Error("Can't write %s (%s)\n", mPath.c_str(), std::strerror(mOutput.GetError()));
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
        return false;
    if (!mInput.Rewind())
    {
        if (mInput.HasFailed())
            return Stop();
        mFailed = true;
        Error("Can't go back to the beginning of %s\n", mPath.c_str());
        return false;
    }
    return NextLine();
}

bool KQexTextFile::NextLine()
{
    if (!mFailed)
        while (mInput.NextLine())
            if (LoadLine())
                return true;
    ClearLine();
    return mInput.HasFailed() && !mFailed ? Stop() : false;
}

int KQexTextFile::GetLineNumber() const
{
    return static_cast<int>(std::min<int64_t>(mInput.GetLineNumber(), INT_MAX));
}

double KQexTextFile::GetFraction() const
{
    const double lSize = static_cast<double>(mInput.GetSize());
    // A file that grew since it was opened is not more than whole.
    return lSize > 0.0 ? std::min(1.0, static_cast<double>(mInput.GetPosition()) / lSize) : 0.0;
}

/// Reports why the input cannot be read on, and ends the reading.
bool KQexTextFile::Stop()
{
    mFailed = true;
    switch (mInput.GetStatus())
    {
    case KLineReader::eTOO_LONG:
        Error("Line is too long\n");
        break;
    case KLineReader::eUTF16:
        Error("UTF-16 text is not supported\n");
        break;
    case KLineReader::eMEMORY:
        Error("Out of memory\n");
        break;
    default:
        Error("Can't read %s (%s)\n", mPath.c_str(), std::strerror(mInput.GetError()));
        break;
    }
    return false;
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

/// Takes the input's line over without its comment and what stands behind its last token. False when it holds no token.
bool KQexTextFile::LoadLine()
{
    mLine = mInput.GetLine();
    char* lEnd = mLine + mInput.GetLength();
    if (!mInput.IsPlain())
        lEnd = CutComment(lEnd);
    while (lEnd != mLine && !IsInToken(lEnd[-1]))
        --lEnd;
    *lEnd = '\0';
    mEnd = lEnd;
    SkipBlanks(mLine);
    mText = mNext;
    mHasLine = mNext != lEnd;
    return mHasLine;
}

/// Where the input's line ends without its comment. NULs before that become blanks: a text that is quoted or copied would end there.
char* KQexTextFile::CutComment(char* pEnd)
{
    for (int i = 0; i < mCommentCount; ++i)
        if (char* lComment = mInput.FindWatched(i))
            pEnd = std::min(pEnd, lComment);
    for (char* lNul = mInput.FindNul(); lNul != nullptr && lNul < pEnd; ++lNul)
        *lNul = *lNul == '\0' ? ' ' : *lNul;
    return pEnd;
}

/// Makes the first token at or behind pFrom the next one; without one mNext is mEnd, whose NUL is of a class of its own.
void KQexTextFile::SkipBlanks(char* pFrom)
{
    while (IsBlank(*pFrom))
        ++pFrom;
    mNext = pFrom;
    mNextEnd = nullptr;
}

/// End of the next token.
char* KQexTextFile::TokenEnd()
{
    if (mNextEnd != nullptr)
        return mNextEnd;
    char* lEnd = mNext;
    while (IsInToken(*lEnd))
        ++lEnd;
    return mNextEnd = lEnd;
}

void KQexTextFile::InitTokens(KToken* pTokens) const
{
    for (; pTokens->IsValid(); ++pTokens)
        pTokens->mCount = 0;
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
            continue;
        // The token's end shows while the two are compared, so that most tokens are looked at once.
        char* lAt = mNext + 1;
        for (++lEntry; IsInToken(*lAt) && lFold.Of(*lEntry) == lFold.Of(*lAt); ++lEntry)
            ++lAt;
        if (*lEntry != '\0')
            continue;
        if (!IsInToken(*lAt))
            mNextEnd = lAt;
        else if (!IsLoneColon(*lToken))
            continue;
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
        // An unknown section: its name without the colon, which the message supplies.
        if (IsLoneColon(pTokens[lIndex]))
            ++mText;
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
        return false;
    char* lAt = mNext;
    for (int i = 0; i < pMax && IsInToken(*lAt); ++i)
        *pText++ = *lAt++;
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

bool KQexTextFile::GetInteger(int& pValue)
{
    mText = mNext;
    if (!HasToken())
        return false;
    char* lEnd = TokenEnd();
    int   lValue = 0;
    if (KNumberParse(std::string_view(mNext, static_cast<size_t>(lEnd - mNext)), lValue) != KNumberStatus::eOK)
        return false;
    pValue = lValue;
    SkipBlanks(lEnd);
    return true;
}

bool KQexTextFile::GetDouble(double& pValue, double pFactor)
{
    return GetNumbers(&pValue, 1, pFactor, true);
}

bool KQexTextFile::GetVector(double* pValue, double pFactor)
{
    return GetNumbers(pValue, 3, pFactor, true);
}

bool KQexTextFile::GetPair(double* pValue, double pFactor)
{
    return GetNumbers(pValue, 2, pFactor, false);
}

/// Reads the number that the token at pAt is into pValue, and moves pAt behind the token.
bool KQexTextFile::ParseNumber(double& pValue, bool pFinite, const char*& pAt) const
{
    const char* lEnd = pAt;
    while (IsInToken(*lEnd))
        ++lEnd;
    const std::string_view lToken(pAt, static_cast<size_t>(lEnd - pAt));
    pAt = lEnd;
    if (lToken.empty())
        return false;
    if (pFinite)
        return KNumberParse(lToken, pValue) == KNumberStatus::eOK;
    return KNumberParse(lToken, pValue, KNumberWords::eNONFINITE) != KNumberStatus::eINVALID;
}

bool KQexTextFile::GetNumbers(double* pValue, int pCount, double pFactor, bool pFinite)
{
    const char* lAt = mNext;
    double      lValue[3];
    for (int i = 0; i < pCount; ++i)
    {
        const char* const lToken = lAt;
        // Short plain numbers, which is nearly all of them, without looking for the token's end first.
        const char* lEnd = KNumberScan(lToken, mEnd, lValue[i]);
        if (lEnd != nullptr && !IsInToken(*lEnd))
            lAt = lEnd;
        else if (!ParseNumber(lValue[i], pFinite, lAt))
        {
            mText = mNext + (lToken - mNext);
            return false;
        }
        mText = mNext + (lToken - mNext);
        while (IsBlank(*lAt))
            ++lAt;
    }
    mNext += lAt - mNext;
    mNextEnd = nullptr;
    for (int i = 0; i < pCount; ++i)
        pValue[i] = lValue[i] * pFactor;
    return true;
}

void KQexTextFile::Print(int pLevel, const char* pFormat, ...)
{
    // Without an output, too: Close() tells that it is lost.
    mWriting = true;
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    try
    {
        mPrinted.assign(kBlanksPerLevel * static_cast<size_t>(std::max(pLevel, 0)), ' ');
        if (KFormatAppend(mPrinted, std::string::npos, pFormat, lArguments))
            mOutput.Write(mPrinted.data(), mPrinted.size());
        else
            mOutput.SetFailed(errno);
    }
    catch (const std::exception&)
    {
        mOutput.SetFailed(ENOMEM);
    }
    va_end(lArguments);
}

void KQexTextFile::Warning(const char* pFormat, ...)
{
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    ++mWarningCount;
    Report(KQexTextMessage::eWARNING, pFormat, lArguments);
    va_end(lArguments);
}

void KQexTextFile::Error(const char* pFormat, ...)
{
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    ++mErrorCount;
    Report(KQexTextMessage::eERROR, pFormat, lArguments);
    va_end(lArguments);
}

void KQexTextFile::Report(KQexTextMessage::ESeverity pSeverity, const char* pFormat, std::va_list pArguments)
{
    const bool lKeep = pSeverity == KQexTextMessage::eERROR || mMessages.size() < kMaxMessages;
    if (!lKeep && !mVerb)
        return;
    try
    {
        KQexTextMessage lMessage{pSeverity, GetLineNumber(), std::string()};
        if (!KFormatAppend(lMessage.mText, mMessageSize < kMaxMessageSize ? kMaxMessageSize : kMaxLongText, pFormat, pArguments))
        {
            ReportNoMemory();
            return;
        }
        if (!lMessage.mText.empty() && lMessage.mText.back() == '\n')
            lMessage.mText.pop_back();
        if (mVerb)
            PrintToStandardError(lMessage);
        if (!lKeep)
            return;
        mMessages.push_back(std::move(lMessage));
        mMessageSize += mMessages.back().mText.size();
    }
    catch (const std::exception&)
    {
        ReportNoMemory();
    }
}

/// A message that cannot be kept is not passed over: the reading fails.
void KQexTextFile::ReportNoMemory()
{
    mFailed = true;
    ++mErrorCount;
    try
    {
        mMessages.push_back(KQexTextMessage{KQexTextMessage::eERROR, GetLineNumber(), "Out of memory"});
    }
    catch (const std::exception&)
    {
        // The count tells.
    }
}

void KQexTextFile::PrintToStandardError(const KQexTextMessage& pMessage) const
{
    const char* lPath = mPath.empty() ? mType : mPath.c_str();
    const char* lSeverity = pMessage.mSeverity == KQexTextMessage::eERROR ? "error" : "warning";
    std::fprintf(stderr, "%s:%d: %s: %s\n", lPath, pMessage.mLine, lSeverity, pMessage.mText.c_str());
}

} // namespace qexsdk
