#include <qexioplugins/bvh/kqexbvhtokens.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/knumberscan.h>

namespace qexsdk
{

namespace
{

constexpr size_t kOffendingMax = 60;

} // namespace

KQexBvhTokens::KQexBvhTokens(KQexTextFile& pFile) : mFile(pFile)
{
    if (mFile.FirstLine())
    {
        mNext = mFile.GetLine();
        mEnd = mNext + mFile.GetLineLength();
    }
}

bool KQexBvhTokens::SkipToToken()
{
    for (;;)
    {
        while (mNext != mEnd && IsBlank(*mNext))
        {
            ++mNext;
        }
        if (mNext != mEnd)
        {
            return true;
        }
        if (!mFile.NextLine())
        {
            mNext = mEnd = nullptr;
            return false;
        }
        mNext = mFile.GetLine();
        mEnd = mNext + mFile.GetLineLength();
    }
}

const char* KQexBvhTokens::TokenEnd() const
{
    const char* lEnd = mNext;
    if (IsBrace(*lEnd))
    {
        return lEnd + 1;
    }
    while (lEnd != mEnd && !IsBlank(*lEnd) && !IsBrace(*lEnd))
    {
        ++lEnd;
    }
    return lEnd;
}

std::string_view KQexBvhTokens::Peek()
{
    if (!SkipToToken())
    {
        return {};
    }
    return std::string_view(mNext, static_cast<size_t>(TokenEnd() - mNext));
}

bool KQexBvhTokens::Accept(const char* pWord)
{
    const std::string_view lToken = Peek();
    if (lToken.empty() || !KEqualsIgnoreCase(lToken, pWord))
    {
        return false;
    }
    mNext += lToken.size();
    return true;
}

std::string_view KQexBvhTokens::NextName()
{
    // Not SkipToToken(): a name is on its keyword's line, and a joint without one must not get the next line as its name.
    while (mNext != mEnd && IsBlank(*mNext))
    {
        ++mNext;
    }
    const char* lBegin = mNext;
    while (mNext != mEnd && *mNext != '{')
    {
        ++mNext;
    }
    const char* lEnd = mNext;
    while (lEnd != lBegin && IsBlank(lEnd[-1]))
    {
        --lEnd;
    }
    return std::string_view(lBegin, static_cast<size_t>(lEnd - lBegin));
}

bool KQexBvhTokens::NextNumber(double& pValue)
{
    if (!SkipToToken())
    {
        return false;
    }
    const char* lEnd = KNumberScan(mNext, mEnd, pValue);
    if (lEnd != nullptr && (lEnd == mEnd || IsBlank(*lEnd) || IsBrace(*lEnd)))
    {
        mNext = lEnd;
        return true;
    }
    return NextParsed(pValue);
}

bool KQexBvhTokens::NextCount(long long& pValue)
{
    const std::string_view lToken = Peek();
    return !lToken.empty() && lToken.front() != '-' && NextParsed(pValue);
}

std::string_view KQexBvhTokens::Offending()
{
    const std::string_view lToken = Peek();
    return lToken.empty() ? std::string_view("end of file") : lToken.substr(0, kOffendingMax);
}

} // namespace qexsdk
