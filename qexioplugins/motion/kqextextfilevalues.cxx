#include <kbaselib/kbase/knumber.h>
#include <kbaselib/kbase/knumberscan.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string_view>

namespace qexsdk
{

bool KQexTextFile::GetInteger(int& pValue)
{
    mText = mNext;
    if (!HasToken())
    {
        return false;
    }
    char* lEnd = TokenEnd();
    int   lValue = 0;
    if (KNumberParse(std::string_view(mNext, static_cast<size_t>(lEnd - mNext)), lValue) != KNumberStatus::eOK)
    {
        return false;
    }
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

/// Parses the token at pAt into pValue and moves pAt past the token.
bool KQexTextFile::ParseNumber(double& pValue, bool pFinite, const char*& pAt) const
{
    const char* lEnd = pAt;
    while (IsInToken(*lEnd))
    {
        ++lEnd;
    }
    const std::string_view lToken(pAt, static_cast<size_t>(lEnd - pAt));
    pAt = lEnd;
    if (lToken.empty())
    {
        return false;
    }
    if (pFinite)
    {
        return KNumberParse(lToken, pValue) == KNumberStatus::eOK;
    }
    return KNumberParse(lToken, pValue, KNonFiniteWords::eACCEPT) != KNumberStatus::eINVALID;
}

bool KQexTextFile::GetNumbers(double* pValue, int pCount, double pFactor, bool pFinite)
{
    // mNext + (pointer - mNext) is the pointer without const.
    const char* lAt = mNext;
    double      lValue[3];
    for (int i = 0; i < pCount; ++i)
    {
        const char* const lToken = lAt;
        // Fast path: nearly all numbers are short and plain, and need no search for the token's end.
        const char* lEnd = KNumberScan(lToken, mEnd, lValue[i]);
        if (lEnd != nullptr && !IsInToken(*lEnd))
        {
            lAt = lEnd;
        }
        else if (!ParseNumber(lValue[i], pFinite, lAt))
        {
            mText = mNext + (lToken - mNext);
            return false;
        }
        mText = mNext + (lToken - mNext);
        while (IsBlank(*lAt))
        {
            ++lAt;
        }
    }
    mNext += lAt - mNext;
    mNextEnd = nullptr;
    for (int i = 0; i < pCount; ++i)
    {
        pValue[i] = lValue[i] * pFactor;
    }
    return true;
}

} // namespace qexsdk
