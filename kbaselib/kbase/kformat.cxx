#include <kbaselib/kbase/kformat.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qexsdk
{

namespace
{

/// One conversion of a printf format: %[flags][width][.precision][size]letter.
struct KConversion
{
    const char* mBegin = nullptr; ///< The percent sign.
    const char* mEnd = nullptr;   ///< Behind the letter.
    bool        mLeft = false;
    bool        mPlus = false;
    bool        mBlank = false;
    bool        mAlternate = false;
    bool        mZero = false;
    int         mWidth = 0;
    int         mPrecision = -1; ///< -1: none given.
    char        mSize[3] = {'\0', '\0', '\0'};
    char        mLetter = '\0';
};

/// Text of a number without its padding.
constexpr size_t kNumberSize = 400;

/// The number of characters that printf's %f needs beyond the precision: sign, 309 digits, point.
constexpr size_t kFixedSize = 320;

class KFormatter
{
public:
    KFormatter(KFormatSink pSink, void* pContext) : mSink(pSink), mContext(pContext) {}

    bool Format(const char* pFormat, std::va_list& pArguments);

private:
    static int         ReadCount(const char*& pAt, std::va_list& pArguments);
    static KConversion Parse(const char* pBegin, std::va_list& pArguments);
    bool               Convert(const KConversion& pConversion, std::va_list& pArguments);
    bool               ConvertInteger(const KConversion& pConversion, std::va_list& pArguments);
    bool               ConvertReal(const KConversion& pConversion, long double pValue, bool pLong);
    bool               Digits(const KConversion& pConversion, bool pNegative, const char* pDigits, size_t pSize, bool pZeroPad);
    bool               Padded(const KConversion& pConversion, const char* pText, size_t pSize);
    bool               PutString(const char* pText);
    bool               Fill(char pCharacter, size_t pCount);
    bool               Put(const char* pText, size_t pSize) { return pSize == 0 || mSink(mContext, pText, pSize); }

    KFormatSink mSink;
    void*       mContext;
};

bool KFormatter::Format(const char* pFormat, std::va_list& pArguments)
{
    for (;;)
    {
        const char* lPercent = std::strchr(pFormat, '%');
        if (lPercent == nullptr)
            return Put(pFormat, std::strlen(pFormat));
        if (!Put(pFormat, static_cast<size_t>(lPercent - pFormat)))
            return false;
        const KConversion lConversion = Parse(lPercent, pArguments);
        if (!Convert(lConversion, pArguments))
            return false;
        pFormat = lConversion.mEnd;
    }
}

/// A count in digits, or the argument for a star.
int KFormatter::ReadCount(const char*& pAt, std::va_list& pArguments)
{
    if (*pAt == '*')
    {
        ++pAt;
        return va_arg(pArguments, int);
    }
    int lCount = 0;
    for (; *pAt >= '0' && *pAt <= '9'; ++pAt)
        if (lCount < 100000)
            lCount = lCount * 10 + (*pAt - '0');
    return lCount;
}

KConversion KFormatter::Parse(const char* pBegin, std::va_list& pArguments)
{
    KConversion lResult;
    lResult.mBegin = pBegin;
    const char* lAt = pBegin + 1;
    for (; *lAt != '\0' && std::strchr("-+ #0", *lAt) != nullptr; ++lAt)
    {
        lResult.mLeft |= *lAt == '-';
        lResult.mPlus |= *lAt == '+';
        lResult.mBlank |= *lAt == ' ';
        lResult.mAlternate |= *lAt == '#';
        lResult.mZero |= *lAt == '0';
    }
    lResult.mWidth = ReadCount(lAt, pArguments);
    if (lResult.mWidth < 0)
    {
        lResult.mLeft = true;
        lResult.mWidth = -lResult.mWidth;
    }
    if (*lAt == '.')
    {
        ++lAt;
        lResult.mPrecision = ReadCount(lAt, pArguments);
    }
    for (int i = 0; i < 2 && *lAt != '\0' && std::strchr("hljztL", *lAt) != nullptr; ++i, ++lAt)
        lResult.mSize[i] = *lAt;
    lResult.mLetter = *lAt;
    lResult.mEnd = *lAt == '\0' ? lAt : lAt + 1;
    return lResult;
}

bool KFormatter::Convert(const KConversion& pConversion, std::va_list& pArguments)
{
    switch (pConversion.mLetter)
    {
    case '%':
        return Put("%", 1);
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
        return ConvertInteger(pConversion, pArguments);
    case 'a':
    case 'A':
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
        if (pConversion.mSize[0] == 'L')
            return ConvertReal(pConversion, va_arg(pArguments, long double), true);
        return ConvertReal(pConversion, static_cast<long double>(va_arg(pArguments, double)), false);
    case 'c':
    {
        if (pConversion.mSize[0] != '\0')
            break;
        const char lCharacter = static_cast<char>(va_arg(pArguments, int));
        return Padded(pConversion, &lCharacter, 1);
    }
    case 's':
    {
        if (pConversion.mSize[0] != '\0')
            break;
        const char* lText = va_arg(pArguments, const char*);
        if (lText == nullptr)
            lText = "(null)";
        if (pConversion.mPrecision < 0 && pConversion.mWidth == 0)
            return PutString(lText);
        const size_t lSize = pConversion.mPrecision < 0 ? std::strlen(lText) : strnlen(lText, static_cast<size_t>(pConversion.mPrecision));
        return Padded(pConversion, lText, lSize);
    }
    case 'p':
    {
        char      lText[32];
        const int lSize = std::snprintf(lText, sizeof lText, "%p", va_arg(pArguments, void*));
        return Padded(pConversion, lText, lSize < 0 ? 0 : static_cast<size_t>(lSize));
    }
    default:
        break;
    }
    return Put(pConversion.mBegin, static_cast<size_t>(pConversion.mEnd - pConversion.mBegin));
}

/// The next argument as a signed number of the size that the conversion names.
intmax_t NextSigned(const char* pSize, std::va_list& pArguments)
{
    if (pSize[0] == 'l' && pSize[1] == 'l')
        return va_arg(pArguments, long long);
    switch (pSize[0])
    {
    case 'l':
        return va_arg(pArguments, long);
    case 'j':
        return va_arg(pArguments, intmax_t);
    case 'z':
    case 't':
        return va_arg(pArguments, ptrdiff_t);
    default:
        break;
    }
    const int lValue = va_arg(pArguments, int);
    if (pSize[0] != 'h')
        return lValue;
    return pSize[1] == 'h' ? static_cast<signed char>(lValue) : static_cast<short>(lValue);
}

uintmax_t NextUnsigned(const char* pSize, std::va_list& pArguments)
{
    if (pSize[0] == 'l' && pSize[1] == 'l')
        return va_arg(pArguments, unsigned long long);
    switch (pSize[0])
    {
    case 'l':
        return va_arg(pArguments, unsigned long);
    case 'j':
        return va_arg(pArguments, uintmax_t);
    case 'z':
    case 't':
        return va_arg(pArguments, size_t);
    default:
        break;
    }
    const unsigned lValue = va_arg(pArguments, unsigned);
    if (pSize[0] != 'h')
        return lValue;
    return pSize[1] == 'h' ? static_cast<unsigned char>(lValue) : static_cast<unsigned short>(lValue);
}

bool KFormatter::ConvertInteger(const KConversion& pConversion, std::va_list& pArguments)
{
    const bool lSigned = pConversion.mLetter == 'd' || pConversion.mLetter == 'i';
    bool       lNegative = false;
    uintmax_t  lValue = 0;
    if (lSigned)
    {
        const intmax_t lNumber = NextSigned(pConversion.mSize, pArguments);
        lNegative = lNumber < 0;
        lValue = lNegative ? uintmax_t{0} - static_cast<uintmax_t>(lNumber) : static_cast<uintmax_t>(lNumber);
    }
    else
        lValue = NextUnsigned(pConversion.mSize, pArguments);

    // Integers look the same in every locale as long as no grouping is asked for, so printf itself may write the digits.
    char lText[kNumberSize];
    char lFormat[] = "%.*jX";
    lFormat[4] = lSigned ? 'u' : pConversion.mLetter;
    const int  lPrecision = pConversion.mPrecision > 300 ? 300 : pConversion.mPrecision;
    const char lAlternate[] = {'%', '#', '.', '*', 'j', lFormat[4], '\0'};
    const int  lSize = std::snprintf(lText, sizeof lText, pConversion.mAlternate && !lSigned ? lAlternate : lFormat, lPrecision, lValue);
    if (lSize < 0)
        return false;
    KConversion lSign = pConversion;
    lSign.mPlus &= lSigned;
    lSign.mBlank &= lSigned;
    return Digits(lSign, lNegative, lText, static_cast<size_t>(lSize), pConversion.mZero && pConversion.mPrecision < 0);
}

std::chars_format FormatOf(char pLetter)
{
    switch (pLetter | 0x20)
    {
    case 'a':
        return std::chars_format::hex;
    case 'e':
        return std::chars_format::scientific;
    case 'f':
        return std::chars_format::fixed;
    default:
        return std::chars_format::general;
    }
}

bool KFormatter::ConvertReal(const KConversion& pConversion, long double pValue, bool pLong)
{
    const bool        lNegative = std::signbit(pValue);
    const long double lValue = lNegative ? -pValue : pValue;
    if (!std::isfinite(lValue))
    {
        const bool lSmall = pConversion.mLetter >= 'a';
        return Digits(pConversion, lNegative, std::isnan(lValue) ? (lSmall ? "nan" : "NAN") : (lSmall ? "inf" : "INF"), 3, false);
    }

    const std::chars_format lFormat = FormatOf(pConversion.mLetter);
    const bool              lHex = lFormat == std::chars_format::hex;
    int                     lPrecision = pConversion.mPrecision < 0 ? 6 : pConversion.mPrecision;
    if (lPrecision > 5000)
        lPrecision = 5000;

    // A long double, or a precision out of the ordinary, may take more room than the stack should give.
    char         lSmall[kNumberSize];
    const size_t lNeeded = (pLong ? 5000 : kFixedSize) + static_cast<size_t>(lPrecision) + 2;
    char*        lText = lNeeded <= sizeof lSmall ? lSmall : static_cast<char*>(std::malloc(lNeeded));
    if (lText == nullptr)
        return false;
    char* lAt = lText;
    if (lHex)
    {
        *lAt++ = '0';
        *lAt++ = 'x';
    }
    std::to_chars_result lEnd{};
    char*                lLast = lText + (lText == lSmall ? sizeof lSmall : lNeeded);
    if (pLong)
        lEnd = lHex && pConversion.mPrecision < 0 ? std::to_chars(lAt, lLast, lValue, lFormat)
                                                  : std::to_chars(lAt, lLast, lValue, lFormat, lPrecision);
    else
        lEnd = lHex && pConversion.mPrecision < 0 ? std::to_chars(lAt, lLast, static_cast<double>(lValue), lFormat)
                                                  : std::to_chars(lAt, lLast, static_cast<double>(lValue), lFormat, lPrecision);
    bool lOk = lEnd.ec == std::errc();
    if (lOk && pConversion.mLetter < 'a')
        for (char* i = lText; i != lEnd.ptr; ++i)
            *i = *i >= 'a' && *i <= 'z' ? static_cast<char>(*i - 0x20) : *i;
    lOk = lOk && Digits(pConversion, lNegative, lText, static_cast<size_t>(lEnd.ptr - lText), pConversion.mZero);
    if (lText != lSmall)
        std::free(lText);
    return lOk;
}

/// A number's sign and digits in a field of the conversion's width.
bool KFormatter::Digits(const KConversion& pConversion, bool pNegative, const char* pDigits, size_t pSize, bool pZeroPad)
{
    const char*  lSign = pNegative ? "-" : pConversion.mPlus ? "+" : pConversion.mBlank ? " " : "";
    const size_t lSignSize = *lSign == '\0' ? 0 : 1;
    const size_t lSize = lSignSize + pSize;
    const size_t lWidth = static_cast<size_t>(pConversion.mWidth);
    const size_t lPadding = lWidth > lSize ? lWidth - lSize : 0;
    if (pConversion.mLeft)
        return Put(lSign, lSignSize) && Put(pDigits, pSize) && Fill(' ', lPadding);
    if (pZeroPad)
    {
        // A number of base 16 begins with its 0x, zeros or not.
        const size_t lPrefix = pSize > 2 && (pDigits[1] | 0x20) == 'x' ? 2 : 0;
        return Put(lSign, lSignSize) && Put(pDigits, lPrefix) && Fill('0', lPadding) && Put(pDigits + lPrefix, pSize - lPrefix);
    }
    return Fill(' ', lPadding) && Put(lSign, lSignSize) && Put(pDigits, pSize);
}

bool KFormatter::Padded(const KConversion& pConversion, const char* pText, size_t pSize)
{
    const size_t lWidth = static_cast<size_t>(pConversion.mWidth);
    const size_t lPadding = lWidth > pSize ? lWidth - pSize : 0;
    if (pConversion.mLeft)
        return Put(pText, pSize) && Fill(' ', lPadding);
    return Fill(' ', lPadding) && Put(pText, pSize);
}

/// In pieces, so that a sink which wants no more ends it: the length of a text of a megabyte is not even looked for.
bool KFormatter::PutString(const char* pText)
{
    constexpr size_t kPiece = 1024;
    for (;;)
    {
        const size_t lSize = strnlen(pText, kPiece);
        if (!Put(pText, lSize))
            return false;
        if (lSize < kPiece)
            return true;
        pText += lSize;
    }
}

bool KFormatter::Fill(char pCharacter, size_t pCount)
{
    char lText[64];
    std::memset(lText, pCharacter, sizeof lText);
    for (; pCount > sizeof lText; pCount -= sizeof lText)
        if (!Put(lText, sizeof lText))
            return false;
    return Put(lText, pCount);
}

} // namespace

bool KFormat(KFormatSink pSink, void* pContext, const char* pFormat, std::va_list pArguments)
{
    // A va_list parameter may be an array that decayed; the copy has the type that references need.
    std::va_list lArguments;
    va_copy(lArguments, pArguments);
    const bool lResult = KFormatter(pSink, pContext).Format(pFormat, lArguments);
    va_end(lArguments);
    return lResult;
}

} // namespace qexsdk
