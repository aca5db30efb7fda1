#ifndef QEXIOPLUGINS_BVH_KQEXBVHTOKENS_H
#define QEXIOPLUGINS_BVH_KQEXBVHTOKENS_H

#include <kbaselib/kbase/knumber.h>
#include <qexioplugins/motion/kqextextfile.h>

#include <string_view>

namespace qexsdk
{

/// The tokens of a BVH file as one stream, whatever its lines: words, and braces each by itself. Blanks, tabs and colons
/// separate; so "Frames:12" and "Frames : 12" are the same two tokens.
class KQexBvhTokens
{
public:
    /// \p pFile is open for reading, and outlives the object.
    explicit KQexBvhTokens(KQexTextFile& pFile);

    /// The next token, which stays next; empty at the end of the file. Lives until the line changes.
    std::string_view Peek();

    /// Consumes the next token when it equals \p pWord, ASCII case ignored.
    bool Accept(const char* pWord);

    /// What is left of the line up to an opening brace, without blanks at its ends, consumed: a joint's name may hold blanks.
    std::string_view NextName();

    /// Consumes the next token when the whole of it is a finite number.
    bool NextNumber(double& pValue);

    /// Consumes the next token when the whole of it is a whole number that is not negative.
    bool NextCount(long long& pValue);

    /// The next token for a message: cut to a readable length, "end of file" when there is none.
    std::string_view Offending();

private:
    /// Consumes the next token when the whole of it is a number of the kind of \p pValue.
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

    bool        Fill();
    static bool IsBlank(char pC) { return pC == ' ' || pC == '\t' || pC == ':' || pC == '\0' || pC == '\r'; }
    static bool IsBrace(char pC) { return pC == '{' || pC == '}'; }
    const char* TokenEnd() const;

    KQexTextFile& mFile;
    const char*   mNext = nullptr;
    const char*   mEnd = nullptr;
};

} // namespace qexsdk

#endif
