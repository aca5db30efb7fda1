#include <kbaselib/kbase/kformat.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

namespace qexsdk
{

namespace
{

constexpr size_t kBlanksPerLevel = 2;

} // namespace

void KQexTextFile::Print(int pLevel, const char* pFormat, ...)
{
    // Even without an output, so that Close() reports the loss.
    mWriting = true;
    std::va_list lArguments;
    va_start(lArguments, pFormat);
    try
    {
        mPrinted.assign(kBlanksPerLevel * static_cast<size_t>(std::max(pLevel, 0)), ' ');
        if (KFormatAppend(mPrinted, std::string::npos, pFormat, lArguments))
        {
            mOutput.Write(mPrinted.data(), mPrinted.size());
        }
        else
        {
            mOutput.SetFailed(errno);
        }
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
    // Out of memory counts by itself.
    mErrorCount += Report(KQexTextMessage::eERROR, pFormat, lArguments) ? 1 : 0;
    va_end(lArguments);
}

/// False when memory ran out, which is then reported instead.
bool KQexTextFile::Report(KQexTextMessage::ESeverity pSeverity, const char* pFormat, std::va_list pArguments)
{
    const bool lKeep = pSeverity == KQexTextMessage::eERROR || mMessages.size() < kMaxMessages;
    if (!lKeep && !mVerb)
    {
        return true;
    }
    try
    {
        KQexTextMessage lMessage{pSeverity, GetLineNumber(), std::string()};
        if (!KFormatAppend(lMessage.mText, mMessageSize < kMaxMessageSize ? kMaxMessageSize : kMaxLongText, pFormat, pArguments))
        {
            ReportNoMemory();
            return false;
        }
        if (!lMessage.mText.empty() && lMessage.mText.back() == '\n')
        {
            lMessage.mText.pop_back();
        }
        if (mVerb)
        {
            PrintToStandardError(lMessage);
        }
        if (lKeep)
        {
            mMessages.push_back(std::move(lMessage));
            mMessageSize += mMessages.back().mText.size();
        }
        return true;
    }
    catch (const std::exception&)
    {
        ReportNoMemory();
        return false;
    }
}

/// Makes the read fail: a message that could not be stored must not go unnoticed.
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
        // mErrorCount still shows it.
    }
}

void KQexTextFile::PrintToStandardError(const KQexTextMessage& pMessage) const
{
    const char* lPath = mPath.empty() ? mType : mPath.c_str();
    const char* lSeverity = pMessage.mSeverity == KQexTextMessage::eERROR ? "error" : "warning";
    if (pMessage.mLine > 0)
    {
        std::fprintf(stderr, "%s:%d: %s: %s\n", lPath, pMessage.mLine, lSeverity, pMessage.mText.c_str());
    }
    else
    {
        std::fprintf(stderr, "%s: %s: %s\n", lPath, lSeverity, pMessage.mText.c_str());
    }
}

/// Reports why reading the input failed, and ends it. Always false.
bool KQexTextFile::FailRead()
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

} // namespace qexsdk
