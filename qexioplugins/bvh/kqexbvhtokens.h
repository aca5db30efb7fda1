#ifndef QEXIOPLUGINS_BVH_KQEXBVHTOKENS_H
#define QEXIOPLUGINS_BVH_KQEXBVHTOKENS_H

#include <kbaselib/kbase/knumber.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string_view>

namespace qexsdk
{

/// The tokens of a BVH file as one stream across lines: words and single braces. Blanks, tabs and colons separate them, so
/// "Frames:12" and "Frames : 12" are the same two tokens.
class KQexBvhTokens
{
public:
    /// \p pFile must be open for reading and outlive the object.
    explicit KQexBvhTokens(KQexTextFile& pFile);

    /// The next token, not consumed; empty at the end of the file. Valid until the next line is loaded.
    std::string_view Peek();

    /// Consumes the next token when it equals \p pWord, ASCII case ignored.
    bool Accept(const char* pWord);

    /// Consumes the rest of the line up to an opening brace and returns it trimmed: a joint's name may contain blanks.
    std::string_view NextName();

    /// Consumes the next token if all of it is a finite number.
    bool NextNumber(double& pValue);

    /// Consumes the next token if all of it is a non-negative integer.
    bool NextCount(long long& pValue);

    /// The next token for an error message, cut to 60 bytes; "end of file" when there is none.
    std::string_view Offending();

private:
    /// Consumes the next token if all of it parses as a \p T.
    template <typename T>
    bool NextParsed(T& pValue)
    {
        const std::string_view lToken = Peek();
        if (lToken.empty() || KNumberParse(lToken, pValue) != KNumberStatus::eOK)
        {
            return false;
        }
        mNext += lToken.size();
        return true;
    }

    /// Goes to the start of the next token, on a later line if need be. False at the end of the file.
    bool        SkipToToken();
    static bool IsBlank(char pC) { return pC == ' ' || pC == '\t' || pC == ':' || pC == '\0' || pC == '\r'; }
    static bool IsBrace(char pC) { return pC == '{' || pC == '}'; }
    const char* TokenEnd() const;

    KQexTextFile& mFile;
    const char*   mNext = nullptr;
    const char*   mEnd = nullptr;
};

} // namespace qexsdk

#endif
