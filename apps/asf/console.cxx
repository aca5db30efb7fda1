#include <apps/asf/console.h>

#include <apps/asf/report/messagelog.h>
#include <kbaselib/kbase/ksystem.h>
#include <kbaselib/kbase/kutf8.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace asfapp
{

namespace
{

constexpr size_t kBufferSize = 1 << 16;

bool UsesColour(int pStream)
{
    const char* lNoColour = std::getenv("NO_COLOR");
    const char* lTerminal = std::getenv("TERM");
    const bool  lForbidden = lNoColour != nullptr && *lNoColour != '\0';
    const bool  lDumb = lTerminal == nullptr || std::string_view(lTerminal) == "dumb";
    return !lForbidden && !lDumb && qexsdk::KSystemInUse().mIsTerminal(pStream);
}

const char* SeverityWord(ESeverity pSeverity)
{
    return pSeverity == eERROR ? "error" : pSeverity == eWARNING ? "warning" : "note";
}

const char* SeverityColour(ESeverity pSeverity)
{
    return pSeverity == eERROR ? "\033[1;31m" : pSeverity == eWARNING ? "\033[1;35m" : "\033[1;36m";
}

} // namespace

ESeverity SeverityOf(const qexsdk::KQexTextMessage& pMessage)
{
    return pMessage.mSeverity == qexsdk::KQexTextMessage::eERROR ? eERROR : eWARNING;
}

std::string Printable(std::string_view pText)
{
    std::string lResult;
    lResult.reserve(pText.size());
    for (size_t lAt = 0; lAt < pText.size();)
    {
        const unsigned char lByte = static_cast<unsigned char>(pText[lAt]);
        const size_t        lLength = qexsdk::KUtf8Length(pText.substr(lAt));
        // U+0080 to U+009F are control characters, too.
        const bool lIsControl =
            lByte < 0x20 || lByte == 0x7F || (lByte == 0xC2 && lLength == 2 && static_cast<unsigned char>(pText[lAt + 1]) < 0xA0);
        if (lLength > 0 && !lIsControl)
        {
            lResult.append(pText, lAt, lLength);
            lAt += lLength;
            continue;
        }
        char lEscape[8];
        std::snprintf(lEscape, sizeof lEscape, "\\x%02X", static_cast<unsigned>(lByte));
        lResult += lEscape;
        ++lAt;
    }
    return lResult;
}

KConsole::KConsole() : mOutColour(UsesColour(qexsdk::kStandardOutput)), mErrColour(UsesColour(qexsdk::kStandardError)) {}

KConsole::~KConsole()
{
    try
    {
        CloseOut();
    }
    catch (const std::exception&)
    {
        // Callers that need to know whether it was written call CloseOut().
        mPending.clear();
    }
}

bool KConsole::WriteOut()
{
    if (!mIsOutOpen && !mHasOutFailed)
    {
        mIsOutOpen = true;
        mHasOutFailed = !mOut.Open("-");
    }
    mHasOutFailed = mHasOutFailed || !mOut.Write(mPending.data(), mPending.size());
    mPending.clear();
    return !mHasOutFailed;
}

bool KConsole::Out(std::string_view pText)
{
    mPending += pText;
    return mPending.size() < kBufferSize ? !mHasOutFailed : WriteOut();
}

bool KConsole::FlushOut()
{
    if (mPending.empty() && !mIsOutOpen)
    {
        return !mHasOutFailed;
    }
    // Only closing reports whether the bytes were written; the next write opens it again.
    WriteOut();
    CloseOut();
    return !mHasOutFailed;
}

void KConsole::CloseOut()
{
    if (!mPending.empty())
    {
        WriteOut();
    }
    if (!mIsOutOpen)
    {
        return;
    }
    mIsOutOpen = false;
    if (!mOut.Close() || mHasOutFailed)
    {
        mHasOutFailed = true;
        if (!mOut.IsBrokenPipe())
        {
            Fail(eEXIT_SYSTEM, "cannot write standard output: " + mOut.GetReason());
        }
    }
}

void KConsole::Message(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText)
{
    if ((pSeverity != eNOTE || !mQuiet) && (!mHasOnly || pSeverity == mOnly))
    {
        Print(pSeverity, pPath, pLine, pText);
    }
}

void KConsole::ShowOnly(ESeverity pSeverity)
{
    mHasOnly = true;
    mOnly = pSeverity;
}

void KConsole::Print(ESeverity pSeverity, const std::string& pPath, int pLine, std::string_view pText)
{
    if (mLog != nullptr)
    {
        if (pSeverity != eNOTE)
        {
            mLog->Add(pSeverity, pPath, pLine, pText);
        }
        return;
    }
    std::string lText = Printable(pPath);
    if (pLine > 0)
    {
        lText += ":" + std::to_string(pLine);
    }
    lText += ": ";
    lText += mErrColour ? SeverityColour(pSeverity) : "";
    lText += SeverityWord(pSeverity);
    lText += mErrColour ? ":\033[0m " : ": ";
    lText += Printable(pText);
    lText += "\n";
    std::fwrite(lText.data(), 1, lText.size(), stderr);
}

void KConsole::Report(std::string_view pText)
{
    if (!mQuiet && mLog == nullptr)
    {
        const std::string lText = "asf: " + Printable(pText) + "\n";
        std::fwrite(lText.data(), 1, lText.size(), stderr);
    }
}

void KConsole::Fail(EExit pExit, std::string_view pText)
{
    Print(eERROR, "asf", 0, pText);
    Raise(pExit);
}

void KConsole::Raise(EExit pExit)
{
    mExit = std::max<int>(mExit, pExit);
}

bool KConsole::IsErrorTerminal() const
{
    return qexsdk::KSystemInUse().mIsTerminal(qexsdk::kStandardError);
}

std::string KConsole::Bold(std::string_view pText) const
{
    const std::string lText(pText);
    return mOutColour ? "\033[1m" + lText + "\033[0m" : lText;
}

} // namespace asfapp
